// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/money.h"

#include <cstdlib>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr qint64 thousandths = 1000;

QString twoDigits(qint64 number)
{
    return QString::number(number).rightJustified(2, u'0');
}

} // namespace

std::optional<qint64> lineTotal(qint64 price, qint32 quantity)
{
    if (price < 0 || price > largestAmount || quantity <= 0 || quantity > largestQuantity)
        return std::nullopt;
    const qint64 total = (price * quantity + thousandths / 2) / thousandths;
    return total <= largestAmount ? std::optional(total) : std::nullopt;
}

qint64 percentageOf(qint64 amount, int percentage)
{
    const qint64 share = (amount * std::abs(percentage) + 50) / 100;
    return percentage < 0 ? -share : share;
}

qint64 taxWithin(qint64 amount, int rate)
{
    const qint64 whole = 100 + rate;
    return (2 * amount * rate + whole) / (2 * whole);
}

QString moneyText(qint64 amount)
{
    const qint64 size = std::abs(amount);
    QString lira = QString::number(size / 100);
    for (qsizetype dot = lira.size() - 3; dot > 0; dot -= 3)
        lira.insert(dot, u'.');
    return (amount < 0 ? u"-"_s : QString()) + lira + u',' + twoDigits(size % 100);
}

QString quantityText(qint32 quantity)
{
    const QString units = QString::number(quantity / thousandths);
    const qint64 rest = quantity % thousandths;
    return rest == 0 ? units : units + u',' + QString::number(rest).rightJustified(3, u'0');
}

} // namespace Simulator
