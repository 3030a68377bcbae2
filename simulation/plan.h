// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QList>
#include <QString>

#include <optional>
#include <span>

/** What happens in a run, made from one number, and as a text that makes it happen again. */
namespace Simulation {

enum class MishapKind {
    Drop,         ///< the connection ends; the command is not done
    Unheard,      ///< the command is done, and then the connection ends
    Damaged,      ///< done; the answer's MAC is wrong
    Short,        ///< done; the answer has no end
    Silent,       ///< not done, and no answer comes
    SilentBehind, ///< done, and no answer comes
    Cut,          ///< the register's power, before the command
    CutBehind,    ///< the register's power, when it is done
    Refuse,       ///< this command is refused so many times
    RefuseFor,    ///< this command is refused for so many milliseconds
    RefuseAlways, ///< this command is refused until everything is repaired
    Late,         ///< for so many milliseconds behind its closing nothing is told of a receipt
    ForgetKeys,   ///< the register loses its keys
    NoPaper,      ///< for so many milliseconds
    NoPaperAtAll, ///< until everything is repaired
    Busy,         ///< the register is in its menu for so many milliseconds
    OutOfService, ///< likewise
    LowLimit,     ///< sales opened from now on may come to so many kuruş
    JournalFull,  ///< the register's journal cannot be written for so many milliseconds
    Replace,      ///< another fiscal memory under the same serial number
    Kill,         ///< the till's process, before a command, a write or a flush
    KillBehind,   ///< the till's process, behind a command
    Off,          ///< the power of the till's computer, before a command, a write or a flush
    OffBehind,    ///< the power of the till's computer, behind a command
    DiskFull,     ///< the till's disk, until everything is repaired
    WriteFails,   ///< one write to the till's disk
    FlushFails,   ///< one flush of the till's disk
    // Somebody at the register's own keyboard, before a command; then the connection ends. With an odd number
    // that command is done, unless another sale is open now.
    HandSells,   ///< a line on the open sale; without one as the last
    HandDeletes, ///< the last line of the open sale
    HandSale,    ///< cancels what is open, and sells something for so many milliseconds
};

/** Where a mishap can happen; these are its points: commands that have come, writes and flushes of the till's
 * disk. */
enum class Where { Command, Write, Flush, Anywhere };

struct MishapRow
{
    MishapKind kind;
    const char *name;
    Where where;
    int weight; ///< how often it is drawn, beside the others
    int least;  ///< of its number
    int most;
};

std::span<const MishapRow> mishapTable();

/** Something that goes wrong: at the n-th of its points since the one before it. "cut@7", "refuse@3=2". */
struct Mishap
{
    const MishapRow *row = nullptr;
    int point = 1;
    int number = 0;
};

enum class Job { Receipt, ZReport, XReport, Slip };

/** One order, and what goes wrong with it. */
struct Step
{
    Job job = Job::Receipt;
    quint64 seed = 0;     ///< of its content, of what a cut leaves on the disk, and of what a person wants
    int mostItems = 0;    ///< no more than these; what is left out is the end of the list
    bool isAhead = false; ///< accepted with the next one before anything is done about it; no Z report
    QList<Mishap> mishaps;
};

/** A day at one register with one ledger. */
struct Plan
{
    quint64 seed = 0; ///< of keys, and of the first Z number
    QList<Step> steps;

    QString text() const;
    static std::optional<Plan> fromText(const QString &text);
};

/** A day with so many receipts, other jobs between them. */
Plan makePlan(quint64 seed, int receipts);

} // namespace Simulation
