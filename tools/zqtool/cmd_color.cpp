// zqtool color <colour>...: each colour's kind, rgb and both text forms. An argument is read as
// CSS colour text: a name, a hexadecimal colour, a colour function, or a colour followed by
// icc-color(...).
#include <cstdio>
#include <iostream>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

const char* kindOf(const ZQColor& c) {
  if (c.isTransparent()) return "transparent";
  if (c.isCurrentColor()) return "currentColor";
  if (static_cast<unsigned>(c) == ZQColor::RGB_INVERT) return "invert";
  if (c.isInvalid()) return "invalid";
  if (c.isRGBex()) return "RGBex";
  if (c.isRGB()) return "RGB";
  if (c.isCMYK()) return "CMYK";
  if (c.isGrayscale()) return "gray";
  if (c.isHSL()) return "HSL";
  if (c.isRegistration()) return "registration";
  if (c.isSeparation()) return "separation";
  if (c.isICCColorProfile()) return "ICC";
  return "unknown";
}

// A colour value as it stands, and a lone name through the colour names; anything else that
// the syntax gives back (text, a number, a string) is no colour.
ZQColor readColor(const UnicodeString& text) {
  const ZQValue v = ZQParser::parseColor(text, true);
  if (v.getUnitType() == ZQUNIT_COLOR || v.isName()) return v.getColorValue(true);
  return ZQColor::getInvalidColor();
}

int runColor(const zqtool::Args& args) {
  if (args.empty()) {
    std::cerr << "usage: zqtool color <colour>...   (a name, #rgb, #rrggbb, rgb(...), "
                 "cmyk(...), rgb-icc(...), a colour and icc-color(...), ...)\n";
    return 2;
  }
  int status = 0;
  for (const auto& text : args) {
    const ZQColor color = readColor(zqtool::fromUtf8(text));
    char rgb[16];
    std::snprintf(rgb, sizeof rgb, "#%06X", static_cast<unsigned>(color));
    std::cout << text << "\tkind " << kindOf(color) << "\trgb " << rgb;
    if (color.hasAlpha()) std::cout << "\talpha " << color.getAlpha();
    std::cout << "\tfo " << zqtool::utf8(color.toString(false)) << "\tcss "
              << zqtool::utf8(color.toString(true)) << "\n";
    if (color.isInvalid()) status = 1;
  }
  return status;
}

zqtool::Register reg("color", "color <colour>...",
                     "read each colour in the CSS syntax and print its kind, rgb and its XSL-FO "
                     "and CSS text",
                     runColor);

}  // namespace
