#include "core/ZQUnload.h"

#include "common/ZQLock.h"
#include "common/ZQName.h"
#include "core/ZQInit.h"

namespace ZQCommonNS {

namespace {

// A plain array: it must still be there when the hook runs, after other statics are gone.
constexpr int kMaxCleanups = 16;
void (*s_cleanups[kMaxCleanups])() = {};
int s_cleanupCount = 0;

struct UnloadHook {
  ~UnloadHook() {
    for (int i = s_cleanupCount; i-- > 0;) s_cleanups[i]();
    s_cleanupCount = 0;
    ZQNameTable::cleanup();
  }
};

UnloadHook s_unloadHook ZQ_INIT_PRIORITY_UNLOAD;

}  // namespace

void registerUnloadCleanup(void (*cleanup)()) {
  ZQMutex guard;
  for (int i = 0; i < s_cleanupCount; ++i) {
    if (s_cleanups[i] == cleanup) return;
  }
  if (s_cleanupCount < kMaxCleanups) s_cleanups[s_cleanupCount++] = cleanup;
}

}  // namespace ZQCommonNS
