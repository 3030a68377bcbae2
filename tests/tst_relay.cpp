// SPDX-License-Identifier: Apache-2.0

#include "simulator/relay/register_book.h"
#include "simulator/relay/relay_faults.h"
#include "tests/support/program_run.h"
#include "tests/support/relay_line.h"
#include "tests/support/simulated_relay.h"

#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <csignal>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** velno-relay as a program: its options, events, faults, standard input, and how it stops. */
class TestRelay : public QObject
{
    Q_OBJECT

private slots:
    void bookKnowsWhoIsExpected();
    void bookIsBounded();
    void helpAndManualListTheSameFaults();
    void helpAndVersionSayThatItTrustsNobody();
    void wrongUsageIsRefused_data();
    void wrongUsageIsRefused();
    void takenPortIsReported_data();
    void takenPortIsReported();
    void foreignAddressIsReported();
    void eventsAreWordsWithoutJson();
    void itListensOnIpv6();
    void faultsReachTheApplication_data();
    void faultsReachTheApplication();
    void droppedWhenJoined();
    void droppedAfterSoManyBytes();
    void faultsChangeWhileItRuns();
    void standardInputRefusesNonsense_data();
    void standardInputRefusesNonsense();
    void itStopsWhateverItIsDoing_data();
    void itStopsWhateverItIsDoing();
};

namespace {

Outcome run(const QStringList &arguments)
{
    return outcomeOf(SimulatedRelay::program(), arguments);
}

QStringList freePorts()
{
    return {u"--app-ports"_s, u"0,0"_s, u"--register-port"_s, u"0"_s};
}

} // namespace

void TestRelay::bookKnowsWhoIsExpected()
{
    qint64 now = 0;
    Simulator::RegisterBook book(10, [&now] { return now; });
    QVERIFY(!book.isExpected(serial));
    QCOMPARE(book.wait(serial, 1), 0U);
    now += 2 * book.memory;
    QVERIFY(book.isExpected(serial)); // it waits
    QCOMPARE(book.waiting(serial), 1U);
    book.join(serial);
    QCOMPARE(book.waiting(serial), 0U);
    now += 2 * book.memory;
    QVERIFY(book.isExpected(serial)); // it is joined
    book.part(serial);
    now += book.memory;
    QVERIFY(book.isExpected(serial));
    now += 1;
    QVERIFY(!book.isExpected(serial));
    book.wait(serial, 2);
    QCOMPARE(book.wait(serial, 3), 2U);
    book.leave(serial);
    QCOMPARE(book.waiting(serial), 0U);
    now += book.memory;
    QVERIFY(book.isExpected(serial));
    now += 1;
    QVERIFY(!book.isExpected(serial));
    QVERIFY(!book.isExpected("UB0000000001"));
}

void TestRelay::bookIsBounded()
{
    qint64 now = 0;
    Simulator::RegisterBook book(2, [&now] { return now; });
    book.wait("first", 1);
    book.wait("second", 2);
    book.leave("second");
    QVERIFY(book.hasRoom("second"));
    QVERIFY(!book.hasRoom("third"));
    now += book.memory + 1;
    QVERIFY(book.hasRoom("third"));
    book.wait("third", 3);
    QVERIFY(book.hasRoom("first"));
    QVERIFY(!book.hasRoom("second"));
}

void TestRelay::helpAndVersionSayThatItTrustsNobody()
{
    const Outcome version = run({u"--version"_s});
    QCOMPARE(version.exitCode, 0);
    QCOMPARE(version.output, "velno-relay " VELNO_VERSION "\n"
                             "Trust anchors: none; it passes on what others say and believes nobody.\n"_ba);
    const Outcome help = run({u"--help"_s});
    QVERIFY2(help.output.contains("\nTrust anchors: none;"), help.output);
}

void TestRelay::helpAndManualListTheSameFaults()
{
    const Outcome help = run({u"--help"_s});
    QCOMPARE(help.exitCode, 0);
    const QString listed =
        faultsInManual(QFINDTESTDATA("../docs/relay.md"), u"^\\| `([^`]+)` \\| ([^|]+) \\|"_s);
    QCOMPARE(listed, Simulator::faultHelp(Simulator::relayFaultTable()));
    QVERIFY2(help.output.contains(listed.toUtf8()), help.output);
    QVERIFY(help.output.endsWith("velno-relay --listen 127.0.0.1 --json\n"));
}

void TestRelay::wrongUsageIsRefused_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("message");
    const auto row = [](const char *name, const QStringList &arguments, const QByteArray &message) {
        QTest::newRow(name) << arguments << message;
    };
    const QByteArray two = "two ports of 0 to 65535";
    row("a name to listen on", {u"--listen"_s, u"till"_s}, "an address of this computer");
    row("nothing to listen on", {u"--listen"_s, QString()}, "an address of this computer");
    row("one port", {u"--app-ports"_s, u"50900"_s}, two);
    row("three ports", {u"--app-ports"_s, u"1,2,3"_s}, two);
    row("port 65536", {u"--app-ports"_s, u"50900,65536"_s}, two);
    row("a sign", {u"--app-ports"_s, u"+1,2"_s}, two);
    row("a space", {u"--app-ports"_s, u"1, 2"_s}, two);
    row("an empty port", {u"--app-ports"_s, u"1,"_s}, two);
    row("register port of letters", {u"--register-port"_s, u"abc"_s}, "a port of 0 to 65535");
    row("register port too large", {u"--register-port"_s, u"65536"_s}, "a port of 0 to 65535");
    row("the same port twice", {u"--app-ports"_s, u"50900,50900"_s}, "three different ports");
    row("the registers' port too", {u"--register-port"_s, u"50902"_s}, "three different ports");
    row("unknown fault", {u"--fault"_s, u"garbage"_s}, "accepted are no-echo, wrong-echo");
    row("bad value", {u"--fault"_s, u"drop-after=0"_s}, "accepted is BYTES: 1 to 100000000");
    row("value too many", {u"--fault"_s, u"drop=1"_s}, "drop takes no value");
    row("unknown option", {u"--nonsense"_s}, "nonsense");
    row("a word too many", {u"word"_s}, "\"word\" is no option");
}

void TestRelay::wrongUsageIsRefused()
{
    QFETCH(const QStringList, arguments);
    QFETCH(const QByteArray, message);
    checkWrongUsage(SimulatedRelay::program(), arguments, message);
}

void TestRelay::takenPortIsReported_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<QString>("value");
    QTest::newRow("application 999999") << u"--app-ports"_s << u"%1,0"_s;
    QTest::newRow("other applications") << u"--app-ports"_s << u"0,%1"_s;
    QTest::newRow("registers") << u"--register-port"_s << u"%1"_s;
}

void TestRelay::takenPortIsReported()
{
    QFETCH(const QString, option);
    QFETCH(const QString, value);
    QTcpServer holder;
    QVERIFY(holder.listen(QHostAddress::LocalHost));
    const Outcome refused = run(freePorts() + QStringList{option, value.arg(holder.serverPort())});
    QCOMPARE(refused.exitCode, 69);
    QCOMPARE(refused.output, QByteArray());
    const QByteArray place = "cannot listen on 127.0.0.1:" + QByteArray::number(holder.serverPort());
    QVERIFY2(refused.errors.contains(place), refused.errors);
    QVERIFY2(refused.errors.contains("in use"), refused.errors);
}

void TestRelay::foreignAddressIsReported()
{
    const Outcome refused = run({u"--listen"_s, u"fe80::1%1"_s});
    QCOMPARE(refused.exitCode, 69);
    QVERIFY2(refused.errors.contains("cannot listen on [fe80::1%1]:50900: "), refused.errors);
}

void TestRelay::eventsAreWordsWithoutJson()
{
    QProcess process;
    process.start(SimulatedRelay::program(), freePorts() + QStringList{u"--fault"_s, u"short-echo"_s});
    QVERIFY(process.waitForReadyRead());
    static const QRegularExpression ready(
        u"^ready 127.0.0.1:\\d+ 127.0.0.1:\\d+ 127.0.0.1:\\d+ short-echo\n$"_s);
    const QString first = QString::fromUtf8(process.readLine());
    QVERIFY2(ready.match(first).hasMatch(), qPrintable(first));
    process.write("fault drop-after=7\nquit\n");
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.readAllStandardOutput(), "fault short-echo drop-after=7\nstopped\n");
    QCOMPARE(process.exitCode(), 0);
}

void TestRelay::itListensOnIpv6()
{
    QTcpServer probe;
    if (!probe.listen(QHostAddress::LocalHostIPv6))
        QSKIP("THIS MACHINE HAS NO IPv6 LOOPBACK: LISTENING ON IPv6 IS NOT TESTED");
    SimulatedRelay relay({u"--listen"_s, u"::1"_s});
    QVERIFY(text(relay.events().value(0), u"registers"_s).startsWith(u"[::1]:"));
    QTcpSocket socket;
    socket.connectToHost(QHostAddress::LocalHostIPv6, relay.registerPort());
    QVERIFY(socket.waitForConnected(longestWait));
    socket.write(serial);
    socket.flush();
    QCOMPARE(text(relay.waitFor(u"waiting"_s), u"serial"_s), QLatin1StringView(serial));
}

void TestRelay::faultsReachTheApplication_data()
{
    QTest::addColumn<QString>("fault");
    QTest::addColumn<QByteArray>("echo");
    QTest::newRow("no-echo") << u"no-echo"_s << QByteArray();
    QTest::newRow("wrong-echo") << u"wrong-echo"_s << QByteArray("UB1234567891");
    QTest::newRow("short-echo") << u"short-echo"_s << QByteArray("UB123456789");
}

void TestRelay::faultsReachTheApplication()
{
    QFETCH(const QString, fault);
    QFETCH(const QByteArray, echo);
    SimulatedRelay relay({u"--fault"_s, fault});
    Line cashRegister(relay.registerPort(), serial);
    QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    Line application(relay.applicationPort(), serial);
    QCOMPARE(text(relay.waitFor(u"misled"_s), u"echo"_s), QString::fromLatin1(echo));
    QCOMPARE(application.read(echo.size()), echo);
    QVERIFY(relay.setFault(u"none"_s));

    // Nothing more comes, and the register waits still.
    Line second(relay.applicationPort(), serial + QByteArray("x"));
    QCOMPARE(second.read(12), serial);
    QCOMPARE(cashRegister.read(1), "x");
    QCOMPARE(application.socket.state(), QAbstractSocket::ConnectedState);
    QVERIFY(!application.socket.waitForReadyRead(0));
    QCOMPARE(application.socket.bytesAvailable(), 0);
}

void TestRelay::droppedWhenJoined()
{
    SimulatedRelay relay({u"--fault"_s, u"drop"_s});
    Line cashRegister(relay.registerPort(), serial);
    QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    Line application(relay.applicationPort(), serial);
    QCOMPARE(application.readToEnd(), serial);
    QCOMPARE(cashRegister.readToEnd(), QByteArray());
    QCOMPARE(text(relay.waitFor(u"ended"_s), u"reason"_s), u"cut by a fault"_s);
}

void TestRelay::droppedAfterSoManyBytes()
{
    SimulatedRelay relay({u"--fault"_s, u"drop-after=10"_s});
    Joined pair(relay);
    pair.application->send("123456");
    QCOMPARE(pair.cashRegister.read(6), "123456");
    pair.cashRegister.send("abcdefgh");
    QCOMPARE(pair.application->readToEnd(), "abcd");
    QCOMPARE(pair.cashRegister.readToEnd(), QByteArray());
    QCOMPARE(text(relay.waitFor(u"ended"_s), u"reason"_s), u"cut by a fault"_s);
}

void TestRelay::faultsChangeWhileItRuns()
{
    SimulatedRelay relay({u"--fault"_s, u"drop"_s});
    QCOMPARE(relay.events().value(0).value(u"faults"_s).toVariant().toStringList(), QStringList{u"drop"_s});
    QVERIFY(relay.setFault(u"none"_s));
    Joined pair(relay);
    QVERIFY(relay.setFault(u"drop"_s)); // for those who are joined from now on
    pair.application->send("x");
    QCOMPARE(pair.cashRegister.read(1), "x");
    Line cashRegister(relay.registerPort(), "UB0000000001");
    QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    Line application(relay.applicationPort(), "UB0000000001");
    QCOMPARE(application.readToEnd(), "UB0000000001");
}

void TestRelay::standardInputRefusesNonsense_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown fault") << QByteArray("fault mute=1") << u"accepted are no-echo, "_s;
    QTest::newRow("bad value") << QByteArray("fault drop-after=x") << u"BYTES: 1 to 100000000"_s;
    QTest::newRow("unknown command") << QByteArray("nonsense") << u"accepted are fault NAME"_s;
    QTest::newRow("no UTF-8") << QByteArray("\xFF\xFE\x01") << u"accepted are fault NAME"_s;
}

void TestRelay::standardInputRefusesNonsense()
{
    QFETCH(const QByteArray, line);
    QFETCH(const QString, message);
    SimulatedRelay relay;
    relay.say(line);
    const QString answer = text(relay.waitFor(u"error"_s), u"message"_s);
    QVERIFY2(answer.contains(message), qPrintable(answer));
    QVERIFY(Joined(relay).echoed);
}

void TestRelay::itStopsWhateverItIsDoing_data()
{
    QTest::addColumn<QString>("doing");
    QTest::addColumn<int>("signal");
    for (const auto &[how, signal] :
         {std::pair("quit", 0), std::pair("SIGTERM", SIGTERM), std::pair("SIGINT", SIGINT)}) {
        for (const char *const doing : {"nothing", "naming", "waiting", "expecting", "joined"})
            QTest::addRow("%s, %s", doing, how) << QString::fromLatin1(doing) << signal;
    }
}

void TestRelay::itStopsWhateverItIsDoing()
{
    QFETCH(const QString, doing);
    QFETCH(const int, signal);
    SimulatedRelay relay;
    std::vector<std::unique_ptr<Line>> lines;
    const auto connectTo = [&lines](quint16 port, const QByteArray &bytes) {
        lines.push_back(std::make_unique<Line>(port, bytes));
    };
    if (doing == u"naming")
        connectTo(relay.applicationPort(), "UB");
    if (doing == u"waiting" || doing == u"joined" || doing == u"expecting") {
        connectTo(relay.registerPort(), serial);
        QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    }
    if (doing == u"joined" || doing == u"expecting") {
        connectTo(relay.applicationPort(), serial);
        QCOMPARE(lines.back()->read(12), serial);
    }
    if (doing == u"expecting") {
        connectTo(relay.applicationPort(), serial);
        QVERIFY(!relay.waitFor(u"expecting"_s).isEmpty());
    }
    signal == 0 ? relay.say("quit") : relay.raise(signal);
    QCOMPARE(relay.waitForExit(), 0);
    QCOMPARE(text(relay.events().last(), u"event"_s), u"stopped"_s);
    for (const auto &line : lines)
        QCOMPARE(line->readToEnd(), QByteArray());
}

QTEST_GUILESS_MAIN(TestRelay)
#include "tst_relay.moc"
