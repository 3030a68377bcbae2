// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/arguments.h"
#include "velnoctl/commands.h"

namespace VelnoCtl {

/**
 * Takes a command's words from the front of `words` and reads them, also those of a row that is repeated
 * behind a +.
 *
 * @return what was wrong and what is accepted, or nothing
 */
QString takeArguments(const Command &command, Place place, QStringList &words, Arguments *arguments);

} // namespace VelnoCtl
