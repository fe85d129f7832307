// What the parser interface does itself for the operations an implementation may leave alone.
#include "common/ZQXmlParser.h"

#include <atomic>

#include "common/ZQString.h"

namespace ZQCommonNS {

namespace {

const UnicodeString* eventTypeNames() {
  // Function-local, so that the names exist whenever another static first asks for them.
  static const UnicodeString names[ZQXmlParser::EVENT_TYPE_COUNT] = {
      u"START_DOCUMENT",
      u"END_DOCUMENT",
      u"START_TAG",
      u"END_TAG",
      u"TEXT",
      u"CDSECT",
      u"ENTITY_REF",
      u"IGNORABLE_WHITESPACE",
      u"PROCESSING_INSTRUCTION",
      u"COMMENT",
      u"DOCDECL",
  };
  return names;
}

const UnicodeString* featureNames() {
  static const UnicodeString names[ZQXmlParser::FEATURE_COUNT] = {
      u"FEATURE_SKIP_EXTERNAL_DTD",
      u"FEATURE_IGNORE_UNDEFINED_ENTITIES",
      u"FEATURE_ALLOW_UNDECLARED_PREFIX",
      u"FEATURE_IGNORE_DTD_ERRORS",
      u"FEATURE_ALLOW_UNKNOWN_ENCODING",
      u"FEATURE_BUILTIN_ENCODINGS_ONLY",
      u"FEATURE_NO_POSITION_DESCRIPTION",
      u"FEATURE_NO_CHARACTER_CHECK",
      u"FEATURE_REPORT_PI",
      u"FEATURE_FORBID_EXTERNAL_ENTITIES",
  };
  return names;
}

// Far beyond what real documents reach, and small enough that a hostile one stops quickly.
std::atomic<int> s_defaultExpansionDepth{64};
std::atomic<int64_t> s_defaultExpansionChars{int64_t(32) << 20};

}  // namespace

ZQXmlParser::~ZQXmlParser() = default;

void ZQXmlParser::setDefaultEntityExpansionLimits(int depth, int64_t chars) {
  s_defaultExpansionDepth.store(depth);
  s_defaultExpansionChars.store(chars);
}

int ZQXmlParser::getDefaultEntityExpansionDepth() { return s_defaultExpansionDepth.load(); }

int64_t ZQXmlParser::getDefaultEntityExpansionChars() { return s_defaultExpansionChars.load(); }

const UnicodeString& ZQXmlParser::getEventTypeName(int type) {
  if (type < 0 || type >= EVENT_TYPE_COUNT) return ZQEmptyString::getEmptyString();
  return eventTypeNames()[type];
}

const UnicodeString& ZQXmlParser::getFeatureName(int feature) {
  if (feature < 0 || feature >= FEATURE_COUNT) return ZQEmptyString::getEmptyString();
  return featureNames()[feature];
}

void ZQXmlParser::setStreamType(const ZQUri::ContentInfo*, const UnicodeString&) {}

void ZQXmlParser::setCallbackError(ErrorCallback, void*) {}

UnicodeString ZQXmlParser::getInputUri() { return UnicodeString(); }

UnicodeString ZQXmlParser::getBaseUri() { return UnicodeString(); }

void ZQXmlParser::pushStream(const UnicodeString&, ZQName, const UnicodeString&) {}

void ZQXmlParser::throwError(unsigned short, const UnicodeString&, const UnicodeString&) {}

bool ZQXmlParser::popError(ZQError&) { return false; }

void ZQXmlParser::pushError(const ZQError&) {}

void ZQXmlParser::addMathMLEntities() {}

const void* ZQXmlParser::saveEntityMaps() const { return nullptr; }

void ZQXmlParser::recoverEntityMaps(const void*&) {}

void ZQXmlParser::rewind() {}

void ZQXmlParser::setAutoClose(bool) {}

bool ZQXmlParser::isXML() { return false; }

bool ZQXmlParser::isHTMLSyntax() { return false; }

bool ZQXmlParser::isXHTMLSyntax() { return false; }

void ZQXmlParser::setParserType(ZQName, ZQName) {}

void ZQXmlParser::setHtmlDefaultCharset(const UnicodeString&) {}

UnicodeString ZQXmlParser::getLanguage() { return UnicodeString(); }

UnicodeString ZQXmlParser::getPubidLiteral() { return UnicodeString(); }

UnicodeString ZQXmlParser::getExternalDTD() { return UnicodeString(); }

void ZQXmlParser::setInput(const UnicodeString& uri, const UnicodeString& encoding,
                           const UnicodeString& base) {
  ZQUri target(uri);
  setInput(target, encoding, base);
}

}  // namespace ZQCommonNS
