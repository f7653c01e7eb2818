// SPDX-License-Identifier: MIT
// Lenient number parsing: what a message or a typed field reads as.
#include "qalpack/runtime/Convert.h"

#include <QLocale>

#include <gtest/gtest.h>

namespace qal {
namespace {

TEST(Convert, IntegerTextsReadLeniently)
{
    struct Row
    {
        const char* text;
        int expected;
    };
    const Row rows[] = {
        { "12", 12 },
        { " 12", 12 },
        { "\t-7", -7 },
        { "+5", 5 },
        { "0", 0 },
        { "$1F", 31 },
        { "0x1f", 31 },
        { "2147483647", 2147483647 },
        { "-2147483648", -2147483647 - 1 },
        // not whole integers: the fallback
        { "", 0 },
        { " ", 0 },
        { "12x", 0 },
        { "12 ", 0 },
        { "1e3", 0 },
        { "1.5", 0 },
        { "2147483648", 0 },
        { "-2147483649", 0 },
        { "99999999999999999999", 0 },
        { "--1", 0 },
        { "+-1", 0 },
        { "$", 0 },
        { "0x", 0 },
        { "１２", 0 },
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(StrToIntDef(QString::fromUtf8(row.text)), row.expected);
    }
    EXPECT_EQ(StrToIntDef(u"bad", -1), -1);
}

TEST(Convert, FloatTextsReadLenientlyWithAPointWhateverTheLocale)
{
    struct Row
    {
        const char* text;
        long double expected;
    };
    const Row rows[] = {
        { "12.5", 12.5L },
        { " 12.5 ", 12.5L },
        { "-0.25", -0.25L },
        { "1e3", 1000.0L },
        { "2.5E-1", 0.25L },
        { ".5", 0.5L },
        { "7", 7.0L },
        { "", 0 },
        { "12,5", 0 },
        { "1,000", 0 },
        { "12.5x", 0 },
        { "inf", 0 },
        { "nan", 0 },
        { "1e99999", 0 },
        { "e3", 0 },
        { "-", 0 },
    };
    QLocale::setDefault(QLocale(QLocale::German));
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(StrToFloatDef(QString::fromUtf8(row.text)), row.expected);
    }
    QLocale::setDefault(QLocale::c());
}

TEST(Convert, PricesKeepExtendedPrecision)
{
    long double value = 0;
    ASSERT_TRUE(TryStrToFloat(u"12.34", value));
    EXPECT_EQ(value, 12.34L);
    EXPECT_NE(value, static_cast<long double>(12.34));
}

} // namespace
} // namespace qal
