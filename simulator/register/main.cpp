// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/trust_anchors.h"
#include "simulator/common/command_line.h"
#include "simulator/common/control_input.h"
#include "simulator/common/control_server.h"
#include "simulator/register/credentials.h"
#include "simulator/register/pictures.h"
#include "simulator/register/register_program.h"
#include "translations/spoken.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>
#include <optional>

using namespace Simulator;

namespace {

/**
 * Plays what the options say until it is told to stop.
 *
 * @param speaker  is silent from the first event on, since events are for programs
 * @return the exit code
 */
int play(const RegisterOptions &options, std::optional<Spoken::Speaker> &speaker)
{
    const LogsToStandardError logs;
    const ControlInput input;
    RegisterProgram program(options);
    if (const QString problem = program.prepare(); !problem.isEmpty())
        return showWrongUsage("velno-register", problem);
    if (const QString doubt = credentialsDoubt(options.credentials); !doubt.isEmpty())
        std::fprintf(stderr, "velno-register: %s\n", qPrintable(doubt));
    QObject::connect(&input, &ControlInput::line, &program, &RegisterProgram::takeLine);
    QObject::connect(&input, &ControlInput::stopRequested, &program, &RegisterProgram::stop);
    QObject::connect(&program, &RegisterProgram::finished, QCoreApplication::instance(),
                     &QCoreApplication::exit, Qt::QueuedConnection);
    ControlServer control([&program](const QString &line) { return program.obey(line); });
    if (options.control)
        if (const QString problem = control.listen(*options.control); !problem.isEmpty())
            return showUnavailable("velno-register", problem);
    speaker.reset();
    program.start(control.place());
    return QCoreApplication::exec();
}

} // namespace

int main(int argc, char *argv[])
{
    qputenv("QT_NO_GLIB", "1"); // Qt's own event loop answers sooner, and nothing here needs the other
    auto application = std::make_unique<QCoreApplication>(argc, argv);
    std::optional<Spoken::Speaker> speaker(std::in_place);
    Velno::GMP::warnOfDevelopmentAuthority("velno-register");
    CommandLine line = parseCommandLine(QCoreApplication::arguments());
    if (const auto exitCode = shownInstead("velno-register", line))
        return *exitCode;
    if (line.options.pictures) {
        QString problem;
        const PictureModule *const module = loadPictureModule(&problem);
        if (module) {
            speaker.reset();
            application.reset(); // there is one at a time
            application.reset(module->makeApplication(argc, argv));
            speaker.emplace();
            problem = module->problem();
            line.options.receipts.draw = module->png;
        }
        if (!problem.isEmpty())
            return showUnavailable("velno-register", problem);
    }
    return play(line.options, speaker);
}
