#pragma once

#include "simulator/register/command_table.h"

#include <QByteArray>
#include <QHash>
#include <QString>
#include <QStringList>

#include <span>

/**
 * What the simulated register and the relay can be told to do wrong. One table for each program: it parses
 * the option and the line on standard input, and makes the help and the list of what is accepted.
 *
 * The steps of a pairing are 1 (start), 2 (key exchange) and 3 (confirmation); the commands are those of
 * command_table.h.
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

    // of the relay
    NoEcho,
    WrongEcho,
    ShortEcho,
    Drop,
    DropAfter,
};

/** Which of a register's conversations a fault disturbs. */
enum class Disturbs { All, KeyExchange, Commands };

/** What is accepted as the value of a fault that has one. Behind a command *N may stand: for N times. */
enum class Takes { Number, ResultCode, StepOrCommand, Command, RefusableCommand };

struct FaultRow
{
    Fault fault;
    const char *name;
    const char *value; ///< how the value is written in the help; null for a fault without one
    int least;
    int most;
    const char *help; ///< one line
    Disturbs disturbs = Disturbs::All;
    Takes takes = Takes::Number;
};

using FaultTable = std::span<const FaultRow>;

FaultTable faultTable(); ///< of the simulated register
FaultTable relayFaultTable();

/** NAME or NAME=VALUE, as it is typed. */
QString faultUsage(const FaultRow &row);

/** One line for each fault, aligned, for --help. */
QString faultHelp(FaultTable table = faultTable());

struct FaultValue
{
    int number = 0;
    int step = 0; ///< of result-code; 0: every step
    const CommandRow *command = nullptr;
    int times = 0;     ///< how often the command is still disturbed; 0: always
    QString text = {}; ///< the fault as it was typed
};

/** The faults of one program that are switched on, each with its value. */
class Faults
{
public:
    explicit Faults(FaultTable table = faultTable())
        : m_table(table)
    {
    }

    /**
     * Obeys an operator's line, "fault NAME[=VALUE]" or "fault none".
     *
     * @return an empty text, or what was wrong and what is accepted; nothing changes then
     */
    QString obey(const QString &line);

    /**
     * Switches on what `text`, NAME[=VALUE], names; a fault that is on already takes the new value.
     *
     * @return an empty text, or what was wrong and what is accepted; nothing changes then
     */
    QString switchOn(const QString &text);

    bool has(Fault fault) const { return m_active.contains(fault); }

    /** The fault's number; 0 when it is off. */
    int number(Fault fault) const { return m_active.value(fault).number; }

    /** Whether the fault is on for this step of a pairing. */
    bool hitsStep(Fault fault, int step) const;

    /** Whether the fault is on for this command. */
    bool hitsCommand(Fault fault, const CommandRow &command) const;

    /** The command has come. @return the faults that were on for so many times and are off now, as typed */
    QStringList spend(const CommandRow &command);

    /** The two digits of result-code for this step; empty when it does not apply. */
    QByteArray resultCode(int step) const;

    /** As they would be typed, in the order of the table. */
    QStringList names() const;

private:
    FaultTable m_table;
    QHash<Fault, FaultValue> m_active;
};

} // namespace Simulator
