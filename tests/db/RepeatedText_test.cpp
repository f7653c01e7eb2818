// SPDX-License-Identifier: MIT
// Values that repeat down a column come back as one shared string; anything
// else comes back exactly as a plain conversion would give it.
#include "qalpack/db/RepeatedText.h"

#include <string>

#include <QString>

#include <gtest/gtest.h>

#include "tests/support/QtPrinters.h"

namespace {

using qal::backend::RepeatedText;

QString read(RepeatedText& repeated, const std::string& bytes)
{
    return repeated.text(bytes.data(), qsizetype(bytes.size()));
}

TEST(RepeatedText, SharesShortAsciiValuesAndConvertsTheRest)
{
    const struct
    {
        const char* name;
        std::string bytes;
        bool shared;
    } rows[] = {
        { "an exchange", "SEHK", true },
        { "an account", "AC000123", true },
        { "a Chinese name", "\xe9\x99\xb3\xe5\xa4\xa7\xe6\x96\x87", false },
        { "longer than a code", std::string(40, 'x'), false },
        { "empty", "", false },
    };
    RepeatedText repeated;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const QString first = read(repeated, row.bytes);
        const QString again = read(repeated, row.bytes);
        EXPECT_EQ(first, QString::fromStdString(row.bytes));
        EXPECT_EQ(again, first);
        EXPECT_EQ(!first.isEmpty() && first.constData() == again.constData(), row.shared);
    }
}

TEST(RepeatedText, ValuesSharingASlotReadCorrectly)
{
    RepeatedText repeated;
    // Far more distinct values than slots, read twice: every read is right
    // whichever value holds a slot.
    for (int round = 0; round < 2; ++round) {
        for (int i = 0; i < 300; ++i) {
            const std::string bytes = "D" + std::to_string(i % 3000);
            ASSERT_EQ(read(repeated, bytes), QString::fromStdString(bytes));
        }
    }
    EXPECT_TRUE(repeated.looking());
}

TEST(RepeatedText, StopsLookingWhenValuesDoNotRepeat)
{
    RepeatedText repeated;
    for (int i = 0; i < 2000; ++i) {
        const std::string bytes = "O" + std::to_string(1000000 + i);
        ASSERT_EQ(read(repeated, bytes), QString::fromStdString(bytes));
    }
    EXPECT_FALSE(repeated.looking());
    EXPECT_EQ(read(repeated, "SEHK"), "SEHK");
}

} // namespace
