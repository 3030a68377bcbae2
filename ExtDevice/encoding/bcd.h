// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QDate>
#include <QTime>

/**
 * Packed decimal numbers (two digits a byte, most significant byte first), dates, times and 4-byte integers.
 *
 * Readers do not reject a byte with a nibble above 9: it counts 255. Results that do not fit their type wrap.
 */
namespace Velno {

/** The shortest form, at least one byte. */
QByteArray toBcd(unsigned long long value);

/** Exactly 1, 2, 3, 4 or 6 bytes, padded with zeros on the left; a longer number keeps its first bytes. */
QByteArray toBcd1(unsigned int value);
QByteArray toBcd2(unsigned int value);
QByteArray toBcd3(unsigned int value);
QByteArray toBcd4(unsigned int value);
QByteArray toBcd6(unsigned long long value);

/** The number; 0 for an empty input. */
unsigned int bcdToUInt(const QByteArray &bcd);
unsigned long long bcdToUInt64(const QByteArray &bcd);

/** YYYY MM DD (4 bytes) with `fullYear`, otherwise YY MM DD (3 bytes); zeros for an invalid date. */
QByteArray toBcd(const QDate &date, bool fullYear);

/** Reads YY MM DD as 2000 + YY; a null date for another size, for zeros and for no real date. */
QDate bcdToDate(const QByteArray &bcd);

/** HH MM (2 bytes) with `withoutSeconds`, otherwise HH MM SS (3 bytes); zeros for an invalid time. */
QByteArray toBcd(const QTime &time, bool withoutSeconds);

/** Reads the form that toBcd() writes with the same flag; a null or invalid time for anything else. */
QTime bcdToTime(const QByteArray &bcd, bool withoutSeconds);

/** Julian day number. */
int toDbFormat(const QDate &date);

/** Seconds since midnight. */
int toDbFormat(const QTime &time);

/** The date of a Julian day number. */
QDate toDate(int julianDay);

/** The time of a number of seconds since midnight; null when negative, invalid from 86,400 on. */
QTime toTime(int seconds);

/** 4 bytes, most significant first. */
QByteArray intToByteArray(unsigned int value);

/** The first 4 bytes, most significant first. Fewer are a programming error that ends the process. */
unsigned int byteArrayToInt(const QByteArray &bytes);

} // namespace Velno
