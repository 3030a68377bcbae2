// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

namespace Velno::GMP {

/** The keys of one pairing, and what proves them. A plain value that overwrites itself at its end. */
struct SessionKeys
{
    SessionKeys() = default;
    SessionKeys(SessionKeys &&) = default;
    SessionKeys &operator=(SessionKeys &&) = default;
    ~SessionKeys();

    QByteArray hmacKey;    ///< 32 bytes, of commands
    QByteArray kcvIv;      ///< 16 bytes: the last cipher block of the check value
    QByteArray aesKey;     ///< 32 bytes, of commands
    QByteArray checkValue; ///< 32 bytes: equal on both sides when the keys are
};

/**
 * Derives them from the shared secret and both sides' randoms, 16 bytes each. A secret that is empty gives
 * keys like any other, which anybody can make.
 */
SessionKeys deriveKeys(const QByteArray &secret, const QByteArray &responderRandom,
                       const QByteArray &requesterRandom);

/** The first 32 bytes of TLS 1.2's P_SHA256. */
QByteArray tlsPrf(const QByteArray &secret, const QByteArray &label, const QByteArray &seed);

} // namespace Velno::GMP
