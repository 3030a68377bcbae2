// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/house_commands.h"

#include "translations/spoken.h"
#include "velnoctl/arguments.h"
#include "velnoctl/explanation.h"
#include "velnoctl/line_editor.h"
#include "velnoctl/line_reader.h"
#include "velnoctl/session.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

/** What has been said on the way already. */
Answer told(int code)
{
    Answer answer;
    answer.code = code;
    answer.isTold = true;
    return answer;
}

Answer textAnswer(const QString &text)
{
    Answer answer;
    answer.text = text.trimmed();
    answer.values.insert(u"text"_s, answer.text);
    return answer;
}

int wrongUsage(Session &session, const QString &problem)
{
    session.report().wrongUsage(problem);
    return WrongUsage;
}

/** Parses and runs one line. @return 0, a code or an ExitStatus */
int runLine(Session &session, const QByteArray &line, const QString &where)
{
    session.interrupts().setReading(true);
    const Parsed parsed = parseLine(line, Shell, where);
    session.interrupts().setReading(false);
    return parsed.problem.isEmpty() ? session.run(parsed.steps) : wrongUsage(session, parsed.problem);
}

int inputEnded(Session &session, LineReader::Outcome outcome, const QString &where)
{
    switch (outcome) {
    case LineReader::Interrupted:
        session.report().interruptedIdle();
        return Interrupted;
    case LineReader::TooLong:
        return wrongUsage(
            session,
            Spoken::tr("%1: the line is longer than %2 bytes").arg(where).arg(LineReader::longestLine));
    case LineReader::Unreadable:
        return wrongUsage(session, u"%1: %2"_s.arg(where, QString::fromLocal8Bit(std::strerror(errno))));
    default:
        return 0;
    }
}

} // namespace

Answer explain(Session &, const Arguments &arguments)
{
    const int code = arguments.value(Kinds::code);
    const int detail = arguments.value(Kinds::detail, 0);
    const Explanation explanation =
        code < Explanation::firstCause ? Explanation(code, 0, detail) : Explanation::ofCause(code);
    Answer answer;
    answer.text = explanation.forPeople();
    answer.values.insert(u"explained"_s, explanation.asJson());
    return answer;
}

Answer help(Session &session, const Arguments &arguments)
{
    if (arguments.has(Kinds::command))
        return textAnswer(commandHelp(*commandNamed(arguments.value(Kinds::command))));
    return textAnswer(session.isInteractive() ? commandsHelp(Shell) : helpText());
}

Answer commands(Session &, const Arguments &)
{
    return textAnswer(commandsHelp(CommandLine | Shell));
}

Answer version(Session &, const Arguments &)
{
    return textAnswer(versionText());
}

Answer quit(Session &session, const Arguments &)
{
    session.quit();
    return told(0);
}

Answer runInput(Session &session, const Arguments &)
{
    LineReader reader(STDIN_FILENO, session.interrupts().descriptor());
    for (QByteArray line;;) {
        const LineReader::Outcome outcome = reader.next(&line);
        const QString where = Spoken::tr("standard input:%1").arg(reader.lineNumber());
        if (outcome != LineReader::Line)
            return told(inputEnded(session, outcome, where));
        const int code = runLine(session, line, where);
        if (code != 0 || session.hasQuit())
            return told(code);
    }
}

Answer shell(Session &session, const Arguments &)
{
    if (isatty(STDIN_FILENO) == 0)
        return runInput(session, {});
    session.setInteractive();
    LineEditor editor(session.interrupts(), commandNames(Shell));
    QByteArray line;
    while (!session.hasQuit() && editor.readLine(&line)) {
        const int code = runLine(session, line, {});
        // Ctrl-C was meant for the command, also when that was done by then.
        if (code == OutputLost || !session.interrupts().acknowledge())
            return told(code);
    }
    if (!session.interrupts().requested())
        return told(0);
    session.report().interruptedIdle();
    return told(Interrupted);
}

} // namespace VelnoCtl
