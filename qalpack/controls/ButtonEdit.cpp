// SPDX-License-Identifier: MIT
#include "qalpack/controls/ButtonEdit.h"

#include <algorithm>
#include <cmath>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QFocusEvent>
#include <QKeyEvent>
#include <QLocale>
#include <QMenu>
#include <QStyleOptionFrame>

namespace qal {

namespace {

// A line edit with no length limit has this one.
constexpr int kUnlimitedLength = 32767;
// The border the old desks counted four times in a box's minimum height.
constexpr int kBorderHeight = 1;

} // namespace

QString FormatGrouped(double value, int maxDecimals)
{
    if (!std::isfinite(value))
        return QStringLiteral("0");
    QString fixed = QString::number(value, 'f', std::max(maxDecimals, 0));
    const bool negative = fixed.startsWith(QLatin1Char('-'));
    if (negative)
        fixed.remove(0, 1);
    const qsizetype point = fixed.indexOf(QLatin1Char('.'));
    const QString whole = point < 0 ? fixed : fixed.left(point);
    QString fraction = point < 0 ? QString() : fixed.mid(point + 1);
    while (fraction.endsWith(QLatin1Char('0')))
        fraction.chop(1);

    const QLocale locale;
    QString text;
    if (negative && (fraction.size() > 0 || whole.count(QLatin1Char('0')) != whole.size()))
        text += QLatin1Char('-');
    for (qsizetype i = 0; i < whole.size(); ++i) {
        if (i > 0 && (whole.size() - i) % 3 == 0)
            text += locale.groupSeparator();
        text += whole.at(i);
    }
    if (!fraction.isEmpty())
        text += locale.decimalPoint() + fraction;
    return text;
}

QChar TButtonEdit::typedChar(const QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        return QChar(event->modifiers() & Qt::ControlModifier ? 10 : 13);
    case Qt::Key_Backspace:
        return QChar(8);
    case Qt::Key_Tab:
        return QChar(9);
    case Qt::Key_Escape:
        return QChar(27);
    default:
        break;
    }
    const QString text = event->text();
    if (text.size() != 1)
        return {};
    const QChar typed = text.at(0);
    if ((event->modifiers() & Qt::ControlModifier) && typed.unicode() < 128 && typed.isLetter())
        return QChar(typed.toUpper().unicode() & 0x1F);
    return typed;
}

TButtonEdit::TButtonEdit(QWidget* parent)
    : QLineEdit(parent)
{ }

TButtonEdit::~TButtonEdit() = default;

void TButtonEdit::setButton(QWidget* button)
{
    if (button_ == button)
        return;
    if (button_) {
        button_->removeEventFilter(this);
        delete button_.data();
    }
    button_ = button;
    if (button_) {
        button_->setParent(this);
        button_->installEventFilter(this);
        button_->setCursor(Qt::ArrowCursor);
    }
    placeButton();
}

int TButtonEdit::MaxLength() const
{
    return maxLength() >= kUnlimitedLength ? 0 : maxLength();
}

void TButtonEdit::SetMaxLength(int length)
{
    setMaxLength(length <= 0 ? kUnlimitedLength : length);
}

int TButtonEdit::GetMinHeight() const
{
    const int own = fontMetrics().height();
    const int smaller = std::min(QFontMetrics(QApplication::font()).height(), own);
    return own + smaller / 4 + 4 * kBorderHeight + 2;
}

void TButtonEdit::SetEditRect()
{
    const int right = button_ && !button_->isHidden() ? button_->width() + 2 : 0;
    const QMargins margins = textMargins();
    if (margins.right() != right)
        setTextMargins(margins.left(), margins.top(), right, margins.bottom());
}

void TButtonEdit::placeButton()
{
    if (button_) {
        const int buttonWidth = button_->width();
        if (hasFrame()) {
            QStyleOptionFrame option;
            initStyleOption(&option);
            const int frame = style()->pixelMetric(QStyle::PM_DefaultFrameWidth, &option, this);
            button_->setGeometry(
                width() - frame - buttonWidth - 1, frame, buttonWidth, height() - 2 * frame - 1);
        } else {
            button_->setGeometry(width() - buttonWidth, 1, buttonWidth, height() - 3);
        }
    }
    SetEditRect();
}

QSize TButtonEdit::sizeHint() const
{
    QSize size = QLineEdit::sizeHint();
    size.setHeight(std::max(size.height(), GetMinHeight()));
    return size;
}

QSize TButtonEdit::minimumSizeHint() const
{
    QSize size = QLineEdit::minimumSizeHint();
    size.setHeight(std::max(size.height(), GetMinHeight()));
    if (button_ && !button_->isHidden())
        size.setWidth(size.width() + button_->width() + 2);
    return size;
}

void TButtonEdit::resizeEvent(QResizeEvent* event)
{
    QLineEdit::resizeEvent(event);
    if (height() < GetMinHeight()) {
        resize(width(), GetMinHeight());
        return;
    }
    placeButton();
}

bool TButtonEdit::event(QEvent* event)
{
    // A new font or style changes the minimum height and the frame.
    if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange) {
        const bool handled = QLineEdit::event(event);
        updateGeometry();
        if (height() < GetMinHeight())
            resize(width(), GetMinHeight());
        else
            placeButton();
        return handled;
    }
    return QLineEdit::event(event);
}

bool TButtonEdit::eventFilter(QObject* watched, QEvent* event)
{
    if (watched == button_.data()) {
        switch (event->type()) {
        case QEvent::Show:
        case QEvent::Hide:
        case QEvent::Resize:
            if (event->type() != QEvent::Resize || button_->width() + 2 != textMargins().right())
                placeButton();
            updateGeometry();
            break;
        default:
            break;
        }
    }
    return QLineEdit::eventFilter(watched, event);
}

void TButtonEdit::keyPressEvent(QKeyEvent* event)
{
    if ((event->matches(QKeySequence::Paste) || event->matches(QKeySequence::Cut))
        && !clipboardEditAllowed()) {
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void TButtonEdit::EnterBox()
{
    if (autoSelect_)
        selectAll();
}

void TButtonEdit::ExitBox() { }

void TButtonEdit::focusInEvent(QFocusEvent* event)
{
    // A pop-up (the context menu, a drop-down list) handing the focus back
    // is not the dealer entering the box.
    if (event->reason() != Qt::PopupFocusReason)
        EnterBox();
    QLineEdit::focusInEvent(event);
    // The line edit selects all by itself when tabbed into; keep the box's
    // own choice.
    if (event->reason() != Qt::PopupFocusReason && !autoSelect_ && hasSelectedText())
        deselect();
}

void TButtonEdit::focusOutEvent(QFocusEvent* event)
{
    if (event->reason() != Qt::PopupFocusReason)
        ExitBox();
    QLineEdit::focusOutEvent(event);
}

void TButtonEdit::contextMenuEvent(QContextMenuEvent* event)
{
    QMenu* menu = createStandardContextMenu();
    menu->setAttribute(Qt::WA_DeleteOnClose);
    if (!clipboardEditAllowed()) {
        for (QAction* action : menu->actions()) {
            if (action->objectName() == QLatin1String("edit-paste")
                || action->objectName() == QLatin1String("edit-cut"))
                action->setEnabled(false);
        }
    }
    menu->popup(event->globalPos());
}

void TButtonEdit::mousePressEvent(QMouseEvent* event)
{
    if (event->button() == Qt::MiddleButton && !clipboardEditAllowed()) {
        event->accept();
        return;
    }
    QLineEdit::mousePressEvent(event);
}

void TButtonEdit::mouseReleaseEvent(QMouseEvent* event)
{
    // The X11 selection is pasted on the middle button's release.
    if (event->button() == Qt::MiddleButton && !clipboardEditAllowed()) {
        event->accept();
        return;
    }
    QLineEdit::mouseReleaseEvent(event);
}

void TButtonEdit::dragEnterEvent(QDragEnterEvent* event)
{
    if (!clipboardEditAllowed()) {
        event->ignore();
        return;
    }
    QLineEdit::dragEnterEvent(event);
}

void TButtonEdit::dropEvent(QDropEvent* event)
{
    if (!clipboardEditAllowed()) {
        event->ignore();
        return;
    }
    QLineEdit::dropEvent(event);
}

} // namespace qal
