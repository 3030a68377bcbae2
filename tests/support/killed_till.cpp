// SPDX-License-Identifier: Apache-2.0

#include "tests/support/killed_till.h"

#include "tests/support/ends_with_test.h"

#include <QTimer>

using namespace Qt::StringLiterals;

namespace TestSupport {

KilledTill::KilledTill(const QStringList &arguments, int limit)
    : m_arguments(arguments)
    , m_limit(limit)
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.setChildProcessModifier(endsWithTest());
    QObject::connect(&m_process, &QProcess::readyReadStandardOutput, &m_loop, &QEventLoop::quit);
    QObject::connect(&m_process, &QProcess::finished, &m_loop, &QEventLoop::quit);
    QObject::connect(&m_process, &QProcess::errorOccurred, &m_loop, &QEventLoop::quit);
}

Told KilledTill::ask(const QString &verb, const QString &key, const QByteArray &rest)
{
    if (m_process.state() == QProcess::NotRunning) {
        m_process.start(QString::fromUtf8(VELNO_TILL_WORKER), m_arguments);
        ++m_starts;
    }
    m_process.write(verb.toUtf8() + ' ' + key.toUtf8() + ' ' + rest + '\n');
    Told told;
    QTimer limit;
    limit.setSingleShot(true);
    QObject::connect(&limit, &QTimer::timeout, &m_loop, &QEventLoop::quit);
    limit.start(m_limit);
    QStringList words;
    while (words.size() < 6 ||
           words.at(0) != key) { // what a process said when it was killed is about another
        while (!m_process.canReadLine() && m_process.state() != QProcess::NotRunning && limit.isActive())
            m_loop.exec();
        if (!m_process.canReadLine()) {
            told.isHanging = !limit.isActive();
            return told;
        }
        words = QString::fromUtf8(m_process.readLine()).trimmed().split(u' ');
    }
    told.isTold = true;
    told.result = words.value(1).toInt();
    told.state = words.value(2).toInt();
    told.question = words.value(3).toInt();
    told.first = words.value(4).toInt();
    told.second = words.value(5).toInt();
    told.problem = words.mid(6).join(u' ');
    return told;
}

void KilledTill::end()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.closeWriteChannel();
    if (!m_process.waitForFinished(m_limit))
        m_process.kill();
    m_process.waitForFinished();
}

} // namespace TestSupport
