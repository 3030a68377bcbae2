// SPDX-License-Identifier: Apache-2.0

#include "ExtDevice/velnoext/identity_numbers.h"

#include <algorithm>

namespace Velno::Ext {

namespace {

bool isDigits(const QByteArray &text, qsizetype count)
{
    const auto isDigit = [](char character) { return character >= '0' && character <= '9'; };
    return text.size() == count && std::all_of(text.cbegin(), text.cend(), isDigit);
}

} // namespace

bool isValidId(const QByteArray &id)
{
    if (!isDigits(id, 11) || id.at(0) == '0')
        return false;
    const auto digit = [&id](int index) { return id.at(index) - '0'; };
    const int odd = digit(0) + digit(2) + digit(4) + digit(6) + digit(8);
    const int even = digit(1) + digit(3) + digit(5) + digit(7);
    // A negative difference leaves a negative remainder, which no digit equals: such numbers are refused.
    return (odd + even + digit(9)) % 10 == digit(10) && (7 * odd - even) % 10 == digit(9);
}

bool isPersonId(const QByteArray &id)
{
    return isValidId(id) || id == "11111111111";
}

bool isTaxNumber(const QByteArray &number)
{
    if (!isDigits(number, 10))
        return false;
    const auto digit = [&number](unsigned int index) { return unsigned(number.at(index) - '0'); };
    unsigned int sum = 0;
    for (unsigned int i = 0; i < 9; ++i) {
        const unsigned int shifted = (digit(i) + 9 - i) % 10;
        const unsigned int weighed = (shifted << (9 - i)) % 9;
        sum += weighed == 0 && shifted != 0 ? 9 : weighed;
    }
    return (10 - sum % 10) % 10 == digit(9);
}

} // namespace Velno::Ext
