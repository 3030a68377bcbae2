// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/match_ext.h"

namespace Velno::Ext {

/**
 * Appends the keys of a pairing to the file that VELNO_KEY_LOG names in the environment, when the library
 * trusts a development authority. Keys of real registers are written nowhere: any other library says on
 * standard error that it refuses, as it does when the file cannot be written; the pairing goes on. A program
 * with more rights than who started it does not look at the variable.
 */
void logKeysWhenWished(const GMP::MatchExt &record);

} // namespace Velno::Ext
