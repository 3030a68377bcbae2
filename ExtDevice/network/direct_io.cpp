#include "ExtDevice/network/direct_io.h"

#include "ExtDevice/network/socket_waits.h"

#include <QTcpSocket>

#include <algorithm>
#include <sys/socket.h>

namespace Velno {

namespace {

qint64 receive(const QTcpSocket &socket, char *data, qint64 size, int flags)
{
    if (!isConnected(socket) || socket.bytesAvailable() > 0)
        return 0;
    const ssize_t count = recv(int(socket.socketDescriptor()), data, size_t(size), flags | MSG_DONTWAIT);
    return std::max<qint64>(count, 0);
}

} // namespace

qint64 sendDirectly(const QTcpSocket &socket, const char *data, qint64 size)
{
    if (!isConnected(socket) || socket.bytesToWrite() > 0)
        return 0;
    const ssize_t count =
        send(int(socket.socketDescriptor()), data, size_t(size), MSG_DONTWAIT | MSG_NOSIGNAL);
    return std::max<qint64>(count, 0);
}

qint64 receiveDirectly(const QTcpSocket &socket, char *data, qint64 size)
{
    return receive(socket, data, size, 0);
}

qint64 peekDirectly(const QTcpSocket &socket, char *data, qint64 size)
{
    return receive(socket, data, size, MSG_PEEK);
}

} // namespace Velno
