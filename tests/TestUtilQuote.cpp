#include <gtest/gtest.h>

#include <string>

#include "TestSupport.h"
#include "common/ZQString.h"
#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {

using QM = ZQUtil::QuoteMode;

QM mode(int m) { return static_cast<QM>(m); }

using zqtest::utf8;

// Parses a NUL-terminated literal and reports how far the reader went.
struct Parsed {
  UnicodeString text;
  long consumed;
};

Parsed parse(const char16_t* s, int m) {
  const char16_t* end = nullptr;
  UnicodeString r = ZQUtil::parseString(s, &end, mode(m));
  return {r, static_cast<long>(end - s)};
}

}  // namespace

// ---- quoteString ----

TEST(ZQUtilQuote, BothQuotesAllowedPicksSingleWhenTextHoldsOnlyDouble) {
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"a\"b", mode(3))), "'a\"b'");
}

TEST(ZQUtilQuote, BothQuotesAllowedPicksDoubleWhenTextHoldsBoth) {
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"a\"b'c", mode(3))), "\"a\"b'c\"");
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"a\"b'c", mode(7))), "\"a\"\"b'c\"");
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"a\"b'c", mode(11))), "\"a\\22 b'c\"");
}

TEST(ZQUtilQuote, BothQuotesAllowedPicksDoubleForPlainAndSingleQuotedText) {
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"ab", mode(3))), "\"ab\"");
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"a'b", mode(3))), "\"a'b\"");
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"", mode(3))), "\"\"");
}

TEST(ZQUtilQuote, CssEscapeAddsSpaceBeforeHexDigitOrWhiteSpace) {
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"a\nb", mode(9))), "\"a\\A b\"");
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"a\nx", mode(9))), "\"a\\Ax\"");
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"a\n\t", mode(9))), "\"a\\A \t\"");
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"a\n", mode(9))), "\"a\\A\"");  // nothing follows
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"\f\r\\", mode(8))), "\\C \\D\\5C");
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"\f9\r \\G", mode(8))), "\\C 9\\D  \\5CG");
}

TEST(ZQUtilQuote, UnicodeEscapeCoversControlsNonAsciiQuotesBackslashAndBacktick) {
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"a`~\x7F\x1F", mode(16))), "a\\u0060~\\u007F\\u001F");
  // A supplementary character is written unit by unit.
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"\U0001F600", mode(17))), "\"\\uD83D\\uDE00\"");
  // The escape of the highest bit wins.
  EXPECT_EQ(utf8(ZQUtil::quoteString(u"\n\"", mode(31))), "'\\u000A\\u0022'");
}

TEST(ZQUtilQuote, BogusTextStaysBogus) {
  EXPECT_TRUE(ZQUtil::quoteString(ZQBogusString::BOGUS_VALUE, mode(7)).isBogus());
}

// Every combination of the five bits on one text that holds all the characters that matter.
TEST(ZQUtilQuote, EveryModeCombinationHasItsExactOutput) {
  const UnicodeString text(u"a\"b'c\\\nd\u00E9");
  const std::string raw = "a\"b'c\\\nd\xC3\xA9";
  const std::string uni = "a\\u0022b\\u0027c\\u005C\\u000Ad\\u00E9";
  const std::string cssNone = "a\"b'c\\5C \\A d\xC3\xA9";
  const std::string cssDouble = "a\\22 b'c\\5C \\A d\xC3\xA9";
  const std::string cssSingle = "a\"b\\27 c\\5C \\A d\xC3\xA9";
  const std::string dblDouble = "a\"\"b'c\\\nd\xC3\xA9";
  const std::string dblSingle = "a\"b''c\\\nd\xC3\xA9";
  const std::string expected[32] = {
      raw,                      // 0
      "\"" + raw + "\"",        // 1
      "'" + raw + "'",          // 2
      "\"" + raw + "\"",        // 3: the text holds both quotes
      raw,                      // 4: no quote character, nothing to double
      "\"" + dblDouble + "\"",  // 5
      "'" + dblSingle + "'",    // 6
      "\"" + dblDouble + "\"",  // 7
      cssNone,                  // 8
      "\"" + cssDouble + "\"",  // 9
      "'" + cssSingle + "'",    // 10
      "\"" + cssDouble + "\"",  // 11
      cssNone,                  // 12
      "\"" + cssDouble + "\"",  // 13
      "'" + cssSingle + "'",    // 14
      "\"" + cssDouble + "\"",  // 15
      uni,                      // 16
      "\"" + uni + "\"",        // 17
      "'" + uni + "'",          // 18
      "\"" + uni + "\"",        // 19
      uni,                      // 20
      "\"" + uni + "\"",        // 21
      "'" + uni + "'",          // 22
      "\"" + uni + "\"",        // 23
      uni,                      // 24
      "\"" + uni + "\"",        // 25
      "'" + uni + "'",          // 26
      "\"" + uni + "\"",        // 27
      uni,                      // 28
      "\"" + uni + "\"",        // 29
      "'" + uni + "'",          // 30
      "\"" + uni + "\"",        // 31
  };
  for (int m = 0; m < 32; ++m)
    EXPECT_EQ(utf8(ZQUtil::quoteString(text, mode(m))), expected[m]) << "mode " << m;
}

TEST(ZQUtilQuote, EveryQuotedModeParsesBackToTheText) {
  const UnicodeString texts[] = {u"a\"b'c\\\nd\u00E9",     u"plain", u"", u"x'y", u"\\22 \f\r\n",
                                 u"12\u2028\U0001F600 end"};
  // Modes that quote and escape everything their reader needs to see: doubling or escapes.
  for (int m = 1; m < 32; ++m) {
    if ((m & 3) == 0 || (m & 28) == 0) continue;
    for (const UnicodeString& t : texts) {
      UnicodeString q = ZQUtil::quoteString(t, mode(m));
      const char16_t* start = q.getTerminatedBuffer();
      const char16_t* end = nullptr;
      UnicodeString back = ZQUtil::parseString(start, &end, mode(m));
      EXPECT_EQ(utf8(back), utf8(t)) << "mode " << m << " quoted " << utf8(q);
      EXPECT_EQ(end, start + q.length()) << "mode " << m;
    }
  }
}

// ---- parseString ----

TEST(ZQUtilParseString, UnclosedQuoteIsBogusAndEndStays) {
  Parsed r = parse(u"  \"abc", 3);
  EXPECT_TRUE(r.text.isBogus());
  EXPECT_EQ(r.consumed, 0);
  EXPECT_TRUE(parse(u"'a''", 6).text.isBogus());  // the doubled quote leaves it open
  EXPECT_TRUE(parse(u"'a\\'", 10).text.isBogus());
}

TEST(ZQUtilParseString, MissingOrDisallowedQuoteIsBogus) {
  EXPECT_TRUE(parse(u"abc", 3).text.isBogus());
  EXPECT_TRUE(parse(u"'abc'", 1).text.isBogus());
  EXPECT_TRUE(parse(u"\"abc\"", 2).text.isBogus());
  EXPECT_EQ(parse(u"\"abc\"", 2).consumed, 0);
  EXPECT_TRUE(parse(u"", 1).text.isBogus());
}

TEST(ZQUtilParseString, SkipsWhiteSpaceAndEndsBehindTheClosingQuote) {
  Parsed r = parse(u" \t\f\r\n'ab' rest", 2);
  EXPECT_EQ(utf8(r.text), "ab");
  EXPECT_EQ(r.consumed, 9);
  r = parse(u"\"\"x", 1);
  EXPECT_FALSE(r.text.isBogus());
  EXPECT_TRUE(r.text.isEmpty());
  EXPECT_EQ(r.consumed, 2);
}

TEST(ZQUtilParseString, TheOtherQuoteIsOrdinaryInside) {
  EXPECT_EQ(utf8(parse(u"\"it's\"", 3).text), "it's");
  EXPECT_EQ(utf8(parse(u"'say \"hi\"'", 3).text), "say \"hi\"");
}

TEST(ZQUtilParseString, DoubledQuoteStandsForOneOnlyWithBit4) {
  Parsed r = parse(u"'a''b'", 6);
  EXPECT_EQ(utf8(r.text), "a'b");
  EXPECT_EQ(r.consumed, 6);
  r = parse(u"'a''b'", 2);
  EXPECT_EQ(utf8(r.text), "a");
  EXPECT_EQ(r.consumed, 3);
}

TEST(ZQUtilParseString, WithoutQuoteBitsReadsFromTheStartToTheEnd) {
  Parsed r = parse(u"  a\"b' c", 0);
  EXPECT_EQ(utf8(r.text), "  a\"b' c");
  EXPECT_EQ(r.consumed, 8);
  r = parse(u" a\\41 b", 8);
  EXPECT_EQ(utf8(r.text), " aAb");
}

TEST(ZQUtilParseString, CssEscapes) {
  EXPECT_EQ(utf8(parse(u"'a\\\nb'", 10).text), "ab");
  EXPECT_EQ(utf8(parse(u"'a\\\fb'", 10).text), "ab");
  EXPECT_EQ(utf8(parse(u"'a\\\r\nb'", 10).text), "ab");
  EXPECT_EQ(utf8(parse(u"'a\\\rb'", 10).text), "ab");
  EXPECT_EQ(utf8(parse(u"'\\41 b'", 10).text), "Ab");    // one space is swallowed
  EXPECT_EQ(utf8(parse(u"'\\41  b'", 10).text), "A b");  // only one
}

TEST(ZQUtilParseString, CssEscapeTakesAtMostSixHexDigits) {
  UnicodeString r = parse(u"'\\0000411'", 10).text;
  ASSERT_EQ(r.length(), 2);
  EXPECT_EQ(r.charAt(0), 0x41);
  EXPECT_EQ(r.charAt(1), u'1');
  r = parse(u"'\\1F600x'", 10).text;
  EXPECT_EQ(r.char32At(0), 0x1F600);
  EXPECT_EQ(r.charAt(2), u'x');
  // Beyond the code space: the replacement character.
  r = parse(u"'\\FFFFFF'", 10).text;
  ASSERT_EQ(r.length(), 1);
  EXPECT_EQ(r.charAt(0), 0xFFFD);
}

TEST(ZQUtilParseString, CssEscapeOfOtherCharacterAndQuote) {
  EXPECT_EQ(utf8(parse(u"'\\g\\\\\\''", 10).text), "g\\'");
  EXPECT_EQ(utf8(parse(u"\"a\\\"b\"", 9).text), "a\"b");
}

TEST(ZQUtilParseString, UnicodeEscapes) {
  EXPECT_EQ(utf8(parse(u"'\\u0041b'", 18).text), "Ab");
  EXPECT_EQ(utf8(parse(u"'\\u  41b'", 18).text), "\xD0\x9B");  // three digits: U+041B
}

TEST(ZQUtilParseString, UnicodeEscapeDetails) {
  // At most four digits; white space before them is skipped.
  UnicodeString r = parse(u"'\\u004142'", 18).text;
  EXPECT_EQ(utf8(r), "A42");
  r = parse(u"'\\u 41z'", 18).text;
  EXPECT_EQ(utf8(r), "Az");
  // Another backslash stays, and so does one without digits behind "\u".
  EXPECT_EQ(utf8(parse(u"'a\\nb'", 18).text), "a\\nb");
  EXPECT_EQ(utf8(parse(u"'\\uz'", 18).text), "\\uz");
  // Without bit 16, "\u" is no escape.
  EXPECT_EQ(utf8(parse(u"'\\u0041'", 2).text), "\\u0041");
}

TEST(ZQUtilParseString, UnicodeEscapesWinOverCssEscapes) {
  // With both escape bits the reader follows the highest, as quoteString does: only "\u"
  // escapes, and every other backslash stays.
  EXPECT_EQ(utf8(parse(u"'\\u0041\\41 \\\nb'", 26).text), "A\\41 \\\nb");
  EXPECT_EQ(utf8(parse(u"\\u0041\\41", 24).text), "A\\41");
  Parsed r = parse(u"'a\\'b'", 26);  // a backslash does not escape the quote either
  EXPECT_EQ(utf8(r.text), "a\\");
  EXPECT_EQ(r.consumed, 4);
  // CSS escapes alone still work.
  EXPECT_EQ(utf8(parse(u"'\\41 \\u0041'", 10).text), "Au0041");
}

TEST(ZQUtilParseString, BackslashIsOrdinaryWithoutEscapeBits) {
  Parsed r = parse(u"'a\\'b'", 2);
  EXPECT_EQ(utf8(r.text), "a\\");
  EXPECT_EQ(r.consumed, 4);
}

TEST(ZQUtilParseString, NullEndPointerIsAllowed) {
  EXPECT_EQ(utf8(ZQUtil::parseString(u"'x'", nullptr, mode(2))), "x");
  EXPECT_TRUE(ZQUtil::parseString(nullptr, nullptr, mode(2)).isBogus());
}

// ---- unquoteString ----

TEST(ZQUtilUnquote, OuterQuotesDecideWhenTextIsLeft) {
  EXPECT_EQ(utf8(ZQUtil::unquoteString(u"'a'b'", mode(2))), "a'b");
  EXPECT_EQ(utf8(ZQUtil::unquoteString(u"  'a'b'  ", mode(2))), "a'b");
}

TEST(ZQUtilUnquote, TextLeftWithDifferentEndsIsBogus) {
  EXPECT_TRUE(ZQUtil::unquoteString(u"'a'b", mode(2)).isBogus());
}

TEST(ZQUtilUnquote, TextLeftWithDoublingOrCssEscapesIsBogus) {
  EXPECT_TRUE(ZQUtil::unquoteString(u"'a'b'", mode(6)).isBogus());
  EXPECT_TRUE(ZQUtil::unquoteString(u"'a'b'", mode(10)).isBogus());
}

TEST(ZQUtilUnquote, WholeStringIsUnescaped) {
  EXPECT_EQ(utf8(ZQUtil::unquoteString(u" \"a\"\"b\" ", mode(7))), "a\"b");
  EXPECT_EQ(utf8(ZQUtil::unquoteString(u"'\\41 '", mode(10))), "A");
}

TEST(ZQUtilUnquote, UnquotedOrOpenTextIsBogus) {
  EXPECT_TRUE(ZQUtil::unquoteString(u"abc", mode(3)).isBogus());
  EXPECT_TRUE(ZQUtil::unquoteString(u"'abc", mode(3)).isBogus());
  EXPECT_TRUE(ZQUtil::unquoteString(ZQBogusString::BOGUS_VALUE, mode(3)).isBogus());
}

TEST(ZQUtilUnquote, WithoutQuoteBitsTheTrimmedTextComesBack) {
  EXPECT_EQ(utf8(ZQUtil::unquoteString(u"  a 'b'  ", mode(0))), "a 'b'");
}

// ---- quoteUri, spaces ----

TEST(ZQUtilQuoteUri, WrapsAndEscapesDoubleQuotes) {
  EXPECT_EQ(utf8(ZQUtil::quoteUri(u"a\"b'c.png")), "url(\"a%22b'c.png\")");
  EXPECT_EQ(utf8(ZQUtil::quoteUri(u"")), "url(\"\")");
}

TEST(ZQUtilSpaces, NormalizeSpaces) {
  EXPECT_EQ(utf8(ZQUtil::normalizeSpaces(u" \t a \r\n b\tc  ")), "a b c");
  EXPECT_EQ(utf8(ZQUtil::normalizeSpaces(u"\n\n")), "");
  EXPECT_EQ(utf8(ZQUtil::normalizeSpaces(u"a\fb")), "a\fb");  // a form feed is no space here
  EXPECT_EQ(utf8(ZQUtil::normalizeSpaces(u"\u00A0a")),
            "\xC2\xA0"
            "a");
}

TEST(ZQUtilSpaces, OmitSpace) {
  EXPECT_EQ(utf8(ZQUtil::omitSpace(u" a\tb\r\nc d\f")), "abcd\f");
  EXPECT_EQ(utf8(ZQUtil::omitSpace(u"")), "");
}
