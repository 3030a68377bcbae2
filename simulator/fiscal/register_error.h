// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Simulator {

/** What an answer tells of why the register did not do something: bits of an integer, 0 when it did. */
enum RegisterError {
    NoError = 0,
    WrongKey = 1,     ///< a key that means nothing where it was pressed
    WrongValue = 2,   ///< a price, quantity, section, percentage, amount or type that it does not take
    OverLimit = 4,    ///< over the sale limit, or more than a receipt can hold
    PaymentBegun = 8, ///< something has been paid: items stay as they are. Standing, and no failure by itself
    NoPaper = 16,     ///< the printer has no paper
    NothingThere = 32, ///< no such item, or nothing on the receipt
    NoJournal = 64,    ///< the journal cannot be written
};

} // namespace Simulator
