// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/interruption.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace Velno {

namespace {

// Without an eventfd nothing wakes a wait: it looks by itself so often.
constexpr int lookEvery = 50; // ms

thread_local const WaitScope *innermost = nullptr;

/** Milliseconds as poll() takes them, -1 without limit. */
int pollTime(const QDeadlineTimer &deadline, bool isWoken)
{
    const qint64 left = deadline.remainingTime();
    const qint64 most = isWoken ? std::numeric_limits<int>::max() : lookEvery;
    if (left < 0)
        return isWoken ? -1 : lookEvery;
    return int(std::min(left, most));
}

} // namespace

static_assert(std::atomic<quint64>::is_always_lock_free, "a signal handler may take no lock");

Interruption::Interruption()
    : m_event(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK))
{
}

Interruption::~Interruption()
{
    if (m_event >= 0)
        ::close(m_event);
}

void Interruption::request() noexcept
{
    const quint64 call = m_call;
    if (call == 0)
        return;
    // Several may ask at once, one of them for a call that has ended meanwhile: the latest call counts.
    for (quint64 asked = m_asked; asked < call && !m_asked.compare_exchange_weak(asked, call);) {
    }
    const int before = errno;
    eventfd_write(m_event, 1);
    errno = before;
}

bool Interruption::isRequested() const noexcept
{
    const quint64 call = m_call;
    return call != 0 && m_asked == call;
}

Interruption::Call::Call(Interruption &interruption)
    : m_interruption(interruption)
{
    interruption.m_call = ++interruption.m_calls;
}

Interruption::Call::~Call()
{
    m_interruption.m_call = 0;
}

WaitScope::WaitScope(const Interruption &interruption)
    : m_outer(innermost)
    , m_interruption(&interruption)
    , m_end(m_outer ? m_outer->m_end : QDeadlineTimer(QDeadlineTimer::Forever))
{
    innermost = this;
}

WaitScope::WaitScope(const QDeadlineTimer &end)
    : m_outer(innermost)
    , m_interruption(m_outer ? m_outer->m_interruption : nullptr)
    , m_end(m_outer ? std::min(end, m_outer->m_end) : end)
{
    innermost = this;
}

WaitScope::~WaitScope()
{
    innermost = m_outer;
}

bool isWaitOver()
{
    if (!innermost)
        return false;
    const Interruption *const interruption = innermost->m_interruption;
    return (interruption && interruption->isRequested()) || innermost->m_end.hasExpired();
}

bool waitFor(int descriptor, short events, const QDeadlineTimer &deadline)
{
    const Interruption *const interruption = innermost ? innermost->m_interruption : nullptr;
    const QDeadlineTimer end = innermost ? std::min(deadline, innermost->m_end) : deadline;
    const int wake = interruption ? interruption->m_event : -1;
    std::array<pollfd, 2> watched{pollfd{descriptor, events, 0}, pollfd{wake, POLLIN, 0}};
    do {
        if (isWaitOver())
            return false;
        const int ready = poll(watched.data(), watched.size(), pollTime(end, !interruption || wake >= 0));
        if (ready < 0 && errno != EINTR)
            return false;
        if (ready > 0 && watched[0].revents != 0)
            return true;
        if (ready > 0) {
            // Perhaps a request for a call that has ended since; the next turn finds out.
            eventfd_t requests = 0;
            eventfd_read(wake, &requests);
        }
    } while (!end.hasExpired());
    return false;
}

} // namespace Velno
