// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnoctl/commands.h"

/** The commands that hand whole receipts to the till, and look into its ledger. */
namespace VelnoCtl {

/** Sells the receipt of a JSON file under its key, once. */
Answer receipt(Session &session, const Arguments &arguments);

/** What is in the ledger, or one order with its history. */
Answer receipts(Session &session, const Arguments &arguments);

/** A person's answer to an order's question, which is acted upon at once. */
Answer answerReceipt(Session &session, const Arguments &arguments);

} // namespace VelnoCtl
