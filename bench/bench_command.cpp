// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "bench/allocation_count.h"
#include "bench/bare_socket.h"
#include "bench/hop_client.h"
#include "bench/pin_to_core.h"
#include "bench/ratio_reporter.h"
#include "bench/register_process.h"
#include "bench/tls_echo.h"

#include <QCoreApplication>
#include <QProcess>

#include <chrono>
#include <cstdlib>
#include <cstring>

using namespace Qt::StringLiterals;

namespace {

constexpr int rounds = 4000;
constexpr unsigned int timeout = 10000;
constexpr size_t mostAllocations = 20;
const std::string authority = VELNO_DEVELOPMENT_AUTHORITY;

std::unique_ptr<HopClient> hopClient;
std::unique_ptr<TlsEchoClient> tlsClient;

template <typename Round>
void timed(benchmark::State &state, Round round)
{
    for (auto _ : state) {
        const auto start = std::chrono::steady_clock::now();
        const bool done = round();
        state.SetIterationTime(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
        if (!done)
            state.SkipWithError("the round failed");
    }
}

bool command()
{
    int z = 0;
    return velnoext_current_z(timeout, &z) == 0;
}

void currentZ(benchmark::State &state)
{
    timed(state, command);
}

void twoHops(benchmark::State &state)
{
    int z = 0;
    timed(state, [&] { return hopClient->currentZ(&z); });
}

void tlsEcho(benchmark::State &state)
{
    static const QByteArray plaintext("\0\0\0\x0C", 4); // what the command's request is
    timed(state, [] { return tlsClient->echo(plaintext); });
}

BENCHMARK(currentZ)->Repetitions(rounds)->Iterations(1)->UseManualTime();
BENCHMARK(twoHops)->Repetitions(rounds)->Iterations(1)->UseManualTime();
BENCHMARK(tlsEcho)->Repetitions(rounds)->Iterations(1)->UseManualTime();

bool countAllocations()
{
    command();
    const size_t before = allocationCount();
    command();
    const size_t allocations = allocationCount() - before;
    std::printf("a command: %zu allocations in the caller's process (goal: at most %zu)\n", allocations,
                mostAllocations);
    return allocations <= mostAllocations;
}

void startTlsEcho(QProcess &process)
{
    const quint16 port = freePort();
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QCoreApplication::applicationFilePath(), {u"--tls-echo"_s, QString::number(port)});
    BareSocket::connectTo(port); // returns when it listens
    tlsClient = std::make_unique<TlsEchoClient>(port, authority);
}

} // namespace

int main(int argc, char **argv)
{
    pinToCore();
    const QCoreApplication application(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], "--tls-echo") == 0)
        serveTlsEcho(quint16(std::atoi(argv[2])), authority);

    QProcess tls;
    startTlsEcho(tls);
    const RegisterProcess forHops("UB0000000002");
    forHops.connectLibrary(5); // which pairs; the two hops go on with its keys
    const Velno::GMP::MatchExt record = Velno::Ext::activeRecord();
    velnoext_close();
    hopClient = std::make_unique<HopClient>(record, forHops.port());
    const RegisterProcess forLibrary("UB0000000001");
    forLibrary.connectLibrary(5);

    const bool frugal = countAllocations();
    const int result =
        runInterleaved(argc, argv, {{"currentZ", "twoHops", 0.6, 1.1}, {"currentZ", "tlsEcho", 1.15}});
    velnoext_close_all();
    hopClient.reset();
    tlsClient.reset();
    tls.kill();
    tls.waitForFinished();
    return frugal ? result : 1;
}
