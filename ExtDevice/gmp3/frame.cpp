// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/frame.h"

#include "ExtDevice/encoding/crc.h"
#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/log.h"

#include <QtEndian>

#include <algorithm>
#include <cstring>

namespace Velno::GMP {

namespace {

constexpr int identitySize = 12;
constexpr int crcSize = 2;
constexpr int emptyFrameSize = frameLengthSize + identitySize + crcSize;
constexpr int mostElementOverhead = 6; // tag and length of the message element

void append16(QByteArray &bytes, unsigned int number)
{
    bytes.append(char(number >> 8 & 0xFF)).append(char(number & 0xFF));
}

bool crcMatches(const char *data, int size)
{
    if (size < frameLengthSize + crcSize)
        return false;
    const int received = qFromBigEndian<quint16>(data + size - crcSize);
    const int computed = crc16(QByteArrayView(data + frameLengthSize, size - frameLengthSize - crcSize));
    if (received == computed)
        return true;
    // The stream stays in upper-case hexadecimal: what reads these logs is used to it.
    LogLine() << "CRC is not equal: " << std::uppercase << std::hex << received << "!=" << computed;
    return false;
}

bool identityMatches(const char *data, int size, const char *identity)
{
    // Compared up to the identity's terminator, so a short identity matches no space-padded header.
    if (size >= emptyFrameSize &&
        (!identity || std::strncmp(data + frameLengthSize, identity, identitySize) == 0))
        return true;
    LogLine() << "No Serial Match!";
    return false;
}

QVector<Field> fieldsOf(const QByteArray &body)
{
    QVector<Field> fields;
    for (const QByteArray &element : extractTlvElements(body)) {
        Field field;
        unsigned short size = 0;
        if (extractTlvElement(element, &field.tag, &field.value, &size))
            fields.append(std::move(field));
    }
    return fields;
}

} // namespace

int announcedLength(const char *frame)
{
    return qFromBigEndian<quint16>(frame);
}

QByteArray makeFrame(bool response, MessageTag kind, const QByteArray &body, const char *identity)
{
    QByteArray frame;
    frame.reserve(emptyFrameSize + mostElementOverhead + body.size());
    append16(frame, 0); // the length, when it is known
    frame.append(identity, qsizetype(qstrnlen(identity, identitySize)));
    frame.append(frameLengthSize + identitySize - frame.size(), ' ');
    if (kind == None)
        frame += body;
    else if (!appendTlvElement(frame, response ? responseMessageTag(kind) : requestMessageTag(kind), body))
        return {};
    append16(frame, crc16(QByteArrayView(frame).sliced(frameLengthSize)));
    const qsizetype announced = frame.size() - frameLengthSize;
    if (announced > 0xFFFF)
        return {};
    qToBigEndian(quint16(announced), frame.data());
    return frame;
}

int checkFrame(const char *data, int size, const char *identity)
{
    if (!data || size < frameLengthSize || size - frameLengthSize != announcedLength(data))
        return 4000;
    if (!crcMatches(data, size))
        return 4001;
    return identityMatches(data, size, identity) ? 0 : 4002;
}

QByteArrayView frameBody(const char *data, int size)
{
    return QByteArrayView(data + frameLengthSize + identitySize, size - emptyFrameSize);
}

const QByteArray *ReceivedMessage::find(const QByteArray &tag) const
{
    const auto last = std::find_if(fields.crbegin(), fields.crend(),
                                   [&tag](const Field &field) { return field.tag == tag; });
    return last == fields.crend() ? nullptr : &last->value;
}

int readFrame(const char *data, int size, const char *identity, ReceivedMessage *message)
{
    if (const int status = checkFrame(data, size, identity); status != 0)
        return status;
    const QByteArrayView payload = frameBody(data, size);
    for (const QByteArray &element :
         extractTlvElements(QByteArray::fromRawData(payload.data(), payload.size()))) {
        Field found;
        unsigned short elementSize = 0;
        bool isResponse = false;
        if (!extractTlvElement(element, &found.tag, &found.value, &elementSize))
            continue;
        const MessageTag kind = GMP::message(found.tag, &isResponse);
        if (kind == None)
            continue;
        *message = {kind, isResponse, fieldsOf(found.value)};
        return 0;
    }
    return 4003;
}

} // namespace Velno::GMP
