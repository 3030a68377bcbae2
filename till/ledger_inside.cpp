// SPDX-License-Identifier: Apache-2.0

#include "till/ledger_inside.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

QString selectOrders(const QString &which)
{
    return u"SELECT %1 FROM orders WHERE %2"_s.arg(orderColumns(), which);
}

QString inStates(const QString &state)
{
    return u"number > ? AND %1 IN (%2) ORDER BY number LIMIT ?"_s.arg(
        state, QStringList(stateCount, u"?"_s).join(u", "_s));
}

QString selectNumbers(const QString &which)
{
    return u"SELECT number FROM orders WHERE %1"_s.arg(which);
}

QString selectAttempts(const QString &which, const QString &how = {})
{
    return u"SELECT %1 FROM attempts %2 WHERE %3"_s.arg(attemptColumns(), how, which);
}

QString highestReference(const QString &which)
{
    return u"SELECT first, second FROM attempts WHERE %1 ORDER BY first DESC, second DESC LIMIT 1"_s.arg(
        which);
}

} // namespace

Ledger::Inside::Inside()
    : begin(database, u"BEGIN IMMEDIATE"_s)
    , commit(database, u"COMMIT"_s)
    , rollBack(database, u"ROLLBACK"_s)
    , numberOfKey(database, selectNumbers(u"key = ?"_s))
    , orderOfNumber(database, selectOrders(u"number = ?"_s))
    , ordersOfStates(database, selectOrders(inStates(u"state"_s)))
    , unsettledOfStates(database, selectOrders(inStates(unsettledCondition() + u" AND state"_s)))
    , numbersOfStates(database, selectNumbers(inStates(u"state"_s)))
    , unsettledNumbers(database, selectNumbers(inStates(unsettledCondition() + u" AND state"_s)))
    , historyOfOrder(database,
                     u"SELECT %1 FROM history WHERE order_number = ? ORDER BY line"_s.arg(eventColumns()))
    , attemptsOfOrder(database, selectAttempts(u"order_number = ? ORDER BY era, first, second"_s))
    , doubts(database, selectAttempts(u"era = ? AND fate = 3"_s, u"INDEXED BY doubts"_s))
    , lastClosed(database, highestReference(u"era = ? AND fate = 1"_s))
    , highest(database, highestReference(u"era = ?"_s))
    , highestZ(database, u"SELECT z, 0 FROM orders WHERE z_era = ? AND z > 0 ORDER BY z DESC LIMIT 1"_s)
    , insertOrder(database, Receipts::insertOrder())
    , updateOrder(database, Receipts::updateOrder())
    , insertEvent(database,
                  u"INSERT INTO history (order_number, line, %1) SELECT ?, coalesce(max(line), 0) + 1,"
                  " ?, ?, ?, ?, ?, ? FROM history WHERE order_number = ?"_s.arg(eventColumns()))
    , insertAttempt(database,
                    u"INSERT INTO attempts (%1) VALUES (?, ?, ?, ?, ?) ON CONFLICT (era, first, second)"
                    " DO UPDATE SET fate = excluded.fate WHERE order_number = excluded.order_number"_s.arg(
                        attemptColumns()))
{
}

} // namespace Velno::Receipts
