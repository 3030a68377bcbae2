// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <optional>

#include <sys/socket.h>

namespace Simulator {

/** Where a program takes lines beside standard input: a TCP port, or a Unix socket. */
struct ControlAddress
{
    sockaddr_storage bytes{};
    socklen_t size = 0;

    const sockaddr *forSystem() const { return reinterpret_cast<const sockaddr *>(&bytes); }

    /** Of a Unix socket; empty for a port. */
    QByteArray path() const;

    /** ADDR:PORT, an IPv6 address in brackets, or the path. */
    QString text() const;
};

/**
 * PORT (of the loopback address 127.0.0.1), ADDR:PORT or [IPV6]:PORT, 0 for any free port; a path is what has
 * a slash in it. Names are not looked up. Nothing for anything else.
 */
std::optional<ControlAddress> controlAddressFrom(const QString &text);

/** What is accepted, for messages. */
QString controlAddressRule();

/** Where a socket listens in fact. */
ControlAddress addressOf(int socket);

} // namespace Simulator
