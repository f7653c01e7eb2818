// SPDX-License-Identifier: MIT
#include "qalpack/controls/AcctEdit.h"

#include <utility>

#include <QFocusEvent>
#include <QKeyEvent>
#include <QPushButton>
#include <QValidator>

#include "qalpack/controls/ComponentPalette.h"
#include "qalpack/feedback/EntryFeedback.h"
#include "qalpack/feedback/SystemAlert.h"
#include "qalpack/forms/AcctListView.h"
#include "qalpack/profile/AccountModel.h"
#include "qalpack/profile/UserProfile.h"

namespace qal {

namespace {

constexpr int kButtonSize = 17;

// Typed and pasted text is upper-cased.
class UpperCaseValidator : public QValidator
{
public:
    using QValidator::QValidator;
    State validate(QString& input, int&) const override
    {
        input = input.toUpper();
        return Acceptable;
    }
};

} // namespace

TAccountEdit::TAccountEdit(QWidget* parent)
    : TButtonEdit(parent)
{
    auto* button = new QPushButton(QStringLiteral("..."), this);
    button->setObjectName(QStringLiteral("btnBrowse"));
    button->setFixedSize(kButtonSize, kButtonSize);
    QFont bold = button->font();
    bold.setBold(true);
    button->setFont(bold);
    button->setFocusPolicy(Qt::NoFocus);
    button->setAutoDefault(false);
    setButton(button);
    connect(button, &QPushButton::clicked, this, [this, button] { DoBrowseClick(button); });
    setValidator(new UpperCaseValidator(this));
    clear();
}

TAccountEdit::~TAccountEdit() = default;

QPushButton* TAccountEdit::browseButton() const
{
    return qobject_cast<QPushButton*>(button());
}

void TAccountEdit::SaveAccountId()
{
    savedAccountId_ = text();
}

bool TAccountEdit::ValidateAccountId() const
{
    TAccountModel* const model = TAccountModel::GetInstance();
    const TUserProfile* const profile = TUserProfile::CurrentInstance();
    if (model == nullptr || profile == nullptr)
        return false;
    const TAccount* const account = model->FindAccount(text());
    return account != nullptr && profile->isAccessableUser(account->GetFieldValue(afUserId));
}

void TAccountEdit::DoBrowseClick(QObject*)
{
    TAccountListView* const explorer = TAccountListView::GetInstance();
    explorer->setShortcutPanelShown(false);
    explorer->setEnumRefresh(false);
    const int result = explorer->exec();
    emit browse();
    if (result == QDialog::Accepted) {
        setText(explorer->SelectedAccountId());
        exitProcessing();
    }
}

bool TAccountEdit::exitProcessing()
{
    // While this runs, focus moves caused by the explorer or a message box
    // are not the dealer leaving the box (see focusOutEvent).
    const QString typed = text();
    if (typed.trimmed() == QLatin1String(".")) {
        clear();
        // The explorer checks the account it puts in the box itself.
        const bool wasExiting = std::exchange(exiting_, true);
        DoBrowseClick(this);
        exiting_ = wasExiting;
        return !validateOnExit_ || text().isEmpty() || ValidateAccountId();
    }
    const bool wasExiting = std::exchange(exiting_, true);
    if (typed == QLatin1String("..")) {
        setText(savedAccountId_);
    } else if (!typed.isEmpty()) {
        if (TAccountModel* const model = TAccountModel::GetInstance()) {
            const TUserProfile* const profile = TUserProfile::CurrentInstance();
            const QString userId = profile != nullptr ? profile->UserId() : model->CurrentUserID();
            QString accountId;
            model->LookupShortCut(userId, typed, accountId, true);
            QString shown;
            if (accountId.isEmpty())
                model->CompleteAccountID(typed, shown);
            else if (!ValidateAccountId())
                model->CompleteAccountID(accountId, shown);
            else
                shown = accountId;
            setText(shown);
        }
    }
    bool accepted = true;
    if (validateOnExit_ && !text().isEmpty() && !ValidateAccountId()) {
        ShowAlert(
            { this, resStrAccountInvalid(), resStrSystemAlert(), QMessageBox::Critical, QMessageBox::Ok });
        setFocus(Qt::OtherFocusReason);
        accepted = false;
    }
    exiting_ = wasExiting;
    return accepted;
}

void TAccountEdit::EnterBox()
{
    ApplyEntryColor(this, QString::fromLatin1(coEntryActiveBground));
    TButtonEdit::EnterBox();
}

void TAccountEdit::keyPressEvent(QKeyEvent* event)
{
    const QChar typed = typedChar(event);
    if (typed == QChar(9) || typed == QChar(13)) {
        if (text().trimmed() == QLatin1String("."))
            exitProcessing();
        event->accept();
        return;
    }
    TButtonEdit::keyPressEvent(event);
}

void TAccountEdit::focusOutEvent(QFocusEvent* event)
{
    // Another window taking the focus (the explorer, a message box) or a
    // pop-up is not the dealer leaving the box.
    const Qt::FocusReason reason = event->reason();
    if (reason == Qt::ActiveWindowFocusReason || reason == Qt::PopupFocusReason || exiting_) {
        TButtonEdit::focusOutEvent(event);
        return;
    }
    ApplyEntryColor(this, QString::fromLatin1(coEntryInactiveBground));
    if (!exitProcessing())
        return;
    TButtonEdit::focusOutEvent(event);
}

namespace AcctEdit {

void Register()
{
    RegisterComponent({ QString::fromLatin1(PalettePageOMS11), QStringLiteral("qal::TAccountEdit"),
        QStringLiteral("qalpack/controls/AcctEdit.h"),
        QStringLiteral("Client account: ID or shortcut; \".\" opens the Account Explorer"),
        [](QWidget* parent) { return new TAccountEdit(parent); } });
}

} // namespace AcctEdit

} // namespace qal
