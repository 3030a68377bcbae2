// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/common/event_writer.h"
#include "simulator/fiscal/receipt_writer.h"
#include "simulator/register/command_responder.h"
#include "simulator/register/pairing_responder.h"
#include "simulator/register/provoked_faults.h"
#include "simulator/register/register_options.h"
#include "simulator/register/wire.h"

#include <chrono>
#include <functional>

namespace Simulator {

/** The simulated register: joins what it says to how it talks, obeys its operator, and reports events. */
class CashRegister : public QObject
{
    Q_OBJECT

public:
    explicit CashRegister(const RegisterOptions &options);

    /** To be called first. @return an empty text, or why it cannot be what it was asked to be */
    QString prepare();

    void start();

    /**
     * A line of the operator: fault NAME[=VALUE], fault none, quit, or a setting of the model; the serial
     * number may stand in front.
     *
     * @return an empty text, or what was wrong and what is accepted
     */
    QString obey(const QString &line);

    /** Ends the connection and makes no other. */
    void stop();

    const QByteArray &serial() const { return m_options.serial; }

    /** Whether it owes an answer, or is at work. */
    bool isBusy() const { return m_delay.isActive(); }

signals:
    void talked(); ///< a command has come, or its answer was sent
    void receiptClosed();
    void finished(int exitCode); ///< with --once: 0 paired, 1 not paired

private:
    void takeConnection();
    void takePurpose();
    void takeFrame(const QByteArray &frame);
    void takePairingRequest(const QByteArray &frame);
    void takeCommand(const QByteArray &frame);
    void obey(const CommandResponder::Request &request);
    Faults takeFaultsFor(const CommandResponder::Request &request);
    void putPaperIn(const QStringList &faults);
    void cutPower();
    void takePrint(const Print &print);
    void takeEnd(const QString &reason);
    void refuse(const QString &reason);
    void close(const QString &reason);
    Work workBehind(const ReceiptRef &sale, const SaleTotals &before) const;
    void workFor(std::chrono::milliseconds time);
    void sendAfter(std::chrono::milliseconds wait, std::function<void()> send);
    void sendNow();
    void sendPairingAnswer(Velno::GMP::MessageTag kind, const PairingResponder::Answer &answer);
    void takeKeys(const Velno::GMP::MatchExt &keys);
    void tellOutcome(const char *event, const CommandRow &command, Refusal refusal);
    void sendCommandAnswer(const CommandRow &command, const CommandResponder::Answer &answer,
                           const Faults &faults);
    QString changeFaults(const QString &line);
    QString changeModel(const QString &line);

    RegisterOptions m_options; ///< its faults are those that the operator has switched on
    ProvokedFaults m_provoked; ///< those that a sale has
    FiscalModel m_model;
    ReceiptWriter m_receipts;
    EventWriter m_events;
    PairingResponder m_pairing;
    CommandResponder m_commands;
    Wire m_wire;
    QTimer m_silence;             ///< gives up on a peer that says nothing
    QTimer m_delay;               ///< runs until the answer leaves
    std::function<void()> m_send; ///< what is done then
    bool m_restIsDue = false;     ///< half an answer has been sent
    bool m_isAtWork = false;      ///< with what is not answered
    Work m_work;                  ///< what the command in progress has made the printer do
    bool m_mute = false;
    bool m_conversed = false; ///< a key exchange has begun on this connection
    bool m_paired = false;
};

} // namespace Simulator
