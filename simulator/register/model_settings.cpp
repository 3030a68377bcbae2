// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/model_settings.h"

#include "simulator/common/numbers.h"
#include "translations/spoken.h"

#include <array>
#include <limits>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr qint64 mostInt = std::numeric_limits<qint32>::max();
constexpr qint64 mostLong = std::numeric_limits<qint64>::max();
constexpr qint64 lastState = qint64(State::OutOfService);

constexpr std::array table{
    SettingRow{"z", "N", 1, mostInt, Spoken::later("The number of the current Z report."), true,
               [](FiscalModel &model, qint64 value) { return model.setZNumber(qint32(value)); }},
    SettingRow{"last-z", "SECONDS", 0, mostInt, Spoken::later("When the last Z report was made, since 1970."),
               true, [](FiscalModel &model, qint64 value) { return model.setLastZ(qint32(value)); }},
    SettingRow{"clock", "SECONDS", 0, mostInt, Spoken::later("Its clock stands at this time, since 1970."),
               false,
               [](FiscalModel &model, qint64 value) {
                   model.stopClockAt(qint32(value));
                   return true;
               }},
    SettingRow{"sale-limit", "KURUS", 0, mostLong,
               Spoken::later("The highest amount of one sale; 0 for any."), false,
               [](FiscalModel &model, qint64 value) {
                   model.setSaleLimit(value);
                   return true;
               }},
    // Last: with state 5 a sale is opened, under the settings above.
    SettingRow{"state", "N", 0, lastState, Spoken::later("The state it is in; 1 is idle."), false,
               [](FiscalModel &model, qint64 value) { return model.setState(State(value)); }},
};

QString notNow(const QString &name, qint64 value)
{
    return Spoken::
        tr("%1 %2 cannot be now: without paper no sale is opened, while one is open or for a report that has"
           " been made the Z number stays, and the journal must be writable")
            .arg(name)
            .arg(value);
}

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
    return Spoken::tr("%1: %2 to %3").arg(QLatin1StringView(row.value)).arg(row.least).arg(row.most);
}

std::optional<ModelSetting> readSetting(const SettingRow &row, const QString &value)
{
    const auto number = numberBetween(value, row.least, row.most);
    return number ? std::optional(ModelSetting{&row, *number}) : std::nullopt;
}

QString applySettings(const QList<ModelSetting> &settings, FiscalModel &model)
{
    const bool isNew = model.isNew();
    for (const auto &[row, value] : settings)
        if ((isNew || !row->onRecord) && !row->apply(model, value))
            return notNow(QLatin1StringView(row->name), value);
    return {};
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
        const auto setting = readSetting(row, value);
        if (!setting)
            return {true, u"%1 \"%2\": accepted is %3"_s.arg(name, value, settingRule(row))};
        return {true, row.apply(model, setting->value) ? QString() : notNow(name, setting->value)};
    }
    return {};
}

} // namespace Simulator
