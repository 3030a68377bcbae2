// SPDX-License-Identifier: Apache-2.0

#include "simulation/world.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

namespace Simulation {

namespace {

const QString person = u"Ayşe"_s;

} // namespace

void World::answer(Handed *handed)
{
    judgeQuestion(*handed);
    handed->asked << handed->order.question;
    ++m_figures.questions.at(size_t(handed->order.question));
    const Answer given = honestAnswer(*handed);
    tell(u"  a person answers %1"_s.arg(int(given)));
    m_truth.noteAnswer(handed->key);
    m_till->answer(handed->key, given, person);
    bury();
}

/** Somebody who looks at the paper, and into the register's books. */
Answer World::honestAnswer(const Handed &handed)
{
    // What was closed with somebody else's lines is taken back, or is right as it is.
    if (handed.order.question == Question::NotOurs && m_chance.in100(60))
        m_truth.giveBack(handed.key);
    if (handed.order.question == Question::CountedTwice || isDone(handed))
        return Answer::Paid;
    return m_chance.in100(80) ? Answer::SellAgain : Answer::Drop;
}

bool World::isDone(const Handed &handed) const
{
    switch (handed.step->job) {
    case Job::Receipt:
        return m_truth.timesClosed(handed.key) > 0;
    case Job::ZReport:
        return m_truth.zReports() > m_zBefore;
    case Job::Slip:
        return m_truth.slips(handed.key) > 0;
    case Job::XReport:
        break;
    }
    return false;
}

void World::judgeQuestion(const Handed &handed)
{
    if (!couldNotBeKnown(handed))
        fail(u"%1: question %2 could have been answered without a person"_s.arg(handed.key)
                 .arg(int(handed.order.question)));
}

/** Whether nothing that the till can see tells the answer. */
bool World::couldNotBeKnown(const Handed &handed) const
{
    const auto ended = [&](SeenSale::End end) {
        return [&handed, end](const SeenSale &sale) { return sale.key == handed.key && sale.end == end; };
    };
    const auto &sales = m_truth.sales();
    switch (handed.order.question) {
    case Question::ReceiptUnknown: // the register said no, or there is nothing to compare its no with
        return m_hindrances.hasRefused(u"receipt"_s) || m_hindrances.hasRefused(u"sale-state"_s) ||
               m_register.models().size() > 1 || !std::ranges::any_of(m_handed, [this](const Handed &other) {
                   const bool isTold = other.asked.isEmpty(); // by the register, and not by a person
                   return isTold && other.order.state == State::Closed && other.order.reference.second != 0 &&
                          std::ranges::find(m_turn, &other) == m_turn.end();
               });
    case Question::MoneyTaken: // a payment may have been under way
        return m_hindrances.hasRefused(u"receipt"_s) || std::ranges::any_of(sales, [&](const SeenSale &sale) {
                   return ended(SeenSale::End::Cancelled)(sale) &&
                          (sale.mayBePaid || m_mishaps.hasForgotten());
               });
    case Question::PaymentRefused:
        return m_hindrances.hasRefusedAny() || m_mishaps.hasHindered();
    case Question::OtherRegister:
        return m_register.models().size() > 1;
    case Question::CountedTwice: // no refusal agrees ten times with the counter-question
        return countsAnew(handed);
    case Question::SlipPrinted:
        return m_mishaps.happened() > 0;
    case Question::NotOurs:
        return std::ranges::any_of(sales, [&](const SeenSale &sale) {
            if (sale.key == handed.key)
                return sale.isTouched;
            // What somebody sells on a register that has taken the place may bear the number of the order's.
            return m_register.models().size() > 1 && sale.key == Clerk::key() &&
                   sale.ref.z == handed.order.reference.first &&
                   sale.ref.number == handed.order.reference.second;
        });
    case Question::None:
        break;
    }
    return false;
}

/** Whether more of its receipts count than anybody has been told. */
bool World::countsAnew(const Handed &handed) const
{
    return m_truth.timesClosed(handed.key) > (handed.isToldUnsold ? 0 : 1) && m_hindrances.wasLate();
}

/** Of a receipt that was taken for cancelled the register may tell as late as behind the next one; and that
 * one was closed may be lost with the power, and the register with it. */
void World::answerLateQuestions()
{
    constexpr int mostRounds = 3; // the answer to one may bring up another
    for (int round = 0; round < mostRounds && m_failure.isEmpty(); ++round) {
        QList<Order> waiting;
        if (!m_till->forEach({State::NeedsPerson}, [&](const Order &order) { waiting << order; }))
            fail(u"the ledger cannot be read"_s);
        for (const Order &order : waiting) {
            const auto handed = std::ranges::find(m_handed, order.key, &Handed::key);
            if (handed != m_handed.end() && m_failure.isEmpty())
                answerLateQuestion(&*handed, order);
        }
    }
}

/** Whether an order that was told as settled may come to this question all the same. */
bool World::mayBeAskedLate(const Handed &handed, const Order &now) const
{
    switch (now.question) {
    case Question::CountedTwice:
        return countsAnew(handed);
    case Question::OtherRegister:
        return m_register.models().size() > 1;
    case Question::ReceiptUnknown: // that it was closed was lost with a till that died before the next flush
        return m_figures.deaths > 0;
    default:
        return false;
    }
}

void World::answerLateQuestion(Handed *handed, const Order &now)
{
    handed->order = now;
    if (!mayBeAskedLate(*handed, now))
        fail(u"%1: question %2 comes too late"_s.arg(handed->key).arg(int(now.question)));
    handed->asked << now.question;
    ++m_figures.questions.at(size_t(now.question));
    m_till->answer(handed->key, Answer::Paid, person);
    handOver(handed);
}

} // namespace Simulation
