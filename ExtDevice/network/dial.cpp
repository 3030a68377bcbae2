// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/dial.h"

#include "ExtDevice/network/interruption.h"

#include <QHostAddress>
#include <QNetworkInterface>
#include <QtEndian>

#include <cerrno>
#include <cstring>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Velno {

namespace {

/** The interface that a link-local address names, by its number or its name; 0 for none. */
quint32 scopeOf(const QString &scope)
{
    bool isNumber = false;
    const quint32 number = scope.toUInt(&isNumber);
    return isNumber ? number : quint32(QNetworkInterface::interfaceIndexFromName(scope));
}

/** A place in the network as the system takes it. */
struct Place
{
    Place(const QHostAddress &address, quint16 port)
    {
        if (address.protocol() == QAbstractSocket::IPv4Protocol) {
            family = AF_INET;
            size = sizeof ipv4;
            ipv4.sin_family = AF_INET;
            ipv4.sin_port = qToBigEndian(port);
            ipv4.sin_addr.s_addr = qToBigEndian(address.toIPv4Address());
        } else {
            const Q_IPV6ADDR bytes = address.toIPv6Address();
            ipv6.sin6_family = AF_INET6;
            ipv6.sin6_port = qToBigEndian(port);
            ipv6.sin6_scope_id = scopeOf(address.scopeId());
            std::memcpy(&ipv6.sin6_addr, &bytes, sizeof bytes);
        }
    }

    int family = AF_INET6;
    socklen_t size = sizeof ipv6;
    sockaddr_in ipv4{};
    sockaddr_in6 ipv6{};

    const sockaddr *get() const
    {
        const void *const place = family == AF_INET ? static_cast<const void *>(&ipv4) : &ipv6;
        return static_cast<const sockaddr *>(place);
    }
};

/** @return 0 or an errno */
int finish(int descriptor, const QDeadlineTimer &deadline)
{
    if (!waitFor(descriptor, POLLOUT, deadline))
        return deadline.hasExpired() ? ETIMEDOUT : EINTR;
    int error = 0;
    socklen_t size = sizeof error;
    return getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &size) == 0 ? error : errno;
}

} // namespace

int dial(const QHostAddress &address, quint16 port, const QDeadlineTimer &deadline)
{
    const Place place(address, port);
    const int descriptor = ::socket(place.family, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return -errno;
    int error = ::connect(descriptor, place.get(), place.size) == 0 ? 0 : errno;
    if (error == EINPROGRESS || error == EINTR)
        error = finish(descriptor, deadline);
    if (error == 0)
        return descriptor;
    ::close(descriptor);
    return -error;
}

} // namespace Velno
