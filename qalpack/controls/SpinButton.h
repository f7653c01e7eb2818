// SPDX-License-Identifier: MIT
// TSpinButton: the small up/down arrow button that the price and quantity
// boxes carry inside their right edge.
#pragma once

#include <QPointer>
#include <QTimer>
#include <QWidget>

#include "qalpack/qalpack_widgets_export.h"

namespace qal {

// Two halves, 15 x 17 pixels by default: a press on the upper half emits
// upClick(), on the lower half downClick(). Held down, the half repeats its
// click after 400 ms and then every 100 ms until released. The button never
// takes the focus itself: a press gives it to the focus control (the box the
// button belongs to) when that box does not have it yet.
class QALPACK_WIDGETS_EXPORT TSpinButton : public QWidget
{
    Q_OBJECT

public:
    static constexpr int DefaultWidth = 15;
    static constexpr int DefaultHeight = 17;
    static constexpr int InitialRepeatDelayMs = 400;
    static constexpr int RepeatIntervalMs = 100;

    explicit TSpinButton(QWidget* parent = nullptr);

    // The box that receives the focus when the button is pressed; not owned.
    void setFocusControl(QWidget* control);
    [[nodiscard]] QWidget* focusControl() const { return focusControl_; }

    // The keyboard modifiers held when the current (or last) press began;
    // boxes step ten ticks at a time while Shift is held.
    [[nodiscard]] Qt::KeyboardModifiers pressModifiers() const { return pressModifiers_; }

    [[nodiscard]] QSize sizeHint() const override { return { DefaultWidth, DefaultHeight }; }

signals:
    void upClick();
    void downClick();

protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    enum class Half { None, Up, Down };
    void fire();
    void stopRepeat();
    [[nodiscard]] QRect halfRect(Half half) const;

    QPointer<QWidget> focusControl_;
    QTimer repeat_;
    Half pressed_ = Half::None;
    Qt::KeyboardModifiers pressModifiers_;
};

} // namespace qal
