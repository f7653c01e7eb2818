// SPDX-License-Identifier: MIT
// Field helpers the records share; not installed.
#pragma once

#include <cstring>
#include <type_traits>

namespace qal {

// Zeroes extended prices with plain stores. Their member initialisers zero
// them already, but the compiler writes each through the x87 unit and reads
// it back for the next, and the processor cannot forward an 80-bit store to
// a load: every fresh record stalls on the chain. Stores here make the
// initialisers' ones dead, and the compiler drops them, as long as no call
// comes between (the string lists' constructor is inline for that reason).
template<class... T>
void zeroPrices(T&... prices) noexcept
{
    static_assert((std::is_same_v<T, long double> && ...));
    (std::memset(&prices, 0, sizeof prices), ...);
}

} // namespace qal
