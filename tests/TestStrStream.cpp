// Memory blocks and strings read as input streams.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "common/ZQStrStream.h"

using namespace ZQCommonNS;

namespace {

std::string readAll(std::istream& in) {
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

}  // namespace

TEST(ZQStrStream, ReadsTheMemoryInPlace) {
  std::vector<char> data = {'a', 'b', '\0', 'c'};
  ZQStrStream in(data.data(), data.size(), false);
  data[0] = 'X';  // the stream reads the caller's bytes
  EXPECT_EQ(readAll(in), std::string("Xb\0c", 4));
}

TEST(ZQStrStream, ReadsAPrivateCopy) {
  std::vector<char> data = {'a', 'b', 'c'};
  ZQStrStream in(data.data(), data.size(), true);
  data[0] = 'X';
  data.clear();
  data.shrink_to_fit();
  EXPECT_EQ(readAll(in), "abc");
}

TEST(ZQStrStream, EndOfFileWhenUsedUp) {
  ZQStrStream in("xy", 2, false);
  EXPECT_EQ(in.get(), 'x');
  EXPECT_EQ(in.get(), 'y');
  EXPECT_EQ(in.get(), EOF);
  EXPECT_TRUE(in.eof());
}

TEST(ZQStrStream, EmptyAndNullData) {
  ZQStrStream empty("", 0, true);
  EXPECT_EQ(empty.get(), EOF);
  ZQStrStream null(nullptr, 10, false);
  EXPECT_EQ(null.get(), EOF);
}

TEST(ZQStrStream, StringFormGivesItsUtf16UnitsAsBytesInPlace) {
  UnicodeString text(u"Aé\U0001F600");
  ZQStrStream in(text);
  std::string bytes = readAll(in);
  ASSERT_EQ(bytes.size(), 8u);
  EXPECT_EQ(std::memcmp(bytes.data(), text.getBuffer(), 8), 0);
  char16_t first;
  std::memcpy(&first, bytes.data(), 2);
  EXPECT_EQ(first, u'A');
  // In place: the bytes are the string's own buffer.
  ZQStrStream again(text);
  EXPECT_EQ(again.getStreamBuf()->sgetc(),
            static_cast<unsigned char>(reinterpret_cast<const char*>(text.getBuffer())[0]));
}

TEST(ZQStrStream, BogusOrEmptyStringReadsNothing) {
  UnicodeString bogus;
  bogus.setToBogus();
  ZQStrStream a(bogus);
  EXPECT_EQ(a.get(), EOF);
  UnicodeString empty;
  ZQStrStream b(empty);
  EXPECT_EQ(b.get(), EOF);
}

TEST(ZQStrStream, HasNoSeek) {
  ZQStrStream in("abcdef", 6, false);
  in.get();
  in.seekg(0);
  EXPECT_TRUE(in.fail());
  in.clear();
  EXPECT_EQ(in.tellg(), -1);
  in.clear();
  EXPECT_EQ(in.get(), 'b');
}

TEST(ZQStrStream, RewindMovesTheGetAreaBack) {
  ZQStrStream in("abc", 3, false);
  EXPECT_EQ(readAll(in), "abc");
  in.clear();
  in.getStreamBuf()->rewind();
  EXPECT_EQ(readAll(in), "abc");
}

TEST(ZQStrStream, EveryByteCanBePutBack) {
  ZQStrStream in("abc", 3, false);
  EXPECT_EQ(readAll(in), "abc");
  in.clear();
  EXPECT_TRUE(in.unget());
  EXPECT_TRUE(in.unget());
  EXPECT_TRUE(in.unget());
  EXPECT_FALSE(in.unget());
}
