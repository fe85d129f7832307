#include "core/platform/ZQPlatformColor.h"

namespace ZQCommonNS::platform {

namespace {

// There is no desktop colour scheme to ask, so the classic default scheme stands in: one
// fixed value per index, written as red, green, blue and turned into the platform order below.
constexpr unsigned int kClassicScheme[kSystemColorCount] = {
    0xD4D0C8,  //  0 scroll bar
    0x3A6EA5,  //  1 desktop background
    0x0A246A,  //  2 active caption
    0x808080,  //  3 inactive caption
    0xD4D0C8,  //  4 menu
    0xFFFFFF,  //  5 window
    0x000000,  //  6 window frame
    0x000000,  //  7 menu text
    0x000000,  //  8 window text
    0xFFFFFF,  //  9 caption text
    0xD4D0C8,  // 10 active border
    0xD4D0C8,  // 11 inactive border
    0x808080,  // 12 application workspace
    0x0A246A,  // 13 highlight
    0xFFFFFF,  // 14 highlight text
    0xD4D0C8,  // 15 button face
    0x808080,  // 16 button shadow
    0x808080,  // 17 gray text
    0x000000,  // 18 button text
    0xD4D0C8,  // 19 inactive caption text
    0xFFFFFF,  // 20 button highlight
    0x404040,  // 21 3-D dark shadow
    0xD4D0C8,  // 22 3-D light
    0x000000,  // 23 tooltip text
    0xFFFFE1,  // 24 tooltip background
};

constexpr unsigned int toPlatformOrder(unsigned int rgb) {
  return ((rgb & 0xFFu) << 16) | (rgb & 0xFF00u) | ((rgb >> 16) & 0xFFu);
}

}  // namespace

unsigned int systemColor(int index) {
  if (index < 0 || index >= kSystemColorCount) return 0;
  return toPlatformOrder(kClassicScheme[index]);
}

}  // namespace ZQCommonNS::platform
