// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/order_work.h"

namespace Velno::Receipts {

/** Makes a Z report, exactly once: the register's number before it is on record, and has grown behind it. */
class ZReportWork final : public OrderWork
{
public:
    using OrderWork::OrderWork;
    WorkEnd run() override;

private:
    End makeOnce();
    End askForNumber(int *z);

    int m_refusals = 0;
    int m_losses = 0;
};

/** Prints an X report; a second one does no harm. */
class XReportWork final : public OrderWork
{
public:
    XReportWork(Workplace &place, RegisterAccess &reg, Order &order)
        : OrderWork(place, reg, order)
        , m_patience(place.clock, place.meeting.patience)
    {
    }
    WorkEnd run() override;

private:
    End printOnce();

    int m_refusals = 0;
    int m_losses = 0;
    Patience m_patience; ///< with a busy register
};

/** Prints a slip; when it is not certain that it came out, a person is asked. */
class SlipWork final : public OrderWork
{
public:
    using OrderWork::OrderWork;
    WorkEnd run() override;

private:
    End printOnce();

    int m_refusals = 0;
};

} // namespace Velno::Receipts
