// Counting of heap allocations, so a benchmark can show that a path allocates nothing.
#pragma once

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdint>
#include <string>

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

/// Kinds of generated XML documents shared by the parser and DOM comparisons.
enum DocKind { DOC_ATTRIBUTES, DOC_TEXT, DOC_NESTED, DOC_NAMESPACES, DOC_KIND_COUNT };
inline const char* const kDocNames[DOC_KIND_COUNT] = {"attributes", "text", "nested", "namespaces"};

/// One generated document and how many start tags it holds.
struct Document {
  std::string bytes;
  size_t elements = 0;  // every reader must report this many start tags
};

/// The size of generated documents: ZQ_BENCH_XML_MB megabytes (default 50).
size_t documentSize();

/// The document of a kind, generated on first use with a fixed seed, so every run reads the
/// same bytes.
const Document& document(int kind);

/// A field of /proc/self/status in kB ("VmRSS", "VmHWM"), or -1 when it can't be read.
long statusKb(const char* field);

}  // namespace zqbench
