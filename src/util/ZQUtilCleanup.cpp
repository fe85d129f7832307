// Release of what the helpers built, at unload.
#include <vector>

#include "common/ZQLock.h"
#include "common/ZQUtil.h"
#include "core/ZQUnload.h"
#include "util/ZQUtilInternal.h"

namespace ZQCommonNS {

namespace {
// Never destroyed: ZQUtil::cleanup runs at unload, after the other static objects are gone.
std::vector<void (*)()>& cleanupList() {
  static auto* list = new std::vector<void (*)()>();
  return *list;
}

const bool s_unloadRegistered = (registerUnloadCleanup(&ZQUtil::cleanup), true);
}  // namespace

void util::addCleanup(void (*release)()) {
  ZQMutex guard;
  auto& list = cleanupList();
  for (auto f : list)
    if (f == release) return;
  list.push_back(release);
}

void ZQUtil::cleanup() {
  std::vector<void (*)()> list;
  {
    ZQMutex guard;
    list.swap(cleanupList());
  }
  for (auto f : list) f();
  util::releaseEncodingTable();
}

}  // namespace ZQCommonNS
