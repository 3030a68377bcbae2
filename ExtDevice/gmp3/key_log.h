// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/match_ext.h"

#include <QString>

/**
 * A file with the keys of pairings, a line each, for whoever looks into captured connections: docs/wire.md
 * has its format. Who reads it can read and forge every command under these keys.
 */
namespace Velno::GMP {

/** Creates the file when there is none. @return why keys cannot be written to it, in words; empty when they
 * can
 */
QString keyLogProblem(const QString &path);

/**
 * Appends the keys of a pairing. The file is created with mode 0600; one that others may read, that somebody
 * else owns, or that is no regular file is left as it is.
 *
 * @return what went wrong, in words; empty when the line is in the file
 */
QString appendToKeyLog(const QString &path, const MatchExt &keys);

} // namespace Velno::GMP
