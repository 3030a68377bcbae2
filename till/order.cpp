// SPDX-License-Identifier: Apache-2.0

#include "till/order.h"

using namespace Qt::StringLiterals;

namespace Velno::Receipts {

bool isSettled(State state)
{
    return state == State::Closed || state == State::Cancelled || state == State::Refused;
}

QString textOf(Answer answer)
{
    switch (answer) {
    case Answer::None:
        break;
    case Answer::Paid:
        return u"it was paid"_s;
    case Answer::SellAgain:
        return u"sell again"_s;
    case Answer::Drop:
        return u"drop it"_s;
    }
    return {};
}

} // namespace Velno::Receipts
