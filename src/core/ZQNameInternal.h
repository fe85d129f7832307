// Internals of the name table that tests reach.
#pragma once

#include "common/ZQLock.h"
#include "common/ZQName.h"

namespace ZQCommonNS {

/// The name-table lock, which guards interning of run-time names.
ZQCOMMON_API ZQLock& sharedNameTableLock();

/// The shared table as it stands, null when there is none; creates nothing.
ZQCOMMON_API ZQNameTable* peekSharedNameTable();

}  // namespace ZQCommonNS
