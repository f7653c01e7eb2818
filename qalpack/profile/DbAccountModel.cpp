// SPDX-License-Identifier: MIT
#include "qalpack/profile/DbAccountModel.h"

#include <memory>
#include <utility>
#include <vector>

#include <QHash>
#include <QStringList>

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"
#include "qalpack/omslib/omsLog.h"
#include "qalpack/orderdb/orderDB.h"

namespace qal {
namespace {

constexpr QChar kKeySeparator(u'\x0001');
constexpr int kLogWarning = 1;

// Held shortcuts are keyed by user and upper-cased shortcut.
QString shortCutKey(const QString& userId, const QString& shortCut)
{
    return userId + kKeySeparator + shortCut.toUpper();
}

// `text` as the start of a LIKE pattern, its wildcards and escapes taken literally.
QString likePrefix(const QString& text)
{
    QString pattern;
    for (const QChar c : text) {
        if (c == u'\\' || c == u'%' || c == u'_')
            pattern += u'\\';
        pattern += c;
    }
    return pattern + u'%';
}

void logLookupFailure(const char* what, const Error& error)
{
    omsLogMsg(QStringLiteral("Account model: %1 failed: %2").arg(QLatin1String(what), error.message()),
        kLogWarning);
}

} // namespace

TDbAccountModel::TDbAccountModel(const QString& databaseName, QObject* owner)
    : TAccountModel(owner)
    , databaseName_(databaseName)
{ }

TDbAccountModel::~TDbAccountModel() = default;

QString TDbAccountModel::databaseName() const
{
    if (!databaseName_.isEmpty())
        return databaseName_;
    return RequireOrderDatabase().DatabaseName();
}

std::unique_ptr<TQuery> TDbAccountModel::query(const QString& sql) const
{
    auto q = std::make_unique<TQuery>();
    q->SetDatabaseName(databaseName());
    q->SQL().Add(sql);
    return q;
}

int TDbAccountModel::readAccounts(TQuery& q, bool heldOnly)
{
    q.Open();
    int read = 0;
    for (; !q.Eof(); q.Next()) {
        const QString id = q.FieldByName("Account").AsString();
        if (id.isEmpty() || (heldOnly && !heldAccount(id)))
            continue;
        TAccount& account = holdAccount(id);
        account.UserId = q.FieldByName("User_No").AsString();
        account.FirstName = q.FieldByName("First_Name").AsString();
        account.LastName = q.FieldByName("Last_Name").AsString();
        account.AcctName = q.FieldByName("Acct_Name").AsString();
        account.ChineseName = q.FieldByName("Chinese_Name").AsString();
        account.DayPhone = q.FieldByName("Day_Phone").AsString();
        account.HomePhone = q.FieldByName("Home_Phone").AsString();
        account.Mobile = q.FieldByName("Mobile").AsString();
        account.Fax = q.FieldByName("Fax").AsString();
        account.Email = q.FieldByName("Email").AsString();
        account.setcommrate(q.FieldByName("CommRate").AsFloat());
        account.setMinComm(q.FieldByName("Min_Comm").AsFloat());
        account.setAccountComm(q.FieldByName("Account_Comm").AsFloat());
        account.Suspended = q.FieldByName("Suspended").AsInteger() != 0;
        account.ShortCut = GetShortCut(id, CurrentUserID());

        auto info = std::make_unique<TCustomAccountInfo>();
        for (int i = 0; i < q.FieldCount(); ++i) {
            const TField& field = q.Fields(i);
            const QString value = field.AsString();
            if (value.isEmpty())
                continue;
            info->SetValue(field.FieldName(), value);
            info->SetValue(QStringLiteral("field%1").arg(i + 1, 2, 10, QChar(u'0')), value);
        }
        customAccountInfo().AddItem(id, std::move(info));
        ++read;
    }
    q.Close();
    return read;
}

void TDbAccountModel::setCurrentUserID(const QString& userId)
{
    TAccountModel::setCurrentUserID(userId);
    applyShortCuts();
}

int TDbAccountModel::LoadUserAccounts(const QString& userId)
{
    ensureShortCuts(CurrentUserID());
    const auto q
        = query(QStringLiteral("select * from Account_File where User_No = :UserNo order by Account"));
    q->ParamByName(u"UserNo").SetAsString(userId);
    return readAccounts(*q, false);
}

void TDbAccountModel::EnumAccounts(const QString& userId, const TAccountEnumHandler& handler, bool refresh)
{
    std::vector<TAccount*> matching;
    for (int i = 0; i < accounts().Count(); ++i) {
        TAccount* const account = accounts().GetByIndex(i).get();
        if (userId.isEmpty() || account->UserId == userId)
            matching.push_back(account);
    }
    for (std::size_t i = 0; i < matching.size(); ++i)
        handler(matching[i], refresh && i + 1 == matching.size());
}

TAccount* TDbAccountModel::LoadAccount(const QString& accountId)
{
    ensureShortCuts(CurrentUserID());
    const auto q = query(QStringLiteral("select * from Account_File where Account = :Account"));
    q->ParamByName(u"Account").SetAsString(accountId);
    return readAccounts(*q, false) > 0 ? heldAccount(accountId) : nullptr;
}

int TDbAccountModel::LoadShortCuts(const QString& userId)
{
    const auto q = query(QStringLiteral(
        "select ShortCut, Account from Account_ShortCut where User_No = :UserNo order by ShortCut"));
    q->ParamByName(u"UserNo").SetAsString(userId);
    q->Open();
    const QString prefix = userId + kKeySeparator;
    for (int i = shortCuts().Count() - 1; i >= 0; --i) {
        if (const QString key = shortCuts().KeyByIndex(i); key.startsWith(prefix))
            shortCuts().DeleteItem(key);
    }
    int read = 0;
    for (; !q->Eof(); q->Next()) {
        holdShortCut(userId, q->FieldByName("ShortCut").AsString(), q->FieldByName("Account").AsString());
        ++read;
    }
    q->Close();
    shortCutUsers_.insert(userId);
    if (userId == CurrentUserID())
        applyShortCuts();
    return read;
}

TAccount* TDbAccountModel::FindAccount(const QString& accountId)
{
    if (TAccount* const held = heldAccount(accountId))
        return held;
    if (accountId.isEmpty())
        return nullptr;
    try {
        return LoadAccount(accountId);
    } catch (const Error& error) {
        logLookupFailure("finding an account", error);
        return nullptr;
    }
}

bool TDbAccountModel::LookupShortCut(
    const QString& userId, const QString& text, QString& accountId, bool loadIfNeeded)
{
    accountId.clear();
    if (loadIfNeeded && !shortCutUsers_.contains(userId)) {
        try {
            LoadShortCuts(userId);
        } catch (const Error& error) {
            logLookupFailure("reading shortcuts", error);
        }
    }
    if (const TAccountShortCut* const held = heldShortCut(userId, text))
        accountId = held->AccountId;
    return !accountId.isEmpty();
}

QString TDbAccountModel::GetShortCut(const QString& accountId, const QString& userId)
{
    const QString prefix = userId + kKeySeparator;
    for (int i = 0; i < shortCuts().Count(); ++i) {
        const TAccountShortCut& held = *shortCuts().GetByIndex(i);
        if (held.AccountId == accountId && shortCuts().KeyByIndex(i).startsWith(prefix))
            return held.ShortCut;
    }
    return QString();
}

bool TDbAccountModel::CompleteAccountID(const QString& text, QString& accountId)
{
    if (const TAccount* const account = FindAccount(text)) {
        accountId = account->AcctId;
        return true;
    }
    accountId = text;
    if (text.isEmpty())
        return false;
    // Two candidates are enough to know the text is ambiguous.
    QStringList candidates;
    try {
        const auto q = query(QStringLiteral("select Account from Account_File where upper(Account) like "
                                            ":Prefix escape '\\' order by Account"));
        q->ParamByName(u"Prefix").SetAsString(likePrefix(text.toUpper()));
        q->Open();
        for (; !q->Eof() && candidates.size() < 2; q->Next())
            candidates << q->FieldByName("Account").AsString();
        q->Close();
    } catch (const Error& error) {
        logLookupFailure("completing an account ID", error);
        candidates.clear();
        for (int i = 0; i < accounts().Count() && candidates.size() < 2; ++i) {
            if (accounts().KeyByIndex(i).startsWith(text, Qt::CaseInsensitive))
                candidates << accounts().KeyByIndex(i);
        }
    }
    if (candidates.size() != 1)
        return false;
    accountId = candidates.first();
    return true;
}

bool TDbAccountModel::SetShortCut(const QString& accountId, const QString& userId, const QString& shortCut)
{
    if (shortCut.isEmpty())
        return false;
    ensureShortCuts(userId);
    if (const TAccountShortCut* const held = heldShortCut(userId, shortCut);
        held && held->AccountId != accountId)
        return false;
    // Another desk may have taken it since the user's shortcuts were read.
    {
        const auto q = query(QStringLiteral(
            "select Account from Account_ShortCut where User_No = :UserNo and upper(ShortCut) = :ShortCut"));
        q->ParamByName(u"UserNo").SetAsString(userId);
        q->ParamByName(u"ShortCut").SetAsString(shortCut.toUpper());
        q->Open();
        for (; !q->Eof(); q->Next()) {
            if (q->FieldByName("Account").AsString() != accountId)
                return false;
        }
    }

    TDatabase& database = TSession::Default().OpenDatabase(databaseName());
    const bool ownTransaction = !database.InTransaction();
    if (ownTransaction)
        database.StartTransaction();
    try {
        const auto remove = query(
            QStringLiteral("delete from Account_ShortCut where User_No = :UserNo and Account = :Account"));
        remove->ParamByName(u"UserNo").SetAsString(userId);
        remove->ParamByName(u"Account").SetAsString(accountId);
        remove->ExecSQL();
        const auto insert = query(QStringLiteral("insert into Account_ShortCut (User_No, ShortCut, Account) "
                                                 "values (:UserNo, :ShortCut, :Account)"));
        insert->ParamByName(u"UserNo").SetAsString(userId);
        insert->ParamByName(u"ShortCut").SetAsString(shortCut);
        insert->ParamByName(u"Account").SetAsString(accountId);
        insert->ExecSQL();
        if (ownTransaction)
            database.Commit();
    } catch (...) {
        if (ownTransaction && database.InTransaction())
            database.Rollback();
        throw;
    }

    dropShortCut(accountId, userId);
    holdShortCut(userId, shortCut, accountId);
    if (userId == CurrentUserID()) {
        if (TAccount* const account = heldAccount(accountId))
            account->ShortCut = shortCut;
    }
    return true;
}

void TDbAccountModel::RemoveShortCut(const QString& accountId, const QString& userId)
{
    const auto remove = query(
        QStringLiteral("delete from Account_ShortCut where User_No = :UserNo and Account = :Account"));
    remove->ParamByName(u"UserNo").SetAsString(userId);
    remove->ParamByName(u"Account").SetAsString(accountId);
    remove->ExecSQL();
    dropShortCut(accountId, userId);
    if (userId == CurrentUserID()) {
        if (TAccount* const account = heldAccount(accountId))
            account->ShortCut.clear();
    }
}

void TDbAccountModel::ReleaseAllAccount()
{
    TAccountModel::ReleaseAllAccount();
    shortCutUsers_.clear();
}

int TDbAccountModel::LoadAllAccounts()
{
    ensureShortCuts(CurrentUserID());
    const auto q = query(QStringLiteral("select * from Account_File order by Account"));
    return readAccounts(*q, false);
}

int TDbAccountModel::ReloadAccounts()
{
    if (accounts().Count() == 0)
        return 0;
    const auto q = query(QStringLiteral("select * from Account_File order by Account"));
    return readAccounts(*q, true);
}

void TDbAccountModel::LoadInvestorIDs(const QString& accountId)
{
    if (TAccount* const account = heldAccount(accountId))
        account->SetInvestorIDsLoaded();
}

void TDbAccountModel::ensureShortCuts(const QString& userId)
{
    if (!userId.isEmpty() && !shortCutUsers_.contains(userId))
        LoadShortCuts(userId);
}

void TDbAccountModel::applyShortCuts()
{
    QHash<QString, QString> mine; // account -> the current user's shortcut
    const QString prefix = CurrentUserID() + kKeySeparator;
    for (int i = 0; i < shortCuts().Count(); ++i) {
        if (shortCuts().KeyByIndex(i).startsWith(prefix)) {
            const TAccountShortCut& held = *shortCuts().GetByIndex(i);
            mine.insert(held.AccountId, held.ShortCut);
        }
    }
    for (int i = 0; i < accounts().Count(); ++i) {
        TAccount& account = *accounts().GetByIndex(i);
        account.ShortCut = mine.value(account.AcctId);
    }
}

void TDbAccountModel::holdShortCut(const QString& userId, const QString& shortCut, const QString& accountId)
{
    shortCuts().AddItem(
        shortCutKey(userId, shortCut), std::make_unique<TAccountShortCut>(accountId, shortCut));
}

void TDbAccountModel::dropShortCut(const QString& accountId, const QString& userId)
{
    const QString prefix = userId + kKeySeparator;
    for (int i = shortCuts().Count() - 1; i >= 0; --i) {
        const QString key = shortCuts().KeyByIndex(i);
        if (shortCuts().GetByIndex(i)->AccountId == accountId && key.startsWith(prefix))
            shortCuts().DeleteItem(key);
    }
}

const TAccountShortCut* TDbAccountModel::heldShortCut(const QString& userId, const QString& shortCut) const
{
    const std::unique_ptr<TAccountShortCut>* const held = shortCuts().GetItem(shortCutKey(userId, shortCut));
    return held ? held->get() : nullptr;
}

} // namespace qal
