// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/receipt.h"
#include "velnoext.h"

/** Receipts as the structures of velnoext.h. */
namespace Velno::Receipts {

/** What can be entered at once of the items from this one on: a remark alone, or up to ten lines. */
VelnoSaleItemList saleItems(const Receipt &receipt, int first);

/** Of a receipt that has one. */
VelnoInvoice invoiceOf(const Receipt &receipt);

} // namespace Velno::Receipts
