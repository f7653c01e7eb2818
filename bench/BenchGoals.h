// SPDX-License-Identifier: MIT
// How a benchmark states its goal so that scripts/bench can judge it: as
// user counters in Google Benchmark's JSON output, next to the timings.
#pragma once

#include <initializer_list>
#include <string>
#include <utility>

#include <benchmark/benchmark.h>

namespace bench {

// Each pair (peer, bound) says: our median time may be at most `bound`
// times the median of the run named "<this benchmark's name>@<peer>".
inline void setGoals(benchmark::State& state, std::initializer_list<std::pair<const char*, double>> ratios)
{
    for (const auto& [peer, bound] : ratios)
        state.counters[std::string("goal_ratio@") + peer] = bound;
}

// At least `itemsPerSecond` items (as counted by SetItemsProcessed) a second.
inline void setRateGoal(benchmark::State& state, double itemsPerSecond)
{
    state.counters["goal_rate"] = itemsPerSecond;
}

} // namespace bench
