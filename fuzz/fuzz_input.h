// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <type_traits>

/**
 * What the fuzz targets share. A target is one function that takes any bytes; libFuzzer calls it with bytes
 * of its own making, and replay.cpp with those of the corpus.
 */
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);

/** Ends the program, whoever runs the target: what must hold for every input did not hold for this one. */
#define FUZZ_EXPECT(condition)                                                                               \
    do {                                                                                                     \
        if (!(condition)) {                                                                                  \
            std::fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #condition);               \
            std::abort();                                                                                    \
        }                                                                                                    \
    } while (false)

namespace Fuzz {

/** Reads an input from its front. When it is used up there are zeros and empty chunks. */
class Input
{
public:
    Input(const std::uint8_t *data, std::size_t size)
        : m_bytes(reinterpret_cast<const char *>(data), qsizetype(size))
    {
    }

    bool atEnd() const { return m_bytes.isEmpty(); }

    std::uint8_t byte()
    {
        const std::uint8_t first = atEnd() ? 0 : std::uint8_t(m_bytes.front());
        m_bytes.remove(0, 1);
        return first;
    }

    /** Big-endian. */
    template <typename Number>
    Number number()
    {
        std::make_unsigned_t<Number> value = 0;
        for (std::size_t i = 0; i < sizeof value; ++i)
            value = std::make_unsigned_t<Number>(value << 8 | byte());
        return Number(value);
    }

    /** As many bytes as the two in front of them say, or what is there. */
    QByteArray chunk() { return take(number<std::uint16_t>()); }

    QByteArray rest() { return take(m_bytes.size()); }

private:
    QByteArray take(qsizetype count)
    {
        const QByteArray taken = m_bytes.left(count);
        m_bytes.remove(0, count);
        return taken;
    }

    QByteArray m_bytes;
};

/** What the code under test logs is not what a fuzzer is run for. @return true */
inline bool silence()
{
    if (!std::freopen("/dev/null", "w", stdout))
        std::abort();
    return true;
}

} // namespace Fuzz
