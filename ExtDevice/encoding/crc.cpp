// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/encoding/crc.h"

#include <array>

namespace Velno {

namespace {

constexpr int stride = 8;
using Table = std::array<quint16, 256>;

/** tables[n][b]: what byte b does to the remainder when n more bytes follow it. */
constexpr std::array<Table, stride> makeTables()
{
    constexpr unsigned int polynomial = 0x8408; // x^16 + x^12 + x^5 + 1, lowest bit first
    std::array<Table, stride> tables{};
    for (unsigned int byte = 0; byte < 256; ++byte) {
        unsigned int remainder = byte;
        for (int bit = 0; bit < 8 * stride; ++bit) {
            remainder = remainder & 1 ? remainder >> 1 ^ polynomial : remainder >> 1;
            if (bit % 8 == 7)
                tables[size_t(bit / 8)][byte] = quint16(remainder);
        }
    }
    return tables;
}

constexpr std::array<Table, stride> tables = makeTables();

} // namespace

quint16 crc16(QByteArrayView data)
{
    const auto at = [&data](qsizetype i) { return static_cast<unsigned char>(data[i]); };
    unsigned int crc = 0xFFFF;
    qsizetype i = 0;
    for (; data.size() - i >= stride; i += stride)
        crc = tables[7][(crc ^ at(i)) & 0xFF] ^ tables[6][(crc >> 8 ^ at(i + 1)) & 0xFF] ^
              tables[5][at(i + 2)] ^ tables[4][at(i + 3)] ^ tables[3][at(i + 4)] ^ tables[2][at(i + 5)] ^
              tables[1][at(i + 6)] ^ tables[0][at(i + 7)];
    for (; i < data.size(); ++i)
        crc = crc >> 8 ^ tables[0][(crc ^ at(i)) & 0xFF];
    return quint16(~crc);
}

} // namespace Velno
