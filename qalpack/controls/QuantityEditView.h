// SPDX-License-Identifier: MIT
// TQuantityEdit: the box a dealer types an order quantity into, in shares or
// contracts. Whole numbers only; the arrows step by the board lot and snap a
// quantity that is not a whole number of lots onto the lot grid; "K" and "M"
// multiply by a thousand and a million.
#pragma once

#include "qalpack/controls/ButtonEdit.h"
#include "qalpack/qalpack_widgets_export.h"

namespace qal {

class TSpinButton;

// Layout, paste and cut, focus colours and the EditorEnabled / ReadOnly
// rules are those of TPriceEntryEdit; what differs:
//
// Reading (GetValue): "0" followed by the digits of the text (everything
// else, signs included, drops out) read as a 32-bit integer; "1,2a3" reads
// 123, "" reads 0, and a number too big for 32 bits reads MinValue.
// Writing formats the clamped value as "#,##0". Clamp: equal bounds (both 0
// by default) switch it off.
//
// Steps (lot 1,000): up from 1,500 gives 2,000, from 2,000 3,000; down from
// 1,500 gives 1,000, from 2,000 1,000, and below 1 gives 0. Increment is kept
// for forms that carry it, but no step uses it. With Shift held, and with
// Page Up / Page Down, a step is ten single steps (1,500 up gives 11,000);
// buttonClick() fires once. The box does not react to the wheel.
//
// Keys: Space, "K" and "M" multiply the value by 1,000 ("M" twice) and put
// the caret at the end; the product wraps as 32-bit arithmetic does, without
// a warning (3,000 "M" shows -1,294,967,296 before clamping). Backspace just
// after a "," deletes the digit before it. Only digits and the control keys
// but Enter's carriage return can be typed.
class QALPACK_WIDGETS_EXPORT TQuantityEdit : public TButtonEdit
{
    Q_OBJECT
    Q_PROPERTY(bool EditorEnabled READ EditorEnabled WRITE setEditorEnabled)
    Q_PROPERTY(int Increment READ Increment WRITE setIncrement)
    Q_PROPERTY(int LotSize READ LotSize WRITE SetLotSize)
    Q_PROPERTY(int MaxValue READ MaxValue WRITE setMaxValue)
    Q_PROPERTY(int MinValue READ MinValue WRITE setMinValue)
    Q_PROPERTY(int Value READ GetValue WRITE SetValue NOTIFY ValueChanged USER true)
    Q_PROPERTY(QString text READ text WRITE setText DESIGNABLE false STORED false)

public:
    explicit TQuantityEdit(QWidget* parent = nullptr);
    ~TQuantityEdit() override;

    [[nodiscard]] int LotSize() const { return lotSize_; }
    // Takes `lot` only when it is above 0; 0 and negative lots are ignored.
    void SetLotSize(int lot);
    [[nodiscard]] int MinValue() const { return minValue_; }
    void setMinValue(int value) { minValue_ = value; }
    [[nodiscard]] int MaxValue() const { return maxValue_; }
    void setMaxValue(int value) { maxValue_ = value; }
    [[nodiscard]] int Increment() const { return increment_; }
    void setIncrement(int value) { increment_ = value; }

    [[nodiscard]] int GetValue() const;
    void SetValue(int value);
    // Shows "0".
    void ClearView();
    [[nodiscard]] int CheckValue(int value) const;

    [[nodiscard]] TSpinButton* spinButton() const;

    // `value` times `factor` as 32-bit arithmetic gives it, wrapping on
    // overflow (the quantity shortcuts' rule), without undefined behaviour.
    [[nodiscard]] static int WrappingProduct(int value, int factor);

signals:
    // After every up or down step attempt, read-only boxes included.
    void buttonClick();
    void ValueChanged(int value);

protected:
    virtual void DownClick(QObject* sender);
    [[nodiscard]] virtual bool IsValidChar(QChar key) const;
    virtual void UpClick(QObject* sender);

    void EnterBox() override;
    void ExitBox() override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    [[nodiscard]] int stepUp(int value) const;
    [[nodiscard]] int stepDown(int value) const;
    void finishStep();
    void stepClick(bool up, int steps);

    int lotSize_ = 1000;
    int minValue_ = 0;
    int maxValue_ = 0;
    int increment_ = 1;
    int pendingSteps_ = 1;
};

namespace QuantityEditView {
// Adds TQuantityEdit to the palette page "OMS11".
QALPACK_WIDGETS_EXPORT void Register();
} // namespace QuantityEditView

} // namespace qal
