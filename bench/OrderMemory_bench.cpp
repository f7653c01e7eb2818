// SPDX-License-Identifier: MIT
// What a loaded blotter costs in memory: heap bytes per TomsOrder and per
// TexchOrder after loading 100,000 rows from SQLite, against the same rows
// read with the raw driver into plain structs (peer "raw"). The records do
// not depend on the backend, so SQLite alone is measured.
#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <memory>
#include <new>
#include <vector>

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include "bench/BenchGoals.h"
#include "bench/OrderBenchDatabase.h"
#include "bench/RawOrderRows.h"
#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/orderdb/orderDB.h"

// --- counting allocator ------------------------------------------------------
// Every operator new of the process goes through here, so the bytes live at
// any moment are known. Qt's strings and containers allocate with malloc, not
// operator new: the heap in use (mallinfo2) counts those too, and is the
// figure the rows show; the operator new share is a counter of its own.

namespace {
std::atomic<long long> liveNewBytes { 0 };

void* countedNew(std::size_t size)
{
    void* p = std::malloc(size ? size : 1);
    if (!p)
        throw std::bad_alloc();
    liveNewBytes.fetch_add(static_cast<long long>(malloc_usable_size(p)), std::memory_order_relaxed);
    return p;
}

void countedDelete(void* p) noexcept
{
    if (!p)
        return;
    liveNewBytes.fetch_sub(static_cast<long long>(malloc_usable_size(p)), std::memory_order_relaxed);
    std::free(p);
}
} // namespace

void* operator new(std::size_t size)
{
    return countedNew(size);
}
void* operator new[](std::size_t size)
{
    return countedNew(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return countedNew(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    try {
        return countedNew(size);
    } catch (const std::bad_alloc&) {
        return nullptr;
    }
}
void operator delete(void* p) noexcept
{
    countedDelete(p);
}
void operator delete[](void* p) noexcept
{
    countedDelete(p);
}
void operator delete(void* p, std::size_t) noexcept
{
    countedDelete(p);
}
void operator delete[](void* p, std::size_t) noexcept
{
    countedDelete(p);
}
void operator delete(void* p, const std::nothrow_t&) noexcept
{
    countedDelete(p);
}
void operator delete[](void* p, const std::nothrow_t&) noexcept
{
    countedDelete(p);
}

namespace {

using bench::Backend;

constexpr int kRows = 100'000;

bench::OrderBenchDatabases* databases = nullptr;

// Bytes of heap in use: small blocks plus blocks malloc mapped on their own.
long long heapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return static_cast<long long>(info.uordblks + info.hblkhd);
}

// Runs `load` once per iteration into `rows` (reserved beforehand, so the
// list itself is not counted) and reports the heap and operator new bytes
// the loaded rows hold, per row.
template<class Row, class Load>
void measure(benchmark::State& state, const Load& load)
{
    std::vector<std::unique_ptr<Row>> rows;
    rows.reserve(kRows);
    double heapPerRow = 0;
    double newPerRow = 0;
    for (auto _ : state) {
        const long long heapBefore = heapInUse();
        const long long newBefore = liveNewBytes.load();
        load(rows);
        if (rows.size() != std::size_t(kRows)) {
            state.SkipWithError("the load did not return every row");
            return;
        }
        heapPerRow = double(heapInUse() - heapBefore) / kRows;
        newPerRow = double(liveNewBytes.load() - newBefore) / kRows;
        state.PauseTiming();
        rows.clear();
        state.ResumeTiming();
    }
    state.counters["bytes_per_row"] = heapPerRow;
    state.counters["new_bytes_per_row"] = newPerRow;
    state.counters["sizeof_row"] = double(sizeof(Row));
}

void registerMemory()
{
    const auto add = [](const char* name, auto&& fn) {
        benchmark::RegisterBenchmark(name, fn)->Iterations(1)->Unit(benchmark::kMillisecond);
    };
    add("orderdb/memoryOrders/sqlite", [](benchmark::State& s) {
        if (!databases->use(Backend::Sqlite, s))
            return;
        measure<qal::TomsOrder>(s, [](auto& rows) {
            qal::orderLoadOrders(
                [&rows](std::unique_ptr<qal::TomsOrder> r) { rows.push_back(std::move(r)); });
        });
        // A loaded record within 1.6 times the raw struct of the same fields.
        bench::setGoals(s, { { "raw", 1.6 } });
    });
    add("orderdb/memoryOrders@raw/sqlite", [](benchmark::State& s) {
        const bench::raw::SqliteReader reader(databases->sqlitePath().toStdString());
        measure<bench::raw::Order>(s,
            [&reader](auto& rows) { reader.load(bench::raw::kOrdersSql, bench::raw::kOrderColumns, rows); });
    });
    add("orderdb/memoryExchOrders/sqlite", [](benchmark::State& s) {
        if (!databases->use(Backend::Sqlite, s))
            return;
        measure<qal::TexchOrder>(s, [](auto& rows) {
            qal::orderLoadExchOrders(
                [&rows](std::unique_ptr<qal::TexchOrder> r) { rows.push_back(std::move(r)); });
        });
        // Within 1.6 times the raw struct of the same fields.
        bench::setGoals(s, { { "raw", 1.6 } });
    });
    add("orderdb/memoryExchOrders@raw/sqlite", [](benchmark::State& s) {
        const bench::raw::SqliteReader reader(databases->sqlitePath().toStdString());
        measure<bench::raw::ExchOrder>(s, [&reader](auto& rows) {
            reader.load(bench::raw::kExchOrdersSql, bench::raw::kExchOrderColumns, rows);
        });
    });
}

} // namespace

int main(int argc, char** argv)
{
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    bench::OrderBenchDatabases dbs({ kRows, kRows, 0 });
    databases = &dbs;
    benchmark::AddCustomContext("time_zone", bench::timeZoneText());
    registerMemory();
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    databases = nullptr;
    return 0;
}
