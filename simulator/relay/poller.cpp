// SPDX-License-Identifier: Apache-2.0

#include "simulator/relay/poller.h"

#include <array>
#include <sys/epoll.h>
#include <unistd.h>

namespace Simulator {

namespace {

constexpr size_t eventsPerRound = 64;

} // namespace

Poller::Poller(QObject *parent)
    : QObject(parent)
    , m_kernel(epoll_create1(EPOLL_CLOEXEC))
    , m_notifier(m_kernel, QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &Poller::deliver);
}

Poller::~Poller()
{
    m_notifier.setEnabled(false);
    ::close(m_kernel);
}

void Poller::change(int socket, Key key, quint32 before, quint32 after)
{
    if (before == after)
        return;
    epoll_event event{};
    event.events = after;
    event.data.u64 = key;
    // Without a flag a broken socket would still be told of, again and again, so it is taken out altogether.
    const int operation = before == 0 ? EPOLL_CTL_ADD : after == 0 ? EPOLL_CTL_DEL : EPOLL_CTL_MOD;
    if (epoll_ctl(m_kernel, operation, socket, &event) != 0)
        qErrnoWarning("epoll_ctl");
}

void Poller::deliver()
{
    std::array<epoll_event, eventsPerRound> events;
    const int count = epoll_wait(m_kernel, events.data(), int(events.size()), 0);
    for (int i = 0; i < count; ++i)
        emit ready(events[size_t(i)].data.u64);
}

} // namespace Simulator
