// SPDX-License-Identifier: Apache-2.0

#include "simulator/relay/register_book.h"
#include "tests/support/relay_line.h"
#include "tests/support/simulated_relay.h"

#include <QFile>
#include <QTcpSocket>
#include <QTest>

#include <poll.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace TestSupport;

/** Whom velno-relay joins, what it carries between them, and what hostile peers get. */
class TestRelayPeers : public QObject
{
    Q_OBJECT

private slots:
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
    void unfinishedNamesAreRefused_data();
    void unfinishedNamesAreRefused();
    void silentPeersAreRefused();
    void anyBytesMayBeAName();
    void slowSideHoldsTheOtherBack();
    void manyPairsAtOnce();
    void connectionsAreBounded();
};

namespace {

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

/** Resident memory of the process, in bytes. */
qint64 residentMemory(qint64 process)
{
    QFile file(u"/proc/%1/statm"_s.arg(process));
    if (!file.open(QIODevice::ReadOnly))
        return -1;
    return file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE);
}

} // namespace

void TestRelayPeers::applicationAndRegisterAreJoined_data()
{
    QTest::addColumn<int>("which");
    QTest::newRow("application 999999") << 0;
    QTest::newRow("other applications") << 1;
}

void TestRelayPeers::applicationAndRegisterAreJoined()
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

void TestRelayPeers::nothingAroundTheNamesIsLost_data()
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

void TestRelayPeers::nothingAroundTheNamesIsLost()
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

void TestRelayPeers::muchTravelsBothWaysUnchanged()
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

void TestRelayPeers::closingFollowsTheLastByte_data()
{
    QTest::addColumn<bool>("byApplication");
    QTest::addColumn<int>("size");
    for (const int size : {0, 1, 2'000'000}) {
        QTest::addRow("application, %d bytes", size) << true << size;
        QTest::addRow("register, %d bytes", size) << false << size;
    }
}

void TestRelayPeers::closingFollowsTheLastByte()
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

void TestRelayPeers::oneWayMayEndBeforeTheOther()
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

void TestRelayPeers::brokenConnectionEndsThePair_data()
{
    QTest::addColumn<bool>("ofApplication");
    QTest::newRow("the application's") << true;
    QTest::newRow("the register's") << false;
}

void TestRelayPeers::brokenConnectionEndsThePair()
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

void TestRelayPeers::unknownRegisterIsRefusedAtOnce_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::newRow("never seen") << QByteArray("UB0000000001");
    QTest::newRow("lower case") << QByteArray("ub1234567890");
    QTest::newRow("zeros") << QByteArray(12, '\0');
}

void TestRelayPeers::unknownRegisterIsRefusedAtOnce()
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

void TestRelayPeers::applicationIsKeptForTheRegistersReturn_data()
{
    QTest::addColumn<QString>("before");
    QTest::newRow("it was joined") << u"joined"_s;
    QTest::newRow("it had waited") << u"waited"_s;
    QTest::newRow("it is joined still") << u"busy"_s;
}

void TestRelayPeers::applicationIsKeptForTheRegistersReturn()
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

void TestRelayPeers::applicationIsNotKeptForLong()
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

void TestRelayPeers::applicationsAreServedInTheirOrder()
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

void TestRelayPeers::newestRegisterWins()
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

void TestRelayPeers::unfinishedNamesAreRefused_data()
{
    QTest::addColumn<bool>("application");
    QTest::addColumn<QByteArray>("bytes");
    for (const bool application : {true, false})
        for (const QByteArray &bytes : {QByteArray(), QByteArray("U"), QByteArray("UB123456789")})
            QTest::addRow("%s after %d", application ? "application" : "register", int(bytes.size()))
                << application << bytes;
}

void TestRelayPeers::unfinishedNamesAreRefused()
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

void TestRelayPeers::silentPeersAreRefused()
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

void TestRelayPeers::anyBytesMayBeAName()
{
    SimulatedRelay relay;
    const QByteArray name("\0\n\x1B[2J\xFF \\\"}{", 12);
    Line cashRegister(relay.registerPort(), name);
    QCOMPARE(text(relay.waitFor(u"waiting"_s), u"serial"_s), uR"(\x00\x0a\x1b[2J\xff\x20\x5c"}{)"_s);
    Line application(relay.applicationPort(), name);
    QCOMPARE(application.read(12), name);
}

// Without a bound the relay would hold what the kernel cannot.
void TestRelayPeers::slowSideHoldsTheOtherBack()
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

void TestRelayPeers::manyPairsAtOnce()
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

void TestRelayPeers::connectionsAreBounded()
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

QTEST_GUILESS_MAIN(TestRelayPeers)
#include "tst_relay_peers.moc"
