// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/bcd.h"

#include <QtEndian>

#include <array>

namespace Velno {

namespace {

constexpr unsigned char badDigits = 255;

/** Two digits, 0-99; a byte with a nibble above 9 is not refused but counts 255. */
unsigned char bcdToUChar(char byte)
{
    const unsigned int high = static_cast<unsigned char>(byte) >> 4;
    const unsigned int low = static_cast<unsigned char>(byte) & 0x0F;
    return high > 9 || low > 9 ? badDigits : static_cast<unsigned char>(high * 10 + low);
}

template <typename Number>
Number fromBcd(const QByteArray &bcd)
{
    Number result = 0;
    for (const char byte : bcd)
        result = result * 100 + bcdToUChar(byte);
    return result;
}

/** Zeros in front up to the width; a longer number loses its last bytes. */
QByteArray toFixedBcd(unsigned long long value, qsizetype width)
{
    return toBcd(value).rightJustified(width, '\0', true);
}

} // namespace

QByteArray toBcd(unsigned long long value)
{
    std::array<char, 10> bytes; // 20 digits, as many as 64 bits can need
    auto first = bytes.end();
    do {
        const auto pair = unsigned(value % 100);
        *--first = char(pair / 10 << 4 | pair % 10);
        value /= 100;
    } while (value != 0);
    return QByteArray(&*first, bytes.end() - first);
}

QByteArray toBcd1(unsigned int value)
{
    return toFixedBcd(value, 1);
}

QByteArray toBcd2(unsigned int value)
{
    return toFixedBcd(value, 2);
}

QByteArray toBcd3(unsigned int value)
{
    return toFixedBcd(value, 3);
}

QByteArray toBcd4(unsigned int value)
{
    return toFixedBcd(value, 4);
}

QByteArray toBcd6(unsigned long long value)
{
    return toFixedBcd(value, 6);
}

unsigned int bcdToUInt(const QByteArray &bcd)
{
    return fromBcd<unsigned int>(bcd);
}

unsigned long long bcdToUInt64(const QByteArray &bcd)
{
    return fromBcd<unsigned long long>(bcd);
}

QByteArray toBcd(const QDate &date, bool fullYear)
{
    if (!date.isValid())
        return QByteArray(fullYear ? 4 : 3, '\0');
    QByteArray bcd;
    bcd.reserve(fullYear ? 4 : 3);
    bcd += fullYear ? toBcd2(unsigned(date.year())) : toBcd1(unsigned(date.year() % 100));
    bcd += toBcd1(unsigned(date.month()));
    bcd += toBcd1(unsigned(date.day()));
    return bcd;
}

QDate bcdToDate(const QByteArray &bcd)
{
    if (bcd.size() != 3)
        return {};
    // 00 00 00 needs no case of its own: a month 0 is no date.
    return QDate(2000 + bcdToUChar(bcd[0]), bcdToUChar(bcd[1]), bcdToUChar(bcd[2]));
}

QByteArray toBcd(const QTime &time, bool withoutSeconds)
{
    if (!time.isValid())
        return QByteArray(withoutSeconds ? 2 : 3, '\0');
    QByteArray bcd = toBcd1(unsigned(time.hour())) + toBcd1(unsigned(time.minute()));
    if (!withoutSeconds)
        bcd += toBcd1(unsigned(time.second()));
    return bcd;
}

QTime bcdToTime(const QByteArray &bcd, bool withoutSeconds)
{
    if (bcd.size() != (withoutSeconds ? 2 : 3))
        return {};
    return QTime(bcdToUChar(bcd[0]), bcdToUChar(bcd[1]), withoutSeconds ? 0 : bcdToUChar(bcd[2]));
}

int toDbFormat(const QDate &date)
{
    return int(date.toJulianDay());
}

int toDbFormat(const QTime &time)
{
    return time.hour() * 3600 + time.minute() * 60 + time.second();
}

QDate toDate(int julianDay)
{
    return QDate::fromJulianDay(julianDay);
}

QTime toTime(int seconds)
{
    if (seconds < 0)
        return {};
    return QTime(seconds / 3600, seconds % 3600 / 60, seconds % 60);
}

QByteArray intToByteArray(unsigned int value)
{
    QByteArray bytes(4, Qt::Uninitialized);
    qToBigEndian<quint32>(value, bytes.data());
    return bytes;
}

unsigned int byteArrayToInt(const QByteArray &bytes)
{
    if (bytes.size() < 4)
        qFatal("byteArrayToInt(): array size less than 4");
    return qFromBigEndian<quint32>(bytes.constData());
}

} // namespace Velno
