// The built-in entity sets: compiled rows, turned into strings once per process.
#include "xml/ZQXmlEntities.h"

#include <iterator>

#include "common/ZQLock.h"

namespace ZQCommonNS {

namespace {

#include "xml/ZQXmlEntityTables.inc"

constexpr int SET_COUNT = 3;

ZQXmlEntityList* buildList(const ZQXmlEntityRow* rows, size_t count) {
  auto* list = new ZQXmlEntityList();
  list->reserve(count);
  for (size_t i = 0; i < count; ++i) {
    UnicodeString value;
    if (rows[i].first != 0) value.append(rows[i].first);
    if (rows[i].second != 0) value.append(rows[i].second);
    list->emplace_back(UnicodeString(rows[i].name, -1, US_INV), value);
  }
  return list;
}

}  // namespace

const ZQXmlEntityRow* ZQXmlEntitySets::getRows(int set, size_t& count) {
  switch (set) {
    case SET_MATHML:
      count = std::size(kMathMLRows);
      return kMathMLRows;
    case SET_HTML:
      count = std::size(kHtmlRows);
      return kHtmlRows;
    case SET_XHTML:
      count = std::size(kXhtmlRows);
      return kXhtmlRows;
    default:
      count = 0;
      return nullptr;
  }
}

const ZQXmlEntityList& ZQXmlEntitySets::getList(int set) {
  // The lists are never freed: parsers on any thread may still be copying from them when
  // the process ends, and they are read-only once built.
  static ZQXmlEntityList* lists[SET_COUNT] = {};
  static const ZQXmlEntityList* const emptyList = new ZQXmlEntityList();
  if (set < 0 || set >= SET_COUNT) return *emptyList;
  ZQMutex guard;
  if (!lists[set]) {
    size_t count = 0;
    const ZQXmlEntityRow* rows = getRows(set, count);
    lists[set] = buildList(rows, count);
  }
  return *lists[set];
}

}  // namespace ZQCommonNS
