// Internals of the name table that tests reach.
#pragma once

#include "common/ZQLock.h"

namespace ZQCommonNS {

/// The name-table lock, which guards interning of run-time names.
ZQCOMMON_API ZQLock& sharedNameTableLock();

}  // namespace ZQCommonNS
