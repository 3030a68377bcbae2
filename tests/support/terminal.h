// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QStringList>

#include <termios.h>

namespace TestSupport {

/** A program with a terminal of its own, as a person would have started it. */
class Terminal
{
public:
    Terminal(const QString &program, const QStringList &arguments);
    ~Terminal(); ///< kills what has not ended
    Q_DISABLE_COPY_MOVE(Terminal)

    void type(const QByteArray &keys);

    void resize(int columns);

    /** Reads until `text` has been shown behind what was waited for before. @return whether it came in time
     */
    bool waitFor(const QByteArray &text);

    /** Reads to the end. @return the exit code; -1 when it does not end in time or by itself */
    int waitForExit();

    QByteArray shown() const { return m_shown; }

    /** Whether keys are shown and lines put together again, as when the program was started. */
    bool isAsBefore() const;

private:
    bool readMore();

    int m_terminal = -1;
    int m_keeper = -1; // the terminal's other side, so that it can be asked when the program has ended
    int m_process = -1;
    termios m_before{};
    qsizetype m_seen = 0;
    QByteArray m_shown;
};

} // namespace TestSupport
