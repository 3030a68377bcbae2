// SPDX-License-Identifier: Apache-2.0

#include "simulator/relay/relay_faults.h"

#include <array>

namespace Simulator {

namespace {

constexpr RelayFaultRow row(RelayFault fault, const char *name, const char *help)
{
    return {{name, nullptr, 0, 0, help}, fault};
}

constexpr std::array table{
    row(RelayFault::NoEcho, "no-echo", Spoken::later("says nothing to an application, joins it to nobody")),
    row(RelayFault::WrongEcho, "wrong-echo", Spoken::later("echoes a name with its last byte changed")),
    row(RelayFault::ShortEcho, "short-echo", Spoken::later("echoes 11 bytes of the 12")),
    row(RelayFault::Drop, "drop", Spoken::later("cuts both connections as soon as they are joined")),
    RelayFaultRow{{"drop-after", "BYTES", 1, 100'000'000,
                   Spoken::later("cuts both connections after so many bytes between them")},
                  RelayFault::DropAfter},
};

} // namespace

std::span<const RelayFaultRow> relayFaultTable()
{
    return table;
}

} // namespace Simulator
