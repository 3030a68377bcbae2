// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QStringList>

#include <optional>

namespace Velno::Receipts {

/** Those that a slip may have: with them Turkish texts can be written, and every register is sure to have one
 * of them. */
const QStringList &slipEncodings();

/** A text in one of these encodings, for the library's printer functions; nothing when it cannot be written.
 */
std::optional<QByteArray> slipBytes(const QString &text, const QString &encoding);

} // namespace Velno::Receipts
