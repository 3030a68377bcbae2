#include "velnoctl/interrupts.h"

#include "velnoctl/exit_status.h"

#include <array>
#include <csignal>
#include <cstring>
#include <initializer_list>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <unistd.h>

namespace VelnoCtl {

namespace {

/** Holds these signals back, to be read. */
int openSignals(std::initializer_list<int> signals)
{
    sigset_t set;
    sigemptyset(&set);
    for (const int signal : signals)
        sigaddset(&set, signal);
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    return signalfd(-1, &set, SFD_CLOEXEC);
}

void wake(int event)
{
    eventfd_write(event, 1);
}

void say(const char *text)
{
    // Nothing can be done about a standard error that takes no bytes.
    [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, text, std::strlen(text));
}

[[noreturn]] void endAtOnce(const char *call)
{
    say("velnoctl: interrupted while ");
    say(call);
    say("\n");
    _exit(Interrupted); // destructors would wait for the very call that blocks
}

} // namespace

Interrupts::Interrupts()
    : m_signals(openSignals({SIGINT, SIGTERM}))
    , m_resized(openSignals({SIGWINCH}))
    , m_stop(eventfd(0, EFD_CLOEXEC))
    , m_end(eventfd(0, EFD_CLOEXEC))
    , m_thread([this] { watch(); })
{
    std::signal(SIGPIPE, SIG_IGN); // a reader that went away is noticed when results are written
}

Interrupts::~Interrupts()
{
    wake(m_end);
    m_thread.join();
    for (const int descriptor : {m_signals, m_resized, m_stop, m_end})
        ::close(descriptor);
}

bool Interrupts::requested() const
{
    const std::lock_guard lock(m_mutex);
    return m_requested;
}

void Interrupts::watch()
{
    std::array<pollfd, 2> waits{pollfd{m_signals, POLLIN, 0}, pollfd{m_end, POLLIN, 0}};
    while (waits[1].revents == 0) {
        if (poll(waits.data(), waits.size(), -1) < 0)
            continue;
        signalfd_siginfo info;
        if (waits[0].revents != 0 && ::read(m_signals, &info, sizeof info) == ssize_t(sizeof info))
            takeSignal();
    }
}

void Interrupts::takeSignal()
{
    const std::lock_guard lock(m_mutex); // kept to the end: no call may begin or return in between
    if (m_call)
        endAtOnce(m_call);
    if (m_requested)
        endAtOnce("ending");
    m_requested = true;
    wake(m_stop);
}

Interrupts::Call::Call(Interrupts &interrupts, const char *what)
    : m_interrupts(interrupts)
{
    const std::lock_guard lock(interrupts.m_mutex);
    m_before = interrupts.m_call;
    interrupts.m_call = what;
    m_mayBegin = !interrupts.m_requested;
}

Interrupts::Call::~Call()
{
    const std::lock_guard lock(m_interrupts.m_mutex);
    m_interrupts.m_call = m_before;
}

} // namespace VelnoCtl
