// State queries of the library's pull parser, its reset and stream unwinding, and the funnel
// through which every input error passes.
#include "xml/ZQXmlParserImpl.h"

#include <unicode/locid.h>

#include <string>

#include "common/ZQLock.h"
#include "common/ZQString.h"
#include "core/ZQCommonError.h"

namespace ZQCommonNS {

namespace {

const UnicodeString& emptyArg() { return ZQEmptyString::EMPTY_VALUE; }

UnicodeString lowerCase(const UnicodeString& text) {
  UnicodeString copy(text);
  copy.toLower(icu::Locale::getRoot());
  return copy;
}

bool isXmlSpace(UChar c) { return c == 9 || c == 10 || c == 13 || c == 32; }

UnicodeString hexUpper(UChar32 c) {
  static const char16_t digits[] = u"0123456789ABCDEF";
  UnicodeString out;
  uint32_t v = static_cast<uint32_t>(c);
  do {
    out.insert(0, digits[v & 15]);
    v >>= 4;
  } while (v != 0);
  return out;
}

UnicodeString decimal(int value) {
  std::string digits = std::to_string(value);
  return UnicodeString(digits.c_str(), static_cast<int32_t>(digits.size()), US_INV);
}

}  // namespace

UnicodeString formatXmlParserMessage(unsigned short code, const UnicodeString& a,
                                     const UnicodeString& b) {
  UnicodeString text;
  switch (code) {
    case 129:
      return u"Missing end tag.";
    case 130:
      return u"Only one top level element is allowed.";
    case 131:
      return u"Invalid root tag name after '<!DOCTYPE'.";
    case 132:
      return u"Invalid start tag name.";
    case 133:
      return u"Invalid end tag name.";
    case 134:
    case 513:
      return text.append(u"End tag '")
          .append(a)
          .append(u"' does not match the start tag '")
          .append(b)
          .append(u"'.");
    case 135:
      return text.append(u"Undeclared namespace prefix: ").append(a);
    case 136:
      return text.append(u"Duplicate attribute: ").append(a);
    case 137:
      return text.append(u"Invalid attribute name: ").append(a);
    case 138:
      return u"Missing '=' after attribute name.";
    case 139:
      return u"Missing whitespace between attributes.";
    case 140:
    case 897:
      return text.append(u"Unexpected character: ").append(a);
    case 141:
    case 770:
    case 898:
      return text.append(u"Unexpected whitespace after '").append(a).append(u"'.");
    case 142:
      return text.append(u"Unexpected text at top level of the XML document: ").append(a);
    case 143:
      return text.append(u"Unexpected '<![").append(a).append(u"'.");
    case 144:
      return u"Unexpected ']]>'.";
    case 145:
      return u"Unexpected end of input while looking for CDATA section terminator ']]>'.";
    case 146:
      return u"Unexpected end of input while looking for comment terminator '-->'.";
    case 147:
    case 771:
    case 899:
      return u"Unexpected character '--' in comment";
    case 148:
      return u"Unexpected DOCTYPE declaration outside of prolog.";
    case 149:
      return u"Cannot have multiple DOCTYPE declarations.";
    case 150:
      return text.append(u"Missing whitespace after '").append(a).append(u"'.");
    case 151:
      return text.append(u"External ID is expected after '").append(a).append(u"'.");
    case 152:
      return text.append(u"PubidLiteral is expected after '").append(a).append(u"'.");
    case 153:
      return text.append(u"SystemLiteral is expected after '").append(a).append(u"'.");
    case 154:
      return text.append(u"Unexpected end of input in ").append(a).append(u" declaration.");
    case 155:
      return u"Empty entity name.";
    case 156:
      return text.append(u"Invalid character in entity reference: ").append(a).append(u";");
    case 157:
    case 514:
      return text.append(u"Reference to undefined entity: %").append(a).append(u";");
    case 158:
    case 515:
      return text.append(u"Reference to undefined entity: &").append(a).append(u";");
    case 159:
      return text.append(u"Entity name is expected after '").append(a).append(u"'.");
    case 160:
      return text.append(u"NDATA is expected after '").append(a).append(u"'.");
    case 161:
      return u"Unexpected XML declaration.";
    case 162:
      return u"Missing 'version=' after '<?xml ' in XML declaration.";
    case 163:
      return text.append(u"Missing '=' after '").append(a).append(u"' in XML declaration.");
    case 164:
      return text.append(u"Missing whitespace after '").append(a).append(u"' in XML declaration.");
    case 165:
      return text.append(u"Missing whitespace before '").append(a).append(u"' in XML declaration.");
    case 166:
      return text.append(u"Unsupported XML version: ").append(a);
    case 167:
      return u"Invalid standalone declaration in XML declaration.";
    case 168:
      return u"Invalid syntax in CDATA section.";
    case 169:
      return u"Invalid syntax in comment.";
    case 170:
      return text.append(u"Unexpected '<!").append(a).append(u"'.");
    case 171:
      return text.append(u"The name 'xml' must be lower case: <?").append(a);
    case 172:
      return text.append(u"Missing whitespace after PI target: <?").append(a);
    case 173:
      return u"Unexpected end of input while looking for PI terminator '?>'.";
    case 174:
      return u"Missing quotation character (\" or ').";
    case 175:
      return text.append(u"Unexpected end of input while looking for literal terminator (")
          .append(a)
          .append(u").");
    case 176:
      return u"Unexpected '<' in attribute value.";
    case 177:
      return text.append(u"Unexpected whitespace in character reference: &#")
          .append(a)
          .append(u";");
    case 178:
      return text.append(u"Invalid character in character reference: &#").append(a).append(u";");
    case 179:
      return text.append(u"Invalid Unicode character: ").append(a);
    case 180:
      return u"Invalid character.";
    case 181:
      return text.append(u"Unknown or unsupported encoding: ").append(a).append(u".");
    case 182:
      return u"No-XML document.";
    case 185:
      return text.append(u"Conflict encoding: ").append(a).append(u".");
    case 186:
      return text.append(u"Invalid element name: ").append(a);
    case 187:
      return text.append(u"Invalid attribute value: ")
          .append(a)
          .append(u"=\"")
          .append(b)
          .append(u"\"");
    case 188:
    case 516:
      return text.append(u"External entity is not allowed: '").append(a).append(u"'.");
    case 189:
      return text.append(u"Empty attribute name: ").append(a);
    case 190:
      return text.append(u"Entity expansion limit exceeded: &").append(a).append(u";");
    default:
      return u"XML parser error.";
  }
}

ZQXmlParserImpl::ZQXmlParserImpl()
    : m_expansionDepthLimit(getDefaultEntityExpansionDepth()),
      m_expansionCharLimit(getDefaultEntityExpansionChars()),
      m_parserType(ZQN_auto),
      m_defaultType(ZQN_html) {
  m_cachedText.setToBogus();
  resetParser();
}

ZQXmlParserImpl::~ZQXmlParserImpl() { closeStream(); }

void ZQXmlParserImpl::resetParser() {
  m_eventType = START_DOCUMENT;
  m_pendingToken = TOKEN_NONE;
  m_hasXmlDecl = false;
  m_hasDoctype = false;
  m_rootSeen = false;
  m_topLevelSeen = false;
  m_rootName = ZQName();
  m_rootNamespace = ZQName();
  m_stream = nullptr;
  m_baseStream = nullptr;
  m_ownsStream = false;
  m_stringInput = false;
  m_xml11 = false;
  m_encodingKind = ENCODING_NONE;
  m_encodingName.remove();
  m_bomSeen = false;
  m_lineNumber = -1;
  m_columnNumber = -1;
  m_inputUri.remove();
  m_baseUri.remove();
  m_pushedChar = END_OF_INPUT;
  m_pushedText.remove();
  m_pushedTextPos = 0;
  m_pendingDecoded = END_OF_INPUT;
  m_readByOuterInput = false;
  m_textBuffer.remove();
  m_textStart = 0;
  m_cachedText.setToBogus();
  m_entityName = ZQName();
  m_expansionMarks.clear();
  m_expandedChars = 0;
  m_expansionStopped = false;

  ZQXmlEntityMap& general = m_entities.generalEntities;
  if (general.size() != 5) {
    // lt and amp keep character references, so that their values read as text, not markup,
    // when they are scanned as input.
    general.clear();
    general[ZQN_lt] = u"&#60;";
    general[ZQN_gt] = u">";
    general[ZQN_amp] = u"&#38;";
    general[ZQN_apos] = u"'";
    general[ZQN_quot] = u"\"";
  }
  m_entities.parameterEntities.clear();
  m_entities.externalGeneralEntities.clear();
  m_entities.externalParameterEntities.clear();
  // The mark goes with the tables it describes.
  m_entities.mathmlEntitiesAdded = false;

  m_attributes.clear();
  m_defaultNamespaces.clear();
  if (!m_namespaces) m_namespaces = new ZQNamespaceManager();
  m_namespaces->popToBase();
  m_doctypeName = ZQName();
  m_publicId.remove();
  m_htmlEntitiesAdded = ZQName();
  m_xhtmlEntitiesAdded = false;
  m_metaMediaType.remove();
  syntaxInputsChanged();
}

void ZQXmlParserImpl::popStream() {
  if (m_inputStack.empty()) return;
  if (m_stream != m_baseStream) delete m_stream;
  if (m_baseStream == m_literalStream.get())
    m_literalStreamBusy = false;
  else
    delete m_baseStream;
  InputState& state = m_inputStack.back();
  m_stream = state.stream;
  m_baseStream = state.baseStream;
  m_stringInput = state.stringInput;
  m_bomSeen = state.bomSeen;
  m_topLevelSeen = state.topLevelSeen;
  m_encodingKind = state.encodingKind;
  m_encodingName = std::move(state.encodingName);
  m_parserType = state.parserType;
  m_settledType = state.settledType;
  syntaxInputsChanged();
  m_inputUri = std::move(state.inputUri);
  m_baseUri = std::move(state.baseUri);
  m_baseDepth = state.baseDepth;
  m_lineNumber = state.lineNumber;
  m_columnNumber = state.columnNumber;
  m_pushedChar = state.pushedChar;
  m_pushedText = std::move(state.pushedText);
  m_pushedTextPos = state.pushedTextPos;
  m_inputStack.pop_back();
  dropEndedExpansions();
}

void ZQXmlParserImpl::closeStream() {
  if (!m_stream && !m_baseStream && m_inputStack.empty()) return;
  while (!m_inputStack.empty()) popStream();
  if (m_stream != m_baseStream) delete m_stream;
  if (m_ownsStream) delete m_baseStream;
  m_stream = nullptr;
  m_baseStream = nullptr;
  m_ownsStream = false;
}

UnicodeString ZQXmlParserImpl::lookupEntity(ZQName name, bool parameter) const {
  const ZQXmlEntityMap& internal =
      parameter ? m_entities.parameterEntities : m_entities.generalEntities;
  auto it = internal.find(name);
  if (it != internal.end()) return it->second;
  const ZQXmlEntityMap& external =
      parameter ? m_entities.externalParameterEntities : m_entities.externalGeneralEntities;
  it = external.find(name);
  if (it != external.end()) return it->second;
  if (m_features[FEATURE_IGNORE_UNDEFINED_ENTITIES]) return UnicodeString();
  return ZQBogusString::BOGUS_VALUE;
}

void ZQXmlParserImpl::addEntitySet(const ZQXmlEntityList& list) {
  ZQMutex guard;
  ZQXmlEntityMap& general = m_entities.generalEntities;
  const ZQXmlEntityMap& external = m_entities.externalGeneralEntities;
  for (const auto& row : list) {
    if (row.first.isEmpty()) continue;
    ZQName name(row.first);
    if (name.isEmpty() || general.count(name) != 0 || external.count(name) != 0) continue;
    general.emplace(name, row.second);
  }
}

void ZQXmlParserImpl::addMathMLEntities() {
  if (m_entities.mathmlEntitiesAdded) return;
  addEntitySet(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_MATHML));
  m_entities.mathmlEntitiesAdded = true;
}

void ZQXmlParserImpl::addHtmlEntities() {
  if (m_htmlEntitiesAdded == ZQN_html) return;
  m_htmlEntitiesAdded = ZQN_html;
  addEntitySet(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_HTML));
}

void ZQXmlParserImpl::addXhtmlEntities() {
  if (m_xhtmlEntitiesAdded) return;
  m_xhtmlEntitiesAdded = true;
  addEntitySet(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_XHTML));
}

UnicodeString ZQXmlParserImpl::eventText() const {
  if (m_textStart <= 0) return m_textBuffer;
  return m_textBuffer.tempSubString(m_textStart);
}

void ZQXmlParserImpl::setFeature(Feature feature, bool value) {
  if (feature < 0 || feature >= FEATURE_COUNT) return;
  m_features[feature] = value;
}

bool ZQXmlParserImpl::getFeature(Feature feature) {
  if (feature < 0 || feature >= FEATURE_COUNT) return false;
  return m_features[feature];
}

void ZQXmlParserImpl::setStreamType(const ZQUri::ContentInfo* info,
                                    const UnicodeString& extension) {
  if (info) {
    m_streamMediaType = lowerCase(info->contentType);
    m_language = info->contentLanguage;
  }
  m_streamExtension = lowerCase(extension);
  syntaxInputsChanged();
}

void ZQXmlParserImpl::setCallbackError(ErrorCallback fn, void* data) {
  m_errorCallback = fn;
  m_errorCallbackData = data;
}

UnicodeString ZQXmlParserImpl::getInputUri() { return m_inputUri; }

UnicodeString ZQXmlParserImpl::getBaseUri() { return m_baseUri; }

UnicodeString ZQXmlParserImpl::getInputEncoding() { return m_encodingName; }

void ZQXmlParserImpl::defineEntityReplacementText(ZQName entity, const UnicodeString& value) {
  m_entities.generalEntities[entity] = value;
}

int ZQXmlParserImpl::getNamespaceCount(int depth) { return m_namespaces->getNamespaceCount(depth); }

ZQName ZQXmlParserImpl::getNamespacePrefix(int pos) {
  ZQNamespaceMap* map = m_namespaces->topMap();
  return map ? map->getPrefix(pos) : ZQName();
}

ZQName ZQXmlParserImpl::getNamespaceUri(int pos) {
  ZQNamespaceMap* map = m_namespaces->topMap();
  return map ? map->getNamespace(pos) : ZQName();
}

ZQName ZQXmlParserImpl::getNamespace() {
  if (m_eventType != START_TAG && m_eventType != END_TAG) return ZQName();
  return m_namespaces->top().namespaceUri;
}

ZQName ZQXmlParserImpl::getNamespace(ZQName prefix) { return m_namespaces->lookup(prefix); }

int ZQXmlParserImpl::getDepth() { return m_namespaces->getDepth(); }

UnicodeString ZQXmlParserImpl::getPositionDescription() {
  UnicodeString text;
  if (m_features[FEATURE_NO_POSITION_DESCRIPTION]) return text;
  text.append(getEventTypeName(m_eventType));
  const UnicodeString& where = !m_inputUri.isEmpty() ? m_inputUri : m_baseUri;
  if (!where.isEmpty()) text.append(u", '").append(where).append(u"'");
  if (m_lineNumber != -1) text.append(u", Line ").append(decimal(m_lineNumber));
  if (m_columnNumber != -1) text.append(u", Col ").append(decimal(m_columnNumber));
  text.append(u".");
  return text;
}

int ZQXmlParserImpl::getLineNumber() { return m_lineNumber; }

int ZQXmlParserImpl::getColumnNumber() { return m_columnNumber; }

bool ZQXmlParserImpl::isWhitespace() {
  if (m_eventType == IGNORABLE_WHITESPACE) return true;
  if (m_eventType != TEXT && m_eventType != CDSECT)
    throwCommonError(ZQERR_INVALID_STATE, ZQSRC_PARSER_IS_WHITESPACE, emptyArg(), emptyArg());
  int length = m_textBuffer.length();
  for (int i = m_textStart > 0 ? m_textStart : 0; i < length; ++i) {
    if (!isXmlSpace(m_textBuffer.charAt(i))) return false;
  }
  return true;
}

UnicodeString ZQXmlParserImpl::getText() {
  if (!m_cachedText.isBogus()) return m_cachedText;
  if (m_eventType == ENTITY_REF && !m_entityName.isEmpty()) {
    // An undefined entity gives what the look-up gave: bogus, or empty when undefined
    // entities are ignored.
    m_cachedText = lookupEntity(m_entityName, false);
  } else if (m_textStart <= 0) {
    // The whole buffer is the event's text: handed out as it is, with no cached copy.
    return m_textBuffer;
  } else {
    m_cachedText.setTo(m_textBuffer, m_textStart);
  }
  return m_cachedText;
}

ZQName ZQXmlParserImpl::getTarget() { return m_target; }

bool ZQXmlParserImpl::hasXmlDecl() { return m_hasXmlDecl; }

ZQName ZQXmlParserImpl::getName() {
  switch (m_eventType) {
    case START_TAG:
    case END_TAG:
      return m_namespaces->top().localName;
    case PROCESSING_INSTRUCTION:
      return m_target;
    case ENTITY_REF: {
      if (!m_entityName.isEmpty()) return m_entityName;
      // A character reference is named by its character: "#x" and upper-case hexadecimal.
      UnicodeString text = eventText();
      if (text.isEmpty()) return ZQName();
      return ZQName(UnicodeString(u"#x").append(hexUpper(text.char32At(0))));
    }
    default:
      return ZQName();
  }
}

ZQName ZQXmlParserImpl::getPrefix() {
  if (m_eventType != START_TAG && m_eventType != END_TAG) return ZQName();
  return m_namespaces->top().prefix;
}

bool ZQXmlParserImpl::isEmptyElementTag() {
  if (m_eventType != START_TAG)
    throwCommonError(ZQERR_INVALID_STATE, ZQSRC_PARSER_IS_EMPTY_ELEMENT_TAG, emptyArg(),
                     emptyArg());
  return m_pendingToken == TOKEN_EMPTY_ELEMENT;
}

int ZQXmlParserImpl::getAttributeCount() {
  if (m_eventType != START_TAG) return -1;
  return static_cast<int>(m_attributes.size());
}

ZQName ZQXmlParserImpl::getAttributeNamespace(int index) {
  if (!hasAttributeAt(index))
    throwCommonError(ZQERR_OUT_OF_RANGE, ZQSRC_PARSER_GET_ATTRIBUTE_NAMESPACE, emptyArg(),
                     emptyArg());
  return m_attributes[static_cast<size_t>(index)].namespaceUri;
}

ZQName ZQXmlParserImpl::getAttributeName(int index) {
  if (!hasAttributeAt(index))
    throwCommonError(ZQERR_OUT_OF_RANGE, ZQSRC_PARSER_GET_ATTRIBUTE_NAME, emptyArg(), emptyArg());
  return m_attributes[static_cast<size_t>(index)].localName;
}

ZQName ZQXmlParserImpl::getAttributePrefix(int index) {
  if (!hasAttributeAt(index))
    throwCommonError(ZQERR_OUT_OF_RANGE, ZQSRC_PARSER_GET_ATTRIBUTE_PREFIX, emptyArg(), emptyArg());
  return m_attributes[static_cast<size_t>(index)].prefix;
}

UnicodeString ZQXmlParserImpl::getAttributeValue(ZQName ns, ZQName name) {
  if (m_eventType != START_TAG)
    throwCommonError(ZQERR_OUT_OF_RANGE, ZQSRC_PARSER_GET_ATTRIBUTE_VALUE, emptyArg(), emptyArg());
  for (const ZQXmlAttribute& attribute : m_attributes) {
    if (attribute.localName != name) continue;
    // The prefix is resolved in the element's context; an attribute without prefix
    // whose prefix resolves to nothing answers whatever namespace was asked for.
    ZQName resolved = m_namespaces->lookup(attribute.prefix);
    if (resolved == ns || (attribute.prefix.isEmpty() && resolved.isEmpty()))
      return attribute.value;
  }
  return ZQBogusString::BOGUS_VALUE;
}

UnicodeString ZQXmlParserImpl::getAttributeValue(int index) {
  if (!hasAttributeAt(index))
    throwCommonError(ZQERR_OUT_OF_RANGE, ZQSRC_PARSER_GET_ATTRIBUTE_VALUE, emptyArg(), emptyArg());
  return m_attributes[static_cast<size_t>(index)].value;
}

ZQXmlParser::EventType ZQXmlParserImpl::getEventType() { return m_eventType; }

void ZQXmlParserImpl::throwError(unsigned short code, const UnicodeString& a,
                                 const UnicodeString& b) {
  static const UnicodeString source(u"ZQCommonNS::ZQXmlParserImpl");
  UnicodeString text = formatXmlParserMessage(code, a, b);
  int savedToken = m_pendingToken;
  // Left at "stop" when the error is thrown, so that later calls end the document.
  m_pendingToken = TOKEN_STOP;
  if (m_errorCallback) {
    ZQError error(code, text, source, m_lineNumber, m_columnNumber, m_inputUri);
    m_errorCallback(error, m_errorCallbackData);
    m_pendingToken = savedToken;
    return;
  }
  UnicodeString position = getPositionDescription();
  if (!position.isEmpty()) text.append(u'\n').append(position);
  // The forms that HTML and the non-fatal paths raise are thrown under their plain codes.
  switch (code) {
    case 513:
      code = 134;
      break;
    case 514:
      code = 157;
      break;
    case 515:
      code = 158;
      break;
    case 897:
      code = 140;
      break;
    case 898:
      code = 141;
      break;
    default:
      break;
  }
  ZQError error = position.isEmpty()
                      ? ZQError(code, text, source, m_lineNumber, m_columnNumber, m_inputUri)
                      : ZQError(code, text, source, -1, -1, UnicodeString());
  error.throwFatalError();
  m_errorQueue.push_back(error);
  m_pendingToken = savedToken;
}

bool ZQXmlParserImpl::popError(ZQError& error) {
  if (m_errorQueue.empty()) return false;
  error = m_errorQueue.front();
  m_errorQueue.pop_front();
  return true;
}

void ZQXmlParserImpl::pushError(const ZQError& error) {
  m_errorQueue.push_back(error);
  ZQError& copy = m_errorQueue.back();
  copy.setLineNumber(m_lineNumber);
  copy.setColumnNumber(m_columnNumber);
  copy.setUri(m_inputUri);
}

const void* ZQXmlParserImpl::saveEntityMaps() const { return new ZQXmlEntityMaps(m_entities); }

void ZQXmlParserImpl::recoverEntityMaps(const void*& data) {
  if (!data) return;
  const ZQXmlEntityMaps* saved = static_cast<const ZQXmlEntityMaps*>(data);
  m_entities = *saved;
  delete saved;
  data = nullptr;
}

void ZQXmlParserImpl::setAutoClose(bool autoClose) { m_autoClose = autoClose; }

bool ZQXmlParserImpl::isXML() { return !isHTMLSyntax(); }

// The open decision costs hundreds of instructions and the scanner asks often, so a "no"
// given without settling the type is kept until one of its inputs changes.
bool ZQXmlParserImpl::isXHTMLSyntax() {
  if (m_settledType == ZQN_html) return false;
  if (m_settledType == ZQN_xhtml) return true;
  SyntaxInputs inputs = syntaxInputs();
  if (m_notXhtmlCached && m_notXhtmlInputs == inputs) return false;
  bool answer = decideXHTMLSyntax();
  m_notXhtmlCached = !answer && m_settledType.isEmpty();
  if (m_notXhtmlCached) m_notXhtmlInputs = inputs;
  return answer;
}

bool ZQXmlParserImpl::decideXHTMLSyntax() {
  if (!m_parserType.isEmpty() && m_parserType != ZQN_auto) {
    if (m_parserType != ZQN_xhtml) return false;
    settleType(ZQN_xhtml);
    return true;
  }
  if (!m_streamMediaType.isEmpty()) {
    if (m_streamMediaType != u"application/xhtml+xml") return false;
    settleType(ZQN_xhtml);
    return true;
  }
  if (m_defaultType == ZQN_html && !m_streamExtension.isEmpty()) {
    if (m_streamExtension == u".xht" || m_streamExtension == u".xhtm" ||
        m_streamExtension == u".xhtml") {
      settleType(ZQN_xhtml);
      return true;
    }
    if (m_streamExtension == u".html" || m_streamExtension == u".htm") {
      settleType(ZQN_html);
      return false;
    }
  }
  auto byRoot = [this]() {
    if (m_defaultType != ZQN_xhtml || m_rootNamespace != ZQN_NS_XHTML) return false;
    settleType(ZQN_xhtml);
    return true;
  };
  if (m_hasXmlDecl) return byRoot();
  if (m_publicId.indexOf(u" HTML ") >= 0) {
    settleType(ZQN_html);
    return false;
  }
  if (m_publicId.indexOf(u" XHTML ") >= 0) {
    settleType(ZQN_xhtml);
    return true;
  }
  return byRoot();
}

bool ZQXmlParserImpl::isHTMLSyntax() {
  if (m_settledType == ZQN_html) return true;
  if (m_settledType == ZQN_xhtml) return false;
  SyntaxInputs inputs = syntaxInputs();
  if (m_notHtmlCached && m_notHtmlInputs == inputs) return false;
  bool answer = decideHTMLSyntax();
  m_notHtmlCached = !answer && m_settledType.isEmpty();
  if (m_notHtmlCached) m_notHtmlInputs = inputs;
  return answer;
}

bool ZQXmlParserImpl::decideHTMLSyntax() {
  if (!m_parserType.isEmpty() && m_parserType != ZQN_auto) {
    if (m_parserType != ZQN_html) return false;
    settleType(ZQN_html);
    return true;
  }
  if (isXHTMLSyntax()) {
    settleType(ZQN_xhtml);
    return false;
  }
  if (m_streamMediaType == u"text/html") {
    // Settled, yet this first answer is false; the scanner's order of questions relies on it.
    settleType(ZQN_html);
    return false;
  }
  if (m_defaultType == ZQN_html &&
      (m_streamExtension == u".html" || m_streamExtension == u".htm")) {
    settleType(ZQN_html);
    return true;
  }
  if (m_hasXmlDecl) return false;
  if (m_publicId.indexOf(u" HTML ") >= 0) {
    settleType(ZQN_html);
    return true;
  }
  if (m_rootNamespace.isEmpty() && lowerCase(m_rootName.toString()) == u"html") {
    settleType(ZQN_html);
    return true;
  }
  return false;
}

void ZQXmlParserImpl::setParserType(ZQName type, ZQName defaultType) {
  m_parserType = type;
  m_defaultType = defaultType;
  m_settledType = ZQName();
  syntaxInputsChanged();
}

void ZQXmlParserImpl::setHtmlDefaultCharset(const UnicodeString& charset) {
  m_htmlDefaultCharset = charset;
}

UnicodeString ZQXmlParserImpl::getLanguage() { return m_language; }

UnicodeString ZQXmlParserImpl::getPubidLiteral() { return m_publicId; }

UnicodeString ZQXmlParserImpl::getExternalDTD() { return m_systemId; }

}  // namespace ZQCommonNS
