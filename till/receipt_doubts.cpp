// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_json.h"
#include "till/receipt_work.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

// ms behind which a no is believed. How late a register may be to tell of a receipt nobody knows.
constexpr qint64 longEnough = 60'000;

/** How an order stands to a receipt of it that was taken for cancelled, or was unknown, and counts. */
enum class Standing {
    WaitsForIt,   ///< nothing has been told otherwise, and none of its receipts is known to count
    ToldByPerson, ///< a person has said that it was closed
    ToldUnsold,   ///< somebody has been told, or has said, that nothing was sold
    Closed,       ///< on another receipt
    UnderWay,     ///< on another receipt; whoever ends that finds this one
};

Standing standingOf(const Order &order)
{
    const bool hasReceipt = !isNone(order.reference);
    switch (order.state) {
    case State::Closed:
        return hasReceipt ? Standing::Closed : Standing::ToldByPerson;
    case State::NeedsPerson:
        if (order.question == Question::CountedTwice)
            return Standing::Closed;
        if (order.question == Question::ReceiptUnknown || order.question == Question::MoneyTaken)
            return Standing::WaitsForIt;
        break;
    case State::Accepted:
    case State::Waiting:
        if (!hasReceipt && order.answer == Answer::None)
            return Standing::WaitsForIt;
        if (!hasReceipt && order.answer == Answer::Paid) // and nobody has acted upon it yet
            return Standing::ToldByPerson;
        break;
    case State::Open:
    case State::Cancelled:
    case State::Refused:
        break;
    }
    return hasReceipt ? Standing::UnderWay : Standing::ToldUnsold;
}

void closeOn(Order *order, const Attempt &known, const VelnoEcrSaleTotals &totals, bool hasSlip)
{
    order->reference = known.reference;
    order->era = known.era;
    order->totals = totals;
    order->state = State::Closed;
    order->question = Question::None;
    order->answer = Answer::None;
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
        const bool isFinal = isNoFinal(doubt); // otherwise nothing is concluded from a no
        Doubt asked{doubt.reference};
        if (isFinal)
            asked.known = m_order.reference;
        asked.isEnded = isFinal;
        asked.isBrief = !isFinal;
        View view;
        if (Look(m_place, m_register).at(asked, &view) != Looked::Told)
            break; // they are asked about behind the next receipt
        if (view.found == Found::Closed) {
            if (const End end = doubtIsClosed(doubt, view.totals))
                return end;
        } else if (view.found == Found::ProbablyCancelled && isFinal) {
            doubt.fate = Fate::Cancelled;
            m_place.ledger.note(doubt);
        }
    }
    return WorkEnd::Settled;
}

/** A register may be late to tell of a receipt, even when it has closed another one since. */
bool ReceiptWork::isNoFinal(const Attempt &doubt) const
{
    if (!m_place.rules.hold(Rule::NoIsFinalLater))
        return true;
    const std::optional<Order> order = m_place.ledger.at(doubt.order); // unchanged since the doubt, or longer
    return order && order->changedAt.msecsTo(m_place.clock.now()) >= longEnough;
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
    const Standing standing = standingOf(*other);
    if (standing == Standing::UnderWay)
        return {};
    m_place.ledger.note(known);
    if (doubt.order == m_order.number) // it was sold once more
        return ask(Question::CountedTwice, text);
    other->changedAt = m_place.clock.now();
    const Receipt receipt = readReceipt(other->content).value;
    const bool isForeign = m_place.rules.hold(Rule::CompareTotals) && !isClosedAs(receipt, totals);
    if (standing != Standing::Closed)
        closeOn(&*other, known, totals, receipt.slip.has_value());
    if (standing == Standing::Closed || standing == Standing::ToldUnsold)
        askAbout(&*other, Question::CountedTwice);
    else if (isForeign && standing == Standing::WaitsForIt)
        askAbout(&*other, Question::NotOurs);
    const Event event{other->changedAt, other->state, 0, 0, text, {}};
    if (!m_place.ledger.save(*other, event, Durability::Flushed))
        return WorkEnd::LedgerFailed;
    m_place.tellOfOther(*other);
    return {};
}

/** Nothing was sold for it, as far as is known. It may be some time since a receipt of it was taken for
 * cancelled, so that is asked about once more before anybody is told. */
OrderWork::End ReceiptWork::settleUnsold(const VelnoReceiptRef &justAsked)
{
    leaveNoneOpen();
    if (m_place.rules.hold(Rule::AskDoubtsBeforeNo)) {
        if (const End end = askAboutOwnDoubts(justAsked))
            return end;
    }
    if (m_refusal)
        return refuse(*m_refusal, m_refusalText);
    return settle(State::Cancelled, u"dropped by a person"_s);
}

OrderWork::End ReceiptWork::askAboutOwnDoubts(const VelnoReceiptRef &justAsked)
{
    const bool isWord = m_isDropped && m_order.question != Question::None; // of whoever has looked
    QList<Attempt> doubts = m_place.ledger.doubts();
    doubts.removeIf([&](const Attempt &doubt) {
        return doubt.order != m_order.number || isSame(doubt.reference, justAsked);
    });
    for (const Attempt &doubt : std::as_const(doubts)) {
        Doubt asked{doubt.reference, m_place.ledger.lastClosed()};
        asked.isEnded = !isNone(asked.known); // otherwise a person has been asked about it
        View view;
        const Looked looked = Look(m_place, m_register).at(asked, &view);
        if (looked == Looked::Told && view.found != Found::Closed)
            continue; // and is asked about behind the next receipt
        if (isWord && (looked == Looked::Unproven || looked == Looked::Replaced))
            continue; // the word goes before the no
        if (looked != Looked::Told && looked != Looked::Unproven)
            return endOf(looked);
        m_order.reference = doubt.reference;
        m_order.era = doubt.era;
        if (looked == Looked::Unproven)
            return concludeUnproven();
        m_place.ledger.note(attempt(Fate::Closed)); // also when a person is asked about it now
        return concludeClosed(view.totals);
    }
    return {};
}

} // namespace Velno::Receipts
