#include <gtest/gtest.h>

#include "TestSupport.h"

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "common/ZQName.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQValue.h"
#include "common/ZQValueArray.h"

using namespace ZQCommonNS;

namespace {

using zqtest::u;

uint64_t flagsWord(const ZQValue& v) {
  uint64_t w[2];
  std::memcpy(w, &v, sizeof w);
  return w[1];
}

// ---- ZQValueArray ----

TEST(ZQValueArray, TypeNumberAndName) {
  ZQPtr<ZQValueArray> a(new ZQValueArray());
  EXPECT_EQ(a->getTypeID(), 0x5B81E171u);
  EXPECT_TRUE(a->isA(ZQRCObject::getStaticTypeID()));
  EXPECT_EQ(a->getTypeName(), u("ZQValueArray"));
}

TEST(ZQValueArray, ItemsInOrderAndNullOutOfRange) {
  ZQPtr<ZQValueArray> a(new ZQValueArray());
  EXPECT_EQ(a->getCount(), 0);
  EXPECT_TRUE(a->getNthItem(0).isNull());
  a->addItem(ZQValue(1));
  a->addItem(ZQValue(ZQN_red));
  a->addItem(ZQValue(u("s"), ZQUNIT_NONE));
  EXPECT_EQ(a->getCount(), 3);
  EXPECT_EQ(a->getNthItem(0).getIntegerValue(), 1);
  EXPECT_EQ(a->item(1).getNameValue(), ZQN_red);
  EXPECT_EQ(a->item(2).getStringValue(), u("s"));
  EXPECT_TRUE(a->getNthItem(3).isNull());
  EXPECT_TRUE(a->getNthItem(-1).isNull());
  EXPECT_TRUE(a->item(1000).isNull());
}

TEST(ZQValueArray, AddItemCopiesAndSharesObjects) {
  ZQPtr<ZQValueArray> inner(new ZQValueArray());
  ZQPtr<ZQValueArray> a(new ZQValueArray());
  a->addItem(ZQValue(inner.get()));
  EXPECT_EQ(inner->getRefCount(), 2);
  EXPECT_EQ(a->getNthItem(0).getValueArray(), inner.get());
  a->clear();
  EXPECT_EQ(a->getCount(), 0);
  EXPECT_EQ(inner->getRefCount(), 1);
}

TEST(ZQValueArray, CloneOfEmptyHasOneReference) {
  ZQPtr<ZQValueArray> a(new ZQValueArray());
  ZQPtr<ZQValueArray> c = a->clone();
  EXPECT_NE(c.get(), a.get());
  EXPECT_EQ(c->getCount(), 0);
  EXPECT_EQ(c->getRefCount(), 1);
}

TEST(ZQValueArray, CloneCopiesEachItem) {
  ZQPtr<ZQValueArray> shared(new ZQValueArray());
  ZQPtr<ZQValueArray> a(new ZQValueArray());
  a->addItem(ZQValue(5));
  a->addItem(ZQValue(shared.get()));
  ZQPtr<ZQValueArray> c = a->clone();
  EXPECT_EQ(c->getCount(), 2);
  EXPECT_EQ(c->getNthItem(0).getIntegerValue(), 5);
  EXPECT_EQ(c->getNthItem(1).getValueArray(), shared.get());
  c->addItem(ZQValue(6));
  EXPECT_EQ(a->getCount(), 2);
}

// ---- ZQNamedValue ----

TEST(ZQNamedValue, DefaultIsNullWithEmptyName) {
  ZQNamedValue n;
  EXPECT_TRUE(n.isNull());
  EXPECT_TRUE(n.getName().isEmpty());
  EXPECT_TRUE(ZQNamedValue::NULL_VALUE.isNull());
  EXPECT_TRUE(ZQNamedValue::NULL_VALUE.getName().isEmpty());
}

TEST(ZQNamedValue, NameLivesInTheFlags) {
  ZQNamedValue n(ZQValue(3.0f, ZQUNIT_PT), ZQName(ZQN_width));
  EXPECT_EQ(n.getName(), ZQN_width);
  EXPECT_EQ(flagsWord(n) >> 9, static_cast<uint64_t>(ZQN_width));
  EXPECT_EQ(n.getUnitType(), ZQUNIT_PT);
  n.setName(ZQName(ZQN_height));
  EXPECT_EQ(n.getName(), ZQN_height);
  EXPECT_TRUE(n.isReal());
  EXPECT_EQ(n.getUnitType(), ZQUNIT_PT);
  EXPECT_EQ(n.getRealValue(ZQUNIT_PT), 3.0f);
}

TEST(ZQNamedValue, GetValueDropsTheNameAndSetValueKeepsIt) {
  ZQNamedValue n(ZQValue(1), ZQName(ZQN_width));
  ZQValue v = n.getValue();
  EXPECT_EQ(v.getIntegerValue(), 1);
  EXPECT_EQ(flagsWord(v) >> 9, 0u);
  n.setValue(ZQValue(u("text"), ZQUNIT_LITERAL));
  EXPECT_EQ(n.getName(), ZQN_width);
  EXPECT_TRUE(n.isLiteralString());
  EXPECT_EQ(n.getStringValue(), u("text"));
  // Setting a value that itself carries a name keeps this one.
  n.setValue(ZQNamedValue(ZQValue(2), ZQName(ZQN_height)));
  EXPECT_EQ(n.getName(), ZQN_width);
  EXPECT_EQ(n.getIntegerValue(), 2);
}

TEST(ZQNamedValue, CopyAndMove) {
  ZQNamedValue a(ZQValue(u("x"), ZQUNIT_NONE), ZQName(ZQN_color));
  ZQNamedValue b(a);
  EXPECT_EQ(b.getName(), ZQN_color);
  EXPECT_EQ(b.getStringValue(), u("x"));
  ZQNamedValue c(std::move(b));
  EXPECT_EQ(c.getName(), ZQN_color);
  EXPECT_EQ(c.getStringValue(), u("x"));
  ZQNamedValue d;
  d = c;
  EXPECT_EQ(d.getName(), ZQN_color);
  EXPECT_TRUE(d == a);
}

// ---- ZQNamedValueMap ----

TEST(ZQNamedValueMap, TypeNumberAndName) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  EXPECT_EQ(m->getTypeID(), 0x2D6DF390u);
  EXPECT_EQ(m->getTypeName(), u("ZQNamedValueMap"));
}

TEST(ZQNamedValueMap, EmptyMapGivesNullAndLeavesPreset) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  EXPECT_TRUE(m->getNamedItem(ZQName(ZQN_width)).isNull());
  EXPECT_TRUE(m->getNamedItem(ZQName()).isNull());
  ZQValue result(42);
  m->getNamedItemFast(ZQName(ZQN_width), result);
  EXPECT_EQ(result.getIntegerValue(), 42);
  m->getNamedItemFast(ZQName(), result);
  EXPECT_EQ(result.getIntegerValue(), 42);
}

TEST(ZQNamedValueMap, FastLookupAssignsFoundAndLeavesMissing) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  m->setNamedItem(ZQName(ZQN_width), ZQValue(10.0f, ZQUNIT_PT));
  ZQValue result(u("default"), ZQUNIT_NONE);
  m->getNamedItemFast(ZQName(ZQN_height), result);
  EXPECT_EQ(result.getStringValue(), u("default"));
  m->getNamedItemFast(ZQName(ZQN_width), result);
  EXPECT_EQ(result.getRealValue(ZQUNIT_PT), 10.0f);
  EXPECT_EQ(flagsWord(result) >> 9, 0u);  // the result does not carry the key
}

TEST(ZQNamedValueMap, SettingANameTwiceReplacesInPlace) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  m->setNamedItem(ZQName(ZQN_width), ZQValue(1));
  m->setNamedItem(ZQName(ZQN_width), ZQValue(2));
  EXPECT_EQ(m->getCount(), 1);
  EXPECT_EQ(m->getNamedItem(ZQName(ZQN_width)).getIntegerValue(), 2);
}

TEST(ZQNamedValueMap, ReplacedMemberKeepsItsPosition) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  m->setNamedItem(ZQName(ZQN_width), ZQValue(1));
  m->setNamedItem(ZQName(ZQN_height), ZQValue(2));
  m->setNamedItem(ZQName(ZQN_width), ZQValue(3));
  EXPECT_EQ(m->getCount(), 2);
  ZQNamedValue first = m->item(0);
  EXPECT_EQ(first.getName(), ZQN_width);
  EXPECT_EQ(first.getIntegerValue(), 3);
  EXPECT_EQ(m->item(1).getName(), ZQN_height);
  EXPECT_TRUE(m->item(2).isNull());
  EXPECT_TRUE(m->item(2).getName().isEmpty());
  EXPECT_TRUE(m->item(-1).isNull());
}

TEST(ZQNamedValueMap, EmptyNameIsAValidKey) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  m->setNamedItem(ZQName(), ZQValue(7));
  EXPECT_EQ(m->getCount(), 1);
  EXPECT_EQ(m->getNamedItem(ZQName()).getIntegerValue(), 7);
  EXPECT_TRUE(m->item(0).getName().isEmpty());
  m->removeNamedItem(ZQName());
  EXPECT_EQ(m->getCount(), 0);
}

TEST(ZQNamedValueMap, SetNamedItemFromANamedValue) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  m->setNamedItem(ZQNamedValue(ZQValue(ZQN_auto), ZQName(ZQN_width)));
  EXPECT_EQ(m->getNamedItem(ZQName(ZQN_width)).getNameValue(), ZQN_auto);
}

TEST(ZQNamedValueMap, RemoveAbsentDoesNothing) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  m->removeNamedItem(ZQName(ZQN_width));
  EXPECT_EQ(m->getCount(), 0);
  m->setNamedItem(ZQName(ZQN_height), ZQValue(1));
  m->removeNamedItem(ZQName(ZQN_width));
  EXPECT_EQ(m->getCount(), 1);
}

TEST(ZQNamedValueMap, RemoveKeepsTheOrderOfTheRest) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  m->setNamedItem(ZQName(ZQN_width), ZQValue(1));
  m->setNamedItem(ZQName(ZQN_height), ZQValue(2));
  m->setNamedItem(ZQName(ZQN_color), ZQValue(3));
  m->removeNamedItem(ZQName(ZQN_height));
  ASSERT_EQ(m->getCount(), 2);
  EXPECT_EQ(m->item(0).getName(), ZQN_width);
  EXPECT_EQ(m->item(1).getName(), ZQN_color);
  EXPECT_TRUE(m->getNamedItem(ZQName(ZQN_height)).isNull());
  // Added again, it goes to the end.
  m->setNamedItem(ZQName(ZQN_height), ZQValue(4));
  EXPECT_EQ(m->item(2).getName(), ZQN_height);
}

TEST(ZQNamedValueMap, RemoveOnlyWhenTheValueEquals) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  m->setNamedItem(ZQName(ZQN_width), ZQValue(72.0f, ZQUNIT_PT));
  m->removeNamedItem(ZQName(ZQN_width), ZQValue(2.0f, ZQUNIT_IN));
  EXPECT_EQ(m->getCount(), 1);
  m->removeNamedItem(ZQName(ZQN_height), ZQValue(72.0f, ZQUNIT_PT));
  EXPECT_EQ(m->getCount(), 1);
  m->removeNamedItem(ZQName(ZQN_width), ZQValue(1.0f, ZQUNIT_IN));
  EXPECT_EQ(m->getCount(), 0);
}

TEST(ZQNamedValueMap, CloneKeepsOrderAndIsIndependent) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  m->setNamedItem(ZQName(ZQN_color), ZQValue(1));
  m->setNamedItem(ZQName(ZQN_width), ZQValue(2));
  m->setNamedItem(ZQName(ZQN_auto), ZQValue(3));
  ZQPtr<ZQNamedValueMap> c = m->clone();
  EXPECT_EQ(c->getRefCount(), 1);
  ASSERT_EQ(c->getCount(), 3);
  EXPECT_EQ(c->item(0).getName(), ZQN_color);
  EXPECT_EQ(c->item(1).getName(), ZQN_width);
  EXPECT_EQ(c->item(2).getName(), ZQN_auto);
  c->setNamedItem(ZQName(ZQN_height), ZQValue(4));
  c->setNamedItem(ZQName(ZQN_color), ZQValue(9));
  EXPECT_EQ(m->getCount(), 3);
  EXPECT_EQ(m->getNamedItem(ZQName(ZQN_color)).getIntegerValue(), 1);
  ZQPtr<ZQNamedValueMap> empty(new ZQNamedValueMap());
  EXPECT_EQ(empty->clone()->getCount(), 0);
}

TEST(ZQNamedValueMap, IteratorWalksInInsertionOrder) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  const ZQNameEnum names[] = {ZQN_width, ZQN_EMPTY, ZQN_color, ZQN_auto};
  for (int i = 0; i < 4; ++i) m->setNamedItem(ZQName(names[i]), ZQValue(i));
  ZQNamedValueMapIterator it(m.get());
  for (int round = 0; round < 2; ++round) {
    int i = 0;
    while (it.hasNext()) {
      const ZQNamedValue& member = it.next();
      ASSERT_LT(i, 4);
      EXPECT_EQ(member.getName(), names[i]);
      EXPECT_EQ(member.getIntegerValue(), i);
      ++i;
    }
    EXPECT_EQ(i, 4);
    it.setToStart();
  }
  ZQNamedValueMapIterator none(nullptr);
  EXPECT_FALSE(none.hasNext());
  ZQPtr<ZQNamedValueMap> empty(new ZQNamedValueMap());
  EXPECT_FALSE(ZQNamedValueMapIterator(empty.get()).hasNext());
}

// Large maps take another search path; it must answer the same.
TEST(ZQNamedValueMap, LargeMapsLookUpRemoveAndKeepOrder) {
  ZQPtr<ZQNamedValueMap> m(new ZQNamedValueMap());
  std::vector<ZQName> keys;
  for (int i = 0; i < 300; ++i) {
    // Built-in names and run-time names, spread over the whole number range.
    keys.push_back(i % 2 ? ZQName(static_cast<ZQNameEnum>(1 + i * 7))
                         : ZQName(u(("zq-map-key-" + std::to_string(i)).c_str())));
  }
  for (int i = 0; i < 300; ++i) {
    m->setNamedItem(keys[static_cast<size_t>(i)], ZQValue(i));
    ASSERT_EQ(m->getCount(), i + 1);
    for (int j = 0; j <= i; j += 37) {
      ASSERT_EQ(m->getNamedItem(keys[static_cast<size_t>(j)]).getIntegerValue(), j);
    }
  }
  for (int i = 0; i < 300; ++i) {
    EXPECT_EQ(m->getNamedItem(keys[static_cast<size_t>(i)]).getIntegerValue(), i);
    EXPECT_EQ(m->item(i).getName(), keys[static_cast<size_t>(i)]);
  }
  EXPECT_TRUE(m->getNamedItem(ZQName(u("zq-map-key-absent"))).isNull());
  // Replacing does not grow; removing every third keeps the rest in order.
  for (int i = 0; i < 300; ++i) m->setNamedItem(keys[static_cast<size_t>(i)], ZQValue(i * 2));
  EXPECT_EQ(m->getCount(), 300);
  for (int i = 0; i < 300; i += 3) m->removeNamedItem(keys[static_cast<size_t>(i)]);
  EXPECT_EQ(m->getCount(), 200);
  int pos = 0;
  for (int i = 0; i < 300; ++i) {
    ZQValue found(-1);
    m->getNamedItemFast(keys[static_cast<size_t>(i)], found);
    if (i % 3 == 0) {
      EXPECT_EQ(found.getIntegerValue(), -1);
    } else {
      EXPECT_EQ(found.getIntegerValue(), i * 2);
      EXPECT_EQ(m->item(pos++).getName(), keys[static_cast<size_t>(i)]);
    }
  }
  // Shrinking back below the small size still finds everything.
  for (int i = 0; i < 300; ++i) {
    if (i % 3 != 0 && i > 20) m->removeNamedItem(keys[static_cast<size_t>(i)]);
  }
  EXPECT_EQ(m->getCount(), 14);
  for (int i = 1; i <= 20; ++i) {
    if (i % 3 != 0) {
      EXPECT_EQ(m->getNamedItem(keys[static_cast<size_t>(i)]).getIntegerValue(), i * 2);
    }
  }
  ZQPtr<ZQNamedValueMap> c = m->clone();
  EXPECT_EQ(c->getNamedItem(keys[20]).getIntegerValue(), 40);
  ZQNameTable::cleanup();
}

TEST(ZQNamedValueMap, MembersHoldingTheirMapOwnersAreReleased) {
  // A map whose member holds another map; removing and destroying must not leak or crash.
  ZQValue outer;
  ZQValue inner;
  inner.setNamedItem(ZQName(ZQN_width), ZQValue(1));
  outer.setNamedItem(ZQName(ZQN_color), inner);
  ZQNamedValueMap* innerMap = inner.getNamedValueMap();
  EXPECT_EQ(innerMap->getRefCount(), 2);
  outer.removeNamedItem(ZQName(ZQN_color));
  EXPECT_EQ(innerMap->getRefCount(), 1);
}

}  // namespace
