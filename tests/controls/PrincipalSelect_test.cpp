// SPDX-License-Identifier: MIT
// The principal selector: the codes 11, 12 and 13 (the reset on a new parent
// is the open/close selector's, tested there).
#include "qalpack/controls/PrincipalSelect.h"

#include <QMetaProperty>

#include <gtest/gtest.h>

#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

TEST(PrincipalSelect, CodesSelectTheirItems)
{
    const struct
    {
        int code;
        const char* text;
        int value;
    } rows[] = {
        { 11, "Client", 11 },
        { 12, "House", 12 },
        { 13, "RT", 13 },
        { 0, "Not Specify", 0 },
        { 1, "Not Specify", 0 }, // an index, not a code
        { 5, "Not Specify", 0 },
    };
    QWidget form;
    TPrincipalSelect select(&form);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.code);
        select.SetValue(row.code);
        EXPECT_EQ(select.currentText(), QString::fromLatin1(row.text));
        EXPECT_EQ(select.GetValue(), row.value);
    }
    EXPECT_STREQ(TPrincipalSelect::staticMetaObject.userProperty().name(), "Value");
}

} // namespace
} // namespace qal
