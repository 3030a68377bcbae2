// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/relay/relay_connection.h"

#include <QString>

#include <optional>

namespace Simulator {

/**
 * An application and a register that are joined: what one sends the other receives, byte for byte. What a
 * slow side has not taken yet is held, at most one read of 16 KiB each way; until it is taken nothing more is
 * read. When one side closes, the other hears of it behind the last byte, and may still send.
 */
class RelayPair
{
public:
    /**
     * Both connections must outlive the pair.
     *
     * @param echo      what the application receives first
     * @param cutAfter  bytes between the two, both ways together, after which the pair ends by itself
     */
    RelayPair(RelayConnection &application, RelayConnection &cashRegister, const QByteArray &echo,
              std::optional<qint64> cutAfter);

    /** Moves what can be moved, and has the poller told what is awaited next. */
    void pump();

    /** Whether nothing more can be moved, so that the connections can be closed. */
    bool hasEnded() const { return m_cut || (m_toRegister.done && m_toApplication.done); }

    /** One side has closed or takes no bytes, so that a pair on which nothing moves may stay so for ever. */
    bool mayStall() const;

    qint64 toRegister() const { return m_toRegister.moved; }
    qint64 toApplication() const { return m_toApplication.moved; }

    /** Who ended the pair, once one of them has. */
    const QString &reason() const { return m_reason; }

private:
    struct Direction
    {
        RelayConnection &from;
        RelayConnection &to;
        QString fromName;
        QString toName;
        QByteArray held;
        qint64 moved = 0;
        bool sourceEnded = false;
        bool done = false;
    };

    void move(Direction &direction);
    bool deliverHeld(Direction &direction);
    void readMore(Direction &direction);
    void giveUp(Direction &direction);
    void closedBy(const QString &name);
    static quint32 awaited(const Direction &out, const Direction &in);
    bool isToBeCut() const;

    Direction m_toRegister;
    Direction m_toApplication;
    std::optional<qint64> m_cutAfter;
    QString m_reason;
    bool m_cut = false;
};

} // namespace Simulator
