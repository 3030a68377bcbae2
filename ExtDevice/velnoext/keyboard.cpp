// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/keyboard.h"

#include "ExtDevice/encoding/bcd.h"
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

int paymentKey(int type)
{
    return type == 0 ? Qt::Key_F10 : Qt::Key_F11;
}

QVector<int> paymentKeys(int type, quint64 amount)
{
    constexpr qsizetype wholeDigits = 10;
    const QByteArray digits = toBcd6(amount).toHex();
    qsizetype first = 0;
    while (first < wholeDigits - 1 && digits.at(first) == '0')
        ++first;
    QVector<int> keys;
    for (qsizetype i = first; i < digits.size(); ++i) {
        if (i == wholeDigits)
            keys << Qt::Key_Comma;
        keys << Qt::Key_0 + (digits.at(i) - '0');
    }
    return keys << paymentKey(type);
}

QVector<int> cancelKeys()
{
    return {Qt::Key_C, Qt::Key_1};
}

QByteArray changeStateRequest(const StateChange &change, const QVector<int> &keys, bool answerWanted)
{
    return requestOf(VelnoExtMessage_ChangeState, change.state, change.step, change.extra, keys,
                     answerWanted);
}

} // namespace Velno::Ext
