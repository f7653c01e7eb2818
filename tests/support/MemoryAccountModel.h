// SPDX-License-Identifier: MIT
// A small account model held in memory, for the account box's and the
// explorer's odd cases (equal names, shortcut conflicts, an owner the dealer
// may not access) and for the explorer's benchmark. Accounts are held in the
// order they are added; shortcuts are per user, letter case ignored.
#pragma once

#include <QHash>
#include <QString>

#include "qalpack/profile/AccountModel.h"

namespace qal::test {

class MemoryAccountModel : public TAccountModel
{
public:
    // Holds an account (or updates the one held under that ID).
    TAccount& add(const QString& id, const QString& userId, const QString& name,
        const QString& firstName = QString(), const QString& clientId = QString())
    {
        TAccount& account = holdAccount(id);
        account.UserId = userId;
        account.AcctName = name;
        account.FirstName = firstName;
        if (!clientId.isEmpty()) {
            auto info = std::make_unique<TCustomAccountInfo>();
            info->SetValue(QStringLiteral("field07"), clientId);
            customAccountInfo().AddItem(id, std::move(info));
        }
        return account;
    }

    // Gives `userId` the shortcut without any check.
    void addShortCut(const QString& userId, const QString& shortCut, const QString& accountId)
    {
        shortCutsOf_[userId].insert(shortCut.toUpper(), accountId);
        applyShortCut(accountId, userId, shortCut);
    }

    int loads = 0; // LoadUserAccounts calls

    int LoadUserAccounts(const QString& userId) override
    {
        ++loads;
        int count = 0;
        for (int i = 0; i < accounts().Count(); ++i)
            count += accounts().GetByIndex(i)->UserId == userId ? 1 : 0;
        return count;
    }
    void EnumAccounts(const QString& userId, const TAccountEnumHandler& handler, bool refresh) override
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
    TAccount* LoadAccount(const QString& accountId) override { return heldAccount(accountId); }
    int LoadShortCuts(const QString& userId) override { return int(shortCutsOf_.value(userId).size()); }
    TAccount* FindAccount(const QString& accountId) override { return heldAccount(accountId); }
    bool LookupShortCut(const QString& userId, const QString& text, QString& accountId, bool) override
    {
        accountId = shortCutsOf_.value(userId).value(text.toUpper());
        return !accountId.isEmpty();
    }
    QString GetShortCut(const QString& accountId, const QString& userId) override
    {
        const auto& mine = shortCutsOf_[userId];
        for (auto it = mine.cbegin(); it != mine.cend(); ++it) {
            if (it.value() == accountId)
                return it.key();
        }
        return QString();
    }
    bool CompleteAccountID(const QString& text, QString& accountId) override
    {
        accountId = text;
        if (heldAccount(text) != nullptr)
            return true;
        QString only;
        for (int i = 0; i < accounts().Count(); ++i) {
            if (!text.isEmpty() && accounts().KeyByIndex(i).startsWith(text, Qt::CaseInsensitive)) {
                if (!only.isEmpty())
                    return false;
                only = accounts().KeyByIndex(i);
            }
        }
        if (only.isEmpty())
            return false;
        accountId = only;
        return true;
    }
    bool SetShortCut(const QString& accountId, const QString& userId, const QString& shortCut) override
    {
        auto& mine = shortCutsOf_[userId];
        const QString taken = mine.value(shortCut.toUpper());
        if (shortCut.isEmpty() || (!taken.isEmpty() && taken != accountId))
            return false;
        RemoveShortCut(accountId, userId);
        addShortCut(userId, shortCut, accountId);
        return true;
    }
    void RemoveShortCut(const QString& accountId, const QString& userId) override
    {
        auto& mine = shortCutsOf_[userId];
        for (auto it = mine.begin(); it != mine.end();) {
            it = it.value() == accountId ? mine.erase(it) : std::next(it);
        }
        applyShortCut(accountId, userId, QString());
    }
    int LoadAllAccounts() override { return accounts().Count(); }
    int ReloadAccounts() override { return accounts().Count(); }
    void LoadInvestorIDs(const QString& accountId) override
    {
        if (TAccount* const account = heldAccount(accountId))
            account->SetInvestorIDsLoaded();
    }

private:
    // An account's ShortCut is the current user's.
    void applyShortCut(const QString& accountId, const QString& userId, const QString& shortCut)
    {
        if (TAccount* const account = heldAccount(accountId); account && userId == CurrentUserID())
            account->ShortCut = shortCut;
    }

    QHash<QString, QHash<QString, QString>> shortCutsOf_; // user -> upper-cased shortcut -> account
};

} // namespace qal::test
