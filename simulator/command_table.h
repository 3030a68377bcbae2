#pragma once

#include "simulator/fiscal_model.h"

#include <QDataStream>
#include <QStringList>

#include <span>

namespace Simulator {

/** A command in progress. */
struct CommandCall
{
    FiscalModel &model;
    QDataStream &reply; ///< where the answer's items are written
    bool refuse;        ///< the register is told not to do it
};

/** One command of an application: its number in a request, its name for people, and what is done. */
struct CommandRow
{
    int code;
    const char *name;
    bool refusable; ///< whether its answer can say no

    /** Does it and writes the answer. @return whether the register accepted */
    bool (*run)(const CommandCall &call);
};

/** Every command that the register knows. */
std::span<const CommandRow> commandTable();

/** Null for a number, or a name, that no command has. */
const CommandRow *commandByCode(int code);
const CommandRow *commandByName(const QString &name);

/** @param refusableOnly  those alone whose answer can say no */
QStringList commandNames(bool refusableOnly);

} // namespace Simulator
