#pragma once

#include <QByteArray>
#include <QObject>

QT_FORWARD_DECLARE_CLASS(QIODevice)

namespace Velno::Ext {

/** The largest payload that is read: far more than a GMP3 frame can hold. */
constexpr qint64 largestPayload = 1024 * 1024;

/**
 * Lives on connectionThread and does there all work on sockets. Its slots run only while the caller waits.
 *
 * A device frame: 4 bytes payload length, big-endian, and the payload. The payload DE AD BE EF is a
 * keep-alive of the register.
 */
class ConnectionHelper : public QObject
{
    Q_OBJECT

public:
    /** velnoext_initialize() behind its checks of the arguments. @return a Result; sets errorDetail */
    Q_INVOKABLE int connectToDevice(QByteArray serialNo, const char *address, quint16 port, quint32 timeout);

    /** Closes and deletes a register's connection, waiting up to 30 s for its last bytes to leave. */
    Q_INVOKABLE void closeConnection(QByteArray serialNo);

    /** Throws away what waits unread, then sends one frame. @return whether it was written out within 2 s */
    Q_INVOKABLE bool send(QIODevice *s, QByteArray data);

    /**
     * Receives one payload, skipping keep-alives. Nothing but those is consumed on false.
     *
     * @param timeout  ms for each wait behind the frame's first byte; that one is waited for without limit
     */
    Q_INVOKABLE bool receive(quint32 timeout, QIODevice *s, QByteArray *data);
};

} // namespace Velno::Ext
