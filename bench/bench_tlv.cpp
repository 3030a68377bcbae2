// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"
#include "bench/allocation_count.h"
#include "bench/pin_to_core.h"
#include "bench/ratio_reporter.h"

#include <cstdio>
#include <cstring>
#include <malloc.h>

using namespace Qt::StringLiterals;
using namespace Velno;

namespace {

constexpr int fieldCount = 15;
constexpr int mostAllocations = 17;
constexpr int rounds = 200;

/** A message as a pairing sends it: short texts, a date, two 256-byte numbers. */
QByteArray buildMessage()
{
    static const QByteArray tag = "\xDF\xC1\x07"_ba;
    static const QByteArray text = "VENDOR 1234"_ba;
    static const QByteArray key(256, 'k');
    QByteArray body;
    body.reserve(2048);
    for (int i = 0; i < fieldCount; ++i)
        body += tlvElement(tag, i < 2 ? key : text);
    return body;
}

void build(benchmark::State &state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(buildMessage());
}

void split(benchmark::State &state)
{
    const QByteArray message = buildMessage();
    for (auto _ : state)
        benchmark::DoNotOptimize(extractTlvElements(message));
}

void copyOnce(benchmark::State &state)
{
    const QByteArray message = buildMessage();
    QByteArray target(message.size(), '\0');
    char *bytes = target.data();
    for (auto _ : state) {
        std::memcpy(bytes, message.constData(), size_t(message.size()));
        benchmark::ClobberMemory();
    }
}

void splitSmall(benchmark::State &state)
{
    const QByteArray run = QByteArray("\x01\x01x").repeated(state.range(0) / 3);
    for (auto _ : state)
        benchmark::DoNotOptimize(extractTlvElements(run));
}

BENCHMARK(build)->Repetitions(rounds)->MinTime(0.002);
BENCHMARK(split)->Repetitions(rounds)->MinTime(0.002);
BENCHMARK(copyOnce)->Repetitions(rounds)->MinTime(0.002);
BENCHMARK(splitSmall)->Arg(8 << 10)->Arg(64 << 10)->Repetitions(rounds)->MinTime(0.002);

/** Allocations of one message; the first made what is kept. */
bool countAllocations()
{
    buildMessage();
    const size_t before = allocationCount();
    const QByteArray message = buildMessage();
    const size_t allocations = allocationCount() - before;
    std::printf("a message of %d fields, %lld bytes: %zu allocations (goal: at most %d)\n", fieldCount,
                static_cast<long long>(message.size()), allocations, mostAllocations);
    return allocations <= mostAllocations;
}

} // namespace

int main(int argc, char **argv)
{
    pinToCore();
    // Memory stays with the process: what the kernel takes for giving back and fetching pages is not ours.
    mallopt(M_MMAP_THRESHOLD, 1 << 30);
    mallopt(M_TRIM_THRESHOLD, 1 << 30);
    const bool frugal = countAllocations();
    const int result = runInterleaved(argc, argv,
                                      {{"build", "copyOnce"},
                                       {"split", "copyOnce"},
                                       // Eight times the bytes: linear in size is a ratio of 8.
                                       {"splitSmall/65536", "splitSmall/8192", 9}});
    return frugal ? result : 1;
}
