// SPDX-License-Identifier: MIT
// TAccountEdit: the box a dealer types an order's client account into. It
// takes an account ID or one of the dealer's own shortcuts, recalls the last
// account sent with "..", opens the Account Explorer with "." or its "..."
// button, and keeps the focus while the text is not an account the dealer
// may trade for.
#pragma once

#include "qalpack/controls/ButtonEdit.h"
#include "qalpack/model/ResourceLabel.h"
#include "qalpack/qalpack_widgets_export.h"

class QPushButton;

namespace qal {

// The refusal of an account the dealer may not trade for, context "AcctEdit".
inline constexpr Label resStrAccountInvalid { "AcctEdit", QT_TRANSLATE_NOOP("AcctEdit", "Account Invalid.") };

// Input is upper case. The "..." button (object name "btnBrowse") is 17 x 17,
// bold, and never takes the focus.
//
// Leaving the box (by Tab or a click elsewhere; not a switch to another
// window) runs the exit processing:
// - "." empties the box and opens the explorer (DoBrowseClick);
// - ".." puts the saved account ID (SaveAccountId) in, empty when none;
// - anything else is looked up as a shortcut of the logged-on dealer
//   (TAccountModel::LookupShortCut, reading the dealer's shortcuts if need
//   be). Without a match the text goes through the model's ID completion
//   (CompleteAccountID) and the box shows the result. With a match the box
//   shows the account ID, passed through the completion first when the text
//   typed was not itself a valid account.
// Then, with ValidateOnExit on, a non-empty text that ValidateAccountId
// refuses brings up "Account Invalid." (title "System Alert", error icon, OK,
// through ShowAlert) and the focus goes back into the box, whose text stays
// as it is now; editingFinished() is not emitted then. An empty box is always
// accepted.
//
// Tab and Enter never type; Enter with "." in the box runs the exit
// processing at once (and so opens the explorer).
//
// Focus colours are those of the other entry boxes (coEntryActiveBground
// while focused, coEntryInactiveBground after).
class QALPACK_WIDGETS_EXPORT TAccountEdit : public TButtonEdit
{
    Q_OBJECT
    Q_PROPERTY(bool EditorEnabled READ EditorEnabled WRITE setEditorEnabled)

public:
    explicit TAccountEdit(QWidget* parent = nullptr);
    ~TAccountEdit() override;

    [[nodiscard]] QPushButton* browseButton() const;

    // Keeps the current text as the account recalled by "..". Hosts call it
    // after an order is sent.
    void SaveAccountId();
    [[nodiscard]] const QString& SavedAccountId() const { return savedAccountId_; }

    // True when the installed account model knows the text as an account
    // (FindAccount) and the logged-on dealer may trade for the account's
    // owner (TUserProfile::isAccessableUser). False without a model or
    // without a logged-on dealer.
    [[nodiscard]] bool ValidateAccountId() const;

    // Whether leaving the box checks the account. Default on.
    [[nodiscard]] bool ValidateOnExit() const { return validateOnExit_; }
    void setValidateOnExit(bool on) { validateOnExit_ = on; }

    // Opens the process-wide explorer modally (shortcut panel and refresh
    // flag off), emits browse() when it closes, and on OK puts the picked
    // account ID in the box and runs the exit processing, which checks it.
    virtual void DoBrowseClick(QObject* sender);

signals:
    // After the explorer closes, whatever the dealer chose.
    void browse();

protected:
    void EnterBox() override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    // The exit processing; false when the account was refused.
    bool exitProcessing();

    QString savedAccountId_;
    bool validateOnExit_ = true;
    bool exiting_ = false;
};

namespace AcctEdit {
// Adds TAccountEdit to the palette page "OMS11".
QALPACK_WIDGETS_EXPORT void Register();
} // namespace AcctEdit

} // namespace qal
