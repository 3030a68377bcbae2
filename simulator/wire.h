#pragma once

#include "simulator/faults.h"

#include <QTcpSocket>
#include <QTimer>

namespace Simulator {

/** The frame as it leaves under the faults that damage bytes. */
QByteArray underWireFaults(QByteArray frame, const Faults &faults);

/**
 * One connection at a time to the tool: connects again and again, cuts what arrives into frames, sends bytes.
 * Lives on one thread with an event loop and never blocks.
 */
class Wire : public QObject
{
    Q_OBJECT

public:
    explicit Wire(QObject *parent = nullptr);

    /** Connects, and again after every end of a connection: at once at first, then up to 100 ms later. */
    void start(const QString &host, quint16 port);

    /** Ends the connection and makes no other. */
    void stop();

    bool isConnected() const { return m_connected; }

    /** @param segment  bytes per TCP segment; 0 leaves that to the system */
    void send(const QByteArray &bytes, int segment);

    /** Closes when everything is sent. */
    void close(const QString &reason);

    /** Closes at once. */
    void drop(const QString &reason);

signals:
    void connected();
    void frameReceived(const QByteArray &frame);
    void unreadable(const QString &why);
    void disconnected(const QString &reason);

private:
    void connectNow();
    void takeConnection();
    void takeBytes();
    void takeState(QAbstractSocket::SocketState state);

    QTcpSocket m_socket;
    QTimer m_retry;
    QString m_host;
    quint16 m_port = 0;
    QByteArray m_received;
    QString m_reason;
    int m_wait = 0;
    bool m_connected = false;
    bool m_stopped = true;
};

} // namespace Simulator
