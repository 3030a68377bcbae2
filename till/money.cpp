// SPDX-License-Identifier: Apache-2.0

#include "till/money.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr qsizetype mostDigits = 15;

bool isDigits(QStringView text)
{
    const auto isDigit = [](QChar character) { return character >= u'0' && character <= u'9'; };
    return !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), isDigit);
}

/** "12.50" of 1250 with 2 decimals. */
QString decimalText(qint64 number, int decimals)
{
    const bool isNegative = number < 0;
    const quint64 amount = isNegative ? 0 - quint64(number) : quint64(number);
    QString digits = QString::number(amount).rightJustified(decimals + 1, u'0');
    digits.insert(digits.size() - decimals, u'.');
    return isNegative ? u'-' + digits : digits;
}

} // namespace

std::optional<qint64> decimalFrom(const QString &text, int decimals)
{
    const qsizetype point = text.indexOf(u'.');
    const QStringView whole = QStringView(text).first(point < 0 ? text.size() : point);
    const QStringView fraction = QStringView(text).sliced(point < 0 ? text.size() : point + 1);
    if (!isDigits(whole) || (point >= 0 && !isDigits(fraction)))
        return std::nullopt;
    if (fraction.size() > decimals || whole.size() > mostDigits - decimals)
        return std::nullopt;
    return (whole.toString() + fraction.toString().leftJustified(decimals, u'0')).toLongLong();
}

QString liraText(qint64 kurus)
{
    return decimalText(kurus, 2);
}

QString quantityText(qint32 thousandths)
{
    QString text = decimalText(thousandths, 3);
    while (text.endsWith(u'0'))
        text.chop(1);
    return text.endsWith(u'.') ? text.chopped(1) : text;
}

qint64 lineTotal(qint64 price, qint32 quantity)
{
    const qint64 units = quantity / 1000;
    const qint64 thousandths = quantity % 1000;
    return price * units + (price * thousandths + 500) / 1000;
}

} // namespace Velno::Receipts
