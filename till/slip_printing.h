// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/receipt.h"
#include "till/register_access.h"

namespace Velno::Receipts {

/** Composes a slip and prints it. @return 0, or the library's code: with 2, 5, 11 and 12 it may have come out
 */
int printSlip(RegisterAccess &reg, const Slip &slip);

} // namespace Velno::Receipts
