// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QString>

#include <span>

namespace Simulator {

/** A department of the shop; it decides the tax of what is sold in it. */
struct Section
{
    int number;           ///< 1 to 8
    const char16_t *name; ///< with its bytes in UTF-8 short of the 53 that an application has room for
    int taxRate;          ///< value-added tax in per cent, contained in every price
};

std::span<const Section> sectionTable();

/** Null when there is no section of this number. */
const Section *findSection(int number);

/** What a quantity counts, by the type of an item (0 to 7); null when there is no such type. */
const char16_t *unitName(int type);

} // namespace Simulator
