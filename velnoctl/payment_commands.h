#pragma once

#include "velnoctl/commands.h"

/** The commands that pay, end and cancel a sale, and look up what it came to. */
namespace VelnoCtl {

Answer pay(Session &session, const QStringList &arguments);
Answer endSale(Session &session, const QStringList &arguments);
Answer endInvoice(Session &session, const QStringList &arguments);
Answer cancel(Session &session, const QStringList &arguments);
Answer receipt(Session &session, const QStringList &arguments);

} // namespace VelnoCtl
