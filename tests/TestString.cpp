#include <gtest/gtest.h>

#include <cstring>

#include "common/ZQString.h"

using namespace ZQCommonNS;

TEST(ZQEmptyString, IsEmptyAndNotBogus) {
  EXPECT_TRUE(ZQEmptyString::EMPTY_VALUE.isEmpty());
  EXPECT_FALSE(ZQEmptyString::EMPTY_VALUE.isBogus());
  EXPECT_EQ(&ZQEmptyString::getEmptyString(), &ZQEmptyString::EMPTY_VALUE);
}

TEST(ZQBogusString, IsBogusAndNotEqualToEmpty) {
  EXPECT_TRUE(ZQBogusString::BOGUS_VALUE.isBogus());
  EXPECT_EQ(&ZQBogusString::getBugusString(), &ZQBogusString::BOGUS_VALUE);
  EXPECT_FALSE(ZQBogusString::BOGUS_VALUE == ZQEmptyString::EMPTY_VALUE);
  EXPECT_TRUE(ZQBogusString::BOGUS_VALUE != ZQEmptyString::EMPTY_VALUE);
}

TEST(ZQCStr, FromUnicodeConvertsOnFirstAccess) {
  ZQCStr s(UnicodeString(u"abc"));
  EXPECT_STREQ(s.toNarrow(), "abc");
  EXPECT_EQ(s.getNarrowEncoding(), nullptr);
}

TEST(ZQCStr, BytesComeBackUnconvertedWithTheSameEncoding) {
  // "\xE9" is not a faithful UTF-8 rendering of anything, yet it comes back untouched.
  ZQCStr s("caf\xE9", "UTF-8");
  const char* narrow = s.toNarrow("UTF-8");
  EXPECT_STREQ(narrow, "caf\xE9");
  EXPECT_STREQ(s.getNarrowEncoding(), "UTF-8");
}

TEST(ZQCStr, BytesFromLatin1AreKept) {
  ZQCStr s("caf\xE9", "ISO-8859-1");
  EXPECT_EQ(static_cast<const UnicodeString&>(s), UnicodeString(u"caf\u00E9"));
  EXPECT_STREQ(s.toNarrow("ISO-8859-1"), "caf\xE9");
  EXPECT_STREQ(s.toNarrow("UTF-8"), "caf\xC3\xA9");  // another encoding converts anew
}

TEST(ZQCStr, ChangedStringRebuildsTheNarrowText) {
  ZQCStr s("abc", "UTF-8");
  s.append(u'\u00E9');
  EXPECT_STREQ(s.toNarrow("UTF-8"), "abc\xC3\xA9");
  EXPECT_EQ(s.getNarrowLength(), 5u);
}

TEST(ZQCStr, PlainToNarrowConvertsAnewWhenAnEncodingIsSet) {
  // Bytes that are not what the default converter would make must not come back.
  ZQCStr s("caf\xE9", "ISO-8859-1");
  const char* narrow = s.toNarrow();
  EXPECT_STRNE(narrow, "caf\xE9");
  EXPECT_EQ(s.getNarrowEncoding(), nullptr);
  // Once converted with the default converter, the stored text is reused.
  const char* again = s.toNarrow();
  EXPECT_EQ(narrow, again);
}

TEST(ZQCStr, NullBytesGiveEmptyText) {
  ZQCStr s(static_cast<const char*>(nullptr), "UTF-8");
  EXPECT_TRUE(s.isEmpty());
  EXPECT_STREQ(s.toNarrow("UTF-8"), "");
}

TEST(ZQCStr, EmptyStringConvertsToEmpty) {
  ZQCStr s{UnicodeString()};
  EXPECT_STREQ(s.toNarrow("UTF-8"), "");
  EXPECT_EQ(s.getNarrowLength(), 0u);
}

TEST(ZQCStr, CopyKeepsNarrowTextAndEncoding) {
  ZQCStr a("caf\xE9", "ISO-8859-1");
  ZQCStr b(a);
  EXPECT_STREQ(b.toNarrow("ISO-8859-1"), "caf\xE9");
  ZQCStr c;
  c = a;
  EXPECT_STREQ(c.getNarrowEncoding(), "ISO-8859-1");
  EXPECT_NE(c.getNarrowEncoding(), a.getNarrowEncoding());  // a fresh copy of the name
  EXPECT_STREQ(c.toNarrow("ISO-8859-1"), "caf\xE9");
}

TEST(ZQCStr, NarrowTextHoldsEmbeddedNul) {
  UnicodeString text(u"a");
  text.append(static_cast<char16_t>(0));
  text.append(u'b');
  ZQCStr s(text);
  s.toNarrow("UTF-8");
  EXPECT_EQ(s.getNarrowLength(), 3u);
}

TEST(ZQUtfStr, NarrowTextIsUtf8) {
  ZQUtfStr s(UnicodeString(u"\u00E9\u4E2D"));
  EXPECT_STREQ(s.toNarrow(), "\xC3\xA9\xE4\xB8\xAD");
  EXPECT_STREQ(static_cast<const char*>(s), "\xC3\xA9\xE4\xB8\xAD");
}

TEST(ZQUtfStr, FromBytesTakesUtf8) {
  ZQUtfStr s("\xC3\xA9t\xC3\xA9");
  EXPECT_EQ(static_cast<const UnicodeString&>(s), UnicodeString(u"\u00E9t\u00E9"));
  EXPECT_STREQ(s.getNarrowEncoding(), "UTF-8");
  EXPECT_STREQ(s.toNarrow(), "\xC3\xA9t\xC3\xA9");
}
