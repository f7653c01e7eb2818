// SPDX-License-Identifier: MIT
// Reloading the day's blotters: orderLoadOrders, orderLoadExchOrders and
// orderLoadTrades over 100,000 rows on SQLite and on PostgreSQL, each against
// the same query read with the raw driver into plain structs (peer "raw").
// Each load runs on a warm heap, as a desk's reload after its first, and
// cold ("... cold"), as the first reload at the start of the day.
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
// Our time per row against the raw driver's: on a warm heap the record's own
// work is all that shows; on a cold one both pay the same page faults.
constexpr double kWarmGoal = 1.2;
constexpr double kColdGoal = 1.3;

bench::OrderBenchDatabases* databases = nullptr;

enum class Heap { Warm, Cold };

// Warm: the previous run's rows are freed outside the timing, the heap keeps
// its pages (no trimming back to the system, see main), and the work glibc
// defers from those frees (merging its small free chunks, which it does on
// the next request too large for its small bins) is done here, untimed, for
// ours and the peers' alike.
// Cold: the freed pages go back to the system, so the next load touches
// every page afresh, as a fresh process does; the page faults (about 2.4 us
// each on the VM the README's figures come from) are timed for both sides.
void settleHeap(Heap heap)
{
    constexpr std::size_t kLargeRequest = 4096;
    std::free(std::malloc(kLargeRequest));
    if (heap == Heap::Cold)
        malloc_trim(0);
}

const char* heapSuffix(Heap heap)
{
    return heap == Heap::Cold ? " cold" : "";
}

template<class Record, class Load>
void loadOurs(benchmark::State& state, Backend backend, Heap heap, const Load& load)
{
    if (!databases->use(backend, state))
        return;
    std::vector<std::unique_ptr<Record>> records;
    records.reserve(kRows);
    settleHeap(heap);
    for (auto _ : state) {
        load([&records](std::unique_ptr<Record> r) { records.push_back(std::move(r)); });
        if (records.size() != std::size_t(kRows)) {
            state.SkipWithError("the loader did not hand over every row");
            return;
        }
        state.PauseTiming();
        records.clear();
        settleHeap(heap);
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
    bench::setGoals(state, { { "raw", heap == Heap::Cold ? kColdGoal : kWarmGoal } });
}

template<class Row, std::size_t N>
void loadRaw(benchmark::State& state, Backend backend, Heap heap, const char* sql,
    const bench::raw::Column<Row> (&columns)[N])
{
    if (!databases->use(backend, state))
        return;
    std::vector<std::unique_ptr<Row>> rows;
    rows.reserve(kRows);
    settleHeap(heap);
    const auto run = [&](const auto& reader) {
        for (auto _ : state) {
            reader.load(sql, columns, rows);
            if (rows.size() != std::size_t(kRows)) {
                state.SkipWithError("the raw read did not return every row");
                return;
            }
            state.PauseTiming();
            rows.clear();
            settleHeap(heap);
            state.ResumeTiming();
        }
    };
    if (backend == Backend::Sqlite)
        run(bench::raw::SqliteReader(databases->sqlitePath().toStdString()));
    else
        run(bench::raw::PostgresReader(databases->pgConnInfo()));
    state.SetItemsProcessed(state.iterations() * kRows);
}

void registerLoads(Backend backend, Heap heap)
{
    const std::string suffix = std::string(heapSuffix(heap));
    const std::string args = std::string("/") + bench::backendName(backend);
    const auto add = [](const std::string& name, auto&& fn) {
        benchmark::RegisterBenchmark(name.c_str(), fn)
            ->Iterations(3)
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
    };
    add("orderdb/loadOrders" + suffix + args, [=](benchmark::State& s) {
        loadOurs<qal::TomsOrder>(
            s, backend, heap, [](const auto& receiver) { qal::orderLoadOrders(receiver); });
    });
    add("orderdb/loadOrders" + suffix + "@raw" + args, [=](benchmark::State& s) {
        loadRaw(s, backend, heap, bench::raw::kOrdersSql, bench::raw::kOrderColumns);
    });
    add("orderdb/loadExchOrders" + suffix + args, [=](benchmark::State& s) {
        loadOurs<qal::TexchOrder>(
            s, backend, heap, [](const auto& receiver) { qal::orderLoadExchOrders(receiver); });
    });
    add("orderdb/loadExchOrders" + suffix + "@raw" + args, [=](benchmark::State& s) {
        loadRaw(s, backend, heap, bench::raw::kExchOrdersSql, bench::raw::kExchOrderColumns);
    });
    add("orderdb/loadTrades" + suffix + args, [=](benchmark::State& s) {
        loadOurs<qal::TomsTrade>(
            s, backend, heap, [](const auto& receiver) { qal::orderLoadTrades(receiver); });
    });
    add("orderdb/loadTrades" + suffix + "@raw" + args, [=](benchmark::State& s) {
        loadRaw(s, backend, heap, bench::raw::kTradesSql, bench::raw::kTradeColumns);
    });
}

} // namespace

int main(int argc, char** argv)
{
    // Freed rows stay in the heap for the next run unless a cold load trims
    // it (see settleHeap).
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
    for (const Heap heap : { Heap::Warm, Heap::Cold }) {
        registerLoads(Backend::Sqlite, heap);
        registerLoads(Backend::Postgres, heap);
    }
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    databases = nullptr;
    return 0;
}
