// The zlib version text every initialisation passes: zlib compares only its first character,
// so the text doesn't tie the library to the zlib it happens to run with.
#pragma once

namespace ZQCommonNS {

inline constexpr const char* kZlibInitVersion = "1.2.3";

}  // namespace ZQCommonNS
