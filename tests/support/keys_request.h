// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "tests/support/plain.h"
#include "tests/support/test_support.h"

#include <QVector>

/** How keys are pressed from afar. */
namespace TestSupport {

inline constexpr int f10 = 0x01000039;
inline constexpr int f11 = 0x0100003A;
inline constexpr int comma = 44;

/** The request that has keys pressed while a sale is open. */
inline QByteArray keysRequest(const QVector<int> &keys, bool answerWanted)
{
    return hex("00000003 00000004 00000001 FFFFFFFF") + plain(keys, answerWanted);
}

} // namespace TestSupport
