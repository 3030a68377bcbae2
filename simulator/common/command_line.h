// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <optional>

namespace Simulator {

/** What a program's arguments came to. */
template <typename Options>
struct ParsedCommandLine
{
    enum Outcome { Run, Shown, WrongUsage };

    Outcome outcome = Run;
    Options options; ///< for Run
    QString text;    ///< the help or the version, or what was wrong and what is accepted
};

/** What --version shows: the program with its version, and whom it trusts. */
QString versionText(const char *program, const QString &anchors);

/** Prints the text and returns 0. */
int showText(const QString &text);

/** Prints what was wrong and where to find more on standard error and returns 64. */
int showWrongUsage(const char *program, const QString &text);

/** Prints on standard error what the system does not give the program, such as a port, and returns 69. */
int showUnavailable(const char *program, const QString &text);

/** Shows what is to be shown instead of running: the exit code, or nothing when the program is to run. */
template <typename Options>
std::optional<int> shownInstead(const char *program, const ParsedCommandLine<Options> &line)
{
    if (line.outcome == line.Run)
        return std::nullopt;
    return line.outcome == line.Shown ? showText(line.text) : showWrongUsage(program, line.text);
}

} // namespace Simulator
