// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/session.h"

namespace Fuzz {

inline const QByteArray applicationHash(32, 'h');

/** What an honest application says to a register and hears from it, without a connection. */
class HonestApplication
{
public:
    HonestApplication();

    /** The body of a pairing request. */
    QByteArray request(Velno::GMP::MessageTag kind);

    /** A frame that came back. Others are none of its business. */
    void hear(const QByteArray &frame);

    /** With the keys that its last PairingConfirm has proven; without keys before one. */
    const Velno::GMP::MatchExt &record() const { return m_agreed; }

private:
    Velno::GMP::Session m_session;
    Velno::GMP::MatchExt m_agreed;
};

} // namespace Fuzz
