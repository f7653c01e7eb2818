// SPDX-License-Identifier: MIT
#include "qalpack/runtime/Format.h"

#include <QLocale>

#include <gtest/gtest.h>

#include "qalpack/runtime/Exception.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

TEST(Format, FillsLabelsWithAPointAsDecimalSeparator)
{
    QLocale::setDefault(QLocale(QLocale::French));
    EXPECT_EQ(Format(QStringLiteral("STP:%.3f;"), { 12.3456L }), u"STP:12.346;");
    EXPECT_EQ(Format(QStringLiteral("Order size for [%s ] is more than %d, Press OK to confirm."),
                  { QStringLiteral("0005.HK"), 500000 }),
        u"Order size for [0005.HK ] is more than 500000, Press OK to confirm.");
    EXPECT_EQ(Format(QStringLiteral("Dealer=%s;"), { QStringLiteral("陳大文") }), u"Dealer=陳大文;");
    EXPECT_EQ(Format(QStringLiteral("100%% done"), {}), u"100% done");
    QLocale::setDefault(QLocale::c());
}

TEST(Format, MessageNumbersHaveSixDecimals)
{
    EXPECT_EQ(FixedText(3.5, 6), u"3.500000");
    EXPECT_EQ(FixedText(-0.0000004, 6), u"-0.000000");
    EXPECT_EQ(FixedText(12345678.9, 6), u"12345678.900000");
}

TEST(Format, ABrokenPatternRaisesANamedError)
{
    try {
        static_cast<void>(Format(QStringLiteral("Qty : %s %s"), { QStringLiteral("1") }));
        FAIL() << "a missing argument must raise";
    } catch (const Error& e) {
        EXPECT_TRUE(e.message().contains(u"Qty : %s %s"));
    }
}

} // namespace
} // namespace qal
