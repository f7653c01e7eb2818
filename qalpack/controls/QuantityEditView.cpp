// SPDX-License-Identifier: MIT
#include "qalpack/controls/QuantityEditView.h"

#include <cstdint>

#include <QKeyEvent>

#include "qalpack/controls/ComponentPalette.h"
#include "qalpack/feedback/EntryFeedback.h"
#include "qalpack/controls/SpinButton.h"
#include "qalpack/runtime/Convert.h"

namespace qal {

namespace {

// Shift, Page Up and Page Down step this many lots.
constexpr int kFastSteps = 10;

// The low 32 bits of `value` as a signed integer: the result 32-bit
// arithmetic gives when a quantity overflows.
int wrap32(std::int64_t value)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value));
}

} // namespace

TQuantityEdit::TQuantityEdit(QWidget* parent)
    : TButtonEdit(parent)
{
    auto* spin = new TSpinButton(this);
    spin->setObjectName(QStringLiteral("btnSpin"));
    spin->setFocusControl(this);
    setButton(spin);
    connect(spin, &TSpinButton::upClick, this, [this, spin] {
        pendingSteps_ = spin->pressModifiers() & Qt::ShiftModifier ? kFastSteps : 1;
        UpClick(spin);
        pendingSteps_ = 1;
    });
    connect(spin, &TSpinButton::downClick, this, [this, spin] {
        pendingSteps_ = spin->pressModifiers() & Qt::ShiftModifier ? kFastSteps : 1;
        DownClick(spin);
        pendingSteps_ = 1;
    });
    connect(this, &QLineEdit::textChanged, this, [this] { emit ValueChanged(GetValue()); });
    setText(QStringLiteral("0"));
    setAutoSelect(true);
}

TQuantityEdit::~TQuantityEdit() = default;

TSpinButton* TQuantityEdit::spinButton() const
{
    return qobject_cast<TSpinButton*>(button());
}

int TQuantityEdit::WrappingProduct(int value, int factor)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) * static_cast<std::uint32_t>(factor));
}

void TQuantityEdit::SetLotSize(int lot)
{
    if (lot > 0)
        lotSize_ = lot;
}

int TQuantityEdit::GetValue() const
{
    QString digits(QStringLiteral("0"));
    for (const QChar c : text()) {
        if (c >= u'0' && c <= u'9')
            digits += c;
    }
    int value = 0;
    return TryStrToInt(digits, value) ? value : minValue_;
}

void TQuantityEdit::SetValue(int value)
{
    setText(FormatGrouped(CheckValue(value), 0));
}

void TQuantityEdit::ClearView()
{
    setText(QStringLiteral("0"));
}

int TQuantityEdit::CheckValue(int value) const
{
    if (minValue_ == maxValue_)
        return value;
    if (minValue_ > value)
        return minValue_;
    if (maxValue_ < value)
        return maxValue_;
    return value;
}

// Both steps wrap past the 32-bit range as the shortcuts do, rather than
// overflow.
int TQuantityEdit::stepUp(int value) const
{
    if (value % lotSize_ != 0)
        return wrap32((std::int64_t(value / lotSize_) + 1) * lotSize_);
    return wrap32(std::int64_t(value) + lotSize_);
}

int TQuantityEdit::stepDown(int value) const
{
    if (value < 1)
        return 0;
    if (value % lotSize_ != 0)
        return (value / lotSize_) * lotSize_;
    return value - lotSize_;
}

void TQuantityEdit::finishStep()
{
    emit buttonClick();
    selectAll();
}

void TQuantityEdit::UpClick(QObject*)
{
    if (isReadOnly()) {
        Beep();
    } else {
        for (int i = 0; i < pendingSteps_; ++i)
            SetValue(stepUp(GetValue()));
    }
    finishStep();
}

void TQuantityEdit::DownClick(QObject*)
{
    if (isReadOnly()) {
        Beep();
    } else {
        for (int i = 0; i < pendingSteps_; ++i)
            SetValue(stepDown(GetValue()));
    }
    finishStep();
}

void TQuantityEdit::stepClick(bool up, int steps)
{
    pendingSteps_ = steps;
    if (up)
        UpClick(this);
    else
        DownClick(this);
    pendingSteps_ = 1;
}

bool TQuantityEdit::IsValidChar(QChar key) const
{
    const char16_t code = key.unicode();
    bool valid = (code >= u'0' && code <= u'9') || (code < 32 && code != 13);
    if (valid && !EditorEnabled() && (code >= 32 || code == 8 || code == 46))
        valid = false;
    return valid;
}

void TQuantityEdit::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool stepKey
        = key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown;
    switch (key) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        stepClick(key == Qt::Key_Up, shift ? kFastSteps : 1);
        break;
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        stepClick(key == Qt::Key_PageUp, kFastSteps);
        break;
    case Qt::Key_Backspace: {
        // Deleting back over "1,000" from just after the "," takes the digit,
        // not the separator.
        const int caret = hasSelectedText() ? selectionStart() : cursorPosition();
        if (caret >= 2 && text().at(caret - 1) == u',')
            setCursorPosition(caret - 1);
        break;
    }
    case Qt::Key_Space:
    case Qt::Key_K:
    case Qt::Key_M:
        SetValue(WrappingProduct(GetValue(), 1000));
        if (key == Qt::Key_M)
            SetValue(WrappingProduct(GetValue(), 1000));
        setCursorPosition(int(text().size()));
        break;
    default:
        break;
    }

    if (key == Qt::Key_Delete && !EditorEnabled()) {
        event->accept();
        return;
    }
    const QChar typed = typedChar(event);
    if (!typed.isNull() && typed.unicode() != 13 && !IsValidChar(typed)) {
        event->accept();
        return;
    }
    TButtonEdit::keyPressEvent(event);
    if (stepKey)
        event->accept();
}

void TQuantityEdit::EnterBox()
{
    ApplyEntryColor(this, QString::fromLatin1(coEntryActiveBground));
    selectAll();
}

void TQuantityEdit::ExitBox()
{
    ApplyEntryColor(this, QString::fromLatin1(coEntryInactiveBground));
    SetValue(CheckValue(GetValue()));
}

namespace QuantityEditView {

void Register()
{
    RegisterComponent({ QString::fromLatin1(PalettePageOMS11), QStringLiteral("qal::TQuantityEdit"),
        QStringLiteral("qalpack/controls/QuantityEditView.h"),
        QStringLiteral("Order quantity: steps by the board lot; K and M multiply"),
        [](QWidget* parent) { return new TQuantityEdit(parent); } });
}

} // namespace QuantityEditView

} // namespace qal
