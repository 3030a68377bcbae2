// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>
#include <QStringList>

namespace VelnoCtl {

/**
 * The names that a misspelt word may stand for, as the end of a message: `; did you mean "state"?` Those that
 * begin so; otherwise those with the fewest letters wrong, left out, added or swapped. Case does not matter.
 *
 * @return nothing when no name is near, or more than three are
 */
QString didYouMean(const QString &word, const QStringList &names);

} // namespace VelnoCtl
