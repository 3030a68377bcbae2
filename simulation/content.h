// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/plan.h"
#include "till/receipt.h"

#include <QByteArray>

namespace Simulation {

/** What is handed over for a step. */
struct Content
{
    QByteArray json;                  ///< empty for reports
    Velno::Receipts::Receipt receipt; ///< of a receipt
    bool isRefusedForGood = false;    ///< the register, or the library, cannot sell it as it is
};

/** Its lines, and the text of its slip, begin with the key, so that whatever comes out tells whose it is. */
Content contentOf(const Step &step, const QString &key);

/** The key that a line or a text begins with. */
QString keyIn(const QString &text);

} // namespace Simulation
