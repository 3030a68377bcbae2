// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "bench/bare_socket.h"

#include <memory>

/**
 * The pairing conversation written straight down on sockets and OpenSSL, with every OpenSSL object kept from
 * one pairing to the next: what a pairing must cost at least. The same messages, the same checks.
 */
class BarePairing
{
public:
    /** @param authority  folder of the development authority */
    explicit BarePairing(const std::string &authority);
    ~BarePairing();
    BarePairing(const BarePairing &) = delete;
    BarePairing &operator=(const BarePairing &) = delete;

    /** The application's side of one pairing; true when it has paired. */
    bool request(const BareSocket &socket);

    /** The register's side, until the peer closes. */
    void respond(const BareSocket &socket);

private:
    struct Kept;
    std::unique_ptr<Kept> m_kept;
};
