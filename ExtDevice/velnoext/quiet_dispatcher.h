#pragma once

#include <QAbstractEventDispatcher>
#include <QSemaphore>

#include <atomic>

namespace Velno::Ext {

/**
 * The event loop of connectionThread: it delivers calls from other threads and watches nothing.
 *
 * Every wait on a device connection is a blocking one with its own deadline, so a loop that also watched the
 * sockets would learn nothing, but would pay for each idle one at every call, and read bytes on its own
 * between two commands. Notifiers of sockets are therefore accepted and never fire, and neither do timers:
 * nothing on this thread may rely on either. What happened to an idle connection shows when it is used next.
 */
class QuietDispatcher : public QAbstractEventDispatcher
{
    Q_OBJECT

public:
    using QAbstractEventDispatcher::QAbstractEventDispatcher;

    bool processEvents(QEventLoop::ProcessEventsFlags flags) override;
    void wakeUp() override;
    void interrupt() override;

    void registerSocketNotifier(QSocketNotifier *) override {}
    void unregisterSocketNotifier(QSocketNotifier *) override {}
    void registerTimer(int, qint64, Qt::TimerType, QObject *) override {}
    bool unregisterTimer(int) override { return true; }
    bool unregisterTimers(QObject *) override { return true; }
    QList<TimerInfo> registeredTimers(QObject *) const override { return {}; }
    int remainingTime(int) override { return -1; }

private:
    QSemaphore m_wakeUps;
    std::atomic<bool> m_awake = false; ///< a wake-up is under way: more of them add nothing
    std::atomic<bool> m_interrupted = false;
};

} // namespace Velno::Ext
