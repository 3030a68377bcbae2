#include "simulator/command_table.h"

#include <QVector>

#include <algorithm>
#include <array>

namespace Simulator {

namespace {

bool answerFlag(const CommandCall &call, bool (*ask)(FiscalModel &))
{
    const bool accepted = !call.refuse && ask(call.model);
    call.reply << accepted;
    return accepted;
}

bool state(const CommandCall &call)
{
    const auto steps = call.model.saleSteps();
    call.reply << qint32(call.model.state()) << QVector<qint32>(steps.begin(), steps.end());
    if (call.model.state() == State::SaleOpen)
        call.reply << call.model.error();
    return true;
}

bool login(const CommandCall &call)
{
    return answerFlag(call, [](FiscalModel &model) { return model.login(); });
}

bool logout(const CommandCall &call)
{
    return answerFlag(call, [](FiscalModel &model) { return model.logout(); });
}

bool paper(const CommandCall &call)
{
    return answerFlag(call, [](FiscalModel &model) { return model.hasPaper(); });
}

bool currentZ(const CommandCall &call)
{
    const bool told = answerFlag(call, [](FiscalModel &model) { return model.tellsZ(); });
    call.reply << call.model.zNumber();
    return told;
}

bool saleLimit(const CommandCall &call)
{
    call.reply << qint64(call.model.saleLimit());
    return true;
}

bool lastZ(const CommandCall &call)
{
    call.reply << call.model.lastZ();
    return true;
}

bool dateTime(const CommandCall &call)
{
    call.reply << call.model.now();
    return true;
}

constexpr std::array table{
    CommandRow{0, "state", false, state},   CommandRow{1, "login", true, login},
    CommandRow{2, "logout", true, logout},  CommandRow{8, "paper", true, paper},
    CommandRow{12, "z", true, currentZ},    CommandRow{15, "sale-limit", false, saleLimit},
    CommandRow{17, "last-z", false, lastZ}, CommandRow{18, "datetime", false, dateTime},
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
