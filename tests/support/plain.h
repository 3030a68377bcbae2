// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>

namespace TestSupport {

/** The plaintext that holds these items, whatever the product's own writers do. */
template <typename... Items>
QByteArray plain(const Items &...items)
{
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(QDataStream::Qt_4_6);
    (stream << ... << items);
    return bytes;
}

} // namespace TestSupport
