// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/frame_faults.h"

#include "ExtDevice/encoding/tlv.h"
#include "ExtDevice/gmp3/tags.h"
#include "simulator/register/message_body.h"

#include <QRandomGenerator>
#include <QtEndian>

using namespace Qt::StringLiterals;
using namespace Velno::GMP;

namespace Simulator {

namespace {

constexpr int garbageSize = 64;
constexpr int longestPairingFrame = 4096; // announced length
constexpr quint32 hugeLength = 1U << 30;
const QByteArray keepAlive = "\0\0\0\x04\xDE\xAD\xBE\xEF"_ba; // length and sign

// The first byte announces more than any reader accepts, so that all of them give up at the same place.
QByteArray garbage()
{
    QByteArray bytes(garbageSize, '\xFF');
    for (int i = 1; i < garbageSize; ++i)
        bytes[i] = char(QRandomGenerator::global()->bounded(256));
    return bytes;
}

/** The frame behind a length of its own, which `Length` has the size of. */
template <typename Length>
QByteArray announced(Length length, const QByteArray &frame)
{
    QByteArray prefix(sizeof length, Qt::Uninitialized);
    qToBigEndian(length, prefix.data());
    return prefix + frame;
}

QByteArray withBadCrc(const QByteArray &frame, const Faults &faults)
{
    return faults.has(Fault::BadCrc) ? withOneBitWrong(frame) : frame;
}

} // namespace

QByteArray serialUnderFaults(QByteArray serial, const Faults &faults)
{
    if (faults.has(Fault::OtherSerial))
        serial.back() = serial.back() == '0' ? '1' : '0';
    return serial;
}

QByteArray withOneBitWrong(QByteArray bytes)
{
    if (!bytes.isEmpty())
        bytes.back() = char(bytes.back() ^ 1);
    return bytes;
}

QByteArray elementsUnderFaults(QByteArray elements, const Faults &faults)
{
    if (faults.has(Fault::ExtraElement))
        elements += Velno::tlvElement(fieldTag(AppHashCipher), "0");
    if (!faults.has(Fault::BadMac) && !faults.has(Fault::NoMac))
        return elements;
    MessageBody body(elements);
    if (faults.has(Fault::NoMac))
        body.remove(fieldTag(CommandMac));
    else
        body.replace(fieldTag(CommandMac), withOneBitWrong(body.value(fieldTag(CommandMac))));
    return body.toBytes();
}

QByteArray pairingBytes(const QByteArray &frame, const Faults &faults)
{
    if (faults.has(Fault::Garbage))
        return garbage();
    const QByteArray content = withBadCrc(frame, faults).sliced(sizeof(quint16));
    if (faults.has(Fault::Oversize))
        return announced(quint16(longestPairingFrame + 1), content);
    return announced(quint16(content.size() + faults.has(Fault::BadLength)), content);
}

CommandBytes commandBytes(const QByteArray &frame, const Faults &faults)
{
    const QByteArray before = keepAlive.repeated(faults.number(Fault::KeepAlives));
    if (faults.has(Fault::Garbage))
        return {before + garbage(), {}};
    const auto length = quint32(frame.size() + faults.has(Fault::BadLength));
    const QByteArray bytes =
        announced(faults.has(Fault::HugeFrame) ? hugeLength : length, withBadCrc(frame, faults));
    const bool stale = faults.has(Fault::StaleReply);
    if (!stale && !faults.has(Fault::HalfFrame))
        return {before + bytes, {}};
    const qsizetype half = bytes.size() / 2;
    return {before + bytes.first(half), stale ? bytes.sliced(half) : QByteArray()};
}

} // namespace Simulator
