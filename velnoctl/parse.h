// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/arguments.h"
#include "velnoctl/commands.h"

#include <QList>

namespace VelnoCtl {

/** A command with its arguments, checked. */
struct Step
{
    const Command *command;
    Arguments arguments;
    QString where; ///< FILE:LINE for a line of a script, otherwise empty
};

/** Steps in the order to be run, or what was wrong and what is accepted. */
struct Parsed
{
    QList<Step> steps;
    QString problem;
};

/**
 * Words of the command line, which may hold several commands: each takes as many words as it has arguments,
 * and those behind them that have the form key=VALUE; an optional argument without a key is not taken when it
 * is the name of a command. Elsewhere there is one command.
 *
 * `run FILE` becomes the steps of the file, so that whatever is wrong is known before anything is sent; only
 * `run -` stays a step.
 */
Parsed parseWords(const QStringList &words, Place place);

/** One line of a script or of the shell; no steps for an empty line or a comment. */
Parsed parseLine(const QByteArray &line, Place place, const QString &where = {});

} // namespace VelnoCtl
