#include <gtest/gtest.h>
#include <unicode/normalizer2.h>
#include <unicode/numsys.h>
#include <unicode/rbnf.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <climits>
#include <future>
#include <initializer_list>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "TestSupport.h"
#include "common/ZQLock.h"
#include "common/ZQUtil.h"
#include "util/ZQCounterStyleInternal.h"
#include "util/ZQFormatNumberInternal.h"

using namespace ZQCommonNS;

namespace {

using zqtest::utf8;

// The number under `format` without a language, as UTF-8 so failures print readably.
std::string F(long long n, const UnicodeString& format, const UnicodeString& sep = u"",
              int size = 0) {
  return utf8(ZQUtil::formatNumber(n, format, sep, size, ZQLang(), ZQN_auto));
}

// The number under `format` in the language `tag`.
std::string L(long long n, const UnicodeString& format, const char* tag) {
  return utf8(ZQUtil::formatNumber(n, format, ZQLang(tag)));
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

TEST(FormatNumberEdge, LaterTokensStayInTheSuffix) {
  EXPECT_EQ(F(5, u"1.a"), "5.a");
  EXPECT_EQ(F(4, u"i-1"), "iv-1");
  EXPECT_EQ(F(5, u"#01/1"), "#05/1");
  EXPECT_EQ(F(3, u"[A] (i)"), "[C] (i)");
}

TEST(FormatNumberEdge, ZeroPaddedWidthAndGrouping) {
  EXPECT_EQ(F(5, u"001"), "005");
  EXPECT_EQ(F(1234, u"001", u",", 3), "1,234");
}

TEST(FormatNumberEdge, LettersCarryAfterZ) {
  EXPECT_EQ(F(26, u"a"), "z");
  EXPECT_EQ(F(27, u"a"), "aa");
}

TEST(FormatNumberEdge, UpperLetterInRussianIsCyrillic) {
  EXPECT_EQ(L(1, u"A", "ru"), cps({0x0410}));
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

// ---- Digit-one characters: the token's last unit is digit one of its script ----

namespace {
constexpr UChar32 kDigitOnes[] = {0x0031, 0x0661, 0x06F1, 0x0967, 0x09E7, 0x0A67, 0x0AE7,
                                  0x0B67, 0x0C67, 0x0CE7, 0x0D67, 0x0E51, 0x0ED1, 0x0F21,
                                  0x1041, 0x17E1, 0x1811, 0x2081, 0xFF11};

// The digits of `n` written from `zero` on.
std::string digitsFrom(UChar32 zero, const char* ascii) {
  UnicodeString s;
  for (const char* p = ascii; *p; ++p) s.append(static_cast<UChar32>(zero + (*p - '0')));
  return utf8(s);
}
}  // namespace

TEST(FormatNumberDigits, EachDigitOneAloneWritesAllDigitsOfItsScript) {
  for (UChar32 d1 : kDigitOnes) {
    SCOPED_TRACE(d1);
    EXPECT_EQ(F(1234567890, one(d1)), digitsFrom(d1 - 1, "1234567890"));
  }
}

TEST(FormatNumberDigits, EachDigitOneAfterItsZeroPadsToTheTokenWidth) {
  for (UChar32 d1 : kDigitOnes) {
    SCOPED_TRACE(d1);
    UnicodeString token;
    token.append(d1 - 1).append(d1 - 1).append(d1);
    EXPECT_EQ(F(7, token), digitsFrom(d1 - 1, "007"));
    EXPECT_EQ(F(12345, token), digitsFrom(d1 - 1, "12345"));
  }
}

TEST(FormatNumberDigits, DigitOneAfterAnotherCharacterIsNoDigitToken) {
  // "21" is no padded token: the fallback reads it as the alphabet "2", "1".
  EXPECT_EQ(F(3, u"21"), "22");
  EXPECT_EQ(F(3, u"x1"), "xx");
}

TEST(FormatNumberDigits, ZeroOfAnotherScriptIsNoPadding) {
  // U+0660 is not the unit before U+06F1, so the token falls to the alphabet reading.
  UnicodeString token;
  token.append(UChar32{0x0660}).append(UChar32{0x06F1});
  EXPECT_EQ(F(3, token), cps({0x0660, 0x0660}));
}

TEST(FormatNumberDigits, OnlyFirstAndLastUnitsAreLookedAt) {
  EXPECT_EQ(F(5, u"0x1"), "005");
  EXPECT_EQ(F(5, u"(0a1)"), "(005)");
}

TEST(FormatNumberDigits, TamilOneIsNotADigitOne) {
  // U+0BE7 alone means Tamil numerals; after U+0BE6 it is an alphabet of two.
  EXPECT_EQ(F(10, one(0x0BE7)), cps({0x0BE7, 0x0BF0}));
  UnicodeString token;
  token.append(UChar32{0x0BE6}).append(UChar32{0x0BE7});
  EXPECT_EQ(F(3, token), cps({0x0BE6, 0x0BE6}));
}

TEST(FormatNumberDigits, PaddedDigitsAreGrouped) {
  EXPECT_EQ(F(5, u"0001", u",", 3), "0,005");
  EXPECT_EQ(F(1234567, one(0x0661), u"\u066C", 3), digitsFrom(0x0660, "1") + "\u066C" +
                                                       digitsFrom(0x0660, "234") + "\u066C" +
                                                       digitsFrom(0x0660, "567"));
}

TEST(FormatNumberDigits, WidthIsCutToThePrintBuffer) {
  UnicodeString token(1500, u'0', 1499);
  token.append(u'1');
  const UnicodeString r = ZQUtil::formatNumber(5, token, ZQLang());
  EXPECT_EQ(r.length(), 999);
  EXPECT_EQ(r.charAt(998), u'5');
  EXPECT_EQ(r.charAt(0), u'0');
  UnicodeString hangul(1200, UChar32{0xC601}, 1199);
  hangul.append(UChar32{0xC77C});
  const UnicodeString k = ZQUtil::formatNumber(-5, hangul, ZQLang());
  EXPECT_EQ(k.length(), 999);
  EXPECT_EQ(k.charAt(0), u'-');
  EXPECT_EQ(k.charAt(1), 0xC601);
  EXPECT_EQ(k.charAt(998), 0xC624);
}

TEST(FormatNumberDigits, SignOfANegativeNumberIsMappedLikeADigit) {
  // '-' is three below '0': it lands four units below the script's digit one.
  UnicodeString token;
  token.append(UChar32{0x0660}).append(UChar32{0x0661});
  EXPECT_EQ(F(-5, token), cps({0x0661 - 4, 0x0665}));
  EXPECT_EQ(F(-5, u"001"), "-05");
}

// ---- The three digit rows ----

TEST(FormatNumberDigitRows, KanjiDigits) {
  EXPECT_EQ(F(2010, one(0x4E00)), cps({0x4E8C, 0x3007, 0x4E00, 0x3007}));
  // U+3007 is a letter number, not a token character: it stays in the prefix.
  EXPECT_EQ(F(5, u"\u3007\u3007\u4E00"), cps({0x3007, 0x3007, 0x4E94}));
  EXPECT_EQ(F(15, u"\u3007\u4E00"), cps({0x3007, 0x4E00, 0x4E94}));
  EXPECT_EQ(F(1234, one(0x4E00), u",", 3), cps({0x4E00, ',', 0x4E8C, 0x4E09, 0x56DB}));
}

TEST(FormatNumberDigitRows, HangulDigits) {
  EXPECT_EQ(F(1234567890, one(0xC77C)),
            cps({0xC77C, 0xC774, 0xC0BC, 0xC0AC, 0xC624, 0xC721, 0xCE60, 0xD314, 0xAD6C, 0xC601}));
  EXPECT_EQ(F(7, u"\uC601\uC77C"), cps({0xC601, 0xCE60}));
}

TEST(FormatNumberDigitRows, SuperscriptDigits) {
  EXPECT_EQ(F(1234567890, one(0x00B9)),
            cps({0x00B9, 0x00B2, 0x00B3, 0x2074, 0x2075, 0x2076, 0x2077, 0x2078, 0x2079, 0x2070}));
  EXPECT_EQ(F(3, u"\u2070\u00B9"), cps({0x2070, 0x00B3}));
}

TEST(FormatNumberDigitRows, FirstMustBeTheRowZero) {
  // Not a row token: read as the alphabet "x", U+4E00.
  EXPECT_EQ(F(3, u"x\u4E00"), "xx");
}

TEST(FormatNumberDigitRows, SignIsKept) {
  EXPECT_EQ(F(-12, u"\uC601\uC601\uC77C"), cps({'-', 0xC77C, 0xC774}));
  EXPECT_EQ(F(-12, one(0x4E00)), cps({'-', 0x4E00, 0x4E8C}));
}

// ---- One-character tokens: each row at its range ends and just outside ----

namespace {
struct RowCase {
  UChar32 first;
  long long n;
  std::string expected;
};

void checkRows(const std::initializer_list<RowCase>& cases) {
  for (const RowCase& c : cases) {
    SCOPED_TRACE(testing::Message() << "U+" << std::hex << c.first << std::dec << " n=" << c.n);
    EXPECT_EQ(F(c.n, one(c.first)), c.expected);
    // Prefix and suffix stay around every row's result.
    UnicodeString wrapped(u"[");
    wrapped.append(c.first).append(u"]");
    EXPECT_EQ(F(c.n, wrapped), "[" + c.expected + "]");
  }
}
}  // namespace

TEST(FormatNumberRows, LatinLetters) {
  checkRows({{'A', 1, "A"},
             {'A', 26, "Z"},
             {'A', 27, "AA"},
             {'A', 702, "ZZ"},
             {'A', 703, "AAA"},
             {'A', 0, "0"},
             {'A', -1, "-1"},
             {'a', 1, "a"},
             {'a', 0, "0"},
             {0xFF21, 1, cps({0xFF21})},
             {0xFF21, 26, cps({0xFF3A})},
             {0xFF21, 27, cps({0xFF21, 0xFF21})},
             {0xFF21, 0, "0"},
             {0xFF41, 1, cps({0xFF41})},
             {0xFF41, 28, cps({0xFF41, 0xFF42})},
             {0xFF41, 0, "0"}});
}

TEST(FormatNumberRows, LatinLettersTakeTheLow16Bits) {
  checkRows({{'a', 65536 + 27, "aa"},
             {'A', 65535, "CRXO"},
             {'A', (1LL << 40) + 1, "A"},
             {0xFF41, 65536 + 2, cps({0xFF42})}});
  // The low bits are 0: no letter can stand for that, so the number is decimal.
  EXPECT_EQ(F(65536, u"a"), "65536");
}

TEST(FormatNumberRows, RomanUpper) {
  checkRows({{'I', 1, "I"},
             {'I', 39999, cps({0x2182, 0x2182, 0x2182, 'M', 0x2182, 'C', 'M', 'X', 'C', 'I', 'X'})},
             {'I', 40000, "40000"},
             {'I', 0, "0"},
             {'I', -1, "-1"}});
}

TEST(FormatNumberRows, RomanLower) {
  checkRows({{'i', 1, "i"}, {'i', 3999, "mmmcmxcix"}, {'i', 4000, "4000"}, {'i', 0, "0"}});
}

TEST(FormatNumberRows, FullWidthRoman) {
  checkRows({{0xFF29, 1, cps({0xFF29})},
             {0xFF29, 39999,
              cps({0x2182, 0x2182, 0x2182, 0xFF2D, 0x2182, 0xFF23, 0xFF2D, 0xFF38, 0xFF23, 0xFF29,
                   0xFF38})},
             {0xFF29, 40000, "40000"},
             {0xFF29, 0, "0"},
             {0xFF49, 1, cps({0xFF49})},
             {0xFF49, 3999,
              cps({0xFF4D, 0xFF4D, 0xFF4D, 0xFF43, 0xFF4D, 0xFF58, 0xFF43, 0xFF49, 0xFF58})},
             {0xFF49, 4000, "4000"},
             {0xFF49, 0, "0"},
             {0xFF49, 1666, cps({0xFF4D, 0xFF44, 0xFF43, 0xFF4C, 0xFF58, 0xFF56, 0xFF49})}});
}

TEST(FormatNumberRows, RomanNumeralCharacters) {
  checkRows(
      {{0x2160, 1, cps({0x2160})},
       {0x2160, 39999,
        cps({0x2182, 0x2182, 0x2182, 0x216F, 0x2182, 0x216D, 0x216F, 0x2169, 0x216D, 0x2168})},
       {0x2160, 40000, "40000"},
       {0x2160, 0, "0"},
       {0x2170, 1, cps({0x2170})},
       {0x2170, 12, cps({0x217B})},
       {0x2170, 3999, cps({0x217F, 0x217F, 0x217F, 0x217D, 0x217F, 0x2179, 0x217D, 0x2178})},
       {0x2170, 4000, "4000"},
       {0x2170, 0, "0"}});
}

TEST(FormatNumberRows, DanishLetters) {
  checkRows({{0x00C5, 1, "A"},
             {0x00C5, 27, cps({0x00C6})},
             {0x00C5, 29, cps({0x00C5})},
             {0x00C5, 30, "AA"},
             {0x00C5, 0, "0"},
             {0x00E5, 28, cps({0x00F8})},
             {0x00E5, 29, cps({0x00E5})},
             {0x00E5, 30, "aa"},
             {0x00E5, 0, "0"}});
}

TEST(FormatNumberRows, GreekAndCyrillicDefaults) {
  checkRows({{0x0391, 1, cps({0x0391})},
             {0x0391, 17, cps({0x03A1})},
             {0x0391, 18, cps({0x03A3})},
             {0x0391, 24, cps({0x03A9})},
             {0x0391, 25, cps({0x0391, 0x0391})},
             {0x0391, 0, "0"},
             {0x03B1, 18, cps({0x03C3})},
             {0x03B1, 24, cps({0x03C9})},
             {0x03B1, 25, cps({0x03B1, 0x03B1})},
             {0x03B1, 0, "0"},
             {0x0410, 1, cps({0x0410})},
             {0x0410, 9, cps({0x0418})},
             {0x0410, 10, cps({0x041A})},
             {0x0410, 29, cps({0x042F})},
             {0x0410, 30, cps({0x0410, 0x0410})},
             {0x0410, 0, "0"},
             {0x0430, 29, cps({0x044F})},
             {0x0430, 30, cps({0x0430, 0x0430})},
             {0x0430, -2, "-2"}});
}

TEST(FormatNumberRows, Armenian) {
  checkRows({{0x0531, 1, cps({0x0531})},
             {0x0531, 99999999,
              cps({0x0554, 0x0302, 0x054B, 0x0302, 0x0542, 0x0302, 0x0539, 0x0302, 0x0554, 0x054B,
                   0x0542, 0x0539})},
             {0x0531, 100000000, "100000000"},
             {0x0531, 0, "0"},
             {0x0561, 1, cps({0x0561})},
             {0x0561, 99999999,
              cps({0x0584, 0x0302, 0x057B, 0x0302, 0x0572, 0x0302, 0x0569, 0x0302, 0x0584, 0x057B,
                   0x0572, 0x0569})},
             {0x0561, 100000000, "100000000"},
             {0x0561, 0, "0"}});
}

TEST(FormatNumberRows, Hebrew) {
  checkRows({{0x05D0, 0, "אפס"},
             {0x05D0, 1, cps({0x05D0})},
             {0x05D0, -1, "-1"},
             {0x05D0, 999, cps({0x05EA, 0x05EA, 0x05E7, 0x05E6, 0x05D8})}});
}

TEST(FormatNumberRows, Arabic) {
  checkRows({{0x0623, 0, cps({0x0660})},
             {0x0623, 1, cps({0x0623})},
             {0x0623, 2, cps({0x0628})},
             {0x0623, 19, cps({0x063A})},
             {0x0623, 20, cps({0x0641})},
             {0x0623, 28, cps({0x064A})},
             {0x0623, 29, cps({0x0623, 0x0623})},
             {0x0623, -1, "-1"}});
}

TEST(FormatNumberRows, Syriac) {
  checkRows({{0x0710, 1, cps({0x0710})},
             {0x0710, 9999999999,
              cps({0x072C, 0x032D, 0x072C, 0x032D, 0x0729, 0x032D, 0x0728, 0x032D, 0x071B,
                   0x032D, 0x072C, 0x0331, 0x072C, 0x0331, 0x0729, 0x0331, 0x0728, 0x0331,
                   0x071B, 0x0331, 0x071B, 0x0301, 0x072C, 0x072C, 0x0729, 0x0728, 0x071B})},
             {0x0710, 10000000000, "10000000000"},
             {0x0710, 0, "0"}});
}

TEST(FormatNumberRows, Tamil) {
  checkRows({{0x0BE7, 1, cps({0x0BE7})},
             {0x0BE7, 9999, cps({0x0BEF, 0x0BF2, 0x0BEF, 0x0BF1, 0x0BEF, 0x0BF0, 0x0BEF})},
             {0x0BE7, 10000, "10000"},
             {0x0BE7, 0, "0"}});
}

TEST(FormatNumberRows, Georgian) {
  checkRows({{0x10D0, 1, cps({0x10D0})},
             {0x10D0, 19999, cps({0x10F5, 0x10F0, 0x10E8, 0x10DF, 0x10D7})},
             {0x10D0, 20000, "20000"},
             {0x10D0, 0, "0"}});
}

TEST(FormatNumberRows, Kana) {
  checkRows({{0x3042, 1, cps({0x3042})},
             {0x3042, 46, cps({0x3093})},
             {0x3042, 45, cps({0x3092})},
             {0x3042, 47, cps({0x3042, 0x3042})},
             {0x3042, 0, "0"},
             {0x3044, 1, cps({0x3044})},
             {0x3044, 2, cps({0x308D})},
             {0x3044, 47, cps({0x3059})},
             {0x3044, 48, cps({0x3044, 0x3044})},
             {0x3044, 0, "0"},
             {0x30A2, 1, cps({0x30A2})},
             {0x30A2, 46, cps({0x30F3})},
             {0x30A2, 47, cps({0x30A2, 0x30A2})},
             {0x30A2, 0, "0"},
             {0x30A4, 1, cps({0x30A4})},
             {0x30A4, 25, cps({0x30F0})},
             {0x30A4, 47, cps({0x30B9})},
             {0x30A4, 48, cps({0x30A4, 0x30A4})},
             {0x30A4, 0, "0"},
             {0xFF71, 1, cps({0xFF71})},
             {0xFF71, 45, cps({0xFF66})},
             {0xFF71, 46, cps({0xFF9D})},
             {0xFF71, 47, cps({0xFF71, 0xFF71})},
             {0xFF71, 0, "0"},
             {0xFF72, 1, cps({0xFF72})},
             {0xFF72, 25, cps({0xFF89})},
             {0xFF72, 45, cps({0xFF7D})},
             {0xFF72, 46, cps({0xFF72, 0xFF72})},
             {0xFF72, 0, "0"}});
}

TEST(FormatNumberRows, JamoAndHangulSyllables) {
  checkRows({{0x3131, 1, cps({0x3131})},
             {0x3131, 14, cps({0x314E})},
             {0x3131, 15, cps({0x3131, 0x3131})},
             {0x3131, 0, cps({0xC601})},
             {0x3131, -7, cps({0xC601})},
             {0x3131, LLONG_MIN, cps({0xC601})},
             {0xAC00, 1, cps({0xAC00})},
             {0xAC00, 14, cps({0xD558})},
             {0xAC00, 15, cps({0xAC00, 0xAC00})},
             {0xAC00, 0, cps({0xC601})},
             {0xAC00, -7, cps({0xC601})}});
}

TEST(FormatNumberRows, EarthlyBranchesAndHeavenlyStems) {
  checkRows({{0x5B50, 1, cps({0x5B50})},
             {0x5B50, 11, cps({0x620D})},
             {0x5B50, 12, cps({0x4EA5})},
             {0x5B50, 13, cps({0x5B50, 0x5B50})},
             {0x5B50, 0, "0"},
             {0x7532, 1, cps({0x7532})},
             {0x7532, 10, cps({0x7678})},
             {0x7532, 11, cps({0x7532, 0x7532})},
             {0x7532, 0, "0"}});
}

TEST(FormatNumberRows, RowsAreNotGroupedButTheirDecimalFallbackIs) {
  EXPECT_EQ(F(1234, u"i", u",", 1), "mccxxxiv");
  EXPECT_EQ(F(1234, one(0x0BE7), u",", 1),
            cps({0x0BE7, 0x0BF2, 0x0BE8, 0x0BF1, 0x0BE9, 0x0BF0, 0x0BEA}));
  EXPECT_EQ(F(99999, u"i", u",", 3), "99,999");
  EXPECT_EQ(F(-1234, u"a", u",", 3), "-1,234");
}

TEST(FormatNumberRows, SexagenaryCycleEnds) {
  const UnicodeString token = UnicodeString(u"(\u7532\u5B50)");
  EXPECT_EQ(F(60, token), "(" + cps({0x7678, 0x4EA5}) + ")");
  EXPECT_EQ(F(11, token), "(" + cps({0x7532, 0x620D}) + ")");
  EXPECT_EQ(F(0, token), "(0)");
  EXPECT_EQ(F(-1, token), "(-1)");
  // The other order is no cycle: an alphabet of two stems and branches.
  EXPECT_EQ(F(3, u"\u5B50\u7532"), cps({0x5B50, 0x5B50}));
}

TEST(FormatNumberRows, UnknownLetterFallsThroughToTheSecondReading) {
  EXPECT_EQ(F(4, u"x"), "4");
  // The second reading takes "(x)" whole as a list of three symbols.
  EXPECT_EQ(F(4, u"(x)"), "((");
  EXPECT_EQ(F(-4, u"(x)"), "(-4)");
}

// ---- Enclosed forms of the second reading ----

TEST(FormatNumberEnclosed, EachFormAtItsEndsAndJustOutside) {
  struct Row {
    UChar32 first, base;
    int low, high;
  };
  const Row rows[] = {{0x2460, 0x245F, 1, 20},  {0x2474, 0x2473, 1, 20}, {0x2488, 0x2487, 1, 20},
                      {0x249C, 0x249B, 1, 26},  {0x24B6, 0x24B5, 1, 26}, {0x24D0, 0x24CF, 1, 26},
                      {0x24EB, 0x24E0, 11, 20}, {0x24F5, 0x24F4, 1, 10}};
  for (const Row& r : rows) {
    SCOPED_TRACE(r.first);
    EXPECT_EQ(F(r.low, one(r.first)), cps({r.base + r.low}));
    EXPECT_EQ(F(r.high, one(r.first)), cps({r.base + r.high}));
    EXPECT_EQ(F(r.high + 1, one(r.first)), dec(r.high + 1));
    if (r.first != 0x2460) EXPECT_EQ(F(r.low - 1, one(r.first)), dec(r.low - 1));
  }
  EXPECT_EQ(F(1, one(0x2460)), cps({0x2460}));
  EXPECT_EQ(F(20, one(0x2474)), cps({0x2487}));
  EXPECT_EQ(F(26, one(0x24D0)), cps({0x24E9}));
}

TEST(FormatNumberEnclosed, WhiteSpaceAroundIsKept) {
  EXPECT_EQ(F(3, u" \u2460 "), " " + cps({0x2462}) + " ");
  EXPECT_EQ(F(3, u"\t\u2460\u3000x"), "\t" + cps({0x2462, 0x3000}) + "x");
  // Without white space the neighbour joins the token, which becomes a list of symbols.
  EXPECT_EQ(F(3, u"\u2460."), cps({0x2460, 0x2460}));
}

TEST(FormatNumberEnclosed, NegativeNumberTakesTheFirstReading) {
  // No second reading for a negative number: the whole format is the prefix.
  EXPECT_EQ(F(-1, one(0x2460)), cps({0x2460}) + "-1");
}

// ---- Numeric rules ----

TEST(FormatNumberRoman, EachPlaceWithFoursAndNines) {
  EXPECT_EQ(F(4, u"I"), "IV");
  EXPECT_EQ(F(9, u"I"), "IX");
  EXPECT_EQ(F(14, u"I"), "XIV");
  EXPECT_EQ(F(40, u"I"), "XL");
  EXPECT_EQ(F(90, u"I"), "XC");
  EXPECT_EQ(F(400, u"I"), "CD");
  EXPECT_EQ(F(900, u"I"), "CM");
  EXPECT_EQ(F(1994, u"I"), "MCMXCIV");
  EXPECT_EQ(F(3888, u"i"), "mmmdccclxxxviii");
  EXPECT_EQ(F(2000, u"i"), "mm");
}

TEST(FormatNumberRoman, ThousandsUseFiveAndTenThousandLetters) {
  EXPECT_EQ(F(5000, u"I"), cps({0x2181}));
  EXPECT_EQ(F(6000, u"I"), cps({0x2181, 'M'}));
  EXPECT_EQ(F(9000, u"I"), cps({'M', 0x2182}));
  EXPECT_EQ(F(10000, u"I"), cps({0x2182}));
  EXPECT_EQ(F(14000, u"I"), cps({0x2182, 'M', 0x2181}));
  EXPECT_EQ(F(30001, u"I"), cps({0x2182, 0x2182, 0x2182, 'I'}));
}

TEST(FormatNumberRoman, WithoutTheLargeLettersThousandsRepeat) {
  const char16_t letters[] = {u'i', u'v', u'x', u'l', u'c', u'd', u'm'};
  UnicodeString out;
  util::appendRoman(out, 4000, letters, 7, 0);
  EXPECT_EQ(utf8(out), "mmmm");
  out.remove();
  util::appendRoman(out, 12000, letters, 7, 0);
  EXPECT_EQ(utf8(out), std::string(12, 'm'));
}

TEST(FormatNumberRoman, SingleCharacterRuleAtEveryPlace) {
  EXPECT_EQ(F(11, one(0x2160)), cps({0x216A}));
  EXPECT_EQ(F(1012, one(0x2160)), cps({0x216F, 0x216B}));
  EXPECT_EQ(F(1013, one(0x2160)), cps({0x216F, 0x2169, 0x2162}));
  EXPECT_EQ(F(112, one(0x2170)), cps({0x217D, 0x217B}));
  EXPECT_EQ(F(4, one(0x2170)), cps({0x2173}));
  // The plain letters know no such rule.
  EXPECT_EQ(F(12, u"I"), "XII");
}

TEST(FormatNumberHebrew, Units) {
  EXPECT_EQ(F(1, one(0x05D0)), cps({0x05D0}));
  EXPECT_EQ(F(9, one(0x05D0)), cps({0x05D8}));
  EXPECT_EQ(F(10, one(0x05D0)), cps({0x05D9}));
  EXPECT_EQ(F(11, one(0x05D0)), cps({0x05D9, 0x05D0}));
  EXPECT_EQ(F(90, one(0x05D0)), cps({0x05E6}));
  EXPECT_EQ(F(100, one(0x05D0)), cps({0x05E7}));
  EXPECT_EQ(F(400, one(0x05D0)), cps({0x05EA}));
  EXPECT_EQ(F(500, one(0x05D0)), cps({0x05EA, 0x05E7}));
  EXPECT_EQ(F(800, one(0x05D0)), cps({0x05EA, 0x05EA}));
  EXPECT_EQ(F(900, one(0x05D0)), cps({0x05EA, 0x05EA, 0x05E7}));
}

TEST(FormatNumberHebrew, FifteenAndSixteenEverywhere) {
  EXPECT_EQ(F(16, one(0x05D0)), cps({0x05D8, 0x05D6}));
  EXPECT_EQ(F(115, one(0x05D0)), cps({0x05E7, 0x05D8, 0x05D5}));
  EXPECT_EQ(F(216, one(0x05D0)), cps({0x05E8, 0x05D8, 0x05D6}));
  EXPECT_EQ(F(17, one(0x05D0)), cps({0x05D9, 0x05D6}));
}

TEST(FormatNumberHebrew, ThousandGroupsAndLevels) {
  EXPECT_EQ(F(3000, one(0x05D0)), cps({0x05D2}) + " אלפים");
  EXPECT_EQ(F(11000, one(0x05D0)), cps({0x05D9, 0x05D0}) + " אלפים");
  EXPECT_EQ(F(1000000, one(0x05D0)), "אלף אלפים");
  EXPECT_EQ(F(3000000, one(0x05D0)), cps({0x05D2}) + " אלפי אלפים");
  EXPECT_EQ(F(1000500, one(0x05D0)), "אלף אלפים " + cps({0x05EA, 0x05E7}));
  // Below a group that has no trailing zeros the level is not written.
  EXPECT_EQ(F(1500, one(0x05D0)), cps({0x05D0, ' ', 0x05EA, 0x05E7}));
}

TEST(FormatNumberHebrew, TwoThousandModuloAMillion) {
  EXPECT_EQ(F(1002000, one(0x05D0)), cps({0x05D0}) + " אלפיים");
  EXPECT_EQ(F(3002000, one(0x05D0)), cps({0x05D2}) + " אלפיים");
  EXPECT_EQ(F(2001, one(0x05D0)), cps({0x05D1, ' ', 0x05D0}));
}

TEST(FormatNumberHebrew, LevelOfTheCallerCountsOnlyWithTrailingGroups) {
  UnicodeString out;
  util::appendHebrew(out, 5, 1);
  EXPECT_EQ(utf8(out), cps({0x05D4}));
  out.remove();
  util::appendHebrew(out, 5000, 1);
  EXPECT_EQ(utf8(out), cps({0x05D4}) + " אלפי אלפים");
  out.remove();
  util::appendHebrew(out, 1000, 2);
  EXPECT_EQ(utf8(out), "אלף אלפי אלפים");
}

TEST(FormatNumberArmenian, LowPartAndThousandsWithTheirLeadingLetter) {
  EXPECT_EQ(F(1, one(0x0531)), cps({0x0531}));
  EXPECT_EQ(F(10, one(0x0531)), cps({0x053A}));
  EXPECT_EQ(F(100, one(0x0531)), cps({0x0543}));
  EXPECT_EQ(F(1000, one(0x0531)), cps({0x054C}));
  EXPECT_EQ(F(1984, one(0x0531)), cps({0x054C, 0x054B, 0x0541, 0x0534}));
  EXPECT_EQ(F(7000, one(0x0531)), cps({0x0548, 0x0552}));
  EXPECT_EQ(F(7000, one(0x0561)), cps({0x0578, 0x0582}));
  EXPECT_EQ(F(6000, one(0x0561)), cps({0x0581}));
}

TEST(FormatNumberArmenian, HighPartTakesTheMarkAndNoLeadingLetter) {
  EXPECT_EQ(F(10000, one(0x0531)), cps({0x0531, 0x0302}));
  EXPECT_EQ(F(10001, one(0x0531)), cps({0x0531, 0x0302, 0x0531}));
  EXPECT_EQ(F(70000000, one(0x0531)), cps({0x0552, 0x0302}));
  EXPECT_EQ(F(70007000, one(0x0561)), cps({0x0582, 0x0302, 0x0578, 0x0582}));
  EXPECT_EQ(F(120000, one(0x0561)), cps({0x056A, 0x0302, 0x0562, 0x0302}));
}

TEST(FormatNumberTamil, MarksStandOverZeros) {
  EXPECT_EQ(F(10, one(0x0BE7)), cps({0x0BE7, 0x0BF0}));
  EXPECT_EQ(F(100, one(0x0BE7)), cps({0x0BE7, 0x0BF1, 0x0BF0}));
  EXPECT_EQ(F(1000, one(0x0BE7)), cps({0x0BE7, 0x0BF2, 0x0BF1, 0x0BF0}));
  EXPECT_EQ(F(105, one(0x0BE7)), cps({0x0BE7, 0x0BF1, 0x0BF0, 0x0BEB}));
  EXPECT_EQ(F(2024, one(0x0BE7)), cps({0x0BE8, 0x0BF2, 0x0BF1, 0x0BE8, 0x0BF0, 0x0BEA}));
  EXPECT_EQ(F(9, one(0x0BE7)), cps({0x0BEF}));
}

TEST(FormatNumberSyriac, PartsAndTheirMarks) {
  EXPECT_EQ(F(123, one(0x0710)), cps({0x0729, 0x071F, 0x0713}));
  EXPECT_EQ(F(500, one(0x0710)), cps({0x072C, 0x0729}));
  EXPECT_EQ(F(900, one(0x0710)), cps({0x072C, 0x072C, 0x0729}));
  EXPECT_EQ(F(1000, one(0x0710)), cps({0x0710, 0x0301}));
  EXPECT_EQ(F(2005, one(0x0710)), cps({0x0712, 0x0301, 0x0717}));
  EXPECT_EQ(F(10000, one(0x0710)), cps({0x0710, 0x0331}));
  EXPECT_EQ(F(5000000, one(0x0710)), cps({0x072C, 0x0331, 0x0729, 0x0331}));
  EXPECT_EQ(F(10000000, one(0x0710)), cps({0x0710, 0x032D}));
  EXPECT_EQ(F(10011001, one(0x0710)),
            cps({0x0710, 0x032D, 0x0710, 0x0331, 0x0710, 0x0301, 0x0710}));
}

TEST(FormatNumberGeorgian, TablesAndTheModulo) {
  EXPECT_EQ(F(8, one(0x10D0)), cps({0x10F1}));
  EXPECT_EQ(F(60, one(0x10D0)), cps({0x10F2}));
  EXPECT_EQ(F(400, one(0x10D0)), cps({0x10F3}));
  EXPECT_EQ(F(7000, one(0x10D0)), cps({0x10F4}));
  EXPECT_EQ(F(10000, one(0x10D0)), cps({0x10F5}));
  EXPECT_EQ(F(1921, one(0x10D0)), cps({0x10E9, 0x10E8, 0x10D9, 0x10D0}));
  UnicodeString out;
  util::appendGeorgian(out, 100000);
  EXPECT_TRUE(out.isEmpty());
  util::appendGeorgian(out, 110021);
  EXPECT_EQ(utf8(out), cps({0x10F5, 0x10D9, 0x10D0}));
}

// ---- Grouping ----

TEST(FormatNumberGrouping, CountsUnitsFromTheRightWithoutLookingAtThem) {
  EXPECT_EQ(utf8(util::groupDigits(u"1234567", u",", 3)), "1,234,567");
  EXPECT_EQ(utf8(util::groupDigits(u"-123456", u",", 3)), "-,123,456");
  EXPECT_EQ(utf8(util::groupDigits(u"abcdef", u"--", 2)), "ab--cd--ef");
  EXPECT_EQ(utf8(util::groupDigits(u"123", u",", 3)), "123");
  EXPECT_EQ(utf8(util::groupDigits(u"1234", u",", 1)), "1,2,3,4");
  EXPECT_EQ(utf8(util::groupDigits(u"1234", u"", 1)), "1234");
  EXPECT_EQ(utf8(util::groupDigits(u"1234", u",", 0)), "1234");
  EXPECT_EQ(utf8(util::groupDigits(u"1234", u",", -2)), "1234");
  EXPECT_EQ(F(-123456, u"1", u",", 3), "-,123,456");
  EXPECT_EQ(F(LLONG_MIN, u"", u" ", 3), "-9 223 372 036 854 775 808");
}

TEST(FormatNumberGrouping, OnlyDecimalAndDigitReplacementsAreGrouped) {
  const UnicodeString cycle(u"\u7532\u5B50");
  EXPECT_EQ(F(11, cycle, u",", 1), cps({0x7532, 0x620D}));
  EXPECT_EQ(F(61, cycle, u",", 1), "6,1");
  // The second reading's own results stand ungrouped; its decimal rule is grouped.
  EXPECT_EQ(F(3, u"**", u",", 1), "***");
  EXPECT_EQ(F(1000, u"**", u",", 1), "1,0,0,0");
  EXPECT_EQ(F(7, u"ab", u",", 1), "aaa");
  EXPECT_EQ(F(3, u"*+", u",", 1), "**");
  EXPECT_EQ(F(3, u"*", u",", 1), "3");
  EXPECT_EQ(F(1234, u"*", u",", 2), "12,34");
  EXPECT_EQ(F(12, one(0x2460), u",", 1), cps({0x246B}));
  EXPECT_EQ(F(21, one(0x2460), u",", 1), "2,1");
  // The sign is a unit like any other: it is grouped too.
  EXPECT_EQ(F(-21, u"**", u"--", 1), "**---2--1");
}

// ---- The second reading and the alphabetic rule ----

TEST(FormatNumberFallback, RepeatedCharacterUpTo999) {
  EXPECT_EQ(F(999, u"**"), std::string(999, '*'));
  EXPECT_EQ(F(1000, u"**"), "1000");
  EXPECT_EQ(F(0, u"**"), "0");
  EXPECT_EQ(F(-2, u"**"), "**-2");
  EXPECT_EQ(F(2, u"\u00A7\u00A7\u00A7"), "§§");
}

TEST(FormatNumberFallback, SymbolListUpTo999) {
  EXPECT_EQ(F(1, u"*+#"), "*");
  EXPECT_EQ(F(5, u"*+#"), "++");
  EXPECT_EQ(F(999, u"*+#").size(), 333u);
  EXPECT_EQ(F(1000, u"*+#"), "1000");
  EXPECT_EQ(F(3, u"\u2020\u2021"), cps({0x2020, 0x2020}));
}

TEST(FormatNumberFallback, WhiteSpaceCutsPrefixTokenAndSuffix) {
  EXPECT_EQ(F(3, u"  ** x"), "  *** x");
  EXPECT_EQ(F(4, u" *+ "), " ++ ");
  EXPECT_EQ(F(3, u" "), " 3");
  EXPECT_EQ(F(3, u"\u3000\u2020\u2020\u00A0"), cps({0x3000, 0x2020, 0x2020, 0x2020, 0x00A0}));
  EXPECT_EQ(F(3, u"\u3000\u2020\u00A0"), cps({0x3000, '3', 0x00A0}));
  EXPECT_EQ(F(3, u" *x* "), " 3 ");
}

TEST(FormatNumberFallback, SpelledAlphabets) {
  EXPECT_EQ(F(1, u"xyz"), "x");
  EXPECT_EQ(F(4, u"xyz"), "xx");
  EXPECT_EQ(F(13, u"xyz"), "xxx");
  EXPECT_EQ(F(5, u"ab"), "ba");
  EXPECT_EQ(F(7, u"ab"), "aaa");
  // Digits may spell an alphabet too; so may a full word with all letters different.
  EXPECT_EQ(F(10, u"0123456789"), "9");
  EXPECT_EQ(F(11, u"0123456789"), "00");
  EXPECT_EQ(F(6, u"word"), "wo");
}

TEST(FormatNumberFallback, AlphabeticRuleIsBoundOnlyByTheNumber) {
  // 2^63 - 1 is 63 times the first letter in a bijective base of two.
  EXPECT_EQ(F(LLONG_MAX, u"ab"), std::string(63, 'a'));
  EXPECT_EQ(F(LLONG_MAX - 1, u"ab"), std::string(62, 'b'));
}

TEST(FormatNumberFallback, CodePointsOutsideTheBasicPlane) {
  // Mathematical bold letters are letters: an alphabet of two.
  EXPECT_EQ(F(3, u"\U0001D41A\U0001D41B"), cps({0x1D41A, 0x1D41A}));
  EXPECT_EQ(F(LLONG_MAX, u"\U0001D41A\U0001D41B").size(), 63u * 4u);
  // Emoji are symbols: a list of two.
  EXPECT_EQ(F(4, u"\U0001F600\U0001F601"), cps({0x1F601, 0x1F601}));
  EXPECT_EQ(F(3, u"\U0001F600\U0001F600"), cps({0x1F600, 0x1F600, 0x1F600}));
  EXPECT_EQ(F(3, u"\U0001F600"), "3");
}

TEST(FormatNumberFallback, MixedTokenAfterTheFirstReading) {
  // "ab1" is one token; its last unit is a digit one but "a" is no zero.
  EXPECT_EQ(F(4, u"ab1"), "aa");
  // "a.b": the token character run is "a", a row of its own.
  EXPECT_EQ(F(2, u"a.b"), "b.b");
}

// ---- ICU's rule-based numbering systems, where their rules are ours ----

namespace {

// ICU's text of `n` in the algorithmic numbering system `name` (of the root locale's rules).
std::string icuNumbering(const char* name, long long n) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::NumberingSystem> ns(
      icu::NumberingSystem::createInstanceByName(name, status));
  if (U_FAILURE(status) || !ns) return "<no numbering system>";
  static icu::RuleBasedNumberFormat* rbnf = [] {
    UErrorCode st = U_ZERO_ERROR;
    auto* f =
        new icu::RuleBasedNumberFormat(icu::URBNF_NUMBERING_SYSTEM, icu::Locale::getRoot(), st);
    return U_SUCCESS(st) ? f : nullptr;
  }();
  if (rbnf == nullptr) return "<no rules>";
  rbnf->setDefaultRuleSet(ns->getDescription(), status);
  if (U_FAILURE(status)) return "<no rule set>";
  UnicodeString out;
  rbnf->format(static_cast<int64_t>(n), out);
  return utf8(out);
}

}  // namespace

// Hebrew with the geresh and gershayim left out and final letter forms made plain: ICU's
// numerals then read as this formatting spells them.
std::string plainHebrew(const std::string& icu) {
  UnicodeString s = UnicodeString::fromUTF8(icu), out;
  for (int32_t i = 0; i < s.length(); ++i) {
    char16_t c = s.charAt(i);
    if (c == 0x05F3 || c == 0x05F4) continue;
    switch (c) {
      case 0x05DA:
        c = 0x05DB;
        break;
      case 0x05DD:
        c = 0x05DE;
        break;
      case 0x05DF:
        c = 0x05E0;
        break;
      case 0x05E3:
        c = 0x05E4;
        break;
      case 0x05E5:
        c = 0x05E6;
        break;
      default:
        break;
    }
    out.append(c);
  }
  return utf8(out);
}

TEST(FormatNumberIcu, UpperRomanAgreesOverTheWholeRange) {
  for (long long n = 1; n <= 39999; ++n) ASSERT_EQ(F(n, u"I"), icuNumbering("roman", n)) << n;
}

TEST(FormatNumberIcu, LowerRomanAgreesUpTo3999) {
  for (long long n = 1; n <= 3999; ++n) ASSERT_EQ(F(n, u"i"), icuNumbering("romanlow", n)) << n;
  // ICU goes on to 4999 with repeated m; here the range ends and the number is decimal.
  EXPECT_EQ(icuNumbering("romanlow", 4000), "mmmm");
  EXPECT_EQ(F(4000, u"i"), "4000");
}

TEST(FormatNumberIcu, ArmenianAgreesBelow10000SaveTheSevenThousands) {
  for (long long n = 1; n <= 9999; ++n) {
    if (n / 1000 == 7) continue;
    ASSERT_EQ(F(n, one(0x0531)), icuNumbering("armn", n)) << n;
    ASSERT_EQ(F(n, one(0x0561)), icuNumbering("armnlow", n)) << n;
  }
  // ICU writes seven thousand as its letter alone, here with U+0548 / U+0578 before it.
  EXPECT_EQ(icuNumbering("armn", 7000), cps({0x0552}));
  EXPECT_EQ(F(7000, one(0x0531)), cps({0x0548, 0x0552}));
  EXPECT_EQ(icuNumbering("armnlow", 7001), cps({0x0582, 0x0561}));
  EXPECT_EQ(F(7001, one(0x0561)), cps({0x0578, 0x0582, 0x0561}));
  // From 10000 on ICU has no rule and prints decimal; here the high part takes U+0302.
  EXPECT_EQ(icuNumbering("armn", 10000), "10,000");
  EXPECT_EQ(F(10000, one(0x0531)), cps({0x0531, 0x0302}));
}

TEST(FormatNumberIcu, HebrewAgreesBelow1000SaveItsMarksAndAvoidedSpellings) {
  // ICU reorders five spellings that form words; the plain order is kept here.
  const std::map<long long, std::string> reordered = {{298, cps({0x05E8, 0x05D7, 0x05E6})},
                                                      {304, cps({0x05D3, 0x05E9})},
                                                      {344, cps({0x05E9, 0x05D3, 0x05DE})},
                                                      {698, cps({0x05EA, 0x05E8, 0x05D7, 0x05E6})},
                                                      {744, cps({0x05EA, 0x05E9, 0x05D3, 0x05DE})}};
  for (long long n = 1; n <= 999; ++n) {
    const std::string icu = plainHebrew(icuNumbering("hebr", n));
    auto it = reordered.find(n);
    if (it != reordered.end()) {
      EXPECT_EQ(icu, it->second) << n;
      EXPECT_NE(F(n, one(0x05D0)), icu) << n;
    } else {
      ASSERT_EQ(F(n, one(0x05D0)), icu) << n;
    }
  }
  EXPECT_EQ(F(298, one(0x05D0)), cps({0x05E8, 0x05E6, 0x05D7}));
}

TEST(FormatNumberIcu, HebrewThousandsAgreeWhenTheRestIsZero) {
  for (long long k = 1; k <= 999; ++k) {
    if (k == 298 || k == 304 || k == 344 || k == 698 || k == 744) continue;
    // The words for thousand keep their final letters on both sides.
    ASSERT_EQ(plainHebrew(F(k * 1000, one(0x05D0))), plainHebrew(icuNumbering("hebr", k * 1000)))
        << k;
  }
  // With a rest below the thousands ICU joins the parts with a geresh; here the level below
  // a group without trailing zeros is not written and a space stands between the parts.
  EXPECT_EQ(icuNumbering("hebr", 1500), cps({0x05D0, 0x05F3, 0x05EA, 0x05F4, 0x05E7}));
  EXPECT_EQ(F(1500, one(0x05D0)), cps({0x05D0, ' ', 0x05EA, 0x05E7}));
}

TEST(FormatNumberIcu, GeorgianAgreesBelow400) {
  for (long long n = 1; n <= 399; ++n) ASSERT_EQ(F(n, one(0x10D0)), icuNumbering("geor", n)) << n;
  // The hundreds table here has no U+10E3: from 400 on the letters differ from ICU's.
  EXPECT_EQ(icuNumbering("geor", 400), cps({0x10E3}));
  EXPECT_EQ(F(400, one(0x10D0)), cps({0x10F3}));
  EXPECT_EQ(icuNumbering("geor", 1000), cps({0x10E8}));
  EXPECT_EQ(F(1000, one(0x10D0)), cps({0x10E9}));
}

TEST(FormatNumberIcu, TamilAgreesOnlyBelowTen) {
  for (long long n = 1; n <= 9; ++n) ASSERT_EQ(F(n, one(0x0BE7)), icuNumbering("taml", n)) << n;
  // ICU writes no digit one before a mark and no marks over zeros.
  EXPECT_EQ(icuNumbering("taml", 10), cps({0x0BF0}));
  EXPECT_EQ(F(10, one(0x0BE7)), cps({0x0BE7, 0x0BF0}));
  EXPECT_EQ(icuNumbering("taml", 1000), cps({0x0BF2}));
  EXPECT_EQ(F(1000, one(0x0BE7)), cps({0x0BE7, 0x0BF2, 0x0BF1, 0x0BF0}));
}

// ---- Per-language alphabets ----

namespace {
struct LanguageRow {
  const char* lang;
  int upperCount;
  const char* upper;  // null: no upper-case alphabet of its own
  const char* lower;
  int lowerCount;
};

const LanguageRow kLanguageRows[] = {
    {"de", 0, nullptr, "abcdefghijklmnopqrstuvwxyzß", 27},
    {"it", 21, "ABCDEFGHILMNOPQRSTUVZ", "abcdefghilmnopqrstuvz", 21},
    {"fi", 20, "ADEHIJKLMNOPRSTUVYÄÖ", "adeghijklmnoprstuvyäö", 21},
    {"da", 29, "ABCDEFGHIJKLMNOPQRSTUVWXYZÆØÅ", "abcdefghijklmnopqrstuvwxyzæøå", 29},
    {"no", 29, "ABCDEFGHIJKLMNOPQRSTUVWXYZÆØÅ", "abcdefghijklmnopqrstuvwxyzæøå", 29},
    {"sv", 29, "ABCDEFGHIJKLMNOPQRSTUVWXYZÅÄÖ", "abcdefghijklmnopqrstuvwxyzåäö", 29},
    {"nl", 27, "ABCDEFGHIJKLMNOPQRSTUVWXYĲZ", "abcdefghijklmnopqrstuvwxyĳz", 27},
    {"hu", 31, "AÁBCDEÉFGHIÍJKLMNOÓÖŐPRSTUÚÜŰVZ", "aábcdeéfghiíjklmnoóöőprstuúüűvz", 31},
    {"et", 32, "ABCDEFGHIJKLMNOPQRSŠZŽTUVWÕÄÖÜXY", "abcdefghijklmnopqrsšzžtuvwõäöüxy", 32},
    {"es", 27, "ABCDEFGHIJKLMNÑOPQRSTUVWXYZ", "abcdefghijklmnñopqrstuvwxyz", 27},
    {"pl", 32, "AĄBCĆDEĘFGHIJKLŁMNŃOÓPRSŚTUWYZŹŻ", "aąbcćdeęfghijklłmnńoóprsśtuwyzźż", 32},
    {"cs", 41, "AÁBCČDĎEÉĚFGHIÍJKLMNŃOÓPQRŘSŚTŤUÚŮVWXYÝZŽ",
     "aábcčdďeéěfghiíjklmnńoópqrřsśtťuúůvwxyýzž", 41},
    {"sk", 42, "AÁÄBCČDĎEÉFGHIÍJKLĹĽMNŃOÓÔPQRSŚTŤUÚVWXYÝZŽ",
     "aáäbcčdďeéfghiíjklĺľmnńoóôpqrsśtťuúvwxyýzž", 42},
    {"sl", 25, "ABCČDEFGHIJKLMNOPRSŚTUVZŽ", "abcčdefghijklmnoprsśtuvzž", 25},
    {"lt", 32, "AĄBCČDEĘĖFGHIĮYJKLMNOPRSŚTUŲŪVZŽ", "aąbcčdeęėfghiįyjklmnoprsśtuųūvzž", 32},
    {"tr", 29, "ABCÇDEFGĞHIİJKLMNOÖPRSŞTUÜVYZ", "abcçdefgğhıijklmnoöprsştuüvyz", 29},
    {"is", 34, "AÁBCDÐEÉFGHIÍJKLMNOÓPRSTUÚVXYÝZÞÆÖ", "aábcdðeéfghiíjklmnoóprstuúvxyýzþæö", 34},
    {"eo", 28, "ABCĈDEFGĜHĤIJĴKLMNOPRSŜTUŬVZ", "abcĉdefgĝhĥijĵklmnoprsŝtuŭvz", 28},
    {"ro", 28, "AĂÂBCDEFGHIÎJKLMNOPRSŞTŢUVXZ", "aăâbcdefghiîjklmnoprsştţuvxz", 28},
    {"ga", 18, "ABCDEFGHILMNOPRSTU", "abcdefghilmnoprstu", 18},
    {"lv", 33, "AĀBCČDEĒFGĢHIĪJKĶLĻMNŅOPRSŠTUŪVZŽ", "aābcčdeēfgģhiījkķlļmnņoprsštuūvzž", 33},
    {"sq", 27, "ABCÇDEËFGHIJKLMNOPQRSTUVXYZ", "abcçdeëfghijklmnopqrstuvxyz", 27},
    {"eu", 27, "ABCDEFGHIJKLMNÑOPQRSTUVWXYZ", "abcdefghijklmnñopqrstuvwxyz", 27},
    {"mt", 28, "ABĊDEFĠGHĦIJKLMNOPQRSTUVWXŻZ", "abċdefġghħijklmnopqrstuvwxżz", 28},
    {"vi", 29, "AĂÂBCDĐEÊGHIKLMNOÔƠPQRSTUƯVXY", "aăâbcdđeêghiklmnoôơpqrstuưvxy", 29},
    {"ru", 29, "АБВГДЕЖЗИКЛМНОПРСТУФХЦЧШЩЫЭЮЯ", "абвгдежзиклмнопрстуфхцчшщыэюя", 29},
    {"uk", 32, "АБВГЃДЕЄЖЗИІЇКЛМНОПРСТУФХЦЧШЩЮЯЬ", "абвгѓдеєжзиіїклмнопрстуфхцчшщюяь", 32},
    {"bg", 29, "АБВГДЕЖЗИКЛМНОПРСТУФХЦЧШЩЪЬЮЯ", "абвгдежзиклмнопрстуфхцчшщъьюя", 29},
    {"sr", 30, "АБВГДЂЕЖЗИЈКЛЉМНЊОПРСТЋУФХЦЧЏШ", "абвгдђежзијклљмнњопрстћуфхцчџш", 30},
    {"mk", 31, "АБВГДЃЕЖЗЅИЈКЛЉМНЊОПРСТЌУФХЦЧЏШ", "абвгдѓежзѕијклљмнњопрстќуфхцчџш", 31},
    {"be", 26, "АБВГДЖЗІКЛМНОПРСТУФХЦЧШЫЬЭ", "абвгдежзіклмнопрстуфхцчшыьэюя", 29},
    {"tg", 34, "АБВГДЕЖЗИКЛМНОПРСТУФХЧШЪЬЭЮЯҒӢҚӮҲҶ", "абвгдежзиклмнопрстуфхчшъьэюяғӣқӯҳҷ", 34},
    {"uz", 30, "АБВГДЕЖЗИКЛМНОПРСТУФХЧШЪЭЮЯҚҒҲ", "АБВГДЕЖЗИКЛМНОПРСТУФХЧШЪЭЮЯҚҒҲ", 30},
    {"el", 24, "ΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡΣΤΥΦΧΨΩ", "αβγδεζηθικλμνξοπρστυφχψω", 24},
};

// The i-th (from 1) code point of a UTF-8 text.
std::string letterAt(const char* text, int i) {
  UnicodeString s = UnicodeString::fromUTF8(text);
  return utf8(UnicodeString(s.char32At(s.moveIndex32(0, i - 1))));
}

bool isCyrillicRow(const LanguageRow& r) {
  UnicodeString s = UnicodeString::fromUTF8(r.lower);
  return s.char32At(0) >= 0x0400 && s.char32At(0) < 0x0530;
}
bool isGreekRow(const LanguageRow& r) { return std::string(r.lang) == "el"; }
}  // namespace

TEST(FormatNumberLanguage, CountsAsTabled) {
  for (const LanguageRow& r : kLanguageRows) {
    SCOPED_TRACE(r.lang);
    if (r.upper) EXPECT_EQ(UnicodeString::fromUTF8(r.upper).countChar32(), r.upperCount);
    EXPECT_EQ(UnicodeString::fromUTF8(r.lower).countChar32(), r.lowerCount);
  }
}

TEST(FormatNumberLanguage, EveryLetterOfEveryLowerCaseAlphabet) {
  for (const LanguageRow& r : kLanguageRows) {
    SCOPED_TRACE(r.lang);
    for (int i = 1; i <= r.lowerCount; ++i)
      ASSERT_EQ(L(i, u"a", r.lang), letterAt(r.lower, i)) << i;
    EXPECT_EQ(L(r.lowerCount + 1, u"a", r.lang), letterAt(r.lower, 1) + letterAt(r.lower, 1));
    EXPECT_EQ(L(r.lowerCount * (r.lowerCount + 1), u"(a)", r.lang),
              "(" + letterAt(r.lower, r.lowerCount) + letterAt(r.lower, r.lowerCount) + ")");
  }
}

TEST(FormatNumberLanguage, EveryLetterOfEveryUpperCaseAlphabet) {
  for (const LanguageRow& r : kLanguageRows) {
    if (!r.upper) continue;
    SCOPED_TRACE(r.lang);
    for (int i = 1; i <= r.upperCount; ++i)
      ASSERT_EQ(L(i, u"A", r.lang), letterAt(r.upper, i)) << i;
    EXPECT_EQ(L(r.upperCount + 1, u"A", r.lang), letterAt(r.upper, 1) + letterAt(r.upper, 1));
  }
}

TEST(FormatNumberLanguage, ScriptTokensUseOnlyTheirOwnMap) {
  for (const LanguageRow& r : kLanguageRows) {
    SCOPED_TRACE(r.lang);
    const int last = r.lowerCount;
    if (isCyrillicRow(r)) {
      EXPECT_EQ(L(last, one(0x0430), r.lang), letterAt(r.lower, last));
      EXPECT_EQ(L(r.upperCount, one(0x0410), r.lang), letterAt(r.upper, r.upperCount));
    } else if (isGreekRow(r)) {
      EXPECT_EQ(L(last, one(0x03B1), r.lang), letterAt(r.lower, last));
      EXPECT_EQ(L(r.upperCount, one(0x0391), r.lang), letterAt(r.upper, r.upperCount));
    } else {
      // A Latin-script language leaves the Greek and Cyrillic tokens at their defaults.
      EXPECT_EQ(L(24, one(0x03B1), r.lang), cps({0x03C9}));
      EXPECT_EQ(L(29, one(0x0410), r.lang), cps({0x042F}));
    }
  }
  // Cyrillic languages don't reach the Greek token, nor Greek the Cyrillic one.
  EXPECT_EQ(L(5, one(0x0391), "uk"), cps({0x0395}));
  EXPECT_EQ(L(29, one(0x0430), "el"), cps({0x044F}));
}

TEST(FormatNumberLanguage, IrregularAlphabetsAsTabled) {
  // Finnish upper case has no G, lower case has one.
  EXPECT_EQ(L(4, u"A", "fi"), "H");
  EXPECT_EQ(L(4, u"a", "fi"), "g");
  EXPECT_EQ(L(21, u"A", "fi"), "AA");
  EXPECT_EQ(L(21, u"a", "fi"), "ö");
  // Belarusian: 26 upper, 29 lower letters.
  EXPECT_EQ(L(27, u"A", "be"), cps({0x0410, 0x0410}));
  EXPECT_EQ(L(27, u"a", "be"), cps({0x044D}));
  EXPECT_EQ(L(29, u"a", "be"), cps({0x044F}));
  // German has a lower-case alphabet only: upper case is A-Z.
  EXPECT_EQ(L(27, u"a", "de"), "ß");
  EXPECT_EQ(L(27, u"A", "de"), "AA");
  // The lower-case Uzbek alphabet is written in capitals.
  EXPECT_EQ(L(1, u"a", "uz"), cps({0x0410}));
  EXPECT_EQ(L(30, u"a", "uz"), cps({0x04B2}));
}

TEST(FormatNumberLanguage, LetterTokensTryLatinThenGreekThenCyrillic) {
  EXPECT_EQ(L(2, u"A", "el"), cps({0x0392}));
  EXPECT_EQ(L(2, u"a", "el"), cps({0x03B2}));
  EXPECT_EQ(L(2, u"a", "ru"), cps({0x0431}));
  EXPECT_EQ(L(5, u"a", "uk"), cps({0x0453}));
  EXPECT_EQ(L(15, u"a", "es"), cps({0x00F1}));
}

TEST(FormatNumberLanguage, LanguageWithoutEntryOrNoLanguageUsesTheDefault) {
  EXPECT_EQ(L(27, u"a", "en"), "aa");
  EXPECT_EQ(L(27, u"a", "ja"), "aa");
  EXPECT_EQ(L(27, u"a", ""), "aa");
  EXPECT_EQ(L(27, u"a", "none"), "aa");
  EXPECT_EQ(L(27, u"A", "xx"), "AA");
}

TEST(FormatNumberLanguage, MatchIsExactOnLanguageAndCountry) {
  // The maps are keyed by language alone: a tag with a country has no entry.
  EXPECT_EQ(L(1, u"A", "ru-RU"), "A");
  EXPECT_EQ(L(1, one(0x0410), "bg-BG"), cps({0x0410}));
  EXPECT_EQ(L(29, u"a", "sv-SE"), "ac");
  EXPECT_EQ(L(29, u"a", "sv"), cps({0x00F6}));
  // Bibliographic codes are normalised first: "ger" is German.
  EXPECT_EQ(L(27, u"a", "ger"), "ß");
  EXPECT_EQ(L(27, u"a", "DE"), "ß");
}

TEST(FormatNumberLanguage, LanguageAlphabetsHaveNoSixteenBitLimit) {
  // Only the A-Z default takes the number in its low 16 bits.
  EXPECT_EQ(L(65536, u"a", "ru"), "буыщ");
  EXPECT_EQ(L(65536, u"a", "en"), "65536");
  EXPECT_EQ(L(65536 + 1, u"a", "en"), "a");
  EXPECT_EQ(L(LLONG_MAX, u"a", "ga"), "aflsteieorhberlg");
}

TEST(FormatNumberLanguage, NegativeAndZeroAreDecimalInEveryLanguage) {
  EXPECT_EQ(L(0, u"a", "ru"), "0");
  EXPECT_EQ(L(-3, u"(A)", "el"), "(-3)");
  EXPECT_EQ(L(0, one(0x0430), "uk"), "0");
}

// ---- The two forms and the letter value ----

TEST(FormatNumberForms, ShortFormIsTheLongFormWithoutGrouping) {
  for (const char16_t* format : {u"", u"1", u"01", u"a", u"I", u"\u05D0", u"**", u"ab"}) {
    for (long long n : {-5LL, 0LL, 7LL, 1234567LL}) {
      EXPECT_EQ(ZQUtil::formatNumber(n, format, ZQLang("ru")),
                ZQUtil::formatNumber(n, format, UnicodeString(), 0, ZQLang("ru"), ZQN_auto));
    }
  }
}

TEST(FormatNumberForms, LetterValueTakesNoPart) {
  for (const char16_t* format : {u"a", u"i", u"\u05D0", u"\u03B1"}) {
    for (ZQNameEnum lv : {ZQN_auto, ZQN_alphabetic, ZQN_traditional, ZQN_EMPTY}) {
      EXPECT_EQ(ZQUtil::formatNumber(9, format, u",", 1, ZQLang("el"), lv),
                ZQUtil::formatNumber(9, format, u",", 1, ZQLang("el"), ZQN_auto));
    }
  }
}
TEST(FormatNumberIcu, EthiopicAgreesBelowATrillion) {
  for (long long n = 1; n <= 100000; ++n)
    ASSERT_EQ(F(n, one(0x1369)), icuNumbering("ethi", n)) << n;
  // A stride through each order of magnitude up to 10^12.
  for (long long scale = 1000000; scale < 1000000000000LL; scale *= 10)
    for (long long n = scale; n < scale * 10; n += scale / 7 + 12345)
      ASSERT_EQ(F(n, one(0x1369)), icuNumbering("ethi", n)) << n;
  // Above, ICU writes a zero pair between two ten thousands with its own U+137C; here a zero
  // pair at an odd place writes nothing.
  EXPECT_EQ(icuNumbering("ethi", 2000000086414),
            cps({0x136A, 0x137C, 0x137C, 0x137C, 0x1370, 0x137C, 0x1377, 0x136C, 0x137B, 0x1372,
                 0x136C}));
  EXPECT_EQ(F(2000000086414, one(0x1369)),
            cps({0x136A, 0x137C, 0x137C, 0x1370, 0x137C, 0x1377, 0x136C, 0x137B, 0x1372, 0x136C}));
}

// ---- Ethiopic through the counter styles' conversion ----

TEST(FormatNumberRows, Ethiopic) {
  checkRows({{0x1369, 1, cps({0x1369})},
             {0x1369, 10, cps({0x1372})},
             {0x1369, 100, cps({0x137B})},
             {0x1369, 10000, cps({0x137C})},
             {0x1369, 0, "0"},
             {0x1369, -1, "-1"}});
  EXPECT_FALSE(F(LLONG_MAX, one(0x1369)).empty());
  EXPECT_EQ(F(LLONG_MAX, one(0x1369)), utf8(util::formatEthiopic(LLONG_MAX)));
}

// ---- convertKansuji ----

namespace {
std::string K(const UnicodeString& text, ZQNameEnum mode, const ZQName& digits = ZQN_kanji,
              const UnicodeString& units = u"") {
  return utf8(ZQUtil::convertKansuji(text, mode, digits, units, u""));
}
std::string KN(long long n, ZQNameEnum mode, const ZQName& digits = ZQN_kanji,
               const UnicodeString& units = u"") {
  return utf8(ZQUtil::convertKansuji(n, mode, digits, units, u""));
}
}  // namespace

TEST(FormatNumberKansuji, ModesPickTheConversion) {
  EXPECT_EQ(K(u"1234", ZQN_readable), "千二百三十四");
  EXPECT_EQ(K(u"1234", ZQN_grouping), "一二三四");
  EXPECT_EQ(K(u"10000", ZQN_grouping), "一万");
  EXPECT_EQ(K(u"10000", ZQN_simple), "一〇〇〇〇");
  // Any other mode is simple.
  EXPECT_EQ(K(u"10000", ZQN_auto), "一〇〇〇〇");
  EXPECT_EQ(K(u"10000", ZQN_EMPTY), "一〇〇〇〇");
  EXPECT_EQ(K(u"100000000", ZQN_readable), "一億万");
}

TEST(FormatNumberKansuji, TextBetweenDigitRunsIsCopied) {
  EXPECT_EQ(K(u"第12章 3", ZQN_simple), "第一二章 三");
  EXPECT_EQ(K(u"第12章 3", ZQN_readable), "第十二章 三");
  EXPECT_EQ(K(u"", ZQN_readable), "");
  EXPECT_EQ(K(u"abc", ZQN_grouping), "abc");
}

TEST(FormatNumberKansuji, GroupingTextPathMarksInsideTheSpan) {
  EXPECT_EQ(K(u"x1.5", ZQN_grouping), "x一・五");
  EXPECT_EQ(K(u"12a34", ZQN_grouping), "一二ａ三四");
  EXPECT_EQ(K(u"x1.5", ZQN_simple), "x一.五");
}

TEST(FormatNumberKansuji, LatinDigitsAreFullWidth) {
  EXPECT_EQ(K(u"1234567890", ZQN_simple, ZQN_latin), "１２３４５６７８９０");
  EXPECT_EQ(K(u"1234", ZQN_readable, ZQN_latin), "千２百３十４");
  EXPECT_EQ(K(u"20000", ZQN_grouping, ZQN_latin), "２万");
}

TEST(FormatNumberKansuji, OtherDigitNamesGiveUpToTenCodePoints) {
  EXPECT_EQ(K(u"0123", ZQN_simple, ZQName(UnicodeString(u"abc"))), "abc三");
  EXPECT_EQ(K(u"9876543210", ZQN_simple, ZQName(UnicodeString(u"ABCDEFGHIJKLMN"))), "JIHGFEDCBA");
  EXPECT_EQ(K(u"12", ZQN_simple, ZQName(UnicodeString(u"\U00020000\U00020001\U00020002"))),
            cps({0x20001, 0x20002}));
  // The empty name changes nothing.
  EXPECT_EQ(K(u"12", ZQN_simple, ZQName()), "一二");
}

TEST(FormatNumberKansuji, UnitsReplaceTenHundredThousandThenThePowers) {
  EXPECT_EQ(K(u"1234", ZQN_readable, ZQN_kanji, u"XYZ"), "Z二Y三X四");
  EXPECT_EQ(K(u"12", ZQN_readable, ZQN_kanji, u"X"), "X二");
  EXPECT_EQ(K(u"120", ZQN_readable, ZQN_kanji, u"X"), "百二X");
  EXPECT_EQ(K(u"10000", ZQN_readable, ZQN_kanji, u"XYZW"), "一W");
  EXPECT_EQ(K(u"100000000", ZQN_grouping, ZQN_kanji, u"XYZWV"), "一V");
  // Twelve powers at most: the fifteenth code point and beyond are not used.
  EXPECT_EQ(K(u"1" + UnicodeString(48, u'0', 48), ZQN_grouping, ZQN_kanji, u"XYZabcdefghijklQ"),
            "一l");
}

TEST(FormatNumberKansuji, NumberFormIsItsDecimalText) {
  EXPECT_EQ(KN(1234, ZQN_readable), "千二百三十四");
  EXPECT_EQ(KN(-1234, ZQN_readable), "-千二百三十四");
  EXPECT_EQ(KN(0, ZQN_readable), "〇");
  EXPECT_EQ(KN(105, ZQN_simple, ZQN_latin), "１０５");
  for (long long n : {-99999LL, 7LL, 10000LL, 123456789LL, LLONG_MAX, LLONG_MIN}) {
    SCOPED_TRACE(n);
    EXPECT_EQ(KN(n, ZQN_grouping), K(UnicodeString::fromUTF8(std::to_string(n)), ZQN_grouping));
  }
}

TEST(FormatNumberKansuji, ReservedTakesNoPart) {
  EXPECT_EQ(ZQUtil::convertKansuji(u"1234", ZQN_readable, ZQN_kanji, u"", u"anything"),
            ZQUtil::convertKansuji(u"1234", ZQN_readable, ZQN_kanji, u"", u""));
  EXPECT_EQ(ZQUtil::convertKansuji(42, ZQN_grouping, ZQN_latin, u"", u"x"),
            ZQUtil::convertKansuji(42, ZQN_grouping, ZQN_latin, u"", u""));
}

// ---- The alphabet maps: built once under the library lock, then read without it ----

namespace {
// Holds the library lock on a thread of its own until released.
class LibraryLockHolder {
 public:
  LibraryLockHolder() {
    m_thread = std::thread([this] {
      ZQMutex guard;
      m_held.set_value();
      m_release.get_future().wait();
    });
    m_held.get_future().wait();
  }
  void release() {
    if (!m_released) m_release.set_value();
    m_released = true;
    m_thread.join();
  }
  ~LibraryLockHolder() {
    if (!m_released) release();
  }

 private:
  std::thread m_thread;
  std::promise<void> m_held, m_release;
  bool m_released = false;
};
}  // namespace

TEST(FormatNumberMaps, LaterCallsTakeNoLock) {
  const ZQLang ru("ru");
  EXPECT_EQ(utf8(ZQUtil::formatNumber(2, u"a", ru)), cps({0x0431}));
  LibraryLockHolder holder;
  auto result = std::async(std::launch::async, [&] { return ZQUtil::formatNumber(3, u"a", ru); });
  const bool done = result.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
  holder.release();
  EXPECT_TRUE(done) << "formatting waited for the library lock";
  EXPECT_EQ(utf8(result.get()), cps({0x0432}));
}

TEST(FormatNumberMaps, FirstUseBuildsUnderTheLibraryLockAndCleanupReleases) {
  ZQUtil::cleanup();
  const ZQLang el("el");
  // Without a language no map is needed, and nothing waits.
  EXPECT_EQ(F(2, u"a"), "b");
  LibraryLockHolder holder;
  auto result = std::async(std::launch::async, [&] { return ZQUtil::formatNumber(2, u"a", el); });
  const bool waited =
      result.wait_for(std::chrono::milliseconds(200)) == std::future_status::timeout;
  holder.release();
  EXPECT_TRUE(waited) << "the maps were built without the library lock";
  EXPECT_EQ(utf8(result.get()), cps({0x03B2}));
}

TEST(FormatNumberMaps, ManyThreadsOnFirstUseAgree) {
  ZQUtil::cleanup();
  std::vector<std::thread> threads;
  std::atomic<int> wrong{0};
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&wrong, t] {
      const char* tags[] = {"ru", "de", "el", "uk"};
      const char* tag = tags[t % 4];
      for (int i = 0; i < 200; ++i) {
        const std::string a = utf8(ZQUtil::formatNumber(27, u"a", ZQLang(tag)));
        const std::string expected = t % 4 == 0   ? cps({0x044D})
                                     : t % 4 == 1 ? "ß"
                                     : t % 4 == 2 ? cps({0x03B1, 0x03B3})
                                                  : cps({0x0447});
        if (a != expected) ++wrong;
      }
    });
  }
  for (auto& th : threads) th.join();
  EXPECT_EQ(wrong.load(), 0);
}

// ---- Kana tables checked against Unicode's own data ----

namespace {
UnicodeString nfkc(const UnicodeString& s) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* n = icu::Normalizer2::getNFKCInstance(status);
  return U_SUCCESS(status) ? n->normalize(s, status) : UnicodeString();
}

UnicodeString letterOf(long long i, UChar32 first) {
  return ZQUtil::formatNumber(i, UnicodeString(first), ZQLang());
}
}  // namespace

TEST(FormatNumberKana, GojuonIsEveryPlainHiraganaButTheTwoObsolete) {
  // Plain: not small, not voiced (no decomposition), and not U+3090 / U+3091.
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* nfd = icu::Normalizer2::getNFDInstance(status);
  ASSERT_TRUE(U_SUCCESS(status));
  const UnicodeString smallKana(u"\u3041\u3043\u3045\u3047\u3049\u3063\u3083\u3085\u3087\u308E");
  UnicodeString expected;
  for (UChar32 c = 0x3042; c <= 0x3093; ++c) {
    UnicodeString decomposed;
    if (smallKana.indexOf(c) >= 0 || c == 0x3090 || c == 0x3091) continue;
    if (nfd->getDecomposition(c, decomposed)) continue;
    expected.append(c);
  }
  ASSERT_EQ(expected.length(), 46);
  UnicodeString got;
  for (int i = 1; i <= 46; ++i) got.append(letterOf(i, 0x3042));
  EXPECT_EQ(utf8(got), utf8(expected));
}

TEST(FormatNumberKana, IrohaIsAPermutationOfGojuonWithTheTwoObsolete) {
  UnicodeString gojuon, iroha;
  for (int i = 1; i <= 46; ++i) gojuon.append(letterOf(i, 0x3042));
  gojuon.append(UChar32{0x3090}).append(UChar32{0x3091});
  for (int i = 1; i <= 47; ++i) iroha.append(letterOf(i, 0x3044));
  std::vector<UChar32> x, y;
  for (int32_t i = 0; i < gojuon.length(); ++i) x.push_back(gojuon.charAt(i));
  for (int32_t i = 0; i < iroha.length(); ++i) y.push_back(iroha.charAt(i));
  std::sort(x.begin(), x.end());
  std::sort(y.begin(), y.end());
  // The iroha has no U+3093.
  x.erase(std::find(x.begin(), x.end(), 0x3093));
  EXPECT_EQ(x, y);
}

TEST(FormatNumberKana, KatakanaAreTheHiraganaMoved) {
  for (int i = 1; i <= 46; ++i)
    EXPECT_EQ(letterOf(i, 0x30A2).char32At(0), letterOf(i, 0x3042).char32At(0) + 0x60) << i;
  for (int i = 1; i <= 47; ++i)
    EXPECT_EQ(letterOf(i, 0x30A4).char32At(0), letterOf(i, 0x3044).char32At(0) + 0x60) << i;
}

TEST(FormatNumberKana, HalfWidthFormsAreTheKatakanaCompatibilityForms) {
  for (int i = 1; i <= 46; ++i)
    EXPECT_EQ(utf8(nfkc(letterOf(i, 0xFF71))), utf8(letterOf(i, 0x30A2))) << i;
  // The half-width iroha is the katakana iroha without U+30F0 and U+30F1.
  int half = 1;
  for (int i = 1; i <= 47; ++i) {
    const UnicodeString full = letterOf(i, 0x30A4);
    if (full.charAt(0) == 0x30F0 || full.charAt(0) == 0x30F1) continue;
    EXPECT_EQ(utf8(nfkc(letterOf(half, 0xFF72))), utf8(full)) << i;
    ++half;
  }
  EXPECT_EQ(half, 46);
}
