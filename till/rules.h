// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <bitset>
#include <span>

namespace Velno::Receipts {

/** The rules that keep a receipt from being lost or doubled. Each can be switched off, to show that it is
 * needed. */
enum class Rule {
    AcceptIsFlushed,
    ReferenceBeforeFirstLine,
    LookAfterLostAnswer,
    LookBehindPayments,
    LookBeforeStart,
    CounterQuestion,
    TenRounds,
    KnownReceiptNeeded,
    AskDoubtsAgain,
    AskDoubtsBeforeNo,
    NoIsFinalLater,
    CardsNeverAgain,
    CashOnlyIfAllowed,
    PaymentIntentionFlushed,
    ForgetLostKeys,
    OldConnectionsProveNothing,
    WaitForBusyRegister,
    WatchRegisterNumbers,
    SameKeySameOutcome,
    CancelWhatIsRefused,
    ClearEmptySaleOfDeadProcess,
    CompareTotals,
    Count
};

struct RuleRow
{
    Rule rule;
    const char *name; ///< "look-after-lost-answer"
    const char *says; ///< a sentence
};

std::span<const RuleRow> ruleTable();

/** Which rules hold: all of them, outside a simulation. */
class Rules
{
public:
    bool hold(Rule rule) const { return !m_off.test(size_t(rule)); }
    void switchOff(Rule rule) { m_off.set(size_t(rule)); }

private:
    std::bitset<size_t(Rule::Count)> m_off;
};

} // namespace Velno::Receipts
