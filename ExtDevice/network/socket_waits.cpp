#include "ExtDevice/network/socket_waits.h"

#include "ExtDevice/network/interruption.h"

#include <QTcpSocket>

#include <poll.h>

namespace Velno {

namespace {

int descriptorOf(const QTcpSocket &socket)
{
    return int(socket.socketDescriptor());
}

} // namespace

bool isConnected(const QTcpSocket &socket)
{
    return socket.state() == QAbstractSocket::ConnectedState;
}

bool waitUntilReadable(const QTcpSocket &socket, const QDeadlineTimer &deadline)
{
    if (socket.bytesAvailable() > 0)
        return true;
    return isConnected(socket) && waitFor(descriptorOf(socket), POLLIN, deadline);
}

bool writeOut(QTcpSocket &socket, const QDeadlineTimer &deadline)
{
    socket.flush();
    while (socket.bytesToWrite() > 0) {
        if (!isConnected(socket) || !waitFor(descriptorOf(socket), POLLOUT, deadline))
            return false;
        socket.flush();
    }
    return isConnected(socket);
}

void closeSocket(QTcpSocket &socket, const QDeadlineTimer &deadline)
{
    writeOut(socket, deadline);
    socket.disconnectFromHost();
    if (socket.state() != QAbstractSocket::UnconnectedState)
        socket.abort();
}

} // namespace Velno
