// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/day_totals.h"

namespace Simulator {

/** What the register must not forget: receipts with their lines and payments, Z reports, counters. */
class Journal
{
public:
    Journal() = default;
    virtual ~Journal() = default;
    Q_DISABLE_COPY_MOVE(Journal)

    /** Whether no receipt and no report is on record. */
    virtual bool isNew() const = 0;

    /** The Z report being collected; 1 in a new journal. */
    qint32 z() const { return m_counters.z; }
    qint64 lastZ() const { return m_counters.lastZ; } ///< when the last Z report was made; 0: never
    qint64 grandTotal() const { return m_counters.grandTotal; }

    /** The receipts of a Z report, from what is on record; nothing when that is damaged. */
    virtual std::optional<DayTotals> day(qint32 z) const = 0;

    // Each of these is on record when it returns true, and has changed nothing otherwise. ------------------

    /** Takes the next number for a sale; an empty reference on failure. */
    virtual ReceiptRef begin(bool withInvoice, qint64 time) = 0;
    virtual bool close(const Receipt &receipt) = 0; ///< one that was begun and not ended
    virtual bool cancel(const ReceiptRef &ref, qint64 time) = 0;
    virtual bool close(const ZReport &report) = 0; ///< and goes on with the next one that has not been made

    /** Goes on with another Z report, none that has been made; or says when the last one was made. */
    virtual bool setZ(qint32 z) = 0;
    virtual bool setLastZ(qint64 time) = 0;

    /** The totals of a closed receipt; nothing for one that is unknown, open or cancelled. */
    virtual std::optional<SaleTotals> find(const ReceiptRef &ref) const = 0;

protected:
    struct Counters
    {
        qint32 z = 1;
        qint64 lastZ = 0;
        qint64 grandTotal = 0;
    };

    void setCounters(const Counters &counters) { m_counters = counters; }

private:
    Counters m_counters;
};

} // namespace Simulator
