// SPDX-License-Identifier: Apache-2.0

#include "till/order_work.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

OrderWork::End OrderWork::save(State state, const QString &text, Durability durability)
{
    m_order.state = state;
    m_order.changedAt = m_place.clock.now();
    const Event event{m_order.changedAt, state, m_order.code, m_order.cause, text, {}};
    return m_place.ledger.save(m_order, event, durability) ? End() : WorkEnd::LedgerFailed;
}

WorkEnd OrderWork::settle(State state, const QString &text, Durability durability)
{
    m_order.question = Question::None;
    m_order.answer = Answer::None;
    if (state != State::Refused)
        m_order.code = m_order.cause = 0;
    // The register tells again what was closed on it. Of all else it knows nothing, and somebody has been
    // told.
    const bool isTold = m_order.kind == Kind::Receipt || m_order.kind == Kind::ZReport;
    if (state != State::Closed || !isTold)
        durability = Durability::Flushed;
    return save(state, text, durability).value_or(WorkEnd::Settled);
}

WorkEnd OrderWork::ask(Question question, const QString &text)
{
    const bool isOfNone = isNone(m_order.reference) && m_order.z == 0;
    if (question == Question::OtherRegister && isOfNone)
        m_order.era = m_place.ledger.era(); // it is the one of now that is not here
    m_order.question = question;
    m_order.answer = Answer::None;
    return save(State::NeedsPerson, text).value_or(WorkEnd::NeedsPerson);
}

WorkEnd OrderWork::wait(const Reply &reply, const QString &text)
{
    const bool isKnown =
        m_order.state == State::Waiting && m_order.code == reply.code && m_order.cause == reply.cause;
    m_order.code = reply.code;
    m_order.cause = reply.cause;
    if (isKnown) // no line for each time that somebody asks
        return WorkEnd::Waiting;
    return save(State::Waiting, text).value_or(WorkEnd::Waiting);
}

WorkEnd OrderWork::refuse(const Reply &reply, const QString &text)
{
    m_order.code = reply.code;
    m_order.cause = reply.cause;
    return settle(State::Refused, text);
}

WorkEnd OrderWork::endOf(Looked looked)
{
    switch (looked) {
    case Looked::Told:
    case Looked::Away:
        return wait(m_register.last(), u"the register cannot be reached"_s);
    case Looked::Busy:
        return wait({VelnoResult_WrongState, 0}, u"the register is busy"_s);
    case Looked::Silent:
    case Looked::Unproven:
        return wait({VelnoResult_Refused, 0}, u"the register does not tell how the sale stands"_s);
    case Looked::Replaced:
        return ask(Question::OtherRegister, u"the register's numbers are below those of the ledger"_s);
    case Looked::Stopped:
        return WorkEnd::Stopped;
    }
    return WorkEnd::Stopped;
}

OrderWork::End OrderWork::reach()
{
    switch (m_register.reach()) {
    case RegisterAccess::Reach::Here:
        return {};
    case RegisterAccess::Reach::Away:
        return endOf(Looked::Away);
    case RegisterAccess::Reach::Replaced:
        return endOf(Looked::Replaced);
    case RegisterAccess::Reach::Stopped:
        return WorkEnd::Stopped;
    }
    return WorkEnd::Stopped;
}

bool OrderWork::takeOtherRegister()
{
    return isOfFormerRegister() || m_place.ledger.beginEra();
}

/** Nobody would look for it behind an order that is settled, and none but receipts get past it. Where the
 * register does not cancel it now, the next receipt waits for somebody who does. */
void OrderWork::leaveNoneOpen()
{
    for (int i = 0; i < mostRefusals && m_mayHaveStarted; ++i) {
        View view;
        if (Look(m_place, m_register).at({}, &view) != Looked::Told)
            return;
        m_mayHaveStarted = view.found == Found::Open && isEmpty(view.totals);
        if (m_mayHaveStarted && m_place.rules.hold(Rule::ClearEmptySaleOfDeadProcess))
            m_register.ask(velnoext_cancel_sale, RegisterAccess::answerTimeout);
    }
}

std::optional<Reply> OrderWork::hindrance(const Reply &refusal)
{
    if (isHindrance(refusal))
        return refusal;
    int state = 0;
    const int code = m_register.ask(velnoext_ecr_state, RegisterAccess::answerTimeout, &state);
    const bool isIdle = state == VelnoEcrState_Idle || state == VelnoEcrState_IdleOtherScreen;
    if (code == 0 && !isIdle)
        return Reply{VelnoResult_WrongState, VelnoCause_OfState + state};
    const bool hasPaper =
        m_register.ask(velnoext_check_printer_paper, RegisterAccess::answerTimeout) != VelnoResult_NoPaper;
    return hasPaper ? std::nullopt : std::optional(m_register.last());
}

} // namespace Velno::Receipts
