// SPDX-License-Identifier: MIT
// Splits one line into its fields ("H|0|0005.HK|4|1000|..."), one token at a
// time, as views over the line: no copy, no allocation, one pass. Tagged
// messages read as tag/value pairs: TaggedMessage.h.
#pragma once

#include <optional>

#include <QChar>
#include <QStringView>

#include "qalpack/qalpack_export.h"

namespace qal {

// Walks `line` field by field. Messages are split as Unicode text, so a
// double-byte character whose second wire byte happens to be "|" is one
// character here and is never cut.
//
// Token rules, with "|" as the separator:
//   "a||b" gives "a", "", "b"   (an empty field between separators is a field)
//   "a|b|" gives "a", "b"       (the separator that ends a written message adds nothing)
//   "a||"  gives "a", ""
//   "|"    gives ""             (one empty field)
//   ""     gives nothing
class QALPACK_EXPORT LineParser
{
public:
    // `line` must outlive the parser and every token it hands out (tokens are views into it).
    explicit LineParser(QStringView line, QChar separator = u'|') noexcept
        : line_(line)
        , separator_(separator)
    { }

    // The next token, or std::nullopt when the line is used up (and on every call after).
    [[nodiscard]] std::optional<QStringView> next() noexcept;

    // True when next() has no token left to give.
    [[nodiscard]] bool atEnd() const noexcept { return pos_ >= line_.size(); }

private:
    QStringView line_;
    qsizetype pos_ = 0;
    QChar separator_;
};

} // namespace qal
