// SPDX-License-Identifier: MIT
// The price box driven as a dealer drives it: keys, characters, the wheel,
// the spin button's halves and focus changes on a shown form, with the C
// locale pinned by the shared main.
#include "qalpack/controls/PriceEntryEdit.h"

#include <QClipboard>
#include <QSignalSpy>
#include <QWheelEvent>

#include <gtest/gtest.h>

#include "qalpack/feedback/EntryFeedback.h"
#include "qalpack/controls/SpinButton.h"
#include "qalpack/market/SpreadTable.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/WidgetForm.h"

namespace qal {
namespace {

using Form = test::WidgetForm<TPriceEntryEdit>;

// The securities ladder: 0.05 up to 100, 0.1 from 100 to 200.
const QString kLadder = QStringLiteral("0.25,0.001,0.5,0.005,10,0.01,20,0.02,100,0.05,200,0.1,500,0.2,"
                                       "1000,0.5,2000,1,5000,2,9995,5");

void sendWheel(QWidget* target, int delta, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const QPointF at(target->width() / 2.0, target->height() / 2.0);
    QWheelEvent wheel(at, target->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, modifiers,
        Qt::NoScrollPhase, false);
    QApplication::sendEvent(target, &wheel);
}

void clickSpin(TSpinButton* spin, bool upper, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    const QPoint at(spin->width() / 2, upper ? 2 : spin->height() - 3);
    QTest::mousePress(spin, Qt::LeftButton, modifiers, at);
    QTest::mouseRelease(spin, Qt::LeftButton, modifiers, at);
}

TEST(PriceEntryEdit, ReadsTheTextLeniently)
{
    const struct
    {
        const char* text;
        bool negative;
        double value;
    } rows[] = {
        { "1,234.5", false, 1234.5 },
        { " 1 000.25 ", false, 1000.25 },
        { "12-3", false, 0 }, // a minus inside is not a number
        { "", false, 0 },
        { "abc", false, 0 },
        { "-5", false, 0 }, // negative prices not allowed
        { "-5", true, -5 },
        { "3000000000", false, 3000000000.0 }, // no clamping on reading
    };
    TPriceEntryEdit box;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        box.setNegative(row.negative);
        box.setText(QString::fromLatin1(row.text));
        EXPECT_DOUBLE_EQ(box.GetValue(), row.value);
    }
}

TEST(PriceEntryEdit, WritesTheClampedPriceWithSeparatorsAndUpToSixDecimals)
{
    const struct
    {
        double value;
        const char* text;
    } rows[] = {
        { 12.5, "12.5" },
        { 1000, "1,000" },
        { 1234567.1234567, "1,234,567.123457" },
        { 0.0000001, "0" },
        { -1234.5, "-1,234.5" },
        { 5e9, "2,000,000,000" }, // clamped to MaxValue
    };
    TPriceEntryEdit box;
    for (const auto& row : rows) {
        SCOPED_TRACE(row.text);
        box.SetValue(row.value);
        EXPECT_EQ(box.text(), QString::fromLatin1(row.text));
    }
}

TEST(PriceEntryEdit, LeavingNormalisesAndClampsUnlessTheBoundsAreEqual)
{
    const struct
    {
        const char* name;
        double minValue;
        double maxValue;
        bool negative;
        const char* typed;
        const char* shown;
    } rows[] = {
        { "above the default maximum", -2000000000.0, 2000000000.0, false, "3000000000", "2,000,000,000" },
        { "equal bounds switch clamping off", 0, 0, true, "-5", "-5" },
        { "below the minimum", 10, 20, false, "5", "10" },
        { "junk reads as zero", -10, 10, false, "12-3", "0" },
        { "grouped and trimmed", -2000000000.0, 2000000000.0, false, "1234.50", "1,234.5" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Form form;
        ASSERT_TRUE(form.active);
        form.box->setMinValue(row.minValue);
        form.box->setMaxValue(row.maxValue);
        form.box->setNegative(row.negative);
        QSignalSpy finished(form.box, &QLineEdit::editingFinished);
        form.enter();
        form.box->setText(QString::fromLatin1(row.typed));
        form.leave();
        EXPECT_EQ(form.box->text(), QString::fromLatin1(row.shown));
        EXPECT_EQ(finished.count(), 1);
    }
}

TEST(PriceEntryEdit, ArrowKeysStepByTheIncrementWithoutASpreadTable)
{
    const struct
    {
        const char* name;
        const char* start;
        Qt::Key key;
        bool negative;
        const char* shown;
    } rows[] = {
        { "not aligned to the increment", "1.1", Qt::Key_Up, false, "2.1" },
        { "never below zero", "0.5", Qt::Key_Down, false, "0" },
        { "below zero when allowed", "0.5", Qt::Key_Down, true, "-0.5" },
        { "junk steps from zero", "abc", Qt::Key_Up, false, "1" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Form form;
        form.box->setNegative(row.negative);
        form.enter();
        form.box->setText(QString::fromLatin1(row.start));
        QSignalSpy clicks(form.box, &TPriceEntryEdit::buttonClick);
        QTest::keyClick(form.box, row.key);
        EXPECT_EQ(form.box->text(), QString::fromLatin1(row.shown));
        EXPECT_EQ(clicks.count(), 1);
        EXPECT_EQ(form.box->selectedText(), form.box->text()) << "all selected after a step";
    }
}

TEST(PriceEntryEdit, ShiftAndPageKeysStepTenTicksAcrossABandEdge)
{
    const TSpreadTable ladder(kLadder);
    const struct
    {
        const char* name;
        const char* start;
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        const char* shown;
    } rows[] = {
        { "one tick up to the edge", "99.95", Qt::Key_Up, Qt::NoModifier, "100" },
        { "one tick up from the edge", "100", Qt::Key_Up, Qt::NoModifier, "100.1" },
        { "Shift+Up over the edge", "99.9", Qt::Key_Up, Qt::ShiftModifier, "100.8" },
        { "Page Up over the edge", "99.9", Qt::Key_PageUp, Qt::NoModifier, "100.8" },
        { "Shift+Down over the edge", "100.3", Qt::Key_Down, Qt::ShiftModifier, "99.65" },
        { "Page Down over the edge", "100.3", Qt::Key_PageDown, Qt::NoModifier, "99.65" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        Form form;
        form.box->SetSpread(const_cast<TSpreadTable*>(&ladder));
        form.enter();
        form.box->setText(QString::fromLatin1(row.start));
        QSignalSpy clicks(form.box, &TPriceEntryEdit::buttonClick);
        QTest::keyClick(form.box, row.key, row.modifiers);
        EXPECT_EQ(form.box->text(), QString::fromLatin1(row.shown));
        EXPECT_EQ(clicks.count(), 1) << "one press, one buttonClick";
    }
}

TEST(PriceEntryEdit, TypingAcceptsOnlyTheCharactersOfADecimalNumber)
{
    Form form;
    form.enter();
    form.box->clear();
    form.type(QStringLiteral("+1,2a3.5 x-"));
    EXPECT_EQ(form.box->text(), u"123.5-");
    QTest::keyClick(form.box, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(form.box->text(), u"123.5-") << "Ctrl+Enter inserts nothing";
    QTest::keyClick(form.box, Qt::Key_Backspace);
    EXPECT_EQ(form.box->text(), u"123.5");
}

TEST(PriceEntryEdit, WithTheEditorDisabledOnlyTheStepsChangeTheText)
{
    Form form;
    form.box->setEditorEnabled(false);
    form.enter();
    form.box->setText(QStringLiteral("12.5"));
    form.box->setCursorPosition(2);
    QApplication::clipboard()->setText(QStringLiteral("9"));

    QTest::keyClicks(form.box, QStringLiteral("7"));
    QTest::keyClick(form.box, Qt::Key_Backspace);
    QTest::keyClick(form.box, Qt::Key_Delete);
    QTest::keyClick(form.box, Qt::Key_V, Qt::ControlModifier);
    form.box->selectAll();
    QTest::keyClick(form.box, Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(form.box->text(), u"12.5");

    QSignalSpy clicks(form.box, &TPriceEntryEdit::buttonClick);
    QTest::keyClick(form.box, Qt::Key_Up);
    sendWheel(form.box, 120);
    clickSpin(form.box->spinButton(), true);
    EXPECT_EQ(form.box->text(), u"15.5");
    EXPECT_EQ(clicks.count(), 3);
}

TEST(PriceEntryEdit, AnEditableBoxTakesPastedText)
{
    Form form;
    form.enter();
    form.box->setText(QStringLiteral("12"));
    form.box->end(false);
    QApplication::clipboard()->setText(QStringLiteral("9"));
    QTest::keyClick(form.box, Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(form.box->text(), u"129");
}

TEST(PriceEntryEdit, AReadOnlyStepBeepsKeepsTheValueAndStillReportsTheClick)
{
    int beeps = 0;
    SetBeepHook([&beeps] { ++beeps; });
    Form form;
    form.box->setReadOnly(true);
    form.enter();
    form.box->setText(QStringLiteral("5"));
    QSignalSpy clicks(form.box, &TPriceEntryEdit::buttonClick);
    QTest::keyClick(form.box, Qt::Key_Up);
    QTest::keyClick(form.box, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(form.box->text(), u"5");
    EXPECT_EQ(beeps, 2) << "one beep per press, Shift included";
    EXPECT_EQ(clicks.count(), 2);
    SetBeepHook({});
}

TEST(PriceEntryEdit, TheWheelStepsOncePerEventAndOnlyTheFocusedBox)
{
    Form form;
    form.box->setText(QStringLiteral("10"));
    sendWheel(form.box, 120);
    EXPECT_EQ(form.box->text(), u"10") << "a box without focus ignores the wheel";

    form.enter();
    sendWheel(form.box, 360);
    EXPECT_EQ(form.box->text(), u"11") << "one step whatever the delta";
    sendWheel(form.box, -120);
    EXPECT_EQ(form.box->text(), u"10");
    sendWheel(form.box, 120, Qt::ShiftModifier);
    EXPECT_EQ(form.box->text(), u"20");
}

TEST(PriceEntryEdit, SpinButtonHalvesStepAndTakeTheFocusForTheBox)
{
    Form form;
    form.box->setText(QStringLiteral("10"));
    TSpinButton* spin = form.box->findChild<TSpinButton*>(QStringLiteral("btnSpin"));
    ASSERT_NE(spin, nullptr);
    EXPECT_EQ(spin->sizeHint(), QSize(15, 17));
    EXPECT_EQ(spin->width(), 15) << "its height follows the box's";

    QSignalSpy clicks(form.box, &TPriceEntryEdit::buttonClick);
    clickSpin(spin, true);
    EXPECT_TRUE(form.box->hasFocus());
    EXPECT_EQ(form.box->text(), u"11");
    clickSpin(spin, false);
    EXPECT_EQ(form.box->text(), u"10");
    clickSpin(spin, true, Qt::ShiftModifier);
    EXPECT_EQ(form.box->text(), u"20");
    EXPECT_EQ(clicks.count(), 3);
}

TEST(PriceEntryEdit, HoldingTheSpinButtonRepeatsTheStep)
{
    Form form;
    form.box->setText(QStringLiteral("0"));
    TSpinButton* spin = form.box->spinButton();
    const QPoint upper(spin->width() / 2, 2);
    QTest::mousePress(spin, Qt::LeftButton, Qt::NoModifier, upper);
    QTest::qWait(TSpinButton::InitialRepeatDelayMs + 3 * TSpinButton::RepeatIntervalMs);
    QTest::mouseRelease(spin, Qt::LeftButton, Qt::NoModifier, upper);
    const double held = form.box->GetValue();
    EXPECT_GE(held, 2) << "the press, then repeats";
    QTest::qWait(2 * TSpinButton::RepeatIntervalMs);
    EXPECT_EQ(form.box->GetValue(), held) << "released: no more steps";
}

TEST(PriceEntryEdit, TheButtonSitsInsideTheRightEdgeAndTheTextStopsShortOfIt)
{
    Form form;
    TPriceEntryEdit* box = form.box;
    box->setMinimumSize(0, 0);
    box->resize(120, 30);
    const QRect button = box->spinButton()->geometry();
    EXPECT_LT(button.right(), box->width() - 1);
    EXPECT_GT(button.top(), -1);
    EXPECT_LT(button.bottom(), box->height() - 1);
    EXPECT_EQ(box->textMargins().right(), button.width() + 2);

    box->resize(120, 1);
    EXPECT_EQ(box->height(), box->GetMinHeight()) << "never lower than its minimum";
    EXPECT_GE(box->minimumSizeHint().height(), box->GetMinHeight());
}

} // namespace
} // namespace qal
