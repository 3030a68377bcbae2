// SPDX-License-Identifier: Apache-2.0

#include "tests/support/pos_example.h"
#include "tests/support/program_run.h"
#include "tests/support/simulated_register.h"
#include "tests/support/symbol_names.h"
#include "tests/support/test_support.h"

#include <QDir>
#include <QRegularExpression>
#include <QTemporaryDir>
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
    void eachFunctionIsCalled_data();
    void eachFunctionIsCalled();
    void posSellsAndReports();
    void posExplainsWhatItIsRefused();
    void posSellsOnceWhatItWasKilledOver();
    void posAsksThePersonAboutMoneyTaken();
    void posGoesOnWhenTheRegisterIsBack();
    void posRefusesALedgerThatIsNone();
};

namespace {

Outcome run(const QStringList &arguments)
{
    return outcomeOf(QString::fromUtf8(VELNO_EXAMPLES "/register_state"), arguments);
}

/** The keys, which no two runs have alike, without what follows their kind. */
QByteArray withoutKeys(const QByteArray &output)
{
    static const QRegularExpression key(u"^(sale|slip|x|z)-[0-9-]+: "_s, QRegularExpression::MultilineOption);
    return QString::fromUtf8(output).replace(key, u"\\1: "_s).toUtf8();
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

void TestExamples::eachFunctionIsCalled_data()
{
    QTest::addColumn<QString>("example");
    QTest::addColumn<QString>("header");
    QTest::newRow("velnoext") << u"every_call"_s << u"ExtDevice/velnoext/velnoext.h"_s;
    QTest::newRow("velnotill") << u"every_till_call"_s << u"till/velnotill.h"_s;
}

void TestExamples::eachFunctionIsCalled()
{
    QFETCH(const QString, example);
    QFETCH(const QString, header);
    const QByteArray text = fileText(VELNO_SOURCE "/examples/c", qPrintable(example + ".c"_L1));
    const QStringList functions =
        matches(fileText(VELNO_SOURCE, qPrintable(header)), "^VELNO(?:EXT|TILL)_API .*?\\b(velno\\w+)\\(");
    QVERIFY(functions.size() > 20);
    for (const QString &function : functions)
        QVERIFY2(text.contains(function.toUtf8() + '('), qPrintable(function));

    const quint16 port = freePort();
    SimulatedRegister reg(port);
    const QTemporaryDir folder;
    QStringList arguments{serialNo, u"127.0.0.1"_s, QString::number(port)};
    if (example == "every_till_call"_L1)
        arguments << folder.filePath(u"ledger"_s);
    const Outcome outcome = outcomeOf(QString::fromUtf8(VELNO_EXAMPLES) + u'/' + example, arguments);
    QCOMPARE(outcome.exitCode, 0);
    QVERIFY2(
        outcome.output.endsWith(example == "every_call"_L1 ? "forget device: success\n" : "close: done\n"),
        outcome.errors.constData());
}

void TestExamples::posSellsAndReports()
{
    Shop shop({u"--z"_s, u"12"_s});
    const Outcome outcome =
        shop.day("item 12.50 2 1 Ekmek\nitem 240 1.25 3 Ayran \"Yayla\"\nitem 99.90 1 1 Peynir\ndelete\n"
                 "card 100\nend\nslip Afiyet \\ olsun\nx\nz\nitem 5 1 8 Kitap\ncancel\n"
                 "item 5 1 8 Kitap\nend card\nquit\n");
    QCOMPARE(outcome.errors, QByteArray("card payment under way\n").repeated(2));
    QCOMPARE(withoutKeys(outcome.output),
             QByteArray("Ready\n"
                        "sale: Receipt 1 of Z 12 is closed: total 325.00 TL, cash 225.00 TL, card 100.00 TL, "
                        "change 0.00 TL.\n"
                        "slip: Slip: done.\n"
                        "x: X report: done.\n"
                        "z: Z report: done.\n"
                        "sale: Receipt 1 of Z 13 is closed: total 5.00 TL, cash 0.00 TL, card 5.00 TL, "
                        "change 0.00 TL.\n"));
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(shop.prints(),
             (QStringList{u"receipt 1"_s, u"slip 0"_s, u"x-report 0"_s, u"z-report 0"_s, u"receipt 1"_s}));
}

void TestExamples::posExplainsWhatItIsRefused()
{
    Shop shop;
    const Outcome outcome = shop.day("cash 5\nend\nitem 1.234 1 1 Ekmek\nitem 1 1 9 Ekmek\nitem 1 1 1\nfly\n"
                                     "item 12.50 1 1 Ekmek\ncash 0\nanswer x Ali paid\nanswer x Ali maybe\n" +
                                     QByteArray(300, 'x') + "\nend\n");
    QCOMPARE(outcome.errors.count("Not understood."), 6);
    QCOMPARE(outcome.errors.count("items[0].price: "), 1);
    QCOMPARE(outcome.errors.count("items[0].section: 9; accepted: 1 to 8"), 1);
    QCOMPARE(outcome.errors.count("payments[0]"), 1);
    QCOMPARE(outcome.errors.count("no order has the key \"x\""), 1);
    QVERIFY2(
        withoutKeys(outcome.output).startsWith("Ready\nsale: Receipt 1 of Z 1 is closed: total 12.50 TL"),
        outcome.output.constData());
    QCOMPARE(shop.prints(), QStringList{u"receipt 1"_s});
}

void TestExamples::posSellsOnceWhatItWasKilledOver()
{
    Shop shop;
    shop.open();
    QVERIFY(shop.says("Ready\n"));
    QVERIFY(shop.reg->setFault(u"mute=item"_s));
    shop.type("item 10 1 1 Ekmek\nend\n");
    QVERIFY(shop.waitForCommand(u"item"_s));
    shop.kill();
    QVERIFY(shop.reg->setFault(u"none"_s));
    const Outcome outcome = shop.day("quit\n"); // the next start sells it, with the key of the first
    QCOMPARE(outcome.exitCode, 0);
    QCOMPARE(outcome.output, QByteArray("Ready\n")); // nothing is left
    QCOMPARE(shop.prints(), QStringList{u"receipt 1"_s});
}

void TestExamples::posAsksThePersonAboutMoneyTaken()
{
    Shop shop;
    shop.open();
    shop.type("item 10 1 1 !power-cut=change-state\ncard 4\nend\n");
    QVERIFY(shop.says("sell-again: "));
    shop.kill();
    shop.open();
    QVERIFY(shop.says("Ready\n"));
    shop.kill();
    const Outcome asked = shop.day("quit\n");
    const QByteArray key = asked.output.left(asked.output.indexOf(':'));
    QVERIFY2(key.startsWith("sale-"), asked.output.constData());
    const Outcome answered = shop.day("answer " + key + " Ali drop\nitem 7 1 1 Su\nend\n");
    QVERIFY2(answered.output.contains("\n" + key + ": It was dropped: nothing has been sold.\n"),
             answered.output.constData());
    QCOMPARE(shop.prints(), QStringList{u"receipt 2"_s}); // the cut has cancelled the first, unprinted
}

void TestExamples::posGoesOnWhenTheRegisterIsBack()
{
    Shop shop;
    shop.reg.reset(); // unplugged
    shop.open();
    QVERIFY(shop.says("Ready\n"));
    shop.type("item 10 1 1 Ekmek\nend\n");
    QVERIFY(shop.says("The register is away or busy"));
    shop.plugIn();
    shop.type("again\n");
    QCOMPARE(shop.close().exitCode, 0);
    QCOMPARE(shop.prints(), QStringList{u"receipt 1"_s});
}

void TestExamples::posRefusesALedgerThatIsNone()
{
    Shop shop;
    QVERIFY(QDir().mkdir(shop.ledgerFile()));
    const Outcome outcome = shop.day("quit\n");
    QCOMPARE(outcome.exitCode, 64);
    QVERIFY2(outcome.errors.contains(shop.ledgerFile().toUtf8()), outcome.errors.constData());
    QCOMPARE(outcome.output, QByteArray());
}

QTEST_GUILESS_MAIN(TestExamples)
#include "tst_examples.moc"
