// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QTcpServer>
#include <QTcpSocket>

#include <memory>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>

namespace TestSupport {

/** The other end of a register's connections, in the hand of the test. */
class Peer
{
public:
    /** @param port  0 for a free one */
    explicit Peer(quint16 port = 0) { m_server.listen(QHostAddress::LocalHost, port); }
    quint16 port() const { return m_server.serverPort(); }
    void stopListening() { m_server.close(); }

    bool accept()
    {
        if (!m_server.hasPendingConnections() && !m_server.waitForNewConnection(longestWait))
            return false;
        m_socket.reset(m_server.nextPendingConnection());
        m_socket->setParent(nullptr);
        return true;
    }
    bool send(const QByteArray &bytes)
    {
        m_socket->write(bytes);
        // Each wait ends after a part.
        while (m_socket->bytesToWrite() > 0 && m_socket->waitForBytesWritten(longestWait)) {
        }
        return m_socket->bytesToWrite() == 0;
    }
    /** What has come by the time that so many bytes are there, or none will. */
    QByteArray read(qint64 count)
    {
        while (m_socket->bytesAvailable() < count && m_socket->waitForReadyRead(longestWait)) {
        }
        return m_socket->read(count);
    }
    /** From now on next to nothing is taken from the network. */
    void stopReading() { m_socket->setReadBufferSize(1); }
    void close() { m_socket.reset(); }
    /** Closes without a word to the other side. @return false when the system does not let this process */
    bool vanish()
    {
        const int silent = 1;
        const bool isAllowed = setsockopt(int(m_socket->socketDescriptor()), IPPROTO_TCP, TCP_REPAIR, &silent,
                                          sizeof silent) == 0;
        m_socket->abort();
        return isAllowed;
    }
    bool waitForClose()
    {
        return m_socket->state() == QAbstractSocket::UnconnectedState ||
               m_socket->waitForDisconnected(longestWait);
    }

private:
    static constexpr int longestWait = 30'000; // ms

    QTcpServer m_server;
    std::unique_ptr<QTcpSocket> m_socket;
};

} // namespace TestSupport
