// SPDX-License-Identifier: Apache-2.0

#include "translations/spoken.h"
#include "velnoctl/session.h"
#include "velnoext.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdlib>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;
using namespace VelnoCtl;

namespace {

/** Keeps what is opened later from becoming a standard stream that the caller left closed. */
void fillStandardStreams()
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream) {
        // Opened the wrong way round, so that its use still fails.
        if (fcntl(stream, F_GETFD) < 0 &&
            ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY) < 0)
            std::abort();
    }
}

/** What is wrong with the command line as a whole. */
QString problemOf(const Options &options, const Parsed &parsed)
{
    if (!parsed.problem.isEmpty())
        return parsed.problem;
    if (options.words.isEmpty())
        return Spoken::tr("no command is given");
    const auto need = [&parsed](Needs needs) {
        return std::ranges::any_of(parsed.steps,
                                   [needs](const Step &step) { return step.command->needs == needs; });
    };
    if (need(Needs::Control) && !options.control)
        return missingControl();
    const bool isLocal = !need(Needs::Target) && !need(Needs::Connection) && !need(Needs::RawConnection);
    return isLocal ? QString() : missingTarget(options);
}

} // namespace

int main(int argc, char *argv[])
{
    fillStandardStreams();
    Interrupts interrupts; // before any thread
    QCoreApplication application(argc, argv);
    const Languages languages = languagesAskedFor(QCoreApplication::arguments());
    const Spoken::Speaker speaker(languages.own);
    interrupts.learnWords();
    velnoext_set_language(languages.libraries.constData());
    Options options;
    options.language = languages.libraries;
    const QString wrong = parseOptions(QCoreApplication::arguments(), &options);
    Report report(options.isJson);
    Session session(options, report, interrupts);

    Parsed parsed{{}, wrong};
    if (options.isHelp)
        options.words = QStringList{u"help"_s};
    else if (options.isVersion)
        options.words = QStringList{u"version"_s};
    if (wrong.isEmpty())
        parsed = parseWords(options.words, CommandLine);
    if (const QString problem = problemOf(options, parsed); !problem.isEmpty()) {
        report.wrongUsage(problem);
        return WrongUsage;
    }
    interrupts.setReading(false);
    return session.run(parsed.steps);
}
