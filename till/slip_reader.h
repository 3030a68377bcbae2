// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/json_fields.h"
#include "till/receipt.h"

namespace Velno::Receipts {

/** Reads and judges a slip, which is an order of its own or a field of a receipt. @param path  of that field
 */
Slip slipFrom(const JsonValue &value, const QString &path, Faults *faults);

} // namespace Velno::Receipts
