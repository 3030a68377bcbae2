// SPDX-License-Identifier: Apache-2.0

#include "simulation/truth.h"

#include "simulation/content.h"

#include <algorithm>

using namespace Simulator;

namespace Simulation {

const SeenSale *Truth::look(const FiscalModel &model)
{
    const ReceiptRef now = model.saleReference();
    qsizetype closed = -1;
    if (isOpen()) {
        SeenSale &open = m_sales.last();
        if (now == open.ref && open.model == &model) {
            open.totals = model.saleTotals();
            return nullptr;
        }
        const auto totals = open.model->receipt(open.ref);
        open.end = totals ? SeenSale::End::Closed : SeenSale::End::Cancelled;
        open.totals = totals.value_or(open.totals);
        closed = totals ? m_sales.size() - 1 : -1;
    }
    if (now != ReceiptRef())
        m_sales << SeenSale{&model, now, {}, model.saleTotals(), SeenSale::End::Open};
    return closed < 0 ? nullptr : &m_sales.at(closed);
}

void Truth::noteLine(const QString &name)
{
    if (isOpen()) {
        m_sales.last().key = keyIn(name);
        m_sales.last().answers = m_answers.value(m_sales.last().key);
    }
}

void Truth::notePayment()
{
    if (isOpen())
        m_sales.last().mayBePaid = true;
}

void Truth::noteTold()
{
    if (!isOpen())
        return;
    SeenSale &open = m_sales.last();
    open.mayBePaid = open.totals.cash > 0 || open.totals.card > 0;
}

void Truth::noteLate()
{
    for (qsizetype i = m_sales.size() - 1; i >= 0; --i)
        if (m_sales.at(i).end == SeenSale::End::Closed) {
            m_sales[i].isUntold = true;
            return;
        }
}

void Truth::noteReceiptTold(const FiscalModel &model, const ReceiptRef &ref)
{
    for (SeenSale &sale : m_sales)
        if (sale.model == &model && sale.ref == ref)
            sale.isUntold = false;
}

void Truth::noteHand()
{
    if (isOpen())
        m_sales.last().isTouched = true;
}

void Truth::noteUnseen()
{
    if (isOpen())
        m_sales.last().isUnseen = true;
}

void Truth::giveBack(const QString &key)
{
    for (SeenSale &sale : m_sales)
        if (sale.key == key && sale.isTouched && sale.end == SeenSale::End::Closed)
            sale.isGivenBack = true;
}

void Truth::notePrint(const Print &print)
{
    if (qstrcmp(print.kind, "z-report") == 0)
        ++m_zReports;
    if (qstrcmp(print.kind, "slip") != 0)
        return;
    const QStringList lines = print.lines();
    for (const QString &line : lines)
        if (const QString text = line.trimmed(); text.startsWith(u'k')) {
            ++m_slips[keyIn(text)];
            return;
        }
}

bool Truth::isOpen() const
{
    return !m_sales.isEmpty() && m_sales.constLast().end == SeenSale::End::Open;
}

qsizetype Truth::timesClosed(const QString &key) const
{
    return std::ranges::count_if(m_sales, [&key](const SeenSale &sale) {
        return sale.key == key && sale.end == SeenSale::End::Closed && !sale.isGivenBack;
    });
}

const SeenSale *Truth::find(const FiscalModel &model, const ReceiptRef &ref) const
{
    const auto found = std::ranges::find_if(
        m_sales, [&](const SeenSale &sale) { return sale.model == &model && sale.ref == ref; });
    return found == m_sales.end() ? nullptr : &*found;
}

} // namespace Simulation
