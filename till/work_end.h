// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Velno::Receipts {

/** How the work on an order ended. */
enum class WorkEnd {
    Settled,      ///< nothing more is to be done about it
    NeedsPerson,  ///< others may be worked on meanwhile
    Waiting,      ///< the register is away or busy, for others too
    Stopped,      ///< somebody wanted it to end
    LedgerFailed, ///< what had to be noted could not be; what is on record holds
};

} // namespace Velno::Receipts
