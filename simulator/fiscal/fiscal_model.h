// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/fiscal/till.h"

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace Simulator {

/** What a register is at. The numbers are those of its answers. */
enum class State : std::int32_t {
    Starting = 0,
    Idle = 1, ///< a sale may be started
    Locked = 2,
    Menu = 3,
    Paying = 4,
    SaleOpen = 5,
    Reporting = 6,
    IdleOtherScreen = 7, ///< a sale may be started
    OutOfService = 8,
};

struct StateRow
{
    State state;
    const char *name;
    bool ready; ///< whether the register serves an application: logs it in, tells its Z number
};

/** Every state, by number from 0 on. */
std::span<const StateRow> stateTable();

/**
 * What a cash register knows and does, without a word of how it is asked: no sockets, no messages. Dates are
 * seconds since 1970 (UTC), amounts kuruş. It sells with a till, which it gives out in states in which it
 * sells.
 */
class FiscalModel
{
public:
    /**
     * A register that is idle and has paper; its clock is the computer's. What it sold, and which Z report is
     * being collected, is what its journal says.
     *
     * @param journal  a file; empty: kept in memory
     */
    explicit FiscalModel(const QByteArray &serial = "UB0000000000", const QString &journal = {});

    /** What is wrong with the journal; nothing may be asked then. Empty when nothing is wrong. */
    const QString &journalProblem() const { return m_journalProblem; }

    /** What the operator should know of it; usually empty. */
    QString journalWarning() const { return m_till.journalWarning(); }

    /** Its journal while that is no file, for whoever checks what is on record. */
    JournalInMemory &journalInMemory() { return m_till.journalInMemory(); }
    const JournalInMemory &journalInMemory() const { return m_till.journalInMemory(); }

    // An application asks -----------------------------------------------------------------------------

    /** Opens the application's session; again is the same as once. @return false: refused */
    bool login();

    /** Ends the session, if there is one. @return false: a sale is open, which would belong to no session */
    bool logout();
    bool isLoggedIn() const { return m_loggedIn; }

    State state() const;

    /** What stands beside the state in its answers: what the display of an open sale says, otherwise nothing.
     */
    std::vector<std::int32_t> saleSteps() const;

    /** What went wrong with the last keys, and what stands in the open sale: bits of RegisterError. */
    std::int32_t error() const { return m_till.error(); }
    std::int32_t tellError() { return m_till.tellError(); } ///< to an application: it has seen it then
    std::int32_t standingError() const { return m_till.standingError(); }

    /** The till; null in a state in which nothing is sold or printed. */
    Till *seller() { return m_elsewhere ? nullptr : &m_till; }

    // Of the open sale; without one there is nothing in them.
    SaleTotals saleTotals() const { return m_till.totals(); }
    ReceiptRef saleReference() const { return m_till.reference(); }
    QList<qint32> saleAcquirers() const { return m_till.saleAcquirers(); } ///< without one: of the last sale

    /** Whether the register can tell its Z number now. */
    bool tellsZ() const;
    std::int32_t zNumber() const { return m_till.z(); }           ///< of the Z report that is being collected
    std::int32_t lastZ() const;                                   ///< when the last one was made; 0: never
    std::int32_t now() const;                                     ///< the register's clock
    std::int64_t saleLimit() const { return m_till.saleLimit(); } ///< what one sale may reach; 0: anything
    bool hasPaper() const { return m_till.hasPaper(); }
    std::optional<SaleTotals> receipt(const ReceiptRef &ref) const { return m_till.receipt(ref); }

    // Its operator sets -------------------------------------------------------------------------------

    /** Whether nothing is on record yet, so that the Z report's number may be chosen. */
    bool isNew() const { return m_till.isNew(); }

    /**
     * Goes there by pressing its keys: an open sale is cancelled unless it leads to a sale, a new one opened
     * when it does. In the states that have nothing to do with selling the till waits as it is.
     *
     * @return false: not now, without paper; nothing has changed then
     */
    bool setState(State state);

    /** @return false: while a sale is open, or that report has been made */
    bool setZNumber(std::int32_t number) { return m_till.setZ(number); }
    bool setLastZ(std::int32_t seconds) { return m_till.setLastZ(seconds); }
    void stopClockAt(std::int32_t seconds) { m_stoppedClock = seconds; }

    /** Its power comes back after a cut: the session is over, an open sale is cancelled. */
    void restart();

    /** Of sales opened from now on. */
    void setSaleLimit(std::int64_t kurus) { m_till.setSaleLimit(kurus); }
    void setPaper(bool paper) { m_till.setPaper(paper ? Till::endlessPaper : 0); }
    void setPrintsLeft(int prints) { m_till.setPaper(prints); }

    /** What is printed goes here. */
    void setPrinter(Till::Output output) { m_till.setOutput(std::move(output)); }

private:
    bool isReady() const;

    Till m_till;
    QString m_journalProblem;
    std::optional<State> m_elsewhere; ///< a state that is none of the till's
    std::optional<std::int32_t> m_stoppedClock;
    bool m_loggedIn = false;
};

} // namespace Simulator
