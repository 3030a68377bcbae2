// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/relay/poller.h"

#include <QByteArray>

namespace Simulator {

/** One TCP connection to the relay: never blocks, and is closed with the object. */
class RelayConnection
{
public:
    static constexpr int nameSize = 12;

    enum class Naming { Unfinished, Complete, Ended };

    /** Takes over an accepted socket. */
    RelayConnection(int socket, Poller::Key key, Poller &poller);
    ~RelayConnection();
    Q_DISABLE_COPY_MOVE(RelayConnection)

    Poller::Key key() const { return m_key; }

    /** What the poller is to tell of this connection: EPOLL flags; 0 is nothing. */
    void watch(quint32 events);

    /** Reads what has come of the 12 bytes that name a register, and not a byte that follows them. */
    Naming readName();

    /** The name, as far as it has come. */
    const QByteArray &name() const { return m_name; }

    /** @param most  at least 1. @return bytes read; 0: none is here; -1: no more will come */
    qint64 read(char *bytes, qint64 most);

    /** @return bytes taken, 0 when there is no room; -1: the other side takes no more */
    qint64 write(const char *bytes, qint64 count);

    /** Tells the other side that nothing follows. */
    void endWriting();

private:
    int m_socket;
    Poller::Key m_key;
    Poller &m_poller;
    quint32 m_watched = 0;
    QByteArray m_name;
};

} // namespace Simulator
