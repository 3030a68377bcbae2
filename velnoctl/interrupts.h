#pragma once

#include <QtGlobal>

#include <mutex>
#include <thread>

namespace VelnoCtl {

/**
 * Ctrl-C and SIGTERM, at any time. A thread of its own takes the signals, because the library's calls block
 * for as long as a register takes and cannot be left from outside.
 *
 * While a Call lives, a signal ends the process at once: the system closes the connection. Otherwise it only
 * asks: whoever waits sees descriptor() become readable, closes politely, and the program ends by itself. A
 * second signal ends the process in any case.
 *
 * One per process, to be made before any other thread: threads inherit which signals are held back.
 */
class Interrupts
{
public:
    Interrupts();
    ~Interrupts();
    Q_DISABLE_COPY_MOVE(Interrupts)

    bool requested() const;

    /** Readable from the first signal on; for poll(). */
    int descriptor() const { return m_stop; }

    /** A signalfd, readable when the terminal has got another size. Nobody reads it here. */
    int resized() const { return m_resized; }

    /** The time of something that blocks and cannot be left. */
    class Call
    {
    public:
        /** @param what  for the message, "waiting for the register"; a literal */
        Call(Interrupts &interrupts, const char *what);
        ~Call();
        Q_DISABLE_COPY_MOVE(Call)

        /** False when the program is to end already: do not begin then. */
        bool mayBegin() const { return m_mayBegin; }

    private:
        Interrupts &m_interrupts;
        const char *m_before;
        bool m_mayBegin;
    };

private:
    void watch();
    void takeSignal();

    mutable std::mutex m_mutex; // guards the two below
    const char *m_call = nullptr;
    bool m_requested = false;
    int m_signals;
    int m_resized;
    int m_stop;
    int m_end; // written when the watching thread is to end
    std::thread m_thread;
};

} // namespace VelnoCtl
