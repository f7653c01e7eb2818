// SPDX-License-Identifier: MIT
#include "qalpack/omslib/CodePage950.h"

#include <tuple>
#include <vector>

#include <QStringList>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "qalpack/omslib/LineParser.h"
#include "qalpack/runtime/Exception.h"

namespace {

struct WireCase
{
    const char* name;
    QString text;
    QByteArray bytes;
};

// Text that encodes to exactly these bytes, and bytes that decode back to the text.
const std::vector<WireCase> kWire {
    { "Ascii", u"H|0|0005.HK|4|1000|"_qs, "H|0|0005.HK|4|1000|" },
    { "TrailByteIsSeparator", u"李四"_qs, "\xA7\xF5\xA5\x7C" },
    { "EuroFromCodePage950", u"€"_qs, "\xA3\xE1" },
    { "HongKongCharacter", u"嘅"_qs, "\x9D\xEF" },
    { "HongKongCharacterOutsideBmp", u"𨋢"_qs, "\x9D\xF2" },
    { "LetterWithCombiningMark", u"\u00CA\u0304"_qs, "\x88\x62" },
    { "LetterHeldBackThenCodePage950", u"\u00CA李"_qs, "\x88\x66\xA7\xF5" },
    { "MixedClientName", u"陳大文嘅𨋢€ Ltd"_qs, "\xB3\xAF\xA4\x6A\xA4\xE5\x9D\xEF\x9D\xF2\xA3\xE1 Ltd" },
};

TEST(CodePage950, ConvertsBothWays)
{
    for (const auto& c : kWire) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(qal::cp950::encode(c.text).toHex(' '), c.bytes.toHex(' '));
        EXPECT_EQ(qal::cp950::decode(c.bytes), c.text);
    }
}

TEST(CodePage950, SplittingDecodedMessageKeepsDoubleByteName)
{
    QStringList tokens;
    const QString message = qal::cp950::decode("H|10|\xA7\xF5\xA5\x7C|");
    for (qal::LineParser parser(message); const auto token = parser.next();)
        tokens.append(token->toString());
    EXPECT_EQ(tokens, (QStringList { u"H"_qs, u"10"_qs, u"李四"_qs }));
}

TEST(CodePage950, BadBytesBecomeReplacementAndRestIsKept)
{
    const std::vector<WireCase> cases {
        { "UnknownSingleByte", u"A\uFFFDB|1|"_qs, "A\377B|1|" }, // octal: "\xFFB" would be one escape
        { "LeadByteCutOffAtEnd", u"H|1|\uFFFD"_qs, "H|1|\xA7" },
        { "UnknownPairIsOneReplacement", u"a\uFFFDb"_qs, "a\243\376b" },
        { "UnknownPairNeverSwallowsSeparator", u"a\uFFFD|b"_qs, "a\x81|b" },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(qal::cp950::decode(c.bytes), c.text);
    }
}

TEST(CodePage950, UncarriableCharacterThrowsNamingCodeAndPosition)
{
    const std::vector<std::tuple<const char*, QString, const char*>> cases {
        { "Emoji", u"嘅A😀"_qs, "U+1F600 at position 2" },
        { "ThaiLetter", u"ab\u0E01"_qs, "U+0E01 at position 2" },
        { "LoneHighSurrogateAtEnd", u"李"_qs + QChar(0xD83D), "U+D83D at position 1" },
        { "MarkHongKongDoesNotJoin", u"\u00CA\u0304\u0304"_qs, "U+0304 at position 2" },
    };
    for (const auto& [name, text, expected] : cases) {
        SCOPED_TRACE(name);
        EXPECT_THAT([&] { (void)qal::cp950::encode(text); },
            testing::ThrowsMessage<qal::EncodingError>(testing::HasSubstr(expected)));
        EXPECT_EQ(qal::cp950::encode(u"李"_qs), QByteArray("\xA7\xF5")) << "the next call starts clean";
    }
}

TEST(CodePage950, MixedMessageRoundTrips)
{
    QByteArray wire;
    for (const auto& c : kWire)
        wire += c.bytes + '|';
    wire = wire.repeated(50);
    EXPECT_EQ(qal::cp950::encode(qal::cp950::decode(wire)), wire);
}

} // namespace
