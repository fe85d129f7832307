#include <gtest/gtest.h>

#include "TestSupport.h"

#include <string>

#include "common/ZQColor.h"
#include "common/ZQName.h"
#include "common/ZQParser.h"
#include "common/ZQValue.h"

using namespace ZQCommonNS;

namespace {

using zqtest::s8;
using P = ZQParser;
using T = ZQTokenizer;

UnicodeString U(const char16_t* s) { return UnicodeString(s); }

// The refusal: the text itself, unchanged, as a string of unit 0.
void expectText(const ZQValue& v, const UnicodeString& text) {
  EXPECT_TRUE(v.isUnknownString()) << s8(text);
  EXPECT_EQ(s8(text), s8(v.toString()));
}

std::string entry(const P::AttributeMap& map, const char16_t* key) {
  auto it = map.find(ZQName(U(key)));
  return it == map.end() ? "<none>" : s8(it->second);
}

// ---- parse ----

TEST(Parser, SurroundingWhiteSpaceIsDropped) {
  ZQValue v = P::parse(U(u"  12  "));
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(ZQUNIT_NUMBER, v.getUnitType());
  EXPECT_EQ(12, v.getIntegerValue());
}

TEST(Parser, PlusSign) {
  ZQValue v = P::parse(U(u"+5"));
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(5, v.getIntegerValue());
  expectText(P::parse(U(u"+")), U(u"+"));
}

TEST(Parser, NonNumericKeepsNumbersAndColoursAsText) {
  expectText(P::parseNonNumeric(U(u"12")), U(u"12"));
  ZQValue name = P::parseNonNumeric(U(u"abc"));
  EXPECT_TRUE(name.isName());
  EXPECT_EQ("abc", s8(name.toString()));
  expectText(P::parseNonNumeric(U(u"#fff")), U(u"#fff"));
  expectText(P::parseNonNumeric(U(u"1.0")), U(u"1.0"));
  expectText(P::parseNonNumeric(U(u"1a")), U(u"1a"));
  ZQValue s = P::parseNonNumeric(U(u"'x'"));
  EXPECT_TRUE(s.isLiteralString());
}

TEST(Parser, FlagOneRefusesNumbersOnly) {
  ZQValue c = P::parse(U(u"#fff"), P::PARSE_NO_NUMBER);
  EXPECT_TRUE(c.isColor());
  EXPECT_EQ(0xFFFFFFu, static_cast<unsigned>(c.getColorValue()));
  expectText(P::parse(U(u"12"), P::PARSE_NO_NUMBER), U(u"12"));
  expectText(P::parse(U(u"-2pt"), P::PARSE_NO_NUMBER), U(u"-2pt"));
}

TEST(Parser, FlagTwoRefusesColoursOnly) {
  expectText(P::parse(U(u"#fff"), P::PARSE_NO_COLOR), U(u"#fff"));
  expectText(P::parse(U(u"#ff000080"), P::PARSE_NO_COLOR), U(u"#ff000080"));
  EXPECT_TRUE(P::parse(U(u"12"), P::PARSE_NO_COLOR).isInteger());
  EXPECT_TRUE(P::parse(U(u"red"), P::PARSE_NO_COLOR).isName());
}

TEST(Parser, MoreThanOneTokenIsTheWholeText) {
  expectText(P::parse(U(u"12pt 3")), U(u"12pt 3"));
  // A second parse of the same text gives the same: no state is kept between calls.
  expectText(P::parse(U(u"12pt 3")), U(u"12pt 3"));
  expectText(P::parse(U(u"1 2")), U(u"1 2"));
  expectText(P::parse(U(u"a(b)")), U(u"a(b)"));
  expectText(P::parse(U(u" a  b ")), U(u" a  b "));
}

TEST(Parser, SingleValues) {
  ZQValue pt = P::parse(U(u"12pt"));
  EXPECT_TRUE(pt.isReal());
  EXPECT_EQ(ZQUNIT_PT, pt.getUnitType());
  EXPECT_EQ(12.0f, pt.getRealValue(ZQUNIT_PT));

  ZQValue neg = P::parse(U(u"-1.5"));
  EXPECT_TRUE(neg.isReal());
  EXPECT_EQ(-1.5f, neg.getRealValue(ZQUNIT_NUMBER));

  ZQValue red = P::parse(U(u"red"));
  EXPECT_TRUE(red.isName());
  EXPECT_EQ("red", s8(red.toString()));

  ZQValue s = P::parse(U(u"\"a b\""));
  EXPECT_TRUE(s.isLiteralString());
  EXPECT_EQ("a b", s8(s.toString()));

  ZQValue colour = P::parse(U(u"#ff0000"));
  EXPECT_TRUE(colour.isColor());
  EXPECT_EQ(0xFF0000u, static_cast<unsigned>(colour.getColorValue()));

  ZQValue alpha = P::parse(U(u"#ff000080"));
  EXPECT_TRUE(alpha.isColor());
  EXPECT_TRUE(alpha.getColorValue().hasAlpha());

  ZQValue pct = P::parse(U(u"-50%"));
  EXPECT_EQ(ZQUNIT_PERCENT, pct.getUnitType());
  EXPECT_EQ(-50.0f, pct.getRealValue(ZQUNIT_PERCENT));
}

TEST(Parser, EmptyTextIsEmptyStringNotNull) {
  ZQValue v = P::parse(U(u""));
  EXPECT_FALSE(v.isNull());
  EXPECT_TRUE(v.isUnknownString());
  EXPECT_TRUE(v.toString().isEmpty());
  ZQValue blank = P::parse(U(u"   "));
  expectText(blank, U(u"   "));
}

TEST(Parser, LoneCharactersAreRefused) {
  expectText(P::parse(U(u",")), U(u","));
  expectText(P::parse(U(u"-")), U(u"-"));
  expectText(P::parse(U(u"- 5")), U(u"- 5"));
  expectText(P::parse(U(u"\"abc")), U(u"\"abc"));
  expectText(P::parse(U(u"#")), U(u"#"));
  expectText(P::parse(U(u"#abcde")), U(u"#abcde"));
  expectText(P::parse(U(u"5foo")), U(u"5foo"));
}

TEST(Parser, ExponentOnlyInCssTypes) {
  ZQValue css = P::parse(U(u"1e3"), T::TOKENIZER_CSS);
  EXPECT_TRUE(css.isReal());
  EXPECT_EQ(1000.0f, css.getRealValue(ZQUNIT_NUMBER));
  ZQValue css2 = P::parse(U(u"-2.5e-1em"), T::TOKENIZER_CSS_UNIT);
  EXPECT_EQ(ZQUNIT_EM, css2.getUnitType());
  EXPECT_FLOAT_EQ(-0.25f, css2.getRealValue(ZQUNIT_EM));
  expectText(P::parse(U(u"1e3")), U(u"1e3"));
  expectText(P::parse(U(u"1e"), T::TOKENIZER_CSS), U(u"1e"));
}

TEST(Parser, TypesSelectTheRules) {
  ZQValue vendor = P::parse(U(u"-zq-box"), T::TOKENIZER_CSS);
  EXPECT_TRUE(vendor.isName());
  EXPECT_EQ("-zq-box", s8(vendor.toString()));
  expectText(P::parse(U(u"-zq-box")), U(u"-zq-box"));
  ZQValue mime = P::parse(U(u"utf-8"), T::TOKENIZER_MIME);
  EXPECT_TRUE(mime.isName());
  ZQValue word = P::parse(U(u"a,b"), T::TOKENIZER_WORDS);
  EXPECT_TRUE(word.isName());
  EXPECT_EQ("a,b", s8(word.toString()));
  ZQValue quoted = P::parse(U(u"'it''s'"), T::TOKENIZER_EXPRESSION);
  EXPECT_EQ("it's", s8(quoted.toString()));
  expectText(P::parse(U(u"'it''s'"), T::TOKENIZER_EXPRESSION2), U(u"'it''s'"));
}

TEST(Parser, FlagsThreeStillAcceptsNamesAndStrings) {
  EXPECT_TRUE(P::parse(U(u"auto"), 3).isName());
  EXPECT_TRUE(P::parse(U(u"'1'"), 3).isLiteralString());
}

TEST(Parser, BogusTextComesBackUnchanged) {
  UnicodeString bogus;
  bogus.setToBogus();
  ZQValue v = P::parse(bogus);
  EXPECT_TRUE(v.isUnknownString());
  EXPECT_TRUE(v.getStringValue().isBogus() || v.getStringValue().isEmpty());
}

// ---- parseAttributes ----

TEST(ParserAttributes, TwoEntries) {
  P::AttributeMap map;
  EXPECT_TRUE(P::parseAttributes(U(u"a=\"1\" b='2'"), map));
  EXPECT_EQ(2u, map.size());
  EXPECT_EQ("1", entry(map, u"a"));
  EXPECT_EQ("2", entry(map, u"b"));
}

TEST(ParserAttributes, UnquotedValueFailsInStrictMode) {
  P::AttributeMap map;
  map.emplace(ZQName(U(u"old")), U(u"x"));
  EXPECT_FALSE(P::parseAttributes(U(u"a=1"), map));
  EXPECT_TRUE(map.empty());
}

TEST(ParserAttributes, MapIsEmptiedFirst) {
  P::AttributeMap map;
  map.emplace(ZQName(U(u"old")), U(u"x"));
  EXPECT_TRUE(P::parseAttributes(U(u"new='y'"), map));
  EXPECT_EQ(1u, map.size());
  EXPECT_EQ("<none>", entry(map, u"old"));
}

TEST(ParserAttributes, EmptyAndBlankTexts) {
  P::AttributeMap map;
  EXPECT_TRUE(P::parseAttributes(U(u""), map));
  EXPECT_TRUE(map.empty());
  EXPECT_TRUE(P::parseAttributes(U(u" \t\r\n "), map));
  EXPECT_TRUE(map.empty());
}

TEST(ParserAttributes, WhiteSpaceAroundEqualsAndValuesAsTheyStand) {
  P::AttributeMap map;
  EXPECT_TRUE(P::parseAttributes(U(u"\thref = \"a b&amp;\"\r\ntype=\n'text/xsl'  "), map));
  EXPECT_EQ("a b&amp;", entry(map, u"href"));
  EXPECT_EQ("text/xsl", entry(map, u"type"));
  EXPECT_TRUE(P::parseAttributes(U(u"a=\"it's\" b='say \"x\"'"), map));
  EXPECT_EQ("it's", entry(map, u"a"));
  EXPECT_EQ("say \"x\"", entry(map, u"b"));
  // No white space is needed between two pairs.
  EXPECT_TRUE(P::parseAttributes(U(u"a='1'b='2'"), map));
  EXPECT_EQ(2u, map.size());
}

TEST(ParserAttributes, NameCharacters) {
  P::AttributeMap map;
  EXPECT_TRUE(P::parseAttributes(U(u"_a-b.c9\u00B7d\u0301='v'"), map));
  EXPECT_EQ("v", entry(map, u"_a-b.c9\u00B7d\u0301"));
  EXPECT_TRUE(P::parseAttributes(U(u"\U00010000='w'"), map));
  EXPECT_EQ("w", entry(map, u"\U00010000"));
}

TEST(ParserAttributes, StrictErrors) {
  const char16_t* bad[] = {u"=\"1\"",      u"1a='x'",    u"a \"1\"",    u"a=",
                           u"a",           u"a='1",      u"a='1' b",    u"xml:lang='en'",
                           u"a='1' -b=''", u"a='1' b=2", u"a='1',b='2'"};
  for (const char16_t* text : bad) {
    P::AttributeMap map;
    EXPECT_FALSE(P::parseAttributes(U(text), map)) << s8(U(text));
    EXPECT_TRUE(map.empty()) << s8(U(text));
  }
}

TEST(ParserAttributes, TolerantModeSkipsErrors) {
  P::AttributeMap map;
  EXPECT_TRUE(P::parseAttributes(U(u"a=1 b=\"2\""), map, P::ATTRIBUTES_TOLERANT));
  EXPECT_EQ(1u, map.size());
  EXPECT_EQ("2", entry(map, u"b"));

  EXPECT_TRUE(P::parseAttributes(U(u"x='1',y='2' ; z"), map, P::ATTRIBUTES_TOLERANT));
  EXPECT_EQ(2u, map.size());
  EXPECT_EQ("1", entry(map, u"x"));
  EXPECT_EQ("2", entry(map, u"y"));

  EXPECT_TRUE(P::parseAttributes(U(u"a"), map, P::ATTRIBUTES_TOLERANT));
  EXPECT_TRUE(map.empty());
}

TEST(ParserAttributes, TolerantOpenValueRunsToTheEnd) {
  P::AttributeMap map;
  EXPECT_TRUE(P::parseAttributes(U(u"a='1' b=\"two words"), map, P::ATTRIBUTES_TOLERANT));
  EXPECT_EQ("1", entry(map, u"a"));
  EXPECT_EQ("two words", entry(map, u"b"));
}

TEST(ParserAttributes, DuplicateStopsWithTheFirstValue) {
  P::AttributeMap map;
  EXPECT_TRUE(P::parseAttributes(U(u"a='1' a='2' b='3'"), map));
  EXPECT_EQ(1u, map.size());
  EXPECT_EQ("1", entry(map, u"a"));
  EXPECT_EQ("<none>", entry(map, u"b"));
  // What follows the duplicate is not read at all, errors included.
  EXPECT_TRUE(P::parseAttributes(U(u"a='1' a='2' =bad"), map));
  EXPECT_EQ(1u, map.size());
}

TEST(ParserAttributes, DuplicatesAcceptedGoOn) {
  P::AttributeMap map;
  EXPECT_TRUE(P::parseAttributes(U(u"a='1' a='2' b='3'"), map, P::ATTRIBUTES_DUPLICATES_OK));
  EXPECT_EQ(2u, map.size());
  EXPECT_EQ("1", entry(map, u"a"));
  EXPECT_EQ("3", entry(map, u"b"));
  EXPECT_TRUE(P::parseAttributes(U(u"a='1' b a='2' c='3'"), map,
                                 P::ATTRIBUTES_TOLERANT | P::ATTRIBUTES_DUPLICATES_OK));
  EXPECT_EQ("1", entry(map, u"a"));
  EXPECT_EQ("3", entry(map, u"c"));
}

}  // namespace
