// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/content.h"
#include "till/order.h"

namespace Simulation {

/** An order as it was handed over, and as it ended. */
struct Handed
{
    QString key;
    const Step *step = nullptr;
    Content content;
    Velno::Receipts::Order order;
    QList<Velno::Receipts::Question> asked;
    bool isToldUnsold = false; ///< it was refused, or dropped, once
    bool isHindered = false;   ///< something was refused meanwhile, or the register could not do it
};

} // namespace Simulation
