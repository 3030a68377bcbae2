// SPDX-License-Identifier: Apache-2.0

#include "tests/support/simulated_register.h"
#include "tests/support/simulated_relay.h"
#include "tests/support/velnoctl_client.h"

#include <QJsonArray>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>

#include <csignal>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** velnoctl fault: speaks to the real simulators, and to what is none. */
class TestVelnoctlFault : public QObject
{
    Q_OBJECT

private slots:
    void theRegisterIsTold_data();
    void theRegisterIsTold();
    void theRelayIsTold();
    void oneOfSeveralIsNamed();
    void whatIsWrongIsRefused_data();
    void whatIsWrongIsRefused();
    void withoutASimulatorItEndsWith69();
    void whatIsNoSimulatorIsToldSo_data();
    void whatIsNoSimulatorIsToldSo();
    void aMuteOneIsGivenUp();
    void ctrlCEndsIt();
};

namespace {

QString placeOf(const ChildProgram &program)
{
    return program.events().first().value(u"control"_s).toString();
}

QStringList at(const QString &place, const QStringList &words)
{
    return QStringList{u"--control"_s, place} + words;
}

} // namespace

void TestVelnoctlFault::theRegisterIsTold_data()
{
    QTest::addColumn<QString>("where");
    QTest::newRow("at a port") << u"0"_s;
    QTest::newRow("at a Unix socket") << u"FOLDER/control"_s;
}

void TestVelnoctlFault::theRegisterIsTold()
{
    QFETCH(QString, where);
    const QTemporaryDir folder;
    SimulatedRegister reg(freePort(), {u"--control"_s, where.replace(u"FOLDER"_s, folder.path())});
    Client client(at(placeOf(reg), {u"fault"_s, u"refuse=z"_s, u"fault"_s, u"none"_s}));
    QCOMPARE(client.exitCode(), 0);
    QCOMPARE(client.out, "refuse=z is on\nall faults are off\n");
    QCOMPARE(reg.waitFor(u"fault"_s).value(u"active"_s), QJsonArray{u"refuse=z"_s});
    QCOMPARE(reg.waitFor(u"fault"_s).value(u"active"_s), QJsonArray());
    Client json(at(placeOf(reg), {u"--json"_s, u"fault"_s, u"delay=5"_s}));
    QCOMPARE(json.exitCode(), 0);
    QCOMPARE(object(json.out).value(u"fault"_s), u"delay=5"_s);
}

void TestVelnoctlFault::theRelayIsTold()
{
    SimulatedRelay relay({u"--control"_s, u"0"_s});
    Client client(at(placeOf(relay), {u"fault"_s, u"no-echo"_s}));
    QCOMPARE(client.exitCode(), 0);
    QVERIFY(!relay.waitFor(u"fault"_s).isEmpty());
}

void TestVelnoctlFault::oneOfSeveralIsNamed()
{
    SimulatedRegister reg(freePort(), {u"--control"_s, u"0"_s});
    Client its(at(placeOf(reg), {u"--serial"_s, u"UB1234567890"_s, u"fault"_s, u"refuse=z"_s}));
    QCOMPARE(its.exitCode(), 0);
    Client others(at(placeOf(reg), {u"--serial"_s, u"UB1234567891"_s, u"fault"_s, u"refuse=z"_s}));
    QCOMPARE(others.exitCode(), 64);
}

void TestVelnoctlFault::whatIsWrongIsRefused_data()
{
    QTest::addColumn<QString>("place"); // empty: the register's
    QTest::addColumn<QStringList>("words");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("an unknown fault")
        << QString() << QStringList{u"fault"_s, u"nonsense"_s}
        << QByteArray("fault: \"nonsense\" is no fault; accepted are wrong-authority");
    QTest::newRow("a value that is not accepted")
        << QString() << QStringList{u"fault"_s, u"delay=0"_s} << QByteArray("MS: 1 to 600000");
    QTest::newRow("two words") << QString() << QStringList{u"fault"_s, u"none\nquit"_s}
                               << QByteArray("accepted is NAME, NAME=VALUE or none");
    QTest::newRow("no fault") << QString() << QStringList{u"fault"_s} << QByteArray("FAULT is missing");
    QTest::newRow("no place") << u"x"_s << QStringList{u"fault"_s, u"none"_s}
                              << QByteArray("--control \"x\": accepted is a port of 127.0.0.1");
}

void TestVelnoctlFault::whatIsWrongIsRefused()
{
    QFETCH(const QString, place);
    QFETCH(const QStringList, words);
    QFETCH(const QByteArray, message);
    SimulatedRegister reg(freePort(), {u"--control"_s, u"0"_s});
    Client client(at(place.isEmpty() ? placeOf(reg) : place, words));
    QCOMPARE(client.exitCode(), 64);
    QCOMPARE(client.out, QByteArray());
    QVERIFY2(client.err.contains(message), client.err.constData());
    reg.say("quit");
    QCOMPARE(reg.waitForExit(), 0);
    for (const QJsonObject &event : reg.events())
        QVERIFY(event.value(u"event"_s) != u"fault"_s);
}

void TestVelnoctlFault::withoutASimulatorItEndsWith69()
{
    const QString place = u"127.0.0.1:%1"_s.arg(freePort());
    Client client(at(place, {u"--json"_s, u"fault"_s, u"none"_s}));
    QCOMPARE(client.exitCode(), 69);
    QCOMPARE(client.err, "velnoctl: fault: the simulator at " + place.toUtf8() +
                             " was not reached: Connection refused\n");
    const QJsonObject told = object(client.out);
    QCOMPARE(told.value(u"code"_s), 69);
    QCOMPARE(told.value(u"result"_s), u"no-simulator"_s);

    Client unnamed({u"version"_s, u"fault"_s, u"none"_s});
    QCOMPARE(unnamed.exitCode(), 64);
    QCOMPARE(unnamed.out, QByteArray()); // nothing in front of it was done
    QVERIFY2(unnamed.err.contains("--control is missing"), unnamed.err.constData());
}

void TestVelnoctlFault::whatIsNoSimulatorIsToldSo_data()
{
    QTest::addColumn<QByteArray>("says");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("something else") << QByteArray("220 mail\n") << QByteArray("is no simulator");
    QTest::newRow("without an end") << QByteArray(200'000, 'x') << QByteArray("is no simulator");
    QTest::newRow("nothing") << QByteArray() << QByteArray("closed without an answer");
}

void TestVelnoctlFault::whatIsNoSimulatorIsToldSo()
{
    QFETCH(const QByteArray, says);
    QFETCH(const QByteArray, message);
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    Client client(at(QString::number(server.serverPort()), {u"fault"_s, u"none"_s}));
    QVERIFY(server.waitForNewConnection(longestWait));
    QTcpSocket *const socket = server.nextPendingConnection();
    QVERIFY(socket->waitForReadyRead(longestWait));
    QCOMPARE(socket->readAll(), "fault none\n");
    socket->write(says);
    socket->disconnectFromHost();
    if (socket->state() != QAbstractSocket::UnconnectedState)
        socket->waitForDisconnected(longestWait);
    QCOMPARE(client.exitCode(), 69);
    QVERIFY2(client.err.contains(message), client.err.constData());
}

void TestVelnoctlFault::aMuteOneIsGivenUp()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    Client client(at(QString::number(server.serverPort()), {u"--timeout"_s, u"50"_s, u"fault"_s, u"none"_s}));
    QCOMPARE(client.exitCode(), 69);
    QVERIFY2(client.err.contains("no answer came in time"), client.err.constData());
}

void TestVelnoctlFault::ctrlCEndsIt()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    Client client(at(QString::number(server.serverPort()), {u"fault"_s, u"none"_s}));
    QVERIFY(server.waitForNewConnection(longestWait));
    QVERIFY(server.nextPendingConnection()->waitForReadyRead(longestWait));
    client.raise(SIGINT);
    QCOMPARE(client.exitCode(), 130);
    QVERIFY2(client.err.contains("fault: interrupted while the simulator had not answered"),
             client.err.constData());
}

QTEST_GUILESS_MAIN(TestVelnoctlFault)
#include "tst_velnoctl_fault.moc"
