// SPDX-License-Identifier: MIT
// The tagged-message codec: pairs as the reader hands them over, fields as
// the writer writes them, and the helpers records store fields with.
#include "qalpack/omslib/TaggedMessage.h"

#include <cmath>
#include <iterator>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "qalpack/omslib/LineParser.h"
#include "qalpack/runtime/Convert.h"
#include "qalpack/runtime/Format.h"
#include "qalpack/runtime/StringList.h"

namespace {

TEST(ForEachTaggedPair, SkipsHeaderAndPairsTheRest)
{
    using Pairs = std::vector<std::pair<QString, QString>>;
    const std::vector<std::tuple<const char*, QString, Pairs>> cases {
        { "OrderUpdate", u"H|0|0005.HK|4|1000|"_qs, { { u"0"_qs, u"0005.HK"_qs }, { u"4"_qs, u"1000"_qs } } },
        { "KeyWithoutValueDropped", u"H|11|1|12|"_qs, { { u"11"_qs, u"1"_qs } } },
        { "EmptyValueKept", u"H|11||12|x|"_qs, { { u"11"_qs, QString() }, { u"12"_qs, u"x"_qs } } },
        { "HeaderOnly", u"H|"_qs, {} },
    };
    for (const auto& [name, message, pairs] : cases) {
        SCOPED_TRACE(name);
        Pairs seen;
        qal::forEachTaggedPair(message, [&seen](QStringView key, QStringView value) {
            seen.emplace_back(key.toString(), value.toString());
        });
        EXPECT_EQ(seen, pairs);
    }
}

// The pairs are found by a separator search 64 characters at a time:
// wherever the separators fall, it must hand over exactly the pairs the
// field-by-field tokens give (the header skipped, a key without a value
// dropped).
TEST(ForEachTaggedPair, MatchesTheTokensWhereverSeparatorsFall)
{
    using Pairs = std::vector<std::pair<QString, QString>>;
    std::vector<QString> messages { "", "H", "|", "H|", "H||", "||||", "H|0", "H|0|", "H|0||", "H|0|x" };
    const QString pieces[]
        = { "", "0", "487", "OMS000123", u"\u9673\u5927\u6587"_qs, "20240131-09:30:00", QString(61, u'x') };
    std::mt19937 rng(20240131);
    for (int i = 0; i < 3000; ++i) {
        QString message = "H";
        for (int fields = int(rng() % 14); fields > 0; --fields)
            message += u'|' + pieces[rng() % std::size(pieces)];
        if (rng() % 2)
            message += u'|';
        messages.push_back(message);
    }
    for (const QString& message : messages) {
        Pairs expected;
        qal::LineParser tokens(message);
        (void)tokens.next();
        while (const auto key = tokens.next()) {
            const auto value = tokens.next();
            if (!value)
                break;
            expected.emplace_back(key->toString(), value->toString());
        }
        Pairs found;
        qal::forEachTaggedPair(message, [&found](QStringView key, QStringView value) {
            found.emplace_back(key.toString(), value.toString());
        });
        ASSERT_EQ(found, expected) << message.toStdString();
    }
}

// Prices are written with std::to_chars straight into the message: the text
// must stay FixedText's, halfway cases (which go to the even digit) included.
TEST(TaggedMessageWriter, PricesAreWrittenAsFixedTextWithSixDecimals)
{
    std::vector<double> values { 0.0, -0.0, 3.5, 345.6, 1e300, -1234.5678905, 0.0000005, 9.9999995 };
    for (int k = -1000; k <= 1000; ++k)
        values.push_back(k / 128.0); // seven decimals ending in 5: exact ties
    std::mt19937_64 rng(950);
    for (int i = 0; i < 20000; ++i)
        values.push_back(std::ldexp(double(rng() >> 11), -int(rng() % 64)));
    int mismatches = 0;
    for (const double value : values) {
        QString message;
        qal::DDSAddDouble(message, 3, value);
        if (message != QStringLiteral("3|") + qal::FixedText(value, 6) + u'|') {
            ADD_FAILURE() << message.toStdString() << " for " << qal::FixedText(value, 6).toStdString();
            if (++mismatches == 10)
                return;
        }
    }
}

TEST(TaggedMessageWriter, AValueTakenFromTheMessageItselfIsWrittenWhole)
{
    QString message = QStringLiteral("0|0700.HK|");
    message.reserve(12); // so that the next field must grow the text
    qal::DDSAddString(message, 25, QStringView(message).mid(2, 7));
    EXPECT_EQ(message, u"0|0700.HK|25|0700.HK|");
}

// Each writer call appends one "tag|value|" field; the IfSet calls leave
// out what is unset, and a negative zero counts as set.
TEST(TaggedMessageWriter, WritesEachTypeAndLeavesOutWhatIsUnset)
{
    QString message = QStringLiteral("H|");
    {
        qal::TaggedMessageWriter w(message, 64);
        w.addInteger(4, -1000);
        w.addDouble(3, 98.35);
        w.addString(25, u"0005.HK");
        w.addString(30, u"\u9673\u5927\u6587|x"); // written as it is: the caller's business
        w.addStringIfSet(31, u"");
        w.addIntegerIfSet(32, 0);
        w.addDoubleIfSet(33, 0.0L);
        w.addDoubleIfSet(34, -0.0L);
        w.addDoubleIfSet(35, 1e-9L);
        w.addIntegerIfSet(36, 7);
    }
    EXPECT_EQ(
        message, u"H|4|-1000|3|98.350000|25|0005.HK|30|\u9673\u5927\u6587|x|34|-0.000000|35|0.000000|36|7|")
        << "and the room grown ahead is cut back when the writer goes";
}

// Keys and numbers of plain digits are read in place; any other text must
// read exactly as StrToIntDef reads it.
TEST(TaggedMessageReading, TagsAndIntegersReadAsStrToIntDefDoes)
{
    const char* const texts[] = { "0", "00", "7", "42", "487", "1119", "0487", "16393", "123456789",
        "0000000000", "1234567890", "2147483647", "2147483648", "-0", "-5", "+5", " 5", "5 ", "", "x", "1a",
        "/", ":", "9:", ":9", "x12", "12:4", "1234x", "$1F", "0x1f", "\uff11\uff12" };
    for (const char* text : texts) {
        SCOPED_TRACE(text);
        const QString s = QString::fromUtf8(text);
        EXPECT_EQ(qal::MessageTag(s), qal::StrToIntDef(s, -1));
        EXPECT_EQ(qal::MessageInteger(s), qal::StrToIntDef(s));
    }
}

// An unchanged text keeps the field's string (no allocation, copies stay
// shared); a changed one never changes a copy taken before.
TEST(TaggedMessageReading, AssignedTextsKeepOrReplaceTheFieldsString)
{
    QString field = QStringLiteral("OMS000123");
    const QChar* const before = field.constData();
    qal::AssignMessageText(field, u"OMS000123");
    EXPECT_EQ(field.constData(), before) << "an equal text keeps the string";
    const QString copy = field;
    qal::AssignMessageText(field, u"OMS000124");
    EXPECT_EQ(copy, u"OMS000123") << "a shared string is not written through";
    EXPECT_EQ(field, u"OMS000124");
    qal::AssignMessageText(field, u"");
    EXPECT_TRUE(field.isEmpty());

    qal::TStringList list;
    qal::AssignMessageCommaText(list, QStringView(u"H|a,\"b c\",d|").mid(2, 9));
    EXPECT_EQ(list.CommaText(), u"a,\"b c\",d");
}

} // namespace
