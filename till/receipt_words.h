#pragma once

#include <QStringList>

/** The names that receipts and slips have in JSON; where one stands in its list is its number, or its place
 * in the documentation. */
namespace Velno::Receipts {

QStringList unitWords();        ///< by VelnoItemType
QStringList invoiceTypeWords(); ///< by VelnoInvoiceType
QStringList tenderWords();      ///< by Tender

QStringList receiptFields();
QStringList itemFields();
QStringList medicalFields();
QStringList invoiceFields();
QStringList slipFields();
QStringList textLineFields();      ///< of a slip
QStringList justifiedLineFields(); ///< of a slip
QStringList feedLineFields();      ///< of a slip

} // namespace Velno::Receipts
