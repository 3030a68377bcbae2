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

OrderWork::End OrderWork::takeWord(const QString &done, const QString &again)
{
    switch (m_order.answer) {
    case Answer::None:
        return {};
    case Answer::Paid:
        return settle(State::Closed, done);
    case Answer::Drop:
        return settle(State::Cancelled, u"dropped by a person"_s);
    case Answer::SellAgain:
        break;
    }
    if (m_order.question == Question::OtherRegister && !m_place.ledger.beginEra())
        return WorkEnd::LedgerFailed;
    m_order.z = 0; // the number of the register before
    m_order.isSent = false;
    m_order.question = Question::None;
    m_order.answer = Answer::None;
    return save(State::Accepted, again);
}

} // namespace Velno::Receipts
