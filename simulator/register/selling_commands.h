// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/register/command_call.h"

/** The commands that sell, print and report, as rows of the command table have them. */
namespace Simulator {

/** The state and what stands beside it, as all answers about a sale begin. */
void writeState(const CommandCall &call);

/** The state that an answer tells. */
State toldState(const CommandCall &call);

/** FaultError when an error that is told is none of the register's, and none that stands in every sale. */
Refusal madeUpError(const CommandCall &call);

/** What a command asks to sell, in order; nothing when it asks for something else. */
QList<ItemRequest> itemsToSell(const Velno::GMP::Items &items);

Refusal changeState(const CommandCall &call);
Refusal sellItems(const CommandCall &call);
Refusal deleteItem(const CommandCall &call);
Refusal medicalContribution(const CommandCall &call);
Refusal saleState(const CommandCall &call);
Refusal receiptData(const CommandCall &call);
Refusal sectionData(const CommandCall &call);
Refusal printReport(const CommandCall &call);
Refusal printSlip(const CommandCall &call);
Refusal endWithInvoice(const CommandCall &call);
Refusal listAcquirers(const CommandCall &call);
Refusal listSaleAcquirers(const CommandCall &call);

} // namespace Simulator
