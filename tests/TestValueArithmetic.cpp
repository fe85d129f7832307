#include <gtest/gtest.h>

#include "TestSupport.h"

#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "common/ZQName.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQValue.h"
#include "common/ZQValueArray.h"

using namespace ZQCommonNS;

namespace {

using zqtest::s8;
using zqtest::u;

ZQValue intIn(int v, ZQUnitType unit) {
  ZQValue x(v);
  x.setUnitType(unit);
  return x;
}
ZQValue real(float v, ZQUnitType unit) { return ZQValue(v, unit); }

void expectReal(const ZQValue& v, float number, ZQUnitType unit) {
  EXPECT_TRUE(v.isReal()) << "type " << v.getValueType();
  EXPECT_EQ(v.getUnitType(), unit);
  EXPECT_FLOAT_EQ(v.getRealValue(unit), number);
}

void expectInteger(const ZQValue& v, int number, ZQUnitType unit) {
  EXPECT_TRUE(v.isInteger()) << "type " << v.getValueType();
  EXPECT_EQ(v.getUnitType(), unit);
  EXPECT_EQ(v.getIntegerValue(), number);
}

// ---- sums ----

TEST(ZQValueArithmetic, SumsOfLengthsGoToPoints) {
  expectReal(real(1.0f, ZQUNIT_IN) + real(72.0f, ZQUNIT_PT), 144.0f, ZQUNIT_PT);
  expectReal(real(1.0f, ZQUNIT_IN) + real(1.0f, ZQUNIT_CM), 72.0f + 28.346457f, ZQUNIT_PT);
  expectReal(intIn(1, ZQUNIT_IN) + intIn(1, ZQUNIT_CM), 72.0f + 28.346457f, ZQUNIT_PT);
  expectReal(real(1.0f, ZQUNIT_S) + real(500.0f, ZQUNIT_MS), 1500.0f, ZQUNIT_MS);
  expectReal(real(1.0f, ZQUNIT_KHZ) - real(1.0f, ZQUNIT_HZ), 999.0f, ZQUNIT_HZ);
}

TEST(ZQValueArithmetic, SumsOfTheSameUnitStayAsTheyAre) {
  expectInteger(ZQValue(2) + ZQValue(3), 5, ZQUNIT_NUMBER);
  expectInteger(intIn(2, ZQUNIT_IN) + intIn(3, ZQUNIT_IN), 5, ZQUNIT_IN);
  expectInteger(intIn(50, ZQUNIT_PERCENT) + intIn(25, ZQUNIT_PERCENT), 75, ZQUNIT_PERCENT);
  expectReal(real(1.0f, ZQUNIT_EM) + real(0.5f, ZQUNIT_EM), 1.5f, ZQUNIT_EM);
  expectInteger(ZQValue(2) - ZQValue(3), -1, ZQUNIT_NUMBER);
}

TEST(ZQValueArithmetic, MixedTypesBecomeReal) {
  expectReal(ZQValue(1) + real(1.5f, ZQUNIT_NUMBER), 2.5f, ZQUNIT_NUMBER);
  expectReal(real(1.5f, ZQUNIT_NUMBER) + ZQValue(1), 2.5f, ZQUNIT_NUMBER);
  expectReal(intIn(2, ZQUNIT_EM) - real(0.5f, ZQUNIT_EM), 1.5f, ZQUNIT_EM);
  expectReal(intIn(50, ZQUNIT_PERCENT) + real(0.5f, ZQUNIT_PERCENT), 50.5f, ZQUNIT_PERCENT);
}

TEST(ZQValueArithmetic, SumsOfDifferentKindsAreNull) {
  EXPECT_TRUE((ZQValue(1) + real(1.0f, ZQUNIT_PT)).isNull());
  EXPECT_TRUE((real(50.0f, ZQUNIT_PERCENT) + ZQValue(1)).isNull());
  EXPECT_TRUE((real(1.0f, ZQUNIT_EM) + real(1.0f, ZQUNIT_PT)).isNull());
  EXPECT_TRUE((real(1.0f, ZQUNIT_EM) - real(1.0f, ZQUNIT_EX)).isNull());
  EXPECT_TRUE((real(1.0f, ZQUNIT_DEG) + real(1.0f, ZQUNIT_MS)).isNull());
}

TEST(ZQValueArithmetic, IntegerSumsWrap) {
  expectInteger(ZQValue(INT_MAX) + ZQValue(1), INT_MIN, ZQUNIT_NUMBER);
  expectInteger(ZQValue(INT_MIN) - ZQValue(1), INT_MAX, ZQUNIT_NUMBER);
}

TEST(ZQValueArithmetic, NamesAndOtherValuesGiveNull) {
  const ZQValue others[] = {ZQValue(ZQN_auto), ZQValue(), ZQValue(u("3"), ZQUNIT_NONE),
                            ZQValue(new ZQValueArray())};
  for (const ZQValue& o : others) {
    EXPECT_TRUE((o + ZQValue(1)).isNull());
    EXPECT_TRUE((ZQValue(1) + o).isNull());
    EXPECT_TRUE((o - ZQValue(1)).isNull());
    EXPECT_TRUE((ZQValue(1) * o).isNull());
    EXPECT_TRUE((o * ZQValue(1)).isNull());
    EXPECT_TRUE((ZQValue(1) / o).isNull());
    EXPECT_TRUE((o % ZQValue(1)).isNull());
    EXPECT_TRUE((-o).isNull());
    EXPECT_TRUE(o.abs().isNull());
    EXPECT_TRUE(o.floor().isNull());
  }
}

TEST(ZQValueArithmetic, AssignmentFormsChangeTheLeftSide) {
  ZQValue v(10.0f, ZQUNIT_PT);
  v += ZQValue(2.0f, ZQUNIT_PT);
  expectReal(v, 12.0f, ZQUNIT_PT);
  v -= ZQValue(1.0f, ZQUNIT_PT);
  v *= ZQValue(2);
  v /= ZQValue(11);
  expectReal(v, 2.0f, ZQUNIT_PT);
  v += v;  // the right side is read before the left changes
  expectReal(v, 4.0f, ZQUNIT_PT);
  v += ZQValue(ZQN_auto);
  EXPECT_TRUE(v.isNull());
}

// ---- products ----

TEST(ZQValueArithmetic, ProductsAreAlwaysReal) {
  expectReal(ZQValue(2) * ZQValue(3), 6.0f, ZQUNIT_NUMBER);
  expectReal(ZQValue(2) * real(3.0f, ZQUNIT_EM), 6.0f, ZQUNIT_EM);
  expectReal(real(3.0f, ZQUNIT_EM) * ZQValue(2), 6.0f, ZQUNIT_EM);
}

TEST(ZQValueArithmetic, PercentagesCountAsHundredths) {
  expectReal(real(50.0f, ZQUNIT_PERCENT) * real(10.0f, ZQUNIT_PT), 5.0f, ZQUNIT_PT);
  expectReal(real(10.0f, ZQUNIT_PT) * intIn(50, ZQUNIT_PERCENT), 5.0f, ZQUNIT_PT);
  expectReal(real(50.0f, ZQUNIT_PERCENT) * real(50.0f, ZQUNIT_PERCENT), 0.25f, ZQUNIT_NUMBER);
  expectReal(real(50.0f, ZQUNIT_PERCENT) / ZQValue(2), 0.25f, ZQUNIT_NUMBER);
  expectReal(real(10.0f, ZQUNIT_PT) / real(50.0f, ZQUNIT_PERCENT), 20.0f, ZQUNIT_PT);
}

TEST(ZQValueArithmetic, ProductUnitTable) {
  // pt * pt = 30; pt * 30 = 31; 30 * pt = 31; any other pair is null.
  expectReal(real(2.0f, ZQUNIT_PT) * real(3.0f, ZQUNIT_PT), 6.0f, ZQUNIT_PT2);
  expectReal(real(2.0f, ZQUNIT_PT) * real(3.0f, ZQUNIT_PT2), 6.0f, ZQUNIT_PT3);
  expectReal(real(2.0f, ZQUNIT_PT2) * real(3.0f, ZQUNIT_PT), 6.0f, ZQUNIT_PT3);
  expectReal(real(1.0f, ZQUNIT_IN) * real(1.0f, ZQUNIT_IN), 5184.0f, ZQUNIT_PT2);
  EXPECT_TRUE((real(1.0f, ZQUNIT_EM) * real(1.0f, ZQUNIT_EM)).isNull());
  EXPECT_TRUE((real(1.0f, ZQUNIT_PT2) * real(1.0f, ZQUNIT_PT2)).isNull());
  EXPECT_TRUE((real(1.0f, ZQUNIT_PT3) * real(1.0f, ZQUNIT_PT)).isNull());
  EXPECT_TRUE((real(1.0f, ZQUNIT_CM) * real(1.0f, ZQUNIT_EM)).isNull());
  EXPECT_TRUE((real(1.0f, ZQUNIT_DEG) * real(1.0f, ZQUNIT_DEG)).isNull());
  // Normalization comes first: radians multiply as degrees, a resolution as a number.
  ZQValue angle = real(1.0f, ZQUNIT_RAD) * ZQValue(2);
  EXPECT_EQ(angle.getUnitType(), ZQUNIT_DEG);
  expectReal(intIn(300, ZQUNIT_DPI) * ZQValue(2), 600.0f, ZQUNIT_NUMBER);
}

TEST(ZQValueArithmetic, QuotientUnitTable) {
  expectReal(real(10.0f, ZQUNIT_PT) / real(2.0f, ZQUNIT_PT), 5.0f, ZQUNIT_NUMBER);
  expectReal(real(10.0f, ZQUNIT_PT) / ZQValue(4), 2.5f, ZQUNIT_PT);
  expectReal(real(6.0f, ZQUNIT_EM) / real(2.0f, ZQUNIT_EM), 3.0f, ZQUNIT_NUMBER);
  expectReal(ZQValue(7) / ZQValue(2), 3.5f, ZQUNIT_NUMBER);
  // 31 / 9 = 30; 31 / 30 = 9; 30 / 9 = 9.
  expectReal(real(24.0f, ZQUNIT_PT3) / real(2.0f, ZQUNIT_PT), 12.0f, ZQUNIT_PT2);
  expectReal(real(24.0f, ZQUNIT_PT3) / real(4.0f, ZQUNIT_PT2), 6.0f, ZQUNIT_PT);
  expectReal(real(6.0f, ZQUNIT_PT2) / real(2.0f, ZQUNIT_PT), 3.0f, ZQUNIT_PT);
  EXPECT_TRUE((real(1.0f, ZQUNIT_PT) / real(1.0f, ZQUNIT_PT2)).isNull());
  EXPECT_TRUE((real(1.0f, ZQUNIT_PT2) / real(1.0f, ZQUNIT_PT3)).isNull());
  EXPECT_TRUE((ZQValue(1) / real(1.0f, ZQUNIT_PT)).isNull());
  EXPECT_TRUE((real(1.0f, ZQUNIT_EM) / real(1.0f, ZQUNIT_PT)).isNull());
  // Lengths of different units divide after normalization.
  expectReal(real(1.0f, ZQUNIT_IN) / real(72.0f, ZQUNIT_PT), 1.0f, ZQUNIT_NUMBER);
}

TEST(ZQValueArithmetic, QuotientsOfPercentagesAndOtherKinds) {
  // Both sides are hundredths: the units agree and the result is a plain number.
  expectReal(real(50.0f, ZQUNIT_PERCENT) / intIn(25, ZQUNIT_PERCENT), 2.0f, ZQUNIT_NUMBER);
  expectReal(real(90.0f, ZQUNIT_DEG) / real(45.0f, ZQUNIT_DEG), 2.0f, ZQUNIT_NUMBER);
  expectReal(real(1.0f, ZQUNIT_S) / real(250.0f, ZQUNIT_MS), 4.0f, ZQUNIT_NUMBER);
  expectReal(real(6.0f, ZQUNIT_PT2) / real(3.0f, ZQUNIT_PT2), 2.0f, ZQUNIT_NUMBER);
  EXPECT_TRUE((real(1.0f, ZQUNIT_DEG) / real(1.0f, ZQUNIT_MS)).isNull());
  EXPECT_TRUE((intIn(2, ZQUNIT_PERCENT) / real(1.0f, ZQUNIT_PT)).isNull());
  // A product with one plain side takes the other side's unit, whatever it is.
  expectReal(real(2.0f, ZQUNIT_MS) * real(3.0f, ZQUNIT_NUMBER), 6.0f, ZQUNIT_MS);
  expectReal(ZQValue(2) * real(3.0f, ZQUNIT_PT3), 6.0f, ZQUNIT_PT3);
  expectReal(real(2.0f, ZQUNIT_EM) * real(50.0f, ZQUNIT_PERCENT), 1.0f, ZQUNIT_EM);
}

TEST(ZQValueArithmetic, SquareDividedBackIsALength) {
  ZQValue area = real(2.0f, ZQUNIT_PT) * real(3.0f, ZQUNIT_PT);
  expectReal(area, 6.0f, ZQUNIT_PT2);
  expectReal(area / real(2.0f, ZQUNIT_PT), 3.0f, ZQUNIT_PT);
}

TEST(ZQValueArithmetic, DivisionByZeroFollowsTheFloatRules) {
  ZQValue q = ZQValue(1) / ZQValue(0);
  EXPECT_TRUE(q.isReal());
  EXPECT_TRUE(std::isinf(q.getRealValue(ZQUNIT_NUMBER)));
  EXPECT_TRUE(std::isnan((ZQValue(0) / ZQValue(0)).getRealValue(ZQUNIT_NUMBER)));
}

// ---- remainders ----

TEST(ZQValueArithmetic, Remainders) {
  expectInteger(ZQValue(7) % ZQValue(3), 1, ZQUNIT_NUMBER);
  expectInteger(ZQValue(-7) % ZQValue(3), -1, ZQUNIT_NUMBER);  // the sign of the dividend
  expectInteger(ZQValue(7) % ZQValue(-3), 1, ZQUNIT_NUMBER);
  expectReal(real(7.5f, ZQUNIT_PT) % real(2.0f, ZQUNIT_PT), 1.5f, ZQUNIT_PT);
  expectReal(real(-7.5f, ZQUNIT_PT) % real(2.0f, ZQUNIT_PT), -1.5f, ZQUNIT_PT);
  expectReal(real(1.0f, ZQUNIT_IN) % real(50.0f, ZQUNIT_PT), 22.0f, ZQUNIT_PT);
  expectReal(ZQValue(7) % real(2.5f, ZQUNIT_NUMBER), 2.0f, ZQUNIT_NUMBER);
  EXPECT_TRUE((ZQValue(5) % real(1.0f, ZQUNIT_PT)).isNull());
  EXPECT_TRUE((real(5.0f, ZQUNIT_PERCENT) % ZQValue(2)).isNull());
}

TEST(ZQValueArithmetic, IntegerRemainderByZeroIsNull) {
  EXPECT_TRUE((ZQValue(7) % ZQValue(0)).isNull());
  expectInteger(ZQValue(INT_MIN) % ZQValue(-1), 0, ZQUNIT_NUMBER);
  EXPECT_TRUE(std::isnan((real(7.0f, ZQUNIT_PT) % real(0.0f, ZQUNIT_PT)).getRealValue(ZQUNIT_PT)));
}

// ---- unary operations and rounding ----

TEST(ZQValueArithmetic, NegationKeepsTheFlags) {
  expectInteger(-ZQValue(5), -5, ZQUNIT_NUMBER);
  expectReal(-real(2.5f, ZQUNIT_CM), -2.5f, ZQUNIT_CM);
  expectInteger(-intIn(3, ZQUNIT_PERCENT), -3, ZQUNIT_PERCENT);
  expectInteger(-ZQValue(INT_MIN), INT_MIN, ZQUNIT_NUMBER);
  ZQNamedValue named(ZQValue(4.0f, ZQUNIT_PT), ZQName(ZQN_width));
  ZQValue negated = -named;
  uint64_t words[2];
  std::memcpy(words, &negated, sizeof words);
  EXPECT_EQ(words[1] >> 9, static_cast<uint64_t>(ZQN_width));
}

TEST(ZQValueArithmetic, Rounding) {
  expectReal(real(2.5f, ZQUNIT_NUMBER).round(), 3.0f, ZQUNIT_NUMBER);
  expectReal(real(-2.5f, ZQUNIT_NUMBER).round(), -2.0f, ZQUNIT_NUMBER);
  expectReal(real(-2.6f, ZQUNIT_NUMBER).round(), -3.0f, ZQUNIT_NUMBER);
  expectReal(real(-1.5f, ZQUNIT_NUMBER).floor(), -2.0f, ZQUNIT_NUMBER);
  expectReal(real(-1.5f, ZQUNIT_NUMBER).ceiling(), -1.0f, ZQUNIT_NUMBER);
  expectReal(real(1.2f, ZQUNIT_NUMBER).ceiling(), 2.0f, ZQUNIT_NUMBER);
  expectReal(real(1.8f, ZQUNIT_NUMBER).floor(), 1.0f, ZQUNIT_NUMBER);
  expectInteger(ZQValue(7).round(), 7, ZQUNIT_NUMBER);
  expectInteger(ZQValue(-7).floor(), -7, ZQUNIT_NUMBER);
  expectInteger(ZQValue(7).ceiling(), 7, ZQUNIT_NUMBER);
  EXPECT_TRUE(real(2.5f, ZQUNIT_PT).round().isNull());
  EXPECT_TRUE(real(2.5f, ZQUNIT_PERCENT).floor().isNull());
  EXPECT_TRUE(intIn(2, ZQUNIT_EM).ceiling().isNull());
}

TEST(ZQValueArithmetic, Abs) {
  expectReal(real(-3.0f, ZQUNIT_PT).abs(), 3.0f, ZQUNIT_PT);
  expectReal(real(3.0f, ZQUNIT_PT).abs(), 3.0f, ZQUNIT_PT);
  expectInteger(ZQValue(-4).abs(), 4, ZQUNIT_NUMBER);
  expectInteger(intIn(-4, ZQUNIT_PERCENT).abs(), 4, ZQUNIT_PERCENT);
  expectInteger(ZQValue(INT_MIN).abs(), INT_MIN, ZQUNIT_NUMBER);
}

// ---- a value as a list or a record ----

TEST(ZQValueItems, AddItemMakesAListFromTheSecondItem) {
  ZQValue v;
  v.addItem(ZQValue(1));
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(v.getArrayCount(), 1);
  v.addItem(ZQValue(2));
  EXPECT_TRUE(v.isArray());
  EXPECT_EQ(v.getUnitType(), ZQUNIT_NONE);
  EXPECT_EQ(v.getArrayCount(), 2);
  EXPECT_EQ(v.getNthItem(0).getIntegerValue(), 1);
  EXPECT_EQ(v.getNthItem(1).getIntegerValue(), 2);
  v.addItem(ZQValue(3));
  EXPECT_EQ(v.getArrayCount(), 3);
}

TEST(ZQValueItems, AddingAValueToItselfMakesAListOfTwo) {
  ZQValue v(5);
  v.addItem(v);
  ASSERT_TRUE(v.isArray());
  EXPECT_EQ(v.getArrayCount(), 2);
  expectInteger(v.getNthItem(0), 5, ZQUNIT_NUMBER);
  expectInteger(v.getNthItem(1), 5, ZQUNIT_NUMBER);
  EXPECT_EQ(s8(v.toString()), "5 5");

  ZQValue r(6.0f, ZQUNIT_PT);
  r.setNamedItem(ZQName(ZQN_width), r);
  ASSERT_TRUE(r.isCompound());
  EXPECT_EQ(r.getNamedValueMap()->getCount(), 2);
  expectReal(r.getNamedItem(ZQName()), 6.0f, ZQUNIT_PT);
  expectReal(r.getNamedItem(ZQName(ZQN_width)), 6.0f, ZQUNIT_PT);
  EXPECT_EQ(s8(r.toString()), "{.: 6pt; width: 6pt}");

  ZQNamedValue n(ZQValue(7), ZQName(ZQN_height));
  n.setNamedItem(n);
  ASSERT_TRUE(n.isCompound());
  expectInteger(n.getNamedItem(ZQName(ZQN_height)), 7, ZQUNIT_NUMBER);
  expectInteger(n.getNamedItem(ZQName()), 7, ZQUNIT_NUMBER);
}

TEST(ZQValueItems, NthItemOfASingleValue) {
  ZQValue v(5);
  EXPECT_EQ(v.getNthItem(0).getIntegerValue(), 5);
  EXPECT_TRUE(v.getNthItem(1).isNull());
  EXPECT_TRUE(v.getNthItem(-1).isNull());
  ZQValue list;
  list.addItem(ZQValue(1));
  list.addItem(ZQValue(2));
  EXPECT_TRUE(list.getNthItem(2).isNull());
  EXPECT_TRUE(list.getNthItem(-1).isNull());
  EXPECT_TRUE(ZQValue().getNthItem(0).isNull());
}

TEST(ZQValueItems, MakeArrayAndMakeCompound) {
  ZQNamedValue n(ZQValue(7), ZQName(ZQN_width));
  n.makeArray();
  EXPECT_TRUE(n.isArray());
  EXPECT_EQ(n.getName(), ZQN_width);  // the name bits stay
  EXPECT_EQ(n.getArrayCount(), 1);
  EXPECT_EQ(n.getNthItem(0).getIntegerValue(), 7);
  ZQValueArray* before = n.getValueArray();
  n.makeArray();
  EXPECT_EQ(n.getValueArray(), before);

  ZQValue empty;
  empty.makeArray();
  EXPECT_TRUE(empty.isArray());
  EXPECT_EQ(empty.getArrayCount(), 0);

  ZQNamedValue c(ZQValue(3.0f, ZQUNIT_PT), ZQName(ZQN_width));
  c.makeCompound();
  EXPECT_TRUE(c.isCompound());
  EXPECT_EQ(c.getUnitType(), ZQUNIT_NONE);
  EXPECT_EQ(c.getName(), ZQN_width);
  EXPECT_EQ(c.getNamedItem(ZQName()).getRealValue(ZQUNIT_PT), 3.0f);
  ZQValue nothing;
  nothing.makeCompound();
  EXPECT_EQ(nothing.getNamedValueMap()->getCount(), 0);
}

TEST(ZQValueItems, NamedItems) {
  ZQValue v(5);
  EXPECT_EQ(v.getNamedItem(ZQName()).getIntegerValue(), 5);
  EXPECT_TRUE(v.getNamedItem(ZQName(ZQN_width)).isNull());
  v.setNamedItem(ZQName(ZQN_width), ZQValue(10.0f, ZQUNIT_PT));
  EXPECT_TRUE(v.isCompound());
  EXPECT_EQ(v.getNamedItem(ZQName()).getIntegerValue(), 5);
  EXPECT_EQ(v.getNamedItem(ZQName(ZQN_width)).getRealValue(ZQUNIT_PT), 10.0f);
  v.setNamedItem(ZQNamedValue(ZQValue(ZQN_auto), ZQName(ZQN_height)));
  EXPECT_EQ(v.getNamedItem(ZQName(ZQN_height)).getNameValue(), ZQN_auto);
  v.removeNamedItem(ZQName(ZQN_width));
  EXPECT_TRUE(v.getNamedItem(ZQName(ZQN_width)).isNull());
  ZQValue plain(3);
  plain.removeNamedItem(ZQName());
  EXPECT_EQ(plain.getIntegerValue(), 3);
}

TEST(ZQValueItems, SumItemResolvesPercentagesAgainstTheBase) {
  ZQValue base(200.0f, ZQUNIT_PT);
  expectReal(ZQValue(50.0f, ZQUNIT_PERCENT).sumItem(base), 100.0f, ZQUNIT_PT);
  expectReal(intIn(25, ZQUNIT_PERCENT).sumItem(base), 50.0f, ZQUNIT_PT);
  expectReal(ZQValue(3.0f, ZQUNIT_PT).sumItem(base), 3.0f, ZQUNIT_PT);
  ZQValue list;
  list.addItem(ZQValue(50.0f, ZQUNIT_PERCENT));
  list.addItem(ZQValue(1.0f, ZQUNIT_IN));
  list.addItem(ZQValue(-10.0f, ZQUNIT_PT));
  expectReal(list.sumItem(base), 100.0f + 72.0f - 10.0f, ZQUNIT_PT);
  // An item that cannot be added makes the sum null.
  list.addItem(ZQValue(1.0f, ZQUNIT_EM));
  EXPECT_TRUE(list.sumItem(base).isNull());
  EXPECT_TRUE(ZQValue(new ZQValueArray()).sumItem(base).isNull());
}

TEST(ZQValueItems, SumItemOfNestedLists) {
  ZQValue base(100.0f, ZQUNIT_PT);
  ZQValue inner;
  inner.addItem(ZQValue(10.0f, ZQUNIT_PERCENT));
  inner.addItem(ZQValue(2.0f, ZQUNIT_PT));
  ZQValue outer;
  outer.addItem(ZQValue(1.0f, ZQUNIT_PT));
  outer.addItem(inner);
  expectReal(outer.sumItem(base), 13.0f, ZQUNIT_PT);
  // Integers add up as integers; a percentage against a plain number is a plain number.
  ZQValue ints;
  ints.addItem(ZQValue(2));
  ints.addItem(ZQValue(3));
  expectInteger(ints.sumItem(base), 5, ZQUNIT_NUMBER);
  expectReal(ZQValue(50.0f, ZQUNIT_PERCENT).sumItem(ZQValue(8)), 4.0f, ZQUNIT_NUMBER);
  // A percentage against nothing numeric has no meaning.
  EXPECT_TRUE(ZQValue(50.0f, ZQUNIT_PERCENT).sumItem(ZQValue(ZQN_auto)).isNull());
  EXPECT_EQ(ZQValue(ZQN_auto).sumItem(base).getNameValue(), ZQN_auto);
}

TEST(ZQValueItems, InvertItem) {
  ZQValue single(2.0f, ZQUNIT_PT);
  single.invertItem();
  expectReal(single, -2.0f, ZQUNIT_PT);
  ZQValue list;
  list.addItem(ZQValue(1));
  ZQValue inner;
  inner.addItem(ZQValue(2.0f, ZQUNIT_EM));
  inner.addItem(ZQValue(3));
  list.addItem(inner);
  list.addItem(ZQValue(ZQN_auto));
  ZQValue shared(list);
  list.invertItem();
  EXPECT_EQ(list.getNthItem(0).getIntegerValue(), -1);
  expectReal(list.getNthItem(1).getNthItem(0), -2.0f, ZQUNIT_EM);
  EXPECT_TRUE(list.getNthItem(2).isNull());
  // A new array replaced the old one: the copy keeps the old items, the inner list too.
  EXPECT_EQ(shared.getNthItem(0).getIntegerValue(), 1);
  EXPECT_EQ(inner.getNthItem(1).getIntegerValue(), 3);
  EXPECT_NE(list.getValueArray(), shared.getValueArray());
}

TEST(ZQValueItems, DevideAndMultipleEachItem) {
  ZQValue list;
  list.addItem(ZQValue(10.0f, ZQUNIT_PT));
  list.addItem(ZQValue(4));
  ZQValue shared(list);
  list.devideEachItem(ZQValue(2));
  expectReal(list.getNthItem(0), 5.0f, ZQUNIT_PT);
  expectReal(list.getNthItem(1), 2.0f, ZQUNIT_NUMBER);
  expectReal(shared.getNthItem(0), 10.0f, ZQUNIT_PT);
  list.multipleEachItem(ZQValue(50.0f, ZQUNIT_PERCENT));
  expectReal(list.getNthItem(0), 2.5f, ZQUNIT_PT);
  expectReal(list.getNthItem(1), 1.0f, ZQUNIT_NUMBER);
  list.devideEachItem(ZQValue(1.0f, ZQUNIT_PT));
  expectReal(list.getNthItem(0), 2.5f, ZQUNIT_NUMBER);
  EXPECT_TRUE(list.getNthItem(1).isNull());  // a number by a length
  ZQValue single(9.0f, ZQUNIT_PT);
  single.multipleEachItem(ZQValue(2));
  expectReal(single, 18.0f, ZQUNIT_PT);
  single.devideEachItem(ZQValue(3));
  expectReal(single, 6.0f, ZQUNIT_PT);
  // The divisor may be an item of the very list.
  ZQValue self;
  self.addItem(ZQValue(4.0f, ZQUNIT_PT));
  self.addItem(ZQValue(8.0f, ZQUNIT_PT));
  ZQValue first = self.getNthItem(0);
  self.devideEachItem(self.getValueArray()->getItems()[0]);
  expectReal(self.getNthItem(1), 2.0f, ZQUNIT_NUMBER);
  expectReal(first, 4.0f, ZQUNIT_PT);
}

}  // namespace
