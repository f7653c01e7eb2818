// SPDX-License-Identifier: MIT
// The order database connects through an alias with its own user and
// password, is found by its database name, and fails with a clear error,
// never a crash, when the server is down. The same cases run on SQLite and on
// PostgreSQL.
#include "qalpack/db/Database.h"

#include <QString>

#include <gtest/gtest.h>

#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"

namespace {

using qal::DatabaseError;
using qal::TDatabase;
using qal::TQuery;
using qal::TSession;
using qal::test::DatabaseTest;
using qal::test::Driver;

int selectOne(const QString& databaseName)
{
    TQuery query;
    query.SetDatabaseName(databaseName);
    query.SQL().Add("select 1 as one");
    query.Open();
    return query.FieldByName("ONE").AsInteger();
}

using DatabaseConnectTest = DatabaseTest;

TEST_P(DatabaseConnectTest, ConnectsThroughItsAliasAndIsFoundByName)
{
    auto db = database();
    EXPECT_EQ(TSession::Default().FindDatabase("testdbdb"), db.get());
    db->Open();
    EXPECT_TRUE(db->Connected());
    EXPECT_EQ(selectOne("TestDbDb"), 1);

    db->SetConnected(false);
    EXPECT_FALSE(db->Connected());
    EXPECT_EQ(selectOne("TESTDBDB"), 1); // a query connects a database it finds closed
    EXPECT_TRUE(db->Connected());
    EXPECT_THROW(db->SetAliasName("OTHER"), DatabaseError);
}

TEST_P(DatabaseConnectTest, UnreachableDatabaseRaisesAClearError)
{
    auto db = database("DOWNDB");
    for (int attempt = 0; attempt < 2; ++attempt) {
        SCOPED_TRACE(attempt);
        try {
            db->Open();
            FAIL() << "opening an unreachable database must raise";
        } catch (const DatabaseError& error) {
            EXPECT_EQ(error.Database(), "DOWNDBDB");
            EXPECT_TRUE(error.message().startsWith("Database DOWNDBDB: cannot "))
                << error.message().toStdString();
        }
        EXPECT_FALSE(db->Connected());
    }
    EXPECT_THROW((void)selectOne("DOWNDBDB"), DatabaseError);
}

TEST_P(DatabaseConnectTest, LoginPromptAsksTheHandlerForTheLogin)
{
    auto db = database();
    db->Params().SetValue("user name", "nobody");
    db->SetLoginPrompt(true);
    QString offered;
    db->SetOnLogin([&](TDatabase& asking, qal::TStringList& login) {
        EXPECT_EQ(&asking, db.get());
        offered = login.Values("USER NAME");
        login.SetValue("USER NAME", user());
    });
    db->Open();
    EXPECT_EQ(offered, "nobody");
    EXPECT_TRUE(db->Connected());
}

TEST_P(DatabaseConnectTest, ClosingTheDatabaseClosesItsQueries)
{
    auto db = database();
    TQuery query;
    query.SetDatabaseName("TESTDBDB");
    query.SQL().Add("select 1 as one");
    query.Open();
    ASSERT_TRUE(query.Active());
    db.reset();
    EXPECT_FALSE(query.Active());
    EXPECT_EQ(query.FindField("one"), nullptr);
}

TEST_P(DatabaseConnectTest, AQueryOnAnAliasOpensASessionDatabase)
{
    EXPECT_EQ(selectOne("testdb"), 1);
    try {
        (void)selectOne("NOSUCHDB");
        FAIL() << "an unknown database name must raise";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.Database(), "NOSUCHDB");
    }
}

TEST_P(DatabaseConnectTest, RollbackUndoesCommitKeeps)
{
    auto db = database();
    db->Execute("create table fills (qty integer)");
    db->StartTransaction();
    EXPECT_TRUE(db->InTransaction());
    db->Execute("insert into fills values (1)");
    db->Rollback();
    EXPECT_FALSE(db->InTransaction());
    db->StartTransaction();
    db->Execute("insert into fills values (2)");
    db->Commit();

    TQuery query;
    query.SetDatabaseName("TESTDBDB");
    query.SQL().Add("select sum(qty) as total, count(*) as n from fills");
    query.Open();
    EXPECT_EQ(query.FieldByName("total").AsInteger(), 2);
    EXPECT_EQ(query.FieldByName("n").AsInteger(), 1);
}

// A reader holding the file in the old journal mode blocks a commit. The
// failed commit must roll back: a connection left inside the transaction
// would hold the write lock and fold every later change into a transaction
// nobody commits.
TEST_P(DatabaseConnectTest, AFailedCommitRollsBackAndLeavesAutocommit)
{
    if (driver() != Driver::Sqlite)
        GTEST_SKIP() << "a reader cannot block a PostgreSQL commit";
    TSession::Default().AddAlias("OLDJOURNAL", "SQLITE",
        TSession::Default().AliasParams("TESTDB") + QStringList { "JOURNAL MODE=DELETE", "BUSY TIMEOUT=0" });
    auto writer = database("OLDJOURNAL");
    writer->Execute("create table fills (qty integer)");
    auto reader = database("OLDJOURNAL");
    reader->SetDatabaseName("READERDB");
    reader->StartTransaction();
    EXPECT_EQ(selectOne("READERDB"), 1);
    TQuery holding;
    holding.SetDatabaseName("READERDB");
    holding.SQL().Add("select count(*) from fills");
    holding.Open();

    writer->StartTransaction();
    writer->Execute("insert into fills values (1)");
    EXPECT_THROW(writer->Commit(), DatabaseError);
    EXPECT_FALSE(writer->InTransaction());
    holding.Close();
    reader->Commit();

    writer->Execute("insert into fills values (2)");
    TQuery query;
    query.SetDatabaseName("READERDB");
    query.SQL().Add("select sum(qty) as total from fills");
    query.Open();
    EXPECT_EQ(query.FieldByName("total").AsInteger(), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, DatabaseConnectTest, testing::Values(Driver::Sqlite, Driver::Postgres), qal::test::driverName);

// A server that goes away under an open connection.
using ServerConnectionTest = DatabaseTest;

TEST_P(ServerConnectionTest, LostConnectionRaisesAClearError)
{
    auto db = database();
    TQuery pid;
    pid.SetDatabaseName("TESTDBDB");
    pid.SQL().Add("select pg_backend_pid() as pid");
    pid.Open();
    const QString backend = pid.FieldByName("pid").AsString();
    pid.Close();
    exec("select pg_terminate_backend(" + backend + ")");

    try {
        (void)selectOne("TESTDBDB");
        FAIL() << "a query on a lost connection must raise";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.Database(), "TESTDBDB");
        EXPECT_TRUE(error.message().contains("connection")) << error.message().toStdString();
    }
    // The statement after the one that met the drop reconnects on its own.
    EXPECT_EQ(selectOne("TESTDBDB"), 1);
    EXPECT_TRUE(db->Connected());
}

TEST_P(ServerConnectionTest, CommitOfAFailedTransactionIsAnErrorNotASilentRollback)
{
    auto db = database();
    db->Execute("create table fills (qty integer)");
    db->StartTransaction();
    db->Execute("insert into fills values (1)");
    EXPECT_THROW(db->Execute("insert into no_such_table values (1)"), DatabaseError);
    try {
        db->Commit();
        FAIL() << "the server rolled the transaction back; Commit must say so";
    } catch (const DatabaseError& error) {
        EXPECT_TRUE(error.message().contains("rolled")) << error.message().toStdString();
    }
    EXPECT_FALSE(db->InTransaction());
    db->Execute("insert into fills values (2)");
    TQuery query;
    query.SetDatabaseName("TESTDBDB");
    query.SQL().Add("select sum(qty) as total from fills");
    query.Open();
    EXPECT_EQ(query.FieldByName("total").AsInteger(), 2);
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, ServerConnectionTest, testing::Values(Driver::Postgres), qal::test::driverName);

} // namespace
