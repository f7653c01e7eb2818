// SPDX-License-Identifier: MIT
// Splits one message line into its fields ("H|0|0005.HK|4|1000|..."), one token
// at a time, as views over the line: no copy, no allocation, one pass.
#pragma once

#include <bit>
#include <cstdint>
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
// The "|" separators of a message, in order, found 64 characters at a time
// as one bit per character: going from field to field then costs no test on
// every character (fields are a few characters long, and a test per
// character keeps guessing wrong about where they end).
class QALPACK_EXPORT TaggedSeparators
{
public:
    explicit TaggedSeparators(QStringView message) noexcept
        : chars_(message.utf16())
        , size_(message.size())
    {
        load();
    }

    // The position of the next separator, or the message's size when there
    // is none left (and on every call after).
    qsizetype next() noexcept
    {
        while (bits_ == 0) {
            window_ += kWindow;
            if (window_ >= size_)
                return size_;
            load();
        }
        const int bit = std::countr_zero(bits_);
        bits_ &= bits_ - 1;
        return window_ + bit;
    }

private:
    static constexpr qsizetype kWindow = 64;
    void load() noexcept;

    const char16_t* chars_;
    qsizetype size_;
    qsizetype window_ = 0;
    std::uint64_t bits_ = 0;
};

template<class F>
void forEachTaggedPair(QStringView message, F&& f)
{
    // Every order update is split here, so this stays inline.
    const qsizetype size = message.size();
    TaggedSeparators separators(message);
    qsizetype key = separators.next() + 1; // after the header
    while (key < size) {
        const qsizetype keyEnd = separators.next();
        const qsizetype value = keyEnd + 1;
        if (value >= size)
            return;
        const qsizetype valueEnd = separators.next();
        std::invoke(f, message.sliced(key, keyEnd - key), message.sliced(value, valueEnd - value));
        key = valueEnd + 1;
    }
}

} // namespace qal
