// SPDX-License-Identifier: Apache-2.0

#include "bench/bare_socket.h"
#include "bench/pin_to_core.h"
#include "bench/ratio_reporter.h"
#include "bench/register_process.h"
#include "till/till.h"

#include <QCoreApplication>
#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <chrono>
#include <cstdio>
#include <fcntl.h>
#include <thread>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

namespace {

constexpr int rounds = 200;
constexpr int itemsOfASale = 10;
constexpr unsigned int appNo = 5;
constexpr unsigned int timeout = 10000;
constexpr int cash = 0;
constexpr char serial[] = "UB0000000001";

class SystemTime final : public Clock
{
public:
    QDateTime now() override { return QDateTime::currentDateTimeUtc(); }
    bool pause(int milliseconds) override
    {
        std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
        return true;
    }
};

/** A file to which lines are added, each on the disk before the sale goes on. */
class Notes
{
public:
    explicit Notes(const QString &path)
        : m_file(::open(qPrintable(path), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, 0600))
    {
    }
    ~Notes() { ::close(m_file); }
    Q_DISABLE_COPY_MOVE(Notes)

    bool write(const QByteArray &line) const
    {
        return ::write(m_file, line.constData(), size_t(line.size())) == line.size() && fsync(m_file) == 0;
    }

private:
    int m_file;
};

QByteArray receiptJson()
{
    QJsonArray items;
    for (int i = 0; i < itemsOfASale; ++i)
        items.append(QJsonObject{{u"name"_s, u"Ekmek"_s}, {u"price"_s, u"12.50"_s}, {u"section"_s, 1}});
    return QJsonDocument(QJsonObject{{u"items"_s, items},
                                     {u"payments"_s, QJsonArray{QJsonObject{{u"cash"_s, u"200.00"_s}}}},
                                     {u"reenterCash"_s, true}})
        .toJson(QJsonDocument::Compact);
}

VelnoSaleItemList itemList()
{
    VelnoSaleItemList list{};
    list.count = itemsOfASale;
    for (VelnoSaleItem &item : list.items)
        item = {1250, 1000, 0, 0, "Ekmek", 1, 0};
    return list;
}

/** The same sale by bare calls: what is sold is noted before the start, its reference before the first line.
 */
bool sellBare(const Notes &notes)
{
    VelnoSaleItemList list = itemList();
    VelnoEcrSaleTotals totals{};
    VelnoReceiptRef reference{};
    int first = 0;
    int state = 0;
    return notes.write(receiptJson() + '\n') && velnoext_start_sale(timeout) == 0 &&
           velnoext_sale_state(timeout, &first, &totals, &reference) == 0 &&
           notes.write("open " + QByteArray::number(reference.second) + '\n') &&
           velnoext_add_multiple_sale_items(timeout, &list, &totals) == 0 &&
           velnoext_add_payment(cash, 20'000) == 0 &&
           velnoext_sale_state(timeout, &first, &totals, &reference) == 0 && velnoext_end_sale(cash) == 0 &&
           velnoext_ecr_state(timeout, &state) == 0 && state == VelnoEcrState_Idle &&
           velnoext_receipt_data(timeout, &reference, &totals) == 0;
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

struct Shop
{
    Till &till;
    const Notes &notes;
    int sold = 0;

    bool sell()
    {
        const Outcome outcome = till.perform(u"receipt %1"_s.arg(++sold), Kind::Receipt, receiptJson());
        return outcome.result == Result::Done && outcome.order.state == State::Closed;
    }
};
Shop *shop = nullptr;

void throughTheTill(benchmark::State &state)
{
    for (auto _ : state)
        timed(state, [] { return shop->sell(); });
}

void bareCalls(benchmark::State &state)
{
    for (auto _ : state)
        timed(state, [] { return sellBare(shop->notes); });
}

BENCHMARK(throughTheTill)->Repetitions(rounds)->Iterations(1)->UseManualTime();
BENCHMARK(bareCalls)->Repetitions(rounds)->Iterations(1)->UseManualTime();

} // namespace

int main(int argc, char **argv)
{
    pinToCore();
    const QCoreApplication application(argc, argv);
    // Beside the program: a folder for temporary files may be in memory, where nothing is flushed.
    const QTemporaryDir folder(QCoreApplication::applicationDirPath() + u"/receipts-XXXXXX"_s);
    const RegisterProcess simulated(serial);
    SystemTime time;
    Meeting meeting;
    meeting.appNo = appNo;
    meeting.serial = serial;
    meeting.address = "127.0.0.1";
    meeting.port = simulated.port();
    Till till(meeting, time);
    const QString problem = till.open({folder.filePath(u"ledger"_s), serial, {}});
    require(problem.isEmpty(), qPrintable(problem));
    const Notes notes(folder.filePath(u"notes"_s));
    Shop here{till, notes};
    shop = &here;
    require(here.sell(), "no receipt could be sold");
    const int result = runInterleaved(argc, argv, {{"throughTheTill", "bareCalls", 1.2}});
    shop = nullptr;
    return result;
}
