// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QtEndian>

#include <array>
#include <concepts>
#include <optional>

/** How the items of commands and answers travel: one behind the other, numbers big-endian. The types are
 * those of ItemType in protocol_table.h. */
namespace Velno::GMP {

/** Writes items one behind the other. */
class ItemWriter
{
public:
    ItemWriter() { m_bytes.reserve(usualMessage); }

    template <std::integral Number>
    ItemWriter &operator<<(Number number)
    {
        std::array<char, sizeof(Number)> bytes;
        qToBigEndian(number, bytes.data());
        m_bytes.append(bytes.data(), bytes.size());
        return *this;
    }
    ItemWriter &operator<<(bool flag) { return *this << qint8(flag); }
    ItemWriter &operator<<(const QByteArray &bytes);
    ItemWriter &operator<<(const QList<qint32> &numbers);

    const QByteArray &bytes() const { return m_bytes; }

private:
    static constexpr int usualMessage = 128; ///< so much memory is taken at once; most messages need no more

    QByteArray m_bytes;
};

template <typename... Items>
QByteArray itemBytes(const Items &...items)
{
    ItemWriter writer;
    (writer << ... << items);
    return writer.bytes();
}

// Each of these takes an item off the front of a run, and memory for no more than is there. Nothing, and the
// run undefined, when it is cut short.

template <std::integral Number>
std::optional<Number> takeNumber(QByteArrayView *run)
{
    constexpr auto size = qsizetype(sizeof(Number));
    if (run->size() < size)
        return {};
    const auto number = qFromBigEndian<Number>(run->data());
    *run = run->sliced(size);
    return number;
}

/** A number of things of which each takes at least as many bytes. */
std::optional<qint64> takeCount(qint64 bytesEach, QByteArrayView *run);

std::optional<QByteArray> takeBytes(QByteArrayView *run);
std::optional<QList<qint32>> takeNumbers(QByteArrayView *run);

} // namespace Velno::GMP
