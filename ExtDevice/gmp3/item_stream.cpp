// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/item_stream.h"

namespace Velno::GMP {

namespace {

constexpr quint32 noBytes = 0xFFFFFFFF; // how many there are of a byte string that is null

} // namespace

ItemWriter &ItemWriter::operator<<(const QByteArray &bytes)
{
    *this << (bytes.isNull() ? noBytes : quint32(bytes.size()));
    m_bytes += bytes;
    return *this;
}

ItemWriter &ItemWriter::operator<<(const QList<qint32> &numbers)
{
    *this << quint32(numbers.size());
    for (const qint32 number : numbers)
        *this << number;
    return *this;
}

std::optional<qint64> takeCount(qint64 bytesEach, QByteArrayView *run)
{
    const auto count = takeNumber<quint32>(run);
    return count && *count <= run->size() / bytesEach ? std::optional(qint64(*count)) : std::nullopt;
}

std::optional<QByteArray> takeBytes(QByteArrayView *run)
{
    const auto size = takeNumber<quint32>(run);
    if (size == noBytes)
        return QByteArray();
    if (!size || qint64(*size) > run->size())
        return {};
    const QByteArray bytes(run->data(), qsizetype(*size));
    *run = run->sliced(bytes.size());
    return bytes;
}

std::optional<QList<qint32>> takeNumbers(QByteArrayView *run)
{
    const auto count = takeCount(sizeof(qint32), run);
    if (!count)
        return {};
    auto numbers = QList<qint32>(qsizetype(*count));
    for (qint32 &number : numbers)
        number = *takeNumber<qint32>(run);
    return numbers;
}

} // namespace Velno::GMP
