// Name interning: built-in hits, run-time hits and misses, side by side with a plain
// std::unordered_map<std::u16string, int> on the same strings.
#include <benchmark/benchmark.h>

#include <string>
#include <unordered_map>
#include <vector>

#include "BenchSupport.h"
#include "common/ZQName.h"

using namespace ZQCommonNS;

namespace {

// A property-sheet-like mix of built-in words.
const char16_t* const kBuiltin[] = {u"font-size", u"color",      u"margin-top",   u"page-sequence",
                                    u"block",     u"inline",     u"text-align",   u"auto",
                                    u"none",      u"solid",      u"border-left",  u"white-space",
                                    u"xml:lang",  u"table-cell", u"start-indent", u"keep-together"};
constexpr size_t kCount = sizeof(kBuiltin) / sizeof(kBuiltin[0]);

struct Strings {
  std::vector<UnicodeString> builtin, runtime, missing;
  std::vector<std::u16string> builtin16, runtime16, missing16;
  std::unordered_map<std::u16string, int> plain;

  Strings() {
    for (size_t i = 0; i < kCount; ++i) {
      std::u16string b = kBuiltin[i];
      std::u16string r = u"my-" + b;
      std::u16string m = u"absent-" + b;
      builtin.emplace_back(b.data(), static_cast<int32_t>(b.size()));
      runtime.emplace_back(r.data(), static_cast<int32_t>(r.size()));
      missing.emplace_back(m.data(), static_cast<int32_t>(m.size()));
      builtin16.push_back(b);
      runtime16.push_back(r);
      missing16.push_back(m);
    }
    for (size_t i = 1; i < ZQ_BUILTIN_NAME_COUNT; ++i) {
      const UnicodeString& s = ZQNameTable::getBuiltinNameString(static_cast<ZQNameEnum>(i));
      plain.emplace(std::u16string(s.getBuffer(), static_cast<size_t>(s.length())),
                    static_cast<int>(i));
    }
    for (size_t i = 0; i < kCount; ++i) {
      plain.emplace(runtime16[i], static_cast<int>(ZQNameTable::getSharedNameEnum(runtime[i])));
    }
  }
};

Strings& strings() {
  static Strings s;
  return s;
}

void BM_ZQName_BuiltinHit(benchmark::State& state) {
  auto& s = strings();
  zqbench::runCounted(state, [&] {
    for (auto& text : s.builtin) benchmark::DoNotOptimize(ZQNameTable::getSharedNameEnum(text));
    return kCount;
  });
}

void BM_PlainMap_BuiltinHit(benchmark::State& state) {
  auto& s = strings();
  zqbench::runCounted(state, [&] {
    for (auto& text : s.builtin16) benchmark::DoNotOptimize(s.plain.find(text)->second);
    return kCount;
  });
}

void BM_ZQName_RuntimeHit(benchmark::State& state) {
  auto& s = strings();
  zqbench::runCounted(state, [&] {
    for (auto& text : s.runtime) benchmark::DoNotOptimize(ZQNameTable::getSharedNameEnum(text));
    return kCount;
  });
}

void BM_PlainMap_RuntimeHit(benchmark::State& state) {
  auto& s = strings();
  zqbench::runCounted(state, [&] {
    for (auto& text : s.runtime16) benchmark::DoNotOptimize(s.plain.find(text)->second);
    return kCount;
  });
}

void BM_ZQName_RuntimeMiss(benchmark::State& state) {
  auto& s = strings();
  ZQNameTable* table = ZQNameTable::getSharedNameTable();
  zqbench::runCounted(state, [&] {
    for (auto& text : s.missing) benchmark::DoNotOptimize(table->lookupName(text));
    return kCount;
  });
}

void BM_PlainMap_RuntimeMiss(benchmark::State& state) {
  auto& s = strings();
  zqbench::runCounted(state, [&] {
    for (auto& text : s.missing16) benchmark::DoNotOptimize(s.plain.find(text) == s.plain.end());
    return kCount;
  });
}

void BM_ZQName_BuiltinString(benchmark::State& state) {
  zqbench::runCounted(state, [&] {
    for (int i = 1; i < 64; ++i) {
      benchmark::DoNotOptimize(ZQNameTable::getSharedNameString(static_cast<ZQNameEnum>(i * 40)));
    }
    return size_t{63};
  });
}

}  // namespace

BENCHMARK(BM_ZQName_BuiltinHit);
BENCHMARK(BM_PlainMap_BuiltinHit);
BENCHMARK(BM_ZQName_RuntimeHit);
BENCHMARK(BM_PlainMap_RuntimeHit);
BENCHMARK(BM_ZQName_RuntimeMiss);
BENCHMARK(BM_PlainMap_RuntimeMiss);
BENCHMARK(BM_ZQName_BuiltinString);
BENCHMARK(BM_ZQName_BuiltinHit)->Threads(2)->Name("BM_ZQName_BuiltinHit_2threads");

BENCHMARK_MAIN();
