// SPDX-License-Identifier: MIT
// The raw-driver peers of the order loaders: the same queries read with
// libsqlite3's step loop or libpq in single-row mode into plain structs with
// the field types of the records (text as QString, whole numbers as int,
// prices as long double, times cut to "hh:nn:ss"), one heap row per row read.
#pragma once

#include <charconv>
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <QString>

#include <libpq-fe.h>
#include <sqlite3.h>

namespace bench::raw {

struct Order
{
    QString OmsOrder_No, Account, Symbol, User, OperatorFlag, Last_MOD_Time, Order_Time501, ref_no, Exch,
        OriginalOrderNo, BASKET_ID, WAVE_ID, SysRefValue, Approval_ID, Reject_ID, Message, Currency,
        CompSysRef, Status;
    int Side = -1, Quantity = 0, Field47 = 0, Origin = 0, Fill_Qty = 0, ShortSell = 0, OrderOption = 0,
        Option489 = 0, Working = 0, ReqStatus = 0, StatusFlags = 0;
    long double Price = 0, StopPrice = 0, Price42 = 0, Price494 = 0, CreditChange = 0, NetProceed = 0,
                ApprovalChange = 0, ApprovalApplied = 0, Held = 0;
};

struct ExchOrder
{
    QString OmsOrder_No, Order_No, Account, Symbol, User, Last_MOD_Time, Order_Time, Exch, ExchangeDest,
        Remark, Status;
    int Side = -1, Quantity = 0, Field47 = 0, PrincipalType = 0, ShortSell = 0;
    long double Price = 0;
};

struct Trade
{
    QString Exch_No, Order_No, Account, Symbol, User, BrokerID, Exch, EXE_Time, Status;
    int Fill_Qty = 0, Side = -1, Hedge = 0, Principal = 0, ShortSell = 0, TradeType = 0;
    long double Fill_Price = 0;
};

// One column: where it goes, whether a null leaves the field alone
// (guarded) and whether the result may lack it (optional), as the loaders
// read it.
template<class Row>
struct Column
{
    enum Kind { Text, Integer, Real, Time };
    const char* name;
    Kind kind;
    QString Row::*text = nullptr;
    int Row::*integer = nullptr;
    long double Row::*real = nullptr;
    bool guarded = false;
    bool optional = false;
};

template<class Row>
constexpr Column<Row> text(const char* name, QString Row::*m, bool guarded = false, bool optional = false)
{
    return { name, Column<Row>::Text, m, nullptr, nullptr, guarded, optional };
}
template<class Row>
constexpr Column<Row> integer(const char* name, int Row::*m, bool guarded = false)
{
    return { name, Column<Row>::Integer, nullptr, m, nullptr, guarded, false };
}
template<class Row>
constexpr Column<Row> real(const char* name, long double Row::*m, bool guarded = false)
{
    return { name, Column<Row>::Real, nullptr, nullptr, m, guarded, false };
}
template<class Row>
constexpr Column<Row> time(const char* name, QString Row::*m)
{
    return { name, Column<Row>::Time, m, nullptr, nullptr, false, false };
}

constexpr bool G = true;

inline const Column<Order> kOrderColumns[] = {
    text("Order_No", &Order::OmsOrder_No),
    text("Account", &Order::Account),
    integer("Order_Type", &Order::Side),
    text("Symbol", &Order::Symbol),
    integer("Quantity", &Order::Quantity),
    real("Limit_Price", &Order::Price),
    text("User_No", &Order::User),
    integer("Hedge", &Order::Field47),
    integer("Origin", &Order::Origin),
    integer("Fill", &Order::Fill_Qty, G),
    integer("short_sell", &Order::ShortSell, G),
    integer("instruction", &Order::OrderOption, G),
    integer("instruction1", &Order::Option489, G),
    real("price1", &Order::StopPrice, G),
    real("price2", &Order::Price42, G),
    real("price4", &Order::Price494, G),
    text("operatorflag", &Order::OperatorFlag, G),
    time("DateTime_Modified", &Order::Last_MOD_Time),
    time("DateTime_Created", &Order::Order_Time501),
    integer("working", &Order::Working),
    real("creditchange", &Order::CreditChange),
    real("netproceed", &Order::NetProceed),
    text("reference", &Order::ref_no, G),
    text("Exchange", &Order::Exch, G),
    text("Original_no", &Order::OriginalOrderNo, G),
    text("BasketID", &Order::BASKET_ID, G),
    text("WaveID", &Order::WAVE_ID, G),
    text("SystemRef", &Order::SysRefValue, G),
    real("approvalChange", &Order::ApprovalChange, G),
    real("approvalApplied", &Order::ApprovalApplied, G),
    text("approvalID", &Order::Approval_ID, G),
    text("rejectID", &Order::Reject_ID, G),
    text("Message", &Order::Message, G),
    text("currency", &Order::Currency, G),
    real("held", &Order::Held, G),
    integer("reqStatus", &Order::ReqStatus, G),
    text("CompSystemRef", &Order::CompSysRef, G),
    text("Status", &Order::Status),
    integer("StatusFlags", &Order::StatusFlags, G),
};

inline const Column<ExchOrder> kExchOrderColumns[] = {
    text("Order_No", &ExchOrder::OmsOrder_No),
    text("Exch_No", &ExchOrder::Order_No),
    text("Account", &ExchOrder::Account),
    integer("Order_Type", &ExchOrder::Side),
    text("Symbol", &ExchOrder::Symbol),
    integer("Quantity", &ExchOrder::Quantity),
    real("Price", &ExchOrder::Price),
    text("user_no", &ExchOrder::User),
    integer("Hedge", &ExchOrder::Field47),
    integer("Origin", &ExchOrder::PrincipalType),
    integer("Shortsell", &ExchOrder::ShortSell, G),
    time("DateTime_Modified", &ExchOrder::Last_MOD_Time),
    time("DateTime_Created", &ExchOrder::Order_Time),
    text("Exchange", &ExchOrder::Exch, G),
    text("ExchangeDest", &ExchOrder::ExchangeDest, G),
    text("remark", &ExchOrder::Remark, G, true),
    text("Status", &ExchOrder::Status),
};

inline const Column<Trade> kTradeColumns[] = {
    text("Exch_No", &Trade::Exch_No),
    text("Tran_No", &Trade::Order_No),
    text("Account", &Trade::Account, G),
    text("Symbol", &Trade::Symbol),
    integer("Quantity", &Trade::Fill_Qty),
    real("Trans_Price", &Trade::Fill_Price),
    text("user_no", &Trade::User, G),
    integer("Order_Type", &Trade::Side),
    integer("Hedge", &Trade::Hedge),
    integer("Origin", &Trade::Principal),
    integer("Shortsell", &Trade::ShortSell, G),
    integer("Trade_Type", &Trade::TradeType),
    text("BrokerID", &Trade::BrokerID, G),
    text("exchange", &Trade::Exch, false, true),
    time("DateTime_Created", &Trade::EXE_Time),
    text("Status", &Trade::Status),
};

// The loaders' queries.
inline constexpr const char* kOrdersSql = "select * from OMSTrade_File order by Order_No";
inline constexpr const char* kExchOrdersSql
    = "select e.*, o.Order_Type from Exch_File e, OMSTrade_File o "
      "where e.Order_No = o.Order_No order by e.order_no, e.datetime_created";
inline constexpr const char* kTradesSql = "select * from Trans_File order by DateTime_Created";

// "hh:nn:ss" of a "yyyy-mm-dd hh:nn:ss[.zzz]" time.
inline QString timeOfDay(const char* text, int size)
{
    return size >= 19 ? QString::fromLatin1(text + 11, 8) : QString();
}

inline bool sameName(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (std::size_t i = 0; i < a.size(); ++i)
        if ((a[i] | 0x20) != (b[i] | 0x20))
            return false;
    return true;
}

template<class Row>
struct Bound
{
    const Column<Row>* column;
    int index;
};

// --- SQLite ----------------------------------------------------------------

class SqliteReader
{
public:
    explicit SqliteReader(const std::string& path)
    {
        if (sqlite3_open_v2(path.c_str(), &db_, SQLITE_OPEN_READWRITE, nullptr) != SQLITE_OK)
            throw std::runtime_error("cannot open " + path + ": " + sqlite3_errmsg(db_));
    }
    SqliteReader(const SqliteReader&) = delete;
    SqliteReader& operator=(const SqliteReader&) = delete;
    ~SqliteReader() { sqlite3_close(db_); }

    [[nodiscard]] sqlite3* handle() const { return db_; }

    // Runs `sql` and appends one new row per result row to `rows`.
    template<class Row, std::size_t N>
    void load(const char* sql, const Column<Row> (&columns)[N], std::vector<std::unique_ptr<Row>>& rows) const
    {
        sqlite3_stmt* st = nullptr;
        if (sqlite3_prepare_v2(db_, sql, -1, &st, nullptr) != SQLITE_OK)
            throw std::runtime_error(std::string("prepare: ") + sqlite3_errmsg(db_));
        std::vector<Bound<Row>> bound;
        const int count = sqlite3_column_count(st);
        for (const Column<Row>& c : columns) {
            int index = -1;
            for (int i = 0; i < count && index < 0; ++i)
                if (sameName(sqlite3_column_name(st, i), c.name))
                    index = i;
            if (index < 0 && !c.optional) {
                sqlite3_finalize(st);
                throw std::runtime_error(std::string("no column ") + c.name);
            }
            if (index >= 0)
                bound.push_back({ &c, index });
        }
        int rc;
        while ((rc = sqlite3_step(st)) == SQLITE_ROW) {
            auto row = std::make_unique<Row>();
            for (const Bound<Row>& b : bound) {
                const Column<Row>& c = *b.column;
                if (c.guarded && sqlite3_column_type(st, b.index) == SQLITE_NULL)
                    continue;
                switch (c.kind) {
                case Column<Row>::Text:
                    (*row).*c.text
                        = QString::fromUtf8(reinterpret_cast<const char*>(sqlite3_column_text(st, b.index)),
                            sqlite3_column_bytes(st, b.index));
                    break;
                case Column<Row>::Integer:
                    (*row).*c.integer = sqlite3_column_int(st, b.index);
                    break;
                case Column<Row>::Real:
                    (*row).*c.real = sqlite3_column_double(st, b.index);
                    break;
                case Column<Row>::Time:
                    (*row).*c.text
                        = timeOfDay(reinterpret_cast<const char*>(sqlite3_column_text(st, b.index)),
                            sqlite3_column_bytes(st, b.index));
                    break;
                }
            }
            rows.push_back(std::move(row));
        }
        sqlite3_finalize(st);
        if (rc != SQLITE_DONE)
            throw std::runtime_error(std::string("step: ") + sqlite3_errmsg(db_));
    }

private:
    sqlite3* db_ = nullptr;
};

// --- PostgreSQL ------------------------------------------------------------

class PostgresReader
{
public:
    explicit PostgresReader(const std::string& connInfo)
        : conn_(PQconnectdb(connInfo.c_str()))
    {
        if (PQstatus(conn_) != CONNECTION_OK) {
            const std::string why = PQerrorMessage(conn_);
            PQfinish(conn_);
            throw std::runtime_error("cannot connect: " + why);
        }
    }
    PostgresReader(const PostgresReader&) = delete;
    PostgresReader& operator=(const PostgresReader&) = delete;
    ~PostgresReader() { PQfinish(conn_); }

    [[nodiscard]] PGconn* handle() const { return conn_; }

    // Runs `sql` in single-row mode and appends one new row per result row.
    template<class Row, std::size_t N>
    void load(const char* sql, const Column<Row> (&columns)[N], std::vector<std::unique_ptr<Row>>& rows) const
    {
        if (!PQsendQuery(conn_, sql) || !PQsetSingleRowMode(conn_))
            throw std::runtime_error(std::string("send: ") + PQerrorMessage(conn_));
        std::vector<Bound<Row>> bound;
        std::string error;
        while (PGresult* res = PQgetResult(conn_)) {
            const ExecStatusType status = PQresultStatus(res);
            if (status == PGRES_SINGLE_TUPLE) {
                if (bound.empty())
                    bind(res, columns, bound);
                rows.push_back(read<Row>(res, bound));
            } else if (status != PGRES_TUPLES_OK) {
                error = PQresultErrorMessage(res);
            }
            PQclear(res);
        }
        if (!error.empty())
            throw std::runtime_error("query: " + error);
    }

private:
    template<class Row, std::size_t N>
    static void bind(const PGresult* res, const Column<Row> (&columns)[N], std::vector<Bound<Row>>& bound)
    {
        const int count = PQnfields(res);
        for (const Column<Row>& c : columns) {
            int index = -1;
            for (int i = 0; i < count && index < 0; ++i)
                if (sameName(PQfname(res, i), c.name))
                    index = i;
            if (index < 0 && !c.optional)
                throw std::runtime_error(std::string("no column ") + c.name);
            if (index >= 0)
                bound.push_back({ &c, index });
        }
    }

    template<class Row>
    static std::unique_ptr<Row> read(const PGresult* res, const std::vector<Bound<Row>>& bound)
    {
        auto row = std::make_unique<Row>();
        for (const Bound<Row>& b : bound) {
            const Column<Row>& c = *b.column;
            if (PQgetisnull(res, 0, b.index)) {
                if (!c.guarded && c.kind == Column<Row>::Text)
                    (*row).*c.text = QString();
                continue;
            }
            const char* value = PQgetvalue(res, 0, b.index);
            const int size = PQgetlength(res, 0, b.index);
            switch (c.kind) {
            case Column<Row>::Text:
                (*row).*c.text = QString::fromUtf8(value, size);
                break;
            case Column<Row>::Integer: {
                int n = 0;
                std::from_chars(value, value + size, n);
                (*row).*c.integer = n;
                break;
            }
            case Column<Row>::Real: {
                double d = 0;
                std::from_chars(value, value + size, d);
                (*row).*c.real = d;
                break;
            }
            case Column<Row>::Time:
                (*row).*c.text = timeOfDay(value, size);
                break;
            }
        }
        return row;
    }

    PGconn* conn_;
};

} // namespace bench::raw
