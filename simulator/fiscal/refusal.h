// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/register_error.h"

#include <span>

namespace Simulator {

/** Why the register does not do something, finer than the bits that its answers have for it. */
enum Refusal {
    NotRefused = 0,

    // keys
    MeaninglessKey,
    OtherDisplay,
    InvoiceNeeded,
    ErrorDisplayed,

    // the sale and its items
    NoSale,
    ItemsStay,
    BadPrice,
    BadSection,
    BadPercentage,
    BadDiscount,
    BadUnit,
    OverSaleLimit,
    OverLargestAmount,
    ReceiptFull,
    NoItem,
    BadContribution,
    BadPatient,

    // paying and closing
    NothingSold,
    BadPayment,
    NothingLeft,
    CardOverRest,
    TooManyPayments,
    NoInvoiceSale,
    BadInvoiceType,
    BadInvoiceMode,
    BadReference,
    BadIdNumber,

    // printing and the books
    PaperOut,
    SaleStillOpen,
    SlipTooLong,
    ZNumbersUsedUp,
    JournalUnwritable,
    ReceiptStillOpen,
    ReceiptNotClosed,

    // whatever is asked
    StateForbids,
    FaultRefuses,
    FaultError,
    FaultSaleLimit,
};

struct RefusalRow
{
    Refusal refusal;
    const char *name;    ///< as events tell it; it stays what it is
    RegisterError error; ///< as answers tell it that carry a register error
    const char *text;    ///< in words
};

/** Every reason but NotRefused, in the order of the enumeration. */
std::span<const RefusalRow> refusalTable();

/** Of a reason other than NotRefused. */
const RefusalRow &rowOf(Refusal refusal);

/** NoError for NotRefused. */
RegisterError errorOf(Refusal refusal);

} // namespace Simulator
