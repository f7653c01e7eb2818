// SPDX-License-Identifier: MIT
// The embedded account model on SQLite and PostgreSQL: accounts and their
// details read from Account_File, enumeration, look-up and completion of
// typed IDs, dealers' shortcuts read and written in Account_ShortCut, reloads
// in place, and look-ups that keep working when the database is down.
#include "qalpack/profile/DbAccountModel.h"

#include <memory>
#include <utility>
#include <vector>

#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Query.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/profile/QalApplicationProfile.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"

namespace qal {
namespace {

class DbAccountModelTest : public test::DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        db_ = database();
        CreateOrderSchema(*db_);
        db_->Execute(
            "insert into Account_File (Account, User_No, First_Name, Last_Name, Acct_Name, Chinese_Name, "
            "Day_Phone, Home_Phone, Mobile, Fax, Email, Client_ID, CommRate, Min_Comm, Account_Comm, "
            "Suspended) "
            "values "
            "('C001', 'D001', 'Tai Man', 'Chan', 'CHAN TAI MAN', '陳大文', '2111 1111', '2222 2222', "
            "'9333 3333', '2444 4444', 'tm@example.hk', 'HK-778', 0.0025, 100, 0.5, 0), "
            "('C002', 'D001', 'Siu Ming', 'Wong', 'WONG SIU MING', NULL, NULL, NULL, NULL, NULL, NULL, NULL, "
            "0, 0, 0, 1), "
            "('C010', 'D002', NULL, NULL, 'LEE KA YAN', NULL, NULL, NULL, NULL, NULL, NULL, NULL, 0, 0, 0, "
            "0), "
            "('D100', 'D002', NULL, NULL, 'HOUSE', NULL, NULL, NULL, NULL, NULL, NULL, NULL, 0, 0, 0, 0)");
        db_->Execute("insert into Account_ShortCut (User_No, ShortCut, Account) values "
                     "('D001', 'AB', 'C001'), ('D001', 'XY', 'C010'), ('D002', 'AB', 'D100')");
    }

    [[nodiscard]] QString shortCutOfDatabase(const QString& user, const QString& account) const
    {
        TQuery q(*db_);
        q.SQL().Add("select ShortCut from Account_ShortCut where User_No = :U and Account = :A");
        q.ParamByName(u"U").SetAsString(user);
        q.ParamByName(u"A").SetAsString(account);
        q.Open();
        return q.Eof() ? QString() : q.FieldByName("ShortCut").AsString();
    }

    std::unique_ptr<TDatabase> db_;
};

TEST_P(DbAccountModelTest, LoadsAUsersAccountsWithTheirDetails)
{
    TDbAccountModel model(db_->DatabaseName());
    TAccountModel::SetInstance(&model);
    model.setCurrentUserID("D001");
    EXPECT_EQ(model.LoadUserAccounts("D001"), 2);
    EXPECT_EQ(model.GetCurrentAccount()->toQStringList(), QStringList({ "C001", "C002" }));

    TAccount* const c001 = model.FindAccount("C001");
    ASSERT_NE(c001, nullptr);
    EXPECT_EQ(c001->GetFieldValue(afUserId), "D001");
    EXPECT_EQ(c001->GetFieldValue(afAcctName), "CHAN TAI MAN");
    EXPECT_EQ(c001->GetFieldValue(afChineseName), "陳大文");
    EXPECT_EQ(c001->GetFieldValue(afShortCut), "AB") << "the current user's shortcut";
    EXPECT_EQ(c001->getCommrate(), 0.0025);
    EXPECT_EQ(c001->getMinComm(), 100);
    EXPECT_EQ(c001->getAccountComm(), 0.5);
    EXPECT_EQ(c001->GetStatusString(), "");
    EXPECT_EQ(model.FindAccount("C002")->GetStatusString(), "SUSPEND");
    EXPECT_EQ(model.FindAccount("C002")->GetFieldValue(afChineseName), "") << "null column";

    ASSERT_NE(c001->GetCustomAccountInfo(), nullptr);
    EXPECT_EQ(c001->GetCustomAccountInfo()->GetValue("client_id"), "HK-778");
    EXPECT_EQ(c001->GetCustomAccountInfo()->GetValue("field12"), "HK-778") << "by column position";
    EXPECT_EQ(c001->GetFieldValue(afClientID), "");
    EXPECT_EQ(c001->GetInvestorID("SEHK", "***"), "") << "the embedded database has no investor IDs";
    EXPECT_EQ(c001->GetCustomerPSL(), nullptr);

    model.setCurrentUserID("D002");
    EXPECT_EQ(c001->ShortCut, "") << "D002's shortcuts are not held yet";
    TAccountModel::SetInstance(nullptr);
}

TEST_P(DbAccountModelTest, EnumeratesHeldAccountsAndRefreshesOnTheLast)
{
    TDbAccountModel model(db_->DatabaseName());
    EXPECT_EQ(model.LoadAllAccounts(), 4);
    const struct
    {
        const char* name;
        QString user;
        bool refresh;
        std::vector<std::pair<QString, bool>> calls;
    } rows[] = {
        { "OneUsersAccountsRefreshOnLast", "D001", true, { { "C001", false }, { "C002", true } } },
        { "NoRefreshAsked", "D002", false, { { "C010", false }, { "D100", false } } },
        { "EveryUserWhenEmpty", "", true,
            { { "C001", false }, { "C002", false }, { "C010", false }, { "D100", true } } },
        { "UnknownUserNoCall", "D009", true, {} },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        std::vector<std::pair<QString, bool>> calls;
        model.EnumAccounts(
            row.user, [&calls](TAccount* a, bool refresh) { calls.emplace_back(a->AcctId, refresh); },
            row.refresh);
        EXPECT_EQ(calls, row.calls);
    }
}

TEST_P(DbAccountModelTest, FindsAndCompletesTypedAccountIDs)
{
    TDbAccountModel model(db_->DatabaseName());
    EXPECT_EQ(model.FindAccount("NOPE"), nullptr);
    TAccount* const found = model.FindAccount("D100");
    ASSERT_NE(found, nullptr) << "read from the database when not held";
    EXPECT_EQ(found->AcctName, "HOUSE");
    EXPECT_EQ(model.FindAccount("D100"), found);

    const struct
    {
        const char* name;
        QString text;
        bool found;
        QString id;
    } rows[] = {
        { "ExactID", "C002", true, "C002" },
        { "OnlyIDWithThatStart", "C01", true, "C010" },
        { "StartIgnoresLetterCase", "d1", true, "D100" },
        { "AmbiguousStartKeepsText", "C00", false, "C00" },
        { "NoMatchKeepsText", "Z", false, "Z" },
        { "WildcardsAreLiteral", "_10", false, "_10" },
        { "Empty", "", false, "" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        QString id = "stale";
        EXPECT_EQ(model.CompleteAccountID(row.text, id), row.found);
        EXPECT_EQ(id, row.id);
    }
}

TEST_P(DbAccountModelTest, ShortCutsAreLookedUpSetAndRemovedInTheDatabase)
{
    TDbAccountModel model(db_->DatabaseName());
    model.setCurrentUserID("D001");
    model.LoadUserAccounts("D001");
    const struct
    {
        const char* name;
        QString user;
        QString text;
        QString account;
    } lookups[] = {
        { "LetterCaseIgnored", "D001", "ab", "C001" },
        { "EachUserHasHisOwn", "D002", "AB", "D100" },
        { "Unknown", "D001", "ZZ", "" },
    };
    for (const auto& row : lookups) {
        SCOPED_TRACE(row.name);
        QString id = "stale";
        EXPECT_EQ(model.LookupShortCut(row.user, row.text, id, true), !row.account.isEmpty());
        EXPECT_EQ(id, row.account);
    }

    EXPECT_FALSE(model.SetShortCut("C002", "D001", "xy")) << "XY is the user's shortcut of C010";
    EXPECT_FALSE(model.SetShortCut("C002", "D001", ""));
    EXPECT_TRUE(model.SetShortCut("C002", "D001", "NEW"));
    EXPECT_TRUE(model.SetShortCut("C002", "D001", "NEW2")) << "replaces the user's shortcut of the account";
    EXPECT_EQ(model.FindAccount("C002")->ShortCut, "NEW2");
    EXPECT_EQ(model.GetShortCut("C002", "D001"), "NEW2");
    EXPECT_EQ(shortCutOfDatabase("D001", "C002"), "NEW2");
    QString id;
    EXPECT_FALSE(model.LookupShortCut("D001", "NEW", id, false));

    model.RemoveShortCut("C001", "D001");
    EXPECT_EQ(model.FindAccount("C001")->ShortCut, "");
    EXPECT_EQ(shortCutOfDatabase("D001", "C001"), "");
    EXPECT_EQ(shortCutOfDatabase("D002", "D100"), "AB") << "another user's shortcut stays";

    // Another desk takes a shortcut after this model read the user's.
    db_->Execute("insert into Account_ShortCut (User_No, ShortCut, Account) values ('D001', 'QQ', 'D100')");
    EXPECT_FALSE(model.SetShortCut("C001", "D001", "qq"));

    TDbAccountModel fresh(db_->DatabaseName());
    EXPECT_TRUE(fresh.LookupShortCut("D001", "new2", id, true));
    EXPECT_EQ(id, "C002");
    EXPECT_FALSE(fresh.LookupShortCut("D001", "AB", id, true));
}

TEST_P(DbAccountModelTest, ReloadUpdatesHeldAccountsInPlace)
{
    TDbAccountModel model(db_->DatabaseName());
    model.LoadUserAccounts("D001");
    TAccount* const held = model.FindAccount("C001");
    held->SetBodLotLimit(700);
    db_->Execute("update Account_File set Acct_Name = 'CHAN TAI-MAN', Suspended = 1 where Account = 'C001'");
    db_->Execute("delete from Account_File where Account = 'C002'");

    EXPECT_EQ(model.ReloadAccounts(), 1) << "C002 is gone from the table";
    EXPECT_EQ(model.FindAccount("C001"), held);
    EXPECT_EQ(held->AcctName, "CHAN TAI-MAN");
    EXPECT_TRUE(held->Suspended);
    EXPECT_EQ(held->GetBodLotLimit(), 700) << "a known limit survives the reload";
    EXPECT_EQ(model.FindAccount("C002")->AcctName, "WONG SIU MING") << "kept as it was";
    EXPECT_EQ(model.GetCurrentAccount()->Count(), 2) << "no account of another user was added";
}

TEST_P(DbAccountModelTest, LookupsKeepWorkingWhenTheDatabaseIsDown)
{
    TDbAccountModel model("DOWNDB");
    QString id;
    EXPECT_EQ(model.FindAccount("C001"), nullptr);
    EXPECT_FALSE(model.CompleteAccountID("C0", id));
    EXPECT_EQ(id, "C0");
    EXPECT_FALSE(model.LookupShortCut("D001", "AB", id, true));
    EXPECT_THROW(model.LoadUserAccounts("D001"), DatabaseError);
}

TEST_P(DbAccountModelTest, ReadsTheOrderDatabaseByDefault)
{
    QTemporaryDir config;
    ASSERT_TRUE(config.isValid());
    QFile ini(config.filePath("oms.ini"));
    ASSERT_TRUE(ini.open(QIODevice::WriteOnly));
    ini.write(
        QStringLiteral("[OMS_DATAMAP]\nOMSDATA=OMSDATA_DSN\n[OMSDATA_DSN]\nDSN_Source=TESTDB\nDSN_user=%1\n")
            .arg(user())
            .toUtf8());
    ini.close();
    const QByteArray savedOmsIni = qgetenv("OMS_INI");
    qputenv("OMS_INI", ini.fileName().toLocal8Bit());
    internal::ResetDatabaseAccess();
    internal::ResetApplicationProfile();

    {
        TDbAccountModel model;
        EXPECT_EQ(model.LoadUserAccounts("D002"), 2);
        EXPECT_NE(model.FindAccount("C010"), nullptr);
    }
    internal::ResetDatabaseAccess();
    internal::ResetApplicationProfile();
    qputenv("OMS_INI", savedOmsIni);
}

INSTANTIATE_TEST_SUITE_P(Drivers, DbAccountModelTest,
    testing::Values(test::Driver::Sqlite, test::Driver::Postgres), test::driverName);

} // namespace
} // namespace qal
