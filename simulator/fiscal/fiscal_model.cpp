// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/fiscal_model.h"

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

struct StateScreen
{
    State state;
    Screen screen;
};

/** The states that the till's own display leads to. */
constexpr std::array screens{
    StateScreen{State::Idle, Screen::Idle},
    StateScreen{State::IdleOtherScreen, Screen::Menu},
    StateScreen{State::SaleOpen, Screen::Sale},
};

constexpr qint64 usualSaleLimit = 1'200'000;

} // namespace

std::span<const StateRow> stateTable()
{
    return table;
}

FiscalModel::FiscalModel(const QByteArray &serial, const QString &journal)
    : m_till(serial, [this] { return now(); })
    , m_journalProblem(m_till.open(journal))
{
    m_till.setSaleLimit(usualSaleLimit);
}

State FiscalModel::state() const
{
    if (m_elsewhere)
        return *m_elsewhere;
    const auto row = std::ranges::find(screens, m_till.screen(), &StateScreen::screen);
    return row == screens.end() ? State::SaleOpen : row->state; // what is typed or asked there
}

bool FiscalModel::isReady() const
{
    return std::ranges::any_of(table,
                               [this](const StateRow &row) { return row.state == state() && row.ready; });
}

bool FiscalModel::setState(State state)
{
    const auto row = std::ranges::find(screens, state, &StateScreen::state);
    if (row == screens.end()) {
        m_elsewhere = state;
        return true;
    }
    if (!m_till.goTo(row->screen))
        return false;
    m_elsewhere.reset();
    return true;
}

void FiscalModel::restart()
{
    m_till.restart();
    m_elsewhere.reset();
    m_loggedIn = false;
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
    if (m_till.saleIsOpen() || state() == State::Paying)
        return false;
    m_loggedIn = false;
    return true;
}

std::vector<std::int32_t> FiscalModel::saleSteps() const
{
    if (state() == State::SaleOpen)
        return {m_till.display()};
    return {};
}

bool FiscalModel::tellsZ() const
{
    return isReady();
}

std::int32_t FiscalModel::lastZ() const
{
    return std::int32_t(m_till.lastZ()); // it came from now()
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
