// SPDX-License-Identifier: MIT
#include "qalpack/controls/SpinButton.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyleOption>

namespace qal {

TSpinButton::TSpinButton(QWidget* parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
    resize(DefaultWidth, DefaultHeight);
    connect(&repeat_, &QTimer::timeout, this, [this] {
        repeat_.setInterval(RepeatIntervalMs);
        fire();
    });
}

void TSpinButton::setFocusControl(QWidget* control)
{
    focusControl_ = control;
}

QRect TSpinButton::halfRect(Half half) const
{
    const int upperHeight = height() / 2;
    if (half == Half::Up)
        return { 0, 0, width(), upperHeight };
    return { 0, upperHeight, width(), height() - upperHeight };
}

void TSpinButton::fire()
{
    if (pressed_ == Half::Up)
        emit upClick();
    else if (pressed_ == Half::Down)
        emit downClick();
}

void TSpinButton::stopRepeat()
{
    repeat_.stop();
    if (pressed_ != Half::None) {
        pressed_ = Half::None;
        update();
    }
}

void TSpinButton::mousePressEvent(QMouseEvent* event)
{
    if (event->button() != Qt::LeftButton || !isEnabled()) {
        QWidget::mousePressEvent(event);
        return;
    }
    if (focusControl_ && focusControl_->isEnabled() && !focusControl_->hasFocus())
        focusControl_->setFocus(Qt::MouseFocusReason);
    pressModifiers_ = event->modifiers();
    pressed_ = halfRect(Half::Up).contains(event->position().toPoint()) ? Half::Up : Half::Down;
    update();
    // The click fires on the press, as the arrows of the old desks did; the
    // repeat keeps firing while the button is held.
    repeat_.start(InitialRepeatDelayMs);
    fire();
    event->accept();
}

void TSpinButton::mouseReleaseEvent(QMouseEvent* event)
{
    if (event->button() == Qt::LeftButton)
        stopRepeat();
    QWidget::mouseReleaseEvent(event);
}

void TSpinButton::hideEvent(QHideEvent* event)
{
    stopRepeat();
    QWidget::hideEvent(event);
}

void TSpinButton::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    for (const Half half : { Half::Up, Half::Down }) {
        QStyleOptionButton bevel;
        bevel.initFrom(this);
        bevel.rect = halfRect(half);
        bevel.state |= pressed_ == half ? QStyle::State_Sunken : QStyle::State_Raised;
        style()->drawPrimitive(QStyle::PE_PanelButtonBevel, &bevel, &painter, this);

        QStyleOption arrow;
        arrow.initFrom(this);
        arrow.rect = bevel.rect.adjusted(3, 2, -3, -2);
        style()->drawPrimitive(half == Half::Up ? QStyle::PE_IndicatorArrowUp : QStyle::PE_IndicatorArrowDown,
            &arrow, &painter, this);
    }
}

} // namespace qal
