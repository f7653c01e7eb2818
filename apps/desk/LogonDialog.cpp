// SPDX-License-Identifier: MIT
#include "apps/desk/LogonDialog.h"

#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "qalpack/db/Database.h"
#include "qalpack/db/Query.h"
#include "qalpack/orderdb/orderDB.h"

namespace qal {
namespace desk {

QVector<DeskUser> LoadDeskUsers()
{
    TDatabase& database = RequireOrderDatabase();
    TQuery query;
    query.SetDatabaseName(database.DatabaseName());
    query.SQL().Add(
        QStringLiteral("select User_No, Full_name from User_File where Active = 1 order by User_No"));
    query.Open();
    QVector<DeskUser> users;
    for (; !query.Eof(); query.Next())
        users.append({ query.FieldByName(u"User_No").AsString().trimmed(),
            query.FieldByName(u"Full_name").AsString().trimmed() });
    query.Close();
    return users;
}

LogonDialog::LogonDialog(const QVector<DeskUser>& users, QWidget* parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("LogonDialog"));
    setWindowTitle(QCoreApplication::translate("LogonDialog", "Log On"));
    auto* layout = new QVBoxLayout(this);
    auto* prompt
        = new QLabel(QCoreApplication::translate("LogonDialog", "Choose the dealer to log on as:"), this);
    layout->addWidget(prompt);
    list_ = new QListWidget(this);
    list_->setObjectName(QStringLiteral("lstUsers"));
    for (const DeskUser& user : users) {
        auto* item = new QListWidgetItem(QStringLiteral("%1   %2").arg(user.id, user.name), list_);
        item->setData(Qt::UserRole, user.id);
    }
    if (list_->count() > 0)
        list_->setCurrentRow(0);
    layout->addWidget(list_);
    auto* buttons = new QDialogButtonBox(this);
    logon_ = buttons->addButton(
        QCoreApplication::translate("LogonDialog", "Log On"), QDialogButtonBox::AcceptRole);
    logon_->setObjectName(QStringLiteral("btnLogon"));
    logon_->setDefault(true);
    QPushButton* cancel = buttons->addButton(
        QCoreApplication::translate("LogonDialog", "Cancel"), QDialogButtonBox::RejectRole);
    cancel->setObjectName(QStringLiteral("btnCancel"));
    layout->addWidget(buttons);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(list_, &QListWidget::itemDoubleClicked, this, &QDialog::accept);
    resize(380, 420);
}

QString LogonDialog::SelectedUser() const
{
    const QListWidgetItem* item = list_->currentItem();
    return item ? item->data(Qt::UserRole).toString() : QString();
}

TCustomLogin DialogLogin(QWidget* parent, const QString& userId)
{
    return [parent, userId](QString& user, QString&, QString&, QString&, QString&) {
        if (!userId.isEmpty()) {
            user = userId;
            return true;
        }
        LogonDialog dialog(LoadDeskUsers(), parent);
        if (dialog.exec() != QDialog::Accepted || dialog.SelectedUser().isEmpty())
            return false;
        user = dialog.SelectedUser();
        return true;
    };
}

} // namespace desk
} // namespace qal
