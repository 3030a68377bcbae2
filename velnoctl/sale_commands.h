#pragma once

#include "velnoctl/commands.h"

/** The commands that start a sale, fill it and tell how it stands. */
namespace VelnoCtl {

Answer startSale(Session &session, const QStringList &arguments);
Answer startInvoiceSale(Session &session, const QStringList &arguments);

/** Remembers the receipt that it tells. */
Answer saleState(Session &session, const QStringList &arguments);

Answer addItem(Session &session, const QStringList &arguments);
Answer addItems(Session &session, const QStringList &arguments);
Answer medical(Session &session, const QStringList &arguments);
Answer deleteItem(Session &session, const QStringList &arguments);

} // namespace VelnoCtl
