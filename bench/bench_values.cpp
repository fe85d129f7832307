// Values: copy, comparison and sum of numbers without heap allocation; named-value map
// look-up side by side with std::unordered_map on the same keys.
#include <benchmark/benchmark.h>

#include <unordered_map>
#include <vector>

#include "BenchSupport.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQValue.h"

using namespace ZQCommonNS;

namespace {

// A handful of numbers as property values hold them.
std::vector<ZQValue> numbers() {
  return {ZQValue(12),
          ZQValue(1.5f, ZQUNIT_CM),
          ZQValue(72.0f, ZQUNIT_PT),
          ZQValue(50.0f, ZQUNIT_PERCENT),
          ZQValue(1.0f, ZQUNIT_IN),
          ZQValue(2.0f, ZQUNIT_EM),
          ZQValue(90.0f, ZQUNIT_DEG),
          ZQValue(3)};
}

void BM_Value_CopyNumeric(benchmark::State& state) {
  std::vector<ZQValue> in = numbers();
  zqbench::runCounted(state, [&] {
    for (const ZQValue& v : in) {
      ZQValue copy(v);
      benchmark::DoNotOptimize(copy);
    }
    return in.size();
  });
}

void BM_Value_CompareNumeric(benchmark::State& state) {
  std::vector<ZQValue> in = numbers();
  zqbench::runCounted(state, [&] {
    size_t n = 0;
    for (const ZQValue& a : in) {
      for (const ZQValue& b : in) {
        benchmark::DoNotOptimize(a == b);
        benchmark::DoNotOptimize(a < b);
        n += 2;
      }
    }
    return n;
  });
}

void BM_Value_AddNumeric(benchmark::State& state) {
  const ZQValue lengths[] = {ZQValue(1.0f, ZQUNIT_IN), ZQValue(72.0f, ZQUNIT_PT),
                             ZQValue(2.0f, ZQUNIT_CM), ZQValue(5.0f, ZQUNIT_MM)};
  const ZQValue ints[] = {ZQValue(2), ZQValue(3), ZQValue(-7), ZQValue(11)};
  zqbench::runCounted(state, [&] {
    for (const ZQValue& a : lengths) {
      for (const ZQValue& b : lengths) benchmark::DoNotOptimize(a + b);
    }
    for (const ZQValue& a : ints) {
      for (const ZQValue& b : ints) benchmark::DoNotOptimize(a + b);
    }
    return size_t{32};
  });
}

// Keys spread over the built-in vocabulary, as the members of a record are.
std::vector<ZQName> keys(int count) {
  std::vector<ZQName> out;
  for (int i = 0; i < count; ++i) out.emplace_back(static_cast<ZQNameEnum>(17 + i * 41));
  return out;
}

void BM_NamedValueMap_Lookup(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  std::vector<ZQName> k = keys(count);
  ZQPtr<ZQNamedValueMap> map(new ZQNamedValueMap());
  for (int i = 0; i < count; ++i) map->setNamedItem(k[static_cast<size_t>(i)], ZQValue(i));
  zqbench::runCounted(state, [&] {
    ZQValue result;
    for (const ZQName& name : k) {
      map->getNamedItemFast(name, result);
      benchmark::DoNotOptimize(result);
    }
    return k.size();
  });
}

void BM_NamedValueMap_GetNamedItem(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  std::vector<ZQName> k = keys(count);
  ZQPtr<ZQNamedValueMap> map(new ZQNamedValueMap());
  for (int i = 0; i < count; ++i) map->setNamedItem(k[static_cast<size_t>(i)], ZQValue(i));
  zqbench::runCounted(state, [&] {
    for (const ZQName& name : k) benchmark::DoNotOptimize(map->getNamedItem(name));
    return k.size();
  });
}

void BM_UnorderedMap_Lookup(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  std::vector<ZQName> k = keys(count);
  std::unordered_map<int, ZQValue> map;
  for (int i = 0; i < count; ++i)
    map.emplace(static_cast<int>(k[static_cast<size_t>(i)]), ZQValue(i));
  zqbench::runCounted(state, [&] {
    ZQValue result;
    for (const ZQName& name : k) {
      auto it = map.find(static_cast<int>(name));
      if (it != map.end()) result = it->second;
      benchmark::DoNotOptimize(result);
    }
    return k.size();
  });
}

void BM_NamedValueMap_Miss(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  std::vector<ZQName> k = keys(count);
  ZQPtr<ZQNamedValueMap> map(new ZQNamedValueMap());
  for (int i = 0; i < count; ++i) map->setNamedItem(k[static_cast<size_t>(i)], ZQValue(i));
  std::vector<ZQName> absent;
  for (int i = 0; i < count; ++i) absent.emplace_back(static_cast<ZQNameEnum>(18 + i * 41));
  zqbench::runCounted(state, [&] {
    ZQValue result;
    for (const ZQName& name : absent) map->getNamedItemFast(name, result);
    benchmark::DoNotOptimize(result);
    return absent.size();
  });
}

void BM_UnorderedMap_Miss(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  std::vector<ZQName> k = keys(count);
  std::unordered_map<int, ZQValue> map;
  for (int i = 0; i < count; ++i)
    map.emplace(static_cast<int>(k[static_cast<size_t>(i)]), ZQValue(i));
  std::vector<int> absent;
  for (int i = 0; i < count; ++i) absent.push_back(18 + i * 41);
  zqbench::runCounted(state, [&] {
    size_t found = 0;
    for (int name : absent) found += map.count(name);
    benchmark::DoNotOptimize(found);
    return absent.size();
  });
}

}  // namespace

BENCHMARK(BM_Value_CopyNumeric);
BENCHMARK(BM_Value_CompareNumeric);
BENCHMARK(BM_Value_AddNumeric);
BENCHMARK(BM_NamedValueMap_Lookup)->Arg(4)->Arg(64);
BENCHMARK(BM_UnorderedMap_Lookup)->Arg(4)->Arg(64);
BENCHMARK(BM_NamedValueMap_GetNamedItem)->Arg(4)->Arg(64);
BENCHMARK(BM_NamedValueMap_Miss)->Arg(4)->Arg(64);
BENCHMARK(BM_UnorderedMap_Miss)->Arg(4)->Arg(64);

BENCHMARK_MAIN();
