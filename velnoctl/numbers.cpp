// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/numbers.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr int kurusDecimals = 2;
constexpr int thousandthsDecimals = 3;

std::optional<qint64> digitsFrom(const QString &digits, int base)
{
    bool fits = false;
    const qint64 number = digits.toLongLong(&fits, base);
    return fits ? std::optional(number) : std::nullopt;
}

} // namespace

std::optional<qint64> decimalFrom(const QString &text, int decimals)
{
    static const QRegularExpression rule(u"\\A(-?[0-9]+)(?:[.,]([0-9]+))?\\z"_s);
    const QRegularExpressionMatch match = rule.match(text);
    const QString fraction = match.captured(2);
    if (!match.hasMatch() || fraction.size() > decimals)
        return std::nullopt;
    return digitsFrom(match.captured(1) + fraction.leftJustified(decimals, u'0'), 10);
}

std::optional<qint64> wholeNumberFrom(const QString &text)
{
    static const QRegularExpression rule(u"\\A(-?)(?:0[xX]([0-9A-Fa-f]+)|([0-9]+))\\z"_s);
    const QRegularExpressionMatch match = rule.match(text);
    if (!match.hasMatch())
        return std::nullopt;
    const QString sign = match.captured(1);
    return match.hasCaptured(3) ? digitsFrom(sign + match.captured(3), 10)
                                : digitsFrom(sign + match.captured(2), 16);
}

std::optional<qint64> kurusFrom(const QString &lira)
{
    return decimalFrom(lira, kurusDecimals);
}

std::optional<int> thousandthsFrom(const QString &amount)
{
    const std::optional<qint64> number = decimalFrom(amount, thousandthsDecimals);
    return number && std::in_range<int>(*number) ? std::optional(int(*number)) : std::nullopt;
}

std::optional<std::pair<int, int>> pairFrom(const QString &text)
{
    const std::optional<int> first = numberFrom<int>(text.section(u'/', 0, 0));
    const std::optional<int> second = numberFrom<int>(text.section(u'/', 1));
    return first && second ? std::optional(std::pair(*first, *second)) : std::nullopt;
}

std::optional<QByteArray> bytesFrom(const QString &digits)
{
    static const QRegularExpression rule(u"\\A(?:[0-9A-Fa-f]{2})+\\z"_s);
    return rule.match(digits).hasMatch() ? std::optional(QByteArray::fromHex(digits.toLatin1()))
                                         : std::nullopt;
}

} // namespace VelnoCtl
