// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/clock.h"

#include <algorithm>

namespace Velno::Receipts {

/**
 * Waits for a register that is busy, as long as there is patience: each pause is as long as all before it
 * together, so that one that is busy for a moment is not kept waiting, and one that is busy for long is not
 * asked without end.
 */
class Patience
{
public:
    /** @param clock  must outlive it. @param milliseconds  in all */
    Patience(Clock &clock, qint64 milliseconds)
        : m_clock(&clock)
        , m_most(milliseconds)
    {
    }

    bool isOver() const { return m_waited >= m_most; }

    /** @return false: somebody wants the work to stop */
    bool pause()
    {
        const qint64 next = std::clamp(m_waited, shortest, longest);
        m_waited += next;
        return m_clock->pause(int(next));
    }

private:
    static constexpr qint64 shortest = 200;  // ms
    static constexpr qint64 longest = 3'000; // ms; somebody stands there and waits for what comes behind it

    Clock *m_clock;
    qint64 m_most;
    qint64 m_waited = 0;
};

} // namespace Velno::Receipts
