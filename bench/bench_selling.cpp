// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/velnoext.h"
#include "bench/bare_socket.h"
#include "bench/pin_to_core.h"
#include "bench/ratio_reporter.h"
#include "bench/register_process.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

#include <chrono>
#include <cstdio>

using namespace Qt::StringLiterals;

namespace {

constexpr int rounds = 300;
constexpr int itemsOfASale = 10;
constexpr unsigned int appNo = 14242; // its keys are forgotten with the connection
constexpr unsigned int timeout = 10000;
constexpr int cash = 0;

VelnoSaleItem bread()
{
    return {1250, 1000, 0, 0, "Ekmek", 1, 0};
}

bool addSingly()
{
    VelnoSaleItem item = bread();
    VelnoEcrSaleTotals totals{};
    for (int i = 0; i < itemsOfASale; ++i) {
        if (velnoext_add_sale_item(timeout, &item, &totals) != 0)
            return false;
    }
    return true;
}

bool addAtOnce()
{
    VelnoSaleItemList list{};
    list.count = itemsOfASale;
    for (VelnoSaleItem &item : list.items)
        item = bread();
    VelnoEcrSaleTotals totals{};
    return velnoext_add_multiple_sale_items(timeout, &list, &totals) == 0;
}

/** From the start until the register says that it is idle again: payment and end are not answered. */
bool sell(bool (*addItems)())
{
    int state = 0;
    return velnoext_start_sale(timeout) == 0 && addItems() && velnoext_add_payment(cash, 20'000) == 0 &&
           velnoext_end_sale(cash) == 0 && velnoext_ecr_state(timeout, &state) == 0 &&
           state == VelnoEcrState_Idle;
}

template <typename Work>
void timed(benchmark::State &state, Work work)
{
    const auto start = std::chrono::steady_clock::now();
    const bool done = work();
    state.SetIterationTime(std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    if (!done)
        state.SkipWithError("the round failed");
}

void wholeSale(benchmark::State &state, bool (*addItems)())
{
    for (auto _ : state)
        timed(state, [addItems] { return sell(addItems); });
}

/** The items alone, in a sale that is cancelled afterwards. */
void items(benchmark::State &state, bool (*addItems)())
{
    for (auto _ : state) {
        require(velnoext_start_sale(timeout) == 0, "no sale could be started");
        timed(state, addItems);
        require(velnoext_cancel_sale(timeout) == 0, "a sale could not be cancelled");
    }
}

BENCHMARK_CAPTURE(wholeSale, singly, addSingly)->Repetitions(rounds)->Iterations(1)->UseManualTime();
BENCHMARK_CAPTURE(wholeSale, atOnce, addAtOnce)->Repetitions(rounds)->Iterations(1)->UseManualTime();
BENCHMARK_CAPTURE(items, singly, addSingly)->Repetitions(rounds)->Iterations(1)->UseManualTime();
BENCHMARK_CAPTURE(items, atOnce, addAtOnce)->Repetitions(rounds)->Iterations(1)->UseManualTime();

/** Has the register count what one sale asks of it. */
void printMessages(const char *name, bool (*addItems)())
{
    const QTemporaryDir folder;
    const QString events = folder.filePath(u"events"_s);
    {
        const RegisterProcess forCounting("UB0000000002", events);
        forCounting.connectLibrary(appNo);
        require(sell(addItems), "the sale failed");
        velnoext_close();
    }
    QFile file(events);
    require(file.open(QIODevice::ReadOnly), "the register's events cannot be read");
    const QByteArray text = '\n' + file.readAll();
    std::printf("a sale of %d items, added %s: %d round trips, %d messages without an answer\n", itemsOfASale,
                name, int(text.count("\nanswered ")), int(text.count("\ndone ")));
}

} // namespace

int main(int argc, char **argv)
{
    pinToCore();
    const QCoreApplication application(argc, argv);
    printMessages("singly", addSingly);
    printMessages("at once", addAtOnce);

    const RegisterProcess simulated("UB0000000001");
    simulated.connectLibrary(appNo);
    const int result = runInterleaved(
        argc, argv, {{"items/atOnce", "items/singly"}, {"wholeSale/atOnce", "wholeSale/singly"}});
    velnoext_close_all();
    return result;
}
