// SPDX-License-Identifier: Apache-2.0

#include "simulator/relay/register_book.h"

namespace Simulator {

RegisterBook::RegisterBook(qsizetype most, std::function<qint64()> clock)
    : m_most(most)
    , m_clock(std::move(clock))
{
}

bool RegisterBook::hasRoom(const QByteArray &name)
{
    if (m_places.contains(name) || m_places.size() < m_most)
        return true;
    m_places.removeIf([this](const auto &entry) { return isForgotten(entry.value()); });
    return m_places.size() < m_most;
}

RegisterBook::Key RegisterBook::wait(const QByteArray &name, Key cashRegister)
{
    return std::exchange(m_places[name].waiting, cashRegister);
}

void RegisterBook::leave(const QByteArray &name)
{
    Place &place = m_places[name];
    place.waiting = 0;
    place.lastSeen = m_clock();
}

void RegisterBook::join(const QByteArray &name)
{
    Place &place = m_places[name];
    place.waiting = 0;
    ++place.joined;
}

void RegisterBook::part(const QByteArray &name)
{
    Place &place = m_places[name];
    --place.joined;
    place.lastSeen = m_clock();
}

bool RegisterBook::isExpected(const QByteArray &name) const
{
    const auto place = m_places.constFind(name);
    return place != m_places.constEnd() && !isForgotten(*place);
}

void RegisterBook::expectNoMore(const QByteArray &name, Key application)
{
    m_places[name].expecting.removeOne(application);
}

bool RegisterBook::isForgotten(const Place &place) const
{
    return place.waiting == 0 && place.joined == 0 && place.expecting.isEmpty() &&
           m_clock() - place.lastSeen > memory;
}

} // namespace Simulator
