// SPDX-License-Identifier: Apache-2.0

#include "simulator/relay/relay_pair.h"

#include <algorithm>
#include <array>
#include <sys/epoll.h>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr qint64 readSize = 16 * 1024;

} // namespace

RelayPair::RelayPair(RelayConnection &application, RelayConnection &cashRegister, const QByteArray &echo,
                     std::optional<qint64> cutAfter)
    : m_toRegister{application, cashRegister, u"application"_s, u"register"_s, {}}
    , m_toApplication{cashRegister, application, u"register"_s, u"application"_s, echo}
    , m_cutAfter(cutAfter)
{
}

void RelayPair::pump()
{
    move(m_toRegister);
    move(m_toApplication);
    if (isToBeCut()) {
        m_cut = true;
        m_reason = u"cut by a fault"_s;
    }
    if (hasEnded())
        return;
    m_toRegister.from.watch(awaited(m_toRegister, m_toApplication));
    m_toApplication.from.watch(awaited(m_toApplication, m_toRegister));
}

// One read at a time, so that a pair that never stops talking leaves time for the others.
void RelayPair::move(Direction &direction)
{
    if (direction.done || !deliverHeld(direction))
        return;
    if (!direction.sourceEnded)
        readMore(direction);
    if (direction.sourceEnded && direction.held.isEmpty() && !direction.done) {
        direction.to.endWriting();
        direction.done = true;
    }
}

/** @return whether nothing is held any more */
bool RelayPair::deliverHeld(Direction &direction)
{
    if (direction.held.isEmpty())
        return true;
    const qint64 written = direction.to.write(direction.held.constData(), direction.held.size());
    if (written < 0)
        giveUp(direction);
    else
        direction.held.remove(0, qsizetype(written));
    return written >= 0 && direction.held.isEmpty();
}

/** The receiving side is gone, so nothing goes there any more. */
void RelayPair::giveUp(Direction &direction)
{
    closedBy(direction.toName);
    direction.held.clear();
    direction.done = true;
}

void RelayPair::readMore(Direction &direction)
{
    std::array<char, readSize> bytes;
    const qint64 most =
        m_cutAfter ? std::min(readSize, *m_cutAfter - toRegister() - toApplication()) : readSize;
    if (most <= 0)
        return;
    const qint64 count = direction.from.read(bytes.data(), most);
    if (count < 0) {
        closedBy(direction.fromName);
        direction.sourceEnded = true;
    } else if (count > 0) {
        direction.moved += count;
        const qint64 written = direction.to.write(bytes.data(), count);
        if (written < 0)
            giveUp(direction);
        else
            direction.held = QByteArray(bytes.data() + written, qsizetype(count - written));
    }
}

void RelayPair::closedBy(const QString &name)
{
    if (m_reason.isEmpty())
        m_reason = u"closed by the %1"_s.arg(name);
}

/** What a connection is watched for, from which `out` is read and to which `in` is written. */
quint32 RelayPair::awaited(const Direction &out, const Direction &in)
{
    const bool wanted = !out.done && !out.sourceEnded && out.held.isEmpty();
    return (wanted ? quint32(EPOLLIN) : 0U) | (in.held.isEmpty() ? 0U : quint32(EPOLLOUT));
}

bool RelayPair::mayStall() const
{
    return !m_reason.isEmpty() || !m_toRegister.held.isEmpty() || !m_toApplication.held.isEmpty();
}

bool RelayPair::isToBeCut() const
{
    return m_cutAfter && toRegister() + toApplication() >= *m_cutAfter && m_toRegister.held.isEmpty() &&
           m_toApplication.held.isEmpty();
}

} // namespace Simulator
