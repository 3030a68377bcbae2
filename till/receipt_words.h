// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QStringList>

/** The names that receipts and slips have in JSON; where one stands in its list is its number, or its place
 * in the documentation. */
namespace Velno::Receipts {

const QStringList &unitWords();        ///< by VelnoItemType
const QStringList &invoiceTypeWords(); ///< by VelnoInvoiceType
const QStringList &tenderWords();      ///< by Tender

const QStringList &receiptFields();
const QStringList &itemFields();
const QStringList &medicalFields();
const QStringList &invoiceFields();
const QStringList &slipFields();
const QStringList &textLineFields();      ///< of a slip
const QStringList &justifiedLineFields(); ///< of a slip
const QStringList &feedLineFields();      ///< of a slip

} // namespace Velno::Receipts
