// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/journal_in_memory.h"

namespace Simulator {

std::optional<DayTotals> JournalInMemory::day(qint32 z) const
{
    DayTotals totals;
    const auto found = m_days.find(z);
    if (found == m_days.end())
        return totals;
    for (const Entry &entry : found->second) {
        if (entry.status == Status::Closed)
            totals.add(entry.receipt);
        totals.cancelled += entry.status == Status::Cancelled ? 1 : 0;
    }
    return totals;
}

const JournalInMemory::Entry *JournalInMemory::entry(const ReceiptRef &ref) const
{
    const auto day = m_days.find(ref.z);
    const bool isThere = day != m_days.end() && ref.number > 0 && size_t(ref.number) <= day->second.size();
    return isThere ? &day->second[size_t(ref.number) - 1] : nullptr;
}

/** Null for one that is not open, and when nothing can be written. */
JournalInMemory::Entry *JournalInMemory::openEntry(const ReceiptRef &ref)
{
    const Entry *const found = entry(ref);
    const bool isOpen = m_isWritable && found && found->status == Status::Open;
    return isOpen ? &m_days[ref.z][size_t(ref.number) - 1] : nullptr;
}

ReceiptRef JournalInMemory::begin(bool withInvoice, qint64 time)
{
    if (!m_isWritable)
        return {};
    Day &day = m_days[z()];
    Entry begun;
    begun.receipt.ref = {z(), qint32(day.size()) + 1};
    begun.receipt.opened = time;
    begun.receipt.withInvoice = withInvoice;
    day.push_back(begun);
    return begun.receipt.ref;
}

bool JournalInMemory::close(const Receipt &receipt)
{
    Entry *const open = openEntry(receipt.ref);
    if (!open)
        return false;
    *open = {receipt, Status::Closed};
    return true;
}

bool JournalInMemory::cancel(const ReceiptRef &ref, qint64 time)
{
    Entry *const open = openEntry(ref);
    if (!open)
        return false;
    open->status = Status::Cancelled;
    open->receipt.closed = time;
    return true;
}

bool JournalInMemory::close(const ZReport &report)
{
    if (!m_isWritable || !m_reports.emplace(report.z, report).second)
        return false;
    // Where its operator has set the number back, the reports behind this one may have been made already.
    qint32 next = report.z;
    while (m_reports.contains(next))
        ++next;
    setCounters({next, report.time, report.grandTotal});
    return true;
}

bool JournalInMemory::setCountersIfWritable(const Counters &counters)
{
    if (m_isWritable)
        setCounters(counters);
    return m_isWritable;
}

bool JournalInMemory::setZ(qint32 z)
{
    return !m_reports.contains(z) && setCountersIfWritable({z, lastZ(), grandTotal()});
}

bool JournalInMemory::setLastZ(qint64 time)
{
    return setCountersIfWritable({z(), time, grandTotal()});
}

std::optional<SaleTotals> JournalInMemory::find(const ReceiptRef &ref) const
{
    const Entry *const found = entry(ref);
    return found && found->status == Status::Closed ? std::optional(found->receipt.sale.totals())
                                                    : std::nullopt;
}

} // namespace Simulator
