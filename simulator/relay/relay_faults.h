// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/common/faults.h"

/** What the relay can be told to do wrong. */
namespace Simulator {

enum class RelayFault { NoEcho, WrongEcho, ShortEcho, Drop, DropAfter };

struct RelayFaultRow : FaultRow
{
    RelayFault fault;
};

std::span<const RelayFaultRow> relayFaultTable();

using RelayFaults = FaultSwitches<RelayFaultRow>;

} // namespace Simulator
