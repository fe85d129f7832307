// Number formatting throughput: decimal, Roman, alphabetic and kansuji through ZQUtil, with
// ICU's RuleBasedNumberFormat (the root locale's "%roman-upper" rules) beside the Roman case.
#include <benchmark/benchmark.h>
#include <unicode/numsys.h>
#include <unicode/rbnf.h>

#include <memory>

#include "BenchSupport.h"
#include "common/ZQLang.h"
#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {

constexpr int kBatch = 1000;

// Formats the numbers 1..kBatch (spread over the range a format allows) under one format.
template <class F>
void runBatch(benchmark::State& state, long long limit, F format) {
  zqbench::runCounted(state, [&] {
    for (int i = 1; i <= kBatch; ++i) {
      const long long n = 1 + (static_cast<long long>(i) * 7919) % limit;
      UnicodeString s = format(n);
      benchmark::DoNotOptimize(s.getBuffer());
    }
    return kBatch;
  });
}

void BM_Decimal_ZQUtil(benchmark::State& state) {
  const UnicodeString format(u"1");
  const ZQLang none;
  runBatch(state, 1000000000, [&](long long n) { return ZQUtil::formatNumber(n, format, none); });
}

void BM_DecimalGrouped_ZQUtil(benchmark::State& state) {
  const UnicodeString format(u"1"), sep(u",");
  const ZQLang none;
  runBatch(state, 1000000000,
           [&](long long n) { return ZQUtil::formatNumber(n, format, sep, 3, none, ZQN_auto); });
}

void BM_Roman_ZQUtil(benchmark::State& state) {
  const UnicodeString format(u"I");
  const ZQLang none;
  runBatch(state, 39999, [&](long long n) { return ZQUtil::formatNumber(n, format, none); });
}

void BM_Roman_IcuRbnf(benchmark::State& state) {
  UErrorCode status = U_ZERO_ERROR;
  icu::RuleBasedNumberFormat rbnf(icu::URBNF_NUMBERING_SYSTEM, icu::Locale::getRoot(), status);
  rbnf.setDefaultRuleSet(UnicodeString(u"%roman-upper"), status);
  if (U_FAILURE(status)) {
    state.SkipWithError("no %roman-upper rules");
    return;
  }
  runBatch(state, 39999, [&](long long n) {
    UnicodeString out;
    rbnf.format(static_cast<int64_t>(n), out);
    return out;
  });
}

void BM_Alphabetic_ZQUtil(benchmark::State& state) {
  const UnicodeString format(u"a");
  const ZQLang none;
  runBatch(state, 65535, [&](long long n) { return ZQUtil::formatNumber(n, format, none); });
}

void BM_AlphabeticLanguage_ZQUtil(benchmark::State& state) {
  const UnicodeString format(u"a");
  const ZQLang lang("ru");
  runBatch(state, 1000000000, [&](long long n) { return ZQUtil::formatNumber(n, format, lang); });
}

void BM_Kansuji_ZQUtil(benchmark::State& state) {
  const UnicodeString empty;
  runBatch(state, 1000000000, [&](long long n) {
    return ZQUtil::convertKansuji(n, ZQName(ZQN_readable), ZQName(ZQN_kanji), empty, empty);
  });
}

}  // namespace

BENCHMARK(BM_Decimal_ZQUtil);
BENCHMARK(BM_DecimalGrouped_ZQUtil);
BENCHMARK(BM_Roman_ZQUtil);
BENCHMARK(BM_Roman_IcuRbnf);
BENCHMARK(BM_Alphabetic_ZQUtil);
BENCHMARK(BM_AlphabeticLanguage_ZQUtil);
BENCHMARK(BM_Kansuji_ZQUtil);

BENCHMARK_MAIN();
