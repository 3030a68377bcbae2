// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QHostAddress>
#include <QList>
#include <QString>

namespace Velno {

/** A network interface by which a register can reach this computer. */
struct LocalInterface
{
    QString hardwareAddress;       ///< hexadecimal digits without colons, 12 for Ethernet; empty without one
    QList<QHostAddress> addresses; ///< IPv4, in the system's order; never empty
};

/** Those that are up, are not the loopback and have an IPv4 address, in the system's order. The first one's
 * hardware address names this computer. */
QList<LocalInterface> localInterfaces();

} // namespace Velno
