#include "tests/support/pos_example.h"

#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** How examples/c/pos.c comes through lost answers, cut power and registers that do not tell. */
class TestExamplesRecovery : public QObject
{
    Q_OBJECT

private slots:
    void posEntersTheSaleAgainAfterACut();
    void posSellsOnceBehindAPassingRefusal();
    void posAsksThePersonAboutItsFirstSale();
    void posTakesThePersonsWordForAReceipt();
    void posPaysOnceWhatItCannotSee();
    void posFindsOutHowItsLastSaleEnded_data();
    void posFindsOutHowItsLastSaleEnded();
    void posTellsWhatItSoldBeforeItWasKilled();
    void posSaysWhenAReceiptMayNotBePrinted();
    void posFindsAReceiptClosedAfterAll();
    void posTellsOfMoneyThatACutHasMadeVoid();
    void posFindsOutAboutItsReport_data();
    void posFindsOutAboutItsReport();
    void posOutlivesARegisterWithoutItsKeys();
    void posKeepsAReportOpenWhilePairingFails();
};

void TestExamplesRecovery::posEntersTheSaleAgainAfterACut()
{
    Shop shop;
    const Outcome outcome = shop.day("item 3 1 1 Gazete\nend\nitem 10 1 1 Ekmek\ncash 5\n"
                                     "item 20 1 1 Ayran\ncancel\n"
                                     "item 10 1 1 Ekmek\nitem 20 1 1 !power-cut=change-state\ncash 5\n"
                                     "cash 5\nend\n");
    // Entered again, the item provokes the same again: at the second payment, and behind the end.
    QCOMPARE(outcome.errors.count("take all payments again"), 2);
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY2(outcome.output.contains("Cancelled: receipt 2 of Z 1\n"
                                     "It had been paid: cash 5.00, card 0.00. Give that back, or"),
             outcome.output.constData());
    QCOMPARE(outcome.output.count("Probably cancelled: "), 2);
    QVERIFY2(outcome.output.endsWith("Ending: lines 2, total 30.00, cash 30.00, card 0.00, change 0.00\n"
                                     "Sold: receipt 5 of Z 1\n"),
             outcome.output.constData());
    // The cancelled ones were left in the printer.
    QCOMPARE(shop.prints(), (QStringList{u"receipt 1"_s, u"cancelled 2"_s, u"receipt 5"_s}));
    // What was probable is certain behind the next receipt.
    QVERIFY2(shop.books().endsWith("open 1 3\nprobably-cancelled 1 3\nopen 1 4\nprobably-cancelled 1 4\n"
                                   "open 1 5\nclosed 1 5 3000 3000 0 0\ntold 1 5\n"
                                   "cancelled 1 3\ncancelled 1 4\n"),
             shop.books().constData());
}

void TestExamplesRecovery::posSellsOnceBehindAPassingRefusal()
{
    Shop shop;
    const Outcome outcome = shop.day("item 10 1 1 !refuse=receipt\nend\n");
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(shop.prints(), QStringList{u"receipt 1"_s});
    QCOMPARE(shop.books(), QByteArray("open 1 1\nclosed 1 1 1000 1000 0 0\ntold 1 1\n"));
}

void TestExamplesRecovery::posAsksThePersonAboutItsFirstSale()
{
    Shop shop;
    shop.open();
    shop.type("item 10 1 1 Ekmek\n");
    QVERIFY(shop.says("Item: lines 1"));
    QVERIFY(shop.reg->setFault(u"power-cut=item"_s));
    shop.type("item 20 1 1 Ayran\nend\nunsold\n");
    QVERIFY(shop.waitForCommand(u"login"_s));
    QVERIFY(shop.reg->setFault(u"none"_s));
    QVERIFY(shop.says("Not sold, as seen: lines 2, total 30.00"));
    shop.type("unsold\nend\n");
    const Outcome outcome = shop.close();
    QCOMPARE(outcome.errors.count("Item: The register refuses to tell of this receipt"), 1);
    QCOMPARE(outcome.errors.count("Ending: What was typed before is not settled"), 1);
    QCOMPARE(outcome.errors.count("Not sold, as seen failed: wrong-state (6)"), 1);
    QCOMPARE(shop.prints(), QStringList{u"receipt 2"_s});
    QCOMPARE(shop.books(), QByteArray("open 1 1\ncancelled 1 1\nopen 1 2\nclosed 1 2 3000 3000 0 0\n"
                                      "told 1 2\n"));
}

void TestExamplesRecovery::posTakesThePersonsWordForAReceipt()
{
    Shop shop;
    shop.open();
    shop.type("item 10 1 1 Ekmek\n");
    QVERIFY(shop.says("Item: lines 1"));
    QVERIFY(shop.reg->setFault(u"refuse=receipt"_s));
    shop.type("end\nsold\n");
    const Outcome outcome = shop.close();
    QVERIFY2(outcome.output.endsWith("Sold: receipt 1 of Z 1\n"), outcome.output.constData());
    QCOMPARE(shop.prints(), QStringList{u"receipt 1"_s});
    QVERIFY(shop.books().startsWith("open 1 1\nclosed 1 1 1000 "));
}

/** For as long as the register does not tell of its open sale nothing is done twice. */
void TestExamplesRecovery::posPaysOnceWhatItCannotSee()
{
    Shop shop;
    shop.open();
    shop.type("item 20 1 1 !refuse=sale-state\ncash 5\n"); // once is passed over
    QVERIFY(shop.says("Payment: lines 1, total 20.00, cash 5.00"));
    QVERIFY(shop.reg->setFault(u"refuse=sale-state"_s));
    shop.type("cash 5\ncash 5\nhelp\n");
    QVERIFY(shop.says("Commands:"));
    QVERIFY(shop.reg->setFault(u"none"_s));
    shop.type("again\nend card\n");
    const Outcome outcome = shop.close();
    QCOMPARE(outcome.errors.count("Payment: The register does not tell.\nThe register failed: refused (8)"),
             1);
    QCOMPARE(outcome.errors.count("Payment: What was typed before is not settled"), 1);
    QCOMPARE(outcome.errors.count("type: again"), 2);
    QVERIFY2(outcome.output.endsWith("Going on: lines 1, total 20.00, cash 10.00, card 0.00, change 0.00\n"
                                     "Ending: lines 1, total 20.00, cash 10.00, card 10.00, change 0.00\n"
                                     "Sold: receipt 1 of Z 1\n"),
             outcome.output.constData());
}

void TestExamplesRecovery::posFindsOutHowItsLastSaleEnded_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QByteArray>("found");
    const QByteArray earlier = "Not seen to its end: receipt 2 of Z 1\n";
    const QByteArray cancelled = earlier + "Cancelled: receipt 2 of Z 1\nReady\n";
    const QByteArray paid = earlier + "Cancelled: receipt 2 of Z 1\nIt had been paid: cash 5.00, card 0.00. "
                                      "Give that back, or take it anew.\nReady\n";
    const QByteArray probably = earlier + "Probably cancelled: receipt 2 of Z 1\nReady\n";
    const QByteArray sold = earlier + "Finding it: lines 1, total 10.00, cash 10.00, card 0.00, change 0.00\n"
                                      "Sold: receipt 2 of Z 1\nReady\n";
    QTest::newRow("it was to get another item")
        << u"item"_s << QByteArray("item 20 1 1 Ayran\n") << cancelled;
    QTest::newRow("it was to be paid") << u"change-state"_s << QByteArray("cash 5\n") << cancelled;
    QTest::newRow("it was paid") << u"sale-state"_s << QByteArray("cash 5\n") << paid;
    QTest::newRow("it was to be ended") << u"change-state"_s << QByteArray("end\n") << cancelled;
    QTest::newRow("it was ended") << u"receipt"_s << QByteArray("end\n") << sold;
    QTest::newRow("it was cancelled") << u"receipt"_s << QByteArray("cancel\n") << probably;
}

/** A till that is killed while the register keeps it waiting. */
void TestExamplesRecovery::posFindsOutHowItsLastSaleEnded()
{
    QFETCH(const QString, command);
    QFETCH(const QByteArray, line);
    QFETCH(const QByteArray, found);
    Shop shop;
    QCOMPARE(shop.day("item 3 1 1 Gazete\nend\n").exitCode, 0);
    shop.open();
    shop.type("item 10 1 1 Ekmek\n");
    QVERIFY(shop.says("Item: lines 1"));
    QVERIFY(shop.reg->setFault(u"mute="_s + command));
    shop.type(line);
    QVERIFY(shop.waitForCommand(command));
    shop.kill();
    QVERIFY(shop.reg->setFault(u"none"_s));
    QCOMPARE(shop.day("quit\n").output, found);
    QCOMPARE(shop.day("quit\n").output, QByteArray("Ready\n")); // now it is in the books
    QVERIFY(found.contains("Sold") || shop.books().endsWith("\ncancelled 1 2\n"));
    QCOMPARE(shop.prints().count(u"receipt 2"_s), found.contains("Sold") ? 1 : 0);
}

/** It has sold, and waits for the paper when it is killed: perhaps nobody has seen it. */
void TestExamplesRecovery::posTellsWhatItSoldBeforeItWasKilled()
{
    Shop shop;
    shop.open();
    shop.type("item 10 1 1 Ekmek\n");
    QVERIFY(shop.says("Item: lines 1"));
    QVERIFY(shop.reg->setFault(u"mute=paper"_s));
    shop.type("end card\n");
    QVERIFY(shop.waitForCommand(u"paper"_s));
    shop.kill();
    QVERIFY(shop.reg->setFault(u"none"_s));
    QCOMPARE(shop.books(), QByteArray("open 1 1\nclosed 1 1 1000 0 1000 0\n"));
    QCOMPARE(shop.day("quit\n").output,
             QByteArray("Sold before this start: receipt 1 of Z 1\n"
                        "It came to: total 10.00, cash 0.00, card 10.00, change 0.00\nReady\n"));
    QCOMPARE(shop.day("quit\n").output, QByteArray("Ready\n"));
}

void TestExamplesRecovery::posSaysWhenAReceiptMayNotBePrinted()
{
    Shop shop;
    const Outcome outcome = shop.day("item 10 1 1 !paper-out-after=1\nend\n");
    QCOMPARE(outcome.errors,
             QByteArray("The printer has no paper: look whether the receipt is printed to its end.\n"));
    QVERIFY(outcome.output.endsWith("Sold: receipt 1 of Z 1\n"));
}

/** A register that told of nothing for long enough: the doubt is not forgotten. */
void TestExamplesRecovery::posFindsAReceiptClosedAfterAll()
{
    Shop shop;
    QCOMPARE(shop.day("item 3 1 1 Gazete\nend\nitem 10 1 1 Ekmek\nend\n").exitCode, 0);
    shop.write("open 1 1\nclosed 1 1 300 300 0 0\ntold 1 1\nopen 1 2\nprobably-cancelled 1 2\n");
    const QByteArray found = "Closed after all: receipt 2 of Z 1\nWhat was on it may have been sold twice";
    const Outcome outcome = shop.day("quit\n");
    QVERIFY2(outcome.output.startsWith(found), outcome.output.constData());
    QVERIFY2(shop.books().endsWith("probably-cancelled 1 2\nclosed 1 2 1000 1000 0 0\ntold 1 2\n"),
             shop.books().constData());
    QCOMPARE(shop.day("quit\n").output, QByteArray("Ready\n"));
}

/** The money is in the drawer, and the register knows nothing of it any more. */
void TestExamplesRecovery::posTellsOfMoneyThatACutHasMadeVoid()
{
    Shop shop;
    QCOMPARE(shop.day("item 3 1 1 Gazete\nend\n").exitCode, 0);
    shop.open();
    shop.type("item 10 1 1 Ekmek\ncash 4\ncard 5\n");
    QVERIFY(shop.says("card 5.00"));
    QVERIFY(shop.reg->setFault(u"power-cut=state"_s));
    shop.reg->say("fault mute=login");
    QVERIFY(!shop.reg->waitFor(u"fault"_s).isEmpty());
    shop.type("end\n");
    QVERIFY(shop.waitForCommand(u"login"_s));
    shop.kill();
    QVERIFY(shop.reg->setFault(u"none"_s));
    QCOMPARE(shop.day("quit\n").output,
             QByteArray("Not seen to its end: receipt 2 of Z 1\nProbably cancelled: receipt 2 of Z 1\n"
                        "It had been paid: cash 4.00, card 5.00. Give that back, or take it anew.\nReady\n"));
}

void TestExamplesRecovery::posFindsOutAboutItsReport_data()
{
    QTest::addColumn<QString>("command"); // behind which the till hears nothing any more
    QTest::addColumn<QByteArray>("found");
    QTest::newRow("before it was asked for") << u"state"_s << QByteArray("Z report 1: was not made\nReady\n");
    QTest::newRow("after it was made") << u"report"_s << QByteArray("Z report 1: was made\nReady\n");
}

void TestExamplesRecovery::posFindsOutAboutItsReport()
{
    QFETCH(const QString, command);
    QFETCH(const QByteArray, found);
    Shop shop;
    shop.open();
    QVERIFY(shop.says("Ready\n"));
    QVERIFY(shop.reg->setFault(u"power-cut="_s + command));
    shop.reg->say("fault mute=login");
    QVERIFY(!shop.reg->waitFor(u"fault"_s).isEmpty());
    shop.type("z\n");
    QVERIFY(shop.waitForCommand(u"login"_s));
    shop.kill();
    QVERIFY(shop.reg->setFault(u"none"_s));
    QCOMPARE(shop.day("quit\n").output, found);
    const QByteArray next = command == u"state" ? "Z report 1: made\n" : "Z report 2: made\n";
    QCOMPARE(shop.day("z\n").output, "Ready\n" + next);
    QCOMPARE(shop.prints().count(u"z-report 0"_s), command == u"state" ? 1 : 2);
}

/** A register that is replaced by one without keys, but with its memory. */
void TestExamplesRecovery::posOutlivesARegisterWithoutItsKeys()
{
    Shop shop;
    shop.open();
    shop.type("item 3 1 1 Gazete\nend\nitem 10 1 1 Ekmek\n");
    QVERIFY(shop.says("Item: lines 1, total 10.00"));
    shop.reg->raise(SIGKILL);
    shop.reg->waitForExit();
    shop.plugIn();
    shop.type("item 20 1 1 Ayran\nend\n");
    const Outcome outcome = shop.close();
    QCOMPARE(outcome.errors.count("The register has lost its keys; pairing anew.\n"), 1);
    QVERIFY2(outcome.output.endsWith("Probably cancelled: receipt 2 of Z 1\n"
                                     "Item: lines 2, total 30.00, cash 0.00, card 0.00, change 0.00\n"
                                     "Ending: lines 2, total 30.00, cash 30.00, card 0.00, change 0.00\n"
                                     "Sold: receipt 3 of Z 1\n"),
             outcome.output.constData());
    QCOMPARE(shop.prints(), QStringList{u"receipt 3"_s});
}

/** Not to be reached is no answer to whether a report was made. */
void TestExamplesRecovery::posKeepsAReportOpenWhilePairingFails()
{
    Shop shop;
    shop.open();
    QVERIFY(shop.says("Ready\n"));
    QVERIFY(shop.reg->setFault(u"power-cut=report"_s));
    for (const char *fault : {"fault close=login", "fault result-code=03"}) {
        shop.reg->say(fault);
        QVERIFY(!shop.reg->waitFor(u"fault"_s).isEmpty());
    }
    shop.type("z\nhelp\n");
    QVERIFY(shop.says("Commands:"));
    QCOMPARE(shop.books(), QByteArray("report 1\n"));
    QVERIFY(shop.reg->setFault(u"none"_s));
    shop.type("z\n");
    const Outcome outcome = shop.close();
    QVERIFY2(outcome.errors.contains(" failed: pairing-failed (10)\n"), outcome.errors.constData());
    QVERIFY2(outcome.output.endsWith("Z report 1: made\n"), outcome.output.constData());
    QCOMPARE(shop.books(), QByteArray("report 1\nreported 1\n"));
}

QTEST_GUILESS_MAIN(TestExamplesRecovery)
#include "tst_examples_recovery.moc"
