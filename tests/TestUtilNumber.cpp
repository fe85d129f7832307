#include <gtest/gtest.h>

#include <climits>
#include <clocale>
#include <cmath>
#include <string>

#include "TestSupport.h"
#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {

using zqtest::utf8;

struct Number {
  double value;
  long consumed;
  bool point;
};

Number number(const char16_t* s) {
  const char16_t* end = nullptr;
  bool point = true;
  double v = ZQUtil::parseNumber(s, &end, &point);
  return {v, static_cast<long>(end - s), point};
}

}  // namespace

// ---- parseNumber ----

TEST(ZQUtilParseNumber, LonePointIsNoNumber) {
  Number n = number(u".");
  EXPECT_EQ(n.value, 0.0);
  EXPECT_EQ(n.consumed, 0);
  EXPECT_FALSE(n.point);
}

TEST(ZQUtilParseNumber, SignedFractionWithoutIntegerPart) {
  Number n = number(u"+.5");
  EXPECT_EQ(n.value, 0.5);
  EXPECT_EQ(n.consumed, 3);
  EXPECT_TRUE(n.point);
  EXPECT_EQ(number(u"-.25").value, -0.25);
}

TEST(ZQUtilParseNumber, ExponentIsNotRead) {
  Number n = number(u"1e5");
  EXPECT_EQ(n.value, 1.0);
  EXPECT_EQ(n.consumed, 1);
  EXPECT_FALSE(n.point);
}

TEST(ZQUtilParseNumber, SkipsTheFourWhiteSpacesButNotFormFeed) {
  Number n = number(u" \t\r\n12.5pt");
  EXPECT_EQ(n.value, 12.5);
  EXPECT_EQ(n.consumed, 8);
  n = number(u"\f1");
  EXPECT_EQ(n.value, 0.0);
  EXPECT_EQ(n.consumed, 0);
}

TEST(ZQUtilParseNumber, TrailingPointIsRead) {
  Number n = number(u"7.x");
  EXPECT_EQ(n.value, 7.0);
  EXPECT_EQ(n.consumed, 2);
  EXPECT_TRUE(n.point);
}

TEST(ZQUtilParseNumber, SignWithoutDigitsIsNoNumber) {
  for (const char16_t* s : {u"-", u"+", u"-.", u" - 1", u"", u"abc", u"+-1"}) {
    Number n = number(s);
    EXPECT_EQ(n.value, 0.0);
    EXPECT_EQ(n.consumed, 0);
  }
}

TEST(ZQUtilParseNumber, IntegerPartOf98CharactersGivesZero) {
  std::u16string digits(97, u'1');
  Number n = number(digits.c_str());
  EXPECT_GT(n.value, 1e96);
  digits.push_back(u'1');
  n = number(digits.c_str());
  EXPECT_EQ(n.value, 0.0);
  EXPECT_EQ(n.consumed, 98);  // the digits are still passed over
  std::u16string signedDigits = u"-" + std::u16string(97, u'2');
  EXPECT_EQ(number(signedDigits.c_str()).value, 0.0);
}

TEST(ZQUtilParseNumber, EitherSignCountsAmongThe98Characters) {
  // A sign and 97 digits fill the 98 characters, whichever the sign.
  const std::u16string digits97(97, u'3');
  Number plus = number((u"+" + digits97).c_str());
  EXPECT_EQ(plus.value, 0.0);
  EXPECT_EQ(plus.consumed, 98);
  EXPECT_EQ(number((u"-" + digits97).c_str()).value, 0.0);
  // One digit fewer is a number, and its fraction no longer fits.
  const std::u16string digits96(96, u'3');
  const double whole = number(digits96.c_str()).value;
  EXPECT_GT(whole, 3e95);
  Number p = number((u"+" + digits96 + u".9").c_str());
  EXPECT_EQ(p.value, whole);
  EXPECT_EQ(p.consumed, 99);
  EXPECT_TRUE(p.point);
  EXPECT_EQ(number((u"-" + digits96 + u".9").c_str()).value, -whole);
}

TEST(ZQUtilParseNumber, LongFractionIsCutButConsumed) {
  std::u16string s = u"1." + std::u16string(200, u'5') + u"x";
  Number n = number(s.c_str());
  EXPECT_NEAR(n.value, 1.5555555555555556, 1e-15);
  EXPECT_EQ(n.consumed, 202);
}

TEST(ZQUtilParseNumber, NullArgumentsAreAllowed) {
  EXPECT_EQ(ZQUtil::parseNumber(u"4.5", nullptr, nullptr), 4.5);
  EXPECT_EQ(ZQUtil::parseNumber(nullptr, nullptr, nullptr), 0.0);
}

// ---- parseDigits, parseHexNum ----

TEST(ZQUtilParseDigits, PointerForm) {
  const char16_t* s = u"0123x";
  const char16_t* end = nullptr;
  EXPECT_EQ(ZQUtil::parseDigits(s, &end), 123);
  EXPECT_EQ(end, s + 4);
  const char16_t* t = u"-5";
  EXPECT_EQ(ZQUtil::parseDigits(t, &end), 0);
  EXPECT_EQ(end, t);
  const char16_t* u = u" 5";
  EXPECT_EQ(ZQUtil::parseDigits(u, &end), 0);  // no white space is skipped
  EXPECT_EQ(end, u);
}

TEST(ZQUtilParseDigits, OverflowIsABadNumber) {
  const char16_t* s = u"99999999999999999999z";
  const char16_t* end = nullptr;
  EXPECT_EQ(ZQUtil::parseDigits(s, &end), 0);
  EXPECT_EQ(end, s + 20);
  EXPECT_EQ(ZQUtil::parseDigits(u"2147483647", nullptr), INT_MAX);
}

TEST(ZQUtilParseDigits, StringForm) {
  UnicodeString s(u"1998-07-21");
  EXPECT_EQ(ZQUtil::parseDigits(s, 0, 4), 1998);
  EXPECT_EQ(ZQUtil::parseDigits(s, 5, 2), 7);
  EXPECT_EQ(ZQUtil::parseDigits(s, 8, 5), 21);   // the count is cut at the end
  EXPECT_EQ(ZQUtil::parseDigits(s, 2, -1), 98);  // stops at the first non-digit
  EXPECT_EQ(ZQUtil::parseDigits(s, 4, 3), 0);
  EXPECT_EQ(ZQUtil::parseDigits(s, 40, 3), 0);
  EXPECT_EQ(ZQUtil::parseDigits(s, -3, 2), 19);
}

TEST(ZQUtilParseHexNum, LimitsAndWhiteSpace) {
  const char16_t* s = u"  1aF3g";
  const char16_t* end = nullptr;
  EXPECT_EQ(ZQUtil::parseHexNum(s, &end, -1), 0x1AF3u);
  EXPECT_EQ(end, s + 6);
  EXPECT_EQ(ZQUtil::parseHexNum(s, &end, 2), 0x1Au);
  EXPECT_EQ(end, s + 4);
  const char16_t* t = u" zz";
  EXPECT_EQ(ZQUtil::parseHexNum(t, &end, -1), 0u);
  EXPECT_EQ(end, t);
  EXPECT_EQ(ZQUtil::parseHexNum(u"0041", nullptr, 0), 0u);
}

TEST(ZQUtilParseHexNum, LongRunsAreConsumedAndSaturate) {
  std::u16string s(150, u'f');
  const char16_t* end = nullptr;
  EXPECT_EQ(ZQUtil::parseHexNum(s.c_str(), &end, -1), 0xFFFFFFFFu);
  EXPECT_EQ(end, s.c_str() + 150);
  EXPECT_EQ(ZQUtil::parseHexNum(u"FFFFFFFF", nullptr, -1), 0xFFFFFFFFu);
}

TEST(ZQUtilParseHexNum, ValuesBeyond32BitsSaturate) {
  const char16_t* s = u"123456789 ";
  const char16_t* end = nullptr;
  EXPECT_EQ(ZQUtil::parseHexNum(s, &end, -1), 0xFFFFFFFFu);
  EXPECT_EQ(end, s + 9);
  EXPECT_EQ(ZQUtil::parseHexNum(u"100000000", nullptr, -1), 0xFFFFFFFFu);
  EXPECT_EQ(ZQUtil::parseHexNum(u"FFFFFFFFFFFFFFFF0", nullptr, -1), 0xFFFFFFFFu);
  // Leading zeros do not make a value large.
  EXPECT_EQ(ZQUtil::parseHexNum(u"0000000000FF", nullptr, -1), 0xFFu);
  EXPECT_EQ(ZQUtil::parseHexNum(u"123456789", nullptr, 8), 0x12345678u);
}

// ---- printing ----

TEST(ZQUtilToString, Integers) {
  EXPECT_EQ(utf8(ZQUtil::toString(0)), "0");
  EXPECT_EQ(utf8(ZQUtil::toString(-42)), "-42");
  EXPECT_EQ(utf8(ZQUtil::toString(INT_MIN)), "-2147483648");
  EXPECT_EQ(utf8(ZQUtil::toString(LLONG_MIN)), "-9223372036854775808");
  EXPECT_EQ(utf8(ZQUtil::toString(1234567890123LL)), "1234567890123");
}

TEST(ZQUtilToString, DoubleUsesPercentG) {
  EXPECT_EQ(utf8(ZQUtil::toString(1.5)), "1.5");
  EXPECT_EQ(utf8(ZQUtil::toString(100.0)), "100");
  EXPECT_EQ(utf8(ZQUtil::toString(0.1 + 0.2)), "0.3");
  EXPECT_EQ(utf8(ZQUtil::toString(1234567.0)), "1.23457e+06");
  EXPECT_EQ(utf8(ZQUtil::toString(0.0001)), "0.0001");
  EXPECT_EQ(utf8(ZQUtil::toString(0.00001)), "1e-05");
  EXPECT_EQ(utf8(ZQUtil::toString(-2.25)), "-2.25");
  EXPECT_EQ(utf8(ZQUtil::toString(ZQUtil::getNaN())).find("nan") != std::string::npos, true);
}

TEST(ZQUtilToString, DoubleSetsTheNumericLocaleToC) {
  const char* before = std::setlocale(LC_NUMERIC, nullptr);
  std::string saved = before ? before : "C";
  std::setlocale(LC_NUMERIC, "C.UTF-8");  // not "C" by name, if the system has it
  EXPECT_EQ(utf8(ZQUtil::toString(2.5)), "2.5");
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
  std::setlocale(LC_NUMERIC, saved.c_str());
}

TEST(ZQUtilSetLocaleC, LeavesTheNumericCategoryAtC) {
  const char* before = std::setlocale(LC_NUMERIC, nullptr);
  std::string saved = before ? before : "C";
  ZQUtil::setLocaleC();
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
  ZQUtil::setLocaleC();  // a second call finds it so and changes nothing
  EXPECT_STREQ(std::setlocale(LC_NUMERIC, nullptr), "C");
  std::setlocale(LC_NUMERIC, saved.c_str());
}

TEST(ZQUtilToHexString, UpperCaseAndPadded) {
  EXPECT_EQ(utf8(ZQUtil::toHexString(0xABC, 6)), "000ABC");
  EXPECT_EQ(utf8(ZQUtil::toHexString(0xABCDEF, 2)), "ABCDEF");  // never cut
  EXPECT_EQ(utf8(ZQUtil::toHexString(0, 0)), "0");
  EXPECT_EQ(utf8(ZQUtil::toHexString(-1, 4)), "FFFFFFFF");
  EXPECT_EQ(utf8(ZQUtil::toHexString(-1LL, 4)), "FFFFFFFFFFFFFFFF");
  EXPECT_EQ(utf8(ZQUtil::toHexString(0x1234567890LL, 12)), "001234567890");
  EXPECT_EQ(utf8(ZQUtil::toHexString(255, -3)), "FF");
}

// ---- rounding, NaN ----

TEST(ZQUtilRound, HalvesGoAwayFromZero) {
  EXPECT_EQ(ZQUtil::roundToInteger(-0.5), -1);
  EXPECT_EQ(ZQUtil::roundToInteger(0.5), 1);
  EXPECT_EQ(ZQUtil::roundToInteger(2.5), 3);
  EXPECT_EQ(ZQUtil::roundToInteger(-2.5), -3);
  EXPECT_EQ(ZQUtil::roundToInteger(2.4999), 2);
  EXPECT_EQ(ZQUtil::roundToInteger(-0.4), 0);
  EXPECT_EQ(ZQUtil::roundToInteger(-0.5f), -1);
  EXPECT_EQ(ZQUtil::roundToInteger(1.5f), 2);
  EXPECT_EQ(ZQUtil::roundToInteger(-1.49f), -1);
}

TEST(ZQUtilRound, NaNAndOutOfRangeAreNeutral) {
  EXPECT_EQ(ZQUtil::roundToInteger(ZQUtil::getNaN()), 0);
  EXPECT_EQ(ZQUtil::roundToInteger(ZQUtil::getNaNf()), 0);
  EXPECT_EQ(ZQUtil::roundToInteger(1e300), INT_MAX);
  EXPECT_EQ(ZQUtil::roundToInteger(-1e300), INT_MIN);
  EXPECT_EQ(ZQUtil::roundToInteger(HUGE_VALF), INT_MAX);
  EXPECT_EQ(ZQUtil::roundToInteger(-HUGE_VALF), INT_MIN);
  EXPECT_EQ(ZQUtil::roundToInteger(2147483646.6), INT_MAX);
  EXPECT_EQ(ZQUtil::roundToInteger(-2147483648.4), INT_MIN);
}

TEST(ZQUtilNaN, QuietNaNs) {
  double d = ZQUtil::getNaN();
  float f = ZQUtil::getNaNf();
  EXPECT_TRUE(std::isnan(d));
  EXPECT_TRUE(std::isnan(f));
  EXPECT_TRUE(ZQUtil::isNaN(d));
  EXPECT_TRUE(ZQUtil::isNaN(f));
  EXPECT_FALSE(ZQUtil::isNaN(0.0));
  EXPECT_FALSE(ZQUtil::isNaN(HUGE_VAL));
  EXPECT_FALSE(ZQUtil::isNaN(1.0f));
  EXPECT_NE(d, d);
}
