// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/clock.h"

namespace Simulation {

/** Time that passes when somebody waits, and only then. */
class VirtualClock final : public Velno::Receipts::Clock
{
public:
    QDateTime now() override { return QDateTime::fromMSecsSinceEpoch(morning + m_passed, Qt::UTC); }

    bool pause(int milliseconds) override
    {
        pass(milliseconds);
        return m_runs;
    }

    void pass(qint64 milliseconds) { m_passed += milliseconds; }
    qint64 passed() const { return m_passed; } ///< ms since the day began

    qint32 seconds() const { return qint32((morning + m_passed) / 1000); } ///< since 1970, as registers count

    /** Whether pauses are waited for; otherwise each ends early, as in a process that is told to stop. */
    void setRunning(bool runs) { m_runs = runs; }

private:
    static constexpr qint64 morning = 1'800'000'000'000; ///< ms since 1970

    qint64 m_passed = 0;
    bool m_runs = true;
};

} // namespace Simulation
