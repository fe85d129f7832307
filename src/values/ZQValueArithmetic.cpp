// Arithmetic that respects units, rounding, and the operations on each item of a list.
#include <cmath>
#include <cstdint>

#include "common/ZQValue.h"
#include "common/ZQValueArray.h"

namespace ZQCommonNS {

namespace {

int32_t wrapAdd(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}
int32_t wrapSub(int32_t a, int32_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
}
int32_t wrapNeg(int32_t a) { return static_cast<int32_t>(0u - static_cast<uint32_t>(a)); }

// A percentage in a product or quotient counts as a plain number of a hundredth.
void percentToNumber(ZQValue& v) {
  if (v.getUnitType() == ZQUNIT_PERCENT) {
    v.setRealValue(v.getRealValue(ZQUNIT_PERCENT) / 100.0f, ZQUNIT_NUMBER);
  }
}

}  // namespace

bool ZQValue::alignForSum(ZQValue& right) {
  if (getUnitType() == right.getUnitType() && getValueType() == right.getValueType()) return true;
  normalizeUnit();
  right.normalizeUnit();
  if (getUnitType() != right.getUnitType()) return false;
  if (getValueType() != right.getValueType()) {
    makeReal();
    right.makeReal();
  }
  return true;
}

void ZQValue::alignForProduct(ZQValue& right) {
  normalizeUnit();
  right.normalizeUnit();
  makeReal();
  right.makeReal();
  percentToNumber(*this);
  percentToNumber(right);
}

ZQValue& ZQValue::operator+=(const ZQValue& other) {
  if (!isNumeric() || !other.isNumeric()) return *this = NULL_VALUE;
  ZQValue right(other);
  if (!alignForSum(right)) return *this = NULL_VALUE;
  if (isInteger()) {
    m_payload.i = wrapAdd(m_payload.i, right.m_payload.i);
  } else {
    m_payload.f += right.m_payload.f;
  }
  return *this;
}

ZQValue& ZQValue::operator-=(const ZQValue& other) {
  if (!isNumeric() || !other.isNumeric()) return *this = NULL_VALUE;
  ZQValue right(other);
  if (!alignForSum(right)) return *this = NULL_VALUE;
  if (isInteger()) {
    m_payload.i = wrapSub(m_payload.i, right.m_payload.i);
  } else {
    m_payload.f -= right.m_payload.f;
  }
  return *this;
}

ZQValue& ZQValue::operator*=(const ZQValue& other) {
  if (!isNumeric() || !other.isNumeric()) return *this = NULL_VALUE;
  ZQValue right(other);
  alignForProduct(right);
  const float product = m_payload.f * right.m_payload.f;
  const int left = getUnitType(), r = right.getUnitType();
  int unit;
  if (left == ZQUNIT_NUMBER) {
    unit = r;
  } else if (r == ZQUNIT_NUMBER) {
    unit = left;
  } else if (left == ZQUNIT_PT && r == ZQUNIT_PT) {
    unit = ZQUNIT_PT2;
  } else if ((left == ZQUNIT_PT && r == ZQUNIT_PT2) || (left == ZQUNIT_PT2 && r == ZQUNIT_PT)) {
    unit = ZQUNIT_PT3;
  } else {
    return *this = NULL_VALUE;
  }
  setRealValue(product, static_cast<ZQUnitType>(unit));
  return *this;
}

ZQValue& ZQValue::operator/=(const ZQValue& other) {
  if (!isNumeric() || !other.isNumeric()) return *this = NULL_VALUE;
  ZQValue right(other);
  alignForProduct(right);
  const float quotient = m_payload.f / right.m_payload.f;
  const int left = getUnitType(), r = right.getUnitType();
  int unit;
  if (r == ZQUNIT_NUMBER) {
    unit = left;
  } else if (left == r) {
    unit = ZQUNIT_NUMBER;
  } else if (left == ZQUNIT_PT3 && r == ZQUNIT_PT) {
    unit = ZQUNIT_PT2;
  } else if ((left == ZQUNIT_PT3 && r == ZQUNIT_PT2) || (left == ZQUNIT_PT2 && r == ZQUNIT_PT)) {
    unit = ZQUNIT_PT;
  } else {
    return *this = NULL_VALUE;
  }
  setRealValue(quotient, static_cast<ZQUnitType>(unit));
  return *this;
}

ZQValue& ZQValue::operator%=(const ZQValue& other) {
  if (!isNumeric() || !other.isNumeric()) return *this = NULL_VALUE;
  ZQValue right(other);
  if (!alignForSum(right)) return *this = NULL_VALUE;
  if (isInteger()) {
    const int32_t d = right.m_payload.i;
    // A remainder by 0 has no meaning: null rather than a processor fault. The one overflow
    // case, the smallest integer by -1, has the remainder 0.
    if (d == 0) return *this = NULL_VALUE;
    m_payload.i = d == -1 ? 0 : m_payload.i % d;
  } else {
    m_payload.f = std::fmod(m_payload.f, right.m_payload.f);
  }
  return *this;
}

ZQValue ZQValue::operator-() const {
  if (!isNumeric()) return NULL_VALUE;
  ZQValue result(*this);
  if (isInteger()) {
    result.m_payload.i = wrapNeg(m_payload.i);
  } else {
    result.m_payload.f = -m_payload.f;
  }
  return result;
}

ZQValue ZQValue::floor() const {
  if (!isNumber()) return NULL_VALUE;
  ZQValue result(*this);
  if (isReal()) result.m_payload.f = std::floor(m_payload.f);
  return result;
}

ZQValue ZQValue::ceiling() const {
  if (!isNumber()) return NULL_VALUE;
  ZQValue result(*this);
  if (isReal()) result.m_payload.f = std::ceil(m_payload.f);
  return result;
}

ZQValue ZQValue::round() const {
  if (!isNumber()) return NULL_VALUE;
  ZQValue result(*this);
  if (isReal()) result.m_payload.f = std::floor(m_payload.f + 0.5f);
  return result;
}

ZQValue ZQValue::abs() const {
  if (!isNumeric()) return NULL_VALUE;
  ZQValue result(*this);
  if (isInteger()) {
    if (m_payload.i < 0) result.m_payload.i = wrapNeg(m_payload.i);
  } else {
    result.m_payload.f = std::fabs(m_payload.f);
  }
  return result;
}

// ---- operations on each item ----

ZQValue ZQValue::sumItem(const ZQValue& base) const {
  if (!isArray()) {
    if (isPercentage()) {
      return ZQValue(getRealValue(ZQUNIT_PERCENT) / 100.0f, ZQUNIT_NUMBER) * base;
    }
    return *this;
  }
  const auto& items = static_cast<ZQValueArray*>(m_payload.o)->getItems();
  ZQValue total = items.empty() ? NULL_VALUE.sumItem(base) : items[0].sumItem(base);
  for (size_t i = 1; i < items.size(); ++i) total += items[i].sumItem(base);
  return total;
}

void ZQValue::replaceArray(ZQValueArray* array) {
  array->addRef();
  m_payload.o->release();
  m_payload.o = array;
}

void ZQValue::invertItem() {
  if (!isArray()) {
    *this = -*this;
    return;
  }
  ZQPtr<ZQValueArray> inverted(new ZQValueArray());
  for (const ZQValue& item : static_cast<ZQValueArray*>(m_payload.o)->getItems()) {
    ZQValue x(item);
    x.invertItem();
    inverted->addItem(x);
  }
  replaceArray(inverted.get());
}

void ZQValue::devideEachItem(const ZQValue& v) {
  if (!isArray()) {
    *this /= v;
    return;
  }
  ZQValue divisor(v);  // `v` may be an item of the array that is replaced
  ZQPtr<ZQValueArray> result(new ZQValueArray());
  for (const ZQValue& item : static_cast<ZQValueArray*>(m_payload.o)->getItems()) {
    ZQValue x(item);
    x.devideEachItem(divisor);
    result->addItem(x);
  }
  replaceArray(result.get());
}

void ZQValue::multipleEachItem(const ZQValue& v) {
  if (!isArray()) {
    *this *= v;
    return;
  }
  ZQValue factor(v);
  ZQPtr<ZQValueArray> result(new ZQValueArray());
  for (const ZQValue& item : static_cast<ZQValueArray*>(m_payload.o)->getItems()) {
    ZQValue x(item);
    x.multipleEachItem(factor);
    result->addItem(x);
  }
  replaceArray(result.get());
}

}  // namespace ZQCommonNS
