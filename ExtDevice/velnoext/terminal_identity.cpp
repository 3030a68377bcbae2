// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/terminal_identity.h"

#include "ExtDevice/network/local_interfaces.h"

namespace Velno::Ext {

QByteArray macAddress()
{
    static QByteArray address;
    if (!address.isEmpty())
        return address;
    if (const QList<LocalInterface> interfaces = localInterfaces(); !interfaces.isEmpty())
        address = interfaces.constFirst().hardwareAddress.toLatin1();
    return address;
}

} // namespace Velno::Ext
