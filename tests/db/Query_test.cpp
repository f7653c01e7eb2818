// SPDX-License-Identifier: MIT
// Blotter loaders read rows through TQuery: typed values converted on access,
// NULL kept apart from empty text, date-times shown as "hh:nn:ss", fields
// found whatever the case of their names, and ":name" parameters bound by the
// driver. The same cases run on SQLite and on PostgreSQL.
#include "qalpack/db/Query.h"

#include <utility>

#include <QDateTime>
#include <QString>
#include <QVariant>

#include <gtest/gtest.h>

#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"

namespace {

using qal::DatabaseError;
using qal::TFieldType;
using qal::TQuery;
using qal::test::DatabaseTest;
using qal::test::Driver;

TEST(QueryParams, FollowTheNamesInTheSql)
{
    const struct
    {
        const char* name;
        QStringList lines;
        QStringList params;
    } rows[] = {
        { "one per distinct name, case-insensitive",
            { "select * from t where a = :acct or b = :ACCT and c = :qty" }, { "acct", "qty" } },
        { "not inside quotes or comments",
            { "select ':x', \"col:y\" from t -- :z", "where /* :w */ a = :real" }, { "real" } },
        { "not a cast or an assignment", { "select a::text, b := 1, :p" }, { "p" } },
        { "not inside a dollar-quoted body", { "select $body$ :inner $body$, :outer" }, { "outer" } },
        { "across lines", { "select * from t", "where a = :first", "and b = :second" },
            { "first", "second" } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        TQuery query;
        for (const QString& line : row.lines)
            query.SQL().Add(line);
        QStringList names;
        for (int i = 0; i < query.Params().Count(); ++i)
            names.append(query.Params().Items(i).Name());
        EXPECT_EQ(names, row.params);
    }
}

TEST(QueryParams, KeepValuesOfNamesThatStayWhenTheSqlChanges)
{
    TQuery query;
    query.SQL().Add("select :a, :b");
    query.ParamByName(u"a").SetAsInteger(7);
    query.ParamByName(u"b").SetAsString("x");
    query.SQL().Clear();
    query.SQL().Add("select :b, :c");
    ASSERT_EQ(query.Params().Count(), 2);
    EXPECT_EQ(query.ParamByName(u"B").AsString(), "x");
    EXPECT_FALSE(query.ParamByName(u"c").Bound());
    EXPECT_THROW((void)query.ParamByName(u"a"), DatabaseError);
}

TEST(SqliteDates, NumbersInDateTimeColumnsShowAsTimes)
{
    qal::TSession::Default().AddAlias("QAL_MEMORY", "SQLITE", { "DATABASE=:memory:" });
    TQuery query;
    query.SetDatabaseName("QAL_MEMORY");
    query.SQL().Add("create table stamps (by_day datetime, by_second timestamp)");
    query.ExecSQL();
    query.SQL().Clear();
    query.SQL().Add("insert into stamps values (julianday('2024-05-01 14:05:09'), 1714572309)");
    query.ExecSQL();
    query.SQL().Clear();
    query.SQL().Add("select * from stamps");
    query.Open();
    qal::TField& byDay = query.FieldByName("by_day");
    byDay.SetDisplayFormat("hh:nn:ss");
    EXPECT_EQ(byDay.DisplayText(), "14:05:09"); // a Julian day number, rounded to the millisecond
    EXPECT_EQ(query.FieldByName("by_second").AsString(), "2024-05-01 14:05:09"); // seconds since 1970
    query.Close();
    qal::TSession::Default().DropConnections();
    qal::TSession::Default().DeleteAlias("QAL_MEMORY");
}

// SQLite keeps the statements a connection repeats prepared: each query of
// the same text still reads its own rows with its own parameters, a schema
// change under a kept statement is followed, and a query open when its
// connection goes still closes cleanly.
TEST(SqliteStatements, RepeatedTextsStayTheirOwnQueries)
{
    qal::TSession::Default().AddAlias("QAL_KEPT", "SQLITE", { "DATABASE=:memory:" });
    const auto run = [](const QString& sql, const QVariantList& values = {}) {
        TQuery query;
        query.SetDatabaseName("QAL_KEPT");
        query.SQL().Add(sql);
        for (int i = 0; i < values.size(); ++i)
            query.Params().Items(i).SetValue(values[i]);
        query.ExecSQL();
    };
    const QString select = QStringLiteral("select v from t where k >= :k order by k");
    const auto open = [&select](TQuery& query, int k) {
        query.SetDatabaseName("QAL_KEPT");
        query.SQL().Add(select);
        query.ParamByName(u"k").SetAsInteger(k);
        query.Open();
    };
    run("create table t (k integer, v varchar(10))");
    for (const auto& [k, v] : { std::pair { 1, "one" }, { 2, "two" }, { 3, "three" } })
        run("insert into t values (:k, :v)", { k, QString::fromLatin1(v) });
    run("insert into t values (:k, :v)", { 4, QVariant() }); // a null after texts: bindings start clean

    TQuery a;
    TQuery b;
    open(a, 1);
    open(b, 2);
    EXPECT_EQ(a.Fields(0).AsString(), "one");
    EXPECT_EQ(b.Fields(0).AsString(), "two") << "the second query of the text has its own statement";
    a.Next();
    EXPECT_EQ(a.Fields(0).AsString(), "two");
    a.Close();
    b.Close();
    TQuery again;
    open(again, 3);
    EXPECT_EQ(again.Fields(0).AsString(), "three") << "the kept statement runs with the new parameter";
    again.Next();
    EXPECT_TRUE(again.Fields(0).IsNull());
    again.Close();

    run("drop table t");
    run("create table t (v varchar(10), k integer)");
    run("insert into t (v, k) values ('x', 5)");
    TQuery changed;
    open(changed, 1);
    EXPECT_EQ(changed.Fields(0).AsString(), "x") << "the schema changed under the kept statement";

    TQuery left;
    open(left, 1);
    qal::TSession::Default().DropConnections(); // `changed` and `left` still read their statements
    qal::TSession::Default().DeleteAlias("QAL_KEPT");
}

class QueryTest : public DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        exec("create table trades (Order_No varchar(20), Quantity integer, Price float, Created timestamp, "
             "Flag boolean, Note varchar(40), Big bigint)");
        db_ = database();
        insert("O1", 100, 12.5, "2024-05-01 14:05:09.250", true, "first", 5000000000LL);
        insert("O2", {}, {}, {}, {}, "", {});
        insert("O3", -7, 0.1, "2023-12-31 23:59:59", false, "it's \"quoted\"", 0);
    }

    void insert(const QVariant& no, const QVariant& qty, const QVariant& price, const QVariant& created,
        const QVariant& flag, const QVariant& note, const QVariant& big)
    {
        TQuery query;
        query.SetDatabaseName("TESTDBDB");
        query.SQL().Add("insert into trades values (:no, :qty, :price, :created, :flag, :note, :big)");
        query.ParamByName(u"no").SetValue(no);
        query.ParamByName(u"qty").SetValue(qty);
        query.ParamByName(u"price").SetValue(price);
        if (created.isValid())
            query.ParamByName(u"created")
                .SetAsDateTime(QDateTime::fromString(created.toString(), Qt::ISODateWithMs));
        else
            query.ParamByName(u"created").SetValue({});
        query.ParamByName(u"flag").SetValue(flag);
        query.ParamByName(u"note").SetValue(note);
        query.ParamByName(u"big").SetValue(big);
        query.ExecSQL();
        EXPECT_EQ(query.RowsAffected(), 1);
    }

    // Opens "select * from trades where Order_No = '<no>'".
    void openRow(TQuery& query, const QString& no)
    {
        query.SetDatabaseName("TESTDBDB");
        query.SQL().Add("select * from trades");
        query.SQL().Add("where Order_No = :no");
        query.ParamByName(u"no").SetAsString(no);
        query.Open();
        ASSERT_FALSE(query.Eof());
    }

    std::unique_ptr<qal::TDatabase> db_;
};

TEST_P(QueryTest, ReadsEachTypeAsTheDeskExpects)
{
    TQuery query;
    openRow(query, "O1");
    const struct
    {
        const char* field;
        TFieldType type;
        const char* text;
        qint64 integer;
        double number;
        QMetaType::Type boxed;
    } rows[] = {
        { "Order_No", TFieldType::ftString, "O1", 0, 0, QMetaType::QString },
        { "Quantity", TFieldType::ftInteger, "100", 100, 100, QMetaType::Int },
        { "Price", TFieldType::ftFloat, "12.5", 12, 12.5, QMetaType::Double }, // rounds half to even
        { "Flag", TFieldType::ftBoolean, "True", 1, 1, QMetaType::Bool },
        { "Big", TFieldType::ftLargeint, "5000000000", 5000000000LL, 5e9, QMetaType::LongLong },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.field);
        const qal::TField& field = query.FieldByName(row.field);
        EXPECT_EQ(field.DataType(), row.type);
        EXPECT_FALSE(field.IsNull());
        EXPECT_EQ(field.AsString(), QString::fromUtf8(row.text));
        EXPECT_EQ(field.AsOptionalString(), QString::fromUtf8(row.text));
        if (row.type != TFieldType::ftString) {
            EXPECT_EQ(field.AsLargeInt(), row.integer);
            EXPECT_DOUBLE_EQ(field.AsFloat(), row.number);
            EXPECT_EQ(field.AsOptionalFloat(), row.number);
        }
        EXPECT_EQ(field.Value().typeId(), row.boxed);
    }
    EXPECT_TRUE(query.FieldByName("Flag").AsBoolean());
    EXPECT_THROW((void)query.FieldByName("Big").AsInteger(), DatabaseError); // does not fit 32 bits
    EXPECT_THROW((void)query.FieldByName("Big").AsOptionalInteger(), DatabaseError);
    EXPECT_EQ(query.FieldByName("Quantity").AsOptionalInteger(), 100);
    EXPECT_THROW((void)query.FieldByName("Order_No").AsInteger(), DatabaseError);
}

TEST_P(QueryTest, NullStaysApartFromEmptyText)
{
    TQuery query;
    openRow(query, "O2");
    for (const char* name : { "Quantity", "Price", "Created", "Flag", "Big" }) {
        SCOPED_TRACE(name);
        const qal::TField& field = query.FieldByName(name);
        EXPECT_TRUE(field.IsNull());
        EXPECT_EQ(field.AsString(), "");
        EXPECT_EQ(field.AsInteger(), 0);
        EXPECT_EQ(field.AsFloat(), 0);
        EXPECT_FALSE(field.Value().isValid());
        EXPECT_EQ(field.DisplayText(), "");
        EXPECT_FALSE(field.AsOptionalString().has_value());
        EXPECT_FALSE(field.AsOptionalInteger().has_value());
        EXPECT_FALSE(field.AsOptionalFloat().has_value());
    }
    const qal::TField& note = query.FieldByName("Note");
    EXPECT_FALSE(note.IsNull());
    EXPECT_EQ(note.AsString(), "");
    EXPECT_EQ(note.AsOptionalString(), QString(""));
    EXPECT_TRUE(note.Value().isValid());
}

TEST_P(QueryTest, DateTimeDisplayTextFollowsTheDisplayFormat)
{
    TQuery query;
    openRow(query, "O1");
    qal::TField& created = query.FieldByName("created");
    EXPECT_EQ(created.DataType(), TFieldType::ftDateTime);
    EXPECT_EQ(created.AsString(), "2024-05-01 14:05:09.250");
    EXPECT_EQ(created.DisplayText(), "2024-05-01 14:05:09.250");
    created.SetDisplayFormat("hh:nn:ss");
    EXPECT_EQ(created.DisplayText(), "14:05:09");
    EXPECT_EQ(created.AsDateTime(), QDateTime(QDate(2024, 5, 1), QTime(14, 5, 9, 250)));
    EXPECT_EQ(created.AsString(), "2024-05-01 14:05:09.250"); // the display format is for display only
}

TEST_P(QueryTest, FieldsAreFoundWhateverTheCase)
{
    TQuery query;
    openRow(query, "O1");
    qal::TField* field = &query.FieldByName("Order_No");
    EXPECT_EQ(&query.FieldByName("ORDER_NO"), field);
    EXPECT_EQ(&query.FieldByName(QString("order_no")), field);
    EXPECT_EQ(&query.FieldByName(QLatin1String("oRdEr_nO")), field);
    EXPECT_EQ(&query.FieldByName(u"order_No"), field);
    EXPECT_EQ(query.FindField("StatusFlags"), nullptr);
    try {
        (void)query.FieldByName("StatusFlags");
        FAIL() << "an unknown field must raise";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.Database(), "TESTDBDB");
        EXPECT_TRUE(error.message().contains("StatusFlags")) << error.message().toStdString();
    }

    qal::TStringList names;
    query.GetFieldNames(names);
    ASSERT_EQ(names.Count(), 7);
    EXPECT_EQ(names.Strings(0).toLower(), "order_no"); // PostgreSQL folds unquoted names to lower case
    EXPECT_EQ(names.IndexOf("CREATED"), 3);
}

TEST_P(QueryTest, ParametersAreBoundNotSpliced)
{
    TQuery query;
    query.SetDatabaseName("TESTDBDB");
    query.SQL().Add("select Order_No from trades where Note = :note or Order_No = :note");
    query.ParamByName(u"note").SetAsString("it's \"quoted\"");
    query.Open();
    ASSERT_FALSE(query.Eof());
    EXPECT_EQ(query.FieldByName("order_no").AsString(), "O3");
    query.Next();
    EXPECT_TRUE(query.Eof());

    TQuery missing;
    missing.SetDatabaseName("TESTDBDB");
    missing.SQL().Add("select * from trades where Quantity > :min");
    EXPECT_THROW(missing.Open(), DatabaseError);
}

TEST_P(QueryTest, WalksRowsFirstToLastAndBack)
{
    TQuery query;
    query.SetDatabaseName("TESTDBDB");
    query.SQL().Add("select Order_No, Quantity from trades order by Order_No");
    query.Open();
    QStringList seen;
    for (; !query.Eof(); query.Next())
        seen.append(query.FieldByName("Order_No").AsString());
    EXPECT_EQ(seen, QStringList({ "O1", "O2", "O3" }));
    EXPECT_TRUE(query.FieldByName("Order_No").IsNull()); // no current row past the end
    query.Next();
    EXPECT_TRUE(query.Eof());
    query.First();
    ASSERT_FALSE(query.Eof());
    EXPECT_EQ(query.FieldByName("Quantity").AsInteger(), 100);

    TQuery empty;
    empty.SetDatabaseName("TESTDBDB");
    empty.SQL().Add("select * from trades where 1 = 0");
    empty.Open();
    EXPECT_TRUE(empty.Eof());
    EXPECT_EQ(empty.FieldCount(), 7);
}

TEST_P(QueryTest, ServerErrorsNameTheDatabase)
{
    TQuery query;
    query.SetDatabaseName("TESTDBDB");
    query.SQL().Add("select * from no_such_table");
    try {
        query.Open();
        FAIL() << "a query on a missing table must raise";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.Database(), "TESTDBDB");
        EXPECT_TRUE(error.message().contains("no_such_table")) << error.message().toStdString();
    }
    EXPECT_FALSE(query.Active());
}

// Large results stream row by row: the connection keeps serving the desk's
// other statements meanwhile, and a query closed early leaves it usable.
// Two databases may carry the same name (a host's own connection next to the
// session's, a reconnect that made a second one). Looked up by name, a query
// takes the first connected one; bound, it runs where it was told.
TEST_P(QueryTest, ABoundQueryRunsOnItsOwnDatabaseWhenAnotherSharesItsName)
{
    qal::TDatabase twin;
    twin.SetDriverName("SQLITE");
    twin.Params().Add("DATABASE=:memory:");
    twin.SetDatabaseName("TESTDBDB");
    twin.SetLoginPrompt(false);
    twin.Execute("create table trades (Order_No varchar(20))");
    twin.Execute("insert into trades values ('TWIN')");
    ASSERT_TRUE(db_->Connected());

    const auto firstOrderNo = [](TQuery& query) {
        query.SQL().Add("select Order_No from trades order by Order_No");
        query.Open();
        return query.Fields(0).AsString();
    };
    TQuery byName;
    byName.SetDatabaseName("TESTDBDB");
    EXPECT_EQ(firstOrderNo(byName), "O1"); // the first of the two, not the twin

    TQuery bound(twin);
    EXPECT_EQ(bound.DatabaseName(), "TESTDBDB");
    EXPECT_EQ(firstOrderNo(bound), "TWIN");

    TQuery rebound;
    rebound.SetDatabase(twin);
    rebound.SetDatabase(*db_);
    EXPECT_EQ(firstOrderNo(rebound), "O1");
    rebound.Close();
    rebound.SetDatabaseName("TESTDBDB"); // by name again: the binding is gone
    rebound.Open();
    EXPECT_EQ(rebound.Fields(0).AsString(), "O1");
}

// A query may outlive the database it was bound to (a blotter kept after its
// connection was dropped): it closes with the database and then refuses to
// run, naming the database, instead of touching freed memory.
TEST_P(QueryTest, ABoundQueryWhoseDatabaseIsDeletedRaisesAClearError)
{
    const struct
    {
        const char* name;
        void (*run)(TQuery& query);
    } rows[] = {
        { "open", [](TQuery& query) { query.Open(); } },
        { "exec", [](TQuery& query) { query.ExecSQL(); } },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        auto doomed = database();
        TQuery query(*doomed);
        query.SQL().Add("select count(*) from trades");
        query.Open();
        ASSERT_TRUE(query.Active());
        doomed.reset();
        EXPECT_FALSE(query.Active());
        EXPECT_EQ(query.DatabaseName(), "TESTDBDB");
        try {
            row.run(query);
            FAIL() << "a query whose database is gone must raise";
        } catch (const DatabaseError& error) {
            EXPECT_EQ(error.Database(), "TESTDBDB");
            EXPECT_TRUE(error.What().contains("deleted")) << error.message().toStdString();
        }
        EXPECT_FALSE(query.Active());
    }
}

class StreamingQueryTest : public QueryTest
{
protected:
    static constexpr int kRows = 1000;

    void SetUp() override
    {
        QueryTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        exec("create table numbers (n integer primary key)");
        exec(QStringLiteral("insert into numbers (n) with recursive s(n) as "
                            "(select 1 union all select n + 1 from s where n < %1) select n from s")
                 .arg(kRows));
    }

    void open(TQuery& query, const QString& sql)
    {
        query.SetDatabaseName("TESTDBDB");
        query.SQL().Add(sql);
        query.Open();
    }

    int count(const QString& sql)
    {
        TQuery query;
        open(query, sql);
        return query.Fields(0).AsInteger();
    }
};

TEST_P(StreamingQueryTest, AnOpenQueryKeepsItsRowsWhileOtherStatementsRun)
{
    TQuery walk;
    open(walk, "select n from numbers order by n");
    int expected = 1;
    for (; expected <= 10; walk.Next(), ++expected)
        ASSERT_EQ(walk.Fields(0).AsInteger(), expected);

    TQuery update;
    update.SetDatabaseName("TESTDBDB");
    update.SQL().Add("update trades set Note = 'seen' where Order_No = 'O1'");
    update.ExecSQL();
    EXPECT_EQ(update.RowsAffected(), 1);
    EXPECT_EQ(count("select count(*) from numbers"), kRows);

    TQuery leftEarly;
    open(leftEarly, "select n from numbers");
    leftEarly.Close();
    EXPECT_EQ(count("select count(*) from trades where Note = 'seen'"), 1);

    // A query opened inside a transaction: the transaction stays open while
    // its rows stream, and ends with the commit.
    db_->StartTransaction();
    TQuery inTransaction;
    open(inTransaction, "select n from numbers order by n");
    EXPECT_TRUE(db_->InTransaction());
    db_->Commit();
    EXPECT_FALSE(db_->InTransaction());

    for (; !walk.Eof(); walk.Next(), ++expected)
        ASSERT_EQ(walk.Fields(0).AsInteger(), expected);
    EXPECT_EQ(expected, kRows + 1);
    int inTransactionRows = 0;
    for (; !inTransaction.Eof(); inTransaction.Next())
        ++inTransactionRows;
    EXPECT_EQ(inTransactionRows, kRows);

    walk.First();
    ASSERT_FALSE(walk.Eof());
    EXPECT_EQ(walk.Fields(0).AsInteger(), 1);
}

TEST_P(StreamingQueryTest, AFailurePastTheFirstRowsIsRaisedWhereItIsReached)
{
    // Row 500 overflows a 64-bit integer; the rows before it arrive first.
    const QString failing = QStringLiteral(
        "select case when n = 500 then abs(n - 500 - 9223372036854775807 - 1) else n end from numbers");
    for (const bool otherStatementFirst : { false, true }) {
        SCOPED_TRACE(otherStatementFirst ? "another statement ran meanwhile" : "read straight through");
        TQuery query;
        open(query, failing);
        if (otherStatementFirst) {
            EXPECT_EQ(count("select count(*) from trades"), 3);
        }
        int read = 0;
        try {
            for (; !query.Eof(); query.Next())
                ++read;
            FAIL() << "the overflow must raise";
        } catch (const DatabaseError& error) {
            EXPECT_EQ(error.Database(), "TESTDBDB");
        }
        EXPECT_EQ(read, 499);
        query.Close();
        EXPECT_EQ(count("select count(*) from numbers"), kRows);
    }
}

TEST_P(StreamingQueryTest, SharedRepeatedTextReadsAsUnshared)
{
    exec("create table desk (Dealer varchar(20), Account varchar(20))");
    exec("insert into desk select 'D' || (n % 3), 'A' || n from numbers");
    exec("insert into desk values (null, ''), ('é³', 'X')");
    TQuery shared;
    TQuery plain;
    for (TQuery* query : { &shared, &plain })
        open(*query, "select * from desk");
    for (int i = 0; i < shared.FieldCount(); ++i)
        shared.Fields(i).SetShareRepeatedText(true);
    int rows = 0;
    for (; !shared.Eof() && !plain.Eof(); shared.Next(), plain.Next(), ++rows) {
        for (int i = 0; i < shared.FieldCount(); ++i) {
            ASSERT_EQ(shared.Fields(i).AsString(), plain.Fields(i).AsString()) << "row " << rows;
            ASSERT_EQ(shared.Fields(i).IsNull(), plain.Fields(i).IsNull()) << "row " << rows;
        }
    }
    EXPECT_EQ(rows, kRows + 2);
    EXPECT_TRUE(shared.Eof() && plain.Eof());
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, StreamingQueryTest, testing::Values(Driver::Sqlite, Driver::Postgres), qal::test::driverName);

INSTANTIATE_TEST_SUITE_P(
    Drivers, QueryTest, testing::Values(Driver::Sqlite, Driver::Postgres), qal::test::driverName);

} // namespace
