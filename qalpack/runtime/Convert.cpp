// SPDX-License-Identifier: MIT
#include "qalpack/runtime/Convert.h"

#include <array>
#include <charconv>
#include <cmath>

namespace qal {
namespace {

constexpr bool isBlank(char16_t c)
{
    return c > 0 && c <= u' ';
}

// Numbers are plain ASCII; copy the significant part into a byte buffer for
// std::from_chars, which is locale-independent. Anything longer than any
// valid number, or any non-ASCII character, is rejected up front.
struct AsciiBuffer
{
    std::array<char, 128> bytes {};
    std::size_t size = 0;

    bool assign(QStringView text)
    {
        if (text.size() >= qsizetype(bytes.size()))
            return false;
        for (const QChar c : text) {
            if (c.unicode() > 0x7f)
                return false;
            bytes[size++] = char(c.unicode());
        }
        return true;
    }
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

} // namespace

bool TryStrToInt(QStringView text, int& value) noexcept
{
    AsciiBuffer buf;
    if (!buf.assign(trimLeading(text)) || buf.size == 0)
        return false;
    const char* first = buf.bytes.data();
    const char* last = first + buf.size;
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
    AsciiBuffer buf;
    if (!buf.assign(trimTrailing(trimLeading(text))) || buf.size == 0)
        return false;
    const char* first = buf.bytes.data();
    const char* last = first + buf.size;
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
    if (ec != std::errc() || ptr != last || !std::isfinite(parsed))
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
