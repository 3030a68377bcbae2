// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/velno_network.h"
#include "tests/support/network_peers.h"
#include "tests/support/test_support.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QNetworkProxy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <array>
#include <sys/socket.h>

using namespace Qt::StringLiterals;
using namespace TestSupport;

namespace {

bool hasIpv6()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHostIPv6);
}

#define SKIP_WITHOUT_IPV6()                                                                                  \
    if (!hasIpv6())                                                                                          \
    QSKIP("NOT TESTED: this machine has no IPv6 loopback address")

} // namespace

/** Connections under handles: how they come about, and where they are. */
class TestNetwork : public QObject
{
    Q_OBJECT

private slots:
    void connectChecksItsArgumentsInOrder();
    void connectMakesDistinctHandles();
    void connectTakesEveryTimeOut_data();
    void connectTakesEveryTimeOut();
    void connectTakesANameToo();
    void connectToAClosedPortIsRefused();
    void connectToAFullListenerTimesOut();
    void connectToNoHostFails_data();
    void connectToNoHostFails();
    void acceptChecksItsArgumentsInOrder();
    void acceptRefusesBadAddresses_data();
    void acceptRefusesBadAddresses();
    void acceptOnAHeldPort();
    void acceptOnAForeignAddress();
    void acceptWithoutPeerTimesOut_data();
    void acceptWithoutPeerTimesOut();
    void acceptTakesOnePeer_data();
    void acceptTakesOnePeer();
    void acceptedConnectionHasItsOptions();
    void proxyOfTheApplicationIsNotUsed();
    void localAddressChecksItsArgumentsInOrder();
    void localAddressNeedsRoomForAZero_data();
    void localAddressNeedsRoomForAZero();
    void localAddressOfAClosedConnection();
    void ipv6WorksBothWays();
};

void TestNetwork::connectChecksItsArgumentsInOrder()
{
    unsigned int handle = untouched;
    QCOMPARE(velno_network_connect(nullptr, 0, 0, nullptr), 4);
    QCOMPARE(velno_network_connect("127.0.0.1", 1, 0, nullptr), 4);
    QCOMPARE(velno_network_connect(nullptr, 0, 0, &handle), 2);
    QCOMPARE(velno_network_connect(nullptr, 1, 0, &handle), 2);
    QCOMPARE(velno_network_connect("127.0.0.1", 0, 0, &handle), 3);
    QCOMPARE(handle, untouched);
}

void TestNetwork::connectMakesDistinctHandles()
{
    const Connection first;
    const Connection second;
    QCOMPARE(first.status, 0);
    QCOMPARE(second.status, 0);
    QVERIFY(first.handle != 0 && second.handle != 0 && first.handle != second.handle);
    QVERIFY(first.handle <= 0x7FFFFFFF && second.handle <= 0x7FFFFFFF);
}

void TestNetwork::connectTakesEveryTimeOut_data()
{
    QTest::addColumn<unsigned int>("timeout");
    QTest::newRow("ten seconds") << patience;
    QTest::newRow("largest signed") << 0x7FFFFFFFU;
    QTest::newRow("beyond signed") << 0x80000000U;
    QTest::newRow("last before no limit") << 0xFFFFFFFEU;
    QTest::newRow("no limit") << noLimit;
}

void TestNetwork::connectTakesEveryTimeOut()
{
    QFETCH(const unsigned int, timeout);
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    unsigned int handle = 0;
    QCOMPARE(velno_network_connect("127.0.0.1", server.serverPort(), timeout, &handle), 0);
    QCOMPARE(velno_network_write(handle, timeout, "x", 1), 0);
    QCOMPARE(velno_network_disconnect(handle), 0);
}

void TestNetwork::connectTakesANameToo()
{
    if (QHostInfo::fromName(u"localhost"_s).error() != QHostInfo::NoError)
        QSKIP("this system has no address for localhost, so there is no name to connect to");
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    unsigned int handle = 0;
    QCOMPARE(velno_network_connect("localhost", server.serverPort(), patience, &handle), 0);
    QCOMPARE(velno_network_disconnect(handle), 0);
}

void TestNetwork::connectToAClosedPortIsRefused()
{
    unsigned int handle = untouched;
    QCOMPARE(velno_network_connect("127.0.0.1", freePort(), patience, &handle), 6);
    QCOMPARE(handle, untouched);
}

void TestNetwork::connectToAFullListenerTimesOut()
{
    QTcpServer server;
    server.setListenBacklogSize(0);
    QVERIFY(server.listen(QHostAddress::LocalHost));
    // Nobody is let in, so after a few the listener's queue is full.
    int status = 0;
    std::vector<unsigned int> waiting;
    unsigned int handle = untouched;
    while (status == 0 && waiting.size() < 20) {
        handle = untouched;
        status = velno_network_connect("127.0.0.1", server.serverPort(), 50, &handle);
        if (status == 0)
            waiting.push_back(handle);
    }
    QCOMPARE(status, 6);
    QCOMPARE(handle, untouched);
    server.close();
    for (const unsigned int open : waiting)
        velno_network_disconnect(open);
}

void TestNetwork::connectToNoHostFails_data()
{
    QTest::addColumn<QByteArray>("host");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("reserved as unknown") << QByteArray("register.invalid");
    QTest::newRow("no name") << QByteArray("not a host name");
}

void TestNetwork::connectToNoHostFails()
{
    QFETCH(const QByteArray, host);
    unsigned int handle = untouched;
    QCOMPARE(velno_network_connect(host.constData(), 4100, noLimit, &handle), 7);
    QCOMPARE(handle, untouched);
}

void TestNetwork::acceptChecksItsArgumentsInOrder()
{
    unsigned int handle = untouched;
    QCOMPARE(velno_network_accept(nullptr, 0, 0, nullptr), 2);
    QCOMPARE(velno_network_accept(nullptr, 1, 0, &handle), 2);
    QCOMPARE(velno_network_accept("no address", 0, 0, nullptr), 3);
    QCOMPARE(velno_network_accept("127.0.0.1", 0, 0, &handle), 3);
    QCOMPARE(velno_network_accept("no address", 1, 0, nullptr), 4);
    QCOMPARE(velno_network_accept("no address", 1, 0, &handle), 5);
    QCOMPARE(handle, untouched);
}

void TestNetwork::acceptRefusesBadAddresses_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("300.1.1.1") << QByteArray("300.1.1.1");
    QTest::newRow("five numbers") << QByteArray("1.2.3.4.5");
    QTest::newRow("host name") << QByteArray("localhost");
    QTest::newRow("bad IPv6") << QByteArray("::1::2");
    QTest::newRow("not ASCII") << QByteArray("127.0.0.\xb9");
}

void TestNetwork::acceptRefusesBadAddresses()
{
    QFETCH(const QByteArray, address);
    unsigned int handle = untouched;
    QCOMPARE(velno_network_accept(address.constData(), freePort(), 0, &handle), 5);
    QCOMPARE(handle, untouched);
}

void TestNetwork::acceptOnAHeldPort()
{
    QTcpServer holder;
    QVERIFY(holder.listen(QHostAddress::LocalHost));
    unsigned int handle = untouched;
    QCOMPARE(velno_network_accept("127.0.0.1", holder.serverPort(), int(patience), &handle), 6);
    QCOMPARE(velno_network_accept("0.0.0.0", holder.serverPort(), int(patience), &handle), 6);
    QCOMPARE(handle, untouched);
}

void TestNetwork::acceptOnAForeignAddress()
{
    unsigned int handle = untouched;
    QCOMPARE(velno_network_accept("192.0.2.1", freePort(), int(patience), &handle), 8);
    QCOMPARE(handle, untouched);
}

void TestNetwork::acceptWithoutPeerTimesOut_data()
{
    QTest::addColumn<int>("timeout");
    QTest::newRow("at once") << 0;
    QTest::newRow("a moment") << 50;
}

void TestNetwork::acceptWithoutPeerTimesOut()
{
    QFETCH(const int, timeout);
    unsigned int handle = untouched;
    const quint16 port = freePort();
    QCOMPARE(velno_network_accept("0.0.0.0", port, timeout, &handle), 7);
    QCOMPARE(velno_network_accept("127.0.0.1", port, timeout, &handle), 7);
    QCOMPARE(handle, untouched);
}

void TestNetwork::acceptTakesOnePeer_data()
{
    QTest::addColumn<QByteArray>("address");
    QTest::addColumn<int>("timeout");
    QTest::newRow("one address") << QByteArray("127.0.0.1") << int(patience);
    QTest::newRow("all addresses") << QByteArray("0.0.0.0") << int(patience);
    QTest::newRow("no limit") << QByteArray("127.0.0.1") << -1;
    QTest::newRow("any other negative time-out is the longest") << QByteArray("127.0.0.1") << -2;
    QTest::newRow("most negative time-out") << QByteArray("127.0.0.1") << INT_MIN;
}

void TestNetwork::acceptTakesOnePeer()
{
    QFETCH(const QByteArray, address);
    QFETCH(const int, timeout);
    const quint16 port = freePort();
    const CallingPeer peer(QHostAddress::LocalHost, port, [](QTcpSocket &socket) {
        socket.write("hello");
        stayUntilClosed(socket);
    });
    unsigned int handle = 0;
    QCOMPARE(velno_network_accept(address.constData(), port, timeout, &handle), 0);
    QVERIFY(handle != 0);
    QCOMPARE(readBytes(handle, 5), QByteArray("hello"));

    // It has stopped listening.
    unsigned int second = untouched;
    QCOMPARE(velno_network_connect("127.0.0.1", port, patience, &second), 6);
    QCOMPARE(velno_network_disconnect(handle), 0);
}

void TestNetwork::acceptedConnectionHasItsOptions()
{
    const Receiver receiver;
    const quint16 port = freePort();
    const CallingPeer peer(QHostAddress::LocalHost, port, stayUntilClosed);
    unsigned int handle = 0;
    QCOMPARE(velno_network_accept("127.0.0.1", port, int(patience), &handle), 0);
    QCOMPARE(velno_set_connection(handle), 0);
    QVERIFY(received);
    QVERIFY(!received->parent());
    QCOMPARE(received->socketOption(QAbstractSocket::LowDelayOption).toInt(), 1);
    QCOMPARE(received->socketOption(QAbstractSocket::KeepAliveOption).toInt(), 1);
    received->abort();
}

void TestNetwork::proxyOfTheApplicationIsNotUsed()
{
    // Nobody serves as a proxy there. 0.0.0.0 is this machine too, but no proxy rule takes it for local.
    const QNetworkProxy before = QNetworkProxy::applicationProxy();
    const auto restore = qScopeGuard([&before] { QNetworkProxy::setApplicationProxy(before); });
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::AnyIPv4));
    QNetworkProxy::setApplicationProxy({QNetworkProxy::Socks5Proxy, u"127.0.0.1"_s, freePort()});

    unsigned int handle = 0;
    QCOMPARE(velno_network_connect("0.0.0.0", server.serverPort(), patience, &handle), 0);
    QCOMPARE(velno_network_disconnect(handle), 0);
    QCOMPARE(velno_network_accept("0.0.0.0", freePort(), 0, &handle), 7); // it listened
}

void TestNetwork::localAddressChecksItsArgumentsInOrder()
{
    char byte = 'u';
    int none = 0;
    int negative = -1;
    int one = 1;
    QCOMPARE(velno_network_local_address(0, nullptr, nullptr), 4);
    QCOMPARE(velno_network_local_address(0, &byte, &one), 4);
    QCOMPARE(velno_network_local_address(unknownHandle, nullptr, nullptr), 2);
    QCOMPARE(velno_network_local_address(unknownHandle, nullptr, &one), 2);
    QCOMPARE(velno_network_local_address(unknownHandle, &byte, nullptr), 3);
    QCOMPARE(velno_network_local_address(unknownHandle, &byte, &none), 3);
    QCOMPARE(velno_network_local_address(unknownHandle, &byte, &negative), 3);
    QCOMPARE(velno_network_local_address(unknownHandle, &byte, &one), 6);
    const Connection connection;
    QCOMPARE(velno_network_local_address(unknownHandle, &byte, &one), 6);
    QCOMPARE(byte, 'u');
    QCOMPARE(one, 1);
}

void TestNetwork::localAddressNeedsRoomForAZero_data()
{
    QTest::addColumn<int>("room");
    QTest::addColumn<int>("status");
    QTest::newRow("one byte") << 1 << 5;
    QTest::newRow("one less than the text") << 8 << 5;
    QTest::newRow("exactly the text") << 9 << 5;
    QTest::newRow("one more") << 10 << 0;
    QTest::newRow("plenty") << 64 << 0;
}

void TestNetwork::localAddressNeedsRoomForAZero()
{
    QFETCH(const int, room);
    QFETCH(const int, status);
    const Connection connection;
    std::array<char, 64> buffer;
    buffer.fill('u');
    int size = room;
    QCOMPARE(velno_network_local_address(connection.handle, buffer.data(), &size), status);
    QCOMPARE(size, status == 0 ? 9 : room);
    QCOMPARE(QByteArray(buffer.data(), 10), QByteArray(status == 0 ? "127.0.0.1u" : "uuuuuuuuuu"));
    QCOMPARE(localAddress(connection.handle), 0); // too little room closes nothing
}

void TestNetwork::localAddressOfAClosedConnection()
{
    const Connection connection;
    connection.closePeer();
    QCOMPARE(firstFailure([&] { return localAddress(connection.handle); }), 5);
    QVERIFY(isForgotten(connection.handle));
}

void TestNetwork::ipv6WorksBothWays()
{
    SKIP_WITHOUT_IPV6();
    const Connection connection(QHostAddress::LocalHostIPv6);
    QCOMPARE(connection.status, 0);
    QByteArray text;
    QCOMPARE(localAddress(connection.handle, &text), 0);
    QCOMPARE(text, QByteArray("::1"));

    const quint16 port = freePort();
    const CallingPeer peer(QHostAddress::LocalHostIPv6, port, stayUntilClosed);
    unsigned int handle = 0;
    QCOMPARE(velno_network_accept("::1", port, int(patience), &handle), 0);
    QCOMPARE(localAddress(handle, &text), 0);
    QCOMPARE(text, QByteArray("::1"));
    QCOMPARE(velno_network_disconnect(handle), 0);
}

QTEST_GUILESS_MAIN(TestNetwork)
#include "tst_network.moc"
