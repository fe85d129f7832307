// The built-in entity sets that stand in for the well-known DTDs, so that those are never
// fetched: rows compiled into the library, and the string lists made from them on first use.
#pragma once

#include <cstddef>
#include <utility>
#include <vector>

#include "common/ZQExport.h"
#include "common/ZQString.h"

namespace ZQCommonNS {

/// One row of a built-in set: the name and one or two code points, the second 0 for most.
struct ZQXmlEntityRow {
  const char* name;
  UChar32 first;
  UChar32 second;
};

/// A built-in set as name and value strings.
typedef std::vector<std::pair<UnicodeString, UnicodeString>> ZQXmlEntityList;

/// The three built-in entity sets.
class ZQCOMMON_API ZQXmlEntitySets {
 public:
  enum SetKind {
    SET_MATHML = 0,  ///< the MathML entities; the list ends with one empty name and value
    SET_HTML = 1,    ///< the HTML character references that end in a semicolon
    SET_XHTML = 2,   ///< the HTML 4 entities and apos
  };

  /// The compiled rows of a set and their number; null and 0 for an unknown set.
  static const ZQXmlEntityRow* getRows(int set, size_t& count);
  /// The set as strings, built once under the library lock and kept for the life of the
  /// process, so the same list comes back on every call. An unknown set gives an empty list.
  static const ZQXmlEntityList& getList(int set);
};

}  // namespace ZQCommonNS
