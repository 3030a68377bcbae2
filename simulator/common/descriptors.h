// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

namespace Simulator {

/** How many connections the system leaves to this process, after asking it for more: 20,000 at most. */
size_t roomForConnections();

} // namespace Simulator
