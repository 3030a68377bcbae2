// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QList>

#include <optional>
#include <span>

/**
 * The register's keyboard. An application sends keys instead of pressing them; what a key means depends on
 * what the display shows. One table says it all, and docs/simulated-register.md shows the same table.
 */
namespace Simulator {

/** Keys have the numbers of Qt's key codes. */
constexpr int keyF10 = 0x01000039;
constexpr int keyF11 = 0x0100003A;

/** What the display shows. */
enum class Screen {
    Idle,           ///< state 1: ready for a sale
    Menu,           ///< state 7: ready too, the menu of receipt kinds is open
    Sale,           ///< state 5: a sale is open, nothing is typed
    Amount,         ///< state 5: an amount is being typed
    CancelQuestion, ///< state 5: whether the sale is to be cancelled
};

enum class KeyAction {
    OpenSale,
    OpenMenu,
    LeaveMenu,
    OpenInvoiceSale,
    Type,       ///< puts the key behind the amount
    ClearTyped, ///< forgets the amount
    PayCash,    ///< takes the amount that was typed
    PayCard,
    CloseCash, ///< takes what is left and closes the receipt
    CloseCard,
    AskCancel,
    Cancel,
    KeepSale,
};

struct KeyRow
{
    Screen screen;
    int firstKey; ///< a range of keys
    int lastKey;
    KeyAction action;
    const char *meaning; ///< for the manual
};

std::span<const KeyRow> keyTable();

/** Nothing for a key without a meaning on this screen. */
std::optional<KeyAction> actionOf(Screen screen, int key);

/** 69 -> E, 44 -> comma, 0x01000039 -> F10, as the manual names them. */
const char *keyName(int key);

/** An amount as it is typed: up to 10 digits, then perhaps a comma and up to two more. */
class TypedAmount
{
public:
    /** @return false for a key that has no place behind what is typed; nothing changes then */
    bool type(int key);
    void clear() { *this = {}; }
    bool isEmpty() const { return m_keys == 0; }

    /** In kuruş. */
    qint64 value() const;

private:
    static constexpr int mostWhole = 10;
    static constexpr int mostDecimals = 2;

    int m_keys = 0;
    int m_whole = 0;     ///< digits
    int m_decimals = -1; ///< digits behind the comma; -1 without a comma
    qint64 m_number = 0; ///< all digits
};

} // namespace Simulator
