// SPDX-License-Identifier: MIT
// Saving new orders: orderSaveOrder of 10,000 client orders through
// "sp_insert_new_order" on SQLite and on PostgreSQL, against a raw prepared
// insert of the same rows, one transaction per order (peer "raw").
#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include "bench/BenchGoals.h"
#include "bench/OrderBenchDatabase.h"
#include "bench/RawOrderRows.h"
#include "qalpack/model/omsData.h"
#include "qalpack/orderdb/OrderSchema.h"
#include "qalpack/orderdb/orderDB.h"

namespace {

using bench::Backend;

constexpr int kOrders = 10'000;

bench::OrderBenchDatabases* databases = nullptr;

// The desk's new orders: a buy or sell of a board lot multiple at a price on
// the ladder, some short sales, some with a reference and a basket.
std::vector<std::unique_ptr<qal::TomsOrder>> newOrders()
{
    std::vector<std::unique_ptr<qal::TomsOrder>> orders;
    orders.reserve(kOrders);
    for (int i = 0; i < kOrders; ++i) {
        auto o = std::make_unique<qal::TomsOrder>();
        o->Account = QStringLiteral("AC%1").arg(i % 500);
        o->Symbol = QString::number(1 + i % 3000);
        o->Side = i % 2;
        o->Quantity = 1000 * (1 + i % 20);
        o->Price = 10 + (i % 997) * 0.05L;
        o->User = QStringLiteral("D%1").arg(i % 40);
        o->OperatorFlag = QStringLiteral("C");
        o->ShortSell = i % 10 == 0 ? 1 : 0;
        o->Field47 = 1;
        o->Origin = 11;
        o->Working = o->Quantity;
        o->NetProceed = o->Price * o->Quantity;
        o->Exch = QStringLiteral("SEHK");
        if (i % 3 == 0)
            o->ref_no = QStringLiteral("REF%1").arg(i);
        if (i % 7 == 0)
            o->BASKET_ID = QStringLiteral("B%1").arg(i / 100);
        orders.push_back(std::move(o));
    }
    return orders;
}

void clearOrders(Backend backend)
{
    qal::ClearOrderData(*databases->database(backend));
}

qint64 savedOrders(Backend backend)
{
    for (const qal::TOrderTableRows& table : qal::OrderTableRowCounts(*databases->database(backend)))
        if (table.table.compare(QLatin1String("OMSTrade_File"), Qt::CaseInsensitive) == 0)
            return table.rows;
    return 0;
}

void saveOurs(benchmark::State& state, Backend backend)
{
    if (!databases->use(backend, state))
        return;
    for (auto _ : state) {
        state.PauseTiming();
        clearOrders(backend);
        auto orders = newOrders();
        state.ResumeTiming();
        for (const auto& order : orders)
            qal::orderSaveOrder(*order);
        state.PauseTiming();
        const qint64 saved = savedOrders(backend);
        if (saved != kOrders) {
            state.SkipWithError(("saved " + std::to_string(saved) + " orders, expected "
                + std::to_string(kOrders) + "; last message: " + orders.back()->Message.toStdString())
                                    .c_str());
            return;
        }
        orders.clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kOrders);
    // A save within 1.5 times a raw insert of the same row.
    bench::setGoals(state, { { "raw", 1.5 } });
}

// The columns the procedure writes, numbered here as it numbers them; the
// creation and modification times take the table's defaults.
constexpr const char* kInsertColumns = "insert into OMSTrade_File (Order_No, Account, Symbol, Order_Type, "
                                       "Quantity, Limit_Price, User_No, Status, "
                                       "operatorflag, Fill, Open_Close, short_sell, instruction, price1, "
                                       "price2, Hedge, Origin, working, netproceed, "
                                       "creditchange, reference, Exchange, BasketID) values ";
constexpr int kParams = 23;

// One order's parameters as text, nulls for what orderSaveOrder leaves unset.
std::vector<std::optional<std::string>> parameters(const qal::TomsOrder& o, int number)
{
    const auto text = [](const QString& s) -> std::optional<std::string> {
        if (s.isEmpty())
            return std::nullopt;
        return s.toStdString();
    };
    char no[16];
    std::snprintf(no, sizeof no, "%08d", number);
    return { std::string(no), o.Account.toStdString(), o.Symbol.toStdString(), std::to_string(o.Side),
        std::to_string(o.Quantity), std::to_string(double(o.Price)), o.User.toStdString(),
        std::string("Pend"), o.OperatorFlag.left(1).toStdString(), std::string("0"),
        std::to_string(o.OpenClose), std::to_string(o.ShortSell), std::to_string(o.OrderOption),
        std::to_string(double(o.StopPrice)), std::to_string(double(o.Price42)), std::to_string(o.Field47),
        std::to_string(o.Origin), std::to_string(o.Working), std::to_string(double(o.NetProceed)),
        std::to_string(double(o.CreditChange)), text(o.ref_no), text(o.Exch), text(o.BASKET_ID) };
}

void saveRawSqlite(benchmark::State& state, const std::vector<std::unique_ptr<qal::TomsOrder>>& orders)
{
    const bench::raw::SqliteReader db(databases->sqlitePath().toStdString());
    std::string sql = kInsertColumns;
    sql += "(?";
    for (int i = 1; i < kParams; ++i)
        sql += ",?";
    sql += ")";
    sqlite3_stmt* st = nullptr;
    if (sqlite3_prepare_v2(db.handle(), sql.c_str(), -1, &st, nullptr) != SQLITE_OK)
        throw std::runtime_error(sqlite3_errmsg(db.handle()));
    for (auto _ : state) {
        state.PauseTiming();
        clearOrders(Backend::Sqlite);
        state.ResumeTiming();
        int number = 0;
        for (const auto& order : orders) {
            const auto values = parameters(*order, ++number);
            for (int i = 0; i < kParams; ++i) {
                if (values[i])
                    sqlite3_bind_text(st, i + 1, values[i]->data(), int(values[i]->size()), SQLITE_TRANSIENT);
                else
                    sqlite3_bind_null(st, i + 1);
            }
            if (sqlite3_step(st) != SQLITE_DONE) {
                state.SkipWithError(sqlite3_errmsg(db.handle()));
                break;
            }
            sqlite3_reset(st);
        }
    }
    sqlite3_finalize(st);
    if (const qint64 saved = savedOrders(Backend::Sqlite); saved != kOrders)
        state.SkipWithError(("the raw insert saved " + std::to_string(saved) + " orders").c_str());
}

void saveRawPostgres(benchmark::State& state, const std::vector<std::unique_ptr<qal::TomsOrder>>& orders)
{
    const bench::raw::PostgresReader db(databases->pgConnInfo());
    std::string sql = kInsertColumns;
    sql += "($1";
    for (int i = 2; i <= kParams; ++i)
        sql += ",$" + std::to_string(i);
    sql += ")";
    PGresult* prepared = PQprepare(db.handle(), "save_order", sql.c_str(), kParams, nullptr);
    const bool ok = PQresultStatus(prepared) == PGRES_COMMAND_OK;
    PQclear(prepared);
    if (!ok)
        throw std::runtime_error(PQerrorMessage(db.handle()));
    for (auto _ : state) {
        state.PauseTiming();
        clearOrders(Backend::Postgres);
        state.ResumeTiming();
        int number = 0;
        for (const auto& order : orders) {
            const auto values = parameters(*order, ++number);
            const char* params[kParams];
            for (int i = 0; i < kParams; ++i)
                params[i] = values[i] ? values[i]->c_str() : nullptr;
            PGresult* res = PQexecPrepared(db.handle(), "save_order", kParams, params, nullptr, nullptr, 0);
            const bool inserted = PQresultStatus(res) == PGRES_COMMAND_OK;
            PQclear(res);
            if (!inserted) {
                state.SkipWithError(PQerrorMessage(db.handle()));
                break;
            }
        }
    }
}

void saveRaw(benchmark::State& state, Backend backend)
{
    if (!databases->use(backend, state))
        return;
    const auto orders = newOrders();
    if (backend == Backend::Sqlite)
        saveRawSqlite(state, orders);
    else
        saveRawPostgres(state, orders);
    state.SetItemsProcessed(state.iterations() * kOrders);
}

void registerSaves(Backend backend)
{
    const std::string suffix = std::string("/") + bench::backendName(backend);
    benchmark::RegisterBenchmark(
        ("orderdb/saveOrder" + suffix).c_str(), [backend](benchmark::State& s) { saveOurs(s, backend); })
        ->Iterations(1)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
    benchmark::RegisterBenchmark(
        ("orderdb/saveOrder@raw" + suffix).c_str(), [backend](benchmark::State& s) { saveRaw(s, backend); })
        ->Iterations(1)
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    bench::OrderBenchDatabases dbs({}, true);
    databases = &dbs;
    benchmark::AddCustomContext("time_zone", bench::timeZoneText());
    benchmark::AddCustomContext("postgres", dbs.hasPostgres() ? "on loopback" : "NOT RUN: " + dbs.pgWhyNot());
    registerSaves(Backend::Sqlite);
    registerSaves(Backend::Postgres);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    databases = nullptr;
    return 0;
}
