// The small-object pool behind nodes, attribute maps and value strings, and the pre-filled
// pages its blocks come from.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <thread>
#include <vector>

#include "common/ZQValue.h"
#include "core/ZQSmallPool.h"
#include "core/platform/ZQPlatform.h"

using namespace ZQCommonNS;

namespace {

struct Piece {
  unsigned char* p;
  size_t size;
};

// Fills each piece with a pattern of its own index, then checks that no other piece wrote
// over it.
void fillAndCheck(const std::vector<Piece>& pieces) {
  for (size_t i = 0; i < pieces.size(); ++i)
    std::memset(pieces[i].p, static_cast<int>(i & 0xFF), pieces[i].size);
  for (size_t i = 0; i < pieces.size(); ++i)
    for (size_t k = 0; k < pieces[i].size; ++k)
      ASSERT_EQ(pieces[i].p[k], static_cast<unsigned char>(i & 0xFF)) << "piece " << i;
}

// Takes `count` pieces of `size` bytes onto the end of `pieces`.
void take(std::vector<Piece>& pieces, int count, size_t size) {
  for (int i = 0; i < count; ++i)
    pieces.push_back({static_cast<unsigned char*>(smallpool::allocate(size)), size});
}

void giveBack(const std::vector<Piece>& pieces) {
  for (const Piece& piece : pieces) smallpool::deallocate(piece.p, piece.size);
}

UnicodeString numbered(int n) {
  return UnicodeString(("value number " + std::to_string(n)).c_str(), -1, US_INV);
}

}  // namespace

TEST(SmallPool, FilledPagesAreZeroedWritableAndPageAligned) {
  constexpr size_t kBytes = 256 * 1024;
  auto* block = static_cast<unsigned char*>(platform::mapFilledPages(kBytes));
  ASSERT_NE(block, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(block) % 4096, 0u);
  for (size_t i = 0; i < kBytes; ++i) ASSERT_EQ(block[i], 0) << i;
  std::memset(block, 0xA5, kBytes);
  EXPECT_EQ(block[kBytes - 1], 0xA5);
}

TEST(SmallPool, PiecesOfEverySizeAreAlignedAndApart) {
  // More than several blocks' worth, so that carving goes on across block ends.
  std::vector<Piece> pieces;
  for (int round = 0; round < 200; ++round)
    for (size_t size = 1; size <= 300; size += (size < 64 ? 1 : 13))
      pieces.push_back({static_cast<unsigned char*>(smallpool::allocate(size)), size});
  for (const Piece& piece : pieces) {
    ASSERT_NE(piece.p, nullptr);
    EXPECT_EQ(reinterpret_cast<uintptr_t>(piece.p) % 8, 0u);
  }
  fillAndCheck(pieces);
  giveBack(pieces);
}

TEST(SmallPool, FreedPiecesServeAgainWithoutOverlap) {
  std::vector<Piece> pieces;
  take(pieces, 5000, 64);
  // Free every other piece, then take as many again: old and new pieces must stay apart.
  std::vector<Piece> kept;
  for (size_t i = 0; i < pieces.size(); ++i) {
    if (i % 2)
      smallpool::deallocate(pieces[i].p, pieces[i].size);
    else
      kept.push_back(pieces[i]);
  }
  take(kept, 2500, 64);
  fillAndCheck(kept);
  giveBack(kept);
}

TEST(SmallPool, PiecesFreedOnAnotherThreadServeThatThread) {
  std::vector<Piece> pieces;
  std::thread maker([&pieces] { take(pieces, 4000, 40); });
  maker.join();
  fillAndCheck(pieces);
  giveBack(pieces);
  std::vector<Piece> again;
  take(again, 4000, 40);
  fillAndCheck(again);
  giveBack(again);
}

TEST(SmallPool, LargePiecesComeFromTheGlobalAllocator) {
  std::vector<Piece> pieces;
  for (size_t size : {257u, 1000u, 70000u})
    pieces.push_back({static_cast<unsigned char*>(smallpool::allocate(size)), size});
  fillAndCheck(pieces);
  giveBack(pieces);
  smallpool::deallocate(nullptr, 64);  // a null piece is ignored
}

TEST(SmallPool, ValueStringsMadeOnOneThreadAreFreedOnAnother) {
  constexpr int kCount = 3000;
  std::vector<ZQValue> values;
  std::thread maker([&values] {
    for (int i = 0; i < kCount; ++i) values.emplace_back(numbered(i), ZQUNIT_NONE);
  });
  maker.join();
  // Copies made here share nothing with the originals: freeing those leaves these whole.
  std::vector<ZQValue> copies(values);
  values.clear();
  for (int i = 0; i < kCount; ++i) {
    ASSERT_TRUE(copies[i].isString());
    EXPECT_EQ(copies[i].toString(), numbered(i));
  }
  // Strings freed on this thread are reused for new ones, which keep their own text.
  std::vector<ZQValue> more;
  for (int i = 0; i < kCount; ++i) more.emplace_back(numbered(i + kCount), ZQUNIT_NONE);
  for (int i = 0; i < kCount; ++i) {
    EXPECT_EQ(copies[i].toString(), numbered(i));
    EXPECT_EQ(more[i].toString(), numbered(i + kCount));
  }
}
