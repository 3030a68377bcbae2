// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/simulated_disk.h"
#include "simulation/simulated_register.h"
#include "till/till.h"

#include <map>

namespace TestSupport {

/** A till and its register in this process, with a clock that waiting moves on. */
class TillInMemory
{
public:
    explicit TillInMemory(const Velno::Receipts::Rules &rules = {});
    ~TillInMemory();
    Q_DISABLE_COPY_MOVE(TillInMemory)

    /** Hands a receipt over under a key. */
    Velno::Receipts::Outcome sell(const QByteArray &json, const QString &key = QString::fromLatin1("1"));

    /** The process of the till ends where it is, and another one begins: keys and memory are gone. */
    void beginProcess();

    /** Waits for the next command of this name, and the `times` - 1 behind it. */
    void meet(const char *command, const Simulation::Fate &fate, int times = 1);

    /** Receipts that the register has closed, over all registers that there have been. */
    int closed() const;

    /** Sells one receipt that is closed, so that there is something for counter-questions. */
    bool sellFirst();

    Simulation::VirtualClock clock;
    Simulation::SimulatedRegister reg;
    std::unique_ptr<Velno::Receipts::Till> till;
    QList<Velno::Receipts::Stage> stages;
    std::map<std::string, int> commands; ///< how many of each name have come

private:
    struct Meeting
    {
        Simulation::Fate fate;
        int times;
    };

    Velno::Receipts::Rules m_rules;
    Simulation::SimulatedDisk m_disk;
    std::map<std::string, Meeting> m_meetings;
    int m_printed = 0;
};

/** Two lines of 12.50 and what pays them: the inside of "payments". */
QByteArray receiptPaidBy(const QByteArray &payments, const QByteArray &more = {});

} // namespace TestSupport
