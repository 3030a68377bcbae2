// SPDX-License-Identifier: Apache-2.0

#include "tests/support/troubled_line.h"

#include <QScopeGuard>

#include <utility>

namespace TestSupport {

TroubledLine::TroubledLine(quint16 till)
    : m_till(till)
{
    m_server.listen(QHostAddress::LocalHost);
    connect(&m_server, &QTcpServer::newConnection, this, &TroubledLine::take);
    m_stall.setSingleShot(true);
    connect(&m_stall, &QTimer::timeout, this, &TroubledLine::passAll);
}

TroubledLine::~TroubledLine()
{
    cut();
}

void TroubledLine::plan(Trouble trouble, int pieces, int measure)
{
    m_trouble = trouble;
    m_pieces = pieces;
    m_measure = measure;
}

void TroubledLine::take()
{
    while (QTcpSocket *reg = m_server.nextPendingConnection()) {
        auto *till = new QTcpSocket(this);
        reg->setParent(this); // whichever ends last takes the other along
        m_pairs.removeIf([](const Pair &pair) { return !pair.reg || !pair.till; });
        m_pairs << Pair{reg, till, m_connections++};
        join(reg, till);
        join(till, reg);
        connect(till, &QTcpSocket::connected, this, [this, reg, till] { pass(reg, till); });
        connect(till, &QTcpSocket::errorOccurred, reg, [reg, till](QAbstractSocket::SocketError error) {
            if (error == QAbstractSocket::RemoteHostClosedError)
                return;
            reg->abort(); // nobody listens
            till->deleteLater();
        });
        till->connectToHost(QHostAddress::LocalHost, m_till);
    }
}

void TroubledLine::join(QTcpSocket *one, QTcpSocket *other)
{
    one->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    connect(one, &QTcpSocket::readyRead, other, [this, one, other] { pass(one, other); });
    connect(one, &QTcpSocket::disconnected, other, [this, one, other] {
        pass(one, other);
        other->disconnectFromHost();
    });
    connect(one, &QTcpSocket::disconnected, one, &QObject::deleteLater);
}

void TroubledLine::pass(QTcpSocket *from, QTcpSocket *to)
{
    if (m_stall.isActive() || to->state() != QAbstractSocket::ConnectedState || !from->bytesAvailable())
        return;
    QByteArray piece = from->readAll();
    if (m_trouble != Trouble::None && m_pieces-- == 0 && happens(&piece))
        return;
    tell(from, piece);
    to->write(piece);
    to->flush();
}

void TroubledLine::tell(const QTcpSocket *from, const QByteArray &piece) const
{
    if (!heard)
        return;
    for (const Pair &pair : m_pairs) {
        if (pair.reg == from || pair.till == from)
            heard(pair.number, pair.reg == from, piece);
    }
}

/** @return whether the piece is not to be passed on any more */
bool TroubledLine::happens(QByteArray *piece)
{
    switch (std::exchange(m_trouble, Trouble::None)) {
    case Trouble::None:
        return false;
    case Trouble::CutBefore:
        cut();
        return true;
    case Trouble::CutBehind:
        QMetaObject::invokeMethod(this, &TroubledLine::cut, Qt::QueuedConnection);
        return false;
    case Trouble::Drop:
        piece->remove(piece->size() / 2, m_measure);
        return false;
    case Trouble::Stall:
        m_stall.start(m_measure);
        return false;
    case Trouble::Strike:
        strike();
        return false;
    }
    return false;
}

void TroubledLine::cut()
{
    for (const auto &[reg, till, number] : std::exchange(m_pairs, {}))
        for (const QPointer<QTcpSocket> &socket : {reg, till})
            if (socket)
                socket->abort();
}

void TroubledLine::passAll()
{
    for (const auto &[reg, till, number] : QList<Pair>(m_pairs)) {
        if (reg && till)
            pass(reg, till);
        if (reg && till)
            pass(till, reg);
    }
}

} // namespace TestSupport
