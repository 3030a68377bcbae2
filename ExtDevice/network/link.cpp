// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/link.h"

#include "ExtDevice/network/velno_network.h"

#include <algorithm>
#include <utility>

namespace Velno {

int HandleLink::write(const char *data, int size, unsigned int timeout)
{
    return velno_network_write(handle, timeout, data, size);
}

int HandleLink::read(char *buffer, int *size, unsigned int timeout)
{
    return velno_network_read(handle, timeout, buffer, size);
}

int HandleLink::close()
{
    return velno_network_disconnect(std::exchange(handle, 0U));
}

MemoryLink::~MemoryLink()
{
    close();
}

void MemoryLink::join(MemoryLink &one, MemoryLink &other)
{
    one.close();
    other.close();
    one.m_arrived.clear();
    other.m_arrived.clear();
    one.m_other = &other;
    other.m_other = &one;
}

int MemoryLink::write(const char *data, int size, unsigned int)
{
    if (!data)
        return 2;
    if (size <= 0)
        return 3;
    if (!m_other)
        return 5;
    m_other->m_arrived.append(data, size);
    return 0;
}

int MemoryLink::read(char *buffer, int *size, unsigned int)
{
    if (!buffer)
        return 2;
    if (!size || *size <= 0)
        return 3;
    if (m_arrived.isEmpty() && m_other && serveOtherSide)
        serveOtherSide();
    if (m_arrived.isEmpty())
        return m_other ? 6 : 5;
    *size = int(std::min<qsizetype>(*size, m_arrived.size()));
    std::copy_n(m_arrived.cbegin(), *size, buffer);
    m_arrived.remove(0, *size);
    return 0;
}

int MemoryLink::close()
{
    if (!m_other)
        return 3;
    m_other->m_other = nullptr;
    m_other = nullptr;
    return 0;
}

} // namespace Velno
