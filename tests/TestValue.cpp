#include <gtest/gtest.h>

#include "TestSupport.h"

#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <limits>

#include "common/ZQLength.h"
#include "common/ZQName.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQValue.h"
#include "common/ZQValueArray.h"

using namespace ZQCommonNS;

namespace {

using zqtest::s8;
using zqtest::u;
uint32_t bits(float f) { return std::bit_cast<uint32_t>(f); }
float nan() { return std::numeric_limits<float>::quiet_NaN(); }

ZQValue intIn(int v, ZQUnitType unit) {
  ZQValue x(v);
  x.setUnitType(unit);
  return x;
}

// The two words of a value as they lie in memory: payload, then flags.
struct Words {
  uint64_t payload;
  uint64_t flags;
};
Words wordsOf(const ZQValue& v) {
  Words w;
  std::memcpy(&w, &v, sizeof w);
  return w;
}
uint64_t flagsOf(int type, int unit, int name) {
  return ((uint64_t(name) << 6 | uint64_t(unit)) << 3) | uint64_t(type);
}

TEST(ZQValue, IsTwoWordsWithFlagsLaidOutAsTypeUnitName) {
  static_assert(sizeof(ZQValue) == 16);
  EXPECT_EQ(wordsOf(ZQValue()).flags, 0u);
  EXPECT_EQ(wordsOf(ZQValue()).payload, 0u);
  Words w = wordsOf(ZQValue(7));
  EXPECT_EQ(w.flags, flagsOf(1, 1, 0));
  EXPECT_EQ(static_cast<int32_t>(w.payload), 7);
  w = wordsOf(ZQValue(1.5f, ZQUNIT_CM));
  EXPECT_EQ(w.flags, flagsOf(2, 6, 0));
  EXPECT_EQ(static_cast<uint32_t>(w.payload), bits(1.5f));
  w = wordsOf(ZQValue(ZQN_red));
  EXPECT_EQ(w.flags, flagsOf(3, 23, 0));
  EXPECT_EQ(static_cast<uint32_t>(w.payload), static_cast<uint32_t>(ZQN_red));
  ZQNamedValue named(ZQValue(2.0f, ZQUNIT_PT), ZQName(ZQN_font_size));
  EXPECT_EQ(wordsOf(named).flags, flagsOf(2, 9, ZQN_font_size));
}

TEST(ZQValue, DefaultIsNullAndEmpty) {
  ZQValue v;
  EXPECT_TRUE(v.isNull());
  EXPECT_TRUE(v.isEmpty());
  EXPECT_EQ(v.getArrayCount(), 0);
  EXPECT_TRUE(v.toString().isEmpty());
  EXPECT_EQ(v.getValueType(), ZQVALUE_NULL);
  EXPECT_EQ(v.getUnitType(), ZQUNIT_NONE);
  EXPECT_TRUE(ZQValue::NULL_VALUE.isNull());
  EXPECT_EQ(wordsOf(ZQValue::NULL_VALUE).flags, 0u);
}

TEST(ZQValue, IntegerHasUnitOne) {
  ZQValue v(5);
  EXPECT_EQ(v.getValueType(), ZQVALUE_INTEGER);
  EXPECT_EQ(v.getUnitType(), ZQUNIT_NUMBER);
  EXPECT_TRUE(v.isNumber());
  EXPECT_EQ(v.getArrayCount(), 1);
  EXPECT_EQ(v.toString(), u("5"));
  ZQValue l(12L);
  EXPECT_TRUE(l.isInteger());
  EXPECT_EQ(l.getUnitType(), ZQUNIT_NUMBER);
  EXPECT_EQ(l.getIntegerValue(), 12);
}

TEST(ZQValue, ConstructorsSetTypeAndUnit) {
  ZQValue real(2.5f, ZQUNIT_MM);
  EXPECT_EQ(real.getValueType(), ZQVALUE_REAL);
  EXPECT_EQ(real.getUnitType(), ZQUNIT_MM);

  ZQValue len(ZQLength(1.0f, ZQUNIT_IN));
  EXPECT_EQ(len.getValueType(), ZQVALUE_REAL);
  EXPECT_EQ(len.getUnitType(), ZQUNIT_PT);
  EXPECT_EQ(len.getRealValue(ZQUNIT_PT), 72.0f);
  ZQValue autoLen(ZQLength::getAuto());
  EXPECT_TRUE(autoLen.isReal());
  EXPECT_EQ(autoLen.getUnitType(), ZQUNIT_PT);
  EXPECT_TRUE(std::isnan(autoLen.getRealValue(ZQUNIT_PT)));

  ZQValue name{ZQName(ZQN_auto)};
  EXPECT_EQ(name.getValueType(), ZQVALUE_NAME);
  EXPECT_EQ(name.getUnitType(), ZQUNIT_NAME);
  EXPECT_EQ(name.getNameValue(), ZQN_auto);

  ZQValue yes(true), no(false);
  EXPECT_TRUE(yes.isName());
  EXPECT_EQ(yes.getNameValue(), ZQN_true);
  EXPECT_EQ(no.getNameValue(), ZQN_false);
  EXPECT_EQ(yes.getUnitType(), ZQUNIT_NAME);

  ZQValue str(u("abc"), ZQUNIT_LITERAL);
  EXPECT_EQ(str.getValueType(), ZQVALUE_STRING);
  EXPECT_EQ(str.getUnitType(), ZQUNIT_LITERAL);
  EXPECT_EQ(str.getStringValue(), u("abc"));
}

TEST(ZQValue, ObjectConstructorsHoldOneReference) {
  ZQPtr<ZQValueArray> arr(new ZQValueArray());
  ZQPtr<ZQNamedValueMap> map(new ZQNamedValueMap());
  {
    ZQValue a(arr.get());
    ZQValue m(map.get());
    ZQValue o(static_cast<ZQRCObject*>(arr.get()));
    EXPECT_EQ(a.getValueType(), ZQVALUE_ARRAY);
    EXPECT_EQ(m.getValueType(), ZQVALUE_COMPOUND);
    EXPECT_EQ(o.getValueType(), ZQVALUE_OBJECT);
    EXPECT_EQ(a.getUnitType(), ZQUNIT_NONE);
    EXPECT_EQ(arr->getRefCount(), 3);
    EXPECT_EQ(map->getRefCount(), 2);
    ZQValue copy(a);
    EXPECT_EQ(arr->getRefCount(), 4);
    EXPECT_EQ(copy.getValueArray(), arr.get());
  }
  EXPECT_EQ(arr->getRefCount(), 1);
  EXPECT_EQ(map->getRefCount(), 1);
  EXPECT_TRUE(ZQValue(static_cast<ZQValueArray*>(nullptr)).isNull());
  EXPECT_TRUE(ZQValue(static_cast<ZQNamedValueMap*>(nullptr)).isNull());
  EXPECT_TRUE(ZQValue(static_cast<ZQRCObject*>(nullptr)).isNull());
}

TEST(ZQValue, StringCopiesOwnTheirText) {
  ZQValue a(u("one"), ZQUNIT_NONE);
  ZQValue b(a);
  EXPECT_NE(wordsOf(a).payload, wordsOf(b).payload);
  EXPECT_EQ(b.getStringValue(), u("one"));
  b = ZQValue(u("two"), ZQUNIT_NONE);
  EXPECT_EQ(a.getStringValue(), u("one"));
  ZQValue moved(std::move(b));
  EXPECT_EQ(moved.getStringValue(), u("two"));
}

TEST(ZQValue, PeekStringReadsTheHeldStringInPlace) {
  ZQValue text(u("held"), ZQUNIT_URI);
  const UnicodeString* peeked = text.peekString();
  ASSERT_NE(peeked, nullptr);
  EXPECT_EQ(*peeked, u("held"));
  // The very string the value owns, not a copy of it.
  EXPECT_EQ(reinterpret_cast<uintptr_t>(peeked), static_cast<uintptr_t>(wordsOf(text).payload));
  EXPECT_EQ(ZQValue(ZQName(ZQN_auto)).peekString(), nullptr);
  EXPECT_EQ(ZQValue(3).peekString(), nullptr);
  EXPECT_EQ(ZQValue().peekString(), nullptr);
}

TEST(ZQValue, AssignmentAndClear) {
  ZQValue v(u("text"), ZQUNIT_NONE);
  ZQValue& self = v;
  v = self;
  EXPECT_EQ(v.getStringValue(), u("text"));
  v = ZQValue(3);
  EXPECT_EQ(v.getIntegerValue(), 3);
  v.clear();
  EXPECT_TRUE(v.isNull());
  // Assigning a value that lives inside the array this value holds.
  ZQPtr<ZQValueArray> arr(new ZQValueArray());
  arr->addItem(ZQValue(u("inner"), ZQUNIT_NONE));
  ZQValue holder(arr.get());
  arr = nullptr;
  const ZQValue& inner = holder.getValueArray()->getItems()[0];
  holder = inner;
  EXPECT_EQ(holder.getStringValue(), u("inner"));
}

TEST(ZQValue, SetRealValueKeepsName) {
  ZQNamedValue n(ZQValue(4), ZQName(ZQN_width));
  n.setRealValue(1.25f, ZQUNIT_EM);
  EXPECT_TRUE(n.isReal());
  EXPECT_EQ(n.getUnitType(), ZQUNIT_EM);
  EXPECT_EQ(n.getRealValue(ZQUNIT_EM), 1.25f);
  EXPECT_EQ(n.getName(), ZQN_width);
}

TEST(ZQValue, FlagAccessors) {
  ZQNamedValue n(ZQValue(4), ZQName(ZQN_width));
  n.setUnitType(ZQUNIT_PT);
  EXPECT_EQ(n.getUnitType(), ZQUNIT_PT);
  EXPECT_EQ(n.getValueType(), ZQVALUE_INTEGER);
  EXPECT_EQ(n.getName(), ZQN_width);
  n.setValueType(ZQVALUE_INTEGER);
  EXPECT_EQ(n.getName(), ZQN_width);
  // The two-argument form overwrites the whole word, name included.
  n.setValueUnitType(ZQVALUE_INTEGER, ZQUNIT_CHAR);
  EXPECT_EQ(n.getUnitType(), ZQUNIT_CHAR);
  EXPECT_TRUE(n.getName().isEmpty());
  ZQNamedValue m(ZQValue(4), ZQName(ZQN_width));
  m.setValueUnitType(ZQVALUE_INTEGER);
  EXPECT_EQ(m.getUnitType(), ZQUNIT_NONE);
  EXPECT_TRUE(m.getName().isEmpty());
}

TEST(ZQValue, TypeTestTable) {
  ZQValue null, i(3), r(1.0f, ZQUNIT_NUMBER), n(ZQN_red), s(u("x"), ZQUNIT_NONE);
  EXPECT_TRUE(null.isNull());
  EXPECT_TRUE(i.isInteger() && !i.isReal());
  EXPECT_TRUE(r.isReal() && !r.isInteger());
  EXPECT_TRUE(n.isName());
  EXPECT_TRUE(s.isString());
  EXPECT_TRUE(i.isNumeric() && r.isNumeric() && !n.isNumeric() && !s.isNumeric());
  EXPECT_TRUE(i.isNumber() && r.isNumber());
  EXPECT_FALSE(ZQValue(1.0f, ZQUNIT_PT).isNumber());
  EXPECT_TRUE(ZQValue(50.0f, ZQUNIT_PERCENT).isPercentage());
  EXPECT_TRUE(intIn(5, ZQUNIT_PERCENT).isPercentage());
  EXPECT_TRUE(ZQValue(50.0f, ZQUNIT_PERCENT).isNumberOrPercentage());
  EXPECT_TRUE(i.isNumberOrPercentage());
  EXPECT_FALSE(ZQValue(1.0f, ZQUNIT_EM).isNumberOrPercentage());

  const ZQUnitType absolute[] = {ZQUNIT_CM, ZQUNIT_MM,   ZQUNIT_IN,  ZQUNIT_PT,
                                 ZQUNIT_PC, ZQUNIT_JPT,  ZQUNIT_Q,   ZQUNIT_DD,
                                 ZQUNIT_CC, ZQUNIT_TWIP, ZQUNIT_EMU, ZQUNIT_PI};
  for (ZQUnitType unit : absolute) {
    EXPECT_TRUE(ZQValue(1.0f, unit).isAbsoluteLength()) << unit;
    EXPECT_TRUE(intIn(1, unit).isAbsoluteLength()) << unit;
    EXPECT_FALSE(ZQValue(1.0f, unit).isRelativeLength()) << unit;
  }
  const ZQUnitType relative[] = {ZQUNIT_EM,    ZQUNIT_EX,    ZQUNIT_PX,   ZQUNIT_REM,   ZQUNIT_VW,
                                 ZQUNIT_VH,    ZQUNIT_VMIN,  ZQUNIT_VMAX, ZQUNIT_PVW,   ZQUNIT_PVH,
                                 ZQUNIT_PVMIN, ZQUNIT_PVMAX, ZQUNIT_CH,   ZQUNIT_WCH,   ZQUNIT_FR,
                                 ZQUNIT_GR,    ZQUNIT_LH,    ZQUNIT_RLH,  ZQUNIT_LINES, ZQUNIT_DCEM,
                                 ZQUNIT_CAP,   ZQUNIT_IC};
  for (ZQUnitType unit : relative) {
    EXPECT_TRUE(ZQValue(1.0f, unit).isRelativeLength()) << unit;
    EXPECT_FALSE(ZQValue(1.0f, unit).isAbsoluteLength()) << unit;
  }
  for (ZQUnitType unit : {ZQUNIT_NUMBER, ZQUNIT_PERCENT, ZQUNIT_DEG, ZQUNIT_DPI, ZQUNIT_PT2}) {
    EXPECT_FALSE(ZQValue(1.0f, unit).isAbsoluteLength()) << unit;
    EXPECT_FALSE(ZQValue(1.0f, unit).isRelativeLength()) << unit;
  }
  EXPECT_FALSE(ZQValue(u("1pt"), ZQUNIT_PT).isAbsoluteLength());

  EXPECT_TRUE(ZQValue(1.0f, ZQUNIT_DEG).isAngle());
  EXPECT_TRUE(ZQValue(1.0f, ZQUNIT_RAD).isAngle());
  EXPECT_TRUE(intIn(1, ZQUNIT_GRAD).isAngle());
  EXPECT_FALSE(ZQValue(1.0f, ZQUNIT_MS).isAngle());

  ZQValue ch = intIn(0x41, ZQUNIT_CHAR);
  EXPECT_TRUE(ch.isCharacter());
  EXPECT_FALSE(ZQValue(65.0f, ZQUNIT_CHAR).isCharacter());
  EXPECT_FALSE(ch.isNumericalValue());
  EXPECT_TRUE(i.isNumericalValue());
  EXPECT_TRUE(ZQValue(65.0f, ZQUNIT_CHAR).isNumeric());

  EXPECT_TRUE(s.isUnknownString());
  EXPECT_TRUE(ZQValue(u("x"), ZQUNIT_LITERAL).isLiteralString());
  EXPECT_TRUE(ZQValue(u("x"), ZQUNIT_URI).isUriString());
  EXPECT_FALSE(ZQValue(u("x"), ZQUNIT_URI).isLiteralString());
  EXPECT_FALSE(ZQValue(u("x"), ZQUNIT_LITERAL).isUnknownString());

  // Colours: unit 24 with an integer or a compound.
  EXPECT_TRUE(intIn(0xFF0000, ZQUNIT_COLOR).isColor());
  EXPECT_FALSE(ZQValue(1.0f, ZQUNIT_COLOR).isColor());
  EXPECT_FALSE(ZQValue(u("red"), ZQUNIT_COLOR).isColor());
  ZQValue compound(new ZQNamedValueMap());
  EXPECT_FALSE(compound.isColor());
  compound.setUnitType(ZQUNIT_COLOR);
  EXPECT_TRUE(compound.isColor());
  ZQValue array(new ZQValueArray());
  array.setUnitType(ZQUNIT_COLOR);
  EXPECT_FALSE(array.isColor());

  EXPECT_TRUE(array.isArray() && !array.isCompound());
  EXPECT_TRUE(compound.isCompound() && !compound.isArray());
  EXPECT_TRUE(array.isRCObject() && compound.isRCObject());
  EXPECT_TRUE(ZQValue(static_cast<ZQRCObject*>(new ZQValueArray())).isRCObject());
  EXPECT_FALSE(i.isRCObject());
  // The type alone does not make an array: the payload must be there.
  ZQValue typed;
  typed.setValueType(ZQVALUE_ARRAY);
  EXPECT_FALSE(typed.isArray());
  EXPECT_FALSE(typed.isRCObject());
  EXPECT_EQ(typed.getArrayCount(), 1);
}

TEST(ZQValue, IsEmpty) {
  EXPECT_TRUE(ZQValue().isEmpty());
  EXPECT_TRUE(ZQValue(ZQN_EMPTY).isEmpty());
  EXPECT_TRUE(ZQValue(UnicodeString(), ZQUNIT_NONE).isEmpty());
  EXPECT_FALSE(ZQValue(u(" "), ZQUNIT_NONE).isEmpty());
  EXPECT_FALSE(ZQValue(0).isEmpty());
  EXPECT_FALSE(ZQValue(ZQN_auto).isEmpty());
  EXPECT_FALSE(ZQValue(new ZQValueArray()).isEmpty());
}

TEST(ZQValue, TrueAndFalseAreNames) {
  EXPECT_TRUE(ZQValue(true).isName());
  EXPECT_TRUE(ZQValue(true).isTrue());
  EXPECT_FALSE(ZQValue(true).isFalse());
  EXPECT_TRUE(ZQValue(ZQN_yes).isTrue());
  EXPECT_TRUE(ZQValue(false).isFalse());
  EXPECT_TRUE(ZQValue(ZQN_no).isFalse());
  EXPECT_FALSE(ZQValue(ZQN_no).isTrue());
  EXPECT_FALSE(ZQValue(1).isTrue());
  EXPECT_FALSE(ZQValue(0).isFalse());
  EXPECT_FALSE(ZQValue(u("true"), ZQUNIT_NONE).isTrue());
}

TEST(ZQValue, IntegerValueRoundsRealsByFloorOfHalfUp) {
  EXPECT_EQ(ZQValue(2.5f, ZQUNIT_NUMBER).getIntegerValue(), 3);
  EXPECT_EQ(ZQValue(-2.5f, ZQUNIT_NUMBER).getIntegerValue(), -2);
  EXPECT_EQ(ZQValue(-2.6f, ZQUNIT_NUMBER).getIntegerValue(), -3);
  EXPECT_EQ(ZQValue(2.49f, ZQUNIT_PT).getIntegerValue(), 2);  // the unit is ignored
  EXPECT_EQ(ZQValue(3e9f, ZQUNIT_NUMBER).getIntegerValue(), INT_MAX);
  EXPECT_EQ(ZQValue(-3e9f, ZQUNIT_NUMBER).getIntegerValue(), INT_MIN);
  EXPECT_EQ(ZQValue(std::numeric_limits<float>::infinity(), ZQUNIT_NUMBER).getIntegerValue(),
            INT_MAX);
  EXPECT_EQ(ZQValue(nan(), ZQUNIT_NUMBER).getIntegerValue(), INT_MIN);
  EXPECT_EQ(ZQValue(-7).getIntegerValue(), -7);
  EXPECT_EQ(ZQValue(ZQN_red).getIntegerValue(), 0);
  EXPECT_EQ(ZQValue(u("12"), ZQUNIT_NONE).getIntegerValue(), 0);
  EXPECT_EQ(ZQValue().getIntegerValue(), 0);
}

TEST(ZQValue, RealValueOfLengths) {
  EXPECT_FLOAT_EQ(ZQValue(1.5f, ZQUNIT_CM).getRealValue(ZQUNIT_MM), 15.0f);
  EXPECT_TRUE(std::isnan(ZQValue(1.5f, ZQUNIT_CM).getRealValue(ZQUNIT_EM)));
  EXPECT_EQ(ZQValue(1.0f, ZQUNIT_IN).getRealValue(ZQUNIT_PT), 72.0f);
  EXPECT_EQ(intIn(2, ZQUNIT_IN).getRealValue(ZQUNIT_PT), 144.0f);
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_EM).getRealValue(ZQUNIT_PT)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_PT)));
  EXPECT_EQ(ZQValue(3.0f, ZQUNIT_EM).getRealValue(ZQUNIT_EM), 3.0f);
}

TEST(ZQValue, RealValueOfNumbersAndPercentages) {
  EXPECT_EQ(ZQValue(50.0f, ZQUNIT_PERCENT).getRealValue(ZQUNIT_NUMBER), 0.5f);
  EXPECT_EQ(ZQValue(0.5f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_PERCENT), 50.0f);
  EXPECT_EQ(ZQValue(96.0f, ZQUNIT_DPI).getRealValue(ZQUNIT_NUMBER), 96.0f);
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_PT).getRealValue(ZQUNIT_NUMBER)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_DPI).getRealValue(ZQUNIT_PERCENT)));
  // Unit 0 takes any number unchanged.
  EXPECT_EQ(ZQValue(7.0f, ZQUNIT_EM).getRealValue(ZQUNIT_NONE), 7.0f);
  EXPECT_EQ(ZQValue(9).getRealValue(ZQUNIT_NONE), 9.0f);
  // Only numbers have a real value.
  EXPECT_TRUE(std::isnan(ZQValue(ZQN_red).getRealValue(ZQUNIT_NONE)));
  EXPECT_TRUE(std::isnan(ZQValue().getRealValue(ZQUNIT_NONE)));
  EXPECT_TRUE(std::isnan(ZQValue(u("1"), ZQUNIT_NONE).getRealValue(ZQUNIT_NUMBER)));
}

TEST(ZQValue, RealValueOfAnglesWithExactFactors) {
  const float degPerRad = std::bit_cast<float>(0x42652EE1u);
  EXPECT_EQ(ZQValue(2.0f, ZQUNIT_RAD).getRealValue(ZQUNIT_DEG), 2.0f * degPerRad);
  EXPECT_EQ(bits(ZQValue(1.0f, ZQUNIT_RAD).getRealValue(ZQUNIT_DEG)), 0x42652EE1u);
  EXPECT_EQ(ZQValue(100.0f, ZQUNIT_GRAD).getRealValue(ZQUNIT_DEG), 100.0f * 0.9f);
  // A plain number read as an angle counts as degrees.
  EXPECT_EQ(ZQValue(30.0f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_DEG), 30.0f);
  EXPECT_EQ(ZQValue(180.0f, ZQUNIT_DEG).getRealValue(ZQUNIT_RAD), 180.0f * 0.017453292f);
  EXPECT_EQ(ZQValue(180.0f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_RAD), 180.0f * 0.017453292f);
  EXPECT_EQ(ZQValue(200.0f, ZQUNIT_GRAD).getRealValue(ZQUNIT_RAD), 200.0f * 0.015707964f);
  // grad from deg uses the radian factor: 90deg is not 100grad here.
  EXPECT_EQ(ZQValue(90.0f, ZQUNIT_DEG).getRealValue(ZQUNIT_GRAD), 90.0f * 0.017453292f);
  EXPECT_EQ(ZQValue(90.0f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_GRAD), 90.0f * 0.017453292f);
  EXPECT_EQ(ZQValue(1.0f, ZQUNIT_RAD).getRealValue(ZQUNIT_GRAD), 63.661976f);
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_MS).getRealValue(ZQUNIT_DEG)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_PERCENT).getRealValue(ZQUNIT_RAD)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_PT).getRealValue(ZQUNIT_GRAD)));
}

TEST(ZQValue, RealValueOfTimesFrequenciesAndResolution) {
  EXPECT_EQ(ZQValue(1.5f, ZQUNIT_S).getRealValue(ZQUNIT_MS), 1500.0f);
  EXPECT_EQ(ZQValue(250.0f, ZQUNIT_MS).getRealValue(ZQUNIT_S), 0.25f);
  EXPECT_EQ(ZQValue(2.0f, ZQUNIT_KHZ).getRealValue(ZQUNIT_HZ), 2000.0f);
  EXPECT_EQ(ZQValue(500.0f, ZQUNIT_HZ).getRealValue(ZQUNIT_KHZ), 0.5f);
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_MS)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_S)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_HZ)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_KHZ)));
  // A resolution accepts a percentage and not a plain number.
  EXPECT_EQ(ZQValue(150.0f, ZQUNIT_PERCENT).getRealValue(ZQUNIT_DPI), 150.0f);
  EXPECT_TRUE(std::isnan(ZQValue(150.0f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_DPI)));
  // Any other target is NaN.
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_NUMBER).getRealValue(ZQUNIT_EM)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_PT).getRealValue(ZQUNIT_PT2)));
}

TEST(ZQValue, RealValueBetweenAbsoluteLengths) {
  EXPECT_FLOAT_EQ(ZQValue(1.0f, ZQUNIT_IN).getRealValue(ZQUNIT_CM), 2.54f);
  EXPECT_FLOAT_EQ(ZQValue(72.0f, ZQUNIT_PT).getRealValue(ZQUNIT_IN), 1.0f);
  EXPECT_FLOAT_EQ(ZQValue(2.0f, ZQUNIT_PC).getRealValue(ZQUNIT_PT), 24.0f);
  EXPECT_FLOAT_EQ(ZQValue(1.0f, ZQUNIT_PT).getRealValue(ZQUNIT_TWIP), 20.0f);
  EXPECT_FLOAT_EQ(ZQValue(4.0f, ZQUNIT_Q).getRealValue(ZQUNIT_MM), 1.0f);
  EXPECT_FLOAT_EQ(intIn(914400, ZQUNIT_EMU).getRealValue(ZQUNIT_IN), 1.0f);
  // Relative lengths, angles and plain numbers are no absolute length.
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_PX).getRealValue(ZQUNIT_PT)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_PT).getRealValue(ZQUNIT_PX)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_DEG).getRealValue(ZQUNIT_CM)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_PERCENT).getRealValue(ZQUNIT_IN)));
  // Times and frequencies do not mix, and neither has a plain-number reading.
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_MS).getRealValue(ZQUNIT_HZ)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_KHZ).getRealValue(ZQUNIT_S)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_S).getRealValue(ZQUNIT_NUMBER)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_DEG).getRealValue(ZQUNIT_NUMBER)));
  EXPECT_TRUE(std::isnan(ZQValue(1.0f, ZQUNIT_PERCENT).getRealValue(ZQUNIT_DEG)));
}

TEST(ZQValue, LengthValue) {
  EXPECT_EQ(static_cast<float>(ZQValue(10.0f, ZQUNIT_PT).getLengthValue()), 10.0f);
  EXPECT_EQ(static_cast<float>(intIn(2, ZQUNIT_IN).getLengthValue()), 144.0f);
  EXPECT_TRUE(ZQValue(12).getLengthValue().isAuto());
  EXPECT_TRUE(ZQValue(0).getLengthValue().isAuto());
  EXPECT_TRUE(ZQValue(50.0f, ZQUNIT_PERCENT).getLengthValue().isAuto());
  EXPECT_TRUE(ZQValue(1.0f, ZQUNIT_EM).getLengthValue().isAuto());
  EXPECT_TRUE(ZQValue(ZQN_auto).getLengthValue().isAuto());
  EXPECT_TRUE(ZQValue().getLengthValue().isAuto());
  EXPECT_EQ(bits(ZQValue(ZQN_auto).getLengthValue()), ZQLength::AUTO_BITS);
  // A length made from a value is the same reading.
  EXPECT_EQ(static_cast<float>(ZQLength(ZQValue(1.0f, ZQUNIT_IN))), 72.0f);
}

TEST(ZQValue, LengthValueOfCompounds) {
  ZQValue c;
  c.setNamedItem(ZQName(ZQN_minimum), ZQValue(1.0f, ZQUNIT_PT));
  c.setNamedItem(ZQName(ZQN_length), ZQValue(10.0f, ZQUNIT_PT));
  c.setNamedItem(ZQName(ZQN_optimum), ZQValue(20.0f, ZQUNIT_PT));
  EXPECT_EQ(static_cast<float>(c.getLengthValue()), 10.0f);

  ZQValue e;
  e.setNamedItem(ZQName(ZQN_optimum), ZQValue(20.0f, ZQUNIT_PT));
  e.setNamedItem(ZQName(), ZQValue(5.0f, ZQUNIT_PT));
  EXPECT_EQ(static_cast<float>(e.getLengthValue()), 5.0f);

  ZQValue o;
  o.setNamedItem(ZQName(ZQN_optimum), ZQValue(1.0f, ZQUNIT_IN));
  EXPECT_EQ(static_cast<float>(o.getLengthValue()), 72.0f);

  ZQValue nested;
  nested.setNamedItem(ZQName(ZQN_length), o);
  EXPECT_EQ(static_cast<float>(nested.getLengthValue()), 72.0f);

  ZQValue none;
  none.setNamedItem(ZQName(ZQN_minimum), ZQValue(1.0f, ZQUNIT_PT));
  EXPECT_TRUE(none.getLengthValue().isAuto());
}

TEST(ZQValue, SmallReaders) {
  EXPECT_EQ(intIn(0x1F600, ZQUNIT_CHAR).getCharacterValue(), 0x1F600);
  EXPECT_EQ(ZQValue(65).getCharacterValue(), -1);
  EXPECT_EQ(ZQValue(ZQN_red).getNameValue(), ZQN_red);
  EXPECT_TRUE(ZQValue(u("red"), ZQUNIT_NONE).getNameValue().isEmpty());
  EXPECT_EQ(ZQValue(ZQName(u("RED"))).getLowerNameValue(), ZQN_red);
  EXPECT_TRUE(ZQValue(u("RED"), ZQUNIT_NONE).getLowerNameValue().isEmpty());
  EXPECT_EQ(ZQValue(ZQN_red).toZQName(), ZQN_red);
  EXPECT_EQ(ZQValue(u("red"), ZQUNIT_NONE).toZQName(), ZQN_red);
  EXPECT_EQ(ZQValue(u("red"), ZQUNIT_NONE).toZWName(), ZQN_red);
  EXPECT_EQ(ZQValue(5).toZQName(), ZQName(u("5")));
  EXPECT_EQ(ZQValue(ZQN_red).getStringValue(), u("red"));
  EXPECT_TRUE(ZQValue(5).getStringValue().isEmpty());
  EXPECT_TRUE(ZQValue(ZQN_red).getRCObject() == nullptr);
  UnicodeString text = ZQValue(2.5f, ZQUNIT_PT);
  EXPECT_EQ(text, u("2.5pt"));
}

TEST(ZQValue, ObjectReaders) {
  ZQPtr<ZQValueArray> arr(new ZQValueArray());
  ZQPtr<ZQNamedValueMap> map(new ZQNamedValueMap());
  ZQValue a(arr.get()), m(map.get()), o(static_cast<ZQRCObject*>(arr.get()));
  EXPECT_EQ(a.getRCObject(), arr.get());
  EXPECT_EQ(m.getRCObject(), map.get());
  EXPECT_EQ(o.getRCObject(), arr.get());
  EXPECT_EQ(a.getValueArray(), arr.get());
  EXPECT_EQ(m.getValueArray(), nullptr);
  EXPECT_EQ(o.getValueArray(), nullptr);
  EXPECT_EQ(m.getNamedValueMap(), map.get());
  EXPECT_EQ(a.getNamedValueMap(), nullptr);
  EXPECT_EQ(a.getArrayCount(), 0);
  arr->addItem(ZQValue(1));
  arr->addItem(ZQValue(2));
  EXPECT_EQ(a.getArrayCount(), 2);
  EXPECT_EQ(m.getArrayCount(), 1);
  EXPECT_EQ(o.getArrayCount(), 1);
}

TEST(ZQValue, UnitStrings) {
  const struct {
    int unit;
    const char* text;
  } table[] = {{2, "%"},      {3, "em"},    {4, "ex"},     {5, "px"},    {6, "cm"},
               {7, "mm"},     {8, "in"},    {9, "pt"},     {10, "pc"},   {11, "jpt"},
               {12, "q"},     {13, "deg"},  {14, "rad"},   {15, "grad"}, {16, "ms"},
               {17, "s"},     {18, "Hz"},   {19, "kHz"},   {26, "dd"},   {27, "cc"},
               {28, "dpi"},   {29, "twip"}, {32, "rem"},   {33, "vw"},   {34, "vh"},
               {35, "vmin"},  {36, "vmax"}, {37, "pvw"},   {38, "pvh"},  {39, "pvmin"},
               {40, "pvmax"}, {41, "ch"},   {42, "wch"},   {43, "fr"},   {44, "gr"},
               {45, "lh"},    {46, "rlh"},  {47, "lines"}, {50, "emu"},  {51, "pi"},
               {52, "dcem"},  {53, "cap"},  {54, "ic"}};
  int withText = 0;
  for (const auto& row : table) {
    EXPECT_EQ(ZQValue::getUnitString(static_cast<ZQUnitType>(row.unit)), u(row.text)) << row.unit;
  }
  for (int unit = 0; unit < 64; ++unit) {
    if (!ZQValue::getUnitString(static_cast<ZQUnitType>(unit)).isEmpty()) ++withText;
  }
  EXPECT_EQ(withText, static_cast<int>(sizeof table / sizeof table[0]));
  for (int unit : {0, 1, 20, 21, 22, 23, 24, 25, 30, 31, 48, 49, 62, 63}) {
    EXPECT_TRUE(ZQValue::getUnitString(static_cast<ZQUnitType>(unit)).isEmpty()) << unit;
  }
}

TEST(ZQValue, NormalizeUnitTable) {
  ZQValue pct = intIn(50, ZQUNIT_PERCENT);
  pct.normalizeUnit();
  EXPECT_TRUE(pct.isReal());
  EXPECT_EQ(pct.getUnitType(), ZQUNIT_PERCENT);
  EXPECT_EQ(pct.getRealValue(ZQUNIT_PERCENT), 50.0f);

  ZQValue inch = intIn(1, ZQUNIT_IN);
  inch.normalizeUnit();
  EXPECT_TRUE(inch.isReal());
  EXPECT_EQ(inch.getUnitType(), ZQUNIT_PT);
  EXPECT_EQ(inch.getRealValue(ZQUNIT_PT), 72.0f);

  ZQValue pt = intIn(3, ZQUNIT_PT);
  pt.normalizeUnit();
  EXPECT_TRUE(pt.isReal());
  EXPECT_EQ(pt.getUnitType(), ZQUNIT_PT);

  ZQValue twip(20.0f, ZQUNIT_TWIP);
  twip.normalizeUnit();
  EXPECT_EQ(twip.getUnitType(), ZQUNIT_PT);
  EXPECT_EQ(twip.getRealValue(ZQUNIT_PT), 20.0f * std::bit_cast<float>(0x3D4CCCCDu));

  ZQValue rad(1.0f, ZQUNIT_RAD);
  rad.normalizeUnit();
  EXPECT_EQ(rad.getUnitType(), ZQUNIT_DEG);
  EXPECT_EQ(bits(rad.getRealValue(ZQUNIT_DEG)), 0x42652EE0u);  // not the reader's 0x42652EE1
  ZQValue irad = intIn(2, ZQUNIT_RAD);
  irad.normalizeUnit();
  EXPECT_TRUE(irad.isReal());
  EXPECT_EQ(irad.getRealValue(ZQUNIT_DEG), 2.0f * std::bit_cast<float>(0x42652EE0u));

  ZQValue grad = intIn(100, ZQUNIT_GRAD);
  grad.normalizeUnit();
  EXPECT_EQ(grad.getUnitType(), ZQUNIT_DEG);
  EXPECT_EQ(grad.getRealValue(ZQUNIT_DEG), 100.0f * 0.9f);

  ZQValue sec = intIn(2, ZQUNIT_S);
  sec.normalizeUnit();
  EXPECT_TRUE(sec.isReal());
  EXPECT_EQ(sec.getUnitType(), ZQUNIT_MS);
  EXPECT_EQ(sec.getRealValue(ZQUNIT_MS), 2000.0f);

  ZQValue khz(1.5f, ZQUNIT_KHZ);
  khz.normalizeUnit();
  EXPECT_EQ(khz.getUnitType(), ZQUNIT_HZ);
  EXPECT_EQ(khz.getRealValue(ZQUNIT_HZ), 1500.0f);

  ZQValue dpi = intIn(300, ZQUNIT_DPI);
  dpi.normalizeUnit();
  EXPECT_TRUE(dpi.isInteger());  // only the unit changes
  EXPECT_EQ(dpi.getUnitType(), ZQUNIT_NUMBER);
  EXPECT_EQ(dpi.getIntegerValue(), 300);

  for (ZQValue other : {intIn(3, ZQUNIT_EM), intIn(3, ZQUNIT_NUMBER), intIn(3, ZQUNIT_DEG),
                        intIn(3, ZQUNIT_MS), intIn(3, ZQUNIT_CHAR), ZQValue(ZQN_red)}) {
    ZQValue before(other);
    other.normalizeUnit();
    EXPECT_EQ(other.getValueType(), before.getValueType());
    EXPECT_EQ(other.getUnitType(), before.getUnitType());
  }
}

TEST(ZQValue, NormalizeUnitKeepsTheMemberKey) {
  ZQNamedValue m(ZQValue(1.0f, ZQUNIT_IN), ZQName(ZQN_width));
  m.normalizeUnit();
  EXPECT_EQ(m.getUnitType(), ZQUNIT_PT);
  EXPECT_EQ(m.getRealValue(ZQUNIT_PT), 72.0f);
  EXPECT_EQ(m.getName(), ZQN_width);
  // Strings and names are left alone, whatever their unit bits say.
  ZQValue s(u("1"), ZQUNIT_DPI);
  s.normalizeUnit();
  EXPECT_EQ(s.getUnitType(), ZQUNIT_DPI);
  EXPECT_EQ(s.getStringValue(), u("1"));
}

TEST(ZQValue, ToStringOfEachShape) {
  EXPECT_EQ(ZQValue(u("plain"), ZQUNIT_LITERAL).toString(), u("plain"));
  EXPECT_EQ(ZQValue(ZQN_font_size).toString(), u("font-size"));
  EXPECT_EQ(ZQValue(-12).toString(), u("-12"));
  EXPECT_EQ(ZQValue(1.5f, ZQUNIT_CM).toString(), u("1.5cm"));
  EXPECT_EQ(ZQValue(50.0f, ZQUNIT_PERCENT).toString(), u("50%"));
  EXPECT_EQ(intIn(3, ZQUNIT_PT).toString(), u("3pt"));
  EXPECT_EQ(ZQValue(0.1f, ZQUNIT_NUMBER).toString(), u("0.1"));
  EXPECT_EQ(ZQValue(2.0f, ZQUNIT_PT2).toString(), u("2"));
  EXPECT_EQ(intIn(0x263A, ZQUNIT_CHAR).toString(), UnicodeString(static_cast<UChar32>(0x263A)));
  EXPECT_EQ(intIn(0x1F600, ZQUNIT_CHAR).toString().length(), 2);
  // A code point that is none prints as nothing.
  EXPECT_TRUE(intIn(-5, ZQUNIT_CHAR).toString().isEmpty());
  ZQValue obj(static_cast<ZQRCObject*>(new ZQValueArray()));
  EXPECT_EQ(obj.toString(), u("##ZQValueArray"));
}

TEST(ZQValue, ToStringOfNumbersInEveryUnit) {
  // Reals and integers print their "%g" number and then the unit's text; a unit without text
  // adds nothing. An integer of unit 20 is a character and of unit 24 a colour, a real of those
  // units is a plain number.
  const char* const text[64] = {
      "",    "",   "%",    "em",    "ex",   "px",  "cm",    "mm",    "in",   "pt",  "pc",
      "jpt", "q",  "deg",  "rad",   "grad", "ms",  "s",     "Hz",    "kHz",  "",    "",
      "",    "",   "",     "",      "dd",   "cc",  "dpi",   "twip",  "",     "",    "rem",
      "vw",  "vh", "vmin", "vmax",  "pvw",  "pvh", "pvmin", "pvmax", "ch",   "wch", "fr",
      "gr",  "lh", "rlh",  "lines", "",     "",    "emu",   "pi",    "dcem", "cap", "ic",
      "",    "",   "",     "",      "",     "",    "",      "",      ""};
  for (int unit = 0; unit < 64; ++unit) {
    const ZQUnitType t = static_cast<ZQUnitType>(unit);
    EXPECT_EQ(s8(ZQValue(-1.25f, t).toString()), std::string("-1.25") + text[unit]) << unit;
    if (unit == ZQUNIT_CHAR || unit == ZQUNIT_COLOR) continue;
    EXPECT_EQ(s8(intIn(42, t).toString()), std::string("42") + text[unit]) << unit;
  }
  // Six significant digits, the exponent form for large and small numbers.
  EXPECT_EQ(s8(ZQValue(28.346457f, ZQUNIT_PT).toString()), "28.3465pt");
  EXPECT_EQ(s8(ZQValue(1e20f, ZQUNIT_NUMBER).toString()), "1e+20");
  EXPECT_EQ(s8(ZQValue(0.0001f, ZQUNIT_EM).toString()), "0.0001em");
  EXPECT_EQ(s8(ZQValue(0.00001f, ZQUNIT_EM).toString()), "1e-05em");
  EXPECT_EQ(s8(ZQValue(INT_MIN).toString()), "-2147483648");
  EXPECT_EQ(s8(ZQValue(nan(), ZQUNIT_PT).toString()), "nanpt");
  // A colour that fits in one number prints as the colour.
  EXPECT_EQ(s8(intIn(0x00FF80, ZQUNIT_COLOR).toString()), "#00FF80");
  EXPECT_EQ(s8(intIn(0x41, ZQUNIT_CHAR).toString()), "A");
}

TEST(ZQValue, ToStringOfNamesStringsAndNothing) {
  EXPECT_EQ(s8(ZQValue(u("a b"), ZQUNIT_NONE).toString()), "a b");
  EXPECT_EQ(s8(ZQValue(u("x.png"), ZQUNIT_URI).toString()), "x.png");
  EXPECT_EQ(s8(ZQValue(u("serif"), ZQUNIT_FORMAT).toString()), "serif");
  EXPECT_EQ(s8(ZQValue(ZQN_hash_CMYK).toString()), "#CMYK");
  EXPECT_EQ(s8(ZQValue(true).toString()), "true");
  EXPECT_EQ(s8(ZQValue(false).toString()), "false");
  EXPECT_TRUE(ZQValue(ZQN_EMPTY).toString().isEmpty());
  EXPECT_TRUE(ZQValue::NULL_VALUE.toString().isEmpty());
  EXPECT_TRUE(ZQValue(new ZQValueArray()).toString().isEmpty());
  ZQValue map(new ZQNamedValueMap());
  EXPECT_EQ(s8(ZQValue(static_cast<ZQRCObject*>(map.getNamedValueMap())).toString()),
            "##ZQNamedValueMap");
  // Nested lists and records print their parts by the same rules.
  ZQValue inner;
  inner.addItem(ZQValue(u("a"), ZQUNIT_LITERAL));
  inner.addItem(ZQValue(2));
  ZQValue outer;
  outer.addItem(inner);
  outer.setNamedItem(ZQName(ZQN_width), ZQValue(u("q"), ZQUNIT_LITERAL));
  EXPECT_EQ(s8(outer.toString()), "{.: \"a\" 2; width: q}");
}

TEST(ZQValue, ToStringOfArraysQuotesStrings) {
  ZQValue list;
  list.addItem(ZQValue(u("Times New Roman"), ZQUNIT_LITERAL));
  list.addItem(ZQValue(ZQN_serif));
  list.addItem(ZQValue(u("a.png"), ZQUNIT_URI));
  list.addItem(ZQValue(u("raw"), ZQUNIT_NONE));
  list.addItem(ZQValue(12.0f, ZQUNIT_PT));
  EXPECT_EQ(s8(list.toString()), "\"Times New Roman\" serif url(\"a.png\") raw 12pt");
}

TEST(ZQValue, ToStringOfCompounds) {
  ZQValue c;
  c.setNamedItem(ZQName(ZQN_length), ZQValue(10.0f, ZQUNIT_PT));
  c.setNamedItem(ZQName(ZQN_minimum), ZQValue());
  c.setNamedItem(ZQName(), ZQValue(ZQN_auto));
  c.setNamedItem(ZQName(ZQN_optimum), ZQValue(3));
  EXPECT_EQ(s8(c.toString()), "{length: 10pt; .: auto; optimum: 3}");
  ZQValue empty(new ZQNamedValueMap());
  EXPECT_EQ(s8(empty.toString()), "{}");
  ZQValue onlyNull;
  onlyNull.setNamedItem(ZQName(ZQN_length), ZQValue(1));
  onlyNull.getNamedValueMap()->setNamedItem(ZQName(ZQN_length), ZQValue());
  EXPECT_EQ(s8(onlyNull.toString()), "{}");
}

TEST(ZQValue, QuotedAndUrlForms) {
  ZQValue lit(u("a b"), ZQUNIT_LITERAL);
  ZQValue uri(u("x\".png"), ZQUNIT_URI);
  ZQValue plain(u("plain"), ZQUNIT_NONE);
  const auto dq = static_cast<ZQUtil::QuoteMode>(1);
  const auto sq = static_cast<ZQUtil::QuoteMode>(2);
  EXPECT_EQ(s8(lit.toQuotedString(sq)), "'a b'");
  EXPECT_EQ(s8(plain.toQuotedString(sq)), "plain");
  EXPECT_EQ(s8(ZQValue(3).toQuotedString(dq)), "3");
  EXPECT_EQ(s8(plain.toUrlString(dq)), "\"plain\"");
  EXPECT_EQ(s8(ZQValue(u("a.png"), ZQUNIT_URI).toUrlString(dq)), "url(\"a.png\")");
  EXPECT_EQ(s8(ZQValue(u("a.png"), ZQUNIT_URI).toUrlString(sq)), "url('a.png')");
  EXPECT_EQ(s8(lit.toValueText()), "\"a b\"");
  EXPECT_EQ(s8(uri.toValueText()), "url(\"x%22.png\")");
  EXPECT_EQ(s8(plain.toValueText()), "plain");
  EXPECT_EQ(s8(ZQValue(2.0f, ZQUNIT_EM).toValueText()), "2em");
  EXPECT_EQ(s8(uri.toCssText()), "url(\"x%22.png\")");
  EXPECT_EQ(s8(lit.toCssText()), "\"a b\"");
  // The modes differ where a quote must be escaped: doubled (7) against a CSS escape (43).
  ZQValue both(u("it's \"x\""), ZQUNIT_LITERAL);
  EXPECT_EQ(s8(both.toValueText()), "\"it's \"\"x\"\"\"");
  EXPECT_EQ(s8(both.toCssText()), "\"it's \\22x\\22\"");
}

TEST(ZQValue, EqualityAcrossUnits) {
  EXPECT_TRUE(ZQValue(72.0f, ZQUNIT_PT) == ZQValue(1.0f, ZQUNIT_IN));
  EXPECT_TRUE(ZQValue(1) == ZQValue(1.0f, ZQUNIT_NUMBER));
  EXPECT_FALSE(ZQValue(1) == ZQValue(1.0f, ZQUNIT_PT));
  EXPECT_TRUE(ZQValue(1.0f, ZQUNIT_S) == ZQValue(1000.0f, ZQUNIT_MS));
  EXPECT_TRUE(intIn(1, ZQUNIT_S) == intIn(1000, ZQUNIT_MS));
  EXPECT_TRUE(ZQValue(180.0f, ZQUNIT_DEG) == ZQValue(200.0f, ZQUNIT_GRAD));
  EXPECT_TRUE(ZQValue(96.0f, ZQUNIT_DPI) == ZQValue(96));
  EXPECT_FALSE(ZQValue(50.0f, ZQUNIT_PERCENT) == ZQValue(0.5f, ZQUNIT_NUMBER));
  EXPECT_TRUE(ZQValue(2) != ZQValue(3));
  EXPECT_FALSE(ZQValue(nan(), ZQUNIT_PT) == ZQValue(nan(), ZQUNIT_PT));
}

TEST(ZQValue, EqualityOfOtherKinds) {
  EXPECT_TRUE(ZQValue() == ZQValue());
  EXPECT_TRUE(ZQValue(ZQN_red) == ZQValue(u("red"), ZQUNIT_NONE));
  EXPECT_TRUE(ZQValue(u("red"), ZQUNIT_LITERAL) == ZQValue(ZQN_red));
  EXPECT_FALSE(ZQValue(ZQN_red) == ZQValue(u("Red"), ZQUNIT_NONE));
  EXPECT_TRUE(ZQValue(u("a"), ZQUNIT_NONE) == ZQValue(u("a"), ZQUNIT_NONE));
  EXPECT_FALSE(ZQValue(u("a"), ZQUNIT_NONE) == ZQValue(u("a"), ZQUNIT_LITERAL));
  EXPECT_FALSE(ZQValue(ZQN_red) == ZQValue(ZQN_blue));
  EXPECT_FALSE(ZQValue() == ZQValue(0));
  EXPECT_FALSE(ZQValue(u("1"), ZQUNIT_NONE) == ZQValue(1));
  ZQPtr<ZQValueArray> a1(new ZQValueArray()), a2(new ZQValueArray());
  EXPECT_TRUE(ZQValue(a1.get()) == ZQValue(a1.get()));
  EXPECT_FALSE(ZQValue(a1.get()) == ZQValue(a2.get()));
  ZQPtr<ZQNamedValueMap> m1(new ZQNamedValueMap()), m2(new ZQNamedValueMap());
  EXPECT_TRUE(ZQValue(m1.get()) == ZQValue(m1.get()));
  EXPECT_FALSE(ZQValue(m1.get()) == ZQValue(m2.get()));
}

TEST(ZQValue, Order) {
  EXPECT_FALSE(ZQValue() < ZQValue());
  EXPECT_TRUE(ZQValue(1) < ZQValue(2));
  EXPECT_TRUE(ZQValue(-1) < ZQValue(0));
  EXPECT_TRUE(ZQValue(1.0f, ZQUNIT_PT) < ZQValue(2.0f, ZQUNIT_PT));
  EXPECT_TRUE(ZQValue(ZQN_ANSI_X3_4) < ZQValue(ZQN_red));  // names by number
  EXPECT_TRUE(ZQValue(u("a"), ZQUNIT_NONE) < ZQValue(u("b"), ZQUNIT_NONE));
  // Numbers of one kind compare after normalization.
  EXPECT_TRUE(ZQValue(1.0f, ZQUNIT_CM) < ZQValue(1.0f, ZQUNIT_IN));
  EXPECT_TRUE(intIn(1, ZQUNIT_IN) > ZQValue(71.0f, ZQUNIT_PT));
  // Numbers of different kinds: the lower canonical unit is the lesser.
  EXPECT_TRUE(ZQValue(100.0f, ZQUNIT_NUMBER) < ZQValue(1.0f, ZQUNIT_PT));
  EXPECT_TRUE(ZQValue(100.0f, ZQUNIT_IN) < ZQValue(1.0f, ZQUNIT_GRAD));  // pt 9 < deg 13
  // A name against a string compares text.
  EXPECT_TRUE(ZQValue(ZQN_blue) < ZQValue(u("red"), ZQUNIT_NONE));
  EXPECT_TRUE(ZQValue(u("blue"), ZQUNIT_NONE) < ZQValue(ZQN_red));
  // Otherwise the type, then the unit.
  EXPECT_TRUE(ZQValue() < ZQValue(0));
  EXPECT_TRUE(ZQValue(5) < ZQValue(ZQN_EMPTY));
  EXPECT_TRUE(ZQValue(u("z"), ZQUNIT_NONE) < ZQValue(u("a"), ZQUNIT_LITERAL));
  EXPECT_TRUE(ZQValue(1) <= ZQValue(1.0f, ZQUNIT_NUMBER));
  EXPECT_TRUE(ZQValue(1) >= ZQValue(1.0f, ZQUNIT_NUMBER));
  EXPECT_FALSE(ZQValue(1) > ZQValue(1.0f, ZQUNIT_NUMBER));
  EXPECT_TRUE(ZQValue(2) > ZQValue(1));
}

TEST(ZQValue, CopiesShareArraysAndCloneDoesNot) {
  ZQValue list;
  list.addItem(ZQValue(1));
  list.addItem(ZQValue(2));
  ZQValue copy(list);
  copy.addItem(ZQValue(3));
  EXPECT_EQ(list.getArrayCount(), 3);
  ZQValue cloned = list.clone();
  cloned.addItem(ZQValue(4));
  EXPECT_EQ(list.getArrayCount(), 3);
  EXPECT_EQ(cloned.getArrayCount(), 4);
  EXPECT_EQ(cloned.getValueArray()->getRefCount(), 1);

  ZQValue rec;
  rec.setNamedItem(ZQName(ZQN_width), ZQValue(1));
  ZQValue recCopy(rec);
  ZQValue recClone = rec.clone();
  recCopy.setNamedItem(ZQName(ZQN_height), ZQValue(2));
  EXPECT_EQ(rec.getNamedValueMap()->getCount(), 2);
  EXPECT_EQ(recClone.getNamedValueMap()->getCount(), 1);
  EXPECT_EQ(recClone.getNamedValueMap()->getRefCount(), 1);

  // A clone shares nothing at the first level only: inner arrays stay shared.
  ZQValue inner;
  inner.addItem(ZQValue(1));
  inner.addItem(ZQValue(2));
  ZQValue outer(new ZQValueArray());
  outer.addItem(inner);
  outer.addItem(ZQValue(3));
  ZQValue outerClone = outer.clone();
  EXPECT_EQ(outerClone.getNthItem(0).getValueArray(), inner.getValueArray());

  ZQPtr<ZQValueArray> shared(new ZQValueArray());
  ZQValue obj(static_cast<ZQRCObject*>(shared.get()));
  EXPECT_EQ(obj.clone().getRCObject(), shared.get());
  ZQValue str(u("s"), ZQUNIT_NONE);
  EXPECT_EQ(str.clone().getStringValue(), u("s"));
}

TEST(ZQValue, NameFromValue) {
  EXPECT_EQ(ZQName(ZQValue(ZQN_red)), ZQN_red);
  EXPECT_EQ(ZQName(ZQValue(u("red"), ZQUNIT_NONE)), ZQN_red);
  EXPECT_EQ(ZQName(ZQValue(1.5f, ZQUNIT_PT)), ZQName(u("1.5pt")));
  EXPECT_TRUE(ZQName(ZQValue()).isEmpty());
  // A name value gives its stored number as it is, without asking the table: it survives
  // the table's cleanup although its string does not.
  ZQNameTable::cleanup();
  ZQName runtime(u("zq-value-test-runtime-name"));
  ZQValue held(runtime);
  ZQNameTable::cleanup();
  EXPECT_EQ(static_cast<int>(ZQName(held)), static_cast<int>(runtime));
  EXPECT_TRUE(held.toString().isEmpty());
  ZQNameTable::cleanup();
}

}  // namespace
