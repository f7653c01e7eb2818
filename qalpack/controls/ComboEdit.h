// SPDX-License-Identifier: MIT
// TComboEdit: an entry box with an optional drop-down list inside its right
// edge, the base of the symbol box.
#pragma once

#include "qalpack/controls/ButtonEdit.h"
#include "qalpack/qalpack_widgets_export.h"

class QComboBox;

namespace qal {

// The list (object name "cbxList") is owned by the box and laid out as the
// price box's button is: it narrows the text while shown and gives the room
// back when hidden. It starts shown. Choosing an item in it calls
// ButtonClickHandler, which emits buttonClick(). The list never takes the
// focus from the box, so choosing from it is not leaving the box.
//
// Text is the box's value and is stored in forms. CharCase turns the text,
// typed, pasted or set, into upper or lower case. Enter types nothing.
class QALPACK_WIDGETS_EXPORT TComboEdit : public TButtonEdit
{
    Q_OBJECT
    Q_PROPERTY(TEditCharCase CharCase READ CharCase WRITE setCharCase)
    Q_PROPERTY(QString Text READ text WRITE setText USER true)
    Q_PROPERTY(QString text READ text WRITE setText DESIGNABLE false STORED false)

public:
    enum TEditCharCase { ecNormal, ecUpperCase, ecLowerCase };
    Q_ENUM(TEditCharCase)

    // The width of the drop-down list inside the box.
    static constexpr int ListWidth = 52;

    explicit TComboEdit(QWidget* parent = nullptr);
    ~TComboEdit() override;

    [[nodiscard]] TEditCharCase CharCase() const { return charCase_; }
    void setCharCase(TEditCharCase charCase);

    // Shows or hides the drop-down list.
    void setComboVisible(bool visible);
    [[nodiscard]] bool comboVisible() const { return comboVisible_; }

    // The drop-down list.
    [[nodiscard]] QComboBox* list() const { return list_; }

signals:
    // The dealer chose an item of the drop-down list.
    void buttonClick();

protected:
    virtual void ButtonClickHandler(QObject* sender);

private:
    QComboBox* list_ = nullptr;
    bool comboVisible_ = true;
    TEditCharCase charCase_ = ecNormal;
};

namespace ComboEdit {
// Adds TComboEdit to the palette page "OMS11".
QALPACK_WIDGETS_EXPORT void Register();
} // namespace ComboEdit

} // namespace qal
