// SPDX-License-Identifier: MIT
#include "qalpack/controls/ComboEdit.h"

#include <QComboBox>
#include <QValidator>

#include "qalpack/controls/ComponentPalette.h"

namespace qal {

namespace {

// Turns typed and pasted text into the box's character case.
class CharCaseValidator : public QValidator
{
public:
    CharCaseValidator(TComboEdit::TEditCharCase charCase, QObject* parent)
        : QValidator(parent)
        , charCase_(charCase)
    { }

    State validate(QString& input, int&) const override
    {
        input = charCase_ == TComboEdit::ecUpperCase ? input.toUpper() : input.toLower();
        return Acceptable;
    }

private:
    TComboEdit::TEditCharCase charCase_;
};

} // namespace

TComboEdit::TComboEdit(QWidget* parent)
    : TButtonEdit(parent)
{
    list_ = new QComboBox(this);
    list_->setObjectName(QStringLiteral("cbxList"));
    list_->setFocusPolicy(Qt::NoFocus);
    list_->resize(ListWidth, list_->sizeHint().height());
    setButton(list_);
    connect(list_, &QComboBox::activated, this, [this] { ButtonClickHandler(list_); });
}

TComboEdit::~TComboEdit() = default;

void TComboEdit::setCharCase(TEditCharCase charCase)
{
    if (charCase_ == charCase)
        return;
    charCase_ = charCase;
    delete validator();
    setValidator(charCase_ == ecNormal ? nullptr : new CharCaseValidator(charCase_, this));
}

void TComboEdit::setComboVisible(bool visible)
{
    comboVisible_ = visible;
    list_->setVisible(visible);
    SetEditRect();
}

void TComboEdit::ButtonClickHandler(QObject*)
{
    emit buttonClick();
}

namespace ComboEdit {

void Register()
{
    RegisterComponent({ QString::fromLatin1(PalettePageOMS11), QStringLiteral("qal::TComboEdit"),
        QStringLiteral("qalpack/controls/ComboEdit.h"),
        QStringLiteral("Entry box with a drop-down list inside"),
        [](QWidget* parent) { return new TComboEdit(parent); } });
}

} // namespace ComboEdit

} // namespace qal
