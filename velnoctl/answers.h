// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/commands.h"
#include "velnoext.h"

namespace VelnoCtl {

/** What a command answers with the library's result code; text and values are told on success alone. */
Answer answer(int code, const QString &text, const QJsonObject &values = {});

/** Totals as the simulated register means them, for people. */
QString totalsText(const VelnoEcrSaleTotals &totals);

/** `totals`, a list, and `number`, as the register told them. */
QJsonObject totalsValues(const VelnoEcrSaleTotals &totals);

/** A result that is totals alone. */
Answer totalsAnswer(int code, const VelnoEcrSaleTotals &totals);

} // namespace VelnoCtl
