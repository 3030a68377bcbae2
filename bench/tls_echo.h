// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QSslSocket>

#include <string>

/** Sends what comes over TLS 1.2 back, to one peer after the other, with the register's RSA credentials. */
[[noreturn]] void serveTlsEcho(quint16 port, const std::string &authority);

/** The other end: sends a plaintext, waits for as many bytes. */
class TlsEchoClient
{
public:
    TlsEchoClient(quint16 port, const std::string &authority);

    bool echo(const QByteArray &plaintext);

private:
    QSslSocket m_socket;
};
