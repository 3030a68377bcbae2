// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/command_table.h"

#include "simulator/register/selling_commands.h"

#include <algorithm>
#include <array>

namespace Simulator {

namespace {

/** Answers by yes, or by no for this reason. */
Refusal answerFlag(const CommandCall &call, Refusal refusal)
{
    if (call.wrong.refuse)
        refusal = FaultRefuses;
    call.reply << (refusal == NotRefused);
    return refusal;
}

/**
 * Tells what stands, not what the last keys came to: applications ask before they have keys pressed, and an
 * error of others would keep the keys away that cancel the sale.
 */
Refusal state(const CommandCall &call)
{
    writeState(call);
    if (toldState(call) != State::SaleOpen)
        return NotRefused;
    call.reply << call.wrong.error.value_or(call.model.standingError());
    return madeUpError(call);
}

Refusal login(const CommandCall &call)
{
    const bool refused = call.wrong.refuse || !call.model.login();
    return answerFlag(call, refused ? StateForbids : NotRefused);
}

Refusal logout(const CommandCall &call)
{
    const bool open = call.model.saleReference() != ReceiptRef();
    const bool refused = call.wrong.refuse || !call.model.logout();
    return answerFlag(call, !refused ? NotRefused : open ? SaleStillOpen : StateForbids);
}

Refusal paper(const CommandCall &call)
{
    return answerFlag(call, call.model.hasPaper() ? NotRefused : PaperOut);
}

Refusal currentZ(const CommandCall &call)
{
    const Refusal refusal = answerFlag(call, call.model.tellsZ() ? NotRefused : StateForbids);
    call.reply << call.model.zNumber();
    return refusal;
}

Refusal saleLimit(const CommandCall &call)
{
    call.reply << qint64(call.model.saleLimit());
    return NotRefused;
}

Refusal lastZ(const CommandCall &call)
{
    call.reply << call.model.lastZ();
    return NotRefused;
}

Refusal dateTime(const CommandCall &call)
{
    call.reply << call.model.now();
    return NotRefused;
}

CommandRow row(int code, bool refusable, Execution run)
{
    return {*Velno::GMP::commandForm(code), refusable, run};
}

template <typename Rule>
const CommandRow *find(Rule rule)
{
    const auto row = std::ranges::find_if(commandTable(), rule);
    return row == commandTable().end() ? nullptr : &*row;
}

} // namespace

std::span<const CommandRow> commandTable()
{
    static const std::array table{
        row(0, false, state),
        row(1, true, login),
        row(2, true, logout),
        row(3, true, changeState),
        row(4, true, sellItems),
        row(5, true, deleteItem),
        row(6, true, saleState),
        row(7, true, receiptData),
        row(8, true, paper),
        row(9, true, medicalContribution),
        row(10, false, sectionData),
        row(11, true, printReport),
        row(12, true, currentZ),
        row(13, true, printSlip),
        row(14, true, endWithInvoice),
        row(15, false, saleLimit),
        row(16, true, sellItems),
        row(17, false, lastZ),
        row(18, false, dateTime),
        row(19, false, listAcquirers),
        row(20, false, listSaleAcquirers),
    };
    return table;
}

const CommandRow *commandByCode(int code)
{
    return find([code](const CommandRow &row) { return row.code == code; });
}

const CommandRow *commandByName(const QString &name)
{
    return find([&name](const CommandRow &row) { return name == QLatin1StringView(row.name); });
}

QStringList commandNames(bool refusableOnly)
{
    QStringList names;
    for (const CommandRow &row : commandTable())
        if (row.refusable || !refusableOnly)
            names << QLatin1StringView(row.name);
    return names;
}

} // namespace Simulator
