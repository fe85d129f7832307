// Colours for print: sRGB with or without alpha, device CMYK, gray, HSL, separations, ICC
// colours, and the non-colours transparent, invert and currentColor.
#pragma once

#include <cstdint>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQValue.h"

namespace ZQCommonNS {

/// One colour of any kind. The rgb field always holds a packed RGB approximation, so that a
/// program that knows nothing of the colour's space can still draw it.
class ZQCOMMON_API ZQColor {
 public:
  /// The packed values of the named colours.
  enum RGBCOLOR : unsigned int {
    RGB_ALICEBLUE = 0xF0F8FF,
    RGB_ANTIQUEWHITE = 0xFAEBD7,
    RGB_AQUA = 0x00FFFF,
    RGB_AQUAMARINE = 0x7FFFD4,
    RGB_AZURE = 0xF0FFFF,
    RGB_BEIGE = 0xF5F5DC,
    RGB_BISQUE = 0xFFE4C4,
    RGB_BLACK = 0x000000,
    RGB_BLANCHEDALMOND = 0xFFEBCD,
    RGB_BLUE = 0x0000FF,
    RGB_BLUEVIOLET = 0x8A2BE2,
    RGB_BROWN = 0xA52A2A,
    RGB_BURLYWOOD = 0xDEB887,
    RGB_CADETBLUE = 0x5F9EA0,
    RGB_CHARTREUSE = 0x7FFF00,
    RGB_CHOCOLATE = 0xD2691E,
    RGB_CORAL = 0xFF7F50,
    RGB_CORNFLOWERBLUE = 0x6495ED,
    RGB_CORNSILK = 0xFFF8DC,
    RGB_CRIMSON = 0xDC143C,
    RGB_CYAN = 0x00FFFF,
    RGB_DARKBLUE = 0x00008B,
    RGB_DARKCYAN = 0x008B8B,
    RGB_DARKGOLDENROD = 0xB8860B,
    RGB_DARKGRAY = 0xA9A9A9,
    RGB_DARKGREEN = 0x006400,
    RGB_DARKGREY = 0xA9A9A9,
    RGB_DARKKHAKI = 0xBDB76B,
    RGB_DARKMAGENTA = 0x8B008B,
    RGB_DARKOLIVEGREEN = 0x556B2F,
    RGB_DARKORANGE = 0xFF8C00,
    RGB_DARKORCHID = 0x9932CC,
    RGB_DARKRED = 0x8B0000,
    RGB_DARKSALMON = 0xE9967A,
    RGB_DARKSEAGREEN = 0x8FBC8B,
    RGB_DARKSLATEBLUE = 0x483D8B,
    RGB_DARKSLATEGRAY = 0x2F4F4F,
    RGB_DARKSLATEGREY = 0x2F4F4F,
    RGB_DARKTURQUOISE = 0x00CED1,
    RGB_DARKVIOLET = 0x9400D3,
    RGB_DEEPPINK = 0xFF1493,
    RGB_DEEPSKYBLUE = 0x00BFFF,
    RGB_DIMGRAY = 0x696969,
    RGB_DIMGREY = 0x696969,
    RGB_DODGERBLUE = 0x1E90FF,
    RGB_FIREBRICK = 0xB22222,
    RGB_FLORALWHITE = 0xFFFAF0,
    RGB_FORESTGREEN = 0x228B22,
    RGB_FUCHSIA = 0xFF00FF,
    RGB_GAINSBORO = 0xDCDCDC,
    RGB_GHOSTWHITE = 0xF8F8FF,
    RGB_GOLD = 0xFFD700,
    RGB_GOLDENROD = 0xDAA520,
    RGB_GRAY = 0x808080,
    RGB_GREEN = 0x008000,
    RGB_GREENYELLOW = 0xADFF2F,
    RGB_GREY = 0x808080,
    RGB_HONEYDEW = 0xF0FFF0,
    RGB_HOTPINK = 0xFF69B4,
    RGB_INDIANRED = 0xCD5C5C,
    RGB_INDIGO = 0x4B0082,
    RGB_IVORY = 0xFFFFF0,
    RGB_KHAKI = 0xF0E68C,
    RGB_LAVENDER = 0xE6E6FA,
    RGB_LAVENDERBLUSH = 0xFFF0F5,
    RGB_LAWNGREEN = 0x7CFC00,
    RGB_LEMONCHIFFON = 0xFFFACD,
    RGB_LIGHTBLUE = 0xADD8E6,
    RGB_LIGHTCORAL = 0xF08080,
    RGB_LIGHTCYAN = 0xE0FFFF,
    RGB_LIGHTGOLDENRODYELLOW = 0xFAFAD2,
    RGB_LIGHTGRAY = 0xD3D3D3,
    RGB_LIGHTGREEN = 0x90EE90,
    RGB_LIGHTGREY = 0xD3D3D3,
    RGB_LIGHTPINK = 0xFFB6C1,
    RGB_LIGHTSALMON = 0xFFA07A,
    RGB_LIGHTSEAGREEN = 0x20B2AA,
    RGB_LIGHTSKYBLUE = 0x87CEFA,
    RGB_LIGHTSLATEGRAY = 0x778899,
    RGB_LIGHTSLATEGREY = 0x778899,
    RGB_LIGHTSTEELBLUE = 0xB0C4DE,
    RGB_LIGHTYELLOW = 0xFFFFE0,
    RGB_LIME = 0x00FF00,
    RGB_LIMEGREEN = 0x32CD32,
    RGB_LINEN = 0xFAF0E6,
    RGB_MAGENTA = 0xFF00FF,
    RGB_MAROON = 0x800000,
    RGB_MEDIUMAQUAMARINE = 0x66CDAA,
    RGB_MEDIUMBLUE = 0x0000CD,
    RGB_MEDIUMORCHID = 0xBA55D3,
    RGB_MEDIUMPURPLE = 0x9370DB,
    RGB_MEDIUMSEAGREEN = 0x3CB371,
    RGB_MEDIUMSLATEBLUE = 0x7B68EE,
    RGB_MEDIUMSPRINGGREEN = 0x00FA9A,
    RGB_MEDIUMTURQUOISE = 0x48D1CC,
    RGB_MEDIUMVIOLETRED = 0xC71585,
    RGB_MIDNIGHTBLUE = 0x191970,
    RGB_MINTCREAM = 0xF5FFFA,
    RGB_MISTYROSE = 0xFFE4E1,
    RGB_MOCCASIN = 0xFFE4B5,
    RGB_NAVAJOWHITE = 0xFFDEAD,
    RGB_NAVY = 0x000080,
    RGB_OLDLACE = 0xFDF5E6,
    RGB_OLIVE = 0x808000,
    RGB_OLIVEDRAB = 0x6B8E23,
    RGB_ORANGE = 0xFFA500,
    RGB_ORANGERED = 0xFF4500,
    RGB_ORCHID = 0xDA70D6,
    RGB_PALEGOLDENROD = 0xEEE8AA,
    RGB_PALEGREEN = 0x98FB98,
    RGB_PALETURQUOISE = 0xAFEEEE,
    RGB_PALEVIOLETRED = 0xDB7093,
    RGB_PAPAYAWHIP = 0xFFEFD5,
    RGB_PEACHPUFF = 0xFFDAB9,
    RGB_PERU = 0xCD853F,
    RGB_PINK = 0xFFC0CB,
    RGB_PLUM = 0xDDA0DD,
    RGB_POWDERBLUE = 0xB0E0E6,
    RGB_PURPLE = 0x800080,
    RGB_REBECCAPURPLE = 0x663399,
    RGB_RED = 0xFF0000,
    RGB_ROSYBROWN = 0xBC8F8F,
    RGB_ROYALBLUE = 0x4169E1,
    RGB_SADDLEBROWN = 0x8B4513,
    RGB_SALMON = 0xFA8072,
    RGB_SANDYBROWN = 0xF4A460,
    RGB_SEAGREEN = 0x2E8B57,
    RGB_SEASHELL = 0xFFF5EE,
    RGB_SIENNA = 0xA0522D,
    RGB_SILVER = 0xC0C0C0,
    RGB_SKYBLUE = 0x87CEEB,
    RGB_SLATEBLUE = 0x6A5ACD,
    RGB_SLATEGRAY = 0x708090,
    RGB_SLATEGREY = 0x708090,
    RGB_SNOW = 0xFFFAFA,
    RGB_SPRINGGREEN = 0x00FF7F,
    RGB_STEELBLUE = 0x4682B4,
    RGB_TAN = 0xD2B48C,
    RGB_TEAL = 0x008080,
    RGB_THISTLE = 0xD8BFD8,
    RGB_TOMATO = 0xFF6347,
    RGB_TURQUOISE = 0x40E0D0,
    RGB_VIOLET = 0xEE82EE,
    RGB_WHEAT = 0xF5DEB3,
    RGB_WHITE = 0xFFFFFF,
    RGB_WHITESMOKE = 0xF5F5F5,
    RGB_YELLOW = 0xFFFF00,
    RGB_YELLOWGREEN = 0x9ACD32,
  };

  /// The special values of the rgb field.
  static constexpr unsigned int RGB_TRANSPARENT = 0xFFFFFFFFu;
  static constexpr unsigned int RGB_INVERT = 0xFFFFFFFEu;
  static constexpr unsigned int RGB_CURRENT_COLOR = 0xFE000000u;
  static constexpr unsigned int RGB_INVALID = 0xFF000000u;

  /// Black RGB, no alpha.
  ZQColor() noexcept;
  /// RGB of a packed 0x00RRGGBB value, no alpha.
  ZQColor(unsigned int rgb) noexcept;
  ZQColor(RGBCOLOR rgb) noexcept;
  /// The same for a packed value written as a signed literal.
  ZQColor(int rgb) noexcept;
  /// RGB of the low bytes of each.
  ZQColor(int r, int g, int b) noexcept;
  /// RGB of each float from 0 to 1, rounded to a byte; the result is not RGBex.
  ZQColor(float r, float g, float b) noexcept;
  /// The colour of a name: a named, system or special colour, "k100", else invalid.
  ZQColor(ZQName name);
  ZQColor(ZQNameEnum name);
  /// The value's getColorValue(): transparent for a value that holds no colour.
  explicit ZQColor(const ZQValue& value);
  /// Gray from 0 to 1, its rgb computed.
  ZQColor(float gray) noexcept;
  /// Gray with the author's rgb from `rgb`, no alpha.
  ZQColor(const ZQColor& rgb, float gray);
  /// Device CMYK, each from 0 to 1, its rgb computed.
  ZQColor(float c, float m, float y, float k) noexcept;
  /// Device CMYK with the author's rgb and the alpha of `rgb`.
  ZQColor(const ZQColor& rgb, float c, float m, float y, float k);
  /// A separation of `name` ("All" if empty) at `tint`, its rgb computed.
  ZQColor(const UnicodeString& name, float tint);
  /// A separation with its CMYK equivalent, the rgb computed from the tinted CMYK.
  ZQColor(const UnicodeString& name, float tint, float c, float m, float y, float k);
  /// A separation with the author's rgb and the alpha of `rgb`.
  ZQColor(const ZQColor& rgb, const UnicodeString& name, float tint);
  /// A separation with the author's rgb, the tint and the CMYK equivalent all given.
  ZQColor(const ZQColor& rgb, const UnicodeString& name, float tint, float c, float m, float y,
          float k);
  /// An ICC colour of `profile` with up to four component values kept as given, and the rgb
  /// and alpha of `rgb`.
  ZQColor(const ZQColor& rgb, const UnicodeString& profile, float v0, float v1, float v2, float v3);
  ZQColor(const ZQColor& other);
  ZQColor& operator=(const ZQColor& other);

  // The special colours.
  static ZQColor getTransparent() { return ZQColor(RGB_TRANSPARENT); }
  static ZQColor getInvert() { return ZQColor(RGB_INVERT); }
  static ZQColor getCurrentColor() { return ZQColor(RGB_CURRENT_COLOR); }
  static ZQColor getInvalidColor() { return ZQColor(RGB_INVALID); }
  bool isTransparent() const { return m_rgb == RGB_TRANSPARENT; }
  bool isCurrentColor() const { return m_rgb == RGB_CURRENT_COLOR; }
  /// An rgb beyond 24 bits that is none of the special values, or an ICC colour whose
  /// profile name is a "#" name other than the built-in profiles.
  bool isInvalid() const;

  // Alpha: from 0 to 1, or the largest float for none.
  bool hasAlpha() const { return m_alpha >= 0.0f && m_alpha <= 1.0f; }
  float getAlpha() const { return m_alpha; }
  void setAlpha(float alpha) { m_alpha = alpha; }
  /// Stores alpha / 255.
  void setAlpha(int alpha) { m_alpha = static_cast<float>(alpha) / 255.0f; }
  void clearAlpha();

  // The kind.
  ZQName getProfileType() const { return m_profileType; }
  bool isRGB() const { return m_profileType.isEmpty(); }
  /// RGB kept as three floats, which may lie outside 0 to 1.
  bool isRGBex() const { return isRGB() && flag(12); }
  bool isCMYK() const { return m_profileType == ZQN_hash_CMYK; }
  bool isGrayscale() const { return m_profileType == ZQN_hash_GRAYSCALE; }
  bool isHSL() const { return m_profileType == ZQN_hash_HSL; }
  bool isSeparation() const { return m_profileType == ZQN_hash_SEPARATION; }
  /// A separation named "all" in any case.
  bool isRegistration() const { return isSeparation() && isRegistrationName(); }
  /// True when the separation name is "all" in any case.
  bool isRegistrationName() const;
  bool isICCColorProfile() const { return m_profileType == ZQN_icc_color; }
  /// Device CMYK 0, 0, 0, 1 without an alpha below 1.
  bool isK100() const;

  // The packed rgb.
  operator unsigned int() const { return m_rgb; }
  int getR() const { return getR(m_rgb); }
  int getG() const { return getG(m_rgb); }
  int getB() const { return getB(m_rgb); }
  static int getR(unsigned int rgb) { return static_cast<int>((rgb >> 16) & 0xFFu); }
  static int getG(unsigned int rgb) { return static_cast<int>((rgb >> 8) & 0xFFu); }
  static int getB(unsigned int rgb) { return static_cast<int>(rgb & 0xFFu); }
  /// Packs the low bytes of each.
  static unsigned int getRGB(int r, int g, int b) {
    return ((static_cast<unsigned int>(r) & 0xFFu) << 16) |
           ((static_cast<unsigned int>(g) & 0xFFu) << 8) | (static_cast<unsigned int>(b) & 0xFFu);
  }
  /// The rgb with its first and third bytes swapped.
  unsigned int getBGR() const { return reverseRGB(m_rgb); }
  /// A colour of a value in the platform's blue-green-red order.
  static ZQColor fromBGR(unsigned int bgr) { return ZQColor(reverseRGB(bgr)); }
  /// Swaps the first and the third byte.
  static unsigned int reverseRGB(unsigned int v) {
    return (v & 0xFF00FF00u) | ((v & 0xFFu) << 16) | ((v >> 16) & 0xFFu);
  }
  /// The float of an RGBex colour, otherwise the byte / 255.
  float getRex() const;
  float getGex() const;
  float getBex() const;

  // The members of each kind, read as they stand whatever the kind.
  float getC() const { return real(0); }
  float getM() const { return real(4); }
  float getY() const { return real(8); }
  float getK() const { return real(12); }
  /// The rgb of a CMYK colour was given by the author.
  bool hasCMYKRGB() const { return flag(16); }
  float getH() const { return real(0); }
  float getS() const { return real(4); }
  float getL() const { return real(8); }
  float getGrayscale() const { return real(0); }
  /// The rgb of a gray colour was given by the author.
  bool hasGrayscaleRGB() const { return flag(4); }
  float getSeparationTint() const { return real(0); }
  float getSeparationC() const { return real(4); }
  float getSeparationM() const { return real(8); }
  float getSeparationY() const { return real(12); }
  float getSeparationK() const { return real(16); }
  bool hasSeparationRGB() const { return flag(20); }
  bool hasSeparationTint() const { return flag(21); }
  bool hasSeparationCMYK() const { return flag(22); }
  /// ICC component 0 to 3; NaN for another index.
  float getICCValue(int index) const;
  /// A copy of the separation's name.
  UnicodeString getSeparationColorName() const { return m_name; }
  /// The ICC profile's name, interned.
  ZQName getICCColorProfileName() const { return ZQName(m_name); }

  // Setting from the colour syntax.
  /// Plain RGB from three numbers, or RGBex from three percentages, or the colour of a name
  /// with `g` and `b` null; then the alpha (a number or a percentage). False on other input.
  bool setRGB(const ZQValue& r, const ZQValue& g, const ZQValue& b, const ZQValue* alpha = nullptr);
  /// RGB kept as three unclamped floats; the bytes are clipped.
  void setRGBex(float r, float g, float b);
  /// HSL with the hue reduced to 0 up to 360 and s, l clamped; the rgb computed.
  void setHSL(float h, float s, float l);
  /// HSL from a number and two percentages, then the alpha. False on other input.
  bool setHSL(const ZQValue& h, const ZQValue& s, const ZQValue& l, const ZQValue* alpha = nullptr);
  /// CMYK from numbers or percentages, then the alpha. False on other input.
  bool setCMYK(const ZQValue& c, const ZQValue& m, const ZQValue& y, const ZQValue& k,
               const ZQValue* alpha = nullptr);

  // Separations.
  /// The rgb of the separation at its tint.
  unsigned int getSeparationRGB() const;
  /// Clears the CMYK-given flag.
  ZQColor& deleteSeparationCMYK();
  /// Clears the rgb-given flag.
  ZQColor& deleteSeparationRGB();
  /// Sets the three flags; with `update`, an rgb not given is recomputed from the tinted CMYK.
  void adjustSeparationFlags(bool rgb, bool tint, bool cmyk, bool update);

  // Derived colours.
  /// Each byte * 2 / 3, RGB without alpha.
  ZQColor getDark() const;
  /// Each byte 255 - (255 - c) / 2, RGB without alpha.
  ZQColor getLight() const;
  /// The complement; transparent gives black and an invalid colour transparent.
  ZQColor invert() const;

  /// The name of a named or special colour, "k100", or the empty name.
  ZQName getColorName() const;
  /// Text of the colour for CSS (`css`) or for XSL-FO, with its name where it has one.
  UnicodeString toString(bool css = false) const;
  /// As toString(css), but `noName` writes a named colour by its value.
  UnicodeString toString(bool css, bool noName) const;

  /// Equality of the rgb, the kind, the alpha and the members of the kind.
  bool operator==(const ZQColor& other) const;
  bool operator!=(const ZQColor& other) const { return !(*this == other); }

  // Conversions.
  /// The rgb of device CMYK.
  static unsigned int cmyk2rgb(float c, float m, float y, float k);
  /// Device CMYK of an rgb, with the black part taken out.
  static ZQColor rgb2cmyk(unsigned int rgb);
  /// Device CMYK of an rgb less `under`, with the caller's black `k`.
  static ZQColor rgb2cmyk(unsigned int rgb, float under, float k);
  /// Gray of an rgb, weighted 0.3, 0.59, 0.11.
  static ZQColor rgb2gray(unsigned int rgb);
  /// The rgb of HSL by the CSS rule; h in degrees, s and l from 0 to 1.
  static unsigned int hsl2rgb(float h, float s, float l);
  /// 0 to 1 as a byte: 0 at or below 0, 255 at or above 1, else v * 255 + 0.5 truncated.
  static int round255(float v);
  /// Clamped to 0 to 1.
  static float zeroone(float v);

 protected:
  /// Zeroes the members of the kind.
  void clearUnion();

 private:
  friend class ZQValue;

  float real(int offset) const;
  void setReal(int offset, float v);
  bool flag(int offset) const { return m_union[offset] != 0; }
  void setFlag(int offset, bool v) { m_union[offset] = v ? 1 : 0; }
  void setSeparation(const UnicodeString& name, float tint, float c, float m, float y, float k);
  bool setAlphaValue(const ZQValue* alpha);

  unsigned int m_rgb;
  float m_alpha;
  ZQName m_profileType;
  UnicodeString m_name;
  // The members of the kind, at fixed offsets: RGBex r g b + flag at 12; CMYK c m y k + flag
  // at 16; gray + flag at 4; HSL h s l; ICC four values; separation tint c m y k + flags at
  // 20, 21, 22.
  alignas(8) unsigned char m_union[24] = {};
};

}  // namespace ZQCommonNS
