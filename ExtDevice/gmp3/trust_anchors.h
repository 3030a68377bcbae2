#pragma once

#include <QByteArray>

namespace Velno::GMP {

/** The authority chain that register certificates must chain to, compiled in: PEM, sub CA first, then root.
 */
const QByteArray &trustAnchors();

/** Whether the chain is the one that the build made for itself, not one of a real authority. */
bool trustsDevelopmentAuthority();

/** Says so in one line on standard error, when it is so. Every program calls this first. */
void warnOfDevelopmentAuthority(const char *program);

} // namespace Velno::GMP
