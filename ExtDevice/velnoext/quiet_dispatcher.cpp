#include "ExtDevice/velnoext/quiet_dispatcher.h"

#include <QCoreApplication>

namespace Velno::Ext {

bool QuietDispatcher::processEvents(QEventLoop::ProcessEventsFlags flags)
{
    m_interrupted = false;
    emit awake();
    QCoreApplication::sendPostedEvents();
    if (m_interrupted || !flags.testFlag(QEventLoop::WaitForMoreEvents))
        return false;
    emit aboutToBlock();
    m_wakeUps.acquire();
    // Before the events are looked at again: one that is posted from here on wakes anew.
    m_awake = false;
    return true;
}

void QuietDispatcher::wakeUp()
{
    if (!m_awake.exchange(true))
        m_wakeUps.release();
}

void QuietDispatcher::interrupt()
{
    m_interrupted = true;
    wakeUp();
}

} // namespace Velno::Ext
