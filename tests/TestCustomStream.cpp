// Streams whose ends are a caller's controller: reading, writing, the shared area and tellp.
#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <string>
#include <vector>

#include "StreamTestSupport.h"
#include "common/ZQCustomStream.h"

using namespace ZQCommonNS;

namespace {

/// Serves `input` in reads of at most `chunk` bytes (and the scripted counts first), and
/// keeps what is written; `writeLimit` makes writes take fewer bytes than offered.
class TestController : public ZQCustomStreamController {
 public:
  std::string input;
  size_t readPos = 0;
  size_t chunk = 100000;
  std::deque<int> scriptedCounts;  // counts returned before reading `input`
  std::vector<int> readSizes;
  std::string written;
  std::vector<int> writeSizes;
  int writeLimit = -1;
  bool opened = false;

  bool open() override { return opened = true; }
  void close() override { opened = false; }
  int read(char* buffer, int size) override {
    readSizes.push_back(size);
    if (!scriptedCounts.empty()) {
      int n = scriptedCounts.front();
      scriptedCounts.pop_front();
      return n;
    }
    if (readPos >= input.size()) return -1;
    size_t n = std::min({static_cast<size_t>(size), chunk, input.size() - readPos});
    std::copy(input.begin() + static_cast<std::ptrdiff_t>(readPos),
              input.begin() + static_cast<std::ptrdiff_t>(readPos + n), buffer);
    readPos += n;
    return static_cast<int>(n);
  }
  int write(const char* buffer, int size) override {
    writeSizes.push_back(size);
    int n = writeLimit >= 0 ? std::min(size, writeLimit) : size;
    written.append(buffer, static_cast<size_t>(n));
    return n;
  }
};

std::string readAll(std::istream& in) {
  std::string out;
  char chunk[777];
  while (in.read(chunk, sizeof chunk) || in.gcount() > 0) {
    out.append(chunk, static_cast<size_t>(in.gcount()));
  }
  return out;
}

}  // namespace

TEST(ZQCustomStream, ReadsThroughTheControllerUntilANegativeCount) {
  TestController c;
  c.input = streamtest::randomBytes(30000);
  c.chunk = 5000;
  ZQCustomStream s(&c);
  EXPECT_TRUE(s.is_open());
  EXPECT_EQ(readAll(s), c.input);
  EXPECT_FALSE(c.opened) << "open isn't the library's to call";
}

TEST(ZQCustomStream, EachReadAsksFor8192Bytes) {
  TestController c;
  c.input = std::string(20000, 'r');
  ZQCustomStream s(&c);
  readAll(s);
  ASSERT_GE(c.readSizes.size(), 3u);
  for (int size : c.readSizes) EXPECT_EQ(size, 8192);
}

TEST(ZQCustomStream, ZeroCountIsNotTheEndAndServesTheByteAtTheCursor) {
  TestController c;
  c.input = "abc";
  ZQCustomStream s(&c);
  EXPECT_EQ(s.get(), 'a');
  EXPECT_EQ(s.get(), 'b');
  EXPECT_EQ(s.get(), 'c');
  c.scriptedCounts = {0};
  // The refill kept "abc" in front and read nothing: the cursor stands where "a" was read.
  EXPECT_EQ(s.get(), 'a');
  EXPECT_EQ(s.get(), EOF);
  EXPECT_TRUE(s.eof());
}

TEST(ZQCustomStream, TenBytesAreKeptForPutBack) {
  TestController c;
  c.input = streamtest::compressibleText(20000);
  c.chunk = 50;
  ZQCustomStream s(&c);
  std::string first(50, '\0');
  ASSERT_TRUE(s.read(first.data(), 50));
  ASSERT_EQ(s.get(), static_cast<unsigned char>(c.input[50]));
  int ungot = 0;
  while (ungot < 20 && s.unget()) ++ungot;
  EXPECT_EQ(ungot, 11);
  s.clear();
  EXPECT_EQ(s.get(), static_cast<unsigned char>(c.input[40]));
}

TEST(ZQCustomStream, TellpReportsTheBytesWrittenAndSeekpMovesNothing) {
  TestController c;
  ZQCustomStream s(&c);
  EXPECT_EQ(s.tellp(), 0);
  s << "hello";
  EXPECT_EQ(s.tellp(), 5);
  EXPECT_EQ(c.written, "") << "still pending";
  s.seekp(0, std::ios::beg);
  EXPECT_TRUE(s.good());
  EXPECT_EQ(s.tellp(), 5);
  s.seekp(-3, std::ios::end);
  EXPECT_EQ(s.tellp(), 5);
  s << " world";
  EXPECT_EQ(s.tellp(), 11);
  std::string big(20000, 'x');
  s << big;
  EXPECT_EQ(s.tellp(), 20011);
  EXPECT_GT(c.written.size(), 0u);
  EXPECT_EQ(s.tellg(), 20011) << "the tell serves both directions";
}

TEST(ZQCustomStream, SeekToAPositionFailsAndMovesNothing) {
  TestController c;
  {
    ZQCustomStream s(&c);
    s << "abcdef";
    s.seekp(std::streampos(2));
    EXPECT_TRUE(s.fail());
    s.clear();
    s << "g";
    EXPECT_EQ(s.tellp(), 7);
  }
  EXPECT_EQ(c.written, "abcdefg");
}

TEST(ZQCustomStream, FullAreaGoesOutAs8202BytesInOneWrite) {
  TestController c;
  ZQCustomStream s(&c);
  std::string data = streamtest::randomBytes(8202 * 2 + 100);
  s.write(data.data(), static_cast<std::streamsize>(data.size()));
  ASSERT_EQ(c.writeSizes.size(), 2u);
  EXPECT_EQ(c.writeSizes[0], 8202);
  EXPECT_EQ(c.writeSizes[1], 8202);
  EXPECT_EQ(c.written, data.substr(0, 8202 * 2));
}

TEST(ZQCustomStream, DestructorFlushesWhatIsPending) {
  TestController c;
  {
    ZQCustomStream s(&c);
    s << "pending bytes";
    EXPECT_EQ(c.written, "");
  }
  EXPECT_EQ(c.written, "pending bytes");
}

TEST(ZQCustomStream, StreamFlushLeavesBytesPendingButFlushBufferWritesThem) {
  TestController c;
  ZQCustomStreamBuf buf(&c);
  std::ostream s(&buf);
  s << "abc" << std::flush;
  EXPECT_EQ(c.written, "");
  EXPECT_EQ(buf.flushBuffer(), 3);
  EXPECT_EQ(c.written, "abc");
  EXPECT_EQ(buf.flushBuffer(), 0) << "nothing pending";
}

TEST(ZQCustomStream, ShortWriteFailsAndKeepsTheBytesPending) {
  TestController c;
  c.writeLimit = 0;
  {
    ZQCustomStreamBuf buf(&c);
    std::ostream s(&buf);
    s << "keep";
    EXPECT_EQ(buf.flushBuffer(), -1);
    EXPECT_EQ(s.tellp(), 4) << "not counted as written";
    std::string more(9000, 'm');
    s << more;
    EXPECT_TRUE(s.bad()) << "a full area that can't go out fails the write";
    c.writeLimit = -1;
    c.written.clear();
    EXPECT_EQ(buf.flushBuffer(), 8202);
    EXPECT_EQ(c.written, "keep" + std::string(8198, 'm'));
  }
}

TEST(ZQCustomStream, NullControllerReadsNothingAndFailsWrites) {
  ZQCustomStreamBuf buf(nullptr);
  std::iostream s(&buf);
  EXPECT_EQ(s.get(), EOF);
  s.clear();
  s << "x";
  EXPECT_EQ(buf.flushBuffer(), -1);
}
