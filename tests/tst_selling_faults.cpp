// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/velnoext.h"
#include "simulator/register/provoked_faults.h"
#include "tests/support/library_test.h"
#include "tests/support/shop.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;
using namespace Velno;

/** What velno-register refuses in a sale, and the faults that are set or that the items of a sale provoke. */
class TestSellingFaults : public LibraryTest
{
    Q_OBJECT

private slots:
    void refusedKeysAreInTheEventsAndInNobodysWay();
    void aRefusedPaymentDoesNotCloseTheSaleOtherwise();
    void aSaleIsCancelledWhateverWasRefused_data();
    void aSaleIsCancelledWhateverWasRefused();
    void refusalsAreNamedInWordsToo();
    void faultsOfSales_data();
    void faultsOfSales();
    void theSaleProvokesItsFaults_data();
    void theSaleProvokesItsFaults();
    void provokedFaultsWaitForTheirOwnCommands();
    void aFaultMayBeForSoManyTimes();
    void theManualListsWhatProvokes();
    void itemsNamedLikeNoFaultAreWarnedOf();
    void whatWasProvokedIsForgotten();
    void whatIsProvokedAgainWaitsOnce();
};

namespace {

/** The next outcome of keys that were refused. */
QString refusedKeys(Shop &shop)
{
    QJsonObject done;
    do
        done = shop.reg.waitFor(u"done"_s);
    while (done.value(u"accepted"_s).toBool());
    return done.value(u"reason"_s).toString();
}

} // namespace

void TestSellingFaults::refusedKeysAreInTheEventsAndInNobodysWay()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(velnoext_end_sale(cash), 0); // sent; nothing is on the receipt
    QCOMPARE(refusedKeys(shop), u"nothing-sold"_s);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(saleState().code, 0);
    QCOMPARE(velnoext_add_payment(card, 101), 0); // sent; more than is left
    QCOMPARE(refusedKeys(shop), u"card-over-rest"_s);
    QCOMPARE(saleState().totals.at(3), 0);
    QCOMPARE(velnoext_add_payment(card, 100), 0);
    QCOMPARE(saleState().totals.at(3), 100);
    QCOMPARE(velnoext_end_sale(card), 0);
    QCOMPARE(state(), 1);
    QCOMPARE(velnoext_start_sale_with_invoice(patience), 0);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(velnoext_end_sale(cash), 0); // sent; an invoice is needed
    QCOMPARE(refusedKeys(shop), u"invoice-needed"_s);
    QCOMPARE(endWithInvoice(), 0);
}

void TestSellingFaults::aRefusedPaymentDoesNotCloseTheSaleOtherwise()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(velnoext_add_payment(card, 101), 0); // refused
    QCOMPARE(velnoext_end_sale(cash), 0);         // of an application that does not look
    QCOMPARE(refusedKeys(shop), u"card-over-rest"_s);
    QCOMPARE(refusedKeys(shop), u"error-displayed"_s);
    QCOMPARE(state(), 5);
    QCOMPARE(saleState().totals.at(2), 0);
    QCOMPARE(velnoext_end_sale(cash), 0);
    QCOMPARE(state(), 1);
}

void TestSellingFaults::aSaleIsCancelledWhateverWasRefused_data()
{
    QTest::addColumn<QByteArray>("line"); ///< said to the register
    QTest::addColumn<int>("paid");        ///< before
    QTest::addColumn<int>("refused");     ///< by card
    QTest::addColumn<QString>("reason");

    QTest::newRow("too much for a card") << "z 0"_ba << 0 << 101 << u"card-over-rest"_s;
    QTest::newRow("too much behind a payment") << "z 0"_ba << 40 << 61 << u"card-over-rest"_s;
    QTest::newRow("without paper") << "paper off"_ba << 0 << 100 << u"no-paper"_s;
    QTest::newRow("without paper, partly paid") << "paper off"_ba << 40 << 1 << u"no-paper"_s;
    QTest::newRow("by a fault") << "fault refuse=change-state*1"_ba << 0 << 100 << u"fault-refuse"_s;
}

void TestSellingFaults::aSaleIsCancelledWhateverWasRefused()
{
    QFETCH(const QByteArray, line);
    QFETCH(const int, paid);
    QFETCH(const int, refused);
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    if (paid > 0)
        QCOMPARE(velnoext_add_payment(card, paid), 0);
    QCOMPARE(saleState().totals.at(3), paid); // the keys have been pressed
    shop.reg.say(line);
    QVERIFY(!shop.reg.waitForAny({u"set"_s, u"fault"_s, u"error"_s}).isEmpty());
    QCOMPARE(velnoext_add_payment(card, refused), 0);
    QTEST(refusedKeys(shop), "reason");
    QCOMPARE(velnoext_cancel_sale(patience), 0);
    QCOMPARE(state(), 1);
}

void TestSellingFaults::refusalsAreNamedInWordsToo()
{
    const quint16 port = TestSupport::freePort();
    QProcess process;
    process.start(SimulatedRegister::program(), {u"--serial"_s, QLatin1StringView(SimulatedRegister::serial),
                                                 u"--connect"_s, u"127.0.0.1:%1"_s.arg(port)});
    QCOMPARE(velnoext_initialize(5, SimulatedRegister::serial, "127.0.0.1", port, patience), 0);
    QCOMPARE(addItem(100), 6);
    process.write("quit\n");
    QVERIFY(process.waitForFinished());
    const QByteArray output = process.readAllStandardOutput();
    QVERIFY2(output.contains("\nanswered item false no-sale no sale is open\n"), output);
}

void TestSellingFaults::faultsOfSales_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QList<int>>("codes");

    // starting, an item, medical, sale state, paying, cancelling
    QTest::newRow("no fault") << u"none"_s << QList<int>{0, 0, 0, 0, 0, 0};
    QTest::newRow("idle") << u"state=1"_s << QList<int>{6, 6, 6, 6, 6, 6};
    QTest::newRow("out of service") << u"state=8"_s << QList<int>{6, 6, 6, 6, 6, 6};
    QTest::newRow("error") << u"error=3"_s << QList<int>{7, 8, 7, 0, 8, 8};
    QTest::newRow("paid") << u"error=8"_s << QList<int>{7, 8, 7, 0, 0, 0};
    QTest::newRow("over the limit") << u"sale-limit"_s << QList<int>{0, 8, 7, 0, 0, 0};
    QTest::newRow("no start, no payment") << u"refuse=change-state"_s << QList<int>{6, 0, 0, 0, 0, 6};
}

void TestSellingFaults::faultsOfSales()
{
    QFETCH(const QString, fault);
    QFETCH(const QList<int>, codes);
    Shop shop;
    QVERIFY(shop.reg.setFault(fault));
    QCOMPARE(velnoext_start_sale(patience), codes.at(0));
    shop.reg.say("state 5");
    QVERIFY(!shop.reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(addItem(100), codes.at(1));
    QCOMPARE(velnoext_add_medical_contribution(patience, 100, patient), codes.at(2));
    QCOMPARE(saleState().code, codes.at(3));
    QCOMPARE(velnoext_add_payment(cash, 1), codes.at(4));
    QCOMPARE(velnoext_cancel_sale(patience), codes.at(5));
}

namespace {

/** What an item provokes, and the code of what comes behind it. */
struct Provoked
{
    const char *fault;
    int item; ///< the code of adding it
    int (*then)();
    int code; ///< the code of what is done then
};

int nothing()
{
    return 0;
}

int receiptOfClosedSale()
{
    const VelnoReceiptRef ref = saleState().ref;
    velnoext_end_sale(cash);
    return receipt(ref);
}

int printAfterTheSale()
{
    velnoext_end_sale(cash);
    return printSlip();
}

int reportAfterTheSale()
{
    velnoext_end_sale(cash);
    return velnoext_x_report();
}

int paperAfterTheSale()
{
    velnoext_end_sale(cash);
    return velnoext_check_printer_paper(patience);
}

int cancel()
{
    return velnoext_cancel_sale(patience);
}

int saleStateCode()
{
    return saleState().code;
}

// "items" provokes with an item in a list; the invoice needs a sale with invoice.
const Provoked provoked[] = {
    {"refuse=item", 8, nothing, 0},
    {"refuse=items", 8, nothing, 0},
    {"refuse=delete", 0, deleteLast, 8},
    {"refuse=medical", 0, medical, 8},
    {"refuse=change-state", 0, cancel, 6},
    {"refuse=end-invoice", 0, endWithInvoice, 8},
    {"refuse=sale-state", 0, saleStateCode, 8},
    {"refuse=receipt", 0, receiptOfClosedSale, 8},
    {"refuse=print", 0, printAfterTheSale, 8},
    {"refuse=report", 0, reportAfterTheSale, 8},
    {"error=64", 8, nothing, 0},
    {"state=1", 6, nothing, 0},
    {"sale-limit", 8, nothing, 0},
    {"paper-out-after=1", 0, paperAfterTheSale, 9},
    {"delay=3000", 0, nothing, 0},
    {"short-reply", 5, nothing, 0},
    {"bad-mac", 11, nothing, 0},
    {"no-mac", 12, nothing, 0},
    {"close=item", 2, nothing, 0},
    {"lost-answer=item", 2, nothing, 0},
    {"lost-answer=items", 2, nothing, 0},
    {"lost-answer=delete", 0, deleteLast, 2},
    {"lost-answer=medical", 0, medical, 2},
    {"lost-answer=change-state", 0, cancel, 2},
    {"lost-answer=end-invoice", 0, endWithInvoice, 2},
    {"power-cut=item", 2, nothing, 0},
    {"power-cut=change-state", 0, cancel, 2},
    {"power-cut=end-invoice", 0, endWithInvoice, 2},
};

} // namespace

void TestSellingFaults::theSaleProvokesItsFaults_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<qint64>("price");
    QTest::addColumn<int>("index");

    QCOMPARE(std::size(provoked), Simulator::provocationTable().size());
    int index = 0;
    for (const Simulator::ProvocationRow &row : Simulator::provocationTable()) {
        QCOMPARE(provoked[index].fault, row.fault);
        QTest::addRow("%s by price", row.fault) << "Ekmek"_ba << row.price << index;
        QTest::addRow("%s by name", row.fault) << '!' + QByteArray(row.fault) << qint64(100) << index;
        ++index;
    }
}

void TestSellingFaults::theSaleProvokesItsFaults()
{
    QFETCH(const QByteArray, name);
    QFETCH(const qint64, price);
    QFETCH(const int, index);
    const Provoked &row = provoked[index];
    const QByteArray fault = row.fault;
    Shop shop;
    const bool withInvoice = fault.endsWith("=end-invoice");
    QCOMPARE(withInvoice ? velnoext_start_sale_with_invoice(patience) : velnoext_start_sale(patience), 0);
    QCOMPARE(fault.endsWith("=items") ? addItemInList(price, name) : addItem(price, name), row.item);
    QCOMPARE(shop.reg.waitFor(u"provoked"_s).value(u"fault"_s), QString::fromLatin1(fault));
    if (row.item == 2)
        QCOMPARE(shop.connect(), 0);
    QCOMPARE(row.then(), row.code);
    if (row.code == 2)
        QCOMPARE(shop.connect(), 0);

    // It goes off once: the next sale is like any other.
    if (saleState().code == 0)
        QCOMPARE(velnoext_cancel_sale(patience), 0);
    shop.reg.say("paper on");
    QVERIFY(!shop.reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(deleteLast(), 0);
    QCOMPARE(velnoext_cancel_sale(patience), 0);
}

void TestSellingFaults::provokedFaultsWaitForTheirOwnCommands()
{
    Shop shop({u"--fault"_s, u"refuse=delete"_s});
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100, "!refuse=medical"), 0);
    QCOMPARE(addItem(100, "!refuse=medical"), 0);
    QCOMPARE(addItem(100, "!refuse=sale-state"), 0);
    QCOMPARE(addItem(100, "!refuse=item"), 8);
    QCOMPARE(deleteLast(), 8); // as the register was told before
    QCOMPARE(medical(), 8);
    QCOMPARE(medical(), 0);
    QCOMPARE(saleStateCode(), 8);
    QCOMPARE(saleStateCode(), 0);
    QCOMPARE(deleteLast(), 8);
}

void TestSellingFaults::aFaultMayBeForSoManyTimes()
{
    Shop shop({u"--fault"_s, u"refuse=receipt*2"_s});
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100, "!refuse=sale-state*2"), 0);
    QCOMPARE(saleStateCode(), 8);
    QCOMPARE(saleStateCode(), 8);
    const VelnoReceiptRef ref = saleState().ref;
    QCOMPARE(velnoext_end_sale(cash), 0);
    QCOMPARE(receipt(ref), 8);
    QCOMPARE(receipt(ref), 8);
    QCOMPARE(shop.reg.waitFor(u"spent"_s).value(u"fault"_s), u"refuse=receipt*2"_s);
    QCOMPARE(receipt(ref), 0);
    QVERIFY(shop.reg.setFault(u"lost-answer=receipt*1"_s));
    QCOMPARE(receipt(ref), 2);
    QCOMPARE(shop.connect(), 0);
    QCOMPARE(receipt(ref), 0);
}

void TestSellingFaults::theManualListsWhatProvokes()
{
    QFile file(QFINDTESTDATA("../docs/simulated-register.md"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QString manual = QString::fromUtf8(file.readAll());
    for (const Simulator::ProvocationRow &row : Simulator::provocationTable()) {
        const QString price = u"%1.%2,%3"_s.arg(row.price / 100'000)
                                  .arg(row.price / 100 % 1000)
                                  .arg(int(row.price % 100), 2, 10, QLatin1Char('0'));
        const QString line = u"\n| %1 | `%2` |\n"_s.arg(price, QLatin1StringView(row.fault));
        QVERIFY2(manual.contains(line), qPrintable(line));
    }
}

void TestSellingFaults::itemsNamedLikeNoFaultAreWarnedOf()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    const auto warning = [&shop](const QByteArray &name) {
        const int code = addItem(100, name);
        const QString message =
            shop.reg.waitForAny({u"warning"_s, u"answered"_s}).value(u"message"_s).toString();
        return code == 0 ? message : u"code %1"_s.arg(code);
    };
    QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty()); // of state
    QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty()); // of the start
    const QString refuze = warning("!refuze=item");
    QVERIFY2(refuze.startsWith(u"the item !refuze=item provokes nothing: \"refuze\" is no fault that an item "
                               "provokes; accepted are "_s),
             qPrintable(refuze));
    QVERIFY2(refuze.contains(u", !refuse=COMMAND, "_s) && !refuze.contains(u"!wrong-authority"_s),
             qPrintable(refuze));
    for (const QByteArray &name : {"!wrong-authority"_ba, "!forget-pairing"_ba, "!"_ba, "!! Kampanya"_ba}) {
        QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty());
        QVERIFY2(warning(name).contains(u"is no fault that an item provokes"_s), name);
    }
    QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty());
    QVERIFY(warning("!refuse=state").contains(u"\"state\" is no value of refuse; accepted is COMMAND"_s));
    QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty());
    QVERIFY(warning("!refuse\nstopped").startsWith(u"the item !refuse\\x0astopped provokes nothing"_s));
    QVERIFY(!shop.reg.waitFor(u"answered"_s).isEmpty());
    QCOMPARE(warning("Ekmek!"), QString());
}

void TestSellingFaults::whatWasProvokedIsForgotten()
{
    Shop shop;
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100, "!refuse=delete"), 0);
    QCOMPARE(addItem(100, "!wrong-authority"), 0); // none of commands
    QCOMPARE(addItem(100, "!nonsense"), 0);
    QCOMPARE(addItem(100, "!forget-pairing"), 0); // nor of one that has been read
    QCOMPARE(velnoext_cancel_sale(patience), 0);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(100), 0);
    QCOMPARE(deleteLast(), 0);
    int provocations = 0;
    for (const QJsonObject &event : shop.reg.events())
        provocations += event.value(u"event"_s) == u"provoked"_s;
    QVERIFY(shop.reg.setFault(u"none"_s));
    for (const QJsonObject &event : shop.reg.events())
        provocations += event.value(u"event"_s) == u"provoked"_s;
    QCOMPARE(provocations, 1);
}

void TestSellingFaults::whatIsProvokedAgainWaitsOnce()
{
    // An application may ask for items without end, and none of what they provoke may come to go off.
    Simulator::ProvokedFaults waiting;
    for (int i = 0; i < 1000; ++i)
        waiting.add({u"refuse=print"_s, u"mute=report"_s});
    waiting.add({u"refuse=print"_s});
    QCOMPARE(waiting.waiting(), QStringList({u"mute=report"_s, u"refuse=print"_s}));
    waiting.take(*Simulator::commandByName(u"print"_s), Simulator::Faults());
    QCOMPARE(waiting.waiting(), QStringList{u"mute=report"_s});
}

QTEST_GUILESS_MAIN(TestSellingFaults)
#include "tst_selling_faults.moc"
