// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExtDevice/gmp3/match_ext.h"
#include "tests/support/hand_made_register.h"

#include <functional>

/** What the tests of pairings share. */
namespace TestSupport {

inline constexpr char serial[] = "UB1234567890";
inline constexpr char terminal[] = "001A2B3C4D5E";

QByteArray appHash();

/** The engine pairs with the register over a connection of their own. @return the engine's code */
int pair(Velno::GMP::MatchExt &record, HandMadeRegister &reg);

/** Whether nothing has been filled in. */
bool isEmpty(const Velno::GMP::MatchExt &record);

/** Answers honestly, but with the fields of one step changed. */
HandMadeRegister::Hook changed(Velno::GMP::MessageTag step,
                               std::function<void(HandMadeRegister &, Fields &)> change);

QList<Velno::GMP::MessageTag> kindsOf(const QList<Request> &requests);

} // namespace TestSupport
