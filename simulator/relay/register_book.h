// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/relay/poller.h"

#include <QHash>
#include <QList>

#include <functional>

namespace Simulator {

/**
 * Which registers a relay knows, by name: who waits, who is joined or was here a moment ago and is expected
 * back, and which applications wait for that. Connections are keys; the book owns none of them.
 */
class RegisterBook
{
public:
    using Key = Poller::Key;

    /** How long a register that has left is expected back, ms. */
    static constexpr qint64 memory = 10'000;

    /**
     * @param most   names that the book holds at a time
     * @param clock  the time in ms, from any beginning
     */
    RegisterBook(qsizetype most, std::function<qint64()> clock);

    /** Whether there is room for this name. */
    bool hasRoom(const QByteArray &name);

    /** This register waits from now on. @return the one of the same name that waited until now; 0: none */
    Key wait(const QByteArray &name, Key cashRegister);

    /** The register that waits under this name; 0: none. */
    Key waiting(const QByteArray &name) const { return m_places.value(name).waiting; }

    /** The waiting register has left. */
    void leave(const QByteArray &name);

    /** The waiting register is joined from now on, until part(). */
    void join(const QByteArray &name);
    void part(const QByteArray &name);

    /** Whether a register of this name is joined, or was here within `memory`. */
    bool isExpected(const QByteArray &name) const;

    /** An application waits until such a register is there. */
    void expect(const QByteArray &name, Key application) { m_places[name].expecting.append(application); }
    void expectNoMore(const QByteArray &name, Key application);

    /** The application that has waited longest; 0: none. */
    Key firstExpecting(const QByteArray &name) const { return m_places.value(name).expecting.value(0); }

private:
    struct Place
    {
        Key waiting = 0;
        QList<Key> expecting;
        int joined = 0;
        qint64 lastSeen = 0; ///< ms
    };

    bool isForgotten(const Place &place) const;

    QHash<QByteArray, Place> m_places;
    qsizetype m_most;
    std::function<qint64()> m_clock;
};

} // namespace Simulator
