// SPDX-License-Identifier: Apache-2.0

#include "till/position.h"

#include "till/money.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

using Sums = std::array<qint64, 2>; ///< by Tender

void add(Sums &sums, const Payment &payment)
{
    sums.at(size_t(payment.tender)) += payment.amount.value_or(0);
}

Sums paidIn(const VelnoEcrSaleTotals &totals)
{
    return {totals.values[VelnoTotal_Cash], totals.values[VelnoTotal_Card]};
}

qint64 worthOf(const Item &item)
{
    const qint64 gross = lineTotal(item.price, item.quantity);
    return item.percentage != 0 ? gross + gross * item.percentage / 100 : gross - item.discount;
}

/** Whether that many lines come to this, with the medical contribution or without it. Registers round in
 * their own ways. */
bool isSumOf(const Receipt &receipt, int lines, qint64 total)
{
    constexpr qint64 roundingOfLine = 2; // kuruş
    qint64 sum = 0;
    for (int i = 0; i < lines; ++i)
        sum += worthOf(receipt.items.at(i));
    const qint64 most = roundingOfLine * lines;
    const auto isNear = [&](qint64 wanted) { return total >= wanted - most && total <= wanted + most; };
    return isNear(sum) || (receipt.medical && isNear(sum + receipt.medical->amount));
}

Sums amountsTogether(const Receipt &receipt)
{
    Sums sums{};
    for (const Payment &payment : receipt.payments)
        add(sums, payment);
    return sums;
}

} // namespace

int amountsOf(const Receipt &receipt)
{
    return int(std::count_if(receipt.payments.cbegin(), receipt.payments.cend(),
                             [](const Payment &payment) { return payment.amount.has_value(); }));
}

Tender endTender(const Receipt &receipt)
{
    return receipt.payments.constLast().tender;
}

bool isForOnce(const Receipt &receipt, Tender tender)
{
    return tender == Tender::Card || !receipt.reenterCash;
}

std::optional<Position> positionOf(const Receipt &receipt, const VelnoEcrSaleTotals &totals)
{
    Position position{totals.number, 0};
    const Sums paid = paidIn(totals);
    Sums sums{};
    while (sums != paid && position.payments < amountsOf(receipt))
        add(sums, receipt.payments.at(position.payments++));
    const bool isWhole = position.lines == receipt.items.size();
    const bool fits = position.lines >= 0 && position.lines <= receipt.items.size() &&
                      isSumOf(receipt, position.lines, totals.values[VelnoTotal_ToPay]);
    return sums == paid && fits && (isWhole || position.payments == 0) ? std::optional(position)
                                                                       : std::nullopt;
}

bool isClosedAs(const Receipt &receipt, const VelnoEcrSaleTotals &totals)
{
    Sums wanted = amountsTogether(receipt);
    const qint64 rest = totals.values[VelnoTotal_ToPay] - wanted[0] - wanted[1];
    if (rest > 0)
        wanted.at(size_t(endTender(receipt))) += rest;
    return totals.number == receipt.items.size() && wanted == paidIn(totals) &&
           isSumOf(receipt, totals.number, totals.values[VelnoTotal_ToPay]) &&
           totals.values[VelnoTotal_ToPay] == wanted[0] + wanted[1] - totals.values[VelnoTotal_Change];
}

QString faultOfTotals(const Receipt &receipt, const VelnoEcrSaleTotals &totals)
{
    const qint64 total = totals.values[VelnoTotal_ToPay];
    if (receipt.total && *receipt.total != total)
        return u"the register comes to %1, the receipt says %2"_s.arg(liraText(total),
                                                                      liraText(*receipt.total));
    const Sums sums = amountsTogether(receipt);
    const bool takesRest = !receipt.payments.constLast().amount;
    if (!takesRest && sums[0] + sums[1] < total)
        return u"%1 are to be paid, the payments are %2"_s.arg(liraText(total), liraText(sums[0] + sums[1]));
    if (sums[size_t(Tender::Card)] > total)
        return u"%1 are to be paid, by card are %2"_s.arg(liraText(total),
                                                          liraText(sums[size_t(Tender::Card)]));
    return {};
}

} // namespace Velno::Receipts
