// SPDX-License-Identifier: MIT
// Lenient number parsing: what a message or a typed field reads as.
#include "qalpack/runtime/Convert.h"

#include <charconv>
#include <cmath>
#include <random>
#include <string>
#include <vector>

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
        { "1e309", 0 },
        { "-1e309", 0 },
        { "1.8e308", 0 },
        { "1e400", 0 },
        { "1.7e308", 1.7e308L },
        { "-1.7976931348623157e308", -1.7976931348623157e308L },
        { "1e-400", 1e-400L },
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

// A price text may be as long as the writer makes it: a fixed six-decimal
// text of a large price runs to hundreds of characters.
TEST(Convert, LongNumberTextsReadWhole)
{
    const struct
    {
        const char* name;
        QString text;
        bool valid;
        long double expected;
    } cases[] = {
        { "LargePriceInFixedText", QStringLiteral("1") + QString(121, u'0') + QStringLiteral(".000000"), true,
            1e121L },
        { "ManyLeadingZeros", QString(300, u'0') + QStringLiteral("12.5"), true, 12.5L },
        { "TinyFraction", QStringLiteral("0.") + QString(200, u'0') + QStringLiteral("1"), true, 1e-201L },
        { "BeyondDoubleInFixedText", QStringLiteral("1") + QString(309, u'0') + QStringLiteral(".000000"),
            false, 0 },
        { "LongGarbage", QString(200, u'7') + QStringLiteral("x"), false, 0 },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        long double value = 0;
        EXPECT_EQ(TryStrToFloat(c.text, value), c.valid);
        if (c.valid) {
            EXPECT_EQ(value, c.expected);
        }
    }
    EXPECT_EQ(StrToIntDef(QString(200, u'0') + QStringLiteral("42")), 42);
}

TEST(Convert, PricesKeepExtendedPrecision)
{
    long double value = 0;
    ASSERT_TRUE(TryStrToFloat(u"12.34", value));
    EXPECT_EQ(value, 12.34L);
    EXPECT_NE(value, static_cast<long double>(12.34));
}

// Short decimals (prices, quantities) are read by a fast path; every text must
// still give the general reader's value to the last bit, rounding included.
TEST(Convert, ShortDecimalsReadExactlyAsTheGeneralReaderDoes)
{
    std::vector<std::string> texts {
        "0",
        "-0",
        "0.000000",
        "345.6",
        "345.600000",
        "340.2",
        "0.1",
        "0.3",
        "2.675",
        "1.",
        "1.e5",
        ".5e-3",
        "9999999999999999999",
        "18446744073709551615",
        "12345678901234567890",
        "0.0000000000000000000001",
        "1e27",
        "1e-27",
        "1e28",
        "1e-28",
        "123456789012345678.9e-8",
        "7E+0004",
        "000000000000000000000012.5",
    };
    std::mt19937_64 rng(20240131);
    for (int i = 0; i < 100000; ++i) {
        std::string digits;
        const std::size_t width = 1 + rng() % 21;
        while (digits.size() < width)
            digits += std::to_string(rng());
        digits.resize(width);
        const std::size_t point = rng() % (digits.size() + 1);
        std::string text = (rng() % 2 ? "-" : "") + digits.substr(0, point) + "." + digits.substr(point);
        if (rng() % 3 == 0)
            text += "e" + std::to_string(int(rng() % 61) - 30);
        texts.push_back(text);
    }
    int mismatches = 0;
    for (const std::string& text : texts) {
        long double expected = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), expected);
        ASSERT_TRUE(error == std::errc() && end == text.data() + text.size()) << text;
        long double value = 0;
        const bool read = TryStrToFloat(QString::fromStdString(text), value);
        if (!read || value != expected || std::signbit(value) != std::signbit(expected)) {
            ADD_FAILURE() << text << " read as " << double(value);
            if (++mismatches == 10)
                return;
        }
    }
}

TEST(Convert, ShortIntegersReadExactlyAsTheGeneralReaderDoes)
{
    std::mt19937_64 rng(7);
    for (int i = 0; i < 100000; ++i) {
        const auto number = static_cast<long long>(rng() % 4294967296ULL) - 2147483648LL;
        const int width = 1 + int(rng() % 11);
        std::string text = std::to_string(number).substr(0, std::size_t(width));
        long long expected = 0;
        const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), expected);
        int value = 0;
        const bool read = TryStrToInt(QString::fromStdString(text), value);
        const bool valid = error == std::errc() && end == text.data() + text.size();
        ASSERT_EQ(read, valid) << text;
        if (valid) {
            ASSERT_EQ(value, expected) << text;
        }
    }
}

} // namespace
} // namespace qal
