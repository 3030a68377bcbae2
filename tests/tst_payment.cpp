// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connections.h"
#include "tests/support/library_test.h"
#include "tests/support/sale_calls.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <cstddef>
#include <cstring>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno::Ext;

namespace {

QList<Call> calls()
{
    static VelnoReceiptRef receipt = {1, -2};
    static VelnoInvoice invoice = goodInvoice();
    return {
        {"payment",
         [](Outputs &) { return velnoext_add_payment(0, 1); },
         keysRequest({48, comma, 48, 49, f10}, false),
         {},
         openSale()},
        {"end", [](Outputs &) { return velnoext_end_sale(1); }, keysRequest({f11}, false), {}, openSale()},
        {"cancel", [](Outputs &) { return velnoext_cancel_sale(patience); }, keysRequest({67, 49}, true),
         plain(1, QVector<int>{2, 3}), openSale()},
        {"invoice",
         [](Outputs &) { return velnoext_end_sale_with_invoice(&invoice); },
         goodInvoiceRequest(),
         plain(true),
         {}},
        {"receipt",
         [](Outputs &out) { return velnoext_receipt_data(patience, &receipt, &out.totals); },
         hex("00000007 00000001 FFFFFFFE"),
         plain(true) + someTotals(),
         {}},
        {"active acquirers",
         [](Outputs &out) { return velnoext_active_acquirers(patience, out.list, &out.count); },
         hex("00000013"),
         plain(QVector<int>{46, -62, 64}),
         {}},
        {"acquirers of sale",
         [](Outputs &out) { return velnoext_acquirers_of_sale(patience, out.list, &out.count); },
         hex("00000014"),
         plain(QVector<int>{46, -62, 64}),
         {}},
        {"section",
         [](Outputs &out) { return velnoext_section_data(patience, &out.item); },
         hex("0000000A 03"),
         plain(QByteArray("Manav"), 800),
         {}},
    };
}

} // namespace

/** The calls that pay for a sale, end it and ask about it: what they send, what they write, how they fail. */
class TestPayment : public LibraryTest
{
    Q_OBJECT

private slots:
    void structureHasItsLayout();
    void nothingWorksUnprepared_data();
    void nothingWorksUnprepared();
    void goodCallsReachTheRegister_data();
    void goodCallsReachTheRegister();
    void goodCallsWriteTheirOutputs();
    void keysAreNotWaitedFor_data();
    void keysAreNotWaitedFor();
    void everyPrefixIsUnreadable_data();
    void everyPrefixIsUnreadable();
    void announcedSizesTakeNoMemory_data();
    void announcedSizesTakeNoMemory();
    void brokenRepliesLeaveOutputsAlone_data();
    void brokenRepliesLeaveOutputsAlone();
    void refusalsAreTold_data();
    void refusalsAreTold();
    void missingPointersAreNamed_data();
    void missingPointersAreNamed();
    void keysNeedAReadySale_data();
    void keysNeedAReadySale();
    void connectionMayEndBeforeTheKeys_data();
    void connectionMayEndBeforeTheKeys();
    void cancelledSalesAreIdle_data();
    void cancelledSalesAreIdle();
};

void TestPayment::structureHasItsLayout()
{
    QCOMPARE(sizeof(VelnoInvoice), size_t(48));
    QCOMPARE(offsetof(VelnoInvoice, invoiceType), size_t(0));
    QCOMPARE(offsetof(VelnoInvoice, idKind), size_t(4));
    QCOMPARE(offsetof(VelnoInvoice, idNumber), size_t(8));
    QCOMPARE(sizeof(VelnoInvoice::idNumber), size_t(12));
    QCOMPARE(offsetof(VelnoInvoice, reference), size_t(20));
    QCOMPARE(sizeof(VelnoInvoice::reference), size_t(17));
    QCOMPARE(offsetof(VelnoInvoice, mode), size_t(40));
    QCOMPARE(offsetof(VelnoInvoice, flag), size_t(44));
}

void TestPayment::nothingWorksUnprepared_data()
{
    addCallRows(calls());
}

void TestPayment::nothingWorksUnprepared()
{
    QFETCH(const QString, name);
    TestSupport::checkNothingWorksUnprepared(callNamed(calls(), name).run, Outputs());
}

void TestPayment::goodCallsReachTheRegister_data()
{
    addCallRows(calls());
}

void TestPayment::goodCallsReachTheRegister()
{
    QFETCH(const QString, name);
    const Call call = callNamed(calls(), name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    answer(device, call, call.reply.isEmpty() ? QByteArray() : call.reply + "more than is read");
    library().errorDetail = 0x300; // of a call before
    Outputs out;
    QCOMPARE(call.run(out), 0);
    QCOMPARE(velnoext_error_detail(), 0);
    // Keys are not waited for: they may still be on their way.
    QTRY_COMPARE_WITH_TIMEOUT(device.commands(),
                              call.asksFirst() ? QList({plain(0), call.request}) : QList{call.request},
                              int(patience));
}

void TestPayment::goodCallsWriteTheirOutputs()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const auto run = [&device](const char *name, Outputs &out) {
        const Call call = callNamed(calls(), QString::fromLatin1(name));
        answer(device, call, call.reply);
        return call.run(out);
    };
    const Outputs fresh;
    Outputs receipt;
    QCOMPARE(run("receipt", receipt), 0);
    QCOMPARE(bytesOf(receipt.totals), someTotals());
    for (const char *const name : {"active acquirers", "acquirers of sale"}) {
        Outputs acquirers;
        QCOMPARE(run(name, acquirers), 0);
        QCOMPARE(acquirers.count, 3);
        QCOMPARE(QVector<int>(acquirers.list, acquirers.list + 3), (QVector<int>{46, -62, 64}));
        QCOMPARE(acquirers.list[3], fresh.list[3]);
    }
    Outputs section;
    QCOMPARE(run("section", section), 0);
    QCOMPARE(section.item.name, "Manav");
    QCOMPARE(section.item.quantity, 800);
    std::memcpy(section.item.name, fresh.item.name, 6);
    section.item.quantity = fresh.item.quantity;
    QVERIFY(section.untouched()); // nothing else was written
}

void TestPayment::keysAreNotWaitedFor_data()
{
    addCallRows(calls(), [](const Call &call) { return call.asksFirst() && call.reply.isEmpty(); });
}

void TestPayment::keysAreNotWaitedFor()
{
    QFETCH(const QString, name);
    const Call call = callNamed(calls(), name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerInTurn({openSale(), {}, plain(true)}); // silent to the keys
    Outputs out;
    QCOMPARE(call.run(out), 0);
    QCOMPARE(velnoext_login(patience), 0);
    QCOMPARE(device.commands(), (QList{plain(0), call.request, plain(1)}));
}

void TestPayment::everyPrefixIsUnreadable_data()
{
    addCallRows(calls(), [](const Call &call) { return call.reply.size() > 1; });
}

void TestPayment::everyPrefixIsUnreadable()
{
    QFETCH(const QString, name);
    const Call call = callNamed(calls(), name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (qsizetype size = 1; size < call.reply.size(); ++size) {
        answer(device, call, call.reply.first(size));
        Outputs out;
        QVERIFY2(call.run(out) == 5, QByteArray::number(size));
        QVERIFY2(out.untouched(), QByteArray::number(size));
        QCOMPARE(velnoext_error_detail(), 0);
    }
}

void TestPayment::announcedSizesTakeNoMemory_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("head");

    QTest::newRow("cancel") << u"cancel"_s << plain(1);
    QTest::newRow("active acquirers") << u"active acquirers"_s << QByteArray();
    QTest::newRow("acquirers of sale") << u"acquirers of sale"_s << QByteArray();
    QTest::newRow("section") << u"section"_s << QByteArray();
}

void TestPayment::announcedSizesTakeNoMemory()
{
    QFETCH(const QString, name);
    QFETCH(const QByteArray, head);
    const Call call = callNamed(calls(), name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (const quint32 count : {500U, 0x3FFFFFFFU, 0x40000000U, 0x7FFFFFFFU, 0xFFFFFFFEU}) {
        answer(device, call, head + plain(count) + QByteArray(400, 'n'));
        Outputs out;
        QCOMPARE(call.run(out), 5);
        QVERIFY(out.untouched());
    }
    // In front of the keys the state's list.
    if (call.asksFirst()) {
        device.answerInTurn({plain(5, 0xFFFFFFFFU, 1, 0)});
        Outputs out;
        QCOMPARE(call.run(out), 5);
    }
}

void TestPayment::brokenRepliesLeaveOutputsAlone_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("behindTheState");
    QTest::addColumn<QList<QByteArray>>("frames");
    QTest::addColumn<int>("result");

    for (const Call &call : calls()) {
        for (const bool behind : {false, true}) {
            if (behind && (!call.asksFirst() || call.reply.isEmpty()))
                continue;
            const QByteArray reply = call.asksFirst() && !behind ? openSale() : call.reply;
            for (const BrokenAnswer &broken : brokenAnswers(reply))
                QTest::addRow("%s: %s%s", call.name, broken.name, behind ? " at last" : "")
                    << QString::fromLatin1(call.name) << behind << broken.frames << broken.result;
        }
    }
}

void TestPayment::brokenRepliesLeaveOutputsAlone()
{
    QFETCH(const QString, name);
    QFETCH(const bool, behindTheState);
    QFETCH(const QList<QByteArray>, frames);
    const LogCapture capture;
    const Call call = callNamed(calls(), name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const QByteArray open = HandMadeDevice::framed(device.sealed(openSale()));
    device.setAnswer([&device, behindTheState, frames, open](const QByteArray &payload) {
        return behindTheState && device.opened(payload) == plain(0) ? QList{open} : frames;
    });
    Outputs out;
    QTEST(call.run(out), "result");
    QVERIFY(out.untouched());
    QCOMPARE(velnoext_error_detail(), 0);
    QCOMPARE(device.commands().size(), behindTheState ? 2 : 1);
}

void TestPayment::refusalsAreTold_data()
{
    addCallRows(calls(), [](const Call &call) { return call.reply.startsWith('\x01'); });
}

void TestPayment::refusalsAreTold()
{
    QFETCH(const QString, name);
    const Call call = callNamed(calls(), name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (const QByteArray &reply : {plain(false) + call.reply.sliced(1), plain(false)}) {
        answer(device, call, reply);
        Outputs out;
        QCOMPARE(call.run(out), 8);
        QCOMPARE(velnoext_error_detail(), 0);
        QVERIFY(out.untouched());
    }
}

void TestPayment::missingPointersAreNamed_data()
{
    using Run = std::function<int()>;
    QTest::addColumn<Run>("run");
    QTest::addColumn<int>("detail");

    static Outputs out;
    static VelnoReceiptRef noReceipt = {0, 0}; // its faults come after the pointers
    const auto row = [](const char *name, const Run &run, int detail) {
        QTest::newRow(name) << run << detail;
    };
    row(
        "active: both", [] { return velnoext_active_acquirers(patience, nullptr, nullptr); }, 0x309);
    row(
        "active: list", [] { return velnoext_active_acquirers(patience, nullptr, &out.count); }, 0x309);
    row(
        "active: count", [] { return velnoext_active_acquirers(patience, out.list, nullptr); }, 0x30A);
    row(
        "of sale: both", [] { return velnoext_acquirers_of_sale(patience, nullptr, nullptr); }, 0x309);
    row(
        "of sale: list", [] { return velnoext_acquirers_of_sale(patience, nullptr, &out.count); }, 0x309);
    row(
        "of sale: count", [] { return velnoext_acquirers_of_sale(patience, out.list, nullptr); }, 0x30A);
    row(
        "invoice", [] { return velnoext_end_sale_with_invoice(nullptr); }, 0x308);
    row(
        "receipt: both", [] { return velnoext_receipt_data(patience, nullptr, nullptr); }, 0x305);
    row(
        "receipt: receipt", [] { return velnoext_receipt_data(patience, nullptr, &out.totals); }, 0x305);
    row(
        "receipt: totals", [] { return velnoext_receipt_data(patience, &noReceipt, nullptr); }, 0x304);
    row(
        "section", [] { return velnoext_section_data(patience, nullptr); }, 0x306);
}

void TestPayment::missingPointersAreNamed()
{
    QFETCH(const std::function<int()>, run);
    QFETCH(const int, detail);
    TestSupport::checkMissingPointerIsNamed(run, detail);
}

void TestPayment::keysNeedAReadySale_data()
{
    QTest::addColumn<QByteArray>("state");
    QTest::addColumn<int>("result");

    const QVector<int> one{1};
    QTest::newRow("ready") << openSale() << 0;
    QTest::newRow("longer list") << plain(5, QVector<int>{1, 0}, 0) << 0;
    QTest::newRow("the harmless flag") << openSale(8) << 0;
    QTest::newRow("another beside it") << openSale(9) << 8;
    for (const int extra : {smallestInt, -1, -8, 1, 2, 4, 7, 16, 24, largestInt})
        QTest::addRow("extra %d", extra) << openSale(extra) << 8;
    for (const int state : {smallestInt, -1, 0, 1, 4, 6, 7, largestInt})
        QTest::addRow("state %d", state) << plain(state, one, 0) << 6;
    QTest::newRow("state before list") << plain(1, QVector<int>{}) << 6;
    QTest::newRow("empty list") << plain(5, QVector<int>{}, 0) << 7;
    QTest::newRow("other step") << plain(5, QVector<int>{2}, 0) << 7;
    QTest::newRow("1 in second place") << plain(5, QVector<int>{0, 1}, 0) << 7;
    QTest::newRow("list before extra") << plain(5, QVector<int>{0}, 9) << 7;
    QTest::newRow("extra missing") << plain(5, one) << 5;
    QTest::newRow("extra missing before list") << plain(5, QVector<int>{0}) << 5;
    QTest::newRow("list cut") << plain(5, 2, 1) << 5;
    QTest::newRow("list missing") << plain(5) << 5;
}

void TestPayment::keysNeedAReadySale()
{
    QFETCH(const QByteArray, state);
    QFETCH(const int, result);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (const Call &call : calls()) {
        if (!call.asksFirst())
            continue;
        device.forgetCommands();
        device.answerInTurn(result == 0 ? QList{state, call.reply, plain(true)} : QList{state, plain(true)});
        Outputs out;
        QCOMPARE(call.run(out), result);
        QCOMPARE(velnoext_error_detail(), 0);
        QCOMPARE(velnoext_login(patience), 0); // whatever was sent has come by now
        const QList<QByteArray> commands = device.commands();
        QCOMPARE(commands,
                 result == 0 ? QList({plain(0), call.request, plain(1)}) : QList({plain(0), plain(1)}));
    }
}

void TestPayment::connectionMayEndBeforeTheKeys_data()
{
    addCallRows(calls(), [](const Call &call) { return call.asksFirst(); });
}

void TestPayment::connectionMayEndBeforeTheKeys()
{
    QFETCH(const QString, name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerAndClose(openSale());
    Outputs out;
    QCOMPARE(callNamed(calls(), name).run(out), 2);
    QCOMPARE(velnoext_error_detail(), 0);
    QCOMPARE(device.commands(), QList{plain(0)});
}

void TestPayment::cancelledSalesAreIdle_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<int>("result");

    QTest::newRow("idle") << plain(1, QVector<int>{}) << 0;
    QTest::newRow("any list") << plain(1, QVector<int>{7, 8}) << 0;
    for (const int state : {smallestInt, -1, 0, 2, 5, 7, largestInt})
        QTest::addRow("state %d", state) << plain(state, QVector<int>{1}) << 6;
    QTest::newRow("no list") << plain(1) << 5;
    QTest::newRow("no list, other state") << plain(7) << 5;
}

void TestPayment::cancelledSalesAreIdle()
{
    QFETCH(const QByteArray, reply);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerInTurn({openSale(8), reply});
    QTEST(velnoext_cancel_sale(patience), "result");
    QCOMPARE(velnoext_error_detail(), 0);
    QCOMPARE(device.commands(), (QList{plain(0), keysRequest({67, 49}, true)}));
}

QTEST_GUILESS_MAIN(TestPayment)
#include "tst_payment.moc"
