// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/tags.h"

#include <QByteArray>
#include <QVector>

/**
 * The clear frame: 2 bytes length of what follows, 12 bytes identity padded with spaces, the body (one
 * message element, or raw bytes for kind None), CRC-16/X.25 over identity and body; numbers big-endian.
 * Nothing here keeps state; what is wrong with a frame goes to the log (log.h).
 */
namespace Velno::GMP {

inline constexpr int frameLengthSize = 2;

/** The length that a frame announces in its first two bytes. */
int announcedLength(const char *frame);

/** The whole frame; empty when its length would not fit 16 bits. */
QByteArray makeFrame(bool response, MessageTag kind, const QByteArray &body, const char *identity);

/**
 * Whether these bytes are one whole frame.
 *
 * @param identity  12 characters that the frame must carry; null accepts any
 * @return 0; 4000 length; 4001 CRC; 4002 identity
 */
[[nodiscard]] int checkFrame(const char *data, int size, const char *identity);

/** The bytes between identity and CRC of a checked frame, where they lie. */
QByteArrayView frameBody(const char *data, int size);

/** A field element with a value. */
struct Field
{
    QByteArray tag;
    QByteArray value;
};

/** What the message element of a frame says. */
struct ReceivedMessage
{
    /** The value that counts: that of the last field of this tag; null when there is none. */
    const QByteArray *find(const QByteArray &tag) const;

    MessageTag kind = None;
    bool isResponse = false;
    QVector<Field> fields; ///< in order; those without a value are left out
};

/** Checks and parses a frame. @return as checkFrame(), or 4003 no message element; the message is untouched
 * then
 */
[[nodiscard]] int readFrame(const char *data, int size, const char *identity, ReceivedMessage *message);

} // namespace Velno::GMP
