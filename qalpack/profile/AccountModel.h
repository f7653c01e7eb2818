// SPDX-License-Identifier: MIT
// The trading accounts a dealer may act for: the account record (identity,
// names, contacts, shortcut, commissions, limits, customer data loaded on
// first use) and the abstract account model that a host derives and installs,
// through which the account entry control and the account explorer reach it.
#pragma once

#include <functional>
#include <memory>

#include <QObject>
#include <QString>

#include "qalpack/model/ChangeNotifier.h"
#include "qalpack/model/ResourceLabel.h"
#include "qalpack/omslib/ElHashList.h"
#include "qalpack/qalpack_export.h"
#include "qalpack/runtime/StringList.h"

namespace qal {

// Account status text, context "AccountModel".
inline constexpr Label resStrAccountSuspended { "AccountModel",
    QT_TRANSLATE_NOOP("AccountModel", "SUSPEND") };

// The account fields the account explorer can show and sort by, in this order.
enum TAccountStringField : int {
    afAcctId,
    afUserId,
    afFirstName,
    afLastName,
    afAcctName,
    afChineseName,
    afDayPhone,
    afHomePhone,
    afMobile,
    afFax,
    afEmail,
    afShortCut,
    afClientID,
};

class TAccountModel;

// A balance under a text key (a currency, say) with two amounts whose
// meaning the host's model decides.
class QALPACK_EXPORT TMultiplyBalance
{
public:
    QString Key;
    double FirstAmount = 0;
    double SecondAmount = 0;

    void Assign(const TMultiplyBalance& other);
};

// An open balance of a customer account: two amounts, a type code and a
// one-letter basis that together decide the balance available.
class QALPACK_EXPORT TCustomerMultiplyOpenAccountBal
{
public:
    double FirstAmount = 0;
    double SecondAmount = 0;
    int TypeCode = 0;
    QString Basis; // one letter: "P" or "A" for type codes 0 and 5

    // Type 1: the first amount. Types 0 and 5: basis "P" the second amount,
    // "A" the smaller of the two; any other basis 0. Any other type: 0.
    [[nodiscard]] double getOpenAvalBal() const;
};

// Customer records a host's model fills and the screens hand on; this
// library reads none of their fields. A host may derive its own.
class QALPACK_EXPORT TCustomerPSL
{
public:
    virtual ~TCustomerPSL();
    QString Currency;
    double RealizedPL = 0;
    double UnrealizedPL = 0;
};

class QALPACK_EXPORT TCustomerInvesID
{
public:
    virtual ~TCustomerInvesID();
    QString InvestorID;
    QString Market;
};

class QALPACK_EXPORT TCustomerLimit
{
public:
    virtual ~TCustomerLimit();
    QString Currency;
    double CreditLimit = 0;
    double TradingLimit = 0;
};

// Extra per-account information as "name=value" lines (the client ID among
// them); names compare without regard to letter case. SetValue (inherited)
// with an empty value removes the line.
class QALPACK_EXPORT TCustomAccountInfo : public TStringList
{
public:
    // The value of the line named `name`, or empty.
    [[nodiscard]] QString GetValue(const QString& name) const { return Values(name); }
};

// One shortcut of an account.
class QALPACK_EXPORT TAccountShortCut
{
public:
    TAccountShortCut(const QString& accountId, const QString& shortCut);

    QString AccountId;
    QString ShortCut;
};

// One trading account. Owned by the model's accounts list (or by whoever made
// it); not copyable, but assign copies its details into another account.
//
// Customer data (investor IDs, profit and loss, investor ID record, limit,
// multiply balances, open multiply balances) is loaded on first use: while an
// item is not loaded, its getter asks the installed model
// (TAccountModel::GetInstance) to load it for this account's ID, then returns
// the item as it stands. Without a model nothing is loaded and the next call
// asks again. The model loads into the account it holds under that ID, which
// need not be this object. The account owns the data it is given.
class QALPACK_EXPORT TAccount
{
public:
    // Investor IDs: key -> a list of "name=value" lines.
    using InvestorIDTable = TElHashList<std::unique_ptr<TStringList>>;
    using MultiplyBalanceList = TObjectStringList<TMultiplyBalance>;
    using OpenBalanceList = TObjectStringList<TCustomerMultiplyOpenAccountBal>;

    // Empty investor-ID table and balance lists; nothing loaded, limits unknown.
    TAccount();
    ~TAccount();
    TAccount(const TAccount&) = delete;
    TAccount& operator=(const TAccount&) = delete;

    // The text of `field`. afClientID and any value after it give the empty
    // text: the client ID is kept in the custom account information.
    [[nodiscard]] QString GetFieldValue(TAccountStringField field) const;

    [[nodiscard]] double getCommrate() const { return commRate_; }
    void setcommrate(double value) { commRate_ = value; }
    [[nodiscard]] double getMinComm() const { return minComm_; }
    void setMinComm(double value) { minComm_ = value; }
    [[nodiscard]] double getAccountComm() const { return accountComm_; }
    void setAccountComm(double value) { accountComm_ = value; }

    // The start-of-day lot limit. The first call on an account whose limit is
    // not known asks the risk model (TAccountRiskManModel::GetLotLimit, 0
    // without a risk store) and keeps the answer; later calls never ask again.
    [[nodiscard]] double GetBodLotLimit();
    // Stores the limit and makes it known.
    void SetBodLotLimit(double value);
    // The forthcoming limit, known and kept the same way
    // (TAccountRiskManModel::GetForthComeLimit).
    [[nodiscard]] double GetForthComeLimit();
    void SetForthComeLimit(double value);

    // "SUSPEND" for a suspended account, else empty.
    [[nodiscard]] QString GetStatusString() const;

    // After loading the investor IDs: with "***" as `name`, the key's whole
    // list as comma text; otherwise the value of the key's line named `name`.
    // Empty when the key is unknown.
    [[nodiscard]] QString GetInvestorID(const QString& key, const QString& name);
    // Each loads its item first (see the class comment); nullptr when the
    // model has none. The account keeps what it returns.
    [[nodiscard]] TCustomerPSL* GetCustomerPSL();
    [[nodiscard]] TCustomerInvesID* GetCustomerInvesID();
    [[nodiscard]] TCustomerLimit* GetCustomerLimit();
    [[nodiscard]] MultiplyBalanceList* GetMultiplyBalanceList();
    [[nodiscard]] OpenBalanceList* GetCustomerOpenMultiplyBalanceList();
    // The installed model's custom information for this account's ID; nullptr
    // without a model or when it has none.
    [[nodiscard]] TCustomAccountInfo* GetCustomAccountInfo() const;

    // Copies the identity, names and contacts, shortcut, commissions, both
    // limits with their known flags, the suspended flag and the further
    // details below. Customer data and its loaded flags are not copied.
    void assign(const TAccount& other);

    // For models filling customer data. Each setter replaces (and frees) the
    // item and marks it loaded; nullptr marks it loaded with nothing.
    [[nodiscard]] InvestorIDTable& InvestorIDs() { return investorIDs_; }
    void SetInvestorIDsLoaded() { investorIDsLoaded_ = true; }
    void SetCustomerPSL(std::unique_ptr<TCustomerPSL> item);
    void SetCustomerInvesID(std::unique_ptr<TCustomerInvesID> item);
    void SetCustomerLimit(std::unique_ptr<TCustomerLimit> item);
    void SetMultiplyBalanceList(std::unique_ptr<MultiplyBalanceList> item);
    void SetCustomerOpenMultiplyBalanceList(std::unique_ptr<OpenBalanceList> item);

    QString AcctId;
    QString UserId; // the dealer or client who owns the account
    QString FirstName;
    QString LastName;
    QString AcctName;
    QString ChineseName;
    QString DayPhone;
    QString HomePhone;
    QString Mobile;
    QString Fax;
    QString Email;
    QString ShortCut;
    bool Suspended = false;
    // Further details a host's screens may show; nothing here reads them.
    QString AccountType;
    QString Currency;
    QString Branch;
    double CreditLimit = 0;
    double TradingLimit = 0;

private:
    double commRate_ = 0;
    double minComm_ = 0;
    double accountComm_ = 0;
    double bodLotLimit_ = 0;
    double forthComeLimit_ = 0;
    bool bodLotLimitKnown_ = false;
    bool forthComeLimitKnown_ = false;

    InvestorIDTable investorIDs_;
    std::unique_ptr<TCustomerPSL> customerPSL_;
    std::unique_ptr<TCustomerInvesID> customerInvesID_;
    std::unique_ptr<TCustomerLimit> customerLimit_;
    std::unique_ptr<MultiplyBalanceList> multiplyBalances_;
    std::unique_ptr<OpenBalanceList> openBalances_;
    bool investorIDsLoaded_ = false;
    bool customerPSLLoaded_ = false;
    bool customerInvesIDLoaded_ = false;
    bool customerLimitLoaded_ = false;
    bool multiplyBalancesLoaded_ = false;
    bool openBalancesLoaded_ = false;
};

// The accounts a dealer may act for, as a host's model sees them. The host
// derives a concrete model (TDbAccountModel reads the order database),
// installs it with SetInstance and sets the current user.
//
// The model owns the accounts it holds (keyed by account ID, in the order
// they were added), the shortcut objects its loaders make and the custom
// account information. A pointer to a held account stays valid until
// ReleaseAllAccount or the model's destruction; loading an account again
// updates the held object in place.
class QALPACK_EXPORT TAccountModel : public TChangeNotifier
{
    Q_OBJECT

public:
    using AccountList = TElHashList<std::unique_ptr<TAccount>>;
    using ShortCutList = TElHashList<std::unique_ptr<TAccountShortCut>>;
    using CustomInfoList = TElHashList<std::unique_ptr<TCustomAccountInfo>>;
    // Called by EnumAccounts once per account; `refresh` is true on the last
    // call of an enumeration that asked for it (sort and redraw then).
    using TAccountEnumHandler = std::function<void(TAccount* account, bool refresh)>;
    // Gives the investor information text of an account ID.
    using TInvestorInfoEvent = std::function<QString(const QString& accountId)>;

    explicit TAccountModel(QObject* owner = nullptr);
    // Frees every account, shortcut and custom information held. A model that
    // is still installed is uninstalled first.
    ~TAccountModel() override;

    // The installed model, nullptr until the host sets one. Never creates one.
    [[nodiscard]] static TAccountModel* GetInstance() noexcept;
    // Installs `model` (nullptr: none). The host keeps ownership.
    static void SetInstance(TAccountModel* model) noexcept;

    [[nodiscard]] const QString& CurrentUserID() const { return currentUserId_; }
    [[nodiscard]] bool StaffAcct() const { return staffAcct_; }
    void SetOnInvestorInfo(TInvestorInfoEvent handler);

    // The custom information held for `accountId`, or nullptr.
    [[nodiscard]] TCustomAccountInfo* GetCustomAccountInfo(const QString& accountId) const;

    // The model's operations, in this order. "Abstract" ones are the
    // concrete model's; the others have working defaults.

    virtual void setCurrentUserID(const QString& userId);
    virtual void SetStaffAcct(bool staff);
    // Abstract: reads the accounts `userId` owns from the model's source and
    // holds them (already held ones are updated in place). Returns how many
    // the source has for the user.
    virtual int LoadUserAccounts(const QString& userId) = 0;
    // Abstract: calls `handler` for every held account that `userId` owns
    // (every held account when `userId` is empty), in held order, passing
    // `refresh` on the last call and false before it. No call when there is
    // no such account.
    virtual void EnumAccounts(const QString& userId, const TAccountEnumHandler& handler, bool refresh) = 0;
    // Abstract: reads one account from the source and holds it (updating a
    // held one in place); nullptr when the source has no such account.
    virtual TAccount* LoadAccount(const QString& accountId) = 0;
    // Abstract: reads the shortcuts of `userId` from the source, replacing
    // those held for the user; returns how many there are.
    virtual int LoadShortCuts(const QString& userId) = 0;
    // Abstract: the account with this exact ID, or nullptr. Used to validate
    // a typed account.
    [[nodiscard]] virtual TAccount* FindAccount(const QString& accountId) = 0;
    // The investor-information handler's text for the account, or empty when
    // no handler is set.
    [[nodiscard]] virtual QString GetInvestorInfo(const QString& accountId);
    // Abstract: the account that `userId`'s shortcut `text` stands for, in
    // `accountId` (empty when none; then false). With `loadIfNeeded`, the
    // user's shortcuts are read from the source first if they are not held.
    virtual bool LookupShortCut(
        const QString& userId, const QString& text, QString& accountId, bool loadIfNeeded)
        = 0;
    // Abstract: `userId`'s shortcut for the account, or empty.
    [[nodiscard]] virtual QString GetShortCut(const QString& accountId, const QString& userId) = 0;
    // Abstract: completes a typed account ID. True with the account's ID in
    // `accountId` when the text names one account (exactly, or as the only
    // ID that begins with it); false with `accountId` set to `text` otherwise.
    virtual bool CompleteAccountID(const QString& text, QString& accountId) = 0;
    // Abstract: makes `shortCut` the shortcut of `userId` for the account,
    // replacing the user's old one for it. False, changing nothing, when the
    // user has that shortcut on another account already (or it is empty).
    virtual bool SetShortCut(const QString& accountId, const QString& userId, const QString& shortCut) = 0;
    // The ID of every held account, in held order.
    [[nodiscard]] virtual std::unique_ptr<TStringList> GetCurrentAccount() const;
    // Abstract: removes `userId`'s shortcut for the account; nothing when
    // there is none.
    virtual void RemoveShortCut(const QString& accountId, const QString& userId) = 0;
    // Frees every held account and every shortcut object; pointers to them
    // die. The custom information stays.
    virtual void ReleaseAllAccount();
    // Live account information: nothing here; SubscribeAcctInfo returns 0.
    virtual int SubscribeAcctInfo(const QString& accountId);
    virtual void UnsubscribeAcctInfo();
    virtual void AccountUpdate(QObject* sender);
    // A change-notifier callback; nothing here.
    virtual void AccountChange(void* data, void* custom);
    // Abstract: reads every account the source has (a desk that sees all
    // users); returns how many.
    virtual int LoadAllAccounts() = 0;
    // Abstract: reads every held account from the source again, in place;
    // accounts the source no longer has stay as they were. Returns how many
    // were read.
    virtual int ReloadAccounts() = 0;
    // Abstract: fills the held account's investor-ID table and marks it
    // loaded (TAccount::InvestorIDs, SetInvestorIDsLoaded).
    virtual void LoadInvestorIDs(const QString& accountId) = 0;
    // The customer-data loaders. Here: the held account with that ID, if any,
    // is marked loaded with no item (an unknown ID does nothing). Concrete
    // models override them to fill the item.
    virtual void LoadCustomerOpenMultiplyBalanceList(const QString& accountId);
    virtual void LoadCustomerPSL(const QString& accountId);
    virtual void LoadCustomerInvesID(const QString& accountId);
    virtual void LoadCustomerLimit(const QString& accountId);
    virtual void LoadMultiplyBalanceList(const QString& accountId);

protected:
    // The held account with that ID, or nullptr.
    [[nodiscard]] TAccount* heldAccount(const QString& accountId) const;
    // The held account with that ID, made empty (but for its ID) and held
    // when there is none, for a loader to fill in place: its known limits
    // and loaded customer data survive a reload.
    TAccount& holdAccount(const QString& accountId);

    [[nodiscard]] AccountList& accounts() { return accounts_; }
    [[nodiscard]] const AccountList& accounts() const { return accounts_; }
    [[nodiscard]] ShortCutList& shortCuts() { return shortCuts_; }
    [[nodiscard]] const ShortCutList& shortCuts() const { return shortCuts_; }
    [[nodiscard]] CustomInfoList& customAccountInfo() { return customInfo_; }

private:
    AccountList accounts_;
    ShortCutList shortCuts_;
    CustomInfoList customInfo_;
    QString currentUserId_;
    bool staffAcct_ = false;
    TInvestorInfoEvent onInvestorInfo_;
};

} // namespace qal
