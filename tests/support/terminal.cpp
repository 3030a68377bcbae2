// SPDX-License-Identifier: Apache-2.0

#include "tests/support/terminal.h"

#include "tests/support/ends_with_test.h"

#include <QDeadlineTimer>
#include <QList>
#include <QProcessEnvironment>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/ioctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utmp.h>

using namespace Qt::StringLiterals;

namespace TestSupport {

namespace {

constexpr int longestWait = 30'000; // ms, for a machine under load and sanitizers

/** As exec() takes it; the words stay the caller's. */
QList<char *> listed(const QByteArrayList &words)
{
    QList<char *> list;
    for (const QByteArray &word : words)
        list << const_cast<char *>(word.constData());
    return list << nullptr;
}

QByteArrayList environment()
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"TERM"_s, u"xterm"_s);
    // Whose settings of line editors are not those of a test.
    environment.insert(u"HOME"_s, u"/nonexistent"_s);
    QByteArrayList words;
    for (const QString &word : environment.toStringList())
        words << word.toLocal8Bit();
    return words;
}

} // namespace

Terminal::Terminal(const QString &program, const QStringList &arguments)
{
    QByteArrayList words{program.toLocal8Bit()};
    for (const QString &argument : arguments)
        words << argument.toLocal8Bit();
    winsize size{24, 80, 0, 0};
    if (openpty(&m_terminal, &m_keeper, nullptr, nullptr, &size) != 0)
        qFatal("no terminal: %s", std::strerror(errno));
    fcntl(m_terminal, F_SETFD, FD_CLOEXEC);
    tcgetattr(m_keeper, &m_before); // before the program can change it
    // All made before: between fork and exec nothing may ask for memory, whose locks other threads may hold.
    const auto prepare = endsWithTest();
    const QByteArrayList settings = environment();
    const QList<char *> argumentList = listed(words);
    const QList<char *> environmentList = listed(settings);
    m_process = fork();
    if (m_process == 0) {
        prepare();
        login_tty(m_keeper);
        execve(argumentList.first(), argumentList.constData(), environmentList.constData());
        _exit(127);
    }
}

Terminal::~Terminal()
{
    if (m_process > 0) {
        ::kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
    ::close(m_keeper);
    ::close(m_terminal);
}

void Terminal::type(const QByteArray &keys)
{
    if (::write(m_terminal, keys.constData(), size_t(keys.size())) != keys.size())
        qWarning("the terminal took no keys");
}

void Terminal::resize(int columns)
{
    const winsize size{24, static_cast<unsigned short>(columns), 0, 0};
    if (ioctl(m_terminal, TIOCSWINSZ, &size) != 0)
        qWarning("the terminal keeps its size");
}

bool Terminal::readMore()
{
    pollfd wait{m_terminal, POLLIN, 0};
    if (poll(&wait, 1, 20) <= 0)
        return false;
    char bytes[4096];
    const ssize_t count = ::read(m_terminal, bytes, sizeof bytes);
    if (count > 0)
        m_shown.append(bytes, count);
    return count > 0;
}

bool Terminal::waitFor(const QByteArray &text)
{
    const QDeadlineTimer deadline(longestWait);
    for (;;) {
        const qsizetype at = m_shown.indexOf(text, m_seen);
        if (at >= 0) {
            m_seen = at + text.size();
            return true;
        }
        if (!readMore() && deadline.hasExpired()) {
            qWarning("\"%s\" does not come; shown was: %s", text.constData(), m_shown.constData());
            return false;
        }
    }
}

int Terminal::waitForExit()
{
    const QDeadlineTimer deadline(longestWait);
    int status = 0;
    while (waitpid(m_process, &status, WNOHANG) == 0) {
        if (!readMore() && deadline.hasExpired())
            return -1;
    }
    m_process = -1;
    while (readMore()) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool Terminal::isAsBefore() const
{
    termios now{};
    tcgetattr(m_keeper, &now);
    return now.c_lflag == m_before.c_lflag && now.c_iflag == m_before.c_iflag &&
           now.c_oflag == m_before.c_oflag;
}

} // namespace TestSupport
