// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QJsonObject>
#include <QList>
#include <QProcess>
#include <QStringList>

#include <functional>

/**
 * One of the real programs that report events, as a child process: waits for its events, speaks to it on
 * standard input, and ends it when it goes out of scope. It ends, too, when the test crashes.
 */
class ChildProgram
{
public:
    /**
     * Starts it with --json and returns at its `ready` line.
     *
     * @param prepare  called in the child before the program starts
     */
    ChildProgram(const QString &program, const QStringList &arguments,
                 const std::function<void()> &prepare = {});
    ~ChildProgram();
    Q_DISABLE_COPY_MOVE(ChildProgram)

    /** Whether the `ready` line came. */
    bool isReady() const { return m_ready; }

    /** The next event of this name, others skipped; an empty object when none comes in time. */
    QJsonObject waitFor(const QString &event) { return waitForAny({event}); }
    QJsonObject waitForAny(const QStringList &events); ///< of one of these names

    /** `fault` on standard input: NAME[=VALUE] or none. @return whether the program took it */
    bool setFault(const QString &fault);

    void say(const QByteArray &line);
    void raise(int signal) const;
    qint64 processId() const { return m_process.processId(); }

    /** The exit code; -1 when it does not end in time or was killed. */
    int waitForExit();

    /** Every event so far, in order. */
    const QList<QJsonObject> &events() const { return m_events; }

private:
    bool readEvent();

    QProcess m_process;
    QList<QJsonObject> m_events;
    bool m_ready = false;
};
