// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/common/faults.h"
#include "simulator/register/command_table.h"

#include <QByteArray>

/**
 * What the simulated register can be told to do wrong. The steps of a pairing are 1 (start), 2 (key exchange)
 * and 3 (confirmation); the commands are those of command_table.h.
 */
namespace Simulator {

enum class Fault {
    WrongAuthority,
    ExpiredCertificate,
    NoCertificate,
    BadSignature,
    NoSignature,
    ResultCode,
    WrongKind,
    RequestInstead,
    BadCrc,
    BadLength,
    OtherSerial,
    NoMessageTag,
    Oversize,
    Segments,
    Delay,
    Mute,
    Close,
    WrongKeyCheck,
    WrongAppHash,
    SmallDhKey,
    Garbage,
    BadMac,
    NoMac,
    ExtraElement,
    ShortReply,
    Refuse,
    KeepAlives,
    StaleReply,
    HalfFrame,
    HugeFrame,
    ForgetPairing,
    State,
    Error,
    SaleLimit,
    PaperOutAfter,
    LostAnswer,
    PowerCut,
};

/** Which of a register's conversations a fault disturbs. */
enum class Disturbs { All, KeyExchange, Commands };

/** What is accepted as the value of a fault that has one. Behind a command *N may stand: for N times. */
enum class Takes { Number, ResultCode, StepOrCommand, Command, RefusableCommand };

struct RegisterFaultValue : FaultValue
{
    int step = 0; ///< of result-code; 0: every step
    const CommandRow *command = nullptr;
    int times = 0; ///< how often the command is still disturbed; 0: always
};

struct RegisterFaultRow : FaultRow
{
    using Value = RegisterFaultValue;

    Fault fault;
    Disturbs disturbs = Disturbs::All;
    Takes takes = Takes::Number;

    QString valueRule() const;
    std::optional<RegisterFaultValue> readValue(const QString &written) const;
};

std::span<const RegisterFaultRow> faultTable();

/** The faults of a register that are switched on. */
class Faults : public FaultSwitches<RegisterFaultRow>
{
public:
    Faults()
        : FaultSwitches(faultTable())
    {
    }

    /** Whether the fault is on for this step of a pairing. */
    bool hitsStep(Fault fault, int step) const;

    /** Whether the fault is on for this command. */
    bool hitsCommand(Fault fault, const CommandRow &command) const;

    /** The command has come. @return the faults that were on for so many times and are off now, as typed */
    QStringList spend(const CommandRow &command);

    /** The two digits of result-code for this step; empty when it does not apply. */
    QByteArray resultCode(int step) const;
};

} // namespace Simulator
