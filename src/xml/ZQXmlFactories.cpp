// The factories of the XML family and root sniffing with the library's own parser.
#include "common/ZQXmlUtil.h"

#include "common/ZQMemStream.h"
#include "core/ZQCommonError.h"
#include "xml/ZQXmlParserImpl.h"
#include "xml/ZQXmlUtilInternal.h"

namespace ZQCommonNS {

ZQPtr<ZQXmlParser> ZQXmlParser::createXmlParser() {
  return ZQPtr<ZQXmlParser>(new ZQXmlParserImpl());
}

ZQPtr<ZQXmlParser> ZQXmlUtil::createXmlParser() { return ZQXmlParser::createXmlParser(); }

ZQPtr<ZQXmlParser> ZQXmlUtil::getRootParser(std::istream& stream,
                                            const ZQUri::ContentInfo* contentInfo,
                                            const UnicodeString& extension,
                                            const UnicodeString& id) {
  return xmlutil::getRootParser(&ZQXmlParser::createXmlParser, stream, contentInfo, extension, id);
}

ZQPtr<ZQXmlParser> ZQXmlUtil::getRootParser(const UnicodeString& uriText, const UnicodeString& id) {
  return xmlutil::getRootParser(&ZQXmlParser::createXmlParser, uriText, id);
}

ZQName ZQXmlUtil::getRootName(ZQName& localName, std::istream& stream,
                              const ZQUri::ContentInfo* contentInfo, const UnicodeString& extension,
                              const UnicodeString& id) {
  return xmlutil::getRootName(&ZQXmlParser::createXmlParser, localName, stream, contentInfo,
                              extension, id);
}

ZQName ZQXmlUtil::getRootName(ZQName& localName, const UnicodeString& uriText,
                              const UnicodeString& id) {
  return xmlutil::getRootName(&ZQXmlParser::createXmlParser, localName, uriText, id);
}

ZQName ZQXmlUtil::getXSLStylesheetNamespace(ZQName& localName, std::istream& stream) {
  return xmlutil::getXSLStylesheetNamespace(&ZQXmlParser::createXmlParser, localName, stream);
}

ZQName ZQXmlUtil::getXSLStylesheetNamespace(ZQName& localName, const UnicodeString& uriText) {
  localName = ZQName();
  ZQUri uri(uriText);
  ZQUri::ContentInfo info;
  UnicodeString responseText;
  try {
    std::istream* source = uri.getIStream(&info, &responseText);
    if (!source) throwCommonError(67, ZQSRC_PARSER_SET_INPUT, uri.toString(), UnicodeString());
    // Blocks of 8 KiB let a forward-only source seek back to its first byte.
    ZQMemStream stream(source, 8192, true);
    return getXSLStylesheetNamespace(localName, stream);
  } catch (ZQError& e) {
    e.appendMessage(responseText);
    throw;
  }
}

}  // namespace ZQCommonNS
