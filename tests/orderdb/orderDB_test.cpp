// SPDX-License-Identifier: MIT
// The day's orders, exchange orders, trades and requests loaded from the order
// database into records, and new orders saved through sp_insert_new_order, on
// SQLite and on PostgreSQL with the real order schema.
#include "qalpack/orderdb/orderDB.h"

#include <functional>
#include <memory>
#include <vector>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include "qalpack/db/Query.h"
#include "qalpack/db/SqliteBackend.h"
#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/omslib/omsLog.h"
#include "qalpack/orderdb/DatabaseAccess.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/profile/QalApplicationProfile.h"
#include "qalpack/runtime/StringList.h"
#include "tests/support/DatabaseFixture.h"
#include "tests/support/QtPrinters.h"
#include "tests/support/SourceTree.h"

namespace {

using namespace qal;
using qal::test::DatabaseTest;
using qal::test::Driver;

QString num(long double value)
{
    return QString::number(double(value));
}

// One column of a row: its SQL value and where the record shows it.
template<class Record>
struct ColumnCase
{
    const char* column;
    const char* sql;
    const char* expected;
    std::function<QString(const Record&)> read;
};

template<class Record>
QString insertStatement(const char* table, const std::vector<ColumnCase<Record>>& cases)
{
    QStringList columns, values;
    for (const auto& c : cases) {
        columns << QString::fromLatin1(c.column);
        values << QString::fromLatin1(c.sql);
    }
    return QStringLiteral("insert into %1 (%2) values (%3)")
        .arg(QLatin1String(table), columns.join(u','), values.join(u','));
}

template<class Record>
void expectColumns(const Record& record, const std::vector<ColumnCase<Record>>& cases)
{
    for (const auto& c : cases) {
        SCOPED_TRACE(c.column);
        EXPECT_EQ(c.read(record), QString::fromUtf8(c.expected));
    }
}

// The records a loader hands over, in order. `load` gets the receiver.
template<class Record, class Load>
std::vector<std::unique_ptr<Record>> loadAll(const Load& load)
{
    std::vector<std::unique_ptr<Record>> records;
    load([&records](std::unique_ptr<Record> r) { records.push_back(std::move(r)); });
    return records;
}

template<class Record, class Load, class Key>
QStringList keys(const Load& load, const Key& key)
{
    QStringList out;
    for (const auto& record : loadAll<Record>(load))
        out << key(*record);
    return out;
}

QString orderNo(const TomsOrder& o)
{
    return o.OmsOrder_No;
}

QString exchNo(const TexchOrder& e)
{
    return e.Order_No;
}

QString tradeAndExchange(const TomsTrade& t)
{
    return t.Order_No + ":" + t.Exch;
}

class OrderDBTest : public DatabaseTest
{
protected:
    void SetUp() override
    {
        DatabaseTest::SetUp();
        if (IsSkipped() || HasFatalFailure())
            return;
        resetUnits();
        ASSERT_TRUE(config_.isValid());
        // The order database is reached through the data map, with the login
        // the test server accepts.
        write("oms.ini",
            QStringLiteral("[OMS_DATAMAP]\nOMSDATA=ORDERS\n[ORDERS]\nDSN_Source=TESTDB\nDSN_user=%1\n"
                           "[DOWN]\nDSN_Source=DOWNDB\nDSN_user=%1\n")
                .arg(user()));
        QFile shipped(
            qal::test::sourcePath(QStringLiteral("config/STORPROC.INI")));
        ASSERT_TRUE(shipped.open(QIODevice::ReadOnly));
        write("STORPROC.INI", QString::fromUtf8(shipped.readAll()));
        savedOmsIni_ = qgetenv("OMS_INI");
        qputenv("OMS_INI", config_.filePath("oms.ini").toLocal8Bit());
        TSession::Default().AddAlias(QStringLiteral("OMSINI"), QStringLiteral("STANDARD"),
            { QStringLiteral("PATH=") + config_.path() });
        CreateOrderSchema(*database());
    }

    void TearDown() override
    {
        resetUnits();
        qputenv("OMS_INI", savedOmsIni_);
        DatabaseTest::TearDown();
    }

    static void resetUnits()
    {
        internal::ResetDatabaseAccess();
        internal::ResetApplicationProfile();
    }

    void write(const QString& name, const QString& text)
    {
        QFile file(config_.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
        file.write(text.toUtf8());
    }

    // Runs statements on a connection of their own, closed afterwards.
    void sql(const QStringList& statements) const
    {
        auto db = database();
        for (const QString& statement : statements)
            db->Execute(statement);
    }

    [[nodiscard]] int count(const QString& table) const
    {
        // A name of its own, so the count never runs on the connection under test.
        auto db = database();
        db->SetDatabaseName(QStringLiteral("COUNTDB"));
        db->Open();
        TQuery query;
        query.SetDatabaseName(db->DatabaseName());
        query.SQL().Add(QStringLiteral("select count(*) as n from ") + table);
        query.Open();
        return query.FieldByName(u"n").AsInteger();
    }

    // A small day: three client orders of two dealers, one run for another,
    // their exchange orders and trades (one booked by hand), requests and
    // futures request states. Rows are inserted out of the loaders' order.
    void seedDay() const
    {
        sql({
            "insert into OMSTrade_File (Order_No, Account, Order_Type, Symbol, Quantity, User_No, Runner, "
            "Exchange, Status) values "
            "('03', 'A3', 0, '0005.HK', 300, 'O''Hara', null, 'SEHK', 'Pend'),"
            "('01', 'A1', 0, '0005.HK', 100, 'D001', null, 'SEHK', 'Pend'),"
            "('02', 'A2', 1, 'HSIH4', 200, 'D002', 'D001', 'HKFE', 'Part'),"
            "('04', 'A4', 0, '0011.HK', 400, '', null, 'SEHK', 'Pend')",
            "insert into Exch_File (Exch_No, Order_No, Quantity, User_No, Exchange, DateTime_Created) values "
            "('E3', '03', 300, 'O''Hara', 'SEHK', '2024-03-01 09:00:00'),"
            "('E1b', '01', 60, 'D001', 'SEHK', '2024-03-01 09:30:00'),"
            "('E1a', '01', 40, 'D001', 'SEHK', '2024-03-01 09:20:00'),"
            "('E2', '02', 200, 'D002', 'HKFE', '2024-03-01 09:10:00')",
            "insert into Trans_File (Tran_No, Exch_No, Quantity, User_No, Trade_Type, DateTime_Created) "
            "values "
            "('T3', 'E3', 300, 'O''Hara', 0, '2024-03-01 10:03:00'),"
            "('T2', 'E2', 50, 'D002', 0, '2024-03-01 10:02:00'),"
            "('T1', 'E1a', 40, 'D001', 0, '2024-03-01 10:01:00'),"
            "('T9', 'E2', 10, 'D002', 2, '2024-03-01 10:00:00')",
            "insert into omsREQ (req_No, User_No) values ('R3', 'O''Hara'), ('R1', 'D001')",
            "insert into mftsorder_state (Order_No, SubOrderNo, Exchange, Status, DateTime_Created) values "
            "('M2', '1', 'SEHK', 'Pend', '2024-03-01 11:00:00'),"
            "('M1', '2', 'HKFE', 'Comp', '2024-03-01 10:30:00'),"
            "('M1', '1', 'HKFE', 'Pend', '2024-03-01 10:00:00')",
        });
    }

private:
    QTemporaryDir config_;
    QByteArray savedOmsIni_;
};

// --- quoting ------------------------------------------------------------

TEST(FormatStringListAsQuotedString, QuotesEachValueAndDoublesQuotesInside)
{
    const std::pair<QStringList, const char*> cases[] = {
        { {}, "''" },
        { { "D001", "D002" }, "'D001','D002'" },
        { { "O'Hara" }, "'O''Hara'" },
        { { "x') or ('1'='1" }, "'x'') or (''1''=''1'" },
    };
    for (const auto& [values, expected] : cases) {
        SCOPED_TRACE(expected);
        TStringList strings;
        TElHashList<int> hashed;
        for (const QString& value : values) {
            strings.Add(value);
            hashed.AddItem(value, 0);
        }
        EXPECT_EQ(FormatStringListAsQuotedString(&strings), QString::fromUtf8(expected));
        EXPECT_EQ(FormatStringListAsQuotedString(&hashed), QString::fromUtf8(expected));
    }
    EXPECT_EQ(FormatStringListAsQuotedString(static_cast<const TStringList*>(nullptr)), u"''");
}

// The columns whose way into the record is more than a plain store: times,
// status texts, lists, attributes, and numbers that land in a field of
// another name.
TEST_P(OrderDBTest, ReadersConvertColumnsIntoTheirFields)
{
    using O = TomsOrder;
    const std::vector<ColumnCase<O>> orderCases = {
        { "Order_No", "'00000007'", "00000007", [](const O& o) { return o.OmsOrder_No; } },
        { "Account", "'AC1'", "AC1", [](const O& o) { return o.Account; } },
        { "Order_Type", "1", "1", [](const O& o) { return num(o.Side); } },
        { "Symbol", "'0005.HK'", "0005.HK", [](const O& o) { return o.Symbol; } },
        { "Quantity", "4000", "4000", [](const O& o) { return num(o.Quantity); } },
        { "Limit_Price", "81.25", "81.25", [](const O& o) { return num(o.Price); } },
        { "Hedge", "2", "2", [](const O& o) { return num(o.Field47); } },
        { "instruction1", "8", "8", [](const O& o) { return num(o.Option489); } },
        { "price4", "78.5", "78.5", [](const O& o) { return num(o.Price494); } },
        { "DateTime_Modified", "'2024-03-01 14:05:09'", "14:05:09",
            [](const O& o) { return o.Last_MOD_Time; } },
        { "DateTime_Created", "'2024-03-01 09:31:05.250'", "09:31:05",
            [](const O& o) { return o.Order_Time501; } },
        { "Original_no", "'00000001'", "00000001", [](const O& o) { return o.GetOriginalOrderNum(); } },
        { "held", "5.5", "5.5", [](const O& o) { return num(o.Held); } },
        { "CompSystemRef", "'S2,S3'", "S2|S3",
            [](const O& o) { return o.CompSysRef.toQStringList().join(u'|'); } },
        { "Status", "'Part Canc'", "2", [](const O& o) { return num(o.Status); } },
        { "StatusFlags", "9", "9", [](const O& o) { return num(o.StatusFlags); } },
    };
    // Exchange orders and trades: the columns the blotter tool's tests do not show.
    using E = TexchOrder;
    const std::vector<ColumnCase<E>> exchCases = {
        { "Exch_No", "'E1'", "E1", [](const E& e) { return e.Order_No; } },
        { "Order_No", "'00000007'", "00000007", [](const E& e) { return e.OmsOrder_No; } },
        { "Origin", "12", "12", [](const E& e) { return num(e.PrincipalType); } },
        { "ExchangeDest", "'XHKG'", "XHKG", [](const E& e) { return e.Attributes.Values("ExchangeDest"); } },
        { "Remark", "'first leg'", "first leg", [](const E& e) { return e.Remark; } },
    };
    using T = TomsTrade;
    const std::vector<ColumnCase<T>> tradeCases = {
        { "Tran_No", "'T1'", "T1", [](const T& t) { return t.Order_No; } },
        { "Exch_No", "'E1'", "E1", [](const T& t) { return t.Exch_No; } },
        { "Quantity", "400", "400", [](const T& t) { return num(t.Fill_Qty); } },
        { "Origin", "13", "13", [](const T& t) { return num(t.Principal); } },
        { "Trade_Type", "2", "2", [](const T& t) { return num(t.TradeType); } },
    };
    sql({ insertStatement("OMSTrade_File", orderCases), insertStatement("Exch_File", exchCases),
        insertStatement("Trans_File", tradeCases) });

    const auto orders = loadAll<TomsOrder>([](auto r) { orderLoadOrders(r); });
    ASSERT_EQ(orders.size(), 1u);
    expectColumns(*orders[0], orderCases);
    const auto exch = loadAll<TexchOrder>([](auto r) { orderLoadExchOrders(r); });
    ASSERT_EQ(exch.size(), 1u);
    expectColumns(*exch[0], exchCases);
    EXPECT_EQ(exch[0]->Side, 1) << "the side is the client order's";
    const auto trades = loadAll<TomsTrade>([](auto r) { orderLoadTrades(r); });
    ASSERT_EQ(trades.size(), 1u);
    expectColumns(*trades[0], tradeCases);
}

TEST_P(OrderDBTest, GuardedNullColumnsKeepTheFactorysValues)
{
    sql({ "insert into OMSTrade_File (Order_No, Account, Symbol, Quantity, User_No, Status) values "
          "('01', 'A1', '0005.HK', 100, null, 'Pend')" });
    auto factory = [] {
        auto o = std::make_unique<TomsOrder>();
        o->Fill_Qty = 11;
        o->StopPrice = 1.5;
        o->Exch = "XXXX";
        o->Held = 2.5;
        o->User = "U"; // User_No is not guarded: a null clears it
        return o;
    };
    const auto loaded = loadAll<TomsOrder>([&](auto r) { orderLoadOrders(r, factory); });
    ASSERT_EQ(loaded.size(), 1u);
    const TomsOrder& o = *loaded[0];
    EXPECT_EQ(o.Fill_Qty, 11);
    EXPECT_EQ(o.StopPrice, 1.5L);
    EXPECT_EQ(o.Exch, u"XXXX");
    EXPECT_EQ(o.Held, 2.5L);
    EXPECT_EQ(o.User, u"");
    EXPECT_EQ(o.Status, StatusPending);
}

TEST_P(OrderDBTest, MissingOptionalColumnsAreToleratedAndMissingRequiredOnesRaise)
{
    seedDay();
    sql({ "alter table OMSTrade_File drop column StatusFlags", "alter table Exch_File drop column Remark" });
    auto presetFlags = [] {
        auto o = std::make_unique<TomsOrder>();
        o->StatusFlags = 5;
        return o;
    };
    const auto orders = loadAll<TomsOrder>([&](auto r) { orderLoadOrders(r, presetFlags); });
    ASSERT_EQ(orders.size(), 4u);
    EXPECT_EQ(orders[0]->StatusFlags, 5);
    EXPECT_EQ(loadAll<TexchOrder>([](auto r) { orderLoadExchOrders(r); }).size(), 4u);

    // A column the reader needs raises, naming it, before any record.
    sql({ "alter table omsREQ drop column lastuser" });
    int received = 0;
    try {
        internal::LoadUserRequests([&received](auto) { ++received; }, {}, std::nullopt);
        ADD_FAILURE() << "no exception";
    } catch (const DatabaseError& error) {
        EXPECT_TRUE(error.message().contains(u"lastuser")) << error.message().toStdString();
    }
    EXPECT_EQ(received, 0);
    // Without rows no column is needed.
    sql({ "delete from omsREQ" });
    EXPECT_NO_THROW(internal::LoadUserRequests({}, {}, std::nullopt));
}

// --- which rows, in which order -------------------------------------------

// The unfiltered loaders' order shows in the user filters' "all users" case.
TEST_P(OrderDBTest, EveryLoaderDeliversItsRowsInTheQuerysOrder)
{
    seedDay();
    TStringList sehk, hkfe;
    sehk.Add("SEHK");
    hkfe.Add("HKFE");
    const struct
    {
        const char* name;
        QStringList loaded;
        QStringList expected;
    } cases[] = {
        { "trades by creation", keys<TomsTrade>([](auto r) { orderLoadTrades(r); }, tradeAndExchange),
            { "T9:", "T1:", "T2:", "T3:" } },
        { "SEHK orders", keys<TomsOrder>([&](auto r) { orderLoadOrdersByExchange(r, {}, &sehk); }, orderNo),
            { "01", "03", "04" } },
        { "no exchange list matches no row",
            keys<TomsOrder>([](auto r) { orderLoadOrdersByExchange(r, {}, nullptr); }, orderNo), {} },
        { "HKFE exchange orders, by the client order's exchange",
            keys<TexchOrder>([&](auto r) { orderLoadExchOrdersByExchange(r, {}, &hkfe); }, exchNo),
            { "E2" } },
        { "HKFE trades carry the exchange order's exchange",
            keys<TomsTrade>([&](auto r) { orderLoadTradesByExchange(r, &hkfe); }, tradeAndExchange),
            { "T9:HKFE", "T2:HKFE" } },
        { "exchange orders with a manual trade carry its trade type",
            keys<TexchOrder>([](auto r) { orderLoadManuExches(r); },
                [](const TexchOrder& e) { return e.Order_No + ":" + num(e.Field43); }),
            { "E2:2" } },
        { "manual trades with their exchange",
            keys<TomsTrade>([](auto r) { orderLoadManuTrades(r); }, tradeAndExchange), { "T9:HKFE" } },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(c.loaded, c.expected);
    }
}

TEST_P(OrderDBTest, UserFiltersMatchUserOrRunnerAndKeepQuotesInsideTheValue)
{
    seedDay();
    using Users = TElHashList<int>;
    // Orders, exchange orders, trades and requests, in that order.
    auto load = [](bool all, const Users* users) {
        return keys<TomsOrder>([&](auto r) { orderLoadUserOrders(r, {}, all, users); }, orderNo)
            + keys<TexchOrder>([&](auto r) { orderLoadUserExchOrders(r, {}, all, users); }, exchNo)
            + keys<TomsTrade>([&](auto r) { orderLoadUserTrades(r, all, users); },
                [](const TomsTrade& t) { return t.Order_No; })
            + keys<TomsOrder>([&](auto r) { orderLoadUserRequests(r, {}, all, users); },
                [](const TomsOrder& o) { return o.reqNum; });
    };
    auto users = [](std::initializer_list<const char*> ids) {
        auto list = std::make_unique<Users>();
        for (const char* id : ids)
            list->AddItem(QString::fromUtf8(id), 0);
        return list;
    };
    const struct
    {
        const char* name;
        bool allUsers;
        std::unique_ptr<Users> users;
        QStringList expected;
    } cases[] = {
        { "all users, no list", true, nullptr,
            { "01", "02", "03", "04", "E1a", "E1b", "E2", "E3", "T9", "T1", "T2", "T3", "R1", "R3" } },
        { "no list loads nothing", false, nullptr, {} },
        { "empty list matches the empty user only", false, users({}), { "04" } },
        { "a dealer sees what he entered and what he runs", false, users({ "D001" }),
            { "01", "02", "E1a", "E1b", "E2", "T9", "T1", "T2", "R1" } },
        { "a quote in the user id", false, users({ "O'Hara" }), { "03", "E3", "T3", "R3" } },
        { "an injection attempt is just a user id", false, users({ "x') or ('1'='1" }), {} },
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        EXPECT_EQ(load(c.allUsers, c.users.get()), c.expected);
    }
}

TEST_P(OrderDBTest, FuturesRequestsSkipMarkedRecordsAndDecodeTheirStatus)
{
    seedDay();
    TStringList exchanges;
    exchanges.Add("HKFE");
    exchanges.Add("SEHK");
    int made = 0;
    auto factory = [&made] {
        auto o = std::make_unique<TomsOrder>();
        if (++made == 2)
            o->LoadMarker = TomsOrder::kSkipOnLoad;
        return o;
    };
    EXPECT_EQ(
        keys<TomsOrder>([&](auto r) { orderLoadMFTSReqByExchange(r, factory, &exchanges); },
            [](const TomsOrder& o) { return o.OmsOrder_No + "/" + o.SubOrderNo + ":" + num(o.Status); }),
        (QStringList { "M1/1:1", "M2/1:1" }));
    EXPECT_EQ(made, 3);
}

TEST_P(OrderDBTest, ReceiverAndFactoryMayBeUnset)
{
    seedDay();
    int made = 0;
    orderLoadOrders({}, [&made] {
        ++made;
        return std::make_unique<TomsOrder>();
    });
    orderLoadExchOrders({});
    orderLoadTrades({});
    EXPECT_EQ(made, 4); // and LeakSanitizer finds none of them left
    EXPECT_THROW(orderLoadOrders({}, [] { return std::unique_ptr<TomsOrder>(); }), Error);
}

// --- saving ---------------------------------------------------------------

std::unique_ptr<TomsOrder> newOrder()
{
    auto order = std::make_unique<TomsOrder>();
    order->Account = "A1";
    order->Symbol = "0005.HK";
    order->Side = 1;
    order->Quantity = 4000;
    order->Price = 81.25;
    order->User = "D001";
    order->Status = StatusPending;
    return order;
}

bool isClockTime(const QString& text)
{
    static const QRegularExpression clock(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d$"));
    return clock.match(text).hasMatch();
}

TEST_P(OrderDBTest, SaveNumbersNewOrdersKeepsGivenNumbersAndLoadsBackAsSaved)
{
    auto first = newOrder();
    auto second = newOrder();
    auto numbered = newOrder();
    numbered->OmsOrder_No = "X0001";
    numbered->Order_Time501 = "08:00:00";
    for (TomsOrder* order : { first.get(), second.get(), numbered.get() }) {
        orderSaveOrder(*order);
        EXPECT_EQ(order->ErrorCode, 0) << order->Message.toStdString();
        EXPECT_TRUE(isClockTime(order->Last_MOD_Time)) << order->Last_MOD_Time.toStdString();
    }
    EXPECT_FALSE(first->OmsOrder_No.isEmpty());
    EXPECT_NE(first->OmsOrder_No, second->OmsOrder_No);
    EXPECT_EQ(first->Order_Time501, first->Last_MOD_Time);
    EXPECT_EQ(numbered->OmsOrder_No, u"X0001");
    EXPECT_EQ(numbered->Order_Time501, u"08:00:00");

    const auto loaded = loadAll<TomsOrder>([](auto r) { orderLoadOrders(r); });
    ASSERT_EQ(loaded.size(), 3u);
    const TomsOrder& back = *loaded[0];
    EXPECT_EQ(back.OmsOrder_No, first->OmsOrder_No);
    EXPECT_EQ(back.Order_Time501, first->Order_Time501);
    EXPECT_EQ(QStringList({ back.Account, back.Symbol, num(back.Side), num(back.Quantity), num(back.Price),
                  num(back.Status) }),
        QStringList({ "A1", "0005.HK", "1", "4000", "81.25", "1" }));
}

TEST_P(OrderDBTest, ServerErrorMarksTheOrderFailedAndWritesNothing)
{
    auto taken = newOrder();
    taken->OmsOrder_No = "X0001";
    orderSaveOrder(*taken);
    QTemporaryDir logDir;
    ASSERT_TRUE(omsLogOpen(logDir.filePath("oms.log"), {}));
    const std::pair<const char*, std::function<void(TomsOrder&)>> cases[] = {
        { "number already taken", [](TomsOrder& o) { o.OmsOrder_No = "X0001"; } },
        { "no account", [](TomsOrder& o) { o.Account.clear(); } },
        { "no quantity", [](TomsOrder& o) { o.Quantity = 0; } },
    };
    for (const auto& [name, spoil] : cases) {
        SCOPED_TRACE(name);
        auto order = newOrder();
        spoil(*order);
        EXPECT_NO_THROW(orderSaveOrder(*order));
        EXPECT_EQ(order->Status, StatusRejected);
        EXPECT_EQ(order->ErrorCode, TomsOrder::kSaveFailed);
        EXPECT_TRUE(order->Message.startsWith(u"Cannot save order: ")) << order->Message.toStdString();
        EXPECT_FALSE(order->Message.contains(u'\n'));
        EXPECT_EQ(count("OMSTrade_File"), 1);
    }
    omsLogClose();
    QFile log(logDir.filePath("oms.log"));
    ASSERT_TRUE(log.open(QIODevice::ReadOnly));
    EXPECT_EQ(QString::fromUtf8(log.readAll()).count(u"Cannot save order: "), 3);
}

TEST_P(OrderDBTest, SaveRaisesBeforeSendingWhenAParameterIsNotDeclared)
{
    write("STORPROC.INI", "[sp_insert_new_order]\naccount=@m_account,ptInput,ftString\n");
    auto order = newOrder();
    EXPECT_THROW(orderSaveOrder(*order), DatabaseError);
    EXPECT_EQ(order->ErrorCode, 0);
    EXPECT_EQ(count("OMSTrade_File"), 0);
}

// The parameters as the procedure receives them: which are bound, and to
// what. On SQLite, where the procedure is ours to replace.
TEST_P(OrderDBTest, SaveSendsAuxiliaryFieldsOnlyWhenSet)
{
    if (driver() != Driver::Sqlite)
        GTEST_SKIP() << "the parameters are observed through an embedded procedure";
    QStringList sent;
    QString failWith;
    SqliteBackend::RegisterProcedure("sp_insert_new_order", [&](TParams& params, TDatabase&) {
        sent.clear();
        for (int i = 0; i < params.Count(); ++i) {
            if (params.Items(i).Bound())
                sent << params.Items(i).Name().mid(3) + "=" + params.Items(i).AsString();
        }
        if (!failWith.isEmpty())
            throw Error(failWith);
        params.ParamByName(u"@m_order_no").SetAsString("N1");
        params.ParamByName(u"@m_createtime").SetAsDateTime(QDateTime(QDate(2024, 3, 1), QTime(10, 15, 42)));
    });
    const QStringList always = { "account=A1", "symbol=0005.HK", "order_type=1", "quantity=4000",
        "limit_price=81.25", "user_no=D001", "status=Pend" };
    auto plain = newOrder();
    orderSaveOrder(*plain);
    EXPECT_EQ(sent,
        always
            + QStringList(
                { "operatorflag=", "open_close=0", "working=0", "netproceed=0", "creditChange=0" }));
    EXPECT_EQ(plain->OmsOrder_No, u"N1");
    EXPECT_EQ(plain->Last_MOD_Time, u"10:15:42");

    auto full = newOrder();
    full->OmsOrder_No = "X9";
    full->OperatorFlag = "DX";
    full->Fill_Qty = 100;
    full->ShortSell = full->Field47 = 2;
    full->OrderOption = full->Origin = 12;
    full->StopPrice = full->Price42 = 80.5;
    full->Working = 300;
    full->ref_no = full->Exch = full->BASKET_ID = full->WAVE_ID = full->SysRefValue = "R1";
    full->setAttribute(OrderAttribute::OriginalOrderNum, "O1");
    orderSaveOrder(*full);
    EXPECT_EQ(sent,
        always
            + QStringList({ "operatorflag=D", "filled=100", "order_no=X9", "open_close=0", "short_sell=2",
                "instruction=12", "price1=80.5", "price2=80.5", "hedge=2", "origin=12", "working=300",
                "netproceed=0", "creditChange=0", "reference=R1", "exchange=R1", "original_no=O1",
                "basket_id=R1", "wave_id=R1", "system_ref=R1" }));
    EXPECT_EQ(full->OmsOrder_No, u"X9");

    failWith = "first line\r\nsecond line\nthird";
    auto failed = newOrder();
    orderSaveOrder(*failed);
    EXPECT_TRUE(failed->Message.endsWith(u"first linesecond line third")) << failed->Message.toStdString();
    RegisterOrderProcedures();
}

// --- a database that is not there ---------------------------------------

TEST_P(OrderDBTest, UnreachableDatabaseRaisesFromLoadersAndSave)
{
    TOmsDM::GetInstance()->AddDataMap("OMSDATA", "DOWN");
    EXPECT_THROW(orderLoadOrders({}), DatabaseError);
    auto order = newOrder();
    EXPECT_THROW(orderSaveOrder(*order), DatabaseError);
}

TEST_P(OrderDBTest, ConnectionLostMidDayRaisesFromTheLoaderThatMetItAndTheNextSaveReconnects)
{
    if (driver() != Driver::Postgres)
        GTEST_SKIP() << "an embedded database cannot go away";
    seedDay();
    TDatabase* db = orderDatabase();
    ASSERT_NE(db, nullptr);
    TQuery pid;
    pid.SetDatabaseName(db->DatabaseName());
    pid.SQL().Add("select pg_backend_pid() as pid");
    pid.Open();
    const int backend = pid.FieldByName(u"pid").AsInteger();
    pid.Close();
    sql({ QStringLiteral("select pg_terminate_backend(%1)").arg(backend) });

    EXPECT_THROW(orderLoadOrders({}), DatabaseError);
    auto order = newOrder();
    EXPECT_NO_THROW(orderSaveOrder(*order));
    EXPECT_EQ(order->ErrorCode, 0) << order->Message.toStdString();
    EXPECT_FALSE(order->OmsOrder_No.isEmpty());
    EXPECT_EQ(count("OMSTrade_File"), 5);
}

INSTANTIATE_TEST_SUITE_P(
    Drivers, OrderDBTest, testing::Values(Driver::Sqlite, Driver::Postgres), qal::test::driverName);

} // namespace

namespace qal {
namespace {

// Regression: a save must not leave the order database locked for the other
// connections of the desk (the embedded database locks the whole file).
TEST_P(OrderDBTest, SaveLeavesTheDatabaseFreeForOtherConnections)
{
    auto order = newOrder();
    orderSaveOrder(*order);
    ASSERT_EQ(order->ErrorCode, 0) << order->Message.toStdString();
    const auto other = database();
    EXPECT_NO_THROW(other->Execute(QStringLiteral("delete from OMSTrade_File")));
}

// The end-of-day clear-out through a connection of its own, while the order
// database's connection, of the same name, stays open: the clear-out must
// look its tables up on its own connection, which may hold the file locked.
TEST_P(OrderDBTest, ClearingWorksInTheCallersTransactionBesideTheOpenOrderDatabase)
{
    auto order = newOrder();
    orderSaveOrder(*order);
    ASSERT_EQ(order->ErrorCode, 0) << order->Message.toStdString();
    const auto other = database();
    ASSERT_EQ(other->DatabaseName(), orderDatabase()->DatabaseName());
    other->Open();
    if (driver() == Driver::Sqlite)
        other->Execute(QStringLiteral("BEGIN EXCLUSIVE"));
    else
        other->StartTransaction();
    ClearOrderData(*other);
    EXPECT_TRUE(other->InTransaction());
    other->Commit();
    for (const TOrderTableRows& table : OrderTableRowCounts(*other))
        EXPECT_EQ(table.rows, 0) << table.table.toStdString();

    TStringList tables;
    other->GetTableNames(tables);
    for (const QString& table : OrderSchemaTables())
        EXPECT_GE(tables.IndexOf(table), 0) << table.toStdString();
    EXPECT_LT(tables.IndexOf(QStringLiteral("sqlite_sequence")), 0);
}

} // namespace
} // namespace qal
