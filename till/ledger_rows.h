// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/database.h"
#include "till/order.h"

#include <optional>

/** Orders, events and attempts as rows of the ledger's tables: their columns have one place. */
namespace Velno::Receipts {

// Orders: number, what stays as it was accepted, and behind that what becomes of it. ---------------------

QString orderColumns(); ///< those that readOrder() reads, as a SELECT names them
std::optional<Order> readOrder(const Statement &row); ///< nothing: something in it is out of range

/** Takes the values of wholeOrder(). */
QString insertOrder();
QVariantList wholeOrder(const Order &order);

/** Takes the values of changingOrder() and the order's number. */
QString updateOrder();
QVariantList changingOrder(const Order &order);

// Events -------------------------------------------------------------------------------------------------

QString eventColumns();
std::optional<Event> readEvent(const Statement &row);

/** Takes the order's number twice, and the values of wholeEvent(). */
QString insertEvent();
QVariantList wholeEvent(const Event &event);

// Attempts -----------------------------------------------------------------------------------------------

QString attemptColumns();
std::optional<Attempt> readAttempt(const Statement &row);

/** Takes the values of wholeAttempt(). Changes no row when the receipt is another order's. */
QString insertAttempt();
QVariantList wholeAttempt(const Attempt &attempt);

} // namespace Velno::Receipts
