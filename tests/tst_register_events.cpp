// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/key_exchange.h"
#include "tests/support/peer.h"
#include "tests/support/refusal_check.h"
#include "tests/support/simulated_register.h"
#include "tests/support/terminal.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QTcpServer>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>
#include <sys/stat.h>

using TestSupport::Peer;
using namespace Qt::StringLiterals;
using namespace Velno::GMP;

/** velno-register while it runs: its events, standard input and hostile peers. */
class TestRegisterEvents : public QObject
{
    Q_OBJECT

private slots:
    void whatCannotBeReachedIsToldOnce();
    void eventsAreWordsWithoutJson();
    void eventsOfAPairing();
    void itConnectsAgainAfterAPairing();
    void onceEndsWithTheVerdict_data();
    void onceEndsWithTheVerdict();
    void anotherApplicationIsRefused();
    void standardInputChangesFaults();
    void standardInputRefusesNonsense_data();
    void standardInputRefusesNonsense();
    void standardInputIsReadAgainInFront();
    void itStopsWhateverItIsDoing_data();
    void itStopsWhateverItIsDoing();
    void hostilePeersAreRefused_data();
    void hostilePeersAreRefused();
    void ipv6TargetsWork();
    void targetsAreToldAsTheyWereTyped();
};

namespace {

const QByteArray appHash(32, '\x5A');

int pairOnce(quint16 port)
{
    MatchExt record;
    const int code =
        GMP3_KeyExchange_Server(record, port, SimulatedRegister::serial, "001A2B3C4D5E", appHash);
    GMP3::disconnect();
    return code;
}

QByteArray request(MessageTag kind, const char *serial = SimulatedRegister::serial)
{
    return GMP3::frame(false, kind, Velno::tlvElement(fieldTag(ProtocolVersion), "1.0.0.0"), serial);
}

QByteArray withLastByteWrong(QByteArray frame)
{
    frame.back() = char(frame.back() ^ 1);
    return frame;
}

} // namespace

void TestRegisterEvents::whatCannotBeReachedIsToldOnce()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(reg.waitFor(u"unreachable"_s).value(u"reason"_s), u"Connection refused"_s);
    {
        QTcpServer server;
        QVERIFY(server.listen(QHostAddress::LocalHost, port));
        QVERIFY(!reg.waitFor(u"connected"_s).isEmpty());
    }
    QCOMPARE(reg.waitFor(u"unreachable"_s).value(u"reason"_s), u"Connection refused"_s);
    // As long as another one needs to tell it, this one does not repeat it.
    SimulatedRegister other(TestSupport::freePort());
    QVERIFY(!other.waitFor(u"unreachable"_s).isEmpty());
    reg.say("quit");
    QCOMPARE(reg.waitForExit(), 0);
    int told = 0;
    int connections = 0;
    for (const QJsonObject &event : reg.events()) {
        told += event.value(u"event"_s) == u"unreachable"_s;
        connections += event.value(u"event"_s) == u"connected"_s;
    }
    QVERIFY2(told == 2, qPrintable(u"told %1 times, connected %2 times"_s.arg(told).arg(connections)));
}

void TestRegisterEvents::eventsAreWordsWithoutJson()
{
    QProcess process;
    process.start(SimulatedRegister::program(), {u"--serial"_s, u"VELNO1234567"_s, u"--connect"_s,
                                                 u"127.0.0.1:%1"_s.arg(TestSupport::freePort())});
    QVERIFY(process.waitForReadyRead());
    QVERIFY(process.readLine().startsWith("ready VELNO1234567 127.0.0.1:"));
    process.write("fault mute=1\nquit\n");
    QVERIFY(process.waitForFinished());
    const QByteArray output = process.readAllStandardOutput();
    QVERIFY2(output.endsWith("fault mute=1\nstopped\n"), output);
    QCOMPARE(process.exitCode(), 0);
}

void TestRegisterEvents::eventsOfAPairing()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    QCOMPARE(pairOnce(port), 0);
    QVERIFY(!reg.waitFor(u"disconnected"_s).isEmpty());
    QStringList seen;
    for (const QJsonObject &event : reg.events()) {
        if (event.value(u"event"_s) == u"unreachable"_s)
            continue; // before the tool had come to listen
        QStringList words;
        for (const QString &field : {u"event"_s, u"kind"_s, u"code"_s, u"serial"_s})
            if (event.contains(field))
                words << event.value(field).toString();
        seen << words.join(u' ');
    }
    QCOMPARE(seen, (QStringList{u"ready UB1234567890"_s, u"connected"_s, u"request PairingStart"_s,
                                u"result PairingStart 00"_s, u"request PairingKeyExchange"_s,
                                u"result PairingKeyExchange 00"_s, u"request PairingConfirm"_s,
                                u"result PairingConfirm 00"_s, u"paired UB1234567890"_s, u"disconnected"_s}));
}

void TestRegisterEvents::itConnectsAgainAfterAPairing()
{
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    for (int round = 0; round < 5; ++round) {
        QCOMPARE(pairOnce(port), 0);
        QVERIFY(!reg.waitFor(u"paired"_s).isEmpty());
    }
}

void TestRegisterEvents::onceEndsWithTheVerdict_data()
{
    QTest::addColumn<QStringList>("fault");
    QTest::addColumn<int>("toolCode");
    QTest::addColumn<int>("exitCode");
    QTest::newRow("paired") << QStringList{} << 0 << 0;
    QTest::newRow("refused") << QStringList{u"--fault"_s, u"wrong-key-check"_s} << 5000 << 1;
    QTest::newRow("given up by the tool") << QStringList{u"--fault"_s, u"bad-signature"_s} << 5002 << 1;
}

void TestRegisterEvents::onceEndsWithTheVerdict()
{
    QFETCH(const QStringList, fault);
    QFETCH(const int, toolCode);
    QFETCH(const int, exitCode);
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port, QStringList{u"--once"_s} + fault);
    QCOMPARE(pairOnce(port), toolCode);
    QCOMPARE(reg.waitForExit(), exitCode);
    QCOMPARE(reg.events().last().value(u"event"_s), u"stopped"_s);
}

void TestRegisterEvents::anotherApplicationIsRefused()
{
    const quint16 port = TestSupport::freePort();
    {
        SimulatedRegister reg(port, {u"--app-hash"_s, QString::fromLatin1(appHash.toHex())});
        QCOMPARE(pairOnce(port), 0);
    }
    SimulatedRegister reg(port, {u"--app-hash"_s, QString(64, u'0')});
    QCOMPARE(pairOnce(port), 5000);
    QCOMPARE(reg.waitFor(u"refused"_s).value(u"reason"_s), u"result code 03"_s);
}

void TestRegisterEvents::standardInputChangesFaults()
{
    SimulatedRegister reg(TestSupport::freePort(), {u"--fault"_s, u"garbage"_s});
    QCOMPARE(reg.events().first().value(u"faults"_s).toVariant().toStringList(), QStringList{u"garbage"_s});
    const auto active = [&reg](const QByteArray &line) {
        reg.say(line);
        return reg.waitFor(u"fault"_s).value(u"active"_s).toVariant().toStringList();
    };
    QCOMPARE(active("fault delay=5"), (QStringList{u"delay=5"_s, u"garbage"_s}));
    QCOMPARE(active("fault delay=7"), (QStringList{u"delay=7"_s, u"garbage"_s}));
    QCOMPARE(active("fault none"), QStringList());
}

void TestRegisterEvents::standardInputRefusesNonsense_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown fault") << QByteArray("fault nonsense") << u"accepted are wrong-authority, "_s;
    QTest::newRow("bad value") << QByteArray("fault segments=0") << u"N: 1 to 4096"_s;
    QTest::newRow("unknown command") << QByteArray("nonsense") << u"accepted are fault NAME"_s;
    QTest::newRow("settings are named too") << QByteArray("nonsense") << u"paper off, z N, "_s;
    QTest::newRow("bad setting") << QByteArray("z -1") << u"accepted is N: 1 to 2147483647"_s;
    QTest::newRow("no UTF-8") << QByteArray("\xFF\xFE\x01") << u"accepted are fault NAME"_s;
}

void TestRegisterEvents::standardInputRefusesNonsense()
{
    QFETCH(const QByteArray, line);
    QFETCH(const QString, message);
    const quint16 port = TestSupport::freePort();
    SimulatedRegister reg(port);
    reg.say(line);
    const QString answer = reg.waitFor(u"error"_s).value(u"message"_s).toString();
    QVERIFY2(answer.contains(message), qPrintable(answer));
    QCOMPARE(pairOnce(port), 0);
}

/** Job control: behind another program it cannot read the terminal, brought to the front it does. */
void TestRegisterEvents::standardInputIsReadAgainInFront()
{
    const QTemporaryDir folder;
    const QString pipe = folder.filePath(u"pipe"_s);
    QCOMPARE(mkfifo(pipe.toUtf8().constData(), 0600), 0);
    const quint16 port = TestSupport::freePort();
    TestSupport::Terminal terminal(u"/bin/bash"_s, {u"--norc"_s, u"--noprofile"_s, u"-i"_s});
    terminal.type(SimulatedRegister::program().toUtf8() +
                  " --serial UB1234567890 --connect 127.0.0.1:" + QByteArray::number(port) + " &\n");
    QVERIFY(terminal.waitFor("ready UB1234567890"));
    terminal.type("echo $((1000 + 1)); cat " + pipe.toUtf8() + "\n");
    QVERIFY(terminal.waitFor("1001"));
    terminal.type("echo $((1000 + 2))\n"); // which nobody reads before cat has ended
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost, port));
    QVERIFY(terminal.waitFor("connected")); // since then it has tried
    QVERIFY(QFile(pipe).open(QIODevice::WriteOnly));
    QVERIFY(terminal.waitFor("1002"));

    terminal.type("fg; echo $((1000 + 3))\n");
    QVERIFY(terminal.waitFor("velno-register --serial")); // what is in front now
    terminal.type("paper off\n");
    QVERIFY(terminal.waitFor("set paper off"));
    terminal.type("quit\n");
    QVERIFY(terminal.waitFor("1003"));
    terminal.type("exit\n");
    QCOMPARE(terminal.waitForExit(), 0);
}

void TestRegisterEvents::itStopsWhateverItIsDoing_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QString>("until");
    QTest::addColumn<int>("signal");
    for (const auto &[how, signal] :
         {std::pair("quit", 0), std::pair("SIGTERM", SIGTERM), std::pair("SIGINT", SIGINT)}) {
        QTest::addRow("connecting, %s", how) << QString() << u"ready"_s << signal;
        QTest::addRow("connected, %s", how) << QString() << u"connected"_s << signal;
        QTest::addRow("mute, %s", how) << u"mute=1"_s << u"request"_s << signal;
        QTest::addRow("delaying an answer, %s", how) << u"delay=600000"_s << u"request"_s << signal;
        QTest::addRow("in the middle of a pairing, %s", how) << u"delay=1"_s << u"result"_s << signal;
    }
}

void TestRegisterEvents::itStopsWhateverItIsDoing()
{
    QFETCH(const QString, fault);
    QFETCH(const QString, until);
    QFETCH(const int, signal);
    Peer peer;
    const bool connecting = until == u"ready";
    SimulatedRegister reg(connecting ? TestSupport::freePort() : peer.port(),
                          fault.isEmpty() ? QStringList{} : QStringList{u"--fault"_s, fault});
    QVERIFY(reg.isReady());
    if (!connecting) {
        QVERIFY(peer.accept());
        QVERIFY(peer.send(request(PairingStart)));
        QVERIFY(!reg.waitFor(until).isEmpty());
    }
    signal == 0 ? reg.say("quit") : reg.raise(signal);
    QCOMPARE(reg.waitForExit(), 0);
    QCOMPARE(reg.events().last().value(u"event"_s), u"stopped"_s);
}

void TestRegisterEvents::hostilePeersAreRefused_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("reason");
    const QByteArray start = request(PairingStart);
    QTest::newRow("announces 65535") << QByteArray(64, '\xFF') << u"announces more than 4096"_s;
    QTest::newRow("announces 4097") << QByteArray("\x10\x01", 2) << u"announces more than 4096"_s;
    QTest::newRow("announces two bytes") << QByteArray("\0\2xy", 4) << u"frame"_s;
    QTest::newRow("wrong CRC") << withLastByteWrong(start) << u"CRC"_s;
    QTest::newRow("other serial") << request(PairingStart, "UB0000000000") << u"another serial number"_s;
    QTest::newRow("no message") << GMP3::frame(false, None, QByteArray("\xDF\x82\x08\x01\x01"),
                                               SimulatedRegister::serial)
                                << u"holds no message"_s;
    QTest::newRow("unknown kind") << request(Message8A64) << u"no pairing request"_s;
    QTest::newRow("a response") << GMP3::frame(true, PairingStart,
                                               Velno::tlvElement(fieldTag(ResultCode), "00"),
                                               SimulatedRegister::serial)
                                << u"no pairing request"_s;
    QTest::newRow("second step first") << request(PairingKeyExchange) << u"before its turn"_s;
    QTest::newRow("third step first") << request(PairingConfirm) << u"before its turn"_s;
    QTest::newRow("third step second") << start + request(PairingConfirm) << u"before its turn"_s;
    QTest::newRow("no public key, no check value")
        << start + request(PairingKeyExchange) + request(PairingConfirm) << u"result code 02"_s;
}

void TestRegisterEvents::hostilePeersAreRefused()
{
    QFETCH(const QByteArray, bytes);
    QFETCH(const QString, reason);
    TestSupport::checkRefused(bytes, reason);
}

void TestRegisterEvents::ipv6TargetsWork()
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHostIPv6))
        QSKIP("THIS MACHINE HAS NO IPv6 LOOPBACK: IPv6 TARGETS ARE NOT TESTED");
    QProcess process;
    process.start(SimulatedRegister::program(),
                  {u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"[::1]:%1"_s.arg(server.serverPort())});
    QVERIFY(server.waitForNewConnection(30'000));
    process.write("quit\n");
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 0);
    QVERIFY(process.readLine().startsWith("ready UB1234567890 [::1]:"));
}

void TestRegisterEvents::targetsAreToldAsTheyWereTyped()
{
    QProcess process;
    process.start(SimulatedRegister::program(),
                  {u"--serial"_s, u"UB1234567890"_s, u"--connect"_s, u"[fe80::1%1]:4100"_s});
    QVERIFY(process.waitForReadyRead());
    QCOMPARE(process.readLine(), "ready UB1234567890 [fe80::1%1]:4100 none\n");
    process.write("quit\n");
    QVERIFY(process.waitForFinished());
}

QTEST_GUILESS_MAIN(TestRegisterEvents)
#include "tst_register_events.moc"
