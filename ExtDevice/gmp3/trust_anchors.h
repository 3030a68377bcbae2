// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

namespace Velno::GMP {

/** The authority chain that register certificates must chain to, compiled in: PEM, sub CA first, then root.
 */
const QByteArray &trustAnchors();

/** Whether the chain is the one that the build made for itself, not one of a real authority. */
bool trustsDevelopmentAuthority();

/** Whom the program trusts, for its --help and --version: a line, and the subject of each certificate in a
 * line. Like the warning below in the language of the program, see translations/spoken.h. */
QString trustAnchorsInWords();

/** Says in one line on standard error that the chain is the build's own, when it is so. Every program calls
 * this before it does anything else. */
void warnOfDevelopmentAuthority(const char *program);

} // namespace Velno::GMP
