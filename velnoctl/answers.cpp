// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/answers.h"

#include "translations/spoken.h"
#include "velnoctl/values.h"

#include <QJsonArray>

#include <array>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

constexpr std::array totalNames{Spoken::later("total"), Spoken::later("tax"), Spoken::later("cash"),
                                Spoken::later("card"), Spoken::later("change")};

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
        parts << u"%1 %2"_s.arg(Spoken::tr(totalNames[i]), lira(totals.values[i]));
    return parts.join(", "_L1) + Spoken::tr(", items %1").arg(totals.number);
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
