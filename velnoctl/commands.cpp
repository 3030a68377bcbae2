#include "velnoctl/commands.h"

#include "velnoctl/house_commands.h"
#include "velnoctl/query_commands.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr std::array table{
    Command{"state", "", "the register's state, by number and name", Needs::Connection, Everywhere, state},
    Command{"z", "", "the number of the current Z report", Needs::Connection, Everywhere, currentZ},
    Command{"last-z", "", "when the last Z report was made", Needs::Connection, Everywhere, lastZ},
    Command{"datetime", "", "the register's clock", Needs::Connection, Everywhere, dateTime},
    Command{"sale-limit", "", "the highest amount of one sale", Needs::Connection, Everywhere, saleLimit},
    Command{"paper", "", "whether the printer has paper; 9 when not", Needs::Connection, Everywhere, paper},
    Command{"serial", "", "the serial number that the register gave", Needs::Connection, Everywhere,
            serialNumber},
    Command{"login", "", "opens the application's session", Needs::Connection, Everywhere, login},
    Command{"logout", "", "ends the session", Needs::Connection, Everywhere, logout},
    Command{"run", "FILE", "a script, one command a line, # comments; - is standard input", Needs::Target,
            CommandLine | Shell, runInput},
    Command{"shell", "", "asks for commands; Tab completes, quit or Ctrl-D ends", Needs::Target, CommandLine,
            shell},
    Command{"explain", "CODE [DETAIL]", "what a result code means, its cause and cure", Needs::Nothing,
            Everywhere, explain},
    Command{"help", "[COMMAND]", "this text, or one command's line", Needs::Nothing, Everywhere, help},
    Command{"quit", "", "ends the shell", Needs::Nothing, Shell, quit},
};

constexpr int usageWidth = 24;

QString helpLine(const Command &command)
{
    return u"  "_s + commandUsage(command).leftJustified(usageWidth) + QLatin1StringView(command.help) +
           u'\n';
}

} // namespace

std::span<const Command> commandTable()
{
    return table;
}

const Command *commandNamed(const QString &name)
{
    const auto *const found = std::ranges::find(
        table, name, [](const Command &command) { return QLatin1StringView(command.name); });
    return found == table.end() ? nullptr : found;
}

QStringList commandNames(Place place)
{
    QStringList names;
    for (const Command &command : table) {
        if (command.places & place)
            names << QLatin1StringView(command.name);
    }
    return names;
}

QString commandUsage(const Command &command)
{
    return QString(QLatin1StringView(command.name) + u' ' + QLatin1StringView(command.arguments)).trimmed();
}

QString commandsHelp(unsigned places)
{
    QString text;
    for (const Command &command : table) {
        if (command.places & places)
            text += helpLine(command);
    }
    return text;
}

} // namespace VelnoCtl
