// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "till/ledger.h"
#include "till/meeting.h"
#include "till/velnotill.h"

#include <QString>

#include <optional>

/** What an application hands over, judged. */
namespace Velno::Receipts {

inline constexpr unsigned longestKey = 200;    // bytes
inline constexpr unsigned longestPerson = 100; // bytes

/** A text of 1 to `longest` bytes of UTF-8 without control characters. */
std::optional<QString> nameFrom(const char *text, unsigned longest = longestKey);

struct Place
{
    Meeting meeting;
    LedgerPlace ledger;
};

/** @param problem  what is wrong, in words @return Done, NullArgument or BadArgument */
int readSettings(const VelnoTillSettings &settings, Place *place, QString *problem);

} // namespace Velno::Receipts
