// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/order.h"

#include <QJsonObject>
#include <QList>

namespace Velno::Receipts {

/** An order with its content and history, for velnotill_json() and velnoctl; docs/receipts.md has the fields.
 */
QJsonObject orderAsJson(const Order &order, const QList<Event> &history);

} // namespace Velno::Receipts
