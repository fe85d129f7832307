#include "common/ZQLength.h"

#include "values/ZQUnitTable.h"

namespace ZQCommonNS {

ZQLength::ZQLength(float value, ZQUnitType unit) {
  if (unit == ZQUNIT_PT) {
    m_value = value;
  } else if (units::isAbsoluteLength(unit)) {
    m_value = value * units::absoluteFactor(unit);
  } else {
    m_value = units::kNaN;
  }
}

float ZQLength::getRealValue(ZQUnitType unit) const {
  if (unit == ZQUNIT_PT) return m_value;
  if (!units::isAbsoluteLength(unit)) return units::kNaN;
  return m_value / units::absoluteFactor(unit);
}

int ZQLength::getIntegerValue(ZQUnitType unit) const {
  return units::truncToInt(static_cast<double>(getRealValue(unit)) + 0.5);
}

int ZQLength::getPixelCount(float dpi) const {
  float v = dpi * m_value / 72.0f;
  if (v >= 0.0f) return units::truncToInt(static_cast<double>(v) + 0.5);
  return units::truncToInt(static_cast<double>(v) - 0.5);
}

}  // namespace ZQCommonNS
