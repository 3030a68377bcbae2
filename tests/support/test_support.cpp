// SPDX-License-Identifier: Apache-2.0

#include "tests/support/test_support.h"

#include <QNetworkProxy>
#include <QRandomGenerator>
#include <QTcpServer>

#include <atomic>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// Ports below those that systems give to outgoing connections. One of these could be taken by somebody's
// connection, or by what is left of one, before the test listens.
constexpr quint16 lowest = 10'000;
constexpr int programs = 200;
constexpr int portsEach = 100;

/** Holds the UDP port of this number until the process ends. @return false when another process does */
bool hold(quint16 port)
{
    const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    if (::bind(socket, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
        return true;
    ::close(socket);
    return false;
}

/** The first of the ports that are this process's own: a register that looks for its application must never
 * find that of a test which runs beside this one. */
quint16 firstPort()
{
    for (int i = 0; i < 100 * programs; ++i) {
        const auto port = quint16(lowest + portsEach * QRandomGenerator::system()->bounded(programs));
        if (hold(port))
            return port;
    }
    qFatal("no free ports");
}

} // namespace

quint16 TestSupport::freePort()
{
    static const quint16 first = firstPort();
    static std::atomic<unsigned int> count = 0;
    QTcpServer server;
    server.setProxy(QNetworkProxy::NoProxy);
    for (int i = 0; i < portsEach; ++i) {
        const auto port = quint16(first + count++ % portsEach);
        if (server.listen(QHostAddress::Any, port))
            return port;
    }
    qFatal("no free port");
}
