// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/plan.h"
#include "simulation/simulated_register.h"
#include "simulation/truth.h"

namespace Simulation {

/** Somebody who works on the register's own keyboard while the till's line is down. */
class Clerk
{
public:
    Clerk(SimulatedRegister &reg, const VirtualClock &clock, Truth &truth)
        : m_register(reg)
        , m_clock(clock)
        , m_truth(truth)
    {
    }

    /** @return false: nobody's hand is in it */
    bool begin(const Mishap &mishap);

    /** Ends his own sale when its time is over. */
    void easeUp();

    /** Ends it now. */
    void repair();

    bool isSelling() const { return m_own != Simulator::ReceiptRef(); } ///< something of his own
    static QString key();                                               ///< of what he sells

private:
    void sellLine();
    void deleteLine();
    void sellForHimself(int milliseconds);
    void endSale();
    bool isHisOpen();
    void look();

    SimulatedRegister &m_register;
    const VirtualClock &m_clock;
    Truth &m_truth;
    Simulator::ReceiptRef m_own;                     ///< of the sale that he has opened; 0, 0: none
    const Simulator::FiscalModel *m_ownAt = nullptr; ///< on which register
    qint64 m_ownUntil = 0;
    bool m_isOwnClosed = false; ///< at its end, and otherwise cancelled
};

} // namespace Simulation
