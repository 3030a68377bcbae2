// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/commands.h"

#include "translations/spoken.h"
#include "velnoctl/arguments.h"

#include <QMap>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr int usageWidth = 24;
constexpr int groupWidth = 11;
constexpr int screenWidth = 88;

/** Two columns; what does not fit into the first has the line for itself. */
QString twoColumns(const QString &left, int width, const QString &right)
{
    const QString edge = left.size() < width ? QString() : u'\n' + QString(width + 2, u' ');
    return u"  "_s + left.leftJustified(width) + edge + right + u'\n';
}

/** Words in lines of the second column. */
QString wrapped(const QString &left, int width, const QStringList &words)
{
    QString text;
    QString line = u"  "_s + left.leftJustified(width);
    for (const QString &word : words) {
        if (line.size() + word.size() > screenWidth) {
            text += line.chopped(1) + u'\n';
            line = QString(width + 2, u' ');
        }
        line += word + u' ';
    }
    return text + line.chopped(1) + u'\n';
}

QString groupOf(const Command &command)
{
    return Spoken::tr(command.group);
}

} // namespace

const Command *commandNamed(const QString &name)
{
    const auto found = std::ranges::find(
        commandTable(), name, [](const Command &command) { return QLatin1StringView(command.name); });
    return found == commandTable().end() ? nullptr : &*found;
}

QStringList commandNames(Place place)
{
    QStringList names;
    for (const Command &command : commandTable()) {
        if (command.places & place)
            names << QLatin1StringView(command.name);
    }
    return names;
}

QString commandUsage(const Command &command)
{
    QStringList words{QLatin1StringView(command.name)};
    bool hasKeys = false;
    for (const Argument &argument : argumentsOf(command.arguments)) {
        hasKeys |= !argument.key.isEmpty();
        if (argument.key.isEmpty())
            words << (argument.isOptional ? u"[%1]"_s : u"%1"_s).arg(argument.usage());
    }
    if (hasKeys)
        words << u"[KEY=VALUE]..."_s;
    if (command.most > 1)
        words << u"[+ ...]"_s;
    return words.join(u' ');
}

QString commandHelp(const Command &command)
{
    QString text = Spoken::tr("Usage: %1\n  %2\n\n").arg(commandUsage(command), Spoken::tr(command.help));
    const QList<Argument> arguments = argumentsOf(command.arguments);
    for (const Argument &argument : arguments)
        text += twoColumns(argument.usage(), usageWidth, Spoken::tr(argument.kind->accepted));
    if (command.most > 1)
        text += twoColumns(u"+ ..."_s, usageWidth,
                           Spoken::tr("the same again, up to %1 in all").arg(command.most));
    return text + Spoken::tr("%1Prints: %2\nExample: %3\n")
                      .arg(arguments.isEmpty() ? u""_s : u"\n"_s, Spoken::tr(command.result),
                           QString::fromUtf8(command.example));
}

QString commandsHelp(unsigned places)
{
    QString text;
    QString group;
    for (const Command &command : commandTable()) {
        if (!(command.places & places))
            continue;
        if (groupOf(command) != group)
            text += (group.isEmpty() ? QString() : u"\n"_s) + groupOf(command) + u'\n';
        group = groupOf(command);
        text += twoColumns(commandUsage(command), usageWidth, Spoken::tr(command.help));
    }
    return text;
}

QString commandsOverview(Place place)
{
    QMap<QString, QStringList> names;
    QStringList groups;
    for (const Command &command : commandTable()) {
        if (!names.contains(groupOf(command)))
            groups << groupOf(command);
        if (command.places & place)
            names[groupOf(command)] << QLatin1StringView(command.name);
    }
    QString text;
    for (const QString &group : std::as_const(groups))
        text += wrapped(group, groupWidth, names.value(group));
    return text;
}

} // namespace VelnoCtl
