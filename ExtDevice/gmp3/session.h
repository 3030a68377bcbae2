// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/frame.h"
#include "ExtDevice/gmp3/match_ext.h"
#include "ExtDevice/gmp3/randoms.h"
#include "ExtDevice/network/link.h"
#include "ExtDevice/openssl_ptr.h"

#include <QDateTime>
#include <QString>
#include <QVector>

#include <functional>

namespace Velno::GMP {

/** What a session has learned, and the keys that it has agreed on. */
struct GMP3_Message
{
    GMP3_Message() = default;
    ~GMP3_Message();
    Q_DISABLE_COPY_MOVE(GMP3_Message)

    /** Drops the keys and the key pair, overwritten except for keys that a pairing record shares. */
    void forgetKeys();

    /** Stores an element, with `replace` in place of the first of its tag. @return true when appended */
    bool add(const QByteArray &tag, const QByteArray &value, bool replace);

    /** The value of the first stored element of the tag; empty when there is none. */
    QByteArray value(const QByteArray &tag) const;

    /** Stores fields, each in place of the one of its tag; those beyond 1024 tags are dropped. */
    void store(const QVector<Field> &newFields);

    /** Takes over all of a message: its kind and direction, its fields, the randoms that it brings. */
    void take(const ReceivedMessage &received);

    /**
     * Derives hmacKey, kcvIv and aesKey from the key pair, the randoms and the peer's key.
     *
     * @return the 32-byte key check value
     */
    QByteArray createKeys(const QByteArray &peerPublicKey);

    /** The keys, and the randoms that go with them, in place of those of the pairing record. */
    void putKeysInto(MatchExt &pairingRecord) const;

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

/** One side of a conversation: its record, and all that it takes from outside. No lock: one thread at a time.
 */
struct Session
{
    /** Empties the field store; randoms, keys and the application hash stay. */
    void begin();

    /** Sends all bytes, waiting at most 10 s. @return 0 or 2000 + transport status */
    [[nodiscard]] int send(const char *data, int size);

    /**
     * Reads one frame, its length field included.
     *
     * @param timeout  ms of silence allowed before each read
     * @param buffer   room for *length + 2 bytes
     * @param length   in: the longest announced length to accept; out: bytes received, also on failure
     * @return 0; 4000: null length, or more announced than accepted; 3000 + transport status
     */
    [[nodiscard]] int receive(unsigned int timeout, char *buffer, int *length);

    /** Closes the link. @return 0 or 3000 + transport status */
    int disconnect();

    /**
     * Checks a frame and, with `parse`, takes over its message (a later field replaces an earlier one of the
     * same tag).
     *
     * @param identity  12 characters that the frame must carry; null accepts any
     * @return 0; 4000 length; 4001 CRC; 4002 identity; 4003 no message element. Nothing is stored on failure
     */
    [[nodiscard]] int check(const char *data, int size, const char *identity, bool parse);

    GMP3_Message record;
    Link *link = nullptr; ///< lent; needed by send(), receive() and disconnect()
    std::function<QDateTime()> clock = [] { return QDateTime::currentDateTime(); }; ///< local time
    std::function<QByteArray(int)> randoms = GetRandom;                             ///< so many bytes
    QString certificatePath = QString::fromLatin1("./client.crt"); ///< what a responder shows, PEM
    QString keyPath = QString::fromLatin1("./client.key");         ///< what a responder signs with, PEM
};

} // namespace Velno::GMP
