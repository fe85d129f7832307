#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "common/ZQLock.h"

using namespace ZQCommonNS;

TEST(ZQLock, IsReentrant) {
  ZQLock lock;
  ZQMutex outer(lock);
  ZQMutex inner(&lock);  // same thread takes it again without blocking
  SUCCEED();
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
