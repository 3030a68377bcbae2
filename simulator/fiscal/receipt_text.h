// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/day_totals.h"
#include "simulator/fiscal/print.h"

/** What stands on the papers that the register prints, in Turkish, as a shop's customers and owners know it.
 */
namespace Simulator {

/** The shop's name and address and its tax office, in front of everything. */
QStringList shopHead();

/** @param serial  the register's, 12 characters */
Print receiptPrint(const Receipt &receipt, const QByteArray &serial);
Print cancelledPrint(const Receipt &receipt, const QByteArray &serial);

/** An X report, which leaves everything as it was. @param report  the sums so far; its grand total is that of
 * the Z reports so far */
Print xReportPrint(const ZReport &report, const QByteArray &serial);
Print zReportPrint(const ZReport &report, const QByteArray &serial);

} // namespace Simulator
