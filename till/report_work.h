// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/order_work.h"

namespace Velno::Receipts {

/** What the work on reports and slips has in common: each is one step, sent until it is done or refused. */
class ReportWork : public OrderWork
{
public:
    ReportWork(Workplace &place, RegisterAccess &reg, Order &order, bool mayHaveStarted)
        : OrderWork(place, reg, order, mayHaveStarted)
        , m_isHindered(order.state == State::Waiting)
        , m_patience(place.clock, place.meeting.patience)
    {
    }

protected:
    /** What a person has said of it. */
    End takeWord(const QString &done, const QString &again);

    /** The step was refused. One that can be done later waits: a sale is open, there is no paper. */
    End concludeRefusal(const QString &text);

    End concludeHindrance(const Reply &reply);

    /** An answer was lost, and sending again does no harm. */
    End concludeLoss();

    bool m_isHindered; ///< it waits for a register that is busy

private:
    int m_refusals = 0;
    int m_losses = 0;
    Patience m_patience; ///< with a busy register
};

/** Makes a Z report, exactly once: the register's number before it is on record, and has grown behind it. */
class ZReportWork final : public ReportWork
{
public:
    using ReportWork::ReportWork;
    WorkEnd run() override;

private:
    End makeOnce();
    End askForNumber(int *z);
    End concludeUntold(const Reply &reply, const QString &text);

    int m_untold = 0;              ///< how often it did not tell its number, or told that of before
    bool m_isSaidToBeMade = false; ///< by the register
};

/** Prints an X report; a second one does no harm. */
class XReportWork final : public ReportWork
{
public:
    using ReportWork::ReportWork;
    WorkEnd run() override;

private:
    End printOnce();
};

/** Prints a slip; when it is not certain that it came out, a person is asked. */
class SlipWork final : public ReportWork
{
public:
    using ReportWork::ReportWork;
    WorkEnd run() override;

private:
    End printOnce();
};

} // namespace Velno::Receipts
