// Small value types that know a state of "not set": lengths in points, integers, booleans,
// and points over them.
#pragma once

#include <bit>
#include <cstdint>

#include "common/ZQExport.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

class ZQValue;

/// A length in points (1/72 inch); a NaN means auto, a magnitude above 283464.56 invalid.
class ZQCOMMON_API ZQLength {
 public:
  /// The bit pattern of the NaN that the library writes for auto.
  static constexpr uint32_t AUTO_BITS = 0x7FC00000u;
  /// Largest magnitude that still counts as a valid length: 100 metres in points.
  static constexpr float INVALID_BOUND = 283464.56f;

  /// Zero points, not auto.
  constexpr ZQLength() noexcept : m_value(0.0f) {}
  constexpr ZQLength(float points) noexcept : m_value(points) {}
  constexpr ZQLength(double points) noexcept : m_value(static_cast<float>(points)) {}
  constexpr ZQLength(int points) noexcept : m_value(static_cast<float>(points)) {}
  constexpr ZQLength(unsigned int points) noexcept : m_value(static_cast<float>(points)) {}
  /// The value's getLengthValue: a length of an absolute unit, otherwise auto.
  ZQLength(const ZQValue& value);
  /// `value` in `unit` converted to points; a unit that is not absolute gives auto.
  ZQLength(float value, ZQUnitType unit);
  constexpr ZQLength(const ZQLength&) noexcept = default;
  constexpr ZQLength& operator=(const ZQLength&) noexcept = default;

  /// The auto length, a NaN with the bits AUTO_BITS.
  static constexpr ZQLength getAuto() { return ZQLength(std::bit_cast<float>(AUTO_BITS)); }

  /// The number of points.
  constexpr operator float() const { return m_value; }
  /// The length in `unit`; NaN for a unit that is not absolute.
  float getRealValue(ZQUnitType unit) const;
  /// getRealValue(unit) + 0.5, truncated toward zero; a NaN gives the smallest integer.
  int getIntegerValue(ZQUnitType unit) const;
  /// Pixels at `dpi`, rounded half away from zero; a NaN gives the smallest integer.
  int getPixelCount(float dpi) const;

  constexpr bool isZero() const { return m_value == 0.0f; }
  constexpr bool isPositive() const { return m_value > 0.0f; }
  constexpr bool isNegative() const { return m_value < 0.0f; }
  constexpr bool isAlmostZero(float tolerance) const {
    return -tolerance <= m_value && m_value <= tolerance;
  }
  constexpr bool isAlmostZeroOrPositive(float tolerance) const { return m_value >= -tolerance; }
  constexpr bool isAlmostZeroOrNegative(float tolerance) const { return m_value <= tolerance; }
  constexpr bool isAlmostEqual(ZQLength other, float tolerance) const {
    float d = m_value - other.m_value;
    return -tolerance <= d && d <= tolerance;
  }
  /// True for a NaN.
  constexpr bool isAuto() const { return m_value != m_value; }
  /// True beyond INVALID_BOUND on either side; a NaN is not invalid.
  constexpr bool isInvalid() const { return m_value < -INVALID_BOUND || m_value > INVALID_BOUND; }
  /// Exact equality in which two autos are equal.
  constexpr bool eq(ZQLength other) const {
    if (isAuto() || other.isAuto()) return isAuto() && other.isAuto();
    return m_value == other.m_value;
  }

  // An auto length stays auto; the right side is not tested.
  constexpr ZQLength& operator+=(ZQLength other) { return *this += other.m_value; }
  constexpr ZQLength& operator-=(ZQLength other) { return *this -= other.m_value; }
  constexpr ZQLength& operator+=(float v) {
    if (!isAuto()) m_value += v;
    return *this;
  }
  constexpr ZQLength& operator-=(float v) {
    if (!isAuto()) m_value -= v;
    return *this;
  }
  constexpr ZQLength& operator*=(float v) {
    if (!isAuto()) m_value *= v;
    return *this;
  }
  constexpr ZQLength& operator/=(float v) {
    if (!isAuto()) m_value /= v;
    return *this;
  }

  constexpr ZQLength operator-() const { return ZQLength(-m_value); }

  // The right side is always a number: `length * 2` scales, `length + 1` adds one point.
  constexpr ZQLength operator+(float v) const { return ZQLength(m_value + v); }
  constexpr ZQLength operator-(float v) const { return ZQLength(m_value - v); }
  constexpr ZQLength operator*(float v) const { return ZQLength(m_value * v); }
  constexpr ZQLength operator/(float v) const { return ZQLength(m_value / v); }
  constexpr ZQLength operator+(double v) const { return *this + static_cast<float>(v); }
  constexpr ZQLength operator-(double v) const { return *this - static_cast<float>(v); }
  constexpr ZQLength operator*(double v) const { return *this * static_cast<float>(v); }
  constexpr ZQLength operator/(double v) const { return *this / static_cast<float>(v); }
  constexpr ZQLength operator*(int v) const { return *this * static_cast<float>(v); }
  constexpr ZQLength operator/(int v) const { return *this / static_cast<float>(v); }
  constexpr ZQLength operator+(long v) const { return *this + static_cast<float>(v); }
  constexpr ZQLength operator-(long v) const { return *this - static_cast<float>(v); }
  // Without these, `length + 1` would be ambiguous between the float and long forms.
  constexpr ZQLength operator+(int v) const { return *this + static_cast<float>(v); }
  constexpr ZQLength operator-(int v) const { return *this - static_cast<float>(v); }

 private:
  float m_value;
};

/// A 32-bit integer whose smallest value means undefined; its arithmetic ignores that state.
class ZQCOMMON_API ZQInt {
 public:
  static constexpr int32_t UNDEF = INT32_MIN;

  constexpr ZQInt() noexcept : m_value(UNDEF) {}
  constexpr ZQInt(int value) noexcept : m_value(value) {}
  constexpr ZQInt(const ZQInt&) noexcept = default;
  constexpr ZQInt& operator=(const ZQInt&) noexcept = default;
  constexpr ZQInt& operator=(int value) {
    m_value = value;
    return *this;
  }
  constexpr operator int() const { return m_value; }

  constexpr bool isUndef() const { return m_value == UNDEF; }
  constexpr void setUndef() { m_value = UNDEF; }

  // Plain 32-bit arithmetic that wraps; division by 0 is the processor's fault.
  constexpr ZQInt& operator+=(int v) {
    m_value = wrap(static_cast<uint32_t>(m_value) + static_cast<uint32_t>(v));
    return *this;
  }
  constexpr ZQInt& operator-=(int v) {
    m_value = wrap(static_cast<uint32_t>(m_value) - static_cast<uint32_t>(v));
    return *this;
  }
  constexpr ZQInt& operator*=(int v) {
    m_value = wrap(static_cast<uint32_t>(m_value) * static_cast<uint32_t>(v));
    return *this;
  }
  constexpr ZQInt& operator/=(int v) {
    m_value /= v;
    return *this;
  }
  constexpr ZQInt operator+() const { return *this; }
  constexpr ZQInt operator-() const { return ZQInt(wrap(0u - static_cast<uint32_t>(m_value))); }
  constexpr ZQInt operator+(int v) const { return ZQInt(*this) += v; }
  constexpr ZQInt operator-(int v) const { return ZQInt(*this) -= v; }
  constexpr ZQInt operator*(int v) const { return ZQInt(*this) *= v; }
  constexpr ZQInt operator/(int v) const { return ZQInt(*this) /= v; }
  constexpr ZQInt& operator++() { return *this += 1; }
  constexpr ZQInt& operator--() { return *this -= 1; }
  constexpr ZQInt operator++(int) {
    ZQInt old(*this);
    *this += 1;
    return old;
  }
  constexpr ZQInt operator--(int) {
    ZQInt old(*this);
    *this -= 1;
    return old;
  }

 private:
  static constexpr int32_t wrap(uint32_t v) { return static_cast<int32_t>(v); }
  int32_t m_value;
};

/// A boolean with an undefined state: a value byte, then the undefined flag.
class ZQCOMMON_API ZQBool {
 public:
  /// Undefined, reading false.
  constexpr ZQBool() noexcept : m_value(false), m_undef(true) {}
  constexpr ZQBool(bool value) noexcept : m_value(value), m_undef(false) {}
  constexpr ZQBool(const ZQBool&) noexcept = default;
  constexpr ZQBool& operator=(const ZQBool&) noexcept = default;
  constexpr ZQBool& operator=(bool value) {
    m_value = value;
    m_undef = false;
    return *this;
  }

  constexpr bool isUndef() const { return m_undef; }
  constexpr void setUndef() {
    m_value = false;
    m_undef = true;
  }
  /// The value byte alone: an undefined ZQBool reads false.
  constexpr operator bool() const { return m_value; }

  /// Two undefined are equal; an undefined and a defined are not.
  constexpr bool operator==(const ZQBool& other) const {
    if (m_undef || other.m_undef) return m_undef && other.m_undef;
    return m_value == other.m_value;
  }
  constexpr bool operator!=(const ZQBool& other) const { return !(*this == other); }
  /// True when defined and equal: an undefined ZQBool equals neither true nor false.
  constexpr bool operator==(bool value) const { return !m_undef && m_value == value; }
  constexpr bool operator!=(bool value) const { return !(*this == value); }

 private:
  bool m_value;
  bool m_undef;
};

/// A pair of coordinates, x then y, over float, double or ZQLength.
template <class T>
struct ZQPointT {
  T x{};
  T y{};

  constexpr ZQPointT() = default;
  constexpr ZQPointT(T px, T py) : x(px), y(py) {}
  constexpr bool operator==(const ZQPointT& other) const { return x == other.x && y == other.y; }
  constexpr bool operator!=(const ZQPointT& other) const { return !(*this == other); }
};

static_assert(sizeof(ZQLength) == 4, "a length is one float");
static_assert(sizeof(ZQInt) == 4, "a ZQInt is one 32-bit integer");
static_assert(sizeof(ZQBool) == 2, "a ZQBool is two bytes");

}  // namespace ZQCommonNS
