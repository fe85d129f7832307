#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TestSupport.h"
#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {

using zqtest::utf8;

std::string canonical(const char* name) {
  return utf8(ZQUtil::getCanonicalEncoding(UnicodeString::fromUTF8(name)));
}

std::string standard(const char* name) {
  return utf8(ZQUtil::getStandardEncoding(UnicodeString::fromUTF8(name)));
}

struct Row {
  const char* canonical;
  std::vector<const char*> aliases;
};

const std::vector<Row>& rows() {
  static const std::vector<Row> r = {
      {"UTF-8", {}},
      {"ISO-10646-UCS-2", {"UTF-16", "UCS-2", "UNICODE"}},
      {"UTF-16BE", {}},
      {"UTF-16LE", {}},
      {"ISO-10646-UCS-4", {"UTF-32", "UCS-4"}},
      {"US-ASCII",
       {"ASCII", "ISO646-US", "ISO_646.IRV", "ISO_646.IRV:1991", "ANSI_X3.4", "ANSI_X3.4:1968",
        "ANSI_X3.4:1986"}},
      {"ISO-8859-1", {"ISO-8859-1:1987", "LATIN1"}},
      {"ISO-8859-2", {"ISO_8859-2", "ISO_8859-2:1987", "LATIN2"}},
      {"ISO-8859-3", {"ISO_8859-3", "ISO_8859-3:1988", "LATIN3"}},
      {"ISO-8859-4", {"ISO_8859-4", "ISO_8859-4:1988", "LATIN4"}},
      {"ISO-8859-5", {"ISO_8859-5", "ISO_8859-5:1988", "CYRILLIC"}},
      {"ISO-8859-6", {"ISO_8859-6", "ISO_8859-6:1987", "ARABIC"}},
      {"ISO-8859-7", {"ISO_8859-7", "ISO_8859-7:1987", "GREEK"}},
      {"ISO-8859-8", {"ISO_8859-8", "ISO_8859-8:1988", "HEBREW"}},
      {"ISO-8859-9", {"ISO_8859-9", "ISO_8859-9:1989", "LATIN5"}},
      {"ISO-8859-10", {"ISO_8859-10:1992", "LATIN6"}},
      {"ISO-8859-11", {}},
      {"ISO-8859-13", {}},
      {"ISO-8859-14", {"ISO_8859-14", "ISO_8859-14:1998", "LATIN8"}},
      {"ISO-8859-15", {"ISO_8859-15", "LATIN-9"}},
      {"ISO-8859-16", {"ISO_8859-16", "ISO_8859-16:2001", "LATIN10"}},
      {"WINDOWS31J", {"SHIFT_JIS"}},
      {"EUC-JP", {}},
      {"ISO-2022-JP", {}},
      {"KoreanKSC", {"KS_C_5601-1987", "KOREAN", "KOREANKSC", "ISO-IR-149"}},
      {"ChineseGBK", {"CHINESEGBK", "GB2312"}},
      {"ChineseBIG5", {"BIG5", "CHINESEBIG5"}},
  };
  return r;
}

std::string lower(std::string s) {
  for (char& c : s)
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
  return s;
}

}  // namespace

TEST(ZQUtilEncoding, CanonicalEdgeCases) {
  EXPECT_EQ(canonical("utf8"), "UTF-8");
  EXPECT_EQ(canonical("latin-1"), "ISO-8859-1");
  EXPECT_EQ(canonical("unknown"), "unknown");
}

TEST(ZQUtilEncoding, EmptyAndBogusStayAsTheyAre) {
  EXPECT_EQ(canonical(""), "");
  EXPECT_TRUE(ZQUtil::getCanonicalEncoding(UnicodeString()).isEmpty());
  UnicodeString bogus;
  bogus.setToBogus();
  EXPECT_TRUE(ZQUtil::getCanonicalEncoding(bogus).isBogus());
}

TEST(ZQUtilEncoding, EveryAliasRowMapsToItsCanonicalName) {
  for (const Row& row : rows()) {
    EXPECT_EQ(canonical(row.canonical), row.canonical);
    EXPECT_EQ(canonical(lower(row.canonical).c_str()), row.canonical);
    for (const char* alias : row.aliases) {
      EXPECT_EQ(canonical(alias), row.canonical) << alias;
      EXPECT_EQ(canonical(lower(alias).c_str()), row.canonical) << alias;
    }
  }
}

TEST(ZQUtilEncoding, UtfSixteenAndThirtyTwoLandOnTheUcsNames) {
  EXPECT_EQ(canonical("utf-16"), "ISO-10646-UCS-2");
  EXPECT_EQ(canonical("Unicode"), "ISO-10646-UCS-2");
  EXPECT_EQ(canonical("utf_32"), "ISO-10646-UCS-4");
}

TEST(ZQUtilEncoding, KeyDropsPunctuationAndLeadingZerosOfDigitRuns) {
  EXPECT_EQ(canonical("iso-8859-1"), "ISO-8859-1");
  EXPECT_EQ(canonical("ISO_8859_1"), "ISO-8859-1");
  EXPECT_EQ(canonical("ISO 8859 001"), "ISO-8859-1");
  EXPECT_EQ(canonical("iso-08859-01"), "ISO-8859-1");
  EXPECT_EQ(canonical("Latin 01"), "ISO-8859-1");
  EXPECT_EQ(canonical("u.t.f.-8"), "UTF-8");
  EXPECT_EQ(canonical("Shift-JIS"), "WINDOWS31J");
  EXPECT_EQ(canonical("ks c 5601 1987"), "KoreanKSC");
  EXPECT_EQ(canonical("gb-2312"), "ChineseGBK");
}

TEST(ZQUtilEncoding, OnlyZerosBeforeADigitAreDropped) {
  // A final zero stays, so "LATIN10" and "LATIN1" stay apart, and so do "8859-10" and "8859-1".
  EXPECT_EQ(canonical("LATIN10"), "ISO-8859-16");
  EXPECT_EQ(canonical("ISO-8859-10"), "ISO-8859-10");
  EXPECT_EQ(canonical("ISO885910"), "ISO-8859-10");
  // The three spellings of one encoding share a key.
  EXPECT_EQ(canonical("ISO885901"), "ISO-8859-1");
  EXPECT_EQ(canonical("ISO_8859_1"), "ISO-8859-1");
  EXPECT_EQ(canonical("iso-8859-1"), "ISO-8859-1");
  EXPECT_EQ(canonical("ISO-2022-JP"), "ISO-2022-JP");
  EXPECT_EQ(canonical("ISO-10646-UCS-2"), "ISO-10646-UCS-2");
}

TEST(ZQUtilEncoding, NonAsciiCharactersAreDroppedFromTheKey) {
  EXPECT_EQ(canonical("utf\u2010"
                      "8"),
            "UTF-8");
  EXPECT_EQ(canonical("\xC3\xA9"), "\xC3\xA9");  // an empty key finds nothing
}

TEST(ZQUtilEncoding, CleanupAndRebuild) {
  ZQUtil::cleanup();
  EXPECT_EQ(canonical("latin2"), "ISO-8859-2");
}

TEST(ZQUtilStandardEncoding, EdgeCases) {
  EXPECT_EQ(standard(""), "UTF-8");
  EXPECT_EQ(standard("utf-16"), "UTF-16LE");
  EXPECT_EQ(standard("  \t"), "UTF-8");
  EXPECT_EQ(standard("utf-32"), "UTF-32LE");
}

TEST(ZQUtilStandardEncoding, ReplacementsBeforeIcu) {
  EXPECT_EQ(standard("ansi_x3.4"), "ANSI_X3.4-1968");
  EXPECT_EQ(standard("ChineseBIG5"), "Big5");
  EXPECT_EQ(standard("chinesegbk"), "GBK");
  EXPECT_EQ(standard("ISO_646.irv"), "ANSI_X3.4-1968");
  EXPECT_EQ(standard("KoreanKSC"), "EUC-KR");
}

TEST(ZQUtilStandardEncoding, IanaNamesFromIcu) {
  EXPECT_EQ(standard(" utf8 "), "UTF-8");
  EXPECT_EQ(standard("latin1"), "ISO_8859-1:1987");
  EXPECT_EQ(standard("utf-16be"), "UTF-16BE");
  EXPECT_EQ(standard("windows31j"), "Shift_JIS");
  EXPECT_EQ(standard("unicode"), "UTF-16LE");
  EXPECT_EQ(standard("latin-9"), "ISO-8859-15");
}

TEST(ZQUtilStandardEncoding, UnknownGivesEmpty) {
  EXPECT_EQ(standard("no-such-encoding"), "");
  EXPECT_EQ(standard("UTF-8\xC3\xA9"), "");
  EXPECT_FALSE(ZQUtil::getStandardEncoding(u"bogus-name").isBogus());
}
