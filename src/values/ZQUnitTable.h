// The classes of units and the factors of the absolute lengths, shared by lengths and values.
#pragma once

#include <bit>
#include <cstdint>

#include "common/ZQValue.h"

namespace ZQCommonNS::units {

/// The NaN that the library writes.
inline constexpr float kNaN = std::bit_cast<float>(0x7FC00000u);

/// Bits of the float factor that turns a number of `unit` into points; 0 for a unit that is
/// not an absolute length. Points have the factor 1 but are never multiplied.
constexpr uint32_t absoluteFactorBits(int unit) {
  switch (unit) {
    case ZQUNIT_CM:
      return 0x41E2C58Bu;  // 28.346457
    case ZQUNIT_MM:
      return 0x40356AD6u;  // 2.8346457
    case ZQUNIT_IN:
      return 0x42900000u;  // 72
    case ZQUNIT_PT:
      return 0x3F800000u;  // 1
    case ZQUNIT_PC:
      return 0x41400000u;  // 12
    case ZQUNIT_JPT:
      return 0x3F7F000Cu;  // 0.99609447
    case ZQUNIT_Q:
      return 0x3F356AD6u;  // 0.70866144
    case ZQUNIT_DD:
      return 0x3F88AC5Cu;  // 1.06776
    case ZQUNIT_CC:
      return 0x414D028Au;  // 12.81312
    case ZQUNIT_TWIP:
      return 0x3D4CCCCDu;  // 0.05
    case ZQUNIT_EMU:
      return 0x38A5214Du;  // 7.874016E-5
    case ZQUNIT_PI:
      return 0x41400000u;  // 12
    default:
      return 0;
  }
}

constexpr bool isAbsoluteLength(int unit) { return absoluteFactorBits(unit) != 0; }

constexpr float absoluteFactor(int unit) { return std::bit_cast<float>(absoluteFactorBits(unit)); }

constexpr bool isRelativeLength(int unit) {
  switch (unit) {
    case ZQUNIT_EM:
    case ZQUNIT_EX:
    case ZQUNIT_PX:
    case ZQUNIT_DCEM:
    case ZQUNIT_CAP:
    case ZQUNIT_IC:
      return true;
    default:
      return unit >= ZQUNIT_REM && unit <= ZQUNIT_LINES;
  }
}

/// Truncation toward zero that gives the smallest integer for a NaN or a number out of range,
/// as the x86 conversion does; done by hand, since C++ leaves those cases undefined.
constexpr int32_t truncToInt(double v) {
  if (v > -2147483649.0 && v < 2147483648.0) return static_cast<int32_t>(v);
  return INT32_MIN;
}

}  // namespace ZQCommonNS::units
