// Character classification: predicates, ICU wrappers, orientation, kana and radicals.
#include <gtest/gtest.h>

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include <climits>
#include <cstdlib>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "common/ZQChar.h"
#include "unicode/ZQCharTables.h"

using namespace ZQCommonNS;

namespace {

// The documented data, kept here as text so the tests read it independently of the library's
// own tables: "first-last:svo/mvo", "first-last", plain values and "radical:ideograph".
const char* const kTR50Text =
    "0-1F:2/2 20-27:1/2 28-29:2/2 2A-2C:1/2 2D:2/2 2E-5A:1/2 5B:2/2 5C:1/2 5D:2/2 5E-7A:1/2 "
    "7B:2/2 7C:1/2 7D:2/2 7E:1/2 7F-9F:2/2 A0-A6:1/2 A8:1/2 AA:1/2 AB:2/2 AC:1/2 AD:2/2 "
    "AF-B5:1/2 B7-BA:1/2 BB:2/2 BF-2E4:1/2 2EC-589:1/2 58A:2/2 58B-5BD:1/2 5BE:2/2 "
    "5BF-10FF:1/2 1200-13FF:1/2 1400:2/2 1680-169F:2/2 16A0-17FF:1/2 1900-1AAF:1/2 "
    "1B00-1C7F:1/2 1CC0-1FFF:1/2 2000-2006:2/2 2007:1/2 2008:8/2 2009-2015:2/2 2016-2017:1/2 "
    "2018-201F:16/2 2022-2023:1/2 2024-2026:2/2 2027-2029:1/2 202A-202F:2/2 2032-2038:1/2 "
    "2039-203A:2/2 203E:1/2 203F-2040:2/2 2041:1/2 2043:2/2 2045-2046:2/2 204A-2050:1/2 "
    "2052-2053:1/2 2054:2/2 2055-205E:1/2 205F-2064:2/2 206A-206F:2/2 2070-20DC:1/2 20E1:1/2 "
    "20E5-20FF:1/2 2118:1/2 2132:1/2 2140-2144:1/2 214B:1/2 214E:1/2 2190-22FF:1/2 "
    "2308-230B:1/2 2320-2321:1/2 2329-232A:2/2 232C-237C:1/2 239B-23B3:1/2 23B7-23B9:1/2 "
    "23D0:1/2 23DC-23E1:1/2 2500-259F:2/2 261A-261F:1/2 2768-2775:2/2 2794-27C4:1/2 "
    "27C5-27C6:2/2 27C7-27E5:1/2 27E6-27EF:2/2 27F0-2982:1/2 2983-2998:2/2 2999-29D7:1/2 "
    "29D8-29DB:2/2 29DC-29FB:1/2 29FC-29FD:2/2 29FE-2B11:1/2 2B30-2B4C:1/2 2C00-2E16:1/2 "
    "2E17:2/2 2E18-2E19:1/2 2E1A:2/2 2E1B-2E1F:1/2 2E20-2E29:2/2 2E2A-2E39:1/2 2E3A-2E3B:2/2 "
    "2E3C-2E7F:1/2 3001-3002:16/16 3008-3011:32/32 3014-301F:32/32 3030:2/2 3041:16/16 "
    "3043:16/16 3045:16/16 3047:16/16 3049:16/16 3063:16/16 3083:16/16 3085:16/16 3087:16/16 "
    "308E:16/16 3095-3096:16/16 309B-309E:16/16 30A0:32/32 30A1:16/16 30A3:16/16 30A5:16/16 "
    "30A7:16/16 30A9:16/16 30C3:16/16 30E3:16/16 30E5:16/16 30E7:16/16 30EE:16/16 "
    "30F5-30F6:16/16 30FC:32/32 31F0-31FF:16/16 3300-3357:16/16 337B-337F:16/16 A4D0-A83F:1/2 "
    "A880-A95F:1/2 A980-ABFF:1/2 D800-DFFF:1/2 FB00-FE0F:1/2 FE20-FE2F:1/2 FE49-FE4F:1/2 "
    "FE50-FE52:16/16 FE58:2/2 FE59-FE5E:32/32 FE63-FE66:2/2 FE70-FEFE:1/2 FEFF:2/2 FF00:1/2 "
    "FF01:16/16 FF08-FF09:32/32 FF0C:16/16 FF0D:2/2 FF0E:16/16 FF1A-FF1B:32/32 FF1C-FF1E:2/2 "
    "FF3B:32/32 FF3D:32/32 FF3F:32/32 FF5B-FF60:32/32 FF61:16/2 FF62-FF63:2/2 FF64:16/2 "
    "FF65:2/2 FF66:1/2 FF67-FF6F:16/2 FF70:32/2 FF71-FFDF:1/2 FFE3:32/32 FFE8-FFEF:1/2 "
    "FFF9-FFFB:2/2 FFFE-101FF:1/2 10280-102DF:1/2 10300-1034F:1/2 10380-103DF:1/2 "
    "10400-104AF:1/2 10800-1085F:1/2 10900-1093F:1/2 10980-10A7F:1/2 10B00-10B7F:1/2 "
    "10C00-10C4F:1/2 10E60-10E7F:1/2 11000-1114F:1/2 11180-111DF:1/2 11680-116CF:1/2 "
    "12000-1247F:1/2 16800-16A3F:1/2 16F00-16F9F:1/2 1D200-1D24F:1/2 1D400-1D7FF:1/2 "
    "1EE00-1EEFF:1/2 1F200-1F201:16/16 E0100-E01EF:1/2";

const char* const kNoVerticalText =
    "0000-10FF 1200-2017 201A-201B 201E-201F 2022-202F 2031 2034-203A 203C-2102 2104-2115 "
    "2117-2120 2122-212A 212C-214F 2190-23FF 2500-259F 25A2-25B1 25B4-25BB 25BE-25C5 "
    "25C8-25CA 25CC-25CD 25D0-25EE 25F0-2604 2607-263F 2641 2643-2669 266B-266C 266E "
    "2670-2775 2794-2E7F 3013 3030 3190-319F A000-ABFF FB00-FE0F FE70-FEFF FF0D FF1C-FF1E "
    "FF61-FFDF FFE8-1FFFF";

const char* const kHalfKanaText =
    "3002 300C 300D 3001 30FB 30F2 30A1 30A3 30A5 30A7 30A9 30E3 30E5 30E7 30C3 30FC 30A2 "
    "30A4 30A6 30A8 30AA 30AB 30AD 30AF 30B1 30B3 30B5 30B7 30B9 30BB 30BD 30BF 30C1 30C4 "
    "30C6 30C8 30CA 30CB 30CC 30CD 30CE 30CF 30D2 30D5 30D8 30DB 30DE 30DF 30E0 30E1 30E2 "
    "30E4 30E6 30E8 30E9 30EA 30EB 30EC 30ED 30EF 30F3 309B 309C";

const char* const kCjkRadicalText =
    "2E83:4E5A 2E85:4EBB 2E87:51E0 2E89:5202 2E8B:353E 2E8F:5C23 2E90:5C22 2E92:5DF3 "
    "2E93:5E7A 2E94:5F51 2E95:5F50 2E96:5FC4 2E98:624C 2E99:6535 2E9B:65E1 2E9E:6B7A "
    "2E9F:6BCD 2EA0:6C11 2EA1:6C35 2EA2:6C3A 2EA3:706C 2EA4:722B 2EA6:4E2C 2EA8:72AD "
    "2EAD:793B 2EAF:7CF9 2EB0:7E9F 2EB1:7F53 2EB2:7F52 2EB9:8002 2EBA:8080 2EBD:81FC "
    "2EBE:8279 2EC1:864E 2EC2:8864 2EC3:8980 2EC4:897F 2EC5:89C1 2EC6:89D2 2EC8:8BA0 "
    "2EC9:8D1D 2ECB:8F66 2ECC:8FB6 2ECD:8FB6 2ECE:8FB6 2ED0:9485 2ED1:9577 2ED2:9578 "
    "2ED3:957F 2ED4:95E8 2ED6:961D 2ED8:9752 2ED9:97E6 2EDA:9875 2EDB:98CE 2EDC:98DE "
    "2EDD:98DF 2EDF:98E0 2EE0:9963 2EE2:9A6C 2EE3:9AA8 2EE4:9B3C 2EE5:9C7C 2EE6:9E1F "
    "2EE8:9EA6 2EE9:9EC4 2EEA:9EFE 2EEB:6589 2EEC:9F50 2EED:6B6F 2EEE:9F7F 2EF0:9F99 "
    "2EF1:9F9C 2EF2:4E80 2EF3:9F9F";

struct Range {
  int first;
  int last;
};

// Parses "00A7-00A8 00B0 ..." into ranges.
std::vector<Range> parseRanges(const std::string& text) {
  std::vector<Range> out;
  std::istringstream in(text);
  std::string item;
  while (in >> item) {
    const auto dash = item.find('-');
    const int first = static_cast<int>(std::strtol(item.substr(0, dash).c_str(), nullptr, 16));
    const int last =
        dash == std::string::npos
            ? first
            : static_cast<int>(std::strtol(item.substr(dash + 1).c_str(), nullptr, 16));
    out.push_back({first, last});
  }
  return out;
}

// A set of code points given as text; `negatives` adds every value below 0.
struct CodeSet {
  std::vector<Range> ranges;
  bool negatives = false;
  explicit CodeSet(const std::string& text, bool neg = false)
      : ranges(parseRanges(text)), negatives(neg) {}
  bool contains(int c) const {
    if (c < 0) return negatives;
    for (const Range& r : ranges) {
      if (c >= r.first && c <= r.last) return true;
    }
    return false;
  }
};

// Every code point, a margin on both sides, and the extremes of int.
std::vector<int> sweepValues() {
  std::vector<int> values;
  for (int c = -0x10000; c < 0x120000; ++c) values.push_back(c);
  for (int c : {INT_MIN, INT_MIN + 1, -0x110000, 0x7FFFFFF0, INT_MAX - 1, INT_MAX}) {
    values.push_back(c);
  }
  return values;
}

const std::vector<int>& sweep() {
  static const std::vector<int> values = sweepValues();
  return values;
}

// Compares a predicate with a reference over the whole sweep, reporting the first mismatches.
void expectSame(const char* name, const std::function<bool(int)>& actual,
                const std::function<bool(int)>& expected) {
  int mismatches = 0;
  for (int c : sweep()) {
    if (actual(c) != expected(c)) {
      if (++mismatches <= 5) {
        ADD_FAILURE() << name << " differs at " << std::hex << c << ": got " << actual(c);
      }
    }
  }
  EXPECT_EQ(mismatches, 0) << name;
}

// Same, with the reference given as a code-point set; the bit vector keeps the sweep fast.
void expectSet(const char* name, bool (*actual)(int), const CodeSet& set) {
  std::vector<bool> bits(0x120000);
  for (int c = 0; c < 0x120000; ++c) bits[c] = set.contains(c);
  expectSame(name, actual, [&](int c) {
    if (c < 0) return set.negatives;
    return c < 0x120000 && bits[c];
  });
}

int era(int c) { return c == 0x32FF ? 0x337B : c; }

// General-category groups by the category numbers themselves.
bool inGroup(int cat, std::initializer_list<UCharCategory> group) {
  for (UCharCategory g : group) {
    if (cat == g) return true;
  }
  return false;
}
bool catLetter(int c) {
  return inGroup(u_charType(c), {U_UPPERCASE_LETTER, U_LOWERCASE_LETTER, U_TITLECASE_LETTER,
                                 U_MODIFIER_LETTER, U_OTHER_LETTER});
}
bool catNumber(int c) {
  return inGroup(u_charType(c), {U_DECIMAL_DIGIT_NUMBER, U_LETTER_NUMBER, U_OTHER_NUMBER});
}
bool catPunct(int c) {
  return inGroup(u_charType(c), {U_DASH_PUNCTUATION, U_START_PUNCTUATION, U_END_PUNCTUATION,
                                 U_CONNECTOR_PUNCTUATION, U_OTHER_PUNCTUATION,
                                 U_INITIAL_PUNCTUATION, U_FINAL_PUNCTUATION});
}
bool catSymbol(int c) {
  return inGroup(u_charType(c),
                 {U_MATH_SYMBOL, U_CURRENCY_SYMBOL, U_MODIFIER_SYMBOL, U_OTHER_SYMBOL});
}
int lineBreak(int c) { return u_getIntPropertyValue(c, UCHAR_LINE_BREAK); }
int eastAsianWidth(int c) { return u_getIntPropertyValue(era(c), UCHAR_EAST_ASIAN_WIDTH); }

UChar32 nfkcOf(UChar32 c) {
  UErrorCode status = U_ZERO_ERROR;
  const icu::Normalizer2* nfkc = icu::Normalizer2::getNFKCInstance(status);
  EXPECT_TRUE(U_SUCCESS(status));
  UnicodeString s;
  s.append(c);
  UnicodeString n = nfkc->normalize(s, status);
  EXPECT_TRUE(U_SUCCESS(status));
  return n.length() == U16_LENGTH(n.char32At(0)) ? n.char32At(0) : -1;
}

struct TR50Entry {
  int first;
  int last;
  int svo;
  int mvo;
};

std::vector<TR50Entry> parseTR50() {
  std::vector<TR50Entry> out;
  std::istringstream in(kTR50Text);
  std::string item;
  while (in >> item) {
    const auto colon = item.find(':');
    const auto slash = item.find('/');
    const Range r = parseRanges(item.substr(0, colon))[0];
    out.push_back({r.first, r.last, std::atoi(item.substr(colon + 1, slash - colon - 1).c_str()),
                   std::atoi(item.substr(slash + 1).c_str())});
  }
  return out;
}

std::vector<int> parseValues(const char* text) {
  std::vector<int> out;
  for (const Range& r : parseRanges(text)) out.push_back(r.first);
  return out;
}

int reduceTR50(int raw, bool rotateFallback) {
  if (raw == 2 || raw == 64) return raw;
  if (raw == 32) return rotateFallback ? 2 : 1;
  return 1;
}

UnicodeString u(const char16_t* s) { return UnicodeString(s); }

}  // namespace

// ---- Edge cases of the classification.

TEST(ZQChar, FullwidthTildeIsPunctuationButNotHalf) {
  EXPECT_FALSE(ZQChar::isHalf(0xFF5E));
  EXPECT_TRUE(ZQChar::isPunct(0xFF5E));
  EXPECT_EQ(u_charType(0xFF5E), U_MATH_SYMBOL);  // it is punctuation by our decision only
}

TEST(ZQChar, PunctOverloadsDifferAtFullwidthTilde) {
  EXPECT_FALSE(ZQChar::isPunct(ZQChar::getCategory(0xFF5E)));
  EXPECT_TRUE(ZQChar::isPunct(0xFF5E));
  EXPECT_TRUE(ZQChar::isPunct(U_START_PUNCTUATION));
  EXPECT_TRUE(ZQChar::isPunct(U_FINAL_PUNCTUATION));
  EXPECT_FALSE(ZQChar::isPunct(U_MATH_SYMBOL));
}

TEST(ZQChar, PunctOfAnOutOfRangeCategoryIsFalse) {
  // Values past the last category (the enumeration can hold up to 31) are no punctuation.
  EXPECT_FALSE(ZQChar::isPunct(static_cast<UCharCategory>(U_CHAR_CATEGORY_COUNT)));
  EXPECT_FALSE(ZQChar::isPunct(static_cast<UCharCategory>(31)));
}

TEST(ZQChar, OpenParenByLineBreakClass) {
  EXPECT_TRUE(ZQChar::isOpenParenEtc(0x3008));
  EXPECT_FALSE(ZQChar::isOpenParenEtc('"'));
  EXPECT_TRUE(ZQChar::isOpenParenEtc('('));
  EXPECT_TRUE(ZQChar::isOpenParenEtc(0x2018));
  EXPECT_TRUE(ZQChar::isOpenParenEtc(0x201C));
  EXPECT_FALSE(ZQChar::isOpenParenEtc(0x2019));
  EXPECT_TRUE(ZQChar::isCloseParenEtc(0x3009));
  EXPECT_TRUE(ZQChar::isCloseParenEtc(')'));     // class CP
  EXPECT_TRUE(ZQChar::isCloseParenEtc(0x3001));  // ideographic comma, class CL
  EXPECT_TRUE(ZQChar::isCloseParenEtc(0x2019));
  EXPECT_TRUE(ZQChar::isCloseParenEtc(0x201D));
  EXPECT_FALSE(ZQChar::isCloseParenEtc(0x3008));
}

TEST(ZQChar, HalfPunctIsAnyOfTheThreeSets) {
  EXPECT_TRUE(ZQChar::isHalfPunct(0x300C));
  EXPECT_TRUE(ZQChar::isHalfPunct(0x300D));
  EXPECT_TRUE(ZQChar::isHalfPunct(0x30FB));
  EXPECT_TRUE(ZQChar::isHalfPunct(0xFF1A));
  EXPECT_FALSE(ZQChar::isHalfPunct(0x3042));
  expectSame("isHalfPunct", ZQChar::isHalfPunct, [](int c) {
    return ZQChar::isOpenParenEtc(c) || ZQChar::isCloseParenEtc(c) || ZQChar::isZenkakuMidDotEtc(c);
  });
}

TEST(ZQChar, EraNameReadsAsHeiseiWhereTold) {
  EXPECT_EQ(ZQChar::getEastAsianWidth(0x32FF), ZQChar::getEastAsianWidth(0x337B));
  EXPECT_EQ(ZQChar::getLineBreak(0x32FF), u_getIntPropertyValue(0x32FF, UCHAR_LINE_BREAK));
  // The block tells the two apart, so it shows which code point was asked.
  EXPECT_EQ(ZQChar::getIntPropertyValue(0x32FF, UCHAR_BLOCK),
            u_getIntPropertyValue(0x337B, UCHAR_BLOCK));
  EXPECT_NE(ZQChar::getIntPropertyValue(0x32FF, UCHAR_BLOCK),
            u_getIntPropertyValue(0x32FF, UCHAR_BLOCK));
  EXPECT_EQ(ZQChar::getCategory(0x32FF), ZQChar::getCategory(0x337B));
  EXPECT_EQ(ZQChar::isZenkaku(0x32FF), ZQChar::isZenkaku(0x337B));
  EXPECT_FALSE(ZQChar::isUndefined(0x32FF));
  EXPECT_TRUE(ZQChar::isGraphemeCluster(0x32FF));
  EXPECT_FALSE(ZQChar::isZeroWidthControlCode(0x32FF));
}

TEST(ZQChar, TR50OfLatinCapitalA) {
  EXPECT_EQ(ZQChar::getTR50SVO('A'), ZQChar::TR50_UPRIGHT);
  EXPECT_EQ(ZQChar::getTR50MVO('A'), ZQChar::TR50_ROTATED);
}

TEST(ZQChar, TR50RotateFallbackOfAngleBracket) {
  EXPECT_EQ(ZQChar::getTR50SVO(0x3008, nullptr, false), 1);
  EXPECT_EQ(ZQChar::getTR50SVO(0x3008, nullptr, true), 2);
  EXPECT_EQ(ZQChar::getTR50MVO(0x3008, nullptr, false), 1);
  EXPECT_EQ(ZQChar::getTR50MVO(0x3008, nullptr, true), 2);
}

TEST(ZQChar, TR50OfCodePointInNoRangeIsUpright) {
  EXPECT_EQ(ZQChar::getTR50SVO(0x4E00), 1);
  EXPECT_EQ(ZQChar::getTR50MVO(0x4E00), 1);
  EXPECT_EQ(ZQChar::getTR50MVO(0x4E00, nullptr, true), 1);
  EXPECT_EQ(ZQChar::getTR50SVO(-1), 1);
  EXPECT_EQ(ZQChar::getTR50MVO(INT_MIN), 1);
  EXPECT_EQ(ZQChar::getTR50MVO(INT_MAX), 1);
  EXPECT_EQ(ZQChar::getTR50SVO(0x110000), 1);
}

TEST(ZQChar, TR50SpecialAndTransformedFallBackToUpright) {
  EXPECT_EQ(ZQChar::getTR50SVO(0x2008, nullptr, true), 1);  // 8
  EXPECT_EQ(ZQChar::getTR50MVO(0x2008, nullptr, true), 2);
  EXPECT_EQ(ZQChar::getTR50SVO(0x3001, nullptr, true), 1);  // 16
  EXPECT_EQ(ZQChar::getTR50SVO(0xFF70, nullptr, true), 2);  // 32 with fallback
  EXPECT_EQ(ZQChar::getTR50MVO(0xFF70, nullptr, false), 2);
}

TEST(ZQChar, TR50OverridesWinUnlessZero) {
  ZQChar::TR50Overrides overrides;
  overrides[0x4E00] = {64, 0};
  overrides['A'] = {0, 1};
  overrides[0x3008] = {2, 32};
  overrides[0x3001] = {3, 2};
  EXPECT_EQ(ZQChar::getTR50SVO(0x4E00, &overrides), ZQChar::TR50_CALLER);
  EXPECT_EQ(ZQChar::getTR50MVO(0x4E00, &overrides), 1);  // 0: no range, upright
  EXPECT_EQ(ZQChar::getTR50SVO('A', &overrides), 1);     // 0: the table's 1
  EXPECT_EQ(ZQChar::getTR50MVO('A', &overrides), 1);     // override 1 beats the table's 2
  EXPECT_EQ(ZQChar::getTR50SVO(0x3008, &overrides), 2);
  EXPECT_EQ(ZQChar::getTR50MVO(0x3008, &overrides, false), 1);
  EXPECT_EQ(ZQChar::getTR50MVO(0x3008, &overrides, true), 2);
  EXPECT_EQ(ZQChar::getTR50SVO(0x3001, &overrides), 1);  // any other value is upright
  EXPECT_EQ(ZQChar::getTR50MVO(0x3001, &overrides), 2);
  EXPECT_EQ(ZQChar::getTR50SVO('B', &overrides), 1);  // not overridden
  EXPECT_EQ(ZQChar::getTR50MVO('B', &overrides), 2);
}

TEST(ZQChar, TR50MatchesTheTableForEveryCodePoint) {
  const std::vector<TR50Entry> table = parseTR50();
  ASSERT_EQ(table.size(), 191u);
  std::vector<int> svo(0x120000, 1), mvo(0x120000, 1);
  for (const TR50Entry& e : table) {
    for (int c = e.first; c <= e.last; ++c) {
      svo[c] = e.svo;
      mvo[c] = e.mvo;
    }
  }
  int mismatches = 0;
  for (int c : sweep()) {
    const bool in = c >= 0 && c < 0x120000;
    for (bool fallback : {false, true}) {
      const int s = in ? reduceTR50(svo[c], fallback) : 1;
      const int m = in ? reduceTR50(mvo[c], fallback) : 1;
      if (ZQChar::getTR50SVO(c, nullptr, fallback) != s ||
          ZQChar::getTR50MVO(c, nullptr, fallback) != m) {
        if (++mismatches <= 5) ADD_FAILURE() << "TR50 differs at " << std::hex << c;
      }
    }
  }
  EXPECT_EQ(mismatches, 0);
}

TEST(ZQChar, TR50ResultIsOnlyUprightRotatedOrCaller) {
  ZQChar::TR50Overrides overrides;
  for (int v = 0; v < 256; ++v) overrides[0x100 + v] = {uint8_t(v), uint8_t(v)};
  for (int v = 0; v < 256; ++v) {
    for (bool fallback : {false, true}) {
      const int s = ZQChar::getTR50SVO(0x100 + v, &overrides, fallback);
      EXPECT_TRUE(s == 1 || s == 2 || s == 64) << v;
      if (v != 0) EXPECT_EQ(s, reduceTR50(v, fallback)) << v;
    }
  }
}

TEST(ZQChar, ValidChar11RejectsDelete) {
  EXPECT_FALSE(ZQChar::isValidChar11(0x7F));
  EXPECT_TRUE(ZQChar::isValidChar(0x7F));
  EXPECT_TRUE(ZQChar::isValidChar11(0x85));
  EXPECT_FALSE(ZQChar::isValidChar11(0x86));
  EXPECT_FALSE(ZQChar::isValidChar(0xFFFE));
  EXPECT_FALSE(ZQChar::isValidChar(0xD800));
  EXPECT_TRUE(ZQChar::isValidChar(0x10FFFF));
  EXPECT_FALSE(ZQChar::isValidChar(0x110000));
  EXPECT_FALSE(ZQChar::isValidChar(-1));
}

TEST(ZQChar, MinusIsNoNameCharInCssExpressions) {
  EXPECT_FALSE(ZQChar::isNCNameCharForCSSExp('-'));
  EXPECT_TRUE(ZQChar::isNCNameChar('-'));
  EXPECT_TRUE(ZQChar::isNCNameCharForCSSExp('.'));
  EXPECT_TRUE(ZQChar::isNCNameCharForCSSExp('a'));
  EXPECT_FALSE(ZQChar::isNCNameCharForCSSExp(':'));
}

TEST(ZQChar, InseparableRunOfThreeDashes) {
  const UnicodeString text = u"\u2014\u2014\u2014";
  EXPECT_TRUE(ZQChar::isInseparableCharEx(text, 0, ZQChar::INSEPARABLE_ALWAYS));
  EXPECT_TRUE(ZQChar::isInseparableCharEx(text, 0, ZQChar::INSEPARABLE_SHORT_RUNS));
  EXPECT_FALSE(ZQChar::isInseparableCharEx(text, 0, ZQChar::INSEPARABLE_EXACT_PAIR));
  EXPECT_EQ(ZQChar::INSEPARABLE_ALWAYS, 0);
  EXPECT_EQ(ZQChar::INSEPARABLE_SHORT_RUNS, 1);
  EXPECT_EQ(ZQChar::INSEPARABLE_EXACT_PAIR, 2);
}

TEST(ZQChar, InseparableMethodsOnLongerRunsAndPairs) {
  const UnicodeString four = u"\u2026\u2026\u2026\u2026";
  // In the middle of four both neighbours are equal: method 1 lets the line break there.
  EXPECT_TRUE(ZQChar::isInseparableCharEx(four, 1, ZQChar::INSEPARABLE_ALWAYS));
  EXPECT_FALSE(ZQChar::isInseparableCharEx(four, 1, ZQChar::INSEPARABLE_SHORT_RUNS));
  EXPECT_TRUE(ZQChar::isInseparableCharEx(four, 2, ZQChar::INSEPARABLE_SHORT_RUNS));
  EXPECT_FALSE(ZQChar::isInseparableCharEx(four, 2, ZQChar::INSEPARABLE_EXACT_PAIR));
  EXPECT_TRUE(ZQChar::isInseparableCharEx(four, 0, ZQChar::INSEPARABLE_SHORT_RUNS));
  EXPECT_FALSE(ZQChar::isInseparableCharEx(four, 3, ZQChar::INSEPARABLE_ALWAYS));  // no next
  const UnicodeString pair = u"x\u2025\u2025y";
  EXPECT_TRUE(ZQChar::isInseparableCharEx(pair, 1, ZQChar::INSEPARABLE_EXACT_PAIR));
  EXPECT_TRUE(ZQChar::isInseparableCharEx(pair, 1, ZQChar::INSEPARABLE_SHORT_RUNS));
  EXPECT_FALSE(ZQChar::isInseparableCharEx(pair, 0, ZQChar::INSEPARABLE_ALWAYS));
  EXPECT_FALSE(ZQChar::isInseparableCharEx(u"\u2014\u2015", 0, ZQChar::INSEPARABLE_ALWAYS));
  EXPECT_FALSE(ZQChar::isInseparableCharEx(u"--", 0, ZQChar::INSEPARABLE_ALWAYS));
}

TEST(ZQChar, InseparableRepeatMarkForEveryMethod) {
  for (int m : {0, 1, 2, 3, -1}) {
    const auto method = static_cast<ZQChar::INSEPARABLECHAR_METHOD>(m);
    EXPECT_TRUE(ZQChar::isInseparableCharEx(u"\u3033\u3035", 0, method)) << m;
    EXPECT_TRUE(ZQChar::isInseparableCharEx(u"\u3034\u3035", 0, method)) << m;
    EXPECT_FALSE(ZQChar::isInseparableCharEx(u"\u3033\u3033", 0, method)) << m;
  }
}

TEST(ZQChar, InseparableWithAnUnknownMethodIsFalse) {
  const UnicodeString pair = u"\u2014\u2014";
  EXPECT_FALSE(
      ZQChar::isInseparableCharEx(pair, 0, static_cast<ZQChar::INSEPARABLECHAR_METHOD>(3)));
  EXPECT_FALSE(
      ZQChar::isInseparableCharEx(pair, 0, static_cast<ZQChar::INSEPARABLECHAR_METHOD>(-7)));
}

TEST(ZQChar, InseparableOutsideTheTextIsFalse) {
  const UnicodeString pair = u"\u2014\u2014";
  for (int32_t pos : {-1, 2, 3, INT32_MIN, INT32_MAX}) {
    EXPECT_FALSE(ZQChar::isInseparableCharEx(pair, pos, ZQChar::INSEPARABLE_ALWAYS)) << pos;
  }
  EXPECT_FALSE(ZQChar::isInseparableCharEx(UnicodeString(), 0, ZQChar::INSEPARABLE_ALWAYS));
  UnicodeString bogus;
  bogus.setToBogus();
  EXPECT_FALSE(ZQChar::isInseparableCharEx(bogus, 0, ZQChar::INSEPARABLE_SHORT_RUNS));
}

TEST(ZQChar, InseparablePairs) {
  for (int c : {0x2014, 0x2015, 0x2024, 0x2025, 0x2026}) {
    EXPECT_TRUE(ZQChar::isInseparableChar(c, c)) << c;
    EXPECT_FALSE(ZQChar::isInseparableChar(c, c + 1)) << c;
  }
  EXPECT_TRUE(ZQChar::isInseparableChar(0x3033, 0x3035));
  EXPECT_TRUE(ZQChar::isInseparableChar(0x3034, 0x3035));
  EXPECT_FALSE(ZQChar::isInseparableChar(0x3035, 0x3035));
  EXPECT_FALSE(ZQChar::isInseparableChar(0x2013, 0x2013));
  EXPECT_FALSE(ZQChar::isInseparableChar('-', '-'));
  EXPECT_FALSE(ZQChar::isInseparableChar(-1, -1));
}

TEST(ZQChar, Utf16PairDecodes) {
  EXPECT_EQ(ZQChar::UTF16toUChar32(0xD83D, 0xDE00), 0x1F600);
  EXPECT_EQ(ZQChar::UTF16toUChar32('a', 0xDE00), 'a');
  EXPECT_EQ(ZQChar::UTF16toUChar32(0xDC00, 'x'), 0xDC00);  // a lone low surrogate stays
  EXPECT_EQ(ZQChar::UTF16toUChar32(0xD800, 'x'), 0xFFFD);
  EXPECT_EQ(ZQChar::UTF16toUChar32(0xDBFF, 0xD800), 0xFFFD);
  for (UChar32 c = 0x10000; c <= 0x10FFFF; ++c) {
    if (ZQChar::UTF16toUChar32(U16_LEAD(c), U16_TRAIL(c)) != c) {
      ADD_FAILURE() << std::hex << c;
      break;
    }
  }
}

TEST(ZQChar, Utf8SequencesDecodeByLeadByte) {
  EXPECT_EQ(ZQChar::UTF8toUChar32('A', 0, 0, 0), 'A');
  EXPECT_EQ(ZQChar::UTF8toUChar32(0xC3, 0xA9, 0, 0), 0xE9);
  EXPECT_EQ(ZQChar::UTF8toUChar32(0xE2, 0x82, 0xAC, 0), 0x20AC);
  EXPECT_EQ(ZQChar::UTF8toUChar32(0xF0, 0x9F, 0x98, 0x80), 0x1F600);
  EXPECT_EQ(ZQChar::UTF8toUChar32(0xC3, 0x29, 0, 0), 0xFFFD);  // bad continuation
  EXPECT_EQ(ZQChar::UTF8toUChar32(0xE2, 0x82, 0xFF, 0), 0xFFFD);
  EXPECT_EQ(ZQChar::UTF8toUChar32(0xF0, 0x9F, 0x98, 0x00), 0xFFFD);
  EXPECT_EQ(ZQChar::UTF8toUChar32(0x80, 0x80, 0x80, 0x80), 0xFFFD);  // continuation as lead
  EXPECT_EQ(ZQChar::UTF8toUChar32(0xF8, 0x80, 0x80, 0x80), 0xFFFD);  // fits no form
  EXPECT_EQ(ZQChar::UTF8toUChar32(0xFF, 0xBF, 0xBF, 0xBF), 0xFFFD);
  EXPECT_EQ(ZQChar::UTF8toUChar32(0xC0, 0x80, 0, 0), 0);  // overlong, accepted
  EXPECT_EQ(ZQChar::UTF8toUChar32(0xE0, 0x80, 0xAF, 0), 0x2F);
}

TEST(ZQChar, Utf8DecodesEveryWellFormedSequence) {
  for (UChar32 c = 0; c <= 0x10FFFF; ++c) {
    if (U_IS_SURROGATE(c)) continue;
    uint8_t b[4] = {0, 0, 0, 0};
    int32_t n = 0;
    U8_APPEND_UNSAFE(b, n, c);
    if (ZQChar::UTF8toUChar32(b[0], b[1], b[2], b[3]) != c) {
      ADD_FAILURE() << std::hex << c;
      break;
    }
  }
}

TEST(ZQChar, MirrorStringKeepsTheOrder) {
  EXPECT_EQ(ZQChar::getMirrorString(u"a(b"), u"a)b");
  EXPECT_EQ(ZQChar::getMirrorString(u"[x]<y>"), u"]x[>y<");
  EXPECT_EQ(ZQChar::getMirrorString(u"\u2264\U0001F600\u00AB"), u"\u2265\U0001F600\u00BB");
  EXPECT_EQ(ZQChar::getMirrorString(UnicodeString()), UnicodeString());
  UnicodeString lone(u'\xD800');
  lone.append(u'(');
  EXPECT_EQ(ZQChar::getMirrorString(lone), UnicodeString(u'\xD800') + u")");
  UnicodeString bogus;
  bogus.setToBogus();
  EXPECT_TRUE(ZQChar::getMirrorString(bogus).isBogus());
}

TEST(ZQChar, MirrorStringMatchesIcuPerCodePoint) {
  for (UChar32 c = 0; c <= 0x10FFFF; c += (c < 0x30000 ? 1 : 0x101)) {
    if (U_IS_SURROGATE(c)) continue;
    UnicodeString s;
    s.append(c);
    UnicodeString expected;
    expected.append(u_charMirror(c));
    if (ZQChar::getMirrorString(s) != expected) {
      ADD_FAILURE() << std::hex << c;
      break;
    }
  }
}

// ---- Width.

TEST(ZQChar, HankakuCharCountsNegativesAndHalfwidthKana) {
  EXPECT_TRUE(ZQChar::isHankakuChar(-1));
  EXPECT_TRUE(ZQChar::isHankakuChar(INT_MIN));
  EXPECT_TRUE(ZQChar::isHankakuChar(0x7F));
  EXPECT_FALSE(ZQChar::isHankakuChar(0x80));
  EXPECT_TRUE(ZQChar::isHankakuChar(0xFF61));
  EXPECT_TRUE(ZQChar::isHankakuChar(0xFF9F));
  EXPECT_FALSE(ZQChar::isHankakuChar(0xFFA0));
  EXPECT_FALSE(ZQChar::isHankakuKana(-1));
}

TEST(ZQChar, WidthOverloadsByValue) {
  EXPECT_TRUE(ZQChar::isZenkaku(U_EA_FULLWIDTH));
  EXPECT_TRUE(ZQChar::isZenkaku(U_EA_WIDE));
  EXPECT_FALSE(ZQChar::isZenkaku(U_EA_AMBIGUOUS));
  EXPECT_TRUE(ZQChar::isZenkakuAmbiguous(U_EA_AMBIGUOUS));
  EXPECT_TRUE(ZQChar::isZenkakuAmbiguous(U_EA_WIDE));
  EXPECT_FALSE(ZQChar::isZenkakuAmbiguous(U_EA_NEUTRAL));
  EXPECT_TRUE(ZQChar::isHankaku(U_EA_HALFWIDTH));
  EXPECT_FALSE(ZQChar::isHankaku(U_EA_NARROW));
  EXPECT_TRUE(ZQChar::isZenkaku(0x3042));
  EXPECT_TRUE(ZQChar::isZenkaku(0xFF21));
  EXPECT_FALSE(ZQChar::isZenkaku('A'));
  EXPECT_TRUE(ZQChar::isZenkakuAmbiguous(0x00A7));
  EXPECT_TRUE(ZQChar::isHankaku(0xFF71));
}

TEST(ZQChar, ZenkakuConversions) {
  EXPECT_EQ(ZQChar::toZenkaku(u'!'), u'\uFF01');
  EXPECT_EQ(ZQChar::toZenkaku(u'~'), u'\uFF5E');
  EXPECT_EQ(ZQChar::toZenkaku(u' '), u' ');
  EXPECT_EQ(ZQChar::toZenkaku(u'\x7F'), u'\x7F');
  EXPECT_EQ(ZQChar::toZenkaku(u'\u3042'), u'\u3042');
  UnicodeString s = u"Ab 1\u3042";
  const UnicodeString copy = ZQChar::toZenkaku(s);
  EXPECT_EQ(s, u"\uFF21\uFF42 \uFF11\u3042");
  EXPECT_EQ(copy, s);
  // NFKC maps each full-width form back.
  for (char16_t c = 0x21; c <= 0x7E; ++c) EXPECT_EQ(nfkcOf(ZQChar::toZenkaku(c)), c);
}

TEST(ZQChar, HalfwidthKanaToFullwidth) {
  const std::vector<int> expected = parseValues(kHalfKanaText);
  ASSERT_EQ(expected.size(), 63u);
  for (int i = 0; i < 63; ++i) {
    EXPECT_EQ(ZQChar::toZenkakuKana(char16_t(0xFF61 + i)), expected[i]) << i;
  }
  // Apart from the two sound marks, which NFKC turns into combining marks, this is NFKC.
  for (char16_t c = 0xFF61; c <= 0xFF9D; ++c) EXPECT_EQ(ZQChar::toZenkakuKana(c), nfkcOf(c));
  EXPECT_EQ(ZQChar::toZenkakuKana(u'\uFF9E'), 0x309B);
  EXPECT_EQ(ZQChar::toZenkakuKana(u'\uFF9F'), 0x309C);
  UnicodeString s = u"\uFF76\uFF9E\uFF71";
  const UnicodeString copy = ZQChar::toZenkakuKana(s);
  EXPECT_EQ(s, u"\u30AB\u309B\u30A2");
  EXPECT_EQ(copy, s);
}

TEST(ZQChar, HalfwidthKanaOutsideItsRangeIsLeftAlone) {
  for (char16_t c : {u'a', u'\uFF60', u'\uFFA0', u'\uFFFF', u'\0'}) {
    EXPECT_EQ(ZQChar::toZenkakuKana(c), c);
  }
  UnicodeString s = u"x\uFF71";
  ZQChar::toZenkakuKana(s);
  EXPECT_EQ(s, u"x\u30A2");
}

TEST(ZQChar, SmallKanaToFullSize) {
  const std::vector<int> from = parseValues(
      "3041 3043 3045 3047 3049 3063 3083 3085 3087 308E 3095 3096 30A1 30A3 30A5 30A7 30A9 "
      "30C3 30E3 30E5 30E7 30EE 30F5 30F6 31F0 31F1 31F2 31F3 31F4 31F5 31F6 31F7 31F8 31F9 "
      "31FA 31FB 31FC 31FD 31FE 31FF");
  const std::vector<int> to = parseValues(
      "3042 3044 3046 3048 304A 3064 3084 3086 3088 308F 304B 3051 30A2 30A4 30A6 30A8 30AA "
      "30C4 30E4 30E6 30E8 30EF 30AB 30B1 30AF 30B7 30B9 30C8 30CC 30CF 30D2 30D5 30D8 30DB "
      "30E0 30E9 30EA 30EB 30EC 30ED");
  ASSERT_EQ(from.size(), to.size());
  for (int c = 0; c <= 0xFFFF; ++c) {
    int want = c;
    for (size_t i = 0; i < from.size(); ++i) {
      if (from[i] == c) want = to[i];
    }
    if (ZQChar::toFullsizeKana(char16_t(c)) != want) ADD_FAILURE() << std::hex << c;
  }
  UnicodeString s = u"\u30C3\u30C8\u31F5";
  const UnicodeString copy = ZQChar::toFullsizeKana(s);
  EXPECT_EQ(s, u"\u30C4\u30C8\u30CF");
  EXPECT_EQ(copy, s);
}

// ---- Radicals.

TEST(ZQChar, KangxiRadicalsMapAsNfkc) {
  ASSERT_EQ(chartables::kangxiRadicalTable.size(), 214u);
  for (int c = 0x2F00; c <= 0x2FD5; ++c) {
    const UChar32 nfkc = nfkcOf(c);
    ASSERT_NE(nfkc, c);
    EXPECT_EQ(ZQChar::convertRadical(c, true), nfkc) << std::hex << c;
    EXPECT_EQ(ZQChar::convertRadical(c, false), nfkc) << std::hex << c;
    EXPECT_EQ(chartables::kangxiRadicalTable[c - 0x2F00], nfkc) << std::hex << c;
  }
}

TEST(ZQChar, StrictCjkRadicalsOnlyWhereUnicodeMapsThem) {
  for (int c = 0x2E80; c <= 0x2EF3; ++c) {
    const UChar32 nfkc = nfkcOf(c);
    const bool mapped = nfkc != c && nfkc != -1 && u_isdefined(c);
    EXPECT_EQ(mapped, c == 0x2E9F || c == 0x2EF3) << std::hex << c;
    EXPECT_EQ(ZQChar::convertRadical(c, true), mapped ? nfkc : 0) << std::hex << c;
  }
  EXPECT_EQ(ZQChar::convertRadical(0x2E9F, true), 0x6BCD);
  EXPECT_EQ(ZQChar::convertRadical(0x2EF3, true), 0x9F9F);
  EXPECT_EQ(ZQChar::convertRadical(0x2E85, true), 0);
}

TEST(ZQChar, LooseCjkRadicalsByResemblance) {
  std::vector<int> want(116, 0);
  for (const std::string& item : {std::string(kCjkRadicalText)}) {
    std::istringstream in(item);
    std::string pair;
    while (in >> pair) {
      const int r = static_cast<int>(std::strtol(pair.substr(0, 4).c_str(), nullptr, 16));
      want[r - 0x2E80] = static_cast<int>(std::strtol(pair.substr(5).c_str(), nullptr, 16));
    }
  }
  int nonZero = 0;
  for (int c = 0x2E80; c <= 0x2EF3; ++c) {
    EXPECT_EQ(ZQChar::convertRadical(c, false), want[c - 0x2E80]) << std::hex << c;
    EXPECT_EQ(chartables::cjkRadicalTable[c - 0x2E80], want[c - 0x2E80]) << std::hex << c;
    nonZero += want[c - 0x2E80] != 0;
  }
  EXPECT_EQ(nonZero, 75);
}

TEST(ZQChar, RadicalOutsideTheBlocksIsZero) {
  for (int c : {0x2E7F, 0x2EF4, 0x2EFF, 0x2FD6, 0x4E00, 0, -1, INT_MIN, INT_MAX, 0x10FFFF}) {
    EXPECT_EQ(ZQChar::convertRadical(c, true), 0) << c;
    EXPECT_EQ(ZQChar::convertRadical(c, false), 0) << c;
  }
}

// ---- Tables.

TEST(ZQChar, TableSizes) {
  EXPECT_EQ(chartables::tr50Table.size(), 191u);
  EXPECT_EQ(chartables::noVerticalTable.size(), 38u);
  EXPECT_EQ(chartables::halfKanaTable.size(), 63u);
  EXPECT_EQ(chartables::kangxiRadicalTable.size(), 214u);
  EXPECT_EQ(chartables::cjkRadicalTable.size(), 116u);
  EXPECT_EQ(sizeof(chartables::halfKanaTable[0]), 2u);
  EXPECT_EQ(sizeof(chartables::tr50Table[0].first), 4u);
}

TEST(ZQChar, TR50TableHoldsTheDocumentedRanges) {
  const std::vector<TR50Entry> want = parseTR50();
  ASSERT_EQ(want.size(), chartables::tr50Table.size());
  for (size_t i = 0; i < want.size(); ++i) {
    const auto& got = chartables::tr50Table[i];
    EXPECT_EQ(int(got.first), want[i].first) << i;
    EXPECT_EQ(int(got.last), want[i].last) << i;
    EXPECT_EQ(got.svo, want[i].svo) << i;
    EXPECT_EQ(got.mvo, want[i].mvo) << i;
  }
}

TEST(ZQChar, NoVerticalTableHoldsTheDocumentedRanges) {
  const std::vector<Range> want = parseRanges(kNoVerticalText);
  ASSERT_EQ(want.size(), chartables::noVerticalTable.size());
  for (size_t i = 0; i < want.size(); ++i) {
    EXPECT_EQ(int(chartables::noVerticalTable[i].first), want[i].first) << i;
    EXPECT_EQ(int(chartables::noVerticalTable[i].last), want[i].last) << i;
  }
}

// ---- The ICU wrappers against ICU itself.

TEST(ZQChar, PropertyWrappersMatchIcu) {
  int mismatches = 0;
  auto check = [&](bool ok, const char* what, int c) {
    if (!ok && ++mismatches <= 10) ADD_FAILURE() << what << " differs at " << std::hex << c;
  };
  for (int c : sweep()) {
    if (c > 0x120000 && c < 0x7FFFFFF0) continue;
    const int e = era(c);
    check(ZQChar::getEastAsianWidth(c) == u_getIntPropertyValue(e, UCHAR_EAST_ASIAN_WIDTH),
          "getEastAsianWidth", c);
    check(ZQChar::getCategory(c) == u_charType(e), "getCategory", c);
    check(ZQChar::getLineBreak(c) == u_getIntPropertyValue(c, UCHAR_LINE_BREAK), "getLineBreak", c);
    check(ZQChar::getIntPropertyValue(c, UCHAR_SCRIPT) == u_getIntPropertyValue(e, UCHAR_SCRIPT),
          "getIntPropertyValue(script)", c);
    check(ZQChar::getIntPropertyValue(c, UCHAR_BLOCK) == u_getIntPropertyValue(e, UCHAR_BLOCK),
          "getIntPropertyValue(block)", c);
    check(ZQChar::isAlphabetic(c) == bool(u_isUAlphabetic(c)), "isAlphabetic", c);
    check(ZQChar::isLetter(c) == catLetter(c), "isLetter", c);
    check(ZQChar::isNumber(c) == catNumber(c), "isNumber", c);
    check(ZQChar::isLetterNumber(c) == (catLetter(c) || catNumber(c)), "isLetterNumber", c);
    check(ZQChar::isPunct(c) == (catPunct(c) || c == 0xFF5E), "isPunct", c);
    check(ZQChar::isPunct(static_cast<UCharCategory>(u_charType(c))) == catPunct(c),
          "isPunct(category)", c);
    check(ZQChar::isSymbol(c) == catSymbol(c), "isSymbol", c);
    const int cat = u_charType(e);
    check(ZQChar::isGraphemeCluster(c) ==
              !inGroup(cat, {U_NON_SPACING_MARK, U_ENCLOSING_MARK, U_COMBINING_SPACING_MARK,
                             U_CONTROL_CHAR, U_FORMAT_CHAR}),
          "isGraphemeCluster", c);
    check(ZQChar::isUndefined(c) == (!u_isdefined(e) && !ZQChar::isCurrencySymbol(c)),
          "isUndefined", c);
    const int w = eastAsianWidth(c);
    check(ZQChar::isZenkaku(c) == (w == U_EA_FULLWIDTH || w == U_EA_WIDE), "isZenkaku", c);
    check(ZQChar::isZenkakuAmbiguous(c) ==
              (w == U_EA_AMBIGUOUS || w == U_EA_FULLWIDTH || w == U_EA_WIDE),
          "isZenkakuAmbiguous", c);
    check(ZQChar::isHankaku(c) == (w == U_EA_HALFWIDTH), "isHankaku", c);
    const int lb = lineBreak(c);
    const bool punct = catPunct(c) || c == 0xFF5E;
    check(ZQChar::isOpenParenEtc(c) ==
              (punct && (lb == U_LB_OPEN_PUNCTUATION || c == 0x2018 || c == 0x201C)),
          "isOpenParenEtc", c);
    check(ZQChar::isCloseParenEtc(c) ==
              (punct && (lb == U_LB_CLOSE_PUNCTUATION || lb == U_LB_CLOSE_PARENTHESIS ||
                         c == 0x2019 || c == 0x201D)),
          "isCloseParenEtc", c);
  }
  EXPECT_EQ(mismatches, 0);
}

TEST(ZQChar, ZeroWidthControlCodeFollowsItsSteps) {
  expectSame("isZeroWidthControlCode", ZQChar::isZeroWidthControlCode, [](int c) {
    if (c == 0xAD) return false;
    c = era(c);
    if ((c >= 0xFE00 && c <= 0xFE0F) || (c >= 0xE0100 && c <= 0xE01EF)) return true;
    if (c >= 0x10000 || (c >= 0x20A0 && c <= 0x20CF)) return false;
    if (u_iscntrl(c)) return true;
    if (u_isgraph(c)) return false;
    return !u_isblank(c);
  });
  EXPECT_FALSE(ZQChar::isZeroWidthControlCode(0xAD));
  EXPECT_TRUE(ZQChar::isZeroWidthControlCode(0x200B));
  EXPECT_TRUE(ZQChar::isZeroWidthControlCode(0x200D));
  EXPECT_TRUE(ZQChar::isZeroWidthControlCode(0x07));
  EXPECT_TRUE(ZQChar::isZeroWidthControlCode(0xFE0F));
  EXPECT_TRUE(ZQChar::isZeroWidthControlCode(0xE0100));
  EXPECT_FALSE(ZQChar::isZeroWidthControlCode(0x1D173));  // a format character, but above FFFF
  EXPECT_FALSE(ZQChar::isZeroWidthControlCode(0x20C5));
  EXPECT_FALSE(ZQChar::isZeroWidthControlCode('A'));
  EXPECT_FALSE(ZQChar::isZeroWidthControlCode(' '));
  EXPECT_FALSE(ZQChar::isZeroWidthControlCode(0x3000));
}

TEST(ZQChar, UndefinedUnlessIcuOrTheCurrencyListKnowsIt) {
  EXPECT_TRUE(ZQChar::isUndefined(0x0378));
  EXPECT_FALSE(ZQChar::isUndefined('A'));
  EXPECT_FALSE(ZQChar::isUndefined(0x20BD));
  EXPECT_TRUE(ZQChar::isUndefined(0x110000));
  EXPECT_TRUE(ZQChar::isUndefined(-1));
}

TEST(ZQChar, GraphemeClusterStarts) {
  EXPECT_TRUE(ZQChar::isGraphemeCluster('a'));
  EXPECT_FALSE(ZQChar::isGraphemeCluster(0x0301));  // Mn
  EXPECT_FALSE(ZQChar::isGraphemeCluster(0x20DD));  // Me
  EXPECT_FALSE(ZQChar::isGraphemeCluster(0x0903));  // Mc
  EXPECT_FALSE(ZQChar::isGraphemeCluster(0x0A));    // Cc
  EXPECT_FALSE(ZQChar::isGraphemeCluster(0x200D));  // Cf
  EXPECT_TRUE(ZQChar::isGraphemeCluster(0x0378));   // unassigned starts one
}

// ---- The branch-only predicates against their definitions, over every code point.

TEST(ZQCharSweep, Width) {
  expectSet("isHankakuChar", ZQChar::isHankakuChar, CodeSet("0-7F FF61-FF9F", true));
  expectSet("isHankakuKana", ZQChar::isHankakuKana, CodeSet("FF61-FF9F"));
  expectSet("isHalf", ZQChar::isHalf,
            CodeSet("0-FF 0152 0153 0160 0161 0178 017D 017E 0192 02C6 02DC 2010 2013 2014 2018 "
                    "2019 201A 201C 201D 201E 2020 2021 2022 2026 2030 2039 203A 20AC 2122",
                    true));
}

TEST(ZQCharSweep, NamesAndValidity) {
  const std::string ncStart =
      "41-5A 5F 61-7A C0-D6 D8-F6 F8-2FF 370-37D 37F-1FFF 200C-200D 2070-218F 2C00-2FEF "
      "3001-D7FF F900-FDCF FDF0-FFFD 10000-EFFFF";
  const std::string ncRest = " 2D 2E 30-39 B7 300-36F 203F-2040";
  expectSet("isValidChar", ZQChar::isValidChar, CodeSet("9 A D 20-D7FF E000-FFFD 10000-10FFFF"));
  expectSet("isValidChar11", ZQChar::isValidChar11,
            CodeSet("9 A D 20-7E 85 A0-D7FF E000-FFFD 10000-10FFFF"));
  expectSet("isNCNameStartChar", ZQChar::isNCNameStartChar, CodeSet(ncStart));
  expectSet("isNameStartChar", ZQChar::isNameStartChar, CodeSet(ncStart + " 3A"));
  expectSet("isNCNameChar", ZQChar::isNCNameChar, CodeSet(ncStart + ncRest));
  expectSet("isNameChar", ZQChar::isNameChar, CodeSet(ncStart + ncRest + " 3A"));
  expectSet("isNCNameCharForCSSExp", ZQChar::isNCNameCharForCSSExp,
            CodeSet(ncStart + " 2E 30-39 B7 300-36F 203F-2040"));
  // 21-7E less " ( ) , / : ; < = > ? @ [ \ ]
  expectSet("isMIMETokenChar", ZQChar::isMIMETokenChar,
            CodeSet("21 23-27 2A-2B 2D-2E 30-39 41-5A 5E-7E"));
}

TEST(ZQCharSweep, SpacesAndBreaks) {
  expectSet("isWhitespace", ZQChar::isWhitespace, CodeSet("9 A D 20"));
  expectSet("isCssWhitespace", ZQChar::isCssWhitespace, CodeSet("9 A C D 20"));
  expectSet("isCssWhitespaceWoNewline", ZQChar::isCssWhitespaceWoNewline, CodeSet("9 20"));
  expectSet("isCssNewline", ZQChar::isCssNewline, CodeSet("A C D"));
  expectSet("isSpaceChar", ZQChar::isSpaceChar, CodeSet("20 A0"));
  expectSet("isSpaceChar2", ZQChar::isSpaceChar2, CodeSet("9 A D 20 A0"));
  expectSet("isHardBreak", ZQChar::isHardBreak, CodeSet("A C 2028 2029"));
  expectSet("isHardBreakOrInvalid", ZQChar::isHardBreakOrInvalid, CodeSet("A C 2028 2029 FFFF"));
  expectSet("isFixedWidthSpaceChar", ZQChar::isFixedWidthSpaceChar, CodeSet("2000-200A 205F"));
  expectSet("isZeroWidthSpaceChar", ZQChar::isZeroWidthSpaceChar, CodeSet("200B FEFF"));
}

TEST(ZQCharSweep, JapanesePunctuation) {
  expectSet("isZenkakuMidDotEtc", ZQChar::isZenkakuMidDotEtc, CodeSet("30FB FF1A FF1B"));
  expectSet("isFullStopChar", ZQChar::isFullStopChar, CodeSet("3002 FF0E"));
  expectSet("isHyphen", ZQChar::isHyphen, CodeSet("2D AD 2010 2011"));
}

TEST(ZQCharSweep, SetsOfOurOwn) {
  expectSet("isNonStarterJIS", ZQChar::isNonStarterJIS,
            CodeSet("3005 303B 3041 3043 3045 3047 3049 3063 3083 3085 3087 308E 3095 3096 309D "
                    "309E 30A1 30A3 30A5 30A7 30A9 30C3 30E3 30E5 30E7 30EE 30F5 30F6 30FC 30FD "
                    "30FE 31F0-31FF FF67-FF70"));
  expectSet("isSymbolJIS", ZQChar::isSymbolJIS,
            CodeSet("00A7-00A8 00B0-00B1 00B4 00B6 00D7 00F7 2010 2015 2018-2019 201C-201D "
                    "2020-2021 2025-2026 2030 2032-2033 203B 2103 2116 2121 212B 2160-2169 "
                    "2190-2193 21D2 21D4 2200 2202-2203 2207-2208 220B 2211 221A 221D-2220 2225 "
                    "2227-222C 222E 2234-2235 223D 2252 2260-2261 2266-2267 226A-226B 2282-2283 "
                    "2286-2287 22A5 22BF 2312 2460-2473 25A0-25A1 25B2-25B3 25BC-25BD 25C6-25C7 "
                    "25CB 25CE-25CF 25EF 2605-2606 2640 2642 266A 266D 266F"));
  expectSet("isAmbiguousHan", ZQChar::isAmbiguousHan,
            CodeSet("2E80-2FDF 3400-4DB5 4E00-9FFF F900-FAFF FF00-FF60 20000-2FFFF"));
  expectSet("isKanaKanjiCJK", ZQChar::isKanaKanjiCJK,
            CodeSet("2E80-2FDF 3000-4DBF 4E00-9FFF F900-FAFF FF00-FF60 FFE0-FFE7 20000-2FFFF"));
  expectSet("isNoVerticalChar", ZQChar::isNoVerticalChar, CodeSet(kNoVerticalText));
  expectSet("isRadical", ZQChar::isRadical, CodeSet("2E80-2EF3 2F00-2FD5"));
  expectSet("isMathOperator", ZQChar::isMathOperator,
            CodeSet("2200-22FF 27C0-27FF 2980-2AFF 1D400-1D7FF"));
  expectSet("isCurrencySymbol", ZQChar::isCurrencySymbol,
            CodeSet("24 A2-A5 058F 060B 09F2 09F3 09FB 0AF1 0BF9 0E3F 17DB 20A0-20BD A838 FDFC "
                    "FE69 FF04 FFE0 FFE1 FFE5 FFE6"));
  expectSet("isBullet", ZQChar::isBullet,
            CodeSet("2022 2023 2043 204C 204D 2219 25D8 25E6 2619 2765 2767 29BE 29BF"));
  expectSet("isVariationSelectorCharacter", ZQChar::isVariationSelectorCharacter,
            CodeSet("FE00-FE0F"));
  expectSet("isIdeographicVariationSelectorCharacter",
            ZQChar::isIdeographicVariationSelectorCharacter, CodeSet("E0100-E01EF"));
  expectSet("isPUA", ZQChar::isPUA, CodeSet("E000-F8FF"));
  expectSet("isArabic", ZQChar::isArabic, CodeSet("0600-06FF"));
  expectSet("isArabicScript", ZQChar::isArabicScript, CodeSet("0600-065F 066A-06EF 06FA-06FF"));
  expectSet("isHebrewScript", ZQChar::isHebrewScript, CodeSet("0590-05FF"));
  expectSet("isDevanagariScript", ZQChar::isDevanagariScript, CodeSet("0900-097F"));
  expectSet("isAsciiDigit", ZQChar::isAsciiDigit, CodeSet("30-39"));
  expectSet("isAsciiDigitNonzero", ZQChar::isAsciiDigitNonzero, CodeSet("31-39"));
  expectSet("isAsciiLetter", ZQChar::isAsciiLetter, CodeSet("41-5A 61-7A"));
  expectSet("isHexDigit", ZQChar::isHexDigit, CodeSet("30-39 41-46 61-66"));
}

TEST(ZQCharSweep, CurrencySignsAreCurrencyForIcuToo) {
  // Our list is a subset of ICU's currency symbols, so isUndefined never hides a real gap.
  for (int c = 0; c <= 0xFFFF; ++c) {
    if (ZQChar::isCurrencySymbol(c) && u_isdefined(c)) {
      EXPECT_EQ(u_charType(c), U_CURRENCY_SYMBOL) << std::hex << c;
    }
  }
}

// ---- Other helpers.

TEST(ZQChar, Hex2DigByFormula) {
  for (int c = '0'; c <= '9'; ++c) EXPECT_EQ(ZQChar::hex2dig(c), c - '0');
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(ZQChar::hex2dig('A' + i), 10 + i);
    EXPECT_EQ(ZQChar::hex2dig('a' + i), 10 + i);
  }
  EXPECT_EQ(ZQChar::hex2dig('G'), ((('G' - 1) & 15) + 10));  // no check beyond the digits
  EXPECT_EQ(ZQChar::hex2dig('G'), 16);
  EXPECT_EQ(ZQChar::hex2dig('z'), ((('z' - 1) & 15) + 10));
  static_assert(ZQChar::hex2dig('f') == 15);
}

TEST(ZQChar, LastUnitAndLastCodePoint) {
  EXPECT_EQ(ZQChar::last(UnicodeString()), 0xFFFF);
  EXPECT_EQ(ZQChar::last32(UnicodeString()), 0xFFFF);
  EXPECT_EQ(ZQChar::last(u"ab"), u'b');
  EXPECT_EQ(ZQChar::last32(u"ab"), 'b');
  EXPECT_EQ(ZQChar::last(u"a\U0001F600"), 0xDE00);
  EXPECT_EQ(ZQChar::last32(u"a\U0001F600"), 0x1F600);
  UnicodeString lone = u"a";
  lone.append(u'\xD83D');
  EXPECT_EQ(ZQChar::last32(lone), 0xD83D);
  UnicodeString bogus;
  bogus.setToBogus();
  EXPECT_EQ(ZQChar::last(bogus), 0xFFFF);
  EXPECT_EQ(ZQChar::last32(bogus), 0xFFFF);
}

TEST(ZQChar, WhitespaceStrings) {
  EXPECT_FALSE(ZQChar::isWhitespace(UnicodeString()));
  EXPECT_TRUE(ZQChar::isEmptyOrWhitespace(UnicodeString()));
  EXPECT_TRUE(ZQChar::isWhitespace(u" \t\r\n"));
  EXPECT_TRUE(ZQChar::isEmptyOrWhitespace(u" \t\r\n"));
  EXPECT_FALSE(ZQChar::isWhitespace(u" x "));
  EXPECT_FALSE(ZQChar::isEmptyOrWhitespace(u" x "));
  EXPECT_FALSE(ZQChar::isWhitespace(u"\u00A0"));
  EXPECT_FALSE(ZQChar::isWhitespace(u"\f"));
  UnicodeString bogus;
  bogus.setToBogus();
  EXPECT_FALSE(ZQChar::isWhitespace(bogus));
  EXPECT_TRUE(ZQChar::isEmptyOrWhitespace(bogus));
}

TEST(ZQChar, NameStrings) {
  EXPECT_TRUE(ZQChar::isNameStr(u"a:b"));
  EXPECT_FALSE(ZQChar::isNCNameStr(u"a:b"));
  EXPECT_TRUE(ZQChar::isNameStr(u":"));
  EXPECT_TRUE(ZQChar::isNCNameStr(u"_x-1.2\u00B7"));
  EXPECT_FALSE(ZQChar::isNCNameStr(u"1a"));
  EXPECT_FALSE(ZQChar::isNCNameStr(u"-a"));
  EXPECT_FALSE(ZQChar::isNameStr(UnicodeString()));
  EXPECT_FALSE(ZQChar::isNCNameStr(UnicodeString()));
  EXPECT_TRUE(ZQChar::isNCNameStr(u"\U00010000\U000EFFFF"));
  EXPECT_FALSE(ZQChar::isNCNameStr(u"a\U000F0000"));
  EXPECT_FALSE(ZQChar::isNCNameStr(u"a b"));
  UnicodeString lone = u"ab";
  lone.append(u'\xD800');
  EXPECT_FALSE(ZQChar::isNCNameStr(lone));
  EXPECT_FALSE(ZQChar::isNameStr(UnicodeString(u'\xDC00')));
  UnicodeString bogus;
  bogus.setToBogus();
  EXPECT_FALSE(ZQChar::isNameStr(bogus));
}

TEST(ZQChar, TR50PropertyValues) {
  EXPECT_EQ(ZQChar::TR50_UPRIGHT, 1);
  EXPECT_EQ(ZQChar::TR50_ROTATED, 2);
  EXPECT_EQ(ZQChar::TR50_SPECIAL, 8);
  EXPECT_EQ(ZQChar::TR50_TRANSFORMED_UPRIGHT, 16);
  EXPECT_EQ(ZQChar::TR50_TRANSFORMED_ROTATED, 32);
  EXPECT_EQ(ZQChar::TR50_CALLER, 64);
  const ZQChar::TR50VO vo{16, 2};
  EXPECT_EQ(vo.first, 16);  // SVO first, then MVO
  EXPECT_EQ(vo.second, 2);
}

// The fast predicates stay usable in constant expressions.
static_assert(ZQChar::isNCNameStartChar('a') && !ZQChar::isNCNameStartChar('-'));
static_assert(ZQChar::isWhitespace('\t') && ZQChar::isCssNewline('\f'));
static_assert(ZQChar::UTF16toUChar32(0xD83D, 0xDE00) == 0x1F600);
static_assert(ZQChar::UTF8toUChar32(0xE2, 0x82, 0xAC) == 0x20AC);
static_assert(ZQChar::toZenkaku(u'A') == u'\uFF21');
