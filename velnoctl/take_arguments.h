#pragma once

#include "velnoctl/commands.h"

namespace VelnoCtl {

/**
 * Moves a command's words from the front of `words` to `values`, checked: one entry for each argument of its
 * row, null when it is not given, and the same again for each time that the row is repeated behind a +.
 *
 * @return what was wrong and what is accepted, or nothing
 */
QString takeArguments(const Command &command, Place place, QStringList &words, QStringList *values);

} // namespace VelnoCtl
