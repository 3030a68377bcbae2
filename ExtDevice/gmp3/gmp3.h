// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/encoding/digest.h"
#include "ExtDevice/gmp3/certificates.h"
#include "ExtDevice/gmp3/diffie_hellman.h"
#include "ExtDevice/gmp3/key_schedule.h"
#include "ExtDevice/gmp3/prepare.h"
#include "ExtDevice/gmp3/session.h"

namespace Velno::GMP {

/** The session of this process, over the transport. No lock: one thread at a time. */
extern Session processSession;

/** Its record. */
extern GMP3_Message &gmp3_message;

/** Its connection, a handle of velno_network.h; 0 for none. */
extern unsigned int &connection_handle;

/** The credentials that it answers with as a responder, PEM, relative to the working directory unless
 * replaced. */
extern QString &cert_path;
extern QString &prikey_path;

/** SHA-256: 32 bytes. */
inline QByteArray GMP3_SHA256(const QByteArray &data)
{
    return sha256Sum(data);
}

/**
 * The engine under one roof: its functions, those that need a session on that of the process. Diagnostics are
 * single lines, see log.h. Whoever has a session of his own uses the functions behind these.
 */
class GMP3
{
public:
    // Session and transport, see session.h ------------------------------------------------------------

    /** Empties the field store and sets the connection; randoms, keys and the application hash stay. */
    static void init(unsigned int handle);

    /** Replaces the session's connection by one that it waits for. @return 0 or 1000 + transport status */
    [[nodiscard]] static int accept(const char *address, unsigned short port, unsigned int timeout);

    [[nodiscard]] static int send(const char *data, int size) { return processSession.send(data, size); }

    [[nodiscard]] static int receive(unsigned int timeout, char *buffer, int *length)
    {
        return processSession.receive(timeout, buffer, length);
    }

    /** There is no connection afterwards. */
    static int disconnect() { return processSession.disconnect(); }

    // Frames and fields, see frame.h, session.h and prepare.h -----------------------------------------

    static QByteArray frame(bool response, MessageTag kind, const QByteArray &body, const char *identity)
    {
        return makeFrame(response, kind, body, identity);
    }

    [[nodiscard]] static int check(const char *data, int size, const char *identity, bool parse)
    {
        return processSession.check(data, size, identity, parse);
    }

    static bool TLV_add(const QByteArray &tag, const QByteArray &value, bool replace)
    {
        return gmp3_message.add(tag, value, replace);
    }

    static QByteArray TLV_value(const QByteArray &tag) { return gmp3_message.value(tag); }

    static MessageTag next_state(MessageTag kind) { return nextRequest(kind); }

    static QByteArray prepare(MessageTag kind, bool response, const char *identity)
    {
        return prepareBody(processSession, kind, response, identity);
    }

    // Diffie-Hellman, see diffie_hellman.h ------------------------------------------------------------

    static PkeyPtr DH_get(const char *p, int pLength, const char *g, int gLength)
    {
        return dhGroup(p, pLength, g, gLength);
    }

    static PkeyPtr DH_get_dh2048() { return dhGroup2048(); }

    [[nodiscard]] static bool DH_generate(PkeyPtr &dh) { return generateKeyPair(dh); }

    static QByteArray DH_get_pubkey(const PkeyPtr &dh) { return publicKeyOf(dh); }

    static QByteArray DH_compute(const PkeyPtr &dh, const QByteArray &peerPublicKey)
    {
        return sharedSecret(dh, peerPublicKey);
    }

    // Certificates and signatures, see certificates.h -------------------------------------------------

    static bool verifyCertificate(const QByteArray &certificate, const QByteArray &chain)
    {
        return GMP::verifyCertificate(certificate, chain);
    }

    static QByteArray rsassa_pkcs1v15_sha256_sign(const QByteArray &data, const QByteArray &privateKey)
    {
        return openssl_signChecksum(data, privateKey);
    }

    static bool rsassa_pkcs1v15_sha256_verify(const QByteArray &certificate, const QByteArray &data,
                                              const QByteArray &signature)
    {
        return verifyChecksum(certificate, data, signature);
    }

    // Digests and key schedule, see digest.h, key_schedule.h and session.h ----------------------------

    static QByteArray sha256sum(const QByteArray &data) { return sha256Sum(data); }

    static QByteArray HMAC_sha256(const QByteArray &key, const QByteArray &data)
    {
        return hmacSha256(key, data);
    }

    static QByteArray TLS_PRF(const QByteArray &secret, const QByteArray &label, const QByteArray &seed)
    {
        return tlsPrf(secret, label, seed);
    }

    static QByteArray create_keys(const QByteArray &peerPublicKey)
    {
        return gmp3_message.createKeys(peerPublicKey);
    }
};

} // namespace Velno::GMP
