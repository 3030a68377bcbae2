#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/sale.h"
#include "tests/support/library_test.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <cstddef>
#include <cstring>
#include <limits>

using namespace Velno::Ext;
using namespace TestSupport;

namespace {

constexpr qint64 largestPrice = std::numeric_limits<qint64>::max();
constexpr qint64 smallestPrice = std::numeric_limits<qint64>::min();
constexpr qint32 largestInt = std::numeric_limits<qint32>::max();
constexpr qint32 smallestInt = std::numeric_limits<qint32>::min();
constexpr quint64 largestTotal = std::numeric_limits<quint64>::max();
constexpr quint64 anybody = 11111111111;

/** What a call may write to, filled so that any writing shows. */
struct Outputs
{
    int first;
    VelnoEcrSaleTotals totals;
    VelnoReceiptRef receipt;

    Outputs()
    {
        std::memset(&first, 0x5A, sizeof first);
        std::memset(&totals, 0x5A, sizeof totals);
        std::memset(&receipt, 0x5A, sizeof receipt);
    }

    bool untouchedBesidesFirst() const
    {
        const Outputs fresh;
        return std::memcmp(&totals, &fresh.totals, sizeof totals) == 0 &&
               std::memcmp(&receipt, &fresh.receipt, sizeof receipt) == 0;
    }
    bool untouched() const { return first == Outputs().first && untouchedBesidesFirst(); }

    QByteArray totalBytes() const
    {
        QByteArray bytes;
        for (const qint64 value :
             {totals.values[0], totals.values[1], totals.values[2], totals.values[3], totals.values[4]})
            bytes += plain(value);
        return bytes + plain(qint32(totals.number));
    }
};

VelnoSaleItem goodItem()
{
    VelnoSaleItem item = {};
    item.price = 0x0102030405060708;
    item.quantity = 0x11121314;
    item.percentage = 0x21222324;
    item.amount = 0x3132333435363738;
    std::strcpy(item.name, "Ekmek");
    item.section = 8;
    item.type = 7;
    return item;
}

QByteArray goodItemBytes()
{
    return hex("0102030405060708 11121314 21222324 3132333435363738 08 00000005456B6D656B 00000007");
}

VelnoSaleItemList listOf(const QList<VelnoSaleItem> &items)
{
    VelnoSaleItemList list = {};
    list.count = quint16(items.size());
    std::copy(items.cbegin(), items.cend(), list.items);
    return list;
}

QByteArray someTotals()
{
    return plain(qint64(1), qint64(-2), qint64(0x0102030405060708), smallestPrice, largestPrice, -6);
}

QByteArray goodStep()
{
    return plain(5, QVector<int>{1}, 0);
}

/** One function of the family with arguments that pass. */
struct Call
{
    const char *name;
    std::function<int(Outputs &)> run;
    QByteArray request;
    QByteArray reply;     ///< a good one
    QByteArray idleState; ///< what the register says before, if it is asked
};

QList<Call> calls()
{
    const QByteArray idle = plain(1, QVector<int>{});
    const QByteArray itemReply = plain(true) + goodStep() + someTotals();
    const auto withItem = [](Outputs &out) {
        VelnoSaleItem item = goodItem();
        return velnoext_add_sale_item(patience, &item, &out.totals);
    };
    const auto withItems = [](Outputs &out) {
        VelnoSaleItemList list = listOf({goodItem(), goodItem()});
        return velnoext_add_multiple_sale_items(patience, &list, &out.totals);
    };
    return {
        {"start", [](Outputs &) { return velnoext_start_sale(patience); },
         hex("00000003 00000001 00000000 00000000 00000001 00000045 01"), goodStep(), idle},
        {"start with invoice", [](Outputs &) { return velnoext_start_sale_with_invoice(patience); },
         hex("00000003 00000001 00000000 00000000 00000002 0000004D 00000033 01"), goodStep(), idle},
        {"state",
         [](Outputs &out) { return velnoext_sale_state(patience, &out.first, &out.totals, &out.receipt); },
         hex("00000006"),
         plain(true, 5, QVector<int>{42, 2}, 99) + someTotals() + plain(17, 18),
         {}},
        {"item", withItem, hex("00000004") + goodItemBytes(), itemReply, {}},
        {"items", withItems, hex("00000010 0002") + goodItemBytes() + goodItemBytes(), itemReply, {}},
        {"medical",
         [](Outputs &) { return velnoext_add_medical_contribution(patience, 150, anybody); },
         hex("00000009 0000000000000096 00000002964619C7"),
         plain(true) + goodStep(),
         {}},
        {"delete last",
         [](Outputs &out) { return velnoext_delete_last_sale_item(patience, &out.totals); },
         hex("00000005"),
         itemReply,
         {}},
        {"delete",
         [](Outputs &out) { return velnoext_delete_sale_item(patience, 3, &out.totals); },
         hex("00000005 00000003"),
         itemReply,
         {}},
    };
}

Call callNamed(const QString &name)
{
    for (const Call &call : calls()) {
        if (name == QLatin1String(call.name))
            return call;
    }
    qFatal("no such call");
}

void addCallRows()
{
    QTest::addColumn<QString>("name");
    for (const Call &call : calls())
        QTest::newRow(call.name) << QString::fromLatin1(call.name);
}

void answer(HandMadeDevice &device, const Call &call, const QByteArray &reply)
{
    device.forgetCommands();
    if (call.idleState.isEmpty())
        device.answerInTurn({reply});
    else
        device.answerInTurn({call.idleState, reply});
}

} // namespace

Q_DECLARE_METATYPE(VelnoSaleItem)

class TestSale : public LibraryTest
{
    Q_OBJECT

private slots:
    void structuresHaveTheirLayout();
    void nothingWorksUnprepared_data();
    void nothingWorksUnprepared();
    void goodCallsReachTheRegister_data();
    void goodCallsReachTheRegister();
    void everyPrefixIsUnreadable_data();
    void everyPrefixIsUnreadable();
    void announcedListsTakeNoMemory_data();
    void announcedListsTakeNoMemory();
    void brokenRepliesLeaveOutputsAlone_data();
    void brokenRepliesLeaveOutputsAlone();
    void missingPointersAreNamed_data();
    void missingPointersAreNamed();
    void salesStartWhenIdle_data();
    void salesStartWhenIdle();
    void stateQueryMayFail();
    void stepsAreJudged_data();
    void stepsAreJudged();
    void saleStatesAreJudged_data();
    void saleStatesAreJudged();
    void itemsAreChecked_data();
    void itemsAreChecked();
    void extremeItems_data();
    void extremeItems();
    void listsAreChecked_data();
    void listsAreChecked();
    void namesAreCut_data();
    void namesAreCut();
    void lineTotalsAreRounded_data();
    void lineTotalsAreRounded();
    void contributionsNeedAPerson_data();
    void contributionsNeedAPerson();
    void anyIndexIsSent_data();
    void anyIndexIsSent();
};

void TestSale::structuresHaveTheirLayout()
{
    QCOMPARE(sizeof(VelnoSaleItem), size_t(84));
    QCOMPARE(offsetof(VelnoSaleItem, price), size_t(0));
    QCOMPARE(offsetof(VelnoSaleItem, quantity), size_t(8));
    QCOMPARE(offsetof(VelnoSaleItem, percentage), size_t(12));
    QCOMPARE(offsetof(VelnoSaleItem, amount), size_t(16));
    QCOMPARE(offsetof(VelnoSaleItem, name), size_t(24));
    QCOMPARE(sizeof(VelnoSaleItem::name), size_t(53));
    QCOMPARE(offsetof(VelnoSaleItem, section), size_t(77));
    QCOMPARE(offsetof(VelnoSaleItem, type), size_t(80));
    QCOMPARE(sizeof(VelnoEcrSaleTotals), size_t(44));
    QCOMPARE(offsetof(VelnoEcrSaleTotals, values), size_t(0));
    QCOMPARE(offsetof(VelnoEcrSaleTotals, number), size_t(40));
    QCOMPARE(sizeof(VelnoSaleItemList), size_t(844));
    QCOMPARE(offsetof(VelnoSaleItemList, count), size_t(0));
    QCOMPARE(sizeof(VelnoSaleItemList::count), size_t(2));
    QCOMPARE(offsetof(VelnoSaleItemList, items), size_t(4));
    QCOMPARE(sizeof(VelnoReceiptRef), size_t(8));
    QCOMPARE(offsetof(VelnoReceiptRef, first), size_t(0));
    QCOMPARE(offsetof(VelnoReceiptRef, second), size_t(4));
}

void TestSale::nothingWorksUnprepared_data()
{
    addCallRows();
}

void TestSale::nothingWorksUnprepared()
{
    QFETCH(const QString, name);
    TestSupport::checkNothingWorksUnprepared(callNamed(name).run, Outputs());
}

void TestSale::goodCallsReachTheRegister_data()
{
    addCallRows();
}

void TestSale::goodCallsReachTheRegister()
{
    QFETCH(const QString, name);
    const Call call = callNamed(name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    answer(device, call, call.reply + "more than is read");
    library().errorDetail = 0x300; // of a call before
    Outputs out;
    QCOMPARE(call.run(out), 0);
    QCOMPARE(velnoext_error_detail(), 0);
    const QList<QByteArray> expected =
        call.idleState.isEmpty() ? QList{call.request} : QList{hex("00000000"), call.request};
    QCOMPARE(device.commands(), expected);
    const bool tellsTotals = call.reply.contains(someTotals());
    QCOMPARE(out.totalBytes(), tellsTotals ? someTotals() : Outputs().totalBytes());
    const bool tellsAll = name == QLatin1String("state");
    QCOMPARE(out.first, tellsAll ? 42 : Outputs().first);
    QCOMPARE(out.receipt.first, tellsAll ? 17 : Outputs().receipt.first);
    QCOMPARE(out.receipt.second, tellsAll ? 18 : Outputs().receipt.second);
}

void TestSale::everyPrefixIsUnreadable_data()
{
    addCallRows();
}

void TestSale::everyPrefixIsUnreadable()
{
    QFETCH(const QString, name);
    const Call call = callNamed(name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (qsizetype size = 1; size < call.reply.size(); ++size) {
        const auto where = QByteArray::number(size);
        answer(device, call, call.reply.first(size));
        Outputs out;
        QVERIFY2(call.run(out) == 5, where);
        QVERIFY2(out.untouchedBesidesFirst(), where);
        // Of a sale's state the first number of the list, once it was whole, is known all the same.
        const bool listIsWhole = name == QLatin1String("state") && size >= 1 + 4 + 4 + 2 * 4;
        QVERIFY2(out.first == (listIsWhole ? 42 : Outputs().first), where);
        QCOMPARE(velnoext_error_detail(), 0);
    }
}

void TestSale::announcedListsTakeNoMemory_data()
{
    addCallRows();
}

void TestSale::announcedListsTakeNoMemory()
{
    QFETCH(const QString, name);
    const Call call = callNamed(name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const QByteArray flag = call.idleState.isEmpty() ? plain(true) : QByteArray();
    for (const quint32 count : {200U, 0x3FFFFFFFU, 0x40000000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        answer(device, call, flag + plain(5, count, 1, 0) + QByteArray(400, '\0'));
        Outputs out;
        QCOMPARE(call.run(out), 5);
        QVERIFY(out.untouched());
    }
    if (call.idleState.isEmpty())
        return;
    device.answerInTurn({plain(1, 0xFFFFFFFFU)});
    Outputs out;
    QCOMPARE(call.run(out), 5);
}

void TestSale::brokenRepliesLeaveOutputsAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QList<QByteArray>>("frames");
    QTest::addColumn<int>("result");

    for (const Call &call : calls()) {
        for (const BrokenAnswer &broken : brokenAnswers(call.reply))
            QTest::addRow("%s: %s", call.name, broken.name)
                << QString::fromLatin1(call.name) << broken.frames << broken.result;
    }
}

void TestSale::brokenRepliesLeaveOutputsAlone()
{
    QFETCH(const QString, name);
    QFETCH(const QList<QByteArray>, frames);
    const LogCapture capture;
    const Call call = callNamed(name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    Outputs out;
    device.setAnswer([frames](const QByteArray &) { return frames; });
    QTEST(call.run(out), "result"); // for a start: of the state before
    QVERIFY(out.untouched());
    if (call.idleState.isEmpty())
        return;
    QCOMPARE(connectPaired(device), 0);
    const QByteArray idle = HandMadeDevice::framed(device.sealed(call.idleState));
    device.setAnswer([&device, frames, idle](const QByteArray &payload) {
        return device.opened(payload) == hex("00000000") ? QList{idle} : frames;
    });
    QTEST(call.run(out), "result");
}

void TestSale::missingPointersAreNamed_data()
{
    using Run = std::function<int()>;
    QTest::addColumn<Run>("run");
    QTest::addColumn<int>("detail");

    static Outputs out;
    static VelnoSaleItem bad = {}; // its faults come after the pointers
    bad.type = -1;
    static VelnoSaleItemList noList = {};
    const auto row = [](const char *name, const Run &run, int detail) {
        QTest::newRow(name) << run << detail;
    };
    const auto state = [](int *first, VelnoEcrSaleTotals *totals, VelnoReceiptRef *receipt) {
        return [=] { return velnoext_sale_state(patience, first, totals, receipt); };
    };
    row("state: all", state(nullptr, nullptr, nullptr), 0x303);
    row("state: first", state(nullptr, &out.totals, &out.receipt), 0x303);
    row("state: totals and receipt", state(&out.first, nullptr, nullptr), 0x304);
    row("state: totals", state(&out.first, nullptr, &out.receipt), 0x304);
    row("state: receipt", state(&out.first, &out.totals, nullptr), 0x305);
    row(
        "item: both", [] { return velnoext_add_sale_item(patience, nullptr, nullptr); }, 0x306);
    row(
        "item: item", [] { return velnoext_add_sale_item(patience, nullptr, &out.totals); }, 0x306);
    row(
        "item: totals", [] { return velnoext_add_sale_item(patience, &bad, nullptr); }, 0x304);
    const auto items = velnoext_add_multiple_sale_items;
    row(
        "items: both", [=] { return items(patience, nullptr, nullptr); }, 0x307);
    row(
        "items: list", [=] { return items(patience, nullptr, &out.totals); }, 0x307);
    row(
        "items: totals", [=] { return items(patience, &noList, nullptr); }, 0x304);
    row(
        "delete last", [] { return velnoext_delete_last_sale_item(patience, nullptr); }, 0x304);
    row(
        "delete", [] { return velnoext_delete_sale_item(patience, 1, nullptr); }, 0x304);
}

void TestSale::missingPointersAreNamed()
{
    QFETCH(const std::function<int()>, run);
    QFETCH(const int, detail);
    TestSupport::checkMissingPointerIsNamed(run, detail);
}

void TestSale::salesStartWhenIdle_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QVector<int>>("keys");
    QTest::addColumn<QVector<int>>("invoiceKeys");

    QTest::newRow("idle") << 1 << QVector<int>{69} << QVector<int>{77, 51};
    QTest::newRow("idle, other screen") << 7 << QVector<int>{69, 69} << QVector<int>{51};
    for (const int state : {smallestInt, -1, 0, 2, 3, 4, 5, 6, 8, largestInt})
        QTest::addRow("state %d", state) << state << QVector<int>() << QVector<int>();
}

void TestSale::salesStartWhenIdle()
{
    QFETCH(const int, state);
    QFETCH(const QVector<int>, keys);
    QFETCH(const QVector<int>, invoiceKeys);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (const bool invoice : {false, true}) {
        // What the register lists behind its state is none of the keys.
        device.answerInTurn({plain(state, QVector<int>{9, 9}), goodStep()});
        device.forgetCommands();
        const int result =
            invoice ? velnoext_start_sale_with_invoice(patience) : velnoext_start_sale(patience);
        const QVector<int> &expected = invoice ? invoiceKeys : keys;
        QCOMPARE(result, expected.isEmpty() ? 6 : 0);
        QList<QByteArray> commands{plain(0)};
        if (!expected.isEmpty())
            commands << plain(3, state, 0, 0, expected, true);
        QCOMPARE(device.commands(), commands);
    }
}

void TestSale::stateQueryMayFail()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(1));
    QCOMPARE(velnoext_start_sale(patience), 5);
    QCOMPARE(velnoext_start_sale_with_invoice(patience), 5);
    QCOMPARE(device.commands(), (QList{plain(0), plain(0)}));
}

void TestSale::stepsAreJudged_data()
{
    QTest::addColumn<QByteArray>("step");
    QTest::addColumn<int>("item"); // the results, by who asks
    QTest::addColumn<int>("medical");
    QTest::addColumn<int>("start");

    const QVector<int> one{1};
    const auto row = [](const char *name, const QByteArray &step, int item, int medical, int start) {
        QTest::newRow(name) << step << item << medical << start;
    };
    row("taken", plain(5, one, 0), 0, 0, 0);
    row("longer list", plain(5, QVector<int>{1, 0, 9}, 0), 0, 0, 0);
    row("error", plain(5, one, 3), 8, 7, 7);
    row("negative error", plain(5, one, -1), 8, 7, 7);
    row("other step", plain(5, QVector<int>{2}, 0), 7, 7, 7);
    row("no step", plain(5, QVector<int>{0}, 0), 7, 7, 7);
    row("1 in second place", plain(5, QVector<int>{0, 1}, 0), 7, 7, 7);
    row("empty list", plain(5, QVector<int>{}, 0), 7, 7, 7);
    row("other step before error", plain(5, QVector<int>{2}, 3), 7, 7, 7);
    for (const int state : {smallestInt, -1, 0, 1, 4, 6, 7, largestInt})
        row(QByteArray::number(state), plain(state, one, 0), 6, 6, 6);
    row("state before list", plain(1, QVector<int>{}, 3), 6, 6, 6);
    row("list before state", plain(1, 2, 1), 5, 5, 5);
    row("error missing before list", plain(5, QVector<int>{2}), 5, 5, 5);
}

void TestSale::stepsAreJudged()
{
    QFETCH(const QByteArray, step);
    QFETCH(const int, item);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (const Call &call : calls()) {
        const QString name = QString::fromLatin1(call.name);
        const bool missing = item == 5; // then nothing may follow what is there
        const QByteArray totals = missing ? QByteArray() : someTotals();
        QFETCH(const int, start);
        QFETCH(const int, medical);
        Outputs out;
        if (call.reply == goodStep()) {
            answer(device, call, step);
            QCOMPARE(call.run(out), start);
        } else if (call.reply == plain(true) + goodStep()) {
            answer(device, call, plain(true) + step);
            QCOMPARE(call.run(out), medical);
        } else if (name != QLatin1String("state")) {
            answer(device, call, plain(true) + step + totals);
            QCOMPARE(call.run(out), item);
            QCOMPARE(out.untouched(), item != 0);
        }
        if (!call.idleState.isEmpty())
            continue;
        Outputs untouched;
        answer(device, call, plain(false) + step + totals); // refused, whatever follows
        QCOMPARE(call.run(untouched), 8);
        answer(device, call, plain(false));
        QCOMPARE(call.run(untouched), 8);
        QVERIFY(untouched.untouched());
        QCOMPARE(velnoext_error_detail(), 0);
    }
}

void TestSale::saleStatesAreJudged_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("first");

    const int untouched = Outputs().first;
    const QByteArray rest = plain(0) + someTotals() + plain(17, 18);
    QTest::newRow("open") << plain(true, 5, QVector<int>{1}) + rest << 0 << 1;
    QTest::newRow("any step") << plain(true, 5, QVector<int>{-7, 1}) + rest << 0 << -7;
    QTest::newRow("error is not looked at")
        << plain(true, 5, QVector<int>{1}, 3) + someTotals() + plain(17, 18) << 0 << 1;
    QTest::newRow("refused") << plain(false, 5, QVector<int>{1}) + rest << 8 << untouched;
    QTest::newRow("refused alone") << plain(false) << 8 << untouched;
    QTest::newRow("idle") << plain(true, 1, QVector<int>{1}) + rest << 6 << untouched;
    QTest::newRow("idle, nothing more") << plain(true, 7) << 6 << untouched;
    QTest::newRow("empty list") << plain(true, 5, QVector<int>{}) + rest << 7 << untouched;
    QTest::newRow("empty list, nothing more") << plain(true, 5, QVector<int>{}) << 7 << untouched;
    QTest::newRow("list cut") << plain(true, 5, 2, 1) << 5 << untouched;
    QTest::newRow("nothing behind the list") << plain(true, 5, QVector<int>{42}) << 5 << 42;
}

void TestSale::saleStatesAreJudged()
{
    QFETCH(const QByteArray, reply);
    QFETCH(const int, result);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(reply);
    Outputs out;
    QCOMPARE(velnoext_sale_state(patience, &out.first, &out.totals, &out.receipt), result);
    QTEST(out.first, "first");
    QCOMPARE(out.untouchedBesidesFirst(), result != 0);
    QCOMPARE(device.commands(), QList{hex("00000006")});
}

void TestSale::itemsAreChecked_data()
{
    QTest::addColumn<VelnoSaleItem>("item");
    QTest::addColumn<int>("single"); // the details, 0 for none
    QTest::addColumn<int>("listed");

    VelnoSaleItem plainItem = {};
    plainItem.price = 1000;
    plainItem.quantity = 1000;
    plainItem.section = 1;
    const auto row = [plainItem](const char *name, auto change, int single, int listed) {
        VelnoSaleItem item = plainItem;
        change(item);
        QTest::newRow(name) << item << single << listed;
    };
    const auto both = [row](const char *name, auto change, int detail) { row(name, change, detail, detail); };
    using Item = VelnoSaleItem;
    both(
        "plain", [](Item &) {}, 0);
    both(
        "negative price", [](Item &item) { item.price = -1; }, 0);
    both(
        "section -128", [](Item &item) { item.section = -128; }, 0x406);
    both(
        "section -1", [](Item &item) { item.section = -1; }, 0x406);
    both(
        "section 0", [](Item &item) { item.section = 0; }, 0x406);
    both(
        "section 8", [](Item &item) { item.section = 8; }, 0);
    both(
        "section 9", [](Item &item) { item.section = 9; }, 0x406);
    both(
        "section 127", [](Item &item) { item.section = 127; }, 0x406);
    both(
        "percentage -100", [](Item &item) { item.percentage = -100; }, 0);
    both(
        "percentage -101", [](Item &item) { item.percentage = -101; }, 0x407);
    both(
        "lowest percentage", [](Item &item) { item.percentage = smallestInt; }, 0x407);
    both(
        "highest percentage", [](Item &item) { item.percentage = largestInt; }, 0);
    both(
        "amount 1", [](Item &item) { item.amount = 1; }, 0);
    both(
        "amount as the total", [](Item &item) { item.amount = 1000; }, 0);
    both(
        "amount above the total", [](Item &item) { item.amount = 1001; }, 0x408);
    both(
        "negative amount", [](Item &item) { item.amount = -1; }, 0x408);
    both(
        "amount with a percentage", [](Item &item) { item.amount = 9999, item.percentage = 1; }, 0);
    both(
        "negative amount with a percentage", [](Item &item) { item.amount = -1, item.percentage = -1; }, 0);
    both(
        "type 7", [](Item &item) { item.type = 7; }, 0);
    both(
        "type 8", [](Item &item) { item.type = 8; }, 0x409);
    both(
        "type -1", [](Item &item) { item.type = -1; }, 0x409);
    both(
        "lowest type", [](Item &item) { item.type = smallestInt; }, 0x409);
    both(
        "section before percentage", [](Item &item) { item.section = 0, item.percentage = -101; }, 0x406);
    both(
        "percentage before type", [](Item &item) { item.percentage = -101, item.type = 8; }, 0x407);
    both(
        "amount before type", [](Item &item) { item.amount = 1001, item.type = 8; }, 0x408);
    both(
        "section before amount", [](Item &item) { item.section = 9, item.amount = 1001; }, 0x406);
    row(
        "no price", [](Item &item) { item.price = 0; }, 0, 0x405);
    row(
        "no price, no section", [](Item &item) { item.price = 0, item.section = 0; }, 0, 0x405);
    row(
        "no price, any amount", [](Item &item) { item.price = 0, item.amount = -5; }, 0, 0x405);
    row(
        "no price, percentage", [](Item &item) { item.price = 0, item.percentage = -101, item.type = 8; },
        0x407, 0x405);
    row(
        "no price, type", [](Item &item) { item.price = 0, item.type = 8; }, 0x409, 0x405);
}

void TestSale::itemsAreChecked()
{
    QFETCH(VelnoSaleItem, item);
    QFETCH(const int, single);
    QFETCH(const int, listed);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + goodStep() + someTotals());
    const QByteArray bytes = plain(qint64(item.price), item.quantity, item.percentage, qint64(item.amount),
                                   qint8(item.section), QByteArray(""), item.type);
    Outputs out;
    QCOMPARE(velnoext_add_sale_item(patience, &item, &out.totals), single == 0 ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), single);
    QCOMPARE(device.commands(), single == 0 ? QList{plain(4) + bytes} : QList<QByteArray>());
    QCOMPARE(out.untouched(), single != 0);

    Outputs listOut;
    device.forgetCommands();
    VelnoSaleItemList list = listOf({goodItem(), item, goodItem()});
    QCOMPARE(velnoext_add_multiple_sale_items(patience, &list, &listOut.totals), listed == 0 ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), listed);
    const QByteArray request = plain(16, qint16(3)) + goodItemBytes() + bytes + goodItemBytes();
    QCOMPARE(device.commands(), listed == 0 ? QList{request} : QList<QByteArray>());
    QCOMPARE(listOut.untouched(), listed != 0);
}

void TestSale::extremeItems_data()
{
    QTest::addColumn<qint64>("price");
    QTest::addColumn<qint32>("quantity");
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<bool>("passes");

    const auto row = [](const char *name, qint64 price, qint32 quantity, qint64 amount, bool passes) {
        QTest::newRow(name) << price << quantity << amount << passes;
    };
    row("largest price", largestPrice, 1000, largestPrice, true);
    row("largest price, negative amount", largestPrice, 1000, -1, false);
    row("largest price, smallest amount", largestPrice, 1000, smallestPrice, false);
    row("largest of both", largestPrice, largestInt, largestPrice, true);
    row("largest price, smallest quantity", largestPrice, smallestInt, 1, false);
    row("largest price, smallest quantity, no amount", largestPrice, smallestInt, 0, true);
    row("smallest price, largest quantity", smallestPrice, largestInt, largestPrice, false);
    row("smallest of both", smallestPrice, smallestInt, largestPrice, true);
    row("smallest price", smallestPrice, 1000, 1, false);
    row("smallest price, as its amount", smallestPrice, 1000, smallestPrice, false);
    row("negative total", 100, -1000, 1, false);
    row("negative total, negative amount", 100, -1000, -150, false);
    // Read without their signs these amounts fit.
    row("2^64 - 2, negative amount", largestPrice, 2000, -2, false);
    row("far beyond 2^64, negative amount", largestPrice, largestInt, -1, false);
    row("far beyond 2^64, smallest amount", smallestPrice, smallestInt, smallestPrice, false);
    row("no quantity", largestPrice, 0, 1, false);
    row("less than half", 1, 499, 1, false);
    row("half", 1, 500, 1, true);
}

void TestSale::extremeItems()
{
    QFETCH(const qint64, price);
    QFETCH(const qint32, quantity);
    QFETCH(const qint64, amount);
    QFETCH(const bool, passes);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + goodStep() + someTotals());
    VelnoSaleItem item = {};
    item.price = price;
    item.quantity = quantity;
    item.amount = amount;
    item.section = 1;
    Outputs out;
    QCOMPARE(velnoext_add_sale_item(patience, &item, &out.totals), passes ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), passes ? 0 : 0x408);
    const QByteArray request = plain(4, price, quantity, 0, amount, qint8(1), QByteArray(""), 0);
    QCOMPARE(device.commands(), passes ? QList{request} : QList<QByteArray>());
}

void TestSale::listsAreChecked_data()
{
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("faulty"); // index of an item that has every fault
    QTest::addColumn<int>("detail");

    QTest::newRow("0") << 0 << -1 << 0x40A;
    QTest::newRow("1") << 1 << -1 << 0;
    QTest::newRow("10") << 10 << -1 << 0;
    QTest::newRow("11") << 11 << -1 << 0x40A;
    QTest::newRow("65535") << 65535 << -1 << 0x40A;
    QTest::newRow("count before items") << 11 << 0 << 0x40A;
    QTest::newRow("first item") << 10 << 0 << 0x405;
    QTest::newRow("last item") << 10 << 9 << 0x405;
    QTest::newRow("item behind the count") << 9 << 9 << 0;
}

void TestSale::listsAreChecked()
{
    QFETCH(const int, count);
    QFETCH(const int, faulty);
    QFETCH(const int, detail);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + goodStep() + someTotals());
    VelnoSaleItemList list = listOf(QList<VelnoSaleItem>(10, goodItem()));
    list.count = quint16(count);
    if (faulty >= 0)
        list.items[faulty] = {0, 0, -101, 0, "", 0, -1};
    Outputs out;
    QCOMPARE(velnoext_add_multiple_sale_items(patience, &list, &out.totals), detail == 0 ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), detail);
    QCOMPARE(out.untouched(), detail != 0);
    if (detail == 0)
        QCOMPARE(device.commands(), QList{plain(16, qint16(count)) + goodItemBytes().repeated(count)});
    else
        QVERIFY(device.commands().isEmpty());
}

void TestSale::namesAreCut_data()
{
    QTest::addColumn<QByteArray>("storage");
    QTest::addColumn<QByteArray>("sent");

    const QByteArray letters(53, 'n');
    QTest::newRow("empty") << QByteArray() << hex("00000000");
    QTest::newRow("short") << QByteArray("a") << hex("0000000161");
    QTest::newRow("52 and a zero") << letters.first(52) << hex("00000034") + letters.first(52);
    QTest::newRow("no zero") << letters << hex("00000034") + letters.first(52);
    QTest::newRow("behind a zero") << QByteArray("ab\0cd", 5) << hex("000000026162");
    QTest::newRow("any bytes") << hex("FF80C59E") << hex("00000004FF80C59E");
}

void TestSale::namesAreCut()
{
    QFETCH(const QByteArray, storage);
    QFETCH(const QByteArray, sent);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + goodStep() + someTotals());
    VelnoSaleItem item = {};
    item.section = -1; // would show if a name were read on into its neighbour
    std::copy(storage.cbegin(), storage.cend(), item.name);
    Outputs out;
    QCOMPARE(velnoext_add_sale_item(patience, &item, &out.totals), 0);
    QCOMPARE(device.commands(), QList{plain(4, qint64(0), 0, 0, qint64(0), qint8(-1)) + sent + plain(0)});
}

void TestSale::lineTotalsAreRounded_data()
{
    QTest::addColumn<qint64>("price");
    QTest::addColumn<qint32>("quantity");
    QTest::addColumn<quint64>("total");

    const auto row = [](const char *name, qint64 price, qint32 quantity, quint64 total) {
        QTest::newRow(name) << price << quantity << total;
    };
    row("whole", 1250, 2000, 2500);
    row("nothing", 0, 1000, 0);
    row("no quantity", 1250, 0, 0);
    row("below half", 1, 499, 0);
    row("half", 1, 500, 1);
    row("half above an even number", 5, 500, 3);
    row("just below half", 3, 1499, 4);
    row("two negatives", -1250, -2000, 2500);
    row("negative", -1, 1000, 0);
    row("negative half", -1, 500, 0);
    // Numbers of which double precision would lose the last bits.
    row("half of the largest", largestPrice, 500, quint64(1) << 62);
    row("largest", largestPrice, 1000, quint64(largestPrice));
    // Adding a half to an odd number beyond 2^63 has no bit left for the half.
    row("odd beyond 2^63", (qint64(1) << 62) + 1, 2000, (quint64(1) << 63) + 2);
    row("2^64 - 2", largestPrice, 2000, largestTotal - 1);
    row("beyond 2^64", largestPrice, 2001, largestTotal);
    row("far beyond", largestPrice, largestInt, largestTotal);
    row("far below", largestPrice, smallestInt, 0);
    row("smallest of both", smallestPrice, smallestInt, largestTotal);
}

void TestSale::lineTotalsAreRounded()
{
    QFETCH(const qint64, price);
    QFETCH(const qint32, quantity);
    VelnoSaleItem item = {};
    item.price = price;
    item.quantity = quantity;
    QTEST(lineTotal(item), "total");
}

void TestSale::contributionsNeedAPerson_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<quint64>("identityNo");
    QTest::addColumn<QByteArray>("sent"); // empty: refused

    const QByteArray head = hex("00000009");
    const auto row = [](const char *name, qint64 amount, quint64 identityNo, const QByteArray &sent) {
        QTest::newRow(name) << amount << identityNo << sent;
    };
    row("nobody needed", 0, 5, head + hex("0000000000000000"));
    row("person", 1, 10000000146, head + plain(qint64(1), qint64(10000000146)));
    row("anybody", largestPrice, anybody, head + plain(largestPrice, qint64(anybody)));
    row("negative amount", -1, anybody, head + plain(qint64(-1), qint64(anybody)));
    row("no number", 1, 0, {});
    row("10 digits", 1, 1111111111, {});
    row("check digit", 1, 10000000147, {});
    row("nearly anybody", 1, 11111111112, {});
    row("12 digits", 1, 111111111111, {});
    row("negative amount without person", -1, 1, {});
    row("largest", 1, largestTotal, {});
    row("10000000146 modulo 2^63", 1, (quint64(1) << 63) + 10000000146, {});
}

void TestSale::contributionsNeedAPerson()
{
    QFETCH(const qint64, amount);
    QFETCH(const quint64, identityNo);
    QFETCH(const QByteArray, sent);
    QCOMPARE(velnoext_add_medical_contribution(patience, amount, identityNo), 1);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + goodStep());
    const bool refused = sent.isEmpty();
    QCOMPARE(velnoext_add_medical_contribution(patience, amount, identityNo), refused ? 4 : 0);
    QCOMPARE(velnoext_error_detail(), refused ? 0x403 : 0);
    QCOMPARE(device.commands(), refused ? QList<QByteArray>() : QList{sent});
    closeConnection();
    QCOMPARE(velnoext_add_medical_contribution(patience, amount, identityNo), 2);
}

void TestSale::anyIndexIsSent_data()
{
    QTest::addColumn<int>("index");
    for (const int index : {smallestInt, -1, 0, 1, largestInt})
        QTest::addRow("%d", index) << index;
}

void TestSale::anyIndexIsSent()
{
    QFETCH(const int, index);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + goodStep() + someTotals());
    Outputs out;
    QCOMPARE(velnoext_delete_sale_item(patience, index, &out.totals), 0);
    QCOMPARE(device.commands(), QList{plain(5, index)});
}

QTEST_GUILESS_MAIN(TestSale)
#include "tst_sale.moc"
