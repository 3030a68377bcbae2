#pragma once

#include "velnoctl/commands.h"
#include "velnoext.h"

namespace VelnoCtl {

/** A result of the library's; a failure keeps its words and values for itself. */
Answer answer(int code, const QString &text, const QJsonObject &values = {});

/** Totals as the simulated register means them, for people. */
QString totalsText(const VelnoEcrSaleTotals &totals);

/** `totals`, a list, and `number`, as the register told them. */
QJsonObject totalsValues(const VelnoEcrSaleTotals &totals);

/** A result that is totals alone. */
Answer totalsAnswer(int code, const VelnoEcrSaleTotals &totals);

} // namespace VelnoCtl
