// SPDX-License-Identifier: Apache-2.0

#include "bench/bare_socket.h"

#include <arpa/inet.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <ctime>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unistd.h>

void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s: %s\n", program_invocation_short_name, what);
    std::exit(1);
}

namespace {

sockaddr_in local(uint16_t port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

} // namespace

BareSocket::BareSocket(int descriptor)
    : m_descriptor(descriptor)
{
    const int on = 1;
    setsockopt(descriptor, IPPROTO_TCP, TCP_NODELAY, &on, sizeof on);
}

BareSocket::~BareSocket()
{
    if (m_descriptor >= 0)
        close(m_descriptor);
}

BareSocket BareSocket::connectTo(uint16_t port)
{
    const sockaddr_in address = local(port);
    for (int attempt = 0; attempt < 10000; ++attempt) {
        const int descriptor = socket(AF_INET, SOCK_STREAM, 0);
        if (connect(descriptor, reinterpret_cast<const sockaddr *>(&address), sizeof address) == 0)
            return BareSocket(descriptor);
        close(descriptor);
        const timespec pause{0, 1000000};
        nanosleep(&pause, nullptr);
    }
    require(false, "nobody listens");
    return BareSocket(-1);
}

void BareSocket::write(const std::string &bytes) const
{
    require(send(m_descriptor, bytes.data(), bytes.size(), MSG_NOSIGNAL) == ssize_t(bytes.size()),
            "a write failed");
}

bool BareSocket::readExactly(char *bytes, size_t size) const
{
    for (size_t done = 0; done < size;) {
        const ssize_t count = recv(m_descriptor, bytes + done, size - done, 0);
        if (count <= 0)
            return false;
        done += size_t(count);
    }
    return true;
}

std::string BareSocket::readFrame() const
{
    unsigned char length[2];
    if (!readExactly(reinterpret_cast<char *>(length), 2))
        return {};
    std::string frame(size_t(length[0] * 256 + length[1]), '\0');
    require(readExactly(frame.data(), frame.size()), "a frame was cut short");
    return frame;
}

BareListener::BareListener(uint16_t port)
    : m_descriptor(socket(AF_INET, SOCK_STREAM, 0))
{
    const int on = 1;
    setsockopt(m_descriptor, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
    sockaddr_in address = local(port);
    socklen_t size = sizeof address;
    require(bind(m_descriptor, reinterpret_cast<const sockaddr *>(&address), size) == 0 &&
                listen(m_descriptor, 8) == 0 &&
                getsockname(m_descriptor, reinterpret_cast<sockaddr *>(&address), &size) == 0,
            "no port to listen on");
    m_port = ntohs(address.sin_port);
}

BareListener::~BareListener()
{
    close(m_descriptor);
}

BareSocket BareListener::accept() const
{
    const int descriptor = ::accept(m_descriptor, nullptr, nullptr);
    require(descriptor >= 0, "nobody connected");
    return BareSocket(descriptor);
}
