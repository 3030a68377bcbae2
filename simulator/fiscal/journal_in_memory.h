// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/journal.h"

#include <map>
#include <vector>

namespace Simulator {

/** A journal that ends with the register. */
class JournalInMemory final : public Journal
{
public:
    enum class Status { Open, Closed, Cancelled };

    struct Entry
    {
        Receipt receipt; ///< as it was closed; of others what is known at the beginning, and when it ended
        Status status = Status::Open;
    };
    using Day = std::vector<Entry>; ///< the receipt of number 1 first

    bool isNew() const override { return m_days.empty() && m_reports.empty(); }
    std::optional<DayTotals> day(qint32 z) const override;
    ReceiptRef begin(bool withInvoice, qint64 time) override;
    bool close(const Receipt &receipt) override;
    bool cancel(const ReceiptRef &ref, qint64 time) override;
    bool close(const ZReport &report) override;
    bool setZ(qint32 z) override;
    bool setLastZ(qint64 time) override;
    std::optional<SaleTotals> find(const ReceiptRef &ref) const override;

    // For whoever checks what is on record -----------------------------------------------------------------

    const std::map<qint32, Day> &days() const { return m_days; } ///< by Z number
    const std::map<qint32, ZReport> &reports() const { return m_reports; }

    /** While it is not, every change fails, as on a full disk. */
    void setWritable(bool writable) { m_isWritable = writable; }

private:
    const Entry *entry(const ReceiptRef &ref) const;
    Entry *openEntry(const ReceiptRef &ref);
    bool setCountersIfWritable(const Counters &counters);

    std::map<qint32, Day> m_days;
    std::map<qint32, ZReport> m_reports;
    bool m_isWritable = true;
};

} // namespace Simulator
