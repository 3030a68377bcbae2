// SPDX-License-Identifier: Apache-2.0

#include "velnoctl/interrupts.h"

#include "translations/spoken.h"
#include "velnoctl/exit_status.h"
#include "velnoext.h"

#include <initializer_list>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace VelnoCtl {

namespace {

constexpr timespec askAgain{0, 20'000'000}; // 20 ms

/** These signals, held back to be taken. */
sigset_t holdBack(std::initializer_list<int> numbers)
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : numbers)
        sigaddset(&set, number);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    return set;
}

int openResized()
{
    const sigset_t resized = holdBack({SIGWINCH});
    return signalfd(-1, &resized, SFD_CLOEXEC);
}

QByteArray endWhileReading()
{
    return Spoken::tr("velnoctl: interrupted while reading a script\n").toUtf8();
}

QByteArray endWhileEnding()
{
    return Spoken::tr("velnoctl: interrupted while ending\n").toUtf8();
}

[[noreturn]] void endAtOnce(const QByteArray &text)
{
    // Nothing can be done about a standard error that takes no bytes.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text.constData(), size_t(text.size()));
    _exit(Interrupted); // destructors would wait for what is under way
}

} // namespace

Interrupts::Interrupts()
    : m_whileReading(endWhileReading())
    , m_whileEnding(endWhileEnding())
    , m_signals(holdBack({SIGINT, SIGTERM}))
    , m_resized(openResized())
    , m_stop(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
    , m_thread([this] { watch(); })
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that went away is noticed when results are written
}

Interrupts::~Interrupts()
{
    {
        const std::lock_guard lock(m_mutex);
        m_isEnding = true;
    }
    pthread_kill(m_thread.native_handle(), SIGINT); // so that it looks
    m_thread.join();
    ::close(m_resized);
    ::close(m_stop);
}

bool Interrupts::requested() const
{
    const std::lock_guard lock(m_mutex);
    return m_requested != 0;
}

bool Interrupts::acknowledge()
{
    const std::lock_guard lock(m_mutex);
    if (m_requested == SIGTERM)
        return false;
    m_requested = 0;
    eventfd_t requests = 0;
    eventfd_read(m_stop, &requests);
    return true;
}

void Interrupts::setReading(bool isReading)
{
    const std::lock_guard lock(m_mutex);
    m_isReading = isReading;
}

// Ready before the thread needs them: Qt translates nothing while its application object ends.
void Interrupts::learnWords()
{
    const std::lock_guard lock(m_mutex);
    m_whileReading = endWhileReading();
    m_whileEnding = endWhileEnding();
}

void Interrupts::setTill(VelnoTill *till)
{
    const std::lock_guard lock(m_mutex);
    m_till = till;
}

void Interrupts::watch()
{
    for (;;) {
        const int signal =
            requested() ? sigtimedwait(&m_signals, nullptr, &askAgain) : sigwaitinfo(&m_signals, nullptr);
        const std::lock_guard lock(m_mutex); // what is called behind acknowledge() is not interrupted
        if (m_isEnding)
            return;
        if (signal > 0)
            take(signal);
        if (m_requested != 0) { // and soon again: the call that is meant may only be about to begin
            velnotill_interrupt(m_till);
            velnoext_interrupt();
        }
    }
}

void Interrupts::take(int signal)
{
    if (m_isReading)
        endAtOnce(m_whileReading);
    if (m_requested != 0)
        endAtOnce(m_whileEnding);
    m_requested = signal;
    eventfd_write(m_stop, 1);
}

} // namespace VelnoCtl
