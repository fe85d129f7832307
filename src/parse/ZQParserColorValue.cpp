// Reading a colour back from a value: the value form of ZQValue(const ZQColor&), a colour name,
// or colour text, which goes through the colour syntax.
#include "common/ZQColor.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQParser.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

namespace {

float readReal(const ZQValue& record, ZQNameEnum key) {
  return record.getNamedItem(ZQName(key)).getRealValue(ZQUNIT_NUMBER);
}

bool has(const ZQValue& record, ZQNameEnum key) {
  return !record.getNamedItem(ZQName(key)).isNull();
}

unsigned int readRGB(const ZQValue& record) {
  return static_cast<unsigned int>(record.getNamedItem(ZQName(ZQN_rgb)).getIntegerValue());
}

}  // namespace

ZQColor ZQValue::getColorValue() const { return getColorValue(false); }

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
  } else if (unit != ZQUNIT_NAME) {
    // Text such as "#abc" or "rgb(...)"; a value without text (a number, a list) has none to
    // read.
    const UnicodeString text = getStringValue();
    if (!text.isEmpty()) {
      const ZQValue parsed = ZQParser::parseColor(text, false);
      if (parsed.getUnitType() == ZQUNIT_COLOR) return parsed.getColorValue();
    }
  }
  return strict ? ZQColor::getInvalidColor() : ZQColor::getTransparent();
}

}  // namespace ZQCommonNS
