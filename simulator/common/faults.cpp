// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/faults.h"

#include "simulator/common/numbers.h"

using namespace Qt::StringLiterals;

namespace Simulator {

QString FaultRow::usage() const
{
    const QString text = QLatin1StringView(name);
    return value ? text + u'=' + QLatin1StringView(value) : text;
}

QString FaultRow::valueRule() const
{
    return Spoken::tr("%1: %2 to %3").arg(QLatin1StringView(value)).arg(least).arg(most);
}

std::optional<FaultValue> FaultRow::readValue(const QString &written) const
{
    const auto number = numberBetween(written, least, most);
    return number ? std::optional(FaultValue{.number = int(*number)}) : std::nullopt;
}

TypedFault::TypedFault(const QString &text)
{
    const qsizetype equals = text.indexOf(u'=');
    name = text.left(equals);
    if (equals >= 0)
        value = text.sliced(equals + 1);
}

QString TypedFault::noSuchFault(const QStringList &usages) const
{
    return Spoken::tr("\"%1\" is no fault; accepted are %2").arg(name, usages.join(", "_L1));
}

QString TypedFault::wrongValue(const FaultRow &row, const QString &rule) const
{
    if (!row.value)
        return Spoken::tr("%1 takes no value").arg(name);
    if (!value)
        return Spoken::tr("%1 needs a value: %2").arg(name, rule);
    return Spoken::tr("\"%1\" is no value of %2; accepted is %3").arg(*value, name, rule);
}

} // namespace Simulator
