// The process-wide cache of external DTDs.
#include "xml/ZQXmlDtdCache.h"

#include <unordered_map>

#include "common/ZQLock.h"
#include "common/ZQName.h"

namespace ZQCommonNS {

namespace {

typedef std::unordered_map<UnicodeString, std::shared_ptr<const ZQDtdCacheEntry>, ZQString_hash>
    DtdMap;

// The lock is its own, not the library lock: a DTD is read with the cache unlocked, and the
// library lock is taken meanwhile for names and entity sets.
ZQLock& cacheLock() {
  static ZQLock* lock = new ZQLock();
  return *lock;
}

// Made at the first use and never freed, so that a parser running late in the process's
// exit still finds it.
DtdMap*& cacheMap() {
  static DtdMap* map = nullptr;
  return map;
}

}  // namespace

std::shared_ptr<const ZQDtdCacheEntry> ZQDtdCache::find(const UnicodeString& systemId) {
  ZQMutex guard(cacheLock());
  DtdMap* map = cacheMap();
  if (!map) return nullptr;
  auto it = map->find(systemId);
  return it == map->end() ? nullptr : it->second;
}

std::shared_ptr<const ZQDtdCacheEntry> ZQDtdCache::add(const UnicodeString& systemId,
                                                       ZQDtdCacheEntry entry) {
  auto made = std::make_shared<const ZQDtdCacheEntry>(std::move(entry));
  ZQMutex guard(cacheLock());
  DtdMap*& map = cacheMap();
  if (!map) map = new DtdMap();
  // Two threads may read the same DTD at once; the first one stored is kept.
  auto result = map->emplace(systemId, std::move(made));
  return result.first->second;
}

size_t ZQDtdCache::size() {
  ZQMutex guard(cacheLock());
  DtdMap* map = cacheMap();
  return map ? map->size() : 0;
}

}  // namespace ZQCommonNS
