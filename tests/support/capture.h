// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

namespace TestSupport {

/** What one side said at once. */
struct Piece
{
    int connection;    ///< any number
    bool fromRegister; ///< which connects
    QByteArray bytes;
    qint64 time; ///< µs since 1970
};

/** The ports of a capture's connections; each takes the next one on the register's side. */
struct CapturePorts
{
    quint16 reg = 40000;
    quint16 application = 4100;
};

/**
 * A capture file (pcap) of these pieces in their order, as a network card would have heard them: Ethernet,
 * IPv4 and TCP with right checksums, each connection with its handshake, each piece in segments of at most so
 * many bytes.
 */
QByteArray captureOf(const QList<Piece> &pieces, CapturePorts ports = {}, qsizetype largestSegment = 1460);

} // namespace TestSupport
