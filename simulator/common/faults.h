// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "translations/spoken.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <algorithm>
#include <optional>
#include <span>

/**
 * What the simulated programs can be told to do wrong. Each has a table of its own: it parses the option and
 * the line on standard input, and makes the help and the list of what is accepted.
 */
namespace Simulator {

/** The value of a fault. */
struct FaultValue
{
    int number = 0;
    QString text = {}; ///< the fault as it was typed
};

/**
 * A fault as an operator sees it, without a value or with a number. The rows of a program's table add
 * `fault`, of an enum of the program's own; where its faults take other values they have a Value, valueRule()
 * and readValue() of their own.
 */
struct FaultRow
{
    using Value = FaultValue;

    const char *name;
    const char *value; ///< how the value is written in the help; null for a fault without one
    int least;
    int most;
    const char *help; ///< one line, given to Spoken::tr()

    /** NAME or NAME=VALUE, as it is typed. */
    QString usage() const;

    /** What is accepted as the value. */
    QString valueRule() const;

    /** None when it is not accepted. */
    std::optional<FaultValue> readValue(const QString &written) const;
};

/** NAME or NAME=VALUE, taken apart. */
struct TypedFault
{
    explicit TypedFault(const QString &text);

    QString name;
    std::optional<QString> value;

    /** What was wrong and what is accepted, for a fault that is not accepted. @param usages  of every fault
     */
    QString noSuchFault(const QStringList &usages) const;
    QString wrongValue(const FaultRow &row, const QString &rule) const;
};

/** Null for a name that no fault has. */
template <typename Row>
const Row *faultByName(std::span<const Row> table, const QString &name)
{
    const auto row =
        std::ranges::find_if(table, [&](const Row &r) { return name == QLatin1StringView(r.name); });
    return row == table.end() ? nullptr : &*row;
}

template <typename Row>
QStringList faultUsages(std::span<const Row> table)
{
    QStringList usages;
    for (const Row &row : table)
        usages << row.usage();
    return usages;
}

/** One line for each fault, aligned, for --help. */
template <typename Row>
QString faultHelp(std::span<const Row> table)
{
    using namespace Qt::StringLiterals;
    QString help;
    for (const Row &row : table)
        help += u"  "_s + row.usage().leftJustified(24) + Spoken::tr(row.help) + u'\n';
    return help;
}

/** The faults of one program that are switched on, each with its value. */
template <typename Row>
class FaultSwitches
{
public:
    using Fault = decltype(Row::fault);
    using Value = typename Row::Value;

    explicit FaultSwitches(std::span<const Row> table)
        : m_table(table)
    {
    }

    /**
     * Obeys an operator's line, "fault NAME[=VALUE]" or "fault none".
     *
     * @return an empty text, or what was wrong and what is accepted; nothing changes then
     */
    QString obey(const QString &line);

    /**
     * Switches on what `text`, NAME[=VALUE], names; a fault that is on already takes the new value.
     *
     * @return an empty text, or what was wrong and what is accepted; nothing changes then
     */
    QString switchOn(const QString &text);

    bool has(Fault fault) const { return m_active.contains(fault); }

    /** The fault's number; 0 when it is off. */
    int number(Fault fault) const { return m_active.value(fault).number; }

    /** As they would be typed, in the order of the table. */
    QStringList names() const
    {
        QStringList names;
        for (const Row &row : m_table)
            if (has(row.fault))
                names << m_active.value(row.fault).text;
        return names;
    }

protected:
    std::span<const Row> m_table;
    QHash<Fault, Value> m_active;
};

template <typename Row>
QString FaultSwitches<Row>::obey(const QString &line)
{
    using namespace Qt::StringLiterals;
    if (!line.startsWith(u"fault "))
        return u"\"%1\" is no command; accepted are fault NAME[=VALUE], fault none, quit"_s.arg(line);
    const QString text = line.sliced(6).trimmed();
    if (text != u"none")
        return switchOn(text);
    m_active.clear();
    return {};
}

template <typename Row>
QString FaultSwitches<Row>::switchOn(const QString &text)
{
    const TypedFault typed(text);
    const Row *const row = faultByName(m_table, typed.name);
    if (!row)
        return typed.noSuchFault(faultUsages(m_table));
    const bool valueExpected = row->value != nullptr;
    std::optional<Value> value;
    if (typed.value.has_value() == valueExpected)
        value = valueExpected ? row->readValue(*typed.value) : Value();
    if (!value)
        return typed.wrongValue(*row, row->valueRule());
    value->text = text;
    m_active.insert(row->fault, *value);
    return {};
}

} // namespace Simulator
