#pragma once

#include "ExtDevice/openssl_ptr.h"

/** Certificates made for one test, in memory. */
namespace TestSupport {

/** A key with a certificate, both PEM. */
struct Credentials
{
    QByteArray certificate;
    QByteArray key;
};

/** A self-signed certificate with a fresh key. @param type "RSA" (of `bits`) or "EC" (P-256) */
Credentials selfSigned(const char *type = "RSA", int bits = 2048);

/** The private key as PEM under a password. */
QByteArray encryptedKey(const QByteArray &key, const char *password);

/** The development authority's chain and the credentials of the register under it, read from the build
 * folder. */
Credentials developmentRegister();

} // namespace TestSupport
