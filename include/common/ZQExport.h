// Export macro and the namespace-wide basics every public header starts from.
#pragma once

#include <unicode/unistr.h>

#if defined(ZQCOMMON_BUILDING)
#define ZQCOMMON_API __attribute__((visibility("default")))
#else
#define ZQCOMMON_API
#endif

namespace ZQCommonNS {
/// All text of the library is ICU's string.
using icu::UnicodeString;
}  // namespace ZQCommonNS
