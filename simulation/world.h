// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/clerk.h"
#include "simulation/figures.h"
#include "simulation/handed.h"
#include "simulation/hindrances.h"
#include "simulation/mishaps.h"
#include "simulation/simulated_disk.h"
#include "simulation/truth.h"
#include "till/till.h"

namespace Simulation {

/**
 * One till, one register and one ledger for one day. A mishap that kills the till leaves a dead one: nothing
 * that it does has any effect, and the next one begins with what is on the disk.
 */
class World
{
public:
    /** @param rules  those that hold */
    World(const Plan &plan, const Velno::Receipts::Rules &rules);
    ~World();
    Q_DISABLE_COPY_MOVE(World)

    /** Is told all that happens; may be empty. */
    std::function<void(const QString &line)> trace;

    /** @return empty; or what should not have happened */
    QString run();

    const Figures &figures() const { return m_figures; }

private:
    using Order = Velno::Receipts::Order;
    using Outcome = Velno::Receipts::Outcome;

    // What happens to the register and the till
    int connect(Velno::GMP::MatchExt *record, std::unique_ptr<QIODevice> *connection);
    Fate decide(const Simulator::CommandRow &command, const Velno::GMP::Items &items);
    void noteTold(const Simulator::CommandRow &command, const Velno::GMP::Items &items);
    void befall(const Mishap &mishap, const Simulator::CommandRow &command, const Velno::GMP::Items &items,
                Fate *fate);
    void befallTill(MishapKind kind, Fate *fate);
    bool touchDisk(DiskWork work);
    void see(const Velno::GMP::Items &items);
    void cutRegister(int milliseconds);
    void replaceRegister();
    void kill(bool power);
    void repair();

    // The life of a till
    QString startTill();
    void endTill();
    bool bury();

    // A day
    void doTurn(qsizetype first, qsizetype count);
    void conclude(Handed *handed);
    void handOverUntilSettled(const QList<Handed *> &turn);
    bool goOn(Handed *handed, bool isRepaired);
    std::optional<Outcome> call(const Handed &handed, const std::function<Outcome()> &function);
    void accept(Handed *handed);
    bool handOver(Handed *handed);
    void checkOrderOf(const QString &key);
    void handOverAgain(const Handed &handed);
    void answer(Handed *handed);
    Velno::Receipts::Answer honestAnswer(const Handed &handed);
    bool isDone(const Handed &handed) const;
    void judgeQuestion(const Handed &handed);
    bool couldNotBeKnown(const Handed &handed) const;
    bool countsAnew(const Handed &handed) const;
    void judgeUnsold(Handed *handed);
    bool isUntold(const Handed &handed) const;
    bool mayBeAskedLate(const Handed &handed, const Order &now) const;
    void answerLateQuestions();
    void answerLateQuestion(Handed *handed, const Velno::Receipts::Order &now);
    void closeOneMore();
    void lookIntoTheBooks();

    void tell(const QString &line) const;
    void fail(const QString &what);

    Plan m_plan;
    Velno::Receipts::Rules m_rules;
    Chance m_chance;
    VirtualClock m_clock;
    SimulatedDisk m_disk;
    SimulatedRegister m_register;
    Hindrances m_hindrances{m_register, m_clock};
    Mishaps m_mishaps;
    Truth m_truth;
    Clerk m_clerk{m_register, m_clock, m_truth};
    std::unique_ptr<Velno::Receipts::Till> m_till;
    std::deque<Handed> m_handed;
    QList<Handed *> m_turn; ///< what was accepted together, in this order
    Figures m_figures;
    QString m_failure;
    qint64 m_awayUntil = 0; ///< the register starts
    qint64 m_stepBegan = 0;
    int m_commandsOfStep = 0;
    int m_zBefore = 0;
    bool m_isDead = false;
};

} // namespace Simulation
