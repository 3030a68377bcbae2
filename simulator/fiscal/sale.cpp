// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/sale.h"

#include "simulator/fiscal/money.h"
#include "simulator/fiscal/sections.h"
#include "simulator/fiscal/text_input.h"

#include <algorithm>

namespace Simulator {

namespace {

constexpr qint64 smallestIdentity = 10'000'000'000; // 11 digits, the first of them not 0
constexpr qint64 largestIdentity = 99'999'999'999;

Refusal adjust(const ItemRequest &item, SaleLine &line)
{
    if (item.percentage < -largestPercentage || item.percentage > largestPercentage)
        return BadPercentage;
    line.percentage = item.percentage;
    line.adjustment = percentageOf(line.gross, item.percentage);
    if (item.percentage != 0)
        return NotRefused;
    if (item.amount < 0 || item.amount > line.gross)
        return BadDiscount;
    line.adjustment = -item.amount;
    return NotRefused;
}

Refusal price(const ItemRequest &item, SaleLine &line)
{
    const Section *section = findSection(item.section);
    const auto gross = lineTotal(item.price, item.quantity);
    if (!section)
        return BadSection;
    if (!gross)
        return BadPrice;
    line.price = item.price;
    line.quantity = item.quantity;
    line.section = section->number;
    line.taxRate = section->taxRate;
    line.gross = *gross;
    return adjust(item, line);
}

Refusal makeLine(const ItemRequest &item, SaleLine &line)
{
    if (!unitName(item.type))
        return BadUnit;
    line.name = itemName(item.name);
    line.type = item.type;
    return item.price == 0 ? NotRefused : price(item, line);
}

} // namespace

Refusal Sale::add(const QList<ItemRequest> &items)
{
    if (const Refusal refusal = mayChange())
        return refusal;
    if (items.isEmpty())
        return NoItem;
    if (items.size() > mostLines - m_lines.size())
        return ReceiptFull;
    QList<SaleLine> lines = m_lines;
    qint64 total = itemsTotal() + m_contribution;
    for (const ItemRequest &item : items) {
        SaleLine line;
        if (const Refusal refusal = makeLine(item, line))
            return refusal;
        total += line.total();
        if (const Refusal refusal = mayReach(total))
            return refusal;
        lines << line;
    }
    m_lines = lines;
    return NotRefused;
}

Refusal Sale::removeLast()
{
    const auto last =
        std::find_if(m_lines.crbegin(), m_lines.crend(), [](const SaleLine &l) { return !l.deleted; });
    return remove(int(m_lines.crend() - last) - 1);
}

Refusal Sale::remove(int index)
{
    if (const Refusal refusal = mayChange())
        return refusal;
    if (index < 0 || index >= m_lines.size() || m_lines.at(index).deleted)
        return NoItem;
    m_lines[index].deleted = true;
    return NotRefused;
}

Refusal Sale::setMedicalContribution(qint64 amount, qint64 identity)
{
    if (const Refusal refusal = mayChange())
        return refusal;
    if (amount < 0 || amount > largestAmount)
        return BadContribution;
    if (amount != 0 && (identity < smallestIdentity || identity > largestIdentity))
        return BadPatient;
    if (const Refusal refusal = mayReach(itemsTotal() + amount))
        return refusal;
    m_contribution = amount;
    m_patient = amount == 0 ? 0 : identity;
    return NotRefused;
}

Refusal Sale::pay(PaymentKind kind, qint64 amount, int acquirer)
{
    if (isEmpty())
        return NothingSold;
    if (m_payments.size() >= mostPayments)
        return TooManyPayments;
    if (amount <= 0 || amount > largestAmount)
        return BadPayment;
    const qint64 left = remaining();
    if (left == 0)
        return NothingLeft;
    if (kind == PaymentKind::Card && amount > left)
        return CardOverRest;
    take(kind, amount, acquirer);
    return NotRefused;
}

Refusal Sale::settle(PaymentKind kind, int acquirer)
{
    if (isEmpty())
        return NothingSold;
    if (const qint64 left = remaining(); left > 0)
        take(kind, left, acquirer);
    return NotRefused;
}

void Sale::take(PaymentKind kind, qint64 amount, int acquirer)
{
    m_payments << Payment{kind, amount, kind == PaymentKind::Card ? acquirer : 0};
}

TaxGroups Sale::taxGroups() const
{
    TaxGroups groups;
    for (const SaleLine &line : m_lines)
        if (!line.deleted && line.section != 0)
            groups[line.taxRate].total += line.total();
    for (auto &[rate, group] : groups)
        group.tax = taxWithin(group.total, rate);
    return groups;
}

bool Sale::isEmpty() const
{
    return m_contribution == 0 && std::ranges::all_of(m_lines, &SaleLine::deleted);
}

SaleTotals Sale::totals() const
{
    SaleTotals totals;
    totals.total = itemsTotal() + m_contribution;
    for (const auto &[rate, group] : taxGroups())
        totals.tax += group.tax;
    for (const Payment &payment : m_payments)
        (payment.kind == PaymentKind::Cash ? totals.cash : totals.card) += payment.amount;
    totals.change = std::max<qint64>(0, totals.cash + totals.card - totals.total);
    totals.items = qint32(std::ranges::count(m_lines, false, &SaleLine::deleted));
    return totals;
}

qint64 Sale::remaining() const
{
    qint64 left = itemsTotal() + m_contribution;
    for (const Payment &payment : m_payments)
        left -= payment.amount;
    return std::max<qint64>(left, 0);
}

qint64 Sale::itemsTotal() const
{
    qint64 total = 0;
    for (const SaleLine &line : m_lines)
        if (!line.deleted)
            total += line.total();
    return total;
}

Refusal Sale::mayReach(qint64 total) const
{
    if (total > largestAmount)
        return OverLargestAmount;
    return m_limit > 0 && total > m_limit ? OverSaleLimit : NotRefused;
}

} // namespace Simulator
