#include <gtest/gtest.h>

#include "TestSupport.h"

#include <cmath>
#include <string>
#include <vector>

#include "common/ZQColor.h"
#include "common/ZQParser.h"
#include "common/ZQTokenizer.h"
#include "common/ZQValue.h"

using namespace ZQCommonNS;

namespace {

using zqtest::s8;
using T = ZQTokenizer;

// One token as the tokenizer reports it.
struct Tok {
  int type;
  std::string text;
  double number;
  bool operator==(const Tok& o) const {
    return type == o.type && text == o.text && number == o.number;
  }
};

std::ostream& operator<<(std::ostream& os, const Tok& t) {
  return os << "{" << t.type << ", \"" << t.text << "\", " << t.number << "}";
}

// Every token of `text` up to the end, the end included.
std::vector<Tok> tokens(const UnicodeString& text,
                        T::TokenizerType type = T::TOKENIZER_EXPRESSION) {
  T tok(text, type);
  std::vector<Tok> out;
  for (int i = 0; i < 1000; ++i) {
    int t = tok.nextToken();
    EXPECT_EQ(t, tok.getTokenType());
    out.push_back({t, s8(tok.getTokenText()), tok.getNumber()});
    if (t == T::TOKEN_END) break;
  }
  return out;
}

Tok num(double v, const char* unit = "") { return {T::TOKEN_NUMBER, unit, v}; }
Tok name(const char* n) { return {T::TOKEN_NAME, n, 0}; }
Tok str(const char* s) { return {T::TOKEN_STRING, s, 0}; }
Tok chr(char16_t c) { return {static_cast<int>(c), "", 0}; }
const Tok kEnd{T::TOKEN_END, "", 0};

UnicodeString U(const char16_t* s) { return UnicodeString(s); }

// ---- Construction and raw access ----

TEST(Tokenizer, EmptyTextEndsAtOnceAndReadsAsNull) {
  T tok(U(u""));
  EXPECT_EQ(T::TOKEN_NONE, tok.getTokenType());
  EXPECT_EQ(T::TOKEN_END, tok.nextToken());
  EXPECT_EQ(T::TOKEN_END, tok.nextToken());
  T tok2(U(u""));
  EXPECT_TRUE(tok2.nextTokenValue().isNull());
}

TEST(Tokenizer, FreshTokenizerState) {
  T tok(U(u"abc"), T::TOKENIZER_CSS);
  EXPECT_EQ(T::TOKEN_NONE, tok.getTokenType());
  EXPECT_EQ(0.0, tok.getNumber());
  EXPECT_TRUE(tok.getTokenText().isEmpty());
  EXPECT_FALSE(tok.isPushedBack());
  EXPECT_FALSE(tok.hasQuote());
  EXPECT_FALSE(tok.hasDecimalPoint());
  EXPECT_EQ(0, tok.getOffset());
  EXPECT_EQ(T::TOKENIZER_CSS, tok.getTokenizerType());
  EXPECT_EQ(u'a', *tok.getPtr());
}

TEST(Tokenizer, BogusSourceIsEmpty) {
  UnicodeString bogus;
  bogus.setToBogus();
  T tok(bogus);
  EXPECT_EQ(T::TOKEN_END, tok.nextToken());
  EXPECT_EQ(0, tok.getOffset());
}

TEST(Tokenizer, EndEmptiesTextAndNumber) {
  T tok(U(u"12pt"));
  EXPECT_EQ(T::TOKEN_NUMBER, tok.nextToken());
  EXPECT_EQ(12.0, tok.getNumber());
  EXPECT_EQ(T::TOKEN_END, tok.nextToken());
  EXPECT_TRUE(tok.getTokenText().isEmpty());
  EXPECT_EQ(0.0, tok.getNumber());
}

TEST(Tokenizer, EmbeddedNulEndsTheText) {
  UnicodeString text(u"a");
  text.append(char16_t(0)).append(u"b");
  EXPECT_EQ((std::vector<Tok>{name("a"), kEnd}), tokens(text));
}

TEST(Tokenizer, OffsetAndPeekWithSetPtr) {
  T tok(U(u"ab cd ef"));
  tok.nextToken();
  EXPECT_EQ(2, tok.getOffset());
  const char16_t* saved = tok.getPtr();
  EXPECT_EQ(T::TOKEN_NAME, tok.nextToken());
  EXPECT_EQ("cd", s8(tok.getTokenText()));
  EXPECT_EQ(5, tok.getOffset());
  tok.setPtr(saved);
  EXPECT_EQ(2, tok.getOffset());
  EXPECT_EQ(T::TOKEN_NAME, tok.nextToken());
  EXPECT_EQ("cd", s8(tok.getTokenText()));
}

TEST(Tokenizer, CopyKeepsTheSourcesPointers) {
  T tok(U(u"one two three"));
  tok.nextToken();
  T copy(tok);
  EXPECT_EQ(tok.getPtr(), copy.getPtr());
  EXPECT_EQ(tok.getOffset(), copy.getOffset());
  EXPECT_EQ(T::TOKEN_NAME, copy.getTokenType());
  EXPECT_EQ("one", s8(copy.getTokenText()));
  EXPECT_EQ(T::TOKEN_NAME, copy.nextToken());
  EXPECT_EQ("two", s8(copy.getTokenText()));
  // The original has not moved, and a position of the copy is valid in the original.
  EXPECT_EQ(3, tok.getOffset());
  tok.setPtr(copy.getPtr());
  EXPECT_EQ(T::TOKEN_NAME, tok.nextToken());
  EXPECT_EQ("three", s8(tok.getTokenText()));

  T assigned(U(u"x"));
  assigned = tok;
  EXPECT_EQ(tok.getPtr(), assigned.getPtr());
  EXPECT_EQ(T::TOKEN_END, assigned.nextToken());
}

TEST(Tokenizer, MoveCarriesPositionAndState) {
  T tok(U(u"a \"s\" 12pt"));
  tok.nextToken();
  tok.nextToken();
  T moved(std::move(tok));
  EXPECT_EQ(5, moved.getOffset());
  EXPECT_TRUE(moved.hasQuote());
  EXPECT_EQ(T::TOKEN_STRING, moved.getTokenType());
  EXPECT_EQ(T::TOKEN_NUMBER, moved.nextToken());
  EXPECT_EQ("pt", s8(moved.getTokenText()));

  T target(U(u"zz"));
  T source(U(u"p q"));
  source.nextToken();
  target = std::move(source);
  EXPECT_EQ(T::TOKEN_NAME, target.nextToken());
  EXPECT_EQ("q", s8(target.getTokenText()));
  // The source is left as an empty tokenizer that still works.
  EXPECT_EQ(T::TOKEN_END, source.nextToken());  // NOLINT(bugprone-use-after-move)
}

TEST(Tokenizer, MoveOfALongTextKeepsThePointers) {
  UnicodeString text;
  for (int i = 0; i < 50; ++i) text.append(u"word ");
  T tok(text);
  tok.nextToken();
  const char16_t* pos = tok.getPtr();
  T copy(tok);
  T moved(std::move(tok));
  EXPECT_EQ(pos, moved.getPtr());
  EXPECT_EQ(pos, copy.getPtr());
  EXPECT_EQ(4, moved.getOffset());
  EXPECT_EQ(T::TOKEN_NAME, moved.nextToken());
  EXPECT_EQ("word", s8(moved.getTokenText()));
}

TEST(Tokenizer, MovedShortTextOutlivesItsSource) {
  std::vector<T> kept;
  {
    T source(U(u"p q"));
    source.nextToken();
    kept.push_back(std::move(source));
  }
  kept.emplace_back(U(u"r"));  // may move the first one again
  EXPECT_EQ(1, kept[0].getOffset());
  EXPECT_EQ(T::TOKEN_NAME, kept[0].nextToken());
  EXPECT_EQ("q", s8(kept[0].getTokenText()));
  EXPECT_EQ(T::TOKEN_END, kept[0].nextToken());
}

TEST(Tokenizer, SetTokenizerTypeChangesTheRules) {
  T tok(U(u"-zq-a -zq-a"), T::TOKENIZER_EXPRESSION);
  EXPECT_EQ('-', tok.nextToken());
  tok.setPtr(tok.getPtr() + 5);
  tok.setTokenizerType(T::TOKENIZER_CSS);
  EXPECT_EQ(T::TOKENIZER_CSS, tok.getTokenizerType());
  EXPECT_EQ(T::TOKEN_NAME, tok.nextToken());
  EXPECT_EQ("-zq-a", s8(tok.getTokenText()));
}

// ---- Token types ----

TEST(Tokenizer, EveryTokenType) {
  EXPECT_EQ((std::vector<Tok>{num(12, "pt"),
                              name("abc"),
                              str("s t"),
                              {T::TOKEN_COLOR, "", 0x112233},
                              {T::TOKEN_COLOR_ALPHA, "", 0x11223344u},
                              chr(u','),
                              kEnd}),
            tokens(U(u"12pt abc 's t' #123 #1234 ,")));
}

TEST(Tokenizer, IsTokenTypeCharacterAbove32) {
  T tok(U(u"( \f"));
  tok.nextToken();
  EXPECT_EQ('(', tok.getTokenType());
  EXPECT_TRUE(tok.isTokenTypeCharacter());
  // Form feed is not white space here: a character token, but not above 32.
  EXPECT_EQ(12, tok.nextToken());
  EXPECT_FALSE(tok.isTokenTypeCharacter());
  EXPECT_EQ(T::TOKEN_END, tok.nextToken());
  EXPECT_FALSE(tok.isTokenTypeCharacter());
  T none(U(u"x"));
  EXPECT_FALSE(none.isTokenTypeCharacter());
}

TEST(Tokenizer, WhiteSpaceIsTabLfCrSpaceOnly) {
  EXPECT_EQ((std::vector<Tok>{name("a"), name("b"), kEnd}), tokens(U(u"\t\n\r a\t\n\r b \r\n")));
  EXPECT_EQ((std::vector<Tok>{chr(0xA0), name("a"), kEnd}), tokens(U(u"\u00A0a")));
  EXPECT_EQ((std::vector<Tok>{chr(0x0B), name("a"), kEnd}), tokens(U(u"\u000Ba")));
}

TEST(Tokenizer, CharacterTokenIsOneCodeUnit) {
  // A supplementary character that is no name character in this type.
  T tok(U(u"\U0001F600"), T::TOKENIZER_MIME);
  EXPECT_EQ(0xD83D, tok.nextToken());
  EXPECT_EQ(1, tok.getOffset());
  EXPECT_EQ(0xDE00, tok.nextToken());
  EXPECT_EQ(T::TOKEN_END, tok.nextToken());
}

TEST(Tokenizer, CharacterTokenClearsNumber) {
  T tok(U(u"5 ,"));
  tok.nextToken();
  EXPECT_EQ(5.0, tok.getNumber());
  EXPECT_EQ(',', tok.nextToken());
  EXPECT_EQ(0.0, tok.getNumber());
}

// ---- Names ----

TEST(Tokenizer, ExpressionNamesAreNCNames) {
  EXPECT_EQ((std::vector<Tok>{name("a-b.c_1"), chr(':'), name("d"), kEnd}),
            tokens(U(u"a-b.c_1:d")));
  EXPECT_EQ((std::vector<Tok>{name("_x\u00B7y"), kEnd}), tokens(U(u"_x\u00B7y")));
  // A supplementary start character is one code point.
  EXPECT_EQ((std::vector<Tok>{name("\xF0\x90\x80\x80z"), kEnd}), tokens(U(u"\U00010000z")));
}

TEST(Tokenizer, ExpressionHyphenNameIsCharacterFirst) {
  EXPECT_EQ((std::vector<Tok>{chr('-'), name("zq-foo"), kEnd}), tokens(U(u"-zq-foo")));
  EXPECT_EQ((std::vector<Tok>{chr('-'), name("zq-foo"), kEnd}),
            tokens(U(u"-zq-foo"), T::TOKENIZER_EXPRESSION2));
}

TEST(Tokenizer, CssEscapeWithSwallowedBlank) {
  EXPECT_EQ((std::vector<Tok>{name("AB"), kEnd}), tokens(U(u"\\41 B"), T::TOKENIZER_CSS));
}

TEST(Tokenizer, CssVendorPrefixIsAName) {
  EXPECT_EQ((std::vector<Tok>{name("-zq-foo"), kEnd}), tokens(U(u"-zq-foo"), T::TOKENIZER_CSS));
  EXPECT_EQ((std::vector<Tok>{name("-ZQ-foo"), kEnd}), tokens(U(u"-ZQ-foo"), T::TOKENIZER_CSS));
  EXPECT_EQ((std::vector<Tok>{name("-zQ-x"), kEnd}), tokens(U(u"-zQ-x"), T::TOKENIZER_CSS_UNIT));
}

TEST(Tokenizer, CssOtherLeadingHyphenIsCharacter) {
  EXPECT_EQ((std::vector<Tok>{chr('-'), name("foo"), kEnd}), tokens(U(u"-foo"), T::TOKENIZER_CSS));
  EXPECT_EQ((std::vector<Tok>{chr('-'), name("zq"), kEnd}), tokens(U(u"-zq"), T::TOKENIZER_CSS));
}

TEST(Tokenizer, CssEscapes) {
  auto css = [](const char16_t* s) { return tokens(U(s), T::TOKENIZER_CSS); };
  // Hexadecimal: at most six digits, then one white-space character is swallowed.
  EXPECT_EQ((std::vector<Tok>{name("A1"), kEnd}), css(u"\\0000411"));
  EXPECT_EQ((std::vector<Tok>{name("x123"), kEnd}), css(u"x\\31 23"));
  EXPECT_EQ((std::vector<Tok>{name("ab"), kEnd}), css(u"\\61\tb"));
  EXPECT_EQ((std::vector<Tok>{name("ab"), kEnd}), css(u"\\61\fb"));
  EXPECT_EQ((std::vector<Tok>{name("a"), name("b"), kEnd}), css(u"\\61  b"));
  EXPECT_EQ((std::vector<Tok>{name("\xF0\x9F\x98\x80"), kEnd}), css(u"\\1F600"));
  // A newline after the backslash vanishes: LF, FF, CR and CR LF.
  EXPECT_EQ((std::vector<Tok>{name("ab"), kEnd}), css(u"a\\\nb"));
  EXPECT_EQ((std::vector<Tok>{name("ab"), kEnd}), css(u"a\\\fb"));
  EXPECT_EQ((std::vector<Tok>{name("ab"), kEnd}), css(u"a\\\rb"));
  EXPECT_EQ((std::vector<Tok>{name("ab"), kEnd}), css(u"a\\\r\nb"));
  // Any other character stands for itself, a whole code point for a surrogate pair.
  EXPECT_EQ((std::vector<Tok>{name("a b"), kEnd}), css(u"a\\ b"));
  EXPECT_EQ((std::vector<Tok>{name("a(b"), kEnd}), css(u"a\\(b"));
  EXPECT_EQ((std::vector<Tok>{name("\xF0\x9F\x98\x80x"), kEnd}), css(u"\\\U0001F600x"));
  // A backslash at the end ends the name.
  EXPECT_EQ((std::vector<Tok>{name("ab"), kEnd}), css(u"ab\\"));
  EXPECT_EQ((std::vector<Tok>{name(""), kEnd}), css(u"\\"));
  // A name may start with an escape that is no name character.
  EXPECT_EQ((std::vector<Tok>{name("1x"), kEnd}), css(u"\\31 x"));
}

TEST(Tokenizer, ExpressionHasNoEscapes) {
  EXPECT_EQ((std::vector<Tok>{chr('\\'), num(41), name("B"), kEnd}), tokens(U(u"\\41 B")));
}

TEST(Tokenizer, MimeTokens) {
  EXPECT_EQ((std::vector<Tok>{name("text"), chr('/'), name("html"), chr(';'), name("charset"),
                              chr('='), name("utf-8"), kEnd}),
            tokens(U(u"text/html; charset=utf-8"), T::TOKENIZER_MIME));
  // Digits, "#", "%" and "." are token characters, so no number or colour is ever read.
  EXPECT_EQ((std::vector<Tok>{name("12.5%"), name("#fff"), kEnd}),
            tokens(U(u"12.5% #fff"), T::TOKENIZER_MIME));
  EXPECT_EQ((std::vector<Tok>{chr(0xE9), kEnd}), tokens(U(u"\u00E9"), T::TOKENIZER_MIME));
  EXPECT_EQ((std::vector<Tok>{str("q"), kEnd}), tokens(U(u"\"q\""), T::TOKENIZER_MIME));
}

TEST(Tokenizer, WordTokens) {
  EXPECT_EQ((std::vector<Tok>{name("a,b"), name("c"), chr(0xA0), name("d\te"), name("#1("), kEnd}),
            tokens(U(u"a,b c\u00A0d\te #1("), T::TOKENIZER_WORDS));
  EXPECT_EQ((std::vector<Tok>{name("12"), kEnd}), tokens(U(u"12"), T::TOKENIZER_WORDS));
}

// ---- Strings ----

TEST(Tokenizer, StringsByQuoteModeOfTheType) {
  // Types 0, 3 and 4: either quote, a doubled quote stands for one.
  EXPECT_EQ((std::vector<Tok>{str("it's"), kEnd}), tokens(U(u"'it''s'")));
  EXPECT_EQ((std::vector<Tok>{str("a\\"), kEnd}), tokens(U(u"\"a\\\"")));
  EXPECT_EQ((std::vector<Tok>{str("x\"\"y"), kEnd}), tokens(U(u"'x\"\"y'"), T::TOKENIZER_WORDS));
  // Type 5: either quote, no doubling.
  EXPECT_EQ((std::vector<Tok>{str("it"), str("s"), kEnd}),
            tokens(U(u"'it''s'"), T::TOKENIZER_EXPRESSION2));
  // CSS: backslash escapes.
  EXPECT_EQ((std::vector<Tok>{str("a\"bA"), kEnd}), tokens(U(u"\"a\\\"b\\41\""), T::TOKENIZER_CSS));
  EXPECT_EQ((std::vector<Tok>{str("ab"), kEnd}), tokens(U(u"'a\\\nb'"), T::TOKENIZER_CSS_UNIT));
}

TEST(Tokenizer, UnclosedStringIsQuoteCharacterThenName) {
  EXPECT_EQ((std::vector<Tok>{chr('"'), name("abc"), kEnd}), tokens(U(u"\"abc")));
  T tok(U(u"'x"));
  EXPECT_EQ('\'', tok.nextToken());
  EXPECT_EQ(1, tok.getOffset());
  EXPECT_FALSE(tok.hasQuote());
}

TEST(Tokenizer, HasQuoteIsSticky) {
  T tok(U(u"a 'b' c 1"));
  tok.nextToken();
  EXPECT_FALSE(tok.hasQuote());
  EXPECT_EQ(T::TOKEN_STRING, tok.nextToken());
  EXPECT_TRUE(tok.hasQuote());
  EXPECT_EQ(T::TOKEN_NAME, tok.nextToken());
  EXPECT_TRUE(tok.hasQuote());
  EXPECT_EQ(T::TOKEN_NUMBER, tok.nextToken());
  EXPECT_EQ(T::TOKEN_END, tok.nextToken());
  EXPECT_TRUE(tok.hasQuote());
}

// ---- Numbers ----

TEST(Tokenizer, NumberTokens) {
  EXPECT_EQ((std::vector<Tok>{num(12), num(0.5), num(5), num(1.25, "%"), num(3, "PT"), kEnd}),
            tokens(U(u"12 .5 5. 1.25% 3PT")));
  // A "." without a digit after it is a character.
  EXPECT_EQ((std::vector<Tok>{chr('.'), name("x"), kEnd}), tokens(U(u".x")));
  EXPECT_EQ((std::vector<Tok>{num(1.2), num(0.3), kEnd}), tokens(U(u"1.2.3")));
}

TEST(Tokenizer, NumberSignIsNeverPartOfTheToken) {
  EXPECT_EQ((std::vector<Tok>{chr('-'), num(5), chr('+'), num(2), kEnd}), tokens(U(u"-5 +2")));
}

TEST(Tokenizer, HasDecimalPointFollowsTheLastNumber) {
  T tok(U(u"1.5 x 2"));
  tok.nextToken();
  EXPECT_TRUE(tok.hasDecimalPoint());
  tok.nextToken();
  EXPECT_TRUE(tok.hasDecimalPoint());  // only numbers set it
  tok.nextToken();
  EXPECT_FALSE(tok.hasDecimalPoint());
}

TEST(Tokenizer, UnitTextAndHyphen) {
  EXPECT_EQ((std::vector<Tok>{num(1, "em-2px"), kEnd}), tokens(U(u"1em-2px")));
  EXPECT_EQ((std::vector<Tok>{num(1, "em-2px"), kEnd}), tokens(U(u"1em-2px"), T::TOKENIZER_CSS));
  EXPECT_EQ((std::vector<Tok>{num(1, "em"), chr('-'), num(2, "px"), kEnd}),
            tokens(U(u"1em-2px"), T::TOKENIZER_CSS_UNIT));
  // A unit must start with a name start character right behind the number.
  EXPECT_EQ((std::vector<Tok>{num(1), name("pt"), kEnd}), tokens(U(u"1 pt")));
  EXPECT_EQ((std::vector<Tok>{num(1), chr('-'), name("x"), kEnd}), tokens(U(u"1-x")));
}

// ---- Colours ----

TEST(Tokenizer, HexColourShortForms) {
  EXPECT_EQ((std::vector<Tok>{{T::TOKEN_COLOR, "", 0xAABBCC}, kEnd}), tokens(U(u"#abc")));
  EXPECT_EQ((std::vector<Tok>{{T::TOKEN_COLOR_ALPHA, "", double(0xAABBCCDDu)}, kEnd}),
            tokens(U(u"#abcd")));
}

TEST(Tokenizer, HexColourLongForms) {
  EXPECT_EQ((std::vector<Tok>{{T::TOKEN_COLOR, "", 0x12AB9F}, kEnd}), tokens(U(u"#12AB9f")));
  EXPECT_EQ((std::vector<Tok>{{T::TOKEN_COLOR_ALPHA, "", double(0xFF000080u)}, kEnd}),
            tokens(U(u"#ff000080")));
}

TEST(Tokenizer, HexColourOtherLengthsAreHashCharacter) {
  EXPECT_EQ((std::vector<Tok>{chr('#'), name("abcde"), kEnd}), tokens(U(u"#abcde")));
  EXPECT_EQ((std::vector<Tok>{chr('#'), num(12345), kEnd}), tokens(U(u"#12345")));
  EXPECT_EQ((std::vector<Tok>{chr('#'), name("ab"), kEnd}), tokens(U(u"#ab")));
  EXPECT_EQ((std::vector<Tok>{chr('#'), num(123456789), kEnd}), tokens(U(u"#123456789")));
  // The digits end at the first other character; the length counts only them.
  EXPECT_EQ((std::vector<Tok>{{T::TOKEN_COLOR, "", 0xAABBCC}, name("g"), kEnd}),
            tokens(U(u"#abcg")));
}

TEST(Tokenizer, HashAloneIsCharacter) {
  EXPECT_EQ((std::vector<Tok>{chr('#'), kEnd}), tokens(U(u"#")));
  EXPECT_EQ((std::vector<Tok>{chr('#'), name("xyz"), kEnd}), tokens(U(u"#xyz")));
  EXPECT_EQ((std::vector<Tok>{chr('#'), name("abc"), kEnd}), tokens(U(u"# abc")));
}

// ---- nextTokenValue ----

TEST(TokenizerValue, IntegerRealAndUnit) {
  ZQValue v = T(U(u"12")).nextTokenValue();
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(ZQUNIT_NUMBER, v.getUnitType());
  EXPECT_EQ(12, v.getIntegerValue());

  v = T(U(u"12.0")).nextTokenValue();
  EXPECT_TRUE(v.isReal());
  EXPECT_EQ(ZQUNIT_NUMBER, v.getUnitType());
  EXPECT_EQ(12.0f, v.getRealValue(ZQUNIT_NUMBER));

  v = T(U(u"99999999999")).nextTokenValue();
  EXPECT_TRUE(v.isReal());
  EXPECT_EQ(ZQUNIT_NUMBER, v.getUnitType());
  EXPECT_EQ(99999999999.0f, v.getRealValue(ZQUNIT_NUMBER));

  v = T(U(u"12pt")).nextTokenValue();
  EXPECT_TRUE(v.isReal());
  EXPECT_EQ(ZQUNIT_PT, v.getUnitType());
  EXPECT_EQ(12.0f, v.getRealValue(ZQUNIT_PT));
}

TEST(TokenizerValue, ThirtyTwoBitLimits) {
  EXPECT_TRUE(T(U(u"2147483647")).nextTokenValue().isInteger());
  EXPECT_TRUE(T(U(u"2147483648")).nextTokenValue().isReal());
  ZQValue v = T(U(u"2147483648")).nextTokenValue(true);
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(INT32_MIN, v.getIntegerValue());
  EXPECT_TRUE(T(U(u"2147483649")).nextTokenValue(true).isReal());
}

TEST(TokenizerValue, NegateNegatesTheNumberField) {
  T tok(U(u"3.5cm"));
  ZQValue v = tok.nextTokenValue(true);
  EXPECT_EQ(-3.5, tok.getNumber());
  EXPECT_EQ(ZQUNIT_CM, v.getUnitType());
  EXPECT_EQ(-3.5f, v.getRealValue(ZQUNIT_CM));
  // Only numbers are negated.
  T name(U(u"a"));
  EXPECT_TRUE(name.nextTokenValue(true).isName());
}

TEST(TokenizerValue, UnitNameIsReadInLowerCase) {
  T tok(U(u"5PT"));
  ZQValue v = tok.nextTokenValue();
  EXPECT_EQ(ZQUNIT_PT, v.getUnitType());
  EXPECT_EQ(5.0f, v.getRealValue(ZQUNIT_PT));
  EXPECT_EQ("pt", s8(tok.getTokenText()));
}

TEST(TokenizerValue, UnknownUnitIsAFollowingName) {
  T tok(U(u"5foo"));
  ZQValue v = tok.nextTokenValue();
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(5, v.getIntegerValue());
  EXPECT_TRUE(tok.getTokenText().isEmpty());
  EXPECT_EQ(T::TOKEN_NUMBER, tok.getTokenType());
  EXPECT_EQ(1, tok.getOffset());
  ZQValue n = tok.nextTokenValue();
  EXPECT_TRUE(n.isName());
  EXPECT_EQ("foo", s8(n.toString()));
  EXPECT_TRUE(tok.nextTokenValue().isNull());

  // The miss keeps the decimal point rule.
  ZQValue r = T(U(u"5.0Foo")).nextTokenValue();
  EXPECT_TRUE(r.isReal());
  EXPECT_EQ(ZQUNIT_NUMBER, r.getUnitType());
}

TEST(TokenizerValue, HyphenatedUnitByType) {
  // Type 0: the unit text "em-2px" is unknown, so the number stands alone before a name.
  T expr(U(u"1em-2px"));
  ZQValue one = expr.nextTokenValue();
  EXPECT_TRUE(one.isInteger());
  EXPECT_EQ(1, one.getIntegerValue());
  ZQValue rest = expr.nextTokenValue();
  EXPECT_TRUE(rest.isName());
  EXPECT_EQ("em-2px", s8(rest.toString()));
  EXPECT_TRUE(expr.nextTokenValue().isNull());

  // Type 2: the unit ends at the hyphen.
  T css(U(u"1em-2px"), T::TOKENIZER_CSS_UNIT);
  ZQValue em = css.nextTokenValue();
  EXPECT_EQ(ZQUNIT_EM, em.getUnitType());
  EXPECT_EQ(1.0f, em.getRealValue(ZQUNIT_EM));
  EXPECT_EQ('-', css.nextTokenValue().getCharacterValue());
  ZQValue px = css.nextTokenValue();
  EXPECT_EQ(ZQUNIT_PX, px.getUnitType());
  EXPECT_EQ(2.0f, px.getRealValue(ZQUNIT_PX));
  EXPECT_TRUE(css.nextTokenValue().isNull());
}

TEST(TokenizerValue, PercentageIsReal) {
  ZQValue v = T(U(u"50%")).nextTokenValue();
  EXPECT_TRUE(v.isReal());
  EXPECT_EQ(ZQUNIT_PERCENT, v.getUnitType());
  EXPECT_EQ(50.0f, v.getRealValue(ZQUNIT_PERCENT));
}

TEST(TokenizerValue, EveryUnitTextIsRead) {
  int seen = 0;
  for (int u = ZQUNIT_EM; u < 64; ++u) {
    UnicodeString unit = ZQValue::getUnitString(static_cast<ZQUnitType>(u));
    if (unit.isEmpty()) continue;
    ++seen;
    for (const UnicodeString& spelled : {unit, UnicodeString(unit).toUpper()}) {
      ZQValue v = T(UnicodeString(u"3") + spelled).nextTokenValue();
      EXPECT_TRUE(v.isReal()) << s8(spelled);
      EXPECT_EQ(u, v.getUnitType()) << s8(spelled);
      EXPECT_EQ(3.0f, v.getRealValue(static_cast<ZQUnitType>(u))) << s8(spelled);
    }
  }
  EXPECT_EQ(42, seen);
}

TEST(TokenizerValue, VmIsVmin) {
  ZQValue v = T(U(u"7vm")).nextTokenValue();
  EXPECT_EQ(ZQUNIT_VMIN, v.getUnitType());
  EXPECT_EQ(7.0f, v.getRealValue(ZQUNIT_VMIN));
  EXPECT_EQ(ZQUNIT_VMIN, T(U(u"7VMIN")).nextTokenValue().getUnitType());
}

TEST(TokenizerValue, FrequencyUnitsInAnyCase) {
  EXPECT_EQ(ZQUNIT_HZ, T(U(u"50Hz")).nextTokenValue().getUnitType());
  EXPECT_EQ(ZQUNIT_HZ, T(U(u"50hz")).nextTokenValue().getUnitType());
  EXPECT_EQ(ZQUNIT_KHZ, T(U(u"2kHz")).nextTokenValue().getUnitType());
  EXPECT_EQ(ZQUNIT_KHZ, T(U(u"2KHZ")).nextTokenValue().getUnitType());
}

TEST(TokenizerValue, NonAsciiUnitTextMissesAndIsReadAgain) {
  T tok(U(u"2\u00E9m"));
  ZQValue v = tok.nextTokenValue();
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ("\xC3\xA9m", s8(tok.nextTokenValue().toString()));
}

TEST(TokenizerValue, Colours) {
  ZQValue rgb = T(U(u"#abc")).nextTokenValue();
  EXPECT_TRUE(rgb.isColor());
  EXPECT_TRUE(rgb.isInteger());
  EXPECT_EQ(0xAABBCC, rgb.getIntegerValue());
  EXPECT_EQ(ZQUNIT_COLOR, rgb.getUnitType());
  EXPECT_FALSE(rgb.getColorValue().hasAlpha());

  ZQValue rgba = T(U(u"#ff000080")).nextTokenValue();
  EXPECT_TRUE(rgba.isColor());
  ZQColor c = rgba.getColorValue();
  EXPECT_EQ(0xFF0000u, static_cast<unsigned>(c));
  EXPECT_TRUE(c.hasAlpha());
  EXPECT_FLOAT_EQ(128.0f / 255.0f, c.getAlpha());

  ZQColor shortAlpha = T(U(u"#0f0c")).nextTokenValue().getColorValue();
  EXPECT_EQ(0x00FF00u, static_cast<unsigned>(shortAlpha));
  EXPECT_FLOAT_EQ(204.0f / 255.0f, shortAlpha.getAlpha());
}

TEST(TokenizerValue, StringNameAndCharacter) {
  T tok(U(u"'a b' Name ,"));
  ZQValue s = tok.nextTokenValue();
  EXPECT_TRUE(s.isLiteralString());
  EXPECT_EQ("a b", s8(s.toString()));
  ZQValue n = tok.nextTokenValue();
  EXPECT_TRUE(n.isName());
  EXPECT_EQ(ZQUNIT_NAME, n.getUnitType());
  EXPECT_EQ("Name", s8(n.getNameValue().toString()));
  ZQValue c = tok.nextTokenValue();
  EXPECT_TRUE(c.isCharacter());
  EXPECT_EQ(',', c.getCharacterValue());
  EXPECT_TRUE(tok.nextTokenValue().isNull());
}

TEST(TokenizerValue, NoTokenYetPushedBackIsCharacterMinusTwo) {
  T tok(U(u"x"));
  tok.pushBack();
  ZQValue v = tok.nextTokenValue();
  EXPECT_TRUE(v.isCharacter());
  EXPECT_EQ(-2, v.getCharacterValue());
  EXPECT_EQ(0, tok.getOffset());
}

// ---- Push-back ----

TEST(Tokenizer, PushBackGivesTheLastTokenAgain) {
  T tok(U(u"12PT x"));
  EXPECT_EQ(T::TOKEN_NUMBER, tok.nextToken());
  const char16_t* after = tok.getPtr();
  tok.pushBack();
  EXPECT_TRUE(tok.isPushedBack());
  EXPECT_EQ(T::TOKEN_NUMBER, tok.nextToken());
  EXPECT_FALSE(tok.isPushedBack());
  EXPECT_EQ(after, tok.getPtr());
  EXPECT_EQ("PT", s8(tok.getTokenText()));
  EXPECT_EQ(12.0, tok.getNumber());
  EXPECT_EQ(T::TOKEN_NAME, tok.nextToken());
}

TEST(Tokenizer, PushedBackNumberAfterMovedPositionStaysInTheText) {
  T tok(U(u"1.5foo"));
  EXPECT_EQ(T::TOKEN_NUMBER, tok.nextToken());
  tok.pushBack();
  tok.setPtr(tok.getPtr() - tok.getOffset());
  // The unit "foo" misses, and stepping back over it cannot pass the start.
  ZQValue v = tok.nextTokenValueExp();
  EXPECT_TRUE(v.isReal());
  EXPECT_EQ(0, tok.getOffset());
}

// ---- Signs and exponents ----

TEST(TokenizerSigned, SignedNumber) {
  ZQValue v = T(U(u"-5")).nextTokenValueSigned(false);
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(-5, v.getIntegerValue());
}

TEST(TokenizerSigned, SignThenSpaceIsCharacter) {
  ZQValue v = T(U(u"- 5")).nextTokenValueSigned(false);
  EXPECT_TRUE(v.isCharacter());
  EXPECT_EQ('-', v.getCharacterValue());
}

TEST(TokenizerSigned, SignThenLetterIsCharacter) {
  T tok(U(u"-a"));
  ZQValue v = tok.nextTokenValueSigned(false);
  EXPECT_TRUE(v.isCharacter());
  EXPECT_EQ('-', v.getCharacterValue());
  EXPECT_EQ("a", s8(tok.nextTokenValue().toString()));
}

TEST(TokenizerSigned, PlusAndFractions) {
  ZQValue v = T(U(u"  +5")).nextTokenValueSigned(false);
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(5, v.getIntegerValue());
  v = T(U(u"-.5em")).nextTokenValueSigned(false);
  EXPECT_EQ(ZQUNIT_EM, v.getUnitType());
  EXPECT_EQ(-0.5f, v.getRealValue(ZQUNIT_EM));
  v = T(U(u"+.25")).nextTokenValueSigned(false);
  EXPECT_EQ(0.25f, v.getRealValue(ZQUNIT_NUMBER));
  v = T(U(u"-.x")).nextTokenValueSigned(false);
  EXPECT_EQ('-', v.getCharacterValue());
}

TEST(TokenizerSigned, SignedNumberWithUnknownUnit) {
  T tok(U(u"-12foo"));
  ZQValue v = tok.nextTokenValueSigned(false);
  EXPECT_EQ(-12, v.getIntegerValue());
  EXPECT_EQ("foo", s8(tok.nextTokenValue().toString()));
}

TEST(TokenizerSigned, PushedBackSignIsReadAgain) {
  T tok(U(u"-5"));
  EXPECT_EQ('-', tok.nextToken());
  tok.pushBack();
  ZQValue v = tok.nextTokenValueSigned(false);
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(-5, v.getIntegerValue());
  EXPECT_FALSE(tok.isPushedBack());
}

TEST(TokenizerSigned, PushedBackNoTokenIsAlsoReadAgainFromOneUnitBack) {
  // "No token yet" reads as a character value, so it steps back like any other character.
  T tok(U(u"-5"));
  tok.setPtr(tok.getPtr() + 1);
  tok.pushBack();
  ZQValue v = tok.nextTokenValueSigned(false);
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(-5, v.getIntegerValue());
}

TEST(TokenizerSigned, PushedBackValueIsTheResult) {
  T tok(U(u"12 -3"));
  tok.nextToken();
  tok.pushBack();
  EXPECT_EQ(12, tok.nextTokenValueSigned(false).getIntegerValue());
  EXPECT_EQ(-3, tok.nextTokenValueSigned(false).getIntegerValue());
}

TEST(TokenizerSigned, SignInMimeAndWordTypesStaysInTheName) {
  T mime(U(u"-5"), T::TOKENIZER_MIME);
  ZQValue v = mime.nextTokenValueSigned(false);
  EXPECT_TRUE(v.isName());
  EXPECT_EQ("-5", s8(v.toString()));
  T words(U(u"+5"), T::TOKENIZER_WORDS);
  EXPECT_EQ("+5", s8(words.nextTokenValueSigned(false).toString()));
}

TEST(TokenizerSigned, ExponentByDefaultOnlyInCssTypes) {
  T css(U(u"1e3"), T::TOKENIZER_CSS);
  ZQValue v = css.nextTokenValueSigned();
  EXPECT_TRUE(v.isReal());
  EXPECT_EQ(1000.0f, v.getRealValue(ZQUNIT_NUMBER));
  T cssUnit(U(u"1e3"), T::TOKENIZER_CSS_UNIT);
  EXPECT_EQ(1000.0f, cssUnit.nextTokenValueSigned().getRealValue(ZQUNIT_NUMBER));

  T expr(U(u"1e3"));
  v = expr.nextTokenValueSigned();
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(1, v.getIntegerValue());
  EXPECT_EQ("e3", s8(expr.nextTokenValue().toString()));
}

TEST(TokenizerSigned, ExpReadsExponent) {
  ZQValue v = T(U(u"1e3")).nextTokenValueExp();
  EXPECT_TRUE(v.isReal());
  EXPECT_EQ(ZQUNIT_NUMBER, v.getUnitType());
  EXPECT_EQ(1000.0f, v.getRealValue(ZQUNIT_NUMBER));
}

TEST(TokenizerSigned, ExpWithoutDigitsLeavesTheLetter) {
  T tok(U(u"1e"));
  ZQValue v = tok.nextTokenValueExp();
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(1, v.getIntegerValue());
  ZQValue e = tok.nextTokenValue();
  EXPECT_TRUE(e.isName());
  EXPECT_EQ("e", s8(e.toString()));
}

TEST(TokenizerSigned, ExponentCarriesItsUnitAndSign) {
  ZQValue v = T(U(u"2e1px")).nextTokenValueExp();
  EXPECT_EQ(ZQUNIT_PX, v.getUnitType());
  EXPECT_EQ(20.0f, v.getRealValue(ZQUNIT_PX));
  v = T(U(u"-25E-2")).nextTokenValueExp();
  EXPECT_FLOAT_EQ(-0.25f, v.getRealValue(ZQUNIT_NUMBER));
  v = T(U(u"1.5e+2%")).nextTokenValueExp();
  EXPECT_EQ(ZQUNIT_PERCENT, v.getUnitType());
  EXPECT_EQ(150.0f, v.getRealValue(ZQUNIT_PERCENT));
}

TEST(TokenizerSigned, UnitNumberIsNotAffectedByExponent) {
  ZQValue v = T(U(u"5em")).nextTokenValueExp();
  EXPECT_EQ(ZQUNIT_EM, v.getUnitType());
  EXPECT_EQ(5.0f, v.getRealValue(ZQUNIT_EM));
  v = T(U(u"5%e3")).nextTokenValueExp();
  EXPECT_EQ(ZQUNIT_PERCENT, v.getUnitType());
}

TEST(TokenizerSigned, ExponentMustBeANumber) {
  T tok(U(u"1e)"));
  ZQValue v = tok.nextTokenValueExp();
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(ZQUNIT_NUMBER, v.getUnitType());
  EXPECT_EQ(1, tok.getOffset());
  T colour(U(u"1e#abc"));
  EXPECT_EQ(1, colour.nextTokenValueExp().getIntegerValue());
  EXPECT_EQ(1, colour.getOffset());
}

TEST(TokenizerSigned, FailedExponentMovesOnlyThePositionBack) {
  // The string read as a would-be exponent stays the last token, and has-quote stays set.
  T tok(U(u"1.5e'x'"), T::TOKENIZER_CSS);
  ZQValue v = tok.nextTokenValueExp();
  EXPECT_TRUE(v.isReal());
  EXPECT_EQ(1.5f, v.getRealValue(ZQUNIT_NUMBER));
  EXPECT_EQ(3, tok.getOffset());
  EXPECT_EQ(T::TOKEN_STRING, tok.getTokenType());
  EXPECT_EQ("x", s8(tok.getTokenText()));
  EXPECT_EQ(0.0, tok.getNumber());
  EXPECT_TRUE(tok.hasQuote());
  EXPECT_EQ(T::TOKEN_NAME, tok.nextToken());
  EXPECT_EQ("e", s8(tok.getTokenText()));
  EXPECT_EQ(T::TOKEN_STRING, tok.nextToken());

  // At the end of the text the end is the last token; the letter is still to be read.
  T end(U(u"7e"));
  EXPECT_EQ(7, end.nextTokenValueExp().getIntegerValue());
  EXPECT_EQ(T::TOKEN_END, end.getTokenType());
  EXPECT_EQ(1, end.getOffset());

  T paren(U(u"2E)"));
  EXPECT_EQ(2, paren.nextTokenValueExp().getIntegerValue());
  EXPECT_EQ(')', paren.getTokenType());
  EXPECT_EQ(1, paren.getOffset());
}

TEST(TokenizerSigned, DoubleExp) {
  EXPECT_EQ(1234567890.0, T(U(u"123456789e1")).nextTokenDoubleExp());
  EXPECT_EQ(-2.0, T(U(u"-2")).nextTokenDoubleExp());
  EXPECT_DOUBLE_EQ(0.015, T(U(u"1.5e-2")).nextTokenDoubleExp());
  T tok(U(u"7e"));
  EXPECT_EQ(7.0, tok.nextTokenDoubleExp());
  EXPECT_EQ("e", s8(tok.nextTokenValue().toString()));
  // The mantissa is the number field, whatever the token.
  EXPECT_EQ(0.0, T(U(u"abc")).nextTokenDoubleExp());
  EXPECT_EQ(2.5, T(U(u"2.5pt")).nextTokenDoubleExp());
}

// ---- Functions ----

TEST(TokenizerFunc, BareParenthesisIsItsSource) {
  T tok(U(u"(1 2) x"));
  ZQValue v = tok.nextTokenValueFunc();
  EXPECT_TRUE(v.isUnknownString());
  EXPECT_EQ("(1 2)", s8(v.toString()));
  EXPECT_EQ("x", s8(tok.nextTokenValue().toString()));
}

TEST(TokenizerFunc, AtomsAreReturnedAsRead) {
  T tok(U(u" 12pt 1e2 foo (  "));
  ZQValue v = tok.nextTokenValueFunc();
  EXPECT_EQ(ZQUNIT_PT, v.getUnitType());
  v = tok.nextTokenValueFunc();
  EXPECT_EQ(100.0f, v.getRealValue(ZQUNIT_NUMBER));
  // A name with white space before "(" is no function.
  v = tok.nextTokenValueFunc();
  EXPECT_TRUE(v.isName());
  EXPECT_EQ("foo", s8(v.toString()));
  v = tok.nextTokenValueFunc();
  EXPECT_EQ("(  ", s8(v.toString()));
  EXPECT_TRUE(tok.nextTokenValueFunc().isNull());
}

TEST(TokenizerFunc, FormatWithOneArgument) {
  ZQValue v = T(U(u"format(\"woff\")")).nextTokenValueFunc();
  EXPECT_TRUE(v.isString());
  EXPECT_EQ(ZQUNIT_FORMAT, v.getUnitType());
  EXPECT_EQ("woff", s8(v.toString()));
  v = T(U(u"format( 12pt )")).nextTokenValueFunc();
  EXPECT_EQ("12pt", s8(v.toString()));
}

TEST(TokenizerFunc, FormatWithOtherCountsIsTrimmedSource) {
  ZQValue v = T(U(u"format( \"a\" , 'b' )")).nextTokenValueFunc();
  EXPECT_EQ(ZQUNIT_FORMAT, v.getUnitType());
  EXPECT_EQ("\"a\" , 'b'", s8(v.toString()));
  v = T(U(u"format()")).nextTokenValueFunc();
  EXPECT_EQ(ZQUNIT_FORMAT, v.getUnitType());
  EXPECT_EQ("", s8(v.toString()));
}

TEST(TokenizerFunc, Local) {
  ZQValue v = T(U(u"local(Arial  Bold)")).nextTokenValueFunc();
  EXPECT_EQ(ZQUNIT_LOCAL, v.getUnitType());
  EXPECT_EQ("Arial  Bold", s8(v.toString()));
  v = T(U(u"local('Times New')")).nextTokenValueFunc();
  EXPECT_EQ(ZQUNIT_LOCAL, v.getUnitType());
  EXPECT_EQ("Times New", s8(v.toString()));
}

TEST(TokenizerFunc, UrlGoesThroughUnquoteUri) {
  T tok(U(u"url( \"a b.png\" ) next"), T::TOKENIZER_CSS);
  ZQValue v = tok.nextTokenValueFunc();
  EXPECT_TRUE(v.isUriString());
  EXPECT_EQ(s8(ZQUtil::unquoteUri(U(u"url( \"a b.png\" )"))), s8(v.toString()));
  EXPECT_EQ("next", s8(tok.nextTokenValue().toString()));
  ZQValue plain = T(U(u"url(pic.png)")).nextTokenValueFunc();
  EXPECT_TRUE(plain.isUriString());
  EXPECT_EQ("pic.png", s8(plain.toString()));
}

TEST(TokenizerFunc, RgbHandsTheSourceFromTheNameToTheColourParser) {
  T tok(U(u"  rgb(255, 0,0) x"));
  ZQValue v = tok.nextTokenValueFunc();
  ZQValue expected = ZQParser::parseColor(U(u"rgb(255, 0,0)"), false);
  EXPECT_EQ(expected.getValueType(), v.getValueType());
  EXPECT_EQ(expected.getUnitType(), v.getUnitType());
  EXPECT_EQ(s8(expected.toString()), s8(v.toString()));
  EXPECT_EQ("x", s8(tok.nextTokenValue().toString()));
}

TEST(TokenizerFunc, OtherFunctionsAreNameAndSource) {
  T tok(U(u"attr( title ) counter(a, decimal)"));
  ZQValue v = tok.nextTokenValueFunc();
  EXPECT_TRUE(v.isUnknownString());
  EXPECT_EQ("attr( title )", s8(v.toString()));
  EXPECT_EQ("counter(a, decimal)", s8(tok.nextTokenValueFunc().toString()));
  // The name is the one read, escapes resolved; the rest is the source.
  ZQValue esc = T(U(u"\\61 ttr(x)"), T::TOKENIZER_CSS).nextTokenValueFunc();
  EXPECT_EQ("attr(x)", s8(esc.toString()));
  // Names are compared as written.
  ZQValue upper = T(U(u"URL(x)")).nextTokenValueFunc();
  EXPECT_TRUE(upper.isUnknownString());
  EXPECT_EQ("URL(x)", s8(upper.toString()));
}

TEST(TokenizerFunc, AsStringKeepsEveryFunctionAsText) {
  ZQValue v = T(U(u"format(\"a\")")).nextTokenValueFunc(true);
  EXPECT_TRUE(v.isUnknownString());
  EXPECT_EQ("format(\"a\")", s8(v.toString()));
  v = T(U(u"url(a)")).nextTokenValueFunc(true);
  EXPECT_TRUE(v.isUnknownString());
  EXPECT_EQ("url(a)", s8(v.toString()));
  v = T(U(u"(a)")).nextTokenValueFunc(true);
  EXPECT_EQ("(a)", s8(v.toString()));
  v = T(U(u"12")).nextTokenValueFunc(true);
  EXPECT_TRUE(v.isInteger());
}

TEST(TokenizerFunc, NestedFormsAndUnclosedForms) {
  T tok(U(u"f(g(1) (2 3), h()) z"));
  EXPECT_EQ("f(g(1) (2 3), h())", s8(tok.nextTokenValueFunc().toString()));
  EXPECT_EQ("z", s8(tok.nextTokenValue().toString()));
  ZQValue open = T(U(u"f(1 (2")).nextTokenValueFunc();
  EXPECT_EQ("f(1 (2", s8(open.toString()));
  ZQValue fmt = T(U(u"format(a b ")).nextTokenValueFunc();
  EXPECT_EQ(ZQUNIT_FORMAT, fmt.getUnitType());
  EXPECT_EQ("a b", s8(fmt.toString()));
  // A string may hold a parenthesis.
  EXPECT_EQ("f(')')", s8(T(U(u"f(')') y")).nextTokenValueFunc().toString()));
}

TEST(TokenizerFunc, PushedBackParenthesisIsReadAgain) {
  T tok(U(u"(a b)"));
  EXPECT_EQ('(', tok.nextToken());
  tok.pushBack();
  ZQValue v = tok.nextTokenValueFunc();
  EXPECT_EQ("(a b)", s8(v.toString()));
  EXPECT_FALSE(tok.isPushedBack());
}

TEST(TokenizerFunc, DeepNestingEndsWithoutExhaustingTheStack) {
  UnicodeString deep;
  for (int i = 0; i < 20000; ++i) deep.append(u"f(");
  deep.append(u"1");
  for (int i = 0; i < 20000; ++i) deep.append(u")");
  deep.append(u" tail");
  T tok(deep);
  ZQValue v = tok.nextTokenValueFunc();
  EXPECT_TRUE(v.isUnknownString());
  EXPECT_EQ(deep.length() - 5, v.toString().length());
  EXPECT_EQ("tail", s8(tok.nextTokenValue().toString()));

  UnicodeString open;
  for (int i = 0; i < 20000; ++i) open.append(u"(");
  ZQValue o = T(open).nextTokenValueFunc();
  EXPECT_EQ(open.length(), o.toString().length());
}

// ---- Separators ----

TEST(TokenizerSeparator, SkipSeparator) {
  T tok(U(u"a , b c"));
  tok.nextToken();
  EXPECT_TRUE(tok.skipSeparator(','));
  EXPECT_EQ(4, tok.getOffset());
  tok.nextToken();
  EXPECT_FALSE(tok.skipSeparator(','));
  // The white space stays skipped on a miss.
  EXPECT_EQ(6, tok.getOffset());
  tok.nextToken();
  EXPECT_FALSE(tok.skipSeparator(','));
  EXPECT_FALSE(tok.skipSeparator(0));
  EXPECT_EQ(7, tok.getOffset());
}

TEST(TokenizerSeparator, SkipSeparatorAfterPushBackMovesNothing) {
  T tok(U(u"a , b"));
  tok.nextToken();
  tok.pushBack();
  EXPECT_FALSE(tok.skipSeparator(','));
  EXPECT_EQ(1, tok.getOffset());
  EXPECT_TRUE(tok.isPushedBack());
}

TEST(TokenizerSeparator, ScanSeparatorDoesNotMove) {
  T tok(U(u"a  ; b"));
  tok.nextToken();
  EXPECT_TRUE(tok.scanSeparator(';'));
  EXPECT_FALSE(tok.scanSeparator(','));
  EXPECT_EQ(1, tok.getOffset());
  tok.pushBack();
  EXPECT_FALSE(tok.scanSeparator(';'));
  T end(U(u""));
  EXPECT_FALSE(end.scanSeparator(0));
}

TEST(TokenizerSeparator, SeparatedValueWithQuotedSeparator) {
  T tok(U(u"\"a;b\"; c"));
  EXPECT_EQ("a;b", s8(tok.nextSeparatedValue(';', false)));
  EXPECT_EQ(T::TOKEN_STRING, tok.getTokenType());
  EXPECT_EQ("c", s8(tok.nextSeparatedValue(';', false)));
  EXPECT_EQ("", s8(tok.nextSeparatedValue(';', false)));
  EXPECT_EQ(T::TOKEN_END, tok.getTokenType());
}

TEST(TokenizerSeparator, SeparatedValueKeepQuotes) {
  T tok(U(u"\"a;b\"; c"));
  EXPECT_EQ("\"a;b\"", s8(tok.nextSeparatedValue(';', true)));
  EXPECT_EQ("c", s8(tok.nextSeparatedValue(';', true)));
}

TEST(TokenizerSeparator, SeparatedValueMixedParts) {
  T tok(U(u"a \"b\"  c;'d' 'e' ;;f"));
  EXPECT_EQ("a \"b\" c", s8(tok.nextSeparatedValue(';')));
  EXPECT_FALSE(tok.hasQuote());
  EXPECT_EQ("'d' 'e'", s8(tok.nextSeparatedValue(';')));
  EXPECT_TRUE(tok.hasQuote());
  EXPECT_EQ("", s8(tok.nextSeparatedValue(';')));
  EXPECT_EQ("f", s8(tok.nextSeparatedValue(';')));
  EXPECT_EQ(T::TOKEN_STRING, tok.getTokenType());
}

TEST(TokenizerSeparator, SeparatedValueRunKeepsItsInnerText) {
  // An unquoted run goes to the separator, a quote or the end, its white space included.
  T tok(U(u"a  b ;c\td"));
  EXPECT_EQ("a  b ", s8(tok.nextSeparatedValue(';')));
  EXPECT_EQ("c\td", s8(tok.nextSeparatedValue(';')));
}

TEST(TokenizerSeparator, SeparatedValueUnterminated) {
  T tok(U(u"x; \"a;b c"));
  EXPECT_EQ("x", s8(tok.nextSeparatedValue(';')));
  EXPECT_EQ("a;b c", s8(tok.nextSeparatedValue(';')));
  EXPECT_TRUE(tok.hasQuote());
  EXPECT_EQ(T::TOKEN_END, tok.nextToken());
  T keep(U(u"'a;b"));
  EXPECT_EQ("'a;b", s8(keep.nextSeparatedValue(';', true)));
  T mixed(U(u"z 'a;b"));
  EXPECT_EQ("z 'a;b", s8(mixed.nextSeparatedValue(';')));
}

TEST(TokenizerSeparator, SeparatorZeroOrWhiteSpaceEndsEachPart) {
  T zero(U(u"\"a\" b"));
  EXPECT_EQ("a", s8(zero.nextSeparatedValue(0)));
  EXPECT_TRUE(zero.hasQuote());
  EXPECT_EQ("b", s8(zero.nextSeparatedValue(0)));
  EXPECT_FALSE(zero.hasQuote());
  EXPECT_EQ("", s8(zero.nextSeparatedValue(0)));

  T blank(U(u"  one two\tthree  "));
  EXPECT_EQ("one", s8(blank.nextSeparatedValue(' ')));
  EXPECT_EQ("two\tthree", s8(blank.nextSeparatedValue(' ')));
  EXPECT_EQ("", s8(blank.nextSeparatedValue(' ')));
  EXPECT_EQ(T::TOKEN_END, blank.getTokenType());
}

TEST(TokenizerSeparator, SeparatedValueUsesTheTypesQuoteMode) {
  T css(U(u"'a\\27 b';c"), T::TOKENIZER_CSS);
  EXPECT_EQ("a'b", s8(css.nextSeparatedValue(';')));
  T expr(U(u"'a''b';c"));
  EXPECT_EQ("a'b", s8(expr.nextSeparatedValue(';')));
  T expr2(U(u"'a''b';c"), T::TOKENIZER_EXPRESSION2);
  EXPECT_EQ("'a''b'", s8(expr2.nextSeparatedValue(';')));
}

TEST(TokenizerSeparator, SeparatedValuePushedBackReturnsStoredText) {
  T tok(U(u"a;b"));
  EXPECT_EQ("a", s8(tok.nextSeparatedValue(';')));
  tok.pushBack();
  EXPECT_EQ("a", s8(tok.nextSeparatedValue(';')));
  EXPECT_FALSE(tok.isPushedBack());
  EXPECT_EQ("b", s8(tok.nextSeparatedValue(';')));
}

}  // namespace
