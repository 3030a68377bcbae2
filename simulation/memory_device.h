// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/network/link.h"

#include <QIODevice>

#include <functional>

namespace Simulation {

/** The library's end of a connection in memory. Nothing waits: the other side works when something is
 * written. */
class MemoryDevice final : public QIODevice
{
public:
    MemoryDevice();

    Velno::MemoryLink link;

    /** The other side takes what was written. */
    std::function<void()> written;

    /** Nothing is there to be read. It may be an answer that is waited for in vain. */
    std::function<void()> nothingThere;

    bool isSequential() const override { return true; }
    void close() override;

protected:
    qint64 readData(char *data, qint64 most) override;
    qint64 writeData(const char *data, qint64 size) override;
};

} // namespace Simulation
