// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/openssl_ptr.h"

#include <QByteArray>
#include <QTime>

QT_FORWARD_DECLARE_CLASS(QIODevice)

/** Digests and a time-based initialisation vector. */
namespace Velno {

/** SHA-256 of the data: 32 bytes. */
QByteArray sha256Sum(const QByteArray &data);

/**
 * SHA-256 of everything that can still be read from an open device, in pieces, so that a file of any size
 * takes the same memory.
 *
 * @return 32 bytes; empty when a read fails
 */
QByteArray sha256Sum(QIODevice &device);

/** HMAC-SHA256 (RFC 2104) of the message: 32 bytes. A key of any length. */
QByteArray hmacSha256(QByteArray key, const QByteArray &message);

/** A context for HMAC-SHA256 that has no key yet; null when OpenSSL has no HMAC or no memory. */
MacCtxPtr newHmacContext();

/** Sets the context up for a key. @return false, also for a null context, when OpenSSL fails */
bool setHmacKey(EVP_MAC_CTX *context, const QByteArray &key);

/** HMAC-SHA256 under the key that the context is set up for. @return 32 bytes; empty as setHmacKey() has it
 */
QByteArray hmacWith(EVP_MAC_CTX *context, const QByteArray &message);

/** A fixed 16-byte pattern with the time's seconds added to each byte at an even position, modulo 256. */
QByteArray iv(const QTime &time);

} // namespace Velno
