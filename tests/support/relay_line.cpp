// SPDX-License-Identifier: Apache-2.0

#include "tests/support/relay_line.h"

#include <sys/socket.h>

using namespace Qt::StringLiterals;

namespace TestSupport {

Line::Line(quint16 port, const QByteArray &firstBytes)
{
    socket.connectToHost(QHostAddress::LocalHost, port);
    if (!socket.waitForConnected(longestWait))
        qFatal("relay port %d: %s", port, qPrintable(socket.errorString()));
    send(firstBytes);
}

void Line::send(const QByteArray &bytes)
{
    socket.write(bytes);
    while (socket.bytesToWrite() > 0 && socket.waitForBytesWritten(longestWait)) {
    }
}

QByteArray Line::read(qsizetype count)
{
    while (socket.bytesAvailable() < count && socket.waitForReadyRead(longestWait)) {
    }
    return socket.read(count);
}

QByteArray Line::readToEnd()
{
    while (socket.waitForReadyRead(longestWait)) {
    }
    return socket.state() == QAbstractSocket::UnconnectedState ? socket.readAll() : "never closed";
}

void Line::endWriting() const
{
    ::shutdown(int(socket.socketDescriptor()), SHUT_WR);
}

void Line::reset()
{
    const linger now{1, 0};
    ::setsockopt(int(socket.socketDescriptor()), SOL_SOCKET, SO_LINGER, &now, sizeof now);
    socket.close();
}

Joined::Joined(SimulatedRelay &relay, const QByteArray &name)
    : cashRegister(relay.registerPort(), name)
{
    relay.waitFor(u"waiting"_s);
    application = std::make_unique<Line>(relay.applicationPort(), name);
    echoed = application->read(name.size()) == name;
    relay.waitFor(u"joined"_s);
}

QString text(const QJsonObject &event, const QString &field)
{
    return event.value(field).toString();
}

} // namespace TestSupport
