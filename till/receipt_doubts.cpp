// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_json.h"
#include "till/receipt_work.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

/** Whether it waits for a person, who has not answered yet, because of this receipt; so nothing has been sold
 * for it since. */
bool waitsFor(const Order &order, const Attempt &doubt)
{
    if (order.state != State::NeedsPerson || order.answer != Answer::None)
        return false;
    return order.question == Question::MoneyTaken
               ? isNone(order.reference)
               : order.question == Question::ReceiptUnknown && isSame(order.reference, doubt.reference);
}

/** It counts, and a person need not say so. */
void closeIt(Order *order, bool hasSlip)
{
    order->state = State::Closed;
    order->question = Question::None;
    order->paper = Paper::Unsure;
    order->slipUnsure = hasSlip;
    order->giveBack = 0;
    order->code = order->cause = 0;
}

void askAbout(Order *order, Question question)
{
    order->state = State::NeedsPerson;
    order->question = question;
}

} // namespace

/** Asked at another time than before, and beside a receipt that has just been closed. */
OrderWork::End ReceiptWork::askAboutDoubts()
{
    if (!m_place.rules.hold(Rule::AskDoubtsAgain))
        return WorkEnd::Settled;
    const QList<Attempt> doubts = m_place.ledger.doubts();
    for (Attempt doubt : doubts) {
        View view;
        if (Look(m_place, m_register).at({doubt.reference, m_order.reference}, &view) != Looked::Told)
            break; // they are asked about behind the next receipt
        if (view.found == Found::Closed) {
            if (const End end = doubtIsClosed(doubt, view.totals))
                return end;
        } else if (view.found == Found::ProbablyCancelled) {
            doubt.fate = Fate::Cancelled;
            m_place.ledger.note(doubt);
        }
    }
    return WorkEnd::Settled;
}

/** It was taken for cancelled, or was unknown, and counts. */
OrderWork::End ReceiptWork::doubtIsClosed(const Attempt &doubt, const VelnoEcrSaleTotals &totals)
{
    Attempt known = doubt;
    known.fate = Fate::Closed;
    const QString text = u"receipt %1 of Z %2 was taken for cancelled, and counts"_s.arg(
        QString::number(doubt.reference.second), QString::number(doubt.reference.first));
    std::optional<Order> other = m_place.ledger.at(doubt.order);
    if (!other)
        return {};
    const bool isWaitedFor = waitsFor(*other, doubt);
    if (!isWaitedFor && isSame(other->reference, doubt.reference))
        return {}; // a person has answered, and the work on it finds it so
    m_place.ledger.note(known);
    if (doubt.order == m_order.number) // it was sold once more
        return ask(Question::CountedTwice, text);
    other->changedAt = m_place.clock.now();
    const Receipt receipt = readReceipt(other->content).value;
    const bool isToldByPerson = other->state == State::Closed && isNone(other->reference);
    if (isToldByPerson || isWaitedFor) {
        other->reference = doubt.reference;
        other->era = doubt.era;
        other->totals = totals;
    }
    if (isWaitedFor && (isClosedAs(receipt, totals) || !m_place.rules.hold(Rule::CompareTotals)))
        closeIt(&*other, receipt.slip.has_value());
    else if (isWaitedFor)
        askAbout(&*other, Question::NotOurs);
    else if (!isToldByPerson)
        askAbout(&*other, Question::CountedTwice);
    const Event event{other->changedAt, other->state, 0, 0, text, {}};
    return m_place.ledger.save(*other, event, Durability::Flushed) ? End() : WorkEnd::LedgerFailed;
}

} // namespace Velno::Receipts
