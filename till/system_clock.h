// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/clock.h"

namespace Velno::Receipts {

/** This computer's time. */
class SystemClock final : public Clock
{
public:
    QDateTime now() override;
    bool pause(int milliseconds) override; ///< never ends early: the till asks for short pauses
};

} // namespace Velno::Receipts
