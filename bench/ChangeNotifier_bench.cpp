// SPDX-License-Identifier: MIT
// What a watched record pays to tell its subscribers (blotter rows, order
// screens) that it changed, against the least that calling the same
// callbacks can cost: a plain loop over them ("@loop").
#include <algorithm>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include <benchmark/benchmark.h>

#include "bench/BenchGoals.h"
#include "qalpack/model/ChangeNotifier.h"

namespace {

// One subscriber's work: as little as a callback can do, so that what is
// measured is the notifier.
struct Screen
{
    long long redraws = 0;
    long long closedIn = 0; // the loop's removal mark: the fire the screen closed in
};

std::vector<Screen> screens(std::size_t count)
{
    return std::vector<Screen>(count);
}

qal::TChangeNotifyEvent redraw()
{
    return [](void*, void* custom) { ++static_cast<Screen*>(custom)->redraws; };
}

void BM_Fire(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    auto subscribers = screens(count);
    qal::TChangeNotifier notifier;
    for (Screen& s : subscribers)
        notifier.RegisterCallback(redraw(), &s);
    int record = 0;
    for (auto _ : state)
        notifier.FireEvent(&record);
    benchmark::DoNotOptimize(subscribers.front().redraws);
    state.SetItemsProcessed(state.iterations() * state.range(0));
    bench::setGoals(state, { { "loop", 2.0 } });
}
BENCHMARK(BM_Fire)->Name("notifier/fire")->Arg(1)->Arg(10)->Arg(1000);

void BM_FireLoop(benchmark::State& state)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    auto subscribers = screens(count);
    std::vector<std::pair<qal::TChangeNotifyEvent, void*>> callbacks;
    for (Screen& s : subscribers)
        callbacks.emplace_back(redraw(), &s);
    int record = 0;
    for (auto _ : state) {
        for (const auto& [callback, custom] : callbacks)
            callback(&record, custom);
        benchmark::ClobberMemory();
    }
    benchmark::DoNotOptimize(subscribers.front().redraws);
    state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_FireLoop)->Name("notifier/fire@loop")->Arg(1)->Arg(10)->Arg(1000);

// Screens that close on the change they are told of: each subscriber removes
// itself from inside the fire. Subscribing again between rounds is not timed;
// a round fires enough records for the paused clock to cost little.
std::size_t recordsPerRound(benchmark::State& state)
{
    return std::max<std::size_t>(1, 1000 / static_cast<std::size_t>(state.range(0)));
}

void BM_FireSelfRemoving(benchmark::State& state)
{
    auto subscribers = screens(static_cast<std::size_t>(state.range(0)));
    std::vector<std::unique_ptr<qal::TChangeNotifier>> records(recordsPerRound(state));
    for (auto& r : records)
        r = std::make_unique<qal::TChangeNotifier>();
    // The record hands itself to its subscribers, as records do.
    const qal::TChangeNotifyEvent close = [](void* data, void* custom) {
        ++static_cast<Screen*>(custom)->redraws;
        static_cast<qal::TChangeNotifier*>(data)->RemoveCallback(custom);
    };
    for (auto _ : state) {
        state.PauseTiming();
        for (auto& r : records) {
            for (Screen& s : subscribers)
                r->RegisterCallback(close, &s);
        }
        state.ResumeTiming();
        for (auto& r : records) {
            r->FireEvent(r.get());
            // The marks left behind the walk go with the record's next fire.
            r->FireEvent(r.get());
        }
    }
    for (auto& r : records) {
        if (r->callbackCount() != 0)
            state.SkipWithError("subscriptions survived their removal");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * static_cast<std::int64_t>(records.size()));
    bench::setGoals(state, { { "loop", 2.0 } });
}
BENCHMARK(BM_FireSelfRemoving)->Name("notifier/fire, each removes itself")->Arg(10)->Arg(1000);

// The loop's subscribers close by noting the fire they closed in, the
// cheapest removal there is; the closed entries are dropped after the loop.
void BM_FireSelfRemovingLoop(benchmark::State& state)
{
    auto subscribers = screens(static_cast<std::size_t>(state.range(0)));
    struct Entry
    {
        qal::TChangeNotifyEvent callback;
        Screen* screen;
    };
    std::vector<std::vector<Entry>> records(recordsPerRound(state));
    const qal::TChangeNotifyEvent close = [](void* data, void* custom) {
        auto* screen = static_cast<Screen*>(custom);
        ++screen->redraws;
        screen->closedIn = *static_cast<const long long*>(data);
    };
    long long fire = 0;
    for (auto _ : state) {
        state.PauseTiming();
        for (auto& callbacks : records) {
            for (Screen& s : subscribers)
                callbacks.push_back({ close, &s });
        }
        state.ResumeTiming();
        for (auto& callbacks : records) {
            ++fire;
            for (std::size_t i = 0; i < callbacks.size(); ++i) {
                if (callbacks[i].screen->closedIn != fire)
                    callbacks[i].callback(&fire, callbacks[i].screen);
            }
            std::erase_if(callbacks, [fire](const Entry& e) { return e.screen->closedIn == fire; });
        }
    }
    for (auto& callbacks : records) {
        if (!callbacks.empty())
            state.SkipWithError("subscriptions survived their removal");
    }
    state.SetItemsProcessed(state.iterations() * state.range(0) * static_cast<std::int64_t>(records.size()));
}
BENCHMARK(BM_FireSelfRemovingLoop)->Name("notifier/fire, each removes itself@loop")->Arg(10)->Arg(1000);

// Registering must stay linear in the number of subscribers: ours puts n
// subscriptions on one record, the peer ("@spread") the same n on records of
// 100 each. Per subscriber the two must cost about the same.
void registerInto(benchmark::State& state, std::size_t perRecord)
{
    const auto count = static_cast<std::size_t>(state.range(0));
    auto subscribers = screens(count);
    for (auto _ : state) {
        state.PauseTiming();
        std::vector<std::unique_ptr<qal::TChangeNotifier>> records(count / perRecord);
        for (auto& r : records)
            r = std::make_unique<qal::TChangeNotifier>();
        state.ResumeTiming();
        for (std::size_t i = 0; i < count; ++i)
            records[i / perRecord]->RegisterCallback(redraw(), &subscribers[i]);
        state.PauseTiming();
        records.clear();
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_Register(benchmark::State& state)
{
    registerInto(state, static_cast<std::size_t>(state.range(0)));
    bench::setGoals(state, { { "spread", 2.0 } });
}
BENCHMARK(BM_Register)->Name("notifier/register n on one record")->Arg(100000);

void BM_RegisterSpread(benchmark::State& state)
{
    registerInto(state, 100);
}
BENCHMARK(BM_RegisterSpread)->Name("notifier/register n on one record@spread")->Arg(100000);

} // namespace

BENCHMARK_MAIN();
