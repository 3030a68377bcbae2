// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/order.h"

#include <functional>

namespace Velno::Receipts {

/** What is under way, for a cashier's display. The numbers are those of velnotill.h and never change. */
enum class Stage {
    Accepted = 0,
    Connecting = 1,
    Pairing = 2, ///< the register has lost its keys and is paired anew
    Starting = 3,
    Entering = 4, ///< the lines
    CashPayment = 5,
    CardPayment = 6, ///< the customer is asked for a card
    Closing = 7,
    Looking = 8,        ///< an answer was lost: the register is asked what became of it
    Busy = 9,           ///< the register is busy, or out of paper
    EnteringAgain = 10, ///< the register has cancelled it; it is entered once more
    Printing = 11,
    Reporting = 12,
    Settled = 13, ///< the order has come to the state that it carries
};

/** Is told what goes on, on the thread that works; must not call the till but to interrupt it. */
using Listener = std::function<void(const Order &order, Stage stage)>;

} // namespace Velno::Receipts
