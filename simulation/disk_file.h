// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulation/chance.h"

#include <vector>

namespace Simulation {

/** A file that knows what of it would be left if the power were cut now. */
class DiskFile
{
public:
    qint64 size() const { return qint64(m_bytes.size()); }

    /** Copies what is there. @return how many bytes */
    qint64 read(char *data, qint64 size, qint64 offset) const;

    void write(const char *data, qint64 size, qint64 offset);
    void truncate(qint64 size);
    void flush();

    /** Whether it has been flushed ever: its name is on the disk then. */
    bool isKept() const { return m_isKept; }

    /** Puts back what was written since the last flush but for sectors that chance leaves: all, none or any
     * of them. */
    void cutPower(Chance &chance);

private:
    /** A change since the last flush. */
    struct Change
    {
        qint64 offset;
        std::vector<char> before; ///< what stood there
        qint64 sizeBefore;
    };

    void remember(qint64 offset, qint64 size);

    std::vector<char> m_bytes;
    std::vector<Change> m_changes;
    bool m_isKept = false;
};

} // namespace Simulation
