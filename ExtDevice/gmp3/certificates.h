// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

namespace Velno::GMP {

/**
 * Whether the certificate (PEM) verifies against the chain (PEM) and is one that a register signs with:
 * an RSA key of at least 2048 bits that may make signatures, no authority's, and not signed with MD5.
 * Says why not in the log.
 */
bool verifyCertificate(const QByteArray &certificate, const QByteArray &chain);

/** RSA PKCS#1 v1.5 signature over SHA-256 of the data; empty on failure. */
QByteArray openssl_signChecksum(const QByteArray &data, const QByteArray &privateKey);

/** Whether the signature over the data is by the certificate's key. */
bool verifyChecksum(const QByteArray &certificate, const QByteArray &data, const QByteArray &signature);

} // namespace Velno::GMP
