// Static helpers of the XML family: factories, qualified names, and sniffing a root element.
#pragma once

#include <istream>

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQObject.h"
#include "common/ZQUri.h"
#include "common/ZQXmlCatalogs.h"
#include "common/ZQXmlParser.h"

namespace ZQCommonNS {

class ZQXmlSerializer;

/// Stateless helpers of the XML family.
class ZQCOMMON_API ZQXmlUtil {
 public:
  ZQXmlUtil() = delete;

  /// The library's own parser; the same function as ZQXmlParser::createXmlParser.
  static ZQPtr<ZQXmlParser> createXmlParser();
  /// The library's serializer.
  static ZQPtr<ZQXmlSerializer> createXmlSerializer();
  /// The catalog-file implementation of ZQXmlCatalogs.
  static ZQPtr<ZQXmlCatalogs> createXmlCatalogs();

  /// With a prefix the interned "prefix:local"; without one `local`.
  static ZQName makeQName(ZQName prefix, ZQName local);
  /// With a non-empty prefix "prefix:local"; otherwise `local`.
  static UnicodeString makeQNameStr(const UnicodeString& prefix, const UnicodeString& local);
  /// `local` qualified for messages: "xml:" or "xmlns:" for those namespaces, "{ns}:" for
  /// any other, nothing for none.
  static UnicodeString makeNSQNameStr(const UnicodeString& ns, const UnicodeString& local);
  /// The part before the first colon, or 0; a colon at the start separates nothing.
  static ZQName getPrefixFromQName(ZQName qname);
  /// The part before the first colon, or empty; a colon at the start separates nothing.
  static UnicodeString getPrefixFromQNameStr(const UnicodeString& qname);
  /// The part after the first colon (even one at the start), or the name itself.
  static ZQName getLocalPartFromQName(ZQName qname);
  /// The part after the first colon (even one at the start), or the text itself.
  static UnicodeString getLocalPartFromQNameStr(const UnicodeString& qname);

  /// `key` made into an XML name: every character that can't stand at its place, and every
  /// ":" and U+2182, becomes U+2182 and four upper-case hex digits per UTF-16 unit.
  static UnicodeString escapeXmpUserDefinedKey(const UnicodeString& key);

  /// A parser stopped at the first start tag, or at the first with an attribute `id` of that
  /// value when `id` isn't empty; null when the input ends first.
  static ZQPtr<ZQXmlParser> getRootParser(std::istream& stream,
                                          const ZQUri::ContentInfo* contentInfo,
                                          const UnicodeString& extension, const UnicodeString& id);
  /// The same for the resource of a URI; null at once for an empty text.
  static ZQPtr<ZQXmlParser> getRootParser(const UnicodeString& uriText, const UnicodeString& id);
  /// Namespace of the element getRootParser finds, its local name in `localName`; 0 and 0
  /// when none is found.
  static ZQName getRootName(ZQName& localName, std::istream& stream,
                            const ZQUri::ContentInfo* contentInfo, const UnicodeString& extension,
                            const UnicodeString& id);
  /// The same for the resource of a URI.
  static ZQName getRootName(ZQName& localName, const UnicodeString& uriText,
                            const UnicodeString& id);
  /// Namespace of the root, except that an XSL-FO `root` carrying the XSLT `version`
  /// attribute, a simplified stylesheet, answers the XSLT namespace. The stream must seek.
  static ZQName getXSLStylesheetNamespace(ZQName& localName, std::istream& stream);
  /// The same for the resource of a URI, read through a seekable buffer.
  static ZQName getXSLStylesheetNamespace(ZQName& localName, const UnicodeString& uriText);
};

}  // namespace ZQCommonNS
