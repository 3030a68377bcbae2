// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/print.h"

#include <QList>

namespace Simulator {

constexpr int longestSlip = 1000;

/**
 * The text of a slip from the lines that an application sent. The first byte of a line is an attribute, the
 * rest is text in the encoding that was named last (UTF-8 before that): bit 0 sets it in the middle, bit 1
 * makes it bold, which text on a screen does not show; 8 in the upper bits makes it twice as wide, 16 and
 * more three times; 20 sets what stands before "__@£#$__" at the left edge and what stands behind at the
 * right. A line of "@" and the name of an encoding names one. A line feed in a text ends a line.
 *
 * @param withHead  the shop's name and address in front
 * @return nothing when it would be longer than longestSlip lines
 */
QStringList slipText(const QList<QByteArray> &lines, bool withHead);

} // namespace Simulator
