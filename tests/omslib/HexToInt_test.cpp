// SPDX-License-Identifier: MIT
// Hexadecimal colour texts to numbers; bad text gives the fallback.
#include "qalpack/omslib/HexToInt.h"

#include <QString>

#include <gtest/gtest.h>

namespace qal {
namespace {

TEST(HexToInt, ReadsColourTextsAndGivesTheFallbackForBadText)
{
    struct Row
    {
        const char* text;
        int expected; // -99: the fallback
    };
    const Row rows[]
        = { { "ff8000", 0xFF8000 }, { "$00FF00", 0x00FF00 }, { " 0X1f ", 31 }, { "FFFFFFFF", -1 },
              { "000000000000ABC", 0xABC }, { "", -99 }, { "$", -99 }, { "0x", -99 }, { "-1", -99 },
              { "12G", -99 }, { "1 2", -99 }, { "#FF0000", -99 }, { "1FFFFFFFF", -99 }, { "ＦＦ", -99 } };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.text);
        EXPECT_EQ(HexToInt(QString::fromUtf8(row.text), -99), row.expected);
    }
    int untouched = 5;
    EXPECT_FALSE(TryHexToInt(u"zz", untouched));
    EXPECT_EQ(untouched, 5);
}

} // namespace
} // namespace qal
