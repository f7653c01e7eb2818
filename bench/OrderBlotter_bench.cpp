// SPDX-License-Identifier: MIT
// The desk's blotter over a busy day: TOrderBlotterModel loading 100,000
// client orders from the embedded database (against orderLoadOrders alone,
// peer "loader"), and 10,000 order updates applied through the records'
// notifiers, each repainting its row (dataChanged reaches a connected view
// stand-in).
#include <cstdlib>
#include <limits>
#include <memory>
#include <vector>

#include <malloc.h>

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include "bench/BenchGoals.h"
#include "bench/OrderBenchDatabase.h"
#include "qalpack/forms/OrderBlotterModel.h"
#include "qalpack/model/exchData.h"
#include "qalpack/model/omsData.h"
#include "qalpack/orderdb/orderDB.h"

namespace {

using bench::Backend;

constexpr int kRows = 100'000;
constexpr int kUpdates = 10'000;
// Loading into the model costs at most 30% more than the loader alone.
constexpr double kLoadRatioGoal = 1.3;
// An update, the model's signal included, within 20 us: 50,000 a second.
constexpr double kUpdateRateGoal = 1e6 / 20.0;

bench::OrderBenchDatabases* databases = nullptr;

// Freed rows stay in the heap (see main); glibc's deferred merging of small
// free chunks is done here, untimed, as in OrderLoad_bench.
void settleHeap()
{
    std::free(std::malloc(4096));
}

void loadIntoModel(benchmark::State& state)
{
    if (!databases->use(Backend::Sqlite, state))
        return;
    for (auto _ : state) {
        auto model = std::make_unique<qal::TOrderBlotterModel>();
        if (model->LoadOrders() != kRows) {
            state.SkipWithError("the model did not get every row");
            return;
        }
        state.PauseTiming();
        model.reset();
        settleHeap();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
    bench::setGoals(state, { { "loader", kLoadRatioGoal } });
}

void loaderAlone(benchmark::State& state)
{
    if (!databases->use(Backend::Sqlite, state))
        return;
    std::vector<std::unique_ptr<qal::TomsOrder>> records;
    records.reserve(kRows);
    for (auto _ : state) {
        qal::orderLoadOrders(
            [&records](std::unique_ptr<qal::TomsOrder> r) { records.push_back(std::move(r)); });
        state.PauseTiming();
        records.clear();
        settleHeap();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * kRows);
}

// Each update is what the desk does with a server's message: fill part of
// the order, then NotifierUpdate; rows are spread over the whole day.
void updateThroughNotifiers(benchmark::State& state)
{
    if (!databases->use(Backend::Sqlite, state))
        return;
    qal::TOrderBlotterModel model;
    model.LoadOrders();
    long long repaints = 0;
    QObject view;
    QObject::connect(&model, &QAbstractItemModel::dataChanged, &view,
        [&repaints](const QModelIndex& topLeft, const QModelIndex&) { repaints += topLeft.row() >= 0; });
    int next = 0;
    for (auto _ : state) {
        for (int i = 0; i < kUpdates; ++i) {
            next = (next + 7919) % kRows;
            qal::TomsOrder* order = model.order(next);
            order->Fill_Qty += 1;
            order->Status = qal::StatusPartial;
            order->NotifierUpdate();
        }
    }
    if (repaints != state.iterations() * kUpdates)
        state.SkipWithError("an update did not reach the view");
    state.SetItemsProcessed(state.iterations() * kUpdates);
    bench::setRateGoal(state, kUpdateRateGoal);
}

} // namespace

int main(int argc, char** argv)
{
    mallopt(M_TRIM_THRESHOLD, std::numeric_limits<int>::max());
    QCoreApplication app(argc, argv);
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv))
        return 1;
    bench::OrderBenchDatabases dbs({ kRows, 0, 0 });
    databases = &dbs;
    const auto add = [](const char* name, void (*fn)(benchmark::State&)) {
        return benchmark::RegisterBenchmark(name, fn)->UseRealTime()->Unit(benchmark::kMillisecond);
    };
    add("blotter/load/sqlite", loadIntoModel)->Iterations(3);
    add("blotter/load@loader/sqlite", loaderAlone)->Iterations(3);
    add("blotter/update10k/sqlite", updateThroughNotifiers)->Unit(benchmark::kMicrosecond);
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    databases = nullptr;
    return 0;
}
