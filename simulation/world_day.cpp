// SPDX-License-Identifier: Apache-2.0

#include "simulation/audit.h"
#include "simulation/world.h"

#include <algorithm>

using namespace Qt::StringLiterals;
using namespace Velno::Receipts;

namespace Simulation {

namespace {

constexpr int triesUnderMishaps = 3;
constexpr int triesBehind = 12;
constexpr int mostDeaths = 20; // in a row
const QString person = u"Ayşe"_s;

Kind kindOf(Job job)
{
    switch (job) {
    case Job::Receipt:
        return Kind::Receipt;
    case Job::ZReport:
        return Kind::ZReport;
    case Job::XReport:
        return Kind::XReport;
    case Job::Slip:
        return Kind::Slip;
    }
    return Kind::Receipt;
}

} // namespace

QString World::run()
{
    for (const Step &step : std::as_const(m_plan.steps)) {
        doStep(step, int(m_handed.size()));
        if (!m_failure.isEmpty())
            return m_failure;
    }
    lookIntoTheBooks();
    return m_failure;
}

void World::doStep(const Step &step, int number)
{
    const QString key = u"k%1"_s.arg(number);
    m_handed.push_back({key, &step, contentOf(step, key), {}, {}, false});
    Handed &handed = m_handed.back();
    m_chance = Chance(step.seed + 1);
    m_mishaps.begin(step.mishaps);
    m_hindrances.beginStep();
    m_commandsOfStep = 0;
    m_stepBegan = m_clock.passed();
    m_zBefore = m_truth.zReports();
    tell(u"%1: %2"_s.arg(key, QString::fromUtf8(handed.content.json)));
    handOverUntilSettled(&handed);
    if (!isSettled(handed.order.state))
        fail(u"%1 is not settled when all is repaired"_s.arg(key));
    if (m_failure.isEmpty() && m_chance.in100(20))
        handOverAgain(handed);
    handed.isHindered = m_hindrances.hasRefusedAny() || m_mishaps.hasHindered();
    if (step.job != Job::Receipt)
        return;
    ++m_figures.receipts;
    m_figures.closed += handed.order.state == State::Closed;
    m_figures.refused += handed.order.state == State::Refused;
    m_figures.cancelled += handed.order.state == State::Cancelled;
    m_figures.asked += !handed.asked.isEmpty();
}

void World::handOverUntilSettled(Handed *handed)
{
    for (int i = 0; i < triesUnderMishaps + triesBehind && m_failure.isEmpty(); ++i) {
        if (i == triesUnderMishaps)
            repair();
        const bool isTold = handOver(handed);
        if (isTold && isSettled(handed->order.state))
            break;
        if (isTold && handed->order.state == State::NeedsPerson)
            answer(handed);
        else if (!isTold && i > triesUnderMishaps)
            endTill(); // as one does with a program that says that its disk has failed
        m_clock.pass(m_chance.from(1, 20'000));
    }
    repair();
}

/** @return whether the order is as the till tells it now */
bool World::handOver(Handed *handed)
{
    for (int deaths = 0; deaths < mostDeaths; ++deaths) {
        if (!m_till) {
            const QString problem = startTill();
            tell(u"  a till begins %1"_s.arg(problem));
            if (bury())
                continue;
            if (!problem.isEmpty()) {
                endTill();
                return false;
            }
        }
        const Outcome outcome = m_till->perform(handed->key, kindOf(handed->step->job), handed->content.json);
        tell(u"  handed over: result %1, state %2, question %3, receipt %4/%5 %6"_s.arg(int(outcome.result))
                 .arg(int(outcome.order.state))
                 .arg(int(outcome.order.question))
                 .arg(outcome.order.reference.first)
                 .arg(outcome.order.reference.second)
                 .arg(outcome.words.join(u' ')));
        if (bury())
            continue;
        if (outcome.result == Result::BadContent || outcome.result == Result::Conflict)
            fail(u"%1: %2"_s.arg(handed->key, outcome.words.join(u", "_s)));
        if (outcome.result != Result::Done)
            return false;
        handed->order = outcome.order;
        return true;
    }
    fail(u"%1: the till does not stay alive"_s.arg(handed->key));
    return false;
}

/** The same comes to the same, and something else is a conflict; neither sells anything. */
void World::handOverAgain(const Handed &handed)
{
    if (!m_till && !startTill().isEmpty())
        return fail(u"the ledger cannot be opened"_s);
    const qsizetype sales = m_truth.sales().size();
    const Kind kind = kindOf(handed.step->job);
    const Outcome same = m_till->perform(handed.key, kind, handed.content.json);
    if (same.result != Result::Done || same.order.state != handed.order.state)
        fail(u"%1: handed over again it is in another state"_s.arg(handed.key));
    QByteArray another = handed.content.json;
    another.replace(" Mal 0", " Mal A").replace(" Te", " Tu");
    if (!another.isEmpty() && m_till->perform(handed.key, kind, another).result != Result::Conflict)
        fail(u"%1: another content is no conflict"_s.arg(handed.key));
    if (m_truth.sales().size() != sales)
        fail(u"%1: handed over again it was sold again"_s.arg(handed.key));
}

// The person -----------------------------------------------------------------------------------------------

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
               m_register.models().size() > 1 || !std::ranges::any_of(m_handed, [](const Handed &other) {
                   return other.order.state == State::Closed && other.order.reference.second != 0;
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
    case Question::CountedTwice:
        return m_truth.timesClosed(handed.key) > 1 && m_hindrances.hasRefused(u"receipt"_s);
    case Question::SlipPrinted:
        return m_mishaps.happened() > 0;
    case Question::None:
    case Question::NotOurs: // nobody works on the register itself
        break;
    }
    return false;
}

/** Of a receipt that was taken for cancelled the register may tell as late as behind the next one; and that
 * one was closed may be lost with the power, and the register with it. */
void World::answerLateQuestions()
{
    constexpr int mostQuestions = 3; // the answer to one may bring up another
    for (Handed &handed : m_handed) {
        if (handed.order.state == State::NeedsPerson)
            continue;
        for (int asked = 0; asked < mostQuestions && m_failure.isEmpty(); ++asked) {
            const Order now = m_till->find(handed.key).order;
            if (now.state != State::NeedsPerson)
                break;
            answerLateQuestion(&handed, now);
        }
    }
}

void World::answerLateQuestion(Handed *handed, const Order &now)
{
    handed->order = now;
    const bool isTwice = now.question == Question::CountedTwice && m_truth.timesClosed(handed->key) > 1;
    const bool isElsewhere = now.question == Question::OtherRegister && m_register.models().size() > 1;
    // It was told as closed, and that was lost with a till that died before the next flush.
    const bool isUntold = now.question == Question::ReceiptUnknown && m_figures.deaths > 0;
    if (!isTwice && !isElsewhere && !isUntold)
        fail(u"%1: question %2 comes too late"_s.arg(handed->key).arg(int(now.question)));
    handed->asked << now.question;
    ++m_figures.questions.at(size_t(now.question));
    m_till->answer(handed->key, Answer::Paid, person);
    handOver(handed);
}

void World::lookIntoTheBooks()
{
    endTill(); // what counts is what is on the disk
    if (const QString problem = startTill(); !problem.isEmpty())
        return fail(u"the ledger cannot be opened: "_s + problem);
    answerLateQuestions();
    if (const QString problem = Audit(*m_till, m_handed, m_register.models(), m_truth).run();
        !problem.isEmpty())
        fail(problem);
}

} // namespace Simulation
