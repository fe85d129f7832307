#include "common/ZQValue.h"

#include <unicode/locid.h>

#include <bit>
#include <cmath>
#include <functional>
#include <new>
#include <utility>

#include "common/ZQLength.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQValueArray.h"
#include "core/ZQSmallPool.h"
#include "values/ZQUnitTable.h"

namespace ZQCommonNS {

namespace {

// Angle factors. The two radian constants differ in the last place and both stay, so that
// getRealValue and normalizeUnit each keep their exact results.
constexpr float kDegPerRadRead = std::bit_cast<float>(0x42652EE1u);       // 57.29578
constexpr float kDegPerRadNormalize = std::bit_cast<float>(0x42652EE0u);  // 57.295776
constexpr float kRadPerDeg = 0.017453292f;
constexpr float kRadPerGrad = 0.015707964f;
constexpr float kGradPerRad = 63.661976f;
constexpr float kDegPerGrad = 0.9f;

constexpr ZQUtil::QuoteMode kValueQuoteMode = static_cast<ZQUtil::QuoteMode>(7);
constexpr ZQUtil::QuoteMode kCssQuoteMode = static_cast<ZQUtil::QuoteMode>(43);

// A value's string comes from the small-object pool: a loaded document holds one per
// attribute, and the pool serves them faster and packed closer than the global heap.
UnicodeString* newString(const UnicodeString& text) {
  void* storage = smallpool::allocate(sizeof(UnicodeString));
  try {
    return new (storage) UnicodeString(text);
  } catch (...) {
    smallpool::deallocate(storage, sizeof(UnicodeString));
    throw;
  }
}

void deleteString(UnicodeString* text) noexcept {
  if (!text) return;
  text->~UnicodeString();
  smallpool::deallocate(text, sizeof(UnicodeString));
}

}  // namespace

constinit const ZQValue ZQValue::NULL_VALUE;

// ---- construction and ownership ----

ZQValue::ZQValue(int value) noexcept
    : m_payload{0}, m_flags(bitfield(ZQVALUE_INTEGER, ZQUNIT_NUMBER, ZQN_EMPTY)) {
  m_payload.i = value;
}

ZQValue::ZQValue(long value) noexcept : ZQValue(static_cast<int>(static_cast<int32_t>(value))) {}

ZQValue::ZQValue(float value, ZQUnitType unit) noexcept
    : m_payload{0}, m_flags(bitfield(ZQVALUE_REAL, unit, ZQN_EMPTY)) {
  m_payload.f = value;
}

ZQValue::ZQValue(const ZQLength& length) noexcept
    : ZQValue(static_cast<float>(length), ZQUNIT_PT) {}

ZQValue::ZQValue(ZQName name) noexcept : ZQValue(static_cast<ZQNameEnum>(name)) {}

ZQValue::ZQValue(ZQNameEnum name) noexcept
    : m_payload{0}, m_flags(bitfield(ZQVALUE_NAME, ZQUNIT_NAME, ZQN_EMPTY)) {
  m_payload.n = name;
}

ZQValue::ZQValue(bool value) noexcept : ZQValue(value ? ZQN_true : ZQN_false) {}

ZQValue::ZQValue(const UnicodeString& text, ZQUnitType unit)
    : m_payload{0}, m_flags(bitfield(ZQVALUE_STRING, unit, ZQN_EMPTY)) {
  m_payload.s = newString(text);
}

ZQValue::ZQValue(ZQRCObject* object) : m_payload{0}, m_flags(0) {
  if (object) {
    object->addRef();
    m_payload.o = object;
    m_flags = bitfield(ZQVALUE_OBJECT, ZQUNIT_NONE, ZQN_EMPTY);
  }
}

ZQValue::ZQValue(ZQValueArray* array) : m_payload{0}, m_flags(0) {
  if (array) {
    array->addRef();
    m_payload.o = array;
    m_flags = bitfield(ZQVALUE_ARRAY, ZQUNIT_NONE, ZQN_EMPTY);
  }
}

ZQValue::ZQValue(ZQNamedValueMap* map) : m_payload{0}, m_flags(0) {
  if (map) {
    map->addRef();
    m_payload.o = map;
    m_flags = bitfield(ZQVALUE_COMPOUND, ZQUNIT_NONE, ZQN_EMPTY);
  }
}

void ZQValue::release() noexcept {
  switch (getValueType()) {
    case ZQVALUE_STRING:
      deleteString(m_payload.s);
      break;
    case ZQVALUE_OBJECT:
    case ZQVALUE_ARRAY:
    case ZQVALUE_COMPOUND:
      if (m_payload.o) m_payload.o->release();
      break;
    default:
      break;
  }
  m_payload.raw = 0;
}

void ZQValue::copyOwned(const ZQValue& other) {
  if (getValueType() == ZQVALUE_STRING) {
    m_payload.s = other.m_payload.s ? newString(*other.m_payload.s) : nullptr;
  } else if (m_payload.o) {
    m_payload.o->addRef();
  }
}

ZQValue& ZQValue::assignOwned(const ZQValue& other) {
  if (this == &other) return *this;
  // Copy first: `other` may live inside what this value holds.
  ZQValue copy(other);
  release();
  m_payload = copy.m_payload;
  m_flags = copy.m_flags;
  copy.m_payload.raw = 0;
  copy.m_flags = 0;
  return *this;
}

ZQValue& ZQValue::operator=(ZQValue&& other) noexcept {
  if (this == &other) return *this;
  Payload payload = other.m_payload;
  uint64_t flags = other.m_flags;
  other.m_payload.raw = 0;
  other.m_flags = 0;
  release();
  m_payload = payload;
  m_flags = flags;
  return *this;
}

void ZQValue::clear() { *this = NULL_VALUE; }

ZQValue ZQValue::clone() const {
  ZQValue result(*this);
  if (isArray()) {
    ZQPtr<ZQValueArray> copy = static_cast<ZQValueArray*>(m_payload.o)->clone();
    result.m_payload.o->release();
    result.m_payload.o = copy.get();
    copy->addRef();
  } else if (isCompound()) {
    ZQPtr<ZQNamedValueMap> copy = static_cast<ZQNamedValueMap*>(m_payload.o)->clone();
    result.m_payload.o->release();
    result.m_payload.o = copy.get();
    copy->addRef();
  }
  return result;
}

void ZQValue::setRealValue(float value, ZQUnitType unit) noexcept {
  m_payload.raw = 0;
  m_payload.f = value;
  m_flags = bitfield(ZQVALUE_REAL, unit, getNameBits());
}

void ZQValue::makeReal() noexcept {
  if (!isInteger()) return;
  float f = static_cast<float>(m_payload.i);
  m_payload.raw = 0;
  m_payload.f = f;
  setValueType(ZQVALUE_REAL);
}

// ---- tests and readers ----

bool ZQValue::isAbsoluteLength() const {
  return isNumeric() && units::isAbsoluteLength(getUnitType());
}

bool ZQValue::isRelativeLength() const {
  return isNumeric() && units::isRelativeLength(getUnitType());
}

bool ZQValue::isEmpty() const {
  switch (getValueType()) {
    case ZQVALUE_NULL:
      return true;
    case ZQVALUE_NAME:
      return m_payload.n == ZQN_EMPTY;
    case ZQVALUE_STRING:
      return !m_payload.s || m_payload.s->isEmpty();
    default:
      return false;
  }
}

int ZQValue::getIntegerValue() const {
  if (isInteger()) return m_payload.i;
  if (!isReal()) return 0;
  double r = std::floor(static_cast<double>(m_payload.f) + 0.5);
  if (r > 2147483647.0) return INT32_MAX;
  if (r < -2147483648.0) return INT32_MIN;
  // A NaN converts to the smallest integer, as the processor's conversion does.
  return units::truncToInt(r);
}

float ZQValue::getRealValue(ZQUnitType target) const {
  if (!isNumeric()) return units::kNaN;
  float v = numberAsFloat();
  int source = getUnitType();
  if (source == target) return v;
  switch (target) {
    case ZQUNIT_NONE:
      return v;
    case ZQUNIT_NUMBER:
      if (source == ZQUNIT_PERCENT) return v / 100.0f;
      if (source == ZQUNIT_DPI) return v;
      return units::kNaN;
    case ZQUNIT_PERCENT:
      return source == ZQUNIT_NUMBER ? v * 100.0f : units::kNaN;
    case ZQUNIT_DEG:
      if (source == ZQUNIT_NUMBER) return v;
      if (source == ZQUNIT_RAD) return v * kDegPerRadRead;
      if (source == ZQUNIT_GRAD) return v * kDegPerGrad;
      return units::kNaN;
    case ZQUNIT_RAD:
      if (source == ZQUNIT_NUMBER || source == ZQUNIT_DEG) return v * kRadPerDeg;
      if (source == ZQUNIT_GRAD) return v * kRadPerGrad;
      return units::kNaN;
    case ZQUNIT_GRAD:
      // Kept as callers know it: grad from deg uses the radian factor, not 10/9.
      if (source == ZQUNIT_NUMBER || source == ZQUNIT_DEG) return v * kRadPerDeg;
      if (source == ZQUNIT_RAD) return v * kGradPerRad;
      return units::kNaN;
    case ZQUNIT_MS:
      return source == ZQUNIT_S ? v * 1000.0f : units::kNaN;
    case ZQUNIT_S:
      return source == ZQUNIT_MS ? v / 1000.0f : units::kNaN;
    case ZQUNIT_HZ:
      return source == ZQUNIT_KHZ ? v * 1000.0f : units::kNaN;
    case ZQUNIT_KHZ:
      return source == ZQUNIT_HZ ? v / 1000.0f : units::kNaN;
    // Kept as callers know it: a resolution accepts a percentage, not a plain number.
    case ZQUNIT_DPI:
      return source == ZQUNIT_PERCENT ? v : units::kNaN;
    default:
      if (units::isAbsoluteLength(target) && units::isAbsoluteLength(source)) {
        return ZQLength(v, static_cast<ZQUnitType>(source)).getRealValue(target);
      }
      return units::kNaN;
  }
}

ZQLength ZQValue::getLengthValue() const {
  if (isCompound()) {
    const ZQNamedValueMap* map = static_cast<const ZQNamedValueMap*>(m_payload.o);
    ZQValue member;
    map->getNamedItemFast(ZQN_length, member);
    if (member.isNull()) map->getNamedItemFast(ZQN_EMPTY, member);
    if (member.isNull()) map->getNamedItemFast(ZQN_optimum, member);
    return member.getLengthValue();
  }
  if (!isNumeric()) return ZQLength::getAuto();
  int unit = getUnitType();
  if (unit == ZQUNIT_PT) return ZQLength(numberAsFloat());
  if (units::isAbsoluteLength(unit)) {
    return ZQLength(numberAsFloat(), static_cast<ZQUnitType>(unit));
  }
  return ZQLength::getAuto();
}

ZQName ZQValue::getLowerNameValue() const {
  if (!isName()) return ZQName();
  UnicodeString text(ZQName(m_payload.n).toString());
  text.toLower(icu::Locale::getRoot());
  return ZQName(text);
}

ZQName ZQValue::toZQName() const {
  if (isName()) return ZQName(m_payload.n);
  return ZQName(toString());
}

UnicodeString ZQValue::getStringValue() const {
  if (isName()) return ZQName(m_payload.n).toString();
  if (isString() && m_payload.s) return *m_payload.s;
  return ZQEmptyString::EMPTY_VALUE;
}

ZQValueArray* ZQValue::getValueArray() const {
  return getValueType() == ZQVALUE_ARRAY ? static_cast<ZQValueArray*>(m_payload.o) : nullptr;
}

ZQNamedValueMap* ZQValue::getNamedValueMap() const {
  return getValueType() == ZQVALUE_COMPOUND ? static_cast<ZQNamedValueMap*>(m_payload.o) : nullptr;
}

int ZQValue::getArrayCount() const {
  if (isNull()) return 0;
  if (isArray()) return static_cast<ZQValueArray*>(m_payload.o)->getCount();
  return 1;
}

UnicodeString ZQValue::getUnitString(ZQUnitType unit) {
  const char16_t* text = nullptr;
  switch (unit) {
    case ZQUNIT_PERCENT:
      text = u"%";
      break;
    case ZQUNIT_EM:
      text = u"em";
      break;
    case ZQUNIT_EX:
      text = u"ex";
      break;
    case ZQUNIT_PX:
      text = u"px";
      break;
    case ZQUNIT_CM:
      text = u"cm";
      break;
    case ZQUNIT_MM:
      text = u"mm";
      break;
    case ZQUNIT_IN:
      text = u"in";
      break;
    case ZQUNIT_PT:
      text = u"pt";
      break;
    case ZQUNIT_PC:
      text = u"pc";
      break;
    case ZQUNIT_JPT:
      text = u"jpt";
      break;
    case ZQUNIT_Q:
      text = u"q";
      break;
    case ZQUNIT_DEG:
      text = u"deg";
      break;
    case ZQUNIT_RAD:
      text = u"rad";
      break;
    case ZQUNIT_GRAD:
      text = u"grad";
      break;
    case ZQUNIT_MS:
      text = u"ms";
      break;
    case ZQUNIT_S:
      text = u"s";
      break;
    case ZQUNIT_HZ:
      text = u"Hz";
      break;
    case ZQUNIT_KHZ:
      text = u"kHz";
      break;
    case ZQUNIT_DD:
      text = u"dd";
      break;
    case ZQUNIT_CC:
      text = u"cc";
      break;
    case ZQUNIT_DPI:
      text = u"dpi";
      break;
    case ZQUNIT_TWIP:
      text = u"twip";
      break;
    case ZQUNIT_REM:
      text = u"rem";
      break;
    case ZQUNIT_VW:
      text = u"vw";
      break;
    case ZQUNIT_VH:
      text = u"vh";
      break;
    case ZQUNIT_VMIN:
      text = u"vmin";
      break;
    case ZQUNIT_VMAX:
      text = u"vmax";
      break;
    case ZQUNIT_PVW:
      text = u"pvw";
      break;
    case ZQUNIT_PVH:
      text = u"pvh";
      break;
    case ZQUNIT_PVMIN:
      text = u"pvmin";
      break;
    case ZQUNIT_PVMAX:
      text = u"pvmax";
      break;
    case ZQUNIT_CH:
      text = u"ch";
      break;
    case ZQUNIT_WCH:
      text = u"wch";
      break;
    case ZQUNIT_FR:
      text = u"fr";
      break;
    case ZQUNIT_GR:
      text = u"gr";
      break;
    case ZQUNIT_LH:
      text = u"lh";
      break;
    case ZQUNIT_RLH:
      text = u"rlh";
      break;
    case ZQUNIT_LINES:
      text = u"lines";
      break;
    case ZQUNIT_EMU:
      text = u"emu";
      break;
    case ZQUNIT_PI:
      text = u"pi";
      break;
    case ZQUNIT_DCEM:
      text = u"dcem";
      break;
    case ZQUNIT_CAP:
      text = u"cap";
      break;
    case ZQUNIT_IC:
      text = u"ic";
      break;
    default:
      return UnicodeString();
  }
  return UnicodeString(true, text, -1);
}

void ZQValue::normalizeUnit() {
  if (!isNumeric()) return;
  int unit = getUnitType();
  switch (unit) {
    case ZQUNIT_PERCENT:
      makeReal();
      return;
    case ZQUNIT_RAD:
      makeReal();
      setRealValue(m_payload.f * kDegPerRadNormalize, ZQUNIT_DEG);
      return;
    case ZQUNIT_GRAD:
      makeReal();
      setRealValue(m_payload.f * kDegPerGrad, ZQUNIT_DEG);
      return;
    case ZQUNIT_S:
      makeReal();
      setRealValue(m_payload.f * 1000.0f, ZQUNIT_MS);
      return;
    case ZQUNIT_KHZ:
      makeReal();
      setRealValue(m_payload.f * 1000.0f, ZQUNIT_HZ);
      return;
    case ZQUNIT_DPI:
      setUnitType(ZQUNIT_NUMBER);
      return;
    default:
      if (units::isAbsoluteLength(unit)) {
        makeReal();
        if (unit != ZQUNIT_PT) {
          setRealValue(static_cast<float>(ZQLength(m_payload.f, static_cast<ZQUnitType>(unit))),
                       ZQUNIT_PT);
        }
      }
      return;
  }
}

// ---- text forms ----

namespace {

// An item of a list prints so that the list parses back.
UnicodeString itemText(const ZQValue& item) {
  if (item.isString()) {
    if (item.getUnitType() == ZQUNIT_LITERAL) {
      return ZQUtil::quoteString(item.getStringValue(), kValueQuoteMode);
    }
    if (item.getUnitType() == ZQUNIT_URI) return ZQUtil::quoteUri(item.getStringValue());
  }
  return item.toString();
}

}  // namespace

UnicodeString ZQValue::toString() const {
  switch (getValueType()) {
    case ZQVALUE_STRING:
      return m_payload.s ? *m_payload.s : UnicodeString();
    case ZQVALUE_NAME:
      return ZQName(m_payload.n).toString();
    case ZQVALUE_NULL:
      return UnicodeString();
    default:
      break;
  }
  if (isColor()) return getColorValue().toString(false);
  if (isArray()) {
    UnicodeString text;
    bool first = true;
    for (const ZQValue& item : static_cast<ZQValueArray*>(m_payload.o)->getItems()) {
      if (!first) text += u' ';
      first = false;
      text += itemText(item);
    }
    return text;
  }
  if (isCompound()) {
    UnicodeString text(u'{');
    bool first = true;
    ZQNamedValueMapIterator it(static_cast<ZQNamedValueMap*>(m_payload.o));
    while (it.hasNext()) {
      const ZQNamedValue& member = it.next();
      if (member.isNull()) continue;
      if (!first) text += u"; ";
      first = false;
      ZQName name = member.getName();
      if (name.isEmpty()) {
        text += u'.';
      } else {
        text += name.toString();
      }
      text += u": ";
      text += member.toString();
    }
    text += u'}';
    return text;
  }
  if (getValueType() >= ZQVALUE_OBJECT) {
    if (!m_payload.o) return UnicodeString();
    UnicodeString text(u"##");
    text += m_payload.o->getTypeName();
    return text;
  }
  if (isCharacter()) return UnicodeString(static_cast<UChar32>(m_payload.i));
  UnicodeString text = isInteger() ? ZQUtil::toString(m_payload.i)
                                   : ZQUtil::toString(static_cast<double>(m_payload.f));
  text += getUnitString(getUnitType());
  return text;
}

UnicodeString ZQValue::toQuotedString(ZQUtil::QuoteMode mode) const {
  if (getUnitType() == ZQUNIT_LITERAL) return ZQUtil::quoteString(toString(), mode);
  return toString();
}

UnicodeString ZQValue::toUrlString(ZQUtil::QuoteMode mode) const {
  UnicodeString quoted = ZQUtil::quoteString(toString(), mode);
  if (getUnitType() != ZQUNIT_URI) return quoted;
  UnicodeString text(u"url(");
  text += quoted;
  text += u')';
  return text;
}

UnicodeString ZQValue::toValueText() const {
  if (isString()) {
    if (getUnitType() == ZQUNIT_LITERAL) return ZQUtil::quoteString(toString(), kValueQuoteMode);
    if (getUnitType() == ZQUNIT_URI) return ZQUtil::quoteUri(toString());
  }
  return toString();
}

UnicodeString ZQValue::toCssText() const {
  if (isString()) {
    if (getUnitType() == ZQUNIT_LITERAL) return ZQUtil::quoteString(toString(), kCssQuoteMode);
    if (getUnitType() == ZQUNIT_URI) return ZQUtil::quoteUri(toString());
  }
  return toString();
}

// ---- comparison and order ----

bool ZQValue::sameTypeEqual(const ZQValue& other) const {
  switch (getValueType()) {
    case ZQVALUE_NULL:
      return true;
    case ZQVALUE_INTEGER:
      return m_payload.i == other.m_payload.i;
    case ZQVALUE_NAME:
      return m_payload.n == other.m_payload.n;
    case ZQVALUE_REAL:
      return m_payload.f == other.m_payload.f;
    case ZQVALUE_STRING:
      if (!m_payload.s || !other.m_payload.s) return m_payload.s == other.m_payload.s;
      return *m_payload.s == *other.m_payload.s;
    default:
      // Two colours in compound form are equal when their colours are.
      if (isColor() && other.isColor()) return getColorValue() == other.getColorValue();
      return m_payload.o == other.m_payload.o;
  }
}

bool ZQValue::operator==(const ZQValue& other) const {
  if (getValueType() == other.getValueType() && getUnitType() == other.getUnitType()) {
    return sameTypeEqual(other);
  }
  if (isNumeric() && other.isNumeric()) {
    ZQValue a(*this);
    ZQValue b(other);
    a.normalizeUnit();
    b.normalizeUnit();
    if (a.getUnitType() != b.getUnitType()) return false;
    return a.numberAsFloat() == b.numberAsFloat();
  }
  if ((isString() && other.isName()) || (isName() && other.isString())) {
    return getStringValue() == other.getStringValue();
  }
  return false;
}

bool ZQValue::operator<(const ZQValue& other) const {
  ZQValueType type = getValueType();
  if (type == other.getValueType() && getUnitType() == other.getUnitType()) {
    switch (type) {
      case ZQVALUE_NULL:
        return false;
      case ZQVALUE_INTEGER:
        return m_payload.i < other.m_payload.i;
      case ZQVALUE_NAME:
        return static_cast<int>(m_payload.n) < static_cast<int>(other.m_payload.n);
      case ZQVALUE_REAL:
        return m_payload.f < other.m_payload.f;
      case ZQVALUE_STRING:
        return getStringValue() < other.getStringValue();
      default:
        return std::less<const ZQRCObject*>()(m_payload.o, other.m_payload.o);
    }
  }
  if (isNumeric() && other.isNumeric()) {
    ZQValue a(*this);
    ZQValue b(other);
    a.normalizeUnit();
    b.normalizeUnit();
    if (a.getUnitType() != b.getUnitType()) return a.getUnitType() < b.getUnitType();
    return a.numberAsFloat() < b.numberAsFloat();
  }
  if ((isString() && other.isName()) || (isName() && other.isString())) {
    return getStringValue() < other.getStringValue();
  }
  if (type != other.getValueType()) return type < other.getValueType();
  return getUnitType() < other.getUnitType();
}

// ---- ZQName from a value, declared with ZQName ----

ZQName::ZQName(const ZQValue& value)
    : m_name(value.isName() ? static_cast<ZQNameEnum>(value.getNameValue())
                            : ZQNameTable::getSharedNameEnum(value.toString())) {}

// ---- ZQLength from a value, declared with ZQLength ----

ZQLength::ZQLength(const ZQValue& value) : ZQLength(value.getLengthValue()) {}

}  // namespace ZQCommonNS
