// The table of predefined counter style names, for the tools and the tests.
#pragma once

#include "common/ZQExport.h"

namespace ZQCommonNS::util {

/// Number of named predefined styles.
ZQCOMMON_API int predefinedCounterStyleCount();
/// The name at `index` (0 .. count - 1), or null.
ZQCOMMON_API const char16_t* predefinedCounterStyleName(int index);

}  // namespace ZQCommonNS::util
