// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QDataStream>
#include <QIODevice>

/** How the items of commands and answers are written: one behind the other, by a QDataStream. */
namespace Velno::GMP {

/** The stream version that registers speak. */
inline constexpr int itemStreamVersion = QDataStream::Qt_4_6;

/** A stream into bytes without room takes memory anew for each item; so many have most messages. */
inline constexpr int usualMessage = 128;

template <typename... Items>
QByteArray itemBytes(const Items &...items)
{
    QByteArray bytes;
    bytes.reserve(usualMessage);
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream.setVersion(itemStreamVersion);
    (stream << ... << items);
    return bytes;
}

} // namespace Velno::GMP
