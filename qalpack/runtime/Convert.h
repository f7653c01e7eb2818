// SPDX-License-Identifier: MIT
// Lenient number parsing, as order messages and entry controls rely on it: a
// text that is not a whole number gives the default (0) and never raises.
#pragma once

#include <QStringView>

#include "qalpack/qalpack_export.h"

namespace qal {

// The integer that `text` spells, or `fallback` when it is not one.
// Accepted: leading blanks (characters up to the space), an optional sign,
// decimal digits, or hexadecimal after "$" or "0x". Rejected (fallback):
// empty text, trailing characters of any kind ("12x", "12 "), exponents
// ("1e3"), and values outside the 32-bit signed range.
[[nodiscard]] QALPACK_EXPORT int StrToIntDef(QStringView text, int fallback = 0) noexcept;

// The floating-point number that `text` spells, or `fallback` when it is not
// one. "." is the decimal separator whatever the locale; no group separators.
// Accepted: blanks before and after, an optional sign, digits with an
// optional fraction and exponent ("1e3" is 1000). Rejected: empty text,
// trailing characters, "inf"/"nan", and values outside the range of a double
// ("1e309", "-1e400": they would become infinite as a double price). Values
// too small for a double are accepted and read as they are (they become 0 or
// a subnormal as a double). Texts of any length are read, so every price text
// that DDSAddDouble writes reads back.
[[nodiscard]] QALPACK_EXPORT long double StrToFloatDef(QStringView text, long double fallback = 0) noexcept;

// The same conversions, telling whether the text was a valid number.
[[nodiscard]] QALPACK_EXPORT bool TryStrToInt(QStringView text, int& value) noexcept;
[[nodiscard]] QALPACK_EXPORT bool TryStrToFloat(QStringView text, long double& value) noexcept;

} // namespace qal
