// SPDX-License-Identifier: MIT
// The quantity box: lot steps and their snapping, the K/M shortcuts and
// their 32-bit wrap, the backspace over a separator, clamping on exit.
#include "qalpack/controls/QuantityEditView.h"

#include <climits>

#include <QSignalSpy>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include "qalpack/controls/SpinButton.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/WidgetForm.h"

namespace qal {
namespace {

using Form = test::WidgetForm<TQuantityEdit>;

TEST(QuantityEdit, ReadsTheDigitsOfTheText)
{
    const struct
    {
        const char* text;
        int value;
    } rows[] = {
        { "1,2a3", 123 },
        { "", 0 },
        { "-500", 500 }, // signs drop out
        { "2,147,483,647", INT_MAX },
        { "2,147,483,648", 7 }, // too big: MinValue
    };
    TQuantityEdit box;
    box.setMinValue(7);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        box.setText(QString::fromLatin1(row.text));
        EXPECT_EQ(box.GetValue(), row.value);
    }
}

TEST(QuantityEdit, ArrowsStepByTheLotAndSnapOntoIt)
{
    const struct
    {
        const char* start;
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        const char* shown;
    } rows[] = {
        { "1500", Qt::Key_Up, Qt::NoModifier, "2,000" },
        { "1500", Qt::Key_Down, Qt::NoModifier, "1,000" },
        { "2000", Qt::Key_Up, Qt::NoModifier, "3,000" },
        { "2000", Qt::Key_Down, Qt::NoModifier, "1,000" },
        { "0", Qt::Key_Down, Qt::NoModifier, "0" },
        { "0", Qt::Key_Up, Qt::NoModifier, "1,000" },
        { "1500", Qt::Key_Up, Qt::ShiftModifier, "11,000" }, // snap, then nine lots
        { "1500", Qt::Key_PageUp, Qt::NoModifier, "11,000" },
        { "5000", Qt::Key_PageDown, Qt::NoModifier, "0" },
        { "2147483000", Qt::Key_Up, Qt::NoModifier, "-2,147,483,296" }, // wraps, no overflow
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(std::string(row.start) + " -> " + row.shown);
        Form form;
        form.enter();
        form.box->setText(QString::fromLatin1(row.start));
        QSignalSpy clicks(form.box, &TQuantityEdit::buttonClick);
        QTest::keyClick(form.box, row.key, row.modifiers);
        EXPECT_EQ(form.box->text(), QString::fromLatin1(row.shown));
        EXPECT_EQ(clicks.count(), 1);
    }
}

TEST(QuantityEdit, KAndMMultiplyAndWrapAs32BitArithmetic)
{
    const struct
    {
        const char* typed;
        const char* shown;
    } rows[] = {
        { "5K", "5,000" },
        { "5k", "5,000" },
        { "5M", "5,000,000" },
        { "5 ", "5,000" },
        { "3000M", "-1,294,967,296" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.typed);
        Form form;
        form.enter();
        form.box->clear();
        form.type(QString::fromLatin1(row.typed));
        EXPECT_EQ(form.box->text(), QString::fromLatin1(row.shown));
        EXPECT_EQ(form.box->cursorPosition(), form.box->text().size()) << "caret at the end";
    }
}

TEST(QuantityEdit, BackspaceAfterASeparatorDeletesTheDigitBeforeIt)
{
    Form form;
    form.enter();
    form.box->setText(QStringLiteral("1,000"));
    form.box->setCursorPosition(2);
    QTest::keyClick(form.box, Qt::Key_Backspace);
    EXPECT_EQ(form.box->text(), u",000");
    form.leave();
    EXPECT_EQ(form.box->text(), u"0");
}

TEST(QuantityEdit, OnlyDigitsCanBeTyped)
{
    Form form;
    form.enter();
    form.box->clear();
    form.type(QStringLiteral("1-2.3,4a+"));
    EXPECT_EQ(form.box->text(), u"1234");
}

TEST(QuantityEdit, LeavingClampsUnlessTheBoundsAreEqual)
{
    const struct
    {
        int minValue;
        int maxValue;
        const char* typed;
        const char* shown;
    } rows[] = {
        { 0, 10000, "99999", "10,000" },
        { 100, 100, "99999", "99,999" },
        { 0, 0, "1234567", "1,234,567" },
        { 500, 10000, "", "500" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.typed);
        Form form;
        form.box->setMinValue(row.minValue);
        form.box->setMaxValue(row.maxValue);
        form.enter();
        form.box->setText(QString::fromLatin1(row.typed));
        form.leave();
        EXPECT_EQ(form.box->text(), QString::fromLatin1(row.shown));
    }
}

TEST(QuantityEdit, TheSpinButtonStepsAndTheWheelDoesNot)
{
    Form form;
    form.enter();
    form.box->setText(QStringLiteral("1000"));
    TSpinButton* spin = form.box->findChild<TSpinButton*>(QStringLiteral("btnSpin"));
    ASSERT_NE(spin, nullptr);
    QTest::mouseClick(spin, Qt::LeftButton, Qt::NoModifier, QPoint(spin->width() / 2, 2));
    EXPECT_EQ(form.box->text(), u"2,000");
    QTest::mouseClick(spin, Qt::LeftButton, Qt::ShiftModifier, QPoint(spin->width() / 2, spin->height() - 3));
    EXPECT_EQ(form.box->text(), u"0");

    const QPointF at(5, 5);
    QWheelEvent wheel(at, form.box->mapToGlobal(at), QPoint(), QPoint(0, 120), Qt::NoButton, Qt::NoModifier,
        Qt::NoScrollPhase, false);
    QApplication::sendEvent(form.box, &wheel);
    EXPECT_EQ(form.box->text(), u"0");
}

} // namespace
} // namespace qal
