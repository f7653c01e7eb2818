// SPDX-License-Identifier: MIT
#include "qalpack/runtime/Convert.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <string>

namespace qal {
namespace {

constexpr bool isBlank(char16_t c)
{
    return c > 0 && c <= u' ';
}

// Numbers are plain ASCII; copy the significant part into a byte buffer for
// std::from_chars, which is locale-independent. Any non-ASCII character is
// rejected up front. Texts of any length are read: the writer's own fixed
// six-decimal text of a large price runs past 300 characters. Short texts,
// all the usual ones, stay on the stack.
class AsciiBuffer
{
public:
    bool assign(QStringView text)
    {
        char* out = bytes_.data();
        if (text.size() > qsizetype(bytes_.size())) {
            long_.resize(std::size_t(text.size()));
            out = long_.data();
        }
        data_ = out;
        for (const QChar c : text) {
            if (c.unicode() > 0x7f)
                return false;
            *out++ = char(c.unicode());
        }
        size_ = std::size_t(text.size());
        return true;
    }
    [[nodiscard]] const char* data() const { return data_; }
    [[nodiscard]] std::size_t size() const { return size_; }

private:
    std::array<char, 128> bytes_; // only the first size_ bytes are written and read
    std::string long_;
    const char* data_ = bytes_.data();
    std::size_t size_ = 0;
};

QStringView trimLeading(QStringView text)
{
    qsizetype i = 0;
    while (i < text.size() && isBlank(text[i].unicode()))
        ++i;
    return text.mid(i);
}

QStringView trimTrailing(QStringView text)
{
    qsizetype n = text.size();
    while (n > 0 && isBlank(text[n - 1].unicode()))
        --n;
    return text.first(n);
}

// Tags, quantities and option words are short decimal numbers: read them in
// place. Handles blanks, an optional sign and one to nine decimal digits
// (which no 32-bit integer overflows); anything else is left to the general
// reader, which gives the same result for these texts.
bool readShortDecimal(QStringView text, int& value) noexcept
{
    const char16_t* p = text.utf16();
    const char16_t* const end = p + text.size();
    while (p != end && isBlank(*p))
        ++p;
    bool negative = false;
    if (p != end && (*p == u'-' || *p == u'+')) {
        negative = *p == u'-';
        ++p;
    }
    if (p == end || end - p > 9)
        return false;
    int magnitude = 0;
    for (; p != end; ++p) {
        const unsigned digit = unsigned(*p) - u'0';
        if (digit > 9)
            return false;
        magnitude = magnitude * 10 + int(digit);
    }
    value = negative ? -magnitude : magnitude;
    return true;
}

// Powers of ten that long double holds exactly: 10^k = 2^k * 5^k, and 5^27 is
// the last power of five within its 64-bit significand.
constexpr int kMaxExactPower = 27;
constexpr std::array<long double, kMaxExactPower + 1> kExactPowers = [] {
    std::array<long double, kMaxExactPower + 1> powers {};
    long double p = 1;
    for (long double& slot : powers) {
        slot = p;
        p *= 10;
    }
    return powers;
}();

// Prices as messages carry them ("345.6", "340.000000", "1e3"): a decimal
// with at most 19 significant digits is an exact 64-bit integer mantissa,
// and with a scale of at most 27 places the power of ten is exact too; one
// IEEE division (or multiplication) of two exact operands is correctly
// rounded, so the result is the same long double the general reader gives.
// Returns false, leaving `value` alone, for any other text: the general
// reader then decides, rejections included.
bool readShortDecimal(QStringView text, long double& value) noexcept
{
    const char16_t* p = text.utf16();
    const char16_t* end = p + text.size();
    while (p != end && isBlank(*p))
        ++p;
    while (end != p && isBlank(end[-1]))
        --end;
    bool negative = false;
    if (p != end && (*p == u'-' || *p == u'+')) {
        negative = *p == u'-';
        ++p;
    }
    std::uint64_t mantissa = 0;
    int significant = 0;
    int digits = 0;
    int scale = 0;
    const auto takeDigits = [&](bool fraction) {
        for (; p != end; ++p) {
            const unsigned digit = unsigned(*p) - u'0';
            if (digit > 9)
                return;
            ++digits;
            if (fraction)
                ++scale;
            if (significant > 0 || digit != 0) {
                ++significant;
                mantissa = mantissa * 10 + digit;
            }
            if (significant > 19)
                return;
        }
    };
    takeDigits(false);
    if (p != end && *p == u'.') {
        ++p;
        takeDigits(true);
    }
    if (digits == 0 || significant > 19)
        return false;
    if (p != end && (*p == u'e' || *p == u'E')) {
        ++p;
        bool negativeExponent = false;
        if (p != end && (*p == u'-' || *p == u'+')) {
            negativeExponent = *p == u'-';
            ++p;
        }
        if (p == end || end - p > 4)
            return false;
        int exponent = 0;
        for (; p != end; ++p) {
            const unsigned digit = unsigned(*p) - u'0';
            if (digit > 9)
                return false;
            exponent = exponent * 10 + int(digit);
        }
        scale -= negativeExponent ? -exponent : exponent;
    }
    if (p != end || scale > kMaxExactPower || scale < -kMaxExactPower)
        return false;
    long double magnitude = static_cast<long double>(mantissa);
    if (scale > 0)
        magnitude /= kExactPowers[static_cast<std::size_t>(scale)];
    else if (scale < 0)
        magnitude *= kExactPowers[static_cast<std::size_t>(-scale)];
    value = negative ? -magnitude : magnitude;
    return true;
}

} // namespace

bool TryStrToInt(QStringView text, int& value) noexcept
{
    if (readShortDecimal(text, value))
        return true;
    AsciiBuffer buf;
    if (!buf.assign(trimLeading(text)) || buf.size() == 0)
        return false;
    const char* first = buf.data();
    const char* last = first + buf.size();
    bool negative = false;
    if (*first == '-' || *first == '+') {
        negative = *first == '-';
        ++first;
    }
    int base = 10;
    if (first != last && *first == '$') {
        base = 16;
        ++first;
    } else if (last - first > 2 && first[0] == '0' && (first[1] == 'x' || first[1] == 'X')) {
        base = 16;
        first += 2;
    }
    if (first == last || *first == '-' || *first == '+')
        return false;
    long long magnitude = 0;
    const auto [ptr, ec] = std::from_chars(first, last, magnitude, base);
    if (ec != std::errc() || ptr != last)
        return false;
    const long long signedValue = negative ? -magnitude : magnitude;
    if (signedValue < INT32_MIN || signedValue > INT32_MAX)
        return false;
    value = int(signedValue);
    return true;
}

bool TryStrToFloat(QStringView text, long double& value) noexcept
{
    if (readShortDecimal(text, value))
        return true;
    AsciiBuffer buf;
    if (!buf.assign(trimTrailing(trimLeading(text))) || buf.size() == 0)
        return false;
    const char* first = buf.data();
    const char* last = first + buf.size();
    bool negative = false;
    if (*first == '-' || *first == '+') {
        negative = *first == '-';
        ++first;
    }
    // from_chars would take "inf" and "nan"; a price never spells those.
    if (first == last || !(std::isdigit(static_cast<unsigned char>(*first)) || *first == '.'))
        return false;
    long double parsed = 0;
    const auto [ptr, ec] = std::from_chars(first, last, parsed, std::chars_format::general);
    // Prices and spreads are doubles wherever they go from here (screens,
    // spread tables, the database): a number beyond the double range would
    // turn into infinity there, so it fails here like any other bad text.
    if (ec != std::errc() || ptr != last || !std::isfinite(static_cast<double>(parsed)))
        return false;
    value = negative ? -parsed : parsed;
    return true;
}

int StrToIntDef(QStringView text, int fallback) noexcept
{
    int value = 0;
    return TryStrToInt(text, value) ? value : fallback;
}

long double StrToFloatDef(QStringView text, long double fallback) noexcept
{
    long double value = 0;
    return TryStrToFloat(text, value) ? value : fallback;
}

} // namespace qal
