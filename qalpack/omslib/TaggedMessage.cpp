// SPDX-License-Identifier: MIT
#include "qalpack/omslib/TaggedMessage.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

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

int MessageTagSlow(QStringView key)
{
    return StrToIntDef(key, -1);
}

int MessageIntegerSlow(QStringView value)
{
    return StrToIntDef(value);
}

void AssignMessageText(QString& field, QStringView value)
{
    const qsizetype size = value.size();
    if (size > 0 && field.size() == size && field == value)
        return;
    if (size > 0 && size <= field.capacity() && field.isDetached()) {
        field.resize(size);
        std::memmove(static_cast<void*>(field.data()), value.utf16(), std::size_t(size) * sizeof(char16_t));
        return;
    }
    field = value.toString();
}

void AssignMessageCommaText(TStringList& list, QStringView value)
{
    list.SetCommaText(QString::fromRawData(reinterpret_cast<const QChar*>(value.utf16()), value.size()));
}

// std::to_chars in fixed notation rounds exactly as printf does, as {fmt}
// does for FixedText.
void TaggedMessageWriter::addDouble(int tag, double value)
{
    // Room for the longest double in fixed notation: 309 digits, sign, point, six decimals.
    std::array<char, 352> text {};
    const char* end
        = std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::fixed, 6).ptr;
    addAscii(tag, text.data(), end);
}

void TaggedMessageWriter::addCopy(int tag, QStringView value)
{
    const QString copy = value.toString();
    addString(tag, copy);
}

void DDSAddInteger(QString& s, int tag, int value)
{
    TaggedMessageWriter(s).addInteger(tag, value);
}

void DDSAddDouble(QString& s, int tag, double value)
{
    TaggedMessageWriter(s).addDouble(tag, value);
}

void DDSAddString(QString& s, int tag, QStringView value)
{
    TaggedMessageWriter(s).addString(tag, value);
}

void DDSAddStringIfSet(QString& s, int tag, QStringView value)
{
    TaggedMessageWriter(s).addStringIfSet(tag, value);
}

void DDSAddIntegerIfSet(QString& s, int tag, int value)
{
    TaggedMessageWriter(s).addIntegerIfSet(tag, value);
}

void DDSAddDoubleIfSet(QString& s, int tag, long double value)
{
    TaggedMessageWriter(s).addDoubleIfSet(tag, value);
}

} // namespace qal
