#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "common/ZQLock.h"

using namespace ZQCommonNS;

namespace {

// True when another thread cannot take `lock` within a short wait, and then can once the
// caller's `leave` has run.
template <class Leave>
bool heldUntil(ZQLock& lock, Leave leave) {
  std::atomic<bool> taken{false};
  std::thread other([&] {
    ZQMutex guard(lock);
    taken = true;
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  bool wasHeld = !taken.load();
  leave();
  other.join();
  return wasHeld && taken.load();
}

}  // namespace

TEST(ZQLock, IsReentrant) {
  ZQLock lock;
  lock.lock();
  {
    ZQMutex inner(&lock);  // same thread takes it again without blocking
  }
  // One leave of two: the lock is still held until the second.
  EXPECT_TRUE(heldUntil(lock, [&] { lock.unlock(); }));
}

TEST(ZQMutex, DefaultGuardHoldsTheLibraryLock) {
  auto* guard = new ZQMutex();
  EXPECT_TRUE(heldUntil(ZQLock::libraryLock(), [&] { delete guard; }));
}

TEST(ZQMutex, GuardLeavesOnDestruction) {
  ZQLock lock;
  auto* guard = new ZQMutex(lock);
  EXPECT_TRUE(heldUntil(lock, [&] { delete guard; }));
}

TEST(ZQLock, LibraryLockIsReentrantThroughDefaultGuard) {
  ZQMutex a;
  ZQMutex b;
  ZQMutex c(ZQLock::libraryLock());
  SUCCEED();
}

TEST(ZQMutex, NullLockDoesNothing) {
  { ZQMutex guard(static_cast<ZQLock*>(nullptr)); }
  ZQMutex a(static_cast<ZQLock*>(nullptr));
  ZQMutex b(static_cast<ZQLock*>(nullptr));
  b = a;
  SUCCEED();
}

TEST(ZQMutex, GuardsAgainstOtherThreads) {
  ZQLock lock;
  long counter = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 20000; ++i) {
        ZQMutex guard(lock);
        ZQMutex again(lock);
        counter = counter + 1;
      }
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(counter, 80000);
}

TEST(ZQMutex, InterlockedIncrementAndDecrement) {
  int value = 5;
  EXPECT_EQ(ZQMutex::interlockedIncrement(value), 6);
  EXPECT_EQ(ZQMutex::interlockedDecrement(value), 5);
  int shared = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 10000; ++i) ZQMutex::interlockedIncrement(shared);
    });
  }
  for (auto& t : threads) t.join();
  EXPECT_EQ(shared, 40000);
}

TEST(ZQLock, AssignmentExistsForTheInterface) {
  ZQLock a;
  ZQLock b;
  b = a;  // neither lock is in use
  SUCCEED();
}
