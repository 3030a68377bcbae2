// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/ledger.h"
#include "till/ledger_rows.h"
#include "till/ledger_schema.h"

namespace Velno::Receipts {

/** The database of a ledger that is open, and what is asked of it again and again. */
struct Ledger::Inside
{
    Inside();

    Database database;

    Statement begin;
    Statement commit;
    Statement rollBack;

    Statement orderOfKey;
    Statement orderOfNumber;
    Statement ordersOfStates;    ///< of the states of a mask, behind a number, how many at most
    Statement unsettledOfStates; ///< likewise, of those that are not settled
    Statement
        firstUnsettled; ///< of the states of a mask: its number, one with a reference if there is; NULL: none
    Statement historyOfOrder;
    Statement attemptsOfOrder;

    Statement doubts; ///< of an era, like the next two
    Statement fromTheHighest;
    Statement highestZ;

    Statement insertOrder;
    Statement updateOrder;
    Statement insertEvent;
    Statement insertAttempt;
};

} // namespace Velno::Receipts
