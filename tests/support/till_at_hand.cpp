// SPDX-License-Identifier: Apache-2.0

#include "tests/support/till_at_hand.h"

#include "simulator/fiscal/sections.h"

#include <cmath>

using namespace Simulator;
using namespace Qt::StringLiterals;

namespace {

constexpr qint64 patient = 11'111'111'111;

int keyOf(char character)
{
    return character == '$' ? keyF10 : character == '#' ? keyF11 : character;
}

/** What an item comes to, counted another way than the till does: numbers this small are exact. */
qint64 expectedTotal(const ItemRequest &item)
{
    const double gross = std::floor(double(item.price) * item.quantity / 1000 + 0.5);
    const double share = std::floor(gross * std::abs(item.percentage) / 100 + 0.5);
    return qint64(gross + (item.percentage < 0 ? -share : share)) - (item.percentage == 0 ? item.amount : 0);
}

bool isTooMuch(const ItemRequest &item)
{
    return item.percentage == 0 && item.amount > expectedTotal(item) + item.amount;
}

QString difference(const char *what, qint64 is, qint64 shouldBe)
{
    return is == shouldBe ? QString()
                          : u"%1 is %2 and should be %3"_s.arg(QLatin1StringView(what)).arg(is).arg(shouldBe);
}

QString firstOf(std::initializer_list<QString> problems)
{
    for (const QString &problem : problems)
        if (!problem.isEmpty())
            return problem;
    return {};
}

} // namespace

TillAtHand::TillAtHand(qint32 firstZ)
    : Till(serial, [] { return time; })
{
    setOutput([this](const Print &print) { prints << print; });
    if (const QString problem = open({}); !problem.isEmpty())
        qFatal("%s", qPrintable(problem));
    setZ(firstZ);
}

void TillAtHand::keys(const char *keys)
{
    QList<qint32> list;
    for (const char *key = keys; *key; ++key)
        list << keyOf(*key);
    press(list);
}

RandomShop::RandomShop(quint32 seed)
    : m_random(seed)
{
}

ItemRequest RandomShop::anyItem()
{
    ItemRequest item{m_random.bounded(0, 20) == 0 ? 0 : m_random.bounded(1, 100'000),
                     m_random.bounded(4) == 0 ? m_random.bounded(1, 20'000) : 1000,
                     0,
                     0,
                     m_random.bounded(1, 9),
                     "mal",
                     m_random.bounded(8)};
    if (m_random.bounded(3) == 0)
        item.percentage = m_random.bounded(-100, 101);
    else if (m_random.bounded(3) == 0)
        item.amount = m_random.bounded(1, 2000);
    return item;
}

QString RandomShop::changeSale()
{
    const int dice = m_random.bounded(10);
    if (dice < 7 || m_lines.isEmpty()) {
        const ItemRequest item = anyItem();
        const bool refused = item.price != 0 && isTooMuch(item);
        if ((m_till.add({item}) != NotRefused) != refused)
            return u"an item was not judged by its amount"_s;
        if (!refused)
            m_lines << (item.price == 0 ? 0 : expectedTotal(item));
    } else if (dice < 9) {
        const int index = m_random.bounded(int(m_lines.size()));
        if (m_till.remove(index) != (m_lines[index] < 0 ? NoItem : NotRefused))
            return u"a line was not deleted once"_s;
        m_lines[index] = -1;
    } else {
        m_contribution = m_random.bounded(3) * 250;
        if (m_till.setMedicalContribution(m_contribution, patient) != NotRefused)
            return u"a contribution was refused"_s;
    }
    return {};
}

QString RandomShop::sellOne()
{
    m_lines.clear();
    m_contribution = 0;
    m_till.keys("E");
    ++m_receipt;
    for (int steps = m_random.bounded(1, 12); steps > 0; --steps)
        if (const QString problem = changeSale(); !problem.isEmpty())
            return problem;
    qint64 total = m_contribution;
    qint32 items = 0;
    for (qint64 line : m_lines) {
        total += qMax<qint64>(0, line);
        items += line < 0 ? 0 : 1;
    }
    const QString problem =
        firstOf({difference("the total", m_till.totals().total, total),
                 difference("the number of items", m_till.totals().items, items),
                 difference("the receipt's number", m_till.reference().number, m_receipt)});
    return problem.isEmpty() ? payAndClose() : problem;
}

QString RandomShop::payAndClose()
{
    const SaleTotals before = m_till.totals();
    const ReceiptRef ref = m_till.reference();
    const bool nothing = before.items == 0 && m_contribution == 0;
    for (int parts = m_random.bounded(3); parts > 0; --parts) {
        const QByteArray amount = QByteArray::number(m_random.bounded(1, 1000));
        m_till.keys((amount + ",5" + (m_random.bounded(2) ? "$" : "#")).constData());
    }
    m_till.tellError();
    const bool cancels = nothing || m_random.bounded(6) == 0;
    m_till.keys(cancels ? "C1" : m_random.bounded(2) ? "$" : "#");
    if (m_till.saleIsOpen())
        return u"the sale was not ended"_s;
    if (!cancels) {
        m_closed << ref;
        return checkReceipt(before);
    }
    ++m_day.cancelled;
    return m_till.receipt(ref) ? u"a cancelled receipt counts"_s : QString();
}

QString RandomShop::checkReceipt(const SaleTotals &before)
{
    const SaleTotals sums = m_till.receipt(m_closed.last()).value_or(SaleTotals());
    ++m_day.receipts;
    m_day.total += sums.total;
    m_day.tax += sums.tax;
    m_day.cash += sums.cash - sums.change;
    m_day.card += sums.card;
    m_day.contributions += m_contribution;
    return firstOf({difference("the receipt's total", sums.total, before.total),
                    difference("the receipt's tax", sums.tax, before.tax),
                    difference("what was paid", sums.cash + sums.card - sums.change, sums.total),
                    difference("the change beside cash", qMin<qint64>(0, sums.cash - sums.change), 0)});
}

QString RandomShop::endDay()
{
    DayTotals day = m_till.day();
    qint64 byRate = 0;
    qint64 taxByRate = 0;
    for (const auto &[rate, group] : day.taxGroups) {
        byRate += group.total;
        taxByRate += group.tax;
    }
    day.taxGroups.clear();
    if (!(day == m_day))
        return u"the day is not the sum of its receipts"_s;
    const qint32 z = m_till.z();
    m_till.printZ();
    m_grandTotal += m_day.total;
    qint64 stillThere = 0;
    for (const ReceiptRef &ref : std::as_const(m_closed))
        stillThere += m_till.receipt(ref).value_or(SaleTotals()).total;
    const QString problem =
        firstOf({difference("the totals by rate", byRate + m_day.contributions, m_day.total),
                 difference("the tax by rate", taxByRate, m_day.tax),
                 difference("the sum of all receipts", stillThere, m_grandTotal),
                 difference("the next Z number", m_till.z(), z + 1)});
    m_day = {};
    m_receipt = 0;
    return problem;
}
