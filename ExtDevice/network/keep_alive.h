// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace Velno {

constexpr int keepAliveIdle = 30; // s

/**
 * Ends a connection whose peer vanished from the network without closing, a minute after its last sign of
 * life: while a register waits for a cashier, or for the next sale, it says nothing, and only the system can
 * ask whether it is still there.
 *
 * @param idle  seconds of silence after which the system asks for the first time
 */
inline void watchForVanishedPeer(int descriptor, int idle = keepAliveIdle)
{
    constexpr int interval = 10; // s
    constexpr int probes = 3;
    constexpr int unacknowledged = 60'000; // ms
    const auto set = [descriptor](int level, int option, int value) {
        setsockopt(descriptor, level, option, &value, sizeof value);
    };
    set(SOL_SOCKET, SO_KEEPALIVE, 1);
    set(IPPROTO_TCP, TCP_KEEPIDLE, idle);
    set(IPPROTO_TCP, TCP_KEEPINTVL, interval);
    set(IPPROTO_TCP, TCP_KEEPCNT, probes);
    set(IPPROTO_TCP, TCP_USER_TIMEOUT, unacknowledged);
}

} // namespace Velno
