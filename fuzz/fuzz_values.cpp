// Builds values and colours from arbitrary bytes (any float bits, any unit, any kind) and
// runs them through arithmetic, conversion, comparison, text and the colour value form.
// Nothing may crash, and a colour must read back from its value form as it went in.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "common/ZQColor.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQValue.h"
#include "common/ZQValueArray.h"

using namespace ZQCommonNS;

namespace {

struct Reader {
  const uint8_t* p;
  size_t n;
  uint8_t byte() {
    if (!n) return 0;
    --n;
    return *p++;
  }
  uint32_t word() {
    uint32_t v = 0;
    for (int i = 0; i < 4; ++i) v = v << 8 | byte();
    return v;
  }
  float real() {
    uint32_t w = word();
    float f;
    std::memcpy(&f, &w, sizeof f);
    return f;
  }
};

ZQValue makeValue(Reader& r, int depth) {
  const ZQUnitType unit = static_cast<ZQUnitType>(r.byte() & 63);
  switch (r.byte() % 8) {
    case 0:
      return ZQValue();
    case 1: {
      ZQValue v(static_cast<int>(r.word()));
      v.setUnitType(unit);
      return v;
    }
    case 2:
      return ZQValue(r.real(), unit);
    case 3:
      return ZQValue(static_cast<ZQNameEnum>(r.word() % ZQ_BUILTIN_NAME_COUNT));
    case 4: {
      UnicodeString text;
      for (int i = r.byte() % 8; i > 0; --i) text += static_cast<char16_t>(r.word());
      return ZQValue(text, unit);
    }
    case 5:
    case 6: {
      ZQValue list;
      for (int i = depth < 3 ? r.byte() % 4 : 0; i > 0; --i) list.addItem(makeValue(r, depth + 1));
      return list;
    }
    default: {
      ZQValue record;
      for (int i = depth < 3 ? r.byte() % 4 : 0; i > 0; --i) {
        record.setNamedItem(ZQName(static_cast<ZQNameEnum>(r.word() % ZQ_BUILTIN_NAME_COUNT)),
                            makeValue(r, depth + 1));
      }
      record.setUnitType(static_cast<ZQUnitType>(r.byte() & 1 ? ZQUNIT_COLOR : unit));
      return record;
    }
  }
}

ZQColor makeColor(Reader& r) {
  ZQColor base(r.word());
  UnicodeString name;
  for (int i = r.byte() % 4; i > 0; --i) name += static_cast<char16_t>(r.byte());
  ZQColor c;
  switch (r.byte() % 12) {
    case 0:
      c = base;
      break;
    case 1:
      c = ZQColor(r.real(), r.real(), r.real());
      break;
    case 2:
      c = ZQColor(r.real());
      break;
    case 3:
      c = ZQColor(base, r.real());
      break;
    case 4:
      c = ZQColor(r.real(), r.real(), r.real(), r.real());
      break;
    case 5:
      c = ZQColor(base, r.real(), r.real(), r.real(), r.real());
      break;
    case 6:
      c = ZQColor(name, r.real());
      break;
    case 7:
      c = ZQColor(name, r.real(), r.real(), r.real(), r.real(), r.real());
      break;
    case 8:
      c = ZQColor(base, name, r.real(), r.real(), r.real(), r.real(), r.real());
      break;
    case 9:
      c = ZQColor(base, name, r.real(), r.real(), r.real(), r.real());
      break;
    case 10:
      c.setHSL(r.real(), r.real(), r.real());
      break;
    default:
      c.setRGBex(r.real(), r.real(), r.real());
      break;
  }
  if (r.byte() & 1) c.setAlpha(r.real());
  return c;
}

bool sameBits(float a, float b) { return std::memcmp(&a, &b, sizeof a) == 0; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Reader r{data, size};
  ZQValue a = makeValue(r, 0);
  ZQValue b = makeValue(r, 0);
  ZQValue results[] = {a + b,   a - b,     a * b,       a / b,     a % b,        -a,
                       a.abs(), a.floor(), a.ceiling(), a.round(), a.sumItem(b), a.clone()};
  for (ZQValue& v : results) {
    (void)v.toString();
    (void)v.toValueText();
    (void)v.toCssText();
    (void)(v == a);
    (void)(v < b);
    (void)v.getLengthValue();
    (void)v.getColorValue(true);
    for (int unit = 0; unit < 64; ++unit) (void)v.getRealValue(static_cast<ZQUnitType>(unit));
    v.normalizeUnit();
    (void)v.getIntegerValue();
  }
  ZQValue c = a;
  c.invertItem();
  c.devideEachItem(b);
  c.multipleEachItem(a);

  ZQColor color = makeColor(r);
  (void)color.toString(false);
  (void)color.toString(true);
  (void)color.toString(true, true);
  (void)color.getDark();
  (void)color.invert();
  (void)color.getSeparationRGB();
  ZQValue form(color);
  ZQColor back = form.getColorValue();
  // The value form keeps the rgb, the kind and the alpha whatever the members hold; a special
  // colour is its rgb alone.
  if (static_cast<unsigned>(back) != static_cast<unsigned>(color)) abort();
  const unsigned rgb = static_cast<unsigned>(color);
  if (rgb == ZQColor::RGB_TRANSPARENT || rgb == ZQColor::RGB_INVERT ||
      rgb == ZQColor::RGB_CURRENT_COLOR || rgb == ZQColor::RGB_INVALID) {
    if (!form.isInteger() || !back.isRGB() || back.hasAlpha()) abort();
    return 0;
  }
  if (back.getProfileType() != color.getProfileType()) abort();
  if (back.hasAlpha() != color.hasAlpha()) abort();
  if (color.hasAlpha() && !sameBits(back.getAlpha(), color.getAlpha())) abort();
  return 0;
}
