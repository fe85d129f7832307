// zqtool color <name|#hex>...: each colour's kind, rgb and both text forms.
#include <cstdio>
#include <iostream>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// The simple "#rgb" and "#rrggbb" forms; the full colour syntax belongs to the expression
// parser.
bool parseHex(const std::string& text, ZQColor& color) {
  if (text.size() != 4 && text.size() != 7) return false;
  unsigned v = 0;
  for (size_t i = 1; i < text.size(); ++i) {
    int d = hexDigit(text[i]);
    if (d < 0) return false;
    v = v * 16 + static_cast<unsigned>(d);
    if (text.size() == 4) v = v * 16 + static_cast<unsigned>(d);
  }
  color = ZQColor(v);
  return true;
}

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

int runColor(const zqtool::Args& args) {
  if (args.empty()) {
    std::cerr << "usage: zqtool color <name|#rgb|#rrggbb>...\n";
    return 2;
  }
  int status = 0;
  for (const auto& text : args) {
    ZQColor color;
    if (!text.empty() && text[0] == '#') {
      if (!parseHex(text, color)) color = ZQColor::getInvalidColor();
    } else {
      color = ZQColor(ZQName(zqtool::fromUtf8(text)));
    }
    char rgb[16];
    std::snprintf(rgb, sizeof rgb, "#%06X", static_cast<unsigned>(color));
    std::cout << text << "\tkind " << kindOf(color) << "\trgb " << rgb << "\tfo "
              << zqtool::utf8(color.toString(false)) << "\tcss "
              << zqtool::utf8(color.toString(true)) << "\n";
    if (color.isInvalid()) status = 1;
  }
  return status;
}

zqtool::Register reg("color", "color <name|#hex>...",
                     "print each colour's kind, rgb and its XSL-FO and CSS text", runColor);

}  // namespace
