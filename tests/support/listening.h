// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QFile>

namespace TestSupport {

using namespace Qt::StringLiterals;

/** Whether this computer listens on the port, as the system tells. Who tried it would be in the way. */
inline bool isListenedOn(quint16 port)
{
    QFile sockets(u"/proc/self/net/tcp"_s);
    if (!sockets.open(QIODevice::ReadOnly))
        return false;
    const QByteArray wanted = ':' + QByteArray::number(port, 16).rightJustified(4, '0').toUpper() + ' ';
    for (const QByteArray &line : sockets.readAll().split('\n')) {
        if (line.contains(wanted) && line.contains(":0000 0A "))
            return true;
    }
    return false;
}

} // namespace TestSupport
