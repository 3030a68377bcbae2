// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/sections.h"

#include <algorithm>
#include <array>

namespace Simulator {

namespace {

constexpr std::array sections{
    Section{1, u"GIDA", 1},        Section{2, u"MANAV", 1},  Section{3, u"İÇECEK", 10},
    Section{4, u"TEMİZLİK", 20},   Section{5, u"GİYİM", 10}, Section{6, u"KIRTASİYE", 10},
    Section{7, u"ELEKTRONİK", 20}, Section{8, u"KİTAP", 0},
};

constexpr std::array units{u"AD", u"KG", u"GR", u"LT", u"MT", u"M2", u"M3", u"SA"};

} // namespace

std::span<const Section> sectionTable()
{
    return sections;
}

const Section *findSection(int number)
{
    const auto found = std::ranges::find(sections, number, &Section::number);
    return found == sections.end() ? nullptr : &*found;
}

const char16_t *unitName(int type)
{
    return type >= 0 && type < int(units.size()) ? units[size_t(type)] : nullptr;
}

} // namespace Simulator
