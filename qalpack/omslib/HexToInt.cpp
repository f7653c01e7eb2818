// SPDX-License-Identifier: MIT
#include "qalpack/omslib/HexToInt.h"

#include <cstdint>

namespace qal {

namespace {

constexpr int kMaxDigits = 8;

int hexDigit(QChar c)
{
    const char16_t u = c.unicode();
    if (u >= u'0' && u <= u'9')
        return u - u'0';
    if (u >= u'a' && u <= u'f')
        return u - u'a' + 10;
    if (u >= u'A' && u <= u'F')
        return u - u'A' + 10;
    return -1;
}

} // namespace

bool TryHexToInt(QStringView text, int& value) noexcept
{
    text = text.trimmed();
    if (text.startsWith(u'$'))
        text = text.mid(1);
    else if (text.startsWith(u"0x", Qt::CaseInsensitive))
        text = text.mid(2);
    if (text.isEmpty())
        return false;
    std::uint32_t result = 0;
    int significant = 0;
    for (const QChar c : text) {
        const int digit = hexDigit(c);
        if (digit < 0)
            return false;
        if (result == 0 && digit == 0)
            continue;
        if (++significant > kMaxDigits)
            return false;
        result = (result << 4) | static_cast<std::uint32_t>(digit);
    }
    value = static_cast<int>(result);
    return true;
}

int HexToInt(QStringView text, int fallback) noexcept
{
    int value = 0;
    return TryHexToInt(text, value) ? value : fallback;
}

} // namespace qal
