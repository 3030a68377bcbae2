#include "simulator/wire.h"

#include <QNetworkProxy>
#include <QRandomGenerator>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr int shortestWait = 1;  // ms between two attempts to connect
constexpr int longestWait = 100; // ms
constexpr int lengthSize = 2;    // a frame begins with the number of bytes that follow
constexpr int longestFrame = 4096;
constexpr int garbageSize = 64;

int announcedLength(const QByteArray &frame)
{
    return uchar(frame[0]) * 256 + uchar(frame[1]);
}

void announce(QByteArray &frame, int length)
{
    frame[0] = char(length / 256);
    frame[1] = char(length % 256);
}

// The first byte announces more than any reader accepts, so that all of them give up at the same place.
QByteArray garbage()
{
    QByteArray bytes(garbageSize, '\xFF');
    for (int i = 1; i < garbageSize; ++i)
        bytes[i] = char(QRandomGenerator::global()->bounded(256));
    return bytes;
}

} // namespace

QByteArray underWireFaults(QByteArray frame, const Faults &faults)
{
    if (faults.has(Fault::Garbage))
        return garbage();
    if (faults.has(Fault::BadCrc))
        frame.back() = char(frame.back() ^ 1);
    if (faults.has(Fault::BadLength))
        announce(frame, announcedLength(frame) + 1);
    if (faults.has(Fault::Oversize))
        announce(frame, longestFrame + 1);
    return frame;
}

Wire::Wire(QObject *parent)
    : QObject(parent)
{
    m_socket.setProxy(QNetworkProxy::NoProxy);
    m_retry.setSingleShot(true);
    connect(&m_retry, &QTimer::timeout, this, &Wire::connectNow);
    connect(&m_socket, &QTcpSocket::connected, this, &Wire::takeConnection);
    connect(&m_socket, &QTcpSocket::readyRead, this, &Wire::takeBytes);
    connect(&m_socket, &QTcpSocket::stateChanged, this, &Wire::takeState);
}

void Wire::start(const QString &host, quint16 port)
{
    m_host = host;
    m_port = port;
    m_wait = shortestWait;
    m_stopped = false;
    connectNow();
}

void Wire::stop()
{
    m_stopped = true;
    m_retry.stop();
    drop(u"stopped"_s);
}

void Wire::connectNow()
{
    m_socket.connectToHost(m_host, m_port);
}

void Wire::takeConnection()
{
    // Connecting to a free port of this machine can meet itself; that would even keep the port taken.
    if (m_socket.localPort() == m_socket.peerPort() && m_socket.localAddress() == m_socket.peerAddress()) {
        m_socket.abort();
        return;
    }
    m_socket.setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_connected = true;
    m_received.clear();
    m_reason = u"closed by the other side"_s;
    emit connected();
}

void Wire::takeBytes()
{
    m_received += m_socket.readAll();
    // Once this side is closing, what else arrives is not heard.
    while (m_socket.state() == QAbstractSocket::ConnectedState && m_received.size() >= lengthSize) {
        const int length = announcedLength(m_received);
        if (length > longestFrame) {
            emit unreadable(u"the frame announces more than %1 bytes"_s.arg(longestFrame));
            return;
        }
        if (m_received.size() < lengthSize + length)
            return;
        const QByteArray frame = m_received.first(lengthSize + length);
        m_received.remove(0, frame.size());
        m_wait = shortestWait;
        emit frameReceived(frame);
    }
}

void Wire::takeState(QAbstractSocket::SocketState state)
{
    if (state != QAbstractSocket::UnconnectedState)
        return;
    // Scheduled first: whoever hears of the end may stop the wire.
    if (!m_stopped) {
        m_retry.start(m_wait);
        m_wait = std::min(2 * m_wait, longestWait);
    }
    if (std::exchange(m_connected, false))
        emit disconnected(m_reason);
}

void Wire::send(const QByteArray &bytes, int segment)
{
    const qsizetype step = segment > 0 ? segment : bytes.size();
    for (qsizetype offset = 0; offset < bytes.size(); offset += step) {
        m_socket.write(bytes.mid(offset, step));
        m_socket.flush();
    }
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
