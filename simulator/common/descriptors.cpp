// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/descriptors.h"

#include <algorithm>
#include <sys/resource.h>

namespace Simulator {

namespace {

constexpr rlim_t mostConnections = 20'000;
constexpr rlim_t otherDescriptors = 64; // the program's own: standard streams, ports, libraries

} // namespace

size_t roomForConnections()
{
    rlimit limit{};
    getrlimit(RLIMIT_NOFILE, &limit);
    const rlim_t wanted = std::min(limit.rlim_max, mostConnections + otherDescriptors);
    if (limit.rlim_cur < wanted) {
        limit.rlim_cur = wanted;
        setrlimit(RLIMIT_NOFILE, &limit);
        getrlimit(RLIMIT_NOFILE, &limit);
    }
    const rlim_t room = std::min(limit.rlim_cur, mostConnections + otherDescriptors);
    return size_t(room - std::min(room, otherDescriptors));
}

} // namespace Simulator
