// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/network/local_interfaces.h"

#include <QNetworkInterface>

namespace Velno {

namespace {

bool isUsable(const QNetworkInterface &interface)
{
    const auto flags = interface.flags();
    return flags.testFlag(QNetworkInterface::IsUp) && !flags.testFlag(QNetworkInterface::IsLoopBack);
}

QList<QHostAddress> ipv4Addresses(const QNetworkInterface &interface)
{
    QList<QHostAddress> addresses;
    for (const QNetworkAddressEntry &entry : interface.addressEntries()) {
        if (entry.ip().protocol() == QAbstractSocket::IPv4Protocol)
            addresses.append(entry.ip());
    }
    return addresses;
}

} // namespace

QList<LocalInterface> localInterfaces()
{
    QList<LocalInterface> usable;
    for (const QNetworkInterface &interface : QNetworkInterface::allInterfaces()) {
        const QList<QHostAddress> addresses = ipv4Addresses(interface);
        if (isUsable(interface) && !addresses.isEmpty())
            usable.append({interface.hardwareAddress().remove(QLatin1Char(':')), addresses});
    }
    return usable;
}

} // namespace Velno
