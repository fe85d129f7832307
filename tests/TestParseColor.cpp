#include <gtest/gtest.h>

#include "TestSupport.h"

#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "common/ZQColor.h"
#include "common/ZQName.h"
#include "common/ZQNamedValueMap.h"
#include "common/ZQParser.h"
#include "common/ZQTokenizer.h"
#include "common/ZQValue.h"
#include "common/ZQValueArray.h"

using namespace ZQCommonNS;

namespace {

using zqtest::s8;
using zqtest::u;

unsigned rgbOf(const ZQColor& c) { return static_cast<unsigned int>(c); }

// Reads `text` as a colour; a text that is no colour fails the test.
ZQColor colorOf(const char* text, bool css = false) {
  ZQValue v = ZQParser::parseColor(u(text), css);
  EXPECT_TRUE(v.isColor()) << text << " read as " << s8(v.toString());
  EXPECT_EQ(v.getUnitType(), ZQUNIT_COLOR) << text;
  return v.getColorValue(true);
}

// The text comes back unchanged, as a string of unit 0.
void expectRefused(const char* text, bool css) {
  ZQValue v = ZQParser::parseColor(u(text), css);
  EXPECT_TRUE(v.isUnknownString()) << text << " (css " << css << ") read as " << s8(v.toString());
  EXPECT_EQ(s8(v.getStringValue()), text);
}

void expectRefusedBoth(const char* text) {
  expectRefused(text, false);
  expectRefused(text, true);
}

class ParseColor : public ::testing::Test {
 protected:
  void TearDown() override { ZQNameTable::cleanup(); }
};

// ---- single tokens ----

TEST_F(ParseColor, HexColourIsAColourInBothSyntaxes) {
  for (bool css : {false, true}) {
    ZQValue v = ZQParser::parseColor(u("#abc"), css);
    ASSERT_TRUE(v.isColor()) << css;
    EXPECT_TRUE(v.isInteger());
    EXPECT_EQ(rgbOf(v.getColorValue()), 0xAABBCCu);
    EXPECT_EQ(rgbOf(colorOf("#A0b1C2", css)), 0xA0B1C2u);
  }
}

TEST_F(ParseColor, HexColourWithAlpha) {
  for (bool css : {false, true}) {
    ZQColor c = colorOf("#ff000080", css);
    EXPECT_EQ(rgbOf(c), 0xFF0000u);
    ASSERT_TRUE(c.hasAlpha());
    EXPECT_FLOAT_EQ(c.getAlpha(), 128.0f / 255.0f);
    ZQColor short4 = colorOf("#f00f", css);
    EXPECT_EQ(rgbOf(short4), 0xFF0000u);
    EXPECT_FLOAT_EQ(short4.getAlpha(), 1.0f);
  }
}

TEST_F(ParseColor, LoneKeywordStaysAName) {
  for (bool css : {false, true}) {
    ZQValue v = ZQParser::parseColor(u("red"), css);
    ASSERT_TRUE(v.isName()) << css;
    EXPECT_EQ(v.getNameValue(), ZQName(ZQN_red));
    EXPECT_EQ(v.getUnitType(), ZQUNIT_NAME);
    // It is resolved later, by getColorValue.
    EXPECT_EQ(rgbOf(v.getColorValue(true)), 0xFF0000u);
    // Any name is kept as it stands, colour or not.
    ZQValue other = ZQParser::parseColor(u("nosuch"), css);
    ASSERT_TRUE(other.isName());
    EXPECT_EQ(s8(other.getStringValue()), "nosuch");
  }
}

TEST_F(ParseColor, StringsAndNumbersAreReadAsTheyStand) {
  for (bool css : {false, true}) {
    ZQValue s = ZQParser::parseColor(u("'abc'"), css);
    EXPECT_TRUE(s.isLiteralString());
    EXPECT_EQ(s8(s.getStringValue()), "abc");
    ZQValue n = ZQParser::parseColor(u("12"), css);
    EXPECT_TRUE(n.isInteger());
    EXPECT_EQ(n.getUnitType(), ZQUNIT_NUMBER);
    EXPECT_EQ(n.getIntegerValue(), 12);
    ZQValue neg = ZQParser::parseColor(u("-1.5pt"), css);
    EXPECT_TRUE(neg.isReal());
    EXPECT_EQ(neg.getUnitType(), ZQUNIT_PT);
    EXPECT_FLOAT_EQ(neg.getRealValue(ZQUNIT_PT), -1.5f);
  }
}

TEST_F(ParseColor, EmptyTextAndLoneCharactersComeBackAsText) {
  for (bool css : {false, true}) {
    ZQValue v = ZQParser::parseColor(UnicodeString(), css);
    EXPECT_TRUE(v.isUnknownString());
    EXPECT_TRUE(v.getStringValue().isEmpty());
  }
  expectRefusedBoth("   ");
  expectRefusedBoth("#");
  expectRefusedBoth("(");
  expectRefusedBoth("#abcde");
}

TEST_F(ParseColor, WhiteSpaceAroundIsDropped) {
  EXPECT_EQ(rgbOf(colorOf("  #123456 \t")), 0x123456u);
  EXPECT_EQ(rgbOf(colorOf("\n rgb( 1 , 2 , 3 ) \r\n")), 0x010203u);
}

TEST_F(ParseColor, TrailingTokensRefuseTheText) {
  expectRefusedBoth("#abc x");
  expectRefusedBoth("rgb(1,2,3) x");
  expectRefusedBoth("rgb(1,2,3))");
  expectRefusedBoth("red blue");
  expectRefusedBoth("12 13");
  expectRefusedBoth("'a' 'b'");
  expectRefusedBoth("cmyk(0,0,0,1),");
  // A valid CSS keyword followed by something that is no icc-color().
  expectRefused("red x", true);
  expectRefused("#abc icc-colour(#CMYK,0,0,0,1)", true);
}

// ---- rgb() and rgba() ----

TEST_F(ParseColor, RgbOfNumbersIsPlainRgb) {
  ZQValue v = ZQParser::parseColor(u("rgb(255,0,0)"), false);
  ASSERT_TRUE(v.isColor());
  // A plain colour keeps the integer form.
  EXPECT_TRUE(v.isInteger());
  ZQColor c = v.getColorValue();
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  EXPECT_TRUE(c.isRGB());
  EXPECT_FALSE(c.isRGBex());
  EXPECT_FALSE(c.hasAlpha());
  EXPECT_EQ(c, ZQColor(ZQN_red));
}

TEST_F(ParseColor, RgbOfPercentagesIsRgbex) {
  ZQColor c = colorOf("rgb(100%,0%,0%)");
  EXPECT_TRUE(c.isRGBex());
  EXPECT_EQ(c.getRex(), 1.0f);
  EXPECT_EQ(c.getGex(), 0.0f);
  EXPECT_EQ(c.getR(), 255);
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  ZQColor half = colorOf("rgb(50%,25%,12.5%)");
  EXPECT_TRUE(half.isRGBex());
  EXPECT_EQ(half.getRex(), 0.5f);
  EXPECT_EQ(half.getGex(), 0.25f);
  EXPECT_EQ(half.getBex(), 0.125f);
  EXPECT_EQ(rgbOf(half), ZQColor::getRGB(128, 64, 32));
}

TEST_F(ParseColor, RgbPercentagesAreLimitedToOne) {
  ZQColor c = colorOf("rgb(150%,-20%,50%)");
  EXPECT_EQ(c.getRex(), 1.0f);
  EXPECT_EQ(c.getGex(), 0.0f);
  EXPECT_EQ(rgbOf(c), ZQColor::getRGB(255, 0, 128));
}

TEST_F(ParseColor, RgbMixingPercentagesAndNumbersIsNoColour) {
  expectRefusedBoth("rgb(100%,0,0)");
  expectRefusedBoth("rgb(255,0%,0)");
  expectRefusedBoth("rgb(255,0,0%)");
}

TEST_F(ParseColor, RgbNumbersAreLimitedToBytes) {
  EXPECT_EQ(rgbOf(colorOf("rgb(300,-5,0)")), 0xFF0000u);
  EXPECT_EQ(rgbOf(colorOf("rgb(-1,256,1000000)")), 0x00FFFFu);
  // Reals are rounded to the nearest integer.
  EXPECT_EQ(rgbOf(colorOf("rgb(1.4,1.5,254.6)")), ZQColor::getRGB(1, 2, 255));
}

TEST_F(ParseColor, FunctionCommasAreOptional) {
  EXPECT_EQ(rgbOf(colorOf("rgb(1 2 3)")), 0x010203u);
  EXPECT_EQ(rgbOf(colorOf("rgb(1,2 3)")), 0x010203u);
  EXPECT_EQ(rgbOf(colorOf("rgb (1,2,3)")), 0x010203u);
  ZQColor c = colorOf("cmyka(0 0 0 1 0.5)");
  EXPECT_TRUE(c.isCMYK());
  EXPECT_EQ(c.getAlpha(), 0.5f);
  // A comma after the last argument, or two in a row, is not skipped.
  expectRefusedBoth("rgb(1,2,3,)");
  expectRefusedBoth("rgb(1,,2,3)");
}

TEST_F(ParseColor, FunctionsMustBeClosed) {
  expectRefusedBoth("rgb(1,2,3");
  expectRefusedBoth("rgb(1,2,3 4)");
  expectRefusedBoth("rgb(1,2)");
  expectRefusedBoth("rgb()");
  expectRefusedBoth("rgba(1,2,3,0.5");
  expectRefusedBoth("rgba(red,0.5");
  expectRefusedBoth("hsl(120,100%,50%");
  expectRefusedBoth("cmyk(0,0,0,1");
  expectRefusedBoth("cmyka(0,0,0,1,1 2)");
  expectRefusedBoth("rgb-icc(#CMYK,0,0,0,1");
}

TEST_F(ParseColor, RgbaOfNumbers) {
  ZQValue v = ZQParser::parseColor(u("rgba(0,0,255,0.5)"), false);
  ASSERT_TRUE(v.isColor());
  // An alpha needs the compound form.
  EXPECT_TRUE(v.isCompound());
  ZQColor c = v.getColorValue();
  EXPECT_EQ(rgbOf(c), 0x0000FFu);
  EXPECT_EQ(c.getAlpha(), 0.5f);
  ZQColor pc = colorOf("rgba(100%,0%,0%,25%)");
  EXPECT_TRUE(pc.isRGBex());
  EXPECT_EQ(pc.getAlpha(), 0.25f);
}

TEST_F(ParseColor, RgbaAlphaIsLimitedAndMustBeANumberOrPercentage) {
  EXPECT_EQ(colorOf("rgba(0,0,0,2)").getAlpha(), 1.0f);
  EXPECT_EQ(colorOf("rgba(0,0,0,-1)").getAlpha(), 0.0f);
  EXPECT_EQ(colorOf("rgba(0,0,0,150%)").getAlpha(), 1.0f);
  EXPECT_EQ(colorOf("rgba(0,0,0,50%)").getAlpha(), 0.5f);
  expectRefusedBoth("rgba(0,0,0,1pt)");
  expectRefusedBoth("rgba(0,0,0,'a')");
  expectRefusedBoth("rgba(0,0,0,x)");
  expectRefusedBoth("rgba(0,0,0)");
}

TEST_F(ParseColor, RgbaOfANameThatNamesNoColourIsTheInvalidColour) {
  // The name still reads, as the invalid colour; its value is the bare rgb, so the alpha goes.
  for (bool css : {false, true}) {
    ZQValue v = ZQParser::parseColor(u("rgba(nosuch,0.5)"), css);
    ASSERT_TRUE(v.isColor()) << css;
    EXPECT_TRUE(v.isInteger());
    EXPECT_EQ(static_cast<unsigned>(v.getIntegerValue()), ZQColor::RGB_INVALID);
    EXPECT_TRUE(v.getColorValue(true).isInvalid());
    EXPECT_TRUE(v.getColorValue().isInvalid());
  }
  // The alpha must still be a number or a percentage.
  expectRefusedBoth("rgba(nosuch,x)");
}

TEST_F(ParseColor, RgbaOfANameAndAlpha) {
  ZQColor c = colorOf("rgba(red,0.5)");
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  EXPECT_TRUE(c.isRGB());
  EXPECT_EQ(c.getAlpha(), 0.5f);
  ZQColor k = colorOf("rgba(k100 30%)");
  EXPECT_TRUE(k.isCMYK());
  EXPECT_FLOAT_EQ(k.getAlpha(), 0.3f);
  // The lower-case retry of the name table applies.
  EXPECT_EQ(rgbOf(colorOf("rgba(Blue,1)")), 0x0000FFu);
  // rgb() takes no name.
  expectRefusedBoth("rgb(red)");
  expectRefusedBoth("rgba(red)");
}

// ---- hsl() and hsla() ----

TEST_F(ParseColor, HslOfANumberAndPercentages) {
  ZQColor c = colorOf("hsl(120,100%,50%)");
  EXPECT_TRUE(c.isHSL());
  EXPECT_EQ(rgbOf(c), 0x00FF00u);
  EXPECT_EQ(c.getH(), 120.0f);
  EXPECT_EQ(c.getS(), 1.0f);
  EXPECT_EQ(c.getL(), 0.5f);
  EXPECT_FALSE(c.hasAlpha());
  // The hue is reduced into one turn, s and l limited.
  ZQColor w = colorOf("hsl(-120,200%,50%)");
  EXPECT_EQ(w.getH(), 240.0f);
  EXPECT_EQ(w.getS(), 1.0f);
  EXPECT_EQ(rgbOf(w), 0x0000FFu);
}

TEST_F(ParseColor, HslTakesNoAngleUnitAndNoOtherUnits) {
  expectRefusedBoth("hsl(120deg,100%,50%)");
  expectRefusedBoth("hsl(2rad,100%,50%)");
  expectRefusedBoth("hsl(120%,100%,50%)");
  expectRefusedBoth("hsl(120,1,0.5)");
  expectRefusedBoth("hsl(120,100%,50)");
}

TEST_F(ParseColor, HslaKeepsTheAlpha) {
  ZQColor c = colorOf("hsla(240,100%,50%,0.25)");
  EXPECT_TRUE(c.isHSL());
  EXPECT_EQ(rgbOf(c), 0x0000FFu);
  EXPECT_EQ(c.getAlpha(), 0.25f);
  EXPECT_EQ(colorOf("hsla(240,100%,50%,40%)").getAlpha(), 0.4f);
  expectRefusedBoth("hsla(240,100%,50%)");
  expectRefusedBoth("hsla(240,100%,50%,1em)");
}

// ---- cmyk(), device-cmyk() and cmyka() ----

TEST_F(ParseColor, CmykOfNumbersOrPercentages) {
  ZQColor a = colorOf("cmyk(0,0,0,1)");
  EXPECT_TRUE(a.isK100());
  EXPECT_EQ(rgbOf(a), 0u);
  ZQColor b = colorOf("cmyk(0%,0%,0%,100%)");
  EXPECT_TRUE(b.isK100());
  ZQColor c = colorOf("cmyk(1,50%,0,0)");
  EXPECT_TRUE(c.isCMYK());
  EXPECT_EQ(c.getC(), 1.0f);
  EXPECT_EQ(c.getM(), 0.5f);
  EXPECT_FALSE(c.hasCMYKRGB());
  EXPECT_EQ(rgbOf(c), ZQColor::cmyk2rgb(1.0f, 0.5f, 0.0f, 0.0f));
  // Each value is limited to 0 and 1.
  ZQColor d = colorOf("cmyk(2,-1,0,0)");
  EXPECT_EQ(d.getC(), 1.0f);
  EXPECT_EQ(d.getM(), 0.0f);
  expectRefusedBoth("cmyk(0,0,0,1pt)");
  expectRefusedBoth("cmyk(0,0,0)");
  expectRefusedBoth("cmyk(0,0,0,black)");
}

TEST_F(ParseColor, DeviceCmykIsCmyk) {
  ZQColor c = colorOf("device-cmyk(0.1,0.2,0.3,0.4)");
  EXPECT_EQ(c, ZQColor(0.1f, 0.2f, 0.3f, 0.4f));
  EXPECT_TRUE(colorOf("device-cmyk(0%,0%,0%,100%)").isK100());
}

TEST_F(ParseColor, CmykaKeepsTheAlpha) {
  ZQColor c = colorOf("cmyka(0,0,0,1,0.5)");
  EXPECT_TRUE(c.isCMYK());
  EXPECT_EQ(c.getK(), 1.0f);
  EXPECT_EQ(c.getAlpha(), 0.5f);
  // An alpha below 1 is no longer k100.
  EXPECT_FALSE(c.isK100());
  EXPECT_TRUE(colorOf("cmyka(0,0,0,1,1)").isK100());
  expectRefusedBoth("cmyka(0,0,0,1)");
  expectRefusedBoth("cmyka(0,0,0,1,x)");
}

// ---- rgb-icc() and its tail ----

TEST_F(ParseColor, RgbIccWithRgbAndCmyk) {
  ZQColor c = colorOf("rgb-icc(255,0,0,#CMYK,0,1,1,0)");
  EXPECT_TRUE(c.isCMYK());
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  EXPECT_TRUE(c.hasCMYKRGB());
  EXPECT_EQ(c.getC(), 0.0f);
  EXPECT_EQ(c.getM(), 1.0f);
  EXPECT_EQ(c.getY(), 1.0f);
  EXPECT_EQ(c.getK(), 0.0f);
  // The author's rgb stands even where it differs from the CMYK's.
  ZQColor d = colorOf("rgb-icc(1,2,3,#CMYK,0,0,0,1)");
  EXPECT_EQ(rgbOf(d), 0x010203u);
  EXPECT_TRUE(d.hasCMYKRGB());
  EXPECT_EQ(d.getK(), 1.0f);
}

TEST_F(ParseColor, RgbIccWithoutRgbComputesIt) {
  ZQColor g = colorOf("rgb-icc(#GRAYSCALE,0.5)");
  EXPECT_TRUE(g.isGrayscale());
  EXPECT_EQ(rgbOf(g), 0x808080u);
  EXPECT_FALSE(g.hasGrayscaleRGB());
  EXPECT_EQ(g.getGrayscale(), 0.5f);
  ZQColor c = colorOf("rgb-icc(#CMYK,1,0,0,0)");
  EXPECT_TRUE(c.isCMYK());
  EXPECT_EQ(rgbOf(c), 0x00FFFFu);
  EXPECT_FALSE(c.hasCMYKRGB());
}

TEST_F(ParseColor, RgbIccGrayscale) {
  ZQColor g = colorOf("rgb-icc(16,32,48,#GRAYSCALE,0.3)");
  EXPECT_TRUE(g.isGrayscale());
  EXPECT_EQ(rgbOf(g), 0x102030u);
  EXPECT_TRUE(g.hasGrayscaleRGB());
  EXPECT_EQ(g.getGrayscale(), 0.3f);
  // The gray is limited to 0 and 1; a percentage is a fraction.
  EXPECT_EQ(colorOf("rgb-icc(#GRAYSCALE,2)").getGrayscale(), 1.0f);
  EXPECT_EQ(rgbOf(colorOf("rgb-icc(#GRAYSCALE,2)")), 0xFFFFFFu);
  EXPECT_EQ(colorOf("rgb-icc(#GRAYSCALE,-1)").getGrayscale(), 0.0f);
  EXPECT_EQ(colorOf("rgb-icc(#GRAYSCALE,25%)").getGrayscale(), 0.25f);
  expectRefusedBoth("rgb-icc(#GRAYSCALE)");
  expectRefusedBoth("rgb-icc(#GRAYSCALE,0.5,0.5)");
  expectRefusedBoth("rgb-icc(#GRAYSCALE,x)");
}

TEST_F(ParseColor, RgbIccCmykNeedsFourNumbers) {
  expectRefusedBoth("rgb-icc(#CMYK,0,0,0)");
  expectRefusedBoth("rgb-icc(#CMYK,0,0,0,1,0)");
  expectRefusedBoth("rgb-icc(#CMYK,0,0,0,1pt)");
  ZQColor p = colorOf("rgb-icc(#CMYK,0%,50%,0,100%)");
  EXPECT_EQ(p.getM(), 0.5f);
  EXPECT_EQ(p.getK(), 1.0f);
}

TEST_F(ParseColor, RgbIccProfileNamesAreCaseBlindAndMarked) {
  EXPECT_TRUE(colorOf("rgb-icc(#cmyk,0,0,0,1)").isK100());
  EXPECT_TRUE(colorOf("rgb-icc(#Grayscale,0.5)").isGrayscale());
  EXPECT_TRUE(colorOf("rgb-icc(# CMYK,0,0,0,1)").isK100());
  // Without the "#" a built-in name is an author's profile.
  ZQColor icc = colorOf("rgb-icc(0,0,0,CMYK,0,0,0,1)");
  EXPECT_TRUE(icc.isICCColorProfile());
  EXPECT_EQ(s8(icc.getICCColorProfileName()), "CMYK");
  // A "#" name that is no built-in profile reads as nothing.
  expectRefusedBoth("rgb-icc(#RGB,0,0,0)");
  expectRefusedBoth("rgb-icc(#nosuch,1)");
  expectRefusedBoth("rgb-icc(0,0,0,#nosuch,1)");
  expectRefusedBoth("rgb-icc(0,0,0,#'#CMYK',0,0,0,1)");
  // The "#" may also stand inside a quoted name.
  ZQColor quoted = colorOf("rgb-icc(1,2,3,'#cmyk',0,0,0,1)");
  EXPECT_TRUE(quoted.isK100());
  EXPECT_TRUE(quoted.hasCMYKRGB());
  EXPECT_EQ(rgbOf(quoted), 0x010203u);
  EXPECT_EQ(rgbOf(colorOf("rgb-icc(0,0,0,#'Grayscale',1)")), 0u);
  EXPECT_TRUE(colorOf("rgb-icc(0,0,0,#'Grayscale',1)").isGrayscale());
}

TEST_F(ParseColor, RgbIccRgbMayBePercentages) {
  ZQColor c = colorOf("rgb-icc(100%,0%,0%,#CMYK,0,1,1,0)");
  EXPECT_TRUE(c.isCMYK());
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  EXPECT_TRUE(c.hasCMYKRGB());
  // ...but not mixed with numbers.
  expectRefusedBoth("rgb-icc(100%,0,0,#CMYK,0,1,1,0)");
}

TEST_F(ParseColor, RgbIccNeedsAProfile) {
  expectRefusedBoth("rgb-icc(255,0,0)");
  expectRefusedBoth("rgb-icc()");
  expectRefusedBoth("rgb-icc(#)");
  expectRefusedBoth("rgb-icc(255,0,0,12,1)");
  expectRefusedBoth("rgb-icc('',1)");
}

TEST_F(ParseColor, RgbIccRegistration) {
  ZQColor all = colorOf("rgb-icc(#REGISTRATION)");
  EXPECT_TRUE(all.isRegistration());
  EXPECT_EQ(s8(all.getSeparationColorName()), "All");
  EXPECT_EQ(all.getSeparationTint(), 1.0f);
  EXPECT_FALSE(all.hasSeparationTint());
  EXPECT_FALSE(all.hasSeparationCMYK());
  EXPECT_FALSE(all.hasSeparationRGB());
  EXPECT_EQ(rgbOf(all), 0u);
  ZQColor tinted = colorOf("rgb-icc(#Registration,0.5)");
  EXPECT_TRUE(tinted.isRegistration());
  EXPECT_TRUE(tinted.hasSeparationTint());
  EXPECT_EQ(tinted.getSeparationTint(), 0.5f);
  EXPECT_EQ(rgbOf(tinted), 0x808080u);
  ZQColor given = colorOf("rgb-icc(1,2,3,#REGISTRATION,0.5)");
  EXPECT_TRUE(given.isRegistration());
  EXPECT_TRUE(given.hasSeparationRGB());
  EXPECT_EQ(rgbOf(given), 0x010203u);
  expectRefusedBoth("rgb-icc(#REGISTRATION,0.5,0.5)");
  // The registration colour takes a tint, and no CMYK.
  expectRefusedBoth("rgb-icc(#REGISTRATION,0.5,0,0,0,1)");
  expectRefusedBoth("rgb-icc(1,2,3,#REGISTRATION,1,0,0,0,1)");
  expectRefusedBoth("rgb-icc(#REGISTRATION,x)");
}

TEST_F(ParseColor, RgbIccSeparation) {
  ZQColor s = colorOf("rgb-icc(#SEPARATION,Gold,0.5)");
  EXPECT_TRUE(s.isSeparation());
  EXPECT_FALSE(s.isRegistration());
  EXPECT_EQ(s8(s.getSeparationColorName()), "Gold");
  EXPECT_EQ(s.getSeparationTint(), 0.5f);
  EXPECT_TRUE(s.hasSeparationTint());
  EXPECT_FALSE(s.hasSeparationCMYK());
  EXPECT_FALSE(s.hasSeparationRGB());
  EXPECT_EQ(rgbOf(s), 0x808080u);
  // The name may be quoted, and hold what a name cannot.
  ZQColor q = colorOf("rgb-icc(#SEPARATION,\"PANTONE 123 C\")");
  EXPECT_EQ(s8(q.getSeparationColorName()), "PANTONE 123 C");
  EXPECT_FALSE(q.hasSeparationTint());
  EXPECT_EQ(q.getSeparationTint(), 1.0f);
  // A separation named "all" is the registration colour.
  EXPECT_TRUE(colorOf("rgb-icc(#SEPARATION,ALL,1)").isRegistration());
}

TEST_F(ParseColor, RgbIccSeparationWithCmyk) {
  ZQColor s = colorOf("rgb-icc(#SEPARATION,Spot,0.5,0,1,1,0)");
  EXPECT_TRUE(s.isSeparation());
  EXPECT_TRUE(s.hasSeparationTint());
  EXPECT_TRUE(s.hasSeparationCMYK());
  EXPECT_FALSE(s.hasSeparationRGB());
  EXPECT_EQ(s.getSeparationM(), 1.0f);
  EXPECT_EQ(s.getSeparationY(), 1.0f);
  // The rgb is computed from the tinted CMYK.
  EXPECT_EQ(rgbOf(s), ZQColor::cmyk2rgb(0.0f, 0.5f, 0.5f, 0.0f));
  ZQColor given = colorOf("rgb-icc(255,0,0,#SEPARATION,Spot,0.5,0,1,1,0)");
  EXPECT_TRUE(given.hasSeparationRGB());
  EXPECT_TRUE(given.hasSeparationTint());
  EXPECT_TRUE(given.hasSeparationCMYK());
  EXPECT_EQ(rgbOf(given), 0xFF0000u);
  // The CMYK needs the tint before it, and all four values.
  expectRefusedBoth("rgb-icc(#SEPARATION,Spot,0,1,1,0)");
  expectRefusedBoth("rgb-icc(#SEPARATION,Spot,0.5,0,1,1)");
  expectRefusedBoth("rgb-icc(#SEPARATION,Spot,0.5,0,1,1,x)");
}

TEST_F(ParseColor, RgbIccSeparationNeedsAName) {
  expectRefusedBoth("rgb-icc(#SEPARATION)");
  expectRefusedBoth("rgb-icc(#SEPARATION,0.5)");
  expectRefusedBoth("rgb-icc(#SEPARATION,Spot,tint)");
}

TEST_F(ParseColor, RgbIccSpotColourIsASeparation) {
  ZQColor s = colorOf("rgb-icc(#SPOTCOLOR,Gold,0.25)");
  EXPECT_TRUE(s.isSeparation());
  EXPECT_EQ(s8(s.getSeparationColorName()), "Gold");
  EXPECT_EQ(s.getSeparationTint(), 0.25f);
  EXPECT_EQ(s, colorOf("rgb-icc(#SEPARATION,Gold,0.25)"));
}

TEST_F(ParseColor, RgbIccSeventhArgumentIsRefused) {
  // Six arguments are the most: a name, a tint and four CMYK values.
  EXPECT_TRUE(colorOf("rgb-icc(#SEPARATION,Spot,1,0,0,0,1)").isSeparation());
  expectRefusedBoth("rgb-icc(#SEPARATION,Spot,1,0,0,0,1,0)");
  expectRefusedBoth("rgb-icc(Profile,1,2,3,4,5,6,7)");
  expectRefusedBoth("rgb-icc(255,0,0,#SEPARATION,Spot,1,0,0,0,1,0)");
}

TEST_F(ParseColor, RgbIccOtherProfiles) {
  ZQColor c = colorOf("rgb-icc(51,102,153,MyProfile,0.1,0.2,0.3,0.4)");
  ASSERT_TRUE(c.isICCColorProfile());
  EXPECT_FALSE(c.isInvalid());
  EXPECT_EQ(rgbOf(c), 0x336699u);
  EXPECT_EQ(s8(c.getICCColorProfileName()), "MyProfile");
  EXPECT_EQ(c.getICCValue(0), 0.1f);
  EXPECT_EQ(c.getICCValue(1), 0.2f);
  EXPECT_EQ(c.getICCValue(2), 0.3f);
  EXPECT_EQ(c.getICCValue(3), 0.4f);
  // The values are kept as given.
  ZQColor wide = colorOf("rgb-icc(0,0,0,Lab,50,-20,30)");
  EXPECT_EQ(wide.getICCValue(0), 50.0f);
  EXPECT_EQ(wide.getICCValue(1), -20.0f);
  EXPECT_EQ(wide.getICCValue(2), 30.0f);
  // Values not given read 0.
  EXPECT_EQ(wide.getICCValue(3), 0.0f);
  ZQColor none = colorOf("rgb-icc(0,0,0,Bare)");
  EXPECT_EQ(none.getICCValue(0), 0.0f);
  // A quoted profile name.
  EXPECT_EQ(s8(colorOf("rgb-icc(0,0,0,'My Profile',1)").getICCColorProfileName()), "My Profile");
  // Four values at most.
  expectRefusedBoth("rgb-icc(0,0,0,MyProfile,1,2,3,4,5)");
  expectRefusedBoth("rgb-icc(0,0,0,MyProfile,x)");
}

TEST_F(ParseColor, RgbIccWithoutRgbReadsTheTailAfterThreeValues) {
  // Unless a "#" comes first, three values are read as the rgb; when they are not all numbers
  // or percentages the rgb is not given, and the tail starts after them.
  ZQColor c = colorOf("rgb-icc(1,2,x,#CMYK,1,0,0,0)");
  EXPECT_TRUE(c.isCMYK());
  EXPECT_FALSE(c.hasCMYKRGB());
  EXPECT_EQ(rgbOf(c), 0x00FFFFu);
  ZQColor g = colorOf("rgb-icc(a b c #GRAYSCALE 0.5)");
  EXPECT_FALSE(g.hasGrayscaleRGB());
  EXPECT_EQ(rgbOf(g), 0x808080u);
  // So an author's profile needs the rgb before it: the profile would be read as the rgb.
  expectRefusedBoth("rgb-icc(Gray,0.5)");
  expectRefusedBoth("rgb-icc(MyProfile,0.1,0.2,0.3,0.4)");
  // Three values that are numbers and percentages mixed are no rgb.
  expectRefusedBoth("rgb-icc(1,2,3%,#CMYK,0,0,0,1)");
}

TEST_F(ParseColor, RgbIccTailMustCloseTheText) {
  // After the ")" of the tail nothing may follow, not even in the tokenizer form.
  expectRefusedBoth("rgb-icc(#CMYK,0,0,0,1) x");
  ZQTokenizer tk(u("rgb-icc(#CMYK,0,0,0,1) x"));
  ZQValue v = ZQParser::parseColor(tk, false);
  EXPECT_FALSE(v.isColor());
  EXPECT_EQ(v.getNameValue(), ZQName(ZQN_rgb_icc));
  // A comma before the profile is optional.
  EXPECT_EQ(colorOf("rgb-icc(255 0 0 #CMYK 0 1 1 0)"), colorOf("rgb-icc(255,0,0,#CMYK,0,1,1,0)"));
}

// ---- the CSS form ----

TEST_F(ParseColor, CssHexColourWithIccColor) {
  ZQColor c = colorOf("#ff0000 icc-color(#CMYK,0,1,1,0)", true);
  EXPECT_TRUE(c.isCMYK());
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  EXPECT_TRUE(c.hasCMYKRGB());
  EXPECT_EQ(c.getC(), 0.0f);
  EXPECT_EQ(c.getM(), 1.0f);
  EXPECT_EQ(c.getY(), 1.0f);
  EXPECT_EQ(c.getK(), 0.0f);
  // Not in the XSL-FO syntax.
  expectRefused("#ff0000 icc-color(#CMYK,0,1,1,0)", false);
}

TEST_F(ParseColor, CssNameOrRgbWithIccColor) {
  ZQColor n = colorOf("red icc-color(#CMYK,0,1,1,0)", true);
  EXPECT_TRUE(n.isCMYK());
  EXPECT_EQ(rgbOf(n), 0xFF0000u);
  EXPECT_TRUE(n.hasCMYKRGB());
  ZQColor r = colorOf("rgb(0,0,255) icc-color(#GRAYSCALE,0.5)", true);
  EXPECT_TRUE(r.isGrayscale());
  EXPECT_EQ(rgbOf(r), 0x0000FFu);
  EXPECT_TRUE(r.hasGrayscaleRGB());
  ZQColor a = colorOf("rgba(0,0,255,0.5) icc-color(MyProfile,1,2)", true);
  EXPECT_TRUE(a.isICCColorProfile());
  EXPECT_EQ(rgbOf(a), 0x0000FFu);
  EXPECT_EQ(a.getAlpha(), 0.5f);
  EXPECT_EQ(a.getICCValue(1), 2.0f);
  expectRefused("red icc-color(#CMYK,0,1,1,0)", false);
  expectRefused("rgb(0,0,255) icc-color(#GRAYSCALE,0.5)", false);
  // A name that is no colour takes no tail.
  expectRefused("nosuch icc-color(#CMYK,0,1,1,0)", true);
  // hsl() and cmyk() take no tail either.
  expectRefused("hsl(0,100%,50%) icc-color(#CMYK,0,1,1,0)", true);
  expectRefused("cmyk(0,1,1,0) icc-color(#CMYK,0,1,1,0)", true);
}

TEST_F(ParseColor, CssKeywordsResolveOnlyWithATail) {
  // A lone keyword stays a name in both syntaxes; followed by a tail it is a colour.
  ZQColor t = colorOf("transparent icc-color(Profile,1)", true);
  EXPECT_TRUE(t.isTransparent());
}

TEST_F(ParseColor, CssIccColorAlone) {
  ZQColor c = colorOf("icc-color(#CMYK,0,1,1,0)", true);
  EXPECT_TRUE(c.isCMYK());
  EXPECT_FALSE(c.hasCMYKRGB());
  EXPECT_EQ(rgbOf(c), 0xFF0000u);
  ZQColor g = colorOf("icc-color(#GRAYSCALE,0)", true);
  EXPECT_TRUE(g.isGrayscale());
  EXPECT_EQ(rgbOf(g), 0u);
  // Only the CSS form knows the function.
  expectRefused("icc-color(#CMYK,0,1,1,0)", false);
}

TEST_F(ParseColor, CssIccColorSeparationFlags) {
  // The colour before icc-color() is the separation's rgb.
  ZQColor s = colorOf("#00ff00 icc-color(#SEPARATION,Green,0.25)", true);
  EXPECT_TRUE(s.isSeparation());
  EXPECT_TRUE(s.hasSeparationRGB());
  EXPECT_TRUE(s.hasSeparationTint());
  EXPECT_FALSE(s.hasSeparationCMYK());
  EXPECT_EQ(rgbOf(s), 0x00FF00u);
  ZQColor full = colorOf("#00ff00 icc-color(#SEPARATION,Green,0.25,1,0,1,0)", true);
  EXPECT_TRUE(full.hasSeparationRGB());
  EXPECT_TRUE(full.hasSeparationTint());
  EXPECT_TRUE(full.hasSeparationCMYK());
  EXPECT_EQ(rgbOf(full), 0x00FF00u);
  ZQColor reg = colorOf("black icc-color(#REGISTRATION)", true);
  EXPECT_TRUE(reg.isRegistration());
  EXPECT_TRUE(reg.hasSeparationRGB());
  EXPECT_FALSE(reg.hasSeparationTint());
  EXPECT_FALSE(reg.hasSeparationCMYK());
  // Without a colour before it, the rgb is not given.
  ZQColor alone = colorOf("icc-color(#SPOTCOLOR,Gold,0.5,0,0,1,0)", true);
  EXPECT_FALSE(alone.hasSeparationRGB());
  EXPECT_TRUE(alone.hasSeparationTint());
  EXPECT_TRUE(alone.hasSeparationCMYK());
  EXPECT_EQ(rgbOf(alone), ZQColor::cmyk2rgb(0.0f, 0.0f, 0.5f, 0.0f));
}

TEST_F(ParseColor, CssIccColorFailures) {
  expectRefused("#ff0000 icc-color(#CMYK,0,1,1)", true);
  expectRefused("#ff0000 icc-color(#CMYK,0,1,1,0", true);
  expectRefused("#ff0000 icc-color(#CMYK,0,1,1,0) x", true);
  expectRefused("#ff0000 icc-color", true);
  expectRefused("#ff0000 icc-color x", true);
  expectRefused("icc-color(#SEPARATION,Spot,1,0,0,0,1,0)", true);
}

// ---- the tokenizer form ----

TEST_F(ParseColor, TokenizerFormStopsAfterTheColour) {
  ZQTokenizer tk(u("#abc rgb(1,2,3) cmyk(0,0,0,1), hsl(0,100%,50%) 12pt"));
  EXPECT_EQ(rgbOf(ZQParser::parseColor(tk, false).getColorValue()), 0xAABBCCu);
  EXPECT_EQ(rgbOf(ZQParser::parseColor(tk, false).getColorValue()), 0x010203u);
  EXPECT_TRUE(ZQParser::parseColor(tk, false).getColorValue().isK100());
  EXPECT_EQ(tk.nextToken(), u',');
  EXPECT_EQ(rgbOf(ZQParser::parseColor(tk, false).getColorValue()), 0xFF0000u);
  ZQValue n = ZQParser::parseColor(tk, false);
  EXPECT_EQ(n.getUnitType(), ZQUNIT_PT);
  EXPECT_TRUE(ZQParser::parseColor(tk, false).isNull());
}

TEST_F(ParseColor, TokenizerFormAtTheEndOrACharacterIsNull) {
  ZQTokenizer empty(u(""));
  EXPECT_TRUE(ZQParser::parseColor(empty, true).isNull());
  ZQTokenizer ch(u(", red"));
  EXPECT_TRUE(ZQParser::parseColor(ch, true).isNull());
  // The name after the character is still there.
  EXPECT_EQ(ZQParser::parseColor(ch, true).getNameValue(), ZQName(ZQN_red));
}

TEST_F(ParseColor, TokenizerFormLeavesTheTokenAfterAName) {
  ZQTokenizer tk(u("red 12"));
  ZQValue v = ZQParser::parseColor(tk, false);
  EXPECT_EQ(v.getNameValue(), ZQName(ZQN_red));
  EXPECT_EQ(tk.nextToken(), ZQTokenizer::TOKEN_NUMBER);
  EXPECT_EQ(tk.getNumber(), 12.0);
  // In CSS a colour name there is a colour.
  ZQTokenizer css(u("red 12"));
  ZQValue c = ZQParser::parseColor(css, true);
  ASSERT_TRUE(c.isColor());
  EXPECT_EQ(rgbOf(c.getColorValue()), 0xFF0000u);
  EXPECT_EQ(css.nextToken(), ZQTokenizer::TOKEN_NUMBER);
  EXPECT_EQ(css.getNumber(), 12.0);
}

TEST_F(ParseColor, UnknownFunctionIsTheNameWithItsParenthesisPushedBack) {
  ZQTokenizer tk(u("foo(1)"));
  ZQValue v = ZQParser::parseColor(tk, false);
  ASSERT_TRUE(v.isName());
  EXPECT_EQ(s8(v.getStringValue()), "foo");
  EXPECT_TRUE(tk.isPushedBack());
  EXPECT_EQ(tk.nextToken(), u'(');
  expectRefusedBoth("foo(1)");
}

TEST_F(ParseColor, FailedFunctionIsTheNameWithItsParenthesisPushedBack) {
  ZQTokenizer tk(u("rgb(100%,0,0)"));
  ZQValue v = ZQParser::parseColor(tk, false);
  EXPECT_EQ(v.getNameValue(), ZQName(ZQN_rgb));
  EXPECT_EQ(tk.nextToken(), u'(');
  EXPECT_EQ(tk.nextToken(), ZQTokenizer::TOKEN_NUMBER);
  EXPECT_EQ(tk.getTokenText(), u("%"));
  // Also when the ")" is missing: the token read in its place is not what stays pushed back.
  ZQTokenizer open(u("rgb(1,2,3 x"));
  EXPECT_EQ(ZQParser::parseColor(open, false).getNameValue(), ZQName(ZQN_rgb));
  EXPECT_TRUE(open.isPushedBack());
  EXPECT_EQ(open.nextToken(), u'(');
  EXPECT_EQ(open.nextToken(), ZQTokenizer::TOKEN_NUMBER);
  EXPECT_EQ(open.getNumber(), 1.0);
  ZQTokenizer css(u("icc-color(#CMYK,0,0,0,1)"));
  EXPECT_EQ(ZQParser::parseColor(css, false).getNameValue(), ZQName(ZQN_icc_color));
  EXPECT_EQ(css.nextToken(), u'(');
}

TEST_F(ParseColor, TokenizerFormTakesAPushedBackToken) {
  ZQTokenizer tk(u("#abc"));
  tk.nextToken();
  tk.pushBack();
  EXPECT_EQ(rgbOf(ZQParser::parseColor(tk, false).getColorValue()), 0xAABBCCu);
}

TEST_F(ParseColor, TokenizerFunctionReaderReadsRgbAsAColour) {
  ZQTokenizer tk(u("rgb(255, 0, 0) rgb(100%,0,0) 5"));
  ZQValue red = tk.nextTokenValueFunc();
  ASSERT_TRUE(red.isColor());
  EXPECT_EQ(rgbOf(red.getColorValue()), 0xFF0000u);
  // A text that is no colour stays the function's text.
  ZQValue mixed = tk.nextTokenValueFunc();
  EXPECT_TRUE(mixed.isUnknownString());
  EXPECT_EQ(s8(mixed.getStringValue()), "rgb(100%,0,0)");
  EXPECT_EQ(tk.nextTokenValueFunc().getIntegerValue(), 5);
}

// ---- getColorValue ----

TEST_F(ParseColor, GetColorValueReadsStrings) {
  EXPECT_EQ(rgbOf(ZQValue(u("#ff0000"), ZQUNIT_NONE).getColorValue(true)), 0xFF0000u);
  EXPECT_EQ(rgbOf(ZQValue(u(" rgb(0,0,255) "), ZQUNIT_LITERAL).getColorValue()), 0x0000FFu);
  EXPECT_TRUE(ZQValue(u("cmyk(0,0,0,1)"), ZQUNIT_URI).getColorValue(true).isK100());
  ZQColor sep = ZQValue(u("rgb-icc(#SEPARATION,Gold,0.5)"), ZQUNIT_NONE).getColorValue(true);
  EXPECT_TRUE(sep.isSeparation());
  EXPECT_EQ(s8(sep.getSeparationColorName()), "Gold");
  ZQColor a = ZQValue(u("rgba(red,0.5)"), ZQUNIT_NONE).getColorValue(true);
  EXPECT_EQ(a.getAlpha(), 0.5f);
  // Strings are read in the XSL-FO syntax.
  EXPECT_TRUE(
      ZQValue(u("#ff0000 icc-color(#CMYK,0,1,1,0)"), ZQUNIT_NONE).getColorValue(true).isInvalid());
}

TEST_F(ParseColor, GetColorValueStrictOrNotOnUnreadableText) {
  for (const char* text : {"nonsense text", "rgb(100%,0,0)", "hsl(120deg,100%,50%)", "12pt",
                           "'quoted'", "", "#abcde"}) {
    ZQValue v(u(text), ZQUNIT_NONE);
    EXPECT_TRUE(v.getColorValue(true).isInvalid()) << text;
    EXPECT_TRUE(v.getColorValue().isTransparent()) << text;
    EXPECT_TRUE(v.getColorValue(false).isTransparent()) << text;
    EXPECT_TRUE(ZQColor(v).isTransparent()) << text;
  }
}

TEST_F(ParseColor, GetColorValueOfAKeywordStringNeedsTheColourForm) {
  // Text reads as a colour only when the colour syntax makes a colour of it: a lone keyword
  // stays a name there, so a string holding one has no colour. A name value has.
  ZQValue s(u("red"), ZQUNIT_NONE);
  EXPECT_TRUE(s.getColorValue(true).isInvalid());
  EXPECT_TRUE(s.getColorValue().isTransparent());
  EXPECT_EQ(rgbOf(ZQParser::parseColor(u("red"), false).getColorValue(true)), 0xFF0000u);
}

TEST_F(ParseColor, GetColorValueOfNamesAndValuesWithoutText) {
  EXPECT_EQ(rgbOf(ZQValue(ZQN_blue).getColorValue(true)), 0x0000FFu);
  EXPECT_TRUE(ZQValue(ZQN_currentColor).getColorValue(true).isCurrentColor());
  EXPECT_TRUE(ZQValue(ZQN_auto).getColorValue(true).isInvalid());
  EXPECT_TRUE(ZQValue(ZQN_auto).getColorValue().isTransparent());
  for (const ZQValue& v :
       {ZQValue(), ZQValue(0xFF0000), ZQValue(1.0f, ZQUNIT_PT), ZQValue(new ZQValueArray())}) {
    EXPECT_TRUE(v.getColorValue(true).isInvalid());
    EXPECT_TRUE(v.getColorValue().isTransparent());
  }
}

// ---- the value form of a colour ----

// A compound of unit 24 from (key, value) members.
ZQValue colorRecord(std::initializer_list<std::pair<ZQNameEnum, ZQValue>> members,
                    ZQUnitType unit = ZQUNIT_COLOR) {
  ZQValue v(new ZQNamedValueMap());
  for (const auto& [key, value] : members) v.setNamedItem(ZQName(key), value);
  v.setUnitType(unit);
  return v;
}

ZQValue realOf(float f) { return ZQValue(f, ZQUNIT_NUMBER); }

void expectRealMember(const ZQValue& record, ZQNameEnum key, float expected) {
  const ZQValue m = record.getNamedItem(ZQName(key));
  EXPECT_TRUE(m.isReal()) << s8(ZQName(key).toString());
  EXPECT_EQ(m.getUnitType(), ZQUNIT_NUMBER) << s8(ZQName(key).toString());
  EXPECT_EQ(m.getRealValue(ZQUNIT_NUMBER), expected) << s8(ZQName(key).toString());
}

void expectIntegerMember(const ZQValue& record, ZQNameEnum key, unsigned expected) {
  const ZQValue m = record.getNamedItem(ZQName(key));
  EXPECT_TRUE(m.isInteger()) << s8(ZQName(key).toString());
  EXPECT_EQ(static_cast<unsigned>(m.getIntegerValue()), expected) << s8(ZQName(key).toString());
}

bool hasMember(const ZQValue& record, ZQNameEnum key) {
  return !record.getNamedItem(ZQName(key)).isNull();
}

// The one member keyed by the kind, checked to be the only kind key.
ZQValue kindMember(const ZQValue& v, ZQNameEnum key) {
  EXPECT_TRUE(v.isCompound());
  EXPECT_EQ(v.getUnitType(), ZQUNIT_COLOR);
  for (ZQNameEnum k : {ZQN_hash_hash_RGBA, ZQN_hash_HSL, ZQN_hash_CMYK, ZQN_hash_GRAYSCALE,
                       ZQN_hash_SEPARATION, ZQN_icc_color}) {
    if (k != key) EXPECT_FALSE(hasMember(v, k)) << s8(ZQName(k).toString());
  }
  ZQValue inner = v.getNamedItem(ZQName(key));
  EXPECT_TRUE(inner.isCompound()) << s8(ZQName(key).toString());
  return inner;
}

TEST_F(ParseColor, ValueFormOfPlainAndSpecialColoursIsTheBareRgb) {
  ZQValue plain{ZQColor(0x123456u)};
  EXPECT_TRUE(plain.isInteger());
  EXPECT_EQ(plain.getUnitType(), ZQUNIT_COLOR);
  EXPECT_EQ(plain.getIntegerValue(), 0x123456);
  // The special colours keep the integer form even with an alpha.
  for (ZQColor c : {ZQColor::getTransparent(), ZQColor::getInvert(), ZQColor::getCurrentColor(),
                    ZQColor::getInvalidColor()}) {
    c.setAlpha(0.5f);
    ZQValue v(c);
    EXPECT_TRUE(v.isInteger());
    EXPECT_EQ(v.getUnitType(), ZQUNIT_COLOR);
    EXPECT_EQ(static_cast<unsigned>(v.getIntegerValue()), rgbOf(c));
  }
}

TEST_F(ParseColor, ValueFormOfRgbaAndRgbex) {
  ZQColor a(0x654321u);
  a.setAlpha(0.5f);
  ZQValue va(a);
  ZQValue inner = kindMember(va, ZQN_hash_hash_RGBA);
  expectIntegerMember(inner, ZQN_EMPTY, 0x654321u);
  expectRealMember(inner, ZQN_alpha, 0.5f);
  EXPECT_FALSE(hasMember(inner, ZQN_red));
  EXPECT_FALSE(hasMember(va, ZQN_alpha));

  ZQColor ex;
  ex.setRGBex(0.5f, 0.25f, 1.0f);
  ZQValue vex(ex);
  ZQValue exInner = kindMember(vex, ZQN_hash_hash_RGBA);
  expectIntegerMember(exInner, ZQN_EMPTY, rgbOf(ex));
  expectRealMember(exInner, ZQN_red, 0.5f);
  expectRealMember(exInner, ZQN_green, 0.25f);
  expectRealMember(exInner, ZQN_blue, 1.0f);
  EXPECT_FALSE(hasMember(exInner, ZQN_alpha));
}

TEST_F(ParseColor, ValueFormOfHslKeepsTheAlphaOutside) {
  ZQColor h;
  h.setHSL(300.0f, 0.5f, 0.25f);
  h.setAlpha(0.125f);
  ZQValue v(h);
  ZQValue inner = kindMember(v, ZQN_hash_HSL);
  expectRealMember(inner, ZQN_hue, 300.0f);
  expectRealMember(inner, ZQN_saturation, 0.5f);
  expectRealMember(inner, ZQN_lightness, 0.25f);
  EXPECT_FALSE(hasMember(inner, ZQN_alpha));
  expectRealMember(v, ZQN_alpha, 0.125f);
}

TEST_F(ParseColor, ValueFormOfCmykAndGrayHasTheRgbOnlyWhenGiven) {
  ZQValue computed{ZQColor(0.1f, 0.2f, 0.3f, 0.4f)};
  ZQValue c = kindMember(computed, ZQN_hash_CMYK);
  expectRealMember(c, ZQN_cyan, 0.1f);
  expectRealMember(c, ZQN_magenta, 0.2f);
  expectRealMember(c, ZQN_yellow, 0.3f);
  expectRealMember(c, ZQN_black, 0.4f);
  EXPECT_FALSE(hasMember(c, ZQN_rgb));
  ZQValue given{ZQColor(ZQColor(0xFF0000u), 0.0f, 1.0f, 1.0f, 0.0f)};
  expectIntegerMember(kindMember(given, ZQN_hash_CMYK), ZQN_rgb, 0xFF0000u);

  ZQValue gray{ZQColor(0.3f)};
  ZQValue g = kindMember(gray, ZQN_hash_GRAYSCALE);
  expectRealMember(g, ZQN_value, 0.3f);
  EXPECT_FALSE(hasMember(g, ZQN_rgb));
  ZQValue grayGiven{ZQColor(ZQColor(0x102030u), 0.3f)};
  expectIntegerMember(kindMember(grayGiven, ZQN_hash_GRAYSCALE), ZQN_rgb, 0x102030u);
}

TEST_F(ParseColor, ValueFormOfASeparationHasWhatItsFlagsSay) {
  ZQValue bare{ZQColor(u("Gold"), 0.5f)};
  ZQValue s = kindMember(bare, ZQN_hash_SEPARATION);
  EXPECT_EQ(s8(s.getNamedItem(ZQName(ZQN_name)).getStringValue()), "Gold");
  expectRealMember(s, ZQN_value, 0.5f);
  EXPECT_FALSE(hasMember(s, ZQN_cyan));
  EXPECT_FALSE(hasMember(s, ZQN_rgb));

  ZQColor noTint(u("Gold"), 1.0f);
  noTint.adjustSeparationFlags(false, false, false, false);
  EXPECT_FALSE(hasMember(kindMember(ZQValue(noTint), ZQN_hash_SEPARATION), ZQN_value));

  ZQValue full{ZQColor(ZQColor(0x00FF00u), u("Green"), 0.25f, 1.0f, 0.0f, 1.0f, 0.0f)};
  ZQValue f = kindMember(full, ZQN_hash_SEPARATION);
  expectRealMember(f, ZQN_value, 0.25f);
  expectRealMember(f, ZQN_cyan, 1.0f);
  expectRealMember(f, ZQN_magenta, 0.0f);
  expectRealMember(f, ZQN_yellow, 1.0f);
  expectRealMember(f, ZQN_black, 0.0f);
  expectIntegerMember(f, ZQN_rgb, 0x00FF00u);
}

TEST_F(ParseColor, ValueFormOfAnIccColour) {
  ZQColor icc(ZQColor(0x336699u), u("MyProfile"), 0.1f, 0.2f, 0.3f, 0.4f);
  icc.setAlpha(0.75f);
  ZQValue v(icc);
  ZQValue inner = kindMember(v, ZQN_icc_color);
  const ZQValue name = inner.getNamedItem(ZQName(ZQN_name));
  EXPECT_TRUE(name.isName());
  EXPECT_EQ(s8(name.getStringValue()), "MyProfile");
  expectRealMember(inner, ZQN_cyan, 0.1f);
  expectRealMember(inner, ZQN_magenta, 0.2f);
  expectRealMember(inner, ZQN_yellow, 0.3f);
  expectRealMember(inner, ZQN_black, 0.4f);
  expectRealMember(v, ZQN_alpha, 0.75f);
}

TEST_F(ParseColor, GetColorValueReadsABuiltRecord) {
  // Reals are read as plain numbers, so a percentage counts / 100; the rgb as an integer.
  ZQValue gray =
      colorRecord({{ZQN_hash_GRAYSCALE, colorRecord({{ZQN_value, ZQValue(50.0f, ZQUNIT_PERCENT)},
                                                     {ZQN_rgb, ZQValue(1056816.0f, ZQUNIT_NUMBER)}},
                                                    ZQUNIT_NONE)}});
  ZQColor g = gray.getColorValue(true);
  EXPECT_TRUE(g.isGrayscale());
  EXPECT_EQ(g.getGrayscale(), 0.5f);
  EXPECT_TRUE(g.hasGrayscaleRGB());
  EXPECT_EQ(rgbOf(g), 0x102030u);
  // An alpha beside the key applies to any kind.
  ZQValue cmyk = colorRecord({{ZQN_hash_CMYK, colorRecord({{ZQN_cyan, realOf(1.0f)},
                                                           {ZQN_magenta, realOf(0.0f)},
                                                           {ZQN_yellow, realOf(0.0f)},
                                                           {ZQN_black, realOf(0.0f)}},
                                                          ZQUNIT_NONE)},
                              {ZQN_alpha, realOf(0.25f)}});
  ZQColor c = cmyk.getColorValue(true);
  EXPECT_TRUE(c.isCMYK());
  EXPECT_FALSE(c.hasCMYKRGB());
  EXPECT_EQ(rgbOf(c), 0x00FFFFu);
  EXPECT_EQ(c.getAlpha(), 0.25f);
}

TEST_F(ParseColor, GetColorValueTakesTheKeysInItsOrder) {
  const ZQValue iccInner =
      colorRecord({{ZQN_name, ZQValue(ZQName(u("P")))}, {ZQN_cyan, realOf(0.5f)}}, ZQUNIT_NONE);
  const ZQValue hslInner = colorRecord(
      {{ZQN_hue, realOf(120.0f)}, {ZQN_saturation, realOf(1.0f)}, {ZQN_lightness, realOf(0.5f)}},
      ZQUNIT_NONE);
  const ZQValue rgbaInner = colorRecord({{ZQN_EMPTY, ZQValue(0x123456)}}, ZQUNIT_NONE);
  const ZQValue sepInner = colorRecord({{ZQN_name, ZQValue(u("Spot"), ZQUNIT_NONE)}}, ZQUNIT_NONE);
  const ZQValue grayInner = colorRecord({{ZQN_value, realOf(0.5f)}}, ZQUNIT_NONE);
  const ZQValue cmykInner = colorRecord({{ZQN_cyan, realOf(0.0f)},
                                         {ZQN_magenta, realOf(0.0f)},
                                         {ZQN_yellow, realOf(0.0f)},
                                         {ZQN_black, realOf(1.0f)}},
                                        ZQUNIT_NONE);
  // Each record also holds every kind that comes later in the order.
  EXPECT_TRUE(colorRecord({{ZQN_hash_CMYK, cmykInner},
                           {ZQN_hash_GRAYSCALE, grayInner},
                           {ZQN_hash_SEPARATION, sepInner},
                           {ZQN_hash_hash_RGBA, rgbaInner},
                           {ZQN_hash_HSL, hslInner},
                           {ZQN_icc_color, iccInner}})
                  .getColorValue(true)
                  .isICCColorProfile());
  EXPECT_TRUE(colorRecord({{ZQN_hash_CMYK, cmykInner},
                           {ZQN_hash_GRAYSCALE, grayInner},
                           {ZQN_hash_SEPARATION, sepInner},
                           {ZQN_hash_hash_RGBA, rgbaInner},
                           {ZQN_hash_HSL, hslInner}})
                  .getColorValue(true)
                  .isHSL());
  EXPECT_EQ(rgbOf(colorRecord({{ZQN_hash_CMYK, cmykInner},
                               {ZQN_hash_GRAYSCALE, grayInner},
                               {ZQN_hash_SEPARATION, sepInner},
                               {ZQN_hash_hash_RGBA, rgbaInner}})
                      .getColorValue(true)),
            0x123456u);
  EXPECT_TRUE(colorRecord({{ZQN_hash_CMYK, cmykInner},
                           {ZQN_hash_GRAYSCALE, grayInner},
                           {ZQN_hash_SEPARATION, sepInner}})
                  .getColorValue(true)
                  .isSeparation());
  EXPECT_TRUE(colorRecord({{ZQN_hash_CMYK, cmykInner}, {ZQN_hash_GRAYSCALE, grayInner}})
                  .getColorValue(true)
                  .isGrayscale());
  EXPECT_TRUE(colorRecord({{ZQN_hash_CMYK, cmykInner}}).getColorValue(true).isK100());
}

TEST_F(ParseColor, GetColorValueOfARecordWithoutAColourKeyOrUnit) {
  const ZQValue cmykInner = colorRecord({{ZQN_black, realOf(1.0f)}}, ZQUNIT_NONE);
  // Unit 24 without a known key.
  ZQValue none = colorRecord({{ZQN_width, realOf(1.0f)}});
  EXPECT_TRUE(none.getColorValue(true).isInvalid());
  EXPECT_TRUE(none.getColorValue().isTransparent());
  // A known key without unit 24 is no colour: the record has no text to read either.
  ZQValue plain = colorRecord({{ZQN_hash_CMYK, cmykInner}}, ZQUNIT_NONE);
  EXPECT_TRUE(plain.getColorValue(true).isInvalid());
  EXPECT_TRUE(plain.getColorValue().isTransparent());
  // Unit 24 on a real is neither form.
  EXPECT_TRUE(ZQValue(255.0f, ZQUNIT_COLOR).getColorValue(true).isInvalid());
}

// ---- round trips ----

std::vector<ZQColor> oneOfEachKind() {
  std::vector<ZQColor> out;
  out.push_back(ZQColor(0x123456u));
  out.push_back(ZQColor(0xFF0000u));
  ZQColor alpha(0x654321u);
  alpha.setAlpha(0.5f);
  out.push_back(alpha);
  ZQColor ex;
  ex.setRGBex(0.5f, 0.25f, 1.0f);
  out.push_back(ex);
  ex.setAlpha(0.75f);
  out.push_back(ex);
  ZQColor h;
  h.setHSL(300, 0.5f, 0.25f);
  out.push_back(h);
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
  out.push_back(ZQColor(ZQColor(0x336699u), u("MyProfile"), 0.1f, 0.2f, 0.3f, 0.4f));
  return out;
}

TEST_F(ParseColor, ValueFormRoundTripOfEveryKind) {
  for (const ZQColor& c : oneOfEachKind()) {
    SCOPED_TRACE(s8(c.toString(false)));
    ZQValue v(c);
    ASSERT_TRUE(v.isColor());
    EXPECT_EQ(v.getColorValue(), c);
    EXPECT_EQ(v.getColorValue(true), c);
    // And once more through a copy of the value.
    ZQValue copy = v;
    EXPECT_EQ(ZQValue(copy.getColorValue()).getColorValue(), c);
  }
  for (const ZQColor& c : {ZQColor::getTransparent(), ZQColor::getInvert(),
                           ZQColor::getCurrentColor(), ZQColor::getInvalidColor()}) {
    EXPECT_EQ(rgbOf(ZQValue(c).getColorValue()), rgbOf(c));
  }
}

TEST_F(ParseColor, TextRoundTripOfEveryKindInTheFoSyntax) {
  // What toString(false) writes reads back as the same colour, both through parseColor and
  // through a string value.
  for (const ZQColor& c : oneOfEachKind()) {
    const UnicodeString text = c.toString(false);
    SCOPED_TRACE(s8(text));
    ZQValue parsed = ZQParser::parseColor(text, false);
    ASSERT_TRUE(parsed.isColor());
    EXPECT_EQ(parsed.getColorValue(), c);
    EXPECT_EQ(ZQValue(text, ZQUNIT_NONE).getColorValue(true), c);
  }
}

TEST_F(ParseColor, TextRoundTripOfEveryKindInTheCssSyntax) {
  // The CSS text keeps the rgb and the kind (HSL is written as RGB); named colours come back as
  // names.
  for (const ZQColor& c : oneOfEachKind()) {
    const UnicodeString text = c.toString(true);
    SCOPED_TRACE(s8(text));
    ZQValue parsed = ZQParser::parseColor(text, true);
    ASSERT_FALSE(parsed.isUnknownString());
    ZQColor back = parsed.getColorValue(true);
    EXPECT_EQ(rgbOf(back), rgbOf(c));
    if (!c.isHSL()) EXPECT_EQ(back.getProfileType(), c.getProfileType());
    // Only the rgba() form carries an alpha in CSS.
    if (c.isRGB() || c.isHSL()) EXPECT_EQ(back.hasAlpha(), c.hasAlpha());
    if (c.isCMYK() || c.isICCColorProfile()) {
      for (int i = 0; i < 4; ++i) EXPECT_EQ(back.getICCValue(i), c.getICCValue(i));
    }
    if (c.isSeparation()) {
      EXPECT_EQ(back.getSeparationTint(), c.getSeparationTint());
      EXPECT_EQ(back.hasSeparationTint(), c.hasSeparationTint());
      EXPECT_EQ(back.hasSeparationCMYK(), c.hasSeparationCMYK());
    }
  }
}

}  // namespace
