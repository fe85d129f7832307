#include <gtest/gtest.h>

#include <climits>
#include <initializer_list>
#include <string>

#include "TestSupport.h"
#include "common/ZQUtil.h"
#include "util/ZQFormatNumberInternal.h"

using namespace ZQCommonNS;

namespace {

using zqtest::utf8;

// The number under `format`, as UTF-8 so failures print readably.
std::string F(long long n, const UnicodeString& format, const UnicodeString& sep = u"",
              int size = 0) {
  return utf8(util::formatNumberWith(n, format, sep, size, nullptr, nullptr));
}

// UTF-8 of a list of code points.
std::string cps(std::initializer_list<UChar32> list) {
  UnicodeString s;
  for (UChar32 c : list) s.append(c);
  return utf8(s);
}

// A format of one code point.
UnicodeString one(UChar32 c) { return UnicodeString(c); }

// Decimal text, for the ranges' just-outside checks.
std::string dec(long long n) { return std::to_string(n); }

}  // namespace

// ---- The told edge cases ----

TEST(FormatNumberEdge, EmptyAndOneArePlainDecimalWithGrouping) {
  EXPECT_EQ(F(1234567, u"", u",", 3), "1,234,567");
  EXPECT_EQ(F(1234567, u"1", u",", 3), "1,234,567");
  EXPECT_EQ(F(1234567, u""), "1234567");
  EXPECT_EQ(F(1234567, u"1"), "1234567");
}

TEST(FormatNumberEdge, PrefixAndSuffixStayAroundTheToken) {
  EXPECT_EQ(F(5, u"(1)"), "(5)");
  EXPECT_EQ(F(5, u"1."), "5.");
  EXPECT_EQ(F(5, u"a)"), "e)");
}

TEST(FormatNumberEdge, ZeroPaddedWidthAndGrouping) {
  EXPECT_EQ(F(5, u"001"), "005");
  EXPECT_EQ(F(1234, u"001", u",", 3), "1,234");
}

TEST(FormatNumberEdge, LettersCarryAfterZ) {
  EXPECT_EQ(F(26, u"a"), "z");
  EXPECT_EQ(F(27, u"a"), "aa");
}

TEST(FormatNumberEdge, LowerRomanEndsAt3999) {
  EXPECT_EQ(F(3999, u"i"), "mmmcmxcix");
  EXPECT_EQ(F(4000, u"i"), "4000");
}

TEST(FormatNumberEdge, UpperRomanHasFiveThousand) { EXPECT_EQ(F(4000, u"I"), cps({'M', 0x2181})); }

TEST(FormatNumberEdge, RomanNumeralFormsUseTheirSingleCharacters) {
  EXPECT_EQ(F(12, one(0x2160)), cps({0x216B}));
  EXPECT_EQ(F(13, one(0x2160)), cps({0x2169, 0x2162}));
}

TEST(FormatNumberEdge, HiraganaCarriesAfter46) {
  EXPECT_EQ(F(47, one(0x3042)), cps({0x3042, 0x3042}));
}

TEST(FormatNumberEdge, SexagenaryCycle) {
  const UnicodeString token = UnicodeString(u"\u7532\u5B50");
  EXPECT_EQ(F(1, token), cps({0x7532, 0x5B50}));
  EXPECT_EQ(F(2, token), cps({0x4E59, 0x4E11}));
  EXPECT_EQ(F(61, token), "61");
}

TEST(FormatNumberEdge, HebrewSpecialsAndThousands) {
  EXPECT_EQ(F(15, one(0x05D0)), cps({0x05D8, 0x05D5}));
  EXPECT_EQ(F(1000, one(0x05D0)), "אלף");
  EXPECT_EQ(F(2000, one(0x05D0)), "אלפיים");
  EXPECT_EQ(F(5000, one(0x05D0)), cps({0x05D4}) + " אלפים");
}

TEST(FormatNumberEdge, FallbackReadingOfSymbols) {
  EXPECT_EQ(F(3, u"*"), "3");
  EXPECT_EQ(F(3, u"**"), "***");
  EXPECT_EQ(F(3, u"*+"), "**");
  EXPECT_EQ(F(3, u"ab"), "aa");
}

TEST(FormatNumberEdge, RepeatedLetterInTokenIsDecimal) { EXPECT_EQ(F(3, u"aba"), "3"); }

TEST(FormatNumberEdge, NegativeNumbers) {
  EXPECT_EQ(F(-5, u"a"), "-5");
  EXPECT_EQ(F(-5, u"1"), "-5");
  // The sign goes through the digit replacement; for ASCII digits it comes out as itself.
  EXPECT_EQ(F(-5, u"01"), "-5");
}

TEST(FormatNumberEdge, CircledDigitsFromZeroToTwenty) {
  EXPECT_EQ(F(0, one(0x2460)), cps({0x24EA}));
  EXPECT_EQ(F(21, one(0x2460)), "21");
}
