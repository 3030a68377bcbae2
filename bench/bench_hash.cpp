// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/encoding/file.h"
#include "bench/pin_to_core.h"
#include "bench/ratio_reporter.h"

#include <QCryptographicHash>
#include <QFile>
#include <QTemporaryDir>

#include <cstdio>
#include <fstream>
#include <sys/wait.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype fileSize = 100 << 20;
constexpr long mostKiB = 2048;
constexpr int rounds = 15;

QString path;

QByteArray inPieces()
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly | QIODevice::Unbuffered) ? Velno::sha256Sum(file) : QByteArray();
}

QByteArray wholeFirst()
{
    QByteArray data;
    return Velno::readData(path, &data) ? Velno::sha256Sum(data) : QByteArray();
}

QByteArray byQt()
{
    QFile file(path);
    QCryptographicHash hash(QCryptographicHash::Sha256);
    return file.open(QIODevice::ReadOnly) && hash.addData(&file) ? hash.result() : QByteArray();
}

template <QByteArray (*digest)()>
void hashing(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(digest());
}

BENCHMARK(hashing<inPieces>)->Name("inPieces")->Repetitions(rounds)->Iterations(1)->UseRealTime();
BENCHMARK(hashing<wholeFirst>)->Name("wholeFirst")->Repetitions(rounds)->Iterations(1)->UseRealTime();
BENCHMARK(hashing<byQt>)->Name("byQt")->Repetitions(rounds)->Iterations(1)->UseRealTime();

/** A line of /proc/self/status in KiB. */
long statusKiB(const std::string &field)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);) {
        if (line.starts_with(field + ":"))
            return std::stol(line.substr(field.size() + 1));
    }
    return -1;
}

/** Hashes in a process of its own; its peak above what it had when idle, in KiB; -1 when it could not be
 * read. */
long peakAboveIdle(QByteArray (*digest)())
{
    int ends[2];
    if (pipe(ends) != 0)
        return -1;
    if (fork() == 0) {
        std::ofstream("/proc/self/clear_refs") << 5; // the peak starts anew
        const long idle = statusKiB("VmRSS");
        const bool hashed = digest().size() == 32;
        const long peak = hashed ? statusKiB("VmHWM") - idle : -1;
        _exit(write(ends[1], &peak, sizeof peak) == sizeof peak ? 0 : 1);
    }
    close(ends[1]);
    long peak = -1;
    if (read(ends[0], &peak, sizeof peak) != sizeof peak)
        peak = -1;
    close(ends[0]);
    wait(nullptr);
    return peak;
}

} // namespace

int main(int argc, char **argv)
{
    pinToCore();
    const QTemporaryDir folder;
    path = folder.filePath(u"application"_s);
    QByteArray content(fileSize, Qt::Uninitialized);
    for (qsizetype i = 0; i < fileSize; ++i)
        content[i] = char(i * 2654435761 >> 16);
    if (!Velno::writeData(path, content) || inPieces() != Velno::sha256Sum(content) || inPieces() != byQt()) {
        std::fprintf(stderr, "the application file could not be written and hashed\n");
        return 1;
    }
    content = {};
    const long pieces = peakAboveIdle(inPieces);
    std::printf("peak memory above idle: in pieces %ld KiB (goal: at most %ld), whole first %ld KiB\n",
                pieces, mostKiB, peakAboveIdle(wholeFirst));
    const int result = runInterleaved(argc, argv, {{"inPieces", "wholeFirst", 0.65}, {"inPieces", "byQt"}});
    return pieces >= 0 && pieces <= mostKiB ? result : 1;
}
