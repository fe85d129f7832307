#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {

const unsigned char kData[] = {0xA5, 0x3C, 0x0F, 0xF0, 0x12, 0x34, 0x56, 0x78};

// A plain model: one bool per bit, first bit of a byte highest.
std::vector<bool> bitsOf(const std::vector<unsigned char>& bytes) {
  std::vector<bool> v;
  for (unsigned char b : bytes)
    for (int i = 7; i >= 0; --i) v.push_back((b >> i) & 1);
  return v;
}

}  // namespace

TEST(ZQUtilBits, FetchSmallSamples) {
  // 0xA5 = 1010 0101
  const unsigned expect1[] = {1, 0, 1, 0, 0, 1, 0, 1};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(ZQUtil::fetchBit1(kData, i), expect1[i]) << i;
  EXPECT_EQ(ZQUtil::fetchBit1(kData, 10), 1u);  // 0x3C = 0011 1100
  EXPECT_EQ(ZQUtil::fetchBit2(kData, 0), 2u);
  EXPECT_EQ(ZQUtil::fetchBit2(kData, 1), 2u);
  EXPECT_EQ(ZQUtil::fetchBit2(kData, 2), 1u);
  EXPECT_EQ(ZQUtil::fetchBit2(kData, 3), 1u);
  EXPECT_EQ(ZQUtil::fetchBit2(kData, 4), 0u);
  EXPECT_EQ(ZQUtil::fetchBit2(kData, 5), 3u);
  EXPECT_EQ(ZQUtil::fetchBit4(kData, 0), 0xAu);
  EXPECT_EQ(ZQUtil::fetchBit4(kData, 1), 0x5u);
  EXPECT_EQ(ZQUtil::fetchBit4(kData, 2), 0x3u);
  EXPECT_EQ(ZQUtil::fetchBit4(kData, 7), 0x0u);
  EXPECT_EQ(ZQUtil::fetchBit8(kData, 3), 0xF0u);
}

TEST(ZQUtilBits, FetchWideSamplesAreBigEndian) {
  EXPECT_EQ(ZQUtil::fetchBit12(kData, 0), 0xA53u);
  EXPECT_EQ(ZQUtil::fetchBit12(kData, 1), 0xC0Fu);
  EXPECT_EQ(ZQUtil::fetchBit12(kData, 2), 0xF01u);
  EXPECT_EQ(ZQUtil::fetchBit12(kData, 3), 0x234u);
  EXPECT_EQ(ZQUtil::fetchBit16(kData, 0), 0xA53Cu);
  EXPECT_EQ(ZQUtil::fetchBit16(kData, 3), 0x5678u);
  EXPECT_EQ(ZQUtil::fetchBit24(kData, 0), 0xA53C0Fu);
  EXPECT_EQ(ZQUtil::fetchBit24(kData, 1), 0xF01234u);
  EXPECT_EQ(ZQUtil::fetchBit32(kData, 0), 0xA53C0FF0u);
  EXPECT_EQ(ZQUtil::fetchBit32(kData, 1), 0x12345678u);
}

TEST(ZQUtilBits, PatchSetsEveryBitOfTheSample) {
  unsigned char b[2] = {0, 0};
  ZQUtil::patchBit1(b, 0);
  ZQUtil::patchBit1(b, 9);
  EXPECT_EQ(b[0], 0x80);
  EXPECT_EQ(b[1], 0x40);
  b[0] = b[1] = 0;
  ZQUtil::patchBit2(b, 1);
  ZQUtil::patchBit2(b, 7);
  EXPECT_EQ(b[0], 0x30);
  EXPECT_EQ(b[1], 0x03);
  b[0] = b[1] = 0;
  ZQUtil::patchBit4(b, 0);
  ZQUtil::patchBit4(b, 3);
  EXPECT_EQ(b[0], 0xF0);
  EXPECT_EQ(b[1], 0x0F);
  ZQUtil::patchBit4(b, 3);  // setting again changes nothing
  EXPECT_EQ(b[1], 0x0F);
}

TEST(ZQUtilBitIterator, FetchesBitsAndFields) {
  ZQUtil::BitIterator it(kData, 64);
  EXPECT_EQ(it.size(), 64);
  EXPECT_TRUE(it.fetch());
  EXPECT_FALSE(it.fetch());
  EXPECT_EQ(it.getFetchPos(), 2);
  EXPECT_EQ(it.fetch(6), 0x25u);
  EXPECT_EQ(it.fetch(12), 0x3C0u);
  EXPECT_EQ(it.fetch(32), 0xFF012345u);
  EXPECT_EQ(it.getFetchPos(), 52);
  EXPECT_FALSE(it.endFetch());
  EXPECT_FALSE(it.endFetch(12));
  EXPECT_TRUE(it.endFetch(13));
  EXPECT_EQ(it.fetch(16), 0x6780u);  // four bits past the end read as 0
  EXPECT_TRUE(it.endFetch());
  EXPECT_FALSE(it.fetch());
  EXPECT_EQ(it.fetch(0), 0u);
}

TEST(ZQUtilBitIterator, SeekAndAdvanceStayInTheBuffer) {
  ZQUtil::BitIterator it(kData, 20);
  it.seekFetch(8);
  EXPECT_EQ(it.fetch(8), 0x3Cu);
  it.advanceFetch(-100);
  EXPECT_EQ(it.getFetchPos(), 0);
  it.advanceFetch();
  EXPECT_EQ(it.getFetchPos(), 1);
  it.advanceFetch(2147483647);
  EXPECT_EQ(it.getFetchPos(), 20);
  it.seekFetch(-1);
  EXPECT_EQ(it.getFetchPos(), 0);
  it.seekPatch(25);
  EXPECT_EQ(it.getPatchPos(), 20);
  EXPECT_TRUE(it.endPatch());
}

TEST(ZQUtilBitIterator, SizeLimitsFetchInsideAByte) {
  ZQUtil::BitIterator it(kData, 3);
  EXPECT_EQ(it.fetch(8), 0xA0u);  // 101 then five zeros past the end
  EXPECT_EQ(it.getFetchPos(), 3);
}

TEST(ZQUtilBitIterator, PatchWritesBitsAndFields) {
  std::vector<unsigned char> buf(4, 0xAA);
  ZQUtil::BitIterator it(buf.data(), 32);
  it.patch(true);
  it.patch(true);
  it.patch(false);
  EXPECT_EQ(buf[0], 0xCA);
  it.patch(0x1F5u, 9);  // 1 1111 0101
  EXPECT_EQ(it.getPatchPos(), 12);
  EXPECT_EQ(buf[0], 0xDF);
  EXPECT_EQ(buf[1], 0x5A);
  it.patchFill(false, 13);
  EXPECT_EQ(buf[1], 0x50);
  EXPECT_EQ(buf[2], 0x00);
  EXPECT_EQ(buf[3], 0x2A);
  it.patch(0xFFFFFFFFu, 32);  // only seven bits are left
  EXPECT_EQ(buf[3], 0x7F);
  EXPECT_TRUE(it.endPatch());
  it.patch(true);  // past the end: nothing
  EXPECT_EQ(buf[3], 0x7F);
}

TEST(ZQUtilBitIterator, ReadOnlyBufferIsNeverWritten) {
  const unsigned char data[2] = {0x00, 0xFF};
  ZQUtil::BitIterator it(data, 16);
  it.patch(true);
  it.patch(0xABCu, 12);
  it.patchFill(true, 3);
  EXPECT_EQ(data[0], 0x00);
  EXPECT_EQ(data[1], 0xFF);
  EXPECT_EQ(it.getPatchPos(), 16);
}

TEST(ZQUtilBitIterator, CountRunDoesNotMove) {
  const unsigned char data[] = {0x0F, 0xFF, 0xFF, 0xF0, 0x00};
  ZQUtil::BitIterator it(data, 40);
  EXPECT_EQ(it.countRun(false, 100), 4);
  EXPECT_EQ(it.countRun(true, 100), 0);
  it.seekFetch(4);
  EXPECT_EQ(it.countRun(true, 100), 24);
  EXPECT_EQ(it.countRun(true, 10), 10);
  EXPECT_EQ(it.getFetchPos(), 4);
  it.seekFetch(28);
  EXPECT_EQ(it.countRun(false, 100), 12);  // up to the end
  EXPECT_EQ(it.countRun(false, 0), 0);
  EXPECT_EQ(it.countRun(false, -3), 0);
}

TEST(ZQUtilBitIterator, NullOrEmptyBufferIsEmpty) {
  ZQUtil::BitIterator a(static_cast<unsigned char*>(nullptr), 100);
  EXPECT_EQ(a.size(), 0);
  EXPECT_FALSE(a.fetch());
  a.patch(true);
  a.patchFill(true, 50);
  EXPECT_EQ(a.countRun(false, 10), 0);
  ZQUtil::BitIterator b(kData, -4);
  EXPECT_EQ(b.size(), 0);
  EXPECT_TRUE(b.endFetch());
}

// Random operations against the plain model.
TEST(ZQUtilBitIterator, RandomOperationsMatchABitModel) {
  std::mt19937 rng(11);
  for (int round = 0; round < 200; ++round) {
    int bits = 1 + static_cast<int>(rng() % 200);
    std::vector<unsigned char> buf((bits + 7) / 8 + 1);
    for (auto& b : buf) b = static_cast<unsigned char>(rng());
    std::vector<bool> model = bitsOf(buf);
    ZQUtil::BitIterator it(buf.data(), bits);
    int fpos = 0, ppos = 0;
    for (int op = 0; op < 60; ++op) {
      switch (rng() % 6) {
        case 0: {
          int n = static_cast<int>(rng() % 33);
          unsigned expect = 0;
          for (int i = 0; i < n; ++i) expect = (expect << 1) | (fpos + i < bits && model[fpos + i]);
          ASSERT_EQ(it.fetch(n), expect);
          fpos = std::min(fpos + n, bits);
          break;
        }
        case 1: {
          int n = static_cast<int>(rng() % 33);
          unsigned v = static_cast<unsigned>(rng());
          for (int i = 0; i < n; ++i)
            if (ppos + i < bits) model[ppos + i] = (v >> (n - 1 - i)) & 1;
          it.patch(v, n);
          ppos = std::min(ppos + n, bits);
          break;
        }
        case 2: {
          int n = static_cast<int>(rng() % 40);
          bool v = rng() & 1;
          for (int i = 0; i < n && ppos + i < bits; ++i) model[ppos + i] = v;
          it.patchFill(v, n);
          ppos = std::min(ppos + n, bits);
          break;
        }
        case 3: {
          bool v = rng() & 1;
          int limit = static_cast<int>(rng() % 80);
          int run = 0;
          while (run < limit && fpos + run < bits && model[fpos + run] == v) ++run;
          ASSERT_EQ(it.countRun(v, limit), run);
          break;
        }
        case 4:
          fpos = static_cast<int>(rng() % (bits + 1));
          it.seekFetch(fpos);
          break;
        default:
          ppos = static_cast<int>(rng() % (bits + 1));
          it.seekPatch(ppos);
          break;
      }
      ASSERT_EQ(it.getFetchPos(), fpos);
      ASSERT_EQ(it.getPatchPos(), ppos);
    }
    // Bits beyond the size were never touched.
    std::vector<bool> now = bitsOf(buf);
    ASSERT_EQ(now, model);
  }
}
