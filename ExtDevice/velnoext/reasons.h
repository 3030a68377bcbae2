// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QVector>

/** Causes out of what a register tells when it does not do what it is asked for. */
namespace Velno::Ext {

/** The one bit of a register's error that keeps nothing away by itself: it stands beside a sale's payments.
 */
constexpr int harmlessError = 8;

/** What a register tells of itself in the answer to a step of a sale. */
struct Standing
{
    int state = -1;
    QVector<int> display; ///< what its display says: the first item; 1 when the sale takes input
    int error = 0;        ///< of its own; 0 for none
};

// Each is a VelnoCause.
int causeOfError(int error);
int causeOfState(int state);
int causeOfDisplay(const QVector<int> &display);

/** The first that there is: an error, a state without a sale, a display that takes no input, just "no". */
int causeOfRefusal(const Standing &standing);

/** Whether a display takes the next step of a sale. */
bool takesInput(const QVector<int> &display);

} // namespace Velno::Ext
