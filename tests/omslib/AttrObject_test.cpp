// SPDX-License-Identifier: MIT
// Named attributes: names without regard to case, order of first setting,
// lenient numbers.
#include "qalpack/omslib/AttrObject.h"

#include <gtest/gtest.h>

#include "qalpack/runtime/Exception.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

TEST(AttrObject, NamesMatchWithoutCaseKeepTheirPlaceAndNumbersReadLeniently)
{
    TAttrObject attrs;
    attrs.SetAttr(QStringLiteral("Owner"), QStringLiteral("blotter"));
    attrs.SetAttr(QStringLiteral("Lots"), QStringLiteral("1x"));
    attrs.SetAttr(QStringLiteral("OWNER"), QString());
    EXPECT_EQ(attrs.AttrNames(), (QStringList { "Owner", "Lots" }));
    EXPECT_EQ(attrs.GetAttr(QStringLiteral("owner"), QStringLiteral("none")), QString())
        << "empty is a value";
    EXPECT_EQ(attrs.GetAttrInt(QStringLiteral("lots"), -1), -1);
    EXPECT_TRUE(attrs.RemoveAttr(QStringLiteral("LOTS")));
    EXPECT_EQ(attrs.GetAttr(QStringLiteral("Lots"), QStringLiteral("none")), u"none");
    EXPECT_THROW(attrs.SetAttr(QString(), QStringLiteral("x")), Error);
}

} // namespace
} // namespace qal
