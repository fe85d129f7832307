// "data:" URIs: the header (media type, parameters, base64 marker) read once at construction,
// and typed access to the parameters as named settings of the resource.
#pragma once

#include "common/ZQExport.h"

#include <memory>
#include <unordered_map>
#include <utility>

#include "common/ZQName.h"
#include "common/ZQUri.h"

namespace ZQCommonNS {

/// A ZQUri that also understands the header of a "data:" URI. Its data part is stored
/// percent-decoded, from getDataPos() on.
class ZQCOMMON_API ZQDataUri : public ZQUri {
 public:
  /// The parameters by name; the first of several with one name wins.
  typedef std::unordered_map<ZQNameEnum, UnicodeString> ParamMap;

  /// `str` of the given type, mapped through `catalogs` when given, then its header read.
  ZQDataUri(const UnicodeString& str, URISTRTYPE type, const ZQXmlCatalogs* catalogs = nullptr);
  /// As above with URISTR_AUTO.
  explicit ZQDataUri(const UnicodeString& str, const ZQXmlCatalogs* catalogs = nullptr);
  /// `str` of the given type resolved against `base`, then its header read.
  ZQDataUri(const ZQUri& base, const UnicodeString& str, URISTRTYPE type,
            const ZQXmlCatalogs* catalogs = nullptr);
  /// As above with URISTR_AUTO.
  ZQDataUri(const ZQUri& base, const UnicodeString& str, const ZQXmlCatalogs* catalogs = nullptr);
  /// A copy shares the parameter table with its source; the table lives as long as either.
  ZQDataUri(const ZQDataUri& other) = default;
  ZQDataUri& operator=(const ZQDataUri& other) = default;
  ~ZQDataUri() override;

  /// The header ended with ";base64".
  bool isBase64() const { return m_base64; }
  /// The media type with its subtype ("text/plain"), possibly empty.
  const UnicodeString& getMediaType() const { return m_mediaType; }
  /// The index in the string where the data starts; -1 when it isn't a well-formed "data:" URI.
  int getDataPos() const { return m_dataPos; }

  /// The parameter's value, or the empty string when it is absent.
  UnicodeString getStringParam(ZQNameEnum name) const;
  UnicodeString getStringParam(const UnicodeString& name) const;
  /// The parameter as a number truncated to an integer; `fallback` when it is absent or isn't
  /// exactly one number.
  int getIntegerParam(ZQNameEnum name, int fallback) const;
  int getIntegerParam(const UnicodeString& name, int fallback) const;
  /// The parameter as a number; `fallback` when it is absent or has more than a number.
  float getRealParam(ZQNameEnum name, float fallback) const;
  float getRealParam(const UnicodeString& name, float fallback) const;
  /// The parameter lower-cased as a name; the empty name when it is absent.
  ZQName getLowerNameParam(ZQNameEnum name) const;
  ZQName getLowerNameParam(const UnicodeString& name) const;
  /// The first and last page of the "page" parameter ("3", "2-5"); (0, 0) when it is absent
  /// or malformed, and a negative page is 0.
  std::pair<int, int> getPageNumber() const;

  /// The parameter table, shared by copies.
  const ParamMap& getParams() const { return *m_params; }

 private:
  /// Reads the header and decodes the data part.
  void init();
  /// The stored value of `name`, or null.
  const UnicodeString* findParam(ZQNameEnum name) const;

  int m_dataPos = -1;
  bool m_base64 = false;
  UnicodeString m_mediaType;
  std::shared_ptr<ParamMap> m_params;
};

}  // namespace ZQCommonNS
