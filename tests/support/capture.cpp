// SPDX-License-Identifier: Apache-2.0

#include "tests/support/capture.h"

#include <QHash>
#include <QtEndian>

#include <algorithm>
#include <array>

namespace TestSupport {

namespace {

using Address = std::array<quint8, 4>;

constexpr Address registersAddress{192, 0, 2, 20}; // of documentation
constexpr Address applicationsAddress{192, 0, 2, 10};
constexpr quint8 synchronise = 0x02;
constexpr quint8 push = 0x08;
constexpr quint8 acknowledge = 0x10;

template <typename Number>
void append(QByteArray &bytes, Number number)
{
    const qsizetype size = bytes.size();
    bytes.resize(size + qsizetype(sizeof number));
    qToBigEndian(number, bytes.data() + size);
}

void append(QByteArray &bytes, const Address &address)
{
    for (const quint8 byte : address)
        bytes.append(char(byte));
}

/** The Internet's checksum (RFC 1071). */
quint16 checksum(QByteArray bytes)
{
    if (bytes.size() % 2 != 0)
        bytes.append('\0');
    quint32 sum = 0;
    for (qsizetype i = 0; i < bytes.size(); i += 2)
        sum += qFromBigEndian<quint16>(bytes.constData() + i);
    while (sum > 0xFFFF)
        sum = (sum & 0xFFFF) + (sum >> 16);
    return quint16(~sum);
}

/** One side of a connection. */
struct End
{
    Address address;
    quint16 port;
    quint32 next; ///< its next byte's number
};

QByteArray tcpSegment(const End &from, const End &to, quint8 flags, const QByteArray &bytes)
{
    QByteArray segment;
    append(segment, from.port);
    append(segment, to.port);
    append(segment, from.next);
    append(segment, (flags & acknowledge) != 0 ? to.next : quint32(0));
    append(segment, quint16(0x5000 | flags)); // 5 words of header
    append(segment, quint16(0xFFFF));         // window
    append(segment, quint32(0));              // checksum, urgent pointer
    segment += bytes;
    QByteArray pseudo;
    append(pseudo, from.address);
    append(pseudo, to.address);
    append(pseudo, quint16(6)); // TCP
    append(pseudo, quint16(segment.size()));
    qToBigEndian(checksum(pseudo + segment), segment.data() + 16);
    return segment;
}

QByteArray ethernetFrame(const End &from, const End &to, const QByteArray &segment)
{
    QByteArray header;
    append(header, quint16(0x4500));
    append(header, quint16(20 + segment.size()));
    append(header, quint32(0x4000)); // no fragments
    append(header, quint16(0x4006)); // 64 hops, TCP
    append(header, quint16(0));      // checksum
    append(header, from.address);
    append(header, to.address);
    qToBigEndian(checksum(header), header.data() + 10);
    const auto card = [](const End &end) { return QByteArray("\x02\0\0\0\0", 5) + char(end.address[3]); };
    return card(to) + card(from) + QByteArray("\x08\0", 2) + header + segment;
}

/** Writes the records of one file. */
class Writer
{
public:
    Writer(CapturePorts ports, qsizetype largestSegment)
        : m_ports(ports)
        , m_largest(largestSegment)
    {
        append(m_file, quint32(0xA1B2C3D4)); // times in µs
        append(m_file, quint32(0x00020004)); // version 2.4
        append(m_file, quint64(0));
        append(m_file, quint32(0xFFFF)); // no packet is longer
        append(m_file, quint32(1));      // Ethernet
    }

    void add(const Piece &piece)
    {
        if (!m_connections.contains(piece.connection))
            connect(piece);
        Ends &ends = m_connections[piece.connection];
        End &from = piece.fromRegister ? ends.reg : ends.application;
        End &to = piece.fromRegister ? ends.application : ends.reg;
        for (qsizetype at = 0; at < piece.bytes.size(); at += m_largest)
            send(from, to, push | acknowledge, piece.bytes.mid(at, m_largest), piece.time);
    }

    const QByteArray &file() const { return m_file; }

private:
    struct Ends
    {
        End reg;
        End application;
    };

    void connect(const Piece &first)
    {
        Ends ends{{registersAddress, m_ports.reg++, 1000}, {applicationsAddress, m_ports.application, 5000}};
        send(ends.reg, ends.application, synchronise, {}, first.time);
        send(ends.application, ends.reg, synchronise | acknowledge, {}, first.time);
        send(ends.reg, ends.application, acknowledge, {}, first.time);
        m_connections.insert(first.connection, ends);
    }

    void send(End &from, const End &to, quint8 flags, const QByteArray &bytes, qint64 time)
    {
        constexpr qint64 second = 1'000'000;
        const QByteArray packet = ethernetFrame(from, to, tcpSegment(from, to, flags, bytes));
        append(m_file, quint32(time / second));
        append(m_file, quint32(time % second));
        append(m_file, quint32(packet.size()));
        append(m_file, quint32(packet.size()));
        m_file += packet;
        from.next += quint32(bytes.size()) + ((flags & synchronise) != 0 ? 1 : 0);
    }

    CapturePorts m_ports;
    qsizetype m_largest;
    QByteArray m_file;
    QHash<int, Ends> m_connections;
};

} // namespace

QByteArray captureOf(const QList<Piece> &pieces, CapturePorts ports, qsizetype largestSegment)
{
    Writer writer(ports, largestSegment);
    for (const Piece &piece : pieces)
        writer.add(piece);
    return writer.file();
}

} // namespace TestSupport
