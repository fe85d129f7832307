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

TEST(ZQCStr, BytesWithTheDefaultConverterComeBackWithoutConversion) {
  // "\xE9" alone is not what the default converter would write for the string it makes.
  ZQCStr s("caf\xE9", nullptr);
  const char* narrow = s.toNarrow();
  EXPECT_STREQ(narrow, "caf\xE9");
  EXPECT_EQ(s.getNarrowEncoding(), nullptr);
  EXPECT_EQ(s.toNarrow(nullptr), narrow);  // null asks for the same, unnamed encoding
  // A name is never equal to null: it converts anew.
  EXPECT_STREQ(s.toNarrow("UTF-16BE"), "");  // "c" is 00 63: the text starts with a NUL byte
  EXPECT_EQ(s.getNarrowLength(), 8u);
  EXPECT_STREQ(s.getNarrowEncoding(), "UTF-16BE");
}

TEST(ZQCStr, NullEncodingIsNotTheStoredName) {
  ZQCStr s("caf\xE9", "ISO-8859-1");
  const char* narrow = s.toNarrow(nullptr);
  EXPECT_EQ(s.getNarrowEncoding(), nullptr);
  EXPECT_STRNE(narrow, "caf\xE9");
  EXPECT_STREQ(s.toNarrow("ISO-8859-1"), "caf\xE9");  // converted anew, the same bytes again
  EXPECT_STREQ(s.getNarrowEncoding(), "ISO-8859-1");
}

TEST(ZQCStr, BytesKeptUntilTheStringChangesEvenIfUnfaithful) {
  ZQCStr s("caf\xE9", "UTF-8");
  EXPECT_STREQ(s.toNarrow("UTF-8"), "caf\xE9");
  s.setCharAt(0, u'C');
  EXPECT_STREQ(s.toNarrow("UTF-8"), "Caf\xEF\xBF\xBD");  // rebuilt from the string
}

TEST(ZQCStr, UnknownEncodingNeitherThrowsNorCrashes) {
  ZQCStr a("abc", "no-such-encoding");
  EXPECT_STREQ(a.toNarrow("no-such-encoding"), "abc");
  EXPECT_NO_THROW(a.toNarrow());
  ZQCStr b(UnicodeString(u"abc"));
  EXPECT_NO_THROW(b.toNarrow("no-such-encoding"));
  ZQCStr bogus(ZQBogusString::BOGUS_VALUE);
  EXPECT_STREQ(bogus.toNarrow(), "");
}

TEST(ZQUtfStr, NamedEncodingStaysAvailable) {
  ZQUtfStr s(UnicodeString(u"caf\u00E9"));
  EXPECT_STREQ(s.toNarrow("ISO-8859-1"), "caf\xE9");
  EXPECT_STREQ(s.toNarrow(), "caf\xC3\xA9");
  EXPECT_STREQ(s.getNarrowEncoding(), "UTF-8");
}
