#pragma once

#include <algorithm>
#include <limits>

namespace Velno {

/** A time-out in ms as Qt's waits take it: FFFFFFFF waits without limit, others at most 2,147,483,647. */
inline int waitTime(unsigned int timeout)
{
    constexpr unsigned int noTimeLimit = 0xFFFFFFFF;
    constexpr int longest = std::numeric_limits<int>::max();
    return timeout == noTimeLimit ? -1 : int(std::min(timeout, unsigned(longest)));
}

} // namespace Velno
