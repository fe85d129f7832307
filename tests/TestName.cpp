#include <gtest/gtest.h>

#include "TestSupport.h"

#include <atomic>
#include <chrono>
#include <fstream>
#include <future>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "common/ZQName.h"
#include "common/ZQString.h"
#include "common/ZQValue.h"
#include "core/ZQNameInternal.h"

using namespace ZQCommonNS;

namespace {

// Each test that makes run-time names works on a fresh shared table.
class NameTableTest : public ::testing::Test {
 protected:
  void SetUp() override { ZQNameTable::cleanup(); }
  void TearDown() override { ZQNameTable::cleanup(); }
};

using zqtest::u;

TEST_F(NameTableTest, EmptyNamesAreOneAndBuiltin) {
  ZQName a{UnicodeString()};
  ZQName b;
  ZQName c{ZQBogusString::BOGUS_VALUE};
  EXPECT_EQ(a, b);
  EXPECT_EQ(b, c);
  EXPECT_TRUE(a.isEmpty());
  EXPECT_TRUE(a.isBuiltin());
  EXPECT_TRUE(a.toString().isEmpty());
  EXPECT_EQ(static_cast<ZQNameEnum>(a), ZQN_EMPTY);
}

TEST_F(NameTableTest, BuiltinStringNeedsNoSharedTable) {
  ZQName n(u("font-size"));
  EXPECT_EQ(n, ZQN_font_size);
  EXPECT_EQ(static_cast<int>(n), 668);
  EXPECT_TRUE(n.isBuiltin());
  EXPECT_EQ(n.toString(), u("font-size"));
  EXPECT_EQ(ZQNameTable::getSharedNameString(ZQN_font_size), u("font-size"));
  // Neither call made the shared table.
  EXPECT_EQ(peekSharedNameTable(), nullptr);
  ZQName empty{UnicodeString()};
  EXPECT_EQ(peekSharedNameTable(), nullptr);
  ZQName fresh(u("not-built-in"));
  EXPECT_NE(peekSharedNameTable(), nullptr);
  EXPECT_EQ(peekSharedNameTable()->getRefCount(), 0);  // its creation is not a reference
}

TEST_F(NameTableTest, InterningTwiceGivesOneNumberAndUsesOneSlot) {
  ZQNameTable* table = ZQNameTable::getSharedNameTable();
  ZQNameEnum last = table->getNameLast();
  ZQName a(u("my-new-name"));
  ZQName b(u("my-new-name"));
  EXPECT_EQ(a, b);
  EXPECT_FALSE(a.isBuiltin());
  EXPECT_EQ(static_cast<int>(a), 3008);
  EXPECT_EQ(table->getNameLast(), last + 1);
  EXPECT_EQ(a.toString(), u("my-new-name"));
  ZQName c(u("another"));
  EXPECT_EQ(static_cast<int>(c), 3009);
}

TEST_F(NameTableTest, SameNewStringsFromEightThreadsGetOneNumberEach) {
  constexpr int kStrings = 500;
  std::vector<std::vector<ZQNameEnum>> results(8, std::vector<ZQNameEnum>(kStrings));
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([&, t] {
      while (!go.load()) std::this_thread::yield();
      for (int i = 0; i < kStrings; ++i) {
        // Each thread walks the strings in its own order.
        int k = (t % 2 == 0 ? i : kStrings - 1 - i) + t * 61;
        k %= kStrings;
        std::string s = "concurrent-" + std::to_string(k);
        results[t][k] = ZQNameTable::getSharedNameEnum(u(s.c_str()));
      }
    });
  }
  go = true;
  for (auto& th : threads) th.join();
  std::set<ZQNameEnum> distinct;
  for (int i = 0; i < kStrings; ++i) {
    for (int t = 1; t < 8; ++t) EXPECT_EQ(results[t][i], results[0][i]) << i;
    distinct.insert(results[0][i]);
  }
  EXPECT_EQ(distinct.size(), static_cast<size_t>(kStrings));
  EXPECT_EQ(ZQNameTable::getSharedNameTable()->getNameLast(), 3007 + kStrings);
  for (int i = 0; i < kStrings; ++i) {
    std::string s = "concurrent-" + std::to_string(i);
    EXPECT_EQ(ZQNameTable::getSharedNameString(results[0][i]), u(s.c_str()));
  }
}

TEST_F(NameTableTest, BuiltinHitTakesNoLock) {
  // Another thread holds the name-table lock; built-in look-ups must still finish.
  std::promise<void> held;
  std::promise<void> done;
  std::thread holder([&] {
    ZQMutex guard(sharedNameTableLock());
    held.set_value();
    done.get_future().wait();
  });
  held.get_future().wait();
  auto lookup = std::async(std::launch::async, [] {
    return ZQNameTable::getSharedNameEnum(u("font-size")) == ZQN_font_size &&
           ZQNameTable::getSharedNameString(ZQN_color) == u("color") &&
           ZQNameTable::getSharedNameEnum(UnicodeString()) == ZQN_EMPTY;
  });
  bool finished = lookup.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
  done.set_value();
  holder.join();
  ASSERT_TRUE(finished);
  EXPECT_TRUE(lookup.get());
}

TEST_F(NameTableTest, UnknownNumbersGiveTheEmptyString) {
  ZQName a(u("x-one"));
  EXPECT_TRUE(ZQNameTable::getSharedNameString(static_cast<ZQNameEnum>(a + 1)).isEmpty());
  EXPECT_TRUE(ZQNameTable::getSharedNameString(static_cast<ZQNameEnum>(-5)).isEmpty());
  EXPECT_TRUE(ZQNameTable::getSharedNameString(static_cast<ZQNameEnum>(100000)).isEmpty());
  EXPECT_TRUE(ZQNameTable::getBuiltinNameString(static_cast<ZQNameEnum>(3008)).isEmpty());
  EXPECT_TRUE(ZQNameTable::getBuiltinNameString(static_cast<ZQNameEnum>(-1)).isEmpty());
  EXPECT_EQ(ZQNameTable::getBuiltinNameString(static_cast<ZQNameEnum>(3007)), u("x-height"));
  ZQNameTable* table = ZQNameTable::getSharedNameTable();
  EXPECT_TRUE(table->getNameString(static_cast<ZQNameEnum>(a + 1)).isEmpty());
  EXPECT_TRUE(table->getNameString(static_cast<ZQNameEnum>(0)).isEmpty());
  EXPECT_EQ(table->getNameString(a), u("x-one"));
  EXPECT_EQ(table->getNameString(ZQN_color), u("color"));
}

TEST_F(NameTableTest, WithoutTableRunTimeNumbersAreEmpty) {
  EXPECT_TRUE(ZQNameTable::getSharedNameString(static_cast<ZQNameEnum>(3008)).isEmpty());
}

TEST_F(NameTableTest, LookupNeverCreates) {
  ZQNameTable* table = ZQNameTable::getSharedNameTable();
  ZQNameEnum last = table->getNameLast();
  EXPECT_EQ(table->lookupName(u("never-interned")), ZQN_EMPTY);
  EXPECT_EQ(table->getNameLast(), last);
  EXPECT_EQ(table->lookupName(u("color")), ZQN_color);
  ZQName made(u("made-here"));
  EXPECT_EQ(table->lookupName(u("made-here")), static_cast<ZQNameEnum>(made));
}

TEST_F(NameTableTest, BuiltinEnumOfStrings) {
  EXPECT_EQ(ZQNameTable::getBuiltinNameEnum(u("auto")), ZQN_auto);
  EXPECT_EQ(ZQNameTable::getBuiltinNameEnum(u("no-such-builtin")), ZQN_EMPTY);
  EXPECT_EQ(ZQNameTable::getBuiltinNameEnum(UnicodeString()), ZQN_EMPTY);
  EXPECT_EQ(ZQNameTable::getBuiltinNameEnum(u("currentColor")), ZQN_currentColor);
  EXPECT_NE(ZQNameTable::getBuiltinNameEnum(u("currentcolor")), ZQN_currentColor);
}

TEST_F(NameTableTest, TableObjectInternsToo) {
  ZQNameTable* table = ZQNameTable::getSharedNameTable();
  ZQNameEnum e = table->getNameEnum(u("through-object"));
  EXPECT_EQ(e, ZQNameTable::getSharedNameEnum(u("through-object")));
  EXPECT_EQ(table->getNameEnum(u("color")), ZQN_color);
  EXPECT_EQ(table->getNameEnum(UnicodeString()), ZQN_EMPTY);
}

TEST_F(NameTableTest, GenerateIdUsesPrefixOrN) {
  ZQName a = ZQName::generateID(UnicodeString());
  EXPECT_EQ(a.toString(), u("-N3008"));
  ZQName b = ZQName::generateID(u("id"));
  EXPECT_TRUE(b.toString().startsWith(u("-id")));
  EXPECT_EQ(b.toString(), u("-id3009"));
  EXPECT_NE(a, b);
}

TEST_F(NameTableTest, CleanupRestartsNumbering) {
  ZQName a(u("first-run"));
  ZQName b(u("second-run"));
  EXPECT_EQ(static_cast<int>(b), 3009);
  ZQNameTable::cleanup();
  EXPECT_TRUE(ZQNameTable::getSharedNameString(b).isEmpty());
  ZQName c(u("third-run"));
  EXPECT_EQ(static_cast<int>(c), 3008);
}

TEST_F(NameTableTest, SharedTableLivesWhileReferenced) {
  ZQNameTable* t1 = ZQNameTable::addRefSharedNameTable();
  ZQNameTable* t2 = ZQNameTable::addRefSharedNameTable();
  EXPECT_EQ(t1, t2);
  EXPECT_EQ(t1->getRefCount(), 2);
  ZQName a(u("held-name"));
  ZQNameTable::releaseSharedNameTable();
  EXPECT_EQ(ZQNameTable::getSharedNameString(a), u("held-name"));
  ZQNameTable::releaseSharedNameTable();
  // The last holder took the run-time names with it.
  EXPECT_TRUE(ZQNameTable::getSharedNameString(a).isEmpty());
  ZQName b(u("after-release"));
  EXPECT_EQ(static_cast<int>(b), 3008);
}

TEST_F(NameTableTest, TypeIdentity) {
  ZQNameTable* t = ZQNameTable::getSharedNameTable();
  EXPECT_EQ(t->getTypeID(), 0xDF2E12FAu);
  EXPECT_EQ(ZQNameTable::getStaticTypeID(), 0xDF2E12FAu);
  EXPECT_EQ(t->getTypeName(), u("ZQNameTable"));
  EXPECT_TRUE(t->isA(0xDF2E12FAu));
  EXPECT_TRUE(t->isA(0xD18D040Au));
  EXPECT_TRUE(t->isA(0xDF537371u));
  EXPECT_FALSE(t->isA(0xFF72074Au));
}

TEST_F(NameTableTest, NameOfAValueOfNameTypeKeepsItsNumber) {
  // A number past the table's end comes through unchanged: the table is not asked.
  ZQName kept{ZQValue(static_cast<ZQNameEnum>(5000))};
  EXPECT_EQ(static_cast<int>(kept), 5000);
  EXPECT_EQ(peekSharedNameTable(), nullptr);
  EXPECT_EQ(ZQName(ZQValue(ZQN_auto)), ZQN_auto);
}

TEST_F(NameTableTest, GenerateIdCountsFromTheLastName) {
  ZQName a(u("g-one"));
  ZQName b(u("g-two"));
  EXPECT_EQ(ZQName::generateID(u("id")).toString(), u("-id3010"));
  ZQName generated = ZQName::generateID(ZQBogusString::BOGUS_VALUE);
  EXPECT_EQ(generated.toString(), u("-N3011"));
  EXPECT_EQ(static_cast<int>(generated), 3011);
  // A caller's own string of that form is the same name.
  EXPECT_EQ(ZQName(u("-N3011")), generated);
}

TEST_F(NameTableTest, ReleaseWithoutHoldersDestroysTheTable) {
  ZQName a(u("unheld"));
  ASSERT_NE(peekSharedNameTable(), nullptr);
  ZQNameTable::releaseSharedNameTable();  // count 0: below 2
  EXPECT_EQ(peekSharedNameTable(), nullptr);
  EXPECT_TRUE(ZQNameTable::getSharedNameString(a).isEmpty());
  ZQNameTable::releaseSharedNameTable();  // no table: nothing happens
  EXPECT_EQ(peekSharedNameTable(), nullptr);
}

TEST_F(NameTableTest, DestroyedTableIsNeverLeftPublished) {
  ZQNameTable* table = ZQNameTable::addRefSharedNameTable();
  ZQName a(u("short-lived"));
  EXPECT_EQ(table->release(), 0);
  EXPECT_EQ(peekSharedNameTable(), nullptr);
  EXPECT_EQ(static_cast<int>(ZQName(u("next-life"))), 3008);
}

TEST_F(NameTableTest, CleanupDestroysWhateverTheCount) {
  ZQNameTable::addRefSharedNameTable();
  ZQNameTable::addRefSharedNameTable();
  ZQName a(u("held-twice"));
  ZQNameTable::cleanup();
  EXPECT_EQ(peekSharedNameTable(), nullptr);
  EXPECT_TRUE(ZQNameTable::getSharedNameString(a).isEmpty());
}

TEST_F(NameTableTest, CleanupTakesTheLibraryLockAndNotTheNameTableLock) {
  ZQName a(u("to-clean"));
  {
    // The name-table lock held elsewhere does not stop cleanup.
    std::promise<void> held;
    std::promise<void> done;
    std::thread holder([&] {
      ZQMutex guard(sharedNameTableLock());
      held.set_value();
      done.get_future().wait();
    });
    held.get_future().wait();
    auto cleaned = std::async(std::launch::async, [] { ZQNameTable::cleanup(); });
    bool finished = cleaned.wait_for(std::chrono::seconds(10)) == std::future_status::ready;
    done.set_value();
    holder.join();
    ASSERT_TRUE(finished);
    EXPECT_EQ(peekSharedNameTable(), nullptr);
  }
  ZQName b(u("to-clean-again"));
  {
    // The library lock held elsewhere does.
    std::promise<void> held;
    std::promise<void> done;
    std::thread holder([&] {
      ZQMutex guard;
      held.set_value();
      done.get_future().wait();
    });
    held.get_future().wait();
    auto cleaned = std::async(std::launch::async, [] { ZQNameTable::cleanup(); });
    bool blocked = cleaned.wait_for(std::chrono::milliseconds(200)) == std::future_status::timeout;
    EXPECT_NE(peekSharedNameTable(), nullptr);
    done.set_value();
    holder.join();
    cleaned.wait();
    EXPECT_TRUE(blocked);
    EXPECT_EQ(peekSharedNameTable(), nullptr);
  }
}

TEST_F(NameTableTest, TableObjectNumbersItsOwnNames) {
  ZQPtr<ZQNameTable> own(new ZQNameTable());
  EXPECT_EQ(own->getNameLast(), 3007);
  EXPECT_EQ(own->getNameEnum(u("own-name")), static_cast<ZQNameEnum>(3008));
  EXPECT_EQ(own->getNameEnum(u("own-name")), static_cast<ZQNameEnum>(3008));
  EXPECT_EQ(own->getNameLast(), 3008);
  EXPECT_EQ(own->getNameString(static_cast<ZQNameEnum>(3008)), u("own-name"));
  EXPECT_EQ(own->lookupName(u("own-name")), static_cast<ZQNameEnum>(3008));
  EXPECT_EQ(own->getNameString(ZQN_x_height), u("x-height"));
  EXPECT_TRUE(own->getNameString(static_cast<ZQNameEnum>(3009)).isEmpty());
  EXPECT_TRUE(own->getNameString(static_cast<ZQNameEnum>(-3)).isEmpty());
  // The shared table is neither made nor touched.
  EXPECT_EQ(peekSharedNameTable(), nullptr);
}

TEST_F(NameTableTest, ReservationIs1024AndGrowthIsByHalf) {
  // The strings move exactly when the vector reallocates: after 1024, then after 1536.
  auto name = [](int i) { return ZQName(u(("grow-" + std::to_string(i)).c_str())); };
  ZQName first = name(0);
  const UnicodeString* where = &first.toString();
  for (int i = 1; i < 1024; ++i) name(i);
  EXPECT_EQ(where, &first.toString());
  name(1024);
  const UnicodeString* moved = &first.toString();
  EXPECT_NE(where, moved);
  for (int i = 1025; i < 1536; ++i) name(i);
  EXPECT_EQ(moved, &first.toString());
  name(1536);
  EXPECT_NE(moved, &first.toString());
  EXPECT_EQ(first.toString(), u("grow-0"));
  EXPECT_EQ(ZQName(static_cast<ZQNameEnum>(3008 + 1536)).toString(), u("grow-1536"));
}

TEST_F(NameTableTest, ReferencesStayValidWithinTheReservation) {
  ZQName first(u("reserved-0"));
  const UnicodeString* where = &first.toString();
  for (int i = 1; i < 1024; ++i) ZQName(u(("reserved-" + std::to_string(i)).c_str()));
  EXPECT_EQ(where, &first.toString());
  // Past the reservation the table grows and keeps every name.
  for (int i = 1024; i < 3000; ++i) ZQName(u(("reserved-" + std::to_string(i)).c_str()));
  EXPECT_EQ(first.toString(), u("reserved-0"));
  EXPECT_EQ(ZQName(u("reserved-2999")).toString(), u("reserved-2999"));
  EXPECT_EQ(static_cast<int>(ZQName(u("reserved-2999"))), 3008 + 2999);
}

TEST(ZQName, OrderIsNumeric) {
  ZQName zoom(ZQN_zoom);
  ZQName abs(ZQN_abs);
  EXPECT_TRUE(abs < zoom);  // 188 < 1641
  EXPECT_TRUE(ZQName(ZQN_x_height) < ZQName(static_cast<ZQNameEnum>(3008)));
  EXPECT_FALSE(ZQName(static_cast<ZQNameEnum>(-1)).isBuiltin());  // read as unsigned
  EXPECT_TRUE(ZQName(static_cast<ZQNameEnum>(-1)) < ZQName());    // compared as signed
}

TEST(ZQName, ComparisonsAndConversions) {
  ZQName n(ZQN_color);
  EXPECT_TRUE(n == ZQN_color);
  EXPECT_TRUE(n != ZQN_auto);
  EXPECT_TRUE(n != ZQName(ZQN_auto));
  const UnicodeString& s = n;
  EXPECT_EQ(s, u("color"));
  EXPECT_EQ(&n.toZQString(), &n.toString());
  ZQName m;
  m = n;
  EXPECT_EQ(m, n);
}

TEST(ZQName, PlusAppendsTheNameString) {
  UnicodeString out = u("prefix:") + ZQName(ZQN_color);
  EXPECT_EQ(out, u("prefix:color"));
}

TEST(ZQNameList, ZeroTerminatedArrayDoesNotCountTheTerminator) {
  static const ZQNameEnum names[] = {ZQN_color, ZQN_auto, ZQN_none, ZQN_EMPTY};
  ZQNameList list(names);
  EXPECT_EQ(list.getCount(), 3);
  EXPECT_EQ(list.getItem(1), ZQN_auto);
  EXPECT_TRUE(list.getItem(list.getCount()).isEmpty());
  EXPECT_TRUE(list.getItem(100).isEmpty());
  EXPECT_EQ(list.indexOf(ZQN_none), 2);
  EXPECT_EQ(list.indexOf(ZQN_zoom), -1);
  EXPECT_TRUE(list.hasItem(ZQN_color));
  EXPECT_FALSE(list.hasItem(ZQN_zoom));
}

TEST(ZQNameList, EmptyAndNullLists) {
  ZQNameList empty;
  EXPECT_EQ(empty.getCount(), 0);
  EXPECT_EQ(empty.indexOf(ZQN_color), -1);
  EXPECT_FALSE(empty.hasItem(ZQN_color));
  ZQNameList nullCounted(nullptr, 5);
  EXPECT_EQ(nullCounted.getCount(), 0);
  ZQNameList nullTerminated(static_cast<const ZQNameEnum*>(nullptr));
  EXPECT_EQ(nullTerminated.getCount(), 0);
  static const ZQNameEnum two[] = {ZQN_color, ZQN_auto};
  ZQNameList counted(two, 2);
  EXPECT_EQ(counted.getCount(), 2);
  EXPECT_EQ(counted.getItem(2), ZQName());
}

TEST(ZQNameListInstance, OwnsAndFillsItsArray) {
  ZQNameListInstance list(3);
  list.setItem(ZQN_color, 0);
  list.setItem(ZQN_auto, 1);
  list.setItem(ZQN_none, 2);
  EXPECT_EQ(list.getCount(), 3);
  EXPECT_TRUE(list.hasItem(ZQN_auto));
  EXPECT_FALSE(list.hasItem(ZQN_zoom));
  const ZQNameList& view = list;
  EXPECT_EQ(view.getItem(2), ZQN_none);
  ZQNameListInstance none(0);
  EXPECT_EQ(none.getCount(), 0);
  EXPECT_FALSE(none.hasItem(ZQN_EMPTY));
}

}  // namespace
