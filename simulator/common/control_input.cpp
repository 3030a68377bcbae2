// SPDX-License-Identifier: Apache-2.0

#include "simulator/common/control_input.h"

#include <QTimer>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace Simulator {

namespace {

constexpr std::chrono::milliseconds backgroundPause(300);

int openSignals()
{
    // In the background a read from the terminal fails instead of stopping the program, and so does a write
    // to a pipe that nobody reads any more.
    std::signal(SIGTTIN, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGINT);
    sigprocmask(SIG_BLOCK, &set, nullptr);
    return signalfd(-1, &set, SFD_CLOEXEC);
}

} // namespace

ControlInput::ControlInput(QObject *parent)
    : QObject(parent)
    , m_signals(openSignals())
    , m_signalNotifier(m_signals, QSocketNotifier::Read)
    , m_inputNotifier(STDIN_FILENO, QSocketNotifier::Read)
{
    connect(&m_signalNotifier, &QSocketNotifier::activated, this, [this] {
        m_signalNotifier.setEnabled(false); // one signal is enough
        emit stopRequested();
    });
    connect(&m_inputNotifier, &QSocketNotifier::activated, this, &ControlInput::readLines);
}

ControlInput::~ControlInput()
{
    m_signalNotifier.setEnabled(false);
    ::close(m_signals);
}

void ControlInput::readLines()
{
    char buffer[4096];
    const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (count <= 0) {
        m_inputNotifier.setEnabled(false);
        // In the background of a terminal. It is not told when it comes to the front, so it asks again.
        if (count < 0 && errno == EIO)
            QTimer::singleShot(backgroundPause, this, [this] { m_inputNotifier.setEnabled(true); });
        return;
    }
    m_input.append(buffer, count);
    for (qsizetype end = m_input.indexOf('\n'); end >= 0; end = m_input.indexOf('\n')) {
        const QString text = QString::fromUtf8(m_input.first(end)).trimmed();
        m_input.remove(0, end + 1);
        if (!text.isEmpty())
            emit line(text);
    }
}

} // namespace Simulator
