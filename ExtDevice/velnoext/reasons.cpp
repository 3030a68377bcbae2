// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/reasons.h"

#include "ExtDevice/velnoext/velnoext.h"

namespace Velno::Ext {

namespace {

constexpr int largestNumber = 9999; // that has room between two bases

int causeOf(int base, int number)
{
    return number >= 0 && number <= largestNumber ? base + number : VelnoCause_OtherNumber;
}

} // namespace

int causeOfError(int error)
{
    return causeOf(VelnoCause_OfError, error);
}

int causeOfState(int state)
{
    return causeOf(VelnoCause_OfState, state);
}

int causeOfDisplay(const QVector<int> &display)
{
    return display.isEmpty() ? int(VelnoCause_DisplayEmpty) : causeOf(VelnoCause_OfDisplay, display.first());
}

int causeOfRefusal(const Standing &standing)
{
    if ((standing.error & ~harmlessError) != 0)
        return causeOfError(standing.error);
    if (standing.state != VelnoEcrState_SaleOpen)
        return causeOfState(standing.state);
    return takesInput(standing.display) ? int(VelnoCause_SaidNo) : causeOfDisplay(standing.display);
}

bool takesInput(const QVector<int> &display)
{
    return !display.isEmpty() && display.first() == 1;
}

} // namespace Velno::Ext
