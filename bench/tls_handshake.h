// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bench/bare_socket.h"

#include <memory>

/**
 * A full TLS 1.2 handshake by DHE-RSA-AES256-SHA256 in the group of the pairing, with the register's RSA
 * credentials: what the same guarantees cost elsewhere. Contexts are kept, sessions are not.
 */
class TlsHandshake
{
public:
    enum class Side { Server, Client };

    TlsHandshake(Side side, const std::string &authority);
    ~TlsHandshake();
    TlsHandshake(const TlsHandshake &) = delete;
    TlsHandshake &operator=(const TlsHandshake &) = delete;

    /** One handshake; true when it succeeded. */
    bool run(const BareSocket &socket);

private:
    struct Kept;
    std::unique_ptr<Kept> m_kept;
    Side m_side;
};
