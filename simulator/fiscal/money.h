// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <optional>

/**
 * Money as the register counts it: whole kuruş. Every amount that enters is bounded first, so that no later
 * product or sum can leave 64 bits: the largest price times the largest quantity is below 10^18, and a day's
 * counters would need more than 900 million of the largest receipts.
 */
namespace Simulator {

constexpr qint64 largestAmount = 9'999'999'999; ///< kuruş: 99,999,999.99 lira
constexpr qint32 largestQuantity = 99'999'999;  ///< thousandths: 99,999.999 units
constexpr int largestPercentage = 100;

/**
 * price × quantity / 1000, a half kuruş rounded up; nothing when price, quantity or the result is out of
 * bounds or negative. A quantity of 0 is out of bounds.
 */
std::optional<qint64> lineTotal(qint64 price, qint32 quantity);

/** So many per cent of an amount, the half rounded away from zero. @param percentage -100 to 100 */
qint64 percentageOf(qint64 amount, int percentage);

/** The value-added tax that an amount contains at so many per cent, a half rounded up. */
qint64 taxWithin(qint64 amount, int rate);

/** 1.234,50 as on a receipt. */
QString moneyText(qint64 amount);

/** 1,250 for 1250 thousandths, and 2 for 2000. */
QString quantityText(qint32 quantity);

} // namespace Simulator
