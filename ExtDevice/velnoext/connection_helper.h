// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

QT_FORWARD_DECLARE_CLASS(QIODevice)

namespace Velno::Ext {

/** The largest payload that is read: far more than a GMP3 frame can hold. */
constexpr qint64 largestPayload = 1024 * 1024;

/** Closes a TCP connection, waiting up to 30 s for it; one that is only being opened is aborted. */
void disconnectFromDevice(QIODevice *device);

/**
 * All work on connections, under the lock: what makes or ends them on connectionThread, sending and receiving
 * on the thread of the call as well.
 *
 * A device frame: 4 bytes payload length, big-endian, and the payload. The payload DE AD BE EF is a
 * keep-alive of the register.
 *
 * A send or receive whose wait was ended early, by velnoext_interrupt() or the limit of an answer, closes the
 * connection: a late answer could be taken for that to the next command.
 */
class ConnectionHelper
{
public:
    /** velnoext_initialize() behind its checks of the arguments. @return a Result; sets errorDetail */
    static int connectToDevice(const QByteArray &serialNo, const char *address, quint16 port,
                               quint32 timeout);

    /** Closes and deletes a register's connection, waiting up to 30 s for its last bytes to leave. */
    static void closeConnection(const QByteArray &serialNo);

    /** Throws away what waits unread, then sends one frame. @return whether it was written out within 2 s */
    static bool send(QIODevice *s, const QByteArray &data);

    /**
     * Receives one payload, skipping keep-alives. Nothing but those is consumed on false.
     *
     * @param timeout  ms for each wait behind the frame's first byte; that one is waited for up to the limit
     *                 of an answer, which holds for all waits together
     */
    static bool receive(quint32 timeout, QIODevice *s, QByteArray *data);
};

} // namespace Velno::Ext
