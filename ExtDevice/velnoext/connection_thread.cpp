// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/connection_thread.h"

#include <csignal>
#include <openssl/crypto.h>
#include <system_error>

namespace Velno::Ext {

namespace {

/** While it lives, threads that are started take no signals: an application's handlers run on its own. */
class SignalsHeldBack
{
public:
    SignalsHeldBack()
    {
        sigset_t all;
        sigfillset(&all);
        pthread_sigmask(SIG_SETMASK, &all, &m_before);
    }
    ~SignalsHeldBack() { pthread_sigmask(SIG_SETMASK, &m_before, nullptr); }
    Q_DISABLE_COPY_MOVE(SignalsHeldBack)

private:
    sigset_t m_before;
};

} // namespace

std::unique_ptr<ConnectionThread> ConnectionThread::start()
{
    std::unique_ptr<ConnectionThread> started{new ConnectionThread};
    const SignalsHeldBack heldBack;
    try {
        started->m_thread = std::thread([thread = started.get()] { thread->serve(); });
    } catch (const std::system_error &) {
        return nullptr;
    }
    return started;
}

std::unique_ptr<ConnectionThread> ConnectionThread::none()
{
    return std::unique_ptr<ConnectionThread>{new ConnectionThread};
}

ConnectionThread::~ConnectionThread()
{
    if (!m_thread.joinable())
        return;
    {
        const std::lock_guard lock(m_mutex);
        m_ending = true;
    }
    m_changed.notify_all();
    m_thread.join();
}

void ConnectionThread::run(const std::function<void()> &work)
{
    const bool isItself = std::this_thread::get_id() == m_thread.get_id(); // whose wait would never end
    if (isItself || !m_thread.joinable())
        return work();
    std::unique_lock lock(m_mutex);
    m_work = &work;
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !m_work; });
}

void ConnectionThread::serve()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_work || m_ending; });
        if (!m_work)
            break;
        const std::function<void()> &work = *m_work;
        lock.unlock();
        work();
        lock.lock();
        m_work = nullptr;
        m_changed.notify_all();
    }
    OPENSSL_thread_stop(); // the process may be ending, and OpenSSL with it, before the system clears up here
}

} // namespace Velno::Ext
