// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Velno::GMP {

/** The built-in group, RFC 3526 group 14: the prime's 256 big-endian bytes, and the generator's one. */
const char *get_dh2048_p_value();
int get_dh2048_p_size();
const char *get_dh2048_g_value();
int get_dh2048_g_size();

} // namespace Velno::GMP
