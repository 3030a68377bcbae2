// SPDX-License-Identifier: Apache-2.0

#include "fuzz/loopback.h"

#include "fuzz/fuzz_input.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace Fuzz {

namespace {

sockaddr_in thisComputer(quint16 port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return address;
}

// libFuzzer's alarm comes every few seconds and interrupts whatever call waits just then. On Linux a
// connection goes on being made behind such an end, and the next call waits for it.
template <typename Call>
int untilNotInterrupted(const Call &call)
{
    int result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

} // namespace

Descriptor::~Descriptor()
{
    if (m_number >= 0)
        ::close(m_number);
}

void Descriptor::send(const QByteArray &bytes) const
{
    [[maybe_unused]] const ssize_t sent =
        ::send(m_number, bytes.constData(), size_t(bytes.size()), MSG_NOSIGNAL | MSG_DONTWAIT);
}

QByteArray Descriptor::received() const
{
    QByteArray bytes(64 * 1024, Qt::Uninitialized);
    const ssize_t count = ::recv(m_number, bytes.data(), size_t(bytes.size()), MSG_DONTWAIT);
    bytes.truncate(qsizetype(std::max<ssize_t>(count, 0)));
    return bytes;
}

void Descriptor::endWriting() const
{
    ::shutdown(m_number, SHUT_WR);
}

bool Descriptor::hasEnded() const
{
    std::array<char, 4096> bytes;
    for (;;) {
        const ssize_t count = ::recv(m_number, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (count <= 0)
            return count == 0 || (errno != EAGAIN && errno != EINTR);
    }
}

Listener::Listener(quint16 port)
    : m_socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0))
{
    const int yes = 1;
    ::setsockopt(m_socket.number(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address = thisComputer(port);
    socklen_t size = sizeof address;
    auto *const place = reinterpret_cast<sockaddr *>(&address);
    FUZZ_EXPECT(::bind(m_socket.number(), place, size) == 0 && ::listen(m_socket.number(), 16) == 0 &&
                ::getsockname(m_socket.number(), place, &size) == 0);
    m_port = ntohs(address.sin_port);
}

Descriptor Listener::accept(bool wait) const
{
    if (!wait) {
        const timeval soon{0, 1};
        ::setsockopt(m_socket.number(), SOL_SOCKET, SO_RCVTIMEO, &soon, sizeof soon);
    }
    return Descriptor(
        untilNotInterrupted([&] { return ::accept4(m_socket.number(), nullptr, nullptr, SOCK_CLOEXEC); }));
}

Descriptor connectTo(quint16 port)
{
    Descriptor socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const sockaddr_in address = thisComputer(port);
    const auto *const place = reinterpret_cast<const sockaddr *>(&address);
    FUZZ_EXPECT(untilNotInterrupted([&] { return ::connect(socket.number(), place, sizeof address); }) == 0);
    return socket;
}

} // namespace Fuzz
