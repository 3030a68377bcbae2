// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

#include <algorithm>
#include <memory>

namespace TestSupport {

/**
 * Bytes in a heap block of exactly their size, without a terminating zero: a read past the end is a read past
 * the block, which AddressSanitizer reports.
 */
class ExactBytes
{
public:
    explicit ExactBytes(const QByteArray &bytes)
        : m_block(new char[size_t(bytes.size())])
        , m_size(bytes.size())
    {
        std::copy(bytes.cbegin(), bytes.cend(), m_block.get());
    }

    /** Valid while this object lives. */
    QByteArray view() const { return QByteArray::fromRawData(m_block.get(), m_size); }

private:
    std::unique_ptr<char[]> m_block;
    qsizetype m_size;
};

} // namespace TestSupport
