// SPDX-License-Identifier: Apache-2.0

#include "tests/support/till_at_hand.h"

#include <QFile>
#include <QTest>

using namespace Simulator;
using namespace Qt::StringLiterals;

/** The simulated register's keyboard: what each key means where, and that no other key means anything. */
class TestKeyboard : public QObject
{
    Q_OBJECT

private slots:
    void amountsAreTyped_data();
    void amountsAreTyped();
    void amountsRefuseKeys_data();
    void amountsRefuseKeys();
    void keysLeadToScreens_data();
    void keysLeadToScreens();
    void everyOtherKeyIsAnError_data();
    void everyOtherKeyIsAnError();
    void keysBehindAWrongOneAreNotPressed();
    void anErrorStandsUntilTheNextKeys();
    void anErrorOnTheDisplayKeepsKeysAway();
    void paymentsStandInTheError();
    void keysCloseAndCancel_data();
    void keysCloseAndCancel();
    void aRefusedPaymentLeavesTheSale();
    void withoutPaperNothingIsSold();
    void withoutPaperASaleIsCancelledInSilence();
    void theManualShowsTheTable();
};

namespace {

constexpr Screen allScreens[] = {Screen::Idle, Screen::Menu, Screen::Sale, Screen::Amount,
                                 Screen::CancelQuestion};

void goTo(TillAtHand &till, Screen screen)
{
    if (screen == Screen::Menu)
        till.keys("M");
    if (screen == Screen::Idle || screen == Screen::Menu)
        return;
    till.keys("E");
    till.add({bread});
    if (screen == Screen::Amount)
        till.keys("1");
    if (screen == Screen::CancelQuestion)
        till.keys("C");
}

const char *screenName(Screen screen)
{
    switch (screen) {
    case Screen::Idle:
        return "1 idle";
    case Screen::Menu:
        return "7 menu";
    case Screen::Sale:
        return "5 sale";
    case Screen::Amount:
        return "5 amount";
    case Screen::CancelQuestion:
        return "5 cancel?";
    }
    return "?";
}

} // namespace

void TestKeyboard::amountsAreTyped_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<qint64>("amount");

    QTest::newRow("nothing") << QByteArray() << qint64(0);
    QTest::newRow("lira") << "12"_ba << qint64(1200);
    QTest::newRow("comma at the end") << "12,"_ba << qint64(1200);
    QTest::newRow("one decimal") << "12,5"_ba << qint64(1250);
    QTest::newRow("two decimals") << "12,05"_ba << qint64(1205);
    QTest::newRow("kuruş") << "0,01"_ba << qint64(1);
    QTest::newRow("zeros in front") << "0012,50"_ba << qint64(1250);
    QTest::newRow("as long as can be") << "9999999999,99"_ba << qint64(999'999'999'999);
}

void TestKeyboard::amountsAreTyped()
{
    QFETCH(const QByteArray, keys);
    QFETCH(const qint64, amount);
    TypedAmount typed;
    for (char key : keys)
        QVERIFY(typed.type(key));
    QCOMPARE(typed.value(), amount);
    QCOMPARE(typed.isEmpty(), keys.isEmpty());
    typed.clear();
    QVERIFY(typed.isEmpty());
    QCOMPARE(typed.value(), 0);
}

void TestKeyboard::amountsRefuseKeys_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<int>("last");

    QTest::newRow("comma first") << QByteArray() << int(',');
    QTest::newRow("two commas") << "1,"_ba << int(',');
    QTest::newRow("third decimal") << "1,23"_ba << int('4');
    QTest::newRow("eleventh digit") << "1234567890"_ba << int('1');
    QTest::newRow("letter") << "1"_ba << int('E');
    QTest::newRow("no key") << "1"_ba << -1;
}

void TestKeyboard::amountsRefuseKeys()
{
    QFETCH(const QByteArray, keys);
    QFETCH(const int, last);
    TypedAmount typed;
    for (char key : keys)
        QVERIFY(typed.type(key));
    const qint64 before = typed.value();
    QVERIFY(!typed.type(last));
    QCOMPARE(typed.value(), before);
    QCOMPARE(typed.isEmpty(), keys.isEmpty());
}

void TestKeyboard::keysLeadToScreens_data()
{
    QTest::addColumn<Screen>("from");
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<Screen>("to");

    QTest::newRow("a sale") << Screen::Idle << "E"_ba << Screen::Sale;
    QTest::newRow("a sale from the menu") << Screen::Menu << "EE"_ba << Screen::Sale;
    QTest::newRow("the menu") << Screen::Idle << "M"_ba << Screen::Menu;
    QTest::newRow("out of the menu") << Screen::Menu << "E"_ba << Screen::Idle;
    QTest::newRow("out of the menu by C") << Screen::Menu << "C"_ba << Screen::Idle;
    QTest::newRow("a sale with invoice") << Screen::Idle << "M3"_ba << Screen::Sale;
    QTest::newRow("a sale with invoice from the menu") << Screen::Menu << "3"_ba << Screen::Sale;
    QTest::newRow("an amount") << Screen::Sale << "1"_ba << Screen::Amount;
    QTest::newRow("an amount forgotten") << Screen::Amount << "C"_ba << Screen::Sale;
    QTest::newRow("an amount paid in cash") << Screen::Amount << ",50$"_ba << Screen::Sale;
    QTest::newRow("an amount paid by card") << Screen::Amount << "#"_ba << Screen::Sale;
    QTest::newRow("the question") << Screen::Sale << "C"_ba << Screen::CancelQuestion;
    QTest::newRow("the question denied") << Screen::CancelQuestion << "C"_ba << Screen::Sale;
    QTest::newRow("cancelled") << Screen::CancelQuestion << "1"_ba << Screen::Idle;
    QTest::newRow("closed in cash") << Screen::Sale << "$"_ba << Screen::Idle;
    QTest::newRow("closed by card") << Screen::Sale << "#"_ba << Screen::Idle;
    QTest::newRow("no keys") << Screen::Sale << ""_ba << Screen::Sale;
}

void TestKeyboard::keysLeadToScreens()
{
    QFETCH(const Screen, from);
    QFETCH(const QByteArray, keys);
    QFETCH(const Screen, to);
    TillAtHand till;
    goTo(till, from);
    QCOMPARE(till.screen(), from);
    till.keys(keys.constData());
    QCOMPARE(till.error() & ~PaymentBegun, int(NoError));
    QCOMPARE(till.screen(), to);
}

void TestKeyboard::everyOtherKeyIsAnError_data()
{
    QTest::addColumn<Screen>("screen");
    for (Screen screen : allScreens)
        QTest::newRow(screenName(screen)) << screen;
}

void TestKeyboard::everyOtherKeyIsAnError()
{
    QFETCH(const Screen, screen);
    QList<int> keys{-1, 0, keyF10 - 1, keyF10, keyF11, keyF11 + 1, 0x7FFFFFFF, int(0x80000000)};
    for (int key = ' '; key < 127; ++key)
        keys << key;
    int refused = 0;
    for (int key : std::as_const(keys)) {
        if (actionOf(screen, key))
            continue;
        ++refused;
        TillAtHand till;
        goTo(till, screen);
        const SaleTotals before = till.totals();
        till.press(QList<qint32>{key});
        QCOMPARE(till.error(), int(WrongKey));
        QCOMPARE(till.totals(), before);
        QCOMPARE(till.screen(), till.saleIsOpen() ? Screen::Sale : screen);
    }
    QCOMPARE_GT(refused, 80);
}

void TestKeyboard::keysBehindAWrongOneAreNotPressed()
{
    TillAtHand till;
    goTo(till, Screen::Sale);
    till.keys("1X$");
    QVERIFY(till.saleIsOpen());
    QCOMPARE(till.totals().cash, 0);
    QCOMPARE(till.screen(), Screen::Sale);
}

void TestKeyboard::anErrorStandsUntilTheNextKeys()
{
    TillAtHand till;
    till.keys("X");
    QCOMPARE(till.error(), int(WrongKey));
    QCOMPARE(till.tellError(), int(WrongKey));
    QCOMPARE(till.error(), int(WrongKey));
    till.keys("E");
    QCOMPARE(till.error(), int(NoError));
    till.keys("X");
    QCOMPARE(till.error(), int(WrongKey));
    QCOMPARE(till.standingError(), int(NoError));
    till.keys("C1");
    QCOMPARE(till.error(), int(NoError));
}

void TestKeyboard::anErrorOnTheDisplayKeepsKeysAway()
{
    TillAtHand till;
    till.keys("X");
    till.keys("E"); // between sales there is nothing to lose
    till.add({bread});
    till.keys("26#");
    QCOMPARE(till.press({keyF11}), ErrorDisplayed);
    QCOMPARE(till.press({'1', keyF10}), ErrorDisplayed);
    QCOMPARE(till.error(), int(WrongValue)); // of the payment
    QVERIFY(till.saleIsOpen());
    QCOMPARE(till.tellError(), int(WrongValue));
    QCOMPARE(till.press({keyF11}), NotRefused);
    QVERIFY(!till.saleIsOpen());
    till.keys("E");
    till.add({bread});
    till.keys("26#");
    QCOMPARE(till.press({'C', 'C'}), NotRefused);
    QCOMPARE(till.press({keyF11}), NotRefused);
    till.keys("E$");
    till.setPaper(0);
    QCOMPARE(till.press({'C', '1'}), NotRefused);
    QVERIFY(!till.saleIsOpen());
}

void TestKeyboard::paymentsStandInTheError()
{
    TillAtHand till;
    goTo(till, Screen::Sale);
    till.keys("1$");
    QCOMPARE(till.tellError(), int(PaymentBegun));
    till.keys("X");
    QCOMPARE(till.tellError(), int(PaymentBegun | WrongKey));
    QCOMPARE(till.standingError(), int(PaymentBegun));
    till.keys("$");
    QCOMPARE(till.tellError(), int(NoError));
}

void TestKeyboard::keysCloseAndCancel_data()
{
    QTest::addColumn<QByteArray>("keys");
    QTest::addColumn<QByteArray>("kind");
    QTest::addColumn<SaleTotals>("totals");

    QTest::newRow("cash") << "$"_ba
                          << "receipt"_ba << SaleTotals{2500, 25, 2500, 0, 0, 1};
    QTest::newRow("card") << "#"_ba
                          << "receipt"_ba << SaleTotals{2500, 25, 0, 2500, 0, 1};
    QTest::newRow("change") << "30,00$$"_ba
                            << "receipt"_ba << SaleTotals{2500, 25, 3000, 0, 500, 1};
    QTest::newRow("both") << "10#$"_ba
                          << "receipt"_ba << SaleTotals{2500, 25, 1500, 1000, 0, 1};
    QTest::newRow("card, then cash with change") << "10#20$$"_ba
                                                 << "receipt"_ba << SaleTotals{2500, 25, 2000, 1000, 500, 1};
    QTest::newRow("cancelled") << "C1"_ba
                               << "cancelled"_ba << SaleTotals();
    QTest::newRow("cancelled after a payment") << "10$C1"_ba
                                               << "cancelled"_ba << SaleTotals();
}

void TestKeyboard::keysCloseAndCancel()
{
    QFETCH(const QByteArray, keys);
    QFETCH(const QByteArray, kind);
    QFETCH(const SaleTotals, totals);
    TillAtHand till(12);
    goTo(till, Screen::Sale);
    const ReceiptRef ref = till.reference();
    QCOMPARE(ref, (ReceiptRef{12, 1}));
    till.keys(keys.constData());
    QVERIFY(!till.saleIsOpen());
    QCOMPARE(till.prints.size(), 1);
    QCOMPARE(till.prints.first().kind, kind.constData());
    QCOMPARE(till.receipt(ref).value_or(SaleTotals()), totals);
    QCOMPARE(till.day().total, totals.total);
    till.keys("E");
    QCOMPARE(till.reference(), (ReceiptRef{12, 2}));
}

void TestKeyboard::aRefusedPaymentLeavesTheSale()
{
    TillAtHand till;
    till.keys("E$");
    QCOMPARE(till.tellError(), int(NothingThere));
    till.keys("1$");
    QCOMPARE(till.tellError(), int(NothingThere));
    till.add({bread});
    till.keys("25,01#");
    QCOMPARE(till.tellError(), int(WrongValue));
    till.keys("0,00$");
    QCOMPARE(till.tellError(), int(WrongValue));
    QCOMPARE(till.totals().card, 0);
    QVERIFY(till.saleIsOpen());
}

void TestKeyboard::withoutPaperNothingIsSold()
{
    TillAtHand till;
    till.setPaper(0);
    till.keys("E");
    QCOMPARE(till.tellError(), int(NoPaper));
    QVERIFY(!till.saleIsOpen());
    till.setPaper(1);
    till.keys("E");
    till.add({bread});
    till.setPaper(0);
    QCOMPARE(till.display(), 1);
    QCOMPARE(till.add({bread}), PaperOut);
    QCOMPARE(till.removeLast(), PaperOut);
    QCOMPARE(till.remove(0), PaperOut);
    QCOMPARE(till.setMedicalContribution(0, 0), PaperOut);
    till.keys("$");
    QCOMPARE(till.tellError(), int(NoPaper));
    till.keys("1$");
    QCOMPARE(till.tellError(), int(NoPaper));
    till.setPaper(Till::endlessPaper);
    QCOMPARE(till.display(), 1);
    till.keys("$");
    QVERIFY(!till.saleIsOpen());
    QCOMPARE(till.prints.size(), 1);
}

void TestKeyboard::withoutPaperASaleIsCancelledInSilence()
{
    TillAtHand till;
    till.keys("E");
    till.add({bread});
    till.setPaper(0);
    till.keys("C1");
    QCOMPARE(till.error(), int(NoError));
    QVERIFY(!till.saleIsOpen());
    QCOMPARE(till.day().cancelled, 1);
    QVERIFY(till.prints.isEmpty());
    QVERIFY(!till.hasPaper());
}

void TestKeyboard::theManualShowsTheTable()
{
    QFile manual(QFINDTESTDATA("../docs/simulated-register.md"));
    QVERIFY(manual.open(QIODevice::ReadOnly));
    const QByteArray text = manual.readAll();
    for (const KeyRow &row : keyTable()) {
        QByteArray keys = keyName(row.firstKey);
        if (row.lastKey != row.firstKey)
            keys += " to "_ba + keyName(row.lastKey);
        const QByteArray line =
            "| "_ba + screenName(row.screen) + " | " + keys + " | " + row.meaning + " |\n";
        QVERIFY2(text.contains(line), line.constData());
    }
}

QTEST_GUILESS_MAIN(TestKeyboard)
#include "tst_keyboard.moc"
