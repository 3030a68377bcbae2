// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QObject>
#include <QSocketNotifier>

namespace Simulator {

/**
 * What the outside tells the program: lines on standard input (its end means nothing) and the signals SIGTERM
 * and SIGINT, all delivered by the event loop. One per process.
 */
class ControlInput : public QObject
{
    Q_OBJECT

public:
    /** Must be made before any thread is started: threads inherit which signals are held back, and a resolver
     * thread that does not hold them back would be ended by them, and the program with it. */
    explicit ControlInput(QObject *parent = nullptr);
    ~ControlInput() override;

signals:
    void line(const QString &line);
    void stopRequested();

private:
    void readLines();

    int m_signals;
    QSocketNotifier m_signalNotifier;
    QSocketNotifier m_inputNotifier;
    QByteArray m_input;
};

} // namespace Simulator
