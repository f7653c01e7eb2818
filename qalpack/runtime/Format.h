// SPDX-License-Identifier: MIT
// printf-style text formatting for labels such as "STP:%.3f;" and
// "Order : %s". Numbers always use "." as the decimal separator, whatever the
// locale, because these texts travel in messages and remarks.
#pragma once

#include <initializer_list>
#include <variant>

#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal {

// One argument of Format: a text ("%s"), an integer ("%d") or a number
// ("%f", "%.3f"). Long doubles are formatted in double precision.
class QALPACK_EXPORT FormatArg
{
public:
    FormatArg(const QString& text)
        : value_(text)
    { }
    FormatArg(const char* text)
        : value_(QString::fromUtf8(text))
    { }
    FormatArg(int number)
        : value_(number)
    { }
    FormatArg(double number)
        : value_(number)
    { }
    FormatArg(long double number)
        : value_(double(number))
    { }

    [[nodiscard]] const std::variant<QString, int, double>& value() const { return value_; }

private:
    std::variant<QString, int, double> value_;
};

// Fills the printf-style placeholders of `pattern` with `args`, in order.
// Throws qal::Error naming the pattern when a placeholder does not match its
// argument or arguments are missing (a broken translation, typically).
[[nodiscard]] QALPACK_EXPORT QString Format(const QString& pattern, std::initializer_list<FormatArg> args);

// `value` in fixed-point notation with `decimals` digits after the point:
// FixedText(3.5, 6) is "3.500000".
[[nodiscard]] QALPACK_EXPORT QString FixedText(double value, int decimals);

} // namespace qal
