// SPDX-License-Identifier: MIT
#include "qalpack/omslib/LineParser.h"

#include <iterator>
#include <random>
#include <tuple>
#include <utility>
#include <vector>

#include <QStringList>

#include <gtest/gtest.h>

namespace {

TEST(LineParser, SplitsOnSeparatorByTokenRules)
{
    struct Case
    {
        const char* name;
        QString line;
        QStringList tokens;
        QChar separator = u'|';
    };
    const std::vector<Case> cases {
        { "OrderUpdate", u"H|0|0005.HK|4|1000|"_qs,
            { u"H"_qs, u"0"_qs, u"0005.HK"_qs, u"4"_qs, u"1000"_qs } },
        { "EmptyFieldBetweenSeparators", u"a||b"_qs, { u"a"_qs, QString(), u"b"_qs } },
        { "TrailingSeparatorAddsNothing", u"a|b|"_qs, { u"a"_qs, u"b"_qs } },
        { "EmptyFieldBeforeTrailingSeparator", u"a||"_qs, { u"a"_qs, QString() } },
        { "SeparatorAloneIsOneEmptyField", u"|"_qs, { QString() } },
        { "EmptyLineHasNoFields", QString(), {} },
        { "NoSeparatorIsOneField", u"a"_qs, { u"a"_qs } },
        { "OtherSeparator", u"D001,D002|x,"_qs, { u"D001"_qs, u"D002|x"_qs }, u',' },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        QStringList tokens;
        qal::LineParser parser(c.line, c.separator);
        while (const auto token = parser.next())
            tokens.append(token->toString());
        EXPECT_EQ(tokens, c.tokens);
        EXPECT_TRUE(parser.atEnd());
        EXPECT_FALSE(parser.next()) << "stays used up";
    }
}

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
TEST(LineParser, TaggedPairsMatchTheTokensWhereverSeparatorsFall)
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

} // namespace
