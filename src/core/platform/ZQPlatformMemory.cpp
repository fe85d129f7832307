#include <sys/mman.h>

#include "core/platform/ZQPlatform.h"

namespace ZQCommonNS::platform {

void* mapFilledPages(size_t bytes) {
  // MAP_POPULATE faults the pages in one call, far cheaper than a fault per page on first
  // touch; the caller fills the block at once, so no page is made resident for nothing.
  void* p = mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_POPULATE,
                 -1, 0);
  return p == MAP_FAILED ? nullptr : p;
}

}  // namespace ZQCommonNS::platform
