#pragma once

#include <iostream>

namespace Velno::Ext {

/**
 * Runs a function of the engine and leaves std::cout, which is the application's, writing numbers as it did:
 * the engine's line about a wrong CRC switches it to upper-case hexadecimal for good.
 *
 * @param run  returns a code of the engine
 * @return that code
 */
template <typename Run>
int keepingNumberFormat(const Run &run)
{
    constexpr int wrongCrc = 4001;
    const auto before = std::cout.flags();
    const int result = run();
    if (result == wrongCrc)
        std::cout.flags(before);
    return result;
}

} // namespace Velno::Ext
