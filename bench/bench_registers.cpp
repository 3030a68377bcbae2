// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/velnoext.h"
#include "bench/bare_socket.h"
#include "bench/many_descriptors.h"
#include "bench/pin_to_core.h"
#include "bench/ratio_reporter.h"
#include "bench/register_farm.h"

#include <QCoreApplication>
#include <QProcess>

#include <array>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr uint16_t relayPort = 50902;
constexpr int rounds = 1500;
constexpr unsigned int timeout = 10000;
constexpr double mostKibPerRegister = 13;
const std::string authority = VELNO_DEVELOPMENT_AUTHORITY;

// The process with the registers connected -----------------------------------------------------------------

std::string serialOf(int index)
{
    std::array<char, 13> text;
    std::snprintf(text.data(), text.size(), "UB%010d", index);
    return text.data();
}

long residentBytes()
{
    long total = 0;
    long resident = 0;
    std::ifstream("/proc/self/statm") >> total >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

void connectRegisters(int first, int count)
{
    for (int i = first; i < first + count; ++i)
        require(velnoext_initialize(5, serialOf(i).c_str(), "255.255.255.255", 0, timeout) == 0,
                "a register did not connect");
}

/** Seconds that a command to the active register takes. */
double timedCommand()
{
    int z = 0;
    const auto start = std::chrono::steady_clock::now();
    const int result = velnoext_current_z(timeout, &z);
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    require(result == 0 && z == 42, "a command failed");
    return taken.count();
}

/**
 * Connects registers, says on standard output how many bytes each takes, then runs a command for each
 * character on standard input ('s': to the same register again, 'o': to another one) and says how long it
 * took.
 */
int callRegisters(int first, int count)
{
    allowManyDescriptors();
    connectRegisters(first, 1);
    timedCommand();
    const long before = residentBytes();
    connectRegisters(first + 1, count - 1);
    for (int i = 0; i < count; ++i) { // each has talked once
        velnoext_set_active_device(serialOf(first + i).c_str());
        timedCommand();
    }
    std::printf("%ld\n", count > 1 ? (residentBytes() - before) / (count - 1) : 0);
    std::fflush(stdout);
    unsigned int seed = 1;
    for (int character = std::getchar(); character != EOF; character = std::getchar()) {
        const int index = character == 'o' ? rand_r(&seed) % count : 0;
        velnoext_set_active_device(serialOf(first + index).c_str());
        std::printf("%.9f\n", timedCommand());
        std::fflush(stdout);
    }
    velnoext_close_all();
    return 0;
}

// The process that asks ------------------------------------------------------------------------------------

/** A process with some number of registers connected. */
class Caller
{
public:
    Caller(int first, int count)
        : m_count(count)
    {
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        m_process.start(QCoreApplication::applicationFilePath(),
                        {u"--registers"_s, QString::number(first), QString::number(count)});
        m_bytes = readNumber();
    }

    ~Caller()
    {
        m_process.closeWriteChannel();
        m_process.waitForFinished();
    }

    Caller(const Caller &) = delete;
    Caller &operator=(const Caller &) = delete;

    double seconds(char which)
    {
        m_process.write(&which, 1);
        return readNumber();
    }

    bool printMemory() const
    {
        if (m_count < 2)
            return true;
        const double kib = m_bytes / 1024;
        std::printf("%d registers: %.1f KiB of resident memory each", m_count, kib);
        if (m_count == 1000)
            std::printf(" (goal: at most %.0f)", mostKibPerRegister);
        std::printf("\n");
        return m_count != 1000 || kib <= mostKibPerRegister;
    }

private:
    double readNumber()
    {
        while (!m_process.canReadLine())
            require(m_process.waitForReadyRead(-1), "a process with registers has ended");
        return m_process.readLine().toDouble();
    }

    QProcess m_process;
    int m_count;
    double m_bytes = 0;
};

std::map<int, std::unique_ptr<Caller>> callers;

void ask(benchmark::State &state, char which)
{
    Caller &caller = *callers.at(int(state.range(0)));
    for (auto _ : state)
        state.SetIterationTime(caller.seconds(which));
}

void sameAmong(benchmark::State &state)
{
    ask(state, 's');
}

void anyAmong(benchmark::State &state)
{
    ask(state, 'o');
}

BENCHMARK(sameAmong)
    ->Arg(1)
    ->Arg(100)
    ->Arg(1000)
    ->Arg(5000)
    ->Repetitions(rounds)
    ->Iterations(1)
    ->UseManualTime();
BENCHMARK(anyAmong)->Arg(100)->Arg(1000)->Arg(5000)->Repetitions(rounds)->Iterations(1)->UseManualTime();

bool connectAll()
{
    bool frugal = true;
    int first = 0;
    for (const int count : {1, 100, 1000, 5000}) {
        const auto &caller = callers[count] = std::make_unique<Caller>(first, count);
        frugal = caller->printMemory() && frugal;
        first += count;
    }
    return frugal;
}

} // namespace

int main(int argc, char **argv)
{
    pinToCore();
    if (argc == 2 && std::strcmp(argv[1], "--farm") == 0)
        RegisterFarm(relayPort, authority).run();
    const QCoreApplication application(argc, argv);
    if (argc == 4 && std::strcmp(argv[1], "--registers") == 0)
        return callRegisters(std::atoi(argv[2]), std::atoi(argv[3]));

    QProcess farm;
    farm.setProcessChannelMode(QProcess::ForwardedChannels);
    farm.start(QCoreApplication::applicationFilePath(), {u"--farm"_s});
    require(farm.waitForStarted(), "the farm did not start");
    BareSocket::connectTo(relayPort); // returns when the farm listens
    const bool frugal = connectAll();
    const int result = runInterleaved(argc, argv,
                                      {{"sameAmong/100", "sameAmong/1", 1.7},
                                       {"anyAmong/100", "sameAmong/1", 1.7},
                                       {"sameAmong/1000", "sameAmong/1"},
                                       {"anyAmong/1000", "sameAmong/1"},
                                       {"sameAmong/5000", "sameAmong/1", 1.3},
                                       {"anyAmong/5000", "sameAmong/1"}});
    callers.clear();
    farm.kill();
    farm.waitForFinished();
    return frugal ? result : 1;
}
