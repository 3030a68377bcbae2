// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/answers.h"

#include "velnoctl/values.h"

#include <QJsonArray>

#include <array>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr std::array totalNames{"total", "tax", "cash", "card", "change"};

} // namespace

Answer answer(int code, const QString &text, const QJsonObject &values)
{
    if (code == 0)
        return {0, text, values};
    return {code, {}, {}, velnoext_error_detail(), velnoext_cause()};
}

QString totalsText(const VelnoEcrSaleTotals &totals)
{
    QStringList parts;
    for (size_t i = 0; i < totalNames.size(); ++i)
        parts << u"%1 %2"_s.arg(QLatin1StringView(totalNames[i]), lira(totals.values[i]));
    return parts.join(", "_L1) + u", items %1"_s.arg(totals.number);
}

QJsonObject totalsValues(const VelnoEcrSaleTotals &totals)
{
    QJsonArray values;
    for (size_t i = 0; i < std::size(totals.values); ++i)
        values << qint64(totals.values[i]);
    return {{u"totals"_s, values}, {u"number"_s, int(totals.number)}};
}

Answer totalsAnswer(int code, const VelnoEcrSaleTotals &totals)
{
    return answer(code, totalsText(totals), totalsValues(totals));
}

} // namespace VelnoCtl
