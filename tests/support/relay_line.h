// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/simulated_relay.h"

#include <QTcpSocket>

#include <memory>

/** Connections to a velno-relay. */
namespace TestSupport {

inline constexpr char serial[] = "UB1234567890";
inline constexpr int longestWait = 30'000; // ms

/** One end of a connection to the relay. */
class Line
{
public:
    explicit Line(quint16 port, const QByteArray &firstBytes = {});

    void send(const QByteArray &bytes);
    /** What has come by the time that so many bytes are there, or none will. */
    QByteArray read(qsizetype count);
    /** Everything until the relay closes; "never closed" when it does not. */
    QByteArray readToEnd();
    void endWriting() const;
    void close() { socket.close(); }
    /** Without a word to the other side but that it is over. */
    void reset();

    QTcpSocket socket;
};

/** A register and an application that the relay has joined. */
struct Joined
{
    explicit Joined(SimulatedRelay &relay, const QByteArray &name = serial);

    Line cashRegister;
    std::unique_ptr<Line> application;
    bool echoed = false;
};

/** A field of an event. */
QString text(const QJsonObject &event, const QString &field);

} // namespace TestSupport
