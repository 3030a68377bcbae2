#include "tests/support/pos_example.h"
#include "tests/support/program_run.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <QDir>
#include <QTest>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** The programs of examples/, built against the installed library, with a register at the other end. */
class TestExamples : public QObject
{
    Q_OBJECT

private slots:
    void stateIsRead();
    void failureIsExplained();
    void linesAboutAPairingAreNoResult();
    void usageIsShown();
    void posSellsAndReports();
    void posExplainsWhatItIsRefused();
    void posCancelsASaleItNeverNoted();
    void posLeavesASaleOfSomebodyElse();
    void posLeavesPrintingToTheCashier_data();
    void posLeavesPrintingToTheCashier();
    void posTakesATornLineOffItsBooks();
    void posLeavesNoHalfLineOnAFullDisk();
    void posRefusesBooksThatAreNone();
};

namespace {

Outcome run(const QStringList &arguments)
{
    return outcomeOf(QString::fromUtf8(VELNO_EXAMPLES "/register_state"), arguments);
}

} // namespace

void TestExamples::stateIsRead()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--state"_s, u"1"_s, u"--z"_s, u"17"_s});
    const Outcome outcome = run({serialNo, u"127.0.0.1"_s, QString::number(port)});
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.output, QByteArray("Register UB1234567890 is in state 1, Z number 17.\n"));
    QCOMPARE(outcome.exitCode, 0);
}

void TestExamples::failureIsExplained()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--fault"_s, u"result-code=03"_s});
    const Outcome refused = run({serialNo, u"127.0.0.1"_s, QString::number(port)});
    QVERIFY2(refused.errors.startsWith("Connecting failed: "), refused.errors.constData());
    QVERIFY2(refused.errors.contains("pairing-refused (5000)"), refused.errors.constData());
    QCOMPARE(refused.errors.count('\n'), 4); // the names, three lines about the cause
    QCOMPARE(refused.output, QByteArray());
    QCOMPARE(refused.exitCode, 10);

    const Outcome wrong = run({u"UB123"_s, u"127.0.0.1"_s, QString::number(port)});
    QVERIFY2(wrong.errors.startsWith("Connecting failed: "), wrong.errors.constData());
    QCOMPARE(wrong.errors.count('\n'), 5); // and one about the argument
    QCOMPARE(wrong.exitCode, 4);
}

/** They come from the library, and whoever reads the result would have to know them. */
void TestExamples::linesAboutAPairingAreNoResult()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--fault"_s, u"bad-crc"_s});
    const Outcome outcome = run({serialNo, u"127.0.0.1"_s, QString::number(port)});
    QCOMPARE(outcome.exitCode, 10);
    QCOMPARE(outcome.output, QByteArray());
    QVERIFY2(!outcome.errors.startsWith("Connecting failed: "), outcome.errors.constData());
    QVERIFY(outcome.errors.contains("\nConnecting failed: "));
}

void TestExamples::usageIsShown()
{
    const Outcome outcome = run({});
    QVERIFY(outcome.errors.startsWith("Usage: "));
    QCOMPARE(outcome.exitCode, 64);
}

void TestExamples::posSellsAndReports()
{
    Shop shop({u"--z"_s, u"12"_s});
    const Outcome outcome = shop.day("item 12.50 2 1 Ekmek\nitem 240 1.25 3 Ayran\nitem 99.90 1 1 Peynir\n"
                                     "delete\ncard 100\nend\nreceipt 12 1\nslip Afiyet olsun\nx\nz\n"
                                     "item 5 1 8 Kitap\ncancel\nitem 5 1 8 Kitap\nend card\nquit\n");
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(outcome.output,
             QByteArray("Ready\n"
                        "Item: lines 1, total 25.00, cash 0.00, card 0.00, change 0.00\n"
                        "Item: lines 2, total 325.00, cash 0.00, card 0.00, change 0.00\n"
                        "Item: lines 3, total 424.90, cash 0.00, card 0.00, change 0.00\n"
                        "Deleting: lines 2, total 325.00, cash 0.00, card 0.00, change 0.00\n"
                        "Payment: lines 2, total 325.00, cash 0.00, card 100.00, change 0.00\n"
                        "Ending: lines 2, total 325.00, cash 225.00, card 100.00, change 0.00\n"
                        "Sold: receipt 1 of Z 12\n"
                        "Receipt: lines 2, total 325.00, cash 225.00, card 100.00, change 0.00\n"
                        "Slip: printed\n"
                        "X report: printed\n"
                        "Z report 12: made\n"
                        "Item: lines 1, total 5.00, cash 0.00, card 0.00, change 0.00\n"
                        "Cancelled: receipt 1 of Z 13\n"
                        "Item: lines 1, total 5.00, cash 0.00, card 0.00, change 0.00\n"
                        "Ending: lines 1, total 5.00, cash 0.00, card 5.00, change 0.00\n"
                        "Sold: receipt 2 of Z 13\n"));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(shop.prints(), (QStringList{u"receipt 1"_s, u"slip 0"_s, u"x-report 0"_s, u"z-report 0"_s,
                                         u"cancelled 1"_s, u"receipt 2"_s}));
    QCOMPARE(shop.books(), QByteArray("open 12 1\npaid 12 1 0 10000\nclosed 12 1 32500 22500 10000 0\n"
                                      "told 12 1\nreport 12\nreported 12\nopen 13 1\ncancelled 13 1\n"
                                      "open 13 2\nclosed 13 2 500 0 500 0\ntold 13 2\n"));
}

void TestExamples::posExplainsWhatItIsRefused()
{
    Shop shop;
    const Outcome outcome = shop.day("cash 5\nitem 1.234 1 1 Ekmek\nitem 1 1 9 Ekmek\nitem 1 1 1\nfly\n"
                                     "item 5 1 1 Ayran\ndelete\ndelete\n"
                                     "item 12.50 1 1 Ekmek\ncard 12.51\ncash 0\nx\nz\nreceipt 1\n" +
                                     QByteArray(300, 'x') + "\nend\n");
    const QByteArray accepted = "Not understood. Accepted: item PRICE QUANTITY SECTION NAME";
    QCOMPARE(outcome.errors.count("Not understood."), 6);
    QCOMPARE(outcome.errors.count(accepted), 3);
    QCOMPARE(outcome.errors.count("Payment failed: wrong-state (6)\n"), 1);
    QCOMPARE(outcome.errors.count("Payment failed: refused (8)\n"), 1);
    const qsizetype deleting = outcome.errors.indexOf("Deleting failed: refused (8)\n");
    const qsizetype reason = outcome.errors.indexOf("Cause: no such item is on the receipt", deleting);
    QVERIFY2(deleting >= 0 && reason > deleting, outcome.errors.constData()); // though it was looked at since
    QCOMPARE(outcome.errors.count("Payment failed: bad-value (4)\n"), 1);
    QCOMPARE(outcome.errors.count("X report failed: wrong-state (6)\n"), 1);
    QCOMPARE(outcome.errors.count("Z report failed: refused (8)\n"), 1);
    QVERIFY(outcome.output.endsWith("Sold: receipt 1 of Z 1\n"));
    QCOMPARE(shop.books(), QByteArray("open 1 1\nreport 1\nrefused 1\nclosed 1 1 1250 1250 0 0\ntold 1 1\n"));
    QCOMPARE(shop.day("quit\n").output, QByteArray("Ready\n")); // nothing is left over
}

void TestExamples::posCancelsASaleItNeverNoted()
{
    Shop shop;
    shop.open();
    QVERIFY(shop.says("Ready\n"));
    QVERIFY(shop.reg->setFault(u"mute=sale-state"_s));
    shop.type("item 10 1 1 Ekmek\n");
    QVERIFY(shop.waitForCommand(u"sale-state"_s));
    shop.kill();
    QVERIFY(shop.reg->setFault(u"none"_s));
    QCOMPARE(shop.books(), QByteArray());
    QCOMPARE(shop.day("item 10 1 1 Ekmek\nend\n").exitCode, 0);
    QCOMPARE(shop.books(), QByteArray("open 1 2\nclosed 1 2 1000 1000 0 0\ntold 1 2\n"));
    QCOMPARE(shop.prints(), (QStringList{u"cancelled 1"_s, u"receipt 2"_s}));
}

void TestExamples::posLeavesASaleOfSomebodyElse()
{
    Shop shop;
    QCOMPARE(shop.day("item 10 1 1 Ekmek\n").exitCode, 0);
    QVERIFY(QFile::remove(shop.booksFile()));
    const Outcome outcome = shop.day("cancel\n");
    QCOMPARE(outcome.errors,
             QByteArray("A sale is open that is none of this till: end it on the register.\n"));
    QCOMPARE(outcome.exitCode, 6);
    QCOMPARE(shop.prints(), QStringList());
}

void TestExamples::posLeavesPrintingToTheCashier_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("printed"); // by the command and by the same once more
    for (const char *fault : {"lost-answer", "power-cut", "close"}) {
        const int first = qstrcmp(fault, "close") == 0 ? 0 : 1;
        const QString name = QString::fromLatin1(fault);
        QTest::addRow("slip, %s", fault)
            << name + u"=print"_s << QByteArray("slip Afiyet olsun\n") << first + 1;
        QTest::addRow("X report, %s", fault) << name + u"=report"_s << QByteArray("x\n") << first + 1;
    }
}

void TestExamples::posLeavesPrintingToTheCashier()
{
    QFETCH(const QString, fault);
    QFETCH(const QByteArray, line);
    Shop shop;
    shop.open();
    QVERIFY(shop.says("Ready\n"));
    QVERIFY(shop.reg->setFault(fault));
    shop.type(line);
    QVERIFY(shop.waitForCommand(u"login"_s)); // it has connected again
    QVERIFY(shop.reg->setFault(u"none"_s));
    shop.type(line);
    const Outcome outcome = shop.close();
    QCOMPARE(outcome.errors.count("Look whether it is printed"), 1);
    QCOMPARE(outcome.output.count(": printed\n"), 1);
    QTEST(int(shop.prints().size()), "printed");
}

void TestExamples::posTakesATornLineOffItsBooks()
{
    Shop shop;
    shop.write("open 1 1\nclosed 1 1 1000 10");
    // The register knows of no such receipt, and of no other.
    const Outcome outcome = shop.day("item 10 1 1 Ekmek\nunsold\nitem 10 1 1 Ekmek\nend\n");
    QCOMPARE(outcome.errors.count("What was typed before is not settled"), 1);
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(shop.books(),
             QByteArray("open 1 1\ncancelled 1 1\nopen 1 1\nclosed 1 1 1000 1000 0 0\ntold 1 1\n"));
}

void TestExamples::posLeavesNoHalfLineOnAFullDisk()
{
    Shop shop;
    const QByteArray before = "report 1\nreported 1\n";
    shop.write(before);
    shop.diskSize = before.size() + 4; // of "open 1 1"
    const Outcome outcome = shop.day("item 10 1 1 Ekmek\nagain\n");
    QCOMPARE(outcome.errors.count("The books cannot be written"), 2);
    QCOMPARE(shop.books(), before);
    shop.diskSize = 0;
    QCOMPARE(shop.day("item 10 1 1 Ekmek\nend\n").exitCode, 0);
    QCOMPARE(shop.books(), before + "open 1 2\nclosed 1 2 1000 1000 0 0\ntold 1 2\n");
}

void TestExamples::posRefusesBooksThatAreNone()
{
    Shop shop;
    QFile file(shop.booksFile());
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("open 1 1\nDear diary\n");
    file.close();
    const Outcome outcome = shop.day("quit\n");
    QCOMPARE(outcome.exitCode, 64);
    QVERIFY2(outcome.errors.endsWith("line 2: not a line of the books\n"), outcome.errors.constData());
    QCOMPARE(shop.books(), QByteArray("open 1 1\nDear diary\n"));

    QVERIFY(file.remove() && QDir().mkdir(shop.booksFile()));
    const Outcome folder = shop.day("quit\n");
    QCOMPARE(folder.exitCode, 64);
    QVERIFY2(folder.errors.endsWith(": cannot be used: Is a directory\n"), folder.errors.constData());
}

QTEST_GUILESS_MAIN(TestExamples)
#include "tst_examples.moc"
