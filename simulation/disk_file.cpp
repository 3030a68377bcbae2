// SPDX-License-Identifier: Apache-2.0

#include "simulation/disk_file.h"

#include <algorithm>
#include <cstddef>

namespace Simulation {

namespace {

constexpr qint64 sectorSize = 512;

enum class Left { Nothing, Everything, AnySector };

} // namespace

qint64 DiskFile::read(char *data, qint64 size, qint64 offset) const
{
    if (offset >= this->size())
        return 0;
    const qint64 count = std::min(size, this->size() - offset);
    std::copy_n(m_bytes.data() + offset, count, data);
    return count;
}

void DiskFile::remember(qint64 offset, qint64 size)
{
    Change change{offset, {}, this->size()};
    if (offset < this->size())
        change.before.assign(m_bytes.data() + offset, m_bytes.data() + std::min(offset + size, this->size()));
    m_changes.push_back(std::move(change));
}

void DiskFile::write(const char *data, qint64 size, qint64 offset)
{
    remember(offset, size);
    if (offset + size > this->size())
        m_bytes.resize(size_t(offset + size));
    std::copy_n(data, size, m_bytes.data() + offset);
}

void DiskFile::truncate(qint64 size)
{
    if (size >= this->size())
        return;
    remember(size, this->size() - size);
    m_bytes.resize(size_t(size));
}

void DiskFile::flush()
{
    m_changes.clear();
    m_isKept = true;
}

void DiskFile::cutPower(Chance &chance)
{
    const auto left = Left(chance.below(3));
    const std::vector<char> written = m_bytes;
    for (; !m_changes.empty(); m_changes.pop_back()) {
        const Change &change = m_changes.back();
        m_bytes.resize(size_t(change.sizeBefore));
        std::copy(change.before.cbegin(), change.before.cend(),
                  m_bytes.begin() + std::ptrdiff_t(change.offset));
    }
    if (left == Left::Nothing)
        return;
    if (left == Left::Everything || chance.in100(50))
        m_bytes.resize(written.size());
    for (qint64 at = 0; at < std::min(size(), qint64(written.size())); at += sectorSize) {
        if (left == Left::AnySector && chance.in100(50))
            continue;
        const qint64 end = std::min({at + sectorSize, size(), qint64(written.size())});
        const auto from = std::ptrdiff_t(at);
        std::copy(written.cbegin() + from, written.cbegin() + std::ptrdiff_t(end), m_bytes.begin() + from);
    }
}

} // namespace Simulation
