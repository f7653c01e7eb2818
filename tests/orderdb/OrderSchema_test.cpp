// SPDX-License-Identifier: MIT
// The order database's schema and "sp_insert_new_order" on SQLite and on a
// real PostgreSQL server: the installer runs twice without harm, the loaders'
// and the logon's SQL finds every column it reads, and the procedure numbers,
// stamps, keeps given numbers, fills defaults and writes nothing of an order
// that breaks a constraint. The procedure is driven as the desk drives it:
// parameters declared from the shipped STORPROC.INI.
#include "qalpack/orderdb/OrderSchema.h"

#include <memory>
#include <optional>
#include <utility>

#include <QDateTime>
#include <QFileInfo>
#include <QString>
#include <QStringList>

#include <gtest/gtest.h>

#include "qalpack/db/Database.h"
#include "qalpack/db/DatabaseError.h"
#include "qalpack/db/Query.h"
#include "qalpack/db/Session.h"
#include "qalpack/db/StoredProc.h"
#include "qalpack/orderdb/omsDBTools.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/SourceTree.h"

namespace {

using qal::DatabaseError;
using qal::TDatabase;
using qal::TQuery;
using qal::TSession;
using qal::TStoredProc;
using qal::test::DatabaseTest;
using qal::test::Driver;

// The shipped configuration directory, found from this source file.
QString configDir()
{
    return qal::test::sourcePath(QStringLiteral("config"));
}

class OrderSchemaTest : public DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        TSession::Default().AddAlias(QStringLiteral("OMSINI"), QStringLiteral("STANDARD"),
            { QStringLiteral("PATH=") + QFileInfo(configDir()).canonicalFilePath() });
        db_ = database();
        db_->Open();
    }

    void TearDown() override
    {
        db_.reset();
        DatabaseTest::TearDown();
    }

    TDatabase& db() { return *db_; }

    // A stored procedure on the test database whose parameters come from
    // the shipped STORPROC.INI, as the desk prepares it.
    std::unique_ptr<TStoredProc> newOrderProc()
    {
        auto proc = std::make_unique<TStoredProc>();
        proc->SetDatabaseName(db_->DatabaseName());
        proc->SetStoredProcName(QStringLiteral("sp_insert_new_order"));
        qal::PrepareStoredProc(QStringLiteral("sp_insert_new_order"), *proc);
        return proc;
    }

    // A plain buy order with only the always-sent parameters set.
    std::unique_ptr<TStoredProc> buyOrder(const QString& account = QStringLiteral("A1001"))
    {
        auto proc = newOrderProc();
        proc->ParamByName(u"@m_account").SetAsString(account);
        proc->ParamByName(u"@m_symbol").SetAsString(QStringLiteral("0700.HK"));
        proc->ParamByName(u"@m_order_type").SetAsInteger(0);
        proc->ParamByName(u"@m_quantity").SetAsInteger(200);
        proc->ParamByName(u"@m_limit_price").SetAsFloat(612.5);
        proc->ParamByName(u"@m_user_no").SetAsString(QStringLiteral("D001"));
        return proc;
    }

    qint64 count(const QString& sql)
    {
        TQuery query;
        query.SetDatabaseName(db_->DatabaseName());
        query.SQL().Add(sql);
        query.Open();
        return query.Fields(0).AsLargeInt();
    }

    qint64 orderCount() { return count(QStringLiteral("select count(*) from OMSTrade_File")); }

    // The query is open on the order's row.
    std::unique_ptr<TQuery> orderRow(const QString& orderNo)
    {
        auto query = std::make_unique<TQuery>();
        query->SetDatabaseName(db_->DatabaseName());
        query->SQL().Add(QStringLiteral("select * from OMSTrade_File where Order_No = :no"));
        query->ParamByName(u"no").SetAsString(orderNo);
        query->Open();
        return query;
    }

private:
    std::unique_ptr<TDatabase> db_;
};

TEST_P(OrderSchemaTest, CreatesEveryTableAndRunsAgainWithoutTouchingRows)
{
    EXPECT_TRUE(qal::OrderTableRowCounts(db()).empty());
    qal::CreateOrderSchema(db());
    db().Execute(
        QStringLiteral("insert into User_File (User_No, Full_name) values ('D001', 'Chan Tai Man')"));

    ASSERT_NO_THROW(qal::CreateOrderSchema(db()));
    const std::vector<qal::TOrderTableRows> counts = qal::OrderTableRowCounts(db());
    ASSERT_EQ(counts.size(), std::size_t(qal::OrderSchemaTables().size()));
    for (const qal::TOrderTableRows& table : counts)
        EXPECT_EQ(table.rows, table.table == u"User_File" ? 1 : 0) << table.table.toStdString();
    EXPECT_FALSE(db().InTransaction());
}

TEST_P(OrderSchemaTest, InstallsInsideTheCallersTransactionAndRollsBackWithIt)
{
    db().StartTransaction();
    qal::CreateOrderSchema(db());
    EXPECT_TRUE(db().InTransaction());
    db().Rollback();
    EXPECT_TRUE(qal::OrderTableRowCounts(db()).empty());
}

// Every query that the loaders and the logon run, with the columns their
// readers take from it. Mixed case, list joins and the left join all have
// to work as written.
struct ReaderQuery
{
    const char* name;
    QStringList sql;
    QStringList columns;
};

std::vector<ReaderQuery> readerQueries()
{
    const QStringList order { "Order_No", "Account", "Order_Type", "Symbol", "Quantity", "Limit_Price",
        "User_No", "Hedge", "Origin", "Fill", "short_sell", "instruction", "instruction1", "price1", "price2",
        "price4", "operatorflag", "DateTime_Modified", "DateTime_Created", "working", "creditchange",
        "netproceed", "reference", "Exchange", "Original_no", "BasketID", "WaveID", "SystemRef",
        "approvalChange", "approvalApplied", "approvalID", "rejectID", "Message", "currency", "held",
        "reqStatus", "CompSystemRef", "Status", "StatusFlags" };
    const QStringList exch { "Order_No", "Exch_No", "Account", "Order_Type", "Symbol", "Quantity", "Price",
        "user_no", "Hedge", "Origin", "Shortsell", "DateTime_Modified", "DateTime_Created", "Exchange",
        "ExchangeDest", "remark", "Status" };
    const QStringList trade { "Exch_No", "Tran_No", "Account", "Symbol", "Quantity", "Trans_Price", "user_no",
        "Order_Type", "Hedge", "Origin", "Shortsell", "Trade_Type", "BrokerID", "DateTime_Created",
        "Status" };
    const QStringList exchOrders {
        "select e.*, o.Order_Type from Exch_File e, OMSTrade_File o where e.Order_No "
        "= o.Order_No "
    };
    return {
        { "orders", { "select * from OMSTrade_File", "order by Order_No " }, order },
        { "exchange orders", exchOrders + QStringList { "order by e.order_no, e.datetime_created " }, exch },
        { "trades", { "select * from Trans_File", "order by DateTime_Created " }, trade },
        { "user orders",
            { "select * from OMSTrade_File ",
                "where user_no in ('D001','D002') or runner in ('D001','D002') ", "order by Order_No " },
            order },
        { "user requests", { "select * from omsREQ ", "where user_no in ('D001') ", "order by req_No " },
            { "Order_No", "Account", "Order_Type", "Symbol", "Quantity", "Limit_Price", "User_No", "command",
                "lastuser", "DateTime_Modified", "DateTime_Created", "instruction", "instruction1", "req_No",
                "Exchange", "Message", "operatorflag", "SystemRef", "Short_sell" } },
        { "user exchange orders",
            exchOrders
                + QStringList { "and (e.user_no in ('D001') or o.runner in ('D001'))",
                    "order by e.order_no, e.datetime_created " },
            exch },
        { "user trades",
            { "select * from Trans_File ", "where user_no in ('D009') ",
                " OR exch_no IN (SELECT e.exch_no FROM exch_file e, OMSTrade_file o WHERE e.order_no = "
                "o.order_no AND o.runner IN ('D002'))",
                "order by DateTime_Created " },
            trade },
        { "orders by exchange",
            { "select * from OMSTrade_File ", "where exchange in ('SEHK') ", "order by Order_No " }, order },
        { "exchange orders by exchange",
            exchOrders
                + QStringList { "and o.exchange in ('SEHK') ", "order by e.order_no, e.datetime_created " },
            exch },
        { "trades by exchange",
            { "select e.exchange, t.* from trans_file t left join exch_file e on t.exch_no = e.exch_no ",
                "where e.exchange in ('SEHK') ", "order by t.DateTime_Created " },
            trade + QStringList { "exchange" } },
        { "futures requests by exchange",
            { "select * from mftsorder_state ", "where exchange in ('HKFE') ", "order by datetime_created " },
            { "Order_No", "SubOrderNo", "Account", "Order_Type", "Symbol", "Quantity", "Price", "user_no",
                "Hedge", "Origin", "Last_Operation", "Shortsell", "DateTime_Modified", "DateTime_Created",
                "Exchange", "ExchangeDest", "Status" } },
        { "manual exchange orders",
            { "select e.*, o.Order_Type, t.trade_type from Exch_File e, OMSTrade_File o, trans_file t where "
              "e.Order_No = o.Order_No and t.exch_no = e.exch_no and t.trade_type <> 0 order by e.order_no, "
              "e.datetime_created " },
            { "Order_No", "Exch_No", "Account", "Order_Type", "Symbol", "Quantity", "Price", "user_no",
                "Hedge", "Origin", "Shortsell", "DateTime_Modified", "Exchange", "trade_type", "Status" } },
        { "manual trades",
            { "select trans_file.*, exch_file.exchange",
                "from exch_file, trans_file where trans_file.trade_type <> 0",
                "and trans_file.exch_no = exch_file.exch_no", "order by trans_file.DateTime_Created" },
            trade + QStringList { "exchange" } },
        { "logon user", { "Select * from User_File where User_No = 'D001'" },
            { "Full_name", "AdminUser", "member", "DummyAc", "Active" } },
        { "logon entitlements",
            { "Select * from AccountEntitle where account = 'D001' and UserType = 0 and Enabled = 1" },
            { "EntitlementID" } },
        { "exchange destinations", { "Select * from orsconfig" }, { "Exch_dest" } },
    };
}

TEST_P(OrderSchemaTest, LoadersAndLogonFindEveryColumnTheyRead)
{
    qal::CreateOrderSchema(db());
    db().Execute(QStringLiteral(
        "insert into OMSTrade_File (Order_No, Account, Order_Type, Symbol, Quantity, Limit_Price, User_No, "
        "Runner, Exchange, DateTime_Created, DateTime_Modified, Status) values ('00000001', 'A1001', 1, "
        "'0005.HK', 400, 98.35, 'D001', 'D002', 'SEHK', '2026-11-18 09:31:05.250', '2026-11-18 10:02:00', "
        "'Comp');"
        "insert into Exch_File (Exch_No, Order_No, Account, Symbol, Quantity, Price, User_No, Exchange, "
        "Status, DateTime_Created) values ('E0000001', '00000001', 'A1001', '0005.HK', 400, 98.35, 'D001', "
        "'SEHK', 'Comp', '2026-11-18 09:31:06');"
        "insert into Trans_File (Tran_No, Exch_No, Account, Symbol, Quantity, Trans_Price, User_No, "
        "Order_Type, Trade_Type, Status, DateTime_Created) values ('T0000001', 'E0000001', 'A1001', "
        "'0005.HK', 400, 98.35, 'D009', 1, 2, 'Comp', '2026-11-18 09:45:00');"
        "insert into omsREQ (req_No, Order_No, Account, Symbol, Quantity, User_No, command) values "
        "('R0000001', '00000001', 'A1001', '0005.HK', 400, 'D001', 'CANCEL');"
        "insert into mftsorder_state (Order_No, SubOrderNo, Account, Symbol, Quantity, Price, User_No, "
        "Exchange, Status) values ('F0000001', '1', 'F2001', 'HSIZ6', 2, 25810, 'D003', 'HKFE', 'Pend');"
        "insert into User_File (User_No, Full_name, AdminUser, member, Active) values ('D001', 'Chan Tai "
        "Man', 0, 'D002,D003', true);"
        "insert into AccountEntitle (account, UserType, EntitlementID) values ('D001', 0, 'SEHKTrade');"
        "insert into orsconfig (Seq, Exch_dest, Exchange) values (1, 'SEHK', 'SEHK')"));

    for (const ReaderQuery& reader : readerQueries()) {
        SCOPED_TRACE(reader.name);
        TQuery query;
        query.SetDatabaseName(db().DatabaseName());
        for (const QString& line : reader.sql)
            query.SQL().Add(line);
        ASSERT_NO_THROW(query.Open());
        EXPECT_FALSE(query.Eof());
        for (const QString& column : reader.columns)
            EXPECT_NE(query.FindField(column), nullptr) << column.toStdString();
    }
}

TEST_P(OrderSchemaTest, TimesReadBackAsTimesAndFlagsAsTruthValues)
{
    qal::CreateOrderSchema(db());
    db().Execute(QStringLiteral("insert into OMSTrade_File (Order_No, Account, Symbol, Quantity, "
                                "DateTime_Created) values ('00000001', "
                                "'A1001', '0005.HK', 400, '2026-11-18 14:05:09.250');"
                                "insert into User_File (User_No, Active) values ('D001', false)"));
    TQuery order;
    order.SetDatabaseName(db().DatabaseName());
    order.SQL().Add(QStringLiteral("select * from OMSTrade_File"));
    order.Open();
    qal::TField& created = order.FieldByName(u"DateTime_Created");
    created.SetDisplayFormat(QStringLiteral("hh:nn:ss"));
    EXPECT_EQ(created.DisplayText(), u"14:05:09");
    EXPECT_EQ(created.AsDateTime().time().msec(), 250);
    // Left to the columns' defaults: a price of 0, no fill.
    EXPECT_EQ(order.FieldByName(u"Limit_Price").AsFloat(), 0.0);
    EXPECT_TRUE(order.FieldByName(u"Fill").IsNull());

    TQuery user;
    user.SetDatabaseName(db().DatabaseName());
    user.SQL().Add(QStringLiteral("select * from User_File"));
    user.Open();
    EXPECT_FALSE(user.FieldByName(u"Active").AsBoolean());
    EXPECT_FALSE(user.FieldByName(u"Active").IsNull());
}

TEST_P(OrderSchemaTest, NewOrderGetsTheNextNumberAndTheServersTime)
{
    qal::CreateOrderSchema(db());
    const QDateTime before = QDateTime::currentDateTime().addSecs(-2);
    auto first = buyOrder();
    first->ExecProc();
    auto second = buyOrder();
    second->ExecProc();
    const QDateTime after = QDateTime::currentDateTime().addSecs(2);

    EXPECT_EQ(first->ParamByName(u"@m_order_no").AsString(), u"00000001");
    EXPECT_EQ(second->ParamByName(u"@m_order_no").AsString(), u"00000002");
    const QDateTime stamp = first->ParamByName(u"@m_createtime").AsDateTime();
    EXPECT_GE(stamp, before);
    EXPECT_LE(stamp, after);

    const auto row = orderRow(QStringLiteral("00000001"));
    ASSERT_FALSE(row->Eof());
    EXPECT_EQ(row->FieldByName(u"DateTime_Created").AsDateTime(), stamp);
    EXPECT_EQ(row->FieldByName(u"DateTime_Modified").AsDateTime(), stamp);
    EXPECT_EQ(row->FieldByName(u"Account").AsString(), u"A1001");
    EXPECT_EQ(row->FieldByName(u"Limit_Price").AsFloat(), 612.5);
}

TEST_P(OrderSchemaTest, OrderWithANumberKeepsItAndNumberingStepsOverTakenOnes)
{
    qal::CreateOrderSchema(db());
    auto given = buyOrder();
    given->ParamByName(u"@m_order_no").SetAsString(QStringLiteral("00000001"));
    given->ExecProc();
    EXPECT_EQ(given->ParamByName(u"@m_order_no").AsString(), u"00000001");
    EXPECT_FALSE(given->ParamByName(u"@m_createtime").IsNull());

    auto server = buyOrder();
    server->ParamByName(u"@m_order_no").SetAsString(QStringLiteral("HK-77"));
    server->ExecProc();
    EXPECT_EQ(server->ParamByName(u"@m_order_no").AsString(), u"HK-77");

    auto fresh = buyOrder();
    fresh->ExecProc();
    EXPECT_EQ(fresh->ParamByName(u"@m_order_no").AsString(), u"00000002");
    EXPECT_EQ(orderCount(), 3);
}

TEST_P(OrderSchemaTest, UnsetParametersTakeTheServersDefaults)
{
    qal::CreateOrderSchema(db());
    auto proc = newOrderProc();
    proc->ParamByName(u"@m_account").SetAsString(QStringLiteral("A1001"));
    proc->ParamByName(u"@m_symbol").SetAsString(QStringLiteral("0005.HK"));
    proc->ParamByName(u"@m_quantity").SetAsInteger(400);
    proc->ExecProc();

    const auto row = orderRow(proc->ParamByName(u"@m_order_no").AsString());
    ASSERT_FALSE(row->Eof());
    const std::pair<const char16_t*, const char16_t*> expected[]
        = { { u"Status", u"Pend" }, { u"operatorflag", u"C" }, { u"Order_Type", u"0" },
              { u"Limit_Price", u"0" }, { u"Fill", u"0" }, { u"Open_Close", u"0" }, { u"short_sell", u"0" },
              { u"instruction", u"0" }, { u"price1", u"0" }, { u"price2", u"0" }, { u"Hedge", u"0" },
              { u"Origin", u"0" }, { u"working", u"0" }, { u"netproceed", u"0" }, { u"creditchange", u"0" } };
    for (const auto& [column, value] : expected) {
        SCOPED_TRACE(QString::fromUtf16(column).toStdString());
        EXPECT_FALSE(row->FieldByName(column).IsNull());
        EXPECT_EQ(row->FieldByName(column).AsString(), QString::fromUtf16(value));
    }
    for (const char16_t* column :
        { u"User_No", u"reference", u"Exchange", u"Original_no", u"BasketID", u"WaveID", u"SystemRef" }) {
        EXPECT_TRUE(row->FieldByName(column).IsNull()) << QString::fromUtf16(column).toStdString();
    }
}

TEST_P(OrderSchemaTest, EverySetParameterLandsInItsColumn)
{
    qal::CreateOrderSchema(db());
    auto proc = buyOrder(QStringLiteral("A1002"));
    const std::pair<const char16_t*, QVariant> given[] = { { u"@m_status", QStringLiteral("Conf") },
        { u"@m_operatorflag", QStringLiteral("D") }, { u"@m_filled", 100 }, { u"@m_open_close", 1 },
        { u"@m_short_sell", 1 }, { u"@m_instruction", 512 }, { u"@m_price1", 610.0 }, { u"@m_price2", 615.5 },
        { u"@m_hedge", 1 }, { u"@m_origin", 2 }, { u"@m_working", 99.6 }, { u"@m_netproceed", -61250.25 },
        { u"@m_creditChange", 122500.0 }, { u"@m_reference", QStringLiteral("REF 8") },
        { u"@m_exchange", QStringLiteral("SEHK") }, { u"@m_original_no", QStringLiteral("00000007") },
        { u"@m_basket_id", QStringLiteral("B1") }, { u"@m_wave_id", QStringLiteral("W2") },
        { u"@m_system_ref", QStringLiteral("SYS-3") } };
    for (const auto& [name, value] : given)
        proc->ParamByName(name).SetValue(value);
    proc->ExecProc();

    const auto row = orderRow(proc->ParamByName(u"@m_order_no").AsString());
    ASSERT_FALSE(row->Eof());
    const std::pair<const char16_t*, const char16_t*> expected[]
        = { { u"Account", u"A1002" }, { u"Symbol", u"0700.HK" }, { u"Quantity", u"200" },
              { u"User_No", u"D001" }, { u"Status", u"Conf" }, { u"operatorflag", u"D" }, { u"Fill", u"100" },
              { u"Open_Close", u"1" }, { u"short_sell", u"1" }, { u"instruction", u"512" },
              { u"price1", u"610" }, { u"price2", u"615.5" }, { u"Hedge", u"1" }, { u"Origin", u"2" },
              { u"working", u"100" }, { u"netproceed", u"-61250.25" }, { u"creditchange", u"122500" },
              { u"reference", u"REF 8" }, { u"Exchange", u"SEHK" }, { u"Original_no", u"00000007" },
              { u"BasketID", u"B1" }, { u"WaveID", u"W2" }, { u"SystemRef", u"SYS-3" } };
    for (const auto& [column, value] : expected) {
        SCOPED_TRACE(QString::fromUtf16(column).toStdString());
        EXPECT_EQ(row->FieldByName(column).AsString(), QString::fromUtf16(value));
    }
}

// Each row breaks one rule of the order table; the save must fail and leave
// no trace of the order.
struct BadOrder
{
    const char* name;
    const char16_t* param;
    std::optional<QVariant> value; // none: left unset; an invalid QVariant: sent as null
};

TEST_P(OrderSchemaTest, ConstraintViolationLeavesNoHalfOrder)
{
    qal::CreateOrderSchema(db());
    auto existing = buyOrder();
    existing->ExecProc();
    const BadOrder cases[] = {
        { "zero quantity", u"@m_quantity", 0 },
        { "negative quantity", u"@m_quantity", -100 },
        { "no account", u"@m_account", std::nullopt },
        { "null account", u"@m_account", QVariant() },
        { "empty account", u"@m_account", QString() },
        { "empty symbol", u"@m_symbol", QStringLiteral("") },
        { "number taken", u"@m_order_no", QStringLiteral("00000001") },
    };
    for (const BadOrder& bad : cases) {
        SCOPED_TRACE(bad.name);
        auto proc = buyOrder();
        if (bad.value)
            proc->ParamByName(bad.param).SetValue(*bad.value);
        else
            proc->ParamByName(bad.param).Clear();
        EXPECT_THROW(proc->ExecProc(), DatabaseError);
        EXPECT_FALSE(db().InTransaction());
        EXPECT_EQ(orderCount(), 1);
    }
    auto next = buyOrder();
    next->ExecProc();
    // The embedded numbering is undone with the failed order; a server
    // sequence may leave gaps.
    if (driver() == Driver::Sqlite) {
        EXPECT_EQ(next->ParamByName(u"@m_order_no").AsString(), u"00000002");
    }
    EXPECT_EQ(orderCount(), 2);
}

TEST_P(OrderSchemaTest, ParameterTheProcedureDoesNotKnowIsRefused)
{
    qal::CreateOrderSchema(db());
    auto proc = buyOrder();
    proc->Params()
        .CreateParam(qal::TFieldType::ftString, QStringLiteral("@m_currency"), qal::TParamType::ptInput)
        .SetAsString(QStringLiteral("HKD"));
    EXPECT_THROW(proc->ExecProc(), DatabaseError);
    EXPECT_EQ(orderCount(), 0);
}

TEST_P(OrderSchemaTest, ClearingEmptiesEveryTableAndRestartsNumbering)
{
    qal::CreateOrderSchema(db());
    buyOrder()->ExecProc();
    buyOrder()->ExecProc();
    db().Execute(QStringLiteral("insert into Account_File (Account, User_No) values ('A1001', 'D001')"));

    qal::ClearOrderData(db());
    for (const qal::TOrderTableRows& table : qal::OrderTableRowCounts(db()))
        EXPECT_EQ(table.rows, 0) << table.table.toStdString();
    auto proc = buyOrder();
    proc->ExecProc();
    EXPECT_EQ(proc->ParamByName(u"@m_order_no").AsString(), u"00000001");
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, OrderSchemaTest, testing::Values(Driver::Sqlite, Driver::Postgres), qal::test::driverName);

} // namespace
