// SPDX-License-Identifier: MIT
#include "qalpack/omslib/LineParser.h"

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

} // namespace qal
