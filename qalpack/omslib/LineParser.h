// SPDX-License-Identifier: MIT
// Splits one message line into its fields ("H|0|0005.HK|4|1000|..."), one token
// at a time, as views over the line: no copy, no allocation, one pass.
#pragma once

#include <functional>
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

// Calls f(key, value) for each tag/value pair of a tagged message
// ("H|10|abc|11|1|": header "H", then 10=abc, 11=1), after skipping its first
// token (the header). A key without a value (an odd token at the end) is
// dropped; empty keys and values are passed on as they are. The views handed
// to `f` point into `message`.
template<class F>
void forEachTaggedPair(QStringView message, F&& f)
{
    // One pass over the characters, with the token rules of LineParser: a
    // message is split for every order update, so this stays inline.
    const char16_t* const chars = message.utf16();
    const qsizetype size = message.size();
    const auto fieldEnd = [chars, size](qsizetype from) {
        while (from < size && chars[from] != u'|')
            ++from;
        return from;
    };
    if (size == 0)
        return;
    qsizetype pos = fieldEnd(0) + 1;
    while (pos < size) {
        const qsizetype keyEnd = fieldEnd(pos);
        const qsizetype valueStart = keyEnd + 1;
        if (valueStart >= size)
            return;
        const qsizetype valueEnd = fieldEnd(valueStart);
        std::invoke(f, message.sliced(pos, keyEnd - pos), message.sliced(valueStart, valueEnd - valueStart));
        pos = valueEnd + 1;
    }
}

} // namespace qal
