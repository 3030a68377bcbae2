#pragma once

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
 * seconds since 1970 (UTC), amounts kuruş. A plain value.
 */
class FiscalModel
{
public:
    /** A register that is idle, has paper and has not made a Z report yet; its clock is the computer's. */
    FiscalModel() = default;

    // An application asks -----------------------------------------------------------------------------

    /** Opens the application's session; again is the same as once. @return false: refused */
    bool login();

    /** Ends the session, if there is one. @return false: a sale is open, which would be nobody's */
    bool logout();
    bool isLoggedIn() const { return m_loggedIn; }

    State state() const { return m_state; }

    /** What stands beside the state in its answers: 1 while a sale takes what it is given, otherwise nothing.
     */
    std::vector<std::int32_t> saleSteps() const;

    /** The number of what went wrong in the open sale; 0 for nothing. */
    std::int32_t error() const { return 0; }

    /** Whether the register can tell its Z number now. */
    bool tellsZ() const;
    std::int32_t zNumber() const { return m_zNumber; }     ///< of the Z report that is being collected
    std::int32_t lastZ() const { return m_lastZ; }         ///< when the last one was made; 0: never
    std::int32_t now() const;                              ///< the register's clock
    std::int64_t saleLimit() const { return m_saleLimit; } ///< what one sale may reach
    bool hasPaper() const { return m_paper; }

    // Its operator sets -------------------------------------------------------------------------------

    void setState(State state) { m_state = state; }
    void setZNumber(std::int32_t number) { m_zNumber = number; }
    void setLastZ(std::int32_t seconds) { m_lastZ = seconds; }
    void stopClockAt(std::int32_t seconds) { m_stoppedClock = seconds; }
    void setSaleLimit(std::int64_t kurus) { m_saleLimit = kurus; }
    void setPaper(bool paper) { m_paper = paper; }

private:
    bool isReady() const;

    State m_state = State::Idle;
    std::int32_t m_zNumber = 1;
    std::int32_t m_lastZ = 0;
    std::optional<std::int32_t> m_stoppedClock;
    std::int64_t m_saleLimit = 1'200'000;
    bool m_paper = true;
    bool m_loggedIn = false;
};

} // namespace Simulator
