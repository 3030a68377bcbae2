// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QDeadlineTimer>
#include <QtGlobal>

#include <atomic>

/**
 * Ways out of a wait. A thread opens a WaitScope, and all waits that it makes inside, the transport's
 * included, end early: when somebody interrupts the call under way, or at a deadline for all of them
 * together.
 */
namespace Velno {

/** Ends the waits of one call from any other thread and from a signal handler. */
class Interruption
{
public:
    Interruption();
    ~Interruption();
    Q_DISABLE_COPY_MOVE(Interruption)

    /** Ends every wait of the call under way, also those to come in it; nothing without a call. Safe in a
     * signal handler. */
    void request() noexcept;

    /** Whether the call under way is to end. */
    bool isRequested() const noexcept;

    /** The time in which a request counts; one at a time. A request meant for it touches no later one. */
    class Call
    {
    public:
        explicit Call(Interruption &interruption);
        ~Call();
        Q_DISABLE_COPY_MOVE(Call)

    private:
        Interruption &m_interruption;
    };

private:
    friend class WaitScope;
    friend bool waitFor(int descriptor, short events, const QDeadlineTimer &deadline);

    std::atomic<quint64> m_call = 0;  ///< number of the call under way; 0 for none
    std::atomic<quint64> m_asked = 0; ///< the highest number of a call that was to end
    quint64 m_calls = 0;
    int m_event; ///< an eventfd, readable after requests; -1 when the system gave none
};

/** The waits of this thread while it lives. Scopes nest: the inner one's waits end by the outer one's, too.
 */
class WaitScope
{
public:
    explicit WaitScope(const Interruption &interruption);
    explicit WaitScope(const QDeadlineTimer &end);
    ~WaitScope();
    Q_DISABLE_COPY_MOVE(WaitScope)

private:
    friend bool isWaitOver();
    friend bool waitFor(int descriptor, short events, const QDeadlineTimer &deadline);

    const WaitScope *m_outer;
    const Interruption *m_interruption;
    QDeadlineTimer m_end;
};

/** Whether a scope of this thread ends its waits at once. */
bool isWaitOver();

/**
 * Waits for events of a descriptor (poll()'s POLLIN, POLLOUT).
 *
 * @return whether one of them, an error or a hang-up is there; false at the deadline, or when isWaitOver()
 */
bool waitFor(int descriptor, short events, const QDeadlineTimer &deadline);

} // namespace Velno
