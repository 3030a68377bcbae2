// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/envelope.h"
#include "ExtDevice/gmp3_util.h"

namespace Fuzz {

inline constexpr char serial[] = "UB1234567890";

/** Keys that both sides hold. */
inline Velno::GMP::MatchExt pairedRecord()
{
    Velno::GMP::MatchExt record;
    record.registerData = serial;
    record.randomDFC10D = QByteArray(16, 'D');
    record.randomDFC10E = QByteArray(16, 'E');
    record.hmacKey = QByteArray(32, 'm');
    record.kcvIv = QByteArray(16, 'v');
    record.aesKey = QByteArray(32, 'a');
    return record;
}

/** A frame around a ciphertext, whose MAC is right. */
inline QByteArray authentic(const Velno::GMP::MatchExt &record, const QByteArray &cipher)
{
    return Velno::GMP::GMP3::frame(true, Velno::GMP::None, authenticated(record, cipher), serial);
}

/** A frame that holds this plaintext, encrypted. */
inline QByteArray sealed(const Velno::GMP::MatchExt &record, const QByteArray &plaintext)
{
    return authentic(record, Velno::GMP::GMP3_cipher(record, true, plaintext));
}

} // namespace Fuzz
