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

/** A command that is nothing but its number. */
template <Refusal (*run)(const CommandCall &)>
DecodedCommand alone(QDataStream &)
{
    return {run};
}

constexpr std::array table{
    CommandRow{0, "state", false, alone<state>},
    CommandRow{1, "login", true, alone<login>},
    CommandRow{2, "logout", true, alone<logout>},
    CommandRow{3, "change-state", true, changeState},
    CommandRow{4, "item", true, addItem},
    CommandRow{5, "delete", true, deleteItem},
    CommandRow{6, "sale-state", true, saleState},
    CommandRow{7, "receipt", true, receiptData},
    CommandRow{8, "paper", true, alone<paper>},
    CommandRow{9, "medical", true, medicalContribution},
    CommandRow{10, "section", false, sectionData},
    CommandRow{11, "report", true, printReport},
    CommandRow{12, "z", true, alone<currentZ>},
    CommandRow{13, "print", true, printSlip},
    CommandRow{14, "end-invoice", true, endWithInvoice},
    CommandRow{15, "sale-limit", false, alone<saleLimit>},
    CommandRow{16, "items", true, addItems},
    CommandRow{17, "last-z", false, alone<lastZ>},
    CommandRow{18, "datetime", false, alone<dateTime>},
    CommandRow{19, "acquirers", false, listAcquirers},
    CommandRow{20, "sale-acquirers", false, listSaleAcquirers},
};

template <typename Rule>
const CommandRow *find(Rule rule)
{
    const auto row = std::ranges::find_if(table, rule);
    return row == table.end() ? nullptr : &*row;
}

} // namespace

std::span<const CommandRow> commandTable()
{
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
    for (const CommandRow &row : table)
        if (row.refusable || !refusableOnly)
            names << QLatin1StringView(row.name);
    return names;
}

} // namespace Simulator
