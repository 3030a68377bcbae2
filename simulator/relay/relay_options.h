// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/common/command_line.h"
#include "simulator/common/control_address.h"
#include "simulator/relay/relay_faults.h"

#include <QHostAddress>

namespace Simulator {

/** What velno-relay was asked to be. */
struct RelayOptions
{
    QHostAddress address{QHostAddress::LocalHost};
    QList<quint16> applicationPorts{50900,
                                    50902}; ///< for application 999999, for all others; 0: any free one
    quint16 registerPort = 50910;
    std::optional<ControlAddress> control; ///< where lines are taken beside standard input
    bool json = false;
    RelayFaults faults{relayFaultTable()};
};

/** @param arguments  with the program's name in front */
ParsedCommandLine<RelayOptions> parseRelayCommandLine(const QStringList &arguments);

} // namespace Simulator
