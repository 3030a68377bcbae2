// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/sale.h"

#include <optional>

namespace Simulator {

/** By what a receipt is known: the Z report it counts towards, and its number among that report's receipts.
 */
struct ReceiptRef
{
    qint32 z = 0;      ///< from 1 on
    qint32 number = 0; ///< from 1 on

    bool operator==(const ReceiptRef &) const = default;
};

/** What makes a receipt an invoice. */
struct Invoice
{
    enum Type { OnPaper, Electronic, Archived };
    enum IdKind { Person, Company };

    Type type = OnPaper;
    IdKind idKind = Person;
    QString reference;     ///< the number on the invoice form; needed on paper
    QString idNumber;      ///< 11 digits of a person, 10 of a company
    bool delivers = false; ///< it takes the place of the delivery note
};

struct Receipt
{
    ReceiptRef ref;
    Sale sale;
    qint64 opened = 0;        ///< seconds since 1970
    qint64 closed = 0;        ///< likewise
    bool withInvoice = false; ///< opened as a sale with invoice
    std::optional<Invoice> invoice;
};

} // namespace Simulator
