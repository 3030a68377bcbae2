// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_work.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

ReceiptWork::ReceiptWork(Workplace &place, RegisterAccess &reg, Order &order, const Receipt &receipt,
                         bool mayHaveStarted)
    : OrderWork(place, reg, order, mayHaveStarted)
    , m_receipt(receipt)
    , m_mayBeEnded(!isNone(order.reference))
    , m_mayBePaid(order.paymentSent)
    , m_patience(place.clock, place.meeting.patience)
{
}

WorkEnd ReceiptWork::run()
{
    End end = takeAnswer();
    // The register that is here now knows nothing of it; a receipt of the same number is another one.
    if (!end && !isNone(m_order.reference) && isOfFormerRegister())
        end = ask(Question::OtherRegister, u"the register that it was entered on has been replaced"_s);
    while (!end)
        end = m_place.isStopping ? WorkEnd::Stopped : goOn();
    if (m_startSent && isNone(m_order.reference))
        m_mayHaveStarted = true;
    return *end;
}

/** What a person has said; from here on it is a matter of the register, unless that is what it settles. */
OrderWork::End ReceiptWork::takeAnswer()
{
    const Answer answer = m_order.answer;
    if (answer == Answer::None)
        return {};
    if (m_order.question == Question::CountedTwice)
        return settle(State::Closed, u"a person has seen to the receipt that was counted twice"_s);
    const bool isGone = !isNone(m_order.reference) && isOfFormerRegister();
    if (isGone && !isWordFinal())
        return {}; // and asks about the register that has been replaced
    if (isGone || m_order.question == Question::OtherRegister || m_order.question == Question::MoneyTaken) {
        if (!isNone(m_order.reference))
            m_place.ledger.note(attempt(Fate::GivenUp)); // of the register before
        m_order.reference = {0, 0};
    }
    if (m_order.question == Question::OtherRegister && !takeOtherRegister())
        return WorkEnd::LedgerFailed;
    m_isDropped = answer == Answer::Drop;
    m_saidPaid = answer == Answer::Paid;
    // Whoever drops what only waits has looked at nothing.
    m_wordGiven = m_order.question != Question::None && !m_saidPaid;
    return isNone(m_order.reference) ? answerWithoutReceipt() : End();
}

/** Whether it holds when the sale's register has been replaced since: it says what became of the receipt, and
 * nothing of money that was taken on it is open. */
bool ReceiptWork::isWordFinal() const
{
    switch (m_order.question) {
    case Question::ReceiptUnknown:
    case Question::NotOurs:
    case Question::OtherRegister:
    case Question::MoneyTaken:
        return true;
    case Question::PaymentRefused:
        return m_order.answer != Answer::SellAgain;
    default:
        return false;
    }
}

OrderWork::End ReceiptWork::answerWithoutReceipt()
{
    if (isSettledByWord()) // an empty sale that was started for it is not left behind
        return m_mayHaveStarted ? End() : settleByWord();
    m_wordGiven = false;  // it was about what has been, and not about the sale that begins now
    m_order.giveBack = 0; // the person has seen to it
    m_order.paymentSent = m_mayBePaid = false;
    m_order.question = Question::None;
    m_order.answer = Answer::None;
    return save(State::Accepted, u"to be sold again, as a person has said"_s);
}

OrderWork::End ReceiptWork::settleByWord()
{
    return m_saidPaid ? closeByWord() : settleUnsold();
}

OrderWork::End ReceiptWork::goOn()
{
    if (isNone(m_order.reference))
        return open();
    return m_isCertain ? step() : lookAtIt();
}

Attempt ReceiptWork::attempt(Fate fate) const
{
    return {m_order.number, m_order.reference, m_order.era, fate};
}

} // namespace Velno::Receipts
