// SPDX-License-Identifier: MIT
#include "qalpack/profile/AccountModel.h"

#include <algorithm>
#include <utility>

#include "qalpack/profile/riskmanModel.h"

namespace qal {
namespace {

TAccountModel*& installedModel()
{
    static TAccountModel* model = nullptr;
    return model;
}

} // namespace

void TMultiplyBalance::Assign(const TMultiplyBalance& other)
{
    Key = other.Key;
    FirstAmount = other.FirstAmount;
    SecondAmount = other.SecondAmount;
}

double TCustomerMultiplyOpenAccountBal::getOpenAvalBal() const
{
    switch (TypeCode) {
    case 1:
        return FirstAmount;
    case 0:
    case 5:
        if (Basis == u"P")
            return SecondAmount;
        if (Basis == u"A")
            return std::min(FirstAmount, SecondAmount);
        return 0;
    default:
        return 0;
    }
}

TCustomerPSL::~TCustomerPSL() = default;
TCustomerInvesID::~TCustomerInvesID() = default;
TCustomerLimit::~TCustomerLimit() = default;

TAccountShortCut::TAccountShortCut(const QString& accountId, const QString& shortCut)
    : AccountId(accountId)
    , ShortCut(shortCut)
{ }

TAccount::TAccount()
    : multiplyBalances_(std::make_unique<MultiplyBalanceList>(true))
    , openBalances_(std::make_unique<OpenBalanceList>(true))
{ }

TAccount::~TAccount() = default;

QString TAccount::GetFieldValue(TAccountStringField field) const
{
    switch (field) {
    case afAcctId:
        return AcctId;
    case afUserId:
        return UserId;
    case afFirstName:
        return FirstName;
    case afLastName:
        return LastName;
    case afAcctName:
        return AcctName;
    case afChineseName:
        return ChineseName;
    case afDayPhone:
        return DayPhone;
    case afHomePhone:
        return HomePhone;
    case afMobile:
        return Mobile;
    case afFax:
        return Fax;
    case afEmail:
        return Email;
    case afShortCut:
        return ShortCut;
    default:
        return QString();
    }
}

double TAccount::GetBodLotLimit()
{
    if (!bodLotLimitKnown_)
        SetBodLotLimit(TAccountRiskManModel::GetLotLimit(AcctId));
    return bodLotLimit_;
}

void TAccount::SetBodLotLimit(double value)
{
    bodLotLimit_ = value;
    bodLotLimitKnown_ = true;
}

double TAccount::GetForthComeLimit()
{
    if (!forthComeLimitKnown_)
        SetForthComeLimit(TAccountRiskManModel::GetForthComeLimit(AcctId));
    return forthComeLimit_;
}

void TAccount::SetForthComeLimit(double value)
{
    forthComeLimit_ = value;
    forthComeLimitKnown_ = true;
}

QString TAccount::GetStatusString() const
{
    return Suspended ? resStrAccountSuspended() : QString();
}

QString TAccount::GetInvestorID(const QString& key, const QString& name)
{
    if (!investorIDsLoaded_) {
        if (TAccountModel* const model = TAccountModel::GetInstance())
            model->LoadInvestorIDs(AcctId);
    }
    const std::unique_ptr<TStringList>* const list = investorIDs_.GetItem(key);
    if (!list || !*list)
        return QString();
    return name == u"***" ? (*list)->CommaText() : (*list)->Values(name);
}

TCustomerPSL* TAccount::GetCustomerPSL()
{
    if (!customerPSLLoaded_) {
        if (TAccountModel* const model = TAccountModel::GetInstance())
            model->LoadCustomerPSL(AcctId);
    }
    return customerPSL_.get();
}

TCustomerInvesID* TAccount::GetCustomerInvesID()
{
    if (!customerInvesIDLoaded_) {
        if (TAccountModel* const model = TAccountModel::GetInstance())
            model->LoadCustomerInvesID(AcctId);
    }
    return customerInvesID_.get();
}

TCustomerLimit* TAccount::GetCustomerLimit()
{
    if (!customerLimitLoaded_) {
        if (TAccountModel* const model = TAccountModel::GetInstance())
            model->LoadCustomerLimit(AcctId);
    }
    return customerLimit_.get();
}

TAccount::MultiplyBalanceList* TAccount::GetMultiplyBalanceList()
{
    if (!multiplyBalancesLoaded_) {
        if (TAccountModel* const model = TAccountModel::GetInstance())
            model->LoadMultiplyBalanceList(AcctId);
    }
    return multiplyBalances_.get();
}

TAccount::OpenBalanceList* TAccount::GetCustomerOpenMultiplyBalanceList()
{
    if (!openBalancesLoaded_) {
        if (TAccountModel* const model = TAccountModel::GetInstance())
            model->LoadCustomerOpenMultiplyBalanceList(AcctId);
    }
    return openBalances_.get();
}

TCustomAccountInfo* TAccount::GetCustomAccountInfo() const
{
    const TAccountModel* const model = TAccountModel::GetInstance();
    return model ? model->GetCustomAccountInfo(AcctId) : nullptr;
}

void TAccount::assign(const TAccount& other)
{
    if (&other == this)
        return;
    AcctId = other.AcctId;
    UserId = other.UserId;
    FirstName = other.FirstName;
    LastName = other.LastName;
    AcctName = other.AcctName;
    ChineseName = other.ChineseName;
    DayPhone = other.DayPhone;
    HomePhone = other.HomePhone;
    Mobile = other.Mobile;
    Fax = other.Fax;
    Email = other.Email;
    ShortCut = other.ShortCut;
    commRate_ = other.commRate_;
    minComm_ = other.minComm_;
    accountComm_ = other.accountComm_;
    bodLotLimit_ = other.bodLotLimit_;
    bodLotLimitKnown_ = other.bodLotLimitKnown_;
    forthComeLimit_ = other.forthComeLimit_;
    forthComeLimitKnown_ = other.forthComeLimitKnown_;
    Suspended = other.Suspended;
    AccountType = other.AccountType;
    Currency = other.Currency;
    Branch = other.Branch;
    CreditLimit = other.CreditLimit;
    TradingLimit = other.TradingLimit;
}

void TAccount::SetCustomerPSL(std::unique_ptr<TCustomerPSL> item)
{
    customerPSL_ = std::move(item);
    customerPSLLoaded_ = true;
}

void TAccount::SetCustomerInvesID(std::unique_ptr<TCustomerInvesID> item)
{
    customerInvesID_ = std::move(item);
    customerInvesIDLoaded_ = true;
}

void TAccount::SetCustomerLimit(std::unique_ptr<TCustomerLimit> item)
{
    customerLimit_ = std::move(item);
    customerLimitLoaded_ = true;
}

void TAccount::SetMultiplyBalanceList(std::unique_ptr<MultiplyBalanceList> item)
{
    multiplyBalances_ = std::move(item);
    multiplyBalancesLoaded_ = true;
}

void TAccount::SetCustomerOpenMultiplyBalanceList(std::unique_ptr<OpenBalanceList> item)
{
    openBalances_ = std::move(item);
    openBalancesLoaded_ = true;
}

TAccountModel::TAccountModel(QObject* owner)
    : TChangeNotifier(owner)
{ }

TAccountModel::~TAccountModel()
{
    if (installedModel() == this)
        installedModel() = nullptr;
}

TAccountModel* TAccountModel::GetInstance() noexcept
{
    return installedModel();
}

void TAccountModel::SetInstance(TAccountModel* model) noexcept
{
    installedModel() = model;
}

void TAccountModel::SetOnInvestorInfo(TInvestorInfoEvent handler)
{
    onInvestorInfo_ = std::move(handler);
}

TCustomAccountInfo* TAccountModel::GetCustomAccountInfo(const QString& accountId) const
{
    const std::unique_ptr<TCustomAccountInfo>* const info = customInfo_.GetItem(accountId);
    return info ? info->get() : nullptr;
}

void TAccountModel::setCurrentUserID(const QString& userId)
{
    currentUserId_ = userId;
}

void TAccountModel::SetStaffAcct(bool staff)
{
    staffAcct_ = staff;
}

QString TAccountModel::GetInvestorInfo(const QString& accountId)
{
    return onInvestorInfo_ ? onInvestorInfo_(accountId) : QString();
}

std::unique_ptr<TStringList> TAccountModel::GetCurrentAccount() const
{
    auto ids = std::make_unique<TStringList>();
    for (int i = 0; i < accounts_.Count(); ++i)
        ids->Add(accounts_.KeyByIndex(i));
    return ids;
}

void TAccountModel::ReleaseAllAccount()
{
    accounts_.Clear();
    shortCuts_.Clear();
}

int TAccountModel::SubscribeAcctInfo(const QString& /*accountId*/)
{
    return 0;
}

void TAccountModel::UnsubscribeAcctInfo() { }

void TAccountModel::AccountUpdate(QObject* /*sender*/) { }

void TAccountModel::AccountChange(void* /*data*/, void* /*custom*/) { }

void TAccountModel::LoadCustomerOpenMultiplyBalanceList(const QString& accountId)
{
    if (TAccount* const account = heldAccount(accountId))
        account->SetCustomerOpenMultiplyBalanceList(nullptr);
}

void TAccountModel::LoadCustomerPSL(const QString& accountId)
{
    if (TAccount* const account = heldAccount(accountId))
        account->SetCustomerPSL(nullptr);
}

void TAccountModel::LoadCustomerInvesID(const QString& accountId)
{
    if (TAccount* const account = heldAccount(accountId))
        account->SetCustomerInvesID(nullptr);
}

void TAccountModel::LoadCustomerLimit(const QString& accountId)
{
    if (TAccount* const account = heldAccount(accountId))
        account->SetCustomerLimit(nullptr);
}

void TAccountModel::LoadMultiplyBalanceList(const QString& accountId)
{
    if (TAccount* const account = heldAccount(accountId))
        account->SetMultiplyBalanceList(nullptr);
}

TAccount* TAccountModel::heldAccount(const QString& accountId) const
{
    const std::unique_ptr<TAccount>* const account = accounts_.GetItem(accountId);
    return account ? account->get() : nullptr;
}

TAccount& TAccountModel::holdAccount(const QString& accountId)
{
    if (TAccount* const held = heldAccount(accountId))
        return *held;
    auto account = std::make_unique<TAccount>();
    account->AcctId = accountId;
    TAccount& added = *account;
    accounts_.AddItem(accountId, std::move(account));
    return added;
}

} // namespace qal
