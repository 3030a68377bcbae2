// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/control_address.h"

#include "simulator/common/numbers.h"
#include "translations/spoken.h"

#include <QRegularExpression>

#include <arpa/inet.h>
#include <array>
#include <cstring>
#include <netinet/in.h>
#include <sys/un.h>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr qint64 mostPort = 65535;
constexpr qsizetype longestPath = sizeof(sockaddr_un::sun_path) - 1; // a zero stands behind it

template <typename Address>
ControlAddress asStored(const Address &address)
{
    ControlAddress stored;
    std::memcpy(&stored.bytes, &address, sizeof address);
    stored.size = sizeof address;
    return stored;
}

template <typename Address>
Address asTyped(const ControlAddress &stored)
{
    Address address{};
    std::memcpy(&address, &stored.bytes, sizeof address);
    return address;
}

std::optional<ControlAddress> unixAddress(const QString &path)
{
    const QByteArray name = path.toUtf8();
    if (name.size() > longestPath || name.contains('\0'))
        return std::nullopt;
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.constData(), size_t(name.size()));
    return asStored(address);
}

std::optional<ControlAddress> ipv4Address(const QByteArray &host, quint16 port)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    return inet_pton(AF_INET, host.constData(), &address.sin_addr) == 1 ? std::optional(asStored(address))
                                                                        : std::nullopt;
}

std::optional<ControlAddress> ipv6Address(const QByteArray &host, quint16 port)
{
    sockaddr_in6 address{};
    address.sin6_family = AF_INET6;
    address.sin6_port = htons(port);
    return inet_pton(AF_INET6, host.constData(), &address.sin6_addr) == 1 ? std::optional(asStored(address))
                                                                          : std::nullopt;
}

} // namespace

QByteArray ControlAddress::path() const
{
    return bytes.ss_family == AF_UNIX ? QByteArray(asTyped<sockaddr_un>(*this).sun_path) : QByteArray();
}

QString ControlAddress::text() const
{
    std::array<char, INET6_ADDRSTRLEN> host{};
    if (bytes.ss_family == AF_UNIX)
        return QString::fromUtf8(path());
    if (bytes.ss_family == AF_INET6) {
        const auto address = asTyped<sockaddr_in6>(*this);
        inet_ntop(AF_INET6, &address.sin6_addr, host.data(), host.size());
        return u"[%1]:%2"_s.arg(QLatin1StringView(host.data())).arg(ntohs(address.sin6_port));
    }
    const auto address = asTyped<sockaddr_in>(*this);
    inet_ntop(AF_INET, &address.sin_addr, host.data(), host.size());
    return u"%1:%2"_s.arg(QLatin1StringView(host.data())).arg(ntohs(address.sin_port));
}

std::optional<ControlAddress> controlAddressFrom(const QString &text)
{
    if (text.contains(u'/'))
        return unixAddress(text);
    static const QRegularExpression rule(u"\\A(?:(?:\\[([0-9A-Fa-f:.]+)\\]|([0-9.]+)):)?([0-9]{1,5})\\z"_s);
    const QRegularExpressionMatch match = rule.match(text);
    const auto port = numberBetween(match.captured(3), 0, mostPort);
    if (!match.hasMatch() || !port)
        return std::nullopt;
    if (const QString ipv6 = match.captured(1); !ipv6.isEmpty())
        return ipv6Address(ipv6.toLatin1(), quint16(*port));
    const QByteArray ipv4 = match.captured(2).toLatin1();
    return ipv4Address(ipv4.isEmpty() ? "127.0.0.1"_ba : ipv4, quint16(*port));
}

QString controlAddressRule()
{
    return Spoken::tr(
               "PORT, ADDR:PORT or [IPV6]:PORT with a port of 0 to 65535, or the path of a Unix socket: "
               "with a /, up to %1 bytes")
        .arg(longestPath);
}

ControlAddress addressOf(int socket)
{
    ControlAddress address;
    address.size = sizeof address.bytes;
    getsockname(socket, reinterpret_cast<sockaddr *>(&address.bytes), &address.size);
    return address;
}

} // namespace Simulator
