// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/velno_network.h"

#include "ExtDevice/network/dial.h"
#include "ExtDevice/network/interruption.h"
#include "ExtDevice/network/socket_io.h"
#include "ExtDevice/network/wait_time.h"

#include <QHash>
#include <QHostAddress>
#include <QHostInfo>
#include <QNetworkProxy>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>
#include <poll.h>

using Velno::deadlineAfter;
using Velno::isConnected;

namespace {

constexpr int disconnectTimeout = 10'000;
constexpr unsigned int largestHandle = 0x7FFFFFFF;
constexpr qint64 mostUnread = 64 * 1024; // a peer that talks without being asked cannot fill the memory

// A connected socket may delete itself when the peer closes it: the pointer is then null, its entry stale.
QHash<unsigned int, QPointer<QTcpSocket>> sockets;
std::atomic<VelnoConnectionReceiver> connectionReceiver = nullptr;

unsigned int enter(QTcpSocket *socket)
{
    static unsigned int handle = 0;
    do {
        handle = handle == largestHandle ? 1 : handle + 1;
    } while (sockets.contains(handle));
    socket->setReadBufferSize(mostUnread);
    sockets.insert(handle, socket);
    return handle;
}

QTcpSocket *find(unsigned int handle)
{
    const auto entry = sockets.constFind(handle);
    if (entry == sockets.constEnd())
        return nullptr;
    if (entry.value().isNull()) {
        sockets.erase(entry);
        return nullptr;
    }
    return entry.value();
}

void discard(unsigned int handle)
{
    delete sockets.take(handle).data();
}

/** One that the peer has closed is discarded. */
QTcpSocket *findOpen(unsigned int handle)
{
    QTcpSocket *const socket = find(handle);
    if (!socket || Velno::isStillConnected(*socket))
        return socket;
    discard(handle);
    return nullptr;
}

/** What is wrong with the arguments of a transfer; 0 for nothing. */
int transferFault(unsigned int handle, const void *bytes, int size)
{
    if (handle == 0)
        return 4;
    if (!bytes)
        return 2;
    return size > 0 ? 0 : 3;
}

/** Tries each address of the host. @return as dial() */
int dialHost(const QString &host, quint16 port, const QDeadlineTimer &deadline)
{
    int result = -EHOSTUNREACH;
    // Looking a name up asks the system, which cannot be left early; an address is none.
    const QHostAddress literal(host);
    const auto addresses = literal.isNull() ? QHostInfo::fromName(host).addresses() : QList{literal};
    for (const QHostAddress &address : addresses) {
        result = Velno::dial(address, port, deadline);
        if (result >= 0 || Velno::isWaitOver())
            break;
    }
    return result;
}

/** The first peer that connects in time, owned by the server; null after the deadline or an error. */
QTcpSocket *waitForPeer(QTcpServer &server, const QDeadlineTimer &deadline)
{
    const auto announced = [&] { return Velno::waitFor(int(server.socketDescriptor()), POLLIN, deadline); };
    // A peer that is gone before it is taken leaves nothing to take, and the wait goes on.
    while (announced() &&
           (server.waitForNewConnection(0) || server.serverError() == QAbstractSocket::SocketTimeoutError)) {
        if (QTcpSocket *peer = server.nextPendingConnection())
            return peer;
    }
    return nullptr;
}

} // namespace

int velno_network_connect(const char *host, unsigned short port, unsigned int timeout, unsigned int *handle)
{
    if (!handle)
        return 4;
    if (!host)
        return 2;
    if (port == 0)
        return 3;

    const int descriptor = dialHost(QString::fromLatin1(host), port, deadlineAfter(timeout));
    if (descriptor < 0)
        return descriptor == -ECONNREFUSED || descriptor == -ETIMEDOUT ? 6 : 7;
    auto socket = std::make_unique<QTcpSocket>();
    QObject::connect(socket.get(), &QTcpSocket::disconnected, socket.get(), &QObject::deleteLater);
    socket->setSocketDescriptor(descriptor);
    *handle = enter(socket.release());
    return 0;
}

int velno_network_accept(const char *address, unsigned short port, int timeout, unsigned int *handle)
{
    if (!address)
        return 2;
    if (port == 0)
        return 3;
    if (!handle)
        return 4;
    const QHostAddress localAddress(QString::fromLatin1(address));
    if (localAddress.isNull())
        return 5;

    QTcpServer server;
    server.setProxy(QNetworkProxy::NoProxy);
    if (!server.listen(localAddress, port))
        return server.serverError() == QAbstractSocket::AddressInUseError ? 6 : 8;
    const QDeadlineTimer deadline = deadlineAfter(unsigned(timeout));
    QTcpSocket *const socket = waitForPeer(server, deadline);
    if (!socket)
        return deadline.hasExpired() ? 7 : 8;

    socket->setParent(nullptr);
    socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    *handle = enter(socket);
    return 0;
}

int velno_network_write(unsigned int handle, unsigned int timeout, const char *data, int size)
{
    if (const int fault = transferFault(handle, data, size); fault != 0)
        return fault;
    QTcpSocket *const socket = findOpen(handle);
    if (!socket)
        return 5;
    if (!Velno::write(*socket, data, size))
        return 6;
    if (Velno::writeOut(*socket, deadlineAfter(timeout)))
        return 0;
    if (!isConnected(*socket))
        discard(handle);
    return 7;
}

int velno_network_read(unsigned int handle, unsigned int timeout, char *buffer, int *size)
{
    if (const int fault = transferFault(handle, buffer, size ? *size : 0); fault != 0)
        return fault;
    QTcpSocket *const socket = find(handle);
    if (!socket)
        return 5;

    const qint64 count = Velno::receive(*socket, buffer, *size, deadlineAfter(timeout));
    if (count == 0 && isConnected(*socket))
        return 6;
    if (count == 0) {
        discard(handle);
        return 5;
    }
    *size = int(count);
    return 0;
}

int velno_network_local_address(unsigned int handle, char *buffer, int *size)
{
    if (const int fault = transferFault(handle, buffer, size ? *size : 0); fault != 0)
        return fault;
    if (!find(handle))
        return 6;
    const QTcpSocket *const socket = findOpen(handle);
    if (!socket)
        return 5;
    const QByteArray text = socket->localAddress().toString().toLatin1();
    if (*size <= text.size())
        return 5;
    std::copy(text.cbegin(), text.cend(), buffer);
    *size = int(text.size());
    return 0;
}

int velno_network_disconnect(unsigned int handle)
{
    if (handle == 0)
        return 2;
    QTcpSocket *const socket = findOpen(handle);
    if (!socket)
        return 3;
    Velno::closeSocket(*socket, QDeadlineTimer(disconnectTimeout));
    discard(handle);
    return 0;
}

int velno_set_connection(unsigned int handle)
{
    QTcpSocket *const socket = find(handle);
    const VelnoConnectionReceiver receiver = connectionReceiver;
    if (!socket || !receiver)
        return 1;
    sockets.remove(handle);
    QObject::disconnect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
    receiver(socket);
    return 0;
}

VelnoConnectionReceiver velno_network_set_receiver(VelnoConnectionReceiver receiver)
{
    return connectionReceiver.exchange(receiver);
}
