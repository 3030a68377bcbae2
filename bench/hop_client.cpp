// SPDX-License-Identifier: Apache-2.0

#include "bench/hop_client.h"

#include "bench/bare_socket.h"

#include <QDataStream>
#include <QTcpServer>
#include <QtEndian>

namespace {

constexpr int currentZCommand = 12;
constexpr int lengthSize = 4;
constexpr int sendTimeout = 2000;
constexpr quint32 replyTimeout = 10000;
constexpr int contactTimeout = 10000;

QByteArray requestOf(qint32 command)
{
    QByteArray request;
    QDataStream stream(&request, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_6);
    stream << command;
    return request;
}

} // namespace

bool HopWorker::open(quint16 port)
{
    QTcpServer server;
    if (!server.listen(QHostAddress::LocalHost, port) || !server.waitForNewConnection(contactTimeout))
        return false;
    m_socket.reset(server.nextPendingConnection());
    m_socket->setParent(nullptr);
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    return true;
}

void HopWorker::close()
{
    m_socket.reset();
}

bool HopWorker::send(const QByteArray &frame)
{
    m_socket->readAll();
    m_socket->write(frame);
    m_socket->flush();
    return m_socket->bytesToWrite() == 0 || m_socket->waitForBytesWritten(sendTimeout);
}

bool HopWorker::receive(quint32 timeout, QByteArray *payload)
{
    const auto waitFor = [this](qint64 count, int time) {
        while (m_socket->bytesAvailable() < count) {
            if (!m_socket->waitForReadyRead(time))
                return false;
        }
        return true;
    };
    if (!waitFor(lengthSize, -1))
        return false;
    const qint64 length = qFromBigEndian<quint32>(m_socket->read(lengthSize).constData());
    if (!waitFor(length, int(timeout)))
        return false;
    *payload = m_socket->read(length);
    return true;
}

HopClient::HopClient(const Velno::GMP::MatchExt &record, quint16 port)
    : m_envelope(record)
{
    m_worker.moveToThread(&m_thread);
    m_thread.start();
    bool opened = false;
    QMetaObject::invokeMethod(&m_worker, "open", Qt::BlockingQueuedConnection, Q_RETURN_ARG(bool, opened),
                              Q_ARG(quint16, port));
    require(opened, "the paired register did not come back");
}

HopClient::~HopClient()
{
    QMetaObject::invokeMethod(&m_worker, "close", Qt::BlockingQueuedConnection);
    m_thread.quit();
    m_thread.wait();
}

bool HopClient::currentZ(int *z)
{
    const QByteArray frame = m_envelope.seal(requestOf(currentZCommand));
    bool sent = false;
    QMetaObject::invokeMethod(&m_worker, "send", Qt::BlockingQueuedConnection, Q_RETURN_ARG(bool, sent),
                              Q_ARG(QByteArray, frame));
    if (!sent)
        return false;
    QByteArray payload;
    bool received = false;
    QMetaObject::invokeMethod(&m_worker, "receive", Qt::BlockingQueuedConnection,
                              Q_RETURN_ARG(bool, received), Q_ARG(quint32, replyTimeout),
                              Q_ARG(QByteArray *, &payload));
    if (!received)
        return false;
    const QByteArray plaintext = m_envelope.open(payload);
    QDataStream stream(plaintext);
    stream.setVersion(QDataStream::Qt_4_6);
    bool accepted = false;
    stream >> accepted >> *z;
    return accepted && stream.status() == QDataStream::Ok;
}
