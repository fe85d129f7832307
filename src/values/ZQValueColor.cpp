// The value form of a colour: an integer of unit 24 for plain RGB, and otherwise a compound of
// unit 24 with one member keyed by the colour's kind.
#include "common/ZQColor.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

namespace {

ZQValue real(float v) { return ZQValue(v, ZQUNIT_NUMBER); }
ZQValue packed(unsigned int rgb) { return ZQValue(static_cast<int>(rgb)); }

float readReal(const ZQValue& record, ZQNameEnum key) {
  return record.getNamedItem(ZQName(key)).getRealValue(ZQUNIT_NUMBER);
}

bool has(const ZQValue& record, ZQNameEnum key) {
  return !record.getNamedItem(ZQName(key)).isNull();
}

unsigned int readRGB(const ZQValue& record) {
  return static_cast<unsigned int>(record.getNamedItem(ZQName(ZQN_rgb)).getIntegerValue());
}

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

ZQColor ZQValue::getColorValue() const { return getColorValue(false); }

ZQColor::ZQColor(const ZQValue& value) : ZQColor(value.getColorValue()) {}

ZQColor ZQValue::getColorValue(bool strict) const {
  const ZQUnitType unit = getUnitType();
  if (unit == ZQUNIT_NAME && isName()) {
    ZQColor named(getNameValue());
    if (!named.isInvalid()) return named;
  } else if (unit == ZQUNIT_COLOR) {
    if (isInteger()) return ZQColor(static_cast<unsigned int>(m_payload.i));
    if (isCompound()) {
      ZQColor color;
      bool found = true;
      ZQValue inner;
      if (!(inner = getNamedItem(ZQName(ZQN_icc_color))).isNull()) {
        color =
            ZQColor(ZQColor(readRGB(inner)), inner.getNamedItem(ZQName(ZQN_name)).getStringValue(),
                    readReal(inner, ZQN_cyan), readReal(inner, ZQN_magenta),
                    readReal(inner, ZQN_yellow), readReal(inner, ZQN_black));
      } else if (!(inner = getNamedItem(ZQName(ZQN_hash_HSL))).isNull()) {
        float hue = readReal(inner, ZQN_hue);
        color.setHSL(hue, readReal(inner, ZQN_saturation), readReal(inner, ZQN_lightness));
        // A hue already in range is kept as written: reducing it again could round it
        // (359.99997 + 360 is 720 in floats).
        if (hue >= 0.0f && hue < 360.0f) {
          color.setReal(0, hue);
          color.m_rgb = ZQColor::hsl2rgb(hue, color.getS(), color.getL());
        }
      } else if (!(inner = getNamedItem(ZQName(ZQN_hash_hash_RGBA))).isNull()) {
        unsigned int rgb =
            static_cast<unsigned int>(inner.getNamedItem(ZQName()).getIntegerValue());
        if (has(inner, ZQN_red) || has(inner, ZQN_green) || has(inner, ZQN_blue)) {
          color.setRGBex(readReal(inner, ZQN_red), readReal(inner, ZQN_green),
                         readReal(inner, ZQN_blue));
        }
        color.m_rgb = rgb;
        if (has(inner, ZQN_alpha)) color.setAlpha(readReal(inner, ZQN_alpha));
      } else if (!(inner = getNamedItem(ZQName(ZQN_hash_SEPARATION))).isNull()) {
        UnicodeString name = inner.getNamedItem(ZQName(ZQN_name)).getStringValue();
        bool tint = has(inner, ZQN_value);
        bool cmyk = has(inner, ZQN_cyan);
        bool rgb = has(inner, ZQN_rgb);
        float t = tint ? readReal(inner, ZQN_value) : 1.0f;
        color = cmyk ? ZQColor(name, t, readReal(inner, ZQN_cyan), readReal(inner, ZQN_magenta),
                               readReal(inner, ZQN_yellow), readReal(inner, ZQN_black))
                     : ZQColor(name, t);
        if (rgb) color.m_rgb = readRGB(inner);
        color.adjustSeparationFlags(rgb, tint, cmyk, false);
      } else if (!(inner = getNamedItem(ZQName(ZQN_hash_GRAYSCALE))).isNull()) {
        float gray = readReal(inner, ZQN_value);
        color = has(inner, ZQN_rgb) ? ZQColor(ZQColor(readRGB(inner)), gray) : ZQColor(gray);
      } else if (!(inner = getNamedItem(ZQName(ZQN_hash_CMYK))).isNull()) {
        float c = readReal(inner, ZQN_cyan), m = readReal(inner, ZQN_magenta);
        float y = readReal(inner, ZQN_yellow), k = readReal(inner, ZQN_black);
        color = has(inner, ZQN_rgb) ? ZQColor(ZQColor(readRGB(inner)), c, m, y, k)
                                    : ZQColor(c, m, y, k);
      } else {
        found = false;
      }
      if (found) {
        ZQValue alpha = getNamedItem(ZQName(ZQN_alpha));
        if (!alpha.isNull()) color.setAlpha(alpha.getRealValue(ZQUNIT_NUMBER));
        return color;
      }
    }
  } else if (!isNull()) {
    // Text such as "#abc" or "rgb(...)" is read by the colour syntax, which belongs to the
    // expression parser. Until that parser is part of the library, a value of any other unit
    // holds no colour here and gets the neutral answer below.
  }
  return strict ? ZQColor::getInvalidColor() : ZQColor::getTransparent();
}

}  // namespace ZQCommonNS
