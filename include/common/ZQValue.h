// The variant value of every property and attribute: a type, a unit and a name in one flags
// word beside one payload word.
#pragma once

#include <cstdint>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQObject.h"
#include "common/ZQString.h"
#include "common/ZQUtil.h"

namespace ZQCommonNS {

/// What the payload of a ZQValue holds; the numbers are stored in bits 0 to 2 of its flags.
enum ZQValueType : int {
  ZQVALUE_NULL = 0,
  ZQVALUE_INTEGER = 1,
  ZQVALUE_REAL = 2,
  ZQVALUE_NAME = 3,
  ZQVALUE_STRING = 4,
  ZQVALUE_OBJECT = 5,
  ZQVALUE_ARRAY = 6,
  ZQVALUE_COMPOUND = 7,
};

/// The 6-bit unit of a value; the numbers are stored in bits 3 to 8 of its flags.
enum ZQUnitType : int {
  ZQUNIT_NONE = 0,      ///< no unit; for a string, a string of unknown kind
  ZQUNIT_NUMBER = 1,    ///< plain number
  ZQUNIT_PERCENT = 2,   ///< "%"
  ZQUNIT_EM = 3,        ///< "em"
  ZQUNIT_EX = 4,        ///< "ex"
  ZQUNIT_PX = 5,        ///< "px", relative: it depends on a resolution
  ZQUNIT_CM = 6,        ///< "cm"
  ZQUNIT_MM = 7,        ///< "mm"
  ZQUNIT_IN = 8,        ///< "in"
  ZQUNIT_PT = 9,        ///< "pt", the internal unit of lengths
  ZQUNIT_PC = 10,       ///< "pc"
  ZQUNIT_JPT = 11,      ///< "jpt"
  ZQUNIT_Q = 12,        ///< "q"
  ZQUNIT_DEG = 13,      ///< "deg"
  ZQUNIT_RAD = 14,      ///< "rad"
  ZQUNIT_GRAD = 15,     ///< "grad"
  ZQUNIT_MS = 16,       ///< "ms"
  ZQUNIT_S = 17,        ///< "s"
  ZQUNIT_HZ = 18,       ///< "Hz"
  ZQUNIT_KHZ = 19,      ///< "kHz"
  ZQUNIT_CHAR = 20,     ///< an integer holding a code point
  ZQUNIT_LITERAL = 21,  ///< a quoted (literal) string
  ZQUNIT_URI = 22,      ///< a URI string
  ZQUNIT_NAME = 23,     ///< a name value
  ZQUNIT_COLOR = 24,    ///< a colour
  ZQUNIT_DD = 26,       ///< "dd"
  ZQUNIT_CC = 27,       ///< "cc"
  ZQUNIT_DPI = 28,      ///< "dpi"
  ZQUNIT_TWIP = 29,     ///< "twip"
  ZQUNIT_PT2 = 30,      ///< square points, a product of two lengths; no text
  ZQUNIT_PT3 = 31,      ///< cubic points; no text
  ZQUNIT_REM = 32,      ///< "rem"
  ZQUNIT_VW = 33,       ///< "vw"
  ZQUNIT_VH = 34,       ///< "vh"
  ZQUNIT_VMIN = 35,     ///< "vmin"
  ZQUNIT_VMAX = 36,     ///< "vmax"
  ZQUNIT_PVW = 37,      ///< "pvw"
  ZQUNIT_PVH = 38,      ///< "pvh"
  ZQUNIT_PVMIN = 39,    ///< "pvmin"
  ZQUNIT_PVMAX = 40,    ///< "pvmax"
  ZQUNIT_CH = 41,       ///< "ch"
  ZQUNIT_WCH = 42,      ///< "wch"
  ZQUNIT_FR = 43,       ///< "fr"
  ZQUNIT_GR = 44,       ///< "gr"
  ZQUNIT_LH = 45,       ///< "lh"
  ZQUNIT_RLH = 46,      ///< "rlh"
  ZQUNIT_LINES = 47,    ///< "lines"
  ZQUNIT_EMU = 50,      ///< "emu"
  ZQUNIT_PI = 51,       ///< "pi"
  ZQUNIT_DCEM = 52,     ///< "dcem"
  ZQUNIT_CAP = 53,      ///< "cap"
  ZQUNIT_IC = 54,       ///< "ic"
  ZQUNIT_FORMAT = 62,   ///< a string: the argument of a format() function
  ZQUNIT_LOCAL = 63,    ///< a string: the argument of a local() function
};

class ZQLength;
class ZQColor;
class ZQValueArray;
class ZQNamedValueMap;
class ZQNamedValue;

/// A null value, a number with a unit, a name, a string, an object, a list or a map of named
/// members, in two 64-bit words: the payload and the flags (type, unit and own name).
class ZQCOMMON_API ZQValue {
 public:
  /// The null value; functions that have nothing to return give a copy of it.
  static const ZQValue NULL_VALUE;

  /// The null value: type 0, unit 0, payload 0.
  constexpr ZQValue() noexcept : m_payload{0}, m_flags(0) {}
  /// An integer with unit 1.
  ZQValue(int value) noexcept;
  /// An integer with unit 1; the payload keeps the low 32 bits.
  ZQValue(long value) noexcept;
  /// A real with `unit`.
  ZQValue(float value, ZQUnitType unit) noexcept;
  /// A real in points; an auto length stays a NaN.
  ZQValue(const ZQLength& length) noexcept;
  /// A name, unit 23.
  ZQValue(ZQName name) noexcept;
  ZQValue(ZQNameEnum name) noexcept;
  /// The name "true" or "false", unit 23; there is no boolean type.
  ZQValue(bool value) noexcept;
  /// A string holding its own copy of `text`, with `unit` (0, 21 or 22 as a rule).
  ZQValue(const UnicodeString& text, ZQUnitType unit);
  /// A colour: an integer of unit 24 for plain RGB, a compound of unit 24 otherwise.
  ZQValue(const ZQColor& color);
  /// An object (type 5), array (6) or compound (7) holding one reference; null gives null.
  ZQValue(ZQRCObject* object);
  ZQValue(ZQValueArray* array);
  ZQValue(ZQNamedValueMap* map);
  // A bare text pointer would otherwise become the boolean true.
  ZQValue(const char16_t*) = delete;
  ZQValue(const char*) = delete;
  /// Copies flags and payload: a string is duplicated, an object gets one more reference.
  ZQValue(const ZQValue& other) : m_payload(other.m_payload), m_flags(other.m_flags) {
    if (ownsPayload()) copyOwned(other);
  }
  ZQValue(ZQValue&& other) noexcept : m_payload(other.m_payload), m_flags(other.m_flags) {
    other.m_payload.raw = 0;
    other.m_flags = 0;
  }
  ~ZQValue() {
    if (ownsPayload()) release();
  }

  ZQValue& operator=(const ZQValue& other) {
    if (!ownsPayload() && !other.ownsPayload()) {
      m_payload = other.m_payload;
      m_flags = other.m_flags;
      return *this;
    }
    return assignOwned(other);
  }
  ZQValue& operator=(ZQValue&& other) noexcept;
  /// Assignment of NULL_VALUE.
  void clear();
  /// A copy that shares no array or map at the first level; an object stays shared.
  ZQValue clone() const;

  /// Makes this a real with `unit` without releasing what it held: for values known to be
  /// numbers. The name bits are kept.
  void setRealValue(float value, ZQUnitType unit) noexcept;

  // Flags.
  ZQValueType getValueType() const { return static_cast<ZQValueType>(m_flags & 7u); }
  /// Changes bits 0 to 2 only; the payload must agree with the new type.
  void setValueType(ZQValueType type) { m_flags = (m_flags & ~uint64_t(7)) | (type & 7u); }
  ZQUnitType getUnitType() const { return static_cast<ZQUnitType>((m_flags >> 3) & 63u); }
  /// Changes bits 3 to 8 only.
  void setUnitType(ZQUnitType unit) {
    m_flags = (m_flags & ~uint64_t(63u << 3)) | (uint64_t(unit & 63u) << 3);
  }
  /// Overwrites the whole flags word, the name bits included, with the type and unit 0.
  void setValueUnitType(ZQValueType type) { m_flags = bitfield(type, ZQUNIT_NONE, ZQN_EMPTY); }
  /// Overwrites the whole flags word, the name bits included.
  void setValueUnitType(ZQValueType type, ZQUnitType unit) {
    m_flags = bitfield(type, unit, ZQN_EMPTY);
  }

  // Type tests, from the flags (and for arrays and compounds the payload).
  bool isNull() const { return getValueType() == ZQVALUE_NULL; }
  bool isInteger() const { return getValueType() == ZQVALUE_INTEGER; }
  bool isReal() const { return getValueType() == ZQVALUE_REAL; }
  bool isName() const { return getValueType() == ZQVALUE_NAME; }
  bool isString() const { return getValueType() == ZQVALUE_STRING; }
  /// Integer or real.
  bool isNumeric() const { return isInteger() || isReal(); }
  /// Numeric with unit 1.
  bool isNumber() const { return isNumeric() && getUnitType() == ZQUNIT_NUMBER; }
  /// Numeric with unit 2.
  bool isPercentage() const { return isNumeric() && getUnitType() == ZQUNIT_PERCENT; }
  bool isNumberOrPercentage() const {
    return isNumeric() && (getUnitType() == ZQUNIT_NUMBER || getUnitType() == ZQUNIT_PERCENT);
  }
  /// Numeric with a unit of the absolute lengths (cm, mm, in, pt, pc, jpt, q, dd, cc, twip,
  /// emu, pi).
  bool isAbsoluteLength() const;
  /// Numeric with a unit of the relative lengths (em, ex, px, rem, viewport units...).
  bool isRelativeLength() const;
  /// Numeric in deg, rad or grad.
  bool isAngle() const {
    return isNumeric() && getUnitType() >= ZQUNIT_DEG && getUnitType() <= ZQUNIT_GRAD;
  }
  /// An integer holding a code point (unit 20).
  bool isCharacter() const { return isInteger() && getUnitType() == ZQUNIT_CHAR; }
  /// Numeric and not a character.
  bool isNumericalValue() const { return isNumeric() && getUnitType() != ZQUNIT_CHAR; }
  bool isUnknownString() const { return isString() && getUnitType() == ZQUNIT_NONE; }
  bool isLiteralString() const { return isString() && getUnitType() == ZQUNIT_LITERAL; }
  bool isUriString() const { return isString() && getUnitType() == ZQUNIT_URI; }
  /// Unit 24, and an integer or a compound.
  bool isColor() const {
    return getUnitType() == ZQUNIT_COLOR &&
           (isInteger() || (getValueType() >= ZQVALUE_COMPOUND && m_payload.o != nullptr));
  }
  /// An object, or an array or compound that holds one.
  bool isRCObject() const {
    ZQValueType t = getValueType();
    return t == ZQVALUE_OBJECT ||
           ((t == ZQVALUE_ARRAY || t == ZQVALUE_COMPOUND) && m_payload.o != nullptr);
  }
  bool isArray() const { return getValueType() == ZQVALUE_ARRAY && m_payload.o != nullptr; }
  bool isCompound() const { return getValueType() == ZQVALUE_COMPOUND && m_payload.o != nullptr; }
  /// Null, the empty name, or an empty string.
  bool isEmpty() const;
  /// The name "true" or "yes".
  bool isTrue() const { return isName() && (m_payload.n == ZQN_true || m_payload.n == ZQN_yes); }
  /// The name "false" or "no".
  bool isFalse() const { return isName() && (m_payload.n == ZQN_false || m_payload.n == ZQN_no); }

  // Readers; what cannot be read gives NaN, 0, -1, the empty name or the empty string.
  /// An integer, or a real as floor(x + 0.5) limited to 32 bits; anything else 0.
  int getIntegerValue() const;
  /// The number in `unit`, or NaN when it cannot be converted.
  float getRealValue(ZQUnitType unit) const;
  /// The length in points of an absolute length (or of a compound's length part); else auto.
  ZQLength getLengthValue() const;
  /// The code point of a character, otherwise -1.
  int getCharacterValue() const { return isCharacter() ? m_payload.i : -1; }
  /// The name of a name value, otherwise the empty name.
  ZQName getNameValue() const { return isName() ? ZQName(m_payload.n) : ZQName(); }
  /// The name of the lower-case string of a name value, otherwise the empty name.
  ZQName getLowerNameValue() const;
  /// A name gives itself; anything else its toString interned.
  ZQName toZQName() const;
  ZQName toZWName() const { return toZQName(); }
  /// A name's string or a copy of a string; anything else the empty string.
  UnicodeString getStringValue() const;
  /// The string of a string value where it lies, without a copy; null for any other value.
  const UnicodeString* peekString() const noexcept { return isString() ? m_payload.s : nullptr; }
  operator UnicodeString() const { return toString(); }
  /// The object of an object, array or compound, otherwise null.
  ZQRCObject* getRCObject() const {
    return getValueType() >= ZQVALUE_OBJECT ? m_payload.o : nullptr;
  }
  /// The array of an array value, otherwise null.
  ZQValueArray* getValueArray() const;
  /// The map of a compound value, otherwise null.
  ZQNamedValueMap* getNamedValueMap() const;
  /// The colour of a colour value or colour name; transparent when it holds none.
  ZQColor getColorValue() const;
  /// The colour of a colour value or colour name; when it holds none, the invalid colour if
  /// `strict`, otherwise transparent.
  ZQColor getColorValue(bool strict) const;
  /// 0 for null, the item count of an array, and 1 for any other value.
  int getArrayCount() const;
  /// The text of a unit ("pt", "%", ...); units without text give the empty string.
  static UnicodeString getUnitString(ZQUnitType unit);

  /// Puts the value in the canonical unit of its kind (points, deg, ms, Hz), in place.
  void normalizeUnit();

  // Text forms.
  /// The value as text: strings and names as they are, numbers with their unit, lists
  /// separated by spaces, compounds as "{name: value; ...}".
  UnicodeString toString() const;
  /// toString, quoted with `mode` when the value is a literal string (unit 21).
  UnicodeString toQuotedString(ZQUtil::QuoteMode mode) const;
  /// toString quoted with `mode`, wrapped in "url(...)" when the value is a URI string.
  UnicodeString toUrlString(ZQUtil::QuoteMode mode) const;
  /// Text that parses back: literal strings quoted (mode 7), URI strings as url("...").
  UnicodeString toValueText() const;
  /// As toValueText with the CSS quoting (mode 43).
  UnicodeString toCssText() const;

  // A value as a list or a record.
  /// Makes this value an array (type 6, unit 0, name kept) that holds the old value as its
  /// first item, or no item for a null value; an array stays as it is.
  void makeArray();
  /// Makes this value a compound (type 7, unit 0, name kept) that holds the old value as the
  /// member with the empty name, or no member for a null value; a compound stays as it is.
  void makeCompound();
  /// Appends to an array; a null value becomes `item`; any other value becomes a list of two.
  void addItem(const ZQValue& item);
  /// Item `n` of an array; of any other value, itself for 0; the null value otherwise.
  ZQValue getNthItem(int n) const;
  /// The member of a compound; of any other value, itself for the empty name; else null.
  ZQValue getNamedItem(ZQName name) const;
  /// Sets a member, making this value a compound first if needed.
  void setNamedItem(ZQName name, const ZQValue& value);
  void setNamedItem(const ZQNamedValue& member);
  /// Removes a member of a compound; any other value is left alone.
  void removeNamedItem(ZQName name);

  /// Resolves percentages against `base` (multiplying) and adds up the items of an array.
  ZQValue sumItem(const ZQValue& base) const;
  /// Negates a value, or each item of an array into a new array.
  void invertItem();
  /// Divides a value, or each item of an array into a new array, by `v`.
  void devideEachItem(const ZQValue& v);
  /// Multiplies a value, or each item of an array into a new array, by `v`.
  void multipleEachItem(const ZQValue& v);

  // Arithmetic with units. A sum needs one unit after normalization, a product a plain number
  // or lengths in points; anything without meaning makes the left side null.
  ZQValue& operator+=(const ZQValue& other);
  ZQValue& operator-=(const ZQValue& other);
  ZQValue& operator*=(const ZQValue& other);
  ZQValue& operator/=(const ZQValue& other);
  ZQValue& operator%=(const ZQValue& other);
  friend ZQValue operator+(const ZQValue& a, const ZQValue& b) { return ZQValue(a) += b; }
  friend ZQValue operator-(const ZQValue& a, const ZQValue& b) { return ZQValue(a) -= b; }
  friend ZQValue operator*(const ZQValue& a, const ZQValue& b) { return ZQValue(a) *= b; }
  friend ZQValue operator/(const ZQValue& a, const ZQValue& b) { return ZQValue(a) /= b; }
  friend ZQValue operator%(const ZQValue& a, const ZQValue& b) { return ZQValue(a) %= b; }
  /// A number negated with its flags kept; anything else null.
  ZQValue operator-() const;
  /// For a plain number (unit 1): an integer itself, a real floorf(x); anything else null.
  ZQValue floor() const;
  /// For a plain number: an integer itself, a real ceilf(x); anything else null.
  ZQValue ceiling() const;
  /// For a plain number: an integer itself, a real floorf(x + 0.5); anything else null.
  ZQValue round() const;
  /// A number without its sign, flags kept; anything else null.
  ZQValue abs() const;

  // Comparison and order; numbers compare across units of one kind.
  bool operator==(const ZQValue& other) const;
  bool operator!=(const ZQValue& other) const { return !(*this == other); }
  bool operator<(const ZQValue& other) const;
  bool operator<=(const ZQValue& other) const { return !(other < *this); }
  bool operator>(const ZQValue& other) const { return other < *this; }
  bool operator>=(const ZQValue& other) const { return !(*this < other); }

 protected:
  /// The flags word: ((name << 6 | unit) << 3) | type.
  static constexpr uint64_t bitfield(ZQValueType type, ZQUnitType unit, ZQNameEnum name) {
    return (((uint64_t(uint32_t(name)) << 6) | (uint64_t(unit) & 63u)) << 3) |
           (uint64_t(type) & 7u);
  }
  /// The value's own name, bits 9 and up of the flags.
  ZQNameEnum getNameBits() const { return static_cast<ZQNameEnum>(m_flags >> 9); }
  void setNameBits(ZQNameEnum name) {
    m_flags = (m_flags & 0x1FFu) | (uint64_t(uint32_t(name)) << 9);
  }

 private:
  friend class ZQNamedValueMap;

  union Payload {
    uint64_t raw;
    int32_t i;
    float f;
    ZQNameEnum n;
    UnicodeString* s;
    ZQRCObject* o;
  };

  /// Strings, objects, arrays and compounds own what their payload points to.
  bool ownsPayload() const { return (m_flags & 7u) >= ZQVALUE_STRING; }
  void release() noexcept;
  /// Second half of a copy whose words are already copied: duplicates or references.
  void copyOwned(const ZQValue& other);
  ZQValue& assignOwned(const ZQValue& other);
  /// The float of a numeric value (an integer converted).
  float numberAsFloat() const { return isReal() ? m_payload.f : static_cast<float>(m_payload.i); }
  /// Numeric and real with its unit kept: an integer becomes a real of the same number.
  void makeReal() noexcept;
  bool sameTypeEqual(const ZQValue& other) const;
  /// Normalizes both sides of a sum; false when their units still differ.
  bool alignForSum(ZQValue& right);
  // Both sides of a product or quotient as reals in their normal units, percentages as numbers.
  void alignForProduct(ZQValue& right);
  /// Puts `array` in place of the array held, keeping the flags.
  void replaceArray(ZQValueArray* array);

  Payload m_payload;
  uint64_t m_flags;
};

static_assert(sizeof(ZQValue) == 16, "a value is two 64-bit words");

}  // namespace ZQCommonNS

// The value classes that ZQValue hands out by value.
#include "common/ZQColor.h"
#include "common/ZQLength.h"
