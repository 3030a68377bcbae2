// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/protocol_table.h"
#include "simulator/register/command_call.h"

#include <QStringList>

#include <span>

namespace Simulator {

/** One command of an application, as the protocol's table has it, and what is done. */
struct CommandRow : Velno::GMP::CommandForm
{
    bool refusable; ///< whether its answer can say no
    Execution run;
};

/** Every command that the register knows. */
std::span<const CommandRow> commandTable();

/** Null for a number, or a name, that no command has. */
const CommandRow *commandByCode(int code);
const CommandRow *commandByName(const QString &name);

/** @param refusableOnly  those alone whose answer can say no */
QStringList commandNames(bool refusableOnly);

} // namespace Simulator
