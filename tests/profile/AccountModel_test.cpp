// SPDX-License-Identifier: MIT
// The account record and the abstract account model: field texts, limits
// asked of the risk model once, customer data loaded on first use (and asked
// again while no model is installed), investor IDs, open balances, and what
// the model holds and releases.
#include "qalpack/profile/AccountModel.h"

#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "qalpack/profile/riskmanModel.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

// The least a concrete model supplies, counting the loaders' calls.
class StubModel : public TAccountModel
{
public:
    using TAccountModel::customAccountInfo;
    using TAccountModel::holdAccount;

    int LoadUserAccounts(const QString&) override { return 0; }
    void EnumAccounts(const QString&, const TAccountEnumHandler&, bool) override { }
    TAccount* LoadAccount(const QString&) override { return nullptr; }
    int LoadShortCuts(const QString&) override { return 0; }
    TAccount* FindAccount(const QString& accountId) override { return heldAccount(accountId); }
    bool LookupShortCut(const QString&, const QString&, QString& accountId, bool) override
    {
        accountId.clear();
        return false;
    }
    QString GetShortCut(const QString&, const QString&) override { return QString(); }
    bool CompleteAccountID(const QString& text, QString& accountId) override
    {
        accountId = text;
        return false;
    }
    bool SetShortCut(const QString&, const QString&, const QString&) override { return false; }
    void RemoveShortCut(const QString&, const QString&) override { }
    int LoadAllAccounts() override { return 0; }
    int ReloadAccounts() override { return 0; }

    void LoadInvestorIDs(const QString& accountId) override
    {
        ++loads["InvestorIDs"];
        TAccount* const account = heldAccount(accountId);
        if (!account)
            return;
        auto sehk = std::make_unique<TStringList>();
        sehk->Add("InvestorID=77");
        sehk->Add("Broker Code=1234");
        account->InvestorIDs().AddItem("SEHK", std::move(sehk));
        account->SetInvestorIDsLoaded();
    }
    void LoadCustomerOpenMultiplyBalanceList(const QString& id) override
    {
        ++loads["OpenBalances"];
        TAccountModel::LoadCustomerOpenMultiplyBalanceList(id);
    }
    void LoadCustomerPSL(const QString& id) override
    {
        ++loads["PSL"];
        TAccountModel::LoadCustomerPSL(id);
    }
    void LoadCustomerInvesID(const QString& id) override
    {
        ++loads["InvesID"];
        TAccountModel::LoadCustomerInvesID(id);
    }
    void LoadCustomerLimit(const QString& id) override
    {
        ++loads["Limit"];
        TAccountModel::LoadCustomerLimit(id);
    }
    void LoadMultiplyBalanceList(const QString& id) override
    {
        ++loads["Balances"];
        TAccountModel::LoadMultiplyBalanceList(id);
    }

    std::map<std::string, int> loads;
};

class AccountModelTest : public testing::Test
{
protected:
    void TearDown() override
    {
        TAccountModel::SetInstance(nullptr);
        TRiskManModel::SetInstance(nullptr);
    }
};

TEST(Account, FieldValuesFollowTheExplorersFieldList)
{
    // In the order of TAccountStringField, afAcctId to afShortCut.
    QString TAccount::*const members[] = { &TAccount::AcctId, &TAccount::UserId, &TAccount::FirstName,
        &TAccount::LastName, &TAccount::AcctName, &TAccount::ChineseName, &TAccount::DayPhone,
        &TAccount::HomePhone, &TAccount::Mobile, &TAccount::Fax, &TAccount::Email, &TAccount::ShortCut };
    TAccount account;
    for (int i = 0; i < int(std::size(members)); ++i)
        account.*members[i] = QString("text %1").arg(i);
    for (int field = afAcctId; field <= afShortCut; ++field)
        EXPECT_EQ(account.GetFieldValue(TAccountStringField(field)), QString("text %1").arg(field));
    EXPECT_EQ(account.GetFieldValue(afClientID), "");
    EXPECT_EQ(account.GetFieldValue(TAccountStringField(afClientID + 1)), "");
}

TEST_F(AccountModelTest, ClientIDFieldIsEmptyEvenWithAClientIDInTheCustomInformation)
{
    StubModel model;
    TAccountModel::SetInstance(&model);
    TAccount& account = model.holdAccount("C001");
    auto info = std::make_unique<TCustomAccountInfo>();
    info->SetValue("ClientID", "HK-778");
    model.customAccountInfo().AddItem("C001", std::move(info));

    ASSERT_NE(account.GetCustomAccountInfo(), nullptr);
    EXPECT_EQ(account.GetCustomAccountInfo()->GetValue("clientid"), "HK-778");
    EXPECT_EQ(account.GetFieldValue(afClientID), "");
    EXPECT_EQ(model.GetCustomAccountInfo("C002"), nullptr);

    TAccountModel::SetInstance(nullptr);
    EXPECT_EQ(account.GetCustomAccountInfo(), nullptr) << "no model installed";
    {
        StubModel other;
        TAccountModel::SetInstance(&other);
    }
    EXPECT_EQ(TAccountModel::GetInstance(), nullptr) << "a destroyed model is uninstalled";
}

TEST_F(AccountModelTest, LimitsAreAskedOfTheRiskModelOnceAndKept)
{
    TAccount early; // asks before the risk store is there: 0, and known from then on
    early.AcctId = "C001";
    EXPECT_EQ(early.GetBodLotLimit(), 0);

    TRiskManModel::SetInstance(std::make_unique<TRiskManModel>());
    TRiskManModel& risk = *TRiskManModel::GetInstance();
    auto load = [&risk](const char* field, const char* value) {
        TRiskManRecord& record = risk.GetRiskmanRecord("MARGIN", TRiskManModel::LevelAccount, "C001", field);
        record.State = TRiskManRecord::StateLoaded;
        record.Value = value;
    };
    load("LOTLIMIT", "5000");
    load("FORTHCOMELIMIT", "250000.5");
    EXPECT_EQ(early.GetBodLotLimit(), 0);
    EXPECT_EQ(early.GetForthComeLimit(), 250000.5) << "each limit is asked on its own";

    TAccount account;
    account.AcctId = "C001";
    EXPECT_EQ(account.GetBodLotLimit(), 5000);
    load("LOTLIMIT", "9000");
    EXPECT_EQ(account.GetBodLotLimit(), 5000) << "a known limit is never asked again";

    TAccount preset;
    preset.AcctId = "C002";
    preset.SetBodLotLimit(700);
    const int asked = risk.Count();
    EXPECT_EQ(preset.GetBodLotLimit(), 700);
    EXPECT_EQ(risk.Count(), asked) << "a limit the model set is not asked of the risk model";
}

TEST_F(AccountModelTest, AssignCopiesDetailsAndLimitsButNotCustomerData)
{
    StubModel model;
    TAccountModel::SetInstance(&model);
    TAccount& source = model.holdAccount("C001");
    source.AcctName = "CHAN TAI MAN";
    source.ShortCut = "CTM";
    source.Suspended = true;
    source.Currency = "HKD";
    source.CreditLimit = 1e6;
    source.setcommrate(0.0025);
    source.setAccountComm(0.5);
    source.SetBodLotLimit(5000);
    (void)source.GetCustomerPSL(); // loaded (with nothing) on the source only

    TAccount& target = model.holdAccount("C002");
    target.assign(source);
    EXPECT_EQ(target.AcctId, "C001");
    EXPECT_EQ(target.AcctName, "CHAN TAI MAN");
    EXPECT_EQ(target.ShortCut, "CTM");
    EXPECT_EQ(target.GetStatusString(), "SUSPEND");
    EXPECT_EQ(target.Currency, "HKD");
    EXPECT_EQ(target.CreditLimit, 1e6);
    EXPECT_EQ(target.getCommrate(), 0.0025);
    EXPECT_EQ(target.getAccountComm(), 0.5);
    EXPECT_EQ(target.GetBodLotLimit(), 5000);
    EXPECT_EQ(TRiskManModel::GetInstance(), nullptr);
    EXPECT_NE(target.GetMultiplyBalanceList(), nullptr) << "the target's own, unloaded list";
    (void)target.GetCustomerPSL();
    EXPECT_EQ(model.loads["PSL"], 2) << "the target's PSL was not marked loaded by assign";
}

// Each customer-data getter of TAccount with the model loader it calls.
struct CustomerItem
{
    const char* name;
    std::function<bool(TAccount&)> isNull;
};

const CustomerItem kCustomerItems[] = {
    { "PSL", [](TAccount& a) { return a.GetCustomerPSL() == nullptr; } },
    { "InvesID", [](TAccount& a) { return a.GetCustomerInvesID() == nullptr; } },
    { "Limit", [](TAccount& a) { return a.GetCustomerLimit() == nullptr; } },
    { "Balances", [](TAccount& a) { return a.GetMultiplyBalanceList() == nullptr; } },
    { "OpenBalances", [](TAccount& a) { return a.GetCustomerOpenMultiplyBalanceList() == nullptr; } },
};

TEST_F(AccountModelTest, CustomerDataIsLoadedOnceThroughTheInstalledModel)
{
    StubModel model;
    TAccountModel::SetInstance(&model);
    for (const CustomerItem& item : kCustomerItems) {
        SCOPED_TRACE(item.name);
        TAccount& held = model.holdAccount(QString("C-") + item.name);
        EXPECT_TRUE(item.isNull(held)) << "the base loader loads nothing";
        EXPECT_TRUE(item.isNull(held));
        EXPECT_EQ(model.loads[item.name], 1) << "loaded: never asked again";
    }
}

TEST_F(AccountModelTest, CustomerDataIsAskedAgainWhileItIsNotLoaded)
{
    StubModel model;
    for (const CustomerItem& item : kCustomerItems) {
        SCOPED_TRACE(item.name);
        TAccount& held = model.holdAccount("C001");
        TAccount stray; // an account the model does not hold
        stray.AcctId = "C001";

        TAccountModel::SetInstance(nullptr);
        (void)item.isNull(held);
        (void)item.isNull(held);
        EXPECT_EQ(model.loads[item.name], 0) << "no model installed";

        TAccountModel::SetInstance(&model);
        (void)item.isNull(stray);
        (void)item.isNull(stray);
        EXPECT_EQ(model.loads[item.name], 2)
            << "the model loads its own account, so the stray one asks again";
        (void)item.isNull(held);
        EXPECT_EQ(model.loads[item.name], 2) << "the stray account's asking loaded the held one";
    }
}

TEST_F(AccountModelTest, InvestorIDsAreLoadedOnceAndReadByKeyAndName)
{
    StubModel model;
    TAccountModel::SetInstance(&model);
    TAccount& account = model.holdAccount("C001");
    const struct
    {
        const char* name;
        QString key;
        QString field;
        QString value;
    } rows[] = {
        { "WholeListAsCommaText", "SEHK", "***", "InvestorID=77,\"Broker Code=1234\"" },
        { "OneValueByName", "SEHK", "InvestorID", "77" },
        { "NameIgnoresLetterCase", "SEHK", "broker code", "1234" },
        { "UnknownName", "SEHK", "Branch", "" },
        { "UnknownKey", "HKFE", "***", "" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        EXPECT_EQ(account.GetInvestorID(row.key, row.field), row.value);
    }
    EXPECT_EQ(model.loads["InvestorIDs"], 1);

    TAccountModel::SetInstance(nullptr);
    TAccount unloaded;
    EXPECT_EQ(unloaded.GetInvestorID("SEHK", "***"), "");
}

TEST(Account, OpenAvailableBalanceByTypeAndBasis)
{
    const struct
    {
        const char* name;
        int type;
        const char* basis;
        double first;
        double second;
        double available;
    } rows[] = {
        { "Type0BasisAIsTheSmaller", 0, "A", 100, 80, 80 },
        { "Type0BasisAFirstWhenNotGreater", 0, "A", 80, 100, 80 },
        { "Type0BasisPIsTheSecond", 0, "P", 100, 80, 80 },
        { "Type5BasisPIsTheSecond", 5, "P", 100, 60, 60 },
        { "OtherBasisIsZero", 0, "X", 100, 80, 0 },
        { "LowerCaseBasisIsOther", 5, "a", 100, 80, 0 },
        { "Type1IsTheFirst", 1, "X", 100, 80, 100 },
        { "OtherTypeIsZero", 2, "A", 100, 80, 0 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TCustomerMultiplyOpenAccountBal balance;
        balance.TypeCode = row.type;
        balance.Basis = row.basis;
        balance.FirstAmount = row.first;
        balance.SecondAmount = row.second;
        EXPECT_EQ(balance.getOpenAvalBal(), row.available);
    }
}

TEST_F(AccountModelTest, HeldAccountsAreListedAndReleased)
{
    StubModel model;
    model.holdAccount("C002").AcctName = "SECOND";
    model.holdAccount("C001");
    EXPECT_EQ(&model.holdAccount("C002"), model.FindAccount("C002")) << "held once";
    model.customAccountInfo().AddItem("C001", std::make_unique<TCustomAccountInfo>());

    EXPECT_EQ(model.GetCurrentAccount()->toQStringList(), QStringList({ "C002", "C001" }));
    model.ReleaseAllAccount();
    EXPECT_EQ(model.GetCurrentAccount()->Count(), 0);
    EXPECT_NE(model.GetCustomAccountInfo("C001"), nullptr) << "custom information is not released";
}

} // namespace
} // namespace qal
