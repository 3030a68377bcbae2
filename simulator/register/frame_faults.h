// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/register/faults.h"

#include <QByteArray>

/** The faults that damage what leaves, after it was said right. */
namespace Simulator {

/** The serial number that a frame carries. */
QByteArray serialUnderFaults(QByteArray serial, const Faults &faults);

QByteArray withOneBitWrong(QByteArray bytes);

/** The elements of an encrypted answer: what stands beside the ciphertext. */
QByteArray elementsUnderFaults(QByteArray elements, const Faults &faults);

/** A frame of a key exchange as it leaves. */
QByteArray pairingBytes(const QByteArray &frame, const Faults &faults);

/** The bytes of an answer to a command. */
struct CommandBytes
{
    QByteArray now;
    QByteArray later; ///< what follows after a while; empty without the fault that holds it back
};

/** A frame of an answer to a command as it leaves, with its 4-byte length. */
CommandBytes commandBytes(const QByteArray &frame, const Faults &faults);

} // namespace Simulator
