// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/receipt.h"

#include <QRandomGenerator>

namespace TestSupport {

/** Any good receipt, and any good slip. */
Velno::Receipts::Receipt randomReceipt(QRandomGenerator &random);
Velno::Receipts::Slip randomSlip(QRandomGenerator &random);

} // namespace TestSupport
