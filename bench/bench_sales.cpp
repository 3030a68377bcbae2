// SPDX-License-Identifier: Apache-2.0

#include "bench/pin_to_core.h"
#include "bench/ratio_reporter.h"
#include "simulator/fiscal/till.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>

#include <cstdio>

using namespace Simulator;
using namespace Qt::StringLiterals;

namespace {

constexpr int salesPerRound = 1000;
constexpr int rounds = 100;

/** A till that is what it is told to be, or the program ends. */
class OpenTill : public Till
{
public:
    explicit OpenTill(const QString &journal)
        : Till("UB1234567890", [] { return 1'790'000'000; })
    {
        if (const QString problem = open(journal); !problem.isEmpty())
            qFatal("%s", qPrintable(problem));
    }

    /** Three items, cash, change. */
    bool sell()
    {
        static const QList<ItemRequest> items{{1250, 2000, 0, 0, 1, "Ekmek", 0},
                                              {3990, 1235, 0, 0, 2, "Domates", 1},
                                              {4500, 1000, -10, 0, 4, "Deterjan", 0}};
        press({'E'});
        const bool added = add(items) == NotRefused;
        press({'2', '0', '0', keyF10, keyF10});
        return added && !saleIsOpen();
    }
};

void sell(benchmark::State &state, OpenTill &till)
{
    for (auto _ : state)
        if (!till.sell())
            state.SkipWithError("a sale was refused");
}

const QString &journalFile()
{
    static const QTemporaryDir folder;
    static const QString file = folder.filePath(u"journal"_s);
    return file;
}

void onDisk(benchmark::State &state)
{
    static OpenTill till(journalFile());
    sell(state, till);
}

void inMemory(benchmark::State &state)
{
    static OpenTill till{QString()};
    sell(state, till);
}

BENCHMARK(onDisk)->Repetitions(rounds)->Iterations(salesPerRound);
BENCHMARK(inMemory)->Repetitions(rounds)->Iterations(salesPerRound);

/** What a shop would ask: so many sales in one go, counted again afterwards. @return whether all are there */
bool countSales()
{
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"journal"_s);
    constexpr int sales = salesPerRound * rounds;
    QElapsedTimer clock;
    {
        OpenTill till(file);
        clock.start();
        for (int i = 0; i < sales; ++i)
            till.sell();
    }
    const double seconds = double(clock.elapsed()) / 1000;
    const OpenTill again(file);
    std::printf("%d sales with the journal on disk: %.1f s, %.0f sales a second, %d on record\n", sales,
                seconds, sales / seconds, again.day().receipts);
    return again.day().receipts == sales;
}

} // namespace

int main(int argc, char **argv)
{
    pinToCore();
    QCoreApplication application(argc, argv);
    const bool complete = countSales();
    const int result = runInterleaved(argc, argv, {{"onDisk", "inMemory"}});
    return complete ? result : 1;
}
