// SPDX-License-Identifier: Apache-2.0

#include "simulation/books.h"

#include <algorithm>

using namespace Simulator;

namespace Simulation {

namespace {

BookedReceipt booked(const Receipt &receipt)
{
    BookedReceipt booked{receipt.ref, receipt.sale.totals(),  receipt.sale.medicalContribution(), -1, {},
                         {},          receipt.sale.payments()};
    if (receipt.invoice) {
        booked.invoiceType = int(receipt.invoice->type);
        booked.customer = receipt.invoice->idNumber;
    }
    std::ranges::copy_if(receipt.sale.lines(), std::back_inserter(booked.lines),
                         [](const SaleLine &line) { return !line.deleted; });
    for (Payment &payment : booked.payments)
        payment.acquirer = 0;
    return booked;
}

} // namespace

Books booksOf(const FiscalModel &model)
{
    Books books;
    const JournalInMemory &journal = model.journalInMemory();
    for (const auto &[z, day] : journal.days())
        for (const auto &[receipt, status] : day)
            if (status == JournalInMemory::Status::Closed)
                books.receipts << booked(receipt);
    for (const auto &[z, report] : journal.reports())
        books.reports << BookedReport{z, report.day.receipts, report.day.total, report.day.cash,
                                      report.day.card};
    return books;
}

BookedReport sumOf(const Books &books, qint32 z)
{
    BookedReport sum{z, 0, 0, 0, 0};
    for (const BookedReceipt &receipt : books.receipts) {
        if (receipt.ref.z != z)
            continue;
        ++sum.receipts;
        sum.total += receipt.totals.total;
        sum.cash += receipt.totals.cash - receipt.totals.change;
        sum.card += receipt.totals.card;
    }
    return sum;
}

} // namespace Simulation
