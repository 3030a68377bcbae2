// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/receipt.h"
#include "velnoext.h"

#include <optional>

/** How far a receipt has come on the register, read from what the register tells. */
namespace Velno::Receipts {

struct Position
{
    int lines = 0;    ///< items that stand on it
    int payments = 0; ///< how many of those with an amount have been taken

    bool operator==(const Position &) const = default;
};

/** Nothing when the numbers fit no moment of entering this receipt: somebody else has worked on it. Sums of
 * lines may differ by a rounding. */
std::optional<Position> positionOf(const Receipt &receipt, const VelnoEcrSaleTotals &totals);

/** Whether these are the sums of this receipt, closed. */
bool isClosedAs(const Receipt &receipt, const VelnoEcrSaleTotals &totals);

/** Payments with an amount; one that takes the rest is the key that ends the sale. */
int amountsOf(const Receipt &receipt);

/** How the sale is ended: what is left is taken so. */
Tender endTender(const Receipt &receipt);

/** Whether one of its payments must not be entered again by itself. */
bool isForOnce(const Receipt &receipt, Tender tender);

/** What is wrong between the sums that the register has come to and what is to be paid; empty when nothing
 * is. */
QString faultOfTotals(const Receipt &receipt, const VelnoEcrSaleTotals &totals);

} // namespace Velno::Receipts
