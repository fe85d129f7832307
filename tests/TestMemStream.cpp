// Tests of the block-based memory stream: block boundaries, sources read on demand, seeking,
// searching, put-back, trimming, checksums, copies and the move to a temporary file.
#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "StreamTestSupport.h"
#include "TestSupport.h"
#include "common/ZQMemStream.h"
#include "common/ZQUri.h"

using namespace ZQCommonNS;

namespace {

// Serves the bytes of a string and counts what was taken, so a test can see when a source is
// read and how far.
class CountingBuf : public std::streambuf {
 public:
  explicit CountingBuf(std::string data) : m_data(std::move(data)) {
    char* p = m_data.data();
    setg(p, p, p + m_data.size());
  }
  size_t delivered() const { return static_cast<size_t>(gptr() - eback()); }

 protected:
  pos_type seekoff(off_type off, std::ios_base::seekdir way, std::ios_base::openmode) override {
    off_type base = way == std::ios_base::beg   ? 0
                    : way == std::ios_base::cur ? gptr() - eback()
                                                : egptr() - eback();
    return seekpos(pos_type(base + off), std::ios_base::in);
  }
  pos_type seekpos(pos_type pos, std::ios_base::openmode) override {
    off_type p = off_type(pos);
    if (p < 0 || p > egptr() - eback()) return pos_type(off_type(-1));
    setg(eback(), eback() + p, egptr());
    return pos;
  }

 private:
  std::string m_data;
};

// An input stream over a CountingBuf that reports its own destruction.
class TrackedSource : public std::istream {
 public:
  TrackedSource(std::string data, bool* deleted)
      : std::istream(nullptr), m_buf(std::move(data)), m_deleted(deleted) {
    rdbuf(&m_buf);
  }
  ~TrackedSource() override {
    if (m_deleted) *m_deleted = true;
  }
  size_t delivered() const { return m_buf.delivered(); }

 private:
  CountingBuf m_buf;
  bool* m_deleted;
};

std::string contentOf(ZQMemStream& ms) {
  std::string s;
  ms.appendToString(s);
  return s;
}

std::string readAll(std::istream& in) {
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string readN(std::istream& in, size_t n) {
  std::string s(n, '\0');
  in.read(s.data(), static_cast<std::streamsize>(n));
  s.resize(static_cast<size_t>(in.gcount()));
  return s;
}

std::string letters(size_t n) {
  std::string s;
  for (size_t i = 0; i < n; ++i) s += static_cast<char>('a' + i % 26);
  return s;
}

std::string md5Of(const std::string& data) {
  unsigned char digest[EVP_MAX_MD_SIZE];
  unsigned int n = 0;
  EVP_Digest(data.data(), data.size(), digest, &n, EVP_md5(), nullptr);
  return std::string(reinterpret_cast<const char*>(digest), n);
}

// The checksum as the table format defines it: big-endian words of the data padded with zeros,
// with the word grid starting again at each block of `block` bytes, and a block's bytes beyond
// its last whole word dropped unless it is the last block.
uint32_t directChecksum(const std::string& data, size_t block) {
  uint32_t sum = 0;
  for (size_t start = 0; start < data.size(); start += block) {
    const size_t len = std::min(block, data.size() - start);
    const bool last = start + len == data.size();
    const size_t usable = last ? len : len / 4 * 4;
    for (size_t i = 0; i < usable; i += 4) {
      uint32_t word = 0;
      for (size_t k = 0; k < 4; ++k) {
        const size_t at = i + k;
        const uint32_t byte = at < usable ? static_cast<unsigned char>(data[start + at]) : 0;
        word = (word << 8) | byte;
      }
      sum += word;
    }
  }
  return sum;
}

std::streamoff tellGet(ZQMemStream& ms) { return std::streamoff(ms.tellg()); }
std::streamoff tellPut(ZQMemStream& ms) { return std::streamoff(ms.tellp()); }

}  // namespace

// ---- Blocks and their boundaries ----

TEST(ZQMemStream, EmptyStreamHasLengthZero) {
  ZQMemStream ms;
  EXPECT_EQ(ms.length(), 0u);
  EXPECT_EQ(ms.size(), 0u);
  EXPECT_TRUE(ms.empty());
  EXPECT_TRUE(ms.isEmpty());
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 0u);
}

TEST(ZQMemStream, GetBufferOnEmptyStreamAllocatesOneBlock) {
  ZQMemStream ms;
  const char* p = nullptr;
  EXPECT_EQ(ms.getBuffer(p), 0u);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 1u);
  EXPECT_EQ(ms.length(), 0u);
}

TEST(ZQMemStream, DefaultBlockSizeIs8192) {
  ZQMemStream ms;
  EXPECT_EQ(ms.getGrowBytes(), 8192u);
  ZQMemStreamBuf buf;
  EXPECT_EQ(buf.getGrowBytes(), 8192u);
}

TEST(ZQMemStream, WritingOneByteLessThanABlockFillsTheFirstBlockBarOne) {
  ZQMemStream ms(nullptr, 16);
  ms << letters(15);
  EXPECT_EQ(ms.length(), 15u);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 1u);
  EXPECT_EQ(ms.getStreamBuf()->getLastBlockSize(), 15u);
}

TEST(ZQMemStream, WritingExactlyABlockMakesOneFullBlock) {
  ZQMemStream ms(nullptr, 16);
  ms << letters(16);
  EXPECT_EQ(ms.length(), 16u);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 1u);
  EXPECT_EQ(ms.getStreamBuf()->getLastBlockSize(), 16u);
  // The next write brings the second block.
  ms.put('!');
  EXPECT_EQ(ms.length(), 17u);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 2u);
  EXPECT_EQ(ms.getStreamBuf()->getLastBlockSize(), 1u);
  EXPECT_EQ(contentOf(ms), letters(16) + "!");
}

TEST(ZQMemStream, WritingOneByteMoreThanABlockMakesTwoBlocks) {
  ZQMemStream ms(nullptr, 16);
  ms << letters(17);
  EXPECT_EQ(ms.length(), 17u);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 2u);
  EXPECT_EQ(ms.getStreamBuf()->getLastBlockSize(), 1u);
  EXPECT_EQ(contentOf(ms), letters(17));
}

TEST(ZQMemStream, WrittenBytesReadBackForManyBlockSizes) {
  const std::string data = streamtest::randomBytes(5000, 3);
  for (size_t g : {1u, 2u, 3u, 4u, 7u, 64u, 4999u, 5000u, 5001u, 8192u}) {
    ZQMemStream ms(nullptr, g);
    ms.write(data.data(), static_cast<std::streamsize>(data.size()));
    EXPECT_EQ(ms.length(), data.size()) << g;
    EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), (data.size() + g - 1) / g) << g;
    EXPECT_EQ(readAll(ms), data) << g;
    EXPECT_EQ(contentOf(ms), data) << g;
  }
}

TEST(ZQMemStream, BytesWrittenOneAtATimeReadBack) {
  ZQMemStream ms(nullptr, 5);
  const std::string data = letters(23);
  for (char c : data) ms.put(c);
  EXPECT_EQ(readAll(ms), data);
}

TEST(ZQMemStream, SetGrowBytesAfterTheFirstByteHasNoEffect) {
  ZQMemStream ms;
  ms.setGrowBytes(16);
  EXPECT_EQ(ms.getGrowBytes(), 16u);
  ms.put('x');
  ms.setGrowBytes(32);
  EXPECT_EQ(ms.getGrowBytes(), 16u);
  ms << letters(20);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 2u);
}

TEST(ZQMemStream, ReaderSeesBytesWrittenIntoItsBlockLater) {
  ZQMemStream ms(nullptr, 8);
  ms << "abc";
  EXPECT_EQ(readAll(ms), "abc");
  ms.clear();
  ms << "de";
  EXPECT_EQ(readAll(ms), "de");
  ms.clear();
  ms << "fghijk";  // into the next block as well
  EXPECT_EQ(readAll(ms), "fghijk");
}

TEST(ZQMemStream, WritingWithoutAPutPositionStartsAtZero) {
  // A reader has no put position yet: the first write goes to position 0.
  ZQMemStream ms(new std::istringstream("abcdef"), 8, true);
  EXPECT_EQ(readN(ms, 3), "abc");
  ms << "XY";
  EXPECT_EQ(contentOf(ms), "XYcdef");
}

// ---- Sources ----

TEST(ZQMemStream, SourceIsReadOnlyWhenAsked) {
  bool deleted = false;
  auto* src = new TrackedSource(letters(100), &deleted);
  ZQMemStream ms(src, 16, true);
  EXPECT_EQ(src->delivered(), 0u);
  EXPECT_EQ(ms.get(), 'a');
  EXPECT_EQ(src->delivered(), 16u);
  EXPECT_EQ(readN(ms, 16), letters(17).substr(1));
  EXPECT_EQ(src->delivered(), 32u);
  EXPECT_FALSE(deleted);
}

TEST(ZQMemStream, OwnedSourceIsDeletedWhenFinished) {
  bool deleted = false;
  ZQMemStream ms(new TrackedSource("abc", &deleted), 16, true);
  EXPECT_EQ(readAll(ms), "abc");
  EXPECT_TRUE(deleted);
  EXPECT_EQ(ms.getStreamBuf()->getSource(), nullptr);
}

TEST(ZQMemStream, SourceNotOwnedIsLeftAlone) {
  bool deleted = false;
  TrackedSource src("abc", &deleted);
  {
    ZQMemStream ms(&src, 16, false);
    EXPECT_EQ(readAll(ms), "abc");
  }
  EXPECT_FALSE(deleted);
}

TEST(ZQMemStream, UnfinishedOwnedSourceIsDeletedWithTheStream) {
  bool deleted = false;
  {
    ZQMemStream ms(new TrackedSource(letters(100), &deleted), 16, true);
    EXPECT_EQ(ms.get(), 'a');
    EXPECT_FALSE(deleted);
  }
  EXPECT_TRUE(deleted);
}

TEST(ZQMemStream, TwoSourcesReadAsOneSequenceWithASeamInTheFirstBlock) {
  ZQMemStream ms(new std::istringstream("abc"), 4, true);
  ms.setSource(new std::istringstream("defgh"), true);
  const char* p = nullptr;
  size_t n = ms.getBuffer(p);
  ASSERT_EQ(n, 4u);
  EXPECT_EQ(std::string(p, n), "abcd");  // one block holds both sides of the seam
  ms.seekg(0);
  EXPECT_EQ(readAll(ms), "abcdefgh");
  EXPECT_EQ(ms.length(), 8u);
}

TEST(ZQMemStream, SeamAtABlockBoundary) {
  ZQMemStream ms(new std::istringstream("abcd"), 4, true);
  ms.setSource(new std::istringstream("efgh"), true);
  ms.setSource(new std::istringstream("i"), true);
  EXPECT_EQ(readAll(ms), "abcdefghi");
}

TEST(ZQMemStream, SetSourceWithNullDoesNothing) {
  ZQMemStream ms;
  ms.setSource(nullptr, true);
  EXPECT_EQ(ms.getStreamBuf()->getSource(), nullptr);
  EXPECT_EQ(ms.length(), 0u);
}

TEST(ZQMemStream, SetSourceFillsALastBlockWithRoomAtOnce) {
  ZQMemStream ms(nullptr, 8);
  ms << "ab";
  auto* src = new TrackedSource("cdefghijkl", nullptr);
  ms.setSource(src, true);
  EXPECT_EQ(src->delivered(), 6u);
  EXPECT_EQ(ms.getStreamBuf()->getLastBlockSize(), 8u);
  EXPECT_EQ(ms.getStreamBuf()->getSource(), src);
  EXPECT_EQ(contentOf(ms), "abcdefghijkl");
}

TEST(ZQMemStream, SetSourceFillingTheLastBlockWidensTheGetArea) {
  ZQMemStream ms(nullptr, 8);
  ms << "ab";
  EXPECT_EQ(ms.get(), 'a');
  EXPECT_EQ(ms.getStreamBuf()->getRemains(), 1u);
  ms.setSource(new std::istringstream("cdefghijkl"), true);
  // The get area now reaches over the bytes just read into its block.
  EXPECT_EQ(ms.getStreamBuf()->getRemains(), 7u);
  EXPECT_EQ(tellGet(ms), 1);
  EXPECT_EQ(readAll(ms), "bcdefghijkl");
}

TEST(ZQMemStream, SetSourceWithRoomLaysAGetAreaNeverSet) {
  ZQMemStream ms(nullptr, 8);
  ms << "ab";
  EXPECT_EQ(ms.getStreamBuf()->getRemains(), 0u);
  ms.setSource(new std::istringstream("cd"), true);
  EXPECT_EQ(ms.getStreamBuf()->getRemains(), 4u);
  EXPECT_EQ(tellGet(ms), 0);
}

TEST(ZQMemStream, SetSourceBehindAFullBlockReadsNothingYet) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcd";
  auto* src = new TrackedSource("efgh", nullptr);
  ms.setSource(src, true);
  EXPECT_EQ(src->delivered(), 0u);
  EXPECT_EQ(contentOf(ms), "abcdefgh");
}

TEST(ZQMemStream, ShortSourceBehindWrittenBytesIsRetired) {
  bool deleted = false;
  ZQMemStream ms(nullptr, 8);
  ms << "ab";
  ms.setSource(new TrackedSource("cd", &deleted), true);
  EXPECT_TRUE(deleted);
  EXPECT_EQ(ms.getStreamBuf()->getSource(), nullptr);
  EXPECT_EQ(contentOf(ms), "abcd");
}

TEST(ZQMemStream, FailedSourceBehindWrittenBytesIsRetiredAtOnce) {
  // A failed stream reads nothing and sets no end-of-file flag; the short read alone retires it,
  // so no source stays queued behind a block that isn't full.
  bool deleted = false;
  auto* src = new TrackedSource("cd", &deleted);
  src->setstate(std::ios::failbit);
  ZQMemStream ms(nullptr, 8);
  ms << "ab";
  ms.setSource(src, true);
  EXPECT_TRUE(deleted);
  EXPECT_EQ(ms.getStreamBuf()->getSource(), nullptr);
  ms << "ef";
  EXPECT_EQ(contentOf(ms), "abef");
}

TEST(ZQMemStream, SourceInAFailedStateReadsAsFinished) {
  auto* src = new std::istringstream("abc");
  src->setstate(std::ios::failbit);
  ZQMemStream ms(src, 8, true);
  EXPECT_EQ(ms.length(), 0u);
  EXPECT_EQ(ms.getStreamBuf()->getSource(), nullptr);
}

TEST(ZQMemStream, KeepMemoryFalseHoldsAtMostTwoBlocks) {
  const std::string data = streamtest::randomBytes(64 * 100 + 5, 9);
  ZQMemStream ms(new std::istringstream(data), 64, true);
  ms.setKeepMemory(false);
  std::string read;
  size_t most = 0;
  char chunk[50];
  while (ms.read(chunk, sizeof chunk), ms.gcount() > 0) {
    read.append(chunk, static_cast<size_t>(ms.gcount()));
    most = std::max(most, ms.getStreamBuf()->getBlockCount());
  }
  EXPECT_EQ(read, data);
  EXPECT_LE(most, 2u);
  EXPECT_EQ(most, 2u);
}

TEST(ZQMemStream, KeepMemoryTrueKeepsEveryBlock) {
  const std::string data = streamtest::randomBytes(64 * 100, 9);
  ZQMemStream ms(new std::istringstream(data), 64, true);
  EXPECT_EQ(readAll(ms), data);
  EXPECT_GE(ms.getStreamBuf()->getBlockCount(), 100u);
  ms.clear();
  ms.seekg(64 * 50);
  EXPECT_EQ(readN(ms, 10), data.substr(64 * 50, 10));
}

TEST(ZQMemStream, WritingKeepsMemoryWhateverKeepMemorySays) {
  ZQMemStream ms(nullptr, 8);
  ms.setKeepMemory(false);
  ms << letters(80);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 10u);
  EXPECT_EQ(contentOf(ms), letters(80));
}

// ---- Put-back ----

TEST(ZQMemStream, PutBackAcrossABlockBoundary) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcdefgh";
  EXPECT_EQ(readN(ms, 4), "abcd");
  EXPECT_EQ(ms.get(), 'e');
  ms.unget();  // inside the block
  ASSERT_TRUE(ms.good());
  ms.putback('d');  // at the block's start: back into the previous block
  ASSERT_TRUE(ms.good());
  EXPECT_EQ(tellGet(ms), 3);
  EXPECT_EQ(ms.get(), 'd');
  EXPECT_EQ(ms.get(), 'e');
}

TEST(ZQMemStream, PutBackAtTheVeryStartFails) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcd";
  ms.seekg(0);
  ms.putback('z');
  EXPECT_TRUE(ms.bad());
}

TEST(ZQMemStream, PutBackWithoutAReadFails) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcd";
  ms.putback('z');
  EXPECT_TRUE(ms.bad());
}

TEST(ZQMemStream, UngetAtABlockStartFailsSinceItGivesNoCharacter) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcdefgh";
  EXPECT_EQ(readN(ms, 4), "abcd");
  EXPECT_EQ(ms.peek(), 'e');  // the get area is now at the start of the second block
  ms.unget();
  EXPECT_TRUE(ms.bad());
}

TEST(ZQMemStream, PutBackOfADifferentCharacterChangesNothing) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcdefgh";
  EXPECT_EQ(readN(ms, 5), "abcde");
  ms.putback('X');
  ASSERT_TRUE(ms.good());
  EXPECT_EQ(ms.get(), 'e');
  readN(ms, 3);
  ms.clear();
  ms.putback('Y');  // back through the second block and across the seam into the first
  ms.putback('Z');
  ms.putback('W');
  ms.putback('V');
  ms.putback('U');
  ASSERT_TRUE(ms.good());
  EXPECT_EQ(ms.get(), 'd');
  EXPECT_EQ(contentOf(ms), "abcdefgh");
}

// ---- Seeking ----

TEST(ZQMemStream, SeekPastTheEndForInputFails) {
  ZQMemStream ms(nullptr, 8);
  ms << "abcdef";
  ZQMemStreamBuf* buf = ms.getStreamBuf();
  EXPECT_EQ(std::streamoff(buf->pubseekpos(7, std::ios_base::in)), -1);
  EXPECT_EQ(std::streamoff(buf->pubseekpos(6, std::ios_base::in)), 6);  // exactly the end
  EXPECT_EQ(std::streamoff(buf->pubseekoff(1, std::ios_base::end, std::ios_base::in)), -1);
  ms.seekg(100);
  EXPECT_TRUE(ms.fail());
}

TEST(ZQMemStream, NegativeSeekFails) {
  ZQMemStream ms;
  ms << "abc";
  EXPECT_EQ(std::streamoff(ms.getStreamBuf()->pubseekpos(-1, std::ios_base::in)), -1);
  EXPECT_EQ(
      std::streamoff(ms.getStreamBuf()->pubseekoff(-4, std::ios_base::end, std::ios_base::in)), -1);
}

TEST(ZQMemStream, SeekPastTheEndForOutputSucceedsAndWritesThere) {
  ZQMemStream ms(nullptr, 8);
  ms << "abc";
  ms.seekp(21);
  ASSERT_TRUE(ms.good());
  EXPECT_EQ(tellPut(ms), 21);
  ms << "xy";
  EXPECT_EQ(ms.length(), 23u);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 3u);
  std::string all = contentOf(ms);
  ASSERT_EQ(all.size(), 23u);
  EXPECT_EQ(all.substr(0, 3), "abc");
  EXPECT_EQ(all.substr(21), "xy");  // the gap's bytes are whatever the blocks held
}

TEST(ZQMemStream, OutputSeekBeyondAnyAddressSpaceFailsWithoutHarm) {
  ZQMemStream ms(nullptr, 8);
  ms << "abc";
  const std::streamoff huge = std::streamoff(1) << 60;
  // No block is allocated for a position no process could hold: the seek just fails...
  EXPECT_EQ(std::streamoff(ms.getStreamBuf()->pubseekpos(huge, std::ios_base::out)), -1);
  EXPECT_EQ(
      std::streamoff(ms.getStreamBuf()->pubseekoff(huge, std::ios_base::end, std::ios_base::out)),
      -1);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 1u);
  // ...which the stream turns into its fail bit, and the content stays usable.
  ms.seekp(huge);
  EXPECT_TRUE(ms.fail());
  EXPECT_FALSE(ms.bad());
  ms.clear();
  EXPECT_EQ(ms.length(), 3u);
  ms << "d";
  EXPECT_EQ(contentOf(ms), "abcd");
}

TEST(ZQMemStream, SeekOnAnEmptyBufferAllocatesTheFirstBlock) {
  ZQMemStream ms;
  EXPECT_EQ(std::streamoff(ms.getStreamBuf()->pubseekpos(0, std::ios_base::in)), 0);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 1u);
}

TEST(ZQMemStream, SeekCurrentTakesTheGetSideOnlyForInputAlone) {
  ZQMemStream ms(nullptr, 8);
  ms << letters(20);
  ms.seekg(5);
  ms.seekp(13);
  ZQMemStreamBuf* buf = ms.getStreamBuf();
  EXPECT_EQ(std::streamoff(buf->pubseekoff(0, std::ios_base::cur, std::ios_base::in)), 5);
  EXPECT_EQ(std::streamoff(buf->pubseekoff(0, std::ios_base::cur, std::ios_base::out)), 13);
  EXPECT_EQ(std::streamoff(buf->pubseekoff(2, std::ios_base::cur, std::ios_base::in)), 7);
  EXPECT_EQ(ms.get(), 'h');
  // Both sides together count from the put side, and move the get side there as well.
  EXPECT_EQ(std::streamoff(
                buf->pubseekoff(0, std::ios_base::cur, std::ios_base::in | std::ios_base::out)),
            13);
  EXPECT_EQ(ms.get(), 'n');
}

TEST(ZQMemStream, SeekFromTheEndDrainsTheSources) {
  ZQMemStream ms(new std::istringstream(letters(30)), 8, true);
  ms.seekg(-5, std::ios_base::end);
  EXPECT_EQ(tellGet(ms), 25);
  EXPECT_EQ(readAll(ms), letters(30).substr(25));
  EXPECT_EQ(ms.getStreamBuf()->getSource(), nullptr);
}

TEST(ZQMemStream, SeekWithAnUnknownDirectionFails) {
  ZQMemStream ms;
  ms << "abc";
  EXPECT_EQ(std::streamoff(ms.getStreamBuf()->pubseekoff(0, static_cast<std::ios_base::seekdir>(7),
                                                         std::ios_base::in)),
            -1);
}

TEST(ZQMemStream, SeekIntoASourceLoadsOnlyWhatIsNeeded) {
  auto* src = new TrackedSource(letters(100), nullptr);
  ZQMemStream ms(src, 16, true);
  ms.seekg(40);
  EXPECT_EQ(src->delivered(), 48u);
  EXPECT_EQ(ms.get(), letters(100)[40]);
}

TEST(ZQMemStream, SeekInputAndOutputTogetherClampsThePutSideToo) {
  ZQMemStream ms(nullptr, 8);
  ms << "abc";
  EXPECT_EQ(
      std::streamoff(ms.getStreamBuf()->pubseekpos(6, std::ios_base::in | std::ios_base::out)), 6);
  // Both sides were laid at the end of the data in that block.
  EXPECT_EQ(
      std::streamoff(ms.getStreamBuf()->pubseekoff(0, std::ios_base::cur, std::ios_base::out)), 3);
}

// ---- Searching ----

TEST(ZQMemStream, SearchSeekFindsAPatternAcrossTwoBlocks) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcdefgh";
  EXPECT_TRUE(ms.searchSeek("cdef"));
  EXPECT_EQ(tellGet(ms), 2);
  EXPECT_EQ(readAll(ms), "cdefgh");
}

TEST(ZQMemStream, SearchSeekAcrossSourceSeamsAndBlocks) {
  ZQMemStream ms(new std::istringstream("xxab"), 3, true);
  ms.setSource(new std::istringstream("cdyy"), true);
  EXPECT_TRUE(ms.searchSeek("abcd", 4));
  EXPECT_EQ(tellGet(ms), 2);
}

TEST(ZQMemStream, SearchSeekMissLeavesThePositionButDrainsSources) {
  bool deleted = false;
  TrackedSource src(letters(100), &deleted);
  ZQMemStream ms(&src, 16, false);
  EXPECT_EQ(readN(ms, 3), "abc");
  EXPECT_FALSE(ms.searchSeek("zz"));
  EXPECT_EQ(tellGet(ms), 3);
  EXPECT_EQ(src.delivered(), 100u);
  EXPECT_EQ(ms.getStreamBuf()->getSource(), nullptr);
  EXPECT_FALSE(deleted);
  EXPECT_EQ(ms.get(), 'd');
}

TEST(ZQMemStream, SearchSeekWithAnEmptyPatternIsFalse) {
  ZQMemStream ms;
  ms << "abc";
  EXPECT_FALSE(ms.searchSeek(""));
  EXPECT_FALSE(ms.searchSeek(nullptr));
}

TEST(ZQMemStream, SearchSeekWithALengthFindsBytesWithNul) {
  ZQMemStream ms(nullptr, 4);
  ms.write("ab\0cd\0ef", 8);
  EXPECT_TRUE(ms.searchSeek("d\0e", 3));
  EXPECT_EQ(tellGet(ms), 4);
}

TEST(ZQMemStream, SearchSeekResumesAfterAFalseStart) {
  ZQMemStream ms(nullptr, 3);
  ms << "aaab";
  EXPECT_TRUE(ms.searchSeek("aab"));
  EXPECT_EQ(tellGet(ms), 1);
}

TEST(ZQMemStream, SearchSeekStartsAtTheGetPosition) {
  ZQMemStream ms(nullptr, 4);
  ms << "abXabX";
  EXPECT_EQ(ms.get(), 'a');
  EXPECT_TRUE(ms.searchSeek("ab"));
  EXPECT_EQ(tellGet(ms), 3);
  EXPECT_TRUE(ms.searchSeek("ab"));  // stands on the match, so it finds the same one
  EXPECT_EQ(tellGet(ms), 3);
}

TEST(ZQMemStream, SearchSeekPatternCutByTheEnd) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcab";
  EXPECT_FALSE(ms.searchSeek("abd"));
  EXPECT_FALSE(ms.searchSeek("bX"));
  EXPECT_EQ(tellGet(ms), 0);
}

TEST(ZQMemStream, SkipSeekMovesBehindAMatch) {
  ZQMemStream ms(nullptr, 3);
  ms << "abcdefg";
  EXPECT_TRUE(ms.skipSeek("abcde"));
  EXPECT_EQ(tellGet(ms), 5);
  EXPECT_EQ(ms.get(), 'f');
}

TEST(ZQMemStream, SkipSeekWithAPartialMatchLeavesThePosition) {
  ZQMemStream ms(nullptr, 3);
  ms << "abcdefg";
  EXPECT_FALSE(ms.skipSeek("abcX"));
  EXPECT_EQ(tellGet(ms), 0);
  EXPECT_FALSE(ms.skipSeek("abcdefgh"));  // the data ends first
  EXPECT_EQ(tellGet(ms), 0);
  EXPECT_FALSE(ms.skipSeek(""));
}

TEST(ZQMemStream, SkipSeekLoadsFromSources) {
  ZQMemStream ms(new std::istringstream("ab"), 2, true);
  ms.setSource(new std::istringstream("cd"), true);
  EXPECT_TRUE(ms.skipSeek("abc"));
  EXPECT_EQ(ms.get(), 'd');
}

TEST(ZQMemStream, SeekEOLSkipsTheWholeRunOfLineEnds) {
  ZQMemStream ms(nullptr, 8);
  ms << "a\r\n\r\nb";
  EXPECT_TRUE(ms.seekEOL());
  EXPECT_EQ(tellGet(ms), 5);
  EXPECT_EQ(ms.get(), 'b');
}

TEST(ZQMemStream, SeekEOLWithoutALineEndStopsAtTheEnd) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcdefg";
  EXPECT_FALSE(ms.seekEOL());
  EXPECT_EQ(tellGet(ms), 7);
}

TEST(ZQMemStream, SeekEOLAcrossBlocksAndSources) {
  ZQMemStream ms(new std::istringstream("ab\r"), 2, true);
  ms.setSource(new std::istringstream("\n\ncd\n"), true);
  EXPECT_TRUE(ms.seekEOL());
  EXPECT_EQ(tellGet(ms), 5);
  EXPECT_FALSE(ms.seekEOL());  // the last line end runs into the end of the data
  EXPECT_EQ(tellGet(ms), 8);
}

TEST(ZQMemStream, SeekEOLOnALineEndAtTheGetPosition) {
  ZQMemStream ms;
  ms << "\nx";
  EXPECT_TRUE(ms.seekEOL());
  EXPECT_EQ(tellGet(ms), 1);
}

// ---- Copying from a stream ----

TEST(ZQMemStream, CopyStreamCopiesAtMostCount) {
  ZQMemStream ms(nullptr, 4);
  std::istringstream in(letters(30));
  EXPECT_EQ(ms.copyStream(in, 10), 10u);
  EXPECT_EQ(ms.length(), 10u);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 3u);
  EXPECT_EQ(contentOf(ms), letters(10));
}

TEST(ZQMemStream, CopyStreamStopsAtTheSourceEnd) {
  ZQMemStream ms(nullptr, 4);
  std::istringstream in("abcdef");
  EXPECT_EQ(ms.copyStream(in, 100), 6u);
  EXPECT_EQ(contentOf(ms), "abcdef");
}

TEST(ZQMemStream, CopyStreamFillingABlockMovesThePutSideOn) {
  ZQMemStream ms(nullptr, 4);
  std::istringstream in("abcd");
  EXPECT_EQ(ms.copyStream(in, 4), 4u);
  EXPECT_EQ(tellPut(ms), 4);
  EXPECT_EQ(ms.length(), 4u);
  ms << "e";
  EXPECT_EQ(contentOf(ms), "abcde");
}

TEST(ZQMemStream, CopyStreamWritesAtThePutPosition) {
  ZQMemStream ms(nullptr, 4);
  ms << "0123456789";
  ms.seekp(3);
  std::istringstream in("abc");
  EXPECT_EQ(ms.copyStream(in, 3), 3u);
  EXPECT_EQ(contentOf(ms), "012abc6789");
  EXPECT_EQ(tellPut(ms), 6);
}

TEST(ZQMemStream, CopyStreamFromAFailedSourceCopiesNothing) {
  ZQMemStream ms;
  std::istringstream in("abc");
  in.setstate(std::ios::failbit);
  EXPECT_EQ(ms.copyStream(in, 3), 0u);
  EXPECT_EQ(ms.copyStream(in, 0), 0u);
  EXPECT_EQ(ms.length(), 0u);
}

// ---- Walking and collecting ----

TEST(ZQMemStream, GetBufferWalksBlockByBlock) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcdefghij";
  const char* p = nullptr;
  std::string seen;
  size_t n;
  std::vector<size_t> sizes;
  while ((n = ms.getBuffer(p)) > 0) {
    sizes.push_back(n);
    seen.append(p, n);
  }
  EXPECT_EQ(sizes, (std::vector<size_t>{4, 4, 2}));
  EXPECT_EQ(seen, "abcdefghij");
}

TEST(ZQMemStream, GetBufferFromTheMiddleOfABlock) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcdefgh";
  ms.seekg(1);
  const char* p = nullptr;
  ASSERT_EQ(ms.getBuffer(p), 3u);
  EXPECT_EQ(std::string(p, 3), "bcd");
  EXPECT_EQ(tellGet(ms), 4);
}

TEST(ZQMemStream, GetBufferPointersStayValidWhileTheStreamGrows) {
  ZQMemStream ms(nullptr, 4);
  ms << "abcd";
  const char* p = nullptr;
  ASSERT_EQ(ms.getBuffer(p), 4u);
  ms << letters(100);
  EXPECT_EQ(std::string(p, 4), "abcd");
}

TEST(ZQMemStream, AppendToStringTakesEverythingWhateverThePosition) {
  ZQMemStream ms(new std::istringstream("-source"), 4, true);
  EXPECT_EQ(readN(ms, 2), "-s");
  std::string out = "prefix:";
  ms.appendToString(out);
  EXPECT_EQ(out, "prefix:-source");
  EXPECT_EQ(tellGet(ms), 2);
}

TEST(ZQMemStream, WriteStrAppendAndPlusEqual) {
  ZQMemStream ms;
  ms.writeStr("ab").append("cd");
  ms += std::string("e\0f", 3);
  ms.writeStr(nullptr);
  EXPECT_EQ(contentOf(ms), std::string("abcde\0f", 7));
}

// ---- Cutting and forgetting ----

TEST(ZQMemStream, TrimShortensAndFreesBlocks) {
  ZQMemStream ms(nullptr, 4);
  ms << letters(14);
  ms.seekg(2);
  ms.seekp(3);
  ms.trim(8);
  EXPECT_EQ(ms.length(), 8u);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 2u);
  EXPECT_EQ(ms.getStreamBuf()->getLastBlockSize(), 4u);  // a whole block, not 0
  EXPECT_EQ(tellGet(ms), 2);
  EXPECT_EQ(tellPut(ms), 3);
  EXPECT_EQ(contentOf(ms), letters(8));
}

TEST(ZQMemStream, TrimMovesPositionsBeyondTheCut) {
  ZQMemStream ms(nullptr, 4);
  ms << letters(14);
  ms.seekg(12);
  ms.trim(6);
  EXPECT_EQ(tellGet(ms), 6);
  EXPECT_EQ(tellPut(ms), 6);
  EXPECT_EQ(ms.getStreamBuf()->getLastBlockSize(), 2u);
  ms << "XY";
  EXPECT_EQ(contentOf(ms), letters(6) + "XY");
}

TEST(ZQMemStream, TrimToZeroThenWriteStartsAtZero) {
  ZQMemStream ms(nullptr, 4);
  ms << letters(14);
  ms.trim(0);
  EXPECT_EQ(ms.length(), 0u);
  EXPECT_EQ(ms.getStreamBuf()->getLastBlockSize(), 0u);
  EXPECT_LE(ms.getStreamBuf()->getBlockCount(), 1u);
  ms << "new";
  EXPECT_EQ(contentOf(ms), "new");
  EXPECT_EQ(readAll(ms), "new");
}

TEST(ZQMemStream, TrimToTheLengthOrBeyondDoesNothing) {
  ZQMemStream ms(nullptr, 4);
  ms << letters(10);
  ms.seekg(9);
  ms.trim(10);
  ms.trim(50);
  EXPECT_EQ(ms.length(), 10u);
  EXPECT_EQ(tellGet(ms), 9);
  ZQMemStream empty;
  empty.trim(0);
  EXPECT_EQ(empty.getStreamBuf()->getBlockCount(), 0u);
}

TEST(ZQMemStream, TrimDrainsSourcesFirst) {
  ZQMemStream ms(new std::istringstream(letters(20)), 4, true);
  ms.trim(10);
  EXPECT_EQ(ms.getStreamBuf()->getSource(), nullptr);
  EXPECT_EQ(contentOf(ms), letters(10));
}

TEST(ZQMemStream, AbandonBufferForgetsTheBlocksAlreadyRead) {
  ZQMemStream ms(nullptr, 4);
  ms << letters(12);
  ms.seekg(9);
  ms.abandonBuffer();
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 1u);
  EXPECT_EQ(tellGet(ms), 1);  // positions restart at the get block
  EXPECT_EQ(ms.length(), 4u);
  EXPECT_EQ(readAll(ms), letters(12).substr(9));
}

TEST(ZQMemStream, AbandonBufferInTheFirstBlockDoesNothing) {
  ZQMemStream ms(nullptr, 4);
  ms << letters(12);
  ms.seekg(3);
  ms.abandonBuffer();
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 3u);
  ZQMemStream never;
  never << "abc";
  never.abandonBuffer();  // nothing read yet
  EXPECT_EQ(contentOf(never), "abc");
}

TEST(ZQMemStream, AbandonBufferDropsAPutSideInAFreedBlock) {
  ZQMemStream ms(nullptr, 4);
  ms << letters(12);
  ms.seekp(1);
  ms.seekg(9);
  ms.abandonBuffer();
  ms << "Z";  // no put side any more: writing starts at 0 again
  EXPECT_EQ(contentOf(ms), "Zjkl");
}

TEST(ZQMemStream, RemoveEmptiesButKeepsOneBlock) {
  bool deleted = false;
  ZQMemStream ms(new TrackedSource(letters(40), &deleted), 4, true);
  EXPECT_EQ(readN(ms, 9), letters(9));
  ms.remove();
  EXPECT_TRUE(deleted);
  EXPECT_EQ(ms.length(), 0u);
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 1u);
  ms << "fresh";
  EXPECT_EQ(readAll(ms), "fresh");
}

TEST(ZQMemStream, EraseClearsTheStreamState) {
  ZQMemStream ms;
  ms << "abc";
  EXPECT_EQ(readN(ms, 10), "abc");
  EXPECT_TRUE(ms.eof());
  ms.seekg(10);
  EXPECT_TRUE(ms.fail());
  EXPECT_TRUE(ms.erase().good());
  EXPECT_EQ(ms.length(), 0u);
}

TEST(ZQMemStream, BeginClearsTheStateAndRewinds) {
  ZQMemStream ms;
  ms << "abc";
  EXPECT_EQ(readAll(ms), "abc");
  ms.seekg(99);
  EXPECT_TRUE(ms.fail());
  EXPECT_EQ(readAll(ms.begin()), "abc");
}

// ---- Checksums ----

TEST(ZQMemStream, ChecksumOfFiveBytes) {
  ZQMemStream ms;
  ms.write("\x00\x00\x00\x01\x80", 5);
  EXPECT_EQ(ms.calcOTFTableChecksum(), 0x80000001u);
}

TEST(ZQMemStream, ChecksumOfEmptyIsZero) {
  ZQMemStream ms;
  EXPECT_EQ(ms.calcOTFTableChecksum(), 0u);
}

TEST(ZQMemStream, ChecksumMatchesADirectSum) {
  for (size_t g : {4u, 8u, 64u, 8192u}) {
    for (size_t n : {1u, 3u, 4u, 5u, 63u, 64u, 65u, 1000u, 8193u, 20001u}) {
      const std::string data = streamtest::randomBytes(n, static_cast<unsigned>(n + g));
      ZQMemStream ms(nullptr, g);
      ms.write(data.data(), static_cast<std::streamsize>(data.size()));
      ms.seekg(static_cast<std::streamoff>(n / 2));  // the get position plays no part
      EXPECT_EQ(ms.calcOTFTableChecksum(), directChecksum(data, g)) << g << " " << n;
    }
  }
}

TEST(ZQMemStream, ChecksumDropsTheTailOfBlocksThatAreNoWholeWords) {
  const std::string data = streamtest::randomBytes(23, 5);
  ZQMemStream ms(nullptr, 6);
  ms.write(data.data(), static_cast<std::streamsize>(data.size()));
  EXPECT_EQ(ms.calcOTFTableChecksum(), directChecksum(data, 6));
}

TEST(ZQMemStream, ChecksumPadsWithZerosInTheBlock) {
  ZQMemStream ms(nullptr, 8);
  ms.write("\x01\x02\x03\x04\x05", 5);
  // Bytes beyond the data, made visible by a seek for output past the end.
  EXPECT_EQ(ms.calcOTFTableChecksum(), 0x01020304u + 0x05000000u);
  ms.seekp(8);
  std::string all = contentOf(ms);
  EXPECT_EQ(all, std::string("\x01\x02\x03\x04\x05\x00\x00\x00", 8));
}

TEST(ZQMemStream, ChecksumReadsTheSources) {
  const std::string data = streamtest::randomBytes(1001, 77);
  ZQMemStream ms(new std::istringstream(data), 16, true);
  EXPECT_EQ(ms.calcOTFTableChecksum(), directChecksum(data, 16));
}

TEST(ZQMemStream, MD5IsTheRawDigestOfTheRestOfTheData) {
  const std::string data = streamtest::randomBytes(30000, 12);
  for (size_t g : {7u, 64u, 8192u}) {
    ZQMemStream ms(nullptr, g);
    ms.write(data.data(), static_cast<std::streamsize>(data.size()));
    for (size_t pos : {0u, 1u, 6u, 7u, 8u, 4000u, 29999u, 30000u}) {
      ms.seekg(static_cast<std::streamoff>(pos));
      const std::string md5 = ms.getMD5();
      ASSERT_EQ(md5.size(), 16u);
      EXPECT_EQ(md5, md5Of(data.substr(pos))) << g << " " << pos;
      EXPECT_EQ(tellGet(ms), static_cast<std::streamoff>(pos));
    }
  }
}

TEST(ZQMemStream, MD5ReadsTheSourcesWithoutMoving) {
  const std::string data = streamtest::randomBytes(5000, 4);
  ZQMemStream ms(new std::istringstream(data), 64, true);
  EXPECT_EQ(readN(ms, 10), data.substr(0, 10));
  EXPECT_EQ(ms.getMD5(), md5Of(data.substr(10)));
  EXPECT_EQ(readN(ms, 5), data.substr(10, 5));
}

TEST(ZQMemStream, MD5OfABufferNeverReadIsEmpty) {
  ZQMemStream ms;
  ms << "abc";
  EXPECT_EQ(ms.getMD5(), "");
  ms.seekg(0);
  EXPECT_EQ(ms.getMD5(), md5Of("abc"));
}

// ---- Copies ----

TEST(ZQMemStream, AssigningAnEmptyStreamKeepsTheContent) {
  ZQMemStream target;
  target << "keep";
  ZQMemStream empty;
  target = empty;
  EXPECT_EQ(contentOf(target), "keep");
}

TEST(ZQMemStream, AssignmentWritesAtThePutPositionAndTakesThePositions) {
  ZQMemStream source(nullptr, 4);
  source << "0123456789";
  source.seekg(3);
  source.seekp(5);
  ZQMemStream target(nullptr, 8);
  target << "ab";
  target = source;
  EXPECT_EQ(contentOf(target), "ab0123456789");
  EXPECT_EQ(tellGet(target), 3);
  EXPECT_EQ(tellPut(target), 5);
  EXPECT_EQ(tellGet(source), 3);
  EXPECT_EQ(target.getGrowBytes(), 8u);
}

TEST(ZQMemStream, SelfAssignmentChangesNothing) {
  ZQMemStream ms;
  ms << "abc";
  ZQMemStream& same = ms;
  ms = same;
  EXPECT_EQ(contentOf(ms), "abc");
}

TEST(ZQMemStream, CopyConstructorCopiesContentPositionsAndSettings) {
  ZQMemStream source(new std::istringstream(letters(30)), 4, true);
  source.seekg(7);
  source.seekp(2);
  source.setKeepMemory(false);
  ZQMemStream copy(source);
  EXPECT_EQ(copy.getGrowBytes(), 4u);
  EXPECT_FALSE(copy.getStreamBuf()->getKeepMemory());
  EXPECT_EQ(contentOf(copy), letters(30));
  EXPECT_EQ(tellGet(copy), 7);
  EXPECT_EQ(tellPut(copy), 2);
  EXPECT_EQ(tellGet(source), 7);
  EXPECT_EQ(readN(source, 3), letters(10).substr(7));
}

TEST(ZQMemStream, CopyOfAnEmptyStreamIsEmpty) {
  ZQMemStream source(nullptr, 16);
  ZQMemStream copy(source);
  EXPECT_EQ(copy.length(), 0u);
  EXPECT_EQ(copy.getGrowBytes(), 16u);
}

TEST(ZQMemStream, BufferCopyAndAssignmentTakeOnlyTheSettings) {
  ZQMemStreamBuf a(nullptr, 16);
  a.setKeepMemory(false);
  a.sputn("abcdef", 6);
  ZQMemStreamBuf b(a);
  EXPECT_EQ(b.getGrowBytes(), 16u);
  EXPECT_FALSE(b.getKeepMemory());
  EXPECT_EQ(b.length(), 0u);

  ZQMemStreamBuf c(nullptr, 16);
  c.sputn("xyz", 3);
  c = a;
  EXPECT_EQ(c.length(), 0u);
  EXPECT_EQ(c.getBlockCount(), 1u);  // remove() keeps the first block
  EXPECT_FALSE(c.getKeepMemory());

  ZQMemStreamBuf d(nullptr, 4);
  d.sputn("xyz", 3);
  d = a;  // another block size: no block of the old size may stay
  EXPECT_EQ(d.getGrowBytes(), 16u);
  d.sputn(letters(40).data(), 40);
  std::string out;
  d.appendToString(out);
  EXPECT_EQ(out, letters(40));
}

// ---- Foreign buffers and temporary files ----

TEST(ZQMemStream, ReferenceConstructorReadsTheSourceBufferDirectly) {
  bool deleted = false;
  auto* src = new TrackedSource("hello world", &deleted);
  {
    ZQMemStream ms(*src);
    EXPECT_NE(ms.rdbuf(), ms.getStreamBuf());
    EXPECT_EQ(readN(ms, 5), "hello");
    EXPECT_EQ(src->delivered(), 5u);  // straight from the source, no block in between
    EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 0u);
    EXPECT_EQ(ms.length(), 11u);  // the end position of the foreign buffer
    EXPECT_EQ(tellGet(ms), 5);    // and the position is back
    EXPECT_FALSE(deleted);
    ms.resetBuffer();
    EXPECT_EQ(ms.rdbuf(), ms.getStreamBuf());
    EXPECT_EQ(readAll(ms), "hello world");  // the own buffer reads the source from 0
    EXPECT_TRUE(deleted);                   // owned, and finished with
  }
}

TEST(ZQMemStream, ReferenceConstructorDeletesTheSourceWithTheStream) {
  bool deleted = false;
  {
    ZQMemStream ms(*new TrackedSource("abc", &deleted));
    EXPECT_EQ(readAll(ms), "abc");
    EXPECT_FALSE(deleted);
  }
  EXPECT_TRUE(deleted);
}

TEST(ZQMemStream, ResetBufferOnTheOwnBufferDoesNothing) {
  ZQMemStream ms;
  ms << "abc";
  ms.seekg(2);
  ms.resetBuffer();
  EXPECT_EQ(tellGet(ms), 2);
}

TEST(ZQMemStream, ChangeTempBufferMovesTheContentToAFile) {
  const std::string data = streamtest::randomBytes(100000, 21);
  std::string file;
  {
    ZQMemStream ms(nullptr, 1000);
    ms.write(data.data(), 60000);
    ms.setSource(new std::istringstream(data.substr(60000)), true);
    ms.seekg(5);
    ms.changeTempBuffer();
    file = zqtest::utf8(ms.getTempFileName());
    ASSERT_FALSE(file.empty());
    EXPECT_TRUE(streamtest::fileExists(file));
    EXPECT_EQ(streamtest::readFile(file), data);
    EXPECT_NE(file.find("ZQMem"), std::string::npos);
    EXPECT_EQ(file.substr(file.size() - 4), ".tmp");
    EXPECT_NE(ms.rdbuf(), ms.getStreamBuf());
    EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 0u);  // the memory is freed
    EXPECT_EQ(tellGet(ms), 0);
    EXPECT_EQ(ms.length(), data.size());
    EXPECT_EQ(readAll(ms), data);
    ms.clear();
    ms.seekg(777);
    EXPECT_EQ(readN(ms, 10), data.substr(777, 10));
    ms.changeTempBuffer();  // a second time does nothing
    EXPECT_EQ(zqtest::utf8(ms.getTempFileName()), file);
    ms.resetBuffer();  // nor does a reset once a file holds the content
    EXPECT_NE(ms.rdbuf(), ms.getStreamBuf());
  }
  EXPECT_FALSE(streamtest::fileExists(file));
}

TEST(ZQMemStream, ChangeTempBufferFromAForeignBufferTakesTheSourceFromItsStart) {
  bool deleted = false;
  std::string file;
  {
    ZQMemStream ms(*new TrackedSource("hello world", &deleted));
    EXPECT_EQ(readN(ms, 6), "hello ");
    ms.changeTempBuffer();
    file = zqtest::utf8(ms.getTempFileName());
    ASSERT_FALSE(file.empty());
    EXPECT_TRUE(deleted);  // read through to the file and let go
    EXPECT_EQ(streamtest::readFile(file), "hello world");
    EXPECT_EQ(tellGet(ms), 0);
    EXPECT_EQ(readAll(ms), "hello world");
  }
  EXPECT_FALSE(streamtest::fileExists(file));
}

/// Says no to every URI it is asked for, and notes them.
class NotingResolver : public ZQUriReferenceResolver2 {
 public:
  bool resolveUriReference(const char16_t* uri, WriteFunc, void*) override {
    asked.push_back(UnicodeString(uri));
    return false;
  }
  std::vector<UnicodeString> asked;
};

TEST(ZQMemStream, ChangeTempBufferOpensTheFileThroughItsUri) {
  NotingResolver resolver;
  ZQUriReferenceResolver2* previous = ZQUri::setUriReferenceResolver2(&resolver);
  std::string file;
  {
    ZQMemStream ms;
    ms << "through the URI";
    ms.changeTempBuffer();
    ZQUri::setUriReferenceResolver2(previous);
    file = zqtest::utf8(ms.getTempFileName());
    ASSERT_FALSE(file.empty());
    // Opening the file asked the resolver first, with the URI of the file, and then read it
    // from the disk since the resolver said no.
    ASSERT_EQ(resolver.asked.size(), 1u);
    EXPECT_EQ(resolver.asked[0], ZQUri(ms.getTempFileName(), ZQUri::URISTR_PATH).toString());
    EXPECT_EQ(zqtest::utf8(ZQUri(resolver.asked[0], ZQUri::URISTR_URI).getLocalPath()), file);
    EXPECT_NE(dynamic_cast<std::filebuf*>(ms.rdbuf()), nullptr);
    EXPECT_EQ(readAll(ms), "through the URI");
  }
  ZQUri::setUriReferenceResolver2(previous);
  EXPECT_FALSE(streamtest::fileExists(file));
}

TEST(ZQMemStream, ChangeTempBufferOnAnEmptyStream) {
  std::string file;
  {
    ZQMemStream ms;
    ms.changeTempBuffer();
    file = zqtest::utf8(ms.getTempFileName());
    ASSERT_FALSE(file.empty());
    EXPECT_EQ(ms.length(), 0u);
    EXPECT_EQ(readAll(ms), "");
  }
  EXPECT_FALSE(streamtest::fileExists(file));
}

TEST(ZQMemStream, CloseDoesNothing) {
  ZQMemStream ms;
  ms << "abc";
  ms.close();
  EXPECT_EQ(readAll(ms), "abc");
}

TEST(ZQMemStream, RemainsAndSourceAccessors) {
  auto* src = new std::istringstream("abcdefgh");
  ZQMemStream ms(src, 4, true);
  EXPECT_EQ(ms.getStreamBuf()->getSource(), src);
  EXPECT_EQ(ms.getStreamBuf()->getRemains(), 0u);
  EXPECT_EQ(ms.get(), 'a');
  EXPECT_EQ(ms.getStreamBuf()->getRemains(), 3u);
  EXPECT_EQ(ZQMemStreamBuf::NOT_FOUND, ~uint64_t(0));
}

TEST(ZQMemStream, BlockSizeOfOne) {
  ZQMemStream ms(nullptr, 1);
  ms << "abcdef";
  EXPECT_EQ(ms.getStreamBuf()->getBlockCount(), 6u);
  EXPECT_TRUE(ms.searchSeek("cd"));
  EXPECT_EQ(tellGet(ms), 2);
  EXPECT_EQ(ms.get(), 'c');
  ms.putback('c');
  ms.putback('b');
  EXPECT_EQ(ms.get(), 'b');
  ms.seekp(2);
  ms << "XY";
  EXPECT_EQ(contentOf(ms), "abXYef");
}

TEST(ZQMemStream, ZeroBlockSizeIsTakenAsTheDefault) {
  ZQMemStream ms(nullptr, 0);
  EXPECT_EQ(ms.getGrowBytes(), 8192u);
  ms.setGrowBytes(0);
  EXPECT_EQ(ms.getGrowBytes(), 8192u);
  ms << "abc";
  EXPECT_EQ(readAll(ms), "abc");
}

TEST(ZQMemStream, MixedReadsWritesAndSeeksMatchAString) {
  std::mt19937 rng(5);
  for (size_t g : {3u, 16u, 100u}) {
    ZQMemStream ms(nullptr, g);
    std::string model;
    size_t putPos = 0;
    for (int step = 0; step < 400; ++step) {
      const int op = static_cast<int>(rng() % 3);
      if (op == 0) {
        std::string piece = letters(rng() % 40);
        for (char& c : piece) c = static_cast<char>(c + (step % 5));
        ms.write(piece.data(), static_cast<std::streamsize>(piece.size()));
        if (model.size() < putPos + piece.size()) model.resize(putPos + piece.size());
        model.replace(putPos, piece.size(), piece);
        putPos += piece.size();
      } else if (op == 1) {
        putPos = model.empty() ? 0 : rng() % (model.size() + 1);
        ms.seekp(static_cast<std::streamoff>(putPos));
      } else {
        const size_t at = model.empty() ? 0 : rng() % (model.size() + 1);
        ms.clear();
        ms.seekg(static_cast<std::streamoff>(at));
        const size_t n = rng() % 50;
        EXPECT_EQ(readN(ms, n), model.substr(at, n)) << g << " " << step;
        ms.clear();
      }
    }
    EXPECT_EQ(contentOf(ms), model);
  }
}

// ---- The protected steps ----

namespace {

// Opens the protected steps of the buffer to the tests.
class ProbeBuf : public ZQMemStreamBuf {
 public:
  using std::streambuf::pbase;
  using std::streambuf::pptr;
  using ZQMemStreamBuf::appendBuffer;
  using ZQMemStreamBuf::flushBuffer;
  using ZQMemStreamBuf::getIndex;
  using ZQMemStreamBuf::overflow;
  using ZQMemStreamBuf::ZQMemStreamBuf;
};

}  // namespace

TEST(ZQMemStreamBuf, GetIndexFindsEveryBlockInAnyOrder) {
  ProbeBuf buf(nullptr, 4);
  buf.sputn(letters(20).data(), 20);
  std::vector<const char*> blocks;
  const char* p = nullptr;
  buf.pubseekpos(0, std::ios_base::in);
  for (int i = 0; i < 5; ++i) {
    ASSERT_EQ(buf.getBuffer(p), 4u);
    blocks.push_back(p);
  }
  for (int k : {4, 0, 3, 1, 2, 2, 0, 4}) EXPECT_EQ(buf.getIndex(blocks[k]), uint64_t(k));
  EXPECT_EQ(buf.getIndex(nullptr), ZQMemStreamBuf::NOT_FOUND);
  const char elsewhere[4] = {};
  EXPECT_EQ(buf.getIndex(elsewhere), ZQMemStreamBuf::NOT_FOUND);
}

TEST(ZQMemStreamBuf, LastBlockSizeLagsUntilFlushed) {
  ProbeBuf buf(nullptr, 16);
  buf.sputn("abcdef", 6);
  EXPECT_LT(buf.getLastBlockSize(), 6u);  // the put area moved, the size not yet
  buf.flushBuffer();
  EXPECT_EQ(buf.getLastBlockSize(), 6u);
  buf.pubseekpos(2, std::ios_base::out);
  buf.sputn("X", 1);
  buf.flushBuffer();
  EXPECT_EQ(buf.getLastBlockSize(), 6u);  // rewriting below the end never shrinks it
}

TEST(ZQMemStreamBuf, AppendBufferReadsAcrossTheSeamOfSources) {
  ProbeBuf buf(new std::istringstream("ab"), 5, true);
  buf.setSource(new std::istringstream("cd"), true);
  buf.setSource(new std::istringstream("efgh"), true);
  buf.appendBuffer(true);
  EXPECT_EQ(buf.getBlockCount(), 1u);
  EXPECT_EQ(buf.getLastBlockSize(), 5u);
  EXPECT_NE(buf.getSource(), nullptr);  // "gh" is still to come
  buf.appendBuffer(true);
  EXPECT_EQ(buf.getLastBlockSize(), 3u);
  EXPECT_EQ(buf.getSource(), nullptr);
  std::string out;
  buf.appendToString(out);
  EXPECT_EQ(out, "abcdefgh");
}

TEST(ZQMemStreamBuf, AppendBufferWithoutKeepRecyclesTheFrontBlock) {
  ProbeBuf buf(nullptr, 4);
  buf.appendBuffer(false);
  buf.appendBuffer(false);
  buf.appendBuffer(true);
  EXPECT_EQ(buf.getBlockCount(), 3u);
  buf.appendBuffer(false);  // frees down to two, then reuses the front one
  EXPECT_EQ(buf.getBlockCount(), 2u);
  buf.appendBuffer(false);
  EXPECT_EQ(buf.getBlockCount(), 2u);
}

TEST(ZQMemStreamBuf, ClearFreesEverythingAndRestoresKeepMemory) {
  bool deleted = false;
  ZQMemStreamBuf buf(new TrackedSource(letters(50), &deleted), 4, true);
  buf.setKeepMemory(false);
  EXPECT_EQ(buf.sgetc(), 'a');
  buf.clear();
  EXPECT_TRUE(deleted);
  EXPECT_EQ(buf.getBlockCount(), 0u);
  EXPECT_TRUE(buf.getKeepMemory());
  EXPECT_EQ(buf.length(), 0u);
  buf.sputn("xy", 2);
  std::string out;
  buf.appendToString(out);
  EXPECT_EQ(out, "xy");
}

TEST(ZQMemStreamBuf, OverflowWithEndOfFileLaysThePutAreaAtTheStart) {
  const auto eof = std::char_traits<char>::eof();
  ProbeBuf empty(nullptr, 8);
  EXPECT_EQ(empty.overflow(eof), eof);
  EXPECT_EQ(empty.getBlockCount(), 1u);  // a first block, as for a byte
  EXPECT_NE(empty.pbase(), nullptr);
  EXPECT_EQ(empty.pptr(), empty.pbase());
  EXPECT_EQ(empty.length(), 0u);

  // A reader has no put side: it is laid on the first block at 0, and nothing is stored.
  ProbeBuf reader(new std::istringstream("abcdefghij"), 4, true);
  EXPECT_EQ(reader.sgetc(), 'a');
  EXPECT_EQ(reader.pbase(), nullptr);
  EXPECT_EQ(reader.overflow(eof), eof);
  EXPECT_EQ(std::streamoff(reader.pubseekoff(0, std::ios_base::cur, std::ios_base::out)), 0);
  reader.sputc('X');
  std::string out;
  reader.appendToString(out);
  EXPECT_EQ(out, "Xbcdefghij");
}

TEST(ZQMemStreamBuf, OverflowWithEndOfFileOnAPutAreaOnlyBringsTheSizeUp) {
  const auto eof = std::char_traits<char>::eof();
  ProbeBuf buf(nullptr, 4);
  buf.sputn("abcd", 4);  // the whole block: the put side stands at its end
  EXPECT_EQ(buf.overflow(eof), eof);
  EXPECT_EQ(buf.getBlockCount(), 1u);
  EXPECT_EQ(buf.getLastBlockSize(), 4u);
  buf.sputc('e');
  EXPECT_EQ(buf.getBlockCount(), 2u);
  EXPECT_EQ(buf.length(), 5u);
}
