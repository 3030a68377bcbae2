// SPDX-License-Identifier: Apache-2.0

#include "simulator/register/pace.h"

#include "translations/spoken.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace Simulator {

namespace {

constexpr double slowest = 0.1;
constexpr double fastest = 1000;

} // namespace

std::optional<Pace> Pace::from(const QString &text)
{
    static const QRegularExpression rule(u"\\A[0-9]{1,4}(\\.[0-9]{1,3})?\\z"_s);
    Pace pace;
    pace.m_speed = text == u"real" ? 1 : text.toDouble();
    const bool isKnown = text == u"real" || rule.match(text).hasMatch();
    return isKnown && pace.m_speed >= slowest && pace.m_speed <= fastest ? std::optional(pace) : std::nullopt;
}

QString Pace::rule()
{
    return Spoken::tr("real, or how many times as fast: %1 to %2").arg(slowest).arg(fastest);
}

Pace::Duration Pace::forCommand(const Work &work) const
{
    Duration taken = command + work.lines * line + work.prints * print;
    if (work.cash)
        taken += cash;
    if (work.card)
        taken += card;
    if (work.report)
        taken += report;
    return scaled(taken);
}

Pace::Duration Pace::scaled(Duration real) const
{
    return m_speed > 0 ? Duration(qRound64(double(real.count()) / m_speed)) : Duration(0);
}

} // namespace Simulator
