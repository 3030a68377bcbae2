// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDeadlineTimer>

QT_FORWARD_DECLARE_CLASS(QHostAddress)

namespace Velno {

/**
 * Opens a TCP connection. In the place of QTcpSocket's own, whose wait cannot be left early.
 *
 * @return a descriptor that is the caller's; otherwise a negative errno, -ETIMEDOUT at the deadline and
 * -EINTR when the wait was ended early
 */
int dial(const QHostAddress &address, quint16 port, const QDeadlineTimer &deadline);

} // namespace Velno
