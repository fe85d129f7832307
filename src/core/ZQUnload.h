// What the library frees when it is unloaded.
#pragma once

#include "common/ZQExport.h"

namespace ZQCommonNS {

/// Registers a release function that runs when the library is unloaded, after the library's
/// other static objects are gone: in reverse order of registration, then the name table's
/// cleanup. It may touch only what it allocated itself and the library lock.
ZQCOMMON_API void registerUnloadCleanup(void (*cleanup)());

}  // namespace ZQCommonNS
