// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/commands.h"
#include "velnoext.h"

#include <type_traits>

/** The commands that start a sale, fill it and tell how it stands. */
namespace VelnoCtl {

Answer startSale(Session &session, const Arguments &arguments);
Answer startInvoiceSale(Session &session, const Arguments &arguments);

/** Remembers the receipt that it tells. */
Answer saleState(Session &session, const Arguments &arguments);

/** As many as addItems() may get. */
inline constexpr int mostItems = std::extent_v<decltype(VelnoSaleItemList::items)>;

Answer addItem(Session &session, const Arguments &arguments);
Answer addItems(Session &session, const Arguments &arguments);
Answer medical(Session &session, const Arguments &arguments);
Answer deleteItem(Session &session, const Arguments &arguments);

} // namespace VelnoCtl
