// Decoding through ICU: the stream's bytes are UTF-16 code units of the decoded text.
#include <gtest/gtest.h>

#include <cstring>
#include <sstream>
#include <string>

#include "StreamTestSupport.h"
#include "common/ZQICUIStream.h"

using namespace ZQCommonNS;

namespace {

std::string readAll(std::istream& in) {
  std::string out;
  char chunk[1001];
  while (in.read(chunk, sizeof chunk) || in.gcount() > 0) {
    out.append(chunk, static_cast<size_t>(in.gcount()));
  }
  return out;
}

/// The bytes of a string's UTF-16 units in the machine's order.
std::string unitBytes(const UnicodeString& s) {
  return std::string(reinterpret_cast<const char*>(s.getBuffer()),
                     static_cast<size_t>(s.length()) * 2);
}

UnicodeString decodeBytes(const std::string& bytes) {
  return UnicodeString(reinterpret_cast<const char16_t*>(bytes.data()),
                       static_cast<int32_t>(bytes.size() / 2));
}

}  // namespace

TEST(ZQICUIStream, GivesRawUtf16BytesOfTheText) {
  std::string utf8 = "A\xc3\xa9\xe2\x82\xac\xf0\x9f\x98\x80z";  // A é € 😀 z
  std::istringstream source(utf8);
  ZQICUIStream in(&source, "UTF-8");
  ASSERT_TRUE(in.is_open());
  std::string bytes = readAll(in);
  EXPECT_EQ(bytes.size(), 12u);  // six units: the emoji is a surrogate pair
  EXPECT_EQ(bytes, unitBytes(UnicodeString::fromUTF8(utf8)));
  char16_t first;
  std::memcpy(&first, bytes.data(), 2);
  EXPECT_EQ(first, u'A');
}

TEST(ZQICUIStream, LongInputWithCharactersAcrossReadBoundaries) {
  // Three-byte characters never line up with the 4096-byte reads.
  std::string utf8;
  while (utf8.size() < 50000) utf8 += "ab\xe2\x82\xac\xe4\xb8\xad";
  std::istringstream source(utf8);
  ZQICUIStream in(&source, "utf-8");
  EXPECT_EQ(decodeBytes(readAll(in)), UnicodeString::fromUTF8(utf8));
}

TEST(ZQICUIStream, SingleByteAndMultiByteCharsets) {
  {
    std::istringstream source(std::string("caf\xe9 \xa3", 6));
    ZQICUIStream in(&source, "ISO-8859-1");
    EXPECT_EQ(decodeBytes(readAll(in)), UnicodeString(u"café £"));
  }
  {
    std::string sjis;
    for (int i = 0; i < 3000; ++i) sjis += "\x93\xfa\x96\x7b";  // 日本
    std::istringstream source(sjis);
    ZQICUIStream in(&source, "Shift_JIS");
    UnicodeString expected;
    for (int i = 0; i < 3000; ++i) expected += u"日本";
    EXPECT_EQ(decodeBytes(readAll(in)), expected);
  }
}

TEST(ZQICUIStream, UnknownCharsetIsNotOpenAndFirstReadEnds) {
  std::istringstream source("text");
  ZQICUIStream in(&source, "no-such-charset-zq");
  EXPECT_FALSE(in.is_open());
  EXPECT_EQ(in.get(), EOF);
  EXPECT_TRUE(in.eof());
  EXPECT_EQ(source.tellg(), 0) << "the source isn't touched";
}

TEST(ZQICUIStream, NullOrEmptyCharsetIsNotOpen) {
  std::istringstream source("text");
  ZQICUIStream a(&source, nullptr);
  EXPECT_FALSE(a.is_open());
  EXPECT_EQ(a.get(), EOF);
  ZQICUIStream b(&source, "");
  EXPECT_FALSE(b.is_open());
  EXPECT_EQ(b.get(), EOF);
}

TEST(ZQICUIStream, ConverterClosesAtTheEndOfTheSource) {
  std::istringstream source("abc");
  ZQICUIStream in(&source, "UTF-8");
  EXPECT_TRUE(in.is_open());
  EXPECT_EQ(readAll(in).size(), 6u);
  EXPECT_FALSE(in.is_open());
  EXPECT_EQ(in.get(), EOF);
}

TEST(ZQICUIStream, EmptySourceEndsAtOnce) {
  std::istringstream source("");
  ZQICUIStream in(&source, "UTF-8");
  EXPECT_EQ(in.get(), EOF);
}

TEST(ZQICUIStream, NullSourceEndsAtOnce) {
  ZQICUIStream in(nullptr, "UTF-8");
  EXPECT_TRUE(in.is_open());
  EXPECT_EQ(in.get(), EOF);
}

TEST(ZQICUIStream, BadBytesBecomeSubstitutes) {
  std::istringstream source(
      std::string("a\xff"
                  "b",
                  3));
  ZQICUIStream in(&source, "UTF-8");
  EXPECT_EQ(decodeBytes(readAll(in)), UnicodeString(u"a\ufffdb"));
}

TEST(ZQICUIStream, CharacterCutAtTheEndOfTheSourceStillComesOut) {
  std::string utf8(4096, 'x');
  utf8 += "\xe2\x82";  // a euro sign without its last byte
  std::istringstream source(utf8);
  ZQICUIStream in(&source, "UTF-8");
  UnicodeString got = decodeBytes(readAll(in));
  EXPECT_EQ(got.length(), 4097);
  EXPECT_EQ(got.charAt(4096), 0xFFFD);
}

TEST(ZQICUIStream, EightBytesAreKeptForPutBack) {
  std::string text(10000, 'q');
  text[4095] = 'L';  // last unit of the first fill: 4096 source bytes, 8192 bytes of UTF-16
  std::istringstream source(text);
  ZQICUIStream in(&source, "US-ASCII");
  std::string first(8192, '\0');
  ASSERT_TRUE(in.read(first.data(), 8192));
  EXPECT_EQ(in.rdbuf()->in_avail(), 0);
  ASSERT_EQ(in.get(), 'q');  // refill
  int ungot = 0;
  while (ungot < 20 && in.unget()) ++ungot;
  EXPECT_EQ(ungot, 9);
  in.clear();
  std::string back(8, '\0');
  in.read(back.data(), 8);
  EXPECT_EQ(decodeBytes(back), UnicodeString(u"qqqL"));
}

TEST(ZQICUIStream, FillThatMakesMoreUnitsThanTheAreaHoldsLosesNothing) {
  // The first read ends inside a four-byte character; the second completes it (two units)
  // and adds 4095 one-unit characters: 4097 units from one read of 4096 bytes.
  std::string utf8(4093, 'a');
  utf8 += "\xf0\x9f\x98\x80";
  utf8 += std::string(4095, 'b');
  utf8 += "\xf0\x9f\x98\x80";
  utf8 += std::string(5000, 'c');
  for (size_t chunk : {1u, 2u, 1001u, 8192u}) {
    std::istringstream source(utf8);
    ZQICUIStream in(&source, "UTF-8");
    std::string bytes;
    std::string buf(chunk, '\0');
    while (in.read(buf.data(), static_cast<std::streamsize>(chunk)) || in.gcount() > 0) {
      bytes.append(buf.data(), static_cast<size_t>(in.gcount()));
    }
    EXPECT_EQ(decodeBytes(bytes), UnicodeString::fromUTF8(utf8)) << chunk;
  }
}

TEST(ZQICUIStream, CharacterCutAtTheEndOfASourceOfWholeReadsStillComesOut) {
  // 4096 bytes: the one read doesn't meet the end, so the cut character is still held in the
  // converter when the next read finds nothing.
  std::string utf8(4094, 'x');
  utf8 += "\xe2\x82";
  std::istringstream source(utf8);
  ZQICUIStream in(&source, "UTF-8");
  UnicodeString got = decodeBytes(readAll(in));
  ASSERT_EQ(got.length(), 4095);
  EXPECT_EQ(got.charAt(4093), u'x');
  EXPECT_EQ(got.charAt(4094), 0xFFFD);
  EXPECT_FALSE(in.is_open());
}
