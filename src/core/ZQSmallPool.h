// Storage of the library's own small objects: tree nodes, attribute maps and the strings of
// values come from per-size free lists carved out of large blocks, since a load makes millions
// of them at a few sizes.
#pragma once

#include <cstddef>

#include "common/ZQExport.h"

namespace ZQCommonNS::smallpool {

/// `size` bytes aligned for any node or string; larger sizes go to the global allocator.
/// Exported, as is deallocate, for the tests only.
ZQCOMMON_API void* allocate(std::size_t size);
/// Gives back what `allocate(size)` returned, with the same `size`.
ZQCOMMON_API void deallocate(void* p, std::size_t size) noexcept;

}  // namespace ZQCommonNS::smallpool
