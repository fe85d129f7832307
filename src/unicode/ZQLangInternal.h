// Internals of the language classes that tests reach.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "common/ZQExport.h"

namespace ZQCommonNS {

/// Number of entries in the three-letter language cache.
ZQCOMMON_API size_t iso3LanguageCacheSize();
/// The cached three-letter language for a locale hash; false when there is no entry.
ZQCOMMON_API bool iso3LanguageCacheLookup(int32_t hash, std::string& iso3);

}  // namespace ZQCommonNS
