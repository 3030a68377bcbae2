// SPDX-License-Identifier: Apache-2.0

#include "tests/support/simulated_register.h"
#include "tests/support/velnoctl_client.h"

#include <QJsonArray>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** velnoctl against the real velno-register. */
class TestVelnoctlRegister : public QObject
{
    Q_OBJECT

private slots:
    void readsWhatTheRegisterWasToldToBe();
    void jsonTellsTheSame();
    void paperRunsOutBetweenTwoCommands();
    void startingRegisterRefuses_data();
    void startingRegisterRefuses();
    void faultsEndWithTheirCode_data();
    void faultsEndWithTheirCode();
    void silentRegisterIsLeft();
    void pairingFails_data();
    void pairingFails();
    void otherRegisterConnects();
    void eachRunPairs();
    void marketsDay();
    void marketsDayAsJson();
    void aNewRegisterNeverMadeAReport();
    void whatASaleContainsEndsTheScript_data();
    void whatASaleContainsEndsTheScript();
    void lostAnswerIsLookedUp();
    void invoiceNeedsNoArguments();
    void registerThatLostItsKeysIsPairedAnew();
};

namespace {

const QStringList model{u"--state"_s,  u"7"_s,          u"--z"_s,          u"42"_s,
                        u"--last-z"_s, u"1795276800"_s, u"--sale-limit"_s, u"123456"_s,
                        u"--clock"_s,  u"3600"_s};

} // namespace

void TestVelnoctlRegister::readsWhatTheRegisterWasToldToBe()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port, model);
    QVERIFY(reg.isReady());
    Client client(target(port) + QStringList{u"login"_s, u"state"_s, u"z"_s, u"last-z"_s, u"sale-limit"_s,
                                             u"paper"_s, u"serial"_s, u"logout"_s});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, "logged in\nstate 7 (idle, another screen)\nZ 42\n"
                         "last Z 2026-11-21 19:00:00 (1795276800)\nsale limit 1234.56 TL\npaper present\n"
                         "serial number UB1234567890\nlogged out\n");
}

void TestVelnoctlRegister::jsonTellsTheSame()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port, model);
    Client client(target(port) + QStringList{u"--json"_s, u"state"_s, u"datetime"_s});
    QCOMPARE(client.exitCode(), 0);
    const QByteArrayList lines = client.out.split('\n');
    QCOMPARE(lines.size(), 3);
    QCOMPARE(object(lines.at(0)).value(u"state"_s).toInt(), 7);
    const int seconds = object(lines.at(1)).value(u"seconds"_s).toInt();
    QVERIFY2(seconds >= 3600 && seconds < 3600 + 600, lines.at(1).constData()); // its clock goes on
    QVERIFY(object(lines.at(1)).value(u"local"_s).toString().startsWith("1970-01-01 04:"_L1));
}

void TestVelnoctlRegister::paperRunsOutBetweenTwoCommands()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    Client client(target(port) + QStringList{u"run"_s, u"-"_s});
    client.say("paper\n");
    QVERIFY(client.printed("paper present\n"));
    reg.say("paper off");
    QVERIFY(!reg.waitFor(u"set"_s).isEmpty());
    client.say("paper\n");
    QCOMPARE(client.exitCode(), 9);
    QVERIFY2(client.err.contains("standard input:2: paper: The printer has no paper."),
             client.err.constData());
}

void TestVelnoctlRegister::startingRegisterRefuses_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("login") << u"login"_s;
    QTest::newRow("z") << u"z"_s;
}

void TestVelnoctlRegister::startingRegisterRefuses()
{
    QFETCH(const QString, command);
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--state"_s, u"0"_s, u"--z"_s, u"42"_s});
    Client client(target(port) + QStringList{u"--json"_s, command});
    QCOMPARE(client.exitCode(), 8);
    QCOMPARE(object(client.out).value(u"result"_s).toString(), u"refused"_s);
    QCOMPARE(object(client.out).value(u"z"_s).toInt(), command == "z"_L1 ? 42 : 0);
}

void TestVelnoctlRegister::faultsEndWithTheirCode_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<int>("code");
    QTest::newRow("refuse") << u"refuse=z"_s << 8;
    QTest::newRow("close") << u"close=z"_s << 2;
    QTest::newRow("short reply") << u"short-reply"_s << 5;
    QTest::newRow("wrong MAC") << u"bad-mac"_s << 11;
    QTest::newRow("one element too many") << u"extra-element"_s << 12;
    QTest::newRow("keep-alives") << u"keep-alives=3"_s << 0;
}

void TestVelnoctlRegister::faultsEndWithTheirCode()
{
    QFETCH(const QString, fault);
    QFETCH(const int, code);
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--z"_s, u"42"_s, u"--fault"_s, fault});
    QVERIFY(reg.isReady());
    Client client(target(port) + QStringList{u"z"_s});
    QCOMPARE(client.exitCode(), code);
    QCOMPARE(client.out, QByteArray(code == 0 ? "Z 42\n" : ""));
    QCOMPARE(client.err.contains("velnoctl: z: "), code != 0);
}

void TestVelnoctlRegister::silentRegisterIsLeft()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--fault"_s, u"mute=z"_s});
    Client client(target(port) + QStringList{u"z"_s});
    QCOMPARE(reg.waitFor(u"command"_s).value(u"command"_s).toString(), u"z"_s);
    client.raise(SIGINT);
    QCOMPARE(client.exitCode(), 130);
    QVERIFY2(client.err.contains("velnoctl: z: interrupted while it was under way"), client.err.constData());
}

void TestVelnoctlRegister::pairingFails_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::newRow("authority") << QStringList{u"--fault"_s, u"wrong-authority"_s};
    QTest::newRow("signature") << QStringList{u"--fault"_s, u"bad-signature"_s};
    QTest::newRow("refused") << QStringList{u"--fault"_s, u"result-code=01"_s};
    QTest::newRow("closed") << QStringList{u"--fault"_s, u"close=2"_s};
    QTest::newRow("another application") << QStringList{u"--app-hash"_s, QString(64, u'0')};
}

void TestVelnoctlRegister::pairingFails()
{
    QFETCH(const QStringList, arguments);
    const quint16 port = freePort();
    SimulatedRegister reg(port, arguments);
    Client client(target(port) + QStringList{u"state"_s});
    QCOMPARE(client.exitCode(), 10);
    QVERIFY2(client.err.contains("velnoctl: connecting UB1234567890 on 127.0.0.1:"), client.err.constData());
    QVERIFY(client.err.contains("(code 10, pairing-failed)"));
    QCOMPARE(client.out, QByteArray());
}

void TestVelnoctlRegister::otherRegisterConnects()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    QStringList arguments = target(port);
    arguments.replaceInStrings(u"UB1234567890"_s, u"UB0000000001"_s);
    Client client(arguments + QStringList{u"state"_s});
    QCOMPARE(client.exitCode(), 10);
}

void TestVelnoctlRegister::eachRunPairs()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    for (int i = 0; i < 3; ++i) {
        Client client(target(port) + QStringList{u"z"_s});
        QCOMPARE(client.exitCode(), 0);
        QVERIFY(!reg.waitFor(u"paired"_s).isEmpty());
    }
}

void TestVelnoctlRegister::marketsDay()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--clock"_s, u"1795276800"_s});
    for (const QByteArray z : {"1", "2"}) {
        Client client(target(port) + QStringList{u"run"_s, QString::fromUtf8(VELNO_MARKET)});
        QVERIFY2(client.exitCode() == 0, client.err.constData());
        QVERIFY2(client.out.startsWith("logged in\nstate 1 (idle)\npaper present\nsection 1 \"GIDA\", "),
                 client.out.constData());
        QVERIFY2(client.out.contains("receipt " + z +
                                     "/1: total 115.38 TL, tax 4.42 TL, cash 200.00 TL, card 0.00 TL, "
                                     "change 84.62 TL, items 3\n"),
                 client.out.constData());
        QVERIFY2(client.out.contains("receipt " + z +
                                     "/2: total 142.40 TL, tax 17.93 TL, cash 50.00 TL, card 92.40 TL, "
                                     "change 0.00 TL, items 3\n"),
                 client.out.constData());
        QVERIFY2(client.out.contains("Z " + z + "\nZ report printed\nZ " + QByteArray::number(z.toInt() + 1) +
                                     "\nlast Z 2026-11-21 19:0"),
                 client.out.constData());
        QVERIFY(client.out.endsWith("\nlogged out\n"));
        for (const char *const kind :
             {"receipt", "receipt", "cancelled", "invoice", "slip", "x-report", "z-report"}) {
            const QJsonObject printed = reg.waitFor(u"printed"_s);
            QCOMPARE(printed.value(u"kind"_s).toString(), QLatin1String(kind));
            QCOMPARE(printed.value(u"z"_s).toInt(), z.toInt());
        }
    }
}

void TestVelnoctlRegister::marketsDayAsJson()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    Client client(target(port) + QStringList{u"--json"_s, u"run"_s, QString::fromUtf8(VELNO_MARKET)});
    QCOMPARE(client.exitCode(), 0);
    QList<int> changes;
    for (const QByteArray &line : client.out.trimmed().split('\n')) {
        const QJsonObject result = object(line);
        QVERIFY2(result.value(u"code"_s).toInt(-1) == 0, line.constData());
        if (result.value(u"command"_s) == u"receipt-data"_s)
            changes << result.value(u"totals"_s).toArray().last().toInt();
    }
    QCOMPARE(changes, (QList{8462, 0}));
}

void TestVelnoctlRegister::aNewRegisterNeverMadeAReport()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    Client client(target(port) + QStringList{u"last-z"_s});
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, "last Z never\n");
}

void TestVelnoctlRegister::whatASaleContainsEndsTheScript_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<int>("code");
    QTest::newRow("item refused") << QByteArray("item 11111.01 Su\n") << 8;
    QTest::newRow("items refused") << QByteArray("items 11111.02 Su + 1 Simit\n") << 8;
    QTest::newRow("medical refused") << QByteArray("item 1 !refuse=medical\nmedical 5\n") << 8;
    QTest::newRow("answer lost") << QByteArray("item 11111.20 Su\n") << 2;
    QTest::newRow("wrong MAC") << QByteArray("item 11111.17 Su\n") << 11;
    QTest::newRow("over the limit") << QByteArray("item 20000 Su\n") << 8;
    QTest::newRow("sale still open") << QByteArray("z-report\n") << 8;
    QTest::newRow("too much by card")
        << QByteArray("item 1 Su\npay card 2\nend-sale card\nstart-sale\n") << 6;
    QTest::newRow("second sale") << QByteArray("start-sale\n") << 6;
    QTest::newRow("receipt still open") << QByteArray("sale-state\nreceipt-data\n") << 8;
}

void TestVelnoctlRegister::whatASaleContainsEndsTheScript()
{
    QFETCH(const QByteArray, line);
    QFETCH(const int, code);
    const QTemporaryDir folder;
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    const QString file = fileWith(folder, "start-sale\n" + line + "logout\n");
    Client client(target(port) + QStringList{u"run"_s, file});
    QVERIFY2(client.exitCode() == code, client.err.constData());
    const QByteArray where = ":" + QByteArray::number(1 + line.count('\n')) + ": ";
    QVERIFY2(client.err.contains(file.toUtf8() + where), client.err.constData());
    QVERIFY(!client.out.contains("logged out"));
}

void TestVelnoctlRegister::lostAnswerIsLookedUp()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    Client selling(target(port) + QStringList{u"start-sale"_s, u"item"_s, u"11111.20"_s, u"Su"_s});
    QCOMPARE(selling.exitCode(), 2);
    QCOMPARE(selling.out, "sale started\n");
    Client looking(target(port) + QStringList{u"sale-state"_s, u"cancel"_s, u"state"_s});
    QCOMPARE(looking.exitCode(), 0);
    QVERIFY2(looking.out.startsWith("receipt 1/1, register shows 1: total 11111.20 TL,"),
             looking.out.constData());
    QVERIFY(looking.out.endsWith(", items 1\nsale cancelled\nstate 1 (idle)\n"));
}

void TestVelnoctlRegister::invoiceNeedsNoArguments()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port);
    Client client(target(port) + QStringList{u"start-invoice-sale"_s, u"item"_s, u"5"_s, u"Su"_s,
                                             u"end-invoice"_s, u"state"_s});
    QVERIFY2(client.exitCode() == 0, client.err.constData());
    QVERIFY2(client.out.endsWith("\nsale ended with an invoice\nstate 1 (idle)\n"), client.out.constData());
    QCOMPARE(reg.waitFor(u"printed"_s).value(u"kind"_s).toString(), u"invoice"_s);
}

void TestVelnoctlRegister::registerThatLostItsKeysIsPairedAnew()
{
    const quint16 port = freePort();
    SimulatedRegister reg(port, {u"--z"_s, u"42"_s});
    Client client(target(port) +
                  QStringList{u"--json"_s, u"z"_s, u"forget"_s, u"z"_s, u"forget"_s, u"forget"_s});
    QCOMPARE(client.exitCode(), 1); // at the end there is nothing left to forget
    QList<int> codes;
    for (const QByteArray &line : client.out.trimmed().split('\n'))
        codes << object(line).value(u"code"_s).toInt(-1);
    QCOMPARE(codes, (QList{0, 0, 0, 0, 1}));
    QVERIFY(!reg.waitFor(u"paired"_s).isEmpty());
    QVERIFY(!reg.waitFor(u"paired"_s).isEmpty());
}

QTEST_GUILESS_MAIN(TestVelnoctlRegister)
#include "tst_velnoctl_register.moc"
