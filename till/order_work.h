// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/look.h"
#include "till/work_end.h"

namespace Velno::Receipts {

/** What the work on every kind of order has in common: the ends that it can come to, each on record. */
class OrderWork
{
public:
    OrderWork(Workplace &place, RegisterAccess &reg, Order &order)
        : m_place(place)
        , m_register(reg)
        , m_order(order)
    {
    }
    virtual ~OrderWork() = default;
    Q_DISABLE_COPY_MOVE(OrderWork)

    /** Goes on with the order as far as it can be now. */
    virtual WorkEnd run() = 0;

protected:
    using End = std::optional<WorkEnd>; ///< nothing: the work goes on

    /** Writes the order with its new state. @return nothing, or LedgerFailed */
    End save(State state, const QString &text, Durability durability = Durability::Written);

    WorkEnd settle(State state, const QString &text, Durability durability = Durability::Written);
    WorkEnd ask(Question question, const QString &text);
    WorkEnd wait(const Reply &reply, const QString &text);
    WorkEnd refuse(const Reply &reply, const QString &text);

    /** Why a look or the way to the register brought nothing. */
    WorkEnd endOf(Looked looked);
    End reach();

    /** Pauses, ever longer. @return false: it was to stop */
    bool pauseBehind(int refusals) { return m_place.clock.pause(1 << refusals); }

    /** What a person has said of a report or a slip; nothing has been said of others. */
    End takeWord(const QString &done, const QString &again);

    static constexpr int mostRefusals = RegisterAccess::mostRefusals;

    Workplace &m_place;
    RegisterAccess &m_register;
    Order &m_order;
};

} // namespace Velno::Receipts
