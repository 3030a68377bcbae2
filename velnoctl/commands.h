#pragma once

#include <QJsonObject>
#include <QString>
#include <QStringList>

#include <span>

/**
 * What velnoctl can do. One table: it parses the command line, scripts and the shell, completes names, and
 * makes the help. A new command is a row here and a function.
 */
namespace VelnoCtl {

class Session;

/** What a command came to. */
struct Answer
{
    int code = 0;        ///< the library's result code, or an ExitStatus
    QString text;        ///< the result for people; nothing is printed when empty
    QJsonObject values;  ///< the result's fields for --json; a refused command may have some too
    int detail = 0;      ///< velnoext_error_detail()
    bool isTold = false; ///< the command wrote what there is to say itself
};

enum class Needs {
    Nothing,   ///< runs without a register
    Target,    ///< wants to know which register, but does not connect
    Connection ///< is run when the register is connected
};

/** Where a command may stand, as bits. */
enum Place : unsigned { CommandLine = 1, Script = 2, Shell = 4, Everywhere = 7 };

struct Command
{
    const char *name;
    const char *arguments; ///< each the name of a kind, see arguments.h; optional ones in [brackets], last
    const char *help;      ///< one line
    Needs needs;
    unsigned places;
    Answer (*run)(Session &session, const QStringList &arguments);
};

std::span<const Command> commandTable();

/** The command of this name, or null. */
const Command *commandNamed(const QString &name);

/** The names that may stand there, in the table's order. */
QStringList commandNames(Place place);

/** NAME and its arguments, as it is typed. */
QString commandUsage(const Command &command);

/** One line for each command that may stand there, aligned. */
QString commandsHelp(unsigned places);

} // namespace VelnoCtl
