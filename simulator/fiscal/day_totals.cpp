// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/day_totals.h"

namespace Simulator {

void DayTotals::add(const Receipt &receipt)
{
    const SaleTotals sums = receipt.sale.totals();
    ++receipts;
    invoices += receipt.invoice ? 1 : 0;
    total += sums.total;
    tax += sums.tax;
    cash += sums.cash - sums.change;
    card += sums.card;
    contributions += receipt.sale.medicalContribution();
    for (const auto &[rate, group] : receipt.sale.taxGroups()) {
        taxGroups[rate].total += group.total;
        taxGroups[rate].tax += group.tax;
    }
}

} // namespace Simulator
