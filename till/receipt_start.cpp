// SPDX-License-Identifier: Apache-2.0

#include "till/receipt_work.h"

#include <utility>

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr int mostOpenings = 32; ///< so that a register which always cancels ends it, too

/** Receipts are numbered within a Z report, from 1 on. */
bool isAbove(const VelnoReceiptRef &reference, const VelnoReceiptRef &other)
{
    return std::pair(reference.first, reference.second) > std::pair(other.first, other.second);
}

} // namespace

OrderWork::End ReceiptWork::open()
{
    if (isSettledByWord() && !m_mayHaveStarted && !m_startSent)
        return settleByWord();
    if (++m_openings > mostOpenings)
        return wait({VelnoResult_StepNotTaken, 0}, u"the register cancels every sale"_s);
    if (!m_place.rules.hold(Rule::LookBeforeStart) && !m_startSent)
        return start();
    View view;
    const Looked looked = Look(m_place, m_register).at({}, &view);
    if (looked == Looked::Replaced && isSettledByWord()) // what was started for it is not on this one
        return settleByWord();
    if (looked != Looked::Told)
        return endOf(looked);
    if (view.found == Found::Open)
        return openWith(view);
    m_mayHaveStarted = false;
    return start();
}

/** A sale is open. It is ours when it is empty, none was open before, and its start was sent. */
OrderWork::End ReceiptWork::openWith(const View &view)
{
    if (isEmpty(view.totals) && m_startSent && !m_mayHaveStarted)
        return adopt(view);
    if (isEmpty(view.totals) && m_mayHaveStarted && m_place.rules.hold(Rule::ClearEmptySaleOfDeadProcess))
        return clearEmptySale();
    if (isSettledByWord() && !isEmpty(view.totals)) // somebody else's
        return settleByWord();
    if (!m_place.rules.hold(Rule::LookBeforeStart))
        return adopt(view);
    return waitForStart({VelnoResult_WrongState, int(VelnoCause_OfState) + VelnoEcrState_SaleOpen});
}

OrderWork::End ReceiptWork::start()
{
    if (isSettledByWord())
        return settleByWord();
    if (const End end = reach())
        return end;
    m_place.tell(m_openings > 1 && !m_startSent ? Stage::EnteringAgain : Stage::Starting);
    m_startSent = true;
    const int code = m_receipt.invoice
                         ? m_register.ask(velnoext_start_sale_with_invoice, RegisterAccess::answerTimeout)
                         : m_register.ask(velnoext_start_sale, RegisterAccess::answerTimeout);
    const Reply reply = m_register.last();
    View view;
    if (const Looked looked = Look(m_place, m_register).at({}, &view); looked != Looked::Told)
        return endOf(looked);
    if (view.found == Found::Open)
        return openWith(view);
    if (code == 0 || isLost(code))
        return {}; // it was lost, or cancelled since
    return waitForStart(reply);
}

/** Nothing of the receipt can be at fault yet: the register is not ready, and may become so. */
OrderWork::End ReceiptWork::waitForStart(const Reply &reply)
{
    if (m_patience.isOver())
        return wait(reply, u"the register starts no sale"_s);
    m_place.tell(Stage::Busy);
    --m_openings; // waiting is no attempt
    return m_patience.pause() ? End() : WorkEnd::Stopped;
}

/** Nothing is sold on a receipt whose reference is not on record: that is all that a process leaves behind.
 */
OrderWork::End ReceiptWork::adopt(const View &view)
{
    const bool isReplaced =
        m_place.rules.hold(Rule::WatchRegisterNumbers) && !isAbove(view.open, m_place.ledger.highest());
    if (isReplaced) {
        m_register.ask(velnoext_cancel_sale, RegisterAccess::answerTimeout); // it is empty
        return endOf(Looked::Replaced);
    }
    m_order.reference = view.open;
    m_order.era = m_place.ledger.era();
    m_order.paymentSent = m_mayBePaid = false;
    m_order.code = m_order.cause = 0;
    m_place.ledger.note(attempt(Fate::Open));
    const bool mustBeThere = m_place.rules.hold(Rule::ReferenceBeforeFirstLine);
    const End failed = save(State::Open, u"a sale is open for it"_s,
                            mustBeThere ? Durability::Flushed : Durability::Written);
    if (failed) {
        m_order.reference = {0, 0};
        m_register.ask(velnoext_cancel_sale, RegisterAccess::answerTimeout);
        return failed;
    }
    m_totals = view.totals;
    m_position = {};
    m_sent = {};
    m_isCertain = m_sawOpen = true;
    m_mayBeEnded = m_medicalDone = m_totalsJudged = false;
    m_startSent = false;
    return {};
}

/** One that an earlier process, or the work on another order, has left: nothing can have been sold on it, and
 * of what kind it is nobody remembers. */
OrderWork::End ReceiptWork::clearEmptySale()
{
    m_register.ask(velnoext_cancel_sale, RegisterAccess::answerTimeout);
    m_startSent = false;
    return {}; // and looks again
}

} // namespace Velno::Receipts
