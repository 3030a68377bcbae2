// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QElapsedTimer>
#include <QTcpSocket>
#include <QTimer>

namespace Simulator {

/**
 * What a connection is for. Its first two bytes tell: a key exchange begins with the 2-byte length of a
 * frame, never less than that of an empty one; a connection for commands begins with a 4-byte length, and as
 * no frame is much longer than 65,535 bytes, with 00 00 or 00 01.
 */
enum class Purpose { Unknown, KeyExchange, Commands };

/**
 * One connection at a time to the other side: connects again and again, cuts what arrives into frames, sends
 * bytes. A connection for commands may be silent for hours; TCP keep-alive ends it, within about a minute,
 * when the other side has vanished. Lives on one thread with an event loop and never blocks.
 */
class Wire : public QObject
{
    Q_OBJECT

public:
    explicit Wire(QObject *parent = nullptr);

    /**
     * Connects, and again after every end of a connection: after 0.1 ms at first, then up to 100 ms later.
     *
     * @param greeting  what this side says first on every connection; may be empty
     * @param crowd     how many do so in this process: they pause longer, five of them in a ms, and share the
     * thread with each other instead of sleeping on it
     */
    void start(const QString &host, quint16 port, const QByteArray &greeting, int crowd = 1);

    /** Ends the connection and makes no other. */
    void stop();

    bool isConnected() const { return m_connected; }
    Purpose purpose() const { return m_purpose; } ///< of the connection, or of the last one

    /** While paused no frame is taken, and little is read ahead: other bytes wait where they take no memory.
     */
    void pause();
    void resume();

    /** @param segment  bytes per TCP segment; 0 leaves that to the system */
    void send(const QByteArray &bytes, int segment);

    /** Closes when everything is sent. */
    void close(const QString &reason);

    /** Closes at once. */
    void drop(const QString &reason);

signals:
    /**
     * Attempts to connect have been failing for half a second, for this reason: told once, and again when the
     * reason changes or when there was a connection in between. Shorter gaps are not told: an
     * application stops to listen between two contacts.
     */
    void unreachable(const QString &reason);
    void connected();
    void recognised(); ///< what the connection is for
    /** A whole frame; on a connection for commands without the length in front. */
    void frameReceived(const QByteArray &frame);
    void unreadable(const QString &why);
    void disconnected(const QString &reason);

private:
    void connectNow();
    void connectAgain();
    void takeConnection();
    void takeBytes();
    void recognise();
    bool takeFrame();
    void takeState(QAbstractSocket::SocketState state);
    void takeFailure();

    QTcpSocket m_socket;
    QTimer m_retry;
    QString m_host;
    quint16 m_port = 0;
    QByteArray m_greeting;
    int m_crowd = 1;
    QByteArray m_received;
    Purpose m_purpose = Purpose::Unknown;
    bool m_paused = false;
    QString m_reason;
    QElapsedTimer m_failing; ///< since the first attempt of a row that failed
    QString m_failure;       ///< the reason that was told last
    int m_attempt = 0;       ///< to connect, since the other side was last heard
    bool m_connected = false;
    bool m_stopped = true;
};

} // namespace Simulator
