#pragma once

#include <QString>

#include <optional>

/** Decimal texts without a floating point number in between. */
namespace Velno::Receipts {

/** Digits, then perhaps a point and up to `decimals` more digits, times 10 to the power of it: "12.5" is 1250
 * with 2. No sign, no exponent, no space; 15 digits at most. */
std::optional<qint64> decimalFrom(const QString &text, int decimals);

/** Kuruş as lira: 1250 is "12.50". */
QString liraText(qint64 kurus);

/** Thousandths without trailing zeros: 1500 is "1.5", 2000 is "2". */
QString quantityText(qint32 thousandths);

} // namespace Velno::Receipts
