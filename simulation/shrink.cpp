// SPDX-License-Identifier: Apache-2.0

#include "simulation/shrink.h"

#include "simulation/world.h"

#include <algorithm>

namespace Simulation {

namespace {

/** Tries one smaller plan after the other, and keeps those that fail. */
class Shrinker
{
public:
    Shrinker(Plan plan, const Velno::Receipts::Rules &rules)
        : m_plan(std::move(plan))
        , m_rules(rules)
    {
    }

    Plan run()
    {
        do {
            m_isSmaller = false;
            dropSteps();
            dropMishaps();
            dropLines();
            dropTurns();
        } while (m_isSmaller);
        return m_plan;
    }

private:
    bool keepIfFailing(const Plan &smaller)
    {
        if (problemOf(smaller, m_rules).isEmpty())
            return false;
        m_plan = smaller;
        m_isSmaller = true;
        return true;
    }

    /** First many at once, then fewer. */
    void dropSteps()
    {
        for (qsizetype count = m_plan.steps.size(); count > 0; count /= 2)
            for (qsizetype at = m_plan.steps.size() - count; at >= 0; at -= count) {
                Plan smaller = m_plan;
                smaller.steps.remove(at, count);
                keepIfFailing(smaller);
            }
    }

    void dropMishaps()
    {
        for (qsizetype i = 0; i < m_plan.steps.size(); ++i)
            for (qsizetype k = m_plan.steps.at(i).mishaps.size() - 1; k >= 0; --k) {
                Plan smaller = m_plan;
                smaller.steps[i].mishaps.removeAt(k);
                keepIfFailing(smaller);
            }
    }

    void dropLines()
    {
        for (qsizetype i = 0; i < m_plan.steps.size(); ++i)
            for (int most = 1; most < std::min(m_plan.steps.at(i).mostItems, 10); ++most) {
                Plan smaller = m_plan;
                smaller.steps[i].mostItems = most;
                if (keepIfFailing(smaller))
                    break;
            }
    }

    void dropTurns()
    {
        for (qsizetype i = 0; i < m_plan.steps.size(); ++i) {
            Plan smaller = m_plan;
            smaller.steps[i].isAhead = false;
            if (m_plan.steps.at(i).isAhead)
                keepIfFailing(smaller);
        }
    }

    Plan m_plan;
    const Velno::Receipts::Rules &m_rules;
    bool m_isSmaller = false;
};

} // namespace

QString problemOf(const Plan &plan, const Velno::Receipts::Rules &rules)
{
    return World(plan, rules).run();
}

Plan shrunk(Plan plan, const Velno::Receipts::Rules &rules)
{
    return Shrinker(std::move(plan), rules).run();
}

} // namespace Simulation
