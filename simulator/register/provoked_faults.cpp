// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/provoked_faults.h"

#include "simulator/common/event_writer.h"

#include <algorithm>
#include <array>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr char mark = '!';

constexpr std::array table{
    ProvocationRow{1'111'101, "refuse=item"},
    ProvocationRow{1'111'102, "refuse=items"},
    ProvocationRow{1'111'103, "refuse=delete"},
    ProvocationRow{1'111'104, "refuse=medical"},
    ProvocationRow{1'111'105, "refuse=change-state"},
    ProvocationRow{1'111'106, "refuse=end-invoice"},
    ProvocationRow{1'111'107, "refuse=sale-state"},
    ProvocationRow{1'111'108, "refuse=receipt"},
    ProvocationRow{1'111'109, "refuse=print"},
    ProvocationRow{1'111'110, "refuse=report"},
    ProvocationRow{1'111'111, "error=64"},
    ProvocationRow{1'111'112, "state=1"},
    ProvocationRow{1'111'113, "sale-limit"},
    ProvocationRow{1'111'114, "paper-out-after=1"},
    ProvocationRow{1'111'115, "delay=3000"},
    ProvocationRow{1'111'116, "short-reply"},
    ProvocationRow{1'111'117, "bad-mac"},
    ProvocationRow{1'111'118, "no-mac"},
    ProvocationRow{1'111'119, "close=item"},
    ProvocationRow{1'111'120, "lost-answer=item"},
    ProvocationRow{1'111'121, "lost-answer=items"},
    ProvocationRow{1'111'122, "lost-answer=delete"},
    ProvocationRow{1'111'123, "lost-answer=medical"},
    ProvocationRow{1'111'124, "lost-answer=change-state"},
    ProvocationRow{1'111'125, "lost-answer=end-invoice"},
    ProvocationRow{1'111'126, "power-cut=item"},
    ProvocationRow{1'111'127, "power-cut=change-state"},
    ProvocationRow{1'111'128, "power-cut=end-invoice"},
};

/** Whether a command that has been read already can still be disturbed by it. */
bool isProvocable(const RegisterFaultRow &row)
{
    return row.disturbs != Disturbs::KeyExchange && row.fault != Fault::ForgetPairing;
}

QString provocableFaults()
{
    QStringList usages;
    for (const RegisterFaultRow &row : faultTable())
        if (isProvocable(row))
            usages << u'!' + row.usage();
    return usages.join(", "_L1);
}

bool isMarked(const ItemRequest &item)
{
    return item.name.startsWith(mark);
}

/** What stands behind the mark, in visible characters: no fault has others. */
QString faultNamedBy(const ItemRequest &item)
{
    return printable(item.name.sliced(1));
}

/** Why an item cannot provoke this fault, and what is accepted; empty when it can. */
QString problemWith(const QString &fault)
{
    const QString name = TypedFault(fault).name;
    const RegisterFaultRow *const row = faultByName(faultTable(), name);
    if (!row || !isProvocable(*row))
        return u"\"%1\" is no fault that an item provokes; accepted are %2"_s.arg(name, provocableFaults());
    return Faults().switchOn(fault);
}

} // namespace

std::span<const ProvocationRow> provocationTable()
{
    return table;
}

QStringList provokedBy(const QList<ItemRequest> &items)
{
    QStringList faults;
    for (const ItemRequest &item : items) {
        if (isMarked(item) && problemWith(faultNamedBy(item)).isEmpty())
            faults << faultNamedBy(item);
        const auto row = std::ranges::find(table, item.price, &ProvocationRow::price);
        if (row != table.end())
            faults << QString::fromLatin1(row->fault);
    }
    return faults;
}

QStringList misnamedAmong(const QList<ItemRequest> &items)
{
    QStringList messages;
    for (const ItemRequest &item : items) {
        const QString problem = isMarked(item) ? problemWith(faultNamedBy(item)) : QString();
        if (!problem.isEmpty())
            messages << u"the item %1 provokes nothing: %2"_s.arg(printable(item.name), problem);
    }
    return messages;
}

void ProvokedFaults::add(const QStringList &faults)
{
    for (const QString &fault : faults) {
        m_faults.removeOne(fault);
        m_faults << fault;
    }
}

Faults ProvokedFaults::take(const CommandRow &command, Faults standing)
{
    QStringList waiting;
    for (const QString &text : std::as_const(m_faults)) {
        const QString fault = text.section(u'*', 0, 0);
        const int times = text.section(u'*', 1).toInt();
        const CommandRow *const named = commandByName(fault.section(u'=', 1));
        const bool goesOff = !named || named == &command;
        if (goesOff)
            standing.switchOn(fault);
        if (!goesOff)
            waiting << text;
        else if (times > 1)
            waiting << fault + u'*' + QString::number(times - 1);
    }
    m_faults = waiting;
    return standing;
}

} // namespace Simulator
