#include "tests/support/ends_with_test.h"
#include "tests/support/full_disk.h"
#include "tests/support/simulated_register.h"
#include "tests/support/test_support.h"

#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <optional>

using namespace Qt::StringLiterals;
using TestSupport::freePort;

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
    void posCancelsASaleItNeverNoted();
    void posLeavesASaleOfSomebodyElse();
    void posLeavesPrintingToTheCashier_data();
    void posLeavesPrintingToTheCashier();
    void posTakesATornLineOffItsBooks();
    void posLeavesNoHalfLineOnAFullDisk();
    void posRefusesBooksThatAreNone();
};

namespace {

const QString serialNo = QString::fromLatin1(SimulatedRegister::serial);

constexpr int longestWait = 60'000; // ms, for a machine under load

struct Outcome
{
    int exitCode;
    QByteArray output;
    QByteArray errors;
};

Outcome run(const QStringList &arguments)
{
    QProcess program;
    program.start(QStringLiteral(VELNO_EXAMPLES "/register_state"), arguments);
    if (!program.waitForFinished() || program.exitStatus() != QProcess::NormalExit)
        return {-1, {}, program.errorString().toUtf8()};
    return {program.exitCode(), program.readAllStandardOutput(), program.readAllStandardError()};
}

/** The till of examples/c with a register of its own, both of which remember what they sold. */
class Shop
{
public:
    explicit Shop(const QStringList &options = {})
        : m_port(freePort())
    {
        plugIn(options);
    }

    /** A register process, which finds its journal and holds no keys. */
    void plugIn(const QStringList &options = {})
    {
        reg.reset();
        reg = std::make_unique<SimulatedRegister>(
            m_port, QStringList{u"--journal"_s, m_folder.filePath(u"j"_s)} + options);
    }

    void open()
    {
        m_till = std::make_unique<QProcess>();
        m_till->setChildProcessModifier(TestSupport::endsWithTest([size = diskSize] {
            static std::optional<FullDisk> fullDisk; // until the till takes the place of this process
            if (size > 0)
                fullDisk.emplace(size);
        }));
        m_till->start(QStringLiteral(VELNO_EXAMPLES "/pos"),
                      {serialNo, u"127.0.0.1"_s, QString::number(m_port), booksFile()});
    }

    void type(const QByteArray &lines)
    {
        m_till->write(lines);
        m_till->waitForBytesWritten(longestWait);
    }

    /** Reads until the till has said this. */
    bool says(const QByteArray &text)
    {
        while (!m_output.contains(text))
            if (!m_till->waitForReadyRead(longestWait))
                return false;
            else
                m_output += m_till->readAllStandardOutput();
        m_output.clear();
        return true;
    }

    Outcome close()
    {
        m_till->closeWriteChannel();
        if (!m_till->waitForFinished(longestWait) || m_till->exitStatus() != QProcess::NormalExit)
            return {-1, {}, m_till->errorString().toUtf8()};
        return {m_till->exitCode(), m_till->readAllStandardOutput(), m_till->readAllStandardError()};
    }

    Outcome day(const QByteArray &lines)
    {
        open();
        type(lines);
        return close();
    }

    /** Until the till has sent this; what came before is passed over. */
    bool waitForCommand(const QString &command) const
    {
        QString sent;
        do
            sent = reg->waitFor(u"command"_s).value(u"command"_s).toString();
        while (!sent.isEmpty() && sent != command);
        return !sent.isEmpty();
    }

    void kill()
    {
        m_till->kill();
        m_till->waitForFinished(longestWait);
    }

    QString booksFile() const { return m_folder.filePath(u"books"_s); }

    void write(const QByteArray &books) const
    {
        QFile file(booksFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(books);
    }

    QByteArray books() const
    {
        QFile file(booksFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("none");
    }

    /** What the register has printed, a word and a number for each: "receipt 1". */
    QStringList prints()
    {
        reg->say("fault none");
        reg->waitFor(u"fault"_s); // so that all before it has been read
        QStringList list;
        for (const QJsonObject &event : reg->events())
            if (event.value(u"event"_s) == u"printed"_s)
                list << event.value(u"kind"_s).toString() + u' ' +
                            QString::number(event.value(u"receipt"_s).toInt());
        return list;
    }

    std::unique_ptr<SimulatedRegister> reg;
    qint64 diskSize = 0; ///< no file of the next till grows beyond it; 0: any size

private:
    QTemporaryDir m_folder;
    quint16 m_port;
    std::unique_ptr<QProcess> m_till;
    QByteArray m_output;
};

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

void TestExamples::posEntersTheSaleAgainAfterACut()
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

void TestExamples::posSellsOnceBehindAPassingRefusal()
{
    Shop shop;
    const Outcome outcome = shop.day("item 10 1 1 !refuse=receipt\nend\n");
    QCOMPARE(outcome.errors, QByteArray());
    QCOMPARE(shop.prints(), QStringList{u"receipt 1"_s});
    QCOMPARE(shop.books(), QByteArray("open 1 1\nclosed 1 1 1000 1000 0 0\ntold 1 1\n"));
}

void TestExamples::posAsksThePersonAboutItsFirstSale()
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

void TestExamples::posTakesThePersonsWordForAReceipt()
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
void TestExamples::posPaysOnceWhatItCannotSee()
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

void TestExamples::posFindsOutHowItsLastSaleEnded_data()
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
void TestExamples::posFindsOutHowItsLastSaleEnded()
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
void TestExamples::posTellsWhatItSoldBeforeItWasKilled()
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

void TestExamples::posSaysWhenAReceiptMayNotBePrinted()
{
    Shop shop;
    const Outcome outcome = shop.day("item 10 1 1 !paper-out-after=1\nend\n");
    QCOMPARE(outcome.errors,
             QByteArray("The printer has no paper: look whether the receipt is printed to its end.\n"));
    QVERIFY(outcome.output.endsWith("Sold: receipt 1 of Z 1\n"));
}

/** A register that told of nothing for long enough: the doubt is not forgotten. */
void TestExamples::posFindsAReceiptClosedAfterAll()
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
void TestExamples::posTellsOfMoneyThatACutHasMadeVoid()
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

void TestExamples::posFindsOutAboutItsReport_data()
{
    QTest::addColumn<QString>("command"); // behind which the till hears nothing any more
    QTest::addColumn<QByteArray>("found");
    QTest::newRow("before it was asked for") << u"state"_s << QByteArray("Z report 1: was not made\nReady\n");
    QTest::newRow("after it was made") << u"report"_s << QByteArray("Z report 1: was made\nReady\n");
}

void TestExamples::posFindsOutAboutItsReport()
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
void TestExamples::posOutlivesARegisterWithoutItsKeys()
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
void TestExamples::posKeepsAReportOpenWhilePairingFails()
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
