#include "simulator/fiscal_model.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <limits>

namespace Simulator {

namespace {

constexpr std::array table{
    StateRow{State::Starting, "starting", false},
    StateRow{State::Idle, "idle", true},
    StateRow{State::Locked, "locked, waits for a cashier", true},
    StateRow{State::Menu, "in its menu", true},
    StateRow{State::Paying, "a payment is being made", true},
    StateRow{State::SaleOpen, "a sale is open", true},
    StateRow{State::Reporting, "printing a report", true},
    StateRow{State::IdleOtherScreen, "idle with another screen", true},
    StateRow{State::OutOfService, "out of service", false},
};

} // namespace

std::span<const StateRow> stateTable()
{
    return table;
}

bool FiscalModel::isReady() const
{
    return std::ranges::any_of(table,
                               [this](const StateRow &row) { return row.state == m_state && row.ready; });
}

bool FiscalModel::login()
{
    if (!isReady())
        return false;
    m_loggedIn = true;
    return true;
}

bool FiscalModel::logout()
{
    if (m_state == State::SaleOpen || m_state == State::Paying)
        return false;
    m_loggedIn = false;
    return true;
}

std::vector<std::int32_t> FiscalModel::saleSteps() const
{
    if (m_state == State::SaleOpen)
        return {1};
    return {};
}

bool FiscalModel::tellsZ() const
{
    return isReady();
}

std::int32_t FiscalModel::now() const
{
    using namespace std::chrono;
    if (m_stoppedClock)
        return *m_stoppedClock;
    const std::int64_t seconds = floor<std::chrono::seconds>(system_clock::now()).time_since_epoch().count();
    // Answers have 32 bits for it.
    return std::int32_t(std::clamp<std::int64_t>(seconds, 0, std::numeric_limits<std::int32_t>::max()));
}

} // namespace Simulator
