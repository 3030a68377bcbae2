#pragma once

#include "simulator/register/command_table.h"

/** The commands that sell, print and report, as rows of the command table have them. */
namespace Simulator {

/** The state and what stands beside it, as all answers about a sale begin. */
void writeState(const CommandCall &call);

/** The state that an answer tells. */
State toldState(const CommandCall &call);

/** FaultError when an error that is told is none of the register's, and none that stands in every sale. */
Refusal madeUpError(const CommandCall &call);

DecodedCommand changeState(QDataStream &items);
DecodedCommand addItem(QDataStream &items);
DecodedCommand addItems(QDataStream &items);
DecodedCommand deleteItem(QDataStream &items);
DecodedCommand medicalContribution(QDataStream &items);
DecodedCommand saleState(QDataStream &items);
DecodedCommand receiptData(QDataStream &items);
DecodedCommand sectionData(QDataStream &items);
DecodedCommand printReport(QDataStream &items);
DecodedCommand printSlip(QDataStream &items);
DecodedCommand endWithInvoice(QDataStream &items);
DecodedCommand listAcquirers(QDataStream &items);
DecodedCommand listSaleAcquirers(QDataStream &items);

} // namespace Simulator
