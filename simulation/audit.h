// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/books.h"
#include "simulation/handed.h"
#include "simulation/truth.h"
#include "till/till.h"

#include <deque>

namespace Simulation {

/** Compares at the end of a day what was handed over, what is in the ledger, and what the registers have on
 * record. */
class Audit
{
public:
    Audit(Velno::Receipts::Till &till, const std::deque<Handed> &handed,
          const std::deque<Simulator::FiscalModel> &registers, const Truth &truth);

    /** @return empty; or the first thing that is not as it should be */
    QString run();

private:
    using Order = Velno::Receipts::Order;

    /** A receipt that counts, and how it came about; never null behind checkBooks(). */
    struct Counted
    {
        BookedReceipt receipt;
        const SeenSale *seen;
    };

    QString checkBooks();
    QString checkReports() const;
    QString checkOrder(const Handed &handed);
    QString checkReceipt(const Handed &handed, const Order &order) const;
    QString checkClosed(const Handed &handed, const Order &order) const;
    QString checkSlip(const Handed &handed, const Order &order) const;
    QString checkMoney(const Handed &handed) const;
    QList<Counted> closedFor(const QString &key) const;

    Velno::Receipts::Till &m_till;
    const Simulator::FiscalModel *m_inUse; ///< the register that has taken the place of all before it
    const std::deque<Handed> &m_handed;
    QHash<QString, Order> m_orders; ///< of the ledger, by key
    QList<Books> m_books;
    QList<Counted> m_receipts;
    const Truth &m_truth;
    int m_zReports = 0; ///< of the ledger, that are closed
};

} // namespace Simulation
