// SPDX-License-Identifier: MIT
// Blotters show date-times through a display format: the layout of the
// desk's time columns ("hh:nn:ss") and of dates and names of months and days.
// Reading field values from a result is exercised with the queries
// (Query_test.cpp), on both drivers.
#include "qalpack/db/Field.h"

#include <QDateTime>
#include <QString>

#include <gtest/gtest.h>

#include "tests/support/QtPrinters.h"

namespace {

TEST(FormatDateTime, LaysOutTheStamp)
{
    const QDateTime stamp(QDate(2024, 5, 1), QTime(14, 5, 9, 250));
    const struct
    {
        const char* format;
        const char* expected;
    } rows[] = {
        { "hh:nn:ss", "14:05:09" },
        { "HH:MM:SS", "14:05:09" },
        { "h:n:s", "14:5:9" },
        { "hh:mm", "14:05" }, // "mm" after an hour is minutes
        { "yyyy-mm-dd", "2024-05-01" },
        { "d/m/yy", "1/5/24" },
        { "h:nn am/pm", "2:05 pm" },
        { "hh:nn:ss.zzz", "14:05:09.250" },
        { "ddd d mmm yyyy", "Wed 1 May 2024" },
        { "'at' hh\"h\"", "at 14h" },
        { "c", "2024-05-01 14:05:09" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.format);
        EXPECT_EQ(qal::FormatDateTime(QString::fromUtf8(row.format), stamp), QString::fromUtf8(row.expected));
    }
}

} // namespace
