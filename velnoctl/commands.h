// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <span>

/**
 * What velnoctl can do. One table: it parses the command line, scripts and the shell, completes names, and
 * makes the help. A new command is a row in command_table.cpp and a function.
 */
namespace VelnoCtl {

class Arguments;
class Session;

/** What a command came to. */
struct Answer
{
    int code = 0; ///< the library's result code, or an ExitStatus
    QString text; ///< the result for people, or what is wrong with WrongUsage; empty: nothing is printed
    QJsonObject values; ///< the result's fields for --json; a refused command may have some too
    int detail = 0;     ///< velnoext_error_detail()
    int cause = 0;      ///< velnoext_cause()
    const char *result =
        nullptr; ///< the name of a code that is none of the library's; the text then says what it means
    bool isTold = false; ///< the command wrote what there is to say itself
};

enum class Needs {
    Nothing,      ///< runs without a register
    Control,      ///< speaks to a simulator's --control, and to no register
    Target,       ///< wants to know which register, but does not connect
    Connection,   ///< is run when the register is connected, and reads its answer
    RawConnection ///< is run when the register is connected, and reads nothing
};

/** Where a command may stand, as bits. */
enum Place : unsigned { CommandLine = 1, Script = 2, Shell = 4, Everywhere = 7 };

struct Command
{
    const char *group; ///< under which the help shows it; like help and result given to Spoken::tr()
    const char *name;
    const char *arguments; ///< each KIND or key=KIND, see arguments.h; optional ones in [brackets], last
    const char *help;      ///< one line
    const char *result;    ///< what it prints
    const char *example;   ///< as it is typed
    Needs needs;
    unsigned places;
    Answer (*run)(Session &session, const Arguments &arguments);
    int most = 1; ///< how often the arguments may be repeated, with a + between
};

std::span<const Command> commandTable();

/** The command of this name, or null. */
const Command *commandNamed(const QString &name);

/** The names that may stand there, in the table's order. */
QStringList commandNames(Place place);

/** NAME and its arguments, as it is typed; those with keys as one. */
QString commandUsage(const Command &command);

/** Usage, arguments with what is accepted, result and example of a command. */
QString commandHelp(const Command &command);

/** One line for each command that may stand there, under the names of the groups. */
QString commandsHelp(unsigned places);

/** The names alone, a line or two for each group. */
QString commandsOverview(Place place);

} // namespace VelnoCtl
