// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtGlobal>

#include <condition_variable>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>

namespace Velno::Ext {

/**
 * The thread that owns all sockets of the library: it runs what it is given, one after the other, and watches
 * nothing by itself. Every wait on a connection is a blocking one inside such a run, so no event loop is
 * needed, and no application object. What happened to an idle connection shows when it is used next.
 */
class ConnectionThread
{
public:
    /** Null when the process may not have another thread. */
    static std::unique_ptr<ConnectionThread> start();

    /** None: what it is given runs on the caller's thread. For registers in this process, which have no
     * sockets. */
    static std::unique_ptr<ConnectionThread> none();

    /** Waits for the thread's end. Not from itself. */
    ~ConnectionThread();
    Q_DISABLE_COPY_MOVE(ConnectionThread)

    /** Runs a function on the thread and waits for its end; on the thread itself, or without one, at once.
     * One caller at a time. */
    void run(const std::function<void()> &work);

private:
    ConnectionThread() = default;
    void serve();

    std::mutex m_mutex; // guards the two below
    std::condition_variable m_changed;
    const std::function<void()> *m_work = nullptr; ///< what to run next; null when it is done
    bool m_ending = false;
    std::thread m_thread;
};

} // namespace Velno::Ext
