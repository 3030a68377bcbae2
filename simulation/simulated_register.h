// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/velnoext/library_state.h"
#include "simulation/chance.h"
#include "simulation/memory_device.h"
#include "simulation/virtual_clock.h"
#include "simulator/register/command_responder.h"

#include <deque>

namespace Simulation {

/** What happens to one command. */
struct Fate
{
    enum class Answer {
        Given,
        Damaged, ///< its MAC is wrong
        Short,   ///< its last byte is missing
        Never,   ///< the register says nothing on this connection any more
        Lost,    ///< the connection ends
    };

    bool isDone = true;
    bool isRefused = false; ///< done means then that the register says no
    Answer answer = Answer::Given;
    std::function<void()> behind;   ///< called when it is done, before the answer
    QByteArray *recorded = nullptr; ///< takes the answer, as somebody on the line can
    QByteArray replayed;            ///< the answer in place of the register's own
};

/**
 * A register at the other end of connections in memory: the envelopes of the simulated register, its fiscal
 * model, and a journal that lives as long as this object. One connection at a time.
 *
 * An unpaired register gets keys that are drawn by lot: the key exchange takes milliseconds of arithmetic,
 * which would be nearly all that a simulation does, and other tests prove it.
 */
class SimulatedRegister
{
public:
    SimulatedRegister(const QByteArray &serial, VirtualClock &clock, quint64 seed);
    Q_DISABLE_COPY_MOVE(SimulatedRegister)

    /** For Velno::Ext::LibraryState. */
    int connect(Velno::GMP::MatchExt *record, std::unique_ptr<QIODevice> *connection);

    /** Says what becomes of a command that has come; without it all are done and answered. */
    std::function<Fate(const Simulator::CommandRow &command, const Velno::GMP::Items &items)> decide;

    /** Ends the connection. */
    void drop() { m_end.close(); }

    /** Its power is cut and comes back. The connection and the open sale are gone. */
    void cutPower();

    /** It has lost its keys, and ends the connection at the next command. */
    void forgetKeys();

    /** It keeps its number, and everything else is another one's. */
    void replace();

    Simulator::FiscalModel &model() { return m_models.back(); }

    /** All that there have been, the one in use behind the others. */
    const std::deque<Simulator::FiscalModel> &models() const { return m_models; }
    std::deque<Simulator::FiscalModel> &models() { return m_models; }

    const QByteArray &serial() const { return m_serial; }

private:
    void takeFrames();
    void obey(const QByteArray &frame);
    Simulator::CommandResponder::Answer answer(const Simulator::CommandResponder::Request &request,
                                               const Fate &fate);
    void waitInVain();

    QByteArray m_serial;
    VirtualClock &m_clock;
    Chance m_chance;
    std::deque<Simulator::FiscalModel> m_models; ///< each stays where it is
    Simulator::Faults m_noFaults;
    std::unique_ptr<Simulator::CommandResponder> m_commands;
    Velno::MemoryLink m_end;
    bool m_isMute = false;    ///< on this connection it takes nothing and says nothing any more
    bool m_isAwaited = false; ///< the last command wants an answer
};

} // namespace Simulation
