// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/words.h"

/** What a cashier is told, in words. */
namespace Velno::Receipts {

/** The question of an order that needs a person: what to look at, then a line for each answer; empty for
 * Question::None. */
QString questionText(const Order &order, Language language);

/** How an order stands, what is to be done, and its question, if it has one. Lines without a line feed behind
 * the last. */
QString message(const Order &order, Language language);

} // namespace Velno::Receipts
