#include <gtest/gtest.h>

#include "TestSupport.h"

#include <algorithm>
#include <bit>
#include <clocale>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "common/ZQColor.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQValue.h"
#include "common/ZQValueArray.h"
#include "core/platform/ZQPlatformColor.h"

using namespace ZQCommonNS;

namespace {

using zqtest::s8;
using zqtest::u;
unsigned rgbOf(const ZQColor& c) { return static_cast<unsigned int>(c); }
ZQValue pct(float v) { return ZQValue(v, ZQUNIT_PERCENT); }
ZQValue num(float v) { return ZQValue(v, ZQUNIT_NUMBER); }

// The named colours as the documentation lists them, parsed here so that the test does not
// share the library's table.
const char* const kNamedList =
    "aliceblue F0F8FF, antiquewhite FAEBD7, aqua 00FFFF, aquamarine 7FFFD4, azure F0FFFF, "
    "beige F5F5DC, bisque FFE4C4, black 000000, blanchedalmond FFEBCD, blue 0000FF, "
    "blueviolet 8A2BE2, brown A52A2A, burlywood DEB887, cadetblue 5F9EA0, chartreuse 7FFF00, "
    "chocolate D2691E, coral FF7F50, cornflowerblue 6495ED, cornsilk FFF8DC, crimson DC143C, "
    "cyan 00FFFF, darkblue 00008B, darkcyan 008B8B, darkgoldenrod B8860B, darkgray A9A9A9, "
    "darkgreen 006400, darkgrey A9A9A9, darkkhaki BDB76B, darkmagenta 8B008B, "
    "darkolivegreen 556B2F, darkorange FF8C00, darkorchid 9932CC, darkred 8B0000, "
    "darksalmon E9967A, darkseagreen 8FBC8B, darkslateblue 483D8B, darkslategray 2F4F4F, "
    "darkslategrey 2F4F4F, darkturquoise 00CED1, darkviolet 9400D3, deeppink FF1493, "
    "deepskyblue 00BFFF, dimgray 696969, dimgrey 696969, dodgerblue 1E90FF, firebrick B22222, "
    "floralwhite FFFAF0, forestgreen 228B22, fuchsia FF00FF, gainsboro DCDCDC, "
    "ghostwhite F8F8FF, gold FFD700, goldenrod DAA520, gray 808080, green 008000, "
    "greenyellow ADFF2F, grey 808080, honeydew F0FFF0, hotpink FF69B4, indianred CD5C5C, "
    "indigo 4B0082, ivory FFFFF0, khaki F0E68C, lavender E6E6FA, lavenderblush FFF0F5, "
    "lawngreen 7CFC00, lemonchiffon FFFACD, lightblue ADD8E6, lightcoral F08080, "
    "lightcyan E0FFFF, lightgoldenrodyellow FAFAD2, lightgray D3D3D3, lightgreen 90EE90, "
    "lightgrey D3D3D3, lightpink FFB6C1, lightsalmon FFA07A, lightseagreen 20B2AA, "
    "lightskyblue 87CEFA, lightslategray 778899, lightslategrey 778899, lightsteelblue B0C4DE, "
    "lightyellow FFFFE0, lime 00FF00, limegreen 32CD32, linen FAF0E6, magenta FF00FF, "
    "maroon 800000, mediumaquamarine 66CDAA, mediumblue 0000CD, mediumorchid BA55D3, "
    "mediumpurple 9370DB, mediumseagreen 3CB371, mediumslateblue 7B68EE, "
    "mediumspringgreen 00FA9A, mediumturquoise 48D1CC, mediumvioletred C71585, "
    "midnightblue 191970, mintcream F5FFFA, mistyrose FFE4E1, moccasin FFE4B5, "
    "navajowhite FFDEAD, navy 000080, oldlace FDF5E6, olive 808000, olivedrab 6B8E23, "
    "orange FFA500, orangered FF4500, orchid DA70D6, palegoldenrod EEE8AA, palegreen 98FB98, "
    "paleturquoise AFEEEE, palevioletred DB7093, papayawhip FFEFD5, peachpuff FFDAB9, "
    "peru CD853F, pink FFC0CB, plum DDA0DD, powderblue B0E0E6, purple 800080, "
    "rebeccapurple 663399, red FF0000, rosybrown BC8F8F, royalblue 4169E1, "
    "saddlebrown 8B4513, salmon FA8072, sandybrown F4A460, seagreen 2E8B57, seashell FFF5EE, "
    "sienna A0522D, silver C0C0C0, skyblue 87CEEB, slateblue 6A5ACD, slategray 708090, "
    "slategrey 708090, snow FFFAFA, springgreen 00FF7F, steelblue 4682B4, tan D2B48C, "
    "teal 008080, thistle D8BFD8, tomato FF6347, turquoise 40E0D0, violet EE82EE, "
    "wheat F5DEB3, white FFFFFF, whitesmoke F5F5F5, yellow FFFF00, yellowgreen 9ACD32";

struct Named {
  std::string name;
  unsigned rgb;
};

std::vector<Named> namedColors() {
  std::vector<Named> out;
  std::stringstream in(kNamedList);
  std::string item;
  while (std::getline(in, item, ',')) {
    std::stringstream one(item);
    Named n;
    std::string hex;
    one >> n.name >> hex;
    n.rgb = static_cast<unsigned>(std::stoul(hex, nullptr, 16));
    out.push_back(n);
  }
  return out;
}

// The spelling the reverse look-up gives for a value with several names.
std::string preferred(const std::string& name) {
  if (name == "aqua") return "cyan";
  if (name == "fuchsia") return "magenta";
  std::string s = name;
  size_t at = s.find("grey");
  if (at != std::string::npos) s.replace(at, 4, "gray");
  return s;
}

std::string hex6(unsigned rgb) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "#%06X", rgb);
  return buf;
}

// ---- documented edge cases ----

TEST(ZQColor, DefaultIsBlack) {
  ZQColor c;
  EXPECT_EQ(rgbOf(c), 0u);
  EXPECT_TRUE(c.isRGB());
  EXPECT_FALSE(c.hasAlpha());
  EXPECT_EQ(s8(c.toString(false)), "#000000");
  EXPECT_EQ(s8(c.toString(true)), "black");
  EXPECT_EQ(s8(c.toString()), "#000000");
}

TEST(ZQColor, RedByNameAndByValue) {
  ZQColor red{ZQName(ZQN_red)};
  EXPECT_EQ(rgbOf(red), 0xFF0000u);
  EXPECT_EQ(s8(red.toString(true)), "red");
  EXPECT_EQ(s8(red.toString(true, true)), "#FF0000");
  EXPECT_EQ(s8(red.toString(false)), "#FF0000");
}

TEST(ZQColor, GrayFromOneFloat) {
  ZQColor g(0.5f);
  EXPECT_TRUE(g.isGrayscale());
  EXPECT_EQ(rgbOf(g), 0x808080u);
  EXPECT_EQ(g.getGrayscale(), 0.5f);
  EXPECT_FALSE(g.hasGrayscaleRGB());
  EXPECT_EQ(s8(g.toString(false)), "rgb-icc(#GRAYSCALE,0.5)");
}

TEST(ZQColor, K100) {
  ZQColor k(0.0f, 0.0f, 0.0f, 1.0f);
  EXPECT_TRUE(k.isCMYK());
  EXPECT_TRUE(k.isK100());
  EXPECT_EQ(k.getColorName(), ZQN_k100);
  EXPECT_EQ(rgbOf(k), 0u);
  EXPECT_EQ(s8(k.toString(true)), "k100");
  EXPECT_EQ(ZQColor(ZQName(ZQN_k100)), k);
  ZQColor withAlpha(k);
  withAlpha.setAlpha(0.5f);
  EXPECT_FALSE(withAlpha.isK100());
  withAlpha.setAlpha(1.0f);
  EXPECT_TRUE(withAlpha.isK100());
  EXPECT_FALSE(ZQColor(0.0f, 0.0f, 0.1f, 1.0f).isK100());
  EXPECT_FALSE(ZQColor(0u).isK100());
}

TEST(ZQColor, Rgb2CmykOfBlackAndWhite) {
  ZQColor black = ZQColor::rgb2cmyk(0);
  EXPECT_EQ(black.getC(), 0.0f);
  EXPECT_EQ(black.getM(), 0.0f);
  EXPECT_EQ(black.getY(), 0.0f);
  EXPECT_EQ(black.getK(), 1.0f);
  EXPECT_FALSE(black.hasCMYKRGB());
  ZQColor white = ZQColor::rgb2cmyk(0xFFFFFF);
  EXPECT_EQ(white.getC(), 0.0f);
  EXPECT_EQ(white.getM(), 0.0f);
  EXPECT_EQ(white.getY(), 0.0f);
  EXPECT_EQ(white.getK(), 0.0f);
  ZQColor red = ZQColor::rgb2cmyk(0xFF0000);
  EXPECT_EQ(red.getC(), 0.0f);
  EXPECT_EQ(red.getM(), 1.0f);
  EXPECT_EQ(red.getY(), 1.0f);
  EXPECT_EQ(red.getK(), 0.0f);
  // k taken out: 0x808080 is pure black at about half.
  ZQColor gray = ZQColor::rgb2cmyk(0x808080);
  EXPECT_EQ(gray.getC(), 0.0f);
  EXPECT_FLOAT_EQ(gray.getK(), 1.0f - 128.0f / 255.0f);
}

TEST(ZQColor, Rgb2CmykWithUndercolour) {
  ZQColor c = ZQColor::rgb2cmyk(0x336699, 0.1f, 0.25f);
  EXPECT_TRUE(c.isCMYK());
  EXPECT_FLOAT_EQ(c.getC(), 1.0f - 0x33 / 255.0f - 0.1f);
  EXPECT_FLOAT_EQ(c.getM(), 1.0f - 0x66 / 255.0f - 0.1f);
  EXPECT_FLOAT_EQ(c.getY(), 1.0f - 0x99 / 255.0f - 0.1f);
  EXPECT_EQ(c.getK(), 0.25f);
  // Values are clamped by the CMYK constructor.
  ZQColor clamped = ZQColor::rgb2cmyk(0xFFFFFF, 0.5f, 2.0f);
  EXPECT_EQ(clamped.getC(), 0.0f);
  EXPECT_EQ(clamped.getK(), 1.0f);
}

TEST(ZQColor, Cmyk2Rgb) {
  EXPECT_EQ(ZQColor::cmyk2rgb(1, 0, 0, 0), 0x00FFFFu);
  EXPECT_EQ(ZQColor::cmyk2rgb(0, 1, 0, 0), 0xFF00FFu);
  EXPECT_EQ(ZQColor::cmyk2rgb(0, 0, 1, 0), 0xFFFF00u);
  EXPECT_EQ(ZQColor::cmyk2rgb(0, 0, 0, 1), 0x000000u);
  EXPECT_EQ(ZQColor::cmyk2rgb(0, 0, 0, 0), 0xFFFFFFu);
  EXPECT_EQ(ZQColor::cmyk2rgb(0, 0, 0, 0.5f), 0x808080u);
  // x = 1 - min(1, (1 - k) * v + k): 0.5 cyan over 0.5 black leaves 0.25.
  EXPECT_EQ(ZQColor::cmyk2rgb(0.5f, 0, 0, 0.5f), ZQColor::getRGB(64, 128, 128));
}

TEST(ZQColor, HslReducesTheHue) {
  ZQColor c;
  c.setHSL(-120.0f, 1.0f, 0.5f);
  EXPECT_TRUE(c.isHSL());
  EXPECT_EQ(c.getH(), 240.0f);
  EXPECT_EQ(rgbOf(c), 0x0000FFu);
  c.setHSL(480.0f, 2.0f, -1.0f);
  EXPECT_EQ(c.getH(), 120.0f);
  EXPECT_EQ(c.getS(), 1.0f);
  EXPECT_EQ(c.getL(), 0.0f);
  EXPECT_EQ(rgbOf(c), 0u);
}

TEST(ZQColor, Hsl2RgbFollowsTheCssRule) {
  EXPECT_EQ(ZQColor::hsl2rgb(0, 1, 0.5f), 0xFF0000u);
  EXPECT_EQ(ZQColor::hsl2rgb(120, 1, 0.5f), 0x00FF00u);
  EXPECT_EQ(ZQColor::hsl2rgb(240, 1, 0.5f), 0x0000FFu);
  EXPECT_EQ(ZQColor::hsl2rgb(60, 1, 0.5f), 0xFFFF00u);
  EXPECT_EQ(ZQColor::hsl2rgb(0, 0, 1), 0xFFFFFFu);
  EXPECT_EQ(ZQColor::hsl2rgb(0, 0, 0.5f), 0x808080u);
  EXPECT_EQ(ZQColor::hsl2rgb(0, 1, 0.75f), 0xFF8080u);  // m2 = s + l - s*l
  EXPECT_EQ(ZQColor::hsl2rgb(300, 0.5f, 0.25f), ZQColor::getRGB(96, 32, 96));
  EXPECT_EQ(ZQColor::hsl2rgb(30, 1, 0.5f), 0xFF8000u);  // a rising edge below 1/6
}

TEST(ZQColor, Hsl2RgbWrapsAnyHue) {
  // Positions are wrapped into 0 to 1, so a hue outside 0 to 360 names the same colour.
  EXPECT_EQ(ZQColor::hsl2rgb(720, 1, 0.5f), 0xFF0000u);
  EXPECT_EQ(ZQColor::hsl2rgb(-120, 1, 0.5f), 0x0000FFu);
  EXPECT_EQ(ZQColor::hsl2rgb(-600, 1, 0.5f), 0x00FF00u);
  EXPECT_EQ(ZQColor::hsl2rgb(1080 + 60, 1, 0.5f), 0xFFFF00u);
  // Elsewhere the float position of a hue a turn away may differ in its last bits, and so
  // a byte by one.
  for (int h = 0; h < 360; h += 15) {
    unsigned a = ZQColor::hsl2rgb(static_cast<float>(h + 360), 0.75f, 0.4f);
    unsigned b = ZQColor::hsl2rgb(static_cast<float>(h), 0.75f, 0.4f);
    EXPECT_LE(std::abs(ZQColor::getR(a) - ZQColor::getR(b)), 1) << h;
    EXPECT_LE(std::abs(ZQColor::getG(a) - ZQColor::getG(b)), 1) << h;
    EXPECT_LE(std::abs(ZQColor::getB(a) - ZQColor::getB(b)), 1) << h;
  }
  // Nothing defined comes of a NaN hue, but it is no crash and no stray byte.
  EXPECT_LE(ZQColor::hsl2rgb(std::numeric_limits<float>::quiet_NaN(), 1, 0.5f), 0xFFFFFFu);
}

TEST(ZQColor, AlphaFromInteger) {
  ZQColor c;
  EXPECT_FALSE(c.hasAlpha());
  EXPECT_EQ(std::bit_cast<uint32_t>(c.getAlpha()), 0x7F7FFFFFu);
  c.setAlpha(255);
  EXPECT_EQ(c.getAlpha(), 1.0f);
  EXPECT_TRUE(c.hasAlpha());
  c.setAlpha(0);
  EXPECT_TRUE(c.hasAlpha());
  c.setAlpha(1.5f);
  EXPECT_FALSE(c.hasAlpha());
  c.setAlpha(0.25f);
  c.clearAlpha();
  EXPECT_FALSE(c.hasAlpha());
  EXPECT_EQ(std::bit_cast<uint32_t>(c.getAlpha()), 0x7F7FFFFFu);
}

TEST(ZQColor, GrayAndGreyPrintAsGray) {
  ZQColor gray{ZQName(ZQN_gray)}, grey{ZQName(ZQN_grey)};
  EXPECT_EQ(gray, grey);
  EXPECT_EQ(s8(gray.toString(true)), "gray");
  EXPECT_EQ(s8(grey.toString(true)), "gray");
}

TEST(ZQColor, DarkAndLight) {
  EXPECT_EQ(rgbOf(ZQColor(0xFFFFFFu).getDark()), 0xAAAAAAu);
  EXPECT_EQ(rgbOf(ZQColor(0u).getLight()), 0x808080u);
  EXPECT_EQ(rgbOf(ZQColor(0x030609u).getDark()), 0x020406u);
  EXPECT_EQ(rgbOf(ZQColor(0xFEFDFCu).getLight()), 0xFFFEFEu);
  ZQColor withAlpha(0x102030u);
  withAlpha.setAlpha(0.5f);
  EXPECT_FALSE(withAlpha.getDark().hasAlpha());
  EXPECT_FALSE(withAlpha.getLight().hasAlpha());
  EXPECT_TRUE(ZQColor(0.5f).getDark().isRGB());
}

TEST(ZQColor, Invert) {
  EXPECT_EQ(rgbOf(ZQColor(0u).invert()), 0xFFFFFFu);
  EXPECT_EQ(rgbOf(ZQColor::getTransparent().invert()), 0u);
  EXPECT_TRUE(ZQColor::getInvalidColor().invert().isTransparent());
  EXPECT_EQ(rgbOf(ZQColor(0x123456u).invert()), 0xEDCBA9u);
  ZQColor withAlpha(0x123456u);
  withAlpha.setAlpha(0.5f);
  EXPECT_FALSE(withAlpha.invert().hasAlpha());
}

TEST(ZQColor, AllSeparationIsRegistration) {
  ZQColor reg(u("ALL"), 1.0f);
  EXPECT_TRUE(reg.isSeparation());
  EXPECT_TRUE(reg.isRegistration());
  EXPECT_TRUE(reg.isRegistrationName());
  EXPECT_TRUE(ZQColor(u("all"), 0.5f).isRegistration());
  EXPECT_TRUE(ZQColor(UnicodeString(), 0.5f).isRegistration());
  EXPECT_EQ(ZQColor(UnicodeString(), 0.5f).getSeparationColorName(), u("All"));
  EXPECT_FALSE(ZQColor(u("Gold"), 0.5f).isRegistration());
}

TEST(ZQColor, NameTriedOnceInLowerCase) {
  ZQColor red{ZQName(u("Red"))};
  EXPECT_FALSE(red.isInvalid());
  EXPECT_EQ(rgbOf(red), 0xFF0000u);
  EXPECT_EQ(rgbOf(ZQColor(ZQName(u("CurrentColor")))), ZQColor::RGB_CURRENT_COLOR);
  EXPECT_EQ(rgbOf(ZQColor(ZQName(u("TRANSPARENT")))), ZQColor::RGB_TRANSPARENT);
  ZQNameTable::cleanup();
}

TEST(ZQColor, UnknownNameIsInvalid) {
  ZQColor c{ZQName(u("nosuch"))};
  EXPECT_TRUE(c.isInvalid());
  EXPECT_EQ(rgbOf(c), ZQColor::RGB_INVALID);
  EXPECT_TRUE(c.toString(false).isEmpty());
  EXPECT_TRUE(c.toString(true).isEmpty());
  EXPECT_TRUE(ZQColor(ZQName()).isInvalid());
  EXPECT_TRUE(ZQColor(ZQName(ZQN_auto)).isInvalid());
  ZQNameTable::cleanup();
}

TEST(ZQColor, UnknownNamesDoNotGrowTheNameTable) {
  ZQName upper(u("NOSUCHCOLOURNAME"));
  EXPECT_TRUE(ZQColor(upper).isInvalid());
  // The lower-case retry looks the name up and interns nothing.
  EXPECT_EQ(ZQNameTable::getSharedNameTable()->lookupName(u("nosuchcolourname")), ZQN_EMPTY);
  // A known colour is still found through its lower-case form.
  EXPECT_EQ(rgbOf(ZQColor(ZQName(u("DarkSlateGrey")))), 0x2F4F4Fu);
  EXPECT_EQ(rgbOf(ZQColor(ZQName(u("K100")))), 0u);
  EXPECT_TRUE(ZQColor(ZQName(u("K100"))).isK100());
  EXPECT_EQ(rgbOf(ZQColor(ZQName(u("ButtonFace")))),
            ZQColor::reverseRGB(platform::systemColor(15)));
  ZQNameTable::cleanup();
}

// ---- the name table ----

TEST(ZQColor, EveryNamedColourBothWays) {
  std::vector<Named> all = namedColors();
  ASSERT_EQ(all.size(), 148u);
  for (const Named& n : all) {
    SCOPED_TRACE(n.name);
    ZQName name(u(n.name.c_str()));
    EXPECT_TRUE(name.isBuiltin());
    ZQColor c(name);
    EXPECT_TRUE(c.isRGB());
    EXPECT_FALSE(c.hasAlpha());
    EXPECT_EQ(rgbOf(c), n.rgb);
    // Back from the value to the name, with the preferred spelling.
    EXPECT_EQ(s8(ZQColor(n.rgb).getColorName().toString()), preferred(n.name));
    EXPECT_EQ(s8(c.toString(true)), preferred(n.name));
    EXPECT_EQ(s8(c.toString(true, true)), hex6(n.rgb));
    EXPECT_EQ(s8(c.toString(false)), hex6(n.rgb));
    // Upper case finds the same colour through the lower-case retry.
    std::string upper = n.name;
    for (char& ch : upper) ch = static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
    EXPECT_EQ(rgbOf(ZQColor(ZQName(u(upper.c_str())))), n.rgb);
  }
  ZQNameTable::cleanup();
}

TEST(ZQColor, EnumerationHoldsTheNamedValues) {
  EXPECT_EQ(static_cast<unsigned>(ZQColor::RGB_ALICEBLUE), 0xF0F8FFu);
  EXPECT_EQ(static_cast<unsigned>(ZQColor::RGB_REBECCAPURPLE), 0x663399u);
  EXPECT_EQ(static_cast<unsigned>(ZQColor::RGB_YELLOWGREEN), 0x9ACD32u);
  EXPECT_EQ(ZQColor::RGB_AQUA, ZQColor::RGB_CYAN);
  EXPECT_EQ(rgbOf(ZQColor(ZQColor::RGB_TOMATO)), 0xFF6347u);
}

TEST(ZQColor, ColoursWithoutNames) {
  EXPECT_TRUE(ZQColor(0x123456u).getColorName().isEmpty());
  EXPECT_EQ(s8(ZQColor(0x123456u).toString(true)), "#123456");
  ZQColor redAlpha(0xFF0000u);
  redAlpha.setAlpha(0.5f);
  EXPECT_TRUE(redAlpha.getColorName().isEmpty());
  ZQColor ex;
  ex.setRGBex(1.0f, 0.0f, 0.0f);
  EXPECT_TRUE(ex.getColorName().isEmpty());
  EXPECT_TRUE(ZQColor(0.0f).getColorName().isEmpty());  // a gray black is not "black"
}

TEST(ZQColor, SpecialColoursByNameAndText) {
  EXPECT_TRUE(ZQColor(ZQName(ZQN_transparent)).isTransparent());
  EXPECT_EQ(rgbOf(ZQColor(ZQName(ZQN_invert))), ZQColor::RGB_INVERT);
  EXPECT_TRUE(ZQColor(ZQName(ZQN_currentColor)).isCurrentColor());
  EXPECT_TRUE(ZQColor(ZQName(ZQN_currentcolor)).isCurrentColor());
  for (bool css : {false, true}) {
    for (bool noName : {false, true}) {
      EXPECT_EQ(s8(ZQColor::getTransparent().toString(css, noName)), "transparent");
      EXPECT_EQ(s8(ZQColor::getInvert().toString(css, noName)), "invert");
      EXPECT_EQ(s8(ZQColor::getCurrentColor().toString(css, noName)), "currentColor");
      EXPECT_TRUE(ZQColor::getInvalidColor().toString(css, noName).isEmpty());
    }
  }
  EXPECT_EQ(ZQColor::getTransparent().getColorName(), ZQN_transparent);
  EXPECT_EQ(ZQColor::getInvert().getColorName(), ZQN_invert);
  EXPECT_EQ(ZQColor::getCurrentColor().getColorName(), ZQN_currentColor);
  EXPECT_FALSE(ZQColor::getTransparent().isInvalid());
  EXPECT_FALSE(ZQColor::getInvert().isInvalid());
  EXPECT_FALSE(ZQColor::getCurrentColor().isInvalid());
  EXPECT_TRUE(ZQColor::getInvalidColor().isInvalid());
  EXPECT_TRUE(ZQColor(0x01000000u).isInvalid());
  EXPECT_FALSE(ZQColor(0x00FFFFFFu).isInvalid());
}

TEST(ZQColor, SystemColoursComeReversedFromThePlatform) {
  const struct {
    const char* name;
    int index;
  } rows[] = {{"scrollbar", 0},
              {"background", 1},
              {"activecaption", 2},
              {"inactivecaption", 3},
              {"menu", 4},
              {"window", 5},
              {"windowframe", 6},
              {"menutext", 7},
              {"windowtext", 8},
              {"captiontext", 9},
              {"activeborder", 10},
              {"inactiveborder", 11},
              {"appworkspace", 12},
              {"highlight", 13},
              {"highlighttext", 14},
              {"buttonface", 15},
              {"threedface", 15},
              {"buttonshadow", 16},
              {"threedshadow", 16},
              {"graytext", 17},
              {"buttontext", 18},
              {"inactivecaptiontext", 19},
              {"buttonhighlight", 20},
              {"threedhighlight", 20},
              {"threeddarkshadow", 21},
              {"threedlightshadow", 22},
              {"infotext", 23},
              {"infobackground", 24}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    ZQColor c{ZQName(u(row.name))};
    EXPECT_FALSE(c.isInvalid());
    EXPECT_TRUE(c.isRGB());
    EXPECT_EQ(rgbOf(c), ZQColor::reverseRGB(platform::systemColor(row.index)));
  }
  // The classic scheme: the desktop is 0x3A6EA5, given by the platform as 0xA56E3A.
  EXPECT_EQ(platform::systemColor(1), 0xA56E3Au);
  EXPECT_EQ(rgbOf(ZQColor(ZQName(ZQN_background))), 0x3A6EA5u);
  EXPECT_EQ(rgbOf(ZQColor(ZQName(ZQN_infobackground))), 0xFFFFE1u);
  EXPECT_EQ(rgbOf(ZQColor(ZQName(ZQN_window))), 0xFFFFFFu);
  EXPECT_EQ(platform::systemColor(-1), 0u);
  EXPECT_EQ(platform::systemColor(25), 0u);
  ZQNameTable::cleanup();
}

// ---- constructors ----

TEST(ZQColor, PlainConstructors) {
  EXPECT_EQ(rgbOf(ZQColor(0x123456u)), 0x123456u);
  EXPECT_EQ(rgbOf(ZQColor(0x123456)), 0x123456u);
  EXPECT_EQ(rgbOf(ZQColor(0x112, 0x234, -1)), 0x1234FFu);
  EXPECT_EQ(rgbOf(ZQColor(1.0f, 0.5f, 0.0f)), 0xFF8000u);
  EXPECT_FALSE(ZQColor(1.0f, 0.5f, 0.0f).isRGBex());
  EXPECT_EQ(rgbOf(ZQColor(2.0f, -1.0f, 0.2f)), ZQColor::getRGB(255, 0, 51));
  EXPECT_FALSE(ZQColor(0x123456u).hasAlpha());
}

TEST(ZQColor, GrayConstructors) {
  ZQColor over(1.5f);
  EXPECT_EQ(over.getGrayscale(), 1.0f);
  EXPECT_EQ(rgbOf(over), 0xFFFFFFu);
  ZQColor given(ZQColor(0x102030u), 0.25f);
  EXPECT_TRUE(given.isGrayscale());
  EXPECT_TRUE(given.hasGrayscaleRGB());
  EXPECT_EQ(rgbOf(given), 0x102030u);
  EXPECT_EQ(given.getGrayscale(), 0.25f);
  ZQColor alphaSource(0x102030u);
  alphaSource.setAlpha(0.5f);
  EXPECT_FALSE(ZQColor(alphaSource, 0.25f).hasAlpha());
  EXPECT_EQ(ZQColor(alphaSource, -3.0f).getGrayscale(), 0.0f);
}

TEST(ZQColor, CmykConstructors) {
  ZQColor c(1.2f, 0.5f, -0.5f, 0.0f);
  EXPECT_EQ(c.getC(), 1.0f);
  EXPECT_EQ(c.getM(), 0.5f);
  EXPECT_EQ(c.getY(), 0.0f);
  EXPECT_EQ(rgbOf(c), ZQColor::cmyk2rgb(1.0f, 0.5f, 0.0f, 0.0f));
  EXPECT_FALSE(c.hasCMYKRGB());
  ZQColor src(0xFF0000u);
  src.setAlpha(0.5f);
  ZQColor given(src, 0.0f, 1.0f, 1.0f, 0.0f);
  EXPECT_TRUE(given.isCMYK());
  EXPECT_TRUE(given.hasCMYKRGB());
  EXPECT_EQ(rgbOf(given), 0xFF0000u);
  EXPECT_EQ(given.getAlpha(), 0.5f);
}

TEST(ZQColor, SeparationConstructors) {
  ZQColor a(u("Gold"), 0.4f);
  EXPECT_TRUE(a.isSeparation());
  EXPECT_EQ(a.getSeparationColorName(), u("Gold"));
  EXPECT_EQ(a.getSeparationTint(), 0.4f);
  EXPECT_EQ(a.getSeparationC(), 1.0f);
  EXPECT_EQ(a.getSeparationK(), 1.0f);
  int v = ZQColor::round255(0.6f);
  EXPECT_EQ(rgbOf(a), ZQColor::getRGB(v, v, v));
  EXPECT_FALSE(a.hasSeparationRGB());
  EXPECT_TRUE(a.hasSeparationTint());
  EXPECT_FALSE(a.hasSeparationCMYK());
  EXPECT_EQ(ZQColor(u("X"), 5.0f).getSeparationTint(), 1.0f);

  ZQColor b(u("Spot"), 0.5f, 0.0f, 1.0f, 1.0f, 0.0f);
  EXPECT_TRUE(b.hasSeparationCMYK());
  EXPECT_FALSE(b.hasSeparationRGB());
  EXPECT_EQ(b.getSeparationM(), 1.0f);
  EXPECT_EQ(rgbOf(b), ZQColor::cmyk2rgb(0.0f, 0.5f, 0.5f, 0.0f));

  ZQColor src(0x00FF00u);
  src.setAlpha(0.75f);
  ZQColor c(src, u("Green"), 0.3f);
  EXPECT_EQ(rgbOf(c), 0x00FF00u);
  EXPECT_EQ(c.getAlpha(), 0.75f);
  EXPECT_TRUE(c.hasSeparationRGB());
  EXPECT_TRUE(c.hasSeparationTint());
  EXPECT_FALSE(c.hasSeparationCMYK());
  EXPECT_EQ(c.getSeparationY(), 1.0f);

  ZQColor d(src, u("Green"), 0.3f, 1.0f, 0.0f, 1.0f, 0.0f);
  EXPECT_TRUE(d.hasSeparationRGB());
  EXPECT_TRUE(d.hasSeparationTint());
  EXPECT_TRUE(d.hasSeparationCMYK());
  EXPECT_EQ(d.getSeparationC(), 1.0f);
  EXPECT_EQ(d.getSeparationM(), 0.0f);
}

TEST(ZQColor, IccConstructor) {
  ZQColor src(0x336699u);
  src.setAlpha(0.2f);
  ZQColor icc(src, u("MyProfile"), 0.1f, 2.0f, -3.0f, 0.4f);
  EXPECT_TRUE(icc.isICCColorProfile());
  EXPECT_EQ(rgbOf(icc), 0x336699u);
  EXPECT_EQ(icc.getAlpha(), 0.2f);
  EXPECT_EQ(icc.getICCColorProfileName(), ZQName(u("MyProfile")));
  EXPECT_EQ(icc.getICCValue(0), 0.1f);
  EXPECT_EQ(icc.getICCValue(1), 2.0f);  // unclamped
  EXPECT_EQ(icc.getICCValue(2), -3.0f);
  EXPECT_EQ(icc.getICCValue(3), 0.4f);
  EXPECT_TRUE(std::isnan(icc.getICCValue(4)));
  EXPECT_TRUE(std::isnan(icc.getICCValue(-1)));
  ZQNameTable::cleanup();
}

TEST(ZQColor, IccProfileNamesAndValidity) {
  auto icc = [](const char* profile) { return ZQColor(ZQColor(0u), u(profile), 0, 0, 0, 0); };
  for (const char* ok :
       {"#CMYK", "#GRAYSCALE", "#REGISTRATION", "#SEPARATION", "#SPOTCOLOR", "sRGB", "x#y"}) {
    EXPECT_FALSE(icc(ok).isInvalid()) << ok;
  }
  for (const char* bad : {"#RGB", "#cmyk", "#", "#Other"}) {
    EXPECT_TRUE(icc(bad).isInvalid()) << bad;
  }
  // Other kinds are valid whatever their name.
  EXPECT_FALSE(ZQColor(u("#RGB"), 0.5f).isInvalid());
  ZQNameTable::cleanup();
}

TEST(ZQColor, CopyAndAssignEveryField) {
  ZQColor src(ZQColor(0x123456u), u("Spot"), 0.5f, 0.1f, 0.2f, 0.3f, 0.4f);
  src.setAlpha(0.5f);
  ZQColor copy(src);
  EXPECT_EQ(copy, src);
  EXPECT_EQ(copy.getSeparationColorName(), u("Spot"));
  ZQColor assigned;
  assigned = src;
  EXPECT_EQ(assigned, src);
  EXPECT_EQ(assigned.getAlpha(), 0.5f);
}

TEST(ZQColor, ValueConstructorUsesGetColorValue) {
  EXPECT_EQ(rgbOf(ZQColor(ZQValue(ZQN_red))), 0xFF0000u);
  EXPECT_TRUE(ZQColor(ZQValue(5)).isTransparent());
  EXPECT_TRUE(ZQColor(ZQValue()).isTransparent());
}

// ---- small conversions and accessors ----

TEST(ZQColor, Round255AndZeroone) {
  EXPECT_EQ(ZQColor::round255(-1.0f), 0);
  EXPECT_EQ(ZQColor::round255(0.0f), 0);
  EXPECT_EQ(ZQColor::round255(0.5f), 128);
  EXPECT_EQ(ZQColor::round255(0.2f), 51);
  EXPECT_EQ(ZQColor::round255(0.999f), 255);
  EXPECT_EQ(ZQColor::round255(1.0f), 255);
  EXPECT_EQ(ZQColor::round255(7.0f), 255);
  EXPECT_EQ(ZQColor::round255(1.0f / 510.0f), 1);
  EXPECT_EQ(ZQColor::round255(std::numeric_limits<float>::quiet_NaN()), 0);
  EXPECT_EQ(ZQColor::zeroone(-0.5f), 0.0f);
  EXPECT_EQ(ZQColor::zeroone(0.0f), 0.0f);
  EXPECT_EQ(ZQColor::zeroone(0.3f), 0.3f);
  EXPECT_EQ(ZQColor::zeroone(1.0f), 1.0f);
  EXPECT_EQ(ZQColor::zeroone(1.01f), 1.0f);
}

TEST(ZQColor, Rgb2Gray) {
  ZQColor g = ZQColor::rgb2gray(0xFF0000);
  EXPECT_TRUE(g.isGrayscale());
  EXPECT_FALSE(g.hasGrayscaleRGB());
  EXPECT_FLOAT_EQ(g.getGrayscale(), 0.3f);
  EXPECT_FLOAT_EQ(ZQColor::rgb2gray(0x00FF00).getGrayscale(), 0.59f);
  EXPECT_FLOAT_EQ(ZQColor::rgb2gray(0x0000FF).getGrayscale(), 0.11f);
  EXPECT_EQ(rgbOf(ZQColor::rgb2gray(0xFFFFFF)), 0xFFFFFFu);
  EXPECT_EQ(std::bit_cast<uint32_t>(ZQColor::rgb2gray(0xFFFFFF).getGrayscale()), 0x3F800000u);
  EXPECT_EQ(ZQColor::rgb2gray(0).getGrayscale(), 0.0f);
  // The weights add up to one: every neutral rgb comes back as itself.
  for (int v = 0; v < 256; ++v) {
    unsigned rgb = ZQColor::getRGB(v, v, v);
    EXPECT_EQ(rgbOf(ZQColor::rgb2gray(rgb)), rgb) << v;
  }
  // 0.3 * 0x20 / 255 + 0.59 * 0x40 / 255 + 0.11 * 0x80 / 255 = 0.2408 -> byte 61.
  EXPECT_EQ(rgbOf(ZQColor::rgb2gray(0x204080)), 0x3D3D3Du);
}

TEST(ZQColor, Rgb2CmykAndBackKeepsTheRgb) {
  for (unsigned rgb = 0; rgb < 0x1000000u; rgb += 97) {
    ZQColor c = ZQColor::rgb2cmyk(rgb);
    ASSERT_EQ(rgbOf(c), rgb);
    ASSERT_EQ(ZQColor::cmyk2rgb(c.getC(), c.getM(), c.getY(), c.getK()), rgb);
    // The black part is taken out: one of c, m, y is 0.
    ASSERT_EQ(std::min(c.getC(), std::min(c.getM(), c.getY())), 0.0f);
  }
}

TEST(ZQColor, PackedAccessors) {
  ZQColor c(0x123456u);
  EXPECT_EQ(c.getR(), 0x12);
  EXPECT_EQ(c.getG(), 0x34);
  EXPECT_EQ(c.getB(), 0x56);
  EXPECT_EQ(ZQColor::getR(0xABCDEFu), 0xAB);
  EXPECT_EQ(ZQColor::getG(0xABCDEFu), 0xCD);
  EXPECT_EQ(ZQColor::getB(0xABCDEFu), 0xEF);
  EXPECT_EQ(ZQColor::getRGB(0x12, 0x34, 0x56), 0x123456u);
  EXPECT_EQ(c.getBGR(), 0x563412u);
  EXPECT_EQ(rgbOf(ZQColor::fromBGR(0x563412u)), 0x123456u);
  EXPECT_EQ(ZQColor::reverseRGB(0x00ABCDEFu), 0x00EFCDABu);
  EXPECT_FLOAT_EQ(c.getRex(), 0x12 / 255.0f);
  EXPECT_FLOAT_EQ(c.getGex(), 0x34 / 255.0f);
  EXPECT_FLOAT_EQ(c.getBex(), 0x56 / 255.0f);
}

TEST(ZQColor, RGBexKeepsFloatsAndClipsBytes) {
  ZQColor c(ZQColor(0.5f));
  c.setAlpha(0.5f);
  c.setRGBex(1.2f, 0.5f, -0.1f);
  EXPECT_TRUE(c.isRGB());
  EXPECT_TRUE(c.isRGBex());
  EXPECT_EQ(c.getRex(), 1.2f);
  EXPECT_EQ(c.getBex(), -0.1f);
  EXPECT_EQ(rgbOf(c), ZQColor::getRGB(255, 128, 0));
  EXPECT_EQ(c.getAlpha(), 0.5f);  // only the kind and the members change
  EXPECT_FALSE(ZQColor(0x010203u).isRGBex());
}

// ---- setting from values ----

TEST(ZQColor, SetRGBFromValues) {
  ZQColor c;
  EXPECT_TRUE(c.setRGB(num(255), num(0), num(0), nullptr));
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  EXPECT_FALSE(c.isRGBex());
  EXPECT_TRUE(c.setRGB(ZQValue(300), ZQValue(-5), ZQValue(0)));
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  EXPECT_TRUE(c.setRGB(pct(100), pct(0), pct(0)));
  EXPECT_TRUE(c.isRGBex());
  EXPECT_EQ(c.getRex(), 1.0f);
  EXPECT_EQ(c.getR(), 255);
  EXPECT_TRUE(c.setRGB(pct(150), pct(-10), pct(50)));
  EXPECT_EQ(c.getRex(), 1.0f);
  EXPECT_EQ(c.getGex(), 0.0f);
  EXPECT_FALSE(c.setRGB(pct(100), num(0), num(0)));
  EXPECT_FALSE(c.setRGB(ZQValue(1.0f, ZQUNIT_PT), num(0), num(0)));
  ZQValue half = num(0.5f);
  EXPECT_TRUE(c.setRGB(ZQValue(ZQN_red), ZQValue(), ZQValue(), &half));
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  EXPECT_EQ(c.getAlpha(), 0.5f);
  ZQValue quarter = pct(25);
  EXPECT_TRUE(c.setRGB(num(1), num(2), num(3), &quarter));
  EXPECT_EQ(c.getAlpha(), 0.25f);
  ZQValue tooBig = num(3);
  EXPECT_TRUE(c.setRGB(num(1), num(2), num(3), &tooBig));
  EXPECT_EQ(c.getAlpha(), 1.0f);
  ZQValue badAlpha(ZQN_auto);
  EXPECT_FALSE(c.setRGB(num(1), num(2), num(3), &badAlpha));
  EXPECT_FALSE(c.setRGB(ZQValue(ZQN_red), num(1), ZQValue()));
}

TEST(ZQColor, SetHSLFromValues) {
  ZQColor c;
  EXPECT_TRUE(c.setHSL(num(120), pct(100), pct(50)));
  EXPECT_TRUE(c.isHSL());
  EXPECT_EQ(rgbOf(c), 0x00FF00u);
  EXPECT_EQ(c.getS(), 1.0f);
  EXPECT_FALSE(c.setHSL(ZQValue(120.0f, ZQUNIT_DEG), pct(100), pct(50)));
  EXPECT_FALSE(c.setHSL(num(120), num(1), pct(50)));
  ZQValue a = num(0.3f);
  EXPECT_TRUE(c.setHSL(ZQValue(0), pct(100), pct(50), &a));
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  EXPECT_EQ(c.getAlpha(), 0.3f);
}

TEST(ZQColor, SetCMYKFromValues) {
  ZQColor c;
  EXPECT_TRUE(c.setCMYK(num(0), num(0), num(0), num(1)));
  EXPECT_TRUE(c.isK100());
  EXPECT_TRUE(c.setCMYK(pct(0), pct(0), pct(0), pct(100)));
  EXPECT_TRUE(c.isK100());
  EXPECT_TRUE(c.setCMYK(pct(50), num(0.25f), ZQValue(0), num(0)));
  EXPECT_EQ(c.getC(), 0.5f);
  EXPECT_EQ(c.getM(), 0.25f);
  EXPECT_FALSE(c.setCMYK(num(0), num(0), num(0), ZQValue(ZQN_auto)));
  ZQValue a = pct(40);
  EXPECT_TRUE(c.setCMYK(num(1), num(0), num(0), num(0), &a));
  EXPECT_FLOAT_EQ(c.getAlpha(), 0.4f);
}

// ---- separations ----

TEST(ZQColor, SeparationRGBAtTint) {
  ZQColor full(ZQColor(0x00FF00u), u("G"), 1.0f);
  EXPECT_EQ(full.getSeparationRGB(), 0x00FF00u);
  // rgb given without CMYK: its CMYK equivalent is tinted.
  ZQColor half(ZQColor(0x00FF00u), u("G"), 0.5f);
  ZQColor eq = ZQColor::rgb2cmyk(0x00FF00u);
  EXPECT_EQ(half.getSeparationRGB(), ZQColor::cmyk2rgb(eq.getC() * 0.5f, eq.getM() * 0.5f,
                                                       eq.getY() * 0.5f, eq.getK() * 0.5f));
  // Otherwise the members are tinted.
  ZQColor cmyk(u("S"), 0.5f, 1.0f, 0.0f, 0.0f, 0.0f);
  EXPECT_EQ(cmyk.getSeparationRGB(), ZQColor::cmyk2rgb(0.5f, 0, 0, 0));
  ZQColor plain(u("S"), 0.25f);
  EXPECT_EQ(plain.getSeparationRGB(), ZQColor::cmyk2rgb(0.25f, 0.25f, 0.25f, 0.25f));
}

TEST(ZQColor, AdjustAndDeleteSeparationFlags) {
  ZQColor c(ZQColor(0x123456u), u("S"), 0.5f, 1.0f, 0.0f, 0.0f, 0.0f);
  c.adjustSeparationFlags(false, true, true, false);
  EXPECT_EQ(rgbOf(c), 0x123456u);
  EXPECT_FALSE(c.hasSeparationRGB());
  c.adjustSeparationFlags(false, true, true, true);
  EXPECT_EQ(rgbOf(c), ZQColor::cmyk2rgb(0.5f, 0, 0, 0));
  c.adjustSeparationFlags(true, false, false, true);
  EXPECT_TRUE(c.hasSeparationRGB());
  EXPECT_FALSE(c.hasSeparationTint());
  EXPECT_FALSE(c.hasSeparationCMYK());
  ZQColor d(ZQColor(0x123456u), u("S"), 0.5f, 1.0f, 0.0f, 0.0f, 0.0f);
  EXPECT_FALSE(d.deleteSeparationCMYK().hasSeparationCMYK());
  EXPECT_FALSE(d.deleteSeparationRGB().hasSeparationRGB());
  EXPECT_TRUE(d.hasSeparationTint());
}

// ---- equality ----

TEST(ZQColor, EqualityByKind) {
  EXPECT_EQ(ZQColor(0x123456u), ZQColor(0x12, 0x34, 0x56));
  EXPECT_NE(ZQColor(0x123456u), ZQColor(0x123457u));
  ZQColor a(0x123456u), b(0x123456u);
  a.setAlpha(0.5f);
  EXPECT_NE(a, b);
  b.setAlpha(0.5f);
  EXPECT_EQ(a, b);
  b.setAlpha(0.25f);
  EXPECT_NE(a, b);
  // An alpha out of range counts as none.
  ZQColor c(0x123456u);
  c.setAlpha(2.0f);
  EXPECT_EQ(c, ZQColor(0x123456u));

  ZQColor ex, ex2;
  ex.setRGBex(1.0f, 0.0f, 0.0f);
  ex2.setRGBex(1.0f, 0.0f, 0.0f);
  EXPECT_EQ(ex, ex2);
  EXPECT_EQ(ex, ZQColor(0xFF0000u));  // the floats equal the bytes / 255
  ex2.setRGBex(1.1f, 0.0f, 0.0f);
  EXPECT_NE(ex, ex2);

  // Same rgb, different kinds.
  EXPECT_NE(ZQColor(0.0f, 0.0f, 0.0f, 1.0f), ZQColor(0u));
  EXPECT_NE(ZQColor(0.5f), ZQColor(0x808080u));

  EXPECT_EQ(ZQColor(0.1f, 0.2f, 0.3f, 0.4f), ZQColor(0.1f, 0.2f, 0.3f, 0.4f));
  // CMYK compares c, m, y and k, not the flag that the rgb was given.
  EXPECT_EQ(ZQColor(0.1f, 0.2f, 0.3f, 0.4f),
            ZQColor(ZQColor(0.1f, 0.2f, 0.3f, 0.4f), 0.1f, 0.2f, 0.3f, 0.4f));
  EXPECT_EQ(ZQColor(0.5f), ZQColor(0.5f));
  EXPECT_NE(ZQColor(ZQColor(0x808080u), 0.5f), ZQColor(0.5f));

  ZQColor h1, h2;
  h1.setHSL(120, 1, 0.5f);
  h2.setHSL(480, 1, 0.5f);
  EXPECT_EQ(h1, h2);
  h2.setHSL(120, 1, 0.5001f);
  EXPECT_NE(h1, h2);

  EXPECT_EQ(ZQColor(u("Gold"), 0.5f), ZQColor(u("Gold"), 0.5f));
  EXPECT_NE(ZQColor(u("Gold"), 0.5f), ZQColor(u("gold"), 0.5f));
  EXPECT_EQ(ZQColor(u("ALL"), 0.5f), ZQColor(u("all"), 0.5f));  // registration: no name test
  EXPECT_NE(ZQColor(u("Gold"), 0.5f), ZQColor(u("Gold"), 0.6f));

  ZQColor i1(ZQColor(0u), u("P"), 1, 2, 3, 4), i2(ZQColor(0u), u("P"), 1, 2, 3, 4);
  EXPECT_EQ(i1, i2);
  EXPECT_NE(i1, ZQColor(ZQColor(0u), u("Q"), 1, 2, 3, 4));
  EXPECT_NE(i1, ZQColor(ZQColor(0u), u("P"), 1, 2, 3, 5));
  ZQNameTable::cleanup();
}

// ---- text forms ----

TEST(ZQColor, TextOfRGBKinds) {
  ZQColor a(0x0A141Eu);
  a.setAlpha(0.5f);
  EXPECT_EQ(s8(a.toString(false)), "rgba(10,20,30,0.5)");
  EXPECT_EQ(s8(a.toString(true)), "rgba(10,20,30,0.5)");
  EXPECT_EQ(s8(a.toString(true, true)), "rgba(10,20,30,0.5)");

  ZQColor ex;
  ex.setRGBex(1.0f, 0.5f, 0.25f);
  EXPECT_EQ(s8(ex.toString(false)), "rgb(100%,50%,25%)");
  EXPECT_EQ(s8(ex.toString(true)), "#FF8040");
  ex.setAlpha(0.75f);
  EXPECT_EQ(s8(ex.toString(false)), "rgba(100%,50%,25%,0.75)");
  EXPECT_EQ(s8(ex.toString(true)), "rgba(255,128,64,0.75)");

  ZQColor redEx;
  redEx.setRGBex(1.0f, 0.0f, 0.0f);
  EXPECT_EQ(s8(redEx.toString(true)), "#FF0000");  // RGBex has no name
}

TEST(ZQColor, TextOfHSL) {
  ZQColor h;
  h.setHSL(120.0f, 1.0f, 0.25f);
  EXPECT_EQ(s8(h.toString(false)), "hsl(120,100%,25%)");
  EXPECT_EQ(s8(h.toString(true)), "#008000");  // CSS writes it as RGB, here without a name
  EXPECT_EQ(s8(h.toString(true, true)), "#008000");
  h.setAlpha(0.5f);
  EXPECT_EQ(s8(h.toString(false)), "hsla(120,100%,25%,0.5)");
  EXPECT_EQ(s8(h.toString(true)), "rgba(0,128,0,0.5)");
}

TEST(ZQColor, TextOfCMYK) {
  ZQColor c(0.1f, 0.2f, 0.3f, 0.4f);
  std::string t = hex6(rgbOf(c));
  EXPECT_EQ(s8(c.toString(false)), "cmyk(0.1,0.2,0.3,0.4)");
  EXPECT_EQ(s8(c.toString(true)), t + " icc-color(#CMYK,0.1,0.2,0.3,0.4)");
  ZQColor given(ZQColor(0xFF0000u), 0.0f, 1.0f, 1.0f, 0.0f);
  EXPECT_EQ(s8(given.toString(false)), "rgb-icc(255,0,0,#CMYK,0,1,1,0)");
  EXPECT_EQ(s8(given.toString(true)), "#FF0000 icc-color(#CMYK,0,1,1,0)");
  ZQColor alpha(c);
  alpha.setAlpha(0.5f);
  EXPECT_EQ(s8(alpha.toString(false)), "cmyka(0.1,0.2,0.3,0.4,0.5)");
  EXPECT_EQ(s8(alpha.toString(true)), t + " icc-color(#CMYK,0.1,0.2,0.3,0.4)");
  ZQColor givenAlpha(given);
  givenAlpha.setAlpha(0.5f);
  EXPECT_EQ(s8(givenAlpha.toString(false)), "cmyka(0,1,1,0,0.5)");
  ZQColor k100(0.0f, 0.0f, 0.0f, 1.0f);
  EXPECT_EQ(s8(k100.toString(true)), "k100");
  EXPECT_EQ(s8(k100.toString(true, true)), "#000000 icc-color(#CMYK,0,0,0,1)");
  EXPECT_EQ(s8(k100.toString(false)), "cmyk(0,0,0,1)");
}

TEST(ZQColor, TextOfGray) {
  ZQColor g(0.25f);
  EXPECT_EQ(s8(g.toString(false)), "rgb-icc(#GRAYSCALE,0.25)");
  EXPECT_EQ(s8(g.toString(true)), "#404040 icc-color(#GRAYSCALE,0.25)");
  ZQColor given(ZQColor(0x102030u), 0.25f);
  EXPECT_EQ(s8(given.toString(false)), "rgb-icc(16,32,48,#GRAYSCALE,0.25)");
  EXPECT_EQ(s8(given.toString(true)), "#102030 icc-color(#GRAYSCALE,0.25)");
}

TEST(ZQColor, TextOfSeparations) {
  ZQColor a(u("Gold"), 0.5f);
  EXPECT_EQ(s8(a.toString(false)), "rgb-icc(#SEPARATION,\"Gold\",0.5)");
  EXPECT_EQ(s8(a.toString(true)), "#808080 icc-color(#SEPARATION,\"Gold\",0.5)");
  ZQColor b(u("Spot"), 0.5f, 0.0f, 1.0f, 1.0f, 0.0f);
  std::string tb = hex6(rgbOf(b));
  EXPECT_EQ(s8(b.toString(false)), "rgb-icc(#SEPARATION,\"Spot\",0.5,0,1,1,0)");
  EXPECT_EQ(s8(b.toString(true)), tb + " icc-color(#SEPARATION,\"Spot\",0.5,0,1,1,0)");
  ZQColor c(ZQColor(0x00FF00u), u("Green"), 0.25f);
  EXPECT_EQ(s8(c.toString(false)), "rgb-icc(0,255,0,#SEPARATION,\"Green\",0.25)");
  EXPECT_EQ(s8(c.toString(true)), "#00FF00 icc-color(#SEPARATION,\"Green\",0.25)");
  ZQColor d(ZQColor(0x00FF00u), u("Green"), 1.0f, 1.0f, 0.0f, 1.0f, 0.0f);
  EXPECT_EQ(s8(d.toString(false)), "rgb-icc(0,255,0,#SEPARATION,\"Green\",1,1,0,1,0)");
  ZQColor reg(u("All"), 1.0f);
  EXPECT_EQ(s8(reg.toString(false)), "rgb-icc(#REGISTRATION,1)");
  EXPECT_EQ(s8(reg.toString(true)), "#000000 icc-color(#REGISTRATION,1)");
  ZQColor noTint(u("Gold"), 0.5f);
  noTint.adjustSeparationFlags(false, false, false, false);
  EXPECT_EQ(s8(noTint.toString(false)), "rgb-icc(#SEPARATION,\"Gold\")");
  ZQColor regCmyk(ZQColor(0x000000u), u("ALL"), 1.0f, 1.0f, 1.0f, 1.0f, 1.0f);
  EXPECT_EQ(s8(regCmyk.toString(false)), "rgb-icc(0,0,0,#REGISTRATION,1,1,1,1,1)");
}

TEST(ZQColor, TextOfIcc) {
  ZQColor icc(ZQColor(0x336699u), u("MyProfile"), 0.1f, 0.2f, 0.3f, 0.4f);
  EXPECT_EQ(s8(icc.toString(false)), "rgb-icc(51,102,153,MyProfile,0.1,0.2,0.3,0.4)");
  EXPECT_EQ(s8(icc.toString(true)), "#336699 icc-color(MyProfile,0.1,0.2,0.3,0.4)");
}

TEST(ZQColor, TextNumbersArePrintfG) {
  // %g: six significant digits, no trailing zeros, exponent form for large values.
  ZQColor c(0.123456789f, 0.5f, 1.0f / 3.0f, 0.0f);
  EXPECT_EQ(s8(c.toString(false)), "cmyk(0.123457,0.5,0.333333,0)");
  ZQColor icc(ZQColor(0x010203u), u("P"), 1234567.0f, -0.000012345f, 100.0f, 0.0f);
  EXPECT_EQ(s8(icc.toString(false)), "rgb-icc(1,2,3,P,1.23457e+06,-1.2345e-05,100,0)");
  EXPECT_EQ(s8(icc.toString(true)), "#010203 icc-color(P,1.23457e+06,-1.2345e-05,100,0)");
  ZQColor ex;
  ex.setRGBex(0.123456789f, 2.0f, -0.5f);
  EXPECT_EQ(s8(ex.toString(false)), "rgb(12.3457%,200%,-50%)");
  ex.setAlpha(1.0f / 3.0f);
  EXPECT_EQ(s8(ex.toString(false)), "rgba(12.3457%,200%,-50%,0.333333)");
  EXPECT_EQ(s8(ex.toString(true)), "rgba(31,255,0,0.333333)");
  ZQColor h;
  h.setHSL(200.5f, 0.333f, 0.6666f);
  EXPECT_EQ(s8(h.toString(false)), "hsl(200.5,33.3%,66.66%)");
  // %06X of the rgb: upper case, six digits.
  EXPECT_EQ(s8(ZQColor(0x00ABCDu).toString(false)), "#00ABCD");
  // A separation name is written as it is, in quotes; the tint by %g.
  ZQColor sep(u("Pantone 123 C"), 0.125f);
  EXPECT_EQ(s8(sep.toString(false)), "rgb-icc(#SEPARATION,\"Pantone 123 C\",0.125)");
  ZQNameTable::cleanup();
}

TEST(ZQColor, TextIgnoresTheProcessLocale) {
  // A locale with a decimal comma, when the system has one; the text keeps its point.
  const char* old = std::setlocale(LC_NUMERIC, nullptr);
  std::string saved = old ? old : "C";
  bool comma = false;
  for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8", "fr_FR.utf8"}) {
    if (std::setlocale(LC_NUMERIC, name)) {
      comma = true;
      break;
    }
  }
  EXPECT_EQ(s8(ZQColor(0.5f).toString(false)), "rgb-icc(#GRAYSCALE,0.5)");
  std::setlocale(LC_NUMERIC, saved.c_str());
  if (!comma) GTEST_SKIP() << "no locale with a decimal comma installed";
}

// ---- the value form ----

ZQValue innerOf(const ZQValue& v, ZQNameEnum key) { return v.getNamedItem(ZQName(key)); }

TEST(ZQColorValue, PlainRGBIsAnIntegerOfUnit24) {
  ZQValue v{ZQColor(0x123456u)};
  EXPECT_TRUE(v.isInteger());
  EXPECT_EQ(v.getUnitType(), ZQUNIT_COLOR);
  EXPECT_EQ(v.getIntegerValue(), 0x123456);
  EXPECT_TRUE(v.isColor());
  for (const ZQColor& special : {ZQColor::getTransparent(), ZQColor::getInvert(),
                                 ZQColor::getCurrentColor(), ZQColor::getInvalidColor()}) {
    ZQValue s(special);
    EXPECT_TRUE(s.isInteger());
    EXPECT_EQ(s.getUnitType(), ZQUNIT_COLOR);
    EXPECT_EQ(static_cast<unsigned>(s.getIntegerValue()), rgbOf(special));
  }
}

TEST(ZQColorValue, SpecialColoursStayIntegersWhateverTheyCarry) {
  ZQColor t = ZQColor::getTransparent();
  t.setAlpha(0.5f);
  ZQValue vt(t);
  EXPECT_TRUE(vt.isInteger());
  EXPECT_EQ(vt.getUnitType(), ZQUNIT_COLOR);
  EXPECT_EQ(static_cast<unsigned>(vt.getIntegerValue()), ZQColor::RGB_TRANSPARENT);
  EXPECT_TRUE(vt.getColorValue().isTransparent());
  EXPECT_FALSE(vt.getColorValue().hasAlpha());
  ZQValue vc{ZQColor(ZQColor::getCurrentColor(), 0.0f, 1.0f, 1.0f, 0.0f)};
  EXPECT_TRUE(vc.isInteger());
  EXPECT_TRUE(vc.getColorValue().isCurrentColor());
  EXPECT_TRUE(vc.getColorValue().isRGB());
  ZQValue vi{ZQColor(ZQColor::getInvert(), u("Gold"), 0.5f)};
  EXPECT_TRUE(vi.isInteger());
  EXPECT_EQ(rgbOf(vi.getColorValue()), ZQColor::RGB_INVERT);
  ZQValue vbad{ZQColor(ZQColor::getInvalidColor(), 0.5f)};
  EXPECT_TRUE(vbad.isInteger());
  EXPECT_TRUE(vbad.getColorValue().isInvalid());
  // Another rgb beyond 24 bits is no special colour: its kind is kept.
  ZQValue other{ZQColor(ZQColor(0x12000000u), 0.5f)};
  EXPECT_TRUE(other.isCompound());
  EXPECT_TRUE(other.getColorValue().isGrayscale());
}

TEST(ZQColorValue, CompoundMembersByKind) {
  ZQColor a(0x102030u);
  a.setAlpha(0.5f);
  ZQValue va(a);
  EXPECT_TRUE(va.isCompound());
  EXPECT_EQ(va.getUnitType(), ZQUNIT_COLOR);
  EXPECT_TRUE(va.isColor());
  ZQValue rgba = innerOf(va, ZQN_hash_hash_RGBA);
  EXPECT_EQ(rgba.getNamedItem(ZQName()).getIntegerValue(), 0x102030);
  EXPECT_EQ(rgba.getNamedItem(ZQName(ZQN_alpha)).getRealValue(ZQUNIT_NUMBER), 0.5f);
  EXPECT_TRUE(rgba.getNamedItem(ZQName(ZQN_red)).isNull());

  ZQColor ex;
  ex.setRGBex(1.5f, 0.5f, 0.0f);
  ZQValue vex(ex);
  ZQValue rgbex = innerOf(vex, ZQN_hash_hash_RGBA);
  EXPECT_EQ(rgbex.getNamedItem(ZQName(ZQN_red)).getRealValue(ZQUNIT_NUMBER), 1.5f);
  EXPECT_EQ(rgbex.getNamedItem(ZQName(ZQN_red)).getUnitType(), ZQUNIT_NUMBER);
  EXPECT_EQ(rgbex.getNamedItem(ZQName(ZQN_green)).getRealValue(ZQUNIT_NUMBER), 0.5f);
  EXPECT_TRUE(rgbex.getNamedItem(ZQName(ZQN_alpha)).isNull());

  ZQColor h;
  h.setHSL(200, 0.5f, 0.5f);
  h.setAlpha(0.25f);
  ZQValue vh(h);
  ZQValue hsl = innerOf(vh, ZQN_hash_HSL);
  EXPECT_EQ(hsl.getNamedItem(ZQName(ZQN_hue)).getRealValue(ZQUNIT_NUMBER), 200.0f);
  EXPECT_EQ(hsl.getNamedItem(ZQName(ZQN_saturation)).getRealValue(ZQUNIT_NUMBER), 0.5f);
  EXPECT_EQ(hsl.getNamedItem(ZQName(ZQN_lightness)).getRealValue(ZQUNIT_NUMBER), 0.5f);
  EXPECT_EQ(vh.getNamedItem(ZQName(ZQN_alpha)).getRealValue(ZQUNIT_NUMBER), 0.25f);

  ZQValue vc{ZQColor(0.1f, 0.2f, 0.3f, 0.4f)};
  ZQValue cmyk = innerOf(vc, ZQN_hash_CMYK);
  EXPECT_EQ(cmyk.getNamedItem(ZQName(ZQN_cyan)).getRealValue(ZQUNIT_NUMBER), 0.1f);
  EXPECT_EQ(cmyk.getNamedItem(ZQName(ZQN_black)).getRealValue(ZQUNIT_NUMBER), 0.4f);
  EXPECT_TRUE(cmyk.getNamedItem(ZQName(ZQN_rgb)).isNull());
  ZQValue vcg{ZQColor(ZQColor(0xFF0000u), 0.0f, 1.0f, 1.0f, 0.0f)};
  EXPECT_EQ(innerOf(vcg, ZQN_hash_CMYK).getNamedItem(ZQName(ZQN_rgb)).getIntegerValue(), 0xFF0000);

  ZQValue vg{ZQColor(0.5f)};
  ZQValue gray = innerOf(vg, ZQN_hash_GRAYSCALE);
  EXPECT_EQ(gray.getNamedItem(ZQName(ZQN_value)).getRealValue(ZQUNIT_NUMBER), 0.5f);
  EXPECT_TRUE(gray.getNamedItem(ZQName(ZQN_rgb)).isNull());

  ZQValue vs{ZQColor(u("Gold"), 0.5f)};
  ZQValue sep = innerOf(vs, ZQN_hash_SEPARATION);
  EXPECT_EQ(sep.getNamedItem(ZQName(ZQN_name)).getStringValue(), u("Gold"));
  EXPECT_EQ(sep.getNamedItem(ZQName(ZQN_value)).getRealValue(ZQUNIT_NUMBER), 0.5f);
  EXPECT_TRUE(sep.getNamedItem(ZQName(ZQN_cyan)).isNull());
  EXPECT_TRUE(sep.getNamedItem(ZQName(ZQN_rgb)).isNull());

  ZQValue vi{ZQColor(ZQColor(0x336699u), u("MyProfile"), 0.1f, 0.2f, 0.3f, 0.4f)};
  ZQValue icc = innerOf(vi, ZQN_icc_color);
  EXPECT_TRUE(icc.getNamedItem(ZQName(ZQN_name)).isName());
  EXPECT_EQ(icc.getNamedItem(ZQName(ZQN_name)).getStringValue(), u("MyProfile"));
  EXPECT_EQ(icc.getNamedItem(ZQName(ZQN_magenta)).getRealValue(ZQUNIT_NUMBER), 0.2f);
  ZQNameTable::cleanup();
}

std::vector<ZQColor> oneOfEachKind() {
  std::vector<ZQColor> out;
  out.push_back(ZQColor(0x123456u));
  out.push_back(ZQColor::getTransparent());
  out.push_back(ZQColor::getInvert());
  out.push_back(ZQColor::getCurrentColor());
  out.push_back(ZQColor::getInvalidColor());
  ZQColor alpha(0x654321u);
  alpha.setAlpha(0.5f);
  out.push_back(alpha);
  ZQColor ex;
  ex.setRGBex(1.25f, 0.5f, -0.25f);
  out.push_back(ex);
  ex.setAlpha(0.75f);
  out.push_back(ex);
  ZQColor h;
  h.setHSL(300, 0.5f, 0.25f);
  out.push_back(h);
  ZQColor nearFull;
  nearFull.setHSL(359.99997f, 1.0f, 0.5f);
  out.push_back(nearFull);
  h.setAlpha(0.125f);
  out.push_back(h);
  out.push_back(ZQColor(0.1f, 0.2f, 0.3f, 0.4f));
  out.push_back(ZQColor(ZQColor(0xFF0000u), 0.0f, 1.0f, 1.0f, 0.0f));
  ZQColor ca(0.1f, 0.2f, 0.3f, 0.4f);
  ca.setAlpha(0.5f);
  out.push_back(ca);
  out.push_back(ZQColor(0.0f, 0.0f, 0.0f, 1.0f));
  out.push_back(ZQColor(0.3f));
  out.push_back(ZQColor(ZQColor(0x102030u), 0.3f));
  out.push_back(ZQColor(u("Gold"), 0.5f));
  out.push_back(ZQColor(u("Spot"), 0.5f, 0.1f, 0.2f, 0.3f, 0.4f));
  out.push_back(ZQColor(ZQColor(0x00FF00u), u("Green"), 0.25f));
  out.push_back(ZQColor(ZQColor(0x00FF00u), u("Green"), 0.25f, 1.0f, 0.0f, 1.0f, 0.0f));
  out.push_back(ZQColor(u("All"), 1.0f));
  ZQColor sa(u("Spot"), 0.5f);
  sa.setAlpha(0.5f);
  out.push_back(sa);
  out.push_back(ZQColor(ZQColor(0x336699u), u("MyProfile"), 0.1f, 2.0f, -3.0f, 0.4f));
  ZQColor ia(ZQColor(0x336699u), u("MyProfile"), 0.1f, 0.2f, 0.3f, 0.4f);
  ia.setAlpha(0.5f);
  out.push_back(ia);
  return out;
}

TEST(ZQColorValue, RoundTripOfEveryKind) {
  for (const ZQColor& c : oneOfEachKind()) {
    SCOPED_TRACE(s8(c.toString(false)) + " / " + s8(c.toString(true)));
    ZQValue v(c);
    EXPECT_TRUE(v.isColor());
    ZQColor back = v.getColorValue();
    EXPECT_EQ(back, c);
    EXPECT_EQ(rgbOf(back), rgbOf(c));
    EXPECT_EQ(back.getProfileType(), c.getProfileType());
    EXPECT_EQ(back.hasAlpha(), c.hasAlpha());
    EXPECT_EQ(s8(back.toString(false)), s8(c.toString(false)));
    EXPECT_EQ(s8(back.toString(true)), s8(c.toString(true)));
    EXPECT_EQ(back, v.getColorValue(true));
    EXPECT_EQ(ZQColor(v), c);
    // A colour value prints as its colour.
    EXPECT_EQ(s8(v.toString()), s8(c.toString(false)));
    // Copies and clones still hold the colour.
    EXPECT_EQ(ZQValue(v).getColorValue(), c);
    EXPECT_EQ(v.clone().getColorValue(), c);
    EXPECT_TRUE(v == ZQValue(c));
  }
  ZQNameTable::cleanup();
}

TEST(ZQColorValue, CompoundColoursCompareByColour) {
  ZQColor a(0.1f, 0.2f, 0.3f, 0.4f);
  EXPECT_TRUE(ZQValue(a) == ZQValue(a));
  EXPECT_FALSE(ZQValue(a) == ZQValue(ZQColor(0.1f, 0.2f, 0.3f, 0.5f)));
  EXPECT_FALSE(ZQValue(a) == ZQValue(ZQColor(0.5f)));
  EXPECT_TRUE(ZQValue(ZQColor(0xFF0000u)) == ZQValue(ZQColor(0xFF0000u)));
  // An ordinary compound still compares by identity.
  ZQValue r1, r2;
  r1.setNamedItem(ZQName(ZQN_width), ZQValue(1));
  r2.setNamedItem(ZQName(ZQN_width), ZQValue(1));
  EXPECT_FALSE(r1 == r2);
}

TEST(ZQColorValue, ReadingNamesAndOtherValues) {
  EXPECT_EQ(rgbOf(ZQValue(ZQN_red).getColorValue()), 0xFF0000u);
  EXPECT_EQ(rgbOf(ZQValue(ZQN_red).getColorValue(true)), 0xFF0000u);
  EXPECT_TRUE(ZQValue(ZQN_transparent).getColorValue(true).isTransparent());
  // A name is read by ZQColor(name), with its lower-case retry.
  EXPECT_EQ(rgbOf(ZQValue(ZQName(u("RED"))).getColorValue(true)), 0xFF0000u);
  EXPECT_TRUE(ZQValue(ZQName(ZQN_k100)).getColorValue().isK100());
  // A name that is no colour.
  EXPECT_TRUE(ZQValue(ZQN_auto).getColorValue().isTransparent());
  EXPECT_TRUE(ZQValue(ZQN_auto).getColorValue(true).isInvalid());
  // Values that hold no colour.
  for (const ZQValue& v : {ZQValue(), ZQValue(5), ZQValue(1.0f, ZQUNIT_PT),
                           ZQValue(1.0f, ZQUNIT_COLOR), ZQValue(new ZQValueArray())}) {
    EXPECT_TRUE(v.getColorValue().isTransparent());
    EXPECT_TRUE(v.getColorValue(true).isInvalid());
  }
  // A compound of unit 24 without a known key holds no colour either.
  ZQValue odd;
  odd.setNamedItem(ZQName(ZQN_width), ZQValue(1));
  odd.setUnitType(ZQUNIT_COLOR);
  EXPECT_TRUE(odd.getColorValue().isTransparent());
  EXPECT_TRUE(odd.getColorValue(true).isInvalid());
}

TEST(ZQColorValue, StringsAreReadByTheColourSyntax) {
  ZQValue hex(u("#ff0000"), ZQUNIT_NONE);
  EXPECT_EQ(rgbOf(hex.getColorValue()), 0xFF0000u);
  EXPECT_EQ(rgbOf(hex.getColorValue(true)), 0xFF0000u);
  ZQValue bad(u("#ff00f"), ZQUNIT_NONE);
  EXPECT_TRUE(bad.getColorValue().isTransparent());
  EXPECT_TRUE(bad.getColorValue(true).isInvalid());
}

TEST(ZQColorValue, IntegerOfUnit24) {
  ZQValue v(0x00FF00);
  v.setUnitType(ZQUNIT_COLOR);
  EXPECT_EQ(rgbOf(v.getColorValue()), 0x00FF00u);
  EXPECT_EQ(s8(v.toString()), "#00FF00");
  ZQValue t(-1);
  t.setUnitType(ZQUNIT_COLOR);
  EXPECT_TRUE(t.getColorValue().isTransparent());
  EXPECT_EQ(s8(t.toString()), "transparent");
}

}  // namespace
