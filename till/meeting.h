// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QByteArray>

namespace Velno::Receipts {

/** Where the register is met, as for velnoext_initialize(), and how long it is waited for. */
struct Meeting
{
    unsigned appNo = 0;
    QByteArray serial; ///< 12 characters
    QByteArray address;
    quint16 port = 0;
    unsigned connectTimeout = 10'000; ///< ms for it to connect
    unsigned answerLimit = 120'000;   ///< ms for an answer, in which a cashier or a customer may have to act
    unsigned patience = 30'000;       ///< ms for a register that is busy, before the order waits
};

} // namespace Velno::Receipts
