// SPDX-License-Identifier: MIT
#include "qalpack/controls/PriceEntryEdit.h"

#include <QKeyEvent>
#include <QLocale>
#include <QWheelEvent>

#include "qalpack/controls/ComponentPalette.h"
#include "qalpack/feedback/EntryFeedback.h"
#include "qalpack/controls/SpinButton.h"
#include "qalpack/market/SpreadTable.h"
#include "qalpack/runtime/Convert.h"

namespace qal {

namespace {

// Shift, Page Up and Page Down step this many ticks.
constexpr int kFastSteps = 10;

} // namespace

TPriceEntryEdit::TPriceEntryEdit(QWidget* parent)
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

TPriceEntryEdit::~TPriceEntryEdit()
{
    spread_ = nullptr;
}

TSpinButton* TPriceEntryEdit::spinButton() const
{
    return qobject_cast<TSpinButton*>(button());
}

QString TPriceEntryEdit::FormatPrice(double value)
{
    return FormatGrouped(value, 6);
}

double TPriceEntryEdit::GetValue() const
{
    static const QString kept = QStringLiteral("0123456789.-");
    QString digits;
    for (const QChar c : text()) {
        if (kept.contains(c))
            digits += c;
    }
    long double parsed = 0;
    if (!TryStrToFloat(digits, parsed))
        return 0;
    if (!negative_ && parsed < 0)
        return 0;
    return static_cast<double>(parsed);
}

void TPriceEntryEdit::SetValue(double value)
{
    setText(FormatPrice(CheckValue(value)));
}

void TPriceEntryEdit::ClearView()
{
    setText(QStringLiteral("0.0"));
}

double TPriceEntryEdit::CheckValue(double value) const
{
    if (maxValue_ == minValue_)
        return value;
    if (value < minValue_)
        return minValue_;
    if (value > maxValue_)
        return maxValue_;
    return value;
}

void TPriceEntryEdit::AdjustValue(int key)
{
    double value = GetValue();
    if (spread_ != nullptr) {
        if (key == VK_UP)
            value = spread_->GetNextPrice(value, 1);
        else if (key == VK_DOWN)
            value = spread_->GetNextPrice(value, -1);
    } else if (key == VK_UP) {
        value += increment_;
    } else if (key == VK_DOWN) {
        value -= increment_;
    }
    if (!negative_ && value < 0)
        value = 0;
    SetValue(value);
}

void TPriceEntryEdit::step(bool up, int steps)
{
    if (isReadOnly()) {
        Beep();
    } else {
        for (int i = 0; i < steps; ++i)
            AdjustValue(up ? VK_UP : VK_DOWN);
    }
    emit buttonClick();
    selectAll();
}

void TPriceEntryEdit::UpClick(QObject*)
{
    step(true, pendingSteps_);
}

void TPriceEntryEdit::DownClick(QObject*)
{
    step(false, pendingSteps_);
}

void TPriceEntryEdit::stepClick(int key, int steps)
{
    pendingSteps_ = steps;
    if (key == VK_UP)
        UpClick(this);
    else
        DownClick(this);
    pendingSteps_ = 1;
}

bool TPriceEntryEdit::IsValidChar(QChar key) const
{
    const char16_t code = key.unicode();
    const QString decimalPoint = QLocale().decimalPoint();
    bool valid = (code >= u'0' && code <= u'9') || code == u'-'
        || (decimalPoint.size() == 1 && key == decimalPoint.at(0)) || (code < 32 && code != 13);
    if (valid && !EditorEnabled() && (code >= 32 || code == 8 || code == 46))
        valid = false;
    return valid;
}

void TPriceEntryEdit::keyPressEvent(QKeyEvent* event)
{
    const int key = event->key();
    const bool shift = event->modifiers() & Qt::ShiftModifier;
    const bool stepKey
        = key == Qt::Key_Up || key == Qt::Key_Down || key == Qt::Key_PageUp || key == Qt::Key_PageDown;
    if (key == Qt::Key_Up || key == Qt::Key_Down)
        stepClick(key == Qt::Key_Up ? VK_UP : VK_DOWN, shift ? kFastSteps : 1);
    else if (key == Qt::Key_PageUp || key == Qt::Key_PageDown)
        stepClick(key == Qt::Key_PageUp ? VK_UP : VK_DOWN, kFastSteps);

    if (key == Qt::Key_Delete && !EditorEnabled()) {
        event->accept();
        return;
    }
    const QChar typed = typedChar(event);
    if (typed.unicode() == 10 || (!typed.isNull() && typed.unicode() != 13 && !IsValidChar(typed))) {
        // Ctrl+Enter's line feed, "+", letters, separators: never typed.
        event->accept();
        return;
    }
    // Enter types nothing; the line edit reports it (returnPressed) and
    // leaves it to the form's default button.
    TButtonEdit::keyPressEvent(event);
    if (stepKey)
        event->accept();
}

void TPriceEntryEdit::wheelEvent(QWheelEvent* event)
{
    TButtonEdit::wheelEvent(event);
    // Only the box being typed in steps: turning the wheel over a form must
    // not change a price the dealer is not looking at.
    if (!hasFocus())
        return;
    // Some platforms turn Shift+wheel into a sideways turn.
    const QPoint angle = event->angleDelta();
    const int delta = angle.y() != 0 ? angle.y() : angle.x();
    if (delta == 0)
        return;
    stepClick(delta > 0 ? VK_UP : VK_DOWN, event->modifiers() & Qt::ShiftModifier ? kFastSteps : 1);
    event->accept();
}

void TPriceEntryEdit::EnterBox()
{
    ApplyEntryColor(this, QString::fromLatin1(coEntryActiveBground));
    selectAll();
}

void TPriceEntryEdit::ExitBox()
{
    ApplyEntryColor(this, QString::fromLatin1(coEntryInactiveBground));
    SetValue(CheckValue(GetValue()));
}

namespace PriceEntryEdit {

void Register()
{
    RegisterComponent({ QString::fromLatin1(PalettePageOMS11), QStringLiteral("qal::TPriceEntryEdit"),
        QStringLiteral("qalpack/controls/PriceEntryEdit.h"),
        QStringLiteral("Order price: steps by the spread table's ticks"),
        [](QWidget* parent) { return new TPriceEntryEdit(parent); } });
}

} // namespace PriceEntryEdit

} // namespace qal
