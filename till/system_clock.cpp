// SPDX-License-Identifier: Apache-2.0

#include "till/system_clock.h"

#include <chrono>
#include <thread>

namespace Velno::Receipts {

QDateTime SystemClock::now()
{
    return QDateTime::currentDateTimeUtc();
}

bool SystemClock::pause(int milliseconds)
{
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
    return true;
}

} // namespace Velno::Receipts
