// SPDX-License-Identifier: Apache-2.0

#include "simulation/memory_device.h"

#include <algorithm>
#include <limits>

namespace Simulation {

namespace {

constexpr int closedStatus = 5; // of a link whose other end is gone

} // namespace

MemoryDevice::MemoryDevice()
{
    open(ReadWrite | Unbuffered);
}

void MemoryDevice::close()
{
    link.close();
    QIODevice::close();
}

qint64 MemoryDevice::readData(char *data, qint64 most)
{
    int size = int(std::min<qint64>(most, std::numeric_limits<int>::max()));
    int status = link.read(data, &size, 0);
    if (status == 0)
        return size;
    if (status != closedStatus && nothingThere) {
        nothingThere();
        size = int(std::min<qint64>(most, std::numeric_limits<int>::max()));
        status = link.read(data, &size, 0);
    }
    if (status == closedStatus)
        close();
    return status == 0 ? size : 0;
}

qint64 MemoryDevice::writeData(const char *data, qint64 size)
{
    if (link.write(data, int(size), 0) != 0)
        return -1;
    if (written)
        written();
    return size;
}

} // namespace Simulation
