// Telling what a document is by its root element, without parsing it whole.
#include "xml/ZQXmlUtilInternal.h"

#include "common/ZQString.h"

namespace ZQCommonNS::xmlutil {

namespace {

// A foreign document must not stop the sniff: no DTD, no entity or prefix errors, any
// encoding, no external entities.
void prepareForSniff(ZQXmlParser& parser) {
  parser.setFeature(ZQXmlParser::FEATURE_SKIP_EXTERNAL_DTD, true);
  parser.setFeature(ZQXmlParser::FEATURE_IGNORE_UNDEFINED_ENTITIES, true);
  parser.setFeature(ZQXmlParser::FEATURE_ALLOW_UNDECLARED_PREFIX, true);
  parser.setFeature(ZQXmlParser::FEATURE_ALLOW_UNKNOWN_ENCODING, true);
  parser.setFeature(ZQXmlParser::FEATURE_FORBID_EXTERNAL_ENTITIES, true);
}

bool hasIdAttribute(ZQXmlParser& parser, const UnicodeString& id) {
  for (int i = parser.getAttributeCount() - 1; i >= 0; --i) {
    if (parser.getAttributeName(i) == ZQN_id && parser.getAttributeValue(i) == id) return true;
  }
  return false;
}

ZQPtr<ZQXmlParser> findStartTag(const ZQPtr<ZQXmlParser>& parser, const UnicodeString& id) {
  for (;;) {
    ZQXmlParser::EventType type = parser->next();
    if (type == ZQXmlParser::END_DOCUMENT) return nullptr;
    if (type != ZQXmlParser::START_TAG) continue;
    if (id.isEmpty() || hasIdAttribute(*parser, id)) return parser;
  }
}

ZQName nameOf(const ZQPtr<ZQXmlParser>& parser, ZQName& localName) {
  if (!parser) {
    localName = ZQName();
    return ZQName();
  }
  localName = parser->getName();
  return parser->getNamespace();
}

}  // namespace

ZQPtr<ZQXmlParser> getRootParser(ParserFactory make, std::istream& stream,
                                 const ZQUri::ContentInfo* contentInfo,
                                 const UnicodeString& extension, const UnicodeString& id) {
  ZQPtr<ZQXmlParser> parser = make();
  if (!parser) return nullptr;
  prepareForSniff(*parser);
  parser->setStreamType(contentInfo, extension);
  parser->setInput(stream, ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE);
  return findStartTag(parser, id);
}

ZQPtr<ZQXmlParser> getRootParser(ParserFactory make, const UnicodeString& uriText,
                                 const UnicodeString& id) {
  if (uriText.isEmpty()) return nullptr;
  ZQPtr<ZQXmlParser> parser = make();
  if (!parser) return nullptr;
  prepareForSniff(*parser);
  parser->setInput(uriText, ZQEmptyString::EMPTY_VALUE, ZQEmptyString::EMPTY_VALUE);
  return findStartTag(parser, id);
}

ZQName getRootName(ParserFactory make, ZQName& localName, std::istream& stream,
                   const ZQUri::ContentInfo* contentInfo, const UnicodeString& extension,
                   const UnicodeString& id) {
  return nameOf(getRootParser(make, stream, contentInfo, extension, id), localName);
}

ZQName getRootName(ParserFactory make, ZQName& localName, const UnicodeString& uriText,
                   const UnicodeString& id) {
  return nameOf(getRootParser(make, uriText, id), localName);
}

ZQName getXSLStylesheetNamespace(ParserFactory make, ZQName& localName, std::istream& stream) {
  const UnicodeString& none = ZQEmptyString::EMPTY_VALUE;
  ZQName root = getRootName(make, localName, stream, nullptr, none, none);
  if (root != ZQN_NS_XSL_FO || localName != ZQN_root) return root;
  // An fo:root may be a simplified stylesheet: read its attributes again from the start.
  stream.clear();
  stream.seekg(0);
  ZQPtr<ZQXmlParser> parser = getRootParser(make, stream, nullptr, none, none);
  if (!parser) return root;
  for (int i = parser->getAttributeCount() - 1; i >= 0; --i) {
    if (parser->getAttributeName(i) == ZQN_version &&
        parser->getAttributeNamespace(i) == ZQN_NS_XSLT)
      return ZQN_NS_XSLT;
  }
  return root;
}

}  // namespace ZQCommonNS::xmlutil
