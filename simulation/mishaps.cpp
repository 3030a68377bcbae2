// SPDX-License-Identifier: Apache-2.0

#include "simulation/mishaps.h"

#include <algorithm>

namespace Simulation {

void Mishaps::begin(const QList<Mishap> &mishaps)
{
    m_mishaps = mishaps;
    m_isOver = false;
    m_happened = m_points = 0;
}

const Mishap *Mishaps::at(Where point)
{
    if (m_isOver || m_happened == m_mishaps.size())
        return nullptr;
    const Mishap &next = m_mishaps.at(m_happened);
    if (next.row->where != point && next.row->where != Where::Anywhere)
        return nullptr;
    if (++m_points < next.point)
        return nullptr;
    ++m_happened;
    m_points = 0;
    return &next;
}

bool Mishaps::hasHappened(const std::initializer_list<MishapKind> &kinds) const
{
    return std::any_of(m_mishaps.cbegin(), m_mishaps.cbegin() + m_happened, [&kinds](const Mishap &mishap) {
        return std::ranges::find(kinds, mishap.row->kind) != kinds.end();
    });
}

bool Mishaps::hasForgotten() const
{
    return hasHappened({MishapKind::Kill, MishapKind::KillBehind, MishapKind::Off, MishapKind::OffBehind,
                        MishapKind::DiskFull, MishapKind::WriteFails, MishapKind::FlushFails});
}

bool Mishaps::hasHindered() const
{
    return hasHappened({MishapKind::NoPaper, MishapKind::NoPaperAtAll, MishapKind::Busy,
                        MishapKind::OutOfService, MishapKind::LowLimit, MishapKind::JournalFull,
                        MishapKind::HandSells, MishapKind::HandDeletes, MishapKind::HandSale});
}

bool Mishaps::hasHinderedReports() const
{
    return hasHappened({MishapKind::JournalFull});
}

} // namespace Simulation
