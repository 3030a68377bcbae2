// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/till.h"

#include <QRandomGenerator>

// Two pieces at 12.50, and one at 5.00.
inline const Simulator::ItemRequest bread{1250, 2000, 0, 0, 1, "Ekmek", 0};
inline const Simulator::ItemRequest water{500, 1000, 0, 0, 3, "Su", 0};

/** A till that prints into a list, at a time that stands still. */
class TillAtHand : public Simulator::Till
{
public:
    static constexpr qint32 time = 1'790'000'000; ///< in September 2026
    static constexpr char serial[] = "UB1234567890";

    /** With its journal open, in memory. */
    explicit TillAtHand(qint32 firstZ = 1);

    /** As they are pressed: digits, comma, C, E, M; $ is F10, # is F11. */
    void keys(const char *keys);

    QList<Simulator::Print> prints;
};

/**
 * A till, and beside it a second count of all that it was told, in the simplest way that counts: the one
 * checks the other. What was done is drawn from a seed.
 */
class RandomShop
{
public:
    explicit RandomShop(quint32 seed);

    /** Opens a sale, does things to it, most of them right, and ends it. @return what did not add up */
    QString sellOne();

    /** Makes the Z report. @return what did not add up */
    QString endDay();

private:
    Simulator::ItemRequest anyItem();
    QString changeSale();
    QString payAndClose();
    QString checkReceipt(const Simulator::SaleTotals &before);

    QRandomGenerator m_random;
    TillAtHand m_till;
    QList<qint64> m_lines; ///< of the open sale; -1 for a deleted one
    qint64 m_contribution = 0;
    Simulator::DayTotals m_day; ///< counted here
    qint64 m_grandTotal = 0;
    qint32 m_receipt = 0; ///< the number used last
    QList<Simulator::ReceiptRef> m_closed;
};
