// SPDX-License-Identifier: Apache-2.0

#include "simulator/relay/relay_connection.h"

#include "ExtDevice/network/keep_alive.h"

#include <array>
#include <cerrno>
#include <fcntl.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Simulator {

namespace {

/** What a call came to that is done again when the poller says so. */
qint64 progress(ssize_t result)
{
    if (result >= 0)
        return result;
    return errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR ? 0 : -1;
}

} // namespace

RelayConnection::RelayConnection(int socket, Poller::Key key, Poller &poller)
    : m_socket(socket)
    , m_key(key)
    , m_poller(poller)
{
    fcntl(socket, F_SETFL, fcntl(socket, F_GETFL) | O_NONBLOCK);
    const int on = 1;
    setsockopt(socket, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
    Velno::watchForVanishedPeer(socket); // a register that waits says nothing for hours
}

RelayConnection::~RelayConnection()
{
    watch(0);
    ::close(m_socket);
}

void RelayConnection::watch(quint32 events)
{
    m_poller.change(m_socket, m_key, m_watched, events);
    m_watched = events;
}

RelayConnection::Naming RelayConnection::readName()
{
    std::array<char, nameSize> bytes;
    const qint64 count = read(bytes.data(), nameSize - m_name.size());
    if (count < 0)
        return Naming::Ended;
    m_name.append(bytes.data(), qsizetype(count));
    return m_name.size() == nameSize ? Naming::Complete : Naming::Unfinished;
}

qint64 RelayConnection::read(char *bytes, qint64 most)
{
    const ssize_t count = ::recv(m_socket, bytes, size_t(most), 0);
    return count == 0 ? -1 : progress(count);
}

qint64 RelayConnection::write(const char *bytes, qint64 count)
{
    return progress(::send(m_socket, bytes, size_t(count), MSG_NOSIGNAL));
}

void RelayConnection::endWriting()
{
    ::shutdown(m_socket, SHUT_WR);
}

} // namespace Simulator
