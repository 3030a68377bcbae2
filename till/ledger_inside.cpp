// SPDX-License-Identifier: Apache-2.0

#include "till/ledger_inside.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

QString selectOrders(const QString &which)
{
    return u"SELECT %1 FROM orders WHERE %2"_s.arg(orderColumns(), which);
}

/** Of the states of a mask, as accepted. */
QString inStates()
{
    return u"(1 << state) & ? AND number > ? ORDER BY number LIMIT ?"_s;
}

QString selectAttempts(const QString &which, const QString &how = {})
{
    return u"SELECT %1 FROM attempts %2 WHERE %3"_s.arg(attemptColumns(), how, which);
}

/** What the statements say, put together once for all ledgers. */
struct Texts
{
    QString orderOfKey = selectOrders(u"key = ?"_s);
    QString orderOfNumber = selectOrders(u"number = ?"_s);
    QString ordersOfStates = selectOrders(inStates());
    QString unsettledOfStates = selectOrders(unsettledCondition() + u" AND "_s + inStates());
    QString firstUnsettled =
        u"SELECT coalesce(min(number) FILTER (WHERE first <> 0 OR second <> 0), min(number))"
        " FROM orders WHERE %1 AND (1 << state) & ?"_s.arg(unsettledCondition());
    QString historyOfOrder =
        u"SELECT %1 FROM history WHERE order_number = ? ORDER BY line"_s.arg(eventColumns());
    QString attemptsOfOrder = selectAttempts(u"order_number = ? ORDER BY era, first, second"_s);
    QString doubts = selectAttempts(u"era = ? AND fate = 3"_s, u"INDEXED BY doubts"_s);
    QString fromTheHighest = selectAttempts(u"era = ? ORDER BY first DESC, second DESC"_s);
    QString insertOrder = Receipts::insertOrder();
    QString updateOrder = Receipts::updateOrder();
    QString insertEvent = Receipts::insertEvent();
    QString insertAttempt = Receipts::insertAttempt();
};

const Texts &texts()
{
    static const Texts all;
    return all;
}

} // namespace

Ledger::Inside::Inside()
    : begin(database, u"BEGIN IMMEDIATE"_s)
    , commit(database, u"COMMIT"_s)
    , rollBack(database, u"ROLLBACK"_s)
    , orderOfKey(database, texts().orderOfKey)
    , orderOfNumber(database, texts().orderOfNumber)
    , ordersOfStates(database, texts().ordersOfStates)
    , unsettledOfStates(database, texts().unsettledOfStates)
    , firstUnsettled(database, texts().firstUnsettled)
    , historyOfOrder(database, texts().historyOfOrder)
    , attemptsOfOrder(database, texts().attemptsOfOrder)
    , doubts(database, texts().doubts)
    , fromTheHighest(database, texts().fromTheHighest)
    , highestZ(database, u"SELECT z FROM orders WHERE z_era = ? AND z > 0 ORDER BY z DESC LIMIT 1"_s)
    , insertOrder(database, texts().insertOrder)
    , updateOrder(database, texts().updateOrder)
    , insertEvent(database, texts().insertEvent)
    , insertAttempt(database, texts().insertAttempt)
{
}

} // namespace Velno::Receipts
