// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QEventLoop>
#include <QProcess>
#include <QStringList>

namespace TestSupport {

/** What the worker has said of an order. */
struct Told
{
    bool isTold = false; ///< false: its process has ended before, or nothing came in time
    bool isHanging = false;
    int result = -1;
    int state = -1;
    int question = 0;
    int first = 0;
    int second = 0;
    QString problem;
};

/** The program till_worker, started when it is needed, and killed at any moment. The event loop runs while it
 * works. */
class KilledTill
{
public:
    /** @param limit  ms in which it tells an outcome; more is to hang */
    KilledTill(const QStringList &arguments, int limit);
    ~KilledTill() { end(); }

    Told ask(const QString &verb, const QString &key, const QByteArray &rest = {});
    void kill() { m_process.kill(); }
    void end(); ///< in peace
    int starts() const { return m_starts; }

private:
    QStringList m_arguments;
    int m_limit;
    int m_starts = 0;
    QProcess m_process;
    QEventLoop m_loop;
};

} // namespace TestSupport
