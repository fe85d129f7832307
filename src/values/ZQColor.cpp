#include "common/ZQColor.h"

#include <unicode/locid.h>
#include <unicode/uchar.h>

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <limits>
#include <unordered_map>

#include "common/ZQUtil.h"
#include "core/platform/ZQPlatformColor.h"

namespace ZQCommonNS {

namespace {

constexpr float kNoAlpha = std::numeric_limits<float>::max();  // bits 0x7F7FFFFF

// Offsets of the members of each kind in the union.
constexpr int kRGBexFlag = 12;
constexpr int kCMYKFlag = 16;
constexpr int kGrayFlag = 4;
constexpr int kSepRGBFlag = 20;
constexpr int kSepTintFlag = 21;
constexpr int kSepCMYKFlag = 22;

struct NamedColor {
  ZQNameEnum name;
  unsigned int rgb;
  bool preferred;  // the spelling that the reverse look-up gives for its value
};

// The named colours in alphabetical order. Where one value has several names, the reverse
// look-up gives the "gray" spellings, "cyan" and "magenta".
constexpr NamedColor kNamedColors[] = {
    {ZQN_aliceblue, 0xF0F8FFu, true},
    {ZQN_antiquewhite, 0xFAEBD7u, true},
    {ZQN_aqua, 0x00FFFFu, false},
    {ZQN_aquamarine, 0x7FFFD4u, true},
    {ZQN_azure, 0xF0FFFFu, true},
    {ZQN_beige, 0xF5F5DCu, true},
    {ZQN_bisque, 0xFFE4C4u, true},
    {ZQN_black, 0x000000u, true},
    {ZQN_blanchedalmond, 0xFFEBCDu, true},
    {ZQN_blue, 0x0000FFu, true},
    {ZQN_blueviolet, 0x8A2BE2u, true},
    {ZQN_brown, 0xA52A2Au, true},
    {ZQN_burlywood, 0xDEB887u, true},
    {ZQN_cadetblue, 0x5F9EA0u, true},
    {ZQN_chartreuse, 0x7FFF00u, true},
    {ZQN_chocolate, 0xD2691Eu, true},
    {ZQN_coral, 0xFF7F50u, true},
    {ZQN_cornflowerblue, 0x6495EDu, true},
    {ZQN_cornsilk, 0xFFF8DCu, true},
    {ZQN_crimson, 0xDC143Cu, true},
    {ZQN_cyan, 0x00FFFFu, true},
    {ZQN_darkblue, 0x00008Bu, true},
    {ZQN_darkcyan, 0x008B8Bu, true},
    {ZQN_darkgoldenrod, 0xB8860Bu, true},
    {ZQN_darkgray, 0xA9A9A9u, true},
    {ZQN_darkgreen, 0x006400u, true},
    {ZQN_darkgrey, 0xA9A9A9u, false},
    {ZQN_darkkhaki, 0xBDB76Bu, true},
    {ZQN_darkmagenta, 0x8B008Bu, true},
    {ZQN_darkolivegreen, 0x556B2Fu, true},
    {ZQN_darkorange, 0xFF8C00u, true},
    {ZQN_darkorchid, 0x9932CCu, true},
    {ZQN_darkred, 0x8B0000u, true},
    {ZQN_darksalmon, 0xE9967Au, true},
    {ZQN_darkseagreen, 0x8FBC8Bu, true},
    {ZQN_darkslateblue, 0x483D8Bu, true},
    {ZQN_darkslategray, 0x2F4F4Fu, true},
    {ZQN_darkslategrey, 0x2F4F4Fu, false},
    {ZQN_darkturquoise, 0x00CED1u, true},
    {ZQN_darkviolet, 0x9400D3u, true},
    {ZQN_deeppink, 0xFF1493u, true},
    {ZQN_deepskyblue, 0x00BFFFu, true},
    {ZQN_dimgray, 0x696969u, true},
    {ZQN_dimgrey, 0x696969u, false},
    {ZQN_dodgerblue, 0x1E90FFu, true},
    {ZQN_firebrick, 0xB22222u, true},
    {ZQN_floralwhite, 0xFFFAF0u, true},
    {ZQN_forestgreen, 0x228B22u, true},
    {ZQN_fuchsia, 0xFF00FFu, false},
    {ZQN_gainsboro, 0xDCDCDCu, true},
    {ZQN_ghostwhite, 0xF8F8FFu, true},
    {ZQN_gold, 0xFFD700u, true},
    {ZQN_goldenrod, 0xDAA520u, true},
    {ZQN_gray, 0x808080u, true},
    {ZQN_green, 0x008000u, true},
    {ZQN_greenyellow, 0xADFF2Fu, true},
    {ZQN_grey, 0x808080u, false},
    {ZQN_honeydew, 0xF0FFF0u, true},
    {ZQN_hotpink, 0xFF69B4u, true},
    {ZQN_indianred, 0xCD5C5Cu, true},
    {ZQN_indigo, 0x4B0082u, true},
    {ZQN_ivory, 0xFFFFF0u, true},
    {ZQN_khaki, 0xF0E68Cu, true},
    {ZQN_lavender, 0xE6E6FAu, true},
    {ZQN_lavenderblush, 0xFFF0F5u, true},
    {ZQN_lawngreen, 0x7CFC00u, true},
    {ZQN_lemonchiffon, 0xFFFACDu, true},
    {ZQN_lightblue, 0xADD8E6u, true},
    {ZQN_lightcoral, 0xF08080u, true},
    {ZQN_lightcyan, 0xE0FFFFu, true},
    {ZQN_lightgoldenrodyellow, 0xFAFAD2u, true},
    {ZQN_lightgray, 0xD3D3D3u, true},
    {ZQN_lightgreen, 0x90EE90u, true},
    {ZQN_lightgrey, 0xD3D3D3u, false},
    {ZQN_lightpink, 0xFFB6C1u, true},
    {ZQN_lightsalmon, 0xFFA07Au, true},
    {ZQN_lightseagreen, 0x20B2AAu, true},
    {ZQN_lightskyblue, 0x87CEFAu, true},
    {ZQN_lightslategray, 0x778899u, true},
    {ZQN_lightslategrey, 0x778899u, false},
    {ZQN_lightsteelblue, 0xB0C4DEu, true},
    {ZQN_lightyellow, 0xFFFFE0u, true},
    {ZQN_lime, 0x00FF00u, true},
    {ZQN_limegreen, 0x32CD32u, true},
    {ZQN_linen, 0xFAF0E6u, true},
    {ZQN_magenta, 0xFF00FFu, true},
    {ZQN_maroon, 0x800000u, true},
    {ZQN_mediumaquamarine, 0x66CDAAu, true},
    {ZQN_mediumblue, 0x0000CDu, true},
    {ZQN_mediumorchid, 0xBA55D3u, true},
    {ZQN_mediumpurple, 0x9370DBu, true},
    {ZQN_mediumseagreen, 0x3CB371u, true},
    {ZQN_mediumslateblue, 0x7B68EEu, true},
    {ZQN_mediumspringgreen, 0x00FA9Au, true},
    {ZQN_mediumturquoise, 0x48D1CCu, true},
    {ZQN_mediumvioletred, 0xC71585u, true},
    {ZQN_midnightblue, 0x191970u, true},
    {ZQN_mintcream, 0xF5FFFAu, true},
    {ZQN_mistyrose, 0xFFE4E1u, true},
    {ZQN_moccasin, 0xFFE4B5u, true},
    {ZQN_navajowhite, 0xFFDEADu, true},
    {ZQN_navy, 0x000080u, true},
    {ZQN_oldlace, 0xFDF5E6u, true},
    {ZQN_olive, 0x808000u, true},
    {ZQN_olivedrab, 0x6B8E23u, true},
    {ZQN_orange, 0xFFA500u, true},
    {ZQN_orangered, 0xFF4500u, true},
    {ZQN_orchid, 0xDA70D6u, true},
    {ZQN_palegoldenrod, 0xEEE8AAu, true},
    {ZQN_palegreen, 0x98FB98u, true},
    {ZQN_paleturquoise, 0xAFEEEEu, true},
    {ZQN_palevioletred, 0xDB7093u, true},
    {ZQN_papayawhip, 0xFFEFD5u, true},
    {ZQN_peachpuff, 0xFFDAB9u, true},
    {ZQN_peru, 0xCD853Fu, true},
    {ZQN_pink, 0xFFC0CBu, true},
    {ZQN_plum, 0xDDA0DDu, true},
    {ZQN_powderblue, 0xB0E0E6u, true},
    {ZQN_purple, 0x800080u, true},
    {ZQN_rebeccapurple, 0x663399u, true},
    {ZQN_red, 0xFF0000u, true},
    {ZQN_rosybrown, 0xBC8F8Fu, true},
    {ZQN_royalblue, 0x4169E1u, true},
    {ZQN_saddlebrown, 0x8B4513u, true},
    {ZQN_salmon, 0xFA8072u, true},
    {ZQN_sandybrown, 0xF4A460u, true},
    {ZQN_seagreen, 0x2E8B57u, true},
    {ZQN_seashell, 0xFFF5EEu, true},
    {ZQN_sienna, 0xA0522Du, true},
    {ZQN_silver, 0xC0C0C0u, true},
    {ZQN_skyblue, 0x87CEEBu, true},
    {ZQN_slateblue, 0x6A5ACDu, true},
    {ZQN_slategray, 0x708090u, true},
    {ZQN_slategrey, 0x708090u, false},
    {ZQN_snow, 0xFFFAFAu, true},
    {ZQN_springgreen, 0x00FF7Fu, true},
    {ZQN_steelblue, 0x4682B4u, true},
    {ZQN_tan, 0xD2B48Cu, true},
    {ZQN_teal, 0x008080u, true},
    {ZQN_thistle, 0xD8BFD8u, true},
    {ZQN_tomato, 0xFF6347u, true},
    {ZQN_turquoise, 0x40E0D0u, true},
    {ZQN_violet, 0xEE82EEu, true},
    {ZQN_wheat, 0xF5DEB3u, true},
    {ZQN_white, 0xFFFFFFu, true},
    {ZQN_whitesmoke, 0xF5F5F5u, true},
    {ZQN_yellow, 0xFFFF00u, true},
    {ZQN_yellowgreen, 0x9ACD32u, true},
};
static_assert(sizeof(kNamedColors) / sizeof(kNamedColors[0]) == 148, "148 named colours");

struct SystemColor {
  ZQNameEnum name;
  int index;  // the platform's system colour index
};

constexpr SystemColor kSystemColors[] = {
    {ZQN_scrollbar, 0},
    {ZQN_background, 1},
    {ZQN_activecaption, 2},
    {ZQN_inactivecaption, 3},
    {ZQN_menu, 4},
    {ZQN_window, 5},
    {ZQN_windowframe, 6},
    {ZQN_menutext, 7},
    {ZQN_windowtext, 8},
    {ZQN_captiontext, 9},
    {ZQN_activeborder, 10},
    {ZQN_inactiveborder, 11},
    {ZQN_appworkspace, 12},
    {ZQN_highlight, 13},
    {ZQN_highlighttext, 14},
    {ZQN_buttonface, 15},
    {ZQN_threedface, 15},
    {ZQN_buttonshadow, 16},
    {ZQN_threedshadow, 16},
    {ZQN_graytext, 17},
    {ZQN_buttontext, 18},
    {ZQN_inactivecaptiontext, 19},
    {ZQN_buttonhighlight, 20},
    {ZQN_threedhighlight, 20},
    {ZQN_threeddarkshadow, 21},
    {ZQN_threedlightshadow, 22},
    {ZQN_infotext, 23},
    {ZQN_infobackground, 24},
};

enum class RowKind { Special, K100, Named, System };

struct Row {
  RowKind kind;
  unsigned int value;  // rgb, or the system colour index
};

struct ColorTables {
  std::unordered_map<int, Row> byName;
  std::unordered_map<unsigned int, ZQNameEnum> byValue;

  ColorTables() {
    byName.reserve(200);
    byName.emplace(ZQN_transparent, Row{RowKind::Special, ZQColor::RGB_TRANSPARENT});
    byName.emplace(ZQN_invert, Row{RowKind::Special, ZQColor::RGB_INVERT});
    byName.emplace(ZQN_currentColor, Row{RowKind::Special, ZQColor::RGB_CURRENT_COLOR});
    byName.emplace(ZQN_currentcolor, Row{RowKind::Special, ZQColor::RGB_CURRENT_COLOR});
    byName.emplace(ZQN_k100, Row{RowKind::K100, 0});
    for (const NamedColor& c : kNamedColors) {
      byName.emplace(c.name, Row{RowKind::Named, c.rgb});
      if (c.preferred) byValue.emplace(c.rgb, c.name);
    }
    for (const SystemColor& c : kSystemColors) {
      byName.emplace(c.name, Row{RowKind::System, static_cast<unsigned int>(c.index)});
    }
  }
};

const ColorTables& tables() {
  static const ColorTables t;
  return t;
}

const Row* findRow(ZQNameEnum name) {
  const auto& map = tables().byName;
  auto it = map.find(name);
  return it == map.end() ? nullptr : &it->second;
}

// printf in the C locale, for the numbers of the text forms.
UnicodeString format(const char* fmt, ...) {
  char buffer[256];
  va_list args;
  va_start(args, fmt);
  int n = std::vsnprintf(buffer, sizeof buffer, fmt, args);
  va_end(args);
  if (n < 0) return UnicodeString();
  return UnicodeString(buffer, std::min(n, static_cast<int>(sizeof buffer) - 1), US_INV);
}

// A byte of v * 255 + 0.5 truncated and clipped; a NaN gives 0.
int clippedByte(float v) {
  float x = v * 255.0f + 0.5f;
  if (!(x >= 1.0f)) return 0;  // also below 0 and NaN
  if (x >= 255.0f) return 255;
  return static_cast<int>(x);
}

}  // namespace

// ---- construction ----

ZQColor::ZQColor() noexcept : m_rgb(0), m_alpha(kNoAlpha) {}

ZQColor::ZQColor(unsigned int rgb) noexcept : m_rgb(rgb), m_alpha(kNoAlpha) {}

ZQColor::ZQColor(RGBCOLOR rgb) noexcept : ZQColor(static_cast<unsigned int>(rgb)) {}

ZQColor::ZQColor(int rgb) noexcept : ZQColor(static_cast<unsigned int>(rgb)) {}

ZQColor::ZQColor(int r, int g, int b) noexcept : ZQColor(getRGB(r, g, b)) {}

ZQColor::ZQColor(float r, float g, float b) noexcept
    : ZQColor(getRGB(round255(r), round255(g), round255(b))) {}

ZQColor::ZQColor(ZQNameEnum name) : ZQColor(ZQName(name)) {}

ZQColor::ZQColor(ZQName name) : m_rgb(RGB_INVALID), m_alpha(kNoAlpha) {
  const Row* row = findRow(name);
  if (!row) {
    // Every row is a built-in name, so the lower-case form is looked up without interning it:
    // unknown colour names do not grow the name table.
    UnicodeString lower(name.toString());
    lower.toLower(icu::Locale::getRoot());
    ZQNameEnum lowerName = ZQNameTable::getBuiltinNameEnum(lower);
    if (lowerName != name) row = findRow(lowerName);
  }
  if (!row) return;  // the invalid colour
  switch (row->kind) {
    case RowKind::Special:
    case RowKind::Named:
      m_rgb = row->value;
      break;
    case RowKind::K100:
      *this = ZQColor(0.0f, 0.0f, 0.0f, 1.0f);
      break;
    case RowKind::System:
      m_rgb = reverseRGB(platform::systemColor(static_cast<int>(row->value)));
      break;
  }
}

ZQColor::ZQColor(float gray) noexcept
    : m_rgb(0), m_alpha(kNoAlpha), m_profileType(ZQN_hash_GRAYSCALE) {
  gray = zeroone(gray);
  int v = round255(gray);
  m_rgb = getRGB(v, v, v);
  setReal(0, gray);
}

ZQColor::ZQColor(const ZQColor& rgb, float gray)
    : m_rgb(rgb.m_rgb), m_alpha(kNoAlpha), m_profileType(ZQN_hash_GRAYSCALE) {
  setReal(0, zeroone(gray));
  setFlag(kGrayFlag, true);
}

ZQColor::ZQColor(float c, float m, float y, float k) noexcept
    : m_rgb(0), m_alpha(kNoAlpha), m_profileType(ZQN_hash_CMYK) {
  c = zeroone(c);
  m = zeroone(m);
  y = zeroone(y);
  k = zeroone(k);
  m_rgb = cmyk2rgb(c, m, y, k);
  setReal(0, c);
  setReal(4, m);
  setReal(8, y);
  setReal(12, k);
}

ZQColor::ZQColor(const ZQColor& rgb, float c, float m, float y, float k)
    : m_rgb(rgb.m_rgb), m_alpha(rgb.m_alpha), m_profileType(ZQN_hash_CMYK) {
  setReal(0, zeroone(c));
  setReal(4, zeroone(m));
  setReal(8, zeroone(y));
  setReal(12, zeroone(k));
  setFlag(kCMYKFlag, true);
}

void ZQColor::setSeparation(const UnicodeString& name, float tint, float c, float m, float y,
                            float k) {
  m_profileType = ZQName(ZQN_hash_SEPARATION);
  m_name = name.isEmpty() ? UnicodeString(u"All") : name;
  clearUnion();
  setReal(0, zeroone(tint));
  setReal(4, zeroone(c));
  setReal(8, zeroone(m));
  setReal(12, zeroone(y));
  setReal(16, zeroone(k));
  setFlag(kSepTintFlag, true);
}

ZQColor::ZQColor(const UnicodeString& name, float tint) : m_rgb(0), m_alpha(kNoAlpha) {
  setSeparation(name, tint, 1.0f, 1.0f, 1.0f, 1.0f);
  int v = round255(1.0f - getSeparationTint());
  m_rgb = getRGB(v, v, v);
}

ZQColor::ZQColor(const UnicodeString& name, float tint, float c, float m, float y, float k)
    : m_rgb(0), m_alpha(kNoAlpha) {
  setSeparation(name, tint, c, m, y, k);
  setFlag(kSepCMYKFlag, true);
  float t = getSeparationTint();
  m_rgb = cmyk2rgb(getSeparationC() * t, getSeparationM() * t, getSeparationY() * t,
                   getSeparationK() * t);
}

ZQColor::ZQColor(const ZQColor& rgb, const UnicodeString& name, float tint)
    : m_rgb(rgb.m_rgb), m_alpha(rgb.m_alpha) {
  setSeparation(name, tint, 1.0f, 1.0f, 1.0f, 1.0f);
  setFlag(kSepRGBFlag, true);
}

ZQColor::ZQColor(const ZQColor& rgb, const UnicodeString& name, float tint, float c, float m,
                 float y, float k)
    : m_rgb(rgb.m_rgb), m_alpha(rgb.m_alpha) {
  setSeparation(name, tint, c, m, y, k);
  setFlag(kSepRGBFlag, true);
  setFlag(kSepCMYKFlag, true);
}

ZQColor::ZQColor(const ZQColor& rgb, const UnicodeString& profile, float v0, float v1, float v2,
                 float v3)
    : m_rgb(rgb.m_rgb), m_alpha(rgb.m_alpha), m_profileType(ZQN_icc_color), m_name(profile) {
  setReal(0, v0);
  setReal(4, v1);
  setReal(8, v2);
  setReal(12, v3);
}

ZQColor::ZQColor(const ZQColor& other)
    : m_rgb(other.m_rgb),
      m_alpha(other.m_alpha),
      m_profileType(other.m_profileType),
      m_name(other.m_name) {
  std::memcpy(m_union, other.m_union, sizeof m_union);
}

ZQColor& ZQColor::operator=(const ZQColor& other) {
  if (this == &other) return *this;
  m_rgb = other.m_rgb;
  m_alpha = other.m_alpha;
  m_profileType = other.m_profileType;
  m_name = other.m_name;
  std::memcpy(m_union, other.m_union, sizeof m_union);
  return *this;
}

// ---- members ----

float ZQColor::real(int offset) const {
  float v;
  std::memcpy(&v, m_union + offset, sizeof v);
  return v;
}

void ZQColor::setReal(int offset, float v) { std::memcpy(m_union + offset, &v, sizeof v); }

void ZQColor::clearUnion() { std::memset(m_union, 0, sizeof m_union); }

void ZQColor::clearAlpha() { m_alpha = kNoAlpha; }

float ZQColor::getICCValue(int index) const {
  if (index < 0 || index > 3) return std::numeric_limits<float>::quiet_NaN();
  return real(index * 4);
}

float ZQColor::getRex() const { return isRGBex() ? real(0) : getR() / 255.0f; }
float ZQColor::getGex() const { return isRGBex() ? real(4) : getG() / 255.0f; }
float ZQColor::getBex() const { return isRGBex() ? real(8) : getB() / 255.0f; }

bool ZQColor::isRegistrationName() const {
  return m_name.caseCompare(UnicodeString(true, u"all", 3), U_FOLD_CASE_DEFAULT) == 0;
}

bool ZQColor::isInvalid() const {
  if (m_rgb >= 0x01000000u && m_rgb != RGB_INVERT && m_rgb != RGB_TRANSPARENT &&
      m_rgb != RGB_CURRENT_COLOR) {
    return true;
  }
  if (isICCColorProfile()) {
    switch (ZQNameTable::getBuiltinNameEnum(m_name)) {
      case ZQN_hash_CMYK:
      case ZQN_hash_GRAYSCALE:
      case ZQN_hash_REGISTRATION:
      case ZQN_hash_SEPARATION:
      case ZQN_hash_SPOTCOLOR:
        return false;
      default:
        return m_name.startsWith(UnicodeString(u'#'));
    }
  }
  return false;
}

bool ZQColor::isK100() const {
  return isCMYK() && getC() == 0.0f && getM() == 0.0f && getY() == 0.0f && getK() == 1.0f &&
         !(m_alpha < 1.0f);
}

// ---- setting ----

void ZQColor::setRGBex(float r, float g, float b) {
  clearUnion();
  m_profileType = ZQName();
  m_name.remove();
  setReal(0, r);
  setReal(4, g);
  setReal(8, b);
  setFlag(kRGBexFlag, true);
  m_rgb = getRGB(clippedByte(r), clippedByte(g), clippedByte(b));
}

void ZQColor::setHSL(float h, float s, float l) {
  clearUnion();
  m_profileType = ZQName(ZQN_hash_HSL);
  m_name.remove();
  h = std::fmod(std::fmod(h, 360.0f) + 360.0f, 360.0f);
  s = zeroone(s);
  l = zeroone(l);
  setReal(0, h);
  setReal(4, s);
  setReal(8, l);
  m_rgb = hsl2rgb(h, s, l);
}

bool ZQColor::setAlphaValue(const ZQValue* alpha) {
  if (!alpha) return true;
  float a;
  if (alpha->isNumber()) {
    a = alpha->getRealValue(ZQUNIT_NUMBER);
  } else if (alpha->isPercentage()) {
    a = alpha->getRealValue(ZQUNIT_PERCENT) / 100.0f;
  } else {
    return false;
  }
  m_alpha = zeroone(a);
  return true;
}

bool ZQColor::setRGB(const ZQValue& r, const ZQValue& g, const ZQValue& b, const ZQValue* alpha) {
  if (r.isNumber() && g.isNumber() && b.isNumber()) {
    auto byte = [](const ZQValue& v) { return std::clamp(v.getIntegerValue(), 0, 255); };
    *this = ZQColor(byte(r), byte(g), byte(b));
  } else if (r.isPercentage() && g.isPercentage() && b.isPercentage()) {
    auto part = [](const ZQValue& v) {
      return std::clamp(v.getRealValue(ZQUNIT_PERCENT) / 100.0f, 0.0f, 1.0f);
    };
    ZQColor c;
    c.setRGBex(part(r), part(g), part(b));
    *this = c;
  } else if (r.isName() && g.isNull() && b.isNull()) {
    *this = ZQColor(r.getNameValue());
  } else {
    return false;
  }
  return setAlphaValue(alpha);
}

bool ZQColor::setHSL(const ZQValue& h, const ZQValue& s, const ZQValue& l, const ZQValue* alpha) {
  if (!h.isNumber() || !s.isPercentage() || !l.isPercentage()) return false;
  ZQColor c;
  c.setHSL(h.getRealValue(ZQUNIT_NUMBER), s.getRealValue(ZQUNIT_PERCENT) / 100.0f,
           l.getRealValue(ZQUNIT_PERCENT) / 100.0f);
  *this = c;
  return setAlphaValue(alpha);
}

bool ZQColor::setCMYK(const ZQValue& c, const ZQValue& m, const ZQValue& y, const ZQValue& k,
                      const ZQValue* alpha) {
  const ZQValue* parts[] = {&c, &m, &y, &k};
  float v[4];
  for (int i = 0; i < 4; ++i) {
    const ZQValue& p = *parts[i];
    if (p.isNumber()) {
      v[i] = p.getRealValue(ZQUNIT_NUMBER);
    } else if (p.isPercentage()) {
      v[i] = p.getRealValue(ZQUNIT_PERCENT) / 100.0f;
    } else {
      return false;
    }
  }
  *this = ZQColor(v[0], v[1], v[2], v[3]);
  return setAlphaValue(alpha);
}

// ---- separations ----

unsigned int ZQColor::getSeparationRGB() const {
  float t = getSeparationTint();
  if (t >= 1.0f) return m_rgb;
  if (hasSeparationRGB() && !hasSeparationCMYK()) {
    ZQColor c = rgb2cmyk(m_rgb);
    return cmyk2rgb(c.getC() * t, c.getM() * t, c.getY() * t, c.getK() * t);
  }
  return cmyk2rgb(getSeparationC() * t, getSeparationM() * t, getSeparationY() * t,
                  getSeparationK() * t);
}

ZQColor& ZQColor::deleteSeparationCMYK() {
  setFlag(kSepCMYKFlag, false);
  return *this;
}

ZQColor& ZQColor::deleteSeparationRGB() {
  setFlag(kSepRGBFlag, false);
  return *this;
}

void ZQColor::adjustSeparationFlags(bool rgb, bool tint, bool cmyk, bool update) {
  setFlag(kSepRGBFlag, rgb);
  setFlag(kSepTintFlag, tint);
  setFlag(kSepCMYKFlag, cmyk);
  if (update && !rgb && cmyk) {
    float t = getSeparationTint();
    m_rgb = cmyk2rgb(getSeparationC() * t, getSeparationM() * t, getSeparationY() * t,
                     getSeparationK() * t);
  }
}

// ---- derived colours ----

ZQColor ZQColor::getDark() const { return ZQColor(getR() * 2 / 3, getG() * 2 / 3, getB() * 2 / 3); }

ZQColor ZQColor::getLight() const {
  return ZQColor(255 - (255 - getR()) / 2, 255 - (255 - getG()) / 2, 255 - (255 - getB()) / 2);
}

ZQColor ZQColor::invert() const {
  if (isTransparent()) return ZQColor(0u);
  if (isInvalid()) return getTransparent();
  return ZQColor(~m_rgb & 0xFFFFFFu);
}

// ---- names and text ----

ZQName ZQColor::getColorName() const {
  if (m_rgb == RGB_TRANSPARENT) return ZQName(ZQN_transparent);
  if (m_rgb == RGB_INVERT) return ZQName(ZQN_invert);
  if (m_rgb == RGB_CURRENT_COLOR) return ZQName(ZQN_currentColor);
  if (hasAlpha()) return ZQName();
  if (isRGB() && !isRGBex()) {
    const auto& map = tables().byValue;
    auto it = map.find(m_rgb);
    return it == map.end() ? ZQName() : ZQName(it->second);
  }
  if (isK100()) return ZQName(ZQN_k100);
  return ZQName();
}

UnicodeString ZQColor::toString(bool css) const { return toString(css, false); }

UnicodeString ZQColor::toString(bool css, bool noName) const {
  if (m_rgb == RGB_TRANSPARENT) return UnicodeString(true, u"transparent", -1);
  if (m_rgb == RGB_INVERT) return UnicodeString(true, u"invert", -1);
  if (m_rgb == RGB_CURRENT_COLOR) return UnicodeString(true, u"currentColor", -1);
  if (isRGB() && isInvalid()) return UnicodeString();
  if (css && !noName) {
    ZQName name = getColorName();
    if (!name.isEmpty()) return name.toString();
  }
  ZQUtil::setLocaleC();
  const unsigned r = static_cast<unsigned>(getR());
  const unsigned g = static_cast<unsigned>(getG());
  const unsigned b = static_cast<unsigned>(getB());
  const double alpha = m_alpha;
  UnicodeString t = format("#%06X", m_rgb);

  if (isRGB() || (isHSL() && css)) {
    if (hasAlpha()) {
      if (css || !isRGBex()) return format("rgba(%u,%u,%u,%g)", r, g, b, alpha);
      return format("rgba(%g%%,%g%%,%g%%,%g)", getRex() * 100.0f, getGex() * 100.0f,
                    getBex() * 100.0f, alpha);
    }
    if (!css && isRGBex()) {
      return format("rgb(%g%%,%g%%,%g%%)", getRex() * 100.0f, getGex() * 100.0f, getBex() * 100.0f);
    }
    return t;
  }
  if (isHSL()) {
    if (hasAlpha()) {
      return format("hsla(%g,%g%%,%g%%,%g)", getH(), getS() * 100.0f, getL() * 100.0f, alpha);
    }
    return format("hsl(%g,%g%%,%g%%)", getH(), getS() * 100.0f, getL() * 100.0f);
  }
  if (isICCColorProfile()) {
    UnicodeString text =
        css ? t + UnicodeString(u" icc-color(") : format("rgb-icc(%u,%u,%u,", r, g, b);
    text += m_name;
    text += format(",%g,%g,%g,%g)", real(0), real(4), real(8), real(12));
    return text;
  }
  if (isCMYK()) {
    if (css) {
      return t + format(" icc-color(#CMYK,%g,%g,%g,%g)", getC(), getM(), getY(), getK());
    }
    if (hasAlpha()) {
      return format("cmyka(%g,%g,%g,%g,%g)", getC(), getM(), getY(), getK(), alpha);
    }
    if (hasCMYKRGB()) {
      return format("rgb-icc(%u,%u,%u,#CMYK,%g,%g,%g,%g)", r, g, b, getC(), getM(), getY(), getK());
    }
    return format("cmyk(%g,%g,%g,%g)", getC(), getM(), getY(), getK());
  }
  if (isGrayscale()) {
    if (css) return t + format(" icc-color(#GRAYSCALE,%g)", getGrayscale());
    if (hasGrayscaleRGB())
      return format("rgb-icc(%u,%u,%u,#GRAYSCALE,%g)", r, g, b, getGrayscale());
    return format("rgb-icc(#GRAYSCALE,%g)", getGrayscale());
  }
  if (isSeparation()) {
    UnicodeString text;
    if (css) {
      text = t + UnicodeString(u" icc-color(");
    } else {
      text = UnicodeString(u"rgb-icc(");
      if (hasSeparationRGB()) text += format("%u,%u,%u,", r, g, b);
    }
    if (isRegistrationName()) {
      text += u"#REGISTRATION";
    } else {
      text += u"#SEPARATION,\"";
      text += m_name;
      text += u'"';
    }
    if (hasSeparationTint()) text += format(",%g", getSeparationTint());
    if (hasSeparationCMYK()) {
      text += format(",%g,%g,%g,%g", getSeparationC(), getSeparationM(), getSeparationY(),
                     getSeparationK());
    }
    text += u')';
    return text;
  }
  return t;
}

// ---- equality ----

bool ZQColor::operator==(const ZQColor& other) const {
  if (m_rgb != other.m_rgb || m_profileType != other.m_profileType) return false;
  if (hasAlpha() != other.hasAlpha()) return false;
  if (hasAlpha() && m_alpha != other.m_alpha) return false;
  switch (static_cast<ZQNameEnum>(m_profileType)) {
    case ZQN_EMPTY:
      if (!isRGBex() && !other.isRGBex()) return true;
      return getRex() == other.getRex() && getGex() == other.getGex() && getBex() == other.getBex();
    case ZQN_hash_CMYK:
      return std::memcmp(m_union, other.m_union, 16) == 0;
    case ZQN_hash_GRAYSCALE:
      return std::memcmp(m_union, other.m_union, 8) == 0;
    case ZQN_hash_HSL:
      return std::memcmp(m_union, other.m_union, 8) == 0 && real(8) == other.real(8);
    case ZQN_hash_SEPARATION:
      if (!(isRegistration() && other.isRegistration()) && m_name != other.m_name) return false;
      return std::memcmp(m_union, other.m_union, 23) == 0;
    case ZQN_icc_color:
      return getICCColorProfileName() == other.getICCColorProfileName() &&
             real(0) == other.real(0) && real(4) == other.real(4) && real(8) == other.real(8) &&
             real(12) == other.real(12);
    default:
      return std::memcmp(m_union, other.m_union, sizeof m_union) == 0;
  }
}

// ---- conversions ----

float ZQColor::zeroone(float v) {
  if (v <= 0.0f) return 0.0f;
  if (v > 1.0f) return 1.0f;
  return v;
}

int ZQColor::round255(float v) {
  if (v <= 0.0f) return 0;
  if (v >= 1.0f) return 255;
  if (v != v) return 0;  // a NaN paints nothing rather than an undefined byte
  return static_cast<int>(v * 255.0f + 0.5f);
}

unsigned int ZQColor::cmyk2rgb(float c, float m, float y, float k) {
  auto channel = [k](float v) { return round255(1.0f - std::min(1.0f, (1.0f - k) * v + k)); };
  return getRGB(channel(c), channel(m), channel(y));
}

ZQColor ZQColor::rgb2cmyk(unsigned int rgb) {
  float c = 1.0f - getR(rgb) / 255.0f;
  float m = 1.0f - getG(rgb) / 255.0f;
  float y = 1.0f - getB(rgb) / 255.0f;
  float k = std::min(c, std::min(m, y));
  if (k >= 1.0f) return ZQColor(0.0f, 0.0f, 0.0f, k);
  return ZQColor((c - k) / (1.0f - k), (m - k) / (1.0f - k), (y - k) / (1.0f - k), k);
}

ZQColor ZQColor::rgb2cmyk(unsigned int rgb, float under, float k) {
  return ZQColor(1.0f - getR(rgb) / 255.0f - under, 1.0f - getG(rgb) / 255.0f - under,
                 1.0f - getB(rgb) / 255.0f - under, k);
}

ZQColor ZQColor::rgb2gray(unsigned int rgb) {
  return ZQColor(getR(rgb) * 0.3f / 255.0f + getG(rgb) * 0.59f / 255.0f +
                 getB(rgb) * 0.11f / 255.0f);
}

unsigned int ZQColor::hsl2rgb(float h, float s, float l) {
  const float t = h / 360.0f;
  const float m2 = l <= 0.5f ? (s + 1.0f) * l : s + l - s * l;
  const float m1 = 2.0f * l - m2;
  auto channel = [m1, m2](float p) {
    // Wrapped into 0 to 1 whatever the hue; for a hue from 0 to 360 this is one step of +1 or -1.
    if (p < 0.0f || p > 1.0f) p -= std::floor(p);
    if (p < 1.0f / 6.0f) return (m2 - m1) * p * 6.0f + m1;
    if (p < 0.5f) return m2;
    if (p < 2.0f / 3.0f) return (m2 - m1) * (2.0f / 3.0f - p) * 6.0f + m1;
    return m1;
  };
  return getRGB(round255(channel(t + 1.0f / 3.0f)), round255(channel(t)),
                round255(channel(t - 1.0f / 3.0f)));
}

}  // namespace ZQCommonNS
