// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/openssl_ptr.h"

/** Certificates made for one test, in memory, and what else a key exchange is tried with. */
namespace TestSupport {

/** A key with a certificate, both PEM. */
struct Credentials
{
    QByteArray certificate;
    QByteArray key;
};

/** A self-signed certificate with a fresh key. @param type "RSA" (of `bits`) or "EC" (P-256) */
Credentials selfSigned(const char *type = "RSA", int bits = 2048);

/** What a certificate of a TestAuthority is like; by default like one of a register. */
struct CertificateKind
{
    const char *keyType = "RSA";
    int keyBits = 2048;
    const char *digest = "SHA256";
    const char *basicConstraints = "critical,CA:FALSE"; ///< empty: without the extension
    const char *keyUsage = "critical,digitalSignature"; ///< empty: without the extension
};

/** An authority that certifies whatever it is asked to, with a fresh key. */
class TestAuthority
{
public:
    TestAuthority();

    QByteArray chain() const { return m_own.certificate; } ///< PEM, to verify against
    Credentials issue(const CertificateKind &kind) const;

private:
    Credentials m_own;
};

/** The private key as PEM under a password. */
QByteArray encryptedKey(const QByteArray &key, const char *password);

/** A 2048-bit group (PEM) that is good, made for these tests, and known to no build but one that names it. */
QByteArray groupOfItsOwn();

/** The development authority's chain and the credentials of the register under it, read from the build
 * folder. */
Credentials developmentRegister();

} // namespace TestSupport
