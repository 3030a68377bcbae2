// SPDX-License-Identifier: Apache-2.0

#include "till/report_work.h"

#include "till/receipt_json.h"
#include "till/slip_printing.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

namespace {

constexpr int mostLosses = 8;

} // namespace

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
    int z = 0;
    if (const End end = askForNumber(&z))
        return end;
    if (z == 0) // not told
        return {};
    if (m_order.z == 0) {
        m_order.z = z;
        if (const End failed = save(State::Open, u"the Z report is being made"_s, Durability::Flushed))
            return failed;
    }
    if (z > m_order.z)
        return settle(State::Closed, u"made"_s);
    if (z < m_order.z)
        return endOf(Looked::Replaced);
    m_place.tell(Stage::Reporting);
    const int code = m_register.ask(velnoext_z_report);
    if (code == 0 || isLost(code)) // its number tells
        return code == 0 || ++m_losses < mostLosses ? End() : wait(m_register.last(), u"answers are lost"_s);
    if (++m_refusals < mostRefusals)
        return pauseBehind(m_refusals) ? End() : WorkEnd::Stopped;
    return refuse(m_register.last(), u"the register refuses the Z report"_s);
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
    int &count = isLost(code) ? m_losses : m_refusals;
    if (++count >= mostLosses)
        return wait(m_register.last(), u"the register does not tell its Z number"_s);
    return isLost(code) || pauseBehind(count) ? End() : WorkEnd::Stopped;
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
    const Reply reply = m_register.last();
    if (code == 0)
        return settle(State::Closed, u"made"_s);
    if (isLost(code))
        return ++m_losses < mostLosses ? End() : wait(reply, u"answers are lost"_s);
    if (code == VelnoResult_WrongState || reply.cause == VelnoCause_PaperOut) {
        if (m_patience.isOver())
            return wait(reply, u"the register is busy"_s);
        return m_patience.pause() ? End() : WorkEnd::Stopped;
    }
    if (++m_refusals < mostRefusals)
        return pauseBehind(m_refusals) ? End() : WorkEnd::Stopped;
    return refuse(reply, u"the register refuses the X report"_s);
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
    if (!m_order.isSent) {
        m_order.isSent = true;
        if (const End failed = save(State::Open, u"the slip is being printed"_s, Durability::Flushed))
            return failed;
    }
    m_place.tell(Stage::Printing);
    const int code = printSlip(m_register, readSlip(m_order.content).value);
    const Reply reply = m_register.last();
    if (code == 0)
        return settle(State::Closed, u"printed"_s);
    if (leavesOpen(code))
        return ask(Question::SlipPrinted, u"the answer to it was lost"_s);
    if (code == VelnoResult_NotReady) { // there was no connection to send it on
        m_order.isSent = false;
        return {};
    }
    if (++m_refusals < mostRefusals)
        return pauseBehind(m_refusals) ? End() : WorkEnd::Stopped;
    m_order.isSent = false;
    return refuse(reply, u"the register refuses the slip"_s);
}

} // namespace Velno::Receipts
