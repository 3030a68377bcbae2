// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/receipt.h"

namespace Simulator {

/** What an X or Z report says of the receipts since the last Z report. Kuruş. */
struct DayTotals
{
    qint32 receipts = 0; ///< closed, those with invoice among them
    qint32 invoices = 0;
    qint32 cancelled = 0; ///< these count towards nothing else
    qint64 total = 0;
    qint64 tax = 0;
    qint64 cash = 0; ///< what stayed in the drawer: handed over less change
    qint64 card = 0;
    qint64 contributions = 0; ///< medical; in the total, without tax
    TaxGroups taxGroups;

    void add(const Receipt &receipt);

    bool operator==(const DayTotals &) const = default;
};

/** A Z report as the journal keeps it. */
struct ZReport
{
    qint32 z = 0;
    qint64 time = 0; ///< seconds since 1970
    DayTotals day;
    qint64 grandTotal = 0; ///< of all Z reports, this one included
};

} // namespace Simulator
