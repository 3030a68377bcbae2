// SPDX-License-Identifier: Apache-2.0

#include "till/rules.h"

#include <array>

namespace Velno::Receipts {

namespace {

constexpr std::array<RuleRow, size_t(Rule::Count)> table{{
    {Rule::AcceptIsFlushed, "accept-is-flushed", "An order is on the disk before the register hears of it."},
    {Rule::ReferenceBeforeFirstLine, "reference-before-first-line",
     "Which fiscal receipt an order is on is on the disk before its first line is sold."},
    {Rule::LookAfterLostAnswer, "look-after-lost-answer",
     "After a lost answer the register is asked how the sale stands; nothing is repeated before."},
    {Rule::LookBehindPayments, "look-behind-payments",
     "Payments and the end of a sale are keys that nobody answers for: each is looked after."},
    {Rule::LookBeforeStart, "look-before-start",
     "A sale is started on an idle register alone; one that is open already is somebody else's."},
    {Rule::CounterQuestion, "counter-question",
     "A no to a receipt means something only beside a yes to another one that is known to be closed."},
    {Rule::TenRounds, "ten-rounds", "Question and counter-question have to agree ten times."},
    {Rule::KnownReceiptNeeded, "known-receipt-needed",
     "Without a receipt to ask a counter-question about, a person has to look."},
    {Rule::AskDoubtsAgain, "ask-doubts-again",
     "A receipt that was taken for cancelled is asked about again behind the next ones that are closed."},
    {Rule::AskDoubtsBeforeNo, "ask-doubts-before-no",
     "Before it is told that nothing was sold, what was taken for cancelled is asked about once more."},
    {Rule::NoIsFinalLater, "no-is-final-later",
     "What was taken for cancelled is so for certain a minute later, and is asked about until then."},
    {Rule::CardsNeverAgain, "cards-never-again",
     "A card that may have been charged on a cancelled receipt is a person's business."},
    {Rule::CashOnlyIfAllowed, "cash-only-if-allowed",
     "Cash is entered again by itself only if the receipt says so."},
    {Rule::PaymentIntentionFlushed, "payment-intention-flushed",
     "That a payment of such a kind is being sent is on the disk before its key."},
    {Rule::ForgetLostKeys, "forget-lost-keys",
     "A register that connects and fails three times in a row has lost its keys and is paired anew."},
    {Rule::OldConnectionsProveNothing, "old-connections-prove-nothing",
     "Only a look on the same connection shows that a step was refused and not lost."},
    {Rule::WaitForBusyRegister, "wait-for-busy-register",
     "A busy register is asked again; its state is no answer to what was sent."},
    {Rule::WatchRegisterNumbers, "watch-register-numbers",
     "A register whose numbers are below those of the ledger is another one."},
    {Rule::SameKeySameOutcome, "same-key-same-outcome", "A key that is known is never sold again."},
    {Rule::CancelWhatIsRefused, "cancel-what-is-refused",
     "A receipt of which a line is refused for good is cancelled before it is called refused."},
    {Rule::ClearEmptySaleOfDeadProcess, "clear-empty-sale-of-dead-process",
     "An empty sale that a process left behind is cancelled; nothing can have been sold on it."},
    {Rule::CompareTotals, "compare-totals",
     "Lines and payments of a receipt that is found have to be those of the order."},
}};

} // namespace

std::span<const RuleRow> ruleTable()
{
    return table;
}

} // namespace Velno::Receipts
