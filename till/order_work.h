// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/look.h"
#include "till/work_end.h"

namespace Velno::Receipts {

/** What the work on every kind of order has in common: the ends that it can come to, each on record. */
class OrderWork
{
public:
    /** @param mayHaveStarted  an earlier process, or earlier work on whichever order, may have started a sale
     * whose reference is not on record */
    OrderWork(Workplace &place, RegisterAccess &reg, Order &order, bool mayHaveStarted)
        : m_place(place)
        , m_register(reg)
        , m_order(order)
        , m_mayHaveStarted(mayHaveStarted)
    {
    }
    virtual ~OrderWork() = default;
    Q_DISABLE_COPY_MOVE(OrderWork)

    /** Goes on with the order as far as it can be now. */
    virtual WorkEnd run() = 0;

    /** Whether it ended with a sale that may be open and whose reference is not on record. */
    bool mayHaveStarted() const { return m_mayHaveStarted; }

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

    /** A person has said that another register has taken the place: unless that was known before, from here
     * on the numbers are its own. @return false: the ledger has failed */
    bool takeOtherRegister();

    /** Whether its reference or Z number is of a register that another one has taken the place of. */
    bool isOfFormerRegister() const { return m_order.era < m_place.ledger.era(); }

    /** Cancels a sale that may have been started and is empty, if there is one. */
    void leaveNoneOpen();

    /** What keeps the register from a step, and goes by when somebody acts on it. @param refusal  of the step
     */
    std::optional<Reply> hindrance(const Reply &refusal);

    static constexpr int mostRefusals = RegisterAccess::mostRefusals;

    Workplace &m_place;
    RegisterAccess &m_register;
    Order &m_order;
    bool m_mayHaveStarted;
};

} // namespace Velno::Receipts
