// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QHostAddress>
#include <QPointer>
#include <QTcpSocket>
#include <QThread>

#include <functional>
#include <memory>

/** Both ends of a connection under a handle. */
namespace TestSupport {

inline constexpr unsigned int patience = 10'000; // ms; an answer that is expected comes long before
inline constexpr unsigned int noLimit = 0xFFFFFFFF;
inline constexpr unsigned int untouched = 0xDEADBEEF;
inline constexpr unsigned int unknownHandle = 0x7FFFFFF0;

/** A connected handle and the socket at its other end, both on this thread. */
class Connection
{
public:
    explicit Connection(QHostAddress::SpecialAddress address = QHostAddress::LocalHost);
    ~Connection();
    Q_DISABLE_COPY_MOVE(Connection)

    void send(const QByteArray &bytes) const
    {
        peer->write(bytes);
        peer->flush();
    }

    /** Closes with what was sent before delivered. */
    void closePeer() const { peer->close(); }

    /** Ends the connection with a reset, as a crashed peer's system does. */
    void resetPeer() const;

    int status = -1;
    unsigned int handle = 0;
    std::unique_ptr<QTcpSocket> peer;
};

/** A thread that runs its work and is waited for at the end of the scope. */
class Worker
{
public:
    explicit Worker(std::function<void()> work)
        : m_thread(QThread::create(std::move(work)))
    {
        m_thread->start();
    }
    ~Worker() { m_thread->wait(); }
    Q_DISABLE_COPY_MOVE(Worker)

private:
    std::unique_ptr<QThread> m_thread;
};

/** Connects to the port as soon as somebody listens there, then does its work. */
class CallingPeer
{
public:
    CallingPeer(const QHostAddress &address, quint16 port, std::function<void(QTcpSocket &)> work);

private:
    Worker m_worker;
};

/** Somebody takes hand-overs while this lives. */
class Receiver
{
public:
    Receiver();
    ~Receiver();
    Q_DISABLE_COPY_MOVE(Receiver)
};

inline QPointer<QTcpSocket> received; ///< what the receiver was handed
void receive(QTcpSocket *socket);     ///< what it is set as

void stayUntilClosed(QTcpSocket &socket);

/** Reads exactly so many bytes through the handle; fewer when a read fails. */
QByteArray readBytes(unsigned int handle, qsizetype count);

QByteArray readFrom(QTcpSocket &socket, qsizetype count);
int localAddress(unsigned int handle, QByteArray *text = nullptr);

/** Repeats the call, without running an event loop, until the system has told our end of the peer's close. */
int firstFailure(const std::function<int()> &call);

/** Whether no call knows the handle any more. */
bool isForgotten(unsigned int handle);

} // namespace TestSupport
