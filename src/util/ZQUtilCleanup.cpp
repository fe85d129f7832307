// Release of what the helpers built, at unload.
#include <vector>

#include "common/ZQLock.h"
#include "common/ZQUtil.h"
#include "util/ZQUtilInternal.h"

namespace ZQCommonNS {

namespace {
std::vector<void (*)()>& cleanupList() {
  static std::vector<void (*)()> list;
  return list;
}
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
