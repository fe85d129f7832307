#include <gtest/gtest.h>

#include <climits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "TestSupport.h"
#include "common/ZQUtil.h"
#include "util/ZQCounterStyleInternal.h"

using namespace ZQCommonNS;

namespace {

using zqtest::utf8;
using CounterStyle = ZQUtil::CounterStyle;
using Symbol = CounterStyle::Symbol;
using IntSymbol = CounterStyle::IntSymbol;
using util::KansujiMode;

UnicodeString us(const char16_t* s) { return UnicodeString(s); }

// A style of the given system with one symbol per code point of `symbols`.
CounterStyle styleOf(ZQName system, const char16_t* symbols) {
  CounterStyle style(system);
  if (symbols) style.addSymbols(Symbol(us(symbols)));
  return style;
}

std::string fmt(const CounterStyle& style, long long n, bool bare = false) {
  return utf8(style.formatNumber(n, nullptr, nullptr, bare));
}

// A lookup that answers every name with the style passed as data.
const CounterStyle* dataLookup(ZQName, void* data) {
  return static_cast<const CounterStyle*>(data);
}

// Fallback is seen through a marker style the lookup hands out.
struct Marker {
  CounterStyle style{ZQName(ZQN_cyclic)};
  Marker() { style.addSymbol(Symbol(us(u"<fallback>"))); }
};

std::string fmtMarked(const CounterStyle& style, long long n) {
  static Marker marker;
  return utf8(style.formatNumber(n, dataLookup, &marker.style, false));
}

std::string convert(const char16_t* text, KansujiMode mode) {
  return utf8(util::convertKansujiText(us(text), mode, util::defaultKansujiTable()));
}

}  // namespace

// ---- Symbol and IntSymbol ----

TEST(CounterStyleSymbol, ConstructorsAndFlag) {
  EXPECT_TRUE(Symbol().isEmpty());
  EXPECT_FALSE(Symbol().isUrl());
  Symbol c(0x1F600);
  EXPECT_EQ(c.countChar32(), 1);
  EXPECT_EQ(c.char32At(0), 0x1F600);
  EXPECT_FALSE(c.isUrl());
  Symbol url(us(u"img.png"), true);
  EXPECT_TRUE(url.isUrl());
  EXPECT_EQ(static_cast<const UnicodeString&>(url), us(u"img.png"));
  Symbol moved(std::move(url));
  EXPECT_TRUE(moved.isUrl());
  Symbol assigned;
  assigned = moved;
  EXPECT_TRUE(assigned.isUrl());
  EXPECT_EQ(assigned, moved);
}

TEST(CounterStyleSymbol, ComparesTheStringFirstAndTheFlagOnlyOnEqualStrings) {
  Symbol aText(us(u"a"), false), aUrl(us(u"a"), true), bText(us(u"b"), false);
  EXPECT_NE(aText, aUrl);
  EXPECT_TRUE(aText < aUrl);
  EXPECT_FALSE(aUrl < aText);
  // "a" as a URL still sorts before "b" as text: the string decides first.
  EXPECT_TRUE(aUrl < bText);
  EXPECT_FALSE(bText < aUrl);
  EXPECT_EQ(aText, Symbol(us(u"a")));
  EXPECT_FALSE(aText < Symbol(us(u"a")));
}

TEST(CounterStyleSymbol, IntSymbolComparesValueThenSymbol) {
  IntSymbol a(1, Symbol(us(u"z"))), b(2, Symbol(us(u"a"))), c(1, Symbol(us(u"a")));
  EXPECT_TRUE(a < b);
  EXPECT_TRUE(c < a);
  EXPECT_FALSE(a < c);
  EXPECT_EQ(a, IntSymbol(1, Symbol(us(u"z"))));
  EXPECT_NE(a, c);
  IntSymbol d;
  EXPECT_EQ(d.value, 0);
  EXPECT_TRUE(d.symbol.isEmpty());
  d = b;
  EXPECT_EQ(d, b);
}

// ---- Fields, defaults and setters ----

TEST(CounterStyleFields, Defaults) {
  CounterStyle style;
  EXPECT_EQ(style.getSystem(), ZQN_symbolic);
  EXPECT_EQ(style.getFirst(), 1);
  EXPECT_EQ(style.getSymbols(), nullptr);
  EXPECT_EQ(style.getAdditiveSymbols(), nullptr);
  EXPECT_EQ(style.getRange(), nullptr);
  EXPECT_EQ(utf8(style.getNegative()[0]), "-");
  EXPECT_TRUE(style.getNegative()[1].isEmpty());
  EXPECT_TRUE(style.getPrefix().isEmpty());
  EXPECT_EQ(utf8(style.getSuffix()), ". ");
  EXPECT_EQ(style.getPad().value, 0);
  EXPECT_TRUE(style.getPad().symbol.isEmpty());
  EXPECT_EQ(style.getFallback(), ZQN_decimal);
  EXPECT_FALSE(style.isPredefined());
  EXPECT_EQ(CounterStyle(ZQN_numeric).getSystem(), ZQN_numeric);
}

TEST(CounterStyleFields, SetSystemTakesOnlyTheSixCssSystems) {
  CounterStyle style(ZQN_numeric);
  for (ZQNameEnum css :
       {ZQN_alphabetic, ZQN_additive, ZQN_cyclic, ZQN_fixed, ZQN_symbolic, ZQN_numeric}) {
    style.setSystem(css);
    EXPECT_EQ(style.getSystem(), css);
  }
  for (ZQNameEnum own :
       {ZQN_kansuji, ZQN_ethiopic_numeric, ZQN_simp_chinese_informal, ZQN_simp_chinese_formal,
        ZQN_trad_chinese_informal, ZQN_trad_chinese_formal, ZQN_decimal, ZQN_EMPTY}) {
    style.setSystem(own);
    EXPECT_EQ(style.getSystem(), ZQN_numeric);
  }
  // The constructor reaches the library's own systems.
  EXPECT_EQ(CounterStyle(ZQN_kansuji).getSystem(), ZQN_kansuji);
}

TEST(CounterStyleFields, SetterOverloads) {
  CounterStyle style;
  style.setFirst(-3);
  EXPECT_EQ(style.getFirst(), -3);
  style.setFallback(ZQN_lower_roman);
  EXPECT_EQ(style.getFallback(), ZQN_lower_roman);

  style.setPrefix('(');
  EXPECT_EQ(utf8(style.getPrefix()), "(");
  style.setPrefix(Symbol(us(u"p.png"), true));
  EXPECT_TRUE(style.getPrefix().isUrl());
  style.setPrefix("[[");
  EXPECT_EQ(utf8(style.getPrefix()), "[[");
  EXPECT_FALSE(style.getPrefix().isUrl());
  style.setPrefix(static_cast<const char*>(nullptr));
  EXPECT_TRUE(style.getPrefix().isEmpty());

  style.setSuffix(0x3001);
  EXPECT_EQ(style.getSuffix().char32At(0), 0x3001);
  style.setSuffix(Symbol(us(u")")));
  EXPECT_EQ(utf8(style.getSuffix()), ")");
  style.setSuffix("]]");
  EXPECT_EQ(utf8(style.getSuffix()), "]]");

  style.setNegative(Symbol(us(u"(")), Symbol(us(u")")));
  EXPECT_EQ(utf8(style.getNegative()[0]), "(");
  EXPECT_EQ(utf8(style.getNegative()[1]), ")");
  style.setNegative("minus ", "");
  EXPECT_EQ(utf8(style.getNegative()[0]), "minus ");
  EXPECT_TRUE(style.getNegative()[1].isEmpty());

  style.setPad(IntSymbol(3, Symbol(us(u"0"))));
  EXPECT_EQ(style.getPad(), IntSymbol(3, Symbol(us(u"0"))));
  style.setPad(4, Symbol(us(u"x")));
  EXPECT_EQ(style.getPad(), IntSymbol(4, Symbol(us(u"x"))));
  style.setPad(5, "ab");
  EXPECT_EQ(style.getPad(), IntSymbol(5, Symbol(us(u"ab"))));
}

TEST(CounterStyleFields, AddSymbolsPerCodePoint) {
  CounterStyle style;
  style.addSymbols(Symbol(us(u"a\U0001D400b"), true));
  ASSERT_NE(style.getSymbols(), nullptr);
  ASSERT_EQ(style.getSymbols()->size(), 3u);
  EXPECT_EQ((*style.getSymbols())[1].char32At(0), 0x1D400);
  for (const Symbol& s : *style.getSymbols()) EXPECT_FALSE(s.isUrl());
  style.addSymbol('c');
  style.addSymbol(Symbol(us(u"url"), true));
  ASSERT_EQ(style.getSymbols()->size(), 5u);
  EXPECT_EQ(utf8((*style.getSymbols())[3]), "c");
  EXPECT_TRUE((*style.getSymbols())[4].isUrl());
  style.clrSymbols();
  EXPECT_EQ(style.getSymbols(), nullptr);
}

TEST(CounterStyleFields, VarargsCodePointsEndAtZero) {
  CounterStyle style;
  style.addSymbols(0x41, 0x42, 0x1F600, 0, 0x43);
  ASSERT_NE(style.getSymbols(), nullptr);
  ASSERT_EQ(style.getSymbols()->size(), 3u);
  EXPECT_EQ((*style.getSymbols())[2].char32At(0), 0x1F600);
  CounterStyle none;
  none.addSymbols(0);
  EXPECT_TRUE(none.getSymbols() == nullptr || none.getSymbols()->empty());
}

TEST(CounterStyleFields, VarargsStringsEndAtNullOrEmpty) {
  CounterStyle style;
  style.addSymbols("one", "two", static_cast<const char*>(nullptr), "three");
  ASSERT_EQ(style.getSymbols()->size(), 2u);
  EXPECT_EQ(utf8((*style.getSymbols())[1]), "two");
  style.clrSymbols();
  style.addSymbols("x", "yy", "", "zzz", static_cast<const char*>(nullptr));
  ASSERT_EQ(style.getSymbols()->size(), 2u);
  EXPECT_EQ(utf8((*style.getSymbols())[1]), "yy");
  CounterStyle none;
  none.addSymbols(static_cast<const char*>(nullptr));
  EXPECT_TRUE(none.getSymbols() == nullptr || none.getSymbols()->empty());
}

TEST(CounterStyleFields, AdditiveSymbolOverloadsKeepTheGivenOrder) {
  CounterStyle style(ZQN_additive);
  style.addAdditiveSymbol(1, 'i');
  style.addAdditiveSymbol(IntSymbol(10, Symbol(us(u"x"))));
  style.addAdditiveSymbol(5, Symbol(us(u"v")));
  style.addAdditiveSymbol(0, "nulla");
  const auto* list = style.getAdditiveSymbols();
  ASSERT_NE(list, nullptr);
  ASSERT_EQ(list->size(), 4u);
  EXPECT_EQ((*list)[0], IntSymbol(1, Symbol(us(u"i"))));
  EXPECT_EQ((*list)[1], IntSymbol(10, Symbol(us(u"x"))));
  EXPECT_EQ((*list)[2], IntSymbol(5, Symbol(us(u"v"))));
  EXPECT_EQ((*list)[3], IntSymbol(0, Symbol(us(u"nulla"))));
  style.clrAdditiveSymbols();
  EXPECT_EQ(style.getAdditiveSymbols(), nullptr);
}

TEST(CounterStyleFields, RangesAppendBothEndsInclusive) {
  CounterStyle style(ZQN_numeric);
  style.addSymbols(Symbol(us(u"0123456789")));
  style.addRange(3, 5);
  style.addRange(10, 10);
  ASSERT_NE(style.getRange(), nullptr);
  EXPECT_EQ(style.getRange()->size(), 2u);
  EXPECT_EQ((*style.getRange())[1], std::make_pair(10LL, 10LL));
  EXPECT_EQ(fmtMarked(style, 2), "<fallback>. ");
  EXPECT_EQ(fmtMarked(style, 3), "3. ");
  EXPECT_EQ(fmtMarked(style, 5), "5. ");
  EXPECT_EQ(fmtMarked(style, 6), "<fallback>. ");
  EXPECT_EQ(fmtMarked(style, 10), "10. ");
  EXPECT_EQ(fmtMarked(style, 11), "<fallback>. ");
  style.clrRange();
  EXPECT_EQ(style.getRange(), nullptr);
  EXPECT_EQ(fmtMarked(style, -7), "-7. ");
}

TEST(CounterStyleFields, AnEmptyRangeSequenceAllowsNothing) {
  CounterStyle style(ZQN_numeric);
  style.addSymbols(Symbol(us(u"0123456789")));
  style.addRange(1, 1);
  const_cast<CounterStyle::RangeList*>(style.getRange())->clear();
  EXPECT_EQ(fmtMarked(style, 1), "<fallback>. ");
  EXPECT_EQ(fmtMarked(style, 0), "<fallback>. ");
}

TEST(CounterStyleFields, DefaultRangesBySystem) {
  // alphabetic and symbolic need 1, additive 0, the others take every number.
  CounterStyle alpha = styleOf(ZQN_alphabetic, u"ab");
  EXPECT_EQ(fmtMarked(alpha, 0), "<fallback>. ");
  EXPECT_EQ(fmtMarked(alpha, 1), "a. ");
  CounterStyle symbolic = styleOf(ZQN_symbolic, u"*");
  EXPECT_EQ(fmtMarked(symbolic, 0), "<fallback>. ");
  CounterStyle add(ZQN_additive);
  add.addAdditiveSymbol(1, 'I');
  add.addAdditiveSymbol(0, 'N');
  EXPECT_EQ(fmtMarked(add, 0), "N. ");
  EXPECT_EQ(fmtMarked(add, -1), "<fallback>. ");
  CounterStyle cyclic = styleOf(ZQN_cyclic, u"xyz");
  EXPECT_EQ(fmtMarked(cyclic, LLONG_MIN), fmtMarked(cyclic, LLONG_MIN % 3 + 3));
  CounterStyle numeric = styleOf(ZQN_numeric, u"01");
  EXPECT_EQ(fmtMarked(numeric, -2), "-10. ");
}

TEST(CounterStyleFields, CopiesAreDeep) {
  CounterStyle a(ZQN_additive);
  a.addSymbol('s');
  a.addAdditiveSymbol(1, 'i');
  a.addRange(1, 9);
  a.setPrefix("<");
  CounterStyle b(a);
  b.addSymbol('t');
  b.addAdditiveSymbol(5, 'v');
  b.addRange(20, 30);
  EXPECT_EQ(a.getSymbols()->size(), 1u);
  EXPECT_EQ(a.getAdditiveSymbols()->size(), 1u);
  EXPECT_EQ(a.getRange()->size(), 1u);
  EXPECT_NE(a.getSymbols(), b.getSymbols());
  CounterStyle c;
  c = b;
  EXPECT_EQ(c.getSystem(), ZQN_additive);
  EXPECT_EQ(c.getSymbols()->size(), 2u);
  EXPECT_EQ(utf8(c.getPrefix()), "<");
  c.clrSymbols();
  EXPECT_EQ(b.getSymbols()->size(), 2u);
  c = CounterStyle();
  EXPECT_EQ(c.getSymbols(), nullptr);
  EXPECT_EQ(c.getRange(), nullptr);
  CounterStyle& self = c;
  c = self;
  EXPECT_EQ(c.getSystem(), ZQN_symbolic);
}

// ---- Order ----

TEST(CounterStyleOrder, FieldsCompareInTheToldOrder) {
  auto expectLess = [](const CounterStyle& a, const CounterStyle& b) {
    EXPECT_TRUE(a < b);
    EXPECT_FALSE(b < a);
  };
  CounterStyle base(ZQN_numeric);
  EXPECT_FALSE(base < base);

  // system decides before everything else
  ASSERT_TRUE(ZQName(ZQN_alphabetic) < ZQName(ZQN_numeric));
  CounterStyle sys1(ZQN_alphabetic), sys2(ZQN_numeric);
  sys1.setPrefix("z");
  expectLess(sys1, sys2);

  // prefix before suffix
  CounterStyle p1 = base, p2 = base;
  p1.setPrefix("a");
  p1.setSuffix("z");
  p2.setPrefix("b");
  p2.setSuffix("a");
  expectLess(p1, p2);

  // suffix before fallback
  CounterStyle s1 = base, s2 = base;
  s1.setSuffix("a");
  s2.setSuffix("b");
  s1.setFallback(ZQName(static_cast<ZQNameEnum>(2000)));
  s2.setFallback(ZQName(static_cast<ZQNameEnum>(1000)));
  expectLess(s1, s2);

  // fallback before the symbols
  CounterStyle f1 = base, f2 = base;
  f1.setFallback(ZQName(static_cast<ZQNameEnum>(1000)));
  f2.setFallback(ZQName(static_cast<ZQNameEnum>(2000)));
  f1.addSymbols(Symbol(us(u"zz")));
  expectLess(f1, f2);

  // symbols by count, then by element; before the additive symbols
  CounterStyle y1 = base, y2 = base;
  y1.addSymbols(Symbol(us(u"zz")));
  y2.addSymbols(Symbol(us(u"aaa")));
  y1.addAdditiveSymbol(9, 'z');
  expectLess(y1, y2);
  CounterStyle y3 = base, y4 = base;
  y3.addSymbols(Symbol(us(u"ab")));
  y4.addSymbols(Symbol(us(u"ac")));
  expectLess(y3, y4);
  CounterStyle yNull = base, yEmpty = base;
  yEmpty.addSymbol('a');
  expectLess(yNull, yEmpty);

  // additive symbols before ranges
  CounterStyle a1 = base, a2 = base;
  a1.addAdditiveSymbol(1, 'a');
  a2.addAdditiveSymbol(2, 'a');
  a1.addRange(5, 6);
  expectLess(a1, a2);

  // ranges before first
  CounterStyle r1 = base, r2 = base;
  r1.addRange(1, 2);
  r2.addRange(1, 3);
  r1.setFirst(9);
  expectLess(r1, r2);

  // first before predefined and pad
  CounterStyle n1 = base, n2 = base;
  n1.setFirst(1);
  n2.setFirst(2);
  n1.setPad(9, "0");
  expectLess(n1, n2);

  // pad length last; pad symbol and negative are not compared
  CounterStyle d1 = base, d2 = base;
  d1.setPad(1, "x");
  d2.setPad(2, "a");
  expectLess(d1, d2);
  CounterStyle e1 = base, e2 = base;
  e1.setPad(2, "x");
  e2.setPad(2, "y");
  e2.setNegative("neg", "");
  EXPECT_FALSE(e1 < e2);
  EXPECT_FALSE(e2 < e1);
}

TEST(CounterStyleOrder, PredefinedComparesBeforePadLength) {
  const CounterStyle* decimal = ZQUtil::getPredefinedCounterStyle(ZQN_decimal);
  ASSERT_NE(decimal, nullptr);
  CounterStyle own(ZQN_numeric);
  own.addSymbols(Symbol(us(u"0123456789")));
  own.setFallback(ZQName());
  own.setPad(5, "0");
  // Everything else agrees: the unset predefined flag sorts first despite the longer pad.
  EXPECT_TRUE(own < *decimal);
  EXPECT_FALSE(*decimal < own);
}

// ---- finishString ----

TEST(CounterStyleFinish, PadThenSignThenPrefixAndSuffix) {
  CounterStyle style(ZQN_numeric);
  style.setPrefix("[");
  style.setSuffix("]");
  style.setNegative("(", ")");
  style.setPad(4, "0");
  EXPECT_EQ(utf8(style.finishString(us(u"12"), true, false)), "[(0012)]");
  EXPECT_EQ(utf8(style.finishString(us(u"12"), false, false)), "[0012]");
  EXPECT_EQ(utf8(style.finishString(us(u"12"), true, true)), "(0012)");
  EXPECT_EQ(utf8(style.finishString(us(u"12345"), false, true)), "12345");
}

TEST(CounterStyleFinish, PadCountsCodePointsAndMayOvershoot) {
  CounterStyle style(ZQN_numeric);
  style.setPad(3, Symbol(us(u"\U0001D7CE")));  // one code point, two units
  UnicodeString padded = style.finishString(us(u"\U0001D7CF"), false, true);
  EXPECT_EQ(padded.countChar32(), 3);
  style.setPad(4, "ab");
  EXPECT_EQ(utf8(style.finishString(us(u"x"), false, true)), "ababx");
  style.setPad(4, "abc");
  EXPECT_EQ(utf8(style.finishString(us(u"x"), false, true)), "abcx");
  style.setPad(6, "");
  EXPECT_EQ(utf8(style.finishString(us(u"x"), false, true)), "x");
  style.setPad(-3, "0");
  EXPECT_EQ(utf8(style.finishString(us(u"x"), false, true)), "x");
}

TEST(CounterStyleFinish, AbsurdPadIsCut) {
  CounterStyle style(ZQN_numeric);
  style.setPad(INT_MAX, "0");
  UnicodeString padded = style.finishString(us(u"7"), false, true);
  EXPECT_EQ(padded.length(), 1000);
  EXPECT_EQ(padded[999], u'7');
}

// ---- The told edge cases ----

TEST(CounterStyleEdge, DecimalMinusFive) {
  const CounterStyle* decimal = ZQUtil::getPredefinedCounterStyle(ZQN_decimal);
  ASSERT_NE(decimal, nullptr);
  EXPECT_EQ(fmt(*decimal, -5), "-5. ");
}

TEST(CounterStyleEdge, PadThreeZeroMinusFive) {
  CounterStyle style(*ZQUtil::getPredefinedCounterStyle(ZQN_decimal));
  style.setPad(3, "0");
  EXPECT_EQ(fmt(style, -5), "-005. ");
}

TEST(CounterStyleEdge, PadFourWithTwoCodePointsGoesTwice) {
  CounterStyle style = styleOf(ZQN_numeric, u"0123456789");
  style.setPad(4, "ab");
  UnicodeString text = style.formatNumber(1, nullptr, nullptr, true);
  EXPECT_EQ(utf8(text), "abab1");
  EXPECT_EQ(text.countChar32(), 5);
}

TEST(CounterStyleEdge, AlphabeticBijective) {
  CounterStyle style = styleOf(ZQN_alphabetic, u"ab");
  const char* expected[] = {"a", "b", "aa", "ab", "ba", "bb", "aaa"};
  for (int n = 1; n <= 7; ++n) EXPECT_EQ(fmt(style, n, true), expected[n - 1]) << n;
  CounterStyle latin = styleOf(ZQN_alphabetic, u"abcdefghijklmnopqrstuvwxyz");
  EXPECT_EQ(fmt(latin, 26, true), "z");
  EXPECT_EQ(fmt(latin, 27, true), "aa");
  EXPECT_EQ(fmt(latin, 702, true), "zz");
  EXPECT_EQ(fmt(latin, 703, true), "aaa");
  EXPECT_EQ(fmt(latin, LLONG_MAX, true), "crpxnlskvljfhg");
}

TEST(CounterStyleEdge, AlphabeticNeedsTwoSymbols) {
  EXPECT_EQ(fmtMarked(styleOf(ZQN_alphabetic, u"a"), 1), "<fallback>. ");
  EXPECT_EQ(fmtMarked(styleOf(ZQN_alphabetic, nullptr), 1), "<fallback>. ");
}

TEST(CounterStyleEdge, SymbolicRepeatsAndZeroFallsBack) {
  CounterStyle stars = styleOf(ZQN_symbolic, u"*");
  EXPECT_EQ(fmt(stars, 3, true), "***");
  EXPECT_EQ(fmtMarked(stars, 0), "<fallback>. ");
  CounterStyle two = styleOf(ZQN_symbolic, u"*+");
  EXPECT_EQ(fmt(two, 1, true), "*");
  EXPECT_EQ(fmt(two, 2, true), "+");
  EXPECT_EQ(fmt(two, 3, true), "**");
  EXPECT_EQ(fmt(two, 6, true), "+++");
  EXPECT_EQ(fmtMarked(styleOf(ZQN_symbolic, nullptr), 1), "<fallback>. ");
}

TEST(CounterStyleEdge, FixedOutsideItsSymbolsFallsBack) {
  CounterStyle style = styleOf(ZQN_fixed, u"abc");
  style.setFirst(5);
  EXPECT_EQ(fmtMarked(style, 4), "<fallback>. ");
  EXPECT_EQ(fmtMarked(style, 5), "a. ");
  EXPECT_EQ(fmtMarked(style, 7), "c. ");
  EXPECT_EQ(fmtMarked(style, 8), "<fallback>. ");
  EXPECT_EQ(fmtMarked(style, LLONG_MIN), "<fallback>. ");
  style.setFirst(INT_MIN);
  EXPECT_EQ(fmtMarked(style, LLONG_MAX), "<fallback>. ");
  style.setFirst(-1);
  EXPECT_EQ(fmtMarked(style, -1), "a. ");  // not signed
}

TEST(CounterStyleEdge, CyclicZeroIsTheLastSymbol) {
  CounterStyle style = styleOf(ZQN_cyclic, u"abc");
  EXPECT_EQ(fmt(style, 1, true), "a");
  EXPECT_EQ(fmt(style, 3, true), "c");
  EXPECT_EQ(fmt(style, 4, true), "a");
  EXPECT_EQ(fmt(style, 0, true), "c");
  EXPECT_EQ(fmt(style, -1, true), "b");  // no sign
  EXPECT_EQ(fmtMarked(styleOf(ZQN_cyclic, nullptr), 1), "<fallback>. ");
}

TEST(CounterStyleEdge, AdditiveZeroWithoutZeroWeightFallsBack) {
  CounterStyle style(ZQN_additive);
  style.addAdditiveSymbol(5, 'V');
  style.addAdditiveSymbol(1, 'I');
  EXPECT_EQ(fmtMarked(style, 0), "<fallback>. ");
  EXPECT_EQ(fmtMarked(style, 7), "VII. ");
  // A zero weight that is not the last one does not count.
  CounterStyle early(ZQN_additive);
  early.addAdditiveSymbol(0, 'N');
  early.addAdditiveSymbol(1, 'I');
  EXPECT_EQ(fmtMarked(early, 0), "<fallback>. ");
  EXPECT_EQ(fmtMarked(early, 2), "II. ");
}

TEST(CounterStyleEdge, AdditiveUsesTheGivenOrderWithoutSorting) {
  CounterStyle style(ZQN_additive);
  style.addAdditiveSymbol(1, 'I');
  style.addAdditiveSymbol(5, 'V');
  EXPECT_EQ(fmtMarked(style, 6), "IIIIII. ");
  CounterStyle gaps(ZQN_additive);
  gaps.addAdditiveSymbol(5, 'V');
  gaps.addAdditiveSymbol(2, 'B');
  EXPECT_EQ(fmtMarked(gaps, 9), "VBB. ");
  EXPECT_EQ(fmtMarked(gaps, 8), "<fallback>. ");  // a rest of 1 is left
  CounterStyle none(ZQN_additive);
  EXPECT_EQ(fmtMarked(none, 1), "<fallback>. ");
}

TEST(CounterStyleEdge, AdditiveIsSigned) {
  CounterStyle style(ZQN_additive);
  style.addRange(-10, 10);
  style.addAdditiveSymbol(1, 'I');
  EXPECT_EQ(fmtMarked(style, -3), "-III. ");
}

TEST(CounterStyleEdge, SelfFallbackEndsInDecimalWithTheFirstStylesAffixes) {
  CounterStyle self = styleOf(ZQN_numeric, u"x");  // one symbol: can never format
  self.setPrefix("<");
  self.setSuffix(">");
  EXPECT_EQ(utf8(self.formatNumber(42, dataLookup, &self, false)), "<42>");
  EXPECT_EQ(utf8(self.formatNumber(42, dataLookup, &self, true)), "42");
  EXPECT_EQ(utf8(self.formatNumber(-42, dataLookup, &self, false)), "<-42>");
}

TEST(CounterStyleEdge, FallbackCycleOfTwoEndsInDecimal) {
  struct Pair {
    CounterStyle a{ZQName(ZQN_numeric)};
    CounterStyle b{ZQName(ZQN_numeric)};
  } pair;
  pair.a.setFallback(ZQN_lower_alpha);
  pair.b.setFallback(ZQN_upper_alpha);
  pair.a.setPrefix("A");
  pair.b.setPrefix("B");
  auto lookup = [](ZQName name, void* data) -> const CounterStyle* {
    auto* p = static_cast<Pair*>(data);
    return name == ZQN_lower_alpha ? &p->b : &p->a;
  };
  EXPECT_EQ(utf8(pair.a.formatNumber(7, lookup, &pair, false)), "A7. ");
  EXPECT_EQ(utf8(pair.b.formatNumber(7, lookup, &pair, false)), "B7. ");
}

TEST(CounterStyleEdge, FallbackStyleIsUsedBareUnderTheFirstStylesAffixes) {
  CounterStyle roman(ZQN_additive);
  roman.addRange(1, 3);
  roman.addAdditiveSymbol(1, 'I');
  roman.setPrefix("(");
  roman.setSuffix(")");
  CounterStyle letters = styleOf(ZQN_alphabetic, u"abcdefghijklmnopqrstuvwxyz");
  letters.setPrefix("{");
  letters.setSuffix("}");
  EXPECT_EQ(utf8(roman.formatNumber(2, dataLookup, &letters, false)), "(II)");
  EXPECT_EQ(utf8(roman.formatNumber(5, dataLookup, &letters, false)), "(e)");
  EXPECT_EQ(utf8(roman.formatNumber(5, dataLookup, &letters, true)), "e");
  // The fallback gets the number as it was given: letters can't do 0 either, so decimal.
  EXPECT_EQ(utf8(roman.formatNumber(0, dataLookup, &letters, false)), "(0)");
}

TEST(CounterStyleEdge, WithoutLookupOrAnswerTheFallbackIsDecimal) {
  CounterStyle style = styleOf(ZQN_alphabetic, u"ab");
  style.setFallback(ZQN_lower_roman);
  EXPECT_EQ(fmt(style, 0), "0. ");
  auto none = [](ZQName, void*) -> const CounterStyle* { return nullptr; };
  EXPECT_EQ(utf8(style.formatNumber(-4, none, nullptr, false)), "-4. ");
  // A lookup's data reaches the lookup.
  int calls = 0;
  auto counting = [](ZQName name, void* data) -> const CounterStyle* {
    ++*static_cast<int*>(data);
    EXPECT_EQ(name, ZQN_lower_roman);
    return nullptr;
  };
  style.formatNumber(0, counting, &calls, false);
  EXPECT_EQ(calls, 1);
}

TEST(CounterStyleEdge, NumericWithOneSymbolFallsBack) {
  EXPECT_EQ(fmtMarked(styleOf(ZQN_numeric, u"0"), 1), "<fallback>. ");
  EXPECT_EQ(fmtMarked(styleOf(ZQN_numeric, u"0"), 0), "<fallback>. ");
}

TEST(CounterStyleEdge, NumericDigitsAndZero) {
  CounterStyle binary = styleOf(ZQN_numeric, u"01");
  EXPECT_EQ(fmt(binary, 0, true), "0");
  EXPECT_EQ(fmt(binary, 6, true), "110");
  EXPECT_EQ(fmt(binary, -6, true), "-110");
  CounterStyle hex = styleOf(ZQN_numeric, u"0123456789abcdef");
  EXPECT_EQ(fmt(hex, LLONG_MIN, true), "-8000000000000000");
  EXPECT_EQ(fmt(hex, LLONG_MAX, true), "7fffffffffffffff");
}

TEST(CounterStyleEdge, AThousandUnitsFallBack) {
  CounterStyle stars = styleOf(ZQN_symbolic, u"*");
  EXPECT_EQ(stars.formatNumber(999, nullptr, nullptr, true).length(), 999);
  EXPECT_EQ(fmtMarked(stars, 1000), "<fallback>. ");
  EXPECT_EQ(fmtMarked(stars, LLONG_MAX), "<fallback>. ");

  CounterStyle add(ZQN_additive);
  add.addAdditiveSymbol(1, 'I');
  EXPECT_EQ(add.formatNumber(999, nullptr, nullptr, true).length(), 999);
  EXPECT_EQ(fmtMarked(add, 1000), "<fallback>. ");
  EXPECT_EQ(fmtMarked(add, LLONG_MAX), "<fallback>. ");

  // Symbols of 100 units in base 2: nine digits pass, ten are 1000 units.
  CounterStyle wide(ZQN_numeric);
  wide.addSymbol(Symbol(UnicodeString(100, u'0', 100)));
  wide.addSymbol(Symbol(UnicodeString(100, u'1', 100)));
  EXPECT_EQ(wide.formatNumber(511, nullptr, nullptr, true).length(), 900);
  EXPECT_EQ(fmtMarked(wide, 512), "<fallback>. ");

  CounterStyle longLetters(ZQN_alphabetic);
  longLetters.addSymbol(Symbol(UnicodeString(500, u'a', 500)));
  longLetters.addSymbol(Symbol(UnicodeString(499, u'b', 499)));
  EXPECT_EQ(longLetters.formatNumber(6, nullptr, nullptr, true).length(), 998);  // "bb"
  EXPECT_EQ(longLetters.formatNumber(4, nullptr, nullptr, true).length(), 999);  // "ab"
  EXPECT_EQ(fmtMarked(longLetters, 3), "<fallback>. ");                          // "aa"
  EXPECT_EQ(fmtMarked(longLetters, 7), "<fallback>. ");                          // "aaa"
}

TEST(CounterStyleEdge, EmptySymbolsDoNotHang) {
  CounterStyle symbolic(ZQN_symbolic);
  symbolic.addSymbol(Symbol());
  EXPECT_EQ(fmt(symbolic, LLONG_MAX, true), "");
  CounterStyle add(ZQN_additive);
  add.addAdditiveSymbol(1, Symbol());
  EXPECT_EQ(fmt(add, LLONG_MAX, true), "");
  EXPECT_EQ(fmt(add, LLONG_MIN, true), "-9223372036854775808");  // below the default range
  add.addRange(LLONG_MIN, LLONG_MAX);
  EXPECT_EQ(fmt(add, LLONG_MIN, true), "-");
}

TEST(CounterStyleEdge, UnknownSystemFallsBack) {
  CounterStyle style = styleOf(ZQN_decimal, u"0123456789");
  EXPECT_EQ(fmtMarked(style, 5), "<fallback>. ");
}

TEST(CounterStyleEdge, FallbackMarkIsClearedAfterAFallback) {
  // A style that fell back once is afterwards still taken as another style's fallback: "ba"
  // from the letters, where a mark left behind would give decimal "5".
  CounterStyle letters = styleOf(ZQN_alphabetic, u"ab");
  letters.addRange(1, 10);
  EXPECT_EQ(fmt(letters, 20), "20. ");
  EXPECT_EQ(utf8(letters.formatNumber(20, dataLookup, &letters, false)), "20. ");
  CounterStyle unable = styleOf(ZQN_numeric, u"x");
  EXPECT_EQ(utf8(unable.formatNumber(5, dataLookup, &letters, false)), "ba. ");
  // The same after the style fell back while another style was asking it.
  EXPECT_EQ(utf8(unable.formatNumber(20, dataLookup, &letters, false)), "20. ");
  EXPECT_EQ(utf8(unable.formatNumber(6, dataLookup, &letters, false)), "bb. ");
}

TEST(CounterStyleEdge, FallbackMarkIsNotCopied) {
  // The lookup copies the style while it is falling back; the copy starts unmarked, so it
  // is used ("aa") instead of decimal.
  struct Holder {
    const CounterStyle* original;
    std::unique_ptr<CounterStyle> copy;
  };
  CounterStyle style = styleOf(ZQN_alphabetic, u"ab");
  style.addRange(1, 2);
  style.setPrefix("[");
  Holder holder{&style, nullptr};
  auto lookup = [](ZQName, void* data) -> const CounterStyle* {
    auto* h = static_cast<Holder*>(data);
    h->copy = std::make_unique<CounterStyle>(*h->original);
    h->copy->clrRange();
    return h->copy.get();
  };
  EXPECT_EQ(utf8(style.formatNumber(3, lookup, &holder, false)), "[aa. ");
}

// ---- The Chinese long forms ----

namespace {

CounterStyle chineseStyle(ZQNameEnum system, bool formal) {
  CounterStyle style(system);
  style.addSymbols(
      Symbol(us(formal ? u"零壹贰叁肆伍陆柒捌玖拾佰仟" : u"零一二三四五六七八九十百千")));
  return style;
}

}  // namespace

TEST(CounterStyleChinese, InformalTens) {
  CounterStyle style = chineseStyle(ZQN_simp_chinese_informal, false);
  EXPECT_EQ(fmt(style, 10, true), "十");
  EXPECT_EQ(fmt(style, 11, true), "十一");
  EXPECT_EQ(fmt(style, 12, true), "十二");
  EXPECT_EQ(fmt(style, 19, true), "十九");
  EXPECT_EQ(fmt(style, 20, true), "二十");
  EXPECT_EQ(fmt(style, 21, true), "二十一");
}

TEST(CounterStyleChinese, InformalHundreds) {
  CounterStyle style = chineseStyle(ZQN_trad_chinese_informal, false);
  EXPECT_EQ(fmt(style, 100, true), "一百");
  EXPECT_EQ(fmt(style, 101, true), "一百零一");
  EXPECT_EQ(fmt(style, 110, true), "一百一十");
  EXPECT_EQ(fmt(style, 111, true), "一百一十一");
}

TEST(CounterStyleChinese, FormalTenKeepsTheOne) {
  CounterStyle style = chineseStyle(ZQN_simp_chinese_formal, true);
  EXPECT_EQ(fmt(style, 10, true), "壹拾");
  EXPECT_EQ(fmt(style, 11, true), "壹拾壹");
  CounterStyle trad = chineseStyle(ZQN_trad_chinese_formal, true);
  EXPECT_EQ(fmt(trad, 15, true), "壹拾伍");
}

TEST(CounterStyleChinese, ZerosCollapseAndTrailingZerosAreSilent) {
  CounterStyle style = chineseStyle(ZQN_simp_chinese_informal, false);
  EXPECT_EQ(fmt(style, 0, true), "零");
  EXPECT_EQ(fmt(style, 1000, true), "一千");
  EXPECT_EQ(fmt(style, 1001, true), "一千零一");
  EXPECT_EQ(fmt(style, 1010, true), "一千零一十");
  EXPECT_EQ(fmt(style, 1100, true), "一千一百");
  EXPECT_EQ(fmt(style, 9999, true), "九千九百九十九");
  EXPECT_EQ(fmt(style, 2020, true), "二千零二十");
}

TEST(CounterStyleChinese, SignedThroughTheNegativeSymbol) {
  CounterStyle style = chineseStyle(ZQN_simp_chinese_informal, false);
  style.setNegative(Symbol(0x8D1F), Symbol());
  EXPECT_EQ(fmt(style, -15, true), "负十五");
}

TEST(CounterStyleChinese, TheBoundCheckOnSymbolIndexesThrows) {
  // Without a range a fifth digit asks for a unit symbol that is not there.
  CounterStyle style = chineseStyle(ZQN_simp_chinese_informal, false);
  EXPECT_THROW(style.formatNumber(12345, nullptr, nullptr, false), std::out_of_range);
  CounterStyle few(ZQN_simp_chinese_informal);
  few.addSymbols(Symbol(us(u"零一二")));
  EXPECT_THROW(few.formatNumber(5, nullptr, nullptr, false), std::out_of_range);
  // The fallback mark does not stay set after a throw: afterwards the style is still
  // taken as a fallback ("ba"), where a stuck mark would give decimal.
  CounterStyle letters = styleOf(ZQN_alphabetic, u"ab");
  letters.addRange(1, 10);
  EXPECT_THROW(letters.formatNumber(12345, dataLookup, &style, false), std::out_of_range);
  CounterStyle unable = styleOf(ZQN_numeric, u"x");
  EXPECT_EQ(utf8(unable.formatNumber(5, dataLookup, &letters, false)), "ba. ");
}

// ---- Ethiopic numerals ----

TEST(CounterStyleEthiopic, Values) {
  EXPECT_EQ(utf8(util::formatEthiopic(1)), "\u1369");
  EXPECT_EQ(utf8(util::formatEthiopic(9)), "\u1371");
  EXPECT_EQ(utf8(util::formatEthiopic(10)), "\u1372");
  EXPECT_EQ(utf8(util::formatEthiopic(78)), "\u1378\u1370");
  EXPECT_EQ(utf8(util::formatEthiopic(100)), "\u137B");
  EXPECT_EQ(utf8(util::formatEthiopic(101)), "\u137B\u1369");
  EXPECT_EQ(utf8(util::formatEthiopic(200)), "\u136A\u137B");
  EXPECT_EQ(utf8(util::formatEthiopic(1000)), "\u1372\u137B");
  EXPECT_EQ(utf8(util::formatEthiopic(10000)), "\u137C");
  EXPECT_EQ(utf8(util::formatEthiopic(10001)), "\u137C\u1369");
  EXPECT_EQ(utf8(util::formatEthiopic(12345)), "\u137C\u1373\u136B\u137B\u1375\u136D");
  EXPECT_EQ(utf8(util::formatEthiopic(1000000)), "\u137B\u137C");
  EXPECT_EQ(utf8(util::formatEthiopic(100000000)), "\u137C\u137C");
  // A 1 in an even place that is not the top one is written.
  EXPECT_EQ(utf8(util::formatEthiopic(1010000)), "\u137B\u1369\u137C");
  EXPECT_FALSE(util::formatEthiopic(LLONG_MAX).isEmpty());
}

TEST(CounterStyleEthiopic, ZeroAndNegativeAreEmpty) {
  EXPECT_TRUE(util::formatEthiopic(0).isEmpty());
  EXPECT_TRUE(util::formatEthiopic(-5).isEmpty());
  EXPECT_TRUE(util::formatEthiopic(LLONG_MIN).isEmpty());
  CounterStyle style(ZQN_ethiopic_numeric);  // no range: every number is taken
  EXPECT_EQ(fmt(style, 0), ". ");
  EXPECT_EQ(fmt(style, -3), ". ");  // not signed
  EXPECT_EQ(fmt(style, 3), "\u136B. ");
}

// ---- Kansuji ----

TEST(CounterStyleKansuji, DefaultTable) {
  const util::KansujiTable& t = util::defaultKansujiTable();
  EXPECT_EQ(t[1], 0x3007);
  EXPECT_EQ(t[10], 0x4E5D);
  EXPECT_EQ(t[11], 0x5341);
  EXPECT_EQ(t[13], 0x5343);
  EXPECT_EQ(t[14], 0x4E07);
  EXPECT_EQ(t[19], 0x25771);
  EXPECT_EQ(t[25], 0x6975);
  EXPECT_EQ(t[26], 0x30FB);
  EXPECT_EQ(t[27], 0x3001);
}

TEST(CounterStyleKansuji, ReadableEdgeCases) {
  EXPECT_EQ(convert(u"1", KansujiMode::Readable), "一");
  EXPECT_EQ(convert(u"10", KansujiMode::Readable), "十");
  EXPECT_EQ(convert(u"11", KansujiMode::Readable), "十一");
  EXPECT_EQ(convert(u"20", KansujiMode::Readable), "二十");
  EXPECT_EQ(convert(u"1000", KansujiMode::Readable), "千");
  EXPECT_EQ(convert(u"1234", KansujiMode::Readable), "千二百三十四");
}

TEST(CounterStyleKansuji, ReadableGroups) {
  EXPECT_EQ(convert(u"0", KansujiMode::Readable), "〇");
  EXPECT_EQ(convert(u"0000", KansujiMode::Readable), "〇");
  EXPECT_EQ(convert(u"007", KansujiMode::Readable), "七");
  EXPECT_EQ(convert(u"10000", KansujiMode::Readable), "一万");
  EXPECT_EQ(convert(u"12345", KansujiMode::Readable), "一万二千三百四十五");
  // Every group but the lowest gets its power, even a group of zeros.
  EXPECT_EQ(convert(u"100000000", KansujiMode::Readable), "一億万");
  EXPECT_EQ(convert(u"100010001", KansujiMode::Readable), "一億一万一");
  EXPECT_EQ(convert(u"x2y", KansujiMode::Readable), "x二y");
}

TEST(CounterStyleKansuji, ReadableBeyondTheHighestPower) {
  // 10^52 and above: the multiplier of 10^48 is written digit by digit before the highest
  // power; the lower 48 digits are read in their twelve groups.
  UnicodeString digits(u"12345");
  digits.append(UnicodeString(48, u'0', 48));
  UnicodeString out =
      util::convertKansujiText(digits, KansujiMode::Readable, util::defaultKansujiTable());
  UnicodeString expected(u"一二三四五極");
  for (int i = 24; i >= 14; --i) expected.append(util::defaultKansujiTable()[i]);
  EXPECT_EQ(utf8(out), utf8(expected));
  // Just below it, the top group is read with the highest power.
  UnicodeString top(u"9999");
  top.append(UnicodeString(48, u'0', 48));
  UnicodeString readTop =
      util::convertKansujiText(top, KansujiMode::Readable, util::defaultKansujiTable());
  EXPECT_TRUE(readTop.startsWith(UnicodeString(u"九千九百九十九極")));
}

TEST(CounterStyleKansuji, Simple) {
  EXPECT_EQ(convert(u"2024", KansujiMode::Simple), "二〇二四");
  EXPECT_EQ(convert(u"a12b3,4.5", KansujiMode::Simple), "a一二b三,四.五");
  EXPECT_EQ(convert(u"", KansujiMode::Simple), "");
}

TEST(CounterStyleKansuji, GroupingPowersAndTrailingZeros) {
  EXPECT_EQ(convert(u"1234", KansujiMode::Grouping), "一二三四");
  EXPECT_EQ(convert(u"10000", KansujiMode::Grouping), "一万");
  EXPECT_EQ(convert(u"12345", KansujiMode::Grouping), "一万二三四五");
  EXPECT_EQ(convert(u"100000000", KansujiMode::Grouping), "一億");
  EXPECT_EQ(convert(u"1000010000", KansujiMode::Grouping), "一〇億〇〇〇一万");
  EXPECT_EQ(convert(u"100000001", KansujiMode::Grouping), "一億〇〇〇〇万〇〇〇一");
  EXPECT_EQ(convert(u"0", KansujiMode::Grouping), "〇");
  EXPECT_EQ(convert(u"00000", KansujiMode::Grouping), "〇万");
}

TEST(CounterStyleKansuji, GroupingAboveTwelveGroupsHasNoPower) {
  UnicodeString digits(u"1");
  digits.append(UnicodeString(52, u'1', 52));  // 53 digits: group 13 on top
  UnicodeString out =
      util::convertKansujiText(digits, KansujiMode::Grouping, util::defaultKansujiTable());
  // The top group "1" has no power; then twelve powers after the groups below it.
  EXPECT_EQ(out.countChar32(), 53 + 12);
  EXPECT_EQ(out.char32At(0), 0x4E00);
  EXPECT_EQ(out.char32At(out.moveIndex32(0, 5)), 0x6975);
}

TEST(CounterStyleKansuji, GroupingTextPathSeparatorsInsideTheCountedSpan) {
  // Inside a span: "," and "." take the comma and point symbols, other printable ASCII
  // goes full-width, and only digits count into the groups.
  EXPECT_EQ(convert(u"1,234", KansujiMode::Grouping), "一、二三四");
  EXPECT_EQ(convert(u"3.14", KansujiMode::Grouping), "三・一四");
  EXPECT_EQ(convert(u"3-14", KansujiMode::Grouping), "三－一四");
  EXPECT_EQ(convert(u"03-1234", KansujiMode::Grouping), "〇三万－一二三四");
  EXPECT_EQ(convert(u"12,345", KansujiMode::Grouping), "一万二、三四五");
  // After a power, only zeros left: the rest of the span, separators too, is dropped.
  EXPECT_EQ(convert(u"10,000", KansujiMode::Grouping), "一万");
}

TEST(CounterStyleKansuji, GroupingTextPathSpanEnds) {
  // A span ends at its last digit before anything outside U+0021..U+007E.
  EXPECT_EQ(convert(u"12.", KansujiMode::Grouping), "一二.");
  EXPECT_EQ(convert(u"(1)", KansujiMode::Grouping), "(一)");
  EXPECT_EQ(convert(u"1, 2", KansujiMode::Grouping), "一, 二");
  EXPECT_EQ(convert(u"No.5 a1b", KansujiMode::Grouping), "No.五 a一b");
  EXPECT_EQ(convert(u"1\u30002", KansujiMode::Grouping), "一\u3000二");
  EXPECT_EQ(convert(u"x1y2z", KansujiMode::Grouping), "x一ｙ二z");
}

TEST(CounterStyleKansuji, StyleModesBySymbolCount) {
  // No symbols: the defaults, simple.
  CounterStyle plain(ZQN_kansuji);
  EXPECT_EQ(fmt(plain, 1234, true), "一二三四");
  EXPECT_EQ(fmt(plain, 0, true), "〇");
  EXPECT_EQ(fmt(plain, -12, true), "-一二");  // signed
  EXPECT_EQ(fmt(plain, -12), "-一二. ");

  // Ten symbols: simple with those digits.
  CounterStyle ten = styleOf(ZQN_kansuji, u"０１２３４５６７８９");
  EXPECT_EQ(fmt(ten, 1230, true), "１２３０");

  // 22 symbols: grouping, 10..21 are the powers.
  CounterStyle grouping(ZQN_kansuji);
  grouping.addSymbols(Symbol(us(u"0123456789")));
  grouping.addSymbols(Symbol(us(u"ABCDEFGHIJKL")));
  EXPECT_EQ(fmt(grouping, 12345, true), "1A2345");
  EXPECT_EQ(fmt(grouping, 100000000, true), "1B");

  // 25 symbols: readable, 10..12 ten, hundred, thousand, 13..24 the powers.
  CounterStyle readable(ZQN_kansuji);
  readable.addSymbols(Symbol(us(u"0123456789")));
  readable.addSymbols(Symbol(us(u"tht")));
  readable.addSymbols(Symbol(us(u"ABCDEFGHIJKL")));
  EXPECT_EQ(fmt(readable, 12345, true), "1A2t3h4t5");
  EXPECT_EQ(fmt(readable, 0, true), "0");

  // An empty symbol keeps the default; only the first code point of a symbol counts.
  CounterStyle mixed(ZQN_kansuji);
  mixed.addSymbol(Symbol());
  mixed.addSymbol(Symbol(us(u"one")));
  for (int i = 2; i < 10; ++i) mixed.addSymbol('0' + i);
  EXPECT_EQ(fmt(mixed, 102, true), "o〇2");
}

TEST(CounterStyleKansuji, ReadableStyleEdgeCases) {
  // A style of 25 symbols reads numbers aloud: digits, ten/hundred/thousand, the powers.
  CounterStyle style(ZQN_kansuji);
  style.addSymbols(Symbol(us(u"〇一二三四五六七八九")));
  style.addSymbols(Symbol(us(u"十百千")));
  style.addSymbols(Symbol(us(u"万億兆京垓\U00025771穣溝澗正載極")));
  ASSERT_EQ(style.getSymbols()->size(), 25u);
  EXPECT_EQ(fmt(style, 1, true), "一");
  EXPECT_EQ(fmt(style, 10, true), "十");
  EXPECT_EQ(fmt(style, 11, true), "十一");
  EXPECT_EQ(fmt(style, 20, true), "二十");
  EXPECT_EQ(fmt(style, 1000, true), "千");
  EXPECT_EQ(fmt(style, 1234, true), "千二百三十四");
  EXPECT_EQ(fmt(style, 0, true), "〇");
  EXPECT_EQ(fmt(style, 100000000, true), "一億万");
  // The sign comes from finishString, outside the numeral.
  EXPECT_EQ(fmt(style, -1234), "-千二百三十四. ");
  // The highest value: nineteen digits in five groups.
  EXPECT_EQ(fmt(style, LLONG_MAX, true),
            "九百二十二京三千三百七十二兆三百六十八億五千四百七十七万五千八百七");
}

TEST(CounterStyleKansuji, SimpleStyleWithFewerThanTenSymbolsThrows) {
  CounterStyle style = styleOf(ZQN_kansuji, u"abc");
  EXPECT_THROW(style.formatNumber(1, nullptr, nullptr, false), std::out_of_range);
}

TEST(CounterStyleKansuji, CustomTable) {
  util::KansujiTable table = util::defaultKansujiTable();
  for (int d = 0; d < 10; ++d) table[1 + d] = 0xFF10 + d;
  table[14] = 'M';
  EXPECT_EQ(utf8(util::convertKansujiText(us(u"10000"), KansujiMode::Grouping, table)), "１M");
  EXPECT_EQ(utf8(util::convertKansujiText(us(u"20000"), KansujiMode::Readable, table)), "２M");
}
