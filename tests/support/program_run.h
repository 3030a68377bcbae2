// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>

QT_FORWARD_DECLARE_CLASS(QProcess)

/** Programs that run to their end, and what the manual says of them. */
namespace TestSupport {

/** How a program ended. */
struct Outcome
{
    int exitCode = -1; ///< -1 when it did not end in time, or was killed
    QByteArray output;
    QByteArray errors;
};

/** Waits until it has ended. */
Outcome outcomeOf(QProcess &process);

/**
 * Runs a program to its end, without a display.
 *
 * @param prepare  sets more before it starts
 */
Outcome outcomeOf(const QString &program, const QStringList &arguments,
                  const std::function<void(QProcess &)> &prepare = {});

/** The program ends with 64, says this on standard error, and nothing on standard output. */
void checkWrongUsage(const QString &program, const QStringList &arguments, const QByteArray &message);

/**
 * The table of a manual's section "Faults" as --help shows it.
 *
 * @param row  finds a row, with the name and the meaning
 */
QString faultsInManual(const QString &path, const QString &row);

} // namespace TestSupport
