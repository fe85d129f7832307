// Mapping of URIs through XML catalogs: the identity base class that ZQUri constructors consult.
#pragma once

#include "common/ZQExport.h"
#include "common/ZQObject.h"

namespace ZQCommonNS {

class ZQError;
class ZQUri;

/// Maps a URI to the one to use in its place. The base class maps every URI to itself;
/// the catalog-file implementation derives from it.
class ZQCOMMON_API ZQXmlCatalogs : public ZQRCObject {
  ZQ_DECLARE_TYPE(ZQXmlCatalogs, ZQRCObject)

 public:
  ZQXmlCatalogs() = default;
  ~ZQXmlCatalogs() override;

  /// Installs the function that receives errors met while reading a catalog; does nothing here.
  virtual void setCallbackError(void (*fn)(const ZQError&, void*), void* data);
  /// Reads a catalog file and adds its entries; does nothing here.
  virtual void loadCatalog(const ZQUri& uri);
  /// The string to use in place of `uri`; `uri` itself when no entry matches (always, here).
  virtual UnicodeString resolveURI(const UnicodeString& uri) const;
};

}  // namespace ZQCommonNS
