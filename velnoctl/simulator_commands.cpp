// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/simulator_commands.h"

#include "translations/spoken.h"
#include "velnoctl/arguments.h"
#include "velnoctl/control_line.h"
#include "velnoctl/session.h"

using namespace Qt::StringLiterals;

namespace VelnoCtl {

namespace {

Answer ended(int code, const char *result, const QString &text)
{
    Answer answer;
    answer.code = code;
    answer.result = result;
    answer.text = text;
    return answer;
}

} // namespace

Answer fault(Session &session, const Arguments &arguments)
{
    const Options &options = session.device().options();
    const QString &name = arguments.value(Kinds::fault);
    if (!options.control)
        return ended(WrongUsage, nullptr, missingControl());
    // A program that plays several registers is told which one of them.
    const QString whose = options.serial.isEmpty() ? QString() : QString::fromLatin1(options.serial) + u' ';
    const QDeadlineTimer deadline = options.timeout == noLimit ? QDeadlineTimer(QDeadlineTimer::Forever)
                                                               : QDeadlineTimer(options.timeout);
    session.device().setWhenInterrupted(Spoken::tr("while the simulator had not answered"));
    const ControlAnswer said = sayToSimulator(*options.control, whose + u"fault "_s + name, deadline,
                                              session.interrupts().descriptor());
    switch (said.outcome) {
    case ControlAnswer::Stopped:
        return ended(Interrupted, nullptr, {});
    case ControlAnswer::Refused:
        return ended(WrongUsage, nullptr, said.text);
    case ControlAnswer::Unanswered:
        return ended(
            Unavailable, "no-simulator",
            Spoken::tr("the simulator at %1 was not reached: %2").arg(options.control->text(), said.text));
    default:
        break;
    }
    Answer answer;
    answer.text = name == "none"_L1 ? Spoken::tr("all faults are off") : Spoken::tr("%1 is on").arg(name);
    answer.values.insert(u"fault"_s, name);
    return answer;
}

} // namespace VelnoCtl
