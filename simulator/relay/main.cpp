// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/command_line.h"
#include "simulator/common/control_input.h"
#include "simulator/common/control_server.h"
#include "simulator/relay/relay.h"
#include "translations/spoken.h"

#include <QCoreApplication>

#include <optional>

using namespace Simulator;

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    std::optional<Spoken::Speaker> speaker(std::in_place);
    const auto line = parseRelayCommandLine(QCoreApplication::arguments());
    if (const auto exitCode = shownInstead("velno-relay", line))
        return *exitCode;

    const ControlInput input;
    Relay relay(line.options);
    QObject::connect(&input, &ControlInput::line, &relay, &Relay::takeLine);
    QObject::connect(&input, &ControlInput::stopRequested, &relay, &Relay::stop);
    QObject::connect(&relay, &Relay::finished, &application, &QCoreApplication::quit, Qt::QueuedConnection);
    ControlServer control([&relay](const QString &text) { return relay.obey(text); });
    QString problem;
    if (line.options.control)
        problem = control.listen(*line.options.control);
    if (problem.isEmpty())
        problem = relay.start(control.place());
    if (!problem.isEmpty())
        return showUnavailable("velno-relay", problem);
    speaker.reset(); // events are for programs
    return QCoreApplication::exec();
}
