// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTimer>

#include <functional>

namespace TestSupport {

/** What may happen to what travels. */
enum class Trouble {
    None,
    CutBefore, ///< the connection is cut, and this piece with it
    CutBehind, ///< the connection is cut when it has been passed on
    Drop,      ///< some bytes of it are lost
    Stall,     ///< nothing travels for a while
    Strike,    ///< strike() is called, then it is passed on
};

/** Stands between register and till: connects to the till for each connection that the register makes, and
 * passes on what they say. Works in the event loop of its thread. */
class TroubledLine : public QObject
{
public:
    /** @param till  the port where the till listens now and then */
    explicit TroubledLine(quint16 till);
    ~TroubledLine() override;

    quint16 port() const { return m_server.serverPort(); } ///< where the register is to connect

    /**
     * Lets one trouble happen.
     *
     * @param pieces   as many are passed on before
     * @param measure  bytes that are dropped, or milliseconds of a stall
     */
    void plan(Trouble trouble, int pieces = 0, int measure = 0);

    std::function<void()> strike;
    /** Hears each piece that is passed on, with the number of its connection. */
    std::function<void(int connection, bool fromRegister, const QByteArray &piece)> heard;

private:
    struct Pair
    {
        QPointer<QTcpSocket> reg;
        QPointer<QTcpSocket> till;
        int number;
    };

    void take();
    void join(QTcpSocket *one, QTcpSocket *other);
    void pass(QTcpSocket *from, QTcpSocket *to);
    void tell(const QTcpSocket *from, const QByteArray &piece) const;
    bool happens(QByteArray *piece);
    void cut();
    void passAll();

    QTcpServer m_server;
    quint16 m_till;
    QList<Pair> m_pairs;
    int m_connections = 0;
    QTimer m_stall;
    Trouble m_trouble = Trouble::None;
    int m_pieces = 0;
    int m_measure = 0;
};

} // namespace TestSupport
