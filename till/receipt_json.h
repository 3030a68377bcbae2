// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/receipt.h"

#include <QByteArray>
#include <QStringList>

/** Receipts and slips as JSON: docs/receipt-json.md has every field, receipt.schema.json and slip.schema.json
 * describe them for programs. */
namespace Velno::Receipts {

/** What was wanted: a value that may be used, or everything that is wrong with it. */
template <typename Value>
struct Judged
{
    Value value;
    QStringList faults; ///< "items[3].section: 9; accepted: 1 to 8", all of them; empty when it may be used
};

/** Reads UTF-8 JSON and judges all that can be judged without a register. No bytes end or confuse it. */
Judged<Receipt> readReceipt(const QByteArray &json);
Judged<Slip> readSlip(const QByteArray &json);

/** The same, written in one way only: every field that matters, in alphabetical order, amounts as "12.50",
 * without spaces. What was read from it is equal. */
QByteArray toJson(const Receipt &receipt);
QByteArray toJson(const Slip &slip);

/** "items[2].price: 12.50, before 13.00": the first place where two objects differ; empty when they are the
 * same. */
QString firstDifference(const QByteArray &now, const QByteArray &before);

} // namespace Velno::Receipts
