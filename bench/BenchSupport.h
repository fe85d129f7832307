// Counting of heap allocations, so a benchmark can show that a path allocates nothing.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>

namespace zqbench {

/// Heap allocations made by this process so far: every malloc, the library's and ICU's too.
size_t allocationCount();

/// Runs `body` (which returns how many operations it did) for each iteration, and reports the
/// operations per second and the allocations per operation.
template <class F>
void runCounted(benchmark::State& state, F&& body) {
  size_t before = allocationCount();
  size_t ops = 0;
  for (auto _ : state) ops += body();
  state.counters["allocs/op"] = benchmark::Counter(static_cast<double>(allocationCount() - before) /
                                                   static_cast<double>(ops ? ops : 1));
  state.SetItemsProcessed(static_cast<int64_t>(ops));
}

}  // namespace zqbench
