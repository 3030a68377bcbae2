// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/order.h"

#include <array>

namespace Simulation {

/** What a run, or many, came to. */
struct Figures
{
    qint64 receipts = 0;
    qint64 closed = 0; ///< of the receipts, likewise the next two
    qint64 refused = 0;
    qint64 cancelled = 0;
    qint64 asked = 0;                  ///< receipts of which a person was asked something
    std::array<qint64, 8> questions{}; ///< by Question, of all orders
    qint64 mishaps = 0;
    qint64 commands = 0;
    qint64 flushes = 0;
    qint64 deaths = 0; ///< of a till

    void add(const Figures &other);
};

} // namespace Simulation
