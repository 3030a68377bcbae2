#pragma once

#include <array>
#include <poll.h>

namespace VelnoCtl {

/** Waits until `input` has bytes, its end or an error. @return false when `stop` became readable */
inline bool waitForInput(int input, int stop)
{
    std::array<pollfd, 2> waits{pollfd{input, POLLIN, 0}, pollfd{stop, POLLIN, 0}};
    for (;;) {
        if (poll(waits.data(), waits.size(), -1) < 0)
            continue; // a signal of no concern here
        if (waits[1].revents != 0)
            return false;
        if (waits[0].revents != 0)
            return true;
    }
}

} // namespace VelnoCtl
