// SPDX-License-Identifier: Apache-2.0

#include "tests/support/library_calls.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <functional>

using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

/** A failure at the simulated register, and the name of its cause. Without a call it is that of connecting.
 */
void row(const char *name, const char *options, int result, const char *cause, std::function<int()> ask = {})
{
    QTest::newRow(name) << QString::fromLatin1(options).split(u' ', Qt::SkipEmptyParts) << result
                        << QString::fromLatin1(cause) << std::move(ask);
}

void addReasonsOfSelling()
{
    const auto startSale = [] { return velnoext_start_sale(patience); };
    const auto inSale = [startSale](int (*ask)()) {
        return [startSale, ask] { return startSale() == 0 ? ask() : -1; };
    };
    const auto sell = [](long long price, int quantity) {
        VelnoSaleItem item{price, quantity, 0, 0, "Ekmek", 1, 0};
        VelnoEcrSaleTotals totals{};
        return velnoext_add_sale_item(patience, &item, &totals);
    };
    row("item without a sale", "", 6, "state-idle", addItem);
    row("sale while one is open", "", 6, "state-sale-open",
        [=] { return startSale() == 0 ? startSale() : -1; });
    row("sale without paper", "--no-paper", 6, "state-idle", startSale);
    row("sale while out of service", "--state 8", 6, "state-out-of-service", startSale);
    row("login while starting", "--state 0", 8, "said-no", login);
    row("paper", "--no-paper", 9, "printer-empty", [] { return velnoext_check_printer_paper(patience); });
    row("report without paper", "--no-paper", 8, "said-no", velnoext_x_report);
    row("item over the limit", "--sale-limit 1000", 8, "register-over-limit", inSale(addItem));
    row("item of no quantity", "", 8, "register-wrong-value",
        [=] { return startSale() == 0 ? sell(100, -1000) : -1; });
    row("item that is not there", "", 8, "register-nothing-there", inSale([] {
            VelnoEcrSaleTotals totals{};
            return velnoext_delete_sale_item(patience, 7, &totals);
        }));
    row("item behind a payment", "", 8, "register-payment-begun", inSale([] {
            if (addItem() != 0 || velnoext_add_payment(VelnoPaymentKey_F10, 100) != 0)
                return -1;
            return addItem();
        }));
    row("item refused without a word", "--fault refuse=item", 8, "register-wrong-value", inSale(addItem));
    row("journal that cannot be written", "--fault error=64", 7, "register-no-journal", startSale);
    row("keys at the wrong display", "--fault error=1", 7, "register-wrong-key", startSale);
    row("error of another register", "--fault error=128", 7, "register-error", startSale);
}

void addFaults()
{
    row("another authority", "--fault wrong-authority", 10, "certificate-not-trusted");
    row("wrong signature", "--fault bad-signature", 10, "signature-invalid");
    row("another application", "--fault wrong-app-hash", 10, "pairing-refused");
    row("another serial number", "--fault other-serial", 10, "frame-serial");
    row("damaged on its way", "--fault bad-crc", 10, "frame-crc");
    row("no message", "--fault no-message-tag", 10, "frame-message");
    row("too long", "--fault oversize", 10, "frame-length");
    row("closes", "--fault close=2", 10, "closed-while-waiting");
    row("half an answer", "--fault half-frame", 2, "silent-register", [] { return velnoext_login(brief); });
    row("a gigabyte", "--fault huge-frame", 2, "answer-too-long", login);
    row("has lost its keys", "--fault forget-pairing", 2, "closed-while-waiting", login);
    row("wrong MAC", "--fault bad-mac", 11, "mac-wrong", login);
    row("no MAC", "--fault no-mac", 12, "elements-wrong", login);
    row("too short", "--fault short-reply", 5, "answer-too-short", readState);
}

} // namespace

/** The causes that the device library names where velno-register refuses, or is disturbed. */
class TestRegisterCauses : public LibraryTest
{
    Q_OBJECT

private slots:
    void reasonsOfTheSimulatedRegister_data();
    void reasonsOfTheSimulatedRegister();
    void paperThatRunsOutInASale();
};

void TestRegisterCauses::reasonsOfTheSimulatedRegister_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<int>("result");
    QTest::addColumn<QString>("name");
    QTest::addColumn<std::function<int()>>("ask");
    addReasonsOfSelling();
    addFaults();
}

void TestRegisterCauses::reasonsOfTheSimulatedRegister()
{
    QFETCH(const QStringList, options);
    QFETCH(const int, result);
    QFETCH(const std::function<int()>, ask);
    const LogCapture capture;
    const quint16 port = freePort();
    SimulatedRegister reg(port, options);
    const int connected = initialize("127.0.0.1", port, patience);
    QCOMPARE(connected, ask ? 0 : result);
    if (ask)
        QCOMPARE(ask(), result);
    QTEST(QString::fromLatin1(velnoext_cause_name(velnoext_cause())), "name");
}

void TestRegisterCauses::paperThatRunsOutInASale()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    QCOMPARE(initialize("127.0.0.1", port, patience), 0);
    QCOMPARE(velnoext_start_sale(patience), 0);
    QCOMPARE(addItem(), 0);
    reg.say("paper off");
    QVERIFY(!reg.waitFor(u"set"_s).isEmpty());
    QCOMPARE(addItem(), 8);
    QCOMPARE(velnoext_cause(), int(VelnoCause_PaperOut));
}

QTEST_GUILESS_MAIN(TestRegisterCauses)
#include "tst_register_causes.moc"
