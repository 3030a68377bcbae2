#pragma once

#include <QDeadlineTimer>

QT_FORWARD_DECLARE_CLASS(QTcpSocket)

/**
 * The waits of a socket, in the place of QTcpSocket's own: these end early as interruption.h has it. None
 * needs an event loop.
 */
namespace Velno {

bool isConnected(const QTcpSocket &socket);

/** Waits until there is something to read: bytes, or the news that the peer has closed. @return false
 * otherwise; at once when the socket is not connected and holds no bytes */
bool waitUntilReadable(const QTcpSocket &socket, const QDeadlineTimer &deadline);

/** Waits until the system has taken what the socket still holds. @return false also when the peer has closed
 */
bool writeOut(QTcpSocket &socket, const QDeadlineTimer &deadline);

/** Closes once the last bytes have left; those that have not by the deadline are dropped. */
void closeSocket(QTcpSocket &socket, const QDeadlineTimer &deadline);

} // namespace Velno
