// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/match_ext.h"

#include <QByteArrayView>

/**
 * The envelope of an encrypted command, of both sides: a frame (see frame.h) without message element around
 * two elements, what the plaintext encrypts to and the HMAC-SHA256 of that. An application that holds no keys
 * of a register sends a single element in clear instead, which tells the register to forget its own.
 */
namespace Velno::GMP {

/** What became of a frame that came, beside 0 (all is well) and 4000 to 4002 of checkFrame(). */
enum EnvelopeStatus {
    EnvelopeOfNoKeys = 1, ///< it says that the other side holds none
    ElementsWrong,        ///< an element is missing or empty, or there is another one
    MacWrong,             ///< other keys, or changed on its way
    NothingDecrypted,
};

/** The elements of an envelope where they lie in its frame: valid as long as the frame's bytes. */
struct Envelope
{
    QByteArrayView cipher;
    QByteArrayView mac;
    bool isInOrder = false; ///< ciphertext and MAC came once each, and that one first
};

/**
 * Takes a frame apart. Of several ciphertexts or MACs the last one counts.
 *
 * @param identity  12 characters that the frame must carry
 * @return 0; 4000 to 4002; EnvelopeOfNoKeys; ElementsWrong
 */
[[nodiscard]] int readEnvelope(const QByteArray &frame, const QByteArray &identity, Envelope *envelope);

/** Authenticates and decrypts with the record's keys. @return 0, the plaintext written; MacWrong;
 * NothingDecrypted */
[[nodiscard]] int openEnvelope(const MatchExt &record, const Envelope &envelope, QByteArray *plaintext);

/** Both, for a frame of the record's register. The plaintext, which is not empty, is written on success
 * alone.
 */
[[nodiscard]] int unseal(const MatchExt &record, const QByteArray &frame, QByteArray *plaintext);

/** The two elements of a ciphertext; empty when there is none, or it is too long. */
QByteArray authenticated(const MatchExt &record, const QByteArray &cipher);

/** The elements that hold a plaintext; empty when it is empty or too long, or the record has no keys. */
QByteArray sealedElements(const MatchExt &record, const QByteArray &plaintext);

/** The frame that holds a plaintext, of the record's register; empty as sealedElements(). */
QByteArray seal(const MatchExt &record, const QByteArray &plaintext);

/** The frame that tells a register that its keys are not known any more. */
QByteArray frameOfNoKeys(const QByteArray &identity);

} // namespace Velno::GMP
