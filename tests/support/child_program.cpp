// SPDX-License-Identifier: Apache-2.0

#include "tests/support/child_program.h"

#include "tests/support/ends_with_test.h"

#include <QDeadlineTimer>
#include <QJsonDocument>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

constexpr int longestWait = 30'000; // ms, for a machine under load and sanitizers

} // namespace

ChildProgram::ChildProgram(const QString &program, const QStringList &arguments,
                           const std::function<void()> &prepare)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.setChildProcessModifier(TestSupport::endsWithTest(prepare));
    m_process.start(program, QStringList{u"--json"_s} + arguments);
    m_ready = !waitFor(u"ready"_s).isEmpty();
}

ChildProgram::~ChildProgram()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    say("quit");
    if (m_process.waitForFinished(longestWait))
        return;
    qWarning("%s did not quit and is killed", qPrintable(m_process.program()));
    m_process.kill();
    m_process.waitForFinished(longestWait);
}

QJsonObject ChildProgram::waitForAny(const QStringList &events)
{
    const QDeadlineTimer deadline(longestWait);
    while (!deadline.hasExpired()) {
        while (readEvent())
            if (events.contains(m_events.last().value(u"event"_s).toString()))
                return m_events.last();
        if (!m_process.waitForReadyRead(int(deadline.remainingTime())) && !m_process.canReadLine())
            break;
    }
    qWarning("%s: no event \"%s\"", qPrintable(m_process.program()), qPrintable(events.join(u' ')));
    return {};
}

bool ChildProgram::readEvent()
{
    if (!m_process.canReadLine())
        return false;
    m_events << QJsonDocument::fromJson(m_process.readLine()).object();
    return true;
}

bool ChildProgram::setFault(const QString &fault)
{
    say("fault " + fault.toUtf8());
    return !waitFor(u"fault"_s).isEmpty();
}

void ChildProgram::say(const QByteArray &line)
{
    m_process.write(line + '\n');
    m_process.waitForBytesWritten(longestWait);
}

void ChildProgram::raise(int signal) const
{
    // Of a program that has ended it is 0: this process, those beside it and whoever runs them.
    if (const auto process = pid_t(m_process.processId()); process > 0)
        ::kill(process, signal);
}

int ChildProgram::waitForExit()
{
    const bool ended = m_process.state() == QProcess::NotRunning || m_process.waitForFinished(longestWait);
    while (readEvent()) {
    }
    return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}
