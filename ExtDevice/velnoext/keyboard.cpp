#include "ExtDevice/velnoext/keyboard.h"

#include "ExtDevice/velnoext/command_exchange.h"

namespace Velno::Ext {

QVector<int> saleKeys(int state)
{
    QVector<int> keys{Qt::Key_E};
    if (state == VelnoEcrState_IdleOtherScreen)
        keys << Qt::Key_E; // the first press only leaves that screen
    return keys;
}

QVector<int> invoiceSaleKeys(int state)
{
    QVector<int> keys;
    if (state == VelnoEcrState_Idle)
        keys << Qt::Key_M; // the other screen is already the menu
    return keys << Qt::Key_3;
}

QByteArray changeStateRequest(const StateChange &change, const QVector<int> &keys, bool answerWanted)
{
    return requestOf(VelnoExtMessage_ChangeState, change.state, change.step, change.extra, keys,
                     answerWanted);
}

} // namespace Velno::Ext
