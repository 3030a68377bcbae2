#include "simulator/fiscal/sale.h"

#include "simulator/fiscal/money.h"
#include "simulator/fiscal/sections.h"
#include "simulator/fiscal/text_input.h"

#include <algorithm>

namespace Simulator {

namespace {

constexpr qint64 smallestIdentity = 10'000'000'000; // 11 digits, the first of them not 0
constexpr qint64 largestIdentity = 99'999'999'999;

RegisterError adjust(const ItemRequest &item, SaleLine &line)
{
    if (item.percentage < -largestPercentage || item.percentage > largestPercentage)
        return WrongValue;
    line.percentage = item.percentage;
    line.adjustment = percentageOf(line.gross, item.percentage);
    if (item.percentage != 0)
        return NoError;
    if (item.amount < 0 || item.amount > line.gross)
        return WrongValue;
    line.adjustment = -item.amount;
    return NoError;
}

RegisterError price(const ItemRequest &item, SaleLine &line)
{
    const Section *section = findSection(item.section);
    const auto gross = lineTotal(item.price, item.quantity);
    if (!section || !gross)
        return WrongValue;
    line.price = item.price;
    line.quantity = item.quantity;
    line.section = section->number;
    line.taxRate = section->taxRate;
    line.gross = *gross;
    return adjust(item, line);
}

RegisterError makeLine(const ItemRequest &item, SaleLine &line)
{
    if (!unitName(item.type))
        return WrongValue;
    line.name = itemName(item.name);
    line.type = item.type;
    return item.price == 0 ? NoError : price(item, line);
}

} // namespace

RegisterError Sale::add(const QList<ItemRequest> &items)
{
    if (const RegisterError error = mayChange())
        return error;
    if (items.isEmpty())
        return NothingThere;
    if (items.size() > mostLines - m_lines.size())
        return OverLimit;
    QList<SaleLine> lines = m_lines;
    qint64 total = totals().total;
    for (const ItemRequest &item : items) {
        SaleLine line;
        if (const RegisterError error = makeLine(item, line))
            return error;
        total += line.total();
        if (exceedsLimit(total))
            return OverLimit;
        lines << line;
    }
    m_lines = lines;
    return NoError;
}

RegisterError Sale::removeLast()
{
    const auto last =
        std::find_if(m_lines.crbegin(), m_lines.crend(), [](const SaleLine &l) { return !l.deleted; });
    return remove(int(m_lines.crend() - last) - 1);
}

RegisterError Sale::remove(int index)
{
    if (const RegisterError error = mayChange())
        return error;
    if (index < 0 || index >= m_lines.size() || m_lines.at(index).deleted)
        return NothingThere;
    m_lines[index].deleted = true;
    return NoError;
}

RegisterError Sale::setMedicalContribution(qint64 amount, qint64 identity)
{
    if (const RegisterError error = mayChange())
        return error;
    if (amount < 0 || amount > largestAmount)
        return WrongValue;
    if (amount != 0 && (identity < smallestIdentity || identity > largestIdentity))
        return WrongValue;
    if (exceedsLimit(itemsTotal() + amount))
        return OverLimit;
    m_contribution = amount;
    m_patient = amount == 0 ? 0 : identity;
    return NoError;
}

RegisterError Sale::pay(PaymentKind kind, qint64 amount, int acquirer)
{
    if (isEmpty())
        return NothingThere;
    if (m_payments.size() >= mostPayments)
        return OverLimit;
    const qint64 left = remaining();
    if (amount <= 0 || amount > largestAmount || left == 0 || (kind == PaymentKind::Card && amount > left))
        return WrongValue;
    take(kind, amount, acquirer);
    return NoError;
}

RegisterError Sale::settle(PaymentKind kind, int acquirer)
{
    if (isEmpty())
        return NothingThere;
    if (const qint64 left = remaining(); left > 0)
        take(kind, left, acquirer);
    return NoError;
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
    const SaleTotals sums = totals();
    return sums.total - (sums.cash + sums.card - sums.change);
}

qint64 Sale::itemsTotal() const
{
    qint64 total = 0;
    for (const SaleLine &line : m_lines)
        if (!line.deleted)
            total += line.total();
    return total;
}

bool Sale::exceedsLimit(qint64 total) const
{
    return total > largestAmount || (m_limit > 0 && total > m_limit);
}

} // namespace Simulator
