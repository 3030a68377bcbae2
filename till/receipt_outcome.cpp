// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_work.h"

#include "till/slip_printing.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr int mostLosses = 50;
constexpr int mostDoubts = 3; // of one order at a time

bool pays(const Receipt &receipt, Tender tender)
{
    return std::any_of(receipt.payments.cbegin(), receipt.payments.cend(),
                       [tender](const Payment &payment) { return payment.tender == tender; });
}

} // namespace

OrderWork::End ReceiptWork::lookAtIt()
{
    if (m_sent.reply.code != 0)
        m_place.tell(Stage::Looking);
    Doubt doubt{m_order.reference, m_place.ledger.lastClosed()};
    doubt.cancelAnswered = m_sent.step == Step::Cancel && m_sent.reply.code == 0;
    doubt.isEnded = m_mayBeEnded;
    doubt.isLikelyOpen = m_sent.step == Step::Medical || m_sent.step == Step::Payment;
    View view;
    const Looked looked = Look(m_place, m_register).at(doubt, &view);
    if (looked == Looked::Unproven)
        return concludeUnproven();
    if (looked != Looked::Told)
        return endOf(looked);
    switch (view.found) {
    case Found::Closed:
        return concludeClosed(view.totals);
    case Found::Cancelled:
        return concludeCancelled(Fate::Cancelled);
    case Found::ProbablyCancelled:
        return concludeNo();
    case Found::NoSale:
    case Found::Open:
        break;
    }
    return concludeOpen(view);
}

OrderWork::End ReceiptWork::concludeOpen(const View &view)
{
    m_totals = view.totals;
    m_sawOpen = true;
    m_mayHaveStarted = false; // no other can be open
    // A register works off one connection in its order, and what was on its way on an earlier one is lost: no
    // payment is under way any more.
    const bool hasCash = m_totals.values[VelnoTotal_Cash] != 0;
    m_mayBePaid = m_totals.values[VelnoTotal_Card] != 0 || (hasCash && !m_receipt.reenterCash);
    m_order.paymentSent = m_order.paymentSent && m_mayBePaid;
    m_isCertain = true;
    if (m_saidPaid)
        return ask(m_order.question, u"a person has said that it was paid, but it is open still"_s);
    if (isLeaving())
        return concludeLeaving();
    const std::optional<Position> now = positionOf(m_receipt, m_totals);
    if (now && isExpected(*now)) {
        if (const End failed = useUpWord())
            return failed;
        return concludeStep(*now);
    }
    if (!m_wordGiven)
        return ask(Question::NotOurs, u"the open sale holds what was not entered for it"_s);
    m_isRestarting = true; // what stands on it is not wanted, as a person has said
    return {};
}

/** What happens from here on is new, and nobody may take the word for one about that: it goes from the record
 * before anything else is sent. */
OrderWork::End ReceiptWork::useUpWord()
{
    const bool isOnRecord = m_order.answer != Answer::None;
    m_wordGiven = false;
    m_order.question = Question::None;
    m_order.answer = Answer::None;
    if (!isOnRecord)
        return {};
    return save(State::Open, u"it goes on, as a person has said"_s, Durability::Flushed);
}

/** Whether it is as before what was sent, or behind it. */
bool ReceiptWork::isExpected(const Position &now) const
{
    const Position &before = m_sent.before;
    Position after = before;
    switch (m_sent.step) {
    case Step::None:
        return true;
    case Step::Lines:
        after.lines += m_sent.lines;
        break;
    case Step::Payment:
        ++after.payments;
        break;
    case Step::Medical:
    case Step::End:
    case Step::Cancel:
        break;
    }
    return now == before || now == after;
}

OrderWork::End ReceiptWork::concludeLeaving()
{
    if (m_sent.step != Step::Cancel)
        return {};
    if (++m_refusals >= mostRefusals)
        return wait(m_sent.reply, u"the register does not cancel the sale"_s);
    return pauseBehind(m_refusals) ? End() : WorkEnd::Stopped;
}

OrderWork::End ReceiptWork::concludeStep(const Position &now)
{
    const bool isTaken = m_sent.step == Step::None || now != m_position ||
                         (m_sent.step == Step::Medical && m_sent.reply.code == 0);
    m_position = now;
    if (isTaken) {
        m_refusals = 0;
        m_sent = {};
        return {};
    }
    const int code = m_sent.reply.code;
    if (code == VelnoResult_NullArgument || code == VelnoResult_BadValue)
        return refuseForGood(m_sent.reply, u"a value is not valid"_s);
    const bool isOld =
        m_sent.connection != m_register.connections() && m_place.rules.hold(Rule::OldConnectionsProveNothing);
    if (!isOld && !isLost(code))
        return concludeRefusal();
    return ++m_losses < mostLosses ? End() : wait(m_sent.reply, u"answers are lost again and again"_s);
}

/** The step was refused, on a sale that is as before. */
OrderWork::End ReceiptWork::concludeRefusal()
{
    Reply reply = m_sent.reply;
    if (reply.code == 0) { // keys have no answer that could tell why
        reply = {VelnoResult_Refused, VelnoCause_SaidNo};
        if (m_register.ask(velnoext_check_printer_paper, RegisterAccess::answerTimeout) ==
            VelnoResult_NoPaper)
            reply = m_register.last();
        else if (isCardUnderWay())
            return refuseForGood(reply,
                                 u"the card payment was refused"_s); // nobody is asked for a card twice
    }
    if (isHindrance(reply)) {
        m_place.tell(Stage::Busy);
        if (m_patience.isOver())
            return wait(reply, u"the register takes no steps now"_s);
        return m_patience.pause() ? End() : WorkEnd::Stopped;
    }
    if (++m_refusals < mostRefusals)
        return pauseBehind(m_refusals) ? End() : WorkEnd::Stopped;
    return refuseForGood(reply, u"the register refuses a step"_s);
}

bool ReceiptWork::isCardUnderWay() const
{
    if (m_sent.step == Step::Payment)
        return m_receipt.payments.at(m_position.payments).tender == Tender::Card;
    return m_sent.step == Step::End && !m_receipt.payments.constLast().amount &&
           endTender(m_receipt) == Tender::Card;
}

OrderWork::End ReceiptWork::refuseForGood(const Reply &reply, const QString &why)
{
    const bool isPaid = m_totals.values[VelnoTotal_Cash] != 0 || m_totals.values[VelnoTotal_Card] != 0;
    m_order.code = reply.code;
    m_order.cause = reply.cause;
    if (isPaid)
        return ask(Question::PaymentRefused, why);
    if (!m_place.rules.hold(Rule::CancelWhatIsRefused))
        return refuse(reply, why);
    m_refusal = reply;
    m_refusalText = why;
    m_refusals = 0;
    return {};
}

OrderWork::End ReceiptWork::concludeClosed(const VelnoEcrSaleTotals &totals)
{
    m_order.totals = totals;
    const bool isForeign = m_place.rules.hold(Rule::CompareTotals) && !isClosedAs(m_receipt, totals);
    if (isForeign && m_wordGiven)
        return concludeCancelled(Fate::GivenUp);
    if (isForeign && !m_saidPaid)
        return ask(Question::NotOurs, u"the receipt was closed with other lines or payments"_s);
    leaveNoneOpen();
    const bool isAsUsual =
        m_sent.step == Step::End && m_sent.reply.code == 0 && m_sent.connection == m_register.connections();
    const bool hasPaper =
        isAsUsual && m_register.ask(velnoext_check_printer_paper, RegisterAccess::answerTimeout) == 0;
    m_order.paper = hasPaper ? Paper::Printed : Paper::Unsure;
    m_order.slipUnsure = m_receipt.slip.has_value();
    m_order.giveBack = 0;
    m_place.ledger.note(attempt(Fate::Closed));
    // Whoever finds it on record as open must know that its slip has not been printed.
    const WorkEnd end =
        settle(State::Closed, u"closed"_s, m_receipt.slip ? Durability::Flushed : Durability::Written);
    if (end != WorkEnd::Settled)
        return end;
    if (m_receipt.slip)
        printSlip();
    return askAboutDoubts();
}

/** A slip is on no record of the register: when it is not certain that it came out nobody prints it again. */
void ReceiptWork::printSlip()
{
    m_place.tell(Stage::Printing);
    if (Receipts::printSlip(m_register, *m_receipt.slip) != 0)
        return;
    m_order.slipUnsure = false;
    save(State::Closed,
         u"the slip is printed"_s); // when it is not noted, somebody looks for the slip in vain
}

/** What lies in the drawer for it, at most, and stands on no receipt. */
qint64 ReceiptWork::cashTaken() const
{
    if (m_sawOpen && m_sent.step != Step::Payment && m_sent.step != Step::End)
        return m_totals.values[VelnoTotal_Cash];
    qint64 cash = 0;
    const qsizetype upTo =
        m_sawOpen && m_sent.step == Step::Payment ? m_position.payments + 1 : m_receipt.payments.size();
    for (qsizetype i = 0; i < upTo; ++i)
        if (m_receipt.payments.at(i).tender == Tender::Cash)
            cash += m_receipt.payments.at(i).amount.value_or(0);
    return cash;
}

OrderWork::End ReceiptWork::concludeCancelled(Fate fate)
{
    const bool isCard = pays(m_receipt, Tender::Card) && m_place.rules.hold(Rule::CardsNeverAgain);
    const bool isCash = pays(m_receipt, Tender::Cash) && !m_receipt.reenterCash &&
                        m_place.rules.hold(Rule::CashOnlyIfAllowed);
    const bool isMoney = m_mayBePaid && !m_wordGiven && (isCard || isCash);
    m_order.giveBack = m_wordGiven && !m_isDropped ? 0 : std::max(m_order.giveBack, cashTaken());
    const VelnoReceiptRef cancelled = m_order.reference;
    m_place.ledger.note(attempt(fate));
    forgetSale();
    if (m_refusal || (m_isDropped && !isMoney))
        return settleUnsold(cancelled);
    if (isMoney)
        return ask(Question::MoneyTaken,
                   u"the register has cancelled it when something was, or may have been, paid"_s);
    m_order.question = Question::None;
    m_order.answer = Answer::None;
    return save(State::Accepted, u"the register has cancelled the sale"_s);
}

void ReceiptWork::forgetSale()
{
    m_order.reference = {0, 0};
    m_order.paymentSent = m_mayBePaid = false;
    m_isCertain = m_sawOpen = m_startSent = m_wordGiven = m_isRestarting = false;
    m_sent = {};
    m_position = {};
    m_totals = {};
}

/** Ten rounds say that it does not count. Of a register that is late to tell of a receipt they would say so,
 * too: then it must not be sold on and on. */
OrderWork::End ReceiptWork::concludeNo()
{
    if (m_saidPaid || m_wordGiven) // the person has looked at the paper; the register only says no
        return concludeUnproven();
    const bool isConnectedSince =
        m_sent.step == Step::End && m_sent.reply.code == 0 && m_sent.connection == m_register.connections();
    if (isConnectedSince) { // a cut of the power would have ended the connection
        if (m_patience.isOver())
            return concludeUnproven();
        return m_patience.pause() ? End() : WorkEnd::Stopped;
    }
    const QList<Attempt> doubts = m_place.ledger.doubts();
    const auto inDoubt = std::count_if(doubts.cbegin(), doubts.cend(), [this](const Attempt &doubt) {
        return doubt.order == m_order.number;
    });
    const bool isEnough = m_mayBeEnded && inDoubt >= mostDoubts;
    return isEnough ? concludeUnproven() : concludeCancelled(Fate::ProbablyCancelled);
}

OrderWork::End ReceiptWork::concludeUnproven()
{
    if (m_saidPaid)
        return closeByWord();
    if (m_wordGiven)
        return concludeCancelled(Fate::GivenUp);
    m_place.ledger.note(attempt(Fate::ProbablyCancelled)); // it is asked about behind the next receipt, too
    return ask(Question::ReceiptUnknown, u"the register does not tell whether the receipt was closed"_s);
}

OrderWork::End ReceiptWork::closeByWord()
{
    leaveNoneOpen();
    if (!isNone(m_order.reference))
        m_place.ledger.note(attempt(Fate::GivenUp)); // it proves nothing about other receipts
    m_order.paper = Paper::Unsure;
    m_order.slipUnsure = m_receipt.slip.has_value();
    m_order.giveBack = 0;
    return settle(State::Closed, u"closed, as a person has said"_s);
}

} // namespace Velno::Receipts
