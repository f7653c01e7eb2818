// SPDX-License-Identifier: MIT
// Hexadecimal text to a number, as colour schemes store their colours
// ("FF8000", "$00FF00").
#pragma once

#include <QStringView>

#include "qalpack/qalpack_export.h"

namespace qal {

// The number that the hexadecimal `text` spells, or `fallback` when it spells
// none. Accepted: blanks before and after, an optional "$" or "0x" prefix,
// then 1 to 8 significant hexadecimal digits in either case (leading zeros
// do not count). Eight digits give the 32-bit pattern, so "FFFFFFFF" is -1.
// Rejected, giving the fallback: empty text, a prefix without digits, a sign,
// any other character ("12G", "1 2"), and more than 8 significant digits.
[[nodiscard]] QALPACK_EXPORT int HexToInt(QStringView text, int fallback = 0) noexcept;

// The same conversion, telling whether `text` was valid; `value` is set only
// then.
[[nodiscard]] QALPACK_EXPORT bool TryHexToInt(QStringView text, int& value) noexcept;

} // namespace qal
