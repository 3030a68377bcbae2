// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/crypto_contexts.h"

#include <QByteArray>
#include <QDateTime>

namespace Velno::GMP {

/**
 * The pairing record of one register. A plain value, empty when default-constructed; filled only by a
 * pairing that succeeded. A register counts as paired when `aesKey` is not empty.
 */
struct MatchExt
{
    MatchExt() = default;
    MatchExt(const MatchExt &) = default;
    MatchExt(MatchExt &&) = default;
    MatchExt &operator=(const MatchExt &other) { return *this = MatchExt(other); }
    MatchExt &operator=(MatchExt &&) = default; ///< swaps the keys, so that the other's end overwrites these
    ~MatchExt();

    /** Drops the keys, overwritten unless a copy shares them, and what was set up for them. */
    void forgetKeys();

    quint8 valueDFEF09 = 0;  ///< pairing index that the register assigned, 0 to 99
    QDateTime pairingTime;   ///< UTC
    quint16 valueDFEF02 = 0; ///< pairing number that the register assigned, 0 to 9999
    QByteArray terminalId;   ///< identity of this terminal in the conversation
    QByteArray randomDFC10D; ///< 16 bytes, the requester's random
    QByteArray registerData; ///< identity of the register (DFC10C), as received
    QByteArray randomDFC10E; ///< 16 bytes, the responder's random
    QByteArray reserved;     ///< stays empty
    QByteArray hmacKey;      ///< 32 bytes
    QByteArray kcvIv;        ///< 16 bytes, as the key check left it
    QByteArray aesKey;       ///< 32 bytes

    mutable CryptoContexts contexts; ///< of GMP3_cipher() and GMP3_HMAC()
};

} // namespace Velno::GMP
