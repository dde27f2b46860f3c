// What the benchmarks of the store and its helpers share: CPU time of a part of each iteration,
// time per item, and a main function.
//
// kelvo runs once, so every byte it takes is a byte it takes for the first time. A benchmark that
// repeats its work would soon be handed back memory that is already there, for small sizes more
// than for large ones. So memory given back goes back to the system, in every size alike.
#pragma once

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>
#include <vector>

#include "bench/warm_memory.h"

namespace bench {

inline double CpuSeconds() {
  timespec now{};
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

// The quickest of the repetitions: what else the machine does only ever adds time.
inline double Best(const std::vector<double>& times) {
  return *std::min_element(times.begin(), times.end());
}

// `work` measured in CPU time as one iteration.
template <class Work>
void MeasureOnce(benchmark::State& state, Work work) {
  constexpr std::size_t kMostBytesPerItem = 2000;
  WarmMemory(static_cast<std::size_t>(state.range(0)) * kMostBytesPerItem);
  const double start = CpuSeconds();
  work();
  state.SetIterationTime(CpuSeconds() - start);
}

// What one of the items took: `items` of them in all iterations together.
inline void CountItems(benchmark::State& state, std::int64_t items) {
  using benchmark::Counter;
  state.counters["per_item"] =
      Counter(static_cast<double>(items), Counter::kIsRate | Counter::kInvert);
}

// The same where every iteration has as many items as the argument says.
inline void CountItems(benchmark::State& state) {
  CountItems(state, static_cast<std::int64_t>(state.iterations()) * state.range(0));
}

// Timed by MeasureOnce at a size; the best of the repetitions counts. The iterations are as many as
// it takes to work on a hundred thousand items. With BENCH_ONCE in the environment everything is
// done once, for whoever counts instructions.
inline void SetSize(benchmark::internal::Benchmark* benchmark, std::int64_t size) {
  constexpr std::int64_t kItems = 100'000;
  const bool once = std::getenv("BENCH_ONCE") != nullptr;
  benchmark->Arg(size)->Iterations(once ? 1 : std::max<std::int64_t>(kItems / size, 1));
  const int repetitions = size > kItems ? 3 : 7;
  benchmark->Repetitions(once ? 1 : repetitions)->ComputeStatistics("best", Best);
  benchmark->UseManualTime()->DisplayAggregatesOnly(true)->Unit(benchmark::kNanosecond);
}

// The sizes of all benchmarks.
inline constexpr std::int64_t kSizes[] = {10'000, 100'000, 1'000'000};

// Registers `work` under `name` for each of the sizes.
template <class Work>
void Register(const std::string& name, Work work) {
  for (const std::int64_t size : kSizes) {
    SetSize(benchmark::RegisterBenchmark(name.c_str(), work), size);
  }
}

inline int RunBenchmarks(int argument_count, char** arguments) {
  constexpr int kKeptBytes = 128 * 1024;
  mallopt(M_MMAP_THRESHOLD, kKeptBytes);
  mallopt(M_TRIM_THRESHOLD, kKeptBytes);
  benchmark::Initialize(&argument_count, arguments);
  if (benchmark::ReportUnrecognizedArguments(argument_count, arguments)) return 1;
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}

}  // namespace bench
