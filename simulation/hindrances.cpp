// SPDX-License-Identifier: Apache-2.0

#include "simulation/hindrances.h"

#include <limits>

using namespace Qt::StringLiterals;
using namespace Simulator;

namespace Simulation {

namespace {

constexpr qint64 forEver = std::numeric_limits<qint64>::max();
constexpr qint64 justNow = 100;          // ms; of ten rounds the last one comes 256 ms behind the one before
constexpr qint64 usualLimit = 1'200'000; // kuruş

bool isOver(qint64 *until, qint64 now)
{
    if (*until == 0 || now < *until)
        return false;
    *until = 0;
    return true;
}

} // namespace

bool Hindrances::begin(const Mishap &mishap, const CommandRow &command)
{
    const qint64 until = m_clock.passed() + mishap.number;
    switch (mishap.row->kind) {
    case MishapKind::Refuse:
        m_refusals << Refused{command.code, mishap.number, forEver};
        return true;
    case MishapKind::RefuseFor:
        m_refusals << Refused{command.code, 0, until};
        return true;
    case MishapKind::RefuseAlways:
        m_refusals << Refused{command.code, 0, forEver};
        return true;
    case MishapKind::Late:
        m_lateFor = mishap.number;
        return true;
    case MishapKind::NoPaper:
    case MishapKind::NoPaperAtAll:
        m_paperUntil = mishap.row->kind == MishapKind::NoPaper ? until : forEver;
        m_register.model().setPaper(false);
        return true;
    case MishapKind::Busy:
    case MishapKind::OutOfService:
        m_stateUntil = until;
        m_register.model().setState(mishap.row->kind == MishapKind::Busy ? State::Menu : State::OutOfService);
        return true;
    case MishapKind::LowLimit:
        m_isLimitLow = true;
        m_register.model().setSaleLimit(mishap.number);
        return true;
    case MishapKind::JournalFull:
        m_journalUntil = until;
        m_register.model().journalInMemory().setWritable(false);
        return true;
    default:
        return false;
    }
}

void Hindrances::easeUp()
{
    const qint64 now = m_clock.passed();
    if (isOver(&m_paperUntil, now))
        m_register.model().setPaper(true);
    if (isOver(&m_stateUntil, now))
        leaveState();
    if (isOver(&m_journalUntil, now))
        m_register.model().journalInMemory().setWritable(true);
    m_refusals.removeIf([now](const Refused &refused) { return now >= refused.until; });
}

bool Hindrances::refuses(const CommandRow &command, const Velno::GMP::Items &items)
{
    bool refuses = false;
    for (qsizetype i = m_refusals.size() - 1; i >= 0; --i) {
        Refused &refused = m_refusals[i];
        if (refused.command != command.code)
            continue;
        refuses = true;
        if (refused.times > 0 && --refused.times == 0)
            m_refusals.removeAt(i);
    }
    const QLatin1StringView name(command.name);
    if (name == "receipt"_L1 && m_clock.passed() < m_late.until)
        refuses = refuses || m_late.ref == ReceiptRef{items.int32("z"), items.int32("receipt")};
    if (refuses)
        m_refused.insert(name);
    return refuses;
}

bool Hindrances::noteClosed(const ReceiptRef &ref)
{
    if (m_lateFor == 0)
        return false;
    m_late = {ref, m_clock.passed() + m_lateFor};
    m_lateFor = 0;
    m_wasLate = true;
    return true;
}

bool Hindrances::isLate(const ReceiptRef &ref) const
{
    return m_late.ref == ref && m_clock.passed() < m_late.until + justNow;
}

void Hindrances::repair()
{
    m_refusals.clear();
    m_late = {};
    m_lateFor = 0;
    if (m_paperUntil != 0)
        m_register.model().setPaper(true);
    if (m_stateUntil != 0)
        leaveState();
    if (m_journalUntil != 0)
        m_register.model().journalInMemory().setWritable(true);
    if (m_isLimitLow)
        m_register.model().setSaleLimit(usualLimit);
    m_paperUntil = m_stateUntil = m_journalUntil = 0;
    m_isLimitLow = false;
}

/** Back to where its till is. */
void Hindrances::leaveState()
{
    const bool isOpen = m_register.model().saleReference() != ReceiptRef();
    m_register.model().setState(isOpen ? State::SaleOpen : State::Idle);
}

} // namespace Simulation
