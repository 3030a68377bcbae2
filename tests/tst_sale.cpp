// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connections.h"
#include "tests/support/library_test.h"
#include "tests/support/sale_calls.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <cstddef>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::Ext;

namespace {

QList<Call> calls()
{
    const QByteArray idle = plain(1, QVector<int>{});
    const QByteArray itemReply = plain(true) + openSale() + someTotals();
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
         hex("00000003 00000001 00000000 00000000 00000001 00000045 01"), openSale(), idle},
        {"start with invoice", [](Outputs &) { return velnoext_start_sale_with_invoice(patience); },
         hex("00000003 00000001 00000000 00000000 00000002 0000004D 00000033 01"), openSale(), idle},
        {"state",
         [](Outputs &out) { return velnoext_sale_state(patience, &out.first, &out.totals, &out.receipt); },
         hex("00000006"),
         plain(true, 5, QVector<int>{42, 2}, 99) + someTotals() + plain(17, 18),
         {}},
        {"item", withItem, hex("00000004") + goodItemBytes(), itemReply, {}},
        {"items", withItems, hex("00000010 0002") + goodItemBytes() + goodItemBytes(), itemReply, {}},
        {"medical",
         [](Outputs &) { return velnoext_add_medical_contribution(patience, 150, 11111111111); },
         hex("00000009 0000000000000096 00000002964619C7"),
         plain(true) + openSale(),
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

} // namespace

/** The calls that open a sale and fill it: what they send, what they write, how they fail. */
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
    addCallRows(calls());
}

void TestSale::nothingWorksUnprepared()
{
    QFETCH(const QString, name);
    TestSupport::checkNothingWorksUnprepared(callNamed(calls(), name).run, Outputs());
}

void TestSale::goodCallsReachTheRegister_data()
{
    addCallRows(calls());
}

void TestSale::goodCallsReachTheRegister()
{
    QFETCH(const QString, name);
    const Call call = callNamed(calls(), name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    answer(device, call, call.reply + "more than is read");
    library().errorDetail = 0x300; // of a call before
    Outputs out;
    QCOMPARE(call.run(out), 0);
    QCOMPARE(velnoext_error_detail(), 0);
    const QList<QByteArray> expected =
        call.state.isEmpty() ? QList{call.request} : QList{hex("00000000"), call.request};
    QCOMPARE(device.commands(), expected);
    const bool tellsTotals = call.reply.contains(someTotals());
    QCOMPARE(bytesOf(out.totals), tellsTotals ? someTotals() : bytesOf(Outputs().totals));
    const bool tellsAll = name == "state"_L1;
    QCOMPARE(out.first, tellsAll ? 42 : Outputs().first);
    QCOMPARE(out.receipt.first, tellsAll ? 17 : Outputs().receipt.first);
    QCOMPARE(out.receipt.second, tellsAll ? 18 : Outputs().receipt.second);
}

void TestSale::everyPrefixIsUnreadable_data()
{
    addCallRows(calls());
}

void TestSale::everyPrefixIsUnreadable()
{
    QFETCH(const QString, name);
    const Call call = callNamed(calls(), name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (qsizetype size = 1; size < call.reply.size(); ++size) {
        const auto where = QByteArray::number(size);
        answer(device, call, call.reply.first(size));
        Outputs out;
        QVERIFY2(call.run(out) == 5, where);
        QVERIFY2(out.untouchedBesidesFirst(), where);
        // Of a sale's state the first number of the list, once it was whole, is known all the same.
        const bool listIsWhole = name == "state"_L1 && size >= 1 + 4 + 4 + 2 * 4;
        QVERIFY2(out.first == (listIsWhole ? 42 : Outputs().first), where);
        QCOMPARE(velnoext_error_detail(), 0);
    }
}

void TestSale::announcedListsTakeNoMemory_data()
{
    addCallRows(calls());
}

void TestSale::announcedListsTakeNoMemory()
{
    QFETCH(const QString, name);
    const Call call = callNamed(calls(), name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const QByteArray flag = call.state.isEmpty() ? plain(true) : QByteArray();
    for (const quint32 count : {200U, 0x3FFFFFFFU, 0x40000000U, 0x7FFFFFFFU, 0xFFFFFFFFU}) {
        answer(device, call, flag + plain(5, count, 1, 0) + QByteArray(400, '\0'));
        Outputs out;
        QCOMPARE(call.run(out), 5);
        QVERIFY(out.untouched());
    }
    if (call.state.isEmpty())
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
    const Call call = callNamed(calls(), name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    Outputs out;
    device.setAnswer([frames](const QByteArray &) { return frames; });
    QTEST(call.run(out), "result"); // for a start: of the state before
    QVERIFY(out.untouched());
    if (call.state.isEmpty())
        return;
    QCOMPARE(connectPaired(device), 0);
    const QByteArray idle = HandMadeDevice::framed(device.sealed(call.state));
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
        device.answerInTurn({plain(state, QVector<int>{9, 9}), openSale()});
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
        if (call.reply == openSale()) {
            answer(device, call, step);
            QCOMPARE(call.run(out), start);
        } else if (call.reply == plain(true) + openSale()) {
            answer(device, call, plain(true) + step);
            QCOMPARE(call.run(out), medical);
        } else if (name != "state"_L1) {
            answer(device, call, plain(true) + step + totals);
            QCOMPARE(call.run(out), item);
            QCOMPARE(out.untouched(), item != 0);
        }
        if (!call.state.isEmpty())
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

QTEST_GUILESS_MAIN(TestSale)
#include "tst_sale.moc"
