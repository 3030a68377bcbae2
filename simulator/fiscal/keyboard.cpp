// SPDX-License-Identifier: Apache-2.0

#include "simulator/fiscal/keyboard.h"

#include <algorithm>
#include <array>
#include <iterator>

namespace Simulator {

namespace {

constexpr std::array table{
    KeyRow{Screen::Idle, 'E', 'E', KeyAction::OpenSale, "opens a sale"},
    KeyRow{Screen::Idle, 'M', 'M', KeyAction::OpenMenu, "opens the menu"},
    KeyRow{Screen::Menu, 'E', 'E', KeyAction::LeaveMenu, "leaves the menu"},
    KeyRow{Screen::Menu, 'C', 'C', KeyAction::LeaveMenu, "leaves the menu"},
    KeyRow{Screen::Menu, '3', '3', KeyAction::OpenInvoiceSale, "opens a sale with invoice"},
    KeyRow{Screen::Sale, '0', '9', KeyAction::Type, "begins an amount"},
    KeyRow{Screen::Sale, keyF10, keyF10, KeyAction::CloseCash,
           "takes the rest in cash and closes the receipt"},
    KeyRow{Screen::Sale, keyF11, keyF11, KeyAction::CloseCard,
           "takes the rest by card and closes the receipt"},
    KeyRow{Screen::Sale, 'C', 'C', KeyAction::AskCancel, "asks whether to cancel the sale"},
    KeyRow{Screen::Amount, '0', '9', KeyAction::Type, "goes on with the amount"},
    KeyRow{Screen::Amount, ',', ',', KeyAction::Type, "goes on with the amount"},
    KeyRow{Screen::Amount, keyF10, keyF10, KeyAction::PayCash, "takes the amount in cash"},
    KeyRow{Screen::Amount, keyF11, keyF11, KeyAction::PayCard, "takes the amount by card"},
    KeyRow{Screen::Amount, 'C', 'C', KeyAction::ClearTyped, "forgets the amount"},
    KeyRow{Screen::CancelQuestion, '1', '1', KeyAction::Cancel, "cancels the sale"},
    KeyRow{Screen::CancelQuestion, 'C', 'C', KeyAction::KeepSale, "goes on with the sale"},
};

struct KeyName
{
    int key;
    const char *name;
};

constexpr std::array names{
    KeyName{'E', "E"},      KeyName{'M', "M"},      KeyName{'C', "C"}, KeyName{'0', "0"},
    KeyName{'1', "1"},      KeyName{'3', "3"},      KeyName{'9', "9"}, KeyName{',', "comma"},
    KeyName{keyF10, "F10"}, KeyName{keyF11, "F11"},
};

} // namespace

std::span<const KeyRow> keyTable()
{
    return table;
}

std::optional<KeyAction> actionOf(Screen screen, int key)
{
    const auto row = std::ranges::find_if(
        table, [&](const KeyRow &r) { return r.screen == screen && r.firstKey <= key && key <= r.lastKey; });
    return row == table.end() ? std::nullopt : std::optional(row->action);
}

const char *keyName(int key)
{
    const auto found = std::ranges::find(names, key, &KeyName::key);
    return found == names.end() ? "?" : found->name;
}

bool TypedAmount::type(int key)
{
    const bool comma = key == ',';
    const bool digit = key >= '0' && key <= '9';
    const bool whole = m_decimals < 0;
    if (!(comma || digit) || (comma && (!whole || m_whole == 0)))
        return false;
    if (digit && (whole ? m_whole == mostWhole : m_decimals == mostDecimals))
        return false;
    ++m_keys;
    if (comma) {
        m_decimals = 0;
        return true;
    }
    ++(whole ? m_whole : m_decimals);
    m_number = m_number * 10 + (key - '0');
    return true;
}

qint64 TypedAmount::value() const
{
    qint64 kurus = m_number;
    for (int missing = mostDecimals - std::max(0, m_decimals); missing > 0; --missing)
        kurus *= 10;
    return kurus;
}

} // namespace Simulator
