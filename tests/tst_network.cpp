#include "ExtDevice/network/velno_network.h"

#include "tests/support/test_support.h"

#include <QDeadlineTimer>
#include <QHostAddress>
#include <QHostInfo>
#include <QNetworkProxy>
#include <QPointer>
#include <QScopeGuard>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QThread>

#include <array>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <sys/socket.h>

using TestSupport::freePort;

namespace {

constexpr unsigned int patience = 10'000; // ms; an answer that is expected comes long before
constexpr unsigned int noLimit = 0xFFFFFFFF;
constexpr unsigned int untouched = 0xDEADBEEF;
constexpr unsigned int unknownHandle = 0x7FFFFFF0;

/** A connected handle and the socket at its other end, both on this thread. */
class Connection
{
public:
    explicit Connection(QHostAddress::SpecialAddress address = QHostAddress::LocalHost)
    {
        QTcpServer server;
        if (!server.listen(address))
            return;
        const QByteArray host = server.serverAddress().toString().toLatin1();
        status = velno_network_connect(host.constData(), server.serverPort(), patience, &handle);
        if (status == 0 && server.waitForNewConnection(int(patience)))
            peer.reset(server.nextPendingConnection());
        if (peer)
            peer->setParent(nullptr);
    }

    ~Connection()
    {
        if (peer)
            peer->abort();
        velno_network_disconnect(handle);
    }
    Q_DISABLE_COPY_MOVE(Connection)

    void send(const QByteArray &bytes) const
    {
        peer->write(bytes);
        peer->flush();
    }

    /** Closes with what was sent before delivered. */
    void closePeer() const { peer->close(); }

    /** Ends the connection with a reset, as a crashed peer's system does. */
    void resetPeer() const
    {
        const linger immediately = {1, 0};
        setsockopt(int(peer->socketDescriptor()), SOL_SOCKET, SO_LINGER, &immediately, sizeof(immediately));
        peer->abort();
    }

    int status = -1;
    unsigned int handle = 0;
    std::unique_ptr<QTcpSocket> peer;
};

/** A thread that runs its work and is waited for at the end of the scope. */
class Worker
{
public:
    explicit Worker(std::function<void()> work)
        : m_thread(QThread::create(std::move(work)))
    {
        m_thread->start();
    }
    ~Worker() { m_thread->wait(); }
    Q_DISABLE_COPY_MOVE(Worker)

private:
    std::unique_ptr<QThread> m_thread;
};

/** A peer on a thread of its own: it listens, tells its port, accepts one connection and runs the work on it.
 */
class ServingPeer
{
public:
    explicit ServingPeer(std::function<void(QTcpSocket &)> work)
        : m_worker([this, serve = std::move(work)] {
            QTcpServer server;
            server.listen(QHostAddress::LocalHost);
            m_port.set_value(server.serverPort());
            if (server.waitForNewConnection(int(patience)))
                serve(*server.nextPendingConnection());
        })
    {
    }

    /** Connects to it. */
    unsigned int connect()
    {
        unsigned int handle = 0;
        if (velno_network_connect("127.0.0.1", m_port.get_future().get(), patience, &handle) != 0)
            return 0;
        return handle;
    }

private:
    std::promise<quint16> m_port;
    Worker m_worker;
};

/** Connects to the port as soon as somebody listens there, then does its work. */
class CallingPeer
{
public:
    CallingPeer(const QHostAddress &address, quint16 port, std::function<void(QTcpSocket &)> work)
        : m_worker([=] {
            QTcpSocket socket;
            const QDeadlineTimer deadline(patience);
            do {
                socket.abort();
                socket.connectToHost(address, port);
            } while (!socket.waitForConnected(int(patience)) && !deadline.hasExpired());
            work(socket);
        })
    {
    }

private:
    Worker m_worker;
};

void stayUntilClosed(QTcpSocket &socket)
{
    socket.waitForDisconnected(int(patience));
}

/** Reads exactly so many bytes through the handle; fewer when a read fails. */
QByteArray readBytes(unsigned int handle, qsizetype count)
{
    QByteArray result;
    while (result.size() < count) {
        std::array<char, 4096> buffer{};
        int size = int(std::min(qsizetype(buffer.size()), count - result.size()));
        if (velno_network_read(handle, patience, buffer.data(), &size) != 0 || size <= 0)
            break;
        result.append(buffer.data(), size);
    }
    return result;
}

QByteArray readFrom(QTcpSocket &socket, qsizetype count)
{
    while (socket.bytesAvailable() < count && socket.waitForReadyRead(int(patience))) {
    }
    return socket.read(count);
}

int localAddress(unsigned int handle, QByteArray *text = nullptr)
{
    std::array<char, 64> buffer{};
    int size = int(buffer.size());
    const int status = velno_network_local_address(handle, buffer.data(), &size);
    if (text)
        *text = QByteArray(buffer.data(), size);
    return status;
}

/** Repeats the call, without running an event loop, until the system has told our end of the peer's close. */
int firstFailure(const std::function<int()> &call)
{
    const QDeadlineTimer deadline(patience);
    int status = 0;
    while (status == 0 && !deadline.hasExpired())
        status = call();
    return status;
}

bool isForgotten(unsigned int handle)
{
    std::array<char, 64> buffer{};
    int size = int(buffer.size());
    return velno_network_write(handle, 0, "x", 1) == 5 &&
           velno_network_read(handle, 0, buffer.data(), &size) == 5 && localAddress(handle) == 6 &&
           velno_network_disconnect(handle) == 3 && velno_set_connection(handle) == 1;
}

QPointer<QTcpSocket> received; // what the receiver below was handed

void receive(QTcpSocket *socket)
{
    received = socket;
}

/** Somebody takes hand-overs while this lives. */
class Receiver
{
public:
    Receiver() { velno_network_set_receiver(receive); }
    ~Receiver()
    {
        velno_network_set_receiver(nullptr);
        delete received.data();
    }
    Q_DISABLE_COPY_MOVE(Receiver)
};

bool hasIpv6()
{
    QTcpServer server;
    return server.listen(QHostAddress::LocalHostIPv6);
}

#define SKIP_WITHOUT_IPV6()                                                                                  \
    if (!hasIpv6())                                                                                          \
    QSKIP("NOT TESTED: this machine has no IPv6 loopback address")

} // namespace

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
    void writeChecksItsArgumentsInOrder();
    void writeSendsEveryByte();
    void writeAfterThePeersCloseFails();
    void writeTimesOutAndKeepsTheConnection();
    void writeIsCutShortByThePeersClose();
    void writeGoesOnUntilTheLastByte();
    void writeToAPeerThatOnlyTalksFillsNoMemory_data();
    void writeToAPeerThatOnlyTalksFillsNoMemory();
    void readChecksItsArgumentsInOrder();
    void readTakesWhatFits();
    void readWaitsForBytes_data();
    void readWaitsForBytes();
    void readTimesOutAndKeepsTheConnection();
    void readGivesTheBytesBeforeTheClose();
    void readEndsWhenThePeerCloses_data();
    void readEndsWhenThePeerCloses();
    void localAddressChecksItsArgumentsInOrder();
    void localAddressNeedsRoomForAZero_data();
    void localAddressNeedsRoomForAZero();
    void localAddressOfAClosedConnection();
    void disconnectChecksItsArguments();
    void disconnectDeliversAndForgets();
    void disconnectOfAClosedConnection();
    void disconnectGivesUpOnAPeerThatDoesNotRead();
    void ipv6WorksBothWays();
    void twoPeersDoNotMix();
    void closeUnderAnEventLoopLeavesAStaleEntry();
    void acceptedConnectionStaysUnderAnEventLoop();
    void handOverGivesTheOpenSocketAway();
    void handedOverSocketSurvivesThePeersClose();
    void handOverNeedsAReceiver();
    void handOverOfAnUnknownHandle();
    void receiverIsExchanged();
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
    if (QHostInfo::fromName(QStringLiteral("localhost")).error() != QHostInfo::NoError)
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
    QNetworkProxy::setApplicationProxy({QNetworkProxy::Socks5Proxy, QStringLiteral("127.0.0.1"), freePort()});

    unsigned int handle = 0;
    QCOMPARE(velno_network_connect("0.0.0.0", server.serverPort(), patience, &handle), 0);
    QCOMPARE(velno_network_disconnect(handle), 0);
    QCOMPARE(velno_network_accept("0.0.0.0", freePort(), 0, &handle), 7); // it listened
}

void TestNetwork::writeChecksItsArgumentsInOrder()
{
    QCOMPARE(velno_network_write(0, 0, nullptr, 0), 4);
    QCOMPARE(velno_network_write(0, 0, "x", 1), 4);
    QCOMPARE(velno_network_write(unknownHandle, 0, nullptr, 0), 2);
    QCOMPARE(velno_network_write(unknownHandle, 0, nullptr, 1), 2);
    QCOMPARE(velno_network_write(unknownHandle, 0, "x", 0), 3);
    QCOMPARE(velno_network_write(unknownHandle, 0, "x", -1), 3);
    QCOMPARE(velno_network_write(unknownHandle, 0, "x", 1), 5);
    const Connection connection;
    QCOMPARE(velno_network_write(unknownHandle, 0, "x", 1), 5);
}

void TestNetwork::writeSendsEveryByte()
{
    const Connection connection;
    QCOMPARE(velno_network_write(connection.handle, patience, "first\0 ", 7), 0);
    QCOMPARE(velno_network_write(connection.handle, noLimit, "second", 6), 0);
    QCOMPARE(readFrom(*connection.peer, 13), QByteArray("first\0 second", 13));
}

void TestNetwork::writeAfterThePeersCloseFails()
{
    const Connection connection;
    connection.closePeer();
    QCOMPARE(firstFailure([&] { return velno_network_write(connection.handle, patience, "x", 1); }), 5);
    QVERIFY(isForgotten(connection.handle));
}

void TestNetwork::writeTimesOutAndKeepsTheConnection()
{
    const Connection connection;
    const QByteArray tooMuch(64 << 20, 'w'); // more than both systems' buffers hold
    QCOMPARE(velno_network_write(connection.handle, 50, tooMuch.constData(), int(tooMuch.size())), 7);
    QCOMPARE(localAddress(connection.handle), 0);
}

void TestNetwork::writeIsCutShortByThePeersClose()
{
    ServingPeer peer([](QTcpSocket &socket) {
        socket.setReadBufferSize(4096);
        readFrom(socket, 1);
        socket.abort();
    });
    const unsigned int handle = peer.connect();
    const QByteArray tooMuch(64 << 20, 'w');
    QCOMPARE(velno_network_write(handle, patience, tooMuch.constData(), int(tooMuch.size())), 7);
    QVERIFY(isForgotten(handle));
}

void TestNetwork::writeGoesOnUntilTheLastByte()
{
    QByteArray data(8 << 20, Qt::Uninitialized);
    for (qsizetype i = 0; i < data.size(); ++i)
        data[i] = char(i % 251);
    QByteArray arrived;
    {
        const Receiver receiver;
        ServingPeer peer([&](QTcpSocket &socket) {
            socket.setReadBufferSize(8192); // takes little at a time
            while (arrived.size() < data.size()) {
                if (socket.bytesAvailable() == 0 && !socket.waitForReadyRead(int(patience)))
                    break;
                arrived += socket.read(4096);
            }
        });
        const unsigned int handle = peer.connect();
        QCOMPARE(velno_network_write(handle, 120'000, data.constData(), int(data.size())), 0);
        // Nothing is left for a later call to send.
        QCOMPARE(velno_set_connection(handle), 0);
        QCOMPARE(received->bytesToWrite(), 0);
        received->disconnectFromHost();
    }
    QCOMPARE(arrived.size(), data.size());
    QVERIFY(arrived == data);
}

void TestNetwork::writeToAPeerThatOnlyTalksFillsNoMemory_data()
{
    QTest::addColumn<bool>("accepted");
    QTest::newRow("connected") << false;
    QTest::newRow("accepted") << true;
}

void TestNetwork::writeToAPeerThatOnlyTalksFillsNoMemory()
{
    QFETCH(const bool, accepted);
    const QByteArray tooMuch(64 << 20, 'w');
    std::promise<void> done;
    const auto talk = [&](QTcpSocket &socket) {
        socket.setReadBufferSize(1);
        socket.write(tooMuch);
        while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(int(patience))) {
        }
        done.get_future().wait();
    };
    const Receiver receiver;
    std::unique_ptr<ServingPeer> server;
    std::unique_ptr<CallingPeer> client;
    const auto letGo = qScopeGuard([&done] { done.set_value(); });
    unsigned int handle = 0;
    if (accepted) {
        const quint16 port = freePort();
        client = std::make_unique<CallingPeer>(QHostAddress(QHostAddress::LocalHost), port, talk);
        QCOMPARE(velno_network_accept("127.0.0.1", port, int(patience), &handle), 0);
    } else {
        server = std::make_unique<ServingPeer>(talk);
        handle = server->connect();
    }
    // While it waits for room it also takes in what has come.
    QCOMPARE(velno_network_write(handle, 200, tooMuch.constData(), int(tooMuch.size())), 7);
    QCOMPARE(readBytes(handle, 100'000), tooMuch.first(100'000)); // nothing of it is lost
    QCOMPARE(velno_set_connection(handle), 0);
    const qint64 held = received->bytesAvailable();
    received->abort();
    QVERIFY2(held <= 64 * 1024, qPrintable(QString::number(held)));
}

void TestNetwork::readChecksItsArgumentsInOrder()
{
    char byte = 'u';
    int none = 0;
    int negative = -1;
    int one = 1;
    QCOMPARE(velno_network_read(0, 0, nullptr, nullptr), 4);
    QCOMPARE(velno_network_read(0, 0, &byte, &one), 4);
    QCOMPARE(velno_network_read(unknownHandle, 0, nullptr, nullptr), 2);
    QCOMPARE(velno_network_read(unknownHandle, 0, nullptr, &one), 2);
    QCOMPARE(velno_network_read(unknownHandle, 0, &byte, nullptr), 3);
    QCOMPARE(velno_network_read(unknownHandle, 0, &byte, &none), 3);
    QCOMPARE(velno_network_read(unknownHandle, 0, &byte, &negative), 3);
    QCOMPARE(velno_network_read(unknownHandle, 0, &byte, &one), 5);
    const Connection connection;
    QCOMPARE(velno_network_read(unknownHandle, 0, &byte, &one), 5);

    // No room: the bytes stay where they are.
    connection.send("b");
    QCOMPARE(velno_network_read(connection.handle, 0, &byte, &none), 3);
    QCOMPARE(readBytes(connection.handle, 1), QByteArray("b"));
    QCOMPARE(byte, 'u');
    QCOMPARE(none, 0);
    QCOMPARE(negative, -1);
    QCOMPARE(one, 1);
}

void TestNetwork::readTakesWhatFits()
{
    const Connection connection;
    connection.send("0123456789");
    std::array<char, 100> buffer;
    buffer.fill('u');
    int size = 4;
    QCOMPARE(velno_network_read(connection.handle, patience, buffer.data(), &size), 0);
    QCOMPARE(size, 4);
    QCOMPARE(QByteArray(buffer.data(), 5), QByteArray("0123u"));

    // The rest is there already: no time is needed.
    size = int(buffer.size());
    QCOMPARE(velno_network_read(connection.handle, 0, buffer.data(), &size), 0);
    QCOMPARE(QByteArray(buffer.data(), size), QByteArray("456789"));
}

void TestNetwork::readWaitsForBytes_data()
{
    QTest::addColumn<unsigned int>("timeout");
    QTest::newRow("ten seconds") << patience;
    QTest::newRow("beyond signed") << 0x80000000U;
    QTest::newRow("no limit") << noLimit;
}

void TestNetwork::readWaitsForBytes()
{
    QFETCH(const unsigned int, timeout);
    ServingPeer peer([](QTcpSocket &socket) {
        readFrom(socket, 1);
        socket.write("answer");
        stayUntilClosed(socket);
    });
    const unsigned int handle = peer.connect();
    QCOMPARE(velno_network_write(handle, patience, "?", 1), 0);
    std::array<char, 6> buffer{};
    int size = int(buffer.size());
    QCOMPARE(velno_network_read(handle, timeout, buffer.data(), &size), 0);
    QCOMPARE(QByteArray(buffer.data(), size), QByteArray("answer"));
    QCOMPARE(velno_network_disconnect(handle), 0);
}

void TestNetwork::readTimesOutAndKeepsTheConnection()
{
    const Connection connection;
    char byte = 'u';
    int size = 1;
    QCOMPARE(velno_network_read(connection.handle, 0, &byte, &size), 6);
    QCOMPARE(velno_network_read(connection.handle, 50, &byte, &size), 6);
    QCOMPARE(byte, 'u');
    QCOMPARE(size, 1);
    connection.send("b");
    QCOMPARE(readBytes(connection.handle, 1), QByteArray("b"));
}

void TestNetwork::readGivesTheBytesBeforeTheClose()
{
    const Connection connection;
    connection.send("last words");
    connection.closePeer();
    QCOMPARE(readBytes(connection.handle, 4), QByteArray("last"));
    QCOMPARE(readBytes(connection.handle, 6), QByteArray(" words"));
    char byte = 'u';
    int size = 1;
    QCOMPARE(velno_network_read(connection.handle, patience, &byte, &size), 5);
    QCOMPARE(byte, 'u');
    QCOMPARE(size, 1);
    QVERIFY(isForgotten(connection.handle));
}

void TestNetwork::readEndsWhenThePeerCloses_data()
{
    QTest::addColumn<bool>("reset");
    QTest::newRow("closed") << false;
    QTest::newRow("reset") << true;
}

void TestNetwork::readEndsWhenThePeerCloses()
{
    QFETCH(const bool, reset);
    const Connection connection;
    if (reset)
        connection.resetPeer();
    else
        connection.closePeer();
    char byte = 'u';
    int size = 1;
    QCOMPARE(velno_network_read(connection.handle, noLimit, &byte, &size), 5);
    QCOMPARE(size, 1);
    QVERIFY(isForgotten(connection.handle));
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

void TestNetwork::disconnectChecksItsArguments()
{
    QCOMPARE(velno_network_disconnect(0), 2);
    QCOMPARE(velno_network_disconnect(unknownHandle), 3);
    const Connection connection;
    QCOMPARE(velno_network_disconnect(unknownHandle), 3);
}

void TestNetwork::disconnectDeliversAndForgets()
{
    const Connection connection;
    QCOMPARE(velno_network_write(connection.handle, patience, "bye", 3), 0);
    QCOMPARE(velno_network_disconnect(connection.handle), 0);
    QCOMPARE(velno_network_disconnect(connection.handle), 3);
    QVERIFY(isForgotten(connection.handle));
    QCOMPARE(readFrom(*connection.peer, 3), QByteArray("bye"));
    QVERIFY(connection.peer->state() == QAbstractSocket::UnconnectedState ||
            connection.peer->waitForDisconnected(int(patience)));
}

void TestNetwork::disconnectOfAClosedConnection()
{
    const Connection connection;
    connection.resetPeer();
    QCOMPARE(velno_network_disconnect(connection.handle), 3);
    QVERIFY(isForgotten(connection.handle));
}

void TestNetwork::disconnectGivesUpOnAPeerThatDoesNotRead()
{
    const Connection connection;
    const QByteArray tooMuch(64 << 20, 'w');
    QCOMPARE(velno_network_write(connection.handle, 0, tooMuch.constData(), int(tooMuch.size())), 7);
    QCOMPARE(velno_network_disconnect(connection.handle), 0); // after its ten seconds
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

void TestNetwork::twoPeersDoNotMix()
{
    const Connection first;
    const Connection second;
    first.send("for the first");
    second.send("for the second");
    QCOMPARE(readBytes(second.handle, 14), QByteArray("for the second"));
    QCOMPARE(readBytes(first.handle, 13), QByteArray("for the first"));
    QCOMPARE(velno_network_write(first.handle, patience, "1", 1), 0);
    QCOMPARE(velno_network_write(second.handle, patience, "2", 1), 0);
    QCOMPARE(readFrom(*first.peer, 1), QByteArray("1"));
    QCOMPARE(readFrom(*second.peer, 1), QByteArray("2"));

    QCOMPARE(velno_network_disconnect(first.handle), 0);
    QCOMPARE(localAddress(second.handle), 0);
}

void TestNetwork::closeUnderAnEventLoopLeavesAStaleEntry()
{
    using Call = std::function<int(unsigned int)>;
    char byte = 'u';
    int size = 1;
    const std::array<std::pair<Call, int>, 5> calls = {{
        {[](unsigned int handle) { return velno_network_write(handle, 0, "x", 1); }, 5},
        {[&](unsigned int handle) { return velno_network_read(handle, 0, &byte, &size); }, 5},
        {[](unsigned int handle) { return localAddress(handle); }, 6},
        {velno_network_disconnect, 3},
        {velno_set_connection, 1},
    }};
    const Receiver receiver;
    for (const auto &[call, status] : calls) {
        const Connection connection;
        // Half a close; the other half comes from our end, once the event loop has told it.
        shutdown(int(connection.peer->socketDescriptor()), SHUT_WR);
        QTRY_COMPARE_WITH_TIMEOUT(connection.peer->state(), QAbstractSocket::UnconnectedState, int(patience));
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QCOMPARE(call(connection.handle), status);
        QVERIFY(isForgotten(connection.handle));
    }
    QVERIFY(!received);
}

void TestNetwork::acceptedConnectionStaysUnderAnEventLoop()
{
    const quint16 port = freePort();
    std::atomic<bool> answered = false;
    const CallingPeer peer(QHostAddress::LocalHost, port, [&](QTcpSocket &socket) {
        // Half a close; the other half comes from our end, once the event loop has told it.
        shutdown(int(socket.socketDescriptor()), SHUT_WR);
        answered = socket.waitForDisconnected(int(patience));
    });
    unsigned int handle = 0;
    QCOMPARE(velno_network_accept("127.0.0.1", port, int(patience), &handle), 0);
    QTRY_VERIFY_WITH_TIMEOUT(answered, int(patience));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QCOMPARE(localAddress(handle), 5); // known, but closed
    QCOMPARE(localAddress(handle), 6);
}

void TestNetwork::handOverGivesTheOpenSocketAway()
{
    const Receiver receiver;
    const Connection connection;
    connection.send("early");
    QCOMPARE(velno_set_connection(connection.handle), 0);
    QVERIFY(received);
    QVERIFY(!received->parent());
    QCOMPARE(received->state(), QAbstractSocket::ConnectedState);
    QVERIFY(isForgotten(connection.handle));

    QCOMPARE(readFrom(*received, 5), QByteArray("early"));
    received->write("answer");
    received->flush();
    QCOMPARE(readFrom(*connection.peer, 6), QByteArray("answer"));
}

void TestNetwork::handedOverSocketSurvivesThePeersClose()
{
    const Receiver receiver;
    const Connection connection;
    QCOMPARE(velno_set_connection(connection.handle), 0);
    connection.closePeer();
    QVERIFY(received);
    QTRY_COMPARE_WITH_TIMEOUT(received->state(), QAbstractSocket::UnconnectedState, int(patience));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(received);
}

void TestNetwork::handOverNeedsAReceiver()
{
    const Connection connection;
    QCOMPARE(velno_set_connection(connection.handle), 1);
    QCOMPARE(localAddress(connection.handle), 0);
    connection.send("b");
    QCOMPARE(readBytes(connection.handle, 1), QByteArray("b"));
}

void TestNetwork::handOverOfAnUnknownHandle()
{
    const Receiver receiver;
    QCOMPARE(velno_set_connection(0), 1);
    QCOMPARE(velno_set_connection(unknownHandle), 1);
    QVERIFY(!received);
}

void TestNetwork::receiverIsExchanged()
{
    QVERIFY(velno_network_set_receiver(receive) == VelnoConnectionReceiver(nullptr));
    QVERIFY(velno_network_set_receiver(nullptr) == VelnoConnectionReceiver(receive));
    QVERIFY(velno_network_set_receiver(nullptr) == VelnoConnectionReceiver(nullptr));
}

QTEST_GUILESS_MAIN(TestNetwork)
#include "tst_network.moc"
