#pragma once

#include "simulator/fiscal/sale.h"

#include <QDataStream>

/** The items of commands and answers that more than one command has: readers, which check first, and writers.
 */
namespace Simulator {

/** Keys to be pressed: a count and as many numbers. Nothing but a status when there are not as many. */
QList<qint32> readKeys(QDataStream &stream);

ItemRequest readItem(QDataStream &stream);

/** A count of 1 to 10 in 16 bits, and as many items. */
QList<ItemRequest> readItems(QDataStream &stream);

/** Five times 64 bits and once 32. */
QDataStream &operator<<(QDataStream &stream, const SaleTotals &totals);

} // namespace Simulator
