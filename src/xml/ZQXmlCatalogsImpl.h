// The catalog-file implementation of ZQXmlCatalogs: entries read from catalog files in order,
// and a first-match look-up over the three kinds that map URIs.
#pragma once

#include <vector>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQObject.h"
#include "common/ZQXmlCatalogs.h"
#include "common/ZQXmlParser.h"

namespace ZQCommonNS {

/// One entry of a catalog file, kept in the order of reading.
struct ZQXmlCatalogEntry {
  ZQName kind;           ///< local name of the element, such as `uri` or `rewriteURI`
  UnicodeString key;     ///< what a look-up compares
  UnicodeString target;  ///< what replaces it
};

class ZQCOMMON_API ZQXmlCatalogsImpl : public ZQXmlCatalogs {
  ZQ_DECLARE_TYPE(ZQXmlCatalogsImpl, ZQXmlCatalogs)

 public:
  ZQXmlCatalogsImpl();
  ~ZQXmlCatalogsImpl() override;

  /// Errors of the catalog files go to `fn` through the parser that reads them.
  void setCallbackError(void (*fn)(const ZQError&, void*), void* data) override;
  /// Reads one catalog file and appends its entries to those already read.
  void loadCatalog(const ZQUri& uri) override;
  /// The target of the first `uri`, `rewriteURI` or `uriSuffix` entry that matches `uri`.
  UnicodeString resolveURI(const UnicodeString& uri) const override;

  /// Every entry read so far, of every kind, in the order of reading.
  const std::vector<ZQXmlCatalogEntry>& getEntries() const { return m_entries; }

 private:
  void readCatalog();
  void readEntry(ZQName kind, const UnicodeString& base);
  void skipElement(int depth);

  ZQPtr<ZQXmlParser> m_parser;
  std::vector<ZQXmlCatalogEntry> m_entries;
};

}  // namespace ZQCommonNS
