// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/session.h"

#include "velnoctl/answers.h"

using namespace Qt::StringLiterals;

namespace VelnoCtl {

Session::Session(const Options &options, Report &report, Interrupts &interrupts)
    : m_report(report)
    , m_interrupts(interrupts)
    , m_device(options, interrupts)
{
}

void Session::setInteractive()
{
    m_isInteractive = true;
    m_report.setInShell();
}

int Session::run(const QList<Step> &steps)
{
    for (const Step &step : steps) {
        if (const int code = run(step); code != 0)
            return code;
        if (m_hasQuit)
            break;
    }
    return 0;
}

int Session::run(const Step &step)
{
    m_log.take(); // lines of the step before, which did not fail
    if (const int code = connect(step); code != 0)
        return code;
    const Answer answer = step.command->run(*this, step.arguments);
    if (answer.isTold)
        return answer.code;
    if (answer.code == Interrupted)
        return interrupted(step);
    m_report.answer(step, answer);
    if (answer.code != 0) {
        m_report.details(m_log.take());
    } else if (m_interrupts.requested()) {
        m_report.interruptedIdle();
        return Interrupted;
    }
    return m_report.isLost() ? int(OutputLost) : answer.code;
}

int Session::connect(const Step &step)
{
    const Needs needs = step.command->needs;
    if (needs != Needs::Connection && needs != Needs::RawConnection)
        return 0;
    const int code = m_device.connect(needs);
    if (code == Interrupted)
        return interrupted(step);
    if (code != 0) {
        m_report.connectFailed(step, m_device.target(), answer(code, {}));
        m_report.details(m_log.take());
    }
    return code;
}

int Session::interrupted(const Step &step)
{
    m_report.interrupted(step, m_device.whenInterrupted());
    return Interrupted;
}

} // namespace VelnoCtl
