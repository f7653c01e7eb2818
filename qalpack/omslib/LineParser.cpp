// SPDX-License-Identifier: MIT
// Field splitting for message lines: the hot path of every order update.
#include "qalpack/omslib/LineParser.h"

namespace qal {

std::optional<QStringView> LineParser::next() noexcept
{
    if (atEnd())
        return std::nullopt;
    const qsizetype start = pos_;
    qsizetype end = line_.indexOf(separator_, start);
    if (end < 0)
        end = line_.size();
    // Past the separator; a separator that ends the line leaves nothing behind it.
    pos_ = end + 1;
    return line_.sliced(start, end - start);
}

} // namespace qal
