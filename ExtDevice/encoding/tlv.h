// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QVector>

/**
 * Tag-length-value elements, the form of every GMP3 message and field.
 *
 * A tag has 1 to 3 bytes (up to 4 are read), all but its last with bit 7 set. The length is one byte
 * 00-7F, or 81 and one byte, or 82 and two bytes, most significant first. The value has 0 to 65,535 bytes.
 * No function keeps state, reads past its input, logs or throws.
 */
namespace Velno {

/** 1 when bit 7 of the byte is set, otherwise 0. */
int isMsbSet(unsigned char byte);

/** The tag at the front of the input (at most 4 bytes), copied; empty when the input is empty. */
QByteArray tlvTag(const QByteArray &input);

/** The shortest length field for a value of `length` bytes; empty from 65,536 on; a negative one gives its
 * low byte. */
QByteArray tlvLength(int length);

/** The length field for this value. */
QByteArray tlvLength(const QByteArray &value);

/**
 * Reads the length field at the front of the input.
 *
 * @param length      the value's size; 0 when the field is invalid; untouched when the input ends before it
 * @param lengthSize  size of the field itself: 1, 2 or 3; written only with true
 * @return false for an empty or cut field, for a first byte other than 00-7F, 81 and 82, and for a long
 *         form that says 0 (the short form 00 is valid)
 */
bool lengthFromTlv(const QByteArray &input, unsigned short *length, unsigned short *lengthSize);

/** Tag, length field and value as one element; empty unless the tag has 1-3 bytes and the value at most
 * 65,535. */
QByteArray tlvElement(const QByteArray &tag, const QByteArray &value);

/** The same, behind what a run of elements holds already. @return false, the run untouched, when it is not
 * possible */
bool appendTlvElement(QByteArray &run, const QByteArray &tag, const QByteArray &value);

/**
 * Takes the element at the front of the input apart; what follows it is ignored.
 *
 * @param elementSize  size of the whole element modulo 65,536; written even when the value is empty or cut
 * @return true only for a whole element whose value is not empty; after false no output may be used
 */
bool extractTlvElement(const QByteArray &input, QByteArray *tag, QByteArray *value,
                       unsigned short *elementSize);

/**
 * Splits a run of elements. Each is returned whole (tag, length, value), in order; empty values are allowed.
 * A tag that ends the input stands for an element of length 0.
 *
 * @return all elements or, when one of them is invalid or cut short, none
 */
QVector<QByteArray> extractTlvElements(const QByteArray &input);

/** An element where it lies. */
struct TlvView
{
    QByteArrayView tag;
    QByteArrayView value;
    QByteArrayView whole; ///< tag, length and value
};

/**
 * Takes the next element off the front of a run, without a copy: valid as long as the run's bytes. As for
 * extractTlvElements(), the value may be empty, and a tag that ends the run stands for an element of length
 * 0.
 *
 * @return false, the run untouched, when it is empty or its next element is invalid or cut short
 */
bool takeTlvElement(QByteArrayView *run, TlvView *element);

/**
 * A view of `count` bytes from `position` (a negative count: up to the end), without a copy: valid only
 * while the input lives unchanged. Empty when the input is too short.
 */
QByteArray midRaw(const QByteArray &input, int position, int count);

} // namespace Velno
