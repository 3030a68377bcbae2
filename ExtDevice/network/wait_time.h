// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDeadlineTimer>

#include <algorithm>
#include <limits>

namespace Velno {

/** The end of a time-out in ms that begins now: FFFFFFFF is none, others count as at most 2,147,483,647. */
inline QDeadlineTimer deadlineAfter(unsigned int timeout)
{
    constexpr unsigned int noTimeLimit = 0xFFFFFFFF;
    constexpr unsigned int longest = std::numeric_limits<int>::max();
    return timeout == noTimeLimit ? QDeadlineTimer(QDeadlineTimer::Forever)
                                  : QDeadlineTimer(std::min(timeout, longest));
}

} // namespace Velno
