#include "ExtDevice/velnoext/library_state.h"
#include "ExtDevice/velnoext/velnoext.h"
#include "bench/allocation_count.h"
#include "bench/bare_socket.h"
#include "bench/hop_client.h"
#include "bench/pin_to_core.h"
#include "bench/ratio_reporter.h"
#include "bench/tls_echo.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTcpServer>

#include <chrono>
#include <cstdlib>
#include <cstring>

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

quint16 freePort()
{
    QTcpServer server;
    require(server.listen(QHostAddress::LocalHost, 0), "no free port");
    return server.serverPort();
}

void startTlsEcho(QProcess &process)
{
    const quint16 port = freePort();
    process.setProcessChannelMode(QProcess::ForwardedChannels);
    process.start(QCoreApplication::applicationFilePath(),
                  {QStringLiteral("--tls-echo"), QString::number(port)});
    BareSocket::connectTo(port); // returns when it listens
    tlsClient = std::make_unique<TlsEchoClient>(port, authority);
}

/** A simulated register that looks for the application on a port of this machine. */
class SimulatedRegister
{
public:
    explicit SimulatedRegister(const char *serialNo)
        : m_serialNo(serialNo)
        , m_port(freePort())
    {
        m_process.setStandardOutputFile(QProcess::nullDevice());
        m_process.setStandardErrorFile(QProcess::nullDevice());
        m_process.start(QStringLiteral(VELNO_REGISTER),
                        {QStringLiteral("--serial"), QString::fromLatin1(serialNo),
                         QStringLiteral("--connect"), QStringLiteral("127.0.0.1:%1").arg(m_port)});
        require(m_process.waitForStarted(), "velno-register did not start");
    }

    ~SimulatedRegister()
    {
        m_process.kill();
        m_process.waitForFinished();
    }

    SimulatedRegister(const SimulatedRegister &) = delete;
    SimulatedRegister &operator=(const SimulatedRegister &) = delete;

    /** Connects the library to it and pairs. */
    void connectLibrary() const
    {
        require(velnoext_initialize(5, m_serialNo, "127.0.0.1", m_port, timeout) == 0,
                "velno-register did not connect");
    }

    quint16 port() const { return m_port; }

private:
    const char *m_serialNo;
    quint16 m_port;
    QProcess m_process;
};

} // namespace

int main(int argc, char **argv)
{
    pinToCore();
    const QCoreApplication application(argc, argv);
    if (argc == 3 && std::strcmp(argv[1], "--tls-echo") == 0)
        serveTlsEcho(quint16(std::atoi(argv[2])), authority);

    QProcess tls;
    startTlsEcho(tls);
    const SimulatedRegister forHops("UB0000000002");
    forHops.connectLibrary(); // which pairs; the two hops go on with its keys
    const Velno::GMP::MatchExt record = Velno::Ext::activeRecord();
    velnoext_close();
    hopClient = std::make_unique<HopClient>(record, forHops.port());
    const SimulatedRegister forLibrary("UB0000000001");
    forLibrary.connectLibrary();

    const bool frugal = countAllocations();
    const int result =
        runInterleaved(argc, argv, {{"currentZ", "twoHops", 1.0, 1.1}, {"currentZ", "tlsEcho", 1.15}});
    velnoext_close_all();
    hopClient.reset();
    tlsClient.reset();
    tls.kill();
    tls.waitForFinished();
    return frugal ? result : 1;
}
