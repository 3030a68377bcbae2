// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

/** The words that a program takes, read from what it says of itself. */
namespace TestSupport {

struct ProgramWords
{
    QStringList options;       ///< "--serial", with --help and --version
    QStringList faults;        ///< without their values
    QStringList commands;      ///< that may stand on the command line
    QStringList shellCommands; ///< and those of velnoctl's shell alone
};

/** The programs that a person starts, with the paths that they are built at. */
QMap<QString, QString> programPaths();

/** Sorted, each once. @param program  one of programPaths() */
ProgramWords wordsOf(const QString &program);

/** What the first group of the pattern captures, sorted, each once. */
QStringList allIn(const QString &text, const char *pattern);

} // namespace TestSupport
