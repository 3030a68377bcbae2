// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/order.h"
#include "till/velnotill.h"

/** Orders in the structures of velnotill.h. */
namespace Velno::Receipts {

/** Whether the caller has told a size that an outcome can have. */
bool hasRoom(const VelnoTillOutcome &outcome);

/** Fills as much as the caller has room for, and zeros behind it. */
void fill(VelnoTillOutcome *outcome, const Order &order);

/** What velnotill_message() needs of an order, from what it was filled with. */
Order orderFrom(const VelnoTillOutcome &outcome);

} // namespace Velno::Receipts
