#include "simulator/model_settings.h"

#include "simulator/numbers.h"

#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr qint64 mostInt = std::numeric_limits<qint32>::max();
constexpr qint64 mostLong = std::numeric_limits<qint64>::max();
constexpr qint64 lastState = qint64(State::OutOfService);

constexpr std::array table{
    SettingRow{"state", "N", 0, lastState, "The state it answers; 1 is idle.",
               [](FiscalModel &model, qint64 value) { model.setState(State(value)); }},
    SettingRow{"z", "N", 0, mostInt, "The number of the current Z report.",
               [](FiscalModel &model, qint64 value) { model.setZNumber(qint32(value)); }},
    SettingRow{"last-z", "SECONDS", 0, mostInt, "When the last Z report was made, since 1970.",
               [](FiscalModel &model, qint64 value) { model.setLastZ(qint32(value)); }},
    SettingRow{"clock", "SECONDS", 0, mostInt, "Its clock stands at this time, since 1970.",
               [](FiscalModel &model, qint64 value) { model.stopClockAt(qint32(value)); }},
    SettingRow{"sale-limit", "KURUS", 0, mostLong, "The highest amount of one sale.",
               [](FiscalModel &model, qint64 value) { model.setSaleLimit(value); }},
};

QString obeyPaper(const QString &value, FiscalModel &model)
{
    if (value != u"on" && value != u"off")
        return u"paper \"%1\": accepted is on or off"_s.arg(value);
    model.setPaper(value == u"on");
    return {};
}

} // namespace

std::span<const SettingRow> settingTable()
{
    return table;
}

QString settingRule(const SettingRow &row)
{
    return u"%1: %2 to %3"_s.arg(QLatin1StringView(row.value)).arg(row.least).arg(row.most);
}

bool changeSetting(const SettingRow &row, const QString &value, FiscalModel &model)
{
    const auto number = numberBetween(value, row.least, row.most);
    if (number)
        row.apply(model, *number);
    return number.has_value();
}

QStringList settingLines()
{
    QStringList lines{u"paper on"_s, u"paper off"_s};
    for (const SettingRow &row : table)
        lines << QLatin1StringView(row.name) + u' ' + QLatin1StringView(row.value);
    return lines;
}

SettingOutcome obeySettingLine(const QString &line, FiscalModel &model)
{
    const QString name = line.section(u' ', 0, 0);
    const QString value = line.section(u' ', 1).trimmed();
    if (name == u"paper")
        return {true, obeyPaper(value, model)};
    for (const SettingRow &row : table) {
        if (name != QLatin1StringView(row.name))
            continue;
        if (changeSetting(row, value, model))
            return {true, {}};
        return {true, u"%1 \"%2\": accepted is %3"_s.arg(name, value, settingRule(row))};
    }
    return {};
}

} // namespace Simulator
