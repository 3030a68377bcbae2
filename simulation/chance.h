// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

namespace Simulation {

/** Numbers that one seed makes, the same on every computer. */
class Chance
{
public:
    explicit Chance(quint64 seed = 0)
        : m_state(seed)
    {
    }

    quint64 next()
    {
        // SplitMix64: every seed gives a good sequence, neighbours too.
        quint64 z = m_state += 0x9E3779B97F4A7C15U;
        z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
        z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
        return z ^ (z >> 31U);
    }

    int below(int end) { return int(next() % quint64(end)); }                 ///< 0 to end - 1
    int from(int first, int last) { return first + below(last - first + 1); } ///< both included
    bool in100(int times) { return below(100) < times; }                      ///< so often of 100

private:
    quint64 m_state;
};

} // namespace Simulation
