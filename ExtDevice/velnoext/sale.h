// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/velnoext/velnoext.h"

#include <QByteArray>
#include <QVector>

/** What the functions of sales and payments share. The lock is the caller's. */
namespace Velno::Ext {

class ReplyReader;

/** Whether a section (department) of this number exists. */
bool isSection(int section);

/** Price times quantity / 1000, rounded half up; 0 instead of less, 2^64 - 1 instead of more. */
quint64 lineTotal(const VelnoSaleItem &item);

/** Reads the totals that follow in a reply, which are written on success alone. @return 0 or 5 */
int readTotals(ReplyReader &reader, VelnoEcrSaleTotals *totals);

/** The bytes of a fixed-size text before its first zero. */
template <size_t Size>
QByteArray textOf(const char (&text)[Size], size_t longest = Size)
{
    return QByteArray(text, qsizetype(qstrnlen(text, longest)));
}

} // namespace Velno::Ext
