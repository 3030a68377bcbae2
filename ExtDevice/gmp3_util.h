#pragma once

#include "ExtDevice/gmp3/gmp3.h"
#include "ExtDevice/gmp3/match_ext.h"

#include <QString>

/**
 * The cryptographic suite outside class GMP3. Everything fails soft: an empty byte string.
 */
namespace Velno::GMP {

/** Credentials that a responder answers with, PEM, relative to the working directory unless replaced. */
extern QString cert_path;
extern QString prikey_path;

/** The built-in group, RFC 3526 group 14: the prime's 256 big-endian bytes, and the generator's one. */
const char *get_dh2048_p_value();
int get_dh2048_p_size();
const char *get_dh2048_g_value();
int get_dh2048_g_size();

/** SHA-256: 32 bytes. */
QByteArray GMP3_SHA256(const QByteArray &data);

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

/**
 * Bytes of the C library's generator, seeded with the milliseconds of the local time: two calls in the same
 * millisecond return the same. Not fit for secrets; the protocol's randoms are made of it.
 */
QByteArray GetRandom(int count);

} // namespace Velno::GMP
