#pragma once

#include <QtGlobal>

QT_FORWARD_DECLARE_CLASS(QTcpSocket)

/**
 * A connected socket's bytes past the buffers of QTcpSocket, which keep some 48 KiB for each connection that
 * has ever sent and received and cost more than the system's own calls.
 *
 * Only the usual case is served here. Bytes that QTcpSocket holds already, a peer that has closed, an error,
 * a kernel without room: each of them is answered with "nothing", the socket stays as it was, and
 * QTcpSocket's own functions then find out and say what happened.
 */
namespace Velno {

/** Sends what the kernel takes at once. @return how many bytes that was, 0 for none */
qint64 sendDirectly(const QTcpSocket &socket, const char *data, qint64 size);

/** Reads at most `size` bytes that are in the kernel, without waiting. @return how many, 0 for none */
qint64 receiveDirectly(const QTcpSocket &socket, char *data, qint64 size);

/** The same, but the bytes stay where they are. */
qint64 peekDirectly(const QTcpSocket &socket, char *data, qint64 size);

} // namespace Velno
