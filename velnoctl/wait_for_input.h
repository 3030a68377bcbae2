// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <array>
#include <poll.h>

namespace VelnoCtl {

enum class Waited { Stop, Resized, Input };

/**
 * Waits until `input` has bytes, its end or an error, or one of the others became readable; -1 for none.
 *
 * @return the first of them
 */
inline Waited waitForInput(int input, int stop, int resized = -1)
{
    std::array<pollfd, 3> waits{pollfd{stop, POLLIN, 0}, pollfd{resized, POLLIN, 0},
                                pollfd{input, POLLIN, 0}};
    for (;;) {
        if (poll(waits.data(), waits.size(), -1) < 0)
            continue; // a signal of no concern here
        for (size_t i = 0; i < waits.size(); ++i) {
            if (waits[i].revents != 0)
                return Waited(i);
        }
    }
}

} // namespace VelnoCtl
