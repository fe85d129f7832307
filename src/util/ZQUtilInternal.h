// Internal pieces the ZQUtil sources share.
#pragma once

namespace ZQCommonNS::util {

/// Adds a function that ZQUtil::cleanup calls to release a table it built; tables that are
/// made on first use register themselves when they are made.
void addCleanup(void (*release)());

/// Releases the encoding alias table (rebuilt on the next look-up).
void releaseEncodingTable();

}  // namespace ZQCommonNS::util
