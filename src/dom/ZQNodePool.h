// Storage of the tree's own small objects: nodes and attribute maps come from per-size free
// lists carved out of large blocks, since a load makes millions of them at a few sizes.
#pragma once

#include <cstddef>

namespace ZQCommonNS::nodepool {

/// `size` bytes aligned for any node; larger sizes go to the global allocator.
void* allocate(std::size_t size);
/// Gives back what `allocate(size)` returned, with the same `size`.
void deallocate(void* p, std::size_t size) noexcept;

}  // namespace ZQCommonNS::nodepool
