#include "tests/simulated_register.h"

#include <QDeadlineTimer>
#include <QJsonDocument>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

constexpr int longestWait = 30'000; // ms, for a machine under load and sanitizers

} // namespace

QString SimulatedRegister::program()
{
    return QStringLiteral(VELNO_REGISTER_PROGRAM);
}

SimulatedRegister::SimulatedRegister(quint16 port, const QStringList &arguments)
    : SimulatedRegister(QStringList{u"--connect"_s, u"127.0.0.1:%1"_s.arg(port)} + arguments)
{
}

SimulatedRegister::SimulatedRegister(const QStringList &arguments)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program(),
                    QStringList{u"--serial"_s, QLatin1StringView(serial), u"--json"_s} + arguments);
    m_ready = !waitFor(u"ready"_s).isEmpty();
}

SimulatedRegister::~SimulatedRegister()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    say("quit");
    if (m_process.waitForFinished(longestWait))
        return;
    qWarning("velno-register did not quit and is killed");
    m_process.kill();
    m_process.waitForFinished(longestWait);
}

QJsonObject SimulatedRegister::waitForAny(const QStringList &events)
{
    const QDeadlineTimer deadline(longestWait);
    while (!deadline.hasExpired()) {
        while (readEvent())
            if (events.contains(m_events.last().value(u"event"_s).toString()))
                return m_events.last();
        if (!m_process.waitForReadyRead(int(deadline.remainingTime())) && !m_process.canReadLine())
            break;
    }
    qWarning("velno-register: no event \"%s\"", qPrintable(events.join(u' ')));
    return {};
}

bool SimulatedRegister::readEvent()
{
    if (!m_process.canReadLine())
        return false;
    m_events << QJsonDocument::fromJson(m_process.readLine()).object();
    return true;
}

bool SimulatedRegister::setFault(const QString &fault)
{
    say("fault " + fault.toUtf8());
    return !waitFor(u"fault"_s).isEmpty();
}

void SimulatedRegister::say(const QByteArray &line)
{
    m_process.write(line + '\n');
    m_process.waitForBytesWritten(longestWait);
}

void SimulatedRegister::raise(int signal) const
{
    ::kill(pid_t(m_process.processId()), signal);
}

int SimulatedRegister::waitForExit()
{
    const bool ended = m_process.state() == QProcess::NotRunning || m_process.waitForFinished(longestWait);
    while (readEvent()) {
    }
    return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}
