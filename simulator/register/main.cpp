// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/trust_anchors.h"
#include "simulator/common/command_line.h"
#include "simulator/common/control_input.h"
#include "simulator/common/control_server.h"
#include "simulator/register/cash_register.h"

#include <QCoreApplication>

using namespace Simulator;

int main(int argc, char *argv[])
{
    Velno::GMP::warnOfDevelopmentAuthority("velno-register");
    qputenv("QT_NO_GLIB", "1"); // Qt's own event loop answers sooner, and nothing here needs the other
    QCoreApplication application(argc, argv);
    const CommandLine line = parseCommandLine(QCoreApplication::arguments());
    if (const auto exitCode = shownInstead("velno-register", line))
        return *exitCode;

    const LogsToStandardError logs;
    const ControlInput input;
    CashRegister cashRegister(line.options);
    if (const QString problem = cashRegister.prepare(); !problem.isEmpty())
        return showWrongUsage("velno-register", problem);
    QObject::connect(&input, &ControlInput::line, &cashRegister, &CashRegister::takeLine);
    QObject::connect(&input, &ControlInput::stopRequested, &cashRegister, &CashRegister::stop);
    QObject::connect(&cashRegister, &CashRegister::finished, &application, &QCoreApplication::exit,
                     Qt::QueuedConnection);
    ControlServer control([&cashRegister](const QString &text) { return cashRegister.obey(text); });
    if (line.options.control)
        if (const QString problem = control.listen(*line.options.control); !problem.isEmpty())
            return showUnavailable("velno-register", problem);
    cashRegister.start(control.place());
    return QCoreApplication::exec();
}
