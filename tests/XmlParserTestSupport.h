// A parser whose state the tests set by hand, and whose events come from a small script, so
// that the queries, the error funnel and the root sniffing can be tested on their own.
#pragma once

#include <istream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "common/ZQName.h"
#include "xml/ZQXmlParserImpl.h"

namespace zqtest {

using ZQCommonNS::ZQName;
using ZQCommonNS::ZQXmlAttribute;

/// One step of a script: the event and, for a start tag, the element and its attributes.
struct ScriptedEvent {
  ZQCommonNS::ZQXmlParser::EventType type = ZQCommonNS::ZQXmlParser::END_DOCUMENT;
  ZQName prefix;
  ZQName localName;
  ZQName namespaceUri;
  std::vector<ZQXmlAttribute> attributes;
};

class StateParser : public ZQCommonNS::ZQXmlParserImpl {
 public:
  using ZQXmlParserImpl::setInput;

  // ---- what the tests set directly ----

  /// Opens an element as a start tag leaves it: the context with the tag's declarations,
  /// then the element's names.
  void openElement(ZQName prefix, ZQName localName, ZQName ns,
                   std::vector<ZQXmlAttribute> attributes = {}, bool empty = false,
                   const std::vector<std::pair<ZQName, ZQName>>& declarations = {}) {
    m_namespaces->pushContext();
    for (const auto& declaration : declarations)
      m_namespaces->declare(declaration.first, declaration.second);
    m_namespaces->top().prefix = prefix;
    m_namespaces->top().localName = localName;
    m_namespaces->top().namespaceUri = ns;
    m_attributes = std::move(attributes);
    m_eventType = START_TAG;
    m_pendingToken = empty ? TOKEN_EMPTY_ELEMENT : TOKEN_NONE;
  }
  /// Declares a namespace in the top context, as the scanner does for a root `svg`.
  void declare(ZQName prefix, ZQName ns) { m_namespaces->declare(prefix, ns); }
  /// Leaves the event at the end tag of the top element, still on the stack.
  void endElement() {
    m_eventType = END_TAG;
    m_pendingToken = TOKEN_NONE;
  }
  /// Pops the top element, as the call after its end tag does.
  void popElement() { m_namespaces->popContext(); }
  /// An event whose text the buffer holds from `start`.
  void setTextEvent(EventType type, const icu::UnicodeString& buffer, int start = 0) {
    m_eventType = type;
    m_textBuffer = buffer;
    m_textStart = start;
    m_cachedText.setToBogus();
    m_entityName = ZQName();
  }
  /// An ENTITY_REF of a named entity.
  void setEntityRef(ZQName entity) {
    setTextEvent(ENTITY_REF, icu::UnicodeString());
    m_entityName = entity;
  }
  void setEvent(EventType type) { m_eventType = type; }
  void setTarget(ZQName target) { m_target = target; }
  void setPosition(int line, int column) {
    m_lineNumber = line;
    m_columnNumber = column;
  }
  void setNames(const icu::UnicodeString& inputUri, const icu::UnicodeString& baseUri) {
    m_inputUri = inputUri;
    m_baseUri = baseUri;
  }
  void setEncodingName(const icu::UnicodeString& name) { m_encodingName = name; }
  void setXmlDecl(bool on) { m_hasXmlDecl = on; }
  void setRoot(ZQName localName, ZQName ns) {
    m_rootName = localName;
    m_rootNamespace = ns;
  }
  void setDoctypeIds(const icu::UnicodeString& publicId, const icu::UnicodeString& systemId) {
    m_publicId = publicId;
    m_systemId = systemId;
  }
  void setPendingToken(int token) { m_pendingToken = token; }
  void setExternalGeneralEntity(ZQName name, const icu::UnicodeString& systemId) {
    m_entities.externalGeneralEntities[name] = systemId;
  }
  void setParameterEntity(ZQName name, const icu::UnicodeString& value, bool external) {
    (external ? m_entities.externalParameterEntities : m_entities.parameterEntities)[name] = value;
  }
  /// Installs streams as setInput and pushStream leave them; the parser owns `base` when
  /// `owned`, and `converter` (may be null) reads over it.
  void setStreams(std::istream* base, std::istream* converter, bool owned) {
    m_baseStream = base;
    m_stream = converter ? converter : base;
    m_ownsStream = owned;
  }
  /// Saves the current input as pushStream does and makes `stream` (owned) the input.
  void pushInput(std::istream* stream, const icu::UnicodeString& uri, int line, int column) {
    InputState state;
    state.stream = m_stream;
    state.baseStream = m_baseStream;
    state.inputUri = m_inputUri;
    state.baseUri = m_baseUri;
    state.lineNumber = m_lineNumber;
    state.columnNumber = m_columnNumber;
    state.encodingName = m_encodingName;
    state.parserType = m_parserType;
    state.settledType = m_settledType;
    m_inputStack.push_back(state);
    m_stream = m_baseStream = stream;
    m_inputUri = uri;
    m_lineNumber = line;
    m_columnNumber = column;
  }

  // ---- read-only views for the tests ----
  const icu::UnicodeString& streamMediaType() const { return m_streamMediaType; }
  const icu::UnicodeString& streamExtension() const { return m_streamExtension; }
  ZQName parserType() const { return m_parserType; }
  ZQName defaultType() const { return m_defaultType; }
  ZQName settledType() const { return m_settledType; }
  const icu::UnicodeString& htmlDefaultCharset() const { return m_htmlDefaultCharset; }
  bool autoClose() const { return m_autoClose; }
  ErrorCallback errorCallback() const { return m_errorCallback; }
  void* errorCallbackData() const { return m_errorCallbackData; }
  int pendingToken() const { return m_pendingToken; }
  size_t inputDepth() const { return m_inputStack.size(); }
  std::istream* stream() const { return m_stream; }
  const ZQCommonNS::ZQXmlEntityMaps& entities() const { return m_entities; }
  icu::UnicodeString entity(ZQName name, bool parameter) const {
    return lookupEntity(name, parameter);
  }
  void reset() { resetParser(); }

  // ---- reading: a script of events ----

  /// Script read by the stream form of setInput, one event per line:
  /// "TEXT", or "START local namespace [attrLocal attrNamespace value]...", "-" for none.
  static std::vector<ScriptedEvent> parseScript(std::istream& in) {
    std::vector<ScriptedEvent> events;
    std::string line;
    while (std::getline(in, line)) {
      std::istringstream words(line);
      std::string kind;
      words >> kind;
      ScriptedEvent event;
      if (kind == "TEXT") {
        event.type = TEXT;
      } else if (kind == "START") {
        event.type = START_TAG;
        std::string local, ns;
        words >> local >> ns;
        event.localName = nameOf(local);
        event.namespaceUri = nameOf(ns);
        std::string aLocal, aNs, aValue;
        while (words >> aLocal >> aNs >> aValue) {
          ZQXmlAttribute attribute;
          attribute.localName = nameOf(aLocal);
          attribute.namespaceUri = nameOf(aNs);
          attribute.value = icu::UnicodeString::fromUTF8(aValue);
          event.attributes.push_back(attribute);
        }
      } else {
        continue;
      }
      events.push_back(event);
    }
    return events;
  }

  void setInput(ZQCommonNS::ZQUri& uri, const icu::UnicodeString& encoding,
                const icu::UnicodeString& base) override {
    resetParser();
    setInputCalls.push_back(uri.toString());
    lastEncoding = encoding;
    lastBase = base;
  }
  void setInput(std::istream& stream, const icu::UnicodeString& encoding,
                const icu::UnicodeString& base) override {
    resetParser();
    m_stream = m_baseStream = &stream;
    script = parseScript(stream);
    position = 0;
    lastEncoding = encoding;
    lastBase = base;
  }
  EventType next() override {
    ++nextCalls;
    if (m_eventType == END_TAG || (m_eventType == START_TAG && m_namespaces->getDepth() > 0))
      m_namespaces->popContext();
    if (position >= script.size()) {
      m_eventType = END_DOCUMENT;
      return m_eventType;
    }
    const ScriptedEvent& event = script[position++];
    if (event.type == START_TAG) {
      openElement(event.prefix, event.localName, event.namespaceUri, event.attributes);
    } else {
      m_eventType = event.type;
    }
    return m_eventType;
  }
  EventType nextToken() override { return next(); }
  void pushStream(const icu::UnicodeString&, ZQName, const icu::UnicodeString&) override {}
  void addMathMLEntities() override {}
  void rewind() override {}

  std::vector<ScriptedEvent> script;
  size_t position = 0;
  int nextCalls = 0;
  std::vector<icu::UnicodeString> setInputCalls;
  icu::UnicodeString lastEncoding;
  icu::UnicodeString lastBase;

 private:
  static ZQName nameOf(const std::string& word) {
    if (word == "-") return ZQName();
    return ZQName(icu::UnicodeString::fromUTF8(word));
  }
};

}  // namespace zqtest
