// SPDX-License-Identifier: MIT
// The order database's connections: one per logical name, its alias and login
// resolved from the redirection map, the OMS INI's data map, the database
// settings file or the data map's DSN keys, user "sa" when nothing says
// otherwise, and nullptr (never a crash) when the database cannot be opened,
// with a fresh try on the next request. Runs on SQLite and on PostgreSQL,
// where the server confirms the login it was given.
#include "qalpack/orderdb/DatabaseAccess.h"

#include <QByteArray>
#include <QFile>
#include <QRegularExpression>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"
#include "qalpack/orderdb/orderDB.h"
#include "qalpack/profile/QalApplicationProfile.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"

namespace {

using qal::TDatabase;
using qal::TOmsDM;
using qal::TSession;
using qal::test::DatabaseTest;
using qal::test::Driver;

class OmsDMTest : public DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        resetUnits();
        TSession& session = TSession::Default();
        // Further aliases on the test database, so that each login below has
        // a connection name of its own.
        for (const char* alias : { "LEDGER", "LEDGER_B", "LEDGER_C", "LEDGER_D", "HISTORY", "OMSDATA" })
            session.AddAlias(alias, session.GetAliasDriverName("TESTDB"), session.AliasParams("TESTDB"));

        ASSERT_TRUE(config_.isValid());
        // U is the login the server accepts.
        write("oms.ini", R"([OMS_LOCAL]
DatabaseSettings=dbsettings.ini
[OMS_DATAMAP]
ORDERS=ORDERS_DSN
BLOTTER=BLOTTER_DSN
RISK=RISK_KEY
AUDIT=AUDIT_KEY
HISTORY=NO_SOURCE
FLAKY=FLAKY_DSN
[ORDERS_DSN]
DSN_Source=LEDGER
DSN_user=U
DSN_password=secret
[BLOTTER_DSN]
DSN_Source=LEDGER_B
DSN_password=secret
[RISK_KEY]
DSN_Source=DOWNDB
DSN_user=nobody
[NO_SOURCE]
DSN_user=U
DSN_password=secret
[FLAKY_DSN]
DSN_Source=FLAKYDB
DSN_user=U
[REDIRECTED]
DSN_Source=LEDGER
DSN_user=U
DSN_password=redirected
)");
        write("dbsettings.ini", R"([RISK_KEY]
Alias=LEDGER_C
User=U
Password=pw
[AUDIT_KEY]
Alias=LEDGER_D
User=
Password=pw
)");
        ASSERT_TRUE(
            QFile::setPermissions(config_.filePath("dbsettings.ini"), QFile::ReadOwner | QFile::WriteOwner));
        savedOmsIni_ = qgetenv("OMS_INI");
        qputenv("OMS_INI", config_.filePath("oms.ini").toLocal8Bit());

        if (driver() == Driver::Postgres) {
            // The default login; the throwaway server may have it already.
            exec("do $$ begin create role sa login; "
                 "exception when duplicate_object or unique_violation then null; end $$");
        }
    }

    void TearDown() override
    {
        resetUnits();
        qputenv("OMS_INI", savedOmsIni_);
        DatabaseTest::TearDown();
    }

    static void resetUnits()
    {
        qal::internal::ResetDatabaseAccess();
        qal::internal::ResetApplicationProfile();
    }

    void write(const QString& name, const QString& text)
    {
        QFile file(config_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(QString(text)
                       .replace(QRegularExpression("=U$", QRegularExpression::MultilineOption), "=" + user())
                       .toUtf8());
    }

    // Checks the connection's login lines and, on PostgreSQL, the user the
    // server took.
    void expectLogin(TDatabase& db, const QString& user, const QString& password) const
    {
        EXPECT_EQ(db.Params().Values("user name"), user);
        EXPECT_EQ(db.Params().Values("password"), password);
        EXPECT_NE(db.Params().IndexOfName("password"), -1)
            << "an empty password must still override the alias";
        if (driver() != Driver::Postgres)
            return;
        try {
            db.Execute(QStringLiteral("do $$ begin if current_user <> '%1' then "
                                      "raise exception 'connected as %', current_user; end if; end $$")
                           .arg(user));
        } catch (const qal::Error& error) {
            ADD_FAILURE() << error.message().toStdString();
        }
    }

private:
    QTemporaryDir config_;
    QByteArray savedOmsIni_;
};

TEST_P(OmsDMTest, ResolvesAliasAndLoginForEachLogicalName)
{
    const struct
    {
        const char* name;
        const char* request;
        const char* alias;
        QString user;
        const char* password;
    } rows[] = {
        { "UnmappedNameIsItsOwnAliasAsSa", "testdb", "TESTDB", "sa", "" },
        { "ProfileDsnGivesAliasUserAndPassword", "orders", "LEDGER", user(), "secret" },
        { "DsnWithoutUserFallsBackToSaWithoutPassword", "blotter", "LEDGER_B", "sa", "" },
        { "SettingsFileWinsOverDsn", "risk", "LEDGER_C", user(), "pw" },
        { "SettingsFileEmptyUserFallsBackToSa", "audit", "LEDGER_D", "sa", "" },
        { "MapKeyWithoutDsnSourceKeepsNameAndDefaults", "history", "HISTORY", "sa", "" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TDatabase* db = TOmsDM::GetInstance()->GetDatabase(row.request);
        ASSERT_NE(db, nullptr);
        EXPECT_EQ(db->AliasName(), row.alias);
        EXPECT_EQ(db->DatabaseName(), QString(row.alias) + "DB");
        EXPECT_FALSE(db->LoginPrompt());
        EXPECT_TRUE(db->Connected());
        expectLogin(*db, row.user, row.password);
        EXPECT_EQ(TOmsDM::GetInstance()->GetDatabase(QString(row.request).toUpper()), db);
    }
}

TEST_P(OmsDMTest, RedirectBeforeFirstRequestOverridesProfileAndFirstMappingWins)
{
    TOmsDM::GetInstance()->AddDataMap("orders", "REDIRECTED");
    TOmsDM::GetInstance()->AddDataMap("Orders", "BLOTTER_DSN");
    TDatabase* db = TOmsDM::GetInstance()->GetDatabase("ORDERS");
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(db->AliasName(), "LEDGER");
    expectLogin(*db, user(), "redirected");
}

TEST_P(OmsDMTest, ResolvedAliasIsRedirectedToTheSameDataMapKey)
{
    ASSERT_NE(TOmsDM::GetInstance()->GetDatabase("orders"), nullptr);
    // LEDGER itself has no data-map entry: it now inherits ORDERS_DSN.
    TDatabase* ledger = TOmsDM::GetInstance()->GetDatabase("ledger");
    ASSERT_NE(ledger, nullptr);
    EXPECT_NE(ledger, TOmsDM::GetInstance()->GetDatabase("orders"));
    expectLogin(*ledger, user(), "secret");
}

TEST_P(OmsDMTest, FailedOpenGivesNullLeavesNothingCachedAndRetries)
{
    // DOWNDB: a server that is down (PostgreSQL) or a missing directory.
    for (int attempt = 0; attempt < 2; ++attempt)
        EXPECT_EQ(TOmsDM::GetInstance()->GetDatabase("downdb"), nullptr);
    EXPECT_EQ(TSession::Default().FindDatabase("DOWNDBDB"), nullptr);

    EXPECT_EQ(TOmsDM::GetInstance()->GetDatabase("flaky"), nullptr); // alias FLAKYDB unknown yet
    TSession::Default().AddAlias("FLAKYDB", TSession::Default().GetAliasDriverName("TESTDB"),
        TSession::Default().AliasParams("TESTDB"));
    TDatabase* db = TOmsDM::GetInstance()->GetDatabase("flaky");
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(db->DatabaseName(), "FLAKYDBDB");
    expectLogin(*db, user(), "");
}

TEST_P(OmsDMTest, AFailedOpenKeepsTheDriversReasonUntilAnOpenSucceeds)
{
    TSession& session = TSession::Default();
    QTemporaryDir files;
    const auto file = [&files](const char* name, const QByteArray& bytes) {
        QFile out(files.filePath(name));
        EXPECT_TRUE(out.open(QIODevice::WriteOnly));
        out.write(bytes);
        return out.fileName();
    };
    // A real database file, then a copy cut short inside its first page.
    session.AddAlias(QStringLiteral("WHOLE"), "SQLITE",
        { "DATABASE=" + files.filePath("whole.db"), "CREATE=TRUE", "JOURNAL MODE=DELETE" });
    {
        TDatabase whole;
        whole.SetAliasName(QStringLiteral("WHOLE"));
        whole.SetDatabaseName(QStringLiteral("WHOLEDB"));
        whole.Execute(QStringLiteral("create table t(x); insert into t values (1)"));
    }
    QFile whole(files.filePath("whole.db"));
    ASSERT_TRUE(whole.open(QIODevice::ReadOnly));
    const QByteArray cut = whole.read(1500);
    const struct
    {
        const char* name;
        const char* driver;
        QStringList params;
        const char* cause;
    } rows[] = {
        { "MissingFile", "SQLITE", { "DATABASE=" + files.filePath("none.db") }, "unable to open database file" },
        { "NotADatabase", "SQLITE", { "DATABASE=" + file("junk.db", QByteArray(4096, 'x')) },
            "file is not a database" },
        { "TruncatedFile", "SQLITE", { "DATABASE=" + file("cut.db", cut) }, "malformed" },
        { "UnknownDriver", "ORACLE", { "DATABASE=x" }, "ORACLE" },
        { "UnknownAliasParameter", "SQLITE", { "DATABASE=x.db", "FLAVOUR=sweet" }, "FLAVOUR" },
        { "ServerDown", "POSTGRES", { "HOST=127.0.0.1", "PORT=1", "CONNECT TIMEOUT=5" }, "127.0.0.1" },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        session.AddAlias(QStringLiteral("BROKEN"), row.driver, row.params);
        EXPECT_EQ(TOmsDM::GetInstance()->GetDatabase("broken"), nullptr);
        const QString why = TOmsDM::GetInstance()->OpenError("Broken");
        EXPECT_TRUE(why.contains(QString::fromUtf8(row.cause))) << why.toStdString();
        session.DeleteAlias(QStringLiteral("BROKEN"));
    }
    session.AddAlias(QStringLiteral("BROKEN"), session.GetAliasDriverName("TESTDB"), session.AliasParams("TESTDB"));
    EXPECT_NE(TOmsDM::GetInstance()->GetDatabase("broken"), nullptr);
    EXPECT_TRUE(TOmsDM::GetInstance()->OpenError("broken").isEmpty());
}

TEST_P(OmsDMTest, AnOrderDatabaseThatCannotOpenIsAnErrorWithItsCause)
{
    TSession::Default().DeleteAlias(QStringLiteral("OMSDATA"));
    TSession::Default().AddAlias(QStringLiteral("OMSDATA"), "SQLITE", { "DATABASE=/nonexistent/dir/oms.db" });
    try {
        (void)qal::RequireOrderDatabase();
        ADD_FAILURE() << "no error";
    } catch (const qal::DatabaseError& error) {
        EXPECT_TRUE(error.message().contains(u"the order database cannot be opened")) << error.what();
        EXPECT_TRUE(error.message().contains(u"unable to open database file")) << error.what();
    }
}

TEST_P(OmsDMTest, OrderDatabaseIsTheCachedOmsdataConnectionReachedByItsDatabaseName)
{
    TDatabase* db = qal::orderDatabase();
    ASSERT_NE(db, nullptr);
    EXPECT_EQ(db, TOmsDM::GetInstance()->GetDatabase("OMSDATA"));
    qal::TQuery query;
    query.SetDatabaseName("OMSDATADB");
    query.SQL().Add("select 7 as seven");
    query.Open();
    EXPECT_EQ(query.FieldByName("seven").AsInteger(), 7);

    db->Close();
    EXPECT_EQ(qal::orderDatabase(), db) << "the cached connection comes back, closed or not";
    EXPECT_FALSE(db->Connected());
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, OmsDMTest, testing::Values(Driver::Sqlite, Driver::Postgres), qal::test::driverName);

} // namespace
