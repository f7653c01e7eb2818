// SPDX-License-Identifier: MIT
// The open/close selector: codes by item, unknown codes, and the reset each
// time it gets a parent.
#include "qalpack/controls/OpenCloseSelect.h"

#include <gtest/gtest.h>

#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

TEST(OpenCloseSelect, CodesSelectTheirItems)
{
    const struct
    {
        int code;
        const char* text;
        int value;
    } rows[] = {
        { 0, "Not Specify", 0 },
        { 1, "Open", 1 },
        { 2, "Close", 2 },
        { 3, "Not Specify", 0 },
        { -1, "Not Specify", 0 },
    };
    QWidget form;
    TOpenCloseSelect select(&form);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        select.SetValue(row.code);
        EXPECT_EQ(select.currentText(), QString::fromLatin1(row.text));
        EXPECT_EQ(select.GetValue(), row.value);
    }
}

TEST(OpenCloseSelect, GettingAParentRebuildsTheItemsAndResetsTheChoice)
{
    QWidget first;
    QWidget second;
    TOpenCloseSelect select;
    EXPECT_EQ(select.count(), 0) << "no parent yet, no items";
    select.setParent(&first);
    ASSERT_EQ(select.count(), 3);
    select.SetValue(2);
    select.addItem(QStringLiteral("typed at design time"));
    select.setParent(&second);
    EXPECT_EQ(select.count(), 3);
    EXPECT_EQ(select.currentText(), u"Not Specify");
    EXPECT_EQ(select.GetValue(), 0);
    select.setCurrentIndex(-1);
    EXPECT_EQ(select.GetValue(), 0) << "no selection reads 0";
}

} // namespace
} // namespace qal
