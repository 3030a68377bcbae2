// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <optional>

/** Amounts and quantities without a floating point number in between. */
namespace Velno::Receipts {

constexpr qint64 mostKurus = 999'999'999'999; ///< a register takes 12 digits

/** Digits, then perhaps a point and up to `decimals` more digits, times 10 to the power of it: "12.5" is 1250
 * with 2. No sign, no exponent, no space; 15 digits at most. */
std::optional<qint64> decimalFrom(const QString &text, int decimals);

/** Kuruş as lira: 1250 is "12.50". */
QString liraText(qint64 kurus);

/** Thousandths without trailing zeros: 1500 is "1.5", 2000 is "2". */
QString quantityText(qint32 thousandths);

/** What a line comes to before its adjustment, rounded half up, as the library counts it.
 * @param price  0 to mostKurus; @param quantity  0 or more: no product of these overflows */
qint64 lineTotal(qint64 price, qint32 quantity);

} // namespace Velno::Receipts
