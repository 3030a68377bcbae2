// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDateTime>

namespace Velno::Receipts {

/** Time, as the runner knows it. */
class Clock
{
public:
    Clock() = default;
    virtual ~Clock() = default;
    Q_DISABLE_COPY_MOVE(Clock)

    virtual QDateTime now() = 0; ///< UTC

    /** Waits. @return false: it was ended early, since somebody wants the work to stop */
    virtual bool pause(int milliseconds) = 0;
};

} // namespace Velno::Receipts
