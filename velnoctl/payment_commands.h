// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/commands.h"

/** The commands that pay, end and cancel a sale, and look up what it came to. */
namespace VelnoCtl {

Answer pay(Session &session, const Arguments &arguments);
Answer endSale(Session &session, const Arguments &arguments);
Answer endInvoice(Session &session, const Arguments &arguments);
Answer cancel(Session &session, const Arguments &arguments);
Answer receiptData(Session &session, const Arguments &arguments);

} // namespace VelnoCtl
