// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "velnotill.h"

#include <QByteArray>
#include <QtGlobal>

#include <csignal>
#include <mutex>
#include <thread>

namespace VelnoCtl {

/**
 * Ctrl-C and SIGTERM, at any time. The first one asks: it ends what the library has under way, whoever waits
 * for input sees descriptor() become readable, and the program ends by itself, or goes on behind
 * acknowledge(). A second one ends the process at once, and so does the first while a file is read.
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

    /** The first signal has been obeyed, and the next is a first one again. @return false behind SIGTERM */
    bool acknowledge();

    /** Whether a file is read, which may block and in which nothing can be lost; so it is at first. */
    void setReading(bool isReading);

    /** Ends in the language that is spoken from now on. */
    void learnWords();

    /** The till whose work the signals end, too; null: none. */
    void setTill(VelnoTill *till);

    /** Readable from the first signal on; for poll(). */
    int descriptor() const { return m_stop; }

    /** A signalfd, readable when the terminal has got another size. Nobody reads it here. */
    int resized() const { return m_resized; }

private:
    void watch();
    void take(int signal);

    mutable std::mutex m_mutex; // guards the six below
    VelnoTill *m_till = nullptr;
    int m_requested = 0; // the signal
    bool m_isReading = true;
    bool m_isEnding = false;
    QByteArray m_whileReading; // what is said by an end while a script is read
    QByteArray m_whileEnding;
    sigset_t m_signals;
    int m_resized;
    int m_stop;
    std::thread m_thread; // takes the signals
};

} // namespace VelnoCtl
