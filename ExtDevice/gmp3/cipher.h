// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/match_ext.h"

#include <QByteArray>

/** AES-CBC as this protocol uses it, and what a pairing record's keys are for. All fail soft: an empty byte
 * string. */
namespace Velno::GMP {

/**
 * AES-CBC without padding.
 *
 * @param key   16, 24 or 32 bytes
 * @param data  whole blocks of 16 bytes
 * @param iv    16 bytes; afterwards the last cipher block (untouched on failure, or when data is empty)
 */
QByteArray AES_CBC_Cipher(bool encrypt, const QByteArray &key, const QByteArray &data, QByteArray &iv);

/**
 * AES-CBC with GMP3's padding: n bytes of value n in front, 1 <= n <= 32, up to a multiple of 32 bytes.
 * Nothing encrypts to nothing.
 */
QByteArray GMP3_aes_cipher(bool encrypt, const QByteArray &key, const QByteArray &data, QByteArray &iv);

/** The same with the record's aesKey and the XOR of its two randoms as IV. */
QByteArray GMP3_cipher(const MatchExt &record, bool encrypt, const QByteArray &data);

/** HMAC-SHA256 with the record's hmacKey. */
QByteArray GMP3_HMAC(const MatchExt &record, const QByteArray &data);

} // namespace Velno::GMP
