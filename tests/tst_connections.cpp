// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/network/velno_network.h"
#include "ExtDevice/velnoext/connections.h"
#include "ExtDevice/velnoext/identity_numbers.h"
#include "ExtDevice/velnoext/terminal_identity.h"
#include "tests/support/library_test.h"
#include "tests/support/registers_key.h"
#include "tests/support/test_support.h"

#include <QFile>
#include <QPointer>
#include <QRegularExpression>
#include <QScopeGuard>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

using namespace Velno;
using namespace Velno::Ext;
using namespace Velno::GMP;
using namespace Qt::StringLiterals;
using namespace TestSupport;

class TestConnections : public LibraryTest
{
    Q_OBJECT

private slots:
    void versionIsZero();
    void argumentsAreCheckedBeforeAnythingIsMade_data();
    void argumentsAreCheckedBeforeAnythingIsMade();
    void badPlacesToListen_data();
    void badPlacesToListen();
    void nobodyConnectsInTime();
    void firstContactPairs();
    void failedPairingLeavesNoRecord();
    void registerThatLeavesDuringPairing();
    void registerThatStaysAwayAfterPairing();
    void closingForgetsTheDetail_data();
    void closingForgetsTheDetail();
    void keysSurviveClosing_data();
    void keysSurviveClosing();
    void activeDeviceIsChosen();
    void failedInitialiseKeepsTheActiveDevice();
    void connectionThatNobodyTakesForgetsTheKeys();
    void connectionWithoutARegisterIsClosed();
    void connectionOfTheApplicationsThreadIsItsChild();
    void connectionThatIsGoneIsReported();
    void reconnectingReplacesTheConnection();
    void closingWithNothingOpen();
    void closeAllClosesEveryRegister();
    void vanishedRegistersAreNoticed();
    void identityNumbers_data();
    void identityNumbers();
};

void TestConnections::versionIsZero()
{
    QCOMPARE(velnoext_version(), "0");
}

void TestConnections::argumentsAreCheckedBeforeAnythingIsMade_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("withAddress");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("detail");

    QTest::newRow("no serial number") << QByteArray() << true << 3 << 0x300;
    QTest::newRow("neither") << QByteArray() << false << 3 << 0x300;
    QTest::newRow("no address") << QByteArray(serial) << false << 3 << 0x301;
    QTest::newRow("no address, short") << QByteArray("UB") << false << 3 << 0x301;
    QTest::newRow("empty") << QByteArray("") << true << 4 << 0x400;
    QTest::newRow("11 characters") << QByteArray("UB123456789") << true << 4 << 0x400;
    QTest::newRow("13 characters") << QByteArray("UB12345678901") << true << 4 << 0x400;
}

void TestConnections::argumentsAreCheckedBeforeAnythingIsMade()
{
    QFETCH(const QByteArray, name);
    QFETCH(const bool, withAddress);
    QFETCH(const int, result);
    QFETCH(const int, detail);
    const char *const text = name.isNull() ? nullptr : name.constData();
    QCOMPARE(velnoext_initialize(5, text, withAddress ? "127.0.0.1" : nullptr, 4100, 10), result);
    QCOMPARE(velnoext_error_detail(), detail);
    QVERIFY(!library().connectionThread);
    if (!withAddress && text)
        return;
    QCOMPARE(velnoext_set_active_device(text), result);
    QCOMPARE(velnoext_error_detail(), detail);
}

void TestConnections::badPlacesToListen_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<bool>("free");
    QTest::addColumn<int>("result");
    QTest::addColumn<int>("detail");

    QTest::newRow("port 0") << QByteArray("127.0.0.1") << false << 4 << 0x402;
    QTest::newRow("no address") << QByteArray("300.1.1.1") << true << 4 << 0;
    QTest::newRow("empty") << QByteArray("") << true << 4 << 0;
    QTest::newRow("of nobody here") << QByteArray("192.0.2.201") << true << 2 << 0;
}

void TestConnections::badPlacesToListen()
{
    QFETCH(const QByteArray, address);
    QFETCH(const bool, free);
    const quint16 port = free ? freePort() : 0;
    QTEST(velnoext_initialize(5, serial, address.constData(), port, brief), "result");
    QTEST(velnoext_error_detail(), "detail");
    QVERIFY(library().connectionThread); // kept, until closed
}

void TestConnections::nobodyConnectsInTime()
{
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", freePort(), brief), 2);
    QCOMPARE(velnoext_error_detail(), 0);
    char buffer[13] = "untouched";
    QCOMPARE(velnoext_active_device(buffer), 1);
    QCOMPARE(buffer, "untouched");
    QTcpServer holder;
    QVERIFY(holder.listen(QHostAddress::LocalHost, 0));
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", holder.serverPort(), patience), 2);
}

void TestConnections::firstContactPairs()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    const quint16 port = freePort();
    device.pairAndServe(port);
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, patience), 0);
    QTRY_COMPARE_WITH_TIMEOUT(int(device.contacts), 3, int(patience));
    QCOMPARE(device.announcement, GMP3::frame(false, None, hex("DFE0050130"), serial));
    QFile self(QCoreApplication::applicationFilePath());
    QVERIFY(self.open(QIODevice::ReadOnly));
    QCOMPARE(device.appHash, sha256Sum(self));
    QCOMPARE(library().pairingRecords.value(serial).terminalId, macAddress());
    QVERIFY2(QRegularExpression(u"^[0-9A-F]{12}$"_s).match(QString::fromLatin1(macAddress())).hasMatch(),
             "this machine has no network interface to name the terminal by");
    QCOMPARE(connection()->objectName(), QString::fromLatin1(serial));
    device.answerPlain(plain(7, QVector<int>()));
    int state = 0;
    QCOMPARE(velnoext_ecr_state(patience, &state), 0);
    QCOMPARE(state, 7);
    char buffer[17] = {};
    QCOMPARE(velnoext_ecr_serialno(buffer), 0);
    QCOMPARE(buffer, serial);
}

void TestConnections::failedPairingLeavesNoRecord()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    const quint16 port = freePort();
    device.pairAndServe(port, 1, [](HandMadeRegister &reg, const Request &request, int) {
        Fields fields = reg.honestAnswer(request);
        replaceValue(fields, fieldTag(ResultCode), "01");
        return QList{HandMadeRegister::frameOf(request.kind, fields)};
    });
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, patience), 10);
    QCOMPARE(velnoext_error_detail(), 0);
    QVERIFY(library().pairingRecords.value(serial).registerData.isEmpty());
    QVERIFY(library().activeDevice.isEmpty());
    QVERIFY(library().connections.empty());
}

void TestConnections::registerThatLeavesDuringPairing()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    const quint16 port = freePort();
    device.pairAndServe(port, 1, [](HandMadeRegister &, const Request &request, int) {
        return QList{HandMadeRegister::frameOf(request.kind, {}).chopped(3) + "xyz"};
    });
    const LogCapture capture;
    const auto format = std::cout.flags();
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, patience), 10);
    QVERIFY(capture.text().startsWith("CRC is not equal: "));
    QCOMPARE(std::cout.flags(), format); // the stream is the application's
    QVERIFY(library().connections.empty());
}

void TestConnections::registerThatStaysAwayAfterPairing()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    const quint16 port = freePort();
    device.pairAndServe(port, 0);
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, 2000), 2);
    QCOMPARE(int(device.contacts), 2);
    QVERIFY(!device.appHash.isEmpty()); // it did pair
    QVERIFY(!library().pairingRecords.contains(serial));
    QVERIFY(library().activeDevice.isEmpty());
    QVERIFY(library().connections.empty());
}

void TestConnections::closingForgetsTheDetail_data()
{
    QTest::addColumn<bool>("all");

    QTest::newRow("one") << false;
    QTest::newRow("all") << true;
}

void TestConnections::closingForgetsTheDetail()
{
    QFETCH(const bool, all);
    QCOMPARE(velnoext_initialize(5, "UB", "127.0.0.1", 4100, brief), 4);
    QCOMPARE(velnoext_error_detail(), 0x400);
    all ? velnoext_close_all() : velnoext_close();
    QCOMPARE(velnoext_error_detail(), 0);
}

void TestConnections::keysSurviveClosing_data()
{
    QTest::addColumn<unsigned int>("appNo");
    QTest::addColumn<bool>("kept");
    QTest::addColumn<QString>("objectName");

    QTest::newRow("5") << 5U << true << QString::fromLatin1(serial);
    QTest::newRow("14242") << 14242U << false << u"__--dcn--__"_s;
    QTest::newRow("999999") << 999999U << false << u"__--dcn--__"_s;
}

void TestConnections::keysSurviveClosing()
{
    QFETCH(const unsigned int, appNo);
    HandMadeDevice device;
    QCOMPARE(connectPaired(device, serial, appNo), 0);
    QTRY_COMPARE_WITH_TIMEOUT(int(device.contacts), 1, int(patience));
    QTEST(connection()->objectName(), "objectName");
    velnoext_close();
    QVERIFY(!library().connectionThread);
    QVERIFY(library().activeDevice.isEmpty());
    QTEST(library().pairingRecords.contains(serial), "kept");
}

void TestConnections::activeDeviceIsChosen()
{
    HandMadeDevice first;
    HandMadeDevice second{otherSerial};
    QCOMPARE(connectPaired(first), 0);
    const ConnectionThread *const thread = library().connectionThread.get();
    QCOMPARE(connectPaired(second, otherSerial), 0);
    QCOMPARE(library().connectionThread.get(), thread); // one for all connections
    char buffer[13] = {};
    QCOMPARE(velnoext_active_device(buffer), 0);
    QCOMPARE(buffer, otherSerial);
    QCOMPARE(velnoext_set_active_device(serial), 0);
    QCOMPARE(velnoext_active_device(buffer), 0);
    QCOMPARE(buffer, serial);
    QCOMPARE(velnoext_set_active_device("UB9999999999"), 1);
    QCOMPARE(velnoext_active_device(buffer), 0);
    QCOMPARE(buffer, serial);
    QCOMPARE(velnoext_active_device(nullptr), 3);
    QCOMPARE(velnoext_error_detail(), 0x300);
    first.answerPlain(plain(1, QVector<int>{}));
    int state = 0;
    QCOMPARE(velnoext_ecr_state(patience, &state), 0);
    QCOMPARE(first.commands().size(), 1);
    QVERIFY(second.commands().isEmpty());
    velnoext_close();
    QVERIFY(library().connectionThread); // the other register is still there
    QCOMPARE(velnoext_active_device(buffer), 1);
    QCOMPARE(velnoext_set_active_device(otherSerial), 0);
}

void TestConnections::failedInitialiseKeepsTheActiveDevice()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    QCOMPARE(velnoext_initialize(5, otherSerial, "127.0.0.1", freePort(), brief), 2);
    QCOMPARE(library().activeDevice, QByteArray(serial));
    device.answerPlain(plain(true));
    QCOMPARE(velnoext_login(patience), 0);
}

void TestConnections::connectionThatNobodyTakesForgetsTheKeys()
{
    NEEDS_A_REGISTERS_KEY();
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const auto receiver = velno_network_set_receiver(nullptr);
    const auto restore = qScopeGuard([receiver] { velno_network_set_receiver(receiver); });
    HandMadeDevice second{otherSerial};
    QCOMPARE(connectPaired(second, otherSerial), 2);
    QVERIFY(!library().pairingRecords.contains(otherSerial)); // it is paired afresh next time
    QVERIFY(library().pairingRecords.contains(serial));
    QCOMPARE(library().activeDevice, QByteArray(serial));
    QVERIFY(!library().connections.contains(otherSerial));
    second.stop(); // its connection is closed

    HandMadeDevice stranger{"UB0000000002"};
    const quint16 port = freePort();
    stranger.pairAndServe(port);
    QCOMPARE(velnoext_initialize(5, "UB0000000002", "127.0.0.1", port, patience), 2);
    QCOMPARE(library().activeDevice, QByteArray(serial));
}

void TestConnections::connectionWithoutARegisterIsClosed()
{
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    const QPointer<QTcpSocket> stray = new QTcpSocket;
    stray->connectToHost(server.serverAddress(), server.serverPort());
    QVERIFY(stray->waitForConnected());
    setConnection(stray);
    QCOMPARE(stray->state(), QAbstractSocket::UnconnectedState);
    QVERIFY(library().connections.empty());
    QTRY_VERIFY_WITH_TIMEOUT(!stray, int(patience));
}

void TestConnections::connectionOfTheApplicationsThreadIsItsChild()
{
    const QPointer<QTcpSocket> socket = new QTcpSocket;
    library().activeDevice = serial;
    setConnection(socket);
    library().activeDevice.clear();
    QCOMPARE(connectionOf(serial), socket.data());
    QCOMPARE(socket->parent(), QCoreApplication::instance());
    library().connections.clear();
    QVERIFY(!socket); // its entry owned it
}

void TestConnections::connectionThatIsGoneIsReported()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    onConnectionThread([] { delete connection(); });
    QCOMPARE(velnoext_login(patience), 2);
    QCOMPARE(velnoext_set_active_device(serial), 0); // it is still listed
    velnoext_close();
    QVERIFY(!library().connectionThread);
}

void TestConnections::reconnectingReplacesTheConnection()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const QPointer<QIODevice> before = connection();
    const quint16 port = freePort();
    device.stop();
    device.serve(port);
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", port, patience), 0);
    QVERIFY(before.isNull());
    QCOMPARE(library().connections.size(), size_t(1));
}

void TestConnections::closingWithNothingOpen()
{
    velnoext_close();
    velnoext_close_all();
    QCOMPARE(velnoext_initialize(5, serial, "127.0.0.1", freePort(), 10), 2);
    QVERIFY(library().connectionThread);
    velnoext_close_all(); // no connection: nothing to do
    QVERIFY(library().connectionThread);
    velnoext_close();
    velnoext_close();
    QVERIFY(!library().connectionThread);
}

void TestConnections::closeAllClosesEveryRegister()
{
    HandMadeDevice first;
    HandMadeDevice second{otherSerial};
    QCOMPARE(connectPaired(first), 0);
    QCOMPARE(connectPaired(second, otherSerial), 0);
    velnoext_close_all();
    QVERIFY(library().connections.empty());
    QVERIFY(!library().connectionThread);
}

void TestConnections::vanishedRegistersAreNoticed()
{
    HandMadeDevice device;
    QCOMPARE(connectPaired(device), 0);
    const auto option = [](int level, int name) {
        int value = -1;
        socklen_t size = sizeof value;
        const auto descriptor = int(connection()->socketDescriptor());
        return getsockopt(descriptor, level, name, &value, &size) == 0 ? value : -1;
    };
    QCOMPARE(option(SOL_SOCKET, SO_KEEPALIVE), 1);
    QCOMPARE(option(IPPROTO_TCP, TCP_KEEPIDLE), 30);
    QCOMPARE(option(IPPROTO_TCP, TCP_KEEPINTVL), 10);
    QCOMPARE(option(IPPROTO_TCP, TCP_KEEPCNT), 3);
    QCOMPARE(option(IPPROTO_TCP, TCP_USER_TIMEOUT), 60'000);
    QCOMPARE(option(IPPROTO_TCP, TCP_NODELAY), 1);
}

void TestConnections::identityNumbers_data()
{
    QTest::addColumn<QByteArray>("number");
    QTest::addColumn<bool>("valid");

    QTest::newRow("valid") << QByteArray("10000000146") << true;
    QTest::newRow("first digit 0") << QByteArray("01234567890") << false;
    QTest::newRow("10 digits") << QByteArray("1234567890") << false;
    QTest::newRow("12 digits") << QByteArray("100000001460") << false;
    QTest::newRow("11th digit") << QByteArray("10000000147") << false;
    QTest::newRow("10th digit") << QByteArray("10000000157") << false;
    QTest::newRow("letter") << QByteArray("1000000014A") << false;
    // 7 * 1 - 9 = -2: mathematically 8 modulo 10, which is refused
    QTest::newRow("negative difference") << QByteArray("19000000088") << false;
    QTest::newRow("empty") << QByteArray() << false;
}

void TestConnections::identityNumbers()
{
    QFETCH(const QByteArray, number);
    QTEST(isValidId(number), "valid");
}

QTEST_GUILESS_MAIN(TestConnections)
#include "tst_connections.moc"
