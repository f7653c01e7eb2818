// SPDX-License-Identifier: MIT
// The OMS servers' tagged messages ("H|10|abc|11|1|": a header, then tag/value
// pairs, every field ended by "|"): the one-pass reader, the writer, and the
// helpers a record uses to store a field it read.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <functional>

#include <QString>
#include <QStringView>

#include "qalpack/qalpack_export.h"

namespace qal {

class TStringList;

// ---------------------------------------------------------------- reading

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

// Calls f(key, value) for each tag/value pair of a tagged message after
// skipping its first token (the header). A key without a value (an odd token
// at the end) is dropped; empty keys and values are passed on as they are.
// The views handed to `f` point into `message`. Messages are split as Unicode
// text, so a double-byte character whose second wire byte happens to be "|"
// is one character here and is never cut.
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

// The number that one to nine plain digits spell (a tag, a quantity, an
// option word); -1 for any other text. Up to four digits, the common case,
// are read without a loop.
[[nodiscard]] inline int PlainNumber(QStringView text) noexcept
{
    const char16_t* const c = text.utf16();
    const auto digit = [c](qsizetype i) { return unsigned(c[i]) - u'0'; };
    // A character outside '0'..'9' gives a "digit" above 9 (below '0' it wraps).
    bool bad = false;
    const auto take = [&bad](unsigned d) {
        bad |= d > 9;
        return d;
    };
    unsigned value = 0;
    switch (text.size()) {
    case 1:
        value = take(digit(0));
        break;
    case 2:
        value = take(digit(0)) * 10 + take(digit(1));
        break;
    case 3:
        value = take(digit(0)) * 100 + take(digit(1)) * 10 + take(digit(2));
        break;
    case 4:
        value = take(digit(0)) * 1000 + take(digit(1)) * 100 + take(digit(2)) * 10 + take(digit(3));
        break;
    case 5:
    case 6:
    case 7:
    case 8:
    case 9:
        for (qsizetype i = 0; i < text.size(); ++i)
            value = value * 10 + take(digit(i));
        break;
    default:
        return -1;
    }
    return bad ? -1 : int(value);
}

// The tag a message key names, -1 when the key is not a number. Every pair of
// every message comes through here: plain digits are read in place, any
// other key as StrToIntDef reads it.
[[nodiscard]] QALPACK_EXPORT int MessageTagSlow(QStringView key);
[[nodiscard]] inline int MessageTag(QStringView key)
{
    const int tag = PlainNumber(key);
    return tag >= 0 ? tag : MessageTagSlow(key);
}

// A whole-number value as StrToIntDef reads it (a bad number reads as 0);
// plain digits are read in place.
[[nodiscard]] QALPACK_EXPORT int MessageIntegerSlow(QStringView value);
[[nodiscard]] inline int MessageInteger(QStringView value)
{
    const int number = PlainNumber(value);
    return number >= 0 ? number : MessageIntegerSlow(value);
}

// Stores a message field's text. An update repeats most fields unchanged: an
// equal non-empty text keeps the string the field has, and a changed text of
// no more characters is copied into the field's own string when nothing
// shares it, instead of allocating.
QALPACK_EXPORT void AssignMessageText(QString& field, QStringView value);
// A comma-text field (attributes, details) read without copying the message
// first: SetCommaText makes a string of its own for every item.
QALPACK_EXPORT void AssignMessageCommaText(TStringList& list, QStringView value);

// ---------------------------------------------------------------- writing

// Writes "tag|value|" fields at the end of a message, in place. The text is
// grown ahead of the fields (by `ahead` characters whenever a field does not
// fit) and cut back to what was written when the writer goes, so a whole
// record costs a couple of allocations rather than a few per field.
// Integers are written in plain decimal, prices in fixed point with six
// decimals (3.5 gives "3.500000"; the text of FixedText(value, 6)).
class QALPACK_EXPORT TaggedMessageWriter
{
public:
    explicit TaggedMessageWriter(QString& message, qsizetype ahead = 0)
        : s_(message)
        , used_(message.size())
        , ahead_(ahead)
    { }
    ~TaggedMessageWriter()
    {
        if (s_.size() != used_)
            s_.resize(used_);
    }
    TaggedMessageWriter(const TaggedMessageWriter&) = delete;
    TaggedMessageWriter& operator=(const TaggedMessageWriter&) = delete;

    void addInteger(int tag, int value)
    {
        std::array<char, 16> text {};
        const char* end = std::to_chars(text.data(), text.data() + text.size(), value).ptr;
        addAscii(tag, text.data(), end);
    }
    void addDouble(int tag, double value);
    // `value` may be a piece of the message being written.
    void addString(int tag, QStringView value)
    {
        const auto* own = reinterpret_cast<const char16_t*>(s_.constData());
        const std::less<const char16_t*> before;
        if (!before(value.utf16(), own) && before(value.utf16(), own + s_.size())) {
            addCopy(tag, value); // it would move when the message grows
            return;
        }
        const Tag t(tag);
        char16_t* out = room(t.size() + 1 + value.size() + 1);
        out = std::copy(t.begin(), t.end(), out);
        *out++ = u'|';
        out = std::copy_n(value.utf16(), value.size(), out);
        *out = u'|';
    }

    // The same, only for a value that is set: a non-empty text, a non-zero
    // number. A negative price too small for six decimals is written as
    // "-0.000000" and reads back as -0: that counts as set too, or the record
    // read back would write less than the one it came from.
    void addStringIfSet(int tag, QStringView value)
    {
        if (!value.isEmpty())
            addString(tag, value);
    }
    void addIntegerIfSet(int tag, int value)
    {
        if (value != 0)
            addInteger(tag, value);
    }
    void addDoubleIfSet(int tag, long double value)
    {
        if (value != 0.0L || std::signbit(static_cast<double>(value)))
            addDouble(tag, static_cast<double>(value));
    }

private:
    class Tag
    {
    public:
        explicit Tag(int tag)
            : end_(std::to_chars(text_.data(), text_.data() + text_.size(), tag).ptr)
        { }
        [[nodiscard]] const char* begin() const { return text_.data(); }
        [[nodiscard]] const char* end() const { return end_; }
        [[nodiscard]] qsizetype size() const { return end_ - text_.data(); }

    private:
        std::array<char, 16> text_ {};
        const char* end_;
    };

    void addCopy(int tag, QStringView value);
    void addAscii(int tag, const char* value, const char* valueEnd)
    {
        const Tag t(tag);
        char16_t* out = room(t.size() + 1 + (valueEnd - value) + 1);
        out = std::copy(t.begin(), t.end(), out);
        *out++ = u'|';
        std::copy(value, valueEnd, out);
        out[valueEnd - value] = u'|';
    }
    // Where the next `count` characters go.
    char16_t* room(qsizetype count)
    {
        if (used_ + count > s_.size())
            s_.resize(used_ + count + ahead_);
        char16_t* out = reinterpret_cast<char16_t*>(s_.data()) + used_;
        used_ += count;
        return out;
    }

    QString& s_;
    qsizetype used_;
    qsizetype ahead_;
};

// One field appended to a message: TaggedMessageWriter for a single call.
QALPACK_EXPORT void DDSAddInteger(QString& s, int tag, int value);
QALPACK_EXPORT void DDSAddDouble(QString& s, int tag, double value);
QALPACK_EXPORT void DDSAddString(QString& s, int tag, QStringView value);
QALPACK_EXPORT void DDSAddStringIfSet(QString& s, int tag, QStringView value);
QALPACK_EXPORT void DDSAddIntegerIfSet(QString& s, int tag, int value);
QALPACK_EXPORT void DDSAddDoubleIfSet(QString& s, int tag, long double value);

} // namespace qal
