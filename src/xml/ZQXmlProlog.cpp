// The XML declaration, the DOCTYPE with its internal and external subsets, entity
// declarations and the scope of the MathML entity set.
#include <unicode/locid.h>
#include <unicode/uchar.h>

#include <initializer_list>
#include <memory>

#include "common/ZQString.h"
#include "common/ZQUri.h"
#include "xml/ZQXmlDtdCache.h"
#include "xml/ZQXmlEntities.h"
#include "xml/ZQXmlParserImpl.h"
#include "xml/ZQXmlScanText.h"

namespace ZQCommonNS {

namespace {

using xmlscan::isSpace;

const UnicodeString& none() { return ZQEmptyString::EMPTY_VALUE; }

bool isQuote(UChar32 c) { return c == u'"' || c == u'\''; }

// The character an error names; end of input names none.
UnicodeString charArg(UChar32 c) {
  UnicodeString text;
  if (c != ZQXmlParserImpl::END_OF_INPUT) text.append(c);
  return text;
}

UnicodeString quoted(const UnicodeString& value) {
  return UnicodeString(u"\"").append(value).append(u'"');
}

UnicodeString lowerCase(const UnicodeString& text) {
  UnicodeString copy(text);
  copy.toLower(icu::Locale::getRoot());
  return copy;
}

// A scheme is a letter, then letters, digits, "+", "-" or ".", two characters at least, then
// ":"; so a drive letter is none.
bool hasScheme(const UnicodeString& text) {
  int length = text.length();
  if (length == 0 || !u_isalpha(text.charAt(0)) || text.charAt(0) > 0x7F) return false;
  for (int i = 1; i < length; ++i) {
    UChar c = text.charAt(i);
    if (c == u':') return i >= 2;
    bool ascii = c < 0x80;
    if (!ascii || !(u_isalnum(c) || c == u'+' || c == u'-' || c == u'.')) return false;
  }
  return false;
}

// The W3C hosts the well-known DTDs under both schemes; neither is fetched, the built-in sets
// stand in for them.
bool isW3CDtd(const UnicodeString& resolved, std::initializer_list<const char16_t*> paths) {
  static const char16_t* const hosts[] = {u"http://www.w3.org", u"https://www.w3.org"};
  for (const char16_t* host : hosts) {
    UnicodeString start(host);
    if (!resolved.startsWith(start)) continue;
    UnicodeString rest = resolved.tempSubString(start.length());
    for (const char16_t* path : paths)
      if (rest.startsWith(UnicodeString(path))) return true;
  }
  return false;
}

void copyTable(const ZQXmlEntityMap& table, ZQDtdEntityList& list) {
  list.reserve(table.size());
  for (const auto& row : table) list.emplace_back(row.first.toString(), row.second);
}

// Adds the rows whose names are in neither table of their kind: what the document declared
// first keeps its value.
void mergeRows(const ZQDtdEntityList& rows, ZQXmlEntityMap& into, const ZQXmlEntityMap& internal,
               const ZQXmlEntityMap& external) {
  for (const auto& row : rows) {
    ZQName name(row.first);
    if (name.isEmpty() || internal.count(name) != 0 || external.count(name) != 0) continue;
    into.emplace(name, row.second);
  }
}

}  // namespace

bool ZQXmlParserImpl::skipDeclarationSpace(bool append) {
  bool any = false;
  for (;;) {
    UChar32 c = readChar();
    if (!isSpace(c)) {
      unreadChar(c);
      return any;
    }
    any = true;
    if (append) m_textBuffer.append(c);
  }
}

// ---- XML declaration ----

void ZQXmlParserImpl::parseXmlDecl() {
  if (m_eventType != START_DOCUMENT) throwError(161, none(), none());
  m_pendingToken = TOKEN_NONE;
  auto requireEquals = [this](const char16_t* label) {
    skipDeclarationSpace(false);
    UChar32 c = readChar();
    if (c != u'=') {
      unreadChar(c);
      throwError(163, label, none());
    }
    skipDeclarationSpace(false);
  };

  if (!skipDeclarationSpace(false)) throwError(164, u"<?xml", none());
  if (readName() != ZQN_version) throwError(162, none(), none());
  requireEquals(u"<?xml version");
  UnicodeString version = readLiteral(0);
  if (version == u"1.0")
    m_xml11 = false;
  else if (version == u"1.1")
    m_xml11 = true;
  else
    throwError(166, version, none());

  bool space = skipDeclarationSpace(false);
  ZQName name = readName();
  if (name == ZQN_encoding) {
    if (!space) throwError(165, u"encoding=", none());
    requireEquals(u"encoding");
    UnicodeString value = readLiteral(0);
    int before = m_encodingKind;
    UnicodeString beforeName = m_encodingName;
    setEncoding(value);
    int after = m_encodingKind;
    if (m_stream == m_baseStream && after != before) {
      if (m_bomSeen) {
        // Under a mark only the generic name of the mark's own width passes.
        bool conflict = before < ENCODING_UTF16LE ||
                        ((before == ENCODING_UTF16LE || before == ENCODING_UTF16BE) &&
                         after != ENCODING_UTF16) ||
                        (before > ENCODING_UTF16BE &&
                         ((before != ENCODING_UTF32LE && before != ENCODING_UTF32BE) ||
                          after != ENCODING_UTF32));
        if (conflict) throwError(185, value, none());
      }
      // A declaration never replaces a detected multi-byte kind.
      if (before >= ENCODING_UTF16 && before <= ENCODING_UTF32BE) {
        m_encodingKind = before;
        m_encodingName = beforeName;
      }
    }
    space = skipDeclarationSpace(false);
    name = readName();
  }
  if (name == ZQN_standalone) {
    if (!space) throwError(165, u"standalone=", none());
    requireEquals(u"standalone");
    UnicodeString value = readLiteral(0);
    if (value != u"yes" && value != u"no") throwError(167, none(), none());
    skipDeclarationSpace(false);
  }
  // "?>" ends it; the first character that doesn't fit is reported.
  UChar32 c = readChar();
  if (c != u'?')
    throwError(140, charArg(c), none());
  else if ((c = readChar()) != u'>')
    throwError(140, charArg(c), none());
  m_hasXmlDecl = true;
}

// ---- DOCTYPE ----

void ZQXmlParserImpl::parseDocDecl() {
  m_eventType = DOCDECL;
  m_pendingToken = TOKEN_NONE;
  // A document read through pushStream may bring a DOCTYPE of its own.
  if (!(m_rootSeen && m_hasDoctype && !m_inputStack.empty())) {
    if (m_rootSeen) throwError(148, none(), none());
    if (m_hasDoctype) throwError(149, none(), none());
  }
  if (!skipDeclarationSpace(true)) throwError(150, u"<!DOCTYPE", none());

  ZQName prefix, local;
  if (!readQName(prefix, local)) throwError(131, none(), none());
  UnicodeString rootName;
  if (!prefix.isEmpty()) rootName.append(prefix.toString()).append(u':');
  rootName.append(local.toString());
  m_doctypeName = rootName.isEmpty() ? ZQName() : ZQName(lowerCase(rootName));
  UnicodeString label = UnicodeString(u"<!DOCTYPE ").append(rootName);

  UnicodeString publicId, systemId;
  UChar32 c = peekChar();
  if (c != u'[' && c != u'>' && c != END_OF_INPUT) {
    if (!skipDeclarationSpace(true)) throwError(150, label, none());
    c = peekChar();
  }
  if (c != u'[' && c != u'>' && c != END_OF_INPUT) {
    ZQName keyword = readName();
    bool isSystem = keyword == ZQN_SYSTEM;
    bool isPublic = keyword == ZQN_PUBLIC;
    if (!isSystem && !isPublic && m_doctypeName == ZQN_html && !keyword.isEmpty()) {
      // HTML pages write the keywords in any case.
      UnicodeString upper(keyword.toString());
      upper.toUpper(icu::Locale::getRoot());
      isSystem = upper == u"SYSTEM";
      isPublic = upper == u"PUBLIC";
    }
    if (!isSystem && !isPublic) {
      throwError(151, label, none());
    } else {
      if (!skipDeclarationSpace(true))
        throwError(150, UnicodeString(label).append(u' ').append(keyword.toString()), none());
      bool readSystem = true;
      if (isPublic) {
        if (!isQuote(peekChar())) throwError(152, UnicodeString(label).append(u" PUBLIC"), none());
        publicId = readLiteral(0);
        if (peekChar() == u'>') {
          readSystem = false;
        } else {
          if (!skipDeclarationSpace(true))
            throwError(150, UnicodeString(label).append(u" PUBLIC ").append(quoted(publicId)),
                       none());
          // After a public identifier the system one is optional.
          readSystem = isQuote(peekChar());
        }
      } else if (!isQuote(peekChar())) {
        throwError(153, UnicodeString(label).append(u" SYSTEM|PUBLIC"), none());
      }
      if (readSystem) systemId = readLiteral(0);
    }
  }

  // The rest, internal subset included, up to the ">" that closes the DOCTYPE. A truncated
  // DOCTYPE ends here: there is nothing more to read.
  if (!scanDeclarations(false)) return;

  if (publicId.startsWith(UnicodeString(u"-//W3C//DTD SVG"))) {
    m_namespaces->declare(ZQName(), ZQN_NS_SVG);
    m_namespaces->declare(ZQN_xlink, ZQN_NS_XLINK);
  }
  if (!m_features[FEATURE_SKIP_EXTERNAL_DTD]) {
    bool htmlPublic = publicId.startsWith(UnicodeString(u"-//W3C//DTD HTML "));
    if (systemId.isEmpty()) {
      if (m_doctypeName == ZQN_html && htmlPublic) addXhtmlEntities();
    } else {
      UnicodeString resolved = m_baseUri.isEmpty() ? ZQUri(systemId).toString()
                                                   : ZQUri(ZQUri(m_baseUri), systemId).toString();
      // The built-in sets stand in for the well-known DTDs, so that those are never fetched.
      if (isW3CDtd(resolved, {u"/Math/DTD/mathml", u"/TR/MathML"})) {
        // Through the DTD the set isn't marked as added: a nested math still scopes it.
        addEntitySet(ZQXmlEntitySets::getList(ZQXmlEntitySets::SET_MATHML));
      } else if (isW3CDtd(resolved, {u"/TR/xhtml", u"/MarkUp/DTD/xhtml"}) || htmlPublic) {
        addXhtmlEntities();
      } else {
        loadExternalDtd(resolved);
      }
    }
  }
  m_publicId = publicId;
  m_systemId = systemId;
  m_hasDoctype = true;
}

bool ZQXmlParserImpl::scanDeclarations(bool external) {
  enum { PLAIN, COMMENT, PI } state = PLAIN;
  UChar32 quote = 0;
  int depth = 1;
  bool refused = false;
  auto endsWith = [this](const char16_t* tail) {
    return m_textBuffer.endsWith(UnicodeString(tail));
  };
  for (;;) {
    UChar32 c = readChar();
    if (c == END_OF_INPUT) {
      if (!external) throwError(154, u"DOCTYPE", none());
      return false;
    }
    if (quote != 0) {
      m_textBuffer.append(c);
      if (c == quote) quote = 0;
      continue;
    }
    if (state != PLAIN) {
      if (c == u'>' && endsWith(state == COMMENT ? u"--" : u"?")) {
        state = PLAIN;
        if (--depth == 0) return true;
      }
      m_textBuffer.append(c);
      continue;
    }
    switch (c) {
      case u'<':
        ++depth;
        break;
      case u'>':
        if (--depth == 0) return true;
        break;
      case u'"':
      case u'\'':
        quote = c;
        break;
      case u'-':
        if (endsWith(u"<!-")) state = COMMENT;
        break;
      case u'?':
        if (endsWith(u"<")) state = PI;
        break;
      case u'%':
        // After a refused expansion the references are read and dropped: references that
        // multiply would otherwise be refused one by one for ever.
        if (!expandParameterReference(external, refused, !refused)) refused = true;
        continue;
      case u'Y':
        if (!endsWith(u"<!ENTIT")) break;
        // The internal subset's text goes without this "Y"; the event text shows it so.
        if (external) m_textBuffer.append(c);
        parseEntityDecl();
        if (endsWith(u">") && --depth == 0) return true;
        continue;
      case u'[':
        if (!external || !endsWith(u"<![IGNORE")) break;
        m_textBuffer.append(c);
        // Everything up to the second "]" is passed over; sections inside aren't counted.
        for (int brackets = 0; brackets < 2;) {
          UChar32 d = readChar();
          if (d == END_OF_INPUT) return false;
          if (d == u']') ++brackets;
        }
        m_textBuffer.append(u"]]");
        continue;
      default:
        break;
    }
    m_textBuffer.append(c);
  }
}

bool ZQXmlParserImpl::expandParameterReference(bool external, bool silent, bool expand) {
  ZQName name = readName();
  if (name.isEmpty()) {
    if (!silent) throwError(155, none(), none());
    return true;
  }
  UChar32 c = readChar();
  if (c != u';') {
    if (c != END_OF_INPUT) unreadChar(c);
    if (!silent)
      throwError(156, UnicodeString(u"%").append(name.toString()).append(charArg(c)), none());
  }
  if (!expand) return true;
  UnicodeString value = lookupEntity(name, true);
  if (value.isBogus()) {
    if (!external && !silent) throwError(514, name.toString(), none());
    return true;
  }
  bool isExternal = m_entities.parameterEntities.count(name) == 0 &&
                    m_entities.externalParameterEntities.count(name) != 0;
  // Every expansion passes the guard, so an entity that names itself ends in an error.
  if (!isExternal) {
    if (value.isEmpty()) return true;
    if (!guardExpansion(name, value.length())) return false;
    unreadText(value);
    return true;
  }
  if (!guardExpansion(name, -1)) return false;
  try {
    pushStream(value, ZQName(), none());
  } catch (const ZQError&) {
    if (!m_features[FEATURE_IGNORE_UNDEFINED_ENTITIES]) throw;
  }
  return true;
}

// ---- Entity declarations ----

void ZQXmlParserImpl::parseEntityDecl() {
  if (!skipDeclarationSpace(true)) throwError(150, u"<!ENTITY", none());
  bool parameter = false;
  if (peekChar() == u'%') {
    readChar();
    m_textBuffer.append(u'%');
    parameter = true;
    if (!skipDeclarationSpace(true)) throwError(150, u"<!ENTITY %", none());
  }
  ZQName name = readName();
  if (name.isEmpty())
    throwError(159, u"!ENTITY ", none());
  else
    m_textBuffer.append(name.toString());
  UnicodeString label = UnicodeString(u"<!ENTITY ").append(name.toString());
  if (!skipDeclarationSpace(true)) throwError(150, label, none());

  UnicodeString value;
  bool isExternal = false;
  UChar32 quote = peekChar();
  if (isQuote(quote)) {
    // The raw text goes to the event text and is then read again as a literal.
    UnicodeString raw;
    raw.append(readChar());
    for (;;) {
      UChar32 c = readChar();
      if (c == END_OF_INPUT) {
        m_textBuffer.append(raw);
        throwError(154, u"ENTITY", none());
        return;
      }
      raw.append(c);
      if (c == quote) break;
    }
    m_textBuffer.append(raw);
    unreadText(raw);
    value = readLiteral(2);
  } else {
    // After an unknown keyword the declaration is read on as a system identifier.
    ZQName keyword = readName();
    if (keyword != ZQN_SYSTEM && keyword != ZQN_PUBLIC) throwError(151, label, none());
    m_textBuffer.append(keyword.toString());
    if (!skipDeclarationSpace(true))
      throwError(150, UnicodeString(label).append(u' ').append(keyword.toString()), none());
    if (keyword == ZQN_PUBLIC) {
      if (!isQuote(peekChar())) throwError(152, UnicodeString(label).append(u" PUBLIC"), none());
      UnicodeString publicId = readLiteral(2);
      m_textBuffer.append(quoted(publicId));
      if (!skipDeclarationSpace(true))
        throwError(150, UnicodeString(label).append(u" PUBLIC").append(quoted(publicId)), none());
    }
    if (!isQuote(peekChar()))
      throwError(153, UnicodeString(label).append(u" SYSTEM|PUBLIC"), none());
    value = readLiteral(0);
    m_textBuffer.append(quoted(value));
    isExternal = true;
  }

  if (!name.isEmpty()) {
    // The first declaration wins, and the predefined entities keep their values.
    ZQXmlEntityMap& internal =
        parameter ? m_entities.parameterEntities : m_entities.generalEntities;
    ZQXmlEntityMap& external =
        parameter ? m_entities.externalParameterEntities : m_entities.externalGeneralEntities;
    if (internal.count(name) == 0 && external.count(name) == 0)
      (isExternal ? external : internal).emplace(name, value);
  }

  if (isExternal && !parameter) {
    // An unparsed entity: its notation is read and dropped, and it is kept like any other.
    bool space = skipDeclarationSpace(true);
    if (space && peekChar() != u'>') {
      UnicodeString text = UnicodeString(label).append(u" ... ").append(quoted(value));
      ZQName keyword = readName();
      if (keyword != ZQN_NDATA) throwError(160, text, none());
      m_textBuffer.append(keyword.toString());
      if (!skipDeclarationSpace(true)) throwError(150, text.append(u" NDATA"), none());
      m_textBuffer.append(readName().toString());
    }
  }
  skipDeclarationSpace(true);
  UChar32 c = readChar();
  if (c != END_OF_INPUT) m_textBuffer.append(c);
  if (c != u'>') throwError(140, charArg(c), none());
}

// ---- External DTD ----

void ZQXmlParserImpl::loadExternalDtd(const UnicodeString& systemId) {
  // The callback is off while the DTD is read, and comes back however the reading ends.
  struct CallbackOff {
    ZQXmlParserImpl& parser;
    ErrorCallback fn;
    void* data;
    explicit CallbackOff(ZQXmlParserImpl& p)
        : parser(p), fn(p.m_errorCallback), data(p.m_errorCallbackData) {
      parser.m_errorCallback = nullptr;
    }
    ~CallbackOff() {
      parser.m_errorCallback = fn;
      parser.m_errorCallbackData = data;
    }
  } callbackOff(*this);
  try {
    std::shared_ptr<const ZQDtdCacheEntry> entry = ZQDtdCache::find(systemId);
    if (!entry) {
      // Read with the cache unlocked: another thread may read the same DTD meanwhile, and
      // the first one stored is kept.
      ZQPtr<ZQXmlParserImpl> inner(new ZQXmlParserImpl());
      if (hasScheme(systemId)) {
        ZQUri uri(systemId);
        inner->setInput(uri, none(), none());
      } else {
        inner->setInput(systemId, none(), m_baseUri);
      }
      inner->parseExternalSubset();
      ZQDtdCacheEntry record;
      copyTable(inner->m_entities.generalEntities, record.generalEntities);
      copyTable(inner->m_entities.parameterEntities, record.parameterEntities);
      copyTable(inner->m_entities.externalGeneralEntities, record.externalGeneralEntities);
      copyTable(inner->m_entities.externalParameterEntities, record.externalParameterEntities);
      inner = nullptr;
      entry = ZQDtdCache::add(systemId, std::move(record));
    }
    ZQXmlEntityMaps& maps = m_entities;
    mergeRows(entry->generalEntities, maps.generalEntities, maps.generalEntities,
              maps.externalGeneralEntities);
    mergeRows(entry->parameterEntities, maps.parameterEntities, maps.parameterEntities,
              maps.externalParameterEntities);
    mergeRows(entry->externalGeneralEntities, maps.externalGeneralEntities, maps.generalEntities,
              maps.externalGeneralEntities);
    mergeRows(entry->externalParameterEntities, maps.externalParameterEntities,
              maps.parameterEntities, maps.externalParameterEntities);
  } catch (const ZQError&) {
    if (!m_features[FEATURE_IGNORE_DTD_ERRORS]) throw;
  }
}

void ZQXmlParserImpl::parseExternalSubset() {
  m_textBuffer.remove();
  m_textStart = 0;
  m_cachedText.setToBogus();
  startInput();
  // A text declaration reads as an XML declaration.
  if (peekToken() == TOKEN_PI) {
    m_pendingToken = TOKEN_NONE;
    parsePI();
  }
  bool refused = false;
  for (;;) {
    m_textBuffer.remove();
    m_textStart = 0;
    switch (peekToken()) {
      case TOKEN_TEXT:
        // Text between declarations is passed over a character at a time; only parameter
        // references count there.
        m_pendingToken = TOKEN_NONE;
        if (readChar() == u'%' && !expandParameterReference(true, true, !refused)) refused = true;
        break;
      case TOKEN_PI:
        m_pendingToken = TOKEN_NONE;
        parsePI();
        break;
      case TOKEN_DECLARATION:
        m_pendingToken = TOKEN_NONE;
        m_textBuffer.setTo(u"<!");
        scanDeclarations(true);
        break;
      default:
        if (getDepth() == 0) {
          m_eventType = END_DOCUMENT;
          if (m_autoClose) closeStream();
        }
        return;
    }
  }
}

// ---- MathML entity scope ----

void ZQXmlParserImpl::applyRootEntityRules() {
  const ZQNamespaceManager::Entry& root = m_namespaces->top();
  if (root.localName == ZQN_math && root.namespaceUri == ZQN_NS_MATHML &&
      !m_features[FEATURE_SKIP_EXTERNAL_DTD] && !m_hasDoctype)
    addMathMLEntities();
}

void ZQXmlParserImpl::enterMathScope() {
  const ZQNamespaceManager::Entry& element = m_namespaces->top();
  if (element.localName != ZQN_math || element.namespaceUri != ZQN_NS_MATHML) return;
  if (getDepth() < 2 || m_entities.mathmlEntitiesAdded || m_features[FEATURE_SKIP_EXTERNAL_DTD])
    return;
  m_savedEntityMaps = std::make_unique<ZQXmlEntityMaps>(m_entities);
  addMathMLEntities();
}

void ZQXmlParserImpl::leaveMathScope() {
  const ZQNamespaceManager::Entry& element = m_namespaces->top();
  if (element.localName != ZQN_math || element.namespaceUri != ZQN_NS_MATHML) return;
  if (getDepth() < 2 || !m_entities.mathmlEntitiesAdded || m_features[FEATURE_SKIP_EXTERNAL_DTD])
    return;
  // An inner math restores already: the set is then gone for the rest of the outer one.
  if (!m_savedEntityMaps) return;
  m_entities = *m_savedEntityMaps;
  m_savedEntityMaps.reset();
}

}  // namespace ZQCommonNS
