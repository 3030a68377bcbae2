// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/ledger.h"

#include <QDir>
#include <QFileInfo>

namespace TestSupport {

using namespace Velno::Receipts;
using namespace Qt::StringLiterals;

/** For a QTemporaryDir whose files no test waits to be flushed for, where the system has memory for that. */
inline QString folderInMemory()
{
    const QString memory = u"/dev/shm"_s;
    const QString parent = QFileInfo(memory).isWritable() ? memory : QDir::tempPath();
    return parent + u"/velno-ledger-XXXXXX"_s;
}

/** So many seconds after some point in time. */
inline QDateTime moment(int second)
{
    return QDateTime::fromMSecsSinceEpoch(1'700'000'000'123 + second * qint64(1000), Qt::UTC);
}

/** One that is open, unless there is trouble. */
class OpenLedger : public Ledger
{
public:
    explicit OpenLedger(const LedgerPlace &place)
        : trouble(open(place))
    {
    }

    /** Accepts an order under the key. */
    Order add(const QString &key, Kind kind = Kind::Receipt)
    {
        Order order;
        order.key = key;
        order.kind = kind;
        order.acceptedAt = order.changedAt = moment(0);
        accept(&order, {moment(0), State::Accepted, 0, 0, u"accepted"_s, {}});
        return order;
    }

    bool put(Order order, State state, int second = 1)
    {
        order.state = state;
        order.changedAt = moment(second);
        return save(order, {moment(second), state, 0, 0, u"put"_s, {}}, Durability::Written);
    }

    /** A receipt that was entered, and what became of it. */
    bool enter(const Order &order, const VelnoReceiptRef &reference, Fate fate, State state = State::Open)
    {
        note({order.number, reference, era(), fate});
        return put(order, state);
    }

    const QString trouble;
};

} // namespace TestSupport
