// SPDX-License-Identifier: Apache-2.0

#include "till/report_work.h"

#include "till/receipt_json.h"
#include "till/slip_printing.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr int mostLosses = 8; // in all

} // namespace

// What they have in common ---------------------------------------------------------------------------------

OrderWork::End ReportWork::takeWord(const QString &done, const QString &again)
{
    if (m_order.answer == Answer::None)
        return {};
    if (m_order.question == Question::OtherRegister && !takeOtherRegister())
        return WorkEnd::LedgerFailed;
    if (m_order.answer == Answer::Paid)
        return settle(State::Closed, done);
    if (m_order.answer == Answer::Drop)
        return settle(State::Cancelled, u"dropped by a person"_s);
    m_order.z = 0; // the number of the register before
    m_order.isSent = false;
    m_order.question = Question::None;
    m_order.answer = Answer::None;
    return save(State::Accepted, again);
}

OrderWork::End ReportWork::concludeRefusal(const QString &text)
{
    const Reply refusal = m_register.last();
    if (const std::optional<Reply> reply = hindrance(refusal))
        return concludeHindrance(*reply);
    if (++m_refusals < mostRefusals)
        return pauseBehind(m_refusals) ? End() : WorkEnd::Stopped;
    return refuse(refusal, text);
}

OrderWork::End ReportWork::concludeHindrance(const Reply &reply)
{
    m_isHindered = true;
    if (reply.cause == int(VelnoCause_OfState) + VelnoEcrState_SaleOpen)
        leaveNoneOpen(); // it may be one that nobody works on any more
    m_place.tell(Stage::Busy);
    if (m_patience.isOver())
        return wait(reply, u"the register is busy"_s);
    return m_patience.pause() ? End() : WorkEnd::Stopped;
}

OrderWork::End ReportWork::concludeLoss()
{
    return ++m_losses < mostLosses ? End() : wait(m_register.last(), u"answers are lost"_s);
}

// Z reports ------------------------------------------------------------------------------------------------

WorkEnd ZReportWork::run()
{
    End end = takeWord(u"made, as a person has said"_s, u"to be made, as a person has said"_s);
    while (!end)
        end = m_place.isStopping ? WorkEnd::Stopped : makeOnce();
    return *end;
}

/** Unless an earlier attempt has made it. */
OrderWork::End ZReportWork::makeOnce()
{
    if (m_order.z != 0 && isOfFormerRegister()) // what another one counts says nothing
        return endOf(Looked::Replaced);
    int z = 0;
    if (const End end = askForNumber(&z))
        return end;
    if (z == 0) // not told
        return {};
    if (m_order.z == 0) {
        m_order.z = z;
        m_order.era = m_place.ledger.era();
        if (const End failed = save(State::Open, u"the Z report is being made"_s, Durability::Flushed))
            return failed;
    }
    if (z > m_order.z)
        return settle(State::Closed, u"made"_s);
    if (z < m_order.z)
        return endOf(Looked::Replaced);
    if (m_isSaidToBeMade) // never twice for one that is counted in the register's own time
        return concludeUntold({VelnoResult_StepNotTaken, 0},
                              u"the register says it is made, and counts none"_s);
    m_place.tell(Stage::Reporting);
    const int code = m_register.ask(velnoext_z_report);
    m_isSaidToBeMade = code == 0; // its number tells
    if (m_isSaidToBeMade)
        return {};
    return isLost(code) ? concludeLoss() : concludeRefusal(u"the register refuses the Z report"_s);
}

/** @param z  stays 0 when it is to be asked again */
OrderWork::End ZReportWork::askForNumber(int *z)
{
    if (const End end = reach())
        return end;
    int current = 0;
    const int code = m_register.ask(velnoext_current_z, RegisterAccess::answerTimeout, &current);
    if (code == 0) {
        *z = current;
        return {};
    }
    if (isLost(code))
        return concludeLoss();
    return concludeUntold(m_register.last(), u"the register does not tell its Z number"_s);
}

OrderWork::End ZReportWork::concludeUntold(const Reply &reply, const QString &text)
{
    if (++m_untold >= mostLosses)
        return wait(reply, text);
    return pauseBehind(m_untold) ? End() : WorkEnd::Stopped;
}

// X reports ------------------------------------------------------------------------------------------------

WorkEnd XReportWork::run()
{
    End end = takeWord(u"made, as a person has said"_s, u"to be made, as a person has said"_s);
    while (!end)
        end = m_place.isStopping ? WorkEnd::Stopped : printOnce();
    return *end;
}

OrderWork::End XReportWork::printOnce()
{
    if (const End end = reach())
        return end;
    m_place.tell(Stage::Reporting);
    const int code = m_register.ask(velnoext_x_report);
    if (code == 0)
        return settle(State::Closed, u"made"_s);
    return isLost(code) ? concludeLoss() : concludeRefusal(u"the register refuses the X report"_s);
}

// Slips ----------------------------------------------------------------------------------------------------

WorkEnd SlipWork::run()
{
    End end = takeWord(u"printed, as a person has said"_s, u"to be printed again, as a person has said"_s);
    if (!end && m_order.isSent)
        end = ask(Question::SlipPrinted, u"it was on its way when the work on it ended"_s);
    while (!end)
        end = m_place.isStopping ? WorkEnd::Stopped : printOnce();
    return *end;
}

OrderWork::End SlipWork::printOnce()
{
    if (const End end = reach())
        return end;
    // That it is on its way is flushed each time before it is: not as long as it would come to nothing.
    const std::optional<Reply> reply = m_isHindered ? hindrance({}) : std::nullopt;
    if (reply)
        return concludeHindrance(*reply);
    if (!m_order.isSent) {
        m_order.isSent = true;
        if (const End failed = save(State::Open, u"the slip is being printed"_s, Durability::Flushed))
            return failed;
    }
    m_place.tell(Stage::Printing);
    const int code = printSlip(m_register, readSlip(m_order.content).value);
    if (code == 0)
        return settle(State::Closed, u"printed"_s);
    if (leavesOpen(code))
        return ask(Question::SlipPrinted, u"the answer to it was lost"_s);
    m_order.isSent = false;
    if (code == VelnoResult_NotReady) // there was no connection to send it on
        return concludeLoss();
    return concludeRefusal(u"the register refuses the slip"_s);
}

} // namespace Velno::Receipts
