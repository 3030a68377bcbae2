// SPDX-License-Identifier: Apache-2.0

#include "till/money.h"

#include <algorithm>
#include <array>

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
    std::array<char, 24> room{}; // a sign, a point and the 20 digits of the largest amount
    auto first = room.end();
    quint64 left = number < 0 ? 0 - quint64(number) : quint64(number);
    for (int digits = 0; left > 0 || digits <= decimals; ++digits) {
        if (digits == decimals)
            *--first = '.';
        *--first = char('0' + left % 10);
        left /= 10;
    }
    if (number < 0)
        *--first = '-';
    return QString::fromLatin1(&*first, room.end() - first);
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
    qint64 number = 0;
    for (const QChar digit : whole)
        number = number * 10 + (digit.unicode() - u'0');
    for (qsizetype i = 0; i < decimals; ++i)
        number = number * 10 + (i < fraction.size() ? fraction.at(i).unicode() - u'0' : 0);
    return number;
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
