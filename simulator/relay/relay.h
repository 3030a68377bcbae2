// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/common/event_writer.h"
#include "simulator/relay/register_book.h"
#include "simulator/relay/relay_options.h"
#include "simulator/relay/relay_pair.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QTcpServer>
#include <QTimer>

#include <array>
#include <memory>
#include <unordered_map>
#include <unordered_set>

namespace Simulator {

/** A port of the relay: hands out the sockets that it accepts. */
class Door : public QTcpServer
{
    Q_OBJECT

public:
    using QTcpServer::QTcpServer;

signals:
    void entered(int socket);

protected:
    void incomingConnection(qintptr socket) override { emit entered(int(socket)); }
};

/**
 * A stand-in for the relay server. A register writes its 12-byte name to the register port and waits; an
 * application writes the name of a register to one of the other ports, receives it back, and is joined to
 * that register byte for byte. Everything on one thread, nothing blocks.
 */
class Relay : public QObject
{
    Q_OBJECT

public:
    explicit Relay(const RelayOptions &options, QObject *parent = nullptr);
    ~Relay() override;

    /**
     * @param control  where lines are taken beside standard input, for the `ready` event; empty: nowhere
     * @return an empty text, or which port cannot be had and why
     */
    QString start(const QString &control = {});

    /**
     * A line of the operator: fault NAME[=VALUE], fault none, quit.
     *
     * @return an empty text, or what was wrong and what is accepted
     */
    QString obey(const QString &line);

    /** A line on standard input, where an event tells what was wrong. */
    void takeLine(const QString &line);
    void stop();

signals:
    void finished();

private:
    enum class Role { Application, Register };
    enum class Stage {
        Naming,    ///< has not said its name, or whom it wants, yet
        Waiting,   ///< a register that can be joined
        Expecting, ///< an application whose register is expected back
        Misled,    ///< an application to which a fault has happened
        Joined,
    };
    struct Peer;

    QString open(Door &door, quint16 port, Role role);
    void admit(int socket, Role role, quint16 port);
    void takeReady(Poller::Key key);
    void readName(Peer &peer);
    void takeRegister(Peer &peer);
    void takeApplication(Peer &peer);
    void meet(const QByteArray &name);
    bool mislead(Peer &application);
    void join(Peer &application, Peer &cashRegister);
    void pump(Peer &peer);
    void end(Peer &peer, const QString &reason);
    void turnAway(Peer &application, const QString &reason);
    void refuse(Peer &peer, const QString &reason);
    void forget(Poller::Key key);
    void giveTime(Peer &peer, QDeadlineTimer deadline);
    void sweep();
    void takeDeadline(Peer &peer);

    RelayOptions m_options;
    EventWriter m_events;
    size_t m_mostPeers;
    QElapsedTimer m_clock;
    RegisterBook m_book;
    Poller m_poller;
    std::array<Door, 3> m_doors;
    std::unordered_map<Poller::Key, std::unique_ptr<Peer>> m_peers;
    std::unordered_set<Poller::Key> m_hurried; ///< those with a deadline
    Poller::Key m_lastKey = 0;
    QTimer m_sweep;
    bool m_stopped = false;
};

} // namespace Simulator
