// Counting of heap allocations, so a benchmark can show that a path allocates nothing.
#pragma once

#include <cstddef>

namespace zqbench {

/// Heap allocations made by this process so far (operator new of this program and the library).
size_t allocationCount();

}  // namespace zqbench
