// SPDX-License-Identifier: MIT
// Price stepping on the real SEHK securities ladder, as a price control does
// on every arrow key and wheel notch.
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/BenchGoals.h"
#include "qalpack/market/SpreadTable.h"

namespace {

const qal::TSpreadTable& securitiesLadder()
{
    static const qal::TSpreadTable table = qal::TSpreadTable::fromFile(
        QStringLiteral(QALPACK_SOURCE_DIR "/config/spreads/sehk_securities.txt"));
    return table;
}

// Prices spread over every band, on and off the ladder.
const std::vector<double>& prices()
{
    static const std::vector<double> values { 0.012, 0.2, 0.455, 3.21, 9.99, 10.01, 19.99, 20.03, 49.98,
        77.77, 100.0, 150.15, 420.2, 777.5, 1234.0, 3456.0, 7777.0, 9995.0 };
    return values;
}

void BM_ValidatePrice(benchmark::State& state)
{
    const auto& table = securitiesLadder();
    for (auto _ : state) {
        for (const double p : prices())
            benchmark::DoNotOptimize(table.ValidatePrice(p));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(prices().size()));
    bench::setRateGoal(state, 10e6);
}
BENCHMARK(BM_ValidatePrice)->Name("ladder/ValidatePrice");

void BM_GetNearestPrice(benchmark::State& state)
{
    const auto& table = securitiesLadder();
    for (auto _ : state) {
        for (const double p : prices())
            benchmark::DoNotOptimize(table.GetNearestPrice(p));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(prices().size()));
    bench::setRateGoal(state, 10e6);
}
BENCHMARK(BM_GetNearestPrice)->Name("ladder/GetNearestPrice");

void BM_GetNextPrice(benchmark::State& state)
{
    const auto& table = securitiesLadder();
    const int steps = static_cast<int>(state.range(0));
    for (auto _ : state) {
        for (const double p : prices())
            benchmark::DoNotOptimize(table.GetNextPrice(p, steps));
    }
    state.SetItemsProcessed(state.iterations() * static_cast<int64_t>(prices().size()));
    bench::setRateGoal(state, 10e6);
}
BENCHMARK(BM_GetNextPrice)->Name("ladder/GetNextPrice")->Arg(1)->Arg(-1)->Arg(10)->Arg(-10);

} // namespace

BENCHMARK_MAIN();
