#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/identity_numbers.h"
#include "tests/support/library_test.h"
#include "tests/support/test_support.h"

#include <QTest>

#include <cstddef>
#include <cstring>
#include <limits>

using namespace Velno::Ext;
using namespace TestSupport;

namespace {

constexpr qint64 largest = std::numeric_limits<qint64>::max();
constexpr qint64 smallest = std::numeric_limits<qint64>::min();
constexpr int largestInt = std::numeric_limits<int>::max();
constexpr int smallestInt = std::numeric_limits<int>::min();
constexpr int f10 = 0x01000039;
constexpr int f11 = 0x0100003A;
constexpr int comma = 44;

QByteArray openSale(int extra = 0)
{
    return plain(5, QVector<int>{1}, extra);
}

/** The request that has keys pressed while a sale is open. */
QByteArray keysRequest(const QVector<int> &keys, bool answerWanted)
{
    return hex("00000003 00000004 00000001 FFFFFFFF") + plain(keys, answerWanted);
}

/** Keys as one reads them: digits, comma, "F10" and "F11". */
QVector<int> keysOf(const char *text)
{
    QVector<int> keys;
    for (const QByteArray &word : QByteArray(text).split(' '))
        keys << (word == "F10" ? f10 : word == "F11" ? f11 : word == "," ? comma : 48 + word.toInt());
    return keys;
}

QByteArray someTotals()
{
    return plain(qint64(1), qint64(-2), qint64(0x0102030405060708), smallest, largest, -6);
}

QByteArray bytesOf(const VelnoEcrSaleTotals &totals)
{
    QByteArray bytes;
    for (int i = 0; i < 5; ++i)
        bytes += plain(qint64(totals.values[i]));
    return bytes + plain(qint32(totals.number));
}

/** What a call may write to, filled so that any writing shows. */
struct Outputs
{
    VelnoEcrSaleTotals totals;
    VelnoSaleItem item;
    int list[4];
    int count = 4;

    Outputs()
    {
        std::memset(&totals, 0x5A, sizeof totals);
        std::memset(&item, 0x5A, sizeof item);
        std::memset(list, 0x5A, sizeof list);
        item.section = 3;
    }
    bool untouched() const
    {
        const Outputs fresh;
        return std::memcmp(&totals, &fresh.totals, sizeof totals) == 0 &&
               std::memcmp(&item, &fresh.item, sizeof item) == 0 &&
               std::memcmp(list, fresh.list, sizeof list) == 0 && count == fresh.count;
    }
};

VelnoInvoice goodInvoice()
{
    VelnoInvoice invoice = {};
    invoice.invoiceType = 1;
    invoice.idKind = 1;
    std::strcpy(invoice.idNumber, "0000000001");
    std::strcpy(invoice.reference, "ABC123");
    invoice.mode = 2;
    invoice.flag = -5;
    return invoice;
}

/** The bytes of a fixed-size text up to its first zero. */
template <size_t Size>
QByteArray textIn(const char (&storage)[Size])
{
    const QByteArray bytes(storage, Size);
    return bytes.contains('\0') ? bytes.first(bytes.indexOf('\0')) : bytes;
}

QByteArray goodInvoiceRequest()
{
    return hex("0000000E 00000001 00000001 00000006414243313233 0000000A30303030303030303031 00000002 01");
}

/** One function of the family with arguments that pass. */
struct Call
{
    const char *name;
    std::function<int(Outputs &)> run;
    QByteArray request;
    QByteArray reply; ///< a good one; empty for none
    bool pressesKeys; ///< asks for the state first
};

QList<Call> calls()
{
    static VelnoReceiptRef receipt = {1, -2};
    static VelnoInvoice invoice = goodInvoice();
    return {
        {"payment",
         [](Outputs &) { return velnoext_add_payment(0, 1); },
         keysRequest({48, comma, 48, 49, f10}, false),
         {},
         true},
        {"end", [](Outputs &) { return velnoext_end_sale(1); }, keysRequest({f11}, false), {}, true},
        {"cancel", [](Outputs &) { return velnoext_cancel_sale(patience); }, keysRequest({67, 49}, true),
         plain(1, QVector<int>{2, 3}), true},
        {"invoice", [](Outputs &) { return velnoext_end_sale_with_invoice(&invoice); }, goodInvoiceRequest(),
         plain(true), false},
        {"receipt", [](Outputs &out) { return velnoext_receipt_data(patience, &receipt, &out.totals); },
         hex("00000007 00000001 FFFFFFFE"), plain(true) + someTotals(), false},
        {"active acquirers",
         [](Outputs &out) { return velnoext_active_acquirers(patience, out.list, &out.count); },
         hex("00000013"), plain(QVector<int>{46, -62, 64}), false},
        {"acquirers of sale",
         [](Outputs &out) { return velnoext_acquirers_of_sale(patience, out.list, &out.count); },
         hex("00000014"), plain(QVector<int>{46, -62, 64}), false},
        {"section", [](Outputs &out) { return velnoext_section_data(patience, &out.item); },
         hex("0000000A 03"), plain(QByteArray("Manav"), 800), false},
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

void addCallRows(const std::function<bool(const Call &)> &belongs)
{
    QTest::addColumn<QString>("name");
    for (const Call &call : calls()) {
        if (belongs(call))
            QTest::newRow(call.name) << QString::fromLatin1(call.name);
    }
}

void answer(HandMadeDevice &device, const Call &call, const QByteArray &reply)
{
    device.forgetCommands();
    device.answerInTurn(call.pressesKeys ? QList{openSale(), reply} : QList{reply});
}

} // namespace

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
    void amountsAreTyped_data();
    void amountsAreTyped();
    void amountsThatAreNoneComeFirst_data();
    void amountsThatAreNoneComeFirst();
    void otherTypesAreTheSecondKey_data();
    void otherTypesAreTheSecondKey();
    void keysNeedAReadySale_data();
    void keysNeedAReadySale();
    void connectionMayEndBeforeTheKeys_data();
    void connectionMayEndBeforeTheKeys();
    void cancelledSalesAreIdle_data();
    void cancelledSalesAreIdle();
    void acquirersNeedRoom_data();
    void acquirersNeedRoom();
    void invoicesAreChecked_data();
    void invoicesAreChecked();
    void invoiceTextsAreCut_data();
    void invoiceTextsAreCut();
    void taxNumbers_data();
    void taxNumbers();
    void receiptsNeedBothNumbers_data();
    void receiptsNeedBothNumbers();
    void sectionsAreNumbered_data();
    void sectionsAreNumbered();
    void sectionNamesFitOrFail_data();
    void sectionNamesFitOrFail();
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
    addCallRows([](const Call &) { return true; });
}

void TestPayment::nothingWorksUnprepared()
{
    QFETCH(const QString, name);
    TestSupport::checkNothingWorksUnprepared(callNamed(name).run, Outputs());
}

void TestPayment::goodCallsReachTheRegister_data()
{
    addCallRows([](const Call &) { return true; });
}

void TestPayment::goodCallsReachTheRegister()
{
    QFETCH(const QString, name);
    const Call call = callNamed(name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    answer(device, call, call.reply.isEmpty() ? QByteArray() : call.reply + "more than is read");
    library().errorDetail = 0x300; // of a call before
    Outputs out;
    QCOMPARE(call.run(out), 0);
    QCOMPARE(velnoext_error_detail(), 0);
    // Keys are not waited for: they may still be on their way.
    QTRY_COMPARE_WITH_TIMEOUT(device.commands(),
                              call.pressesKeys ? QList({plain(0), call.request}) : QList{call.request},
                              int(patience));
}

void TestPayment::goodCallsWriteTheirOutputs()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const auto run = [&device](const char *name, Outputs &out) {
        const Call call = callNamed(QString::fromLatin1(name));
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
    addCallRows([](const Call &call) { return call.pressesKeys && call.reply.isEmpty(); });
}

void TestPayment::keysAreNotWaitedFor()
{
    QFETCH(const QString, name);
    const Call call = callNamed(name);
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
    addCallRows([](const Call &call) { return call.reply.size() > 1; });
}

void TestPayment::everyPrefixIsUnreadable()
{
    QFETCH(const QString, name);
    const Call call = callNamed(name);
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

    QTest::newRow("cancel") << QStringLiteral("cancel") << plain(1);
    QTest::newRow("active acquirers") << QStringLiteral("active acquirers") << QByteArray();
    QTest::newRow("acquirers of sale") << QStringLiteral("acquirers of sale") << QByteArray();
    QTest::newRow("section") << QStringLiteral("section") << QByteArray();
}

void TestPayment::announcedSizesTakeNoMemory()
{
    QFETCH(const QString, name);
    QFETCH(const QByteArray, head);
    const Call call = callNamed(name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (const quint32 count : {500U, 0x3FFFFFFFU, 0x40000000U, 0x7FFFFFFFU, 0xFFFFFFFEU}) {
        answer(device, call, head + plain(count) + QByteArray(400, 'n'));
        Outputs out;
        QCOMPARE(call.run(out), 5);
        QVERIFY(out.untouched());
    }
    // In front of the keys the state's list.
    if (call.pressesKeys) {
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
            if (behind && (!call.pressesKeys || call.reply.isEmpty()))
                continue;
            const QByteArray reply = call.pressesKeys && !behind ? openSale() : call.reply;
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
    const Call call = callNamed(name);
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
    addCallRows([](const Call &call) { return call.reply.startsWith('\x01'); });
}

void TestPayment::refusalsAreTold()
{
    QFETCH(const QString, name);
    const Call call = callNamed(name);
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

void TestPayment::amountsAreTyped_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::addColumn<QByteArray>("keys");

    const auto row = [](qint64 amount, const char *keys) {
        QTest::addRow("%lld", static_cast<long long>(amount)) << amount << QByteArray(keys);
    };
    row(1, "0 , 0 1");
    row(10, "0 , 1 0");
    row(99, "0 , 9 9");
    row(100, "1 , 0 0");
    row(905, "9 , 0 5");
    row(1000, "1 0 , 0 0");
    row(9999, "9 9 , 9 9");
    row(10000, "1 0 0 , 0 0");
    row(100000, "1 0 0 0 , 0 0");
    row(123456, "1 2 3 4 , 5 6");
    row(50607, "5 0 6 , 0 7");
    row(1000000001, "1 0 0 0 0 0 0 0 , 0 1");
    row(99999999999, "9 9 9 9 9 9 9 9 9 , 9 9");
    row(100000000000, "1 0 0 0 0 0 0 0 0 0 , 0 0");
    row(999999999999, "9 9 9 9 9 9 9 9 9 9 , 9 9");
    // More than 12 digits lose their last ones, two at a time.
    row(1234567890123, "1 2 3 4 5 6 7 8 9 , 0 1");
    row(12345678901234, "1 2 3 4 5 6 7 8 9 0 , 1 2");
    row(largest, "9 2 2 3 3 7 2 0 3 , 6 8");
}

void TestPayment::amountsAreTyped()
{
    QFETCH(const qint64, amount);
    QFETCH(const QByteArray, keys);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    for (const auto &[type, key] : {std::pair(0, f10), std::pair(1, f11)}) {
        device.forgetCommands();
        device.answerInTurn({openSale(), {}, plain(true)});
        QCOMPARE(velnoext_add_payment(type, amount), 0);
        QCOMPARE(velnoext_login(patience), 0);
        const QByteArray request = keysRequest(keysOf(keys.constData()) << key, false);
        QCOMPARE(device.commands(), (QList{plain(0), request, plain(1)}));
    }
}

void TestPayment::amountsThatAreNoneComeFirst_data()
{
    QTest::addColumn<qint64>("amount");
    QTest::newRow("0") << qint64(0);
    QTest::newRow("-1") << qint64(-1);
    QTest::newRow("smallest") << smallest;
}

void TestPayment::amountsThatAreNoneComeFirst()
{
    QFETCH(const qint64, amount);
    QCOMPARE(velnoext_add_payment(0, amount), 4); // before the library is ready
    QCOMPARE(velnoext_error_detail(), 0x412);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QCOMPARE(velnoext_add_payment(1, amount), 4);
    QCOMPARE(velnoext_error_detail(), 0x412);
    QVERIFY(device.commands().isEmpty());
    closeConnection();
    QCOMPARE(velnoext_add_payment(1, amount), 4);
    QCOMPARE(velnoext_error_detail(), 0x412);
    QCOMPARE(velnoext_add_payment(1, 1), 2);
    QCOMPARE(velnoext_error_detail(), 0);
}

void TestPayment::otherTypesAreTheSecondKey_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("key");
    QTest::newRow("0") << 0 << f10;
    for (const int type : {smallestInt, -1, 1, 2, 256, largestInt})
        QTest::addRow("%d", type) << type << f11;
}

void TestPayment::otherTypesAreTheSecondKey()
{
    QFETCH(const int, type);
    QFETCH(const int, key);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerInTurn({openSale(), {}, openSale(), {}, plain(true)});
    QCOMPARE(velnoext_end_sale(type), 0);
    QCOMPARE(velnoext_add_payment(type, 100), 0);
    QCOMPARE(velnoext_login(patience), 0);
    QCOMPARE(device.commands(), (QList{plain(0), keysRequest({key}, false), plain(0),
                                       keysRequest({49, comma, 48, 48, key}, false), plain(1)}));
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
        if (!call.pressesKeys)
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
    addCallRows([](const Call &call) { return call.pressesKeys; });
}

void TestPayment::connectionMayEndBeforeTheKeys()
{
    QFETCH(const QString, name);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerAndClose(openSale());
    Outputs out;
    QCOMPARE(callNamed(name).run(out), 2);
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

void TestPayment::acquirersNeedRoom_data()
{
    QTest::addColumn<QVector<int>>("acquirers");
    QTest::addColumn<int>("room");
    QTest::addColumn<int>("result");

    const QVector<int> three{46, 62, -64};
    QTest::newRow("3 of 4") << three << 4 << 0;
    QTest::newRow("3 of 3") << three << 3 << 0;
    QTest::newRow("3 of 2") << three << 2 << 4;
    QTest::newRow("3 of 0") << three << 0 << 4;
    QTest::newRow("3 of -1") << three << -1 << 4;
    QTest::newRow("3 of the smallest") << three << smallestInt << 4;
    QTest::newRow("3 of the largest") << three << largestInt << 0;
    QTest::newRow("none of 4") << QVector<int>() << 4 << 0;
    QTest::newRow("none of 0") << QVector<int>() << 0 << 0;
    QTest::newRow("none of -1") << QVector<int>() << -1 << 4;
    QTest::newRow("many of 4") << QVector<int>(1000, 9) << 4 << 4;
}

void TestPayment::acquirersNeedRoom()
{
    QFETCH(const QVector<int>, acquirers);
    QFETCH(const int, room);
    QFETCH(const int, result);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(acquirers));
    for (const auto ask : {velnoext_active_acquirers, velnoext_acquirers_of_sale}) {
        QVector<int> list(4, -77);
        int count = room;
        QCOMPARE(ask(patience, list.data(), &count), result);
        QCOMPARE(velnoext_error_detail(), 0);
        QCOMPARE(count, result == 0 ? int(acquirers.size()) : -1);
        const QVector<int> written = result == 0 ? acquirers : QVector<int>();
        QCOMPARE(list, written + QVector<int>(4 - written.size(), -77));
    }
    QCOMPARE(device.commands(), (QList{plain(19), plain(20)}));
}

void TestPayment::invoicesAreChecked_data()
{
    QTest::addColumn<QByteArray>("storage");
    QTest::addColumn<int>("detail");

    using Invoice = VelnoInvoice;
    const auto row = [](const char *name, auto change, int detail) {
        Invoice invoice = goodInvoice();
        change(invoice);
        QTest::newRow(name) << QByteArray(reinterpret_cast<const char *>(&invoice), sizeof invoice) << detail;
    };
    const auto person = [](Invoice &invoice, const char *number) {
        invoice.idKind = 0;
        std::memset(invoice.idNumber, 0, sizeof invoice.idNumber);
        std::memcpy(invoice.idNumber, number, qstrnlen(number, 12));
    };
    const auto tax = [](Invoice &invoice, const char *number) {
        std::memset(invoice.idNumber, 0, sizeof invoice.idNumber);
        std::memcpy(invoice.idNumber, number, qstrnlen(number, 12));
    };
    const auto reference = [](Invoice &invoice, qsizetype length) {
        std::memset(invoice.reference, 0, sizeof invoice.reference);
        std::memset(invoice.reference, 'r', size_t(length));
    };
    row(
        "good", [](Invoice &) {}, 0);
    row(
        "type 0", [](Invoice &invoice) { invoice.invoiceType = 0; }, 0);
    row(
        "type 2", [](Invoice &invoice) { invoice.invoiceType = 2; }, 0);
    row(
        "type 3", [](Invoice &invoice) { invoice.invoiceType = 3; }, 0x40B);
    row(
        "type -1", [](Invoice &invoice) { invoice.invoiceType = unsigned(-1); }, 0x40B);
    row(
        "kind 2", [](Invoice &invoice) { invoice.idKind = 2; }, 0x40C);
    row(
        "kind -1", [](Invoice &invoice) { invoice.idKind = unsigned(-1); }, 0x40C);
    row(
        "mode 1", [](Invoice &invoice) { invoice.mode = 1; }, 0);
    row(
        "mode 0", [](Invoice &invoice) { invoice.mode = 0; }, 0x40D);
    row(
        "mode 3", [](Invoice &invoice) { invoice.mode = 3; }, 0x40D);
    row(
        "mode -1", [](Invoice &invoice) { invoice.mode = -1; }, 0x40D);
    for (const auto &[length, detail] : {std::pair(0, 0x40E), std::pair(5, 0x40E), std::pair(6, 0),
                                         std::pair(16, 0), std::pair(17, 0x40E)}) {
        const auto ofLength = [&reference, length = length](unsigned int type) {
            return [&reference, length, type](Invoice &invoice) {
                invoice.invoiceType = type;
                reference(invoice, length);
            };
        };
        row(QByteArray::number(length) + " of reference", ofLength(0), detail);
        row(QByteArray::number(length) + " of reference, type 1", ofLength(1), 0);
        row(QByteArray::number(length) + " of reference, type 2", ofLength(2), 0);
    }
    row(
        "person", [&](Invoice &invoice) { person(invoice, "10000000146"); }, 0);
    row(
        "anybody", [&](Invoice &invoice) { person(invoice, "11111111111"); }, 0);
    row(
        "person's check digit", [&](Invoice &invoice) { person(invoice, "10000000147"); }, 0x403);
    row(
        "tax number of a person", [&](Invoice &invoice) { person(invoice, "0000000001"); }, 0x403);
    row(
        "no person", [&](Invoice &invoice) { person(invoice, ""); }, 0x403);
    row(
        "12 digits of a person", [&](Invoice &invoice) { person(invoice, "111111111111"); }, 0x403);
    row(
        "tax number's check digit", [&](Invoice &invoice) { tax(invoice, "0000000002"); }, 0x404);
    row(
        "person as tax number", [&](Invoice &invoice) { tax(invoice, "10000000146"); }, 0x404);
    row(
        "anybody as tax number", [&](Invoice &invoice) { tax(invoice, "11111111111"); }, 0x404);
    row(
        "no tax number", [&](Invoice &invoice) { tax(invoice, ""); }, 0x404);
    const auto everything = [](int from) {
        return [from](Invoice &invoice) {
            invoice.invoiceType = from <= 0 ? 3 : 0;
            invoice.idKind = from <= 1 ? 2 : 1;
            invoice.mode = from <= 2 ? 3 : 1;
            std::memset(invoice.reference, from <= 3 ? 0 : 'r', 6);
            std::memset(invoice.idNumber, 0, sizeof invoice.idNumber);
        };
    };
    row("type before all", everything(0), 0x40B);
    row("kind before the rest", everything(1), 0x40C);
    row("mode before the rest", everything(2), 0x40D);
    row("reference before number", everything(3), 0x40E);
    row("number at last", everything(4), 0x404);
}

void TestPayment::invoicesAreChecked()
{
    QFETCH(const QByteArray, storage);
    QFETCH(const int, detail);
    VelnoInvoice invoice;
    std::memcpy(&invoice, storage.constData(), sizeof invoice);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_end_sale_with_invoice(&invoice), detail == 0 ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), detail);
    const QByteArray request = plain(14, invoice.invoiceType, invoice.idKind, textIn(invoice.reference),
                                     textIn(invoice.idNumber), invoice.mode, invoice.flag != 0);
    QCOMPARE(device.commands(), detail == 0 ? QList{request} : QList<QByteArray>());
}

void TestPayment::invoiceTextsAreCut_data()
{
    QTest::addColumn<QByteArray>("reference");
    QTest::addColumn<int>("flag");
    QTest::addColumn<QByteArray>("sent"); // reference, number, mode, flag

    const QByteArray number = hex("0000000A30303030303030303031 00000001");
    QTest::newRow("empty") << QByteArray() << 0 << hex("00000000") + number + hex("00");
    QTest::newRow("17, no zero") << QByteArray(17, 'r') << 1
                                 << hex("00000011") + QByteArray(17, 'r') + number + hex("01");
    QTest::newRow("behind a zero") << QByteArray("ab\0cd", 5) << smallestInt
                                   << hex("000000026162") + number + hex("01");
    QTest::newRow("any bytes") << hex("FFC59E") << 256 << hex("00000003FFC59E") + number + hex("01");
}

void TestPayment::invoiceTextsAreCut()
{
    QFETCH(const QByteArray, reference);
    QFETCH(const int, flag);
    QFETCH(const QByteArray, sent);
    VelnoInvoice invoice = goodInvoice();
    std::memset(invoice.reference, 0, sizeof invoice.reference);
    std::copy(reference.cbegin(), reference.cend(), invoice.reference);
    invoice.invoiceType = 2;
    invoice.mode = 1;
    invoice.flag = flag;
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_end_sale_with_invoice(&invoice), 0);
    QCOMPARE(device.commands(), QList{plain(14, 2, 1) + sent});
}

void TestPayment::taxNumbers_data()
{
    QTest::addColumn<QByteArray>("number");
    QTest::addColumn<bool>("valid");

    const auto row = [](const QByteArray &number, bool valid) { QTest::newRow(number) << number << valid; };
    row("0000000001", true);
    row("0000000002", false);
    row("1234567890", true);
    row("1234567891", false);
    row("000000001", false);
    row("00000000010", false);
    row("000000000A", false);
    row("A000000001", false);
    row("000000000/", false);
    row("000000000:", false);
    row("", false);
    // Only one last digit fits to the others.
    for (char last = '0'; last <= '9'; ++last)
        row(QByteArray("999999999") + last, last == '4');
}

void TestPayment::taxNumbers()
{
    QFETCH(const QByteArray, number);
    QTEST(isTaxNumber(number), "valid");
}

void TestPayment::receiptsNeedBothNumbers_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("second");
    QTest::addColumn<int>("detail");

    QTest::newRow("both") << 1 << 2 << 0;
    QTest::newRow("extremes") << smallestInt << largestInt << 0;
    QTest::newRow("no first") << 0 << 2 << 0x40F;
    QTest::newRow("no second") << 1 << 0 << 0x410;
    QTest::newRow("neither") << 0 << 0 << 0x40F;
}

void TestPayment::receiptsNeedBothNumbers()
{
    QFETCH(const int, first);
    QFETCH(const int, second);
    QFETCH(const int, detail);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(true) + someTotals());
    VelnoReceiptRef receipt = {first, second};
    Outputs out;
    QCOMPARE(velnoext_receipt_data(patience, &receipt, &out.totals), detail == 0 ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), detail);
    QCOMPARE(out.untouched(), detail != 0);
    QCOMPARE(device.commands(), detail == 0 ? QList{plain(7, first, second)} : QList<QByteArray>());
}

void TestPayment::sectionsAreNumbered_data()
{
    QTest::addColumn<int>("section");
    QTest::addColumn<bool>("known");
    for (const int section : {-128, -1, 0, 1, 2, 7, 8, 9, 127})
        QTest::addRow("%d", section) << section << (section >= 1 && section <= 8);
}

void TestPayment::sectionsAreNumbered()
{
    QFETCH(const int, section);
    QFETCH(const bool, known);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(plain(QByteArray("Manav"), 800));
    VelnoSaleItem item = {};
    item.section = static_cast<signed char>(section);
    QCOMPARE(velnoext_section_data(patience, &item), known ? 0 : 4);
    QCOMPARE(velnoext_error_detail(), known ? 0 : 0x406);
    QCOMPARE(device.commands(), known ? QList{plain(10, qint8(section))} : QList<QByteArray>());
    QCOMPARE(item.name, known ? "Manav" : "");
}

void TestPayment::sectionNamesFitOrFail_data()
{
    QTest::addColumn<QByteArray>("reply");
    QTest::addColumn<QByteArray>("stored"); // with its zero; empty: the reply is unreadable

    const QByteArray letters(4000, 'n');
    const auto row = [](const char *name, const QByteArray &reply, const QByteArray &stored) {
        QTest::newRow(name) << reply << stored;
    };
    row("empty", plain(QByteArray(""), 1), hex("00"));
    row("none", plain(QByteArray(), 1), hex("00"));
    row("short", plain(QByteArray("ab"), 1), hex("616200"));
    row("any bytes", plain(hex("00FF41"), 1), hex("00FF4100"));
    row("51", plain(letters.first(51), 1), letters.first(51) + hex("00"));
    row("52", plain(letters.first(52), 1), letters.first(52) + hex("00"));
    row("53", plain(letters.first(53), 1), {});
    row("54", plain(letters.first(54), 1), {});
    row("84", plain(letters.first(84), 1), {});
    row("4000", plain(letters, 1), {});
    row("as long as announced, no number", plain(QByteArray("ab")), {});
}

void TestPayment::sectionNamesFitOrFail()
{
    QFETCH(const QByteArray, reply);
    QFETCH(const QByteArray, stored);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    device.answerPlain(reply);
    Outputs out;
    QCOMPARE(velnoext_section_data(patience, &out.item), stored.isEmpty() ? 5 : 0);
    QCOMPARE(out.untouched(), stored.isEmpty());
    if (stored.isEmpty())
        return;
    QByteArray name(sizeof out.item.name, '\x5A'); // behind the zero all is as it was
    name.replace(0, stored.size(), stored);
    QCOMPARE(QByteArray(out.item.name, sizeof out.item.name), name);
    QCOMPARE(out.item.section, static_cast<signed char>(3));
    QCOMPARE(out.item.quantity, 1);
}

QTEST_GUILESS_MAIN(TestPayment)
#include "tst_payment.moc"
