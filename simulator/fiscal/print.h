// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QStringList>

#include <functional>

namespace Simulator {

/** One piece of paper that the printer lets go of. */
struct Print
{
    const char *kind = ""; ///< receipt, invoice, cancelled, slip, x-report or z-report
    qint32 z = 0;
    qint32 number = 0;                  ///< of the receipt; 0 for other papers
    std::function<QStringList()> lines; ///< composes them; none is longer than 42 characters
};

} // namespace Simulator
