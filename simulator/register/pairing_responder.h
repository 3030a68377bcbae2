// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/session.h"
#include "simulator/register/faults.h"

#include <QString>

#include <optional>

namespace Simulator {

/** The name of a pairing message kind as it appears in events. */
QString kindName(Velno::GMP::MessageTag kind);

/** 1 to 3 for a pairing message kind, otherwise below or above. */
int stepOf(Velno::GMP::MessageTag kind);

/**
 * The register's side of a pairing: what it says to each request, right or under faults. Sockets are not its
 * business. It works on a session of its own.
 */
class PairingResponder
{
public:
    /** A request, or why it is none that can be answered. */
    struct Request
    {
        Velno::GMP::MessageTag kind = Velno::GMP::None;
        QString refusal;
    };

    struct Answer
    {
        QByteArray frame;
        QByteArray resultCode; ///< as sent; empty for a frame that only looks like an answer
        bool paired = false;   ///< as far as the register knows
        QString refusal;       ///< why the register refuses to pair
    };

    /** @param faults  looked at for every answer; must outlive the responder */
    PairingResponder(const QByteArray &serial, const QString &credentialsFolder, const QByteArray &appHash,
                     const Faults &faults);

    /** A new connection: nothing of the one before is left. */
    void begin();

    Request read(const QByteArray &frame);
    Answer answer(Velno::GMP::MessageTag kind);

    /** The keys of a pairing that is done, with what else its commands are encrypted with. The session
     * forgets them. */
    Velno::GMP::MatchExt takeKeys();

    Velno::GMP::Session &session() { return m_session; }

private:
    std::optional<QByteArray> misleadingFrame(Velno::GMP::MessageTag kind);
    void prepareSession();
    QByteArray bodyUnderFaults(Velno::GMP::MessageTag kind);
    QByteArray frame(bool response, Velno::GMP::MessageTag kind, const QByteArray &body) const;

    QByteArray m_serial;
    QString m_credentialsFolder;
    QByteArray m_appHash;
    const Faults &m_faults;
    Velno::GMP::Session m_session;
    int m_answeredStep = 0;
    int m_misleadingFrames = 0;
};

} // namespace Simulator
