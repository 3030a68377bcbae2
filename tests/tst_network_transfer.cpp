// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/velno_network.h"
#include "tests/support/network_peers.h"
#include "tests/support/test_support.h"

#include <QHostAddress>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include <array>
#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <sys/socket.h>

using namespace TestSupport;

namespace {

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

} // namespace

/** Connections under handles: what travels over them, and how they end or are handed over. */
class TestNetworkTransfer : public QObject
{
    Q_OBJECT

private slots:
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
    void disconnectChecksItsArguments();
    void disconnectDeliversAndForgets();
    void disconnectOfAClosedConnection();
    void disconnectGivesUpOnAPeerThatDoesNotRead();
    void twoPeersDoNotMix();
    void closeUnderAnEventLoopLeavesAStaleEntry();
    void acceptedConnectionStaysUnderAnEventLoop();
    void handOverGivesTheOpenSocketAway();
    void handedOverSocketSurvivesThePeersClose();
    void handOverNeedsAReceiver();
    void handOverOfAnUnknownHandle();
    void receiverIsExchanged();
};

void TestNetworkTransfer::writeChecksItsArgumentsInOrder()
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

void TestNetworkTransfer::writeSendsEveryByte()
{
    const Connection connection;
    QCOMPARE(velno_network_write(connection.handle, patience, "first\0 ", 7), 0);
    QCOMPARE(velno_network_write(connection.handle, noLimit, "second", 6), 0);
    QCOMPARE(readFrom(*connection.peer, 13), QByteArray("first\0 second", 13));
}

void TestNetworkTransfer::writeAfterThePeersCloseFails()
{
    const Connection connection;
    connection.closePeer();
    QCOMPARE(firstFailure([&] { return velno_network_write(connection.handle, patience, "x", 1); }), 5);
    QVERIFY(isForgotten(connection.handle));
}

void TestNetworkTransfer::writeTimesOutAndKeepsTheConnection()
{
    const Connection connection;
    const QByteArray tooMuch(64 << 20, 'w'); // more than both systems' buffers hold
    QCOMPARE(velno_network_write(connection.handle, 50, tooMuch.constData(), int(tooMuch.size())), 7);
    QCOMPARE(localAddress(connection.handle), 0);
}

void TestNetworkTransfer::writeIsCutShortByThePeersClose()
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

void TestNetworkTransfer::writeGoesOnUntilTheLastByte()
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

void TestNetworkTransfer::writeToAPeerThatOnlyTalksFillsNoMemory_data()
{
    QTest::addColumn<bool>("accepted");
    QTest::newRow("connected") << false;
    QTest::newRow("accepted") << true;
}

void TestNetworkTransfer::writeToAPeerThatOnlyTalksFillsNoMemory()
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

void TestNetworkTransfer::readChecksItsArgumentsInOrder()
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

void TestNetworkTransfer::readTakesWhatFits()
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

void TestNetworkTransfer::readWaitsForBytes_data()
{
    QTest::addColumn<unsigned int>("timeout");
    QTest::newRow("ten seconds") << patience;
    QTest::newRow("beyond signed") << 0x80000000U;
    QTest::newRow("no limit") << noLimit;
}

void TestNetworkTransfer::readWaitsForBytes()
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

void TestNetworkTransfer::readTimesOutAndKeepsTheConnection()
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

void TestNetworkTransfer::readGivesTheBytesBeforeTheClose()
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

void TestNetworkTransfer::readEndsWhenThePeerCloses_data()
{
    QTest::addColumn<bool>("reset");
    QTest::newRow("closed") << false;
    QTest::newRow("reset") << true;
}

void TestNetworkTransfer::readEndsWhenThePeerCloses()
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

void TestNetworkTransfer::disconnectChecksItsArguments()
{
    QCOMPARE(velno_network_disconnect(0), 2);
    QCOMPARE(velno_network_disconnect(unknownHandle), 3);
    const Connection connection;
    QCOMPARE(velno_network_disconnect(unknownHandle), 3);
}

void TestNetworkTransfer::disconnectDeliversAndForgets()
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

void TestNetworkTransfer::disconnectOfAClosedConnection()
{
    const Connection connection;
    connection.resetPeer();
    QCOMPARE(velno_network_disconnect(connection.handle), 3);
    QVERIFY(isForgotten(connection.handle));
}

void TestNetworkTransfer::disconnectGivesUpOnAPeerThatDoesNotRead()
{
    const Connection connection;
    const QByteArray tooMuch(64 << 20, 'w');
    QCOMPARE(velno_network_write(connection.handle, 0, tooMuch.constData(), int(tooMuch.size())), 7);
    QCOMPARE(velno_network_disconnect(connection.handle), 0); // after its ten seconds
    QVERIFY(isForgotten(connection.handle));
}

void TestNetworkTransfer::twoPeersDoNotMix()
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

void TestNetworkTransfer::closeUnderAnEventLoopLeavesAStaleEntry()
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

void TestNetworkTransfer::acceptedConnectionStaysUnderAnEventLoop()
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

void TestNetworkTransfer::handOverGivesTheOpenSocketAway()
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

void TestNetworkTransfer::handedOverSocketSurvivesThePeersClose()
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

void TestNetworkTransfer::handOverNeedsAReceiver()
{
    const Connection connection;
    QCOMPARE(velno_set_connection(connection.handle), 1);
    QCOMPARE(localAddress(connection.handle), 0);
    connection.send("b");
    QCOMPARE(readBytes(connection.handle, 1), QByteArray("b"));
}

void TestNetworkTransfer::handOverOfAnUnknownHandle()
{
    const Receiver receiver;
    QCOMPARE(velno_set_connection(0), 1);
    QCOMPARE(velno_set_connection(unknownHandle), 1);
    QVERIFY(!received);
}

void TestNetworkTransfer::receiverIsExchanged()
{
    QVERIFY(velno_network_set_receiver(receive) == VelnoConnectionReceiver(nullptr));
    QVERIFY(velno_network_set_receiver(nullptr) == VelnoConnectionReceiver(receive));
    QVERIFY(velno_network_set_receiver(nullptr) == VelnoConnectionReceiver(nullptr));
}

QTEST_GUILESS_MAIN(TestNetworkTransfer)
#include "tst_network_transfer.moc"
