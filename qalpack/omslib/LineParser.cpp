// SPDX-License-Identifier: MIT
// Field splitting for message lines: the hot path of every order update.
#include "qalpack/omslib/LineParser.h"

#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qal {

std::optional<QStringView> LineParser::next() noexcept
{
    if (atEnd())
        return std::nullopt;
    const qsizetype start = pos_;
    // Fields are a few characters long: a plain scan beats a vectorised
    // search that has to be set up for every field.
    const char16_t* const chars = line_.utf16();
    const char16_t separator = separator_.unicode();
    qsizetype end = start;
    while (end < line_.size() && chars[end] != separator)
        ++end;
    // Past the separator; a separator that ends the line leaves nothing behind it.
    pos_ = end + 1;
    return line_.sliced(start, end - start);
}

void TaggedSeparators::load() noexcept
{
    const char16_t* const p = chars_ + window_;
    const qsizetype count = std::min(kWindow, size_ - window_);
    std::uint64_t bits = 0;
#if defined(__SSE2__)
    if (count == kWindow) {
        const __m128i bar = _mm_set1_epi16(static_cast<short>(u'|'));
        const auto equal = [&](int i) {
            return _mm_cmpeq_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p + 8 * i)), bar);
        };
        for (int i = 0; i < 4; ++i) {
            // Two compares of eight characters packed into one mask of sixteen.
            const auto sixteen = static_cast<std::uint16_t>(
                _mm_movemask_epi8(_mm_packs_epi16(equal(2 * i), equal(2 * i + 1))));
            bits |= std::uint64_t(sixteen) << (16 * i);
        }
        bits_ = bits;
        return;
    }
#endif
    for (qsizetype i = 0; i < count; ++i)
        bits |= std::uint64_t(p[i] == u'|') << i;
    bits_ = bits;
}

} // namespace qal
