#pragma once

#include "simulator/event_writer.h"
#include "simulator/pairing_responder.h"
#include "simulator/register_options.h"
#include "simulator/wire.h"

namespace Simulator {

/** The simulated register: joins what it says to how it talks, obeys its operator, and reports events. */
class CashRegister : public QObject
{
    Q_OBJECT

public:
    explicit CashRegister(const RegisterOptions &options, QObject *parent = nullptr);

    void start();

    /** A line of the operator: fault NAME[=VALUE], fault none, quit. */
    void takeLine(const QString &line);
    void stop();

signals:
    void finished(int exitCode);

private:
    void takeConnection();
    void takeFrame(const QByteArray &frame);
    void takeEnd(const QString &reason);
    void refuse(const QString &reason);
    void respond(Velno::GMP::MessageTag kind);
    void send();
    void changeFaults(const QString &line);
    void finish(int exitCode);

    RegisterOptions m_options;
    EventWriter m_events;
    PairingResponder m_responder;
    Wire m_wire;
    QTimer m_silence; ///< gives up on a peer that says nothing
    QTimer m_delay;   ///< runs until the answer leaves
    Velno::GMP::MessageTag m_asked = Velno::GMP::None;
    PairingResponder::Answer m_answer;
    bool m_conversed = false; ///< a request has come on this connection
    bool m_mute = false;
    bool m_paired = false;
    bool m_finished = false;
};

} // namespace Simulator
