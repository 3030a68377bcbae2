#pragma once

#include "ExtDevice/gmp3/match_ext.h"
#include "ExtDevice/gmp3/tags.h"

/**
 * What an honest application says to a register, in this process, whose protocol session is the register's:
 * what both sides would have computed alike is taken from there.
 */
namespace Fuzz {

inline const QByteArray applicationHash(32, 'h');

/** The fields that count of a pairing request. */
QByteArray honestRequest(Velno::GMP::MessageTag kind);

/** The keys that the last honest PairingConfirm has proven; empty without one. */
Velno::GMP::MatchExt agreedRecord();

} // namespace Fuzz
