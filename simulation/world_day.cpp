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

/** Whether this is known: that the other one is this one, or was accepted behind it. */
bool isNotBehind(const Handed &handed, const Handed &other)
{
    return handed.order.number != 0 && other.order.number >= handed.order.number;
}

} // namespace

QString World::run()
{
    for (qsizetype first = 0; first < m_plan.steps.size();) {
        qsizetype count = 1;
        while (m_plan.steps.at(first + count - 1).isAhead && first + count < m_plan.steps.size())
            ++count;
        doTurn(first, count);
        if (!m_failure.isEmpty())
            return m_failure;
        first += count;
    }
    lookIntoTheBooks();
    return m_failure;
}

/** Steps whose orders are accepted before the first of them is worked off; mostly a single one. */
void World::doTurn(qsizetype first, qsizetype count)
{
    QList<Mishap> mishaps;
    m_turn.clear();
    for (qsizetype i = first; i < first + count; ++i) {
        const Step &step = m_plan.steps.at(i);
        const QString key = u"k%1"_s.arg(i);
        m_handed.push_back({key, &step, contentOf(step, key), {}, {}, false, false});
        m_turn << &m_handed.back();
        mishaps << step.mishaps;
    }
    m_chance = Chance(m_plan.steps.at(first).seed + 1);
    m_mishaps.begin(mishaps);
    m_hindrances.beginStep();
    m_commandsOfStep = 0;
    m_stepBegan = m_clock.passed();
    m_zBefore = m_truth.zReports();
    QList<Handed *> turn = m_turn;
    for (Handed *const handed : std::as_const(turn)) {
        tell(u"%1: %2"_s.arg(handed->key, QString::fromUtf8(handed->content.json)));
        if (count > 1)
            accept(handed);
    }
    if (count > 1 && m_chance.in100(50)) // whoever asks for the last one works off those before it
        std::ranges::reverse(turn);
    handOverUntilSettled(turn);
    for (Handed *const handed : std::as_const(m_turn))
        conclude(handed);
}

void World::conclude(Handed *handed)
{
    if (!isSettled(handed->order.state))
        fail(u"%1 is not settled when all is repaired"_s.arg(handed->key));
    if (m_failure.isEmpty() && m_chance.in100(20))
        handOverAgain(*handed);
    const bool isReceipt = handed->step->job == Job::Receipt;
    handed->isHindered = m_hindrances.hasRefusedAny() ||
                         (isReceipt ? m_mishaps.hasHindered() : m_mishaps.hasHinderedReports());
    if (!isReceipt)
        return;
    ++m_figures.receipts;
    m_figures.closed += handed->order.state == State::Closed;
    m_figures.refused += handed->order.state == State::Refused;
    m_figures.cancelled += handed->order.state == State::Cancelled;
    m_figures.asked += !handed->asked.isEmpty();
}

void World::handOverUntilSettled(const QList<Handed *> &turn)
{
    for (int i = 0; i < triesUnderMishaps + triesBehind && m_failure.isEmpty(); ++i) {
        if (i == triesUnderMishaps)
            repair();
        bool isDone = true;
        for (Handed *const handed : turn)
            if (!isSettled(handed->order.state))
                isDone = goOn(handed, i > triesUnderMishaps) && isDone;
        if (isDone)
            break;
        m_clock.pass(m_chance.from(1, 20'000));
    }
    repair();
}

/** @return whether it is settled */
bool World::goOn(Handed *handed, bool isRepaired)
{
    const bool isTold = handOver(handed);
    if (isTold && handed->order.state == State::NeedsPerson)
        answer(handed);
    else if (!isTold && isRepaired)
        endTill(); // as one does with a program that says that its disk has failed
    return isTold && isSettled(handed->order.state);
}

/** Calls the till that there is, or a new one, until one does not die of it. @return nothing: none can begin,
 * or none stays alive */
std::optional<Outcome> World::call(const Handed &handed, const std::function<Outcome()> &function)
{
    for (int deaths = 0; deaths < mostDeaths; ++deaths) {
        if (!m_till) {
            const QString problem = startTill();
            tell(u"  a till begins %1"_s.arg(problem));
            if (bury())
                continue;
            if (!problem.isEmpty()) {
                endTill();
                return {};
            }
        }
        const Outcome outcome = function();
        if (bury())
            continue;
        if (outcome.result == Result::BadContent || outcome.result == Result::Conflict)
            fail(u"%1: %2"_s.arg(handed.key, outcome.words.join(u", "_s)));
        return outcome;
    }
    fail(u"%1: the till does not stay alive"_s.arg(handed.key));
    return {};
}

/** What is not accepted now, on a full disk for example, is so when it is handed over. */
void World::accept(Handed *handed)
{
    const auto outcome = call(*handed, [&] {
        return m_till->accept(handed->key, kindOf(handed->step->job), handed->content.json);
    });
    if (outcome && outcome->result == Result::Done)
        handed->order = outcome->order;
}

/** @return whether the order is as the till tells it now */
bool World::handOver(Handed *handed)
{
    const auto outcome = call(*handed, [&] {
        return m_till->perform(handed->key, kindOf(handed->step->job), handed->content.json);
    });
    if (!outcome)
        return false;
    const Order &order = outcome->order;
    if (trace)
        tell(u"  %1 handed over: result %2, state %3, question %4, receipt %5/%6 %7"_s.arg(handed->key)
                 .arg(int(outcome->result))
                 .arg(int(order.state))
                 .arg(int(order.question))
                 .arg(order.reference.first)
                 .arg(order.reference.second)
                 .arg(outcome->words.join(u' ')));
    if (outcome->result != Result::Done)
        return false;
    handed->order = order;
    if (order.state == State::Refused || order.state == State::Cancelled)
        judgeUnsold(handed);
    return true;
}

/** That nothing is sold is told only when nothing is, as far as the register tells. */
void World::judgeUnsold(Handed *handed)
{
    handed->isToldUnsold = true;
    for (const SeenSale &sale : m_truth.sales()) {
        const bool counts = sale.key == handed->key && sale.end == SeenSale::End::Closed && !sale.isGivenBack;
        if (counts && !m_hindrances.isLate(sale.ref))
            fail(u"%1: it is not to be sold, and receipt %2/%3 counts"_s.arg(handed->key)
                     .arg(sale.ref.z)
                     .arg(sale.ref.number));
    }
}

/** When a line of it is sold, nothing that was accepted before it may be unfinished, unless that has waited
 * for a person meanwhile: others go on then, and a sale that they have open goes first. */
void World::checkOrderOf(const QString &key)
{
    if (m_turn.size() < 2)
        return;
    const auto own = std::ranges::find(m_turn, key, &Handed::key);
    for (const Handed *const other : std::as_const(m_turn)) {
        const bool mayBe = isSettled(other->order.state) || !other->asked.isEmpty() ||
                           (own != m_turn.end() && isNotBehind(**own, *other));
        if (mayBe)
            continue;
        const Outcome sold = m_till->find(key);
        const Outcome found = m_till->find(other->key);
        const State state = found.order.state;
        const bool isUnfinished = state == State::Accepted || state == State::Open || state == State::Waiting;
        if (sold.result == Result::Done && found.result == Result::Done &&
            found.order.number < sold.order.number && isUnfinished)
            fail(u"%1 is sold before %2"_s.arg(key, other->key));
    }
}

/** The same comes to the same, and something else is a conflict; neither sells anything. */
void World::handOverAgain(const Handed &handed)
{
    if (!m_till && !startTill().isEmpty())
        return fail(u"the ledger cannot be opened"_s);
    const qsizetype sales = m_truth.sales().size();
    const Kind kind = kindOf(handed.step->job);
    const Outcome same = m_till->perform(handed.key, kind, handed.content.json);
    const bool isAskedNow = same.order.state == State::NeedsPerson && mayBeAskedLate(handed, same.order);
    if (same.result != Result::Done || (same.order.state != handed.order.state && !isAskedNow))
        fail(u"%1: handed over again it is in another state"_s.arg(handed.key));
    QByteArray another = handed.content.json;
    another.replace(" Mal 0", " Mal A").replace(" Te", " Tu");
    if (!another.isEmpty() && m_till->perform(handed.key, kind, another).result != Result::Conflict)
        fail(u"%1: another content is no conflict"_s.arg(handed.key));
    if (m_truth.sales().size() != sales)
        fail(u"%1: handed over again it was sold again"_s.arg(handed.key));
}

/** Whether more of it counts than the till could know of yet. */
bool World::isUntold(const Handed &handed) const
{
    const bool isUnsold = handed.order.state == State::Refused || handed.order.state == State::Cancelled;
    return m_truth.timesClosed(handed.key) > (isUnsold ? 0 : 1) && m_hindrances.wasLate();
}

/** Behind the next receipt that is closed the till learns what it was told too late. */
void World::closeOneMore()
{
    static const Step step{Job::Receipt, 1, 1, false, {}};
    const QString key = u"k%1"_s.arg(m_handed.size());
    m_handed.push_back({key, &step, contentOf(step, key), {}, {}, false, false});
    m_turn = {&m_handed.back()};
    m_commandsOfStep = 0;
    m_stepBegan = m_clock.passed();
    tell(u"%1: one more"_s.arg(key));
    handOverUntilSettled(m_turn);
    answerLateQuestions();
}

void World::lookIntoTheBooks()
{
    endTill(); // what counts is what is on the disk
    if (const QString problem = startTill(); !problem.isEmpty())
        return fail(u"the ledger cannot be opened: "_s + problem);
    answerLateQuestions();
    if (std::ranges::any_of(m_handed, [this](const Handed &handed) { return isUntold(handed); }))
        closeOneMore();
    if (const QString problem = Audit(*m_till, m_handed, m_register.models(), m_truth).run();
        !problem.isEmpty())
        fail(problem);
}

} // namespace Simulation
