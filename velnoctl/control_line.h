// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "simulator/common/control_address.h"

#include <QDeadlineTimer>

namespace VelnoCtl {

/** What became of a line that was said to velno-register or velno-relay. */
struct ControlAnswer
{
    enum Outcome { Obeyed, Refused, Unanswered, Stopped };

    Outcome outcome = Obeyed;
    QString text = {}; ///< why it was refused and what is accepted, or why no answer came
};

/**
 * Says one line where such a program takes lines (its --control), and waits for the answer.
 *
 * @param line       without its end, nor one within
 * @param interrupt  a descriptor that becomes readable when nobody waits for the answer any more
 */
ControlAnswer sayToSimulator(const Simulator::ControlAddress &address, const QString &line,
                             const QDeadlineTimer &deadline, int interrupt);

} // namespace VelnoCtl
