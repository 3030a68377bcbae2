// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QStringView>

#include <algorithm>
#include <optional>

namespace Simulator {

/** A number as it is typed: digits and nothing else, no sign, no spaces, no "0x"; none outside the limits. */
inline std::optional<qint64> numberBetween(QStringView text, qint64 least, qint64 most)
{
    bool fits = false;
    const qint64 number = text.toLongLong(&fits);
    const bool digits = std::ranges::all_of(text, [](QChar c) { return c >= u'0' && c <= u'9'; });
    return fits && digits && number >= least && number <= most ? std::optional(number) : std::nullopt;
}

} // namespace Simulator
