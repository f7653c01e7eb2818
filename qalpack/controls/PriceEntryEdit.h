// SPDX-License-Identifier: MIT
// TPriceEntryEdit: the box a dealer types an order price into. It steps the
// price along the exchange's tick ladder (or by a fixed increment), accepts
// only the characters of a decimal number, shows thousands separators and
// clamps the price when the dealer leaves it.
#pragma once

#include <QMetaType>

#include "qalpack/controls/ButtonEdit.h"
#include "qalpack/market/SpreadTable.h"
#include "qalpack/qalpack_widgets_export.h"

namespace qal {

class TSpinButton;

// The value is the text: Value reads the text leniently and writing it
// formats the clamped price as "#,##0.######" (12.5 shows "12.5", 1000
// "1,000"); forms store Value, never the text.
//
// Reading: of the text only the characters "0123456789.-" count (separators
// and blanks drop out); what they spell is read as a decimal number, and
// anything that does not spell one ("12-3", "", "-") reads 0, as does a
// negative price while Negative is off. No clamping on reading.
//
// Clamp (CheckValue): below MinValue gives MinValue, above MaxValue gives
// MaxValue; equal bounds switch clamping off.
//
// Steps. The up and down arrow keys, the spin button's halves and the wheel
// (one step per wheel event, whatever its size) call UpClick / DownClick:
// on a read-only box they beep and change nothing, otherwise they step the
// price, then emit buttonClick() and select all of the text. A step moves to
// the next price of the spread table (Spread), or by Increment without one
// (unrounded: 1.1 steps up to 2.1). With Shift held, and with Page Up /
// Page Down, a step is ten single steps from the shown price, so band edges
// of the ladder are met exactly; buttonClick() still fires once.
//
// Typing: digits, "-" and the locale's decimal separator; the control keys
// (backspace, Ctrl+A, Ctrl+C ...) but not Enter's carriage return, which
// never becomes text and leaves the form's default button to act. "+",
// group separators and letters are refused; Ctrl+Enter inserts nothing.
// With EditorEnabled off nothing printable, no backspace and no Delete gets
// through, and paste and cut do nothing; the steps still work.
//
// Focus: entering paints the background with the user's colour
// "coEntryActiveBground" and selects all; leaving paints
// "coEntryInactiveBground" and rewrites the text as the clamped, formatted
// value. With nobody logged on the box keeps the palette's colours.
class QALPACK_WIDGETS_EXPORT TPriceEntryEdit : public TButtonEdit
{
    Q_OBJECT
    Q_PROPERTY(bool EditorEnabled READ EditorEnabled WRITE setEditorEnabled)
    Q_PROPERTY(double Increment READ Increment WRITE setIncrement)
    Q_PROPERTY(double MaxValue READ MaxValue WRITE setMaxValue)
    Q_PROPERTY(double MinValue READ MinValue WRITE setMinValue)
    Q_PROPERTY(bool Negative READ Negative WRITE setNegative)
    Q_PROPERTY(qal::TSpreadTable* Spread READ Spread WRITE SetSpread DESIGNABLE false STORED false)
    Q_PROPERTY(double Value READ GetValue WRITE SetValue NOTIFY ValueChanged USER true)
    Q_PROPERTY(QString text READ text WRITE setText DESIGNABLE false STORED false)

public:
    explicit TPriceEntryEdit(QWidget* parent = nullptr);
    ~TPriceEntryEdit() override;

    // The tick table of the instrument; not owned, and it must outlive the
    // box or be replaced first. Setting it leaves the text as it is.
    void SetSpread(TSpreadTable* table) { spread_ = table; }
    [[nodiscard]] TSpreadTable* Spread() const { return spread_; }

    [[nodiscard]] bool Negative() const { return negative_; }
    void setNegative(bool on) { negative_ = on; }
    [[nodiscard]] double MinValue() const { return minValue_; }
    void setMinValue(double value) { minValue_ = value; }
    [[nodiscard]] double MaxValue() const { return maxValue_; }
    void setMaxValue(double value) { maxValue_ = value; }
    [[nodiscard]] double Increment() const { return increment_; }
    void setIncrement(double value) { increment_ = value; }

    [[nodiscard]] double GetValue() const;
    void SetValue(double value);
    // Shows "0.0", neither formatted nor clamped, until the next exit or step.
    void ClearView();
    [[nodiscard]] double CheckValue(double value) const;
    // One step up (VK_UP) or down (VK_DOWN); other keys read and rewrite the
    // value. Honours ReadOnly only through UpClick / DownClick.
    void AdjustValue(int key);

    [[nodiscard]] TSpinButton* spinButton() const;

    // The shown price as the form writes it: "#,##0.######" in the current
    // locale's separators.
    [[nodiscard]] static QString FormatPrice(double value);

signals:
    // After every up or down step attempt, read-only boxes included.
    void buttonClick();
    void ValueChanged(double value);

protected:
    [[nodiscard]] virtual bool IsValidChar(QChar key) const;
    virtual void DownClick(QObject* sender);
    virtual void UpClick(QObject* sender);

    void EnterBox() override;
    void ExitBox() override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

private:
    void step(bool up, int steps);
    void stepClick(int key, int steps);

    TSpreadTable* spread_ = nullptr;
    bool negative_ = false;
    double minValue_ = -2000000000.0;
    double maxValue_ = 2000000000.0;
    double increment_ = 1.0;
    // Single steps that the next UpClick / DownClick takes: ten with Shift
    // or Page Up / Page Down.
    int pendingSteps_ = 1;
};

namespace PriceEntryEdit {
// Adds TPriceEntryEdit to the palette page "OMS11".
QALPACK_WIDGETS_EXPORT void Register();
} // namespace PriceEntryEdit

} // namespace qal

Q_DECLARE_METATYPE(qal::TSpreadTable*)
