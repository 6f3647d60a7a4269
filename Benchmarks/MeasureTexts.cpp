#include "VellorenMenu/DateTexts.h"

#include <benchmark/benchmark.h>

namespace {

constexpr velloren::Date now{std::chrono::seconds(1457355900)};

void timeOfDay(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(velloren::hhmm(now));
}

void rowOfToday(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(velloren::relativeDate(now, now));
}

void rowOfNextWeek(benchmark::State& state) {
    for (auto _ : state)
        benchmark::DoNotOptimize(velloren::relativeDate(now + std::chrono::days(7), now));
}

BENCHMARK(timeOfDay)->Unit(benchmark::kMicrosecond);
BENCHMARK(rowOfToday)->Unit(benchmark::kMicrosecond);
BENCHMARK(rowOfNextWeek)->Unit(benchmark::kMicrosecond);

} // namespace

BENCHMARK_MAIN();
