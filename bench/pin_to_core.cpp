// SPDX-License-Identifier: Apache-2.0

#include "bench/pin_to_core.h"

#include <cstdio>
#include <sched.h>

void pinToCore()
{
    cpu_set_t set;
    CPU_ZERO(&set);
    CPU_SET(sched_getcpu(), &set);
    if (sched_setaffinity(0, sizeof set, &set) != 0)
        std::perror("could not be pinned to a core; the figures will scatter");
}
