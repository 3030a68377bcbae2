// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/acquirers.h"

#include <algorithm>
#include <array>

namespace Simulator {

namespace {

struct Acquirer
{
    int number;
    const char16_t *name;
};

constexpr std::array acquirers{
    Acquirer{11, u"MARMARA BANK"},
    Acquirer{23, u"EGE BANK"},
    Acquirer{35, u"TOROS BANK"},
};

} // namespace

QList<qint32> activeAcquirers()
{
    QList<qint32> numbers;
    for (const Acquirer &acquirer : acquirers)
        numbers << acquirer.number;
    return numbers;
}

const char16_t *acquirerName(int acquirer)
{
    const auto found = std::ranges::find(acquirers, acquirer, &Acquirer::number);
    return found == acquirers.end() ? nullptr : found->name;
}

int acquirerInTurn(qsizetype cardPayments)
{
    return acquirers[size_t(cardPayments) % acquirers.size()].number;
}

} // namespace Simulator
