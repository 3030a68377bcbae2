// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/plan.h"
#include "till/rules.h"

namespace Simulation {

/** What a plan comes to, in words; empty when nothing is wrong. */
QString problemOf(const Plan &plan, const Velno::Receipts::Rules &rules);

/** A plan that fails is made as small as it goes while it goes on failing: fewer steps, fewer mishaps, fewer
 * lines. */
Plan shrunk(Plan plan, const Velno::Receipts::Rules &rules);

} // namespace Simulation
