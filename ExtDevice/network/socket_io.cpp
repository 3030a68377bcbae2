// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/socket_io.h"

#include "ExtDevice/network/interruption.h"

#include <QTcpSocket>

#include <algorithm>
#include <cerrno>
#include <poll.h>
#include <sys/socket.h>

namespace Velno {

namespace {

int descriptorOf(const QTcpSocket &socket)
{
    return int(socket.socketDescriptor());
}

/** What the system has; a socket at the end of its connection is closed. @return bytes, 0 for none */
qint64 take(QTcpSocket &socket, char *data, qint64 size, int flags)
{
    if (!isConnected(socket))
        return 0;
    const ssize_t count = ::recv(descriptorOf(socket), data, size_t(size), flags | MSG_DONTWAIT);
    if (count == 0 || (count < 0 && errno != EAGAIN && errno != EINTR))
        socket.abort();
    return std::max<qint64>(count, 0);
}

} // namespace

bool isConnected(const QIODevice &device)
{
    const auto *const socket = qobject_cast<const QTcpSocket *>(&device);
    return socket ? socket->state() == QAbstractSocket::ConnectedState : device.isOpen();
}

bool isStillConnected(QTcpSocket &socket)
{
    char byte = 0;
    if (socket.bytesAvailable() == 0)
        take(socket, &byte, sizeof byte, MSG_PEEK);
    return isConnected(socket);
}

qint64 receiveAtOnce(QIODevice &device, char *data, qint64 size)
{
    auto *const socket = qobject_cast<QTcpSocket *>(&device);
    if (socket && socket->bytesAvailable() == 0)
        return take(*socket, data, size, 0);
    return std::max<qint64>(device.read(data, size), 0);
}

qint64 receive(QIODevice &device, char *data, qint64 size, const QDeadlineTimer &deadline)
{
    auto *const socket = qobject_cast<QTcpSocket *>(&device);
    if (!socket || socket->bytesAvailable() > 0)
        return receiveAtOnce(device, data, size);
    while (isConnected(*socket) && waitFor(descriptorOf(*socket), POLLIN, deadline)) {
        if (const qint64 count = take(*socket, data, size, 0); count > 0)
            return count;
    }
    return 0;
}

bool write(QIODevice &device, const char *data, qint64 size)
{
    const auto *const socket = qobject_cast<const QTcpSocket *>(&device);
    qint64 sent = 0;
    if (socket && isConnected(*socket) && socket->bytesToWrite() == 0)
        sent = std::max<qint64>(
            ::send(descriptorOf(*socket), data, size_t(size), MSG_DONTWAIT | MSG_NOSIGNAL), 0);
    return sent == size || device.write(data + sent, size - sent) == size - sent;
}

bool writeOut(QIODevice &device, const QDeadlineTimer &deadline)
{
    auto *const socket = qobject_cast<QTcpSocket *>(&device);
    while (socket && socket->bytesToWrite() > 0) {
        socket->flush();
        if (socket->bytesToWrite() > 0 &&
            (!isConnected(*socket) || !waitFor(descriptorOf(*socket), POLLOUT, deadline)))
            return false;
    }
    return isConnected(device);
}

void closeSocket(QTcpSocket &socket, const QDeadlineTimer &deadline)
{
    writeOut(socket, deadline);
    socket.disconnectFromHost();
    if (socket.state() != QAbstractSocket::UnconnectedState)
        socket.abort();
}

} // namespace Velno
