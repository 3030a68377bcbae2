#include "simulator/relay/relay_faults.h"
#include "simulator/relay/register_book.h"
#include "tests/support/simulated_relay.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <csignal>
#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

/** velno-relay as a program: whom it joins, what it carries, its faults, options, events and hostile peers.
 */
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
    void applicationAndRegisterAreJoined_data();
    void applicationAndRegisterAreJoined();
    void nothingAroundTheNamesIsLost_data();
    void nothingAroundTheNamesIsLost();
    void muchTravelsBothWaysUnchanged();
    void closingFollowsTheLastByte_data();
    void closingFollowsTheLastByte();
    void oneWayMayEndBeforeTheOther();
    void brokenConnectionEndsThePair_data();
    void brokenConnectionEndsThePair();
    void unknownRegisterIsRefusedAtOnce_data();
    void unknownRegisterIsRefusedAtOnce();
    void applicationIsKeptForTheRegistersReturn_data();
    void applicationIsKeptForTheRegistersReturn();
    void applicationIsNotKeptForLong();
    void applicationsAreServedInTheirOrder();
    void newestRegisterWins();
    void faultsReachTheApplication_data();
    void faultsReachTheApplication();
    void droppedWhenJoined();
    void droppedAfterSoManyBytes();
    void faultsChangeWhileItRuns();
    void standardInputRefusesNonsense_data();
    void standardInputRefusesNonsense();
    void unfinishedNamesAreRefused_data();
    void unfinishedNamesAreRefused();
    void silentPeersAreRefused();
    void anyBytesMayBeAName();
    void slowSideHoldsTheOtherBack();
    void manyPairsAtOnce();
    void connectionsAreBounded();
    void itStopsWhateverItIsDoing_data();
    void itStopsWhateverItIsDoing();
};

namespace {

constexpr char serial[] = "UB1234567890";
constexpr int longestWait = 30'000; // ms

/** One end of a connection to the relay. */
class Line
{
public:
    explicit Line(quint16 port, const QByteArray &firstBytes = {})
    {
        socket.connectToHost(QHostAddress::LocalHost, port);
        if (!socket.waitForConnected(longestWait))
            qFatal("relay port %d: %s", port, qPrintable(socket.errorString()));
        send(firstBytes);
    }
    void send(const QByteArray &bytes)
    {
        socket.write(bytes);
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(longestWait)) {
        }
    }
    /** What has come by the time that so many bytes are there, or none will. */
    QByteArray read(qsizetype count)
    {
        while (socket.bytesAvailable() < count && socket.waitForReadyRead(longestWait)) {
        }
        return socket.read(count);
    }
    /** Everything until the relay closes; "never closed" when it does not. */
    QByteArray readToEnd()
    {
        while (socket.waitForReadyRead(longestWait)) {
        }
        return socket.state() == QAbstractSocket::UnconnectedState ? socket.readAll() : "never closed";
    }
    void endWriting() const { ::shutdown(int(socket.socketDescriptor()), SHUT_WR); }
    void close() { socket.close(); }
    /** Without a word to the other side but that it is over. */
    void reset()
    {
        const linger now{1, 0};
        ::setsockopt(int(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
        socket.close();
    }

    QTcpSocket socket;
};

/** A register and an application that the relay has joined. */
struct Joined
{
    explicit Joined(SimulatedRelay &relay, const QByteArray &name = serial)
        : cashRegister(relay.registerPort(), name)
    {
        relay.waitFor(u"waiting"_s);
        application = std::make_unique<Line>(relay.applicationPort(), name);
        echoed = application->read(name.size()) == name;
        relay.waitFor(u"joined"_s);
    }

    Line cashRegister;
    std::unique_ptr<Line> application;
    bool echoed = false;
};

struct Run
{
    int code = -1;
    QByteArray output;
    QByteArray errors;
};

Run run(const QStringList &arguments)
{
    QProcess process;
    process.start(SimulatedRelay::program(), arguments);
    if (!process.waitForFinished() || process.exitStatus() != QProcess::NormalExit)
        return {};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

QStringList freePorts()
{
    return {u"--app-ports"_s, u"0,0"_s, u"--register-port"_s, u"0"_s};
}

/** Bytes among which none stands where another could. */
QByteArray pattern(qsizetype size, char seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    quint32 state = uchar(seed);
    for (char &byte : bytes) {
        state = state * 1664525U + 1013904223U;
        byte = char(state >> 24);
    }
    return bytes;
}

QString text(const QJsonObject &event, const QString &field)
{
    return event.value(field).toString();
}

/** Resident memory of the process, in bytes. */
qint64 residentMemory(qint64 process)
{
    QFile file(u"/proc/%1/statm"_s.arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
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
    const Run version = run({u"--version"_s});
    QCOMPARE(version.code, 0);
    QCOMPARE(version.output, "velno-relay " VELNO_VERSION "\n"
                             "Trust anchors: none; it passes on what others say and believes nobody.\n"_ba);
    const Run help = run({u"--help"_s});
    QVERIFY2(help.output.contains("\nTrust anchors: none;"), help.output);
}

void TestRelay::helpAndManualListTheSameFaults()
{
    const Run help = run({u"--help"_s});
    QCOMPARE(help.code, 0);
    QFile manual(QFINDTESTDATA("../docs/relay.md"));
    QVERIFY(manual.open(QIODevice::ReadOnly));
    static const QRegularExpression line(u"^\\| `([^`]+)` \\| ([^|]+) \\|"_s,
                                         QRegularExpression::MultilineOption);
    QString listed;
    auto match = line.globalMatch(QString::fromUtf8(manual.readAll()).section(u"## Faults"_s, 1));
    while (match.hasNext()) {
        const auto row = match.next();
        listed += u"  "_s + row.captured(1).leftJustified(24) + row.captured(2) + u'\n';
    }
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
    const Run refused = run(arguments);
    QCOMPARE(refused.code, 64);
    QVERIFY2(refused.errors.contains(message), refused.errors);
    QCOMPARE(refused.output, QByteArray());
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
    const Run refused = run(freePorts() + QStringList{option, value.arg(holder.serverPort())});
    QCOMPARE(refused.code, 69);
    QCOMPARE(refused.output, QByteArray());
    const QByteArray place = "cannot listen on 127.0.0.1:" + QByteArray::number(holder.serverPort());
    QVERIFY2(refused.errors.contains(place), refused.errors);
    QVERIFY2(refused.errors.contains("in use"), refused.errors);
}

void TestRelay::foreignAddressIsReported()
{
    const Run refused = run({u"--listen"_s, u"fe80::1%1"_s});
    QCOMPARE(refused.code, 69);
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

void TestRelay::applicationAndRegisterAreJoined_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("application 999999") << 0;
    QTest::newRow("other applications") << 1;
}

void TestRelay::applicationAndRegisterAreJoined()
{
    QFETCH(const int, which);
    SimulatedRelay relay;
    Line cashRegister(relay.registerPort(), serial);
    QCOMPARE(text(relay.waitFor(u"waiting"_s), u"serial"_s), QLatin1StringView(serial));
    Line application(relay.applicationPort(which), serial);
    QCOMPARE(application.read(12), serial);
    const QJsonObject joined = relay.waitFor(u"joined"_s);
    QCOMPARE(text(joined, u"serial"_s), QLatin1StringView(serial));
    QCOMPARE(joined.value(u"port"_s).toInt(), int(relay.applicationPort(which)));

    application.send("question");
    QCOMPARE(cashRegister.read(8), "question");
    cashRegister.send("answer");
    QCOMPARE(application.read(6), "answer");
    application.close();
    QCOMPARE(cashRegister.readToEnd(), QByteArray());
    cashRegister.close();
    const QJsonObject ended = relay.waitFor(u"ended"_s);
    QCOMPARE(text(ended, u"reason"_s), u"closed by the application"_s);
    QCOMPARE(ended.value(u"to_register"_s).toInt(), 8);
    QCOMPARE(ended.value(u"to_application"_s).toInt(), 6);
}

void TestRelay::nothingAroundTheNamesIsLost_data()
{
    QTest::addColumn<QList<QByteArray>>("fromRegister");
    QTest::addColumn<QList<QByteArray>>("fromApplication");
    const QByteArray name = serial;
    QTest::newRow("in one go") << QList{name + "early"} << QList{name + "later"};
    QTest::newRow("byte by byte") << QList<QByteArray>{"UB12", "3", "4567890", "ea", "rly"}
                                  << QList<QByteArray>{"U", "B1234567", "890l", "ater"};
    QTest::newRow("cut behind the name")
        << QList<QByteArray>{name, "early"} << QList<QByteArray>{name, "later"};
}

void TestRelay::nothingAroundTheNamesIsLost()
{
    QFETCH(const QList<QByteArray>, fromRegister);
    QFETCH(const QList<QByteArray>, fromApplication);
    SimulatedRelay relay;
    Line cashRegister(relay.registerPort());
    for (const QByteArray &bytes : fromRegister)
        cashRegister.send(bytes);
    QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    Line application(relay.applicationPort());
    for (const QByteArray &bytes : fromApplication)
        application.send(bytes);
    QCOMPARE(application.read(17), serial + QByteArray("early"));
    QCOMPARE(cashRegister.read(5), "later");
}

void TestRelay::muchTravelsBothWaysUnchanged()
{
    SimulatedRelay relay;
    Joined pair(relay);
    const QByteArray question = pattern(5'000'001, 'q');
    const QByteArray answer = pattern(3'000'017, 'a');
    QTcpSocket &application = pair.application->socket;
    QTcpSocket &cashRegister = pair.cashRegister.socket;
    application.write(question);
    cashRegister.write(answer);
    QTRY_COMPARE_WITH_TIMEOUT(cashRegister.bytesAvailable(), question.size(), longestWait);
    QTRY_COMPARE_WITH_TIMEOUT(application.bytesAvailable(), answer.size(), longestWait);
    QVERIFY(cashRegister.readAll() == question);
    QVERIFY(application.readAll() == answer);
}

void TestRelay::closingFollowsTheLastByte_data()
{
    QTest::addColumn<bool>("byApplication");
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 2'000'000}) {
        QTest::addRow("application, %d bytes", size) << true << size;
        QTest::addRow("register, %d bytes", size) << false << size;
    }
}

void TestRelay::closingFollowsTheLastByte()
{
    QFETCH(const bool, byApplication);
    QFETCH(const int, size);
    SimulatedRelay relay;
    Joined pair(relay);
    Line &closing = byApplication ? *pair.application : pair.cashRegister;
    Line &other = byApplication ? pair.cashRegister : *pair.application;
    const QByteArray last = pattern(size, 'l');
    closing.socket.write(last);
    closing.socket.disconnectFromHost(); // once everything is written
    QTRY_COMPARE_WITH_TIMEOUT(other.socket.state(), QAbstractSocket::UnconnectedState, longestWait);
    QVERIFY(other.socket.readAll() == last);
    const QJsonObject ended = relay.waitFor(u"ended"_s);
    QCOMPARE(text(ended, u"reason"_s),
             byApplication ? u"closed by the application"_s : u"closed by the register"_s);
    QCOMPARE(ended.value(byApplication ? u"to_register"_s : u"to_application"_s).toInt(), size);
}

void TestRelay::oneWayMayEndBeforeTheOther()
{
    SimulatedRelay relay;
    Joined pair(relay);
    pair.application->send("all that I ask");
    pair.application->endWriting();
    // Read as a plain socket: QTcpSocket would close itself when the other side ends its way.
    const int descriptor = int(pair.cashRegister.socket.socketDescriptor());
    char bytes[64];
    QByteArray heard;
    pollfd readable{descriptor, POLLIN, 0};
    for (ssize_t count = 1; count > 0;) {
        QCOMPARE(::poll(&readable, 1, longestWait), 1);
        count = ::recv(descriptor, bytes, sizeof bytes, 0);
        QVERIFY(count >= 0);
        heard.append(bytes, count);
    }
    QCOMPARE(heard, "all that I ask");
    QCOMPARE(::send(descriptor, "all that I say", 14, 0), 14);
    pair.cashRegister.endWriting();
    QCOMPARE(pair.application->readToEnd(), "all that I say");
    QCOMPARE(text(relay.waitFor(u"ended"_s), u"reason"_s), u"closed by the application"_s);
}

void TestRelay::brokenConnectionEndsThePair_data()
{
    QTest::addColumn<bool>("ofApplication");
    QTest::newRow("the application's") << true;
    QTest::newRow("the register's") << false;
}

void TestRelay::brokenConnectionEndsThePair()
{
    QFETCH(const bool, ofApplication);
    SimulatedRelay relay;
    Joined pair(relay);
    (ofApplication ? *pair.application : pair.cashRegister).reset();
    QCOMPARE((ofApplication ? pair.cashRegister : *pair.application).readToEnd(), QByteArray());
    (ofApplication ? pair.cashRegister : *pair.application).close();
    QVERIFY(!relay.waitFor(u"ended"_s).isEmpty());
    Joined again(relay);
    QVERIFY(again.echoed);
}

void TestRelay::unknownRegisterIsRefusedAtOnce_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("never seen") << QByteArray("UB0000000001");
    QTest::newRow("lower case") << QByteArray("ub1234567890");
    QTest::newRow("zeros") << QByteArray(12, '\0');
}

void TestRelay::unknownRegisterIsRefusedAtOnce()
{
    QFETCH(const QByteArray, name);
    SimulatedRelay relay;
    Line cashRegister(relay.registerPort(), serial);
    QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    Line application(relay.applicationPort(), name);
    QCOMPARE(application.readToEnd(), QByteArray());
    QCOMPARE(text(relay.waitFor(u"unknown"_s), u"reason"_s), u"no such register"_s);
    for (const QJsonObject &event : relay.events())
        QVERIFY(text(event, u"event"_s) != u"expecting");
    Line known(relay.applicationPort(), serial);
    QCOMPARE(known.read(12), serial);
}

void TestRelay::applicationIsKeptForTheRegistersReturn_data()
{
    QTest::addColumn<QString>("before");
    QTest::newRow("it was joined") << u"joined"_s;
    QTest::newRow("it had waited") << u"waited"_s;
    QTest::newRow("it is joined still") << u"busy"_s;
}

void TestRelay::applicationIsKeptForTheRegistersReturn()
{
    QFETCH(const QString, before);
    SimulatedRelay relay;
    std::unique_ptr<Joined> earlier;
    std::unique_ptr<Line> left;
    if (before == u"waited") {
        left = std::make_unique<Line>(relay.registerPort(), serial);
        QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
        left->close();
        QVERIFY(!relay.waitFor(u"left"_s).isEmpty());
    } else {
        earlier = std::make_unique<Joined>(relay);
    }
    if (before == u"joined") {
        earlier->application->close();
        earlier->cashRegister.close();
        QVERIFY(!relay.waitFor(u"ended"_s).isEmpty());
    }
    Line application(relay.applicationPort(), serial + QByteArray("waits"));
    QCOMPARE(text(relay.waitFor(u"expecting"_s), u"serial"_s), QLatin1StringView(serial));
    Line cashRegister(relay.registerPort(), serial);
    QCOMPARE(application.read(12), serial);
    QCOMPARE(cashRegister.read(5), "waits");
}

void TestRelay::applicationIsNotKeptForLong()
{
    SimulatedRelay relay;
    Line(relay.registerPort(), serial).close();
    QVERIFY(!relay.waitFor(u"left"_s).isEmpty());
    Line application(relay.applicationPort(), serial);
    QCOMPARE(application.readToEnd(), QByteArray());
    QCOMPARE(text(relay.waitFor(u"unknown"_s), u"reason"_s), u"the register did not come back"_s);
    Line cashRegister(relay.registerPort(), serial); // joined to nobody who has gone
    QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    Line second(relay.applicationPort(), serial);
    QCOMPARE(second.read(12), serial);
}

void TestRelay::applicationsAreServedInTheirOrder()
{
    SimulatedRelay relay;
    Joined busy(relay);
    Line first(relay.applicationPort(), serial + QByteArray("1"));
    QVERIFY(!relay.waitFor(u"expecting"_s).isEmpty());
    Line second(relay.applicationPort(), serial + QByteArray("2"));
    QVERIFY(!relay.waitFor(u"expecting"_s).isEmpty());
    Line one(relay.registerPort(), serial);
    QCOMPARE(one.read(1), "1");
    Line two(relay.registerPort(), serial);
    QCOMPARE(two.read(1), "2");
}

void TestRelay::newestRegisterWins()
{
    SimulatedRelay relay;
    Line older(relay.registerPort(), serial);
    QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    Line newer(relay.registerPort(), serial);
    QCOMPARE(text(relay.waitFor(u"left"_s), u"reason"_s), u"a newer one has come"_s);
    QCOMPARE(older.readToEnd(), QByteArray());
    Line application(relay.applicationPort(), serial + QByteArray("x"));
    QCOMPARE(application.read(12), serial);
    QCOMPARE(newer.read(1), "x");
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

void TestRelay::unfinishedNamesAreRefused_data()
{
    QTest::addColumn<bool>("application");
    QTest::addColumn<QByteArray>("bytes");
    for (const bool application : {true, false})
        for (const QByteArray &bytes : {QByteArray(), QByteArray("U"), QByteArray("UB123456789")})
            QTest::addRow("%s after %d", application ? "application" : "register", int(bytes.size()))
                << application << bytes;
}

void TestRelay::unfinishedNamesAreRefused()
{
    QFETCH(const bool, application);
    QFETCH(const QByteArray, bytes);
    SimulatedRelay relay;
    const quint16 port = application ? relay.applicationPort() : relay.registerPort();
    Line(port, bytes).close();
    const QJsonObject refused = relay.waitFor(u"refused"_s);
    QCOMPARE(refused.value(u"port"_s).toInt(), int(port));
    QCOMPARE(text(refused, u"reason"_s), u"closed after %1 of the 12 bytes of a name"_s.arg(bytes.size()));
    QVERIFY(Joined(relay).echoed);
}

void TestRelay::silentPeersAreRefused()
{
    SimulatedRelay relay;
    std::vector<std::unique_ptr<Line>> lines;
    for (const quint16 port : {relay.applicationPort(), relay.registerPort()})
        for (const char *const bytes : {"", "U", "UB123456789"})
            lines.push_back(std::make_unique<Line>(port, bytes));
    QStringList reasons;
    for (const auto &line : lines) {
        QCOMPARE(line->readToEnd(), QByteArray());
        reasons << text(relay.waitFor(u"refused"_s), u"reason"_s);
    }
    reasons.sort();
    const QString reason = u"silent after %1 of the 12 bytes of a name"_s;
    const QStringList each{reason.arg(0), reason.arg(1), reason.arg(11)};
    QCOMPARE(reasons, (QStringList{each[0], each[0], each[1], each[1], each[2], each[2]}));
    QVERIFY(Joined(relay).echoed);
}

void TestRelay::anyBytesMayBeAName()
{
    SimulatedRelay relay;
    const QByteArray name("\0\n\x1B[2J\xFF \\\"}{", 12);
    Line cashRegister(relay.registerPort(), name);
    QCOMPARE(text(relay.waitFor(u"waiting"_s), u"serial"_s), uR"(\x00\x0a\x1b[2J\xff\x20\x5c"}{)"_s);
    Line application(relay.applicationPort(), name);
    QCOMPARE(application.read(12), name);
}

// Without a bound the relay would hold what the kernel cannot.
void TestRelay::slowSideHoldsTheOtherBack()
{
    SimulatedRelay relay;
    Joined pair(relay);
    const qint64 before = residentMemory(relay.processId());
    const QByteArray much = pattern(64 * 1024 * 1024, 'm');
    QTcpSocket &application = pair.application->socket;
    QTcpSocket &cashRegister = pair.cashRegister.socket;
    cashRegister.setReadBufferSize(1); // this process does not take the bytes either
    application.write(much);
    while (application.waitForBytesWritten(500)) {
    }
    QVERIFY2(application.bytesToWrite() > 0, "everything went to somebody who does not read");
    const qint64 growth = residentMemory(relay.processId()) - before;
    QVERIFY2(before > 0 && growth < 8 * 1024 * 1024, qPrintable(QString::number(growth)));

    Joined other(relay, "UB0000000001"); // nobody else suffers
    QVERIFY(other.echoed);
    cashRegister.setReadBufferSize(0);
    QTRY_COMPARE_WITH_TIMEOUT(cashRegister.bytesAvailable(), much.size(), longestWait);
    QVERIFY(cashRegister.readAll() == much);
}

void TestRelay::manyPairsAtOnce()
{
    constexpr int count = 300;
    SimulatedRelay relay;
    const auto name = [](int i) { return "UB" + QByteArray::number(i).rightJustified(10, '0'); };
    std::vector<std::unique_ptr<Line>> registers;
    std::vector<std::unique_ptr<Line>> applications;
    for (int i = 0; i < count; ++i)
        registers.push_back(std::make_unique<Line>(relay.registerPort(), name(i)));
    for (int i = 0; i < count; ++i)
        QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    for (int i = count - 1; i >= 0; --i)
        applications.push_back(std::make_unique<Line>(relay.applicationPort(), name(i) + name(i)));
    for (int i = 0; i < count; ++i) {
        QCOMPARE(registers[size_t(i)]->read(12), name(i));
        registers[size_t(i)]->send("answer" + name(i));
    }
    for (int i = 0; i < count; ++i)
        QCOMPARE(applications[size_t(count - 1 - i)]->read(30), name(i) + "answer" + name(i));
    applications.clear();
    for (int i = 0; i < count; ++i)
        QCOMPARE(registers[size_t(i)]->readToEnd(), QByteArray());
    registers.clear();
    for (int i = 0; i < count; ++i)
        QVERIFY(!relay.waitFor(u"ended"_s).isEmpty());
}

void TestRelay::connectionsAreBounded()
{
    // 64 descriptors are the program's own.
    SimulatedRelay relay({}, [] {
        const rlimit few{64 + 3, 64 + 3};
        setrlimit(RLIMIT_NOFILE, &few);
    });
    std::vector<std::unique_ptr<Line>> lines;
    for (int i = 0; i < 3; ++i) {
        lines.push_back(std::make_unique<Line>(relay.registerPort(), "UB000000000" + QByteArray::number(i)));
        QVERIFY(!relay.waitFor(u"waiting"_s).isEmpty());
    }
    Line tooMany(relay.registerPort());
    QCOMPARE(text(relay.waitFor(u"refused"_s), u"reason"_s), u"too many connections"_s);
    QCOMPARE(tooMany.readToEnd(), QByteArray());
    lines.pop_back();
    QVERIFY(!relay.waitFor(u"left"_s).isEmpty());
    Line application(relay.applicationPort(), "UB0000000000");
    QCOMPARE(application.read(12), "UB0000000000");
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
