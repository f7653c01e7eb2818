// SPDX-License-Identifier: MIT
// The account model of the embedded setup: accounts and dealers' shortcuts
// read from the order database's Account_File and Account_ShortCut tables,
// shortcuts written back there.
#pragma once

#include <memory>

#include <QObject>
#include <QSet>
#include <QString>

#include "qalpack/profile/AccountModel.h"
#include "qalpack/qalpack_export.h"

namespace qal {

class TDatabase;
class TQuery;

// Reads accounts when asked and keeps them (see TAccountModel for ownership).
//
// An account's details come from its Account_File row: Account -> AcctId,
// User_No -> UserId, First_Name, Last_Name, Acct_Name, Chinese_Name,
// Day_Phone, Home_Phone, Mobile, Fax, Email, CommRate, Min_Comm and
// Account_Comm -> the commissions, Suspended (non-zero) -> Suspended. Every
// non-empty column of the row is also kept in the account's custom
// information twice: under the column's name ("Client_ID") and under
// "field" and its position from 01 ("field12"), the form a desk's client-ID
// column setting names. An account's ShortCut is the current user's shortcut
// for it.
//
// Shortcuts are Account_ShortCut rows (User_No, ShortCut, Account): a user has
// at most one per account and each of a user's shortcuts names one account.
// They are compared without regard to letter case and read per user the
// first time that user's shortcuts are needed.
//
// Errors: the loading operations and the shortcut writes raise
// DatabaseError when the database cannot be opened or refuses a statement
// (what was read before stays held). The look-ups the entry controls use
// (FindAccount, LookupShortCut, CompleteAccountID) never raise: a database
// failure there is logged and answered from what is held.
//
// The embedded database holds no investor IDs or customer balances: their
// loaders mark the item loaded with nothing.
class QALPACK_EXPORT TDbAccountModel : public TAccountModel
{
    Q_OBJECT

public:
    // Reads the database that queries reach as `databaseName` (a database of
    // the default session, or an alias); empty: the order database
    // (orderDatabase(), "OMSDATA").
    explicit TDbAccountModel(const QString& databaseName = QString(), QObject* owner = nullptr);
    ~TDbAccountModel() override;

    // Also makes every held account's ShortCut the new user's, as far as that
    // user's shortcuts are held (nothing is read here).
    void setCurrentUserID(const QString& userId) override;
    int LoadUserAccounts(const QString& userId) override;
    void EnumAccounts(const QString& userId, const TAccountEnumHandler& handler, bool refresh) override;
    TAccount* LoadAccount(const QString& accountId) override;
    int LoadShortCuts(const QString& userId) override;
    // A held account, or else one read from the database.
    [[nodiscard]] TAccount* FindAccount(const QString& accountId) override;
    bool LookupShortCut(
        const QString& userId, const QString& text, QString& accountId, bool loadIfNeeded) override;
    [[nodiscard]] QString GetShortCut(const QString& accountId, const QString& userId) override;
    // An exact ID (held or in the database), else the only ID in the
    // database that begins with the text, letter case ignored.
    bool CompleteAccountID(const QString& text, QString& accountId) override;
    // Reads the user's shortcuts first when they are not held, and writes the
    // change in one transaction.
    bool SetShortCut(const QString& accountId, const QString& userId, const QString& shortCut) override;
    void RemoveShortCut(const QString& accountId, const QString& userId) override;
    void ReleaseAllAccount() override;
    int LoadAllAccounts() override;
    int ReloadAccounts() override;
    void LoadInvestorIDs(const QString& accountId) override;

private:
    // The database named at construction, or the order database; connected.
    [[nodiscard]] TDatabase& database() const;
    [[nodiscard]] std::unique_ptr<TQuery> query(const QString& sql) const;
    // Reads every row of an open Account_File query into held accounts.
    int readAccounts(TQuery& query, bool heldOnly);
    void ensureShortCuts(const QString& userId);
    // Gives every held account the current user's shortcut.
    void applyShortCuts();
    void holdShortCut(const QString& userId, const QString& shortCut, const QString& accountId);
    void dropShortCut(const QString& accountId, const QString& userId);
    [[nodiscard]] const TAccountShortCut* heldShortCut(const QString& userId, const QString& shortCut) const;

    QString databaseName_;
    QSet<QString> shortCutUsers_; // users whose shortcuts are held
};

} // namespace qal
