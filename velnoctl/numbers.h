// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <utility>

/** Numbers as they are typed, read exactly; one that does not fit its type is none. */
namespace VelnoCtl {

/**
 * A number with up to `decimals` digits behind a point or a comma, times 10 to the power of `decimals`:
 * "12.5" and "12,50" are 1250 with two. A minus may stand in front; thousands are not separated.
 */
std::optional<qint64> decimalFrom(const QString &text, int decimals);

/** A whole number in decimal or, behind 0x, in hexadecimal digits; a minus may stand in front. */
std::optional<qint64> wholeNumberFrom(const QString &text);

/** A whole number that fits. */
template <typename Number>
std::optional<Number> numberFrom(const QString &text)
{
    const std::optional<qint64> number = wholeNumberFrom(text);
    return number && std::in_range<Number>(*number) ? std::optional(Number(*number)) : std::nullopt;
}

std::optional<qint64> kurusFrom(const QString &lira);      ///< "12.50"
std::optional<int> thousandthsFrom(const QString &amount); ///< "1.250"

/** Two whole numbers with a slash between them. */
std::optional<std::pair<int, int>> pairFrom(const QString &text);

/** Bytes of two hexadecimal digits each; one at least. */
std::optional<QByteArray> bytesFrom(const QString &digits);

} // namespace VelnoCtl
