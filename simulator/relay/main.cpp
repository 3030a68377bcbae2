// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/command_line.h"
#include "simulator/common/control_input.h"
#include "simulator/relay/relay.h"

#include <QCoreApplication>

#include <cstdio>

using namespace Simulator;

namespace {

constexpr int noPort = 69;

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    const auto line = parseRelayCommandLine(QCoreApplication::arguments());
    if (const auto exitCode = shownInstead("velno-relay", line))
        return *exitCode;

    const ControlInput input;
    Relay relay(line.options);
    QObject::connect(&input, &ControlInput::line, &relay, &Relay::takeLine);
    QObject::connect(&input, &ControlInput::stopRequested, &relay, &Relay::stop);
    QObject::connect(&relay, &Relay::finished, &application, &QCoreApplication::quit, Qt::QueuedConnection);
    if (const QString error = relay.start(); !error.isEmpty()) {
        std::fprintf(stderr, "velno-relay: %s\n", qPrintable(error));
        return noPort;
    }
    return QCoreApplication::exec();
}
