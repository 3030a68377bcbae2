// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "bench/bare_pairing.h"
#include "bench/pin_to_core.h"
#include "bench/ratio_reporter.h"
#include "bench/tls_handshake.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTcpServer>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <iostream>

using namespace Qt::StringLiterals;

namespace {

constexpr int rounds = 400;
const std::string authority = VELNO_DEVELOPMENT_AUTHORITY;

/** Runs one round and counts its time alone, without the wait for the peer to connect. */
template <typename Round>
void timed(benchmark::State &state, Round round)
{
    const auto start = std::chrono::steady_clock::now();
    const bool done = round();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    if (!done)
        state.SkipWithError("the round failed");
}

quint16 velnoPort = 0;

void velno(benchmark::State &state)
{
    static const QByteArray hash = Velno::sha256Sum(QByteArray("application"));
    for (auto _ : state) {
        unsigned int handle = 0;
        require(velno_network_accept("127.0.0.1", velnoPort, 10000, &handle) == 0,
                "velno-register did not connect");
        Velno::GMP::MatchExt record;
        timed(state, [&] {
            return Velno::GMP::GMP3_KeyExchange_Server(record, quint32(handle), "UB1234567890",
                                                       "001A2B3C4D5E", hash) == 0;
        });
    }
}

quint16 contactPort = 0;

bool contact()
{
    const unsigned int forgetsKeysOnClose = 14242;
    return velnoext_initialize(forgetsKeysOnClose, "UB0000000002", "127.0.0.1", contactPort, 10000) == 0;
}

/** The library meets a register without keys: three connections, from its call until the register is ready.
 */
void firstContact(benchmark::State &state)
{
    for (auto _ : state) {
        velnoext_close();
        timed(state, contact);
    }
}

const BareListener &bareListener()
{
    static const BareListener listener;
    return listener;
}

void bare(benchmark::State &state)
{
    static BarePairing pairing(authority);
    for (auto _ : state) {
        const BareSocket socket = bareListener().accept();
        timed(state, [&] { return pairing.request(socket); });
    }
}

quint16 bareContactPort()
{
    static const quint16 port = BareListener().port();
    return port;
}

/** A bare key exchange that has to be met, too: from listening until the keys are there. */
void bareContact(benchmark::State &state)
{
    static BarePairing pairing(authority);
    for (auto _ : state) {
        timed(state, [&] {
            const BareListener listener(bareContactPort());
            return pairing.request(listener.accept());
        });
    }
}

const BareListener &tlsListener()
{
    static const BareListener listener;
    return listener;
}

void tls(benchmark::State &state)
{
    static TlsHandshake server(TlsHandshake::Side::Server, authority);
    for (auto _ : state) {
        const BareSocket socket = tlsListener().accept();
        timed(state, [&] { return server.run(socket); });
    }
}

BENCHMARK(velno)->Repetitions(rounds)->Iterations(1)->UseManualTime();
BENCHMARK(firstContact)->Repetitions(rounds)->Iterations(1)->UseManualTime();
BENCHMARK(bareContact)->Repetitions(rounds)->Iterations(1)->UseManualTime();
BENCHMARK(bare)->Repetitions(rounds)->Iterations(1)->UseManualTime();
BENCHMARK(tls)->Repetitions(rounds)->Iterations(1)->UseManualTime();

/** The other side of a yardstick, in a process of its own, until it is killed. */
[[noreturn]] void serveYardstick(const QByteArray &name, quint16 port)
{
    BarePairing pairing(authority);
    TlsHandshake client(TlsHandshake::Side::Client, authority);
    for (;;) {
        const BareSocket socket = BareSocket::connectTo(port);
        if (name == "--bare-register")
            pairing.respond(socket);
        else
            client.run(socket);
    }
}

void startYardstick(QProcess &process, const char *name, quint16 port)
{
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QCoreApplication::applicationFilePath(),
                  {QString::fromLatin1(name), QString::number(port)});
    require(process.waitForStarted(), "a yardstick's process did not start");
}

/** @return the port of this machine on which it looks for the tool or the application */
quint16 startRegister(QProcess &process, const char *serialNo)
{
    QTcpServer free;
    require(free.listen(QHostAddress::LocalHost, 0), "no free port");
    process.setStandardOutputFile(QProcess::nullDevice());
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(QString::fromUtf8(VELNO_REGISTER),
                  {u"--serial"_s, QString::fromLatin1(serialNo), u"--connect"_s,
                   u"127.0.0.1:%1"_s.arg(free.serverPort())});
    require(process.waitForStarted(), "velno-register did not start");
    return free.serverPort();
}

} // namespace

int main(int argc, char **argv)
{
    pinToCore();
    if (argc == 3 && std::strncmp(argv[1], "--", 2) == 0 && std::atoi(argv[2]) > 0) {
        std::signal(SIGPIPE, SIG_IGN);
        serveYardstick(argv[1], quint16(std::atoi(argv[2])));
    }
    const QCoreApplication application(argc, argv);
    std::cout.rdbuf(nullptr); // the engine says there when a register has closed first
    QProcess bareRegister;
    QProcess bareContactRegister;
    QProcess tlsClient;
    QProcess velnoRegister;
    QProcess contactRegister;
    startYardstick(bareRegister, "--bare-register", bareListener().port());
    startYardstick(bareContactRegister, "--bare-register", bareContactPort());
    startYardstick(tlsClient, "--tls-client", tlsListener().port());
    velnoPort = startRegister(velnoRegister, "UB1234567890");
    contactPort = startRegister(contactRegister, "UB0000000002");
    require(contact(), "velno-register did not connect");
    const int result = runInterleaved(argc, argv,
                                      {{"velno", "bare", 1.25},
                                       {"velno", "tls", 0.35},
                                       {"firstContact", "bareContact", 1.6},
                                       {"firstContact", "bare"}});
    velnoext_close();
    for (QProcess *process :
         {&bareRegister, &bareContactRegister, &tlsClient, &velnoRegister, &contactRegister}) {
        process->kill();
        process->waitForFinished();
    }
    return result;
}
