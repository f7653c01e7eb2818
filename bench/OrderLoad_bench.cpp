// SPDX-License-Identifier: MIT
// Reloading the day's blotters: orderLoadOrders, orderLoadExchOrders and
// orderLoadTrades over 100,000 rows on SQLite and on PostgreSQL, each against
// the same query read with the raw driver into plain structs (peer "raw").
#include <cstdlib>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include <malloc.h>

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include "bench/BenchGoals.h"
#include "bench/OrderBenchDatabase.h"
#include "bench/RawOrderRows.h"
#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/orderdb/orderDB.h"

namespace {

using bench::Backend;

constexpr int kRows = 100'000;
// The reload keeps at least 70% of the raw driver's row rate: our time per
// row at most 1/0.7 of the peer's.
constexpr double kRatioGoal = 1.0 / 0.7;

bench::OrderBenchDatabases* databases = nullptr;

// The loads run on a warm heap, as a desk's reload after the first: the
// previous run's rows are freed outside the timing, the heap keeps its pages
// (no trimming back to the system, see main), and the work glibc defers from
// those frees (merging its small free chunks, which it does on the next
// request too large for its small bins) is done here, untimed, for ours and
// the peers' alike. Timing a cold heap instead would time first-touch page
// faults, about 2.4 us each on the VM the README's figures come from: the
// figure would be mostly the hypervisor's.
void settleHeap()
{
    constexpr std::size_t kLargeRequest = 4096;
    std::free(std::malloc(kLargeRequest));
}

template<class Record, class Load>
void loadOurs(benchmark::State& state, Backend backend, const Load& load)
{
    if (!databases->use(backend, state))
        return;
    std::vector<std::unique_ptr<Record>> records;
    records.reserve(kRows);
    for (auto _ : state) {
        load([&records](std::unique_ptr<Record> r) { records.push_back(std::move(r)); });
        if (records.size() != std::size_t(kRows)) {
            state.SkipWithError("the loader did not hand over every row");
            return;
        }
        state.PauseTiming();
        records.clear();
        settleHeap();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
    bench::setGoals(state, { { "raw", kRatioGoal } });
}

template<class Row, std::size_t N>
void loadRaw(
    benchmark::State& state, Backend backend, const char* sql, const bench::raw::Column<Row> (&columns)[N])
{
    if (!databases->use(backend, state))
        return;
    std::vector<std::unique_ptr<Row>> rows;
    rows.reserve(kRows);
    const auto run = [&](const auto& reader) {
        for (auto _ : state) {
            reader.load(sql, columns, rows);
            if (rows.size() != std::size_t(kRows)) {
                state.SkipWithError("the raw read did not return every row");
                return;
            }
            state.PauseTiming();
            rows.clear();
            settleHeap();
            state.ResumeTiming();
        }
    };
    if (backend == Backend::Sqlite)
        run(bench::raw::SqliteReader(databases->sqlitePath().toStdString()));
    else
        run(bench::raw::PostgresReader(databases->pgConnInfo()));
    state.SetItemsProcessed(state.iterations() * kRows);
}

void registerLoads(Backend backend)
{
    const std::string suffix = std::string("/") + bench::backendName(backend);
    const auto add = [](const std::string& name, auto&& fn) {
        benchmark::RegisterBenchmark(name.c_str(), fn)
            ->Iterations(3)
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
    };
    add("orderdb/loadOrders" + suffix, [backend](benchmark::State& s) {
        loadOurs<qal::TomsOrder>(s, backend, [](const auto& receiver) { qal::orderLoadOrders(receiver); });
    });
    add("orderdb/loadOrders@raw" + suffix, [backend](benchmark::State& s) {
        loadRaw(s, backend, bench::raw::kOrdersSql, bench::raw::kOrderColumns);
    });
    add("orderdb/loadExchOrders" + suffix, [backend](benchmark::State& s) {
        loadOurs<qal::TexchOrder>(
            s, backend, [](const auto& receiver) { qal::orderLoadExchOrders(receiver); });
    });
    add("orderdb/loadExchOrders@raw" + suffix, [backend](benchmark::State& s) {
        loadRaw(s, backend, bench::raw::kExchOrdersSql, bench::raw::kExchOrderColumns);
    });
    add("orderdb/loadTrades" + suffix, [backend](benchmark::State& s) {
        loadOurs<qal::TomsTrade>(s, backend, [](const auto& receiver) { qal::orderLoadTrades(receiver); });
    });
    add("orderdb/loadTrades@raw" + suffix, [backend](benchmark::State& s) {
        loadRaw(s, backend, bench::raw::kTradesSql, bench::raw::kTradeColumns);
    });
}

} // namespace

int main(int argc, char** argv)
{
    // Freed rows stay in the heap for the next run (see settleHeap).
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    bench::OrderBenchDatabases dbs({ kRows, kRows, kRows });
    databases = &dbs;
    benchmark::AddCustomContext("time_zone", bench::timeZoneText());
    benchmark::AddCustomContext("postgres", dbs.hasPostgres() ? "on loopback" : "NOT RUN: " + dbs.pgWhyNot());
    if (dbs.hasPostgres()) {
        const bench::raw::PostgresReader server(dbs.pgConnInfo());
        benchmark::AddCustomContext("time_zone_postgres", PQparameterStatus(server.handle(), "TimeZone"));
    }
    registerLoads(Backend::Sqlite);
    registerLoads(Backend::Postgres);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    databases = nullptr;
    return 0;
}
