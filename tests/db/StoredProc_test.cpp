// SPDX-License-Identifier: MIT
// Orders are saved through a stored procedure: parameters declared from a
// definition line ("@name,ptInput,ftString"), only the ones that are set
// sent, output parameters read back after ExecProc, a failure undoing the
// procedure's work. The same procedure contract runs as a plpgsql function on
// PostgreSQL and as a registered C++ procedure on SQLite.
#include "qalpack/db/StoredProc.h"

#include <QDateTime>
#include <QString>

#include <gtest/gtest.h>

#include "qalpack/db/SqliteBackend.h"
#include "qalpack/runtime/Exception.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"

namespace {

using qal::DatabaseError;
using qal::TParam;
using qal::TParams;
using qal::TQuery;
using qal::TStoredProc;
using qal::test::DatabaseTest;
using qal::test::Driver;

// New order: the account, quantity and price default to HOUSE, 100 and 1.5;
// the order number is the caller's or the next free "N<n>"; the amount and a
// fixed creation time come back. A quantity below 1 fails after the insert.
constexpr const char* createFunction = R"(
create function qal_new_order(p_account text default 'HOUSE', p_quantity integer default 100,
    p_price double precision default 1.5, inout p_order_no text default null,
    out p_amount double precision, out p_created timestamp) as $$
begin
    if p_order_no is null then
        select 'N' || (count(*) + 1) into p_order_no from orders;
    end if;
    insert into orders (order_no, account, quantity, price) values (p_order_no, p_account, p_quantity, p_price);
    if p_quantity < 1 then
        raise exception 'quantity must be positive';
    end if;
    p_amount := p_quantity * p_price;
    p_created := timestamp '2024-05-01 14:05:09';
end $$ language plpgsql)";

void newOrder(TParams& params, qal::TDatabase& database)
{
    auto input = [&](const char* name) -> const TParam* {
        const TParam* param = params.FindParam(QString::fromUtf8(name));
        return param && param->Bound() ? param : nullptr;
    };
    const TParam* account = input("@p_account");
    const int quantity = input("@p_quantity") ? input("@p_quantity")->AsInteger() : 100;
    const double price = input("@p_price") ? input("@p_price")->AsFloat() : 1.5;
    QString orderNo = input("@p_order_no") ? input("@p_order_no")->AsString() : QString();
    if (orderNo.isEmpty()) {
        TQuery count(database);
        count.SQL().Add("select count(*) + 1 as next_no from orders");
        count.Open();
        orderNo = "N" + count.FieldByName("next_no").AsString();
    }
    // Bound to the connection the procedure runs in, inside its transaction.
    TQuery insert(database);
    insert.SQL().Add(
        "insert into orders (order_no, account, quantity, price) values (:no, :account, :qty, :price)");
    insert.ParamByName(u"no").SetAsString(orderNo);
    insert.ParamByName(u"account").SetValue(account ? account->Value() : QVariant("HOUSE"));
    insert.ParamByName(u"qty").SetAsInteger(quantity);
    insert.ParamByName(u"price").SetAsFloat(price);
    insert.ExecSQL();
    if (quantity < 1)
        throw qal::Error("quantity must be positive");
    params.ParamByName(u"@p_order_no").SetAsString(orderNo);
    params.ParamByName(u"@p_amount").SetAsFloat(quantity * price);
    params.ParamByName(u"@p_created").SetAsDateTime(QDateTime(QDate(2024, 5, 1), QTime(14, 5, 9)));
}

class StoredProcTest : public DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        exec(
            "create table orders (order_no varchar(20), account varchar(20), quantity integer, price float)");
        if (driver() == Driver::Postgres)
            exec(createFunction);
        else
            qal::SqliteBackend::RegisterProcedure("QAL_NEW_ORDER", newOrder);
        db_ = database();
        db_->Open();
        proc_.SetDatabaseName("TESTDBDB");
        proc_.SetStoredProcName("qal_new_order");
        // As the procedure's definition file lists them.
        for (const char* line : { "@p_account,ptInput,ftString", "@p_quantity,ptInput,ftInteger",
                 "@p_price,ptInput,ftFloat", "@p_order_no,ptInputOutput,ftString",
                 "@p_amount,ptOutput,ftFloat", "@p_created,ptOutput,ftDateTime" }) {
            const QStringList parts = QString::fromUtf8(line).split(',');
            proc_.Params().CreateParam(
                qal::FieldTypeFromName(parts[2]), parts[0], qal::ParamTypeFromName(parts[1]));
        }
    }

    void TearDown() override
    {
        qal::SqliteBackend::UnregisterProcedure("qal_new_order");
        DatabaseTest::TearDown();
    }

    // "order_no account quantity" of every saved order, in order.
    QStringList savedOrders()
    {
        TQuery query;
        query.SetDatabaseName("TESTDBDB");
        query.SQL().Add("select * from orders order by order_no");
        query.Open();
        QStringList rows;
        for (; !query.Eof(); query.Next()) {
            rows.append(QStringList(
                { query.FieldByName("order_no").AsString(),
                    query.FieldByName("account").IsNull() ? "<null>"
                                                          : query.FieldByName("account").AsString(),
                    query.FieldByName("quantity").AsString() })
                            .join(' '));
        }
        return rows;
    }

    std::unique_ptr<qal::TDatabase> db_;
    TStoredProc proc_;
};

TEST_P(StoredProcTest, OutputParametersComeBackAfterExecProc)
{
    proc_.ParamByName(u"@p_account").SetValue(QString("C001"));
    proc_.ParamByName(u"@p_quantity").SetValue(200);
    proc_.ParamByName(u"@p_price").SetAsFloat(2.5);
    proc_.ExecProc();
    EXPECT_EQ(proc_.ParamByName(u"@p_order_no").AsString(), "N1");
    EXPECT_DOUBLE_EQ(proc_.ParamByName(u"@p_amount").AsFloat(), 500.0);
    EXPECT_EQ(qal::FormatDateTime(u"hh:nn:ss", proc_.ParamByName(u"@P_CREATED").AsDateTime()), "14:05:09");
    EXPECT_EQ(savedOrders(), QStringList({ "N1 C001 200" }));
}

TEST_P(StoredProcTest, OnlyParametersThatAreSetAreSent)
{
    const struct
    {
        const char* name;
        void (*set)(TStoredProc&);
        const char* saved;
        double amount;
    } rows[] = {
        { "none set: the procedure's defaults", [](TStoredProc&) {}, "N1 HOUSE 100", 150 },
        { "an input-output parameter is sent when set",
            [](TStoredProc& p) { p.ParamByName(u"@p_order_no").SetAsString("X9"); }, "X9 HOUSE 100", 150 },
        { "an explicit NULL overrides the default",
            [](TStoredProc& p) { p.ParamByName(u"@p_account").SetValue(QVariant()); }, "N1 <null> 100", 150 },
        { "a cleared parameter is not sent",
            [](TStoredProc& p) {
                p.ParamByName(u"@p_quantity").SetAsInteger(3);
                p.ParamByName(u"@p_quantity").Clear();
            },
            "N1 HOUSE 100", 150 },
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        exec("delete from orders");
        for (int i = 0; i < proc_.Params().Count(); ++i)
            proc_.Params().Items(i).Clear();
        row.set(proc_);
        proc_.ExecProc();
        EXPECT_EQ(savedOrders(), QStringList({ row.saved }));
        EXPECT_DOUBLE_EQ(proc_.ParamByName(u"@p_amount").AsFloat(), row.amount);
    }
}

TEST_P(StoredProcTest, FailureRaisesAndUndoesTheProceduresWork)
{
    proc_.ParamByName(u"@p_quantity").SetAsInteger(0);
    try {
        proc_.ExecProc();
        FAIL() << "a failing procedure must raise";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.Database(), "TESTDBDB");
        EXPECT_TRUE(error.message().contains("quantity must be positive")) << error.message().toStdString();
        EXPECT_TRUE(error.message().contains("qal_new_order")) << error.message().toStdString();
    }
    EXPECT_EQ(savedOrders(), QStringList());
    EXPECT_FALSE(db_->InTransaction());

    proc_.ParamByName(u"@p_quantity").SetAsInteger(1); // the connection is still usable
    proc_.ExecProc();
    EXPECT_EQ(savedOrders(), QStringList({ "N1 HOUSE 1" }));
}

TEST_P(StoredProcTest, InsideATransactionTheProcedureIsUndoneWithIt)
{
    db_->StartTransaction();
    proc_.ExecProc();
    EXPECT_EQ(savedOrders(), QStringList({ "N1 HOUSE 100" }));
    db_->Rollback();
    EXPECT_EQ(savedOrders(), QStringList());
}

TEST_P(StoredProcTest, UnknownNamesRaise)
{
    EXPECT_THROW((void)proc_.ParamByName(u"@p_bogus"), DatabaseError);
    proc_.SetStoredProcName("qal_no_such_procedure");
    EXPECT_THROW(proc_.ExecProc(), DatabaseError);
    proc_.SetStoredProcName("qal_new_order(); drop table orders; --");
    EXPECT_THROW(proc_.ExecProc(), DatabaseError);
    EXPECT_EQ(savedOrders(), QStringList());
}

TEST_P(StoredProcTest, ABoundProcedureRunsOnItsDatabaseAndRaisesOnceItIsGone)
{
    auto own = database();
    TStoredProc bound(*own);
    bound.SetStoredProcName("qal_new_order");
    for (int i = 0; i < proc_.Params().Count(); ++i) {
        const qal::TParam& declared = proc_.Params().Items(i);
        bound.Params().CreateParam(declared.DataType(), declared.Name(), declared.ParamType());
    }
    bound.ParamByName(u"@p_account").SetAsString("HOUSE");
    bound.ParamByName(u"@p_quantity").SetAsInteger(100);
    bound.ParamByName(u"@p_price").SetAsFloat(1.5);
    bound.ParamByName(u"@p_order_no").SetAsString("B1");
    bound.ExecProc();
    EXPECT_EQ(savedOrders(), QStringList({ "B1 HOUSE 100" }));

    own.reset();
    bound.ParamByName(u"@p_order_no").SetAsString("B2");
    try {
        bound.ExecProc();
        FAIL() << "a procedure whose database is gone must raise";
    } catch (const DatabaseError& error) {
        EXPECT_EQ(error.Database(), "TESTDBDB");
        EXPECT_TRUE(error.What().contains("deleted")) << error.message().toStdString();
    }
    EXPECT_EQ(savedOrders(), QStringList({ "B1 HOUSE 100" }));
}

TEST(ParamDefinitions, NameTypesAndDirectionsAsDefinitionFilesSpellThem)
{
    EXPECT_EQ(qal::FieldTypeFromName(u"ftDateTime"), qal::TFieldType::ftDateTime);
    EXPECT_EQ(qal::FieldTypeFromName(u" ftstring "), qal::TFieldType::ftString);
    EXPECT_EQ(qal::FieldTypeFromName(u"ftNoSuchType"), qal::TFieldType::ftUnknown);
    EXPECT_EQ(qal::ParamTypeFromName(u"ptInputOutput"), qal::TParamType::ptInputOutput);
    EXPECT_EQ(qal::ParamTypeFromName(u"ptSideways"), qal::TParamType::ptUnknown);
    for (int type = 0; type <= int(qal::TFieldType::ftSingle); ++type)
        EXPECT_EQ(int(qal::FieldTypeFromName(qal::FieldTypeName(qal::TFieldType(type)))), type);
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, StoredProcTest, testing::Values(Driver::Sqlite, Driver::Postgres), qal::test::driverName);

} // namespace
