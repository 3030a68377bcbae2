// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <chrono>
#include <optional>

namespace Simulator {

/** What a command has made the register and the people at it do. */
struct Work
{
    int lines = 0;  ///< that the printer has printed
    int prints = 0; ///< that it has let go of
    bool cash = false;
    bool card = false;
    bool report = false; ///< the day was closed
};

/** How long that takes: nothing, or as long as with a real register and a real cashier, or some part of it.
 */
class Pace
{
public:
    using Duration = std::chrono::milliseconds;

    static constexpr Duration command{40};
    static constexpr Duration pairingAnswer{500};
    static constexpr Duration line{60};
    static constexpr Duration print{400}; ///< feeding and cutting the paper
    static constexpr Duration cash{3'000};
    static constexpr Duration card{8'000};
    static constexpr Duration report{5'000};

    /** At once. */
    Pace() = default;

    /** `real`, or how many times as fast as that: 0.1 to 1000. */
    static std::optional<Pace> from(const QString &text);
    static QString rule(); ///< what is accepted

    Duration forPairingAnswer() const { return scaled(pairingAnswer); }
    Duration forCommand(const Work &work) const;

private:
    Duration scaled(Duration real) const;

    double m_speed = 0; ///< 0: at once
};

} // namespace Simulator
