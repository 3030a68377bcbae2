// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/plan.h"
#include "simulation/simulated_register.h"

#include <QSet>

namespace Simulation {

/** What keeps the register from doing what it is told, for some time or until everything is repaired. */
class Hindrances
{
public:
    Hindrances(SimulatedRegister &reg, const VirtualClock &clock)
        : m_register(reg)
        , m_clock(clock)
    {
    }

    /** @return false: it is no hindrance */
    bool begin(const Mishap &mishap, const Simulator::CommandRow &command);

    /** Ends those whose time is over. */
    void easeUp();

    /** Whether a command is refused. It counts as asked once. */
    bool refuses(const Simulator::CommandRow &command, const Velno::GMP::Items &items);

    void repair(); ///< nothing hinders any more
    void beginStep() { m_refused.clear(); }

    bool hasRefused(const QString &command) const { return m_refused.contains(command); } ///< in this step
    bool hasRefusedAny() const { return !m_refused.isEmpty(); }

    bool wasLate() const { return m_wasLate; } ///< to tell of a receipt, ever

    bool isLate(const Simulator::ReceiptRef &ref) const; ///< whether it is not, or was not just now, told of

    /** That a receipt has been closed. @return whether it is told of late */
    bool noteClosed(const Simulator::ReceiptRef &ref);

private:
    struct Refused
    {
        int command = 0;
        int times = 0; ///< how often more; 0: no matter how often
        qint64 until = 0;
    };
    struct Closing
    {
        Simulator::ReceiptRef ref;
        qint64 until = 0;
    };

    void leaveState();

    SimulatedRegister &m_register;
    const VirtualClock &m_clock;
    QList<Refused> m_refusals;
    QSet<QString> m_refused;
    Closing m_late;          ///< of which nothing is told before this time
    qint64 m_lateFor = 0;    ///< the next one that is closed
    qint64 m_paperUntil = 0; ///< these are 0 when there is nothing of the kind
    qint64 m_stateUntil = 0;
    qint64 m_journalUntil = 0;
    bool m_isLimitLow = false;
    bool m_wasLate = false;
};

} // namespace Simulation
