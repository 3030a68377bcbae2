#pragma once

#include "ExtDevice/gmp3/tags.h"
#include "ExtDevice/openssl_ptr.h"

#include <QByteArray>
#include <QVector>

namespace Velno::GMP {

/** The state of the one GMP3 session of this process. */
struct GMP3_Message
{
    ~GMP3_Message();

    /** Drops the keys and the key pair, overwritten except for keys that a pairing record shares. */
    void forgetKeys();

    bool isResponse = false; ///< direction of the last message that check() recognised
    bool failed = false;     ///< the responder's verdict on the last PairingConfirm: true = refused
    MessageTag message = MessageTag(0); ///< kind of the last message that check() recognised
    QVector<QByteArray> fields;         ///< field store: whole elements, as received over the session
    PkeyPtr dh;                         ///< this side's Diffie-Hellman key pair
    quint8 pairingIndex = 0;            ///< what a responder assigns
    quint16 pairingNumber = 0;          ///< what a responder assigns, 0 to 9999
    QByteArray responderRandom;         ///< 16 bytes
    QByteArray requesterRandom;         ///< 16 bytes
    QByteArray appHash;                 ///< 32 bytes
    QByteArray hmacKey;                 ///< 32 bytes
    QByteArray kcvIv;                   ///< 16 bytes
    QByteArray aesKey;                  ///< 32 bytes
    bool secretAgreed =
        false; ///< whether the keys come from a shared secret; otherwise anybody can make them
};

/** The session. No lock: one thread at a time. */
extern GMP3_Message gmp3_message;

/** The session's connection, a handle of velno_network.h; 0 for none. */
extern unsigned int connection_handle;

/**
 * The GMP3 engine: framing and checking, message bodies, cryptography. All members are static and work on
 * gmp3_message and connection_handle. Diagnostics are single lines, see log.h.
 *
 * A frame: 2 bytes length of what follows, 12 bytes identity padded with spaces, the body (one message
 * element, or raw bytes for kind None), CRC-16/X.25 over identity and body; numbers big-endian.
 */
class GMP3
{
public:
    // Session and transport ---------------------------------------------------------------------------

    /** Empties the field store and sets the connection; randoms, keys and the application hash stay. */
    static void init(unsigned int handle);

    /** Replaces the session's connection by one that it waits for. @return 0 or 1000 + transport status */
    [[nodiscard]] static int accept(const char *address, unsigned short port, unsigned int timeout);

    /** Sends all bytes, waiting at most 10 s. @return 0 or 2000 + transport status */
    [[nodiscard]] static int send(const char *data, int size);

    /**
     * Reads one frame, its length field included.
     *
     * @param timeout  ms of silence allowed before each read
     * @param buffer   room for *length + 2 bytes
     * @param length   in: the longest announced length to accept; out: bytes received, also on failure
     * @return 0; 4000: null length, or more announced than accepted; 3000 + transport status
     */
    [[nodiscard]] static int receive(unsigned int timeout, char *buffer, int *length);

    /** Closes the session's connection. @return 0 or 3000 + transport status; there is no connection
     * afterwards */
    static int disconnect();

    // Frames and fields -------------------------------------------------------------------------------

    /** The whole frame; empty when its length would not fit 16 bits. */
    static QByteArray frame(bool response, MessageTag kind, const QByteArray &body, const char *identity);

    /**
     * Checks a frame and, with `parse`, stores the fields of its message (a later field replaces an earlier
     * one of the same tag).
     *
     * @param identity  12 characters that the frame must carry; null accepts any
     * @return 0; 4000 length; 4001 CRC; 4002 identity; 4003 no message element. Nothing is stored on failure
     */
    [[nodiscard]] static int check(const char *data, int size, const char *identity, bool parse);

    /** Stores an element, with `replace` in place of the first of its tag. @return true when appended */
    static bool TLV_add(const QByteArray &tag, const QByteArray &value, bool replace);

    /** The value of the first stored element of the tag; empty when there is none. */
    static QByteArray TLV_value(const QByteArray &tag);

    /** The request that follows this one in a pairing; None at its end. */
    static MessageTag next_state(MessageTag kind);

    /**
     * The body of a pairing message.
     *
     * @param response  false: the requester's side (the application), true: the responder's (the register)
     * @param identity  of the side that prepares
     * @return field elements, concatenated; empty for a kind that is no pairing message
     */
    static QByteArray prepare(MessageTag kind, bool response, const char *identity);

    // Diffie-Hellman ----------------------------------------------------------------------------------

    /** A group without key pair; null when p is even or has no usable size, or g is not in 2 .. p-2. */
    static PkeyPtr DH_get(const char *p, int pLength, const char *g, int gLength);

    /** The 2048-bit group 14 of RFC 3526. */
    static PkeyPtr DH_get_dh2048();

    /** Makes a key pair in the group. @return false, the group untouched, when that fails */
    [[nodiscard]] static bool DH_generate(PkeyPtr &dh);

    /** The public key, padded with zeros on the left to the size of p; empty without a key pair. */
    static QByteArray DH_get_pubkey(const PkeyPtr &dh);

    /** The shared secret without leading zeros; empty on any failure. */
    static QByteArray DH_compute(const PkeyPtr &dh, const QByteArray &peerPublicKey);

    // Certificates and signatures ---------------------------------------------------------------------

    /**
     * Whether the certificate (PEM) verifies against the chain (PEM) and is one that a register signs with:
     * an RSA key of at least 2048 bits that may make signatures, no authority's, and not signed with MD5.
     * Says why not in the log.
     */
    static bool verifyCertificate(const QByteArray &certificate, const QByteArray &chain);

    /** RSA PKCS#1 v1.5 signature over SHA-256 of the data; empty on failure. */
    static QByteArray rsassa_pkcs1v15_sha256_sign(const QByteArray &data, const QByteArray &privateKey);

    /** Whether the signature over the data is by the certificate's key. */
    static bool rsassa_pkcs1v15_sha256_verify(const QByteArray &certificate, const QByteArray &data,
                                              const QByteArray &signature);

    // Digests and key schedule ------------------------------------------------------------------------

    /** 32 bytes. */
    static QByteArray sha256sum(const QByteArray &data);
    static QByteArray HMAC_sha256(const QByteArray &key, const QByteArray &data);

    /** The first 32 bytes of TLS 1.2's P_SHA256. */
    static QByteArray TLS_PRF(const QByteArray &secret, const QByteArray &label, const QByteArray &seed);

    /**
     * Derives hmacKey, kcvIv and aesKey of the session from its key pair, its randoms and the peer's key.
     * Making the check value leaves its last cipher block in kcvIv.
     *
     * @return the 32-byte key check value
     */
    static QByteArray create_keys(const QByteArray &peerPublicKey);
};

} // namespace Velno::GMP
