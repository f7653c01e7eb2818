// SPDX-License-Identifier: MIT
// TButtonEdit: the single-line entry box with a small button inside its
// right edge, the base of the price, quantity, symbol and account boxes.
#pragma once

#include <QLineEdit>
#include <QPointer>

#include "qalpack/qalpack_widgets_export.h"

namespace qal {

// The step keys of the entry boxes, as the old desks numbered them.
inline constexpr int VK_UP = 38;
inline constexpr int VK_DOWN = 40;

// The text a box shows for a number: the current locale's group separator,
// at least one integer digit and up to `maxDecimals` decimals without
// trailing zeros, "#,##0.######" for 6 and "#,##0" for 0 (1234.5 shows
// "1,234.5" in the C locale). A value that rounds to zero shows "0", never
// "-0"; infinities and NaN show "0".
[[nodiscard]] QALPACK_WIDGETS_EXPORT QString FormatGrouped(double value, int maxDecimals);

// Layout. The button sits inside the frame at the right edge, as tall as the
// text area less one pixel; the text stops two pixels short of it (a text
// margin of the button's width + 2), so typed text never runs under it.
// Without a frame the button takes the right edge from one pixel below the
// top to two above the bottom. A hidden button gives its room back to the
// text. The box is never lower than GetMinHeight(): its size hints say so to
// layouts, and a resize below it is undone.
//
// Editing rights. ReadOnly stops typing, pasting and cutting as in any line
// edit. EditorEnabled false keeps the text from being typed over, pasted
// into or cut from (keys, context menu, middle-click and drops alike) while
// the box's own buttons and step keys still change it; subclasses decide
// which typed characters that refuses.
//
// Focus. Entering the box (by any means but a pop-up returning it) runs
// EnterBox(), leaving it ExitBox(), before the line edit's own handling, so
// editingFinished() and the host's focus handlers see the normalised text.
class QALPACK_WIDGETS_EXPORT TButtonEdit : public QLineEdit
{
    Q_OBJECT
    Q_PROPERTY(bool AutoSelect READ AutoSelect WRITE setAutoSelect)
    Q_PROPERTY(bool ReadOnly READ isReadOnly WRITE setReadOnly)
    Q_PROPERTY(int MaxLength READ MaxLength WRITE SetMaxLength)
    // The line edit's own spellings of the same settings stay out of forms.
    Q_PROPERTY(bool readOnly READ isReadOnly WRITE setReadOnly DESIGNABLE false STORED false)
    Q_PROPERTY(int maxLength READ maxLength WRITE setMaxLength DESIGNABLE false STORED false)

public:
    explicit TButtonEdit(QWidget* parent = nullptr);
    ~TButtonEdit() override;

    // The button inside the right edge; the box takes it as its child and
    // owns it. nullptr removes the current one (which is then deleted).
    void setButton(QWidget* button);
    [[nodiscard]] QWidget* button() const { return button_; }

    // Whether entering the box selects all of its text. Default true.
    [[nodiscard]] bool AutoSelect() const { return autoSelect_; }
    void setAutoSelect(bool on) { autoSelect_ = on; }

    // The longest text the user may type; 0 (the default) for no limit.
    [[nodiscard]] int MaxLength() const;
    void SetMaxLength(int length);

    [[nodiscard]] bool EditorEnabled() const { return editorEnabled_; }
    void setEditorEnabled(bool on) { editorEnabled_ = on; }

    // The lowest the box may be: the font's height, a quarter of the smaller
    // of the application font's and the box font's heights, four border
    // pixels and two more.
    [[nodiscard]] int GetMinHeight() const;
    // Narrows the text area by the button (see Layout); called on every
    // resize and when the button is shown, hidden or replaced.
    void SetEditRect();

    [[nodiscard]] QSize sizeHint() const override;
    [[nodiscard]] QSize minimumSizeHint() const override;

protected:
    // Entering and leaving the box; the defaults select all on entry when
    // AutoSelect is on, and do nothing on exit.
    virtual void EnterBox();
    virtual void ExitBox();

    // The character a key types, as the boxes' character rules see it:
    // Ctrl+letter as its control character (Ctrl+V is 22), Enter as carriage
    // return (13), Ctrl+Enter as line feed (10), Backspace as 8; a null
    // character for keys that type nothing (arrows, Delete, function keys).
    [[nodiscard]] static QChar typedChar(const QKeyEvent* event);

    // Whether the text may be pasted into or cut from now.
    [[nodiscard]] bool clipboardEditAllowed() const { return editorEnabled_ && !isReadOnly(); }
    // Places the button by the layout rule and narrows the text area.
    void placeButton();

    bool event(QEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void contextMenuEvent(QContextMenuEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    QPointer<QWidget> button_;
    bool autoSelect_ = true;
    bool editorEnabled_ = true;
};

} // namespace qal
