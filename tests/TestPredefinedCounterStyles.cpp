#include <gtest/gtest.h>
#include <unicode/uchar.h>

#include <climits>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "common/ZQUtil.h"
#include "util/ZQPredefinedCounterStyles.h"

using namespace ZQCommonNS;

namespace {

using zqtest::utf8;
using CounterStyle = ZQUtil::CounterStyle;
using Symbol = CounterStyle::Symbol;

const CounterStyle* style(const char* name) {
  return ZQUtil::getPredefinedCounterStyle(ZQName(UnicodeString(name, -1, US_INV)));
}

const CounterStyle* predefinedLookup(ZQName name, void*) {
  return ZQUtil::getPredefinedCounterStyle(name);
}

// Formats with the predefined styles as fallbacks.
std::string fmt(const char* name, long long n, bool bare = true) {
  const CounterStyle* s = style(name);
  if (s == nullptr) return "<no style>";
  return utf8(s->formatNumber(n, predefinedLookup, nullptr, bare));
}

std::string cps(std::initializer_list<UChar32> list) {
  UnicodeString s;
  for (UChar32 c : list) s.append(c);
  return utf8(s);
}

struct Group {
  ZQNameEnum system;
  std::vector<const char*> names;
};

// The names by system, as the table lists them; "shared" are the ones that share a definition
// with another name.
const std::vector<Group>& groups() {
  static const std::vector<Group> list = {
      {ZQN_numeric,
       {"arabic-indic",
        "bengali",
        "binary",
        "cambodian",
        "cjk-decimal",
        "decimal",
        "devanagari",
        "fullwidth-decimal",
        "gujarati",
        "gurmukhi",
        "kannada",
        "khmer",
        "lao",
        "lepcha",
        "lower-hexadecimal",
        "malayalam",
        "mongolian",
        "myanmar",
        "new-base-60",
        "octal",
        "oriya",
        "persian",
        "shan",
        "super-decimal",
        "tamil",
        "telugu",
        "thai",
        "tibetan",
        "upper-hexadecimal"}},
      {ZQN_alphabetic,
       {"ari",
        "blin",
        "cjk-earthly-branch",
        "cjk-heavenly-stem",
        "dizi",
        "fullwidth-lower-alpha",
        "fullwidth-lower-latin",
        "fullwidth-upper-alpha",
        "fullwidth-upper-latin",
        "gedeo",
        "gumuz",
        "hadiyya",
        "harari",
        "hindi",
        "hiragana",
        "hiragana-iroha",
        "kaffa",
        "katakana",
        "katakana-iroha",
        "kebena",
        "kembata",
        "khmer-consonant",
        "konso",
        "korean-consonant",
        "korean-syllable",
        "kunama",
        "lower-alpha",
        "lower-belorussian",
        "lower-bulgarian",
        "lower-greek",
        "lower-latin",
        "lower-macedonian",
        "lower-oromo-qubee",
        "lower-russian",
        "lower-russian-full",
        "lower-serbo-croatian",
        "lower-ukrainian",
        "lower-ukrainian-full",
        "meen",
        "oromo",
        "saho",
        "sidama",
        "silti",
        "thai-alphabetic",
        "tigre",
        "upper-alpha",
        "upper-belorussian",
        "upper-bulgarian",
        "upper-greek",
        "upper-latin",
        "upper-macedonian",
        "upper-oromo-qubee",
        "upper-russian",
        "upper-russian-full",
        "upper-serbo-croatian",
        "upper-ukrainian",
        "upper-ukrainian-full",
        "wolaita",
        "yemsa"}},
      {ZQN_additive,
       {"ancient-tamil", "armenian", "georgian", "greek-lower-ancient", "greek-upper-ancient",
        "greek-upper-modern", "hebrew", "japanese-informal", "korean-hangul-formal",
        "korean-hanja-formal", "korean-hanja-informal", "lower-armenian", "lower-roman",
        "simple-lower-roman", "simple-upper-roman", "upper-armenian", "upper-roman"}},
      {ZQN_fixed,
       {"arabic-abjad",
        "circled-decimal",
        "circled-ideograph",
        "circled-katakana",
        "circled-korean-consonant",
        "circled-korean-syllable",
        "circled-lower-latin",
        "circled-upper-latin",
        "decimal-leading-zero",
        "dotted-decimal",
        "double-circled-decimal",
        "filled-circled-decimal",
        "fullwidth-lower-roman",
        "fullwidth-upper-roman",
        "maghrebi-abjad",
        "parenthesized-decimal",
        "parenthesized-hangul-consonant",
        "parenthesized-hangul-syllable",
        "parenthesized-ideograph",
        "parenthesized-lower-latin",
        "persian-abjad",
        "persian-alphabetic"}},
      {ZQN_cyclic, {"box", "check", "diamond", "disc"}},
      {ZQN_symbolic, {"lower-alpha-symbolic", "upper-alpha-symbolic"}},
      {ZQN_ethiopic_numeric, {"ethiopic-numeric"}},
      {ZQN_simp_chinese_formal, {"simp-chinese-formal"}},
      {ZQN_simp_chinese_informal, {"simp-chinese-informal"}},
      {ZQN_trad_chinese_formal, {"trad-chinese-formal"}},
      {ZQN_trad_chinese_informal, {"cjk-ideographic", "trad-chinese-informal"}},
      {ZQN_additive, {"greek", "greek-lower-modern"}},
  };
  return list;
}

std::vector<const char*> allNames() {
  std::vector<const char*> names;
  for (const Group& g : groups()) names.insert(names.end(), g.names.begin(), g.names.end());
  return names;
}

// Whether `s` can represent `n` by its range (or its system's default) and, for "fixed", its
// symbols.
bool representable(const CounterStyle& s, long long n) {
  bool inRange;
  if (const auto* range = s.getRange()) {
    inRange = false;
    for (const auto& [low, high] : *range) inRange = inRange || (low <= n && n <= high);
  } else if (s.getSystem() == ZQN_alphabetic || s.getSystem() == ZQN_symbolic) {
    inRange = n >= 1;
  } else if (s.getSystem() == ZQN_additive) {
    inRange = n >= 0;
  } else {
    inRange = true;
  }
  if (inRange && s.getSystem() == ZQN_fixed) {
    const long long count = s.getSymbols() ? static_cast<long long>(s.getSymbols()->size()) : 0;
    inRange = n >= s.getFirst() && n - s.getFirst() < count;
  }
  return inRange;
}

std::string charName(UChar32 c) {
  char buf[128];
  UErrorCode status = U_ZERO_ERROR;
  u_charName(c, U_UNICODE_CHAR_NAME, buf, sizeof buf, &status);
  return U_SUCCESS(status) ? buf : "";
}

std::vector<std::string> symbolTexts(const CounterStyle& s) {
  std::vector<std::string> out;
  if (s.getSymbols())
    for (const Symbol& sym : *s.getSymbols()) out.push_back(utf8(sym));
  return out;
}

}  // namespace

// ---- The table ----

TEST(PredefinedCounterStyles, ThereAre141AndEachHasItsSystem) {
  const std::vector<const char*> names = allNames();
  EXPECT_EQ(names.size(), 141u);
  EXPECT_EQ(std::set<std::string>(names.begin(), names.end()).size(), 141u);
  for (const Group& g : groups()) {
    for (const char* name : g.names) {
      const CounterStyle* s = style(name);
      ASSERT_NE(s, nullptr) << name;
      EXPECT_EQ(s->getSystem(), g.system) << name;
    }
  }
}

TEST(PredefinedCounterStyles, TheLibraryTableHasExactlyTheListedNames) {
  ASSERT_EQ(util::predefinedCounterStyleCount(), 141);
  std::set<std::string> listed;
  for (const char* name : allNames()) listed.insert(name);
  std::set<std::string> table;
  for (int i = 0; i < util::predefinedCounterStyleCount(); ++i)
    table.insert(utf8(UnicodeString(util::predefinedCounterStyleName(i))));
  EXPECT_EQ(table, listed);
  EXPECT_EQ(util::predefinedCounterStyleName(141), nullptr);
  EXPECT_EQ(util::predefinedCounterStyleName(-1), nullptr);
}

TEST(PredefinedCounterStyles, NameCaseDoesNotMatter) {
  const CounterStyle* lower = style("decimal");
  ASSERT_NE(lower, nullptr);
  EXPECT_EQ(style("Decimal"), lower);
  EXPECT_EQ(style("DECIMAL"), lower);
  EXPECT_EQ(ZQUtil::getPredefinedCounterStyle(ZQN_decimal), lower);
  EXPECT_EQ(style("LOWER-Roman"), style("lower-roman"));
  EXPECT_NE(style("lower-roman"), nullptr);
}

TEST(PredefinedCounterStyles, UnknownNamesGiveNullForEver) {
  EXPECT_EQ(style("no-such-counter-style"), nullptr);
  EXPECT_EQ(style("no-such-counter-style"), nullptr);
  EXPECT_EQ(style("No-Such-Counter-Style"), nullptr);
  EXPECT_EQ(ZQUtil::getPredefinedCounterStyle(ZQName()), nullptr);
  EXPECT_EQ(ZQUtil::getPredefinedCounterStyle(ZQN_font_size), nullptr);
  EXPECT_EQ(ZQUtil::getPredefinedCounterStyle(ZQN_font_size), nullptr);
}

TEST(PredefinedCounterStyles, AllArePredefinedAndCopiesKeepTheFlag) {
  for (const char* name : allNames()) {
    const CounterStyle* s = style(name);
    ASSERT_NE(s, nullptr) << name;
    EXPECT_TRUE(s->isPredefined()) << name;
    CounterStyle copy(*s);
    EXPECT_TRUE(copy.isPredefined()) << name;
    CounterStyle assigned;
    assigned = *s;
    EXPECT_TRUE(assigned.isPredefined()) << name;
  }
  EXPECT_FALSE(CounterStyle().isPredefined());
}

TEST(PredefinedCounterStyles, AliasesFormatAlike) {
  const std::pair<const char*, const char*> pairs[] = {
      {"upper-latin", "upper-alpha"},
      {"lower-latin", "lower-alpha"},
      {"fullwidth-lower-latin", "fullwidth-lower-alpha"},
      {"fullwidth-upper-latin", "fullwidth-upper-alpha"},
      {"cjk-ideographic", "trad-chinese-informal"},
      {"greek", "greek-lower-modern"},
  };
  for (const auto& [a, b] : pairs) {
    for (long long n = -20; n <= 1200; ++n) EXPECT_EQ(fmt(a, n, false), fmt(b, n, false)) << a;
    EXPECT_FALSE(*style(a) < *style(b)) << a;
    EXPECT_FALSE(*style(b) < *style(a)) << a;
    EXPECT_NE(style(a), style(b)) << a;
  }
  EXPECT_EQ(fmt("upper-latin", 28), "AB");
}

TEST(PredefinedCounterStyles, CjkIdeographicElevenIsTenOne) {
  EXPECT_EQ(fmt("cjk-ideographic", 11), cps({0x5341, 0x4E00}));
}

TEST(PredefinedCounterStyles, EveryStyleFormatsOneToTwoHundredWithoutFallingBack) {
  CounterStyle marker(ZQN_cyclic);
  marker.addSymbol(Symbol(UnicodeString(u"<fallback>")));
  auto toMarker = [](ZQName, void* data) -> const CounterStyle* {
    return static_cast<const CounterStyle*>(data);
  };
  for (const char* name : allNames()) {
    const CounterStyle* s = style(name);
    ASSERT_NE(s, nullptr) << name;
    int formatted = 0;
    for (long long n = 1; n <= 200; ++n) {
      const std::string text = utf8(s->formatNumber(n, toMarker, &marker, true));
      const bool fellBack = text == "<fallback>";
      if (representable(*s, n)) {
        EXPECT_FALSE(fellBack) << name << " " << n;
        EXPECT_FALSE(text.empty()) << name << " " << n;
        ++formatted;
      } else {
        EXPECT_TRUE(fellBack) << name << " " << n << " gave " << text;
      }
    }
    EXPECT_GE(formatted, 10) << name;
  }
}

TEST(PredefinedCounterStyles, DistinctNumbersGiveDistinctTexts) {
  for (const char* name : allNames()) {
    const CounterStyle* s = style(name);
    if (s->getSystem() == ZQN_cyclic) continue;
    std::set<std::string> seen;
    for (long long n = 1; n <= 200; ++n) {
      if (!representable(*s, n)) continue;
      EXPECT_TRUE(seen.insert(utf8(s->formatNumber(n, nullptr, nullptr, true))).second)
          << name << " " << n;
    }
  }
}

// ---- The telling rows, symbol by symbol ----

TEST(PredefinedCounterStylesRows, Decimal) {
  const CounterStyle* s = style("decimal");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->getSystem(), ZQN_numeric);
  EXPECT_EQ(symbolTexts(*s),
            (std::vector<std::string>{"0", "1", "2", "3", "4", "5", "6", "7", "8", "9"}));
  EXPECT_EQ(s->getRange(), nullptr);
  EXPECT_EQ(utf8(s->getSuffix()), ". ");
  EXPECT_TRUE(s->getFallback().isEmpty());
  EXPECT_EQ(utf8(s->getNegative()[0]), "-");
  EXPECT_TRUE(s->getNegative()[1].isEmpty());
  EXPECT_TRUE(s->getPrefix().isEmpty());
  EXPECT_EQ(fmt("decimal", 1234, false), "1234. ");
  EXPECT_EQ(fmt("decimal", LLONG_MIN), "-9223372036854775808");
}

TEST(PredefinedCounterStylesRows, DecimalLeadingZero) {
  const CounterStyle* s = style("decimal-leading-zero");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->getSystem(), ZQN_fixed);
  EXPECT_EQ(s->getFirst(), -9);
  const std::vector<std::string> symbols = symbolTexts(*s);
  ASSERT_GE(symbols.size(), 12u);
  EXPECT_EQ(symbols[0], "-09");
  EXPECT_EQ(symbols[8], "-01");
  EXPECT_EQ(symbols[9], "00");
  EXPECT_EQ(symbols[10], "01");
  EXPECT_EQ(symbols[11], "02");
  for (size_t i = 9; i < symbols.size(); ++i) {
    char expected[8];
    snprintf(expected, sizeof expected, "%02d", static_cast<int>(i) - 9);
    EXPECT_EQ(symbols[i], expected);
  }
  EXPECT_EQ(s->getRange(), nullptr);
  EXPECT_EQ(utf8(s->getSuffix()), ". ");
  EXPECT_EQ(s->getFallback(), ZQN_decimal);
  EXPECT_EQ(utf8(s->getNegative()[0]), "-");
  EXPECT_EQ(fmt("decimal-leading-zero", -5), "-05");
  EXPECT_EQ(fmt("decimal-leading-zero", 7, false), "07. ");
  EXPECT_EQ(fmt("decimal-leading-zero", -10), "-10");  // by the fallback
}

TEST(PredefinedCounterStylesRows, LowerRomanAndSimpleLowerRoman) {
  const std::vector<std::pair<int, std::string>> expected = {
      {1000, "m"}, {900, "cm"}, {500, "d"}, {400, "cd"}, {100, "c"}, {90, "xc"}, {50, "l"},
      {40, "xl"},  {10, "x"},   {9, "ix"},  {5, "v"},    {4, "iv"},  {1, "i"}};
  for (const auto& [name, high] : {std::pair<const char*, long long>{"lower-roman", 3999},
                                   std::pair<const char*, long long>{"simple-lower-roman", 4999}}) {
    const CounterStyle* s = style(name);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(s->getSystem(), ZQN_additive);
    ASSERT_NE(s->getAdditiveSymbols(), nullptr);
    ASSERT_EQ(s->getAdditiveSymbols()->size(), expected.size()) << name;
    for (size_t i = 0; i < expected.size(); ++i) {
      EXPECT_EQ((*s->getAdditiveSymbols())[i].value, expected[i].first) << name;
      EXPECT_EQ(utf8((*s->getAdditiveSymbols())[i].symbol), expected[i].second) << name;
    }
    ASSERT_NE(s->getRange(), nullptr);
    EXPECT_EQ(*s->getRange(), (CounterStyle::RangeList{{1, high}})) << name;
    EXPECT_EQ(utf8(s->getSuffix()), ". ");
    EXPECT_EQ(s->getFallback(), ZQN_decimal);
    EXPECT_EQ(utf8(s->getNegative()[0]), "-");
  }
  EXPECT_EQ(fmt("lower-roman", 3999), "mmmcmxcix");
  EXPECT_EQ(fmt("lower-roman", 4000), "4000");
  EXPECT_EQ(fmt("simple-lower-roman", 4999), "mmmmcmxcix");
  EXPECT_EQ(fmt("simple-lower-roman", 5000), "5000");
  EXPECT_EQ(fmt("lower-roman", 0), "0");
}

TEST(PredefinedCounterStylesRows, CjkDecimal) {
  const CounterStyle* s = style("cjk-decimal");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->getSystem(), ZQN_numeric);
  EXPECT_EQ(symbolTexts(*s),
            (std::vector<std::string>{"〇", "一", "二", "三", "四", "五", "六", "七", "八", "九"}));
  EXPECT_EQ(*s->getRange(), (CounterStyle::RangeList{{0, LLONG_MAX}}));
  EXPECT_EQ(s->getSuffix().char32At(0), 0x3001);
  EXPECT_EQ(s->getSuffix().length(), 1);
  EXPECT_EQ(s->getFallback(), ZQN_decimal);
  EXPECT_EQ(utf8(s->getNegative()[0]), "-");
  EXPECT_EQ(fmt("cjk-decimal", 0), "〇");
  EXPECT_EQ(fmt("cjk-decimal", 2024, false), "二〇二四、");
  EXPECT_EQ(fmt("cjk-decimal", -5), "-5");  // below the range: decimal
}

TEST(PredefinedCounterStylesRows, ChineseLongForms) {
  struct Row {
    const char* name;
    ZQNameEnum system;
    std::initializer_list<UChar32> symbols;
    UChar32 minus;
  };
  const Row rows[] = {
      {"simp-chinese-informal",
       ZQN_simp_chinese_informal,
       {0x96F6, 0x4E00, 0x4E8C, 0x4E09, 0x56DB, 0x4E94, 0x516D, 0x4E03, 0x516B, 0x4E5D, 0x5341,
        0x767E, 0x5343},
       0x8D1F},
      {"simp-chinese-formal",
       ZQN_simp_chinese_formal,
       {0x96F6, 0x58F9, 0x8D30, 0x53C1, 0x8086, 0x4F0D, 0x9646, 0x67D2, 0x634C, 0x7396, 0x62FE,
        0x4F70, 0x4EDF},
       0x8D1F},
      {"trad-chinese-informal",
       ZQN_trad_chinese_informal,
       {0x96F6, 0x4E00, 0x4E8C, 0x4E09, 0x56DB, 0x4E94, 0x516D, 0x4E03, 0x516B, 0x4E5D, 0x5341,
        0x767E, 0x5343},
       0x8CA0},
      {"trad-chinese-formal",
       ZQN_trad_chinese_formal,
       {0x96F6, 0x58F9, 0x8CB3, 0x53C3, 0x8086, 0x4F0D, 0x9678, 0x67D2, 0x634C, 0x7396, 0x62FE,
        0x4F70, 0x4EDF},
       0x8CA0},
  };
  for (const Row& row : rows) {
    const CounterStyle* s = style(row.name);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(s->getSystem(), row.system);
    ASSERT_NE(s->getSymbols(), nullptr);
    ASSERT_EQ(s->getSymbols()->size(), row.symbols.size()) << row.name;
    size_t i = 0;
    for (UChar32 c : row.symbols) {
      EXPECT_EQ((*s->getSymbols())[i].countChar32(), 1) << row.name << " " << i;
      EXPECT_EQ((*s->getSymbols())[i].char32At(0), c) << row.name << " " << i;
      ++i;
    }
    EXPECT_EQ(*s->getRange(), (CounterStyle::RangeList{{-9999, 9999}})) << row.name;
    EXPECT_EQ(utf8(s->getSuffix()), cps({0x3001})) << row.name;
    EXPECT_EQ(s->getFallback(), ZQN_cjk_decimal) << row.name;
    EXPECT_EQ(utf8(s->getNegative()[0]), cps({row.minus})) << row.name;
    EXPECT_TRUE(s->getNegative()[1].isEmpty()) << row.name;
    // Out of range: the named fallback when a lookup is given, else decimal.
    EXPECT_EQ(fmt(row.name, 10000, false), "一〇〇〇〇、") << row.name;
    EXPECT_EQ(utf8(s->formatNumber(10000, nullptr, nullptr, false)), "10000、") << row.name;
  }
  EXPECT_EQ(fmt("simp-chinese-informal", -12, false), "负十二、");
  EXPECT_EQ(fmt("trad-chinese-formal", -12, false), "負壹拾貳、");
  EXPECT_EQ(fmt("simp-chinese-formal", 9999), "玖仟玖佰玖拾玖");
  EXPECT_EQ(fmt("trad-chinese-informal", 0), "零");
}

TEST(PredefinedCounterStylesRows, EthiopicNumeric) {
  const CounterStyle* s = style("ethiopic-numeric");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->getSystem(), ZQN_ethiopic_numeric);
  EXPECT_EQ(s->getSymbols(), nullptr);
  EXPECT_EQ(s->getAdditiveSymbols(), nullptr);
  EXPECT_EQ(*s->getRange(), (CounterStyle::RangeList{{1, LLONG_MAX}}));
  EXPECT_EQ(utf8(s->getSuffix()), ". ");
  EXPECT_EQ(s->getFallback(), ZQN_decimal);
  EXPECT_EQ(utf8(s->getNegative()[0]), "-");
  EXPECT_EQ(fmt("ethiopic-numeric", 1, false), "\u1369. ");
  EXPECT_EQ(fmt("ethiopic-numeric", 100), "\u137B");
  EXPECT_EQ(fmt("ethiopic-numeric", 0, false), "0. ");
  EXPECT_EQ(fmt("ethiopic-numeric", -3, false), "-3. ");
}

TEST(PredefinedCounterStylesRows, AriAndBlin) {
  for (const char* name : {"ari", "blin"}) {
    const CounterStyle* s = style(name);
    ASSERT_NE(s, nullptr);
    EXPECT_EQ(s->getSystem(), ZQN_alphabetic);
    ASSERT_NE(s->getSymbols(), nullptr);
    EXPECT_GE(s->getSymbols()->size(), 20u);
    for (const Symbol& sym : *s->getSymbols()) {
      ASSERT_EQ(sym.countChar32(), 1) << name;
      EXPECT_EQ(charName(sym.char32At(0)).rfind("ETHIOPIC SYLLABLE ", 0), 0u) << name;
    }
    EXPECT_EQ(s->getRange(), nullptr);
    EXPECT_EQ(utf8(s->getSuffix()), cps({0x3166})) << name;
    EXPECT_EQ(s->getFallback(), ZQN_decimal);
    EXPECT_EQ(utf8(s->getNegative()[0]), "-");
  }
  EXPECT_EQ(fmt("ari", 1, false), cps({0x1200, 0x3166}));
}

TEST(PredefinedCounterStylesRows, AncientTamil) {
  const CounterStyle* s = style("ancient-tamil");
  ASSERT_NE(s, nullptr);
  EXPECT_EQ(s->getSystem(), ZQN_additive);
  const auto* list = s->getAdditiveSymbols();
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(list->size(), 36u);
  const UChar32 marks[] = {0x0BF2, 0x0BF1, 0x0BF0};  // thousand, hundred, ten
  int powers[] = {1000, 100, 10};
  size_t i = 0;
  for (int p = 0; p < 3; ++p) {
    for (int d = 9; d >= 1; --d, ++i) {
      EXPECT_EQ((*list)[i].value, d * powers[p]);
      const std::string expected =
          d == 1 ? cps({marks[p]}) : cps({static_cast<UChar32>(0x0BE6 + d), marks[p]});
      EXPECT_EQ(utf8((*list)[i].symbol), expected) << d * powers[p];
    }
  }
  for (int d = 9; d >= 1; --d, ++i) {
    EXPECT_EQ((*list)[i].value, d);
    EXPECT_EQ(utf8((*list)[i].symbol), cps({static_cast<UChar32>(0x0BE6 + d)}));
  }
  EXPECT_EQ(*s->getRange(), (CounterStyle::RangeList{{1, 9999}}));
  EXPECT_EQ(utf8(s->getSuffix()), ". ");
  EXPECT_EQ(s->getFallback(), ZQN_decimal);
  EXPECT_EQ(fmt("ancient-tamil", 1000), cps({0x0BF2}));
  EXPECT_EQ(fmt("ancient-tamil", 2024), cps({0x0BE8, 0x0BF2, 0x0BE8, 0x0BF0, 0x0BEA}));
  EXPECT_EQ(fmt("ancient-tamil", 10000), "10000");
}

// ---- Published sequences ----

TEST(PredefinedCounterStylesSequences, LowerGreekOneToTwentyFour) {
  for (int n = 1; n <= 24; ++n) {
    const UChar32 expected = 0x03B1 + (n - 1) + (n > 17 ? 1 : 0);  // no final sigma
    EXPECT_EQ(fmt("lower-greek", n), cps({expected})) << n;
  }
  EXPECT_EQ(fmt("lower-greek", 25), "αα");
  EXPECT_EQ(fmt("upper-greek", 24), "Ω");
}

TEST(PredefinedCounterStylesSequences, HiraganaAndKatakanaInGojuonOrder) {
  const char* romaji[] = {"A",  "I",  "U",  "E",  "O",  "KA", "KI", "KU", "KE", "KO", "SA", "SI",
                          "SU", "SE", "SO", "TA", "TI", "TU", "TE", "TO", "NA", "NI", "NU", "NE",
                          "NO", "HA", "HI", "HU", "HE", "HO", "MA", "MI", "MU", "ME", "MO", "YA",
                          "YU", "YO", "RA", "RI", "RU", "RE", "RO", "WA", "WI", "WE", "WO", "N"};
  for (const char* script : {"HIRAGANA", "KATAKANA"}) {
    const char* name = std::string(script) == "HIRAGANA" ? "hiragana" : "katakana";
    ASSERT_EQ(style(name)->getSymbols()->size(), 48u);
    for (int n = 1; n <= 48; ++n) {
      UnicodeString text = style(name)->formatNumber(n, nullptr, nullptr, true);
      ASSERT_EQ(text.countChar32(), 1) << name << n;
      EXPECT_EQ(charName(text.char32At(0)), std::string(script) + " LETTER " + romaji[n - 1])
          << name << " " << n;
    }
    EXPECT_EQ(fmt(name, 49), fmt(name, 1) + fmt(name, 1));
  }
  EXPECT_EQ(fmt("hiragana", 1, false), "あ、");
}

TEST(PredefinedCounterStylesSequences, IrohaOrder) {
  const char* romaji[] = {"I",  "RO", "HA", "NI", "HO", "HE", "TO", "TI", "RI", "NU", "RU", "WO",
                          "WA", "KA", "YO", "TA", "RE", "SO", "TU", "NE", "NA", "RA", "MU", "U",
                          "WI", "NO", "O",  "KU", "YA", "MA", "KE", "HU", "KO", "E",  "TE", "A",
                          "SA", "KI", "YU", "ME", "MI", "SI", "WE", "HI", "MO", "SE", "SU"};
  for (const char* script : {"HIRAGANA", "KATAKANA"}) {
    const char* name = std::string(script) == "HIRAGANA" ? "hiragana-iroha" : "katakana-iroha";
    ASSERT_EQ(style(name)->getSymbols()->size(), 47u);
    for (int n = 1; n <= 47; ++n) {
      UnicodeString text = style(name)->formatNumber(n, nullptr, nullptr, true);
      EXPECT_EQ(charName(text.char32At(0)), std::string(script) + " LETTER " + romaji[n - 1])
          << name << " " << n;
    }
  }
}

TEST(PredefinedCounterStylesSequences, ArmenianSpotValues) {
  EXPECT_EQ(fmt("armenian", 1), "Ա");
  EXPECT_EQ(fmt("armenian", 9), "Թ");
  EXPECT_EQ(fmt("armenian", 10), "Ժ");
  EXPECT_EQ(fmt("armenian", 11), "ԺԱ");
  EXPECT_EQ(fmt("armenian", 100), "Ճ");
  EXPECT_EQ(fmt("armenian", 1000), "Ռ");
  EXPECT_EQ(fmt("armenian", 1988), "ՌՋՁԸ");
  EXPECT_EQ(fmt("armenian", 2023), "ՍԻԳ");
  EXPECT_EQ(fmt("armenian", 7000), "Ւ");
  EXPECT_EQ(fmt("armenian", 9999), "ՔՋՂԹ");
  EXPECT_EQ(fmt("armenian", 10000), "10000");
  EXPECT_EQ(fmt("upper-armenian", 1988), "ՌՋՁԸ");
  EXPECT_EQ(fmt("lower-armenian", 1988), "ռջձը");
  EXPECT_EQ(fmt("lower-armenian", 9999), "քջղթ");
}

TEST(PredefinedCounterStylesSequences, RomanNumerals) {
  EXPECT_EQ(fmt("upper-roman", 3999), "MMMCMXCIX");
  EXPECT_EQ(fmt("upper-roman", 1994), "MCMXCIV");
  EXPECT_EQ(fmt("upper-roman", 4000, false), "4000. ");
  EXPECT_EQ(fmt("simple-upper-roman", 4999), "MMMMCMXCIX");
  EXPECT_EQ(fmt("lower-roman", 14), "xiv");
}

TEST(PredefinedCounterStylesSequences, Georgian) {
  EXPECT_EQ(fmt("georgian", 1), "ა");
  EXPECT_EQ(fmt("georgian", 8), "ჱ");
  EXPECT_EQ(fmt("georgian", 10), "ი");
  EXPECT_EQ(fmt("georgian", 60), "ჲ");
  EXPECT_EQ(fmt("georgian", 100), "რ");
  EXPECT_EQ(fmt("georgian", 1000), "ჩ");
  EXPECT_EQ(fmt("georgian", 2023), "ცკგ");
  EXPECT_EQ(fmt("georgian", 10000), "ჵ");
  EXPECT_EQ(fmt("georgian", 19999), "ჵჰშჟთ");
  EXPECT_EQ(fmt("georgian", 20000), "20000");
}

TEST(PredefinedCounterStylesSequences, Hebrew) {
  EXPECT_EQ(fmt("hebrew", 1), "א");
  EXPECT_EQ(fmt("hebrew", 11), "יא");
  EXPECT_EQ(fmt("hebrew", 15), cps({0x05D8, 0x05D5}));
  EXPECT_EQ(fmt("hebrew", 16), cps({0x05D8, 0x05D6}));
  EXPECT_EQ(fmt("hebrew", 19), "יט");
  EXPECT_EQ(fmt("hebrew", 115), "קטו");
  EXPECT_EQ(fmt("hebrew", 800), "תת");
  EXPECT_EQ(fmt("hebrew", 1000), cps({0x05D0, 0x05F3}));
  EXPECT_EQ(fmt("hebrew", 5784), cps({0x05D4, 0x05F3, 0x05EA, 0x05E9, 0x05E4, 0x05D3}));
  EXPECT_EQ(fmt("hebrew", 10999), cps({0x05D9, 0x05F3, 0x05EA, 0x05EA, 0x05E7, 0x05E6, 0x05D8}));
  EXPECT_EQ(fmt("hebrew", 11000), "11000");
}

TEST(PredefinedCounterStylesSequences, EastAsianAdditive) {
  EXPECT_EQ(fmt("japanese-informal", 10), "十");
  EXPECT_EQ(fmt("japanese-informal", 11), "十一");
  EXPECT_EQ(fmt("japanese-informal", 1234), "千二百三十四");
  EXPECT_EQ(fmt("japanese-informal", 0), "〇");
  EXPECT_EQ(fmt("japanese-informal", -5, false), "マイナス五、");
  EXPECT_EQ(fmt("japanese-informal", 10000), "一〇〇〇〇");
  EXPECT_EQ(fmt("korean-hangul-formal", 11, false), "일십일, ");
  EXPECT_EQ(fmt("korean-hangul-formal", 0), "영");
  EXPECT_EQ(fmt("korean-hangul-formal", -1), "마이너스 일");
  EXPECT_EQ(fmt("korean-hanja-formal", 1111), "壹仟壹百壹拾壹");
  EXPECT_EQ(fmt("korean-hanja-informal", 1111), "千百十一");
  EXPECT_EQ(fmt("korean-hanja-informal", 0), "零");
}

TEST(PredefinedCounterStylesSequences, GreekNumerals) {
  EXPECT_EQ(fmt("greek-lower-modern", 6), "στ");
  EXPECT_EQ(fmt("greek-lower-ancient", 6), "ϛ");
  EXPECT_EQ(fmt("greek-lower-modern", 1821, false),
            cps({0x0375, 0x03B1, 0x03C9, 0x03BA, 0x03B1, 0x0374}));
  EXPECT_EQ(fmt("greek-upper-modern", 999), cps({0x03E0, 0x03DE, 0x0398}));
  EXPECT_EQ(fmt("greek-upper-ancient", 999999),
            cps({0x0375, 0x03E0, 0x0375, 0x03DE, 0x0375, 0x0398, 0x03E0, 0x03DE, 0x0398}));
  EXPECT_EQ(fmt("greek", 1000000), "1000000");
}

TEST(PredefinedCounterStylesSequences, PositionalAndFixed) {
  EXPECT_EQ(fmt("binary", 5), "101");
  EXPECT_EQ(fmt("octal", 8), "10");
  EXPECT_EQ(fmt("upper-hexadecimal", 255), "FF");
  EXPECT_EQ(fmt("lower-hexadecimal", 255), "ff");
  EXPECT_EQ(fmt("new-base-60", 59), "z");
  EXPECT_EQ(fmt("new-base-60", 60), "10");
  EXPECT_EQ(fmt("arabic-indic", 2024), "٢٠٢٤");
  EXPECT_EQ(fmt("thai", 12), "๑๒");
  EXPECT_EQ(fmt("super-decimal", 123), "¹²³");
  EXPECT_EQ(fmt("circled-decimal", 0), "⓪");
  EXPECT_EQ(fmt("circled-decimal", 21), "㉑");
  EXPECT_EQ(fmt("circled-decimal", 50), "㊿");
  EXPECT_EQ(fmt("circled-decimal", 51), "51");
  EXPECT_EQ(fmt("filled-circled-decimal", 11), "⓫");
  EXPECT_EQ(fmt("parenthesized-lower-latin", 26), "⒵");
  EXPECT_EQ(fmt("fullwidth-upper-roman", 12), "Ⅻ");
  EXPECT_EQ(fmt("cjk-earthly-branch", 11), cps({0x620C}));
  EXPECT_EQ(fmt("cjk-heavenly-stem", 11), "甲甲");
  EXPECT_EQ(fmt("disc", 7, false), "• ");
  EXPECT_EQ(fmt("lower-alpha-symbolic", 27), "aa");
  EXPECT_EQ(fmt("lower-alpha", 27), "aa");
  EXPECT_EQ(fmt("upper-russian", 1), "А");
  EXPECT_EQ(fmt("lower-russian-full", 33), "я");
}

TEST(PredefinedCounterStylesSequences, EthiopicAlphabetsAreFirstOrderSyllables) {
  for (const char* name : {"ari",   "blin",   "dizi",    "gedeo", "gumuz",   "hadiyya", "harari",
                           "kaffa", "kebena", "kembata", "konso", "kunama",  "meen",    "oromo",
                           "saho",  "sidama", "silti",   "tigre", "wolaita", "yemsa"}) {
    const CounterStyle* s = style(name);
    ASSERT_NE(s, nullptr) << name;
    std::set<UChar32> seen;
    for (const Symbol& sym : *s->getSymbols()) {
      const UChar32 c = sym.char32At(0);
      EXPECT_EQ(c % 8, 0) << name;  // the first of each row of orders
      const std::string charname = charName(c);
      EXPECT_EQ(charname.rfind("ETHIOPIC SYLLABLE ", 0), 0u) << name << " " << charname;
      EXPECT_EQ(charname.back(), 'A') << name << " " << charname;
      EXPECT_TRUE(seen.insert(c).second) << name;
    }
  }
}

TEST(PredefinedCounterStylesSequences, CyrillicCases) {
  const std::pair<const char*, const char*> pairs[] = {
      {"lower-russian", "upper-russian"},         {"lower-russian-full", "upper-russian-full"},
      {"lower-ukrainian", "upper-ukrainian"},     {"lower-ukrainian-full", "upper-ukrainian-full"},
      {"lower-belorussian", "upper-belorussian"}, {"lower-bulgarian", "upper-bulgarian"},
      {"lower-macedonian", "upper-macedonian"},   {"lower-serbo-croatian", "upper-serbo-croatian"},
  };
  for (const auto& [lower, upper] : pairs) {
    const auto* l = style(lower)->getSymbols();
    const auto* u = style(upper)->getSymbols();
    ASSERT_EQ(l->size(), u->size()) << lower;
    for (size_t i = 0; i < l->size(); ++i) {
      EXPECT_EQ(charName((*l)[i].char32At(0)).rfind("CYRILLIC SMALL LETTER ", 0), 0u) << lower;
      EXPECT_EQ(static_cast<UChar32>(u_toupper((*l)[i].char32At(0))), (*u)[i].char32At(0)) << upper;
    }
  }
  EXPECT_EQ(style("lower-russian-full")->getSymbols()->size(), 33u);
  EXPECT_EQ(style("lower-ukrainian-full")->getSymbols()->size(), 33u);
}

// The symbols of a style as one string, one symbol after the other.
namespace {
std::string joined(const char* name) {
  std::string out;
  for (const std::string& s : symbolTexts(*style(name))) out += s;
  return out;
}
}  // namespace

TEST(PredefinedCounterStylesSequences, PublishedLetterLists) {
  // Thai skips the obsolete kho khuat and kho khon and also kho rakhang.
  EXPECT_EQ(joined("thai-alphabetic"), "กขคงจฉชซฌญฎฏฐฑฒณดตถทธนบปผฝพฟภมยรลวศษสหฬอฮ");
  EXPECT_EQ(style("thai-alphabetic")->getSymbols()->size(), 41u);
  // Hindi: the 33 consonants, without the nukta letters.
  EXPECT_EQ(joined("hindi"), "कखगघङचछजझञटठडढणतथदधनपफबभमयरलवशषसह");
  EXPECT_EQ(style("hindi")->getSymbols()->size(), 33u);
  EXPECT_EQ(joined("khmer-consonant"), "កខគឃងចឆជឈញដឋឌឍណតថទធនបផពភមយរលវសហឡអ");
  EXPECT_EQ(joined("korean-consonant"), "ㄱㄴㄷㄹㅁㅂㅅㅇㅈㅊㅋㅌㅍㅎ");
  EXPECT_EQ(joined("korean-syllable"), "가나다라마바사아자차카타파하");
  // The short Russian and Bulgarian forms leave out the letters that never start an item.
  EXPECT_EQ(joined("lower-russian"), "абвгдежзиклмнопрстуфхцчшщэюя");
  EXPECT_EQ(joined("upper-russian"), "АБВГДЕЖЗИКЛМНОПРСТУФХЦЧШЩЭЮЯ");
  EXPECT_EQ(joined("lower-bulgarian"), "абвгдежзиклмнопрстуфхцчшщюя");
  EXPECT_EQ(joined("lower-russian-full"), "абвгдеёжзийклмнопрстуфхцчшщъыьэюя");
  EXPECT_EQ(joined("cjk-heavenly-stem"), "甲乙丙丁戊己庚辛壬癸");
  // The eleventh earthly branch is U+620C.
  EXPECT_EQ(joined("cjk-earthly-branch"), "子丑寅卯辰巳午未申酉戌亥");
  EXPECT_EQ((*style("cjk-earthly-branch")->getSymbols())[10].char32At(0), 0x620C);
  EXPECT_EQ(style("cjk-earthly-branch")->getFallback(), ZQN_cjk_decimal);
  EXPECT_EQ(style("cjk-heavenly-stem")->getFallback(), ZQN_cjk_decimal);
  EXPECT_EQ(joined("arabic-abjad"), "ابجدهوزحطيكلمنسعفصقرشتثخذضظغ");
  EXPECT_EQ(joined("maghrebi-abjad"), "ابجدهوزحطيكلمنصعفضقرستثخذظغش");
  EXPECT_EQ(joined("persian-abjad"), "ابجدهوزحطیکلمنسعفصقرشتثخذضظغ");
  EXPECT_EQ(joined("persian-alphabetic"), "ابپتثجچحخدذرزژسشصضطظعغفقکگلمنوهی");
  EXPECT_EQ(joined("new-base-60"), "0123456789ABCDEFGHJKLMNPQRSTUVWXYZ_abcdefghijkmnopqrstuvwxyz");
  EXPECT_EQ(joined("upper-greek"), "ΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡΣΤΥΦΧΨΩ");
  EXPECT_EQ(joined("circled-decimal"),
            "⓪①②③④⑤⑥⑦⑧⑨⑩⑪⑫⑬⑭⑮⑯⑰⑱⑲⑳㉑㉒㉓㉔㉕㉖㉗㉘㉙㉚㉛㉜㉝㉞㉟㊱㊲㊳㊴㊵㊶㊷㊸㊹㊺㊻㊼㊽㊾㊿");
  EXPECT_EQ(style("circled-decimal")->getFirst(), 0);
  EXPECT_EQ(joined("filled-circled-decimal"), "❶❷❸❹❺❻❼❽❾❿⓫⓬⓭⓮⓯⓰⓱⓲⓳⓴");
  EXPECT_EQ(joined("fullwidth-upper-roman"), "ⅠⅡⅢⅣⅤⅥⅦⅧⅨⅩⅪⅫ");
}

TEST(PredefinedCounterStylesSequences, Suffixes) {
  // Enclosed forms carry their own punctuation: a space only.
  for (const char* name :
       {"circled-decimal", "circled-ideograph", "circled-katakana", "circled-korean-consonant",
        "circled-korean-syllable", "circled-lower-latin", "circled-upper-latin", "dotted-decimal",
        "double-circled-decimal", "filled-circled-decimal", "parenthesized-decimal",
        "parenthesized-hangul-consonant", "parenthesized-hangul-syllable",
        "parenthesized-ideograph", "parenthesized-lower-latin", "box", "check", "diamond", "disc"})
    EXPECT_EQ(utf8(style(name)->getSuffix()), " ") << name;
  // Full-width forms end in the full-width full stop.
  for (const char* name : {"fullwidth-decimal", "fullwidth-lower-alpha", "fullwidth-lower-latin",
                           "fullwidth-upper-alpha", "fullwidth-upper-latin",
                           "fullwidth-lower-roman", "fullwidth-upper-roman"})
    EXPECT_EQ(utf8(style(name)->getSuffix()), "．") << name;
  // Greek alphabetic numerals end in the keraia.
  for (const char* name : {"greek", "greek-lower-modern", "greek-lower-ancient",
                           "greek-upper-ancient", "greek-upper-modern"})
    EXPECT_EQ(utf8(style(name)->getSuffix()), cps({0x0374})) << name;
  // Ethiopic alphabets end in the preface colon and a space, but for "ari" and "blin".
  for (const char* name :
       {"dizi", "gedeo", "gumuz", "hadiyya", "harari", "kaffa", "kebena", "kembata", "konso",
        "kunama", "meen", "oromo", "saho", "sidama", "silti", "tigre", "wolaita", "yemsa"})
    EXPECT_EQ(utf8(style(name)->getSuffix()), "፦ ") << name;
  // East Asian forms.
  for (const char* name :
       {"cjk-decimal", "cjk-earthly-branch", "cjk-heavenly-stem", "hiragana", "hiragana-iroha",
        "katakana", "katakana-iroha", "japanese-informal", "cjk-ideographic"})
    EXPECT_EQ(utf8(style(name)->getSuffix()), "、") << name;
  for (const char* name : {"korean-hangul-formal", "korean-hanja-formal", "korean-hanja-informal"})
    EXPECT_EQ(utf8(style(name)->getSuffix()), ", ") << name;
  for (const char* name : {"decimal", "lower-roman", "upper-alpha", "lower-greek", "hebrew",
                           "armenian", "georgian", "thai-alphabetic", "lower-russian", "binary"})
    EXPECT_EQ(utf8(style(name)->getSuffix()), ". ") << name;
}

TEST(PredefinedCounterStyles, OnlyDecimalHasNoFallbackAndEveryFallbackIsPredefined) {
  for (const char* name : allNames()) {
    const CounterStyle* s = style(name);
    ASSERT_NE(s, nullptr) << name;
    if (std::string(name) == "decimal") {
      EXPECT_TRUE(s->getFallback().isEmpty());
      continue;
    }
    EXPECT_FALSE(s->getFallback().isEmpty()) << name;
    EXPECT_NE(ZQUtil::getPredefinedCounterStyle(s->getFallback()), nullptr) << name;
    EXPECT_TRUE(s->getPrefix().isEmpty()) << name;
    EXPECT_TRUE(s->getPad().symbol.isEmpty()) << name;
  }
}

// ---- Building and cleanup ----

TEST(PredefinedCounterStylesLifetime, CleanupFreesAndTheNextLookupRebuilds) {
  const CounterStyle* before = style("lower-roman");
  ASSERT_NE(before, nullptr);
  ZQUtil::cleanup();
  const CounterStyle* after = style("lower-roman");
  ASSERT_NE(after, nullptr);
  EXPECT_TRUE(after->isPredefined());
  EXPECT_EQ(fmt("lower-roman", 14), "xiv");
  EXPECT_EQ(style("no-such-counter-style"), nullptr);
  ZQUtil::cleanup();
  ZQUtil::cleanup();  // twice is harmless
  EXPECT_EQ(fmt("decimal", 7), "7");
}

TEST(PredefinedCounterStylesLifetime, ThreadsBuildingAtOnceShareOneStyle) {
  ZQUtil::cleanup();
  const std::vector<const char*> names = allNames();
  std::vector<std::vector<const CounterStyle*>> seen(4);
  std::vector<std::thread> threads;
  for (size_t t = 0; t < seen.size(); ++t) {
    threads.emplace_back([&, t] {
      for (size_t i = 0; i < names.size(); ++i) {
        const char* name = names[(i + t * 37) % names.size()];
        const CounterStyle* s = style(name);
        seen[t].push_back(s);
        // Formatting a shared style from several threads reads it only.
        if (s) s->formatNumber(static_cast<long long>(i + 1), nullptr, nullptr, false);
      }
    });
  }
  for (auto& th : threads) th.join();
  for (size_t t = 0; t < seen.size(); ++t) {
    for (size_t i = 0; i < names.size(); ++i) {
      EXPECT_EQ(seen[t][i], style(names[(i + t * 37) % names.size()]));
    }
  }
}
