#include "ExtDevice/gmp3/trust_anchors.h"
#include "simulator/cash_register.h"
#include "simulator/control_input.h"

#include <QCoreApplication>

#include <cstdio>

using namespace Qt::StringLiterals;
using namespace Simulator;

namespace {

constexpr int wrongUsage = 64;

int showText(FILE *stream, const QString &text, int exitCode)
{
    std::fputs(qPrintable(text), stream);
    return exitCode;
}

} // namespace

int main(int argc, char *argv[])
{
    Velno::GMP::warnOfDevelopmentAuthority("velno-register");
    QCoreApplication application(argc, argv);
    const CommandLine line = parseCommandLine(QCoreApplication::arguments());
    if (line.outcome == CommandLine::Help)
        return showText(stdout, line.text, 0);
    if (line.outcome == CommandLine::WrongUsage)
        return showText(stderr,
                        u"velno-register: %1\nvelno-register --help shows all options.\n"_s.arg(line.text),
                        wrongUsage);

    const LogsToStandardError logs;
    const ControlInput input;
    CashRegister cashRegister(line.options);
    QObject::connect(&input, &ControlInput::line, &cashRegister, &CashRegister::takeLine);
    QObject::connect(&input, &ControlInput::stopRequested, &cashRegister, &CashRegister::stop);
    QObject::connect(&cashRegister, &CashRegister::finished, &application, &QCoreApplication::exit,
                     Qt::QueuedConnection);
    cashRegister.start();
    return QCoreApplication::exec();
}
