#include <gtest/gtest.h>

#include <bit>
#include <climits>
#include <cmath>
#include <cstdint>
#include <limits>

#include "common/ZQLength.h"

using namespace ZQCommonNS;

namespace {

uint32_t bits(float f) { return std::bit_cast<uint32_t>(f); }
float nan() { return std::numeric_limits<float>::quiet_NaN(); }

struct FactorRow {
  ZQUnitType unit;
  uint32_t bits;
  double decimal;
};

const FactorRow kFactors[] = {
    {ZQUNIT_CM, 0x41E2C58Bu, 28.346457},   {ZQUNIT_MM, 0x40356AD6u, 2.8346457},
    {ZQUNIT_IN, 0x42900000u, 72},          {ZQUNIT_PC, 0x41400000u, 12},
    {ZQUNIT_JPT, 0x3F7F000Cu, 0.99609447}, {ZQUNIT_Q, 0x3F356AD6u, 0.70866144},
    {ZQUNIT_DD, 0x3F88AC5Cu, 1.06776},     {ZQUNIT_CC, 0x414D028Au, 12.81312},
    {ZQUNIT_TWIP, 0x3D4CCCCDu, 0.05},      {ZQUNIT_EMU, 0x38A5214Du, 7.874016E-5},
    {ZQUNIT_PI, 0x41400000u, 12},
};

TEST(ZQLength, FactorTableHoldsExactBits) {
  for (const auto& row : kFactors) {
    SCOPED_TRACE(static_cast<int>(row.unit));
    ZQLength one(1.0f, row.unit);
    EXPECT_EQ(bits(one), row.bits);
    EXPECT_NEAR(static_cast<float>(one), row.decimal, row.decimal * 1e-6);
    // Reading back divides by the same factor.
    EXPECT_EQ(one.getRealValue(row.unit), 1.0f);
    // 3 units are 3 times the factor in float arithmetic.
    EXPECT_EQ(bits(ZQLength(3.0f, row.unit)), bits(3.0f * std::bit_cast<float>(row.bits)));
  }
}

TEST(ZQLength, PointsAreNotMultiplied) {
  ZQLength l(123.456f, ZQUNIT_PT);
  EXPECT_EQ(bits(l), bits(123.456f));
  EXPECT_EQ(bits(l.getRealValue(ZQUNIT_PT)), bits(123.456f));
  // A NaN given in points keeps its own bits.
  float odd = std::bit_cast<float>(0x7FC12345u);
  EXPECT_EQ(bits(ZQLength(odd, ZQUNIT_PT)), 0x7FC12345u);
}

TEST(ZQLength, InchIs72PointsAnd254Centimetres) {
  ZQLength inch(1.0f, ZQUNIT_IN);
  EXPECT_EQ(static_cast<float>(inch), 72.0f);
  EXPECT_FLOAT_EQ(inch.getRealValue(ZQUNIT_CM), 2.54f);
  EXPECT_FLOAT_EQ(inch.getRealValue(ZQUNIT_MM), 25.4f);
  EXPECT_FLOAT_EQ(inch.getRealValue(ZQUNIT_PC), 6.0f);
}

TEST(ZQLength, RelativeAndOtherUnitsGiveAuto) {
  const ZQUnitType notAbsolute[] = {
      ZQUNIT_NONE, ZQUNIT_NUMBER, ZQUNIT_PERCENT, ZQUNIT_EM,      ZQUNIT_EX,      ZQUNIT_PX,
      ZQUNIT_DEG,  ZQUNIT_RAD,    ZQUNIT_GRAD,    ZQUNIT_MS,      ZQUNIT_S,       ZQUNIT_HZ,
      ZQUNIT_KHZ,  ZQUNIT_CHAR,   ZQUNIT_COLOR,   ZQUNIT_DPI,     ZQUNIT_PT2,     ZQUNIT_PT3,
      ZQUNIT_REM,  ZQUNIT_VW,     ZQUNIT_VH,      ZQUNIT_VMIN,    ZQUNIT_VMAX,    ZQUNIT_PVW,
      ZQUNIT_PVH,  ZQUNIT_PVMIN,  ZQUNIT_PVMAX,   ZQUNIT_CH,      ZQUNIT_WCH,     ZQUNIT_FR,
      ZQUNIT_GR,   ZQUNIT_LH,     ZQUNIT_RLH,     ZQUNIT_LINES,   ZQUNIT_DCEM,    ZQUNIT_CAP,
      ZQUNIT_IC,   ZQUNIT_FORMAT, ZQUNIT_LOCAL,   ZQUnitType(25), ZQUnitType(48),
  };
  for (ZQUnitType unit : notAbsolute) {
    SCOPED_TRACE(static_cast<int>(unit));
    ZQLength l(5.0f, unit);
    EXPECT_TRUE(l.isAuto());
    EXPECT_EQ(bits(l), ZQLength::AUTO_BITS);
    EXPECT_TRUE(std::isnan(ZQLength(72.0f).getRealValue(unit)));
  }
}

TEST(ZQLength, PixelsAreRelativeSoRealValueIsNaN) {
  EXPECT_TRUE(std::isnan(ZQLength(72.0f).getRealValue(ZQUNIT_PX)));
  EXPECT_EQ(ZQLength(72.0f).getIntegerValue(ZQUNIT_PX), INT_MIN);
}

TEST(ZQLength, DefaultIsZeroAndNotAuto) {
  ZQLength l;
  EXPECT_FALSE(l.isAuto());
  EXPECT_TRUE(l.isZero());
  EXPECT_FALSE(l.isPositive());
  EXPECT_FALSE(l.isNegative());
  EXPECT_EQ(bits(l), 0u);
}

TEST(ZQLength, AutoAnswersFalseToEveryComparison) {
  ZQLength a(nan());
  EXPECT_TRUE(a.isAuto());
  EXPECT_FALSE(a.isInvalid());
  EXPECT_FALSE(a.isZero());
  EXPECT_FALSE(a.isPositive());
  EXPECT_FALSE(a.isNegative());
  EXPECT_FALSE(a.isAlmostZero(1.0f));
  EXPECT_FALSE(a.isAlmostZeroOrPositive(1.0f));
  EXPECT_FALSE(a.isAlmostZeroOrNegative(1.0f));
  EXPECT_FALSE(a.isAlmostEqual(ZQLength(0.0f), 1.0f));
  EXPECT_TRUE(a.eq(ZQLength(nan())));
  EXPECT_TRUE(a.eq(ZQLength::getAuto()));
  EXPECT_FALSE(a.eq(ZQLength(0.0f)));
  EXPECT_FALSE(ZQLength(0.0f).eq(a));
  a += 1.0f;
  EXPECT_TRUE(a.isAuto());
  a -= ZQLength(2.0f);
  a *= 3.0f;
  a /= 4.0f;
  EXPECT_TRUE(a.isAuto());
}

TEST(ZQLength, GetAutoHasTheLibraryBits) {
  EXPECT_EQ(bits(ZQLength::getAuto()), 0x7FC00000u);
  EXPECT_TRUE(ZQLength::getAuto().isAuto());
}

TEST(ZQLength, EqComparesNumbersExactly) {
  EXPECT_TRUE(ZQLength(1.5f).eq(ZQLength(1.5f)));
  EXPECT_FALSE(ZQLength(1.5f).eq(ZQLength(1.5000001f)));
  EXPECT_TRUE(ZQLength(0.0f).eq(ZQLength(-0.0f)));
}

TEST(ZQLength, InvalidBound) {
  EXPECT_FALSE(ZQLength(283464.5f).isInvalid());
  EXPECT_TRUE(ZQLength(283465.0f).isInvalid());
  EXPECT_FALSE(ZQLength(-283464.5f).isInvalid());
  EXPECT_TRUE(ZQLength(-283465.0f).isInvalid());
  EXPECT_TRUE(ZQLength(std::numeric_limits<float>::infinity()).isInvalid());
  EXPECT_TRUE(ZQLength(-std::numeric_limits<float>::infinity()).isInvalid());
  // The bound is the float nearest 283464.56: valid itself, invalid one step above.
  EXPECT_EQ(bits(ZQLength::INVALID_BOUND), bits(283464.5625f));
  EXPECT_FALSE(ZQLength(283464.5625f).isInvalid());
  EXPECT_FALSE(ZQLength(-283464.5625f).isInvalid());
  EXPECT_TRUE(ZQLength(std::nextafter(283464.5625f, 1e9f)).isInvalid());
  EXPECT_TRUE(ZQLength(std::nextafter(-283464.5625f, -1e9f)).isInvalid());
  // Ten thousand centimetres is the bound itself.
  EXPECT_FALSE(ZQLength(10000.0f, ZQUNIT_CM).isInvalid());
  EXPECT_TRUE(ZQLength(10001.0f, ZQUNIT_CM).isInvalid());
}

TEST(ZQLength, PixelCountRoundsHalfAwayFromZero) {
  EXPECT_EQ(ZQLength(72.0f).getPixelCount(96.0f), 96);
  EXPECT_EQ(ZQLength(-0.75f).getPixelCount(96.0f), -1);
  EXPECT_EQ(ZQLength(0.375f).getPixelCount(96.0f), 1);
  EXPECT_EQ(ZQLength(-0.375f).getPixelCount(96.0f), -1);
  EXPECT_EQ(ZQLength(-1.125f).getPixelCount(96.0f), -2);  // v = -1.5
  EXPECT_EQ(ZQLength(0.3f).getPixelCount(96.0f), 0);      // v = 0.4
  EXPECT_EQ(ZQLength(nan()).getPixelCount(96.0f), INT_MIN);
}

TEST(ZQLength, IntegerValueTruncatesAfterAddingHalf) {
  EXPECT_EQ(ZQLength(2.5f).getIntegerValue(ZQUNIT_PT), 3);
  EXPECT_EQ(ZQLength(2.4f).getIntegerValue(ZQUNIT_PT), 2);
  EXPECT_EQ(ZQLength(-1.5f).getIntegerValue(ZQUNIT_PT), -1);
  EXPECT_EQ(ZQLength(-0.2f).getIntegerValue(ZQUNIT_PT), 0);
  EXPECT_EQ(ZQLength(-2.6f).getIntegerValue(ZQUNIT_PT), -2);
  EXPECT_EQ(ZQLength(72.0f).getIntegerValue(ZQUNIT_IN), 1);
  EXPECT_EQ(ZQLength(nan()).getIntegerValue(ZQUNIT_PT), INT_MIN);
  EXPECT_EQ(ZQLength(1e12f).getIntegerValue(ZQUNIT_PT), INT_MIN);
}

TEST(ZQLength, AlmostTestsUseTheCallersTolerance) {
  EXPECT_TRUE(ZQLength(0.5f).isAlmostZero(0.5f));
  EXPECT_FALSE(ZQLength(0.5f).isAlmostZero(0.25f));
  EXPECT_TRUE(ZQLength(-0.5f).isAlmostZero(0.5f));
  EXPECT_TRUE(ZQLength(-0.1f).isAlmostZeroOrPositive(0.1f));
  EXPECT_FALSE(ZQLength(-0.2f).isAlmostZeroOrPositive(0.1f));
  EXPECT_TRUE(ZQLength(0.1f).isAlmostZeroOrNegative(0.1f));
  EXPECT_FALSE(ZQLength(0.2f).isAlmostZeroOrNegative(0.1f));
  EXPECT_TRUE(ZQLength(10.0f).isAlmostEqual(ZQLength(10.25f), 0.25f));
  EXPECT_FALSE(ZQLength(10.0f).isAlmostEqual(ZQLength(10.5f), 0.25f));
  EXPECT_TRUE(ZQLength(10.5f).isAlmostEqual(ZQLength(10.25f), 0.25f));
}

TEST(ZQLength, ConstructorsFromNumbers) {
  EXPECT_EQ(static_cast<float>(ZQLength(2.5)), 2.5f);
  EXPECT_EQ(static_cast<float>(ZQLength(-3)), -3.0f);
  EXPECT_EQ(static_cast<float>(ZQLength(7u)), 7.0f);
}

TEST(ZQLength, ArithmeticOnPoints) {
  ZQLength l(10.0f);
  l += ZQLength(2.0f);
  EXPECT_EQ(static_cast<float>(l), 12.0f);
  l -= 1.0f;
  EXPECT_EQ(static_cast<float>(l), 11.0f);
  l *= 2.0f;
  EXPECT_EQ(static_cast<float>(l), 22.0f);
  l /= 4.0f;
  EXPECT_EQ(static_cast<float>(l), 5.5f);
  EXPECT_EQ(static_cast<float>(-l), -5.5f);
  // Adding auto to a number gives auto: the right side is not tested.
  ZQLength m(1.0f);
  m += ZQLength::getAuto();
  EXPECT_TRUE(m.isAuto());
}

TEST(ZQLength, BinaryOperatorsTakeNumbers) {
  ZQLength l(6.0f);
  EXPECT_EQ(static_cast<float>(l * 2), 12.0f);
  EXPECT_EQ(static_cast<float>(l / 4), 1.5f);
  EXPECT_EQ(static_cast<float>(l + 1), 7.0f);
  EXPECT_EQ(static_cast<float>(l - 1), 5.0f);
  EXPECT_EQ(static_cast<float>(l + 1L), 7.0f);
  EXPECT_EQ(static_cast<float>(l - 2L), 4.0f);
  EXPECT_EQ(static_cast<float>(l + 0.5f), 6.5f);
  EXPECT_EQ(static_cast<float>(l - 0.5), 5.5f);
  EXPECT_EQ(static_cast<float>(l * 0.5), 3.0f);
  EXPECT_EQ(static_cast<float>(l / 0.5f), 12.0f);
  // A double is narrowed to float first.
  EXPECT_EQ(bits(ZQLength(0.0f) + 0.1), bits(0.1f));
  EXPECT_TRUE((ZQLength::getAuto() * 2).isAuto());
  ZQLength copy;
  copy = l;
  EXPECT_TRUE(copy.eq(l));
}

TEST(ZQInt, DefaultIsUndefinedAndSmallest) {
  ZQInt i;
  EXPECT_TRUE(i.isUndef());
  EXPECT_EQ(static_cast<int>(i), INT_MIN);
  EXPECT_TRUE(ZQInt(static_cast<int>(0x80000000u)).isUndef());
  ZQInt fromLiteral = static_cast<int>(0x80000000);
  EXPECT_TRUE(fromLiteral.isUndef());
  EXPECT_EQ(static_cast<int>(fromLiteral), INT_MIN);
  EXPECT_FALSE(ZQInt(0).isUndef());
  ZQInt j(5);
  j.setUndef();
  EXPECT_TRUE(j.isUndef());
}

TEST(ZQInt, ArithmeticIgnoresTheUndefinedState) {
  ZQInt i;
  i += 1;
  EXPECT_FALSE(i.isUndef());
  EXPECT_EQ(static_cast<int>(i), INT_MIN + 1);
  ZQInt u;
  EXPECT_EQ(static_cast<int>(u - 1), INT_MAX);  // wraps
  EXPECT_EQ(static_cast<int>(-u), INT_MIN);
}

TEST(ZQInt, OperatorsAndIncrements) {
  ZQInt i(10);
  EXPECT_EQ(static_cast<int>(i + 5), 15);
  EXPECT_EQ(static_cast<int>(i - 5), 5);
  EXPECT_EQ(static_cast<int>(i * 3), 30);
  EXPECT_EQ(static_cast<int>(i / 3), 3);
  EXPECT_EQ(static_cast<int>(-i), -10);
  EXPECT_EQ(static_cast<int>(+i), 10);
  i -= 4;
  i *= 2;
  i /= 3;
  EXPECT_EQ(static_cast<int>(i), 4);
  EXPECT_EQ(static_cast<int>(++i), 5);
  EXPECT_EQ(static_cast<int>(i++), 5);
  EXPECT_EQ(static_cast<int>(i), 6);
  EXPECT_EQ(static_cast<int>(--i), 5);
  EXPECT_EQ(static_cast<int>(i--), 5);
  EXPECT_EQ(static_cast<int>(i), 4);
  i = 9;
  EXPECT_EQ(static_cast<int>(i), 9);
}

TEST(ZQBool, UndefinedStates) {
  EXPECT_TRUE(ZQBool() == ZQBool());
  EXPECT_FALSE(ZQBool() == false);
  EXPECT_FALSE(ZQBool() == true);
  EXPECT_FALSE(ZQBool(true) == ZQBool());
  EXPECT_FALSE(ZQBool() == ZQBool(false));
  EXPECT_TRUE(ZQBool(true) == ZQBool(true));
  EXPECT_FALSE(ZQBool(true) == ZQBool(false));
  EXPECT_TRUE(ZQBool(false) == false);
  EXPECT_TRUE(ZQBool(true) != false);
  EXPECT_TRUE(ZQBool().isUndef());
  EXPECT_FALSE(static_cast<bool>(ZQBool()));
}

TEST(ZQBool, AssignAndSetUndef) {
  ZQBool b;
  b = true;
  EXPECT_FALSE(b.isUndef());
  EXPECT_TRUE(static_cast<bool>(b));
  b.setUndef();
  EXPECT_TRUE(b.isUndef());
  EXPECT_FALSE(static_cast<bool>(b));
  ZQBool c(b);
  EXPECT_TRUE(c == b);
}

TEST(ZQPointT, HoldsXThenY) {
  ZQPointT<float> pf(1.0f, 2.0f);
  EXPECT_EQ(pf.x, 1.0f);
  EXPECT_EQ(pf.y, 2.0f);
  ZQPointT<double> pd;
  EXPECT_EQ(pd.x, 0.0);
  ZQPointT<ZQLength> pl(ZQLength(1.0f, ZQUNIT_IN), ZQLength(2.0f));
  EXPECT_EQ(static_cast<float>(pl.x), 72.0f);
  EXPECT_TRUE(pl == ZQPointT<ZQLength>(ZQLength(72.0f), ZQLength(2.0f)));
  EXPECT_TRUE(pl != ZQPointT<ZQLength>());
  static_assert(sizeof(ZQPointT<float>) == 8);
  static_assert(offsetof(ZQPointT<float>, y) == 4);
}

}  // namespace
