// SPDX-License-Identifier: Apache-2.0

#include "tests/support/network_peers.h"

#include "ExtDevice/network/velno_network.h"

#include <QDeadlineTimer>
#include <QTcpServer>

#include <algorithm>
#include <array>
#include <sys/socket.h>

namespace TestSupport {

Connection::Connection(QHostAddress::SpecialAddress address)
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

Connection::~Connection()
{
    if (peer)
        peer->abort();
    velno_network_disconnect(handle);
}

void Connection::resetPeer() const
{
    const linger immediately = {1, 0};
    setsockopt(int(peer->socketDescriptor()), SOL_SOCKET, SO_LINGER, &immediately, sizeof(immediately));
    peer->abort();
}

CallingPeer::CallingPeer(const QHostAddress &address, quint16 port, std::function<void(QTcpSocket &)> work)
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

Receiver::Receiver()
{
    velno_network_set_receiver(receive);
}

Receiver::~Receiver()
{
    velno_network_set_receiver(nullptr);
    delete received.data();
}

void receive(QTcpSocket *socket)
{
    received = socket;
}

void stayUntilClosed(QTcpSocket &socket)
{
    socket.waitForDisconnected(int(patience));
}

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

int localAddress(unsigned int handle, QByteArray *text)
{
    std::array<char, 64> buffer{};
    int size = int(buffer.size());
    const int status = velno_network_local_address(handle, buffer.data(), &size);
    if (text)
        *text = QByteArray(buffer.data(), size);
    return status;
}

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

} // namespace TestSupport
