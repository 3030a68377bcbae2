// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/tlv.h"

#include <algorithm>
#include <array>

namespace Velno {

namespace {

constexpr qsizetype maxTagRead = 4;
constexpr qsizetype maxTagWritten = 3;
constexpr qsizetype maxValue = 65535;
constexpr qsizetype mostLengthBytes = 3;
constexpr unsigned char oneLengthByte = 0x81;
constexpr unsigned char twoLengthBytes = 0x82;

/** An encoded length without a heap allocation of its own; size 0 when the length cannot be written. */
struct LengthField
{
    std::array<char, mostLengthBytes> bytes;
    qsizetype size;
};

LengthField encodeLength(qsizetype length)
{
    const char low = char(length & 0xFF);
    if (length <= 127)
        return {{low}, 1};
    if (length <= 255)
        return {{char(oneLengthByte), low}, 2};
    if (length <= maxValue)
        return {{char(twoLengthBytes), char(length >> 8), low}, 3};
    return {{}, 0};
}

qsizetype tagSize(const char *bytes, qsizetype available)
{
    const qsizetype limit = std::min(available, maxTagRead);
    for (qsizetype i = 0; i < limit; ++i) {
        if (!isMsbSet(static_cast<unsigned char>(bytes[i])))
            return i + 1;
    }
    return limit;
}

bool lengthFromTlv(const char *bytes, qsizetype available, unsigned short *length, unsigned short *lengthSize)
{
    // Nothing behind a tag stands for the length 00; the byte itself is not read: views have no terminator.
    const auto byteAt = [=](qsizetype i) {
        return i < available ? static_cast<unsigned char>(bytes[i]) : static_cast<unsigned char>(0);
    };
    const unsigned char first = byteAt(0);
    if (!isMsbSet(first)) {
        *length = first;
        *lengthSize = 1;
        return true;
    }
    if (available < 2)
        return false;

    unsigned int value = 0;
    if (first == oneLengthByte)
        value = byteAt(1);
    else if (first == twoLengthBytes && available > 2)
        value = unsigned(byteAt(1)) << 8 | byteAt(2);
    *length = static_cast<unsigned short>(value);
    if (value == 0)
        return false;
    *lengthSize = first == oneLengthByte ? 2 : 3;
    return true;
}

} // namespace

int isMsbSet(unsigned char byte)
{
    return byte >> 7;
}

QByteArray tlvTag(const QByteArray &input)
{
    return QByteArray(input.constData(), tagSize(input.constData(), input.size()));
}

QByteArray tlvLength(int length)
{
    const LengthField field = encodeLength(length);
    return QByteArray(field.bytes.data(), field.size);
}

QByteArray tlvLength(const QByteArray &value)
{
    const LengthField field = encodeLength(value.size());
    return QByteArray(field.bytes.data(), field.size);
}

bool lengthFromTlv(const QByteArray &input, unsigned short *length, unsigned short *lengthSize)
{
    return !input.isEmpty() && lengthFromTlv(input.constData(), input.size(), length, lengthSize);
}

QByteArray tlvElement(const QByteArray &tag, const QByteArray &value)
{
    QByteArray element;
    element.reserve(tag.size() + value.size() + mostLengthBytes);
    return appendTlvElement(element, tag, value) ? element : QByteArray();
}

bool appendTlvElement(QByteArray &run, const QByteArray &tag, const QByteArray &value)
{
    if (tag.isEmpty() || tag.size() > maxTagWritten || value.size() > maxValue)
        return false;
    const LengthField length = encodeLength(value.size());
    run.append(tag.constData(), tag.size());
    run.append(length.bytes.data(), length.size);
    run.append(value.constData(), value.size());
    return true;
}

bool extractTlvElement(const QByteArray &input, QByteArray *tag, QByteArray *value,
                       unsigned short *elementSize)
{
    if (input.isEmpty())
        return false;

    *tag = tlvTag(input);
    const qsizetype tagEnd = tag->size();
    unsigned short length = 0;
    unsigned short lengthSize = 0;
    if (!lengthFromTlv(input.constData() + tagEnd, input.size() - tagEnd, &length, &lengthSize))
        return false;

    const qsizetype size = tagEnd + lengthSize + length;
    *elementSize = static_cast<unsigned short>(size);
    if (length == 0 || size > input.size())
        return false;
    *value = QByteArray(input.constData() + tagEnd + lengthSize, length);
    return true;
}

QVector<QByteArray> extractTlvElements(const QByteArray &input)
{
    QVector<QByteArray> elements;
    QByteArrayView run = input;
    for (TlvView element; takeTlvElement(&run, &element);) {
        elements.append(element.whole.toByteArray());
        if (element.whole.size() == element.tag.size())
            elements.last().append('\0'); // a tag that ends the input: its length is made explicit
    }
    return run.isEmpty() ? elements : QVector<QByteArray>();
}

bool takeTlvElement(QByteArrayView *run, TlvView *element)
{
    if (run->isEmpty())
        return false;
    const qsizetype available = run->size();
    const qsizetype tag = tagSize(run->data(), available);
    unsigned short length = 0;
    unsigned short lengthSize = 0;
    if (tag < available) {
        if (!lengthFromTlv(run->data() + tag, available - tag, &length, &lengthSize))
            return false;
        if (length > available - tag - lengthSize)
            return false;
    }
    const qsizetype size = tag + lengthSize + length;
    *element = {run->first(tag), run->sliced(tag + lengthSize, length), run->first(size)};
    *run = run->sliced(size);
    return true;
}

QByteArray midRaw(const QByteArray &input, int position, int count)
{
    if (position < 0 || position > input.size())
        return {};
    const qsizetype rest = input.size() - position;
    if (count > rest)
        return {};
    return QByteArray::fromRawData(input.constData() + position, count < 0 ? rest : count);
}

} // namespace Velno
