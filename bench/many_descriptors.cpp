// SPDX-License-Identifier: Apache-2.0

#include "bench/many_descriptors.h"

#include <cstdio>
#include <sys/resource.h>

void allowManyDescriptors()
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    limit.rlim_cur = limit.rlim_max;
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0)
        std::perror("the limit of open descriptors could not be raised");
}
