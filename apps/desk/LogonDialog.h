// SPDX-License-Identifier: MIT
// The desk's log-on: a dialog that lists the active users of the order
// database, and the callback that hands the chosen one to the library
// (TUserProfile::SetCustomLogin), which then loads the profile.
#pragma once

#include <QDialog>
#include <QString>
#include <QVector>

#include "qalpack/profile/UserProfile.h"

class QListWidget;
class QPushButton;

namespace qal {
namespace desk {

struct DeskUser
{
    QString id;
    QString name;
};

// The active users of User_File, by user number. Throws qal::Error when the
// order database cannot be opened, DatabaseError when the query fails.
[[nodiscard]] QVector<DeskUser> LoadDeskUsers();

// Lists `users` (object name "lstUsers"), the first selected; OK
// ("btnLogon") and double click accept, Escape and Cancel refuse.
class LogonDialog : public QDialog
{
    Q_OBJECT

public:
    explicit LogonDialog(const QVector<DeskUser>& users, QWidget* parent = nullptr);

    // The selected user's id, empty when none.
    [[nodiscard]] QString SelectedUser() const;
    [[nodiscard]] QListWidget* userList() const { return list_; }

private:
    QListWidget* list_ = nullptr;
    QPushButton* logon_ = nullptr;
};

// The log-on callback for TUserProfile::SetCustomLogin: shows the dialog
// modally over `parent` and answers the chosen user id. With `userId` set
// it answers that user without asking (a desk started for one dealer, the
// screenshots).
[[nodiscard]] TCustomLogin DialogLogin(QWidget* parent = nullptr, const QString& userId = QString());

} // namespace desk
} // namespace qal
