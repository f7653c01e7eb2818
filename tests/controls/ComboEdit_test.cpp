// SPDX-License-Identifier: MIT
// The combo edit: its list inside the right edge, the room the list takes
// from the text, the character case and the list's click.
#include "qalpack/controls/ComboEdit.h"

#include <QComboBox>
#include <QSignalSpy>

#include <gtest/gtest.h>

#include "tests/support/QtPrinters.h"
#include "tests/support/WidgetForm.h"

namespace qal {
namespace {

using Form = test::WidgetForm<TComboEdit>;

TEST(ComboEdit, TheListTakesRoomFromTheTextOnlyWhileShown)
{
    Form form;
    QComboBox* list = form.box->findChild<QComboBox*>(QStringLiteral("cbxList"));
    ASSERT_NE(list, nullptr);
    EXPECT_TRUE(form.box->comboVisible());
    EXPECT_EQ(form.box->textMargins().right(), list->width() + 2);
    EXPECT_LE(list->geometry().right(), form.box->width() - 1);

    form.box->setComboVisible(false);
    EXPECT_FALSE(list->isVisible());
    EXPECT_EQ(form.box->textMargins().right(), 0);
}

TEST(ComboEdit, ChoosingFromTheListReportsAClickAndKeepsTheFocus)
{
    Form form;
    form.box->list()->addItems({ QStringLiteral("HK"), QStringLiteral("SS") });
    form.enter();
    QSignalSpy clicks(form.box, &TComboEdit::buttonClick);
    emit form.box->list()->activated(1);
    EXPECT_EQ(clicks.count(), 1);
    EXPECT_EQ(form.box->list()->focusPolicy(), Qt::NoFocus);
}

TEST(ComboEdit, CharCaseAppliesToTypedText)
{
    const struct
    {
        TComboEdit::TEditCharCase charCase;
        const char* shown;
    } rows[] = {
        { TComboEdit::ecNormal, "aB1" },
        { TComboEdit::ecUpperCase, "AB1" },
        { TComboEdit::ecLowerCase, "ab1" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.shown);
        Form form;
        form.box->setCharCase(row.charCase);
        form.enter();
        form.type(QStringLiteral("aB1"));
        EXPECT_EQ(form.box->text(), QString::fromLatin1(row.shown));
    }
}

} // namespace
} // namespace qal
