// The process-wide cache of external DTDs: the entities each one declared, kept by the
// resolved system identifier so that a DTD is read once per process.
#pragma once

#include <cstddef>
#include <memory>
#include <utility>
#include <vector>

#include "common/ZQExport.h"
#include "common/ZQString.h"

namespace ZQCommonNS {

/// Name and value of one cached entity.
typedef std::vector<std::pair<UnicodeString, UnicodeString>> ZQDtdEntityList;

/// The entities of one external DTD, a list per entity table of the parser.
struct ZQDtdCacheEntry {
  ZQDtdEntityList generalEntities;
  ZQDtdEntityList parameterEntities;
  ZQDtdEntityList externalGeneralEntities;
  ZQDtdEntityList externalParameterEntities;
};

/// Resolved system identifier to the entities of that DTD. Entries are added, never changed
/// or removed, and live for the life of the process; a lock guards the map, so parsers of
/// several threads may share it.
class ZQCOMMON_API ZQDtdCache {
 public:
  /// The entry of `systemId`, or null. An entry stays valid and unchanged once found.
  static std::shared_ptr<const ZQDtdCacheEntry> find(const UnicodeString& systemId);
  /// Stores `entry` under `systemId` unless another thread stored one first; returns the
  /// entry now in the cache.
  static std::shared_ptr<const ZQDtdCacheEntry> add(const UnicodeString& systemId,
                                                    ZQDtdCacheEntry entry);
  /// Number of DTDs in the cache.
  static size_t size();
};

}  // namespace ZQCommonNS
