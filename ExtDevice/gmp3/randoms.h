// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

namespace Velno::GMP {

/**
 * Bytes of the C library's generator, seeded with the milliseconds of the local time: two calls in the same
 * millisecond return the same. Not fit for secrets; the protocol's randoms are made of it.
 */
QByteArray GetRandom(int count);

} // namespace Velno::GMP
