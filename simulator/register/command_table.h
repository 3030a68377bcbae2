#pragma once

#include "simulator/fiscal/fiscal_model.h"

#include <QDataStream>
#include <QStringList>

#include <functional>
#include <span>

namespace Simulator {

/** What the register is told to do wrong with a command. */
struct Disturbance
{
    bool refuse = false;              ///< not to do it
    bool overLimit = false;           ///< to find every sale over its limit
    std::optional<qint32> state = {}; ///< to be in this state as far as anybody asks
    std::optional<qint32> error = {}; ///< to have this error, and to leave the sale's items as they are
};

/** A command in progress. */
struct CommandCall
{
    FiscalModel &model;
    QDataStream &reply; ///< where the answer's items are written; a command without an answer writes none
    const Disturbance &wrong;
};

/** Does a command and writes the answer. @return why it is not done, or that it tells an error made up by a
 * fault */
using Execution = std::function<Refusal(const CommandCall &call)>;

/** A request whose items have been read. */
struct DecodedCommand
{
    Execution run;
    QList<ItemRequest> items = {}; ///< what is to be sold
};

/** One command of an application: its number in a request, its name for people, and what is done. */
struct CommandRow
{
    int code;
    const char *name;
    bool refusable; ///< whether its answer can say no

    /** Reads the items of a request, as far as the stream's status says, and nothing else happens yet. */
    DecodedCommand (*decode)(QDataStream &items);
};

/** Every command that the register knows. */
std::span<const CommandRow> commandTable();

/** Null for a number, or a name, that no command has. */
const CommandRow *commandByCode(int code);
const CommandRow *commandByName(const QString &name);

/** @param refusableOnly  those alone whose answer can say no */
QStringList commandNames(bool refusableOnly);

} // namespace Simulator
