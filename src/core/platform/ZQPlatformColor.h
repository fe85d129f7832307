// The platform's system colours.
#pragma once

#include "common/ZQExport.h"

namespace ZQCommonNS::platform {

/// Number of system colour indexes the library asks for (0 to 24).
inline constexpr int kSystemColorCount = 25;

/// The system colour of `index` in the platform's byte order, 0x00BBGGRR; 0 for an index out
/// of range.
ZQCOMMON_API unsigned int systemColor(int index);

}  // namespace ZQCommonNS::platform
