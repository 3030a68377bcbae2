// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/plan.h"

#include <initializer_list>

namespace Simulation {

/** Counts the points of a step and says when something happens. */
class Mishaps
{
public:
    void begin(const QList<Mishap> &mishaps);
    void end() { m_isOver = true; } ///< nothing more happens in this step

    /** @param point  Command, Write or Flush. @return what happens here; null for nothing */
    const Mishap *at(Where point);

    int happened() const { return m_happened; } ///< in this step
    bool hasForgotten() const; ///< in this step the till was killed, or could not write down what it knew
    bool hasHindered() const;  ///< the register was in no state to do what it was told
    bool hasHinderedReports() const; ///< likewise, and it told of a Z report as if it were for good

private:
    bool hasHappened(const std::initializer_list<MishapKind> &kinds) const;

    QList<Mishap> m_mishaps;
    bool m_isOver = true;
    int m_happened = 0;
    int m_points = 0; ///< since the last one
};

} // namespace Simulation
