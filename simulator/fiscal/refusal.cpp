// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/refusal.h"

#include <algorithm>
#include <array>

namespace Simulator {

namespace {

constexpr std::array table{
    RefusalRow{MeaninglessKey, "meaningless-key", WrongKey, "a key means nothing on this display"},
    RefusalRow{OtherDisplay, "other-display", WrongKey,
               "the keys are meant for another display than the present one"},
    RefusalRow{InvoiceNeeded, "invoice-needed", WrongKey,
               "a sale with invoice is closed by end-invoice, not by a key"},
    RefusalRow{ErrorDisplayed, "error-displayed", WrongKey,
               "the error of earlier keys is on the display; sale-state clears it, and so does C"},
    RefusalRow{NoSale, "no-sale", NothingThere, "no sale is open"},
    RefusalRow{ItemsStay, "payment-begun", PaymentBegun,
               "something has been paid, so items stay as they are"},
    RefusalRow{BadPrice, "bad-price", WrongValue, "the price, the quantity or their product is out of range"},
    RefusalRow{BadSection, "unknown-section", WrongValue, "there is no such section"},
    RefusalRow{BadPercentage, "bad-percentage", WrongValue, "the percentage is not from -100 to 100"},
    RefusalRow{BadDiscount, "bad-discount", WrongValue, "the discount is below 0 or above the line's total"},
    RefusalRow{BadUnit, "bad-type", WrongValue, "the item's type is no unit that it knows"},
    RefusalRow{OverSaleLimit, "sale-limit", OverLimit, "the sale would be over the sale limit"},
    RefusalRow{OverLargestAmount, "amount-too-large", OverLimit, "the sale would be over 99.999.999,99"},
    RefusalRow{ReceiptFull, "receipt-full", OverLimit, "the receipt holds no more than 500 lines"},
    RefusalRow{NoItem, "no-such-item", NothingThere, "there is no such item, or it is deleted"},
    RefusalRow{BadContribution, "bad-contribution", WrongValue,
               "the medical contribution is below 0 or over 99.999.999,99"},
    RefusalRow{BadPatient, "bad-identity", WrongValue, "the identity number has not 11 digits"},
    RefusalRow{NothingSold, "nothing-sold", NothingThere, "nothing is on the receipt"},
    RefusalRow{BadPayment, "bad-amount", WrongValue, "the payment is 0 or over 99.999.999,99"},
    RefusalRow{NothingLeft, "nothing-left", WrongValue, "nothing is left to pay"},
    RefusalRow{CardOverRest, "card-over-rest", WrongValue, "a card takes no more than what is left to pay"},
    RefusalRow{TooManyPayments, "too-many-payments", OverLimit,
               "the receipt holds no more than 100 payments"},
    RefusalRow{NoInvoiceSale, "no-invoice-sale", NothingThere, "the open sale was not begun with invoice"},
    RefusalRow{BadInvoiceType, "bad-invoice-type", WrongValue, "the invoice's type is not 0, 1 or 2"},
    RefusalRow{BadInvoiceMode, "bad-invoice-mode", WrongValue, "the invoice's mode is not 1 or 2"},
    RefusalRow{BadReference, "bad-reference", WrongValue,
               "the invoice's reference is too short, too long or not printable"},
    RefusalRow{BadIdNumber, "bad-id-number", WrongValue,
               "the customer's number does not have the digits of its kind"},
    RefusalRow{PaperOut, "no-paper", NoPaper, "the printer has no paper"},
    RefusalRow{SaleStillOpen, "sale-open", WrongKey, "a sale is open"},
    RefusalRow{SlipTooLong, "slip-too-long", OverLimit, "the slip has more than 1000 lines"},
    RefusalRow{ZNumbersUsedUp, "z-numbers-used-up", OverLimit, "there is no higher Z number"},
    RefusalRow{JournalUnwritable, "no-journal", NoJournal, "the journal cannot be written"},
    RefusalRow{ReceiptStillOpen, "receipt-open", WrongValue, "the receipt is still open"},
    RefusalRow{ReceiptNotClosed, "receipt-not-closed", WrongValue,
               "there is no such receipt, or it was cancelled"},
    RefusalRow{StateForbids, "wrong-state", NothingThere, "the register's state does not allow it"},
    RefusalRow{FaultRefuses, "fault-refuse", WrongKey, "the fault refuse is on"},
    RefusalRow{FaultError, "fault-error", WrongValue, "the fault error is on"},
    RefusalRow{FaultSaleLimit, "fault-sale-limit", OverLimit, "the fault sale-limit is on"},
};

static_assert(table.size() == FaultSaleLimit);

} // namespace

std::span<const RefusalRow> refusalTable()
{
    return table;
}

const RefusalRow &rowOf(Refusal refusal)
{
    return *std::ranges::find(table, refusal, &RefusalRow::refusal);
}

RegisterError errorOf(Refusal refusal)
{
    return refusal == NotRefused ? NoError : rowOf(refusal).error;
}

} // namespace Simulator
