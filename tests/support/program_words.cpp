// SPDX-License-Identifier: Apache-2.0

#include "tests/support/program_words.h"

#include "tests/support/program_run.h"
#include "tests/support/symbol_names.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

QString saidBy(const QString &program, const QString &argument)
{
    return QString::fromUtf8(outcomeOf(programPaths().value(program), {argument}).output);
}

QStringList sortedOnce(QStringList words)
{
    words.sort();
    words.removeDuplicates();
    return words;
}

/** velnoctl's overview names what may stand on the command line, group by group. */
QStringList commandsIn(const QString &help)
{
    const QString overview = help.section("\n\n"_L1, 1, 1);
    QStringList names;
    for (const QString &line : overview.split(u'\n'))
        names << line.sliced(std::min(line.size(), qsizetype(13))).split(u' ', Qt::SkipEmptyParts);
    return sortedOnce(names);
}

} // namespace

QMap<QString, QString> programPaths()
{
    return {{u"velnoctl"_s, QString::fromUtf8(VELNO_CTL_PROGRAM)},
            {u"velno-pairing"_s, QString::fromUtf8(VELNO_PAIRING_PROGRAM)},
            {u"velno-register"_s, QString::fromUtf8(VELNO_REGISTER_PROGRAM)},
            {u"velno-relay"_s, QString::fromUtf8(VELNO_RELAY_PROGRAM)}};
}

QStringList allIn(const QString &text, const char *pattern)
{
    return sortedOnce(matches(text.toUtf8(), pattern));
}

ProgramWords wordsOf(const QString &program)
{
    const QString help = saidBy(program, u"--help"_s);
    ProgramWords words;
    words.options =
        sortedOnce(allIn(help, "(?<!\\S)(--[a-z][a-z-]*)") + QStringList{u"--help"_s, u"--version"_s});
    words.faults =
        allIn(help.section("\nFaults"_L1, 1).section("\n\n"_L1, 0, 0), "^  ([a-z][a-z0-9-]*)(?:=\\S+)? {2,}");
    if (program == "velnoctl"_L1) {
        words.commands = commandsIn(help);
        words.shellCommands = allIn(saidBy(program, u"commands"_s), "^  ([a-z][a-z-]*)");
        words.shellCommands.removeIf([&](const QString &name) { return words.commands.contains(name); });
    }
    return words;
}

} // namespace TestSupport
