#include "tests/simulated_register.h"
#include "tests/velnoctl_client.h"

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
    QVERIFY(client.err.contains("interrupted while a command was under way"));
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

QTEST_GUILESS_MAIN(TestVelnoctlRegister)
#include "tst_velnoctl_register.moc"
