// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDeadlineTimer>
#include <QtGlobal>

QT_FORWARD_DECLARE_CLASS(QIODevice)
QT_FORWARD_DECLARE_CLASS(QTcpSocket)

/**
 * The bytes of a connection, which go past the buffers of QTcpSocket: those keep some 48 KiB for each
 * connection that has ever sent and received. What an event loop has put there all the same is read first.
 *
 * The waits end early as interruption.h has it, and none needs an event loop. A socket whose own thread runs
 * none may be lent to another thread. A device that is no socket is one in memory: what it does not have at
 * once never comes, and it takes everything.
 */
namespace Velno {

/** Whether the connection is up, as far as it was noticed. */
bool isConnected(const QIODevice &device);

/** The same, after a look whether the peer has closed: without an event loop nobody else notices. */
bool isStillConnected(QTcpSocket &socket);

/**
 * Reads what is there, waiting only when nothing is. Bytes that came before the peer closed are read.
 *
 * @return how many bytes, at most `size`; 0: nothing came in time, or the connection is no longer up
 */
qint64 receive(QIODevice &device, char *data, qint64 size, const QDeadlineTimer &deadline);

/** The same without waiting; at the end of a connection it is closed. @return how many bytes, 0 for none */
qint64 receiveAtOnce(QIODevice &device, char *data, qint64 size);

/** Hands bytes to the system, and to the device what the system does not take at once. @return false when
 * that refuses them */
bool write(QIODevice &device, const char *data, qint64 size);

/** Waits until the system has taken what the device still holds. @return false also when the peer has closed
 */
bool writeOut(QIODevice &device, const QDeadlineTimer &deadline);

/** Closes once the last bytes have left; those that have not by the deadline are dropped. */
void closeSocket(QTcpSocket &socket, const QDeadlineTimer &deadline);

} // namespace Velno
