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

} // namespace
