// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/wire.h"

#include "ExtDevice/network/keep_alive.h"
#include "ExtDevice/network/socket_io.h"

#include <QNetworkProxy>
#include <QThread>
#include <QtEndian>

#include <algorithm>
#include <array>
#include <utility>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr int lengthSize = 2; // a frame begins with the number of bytes that follow
constexpr int longestFrame = 4096;
constexpr int commandLengthSize = 4;
constexpr int longestCommandFrame = lengthSize + 65535;
constexpr qint64 mostUnread = 128 * 1024; // bytes of the other side that are kept for later
constexpr qint64 mostUnsent = 1024 * 1024;

int announcedLength(const QByteArray &frame)
{
    return uchar(frame[0]) * 256 + uchar(frame[1]);
}

Purpose purposeOf(const QByteArray &received)
{
    if (received.size() < lengthSize)
        return Purpose::Unknown;
    return announcedLength(received) <= 1 ? Purpose::Commands : Purpose::KeyExchange;
}

/**
 * Who stops to listen just when this side connects may know nothing of the connection, and say nothing.
 * Without a first word from either side this one would wait for the usual time, in vain.
 */
constexpr int firstIdle = 1; // s

constexpr int attemptsAtOnce = 8;
constexpr int mostCounted = 1000; // attempts to connect; from then on nothing changes

/** ms between two attempts to connect, fewer at first: an application that has just listened does so again
 * soon. */
int waitBefore(int attempt, int crowd)
{
    constexpr int quickAttempts = 100;
    constexpr int longestWait = 100;
    constexpr int attemptsOfAll = 5; // per ms: they take less than a tenth of a core
    if (attempt < attemptsAtOnce)
        return 0;
    if (attempt == mostCounted)
        return std::max(crowd / attemptsOfAll, longestWait);
    return std::clamp(attempt - quickAttempts, 1, longestWait);
}

} // namespace

Wire::Wire(QObject *parent)
    : QObject(parent)
{
    m_socket.setProxy(QNetworkProxy::NoProxy);
    m_retry.setSingleShot(true);
    m_retry.setTimerType(Qt::PreciseTimer);
    connect(&m_retry, &QTimer::timeout, this, &Wire::connectAgain);
    connect(&m_socket, &QTcpSocket::connected, this, &Wire::takeConnection);
    connect(&m_socket, &QTcpSocket::readyRead, this, &Wire::takeBytes);
    connect(&m_socket, &QTcpSocket::stateChanged, this, &Wire::takeState);
}

void Wire::start(const QString &host, quint16 port, const QByteArray &greeting, int crowd)
{
    m_greeting = greeting;
    m_crowd = crowd;
    m_host = host;
    m_port = port;
    m_attempt = crowd > 1 ? mostCounted : 0; // nobody has listened to any of them yet
    m_stopped = false;
    connectNow();
}

void Wire::stop()
{
    m_stopped = true;
    m_retry.stop();
    drop(u"stopped"_s);
}

void Wire::connectAgain()
{
    // Shorter than a timer can be: on a busy core it lets the other side come to listen.
    constexpr int nap = 100; // µs
    if (m_crowd == 1 && m_attempt > 1 && m_attempt <= attemptsAtOnce)
        QThread::usleep(nap);
    connectNow();
}

void Wire::connectNow()
{
    // Unbuffered, since a buffer once used stays, and thousands of registers may wait in one process.
    m_socket.connectToHost(m_host, m_port, QIODevice::ReadWrite | QIODevice::Unbuffered);
}

void Wire::takeConnection()
{
    // TCP may connect a socket with itself when nobody listens on a port of this machine; the port would then
    // stay taken, and nobody could listen on it.
    if (m_socket.localPort() == m_socket.peerPort() && m_socket.localAddress() == m_socket.peerAddress()) {
        m_socket.abort();
        return;
    }
    m_failing.invalidate();
    m_failure.clear();
    m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    Velno::watchForVanishedPeer(int(m_socket.socketDescriptor()),
                                m_greeting.isEmpty() ? firstIdle : Velno::keepAliveIdle);
    m_connected = true;
    m_paused = false;
    m_purpose = Purpose::Unknown;
    m_received.clear();
    m_reason = u"closed by the other side"_s;
    send(m_greeting, 0);
    emit connected();
}

void Wire::takeBytes()
{
    // Bytes that arrive while this side is closing are not read.
    while (m_socket.state() == QAbstractSocket::ConnectedState) {
        while (!m_paused && takeFrame()) {
        }
        std::array<char, 4096> bytes;
        const bool isWanted =
            m_socket.state() == QAbstractSocket::ConnectedState && m_received.size() < mostUnread;
        const qint64 count = isWanted ? m_socket.read(bytes.data(), bytes.size()) : 0;
        if (count == 0)
            return;
        if (count < 0) // the end, of which an unbuffered socket does not tell
            return takeState(QAbstractSocket::UnconnectedState);
        m_received.append(bytes.data(), qsizetype(count));
    }
}

void Wire::recognise()
{
    m_purpose = purposeOf(m_received);
    if (m_purpose == Purpose::Unknown)
        return;
    Velno::watchForVanishedPeer(int(m_socket.socketDescriptor()));
    emit recognised();
}

/** Cuts one frame off what has come; false when there is none yet, or can be none. */
bool Wire::takeFrame()
{
    if (m_purpose == Purpose::Unknown)
        recognise();
    if (m_purpose == Purpose::Unknown || m_socket.state() != QAbstractSocket::ConnectedState)
        return false;
    const bool command = m_purpose == Purpose::Commands;
    const qsizetype prefix = command ? commandLengthSize : lengthSize;
    const qsizetype longest = command ? longestCommandFrame : longestFrame;
    if (m_received.size() < prefix)
        return false;
    const qsizetype length =
        command ? qsizetype(qFromBigEndian<quint32>(m_received.constData())) : announcedLength(m_received);
    if (length < 0 || length > longest) {
        emit unreadable(u"the frame announces more than %1 bytes"_s.arg(longest));
        return false;
    }
    if (m_received.size() - prefix < length)
        return false;
    const QByteArray frame = m_received.first(prefix + length);
    m_received.remove(0, frame.size());
    if (m_received.isEmpty())
        m_received.clear(); // and its memory
    m_attempt = 0;          // the other side is there, and a pairing needs more connections than one
    emit frameReceived(command ? frame.sliced(prefix) : frame);
    return true;
}

void Wire::pause()
{
    m_paused = true;
}

void Wire::resume()
{
    if (!std::exchange(m_paused, false))
        return;
    // Queued, as the caller is still handling the frame before.
    QMetaObject::invokeMethod(this, &Wire::takeBytes, Qt::QueuedConnection);
}

void Wire::takeState(QAbstractSocket::SocketState state)
{
    if (state != QAbstractSocket::UnconnectedState)
        return;
    // Before the end is told: who receives the signal may stop the wire.
    if (!m_stopped) {
        m_retry.start(waitBefore(m_attempt, m_crowd));
        m_attempt = std::min(m_attempt + 1, mostCounted);
    }
    if (std::exchange(m_connected, false))
        emit disconnected(m_reason);
    else if (!m_stopped)
        takeFailure();
}

void Wire::takeFailure()
{
    constexpr qint64 passing = 500; // ms
    if (!m_failing.isValid())
        m_failing.start();
    // Without an error the socket was connected with itself, and closed by takeConnection().
    const bool metItself = m_socket.error() == QAbstractSocket::UnknownSocketError;
    const QString reason = metItself ? m_failure : m_socket.errorString();
    if (m_failing.elapsed() < passing || reason == m_failure)
        return;
    m_failure = reason;
    emit unreachable(reason);
}

void Wire::send(const QByteArray &bytes, int segment)
{
    const qsizetype step = segment > 0 ? segment : bytes.size();
    for (qsizetype offset = 0; offset < bytes.size(); offset += step)
        Velno::write(m_socket, bytes.constData() + offset, std::min(step, bytes.size() - offset));
    if (m_socket.bytesToWrite() > mostUnsent)
        drop(u"the other side does not read its answers"_s);
}

void Wire::close(const QString &reason)
{
    m_reason = reason;
    m_socket.disconnectFromHost();
}

void Wire::drop(const QString &reason)
{
    m_reason = reason;
    m_socket.abort();
}

} // namespace Simulator
