// SPDX-License-Identifier: MIT
// Text values that repeat down a column, handed out as one shared string.
#pragma once

#include <array>
#include <cstdint>

#include <QString>

#include "qalpack/qalpack_export.h"

namespace qal::backend {

// A day's blotter repeats a few hundred accounts, a few dozen dealers, one
// or two exchanges and a handful of statuses over 100,000 rows. Handing out
// the string made for the first row again (Qt's shared strings) instead of
// a new copy per row saves the conversion, the allocation and the memory.
// Values are looked up in a direct-mapped table by a hash of their bytes;
// only short ASCII values are kept. A column whose values hardly repeat (an
// order number) stops looking after a few hundred rows and converts every
// value as it comes.
class QALPACK_EXPORT RepeatedText
{
public:
    // The text of `size` bytes of UTF-8 at `bytes`, shared with an earlier
    // value of the same bytes when there is one.
    [[nodiscard]] QString text(const char* bytes, qsizetype size);
    // False once the values have proved not to repeat.
    [[nodiscard]] bool looking() const { return looking_; }

private:
    static constexpr std::size_t kSlots = 1024;
    static constexpr qsizetype kLongest = 32;
    static constexpr std::uint32_t kTrialLooks = 512;
    static constexpr std::uint32_t kTrialHits = 64;

    std::array<QString, kSlots> slots_;
    std::uint32_t looks_ = 0;
    std::uint32_t hits_ = 0;
    bool looking_ = true;
};

} // namespace qal::backend
