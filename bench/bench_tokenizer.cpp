// Tokenizer: tokens per second over a long CSS value list, raw and as values, with the heap
// allocations per token; and the single-value parser on short property texts.
#include <benchmark/benchmark.h>

#include <vector>

#include "BenchSupport.h"
#include "common/ZQParser.h"
#include "common/ZQTokenizer.h"

using namespace ZQCommonNS;

namespace {

// One declaration value list of a few thousand tokens: lengths, percentages, colours, keywords,
// strings and separators, as a long "font", "border" or "background" list has them.
UnicodeString longList() {
  static const char16_t* const pieces[] = {
      u"12pt solid #ff0000, ",
      u"1.5em -3px 50% auto, ",
      u"bold 10pt/1.2 'Times New Roman', ",
      u"#abc 0 0 2px rgb , ",
      u"-zq-inline 4.25cm 2in italic, ",
  };
  UnicodeString text;
  for (int i = 0; i < 600; ++i) text.append(pieces[i % 5]);
  return text;
}

// Texts without strings: every token can be read without a heap allocation.
UnicodeString numericList() {
  UnicodeString text;
  for (int i = 0; i < 400; ++i) text.append(u"12pt -1.5em 50% #ff0000 auto , ");
  return text;
}

void BM_Tokenizer_NextToken(benchmark::State& state) {
  const UnicodeString text = longList();
  ZQTokenizer tok(text, ZQTokenizer::TOKENIZER_CSS);
  const char16_t* start = tok.getPtr();
  zqbench::runCounted(state, [&] {
    tok.setPtr(start);
    size_t n = 0;
    while (tok.nextToken() != ZQTokenizer::TOKEN_END) ++n;
    return n;
  });
}

void BM_Tokenizer_NextTokenValue(benchmark::State& state) {
  const UnicodeString text = longList();
  ZQTokenizer tok(text, ZQTokenizer::TOKENIZER_CSS);
  const char16_t* start = tok.getPtr();
  zqbench::runCounted(state, [&] {
    tok.setPtr(start);
    size_t n = 0;
    for (;;) {
      ZQValue v = tok.nextTokenValueSigned();
      if (v.isNull()) break;
      benchmark::DoNotOptimize(v);
      ++n;
    }
    return n;
  });
}

void BM_Tokenizer_NumericValues(benchmark::State& state) {
  const UnicodeString text = numericList();
  ZQTokenizer tok(text, ZQTokenizer::TOKENIZER_CSS);
  const char16_t* start = tok.getPtr();
  zqbench::runCounted(state, [&] {
    tok.setPtr(start);
    size_t n = 0;
    for (;;) {
      ZQValue v = tok.nextTokenValueSigned();
      if (v.isNull()) break;
      benchmark::DoNotOptimize(v);
      ++n;
    }
    return n;
  });
}

void BM_Tokenizer_Construct(benchmark::State& state) {
  const UnicodeString text = longList();
  zqbench::runCounted(state, [&] {
    ZQTokenizer tok(text, ZQTokenizer::TOKENIZER_CSS);
    benchmark::DoNotOptimize(tok.getPtr());
    return size_t{1};
  });
}

void BM_Tokenizer_SeparatedValues(benchmark::State& state) {
  const UnicodeString text = longList();
  ZQTokenizer tok(text, ZQTokenizer::TOKENIZER_CSS);
  const char16_t* start = tok.getPtr();
  zqbench::runCounted(state, [&] {
    tok.setPtr(start);
    size_t n = 0;
    while (!tok.nextSeparatedValue(u',').isEmpty()) ++n;
    return n;
  });
}

void BM_Parser_Parse(benchmark::State& state) {
  const std::vector<UnicodeString> texts = {u"12pt", u"-1.5em", u"50%", u"#ff0000",
                                            u"auto", u"bold",   u"1 2", u"'a b'"};
  zqbench::runCounted(state, [&] {
    for (const UnicodeString& t : texts) benchmark::DoNotOptimize(ZQParser::parse(t));
    return texts.size();
  });
}

}  // namespace

BENCHMARK(BM_Tokenizer_NextToken);
BENCHMARK(BM_Tokenizer_NextTokenValue);
BENCHMARK(BM_Tokenizer_NumericValues);
BENCHMARK(BM_Tokenizer_Construct);
BENCHMARK(BM_Tokenizer_SeparatedValues);
BENCHMARK(BM_Parser_Parse);

BENCHMARK_MAIN();
