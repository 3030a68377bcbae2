// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/gmp3/randoms.h"

#include <QTime>

#include <cstdlib>

namespace Velno::GMP {

QByteArray GetRandom(int count)
{
    auto state = unsigned(QTime::currentTime().msec());
    QByteArray bytes;
    bytes.reserve(qMax(count, 0));
    for (int i = 0; i < count; ++i)
        bytes.append(char(rand_r(&state) & 0xFF));
    return bytes;
}

} // namespace Velno::GMP
