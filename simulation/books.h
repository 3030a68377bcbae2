// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/fiscal_model.h"

#include <QList>
#include <QString>

namespace Simulation {

/** A closed receipt, as a register has it on record. */
struct BookedReceipt
{
    Simulator::ReceiptRef ref;
    Simulator::SaleTotals totals;
    qint64 contribution = 0;
    int invoiceType = -1; ///< none
    QString customer;
    QList<Simulator::SaleLine> lines;   ///< without those that were deleted
    QList<Simulator::Payment> payments; ///< without their acquirers
};

/** A Z report on record, and what the receipts beneath it come to. */
struct BookedReport
{
    qint32 z = 0;
    qint64 receipts = 0;
    qint64 total = 0;
    qint64 cash = 0; ///< without the change
    qint64 card = 0;
};

/** What a register has on record. */
struct Books
{
    QList<BookedReceipt> receipts;
    QList<BookedReport> reports;
};

Books booksOf(const Simulator::FiscalModel &model);

/** A report's sums, from the receipts beneath it. */
BookedReport sumOf(const Books &books, qint32 z);

} // namespace Simulation
