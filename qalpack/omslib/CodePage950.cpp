// SPDX-License-Identifier: MIT
// Code page 950 with Big5-HKSCS as the fallback for Hong Kong supplementary
// characters, both through iconv. Ordinary text costs one iconv call; only a
// character that 950 lacks goes through the HKSCS converter, one at a time.
#include "qalpack/omslib/CodePage950.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include <iconv.h>

#include <QSysInfo>

#include "qalpack/runtime/Exception.h"

namespace qal::cp950 {

namespace {

// QString's own storage order, so that decoded text is written straight into it.
constexpr const char* kUtf16 = QSysInfo::ByteOrder == QSysInfo::LittleEndian ? "UTF-16LE" : "UTF-16BE";

// Where iconv writes: the storage of a QString or QByteArray, grown on demand.
template<class Container>
class Sink
{
public:
    static constexpr std::size_t kUnit = sizeof(*std::declval<Container&>().data());

    Sink(Container& target, qsizetype units)
        : target_(target)
    {
        target_.resize(units);
        pos = reinterpret_cast<char*>(target_.data());
        left = static_cast<std::size_t>(units) * kUnit;
    }

    void grow()
    {
        const qsizetype written = this->written();
        const qsizetype units = target_.size() * 2 + 8;
        target_.resize(units);
        pos = reinterpret_cast<char*>(target_.data()) + written;
        left = static_cast<std::size_t>(units) * kUnit - static_cast<std::size_t>(written);
    }

    void put(char16_t unit)
    {
        static_assert(kUnit == sizeof(char16_t));
        if (left < sizeof unit)
            grow();
        std::memcpy(pos, &unit, sizeof unit);
        pos += sizeof unit;
        left -= sizeof unit;
    }

    // Cuts the container to what was written.
    void finish() { target_.resize(written() / static_cast<qsizetype>(kUnit)); }

    char* pos = nullptr;
    std::size_t left = 0;

private:
    [[nodiscard]] qsizetype written() const
    {
        return pos - reinterpret_cast<const char*>(target_.constData());
    }

    Container& target_;
};

// One open iconv conversion, closed on destruction.
class Converter
{
public:
    Converter(const char* to, const char* from)
        : cd_(iconv_open(to, from))
    {
        if (cd_ == invalid())
            throw Error(QStringLiteral("Cannot open the iconv conversion from %1 to %2")
                            .arg(QLatin1StringView(from), QLatin1StringView(to)));
    }
    ~Converter() { iconv_close(cd_); }
    Converter(const Converter&) = delete;
    Converter& operator=(const Converter&) = delete;

    // Back to the initial shift state, dropping anything held back.
    void reset() noexcept { iconv(cd_, nullptr, nullptr, nullptr, nullptr); }

    // Converts from `in` as far as it can, growing `out` when it runs out of
    // room. 0 when all of the input was converted, otherwise the errno that
    // stopped it (EILSEQ, EINVAL) with `in` at the character it stopped on.
    template<class Container>
    int convert(const char*& in, std::size_t& inLeft, Sink<Container>& out)
    {
        for (;;) {
            char* from = const_cast<char*>(in); // iconv reads through a non-const pointer, never writes
            const std::size_t result = iconv(cd_, &from, &inLeft, &out.pos, &out.left);
            in = from;
            if (result != static_cast<std::size_t>(-1))
                return 0;
            if (errno != E2BIG)
                return errno;
            out.grow();
        }
    }

    // Writes out what the conversion still holds back: encoding Big5-HKSCS keeps
    // a letter such as Ê until it knows whether a combining mark follows, and
    // decoding may keep the mark when the output had room for the letter only.
    template<class Container>
    void flush(Sink<Container>& out)
    {
        while (iconv(cd_, nullptr, nullptr, &out.pos, &out.left) == static_cast<std::size_t>(-1)
            && errno == E2BIG)
            out.grow();
    }

private:
    static iconv_t invalid() { return reinterpret_cast<iconv_t>(-1); }

    iconv_t cd_;
};

// The converters stay open for the life of the process. The library runs on
// one thread (the user-interface thread), so sharing them without a lock is
// safe; each call resets their state before use.
Converter& cp950ToUnicode()
{
    static Converter converter(kUtf16, "CP950");
    return converter;
}
Converter& hkscsToUnicode()
{
    static Converter converter(kUtf16, "BIG5-HKSCS");
    return converter;
}
Converter& unicodeToCp950()
{
    static Converter converter("CP950", kUtf16);
    return converter;
}
Converter& unicodeToHkscs()
{
    static Converter converter("BIG5-HKSCS", kUtf16);
    return converter;
}

bool isLeadByte(unsigned char byte)
{
    return byte >= 0x81 && byte <= 0xFE;
}

// The combining marks Big5-HKSCS joins with the letter before them into one code (Ê̄, Ê̌, ê̄, ê̌).
bool isHkscsCombiningMark(QChar c)
{
    return c.unicode() == 0x0304 || c.unicode() == 0x030C;
}

// UTF-16 units of the character at `pos`: 2 for a surrogate pair, else 1.
qsizetype characterLength(QStringView text, qsizetype pos)
{
    return pos + 1 < text.size() && text[pos].isHighSurrogate() && text[pos + 1].isLowSurrogate() ? 2 : 1;
}

EncodingError unencodable(QStringView text, qsizetype pos)
{
    const char32_t code = characterLength(text, pos) == 2 ? QChar::surrogateToUcs4(text[pos], text[pos + 1])
                                                          : text[pos].unicode();
    const QString hex = QString::number(static_cast<uint>(code), 16).toUpper().rightJustified(4, u'0');
    return EncodingError(
        QStringLiteral("Cannot encode U+%1 at position %2: neither code page 950 nor Big5-HKSCS has it")
            .arg(hex)
            .arg(pos));
}

} // namespace

QString decode(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return {};
    Converter& cp950 = cp950ToUnicode();
    Converter& hkscs = hkscsToUnicode();
    cp950.reset();

    QString text;
    // n wire bytes never decode to more than n UTF-16 units, so this is room enough.
    Sink out(text, bytes.size());
    const char* in = bytes.data();
    std::size_t inLeft = static_cast<std::size_t>(bytes.size());
    while (cp950.convert(in, inLeft, out) != 0) {
        // `in` is at a character 950 does not know (or a lead byte cut off at the end).
        const bool pair = isLeadByte(static_cast<unsigned char>(in[0])) && inLeft >= 2;
        const std::size_t length = pair ? 2 : 1;
        const char* fallback = in;
        std::size_t fallbackLeft = length;
        hkscs.reset();
        const bool known = hkscs.convert(fallback, fallbackLeft, out) == 0 && fallbackLeft == 0;
        hkscs.flush(out); // the second code point of a letter with a combining mark may be held back
        if (!known) {
            out.put(u'\uFFFD');
            // A lead byte takes its trail byte with it, unless that byte is ASCII:
            // it may be the "|" that ends the field, so it is decoded on its own.
            const bool swallowTrail = pair && static_cast<unsigned char>(in[1]) >= 0x80;
            fallback = in + (swallowTrail ? 2 : 1);
        }
        inLeft -= static_cast<std::size_t>(fallback - in);
        in = fallback;
    }
    out.finish();
    return text;
}

QByteArray encode(QStringView text)
{
    if (text.isEmpty())
        return {};
    Converter& cp950 = unicodeToCp950();
    Converter& hkscs = unicodeToHkscs();
    cp950.reset();

    QByteArray bytes;
    // Two bytes per UTF-16 unit at most (a surrogate pair becomes one double-byte code).
    Sink out(bytes, text.size() * 2);
    const char* const begin = reinterpret_cast<const char*>(text.utf16());
    const char* in = begin;
    std::size_t inLeft = static_cast<std::size_t>(text.size()) * sizeof(char16_t);
    while (cp950.convert(in, inLeft, out) != 0) {
        // `in` is at a character 950 lacks: try it alone (with a combining mark
        // HKSCS joins to it) in Big5-HKSCS, then carry on in 950.
        const qsizetype pos = (in - begin) / static_cast<qsizetype>(sizeof(char16_t));
        qsizetype length = characterLength(text, pos);
        if (pos + length < text.size() && isHkscsCombiningMark(text[pos + length]))
            ++length;
        const char* fallback = in;
        std::size_t fallbackLeft = static_cast<std::size_t>(length) * sizeof(char16_t);
        hkscs.reset();
        hkscs.convert(fallback, fallbackLeft, out);
        hkscs.flush(out);
        if (fallback == in)
            throw unencodable(text, pos);
        // Whatever HKSCS left (a mark it would not join) goes back to 950 and, failing that, here again.
        inLeft -= static_cast<std::size_t>(fallback - in);
        in = fallback;
    }
    cp950.flush(out);
    out.finish();
    return bytes;
}

} // namespace qal::cp950
