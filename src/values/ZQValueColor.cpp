// The value form of a colour: an integer of unit 24 for plain RGB, and otherwise a compound of
// unit 24 with one member keyed by the colour's kind. Reading it back (getColorValue) lives with
// the colour syntax, since text values are read through it.
#include "common/ZQColor.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

namespace {

ZQValue real(float v) { return ZQValue(v, ZQUNIT_NUMBER); }
ZQValue packed(unsigned int rgb) { return ZQValue(static_cast<int>(rgb)); }

void putCMYK(ZQValue& inner, float c, float m, float y, float k) {
  inner.setNamedItem(ZQName(ZQN_cyan), real(c));
  inner.setNamedItem(ZQName(ZQN_magenta), real(m));
  inner.setNamedItem(ZQName(ZQN_yellow), real(y));
  inner.setNamedItem(ZQName(ZQN_black), real(k));
}

}  // namespace

ZQValue::ZQValue(const ZQColor& color)
    : m_payload{0}, m_flags(bitfield(ZQVALUE_INTEGER, ZQUNIT_COLOR, ZQN_EMPTY)) {
  m_payload.i = static_cast<int32_t>(color.m_rgb);
  if (color.isRGB() && !color.hasAlpha() && !color.isRGBex()) return;
  // The special colours are their rgb alone, whatever else they carry.
  switch (color.m_rgb) {
    case ZQColor::RGB_TRANSPARENT:
    case ZQColor::RGB_INVERT:
    case ZQColor::RGB_CURRENT_COLOR:
    case ZQColor::RGB_INVALID:
      return;
    default:
      break;
  }

  ZQValue inner(new ZQNamedValueMap());
  ZQNameEnum key;
  bool outerAlpha = color.hasAlpha();
  if (color.isHSL()) {
    key = ZQN_hash_HSL;
    inner.setNamedItem(ZQName(ZQN_hue), real(color.getH()));
    inner.setNamedItem(ZQName(ZQN_saturation), real(color.getS()));
    inner.setNamedItem(ZQName(ZQN_lightness), real(color.getL()));
  } else if (color.isCMYK()) {
    key = ZQN_hash_CMYK;
    putCMYK(inner, color.getC(), color.getM(), color.getY(), color.getK());
    if (color.hasCMYKRGB()) inner.setNamedItem(ZQName(ZQN_rgb), packed(color.m_rgb));
  } else if (color.isGrayscale()) {
    key = ZQN_hash_GRAYSCALE;
    inner.setNamedItem(ZQName(ZQN_value), real(color.getGrayscale()));
    if (color.hasGrayscaleRGB()) inner.setNamedItem(ZQName(ZQN_rgb), packed(color.m_rgb));
  } else if (color.isSeparation()) {
    key = ZQN_hash_SEPARATION;
    inner.setNamedItem(ZQName(ZQN_name), ZQValue(color.m_name, ZQUNIT_NONE));
    if (color.hasSeparationTint()) {
      inner.setNamedItem(ZQName(ZQN_value), real(color.getSeparationTint()));
    }
    if (color.hasSeparationCMYK()) {
      putCMYK(inner, color.getSeparationC(), color.getSeparationM(), color.getSeparationY(),
              color.getSeparationK());
    }
    if (color.hasSeparationRGB()) inner.setNamedItem(ZQName(ZQN_rgb), packed(color.m_rgb));
  } else if (color.isICCColorProfile()) {
    key = ZQN_icc_color;
    inner.setNamedItem(ZQName(ZQN_name), ZQValue(color.getICCColorProfileName()));
    putCMYK(inner, color.getICCValue(0), color.getICCValue(1), color.getICCValue(2),
            color.getICCValue(3));
    // The rgb that stands in for the profile's colour, so that the value reads back whole.
    inner.setNamedItem(ZQName(ZQN_rgb), packed(color.m_rgb));
  } else {
    key = ZQN_hash_hash_RGBA;
    inner.setNamedItem(ZQName(), packed(color.m_rgb));
    if (color.hasAlpha()) inner.setNamedItem(ZQName(ZQN_alpha), real(color.getAlpha()));
    if (color.isRGBex()) {
      inner.setNamedItem(ZQName(ZQN_red), real(color.getRex()));
      inner.setNamedItem(ZQName(ZQN_green), real(color.getGex()));
      inner.setNamedItem(ZQName(ZQN_blue), real(color.getBex()));
    }
    outerAlpha = false;
  }

  ZQValue outer(new ZQNamedValueMap());
  outer.setNamedItem(ZQName(key), inner);
  // Every kind but RGB keeps its alpha beside the key, so that it reads back.
  if (outerAlpha) outer.setNamedItem(ZQName(ZQN_alpha), real(color.getAlpha()));
  outer.setUnitType(ZQUNIT_COLOR);
  *this = std::move(outer);
}

ZQColor::ZQColor(const ZQValue& value) : ZQColor(value.getColorValue()) {}

}  // namespace ZQCommonNS
