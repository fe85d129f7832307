// The event loop of the parser: next and nextToken, the class of the next token, tags with
// their attributes, text, CDATA sections, comments, processing instructions and markup
// declarations, and rewind.
#include <unicode/locid.h>

#include <cstdio>

#include "common/ZQChar.h"
#include "common/ZQString.h"
#include "xml/ZQXmlParserImpl.h"
#include "xml/ZQXmlScanText.h"

namespace ZQCommonNS {

namespace {

using xmlscan::charText;
using xmlscan::isSpace;

constexpr UChar32 kEnd = ZQXmlParserImpl::END_OF_INPUT;

// "U+0041 (A)": how text at the top level is reported.
UnicodeString codePointText(UChar32 c) {
  char hex[16];
  snprintf(hex, sizeof hex, "U+%04X (", static_cast<unsigned>(c));
  return UnicodeString(hex, -1, US_INV).append(charText(c)).append(u')');
}

UnicodeString qualifiedName(ZQName prefix, ZQName local) {
  UnicodeString text;
  if (!prefix.isEmpty()) text.append(prefix.toString()).append(u':');
  return text.append(local.toString());
}

// Appends characters to a string in runs: one append per character costs more than all the
// scanning around it.
class RunAppender {
 public:
  explicit RunAppender(UnicodeString& target) : m_target(target) {}
  ~RunAppender() { flush(); }
  RunAppender(const RunAppender&) = delete;
  RunAppender& operator=(const RunAppender&) = delete;
  void append(UChar32 c) {
    if (m_length > kSize - 2) flush();
    if (c <= 0xFFFF) {
      m_buffer[m_length++] = static_cast<char16_t>(c);
    } else if (c <= 0x10FFFF) {
      m_buffer[m_length++] = U16_LEAD(c);
      m_buffer[m_length++] = U16_TRAIL(c);
    }
  }
  /// Code units not yet in the target.
  int pending() const { return m_length; }
  void flush() {
    if (m_length == 0) return;
    m_target.append(m_buffer, 0, m_length);
    m_length = 0;
  }

 private:
  static constexpr int kSize = 256;
  UnicodeString& m_target;
  char16_t m_buffer[kSize];
  int m_length = 0;
};

bool isAllSpace(const UnicodeString& text, int start) {
  for (int i = start; i < text.length(); ++i)
    if (!isSpace(text.charAt(i))) return false;
  return true;
}

}  // namespace

// ---- Events ----

void ZQXmlParserImpl::startInput() {
  if (!m_stream) return;
  m_lineNumber = 1;
  m_columnNumber = 0;
  detectEncoding(false);
  // A character that detection read and put back was counted by no readChar.
  if (m_pushedChar != END_OF_INPUT) ++m_columnNumber;
}

ZQXmlParser::EventType ZQXmlParserImpl::nextToken() {
  m_textBuffer.truncate(m_textStart);
  if (!m_cachedText.isBogus()) m_cachedText.setToBogus();  // most events never fill it
  m_entityName = ZQName();
  switch (m_eventType) {
    case START_DOCUMENT:
      // An error thrown from the XML declaration leaves the stop mark: the document ends
      // instead of being started again over the rest of the declaration.
      if (m_pendingToken == TOKEN_STOP) return endOfInput();
      m_pendingToken = TOKEN_NONE;
      startInput();
      if (peekToken() == TOKEN_PI) {
        parsePI();
        if (m_eventType != START_DOCUMENT) return m_eventType;
      }
      break;
    case END_DOCUMENT:
      return endOfInput();
    case START_TAG:
      if (m_pendingToken == TOKEN_EMPTY_ELEMENT) {
        m_eventType = END_TAG;
        return m_eventType;
      }
      break;
    case END_TAG:
      m_namespaces->popContext();
      break;
    default:
      break;
  }
  for (;;) {
    int token = peekToken();
    switch (token) {
      case TOKEN_START_TAG:
        parseStartTag();
        return m_eventType;
      case TOKEN_END_TAG:
        parseEndTag();
        return m_eventType;
      case TOKEN_TEXT:
        parseText();
        return m_eventType;
      case TOKEN_REFERENCE: {
        m_eventType = ENTITY_REF;
        m_pendingToken = TOKEN_NONE;
        UnicodeString text;
        readReference(text, m_entityName, false);
        if (m_entityName.isEmpty()) m_textBuffer.append(text);
        return m_eventType;
      }
      case TOKEN_PI:
      case TOKEN_DECLARATION:
        m_markupDropped = false;
        if (token == TOKEN_PI)
          parsePI();
        else
          parseMarkupDecl();
        // A section dropped in content, or an XML declaration out of place, leaves the event
        // as it was. While next() merges text that is a TEXT adding nothing; any other event
        // would be repeated (an end tag popped twice, the document started again), so the
        // next token is read instead.
        if (m_markupDropped && !(m_eventType == TEXT && m_textStart > 0)) continue;
        return m_eventType;
      default:
        return endOfInput();
    }
  }
}

ZQXmlParser::EventType ZQXmlParserImpl::endOfInput() {
  if (getDepth() > 0) {
    // HTML closes what is open, one element per call.
    if (isHTMLSyntax()) {
      m_eventType = END_TAG;
      return m_eventType;
    }
    throwError(129, UnicodeString(), UnicodeString());
  }
  m_eventType = END_DOCUMENT;
  m_pendingToken = TOKEN_NONE;
  if (m_autoClose) closeStream();
  return m_eventType;
}

ZQXmlParser::EventType ZQXmlParserImpl::next() {
  m_textBuffer.remove();
  // Cleared however the reading ends, errors included: nextToken on its own reports each
  // reference as an event.
  struct Merging {
    bool& flag;
    explicit Merging(bool& f) : flag(f) { flag = true; }
    ~Merging() { flag = false; }
  } merging(m_mergingText);
  for (;;) {
    m_textStart = m_textBuffer.length();
    EventType t = nextToken();
    if (t < TEXT || t > DOCDECL) return t;
    bool merge = false;
    UChar32 expanded = END_OF_INPUT;
    switch (t) {
      case TEXT:
      case CDSECT:
        merge = true;
        break;
      case ENTITY_REF:
        if (m_entityName.isEmpty()) {
          merge = true;  // the character is in the buffer
        } else {
          expanded = expandEntity();
        }
        break;
      case PROCESSING_INSTRUCTION:
        if (m_features[FEATURE_REPORT_PI]) return t;
        m_cachedText.setToBogus();
        break;
      default:  // whitespace at the top, DOCTYPE, comment
        break;
    }
    if (!merge) {
      // What was skipped leaves no text; text before it joins text after it.
      m_textBuffer.truncate(m_textStart);
      if (expanded != END_OF_INPUT)
        m_textBuffer.append(expanded);
      else if (m_textStart < 1)
        continue;
    }
    m_eventType = TEXT;
    int ahead = peekToken();
    if (ahead < TOKEN_TEXT || ahead == TOKEN_END_OF_INPUT ||
        (ahead == TOKEN_PI && m_features[FEATURE_REPORT_PI])) {
      m_textStart = 0;
      return m_eventType;
    }
  }
}

namespace {

// The one character that a value read as input would add to the text, when that is plain: a
// printable ASCII character that no markup rule looks at, or the character references that
// lt and amp are kept as. Anything else is read as input.
UChar32 plainValueChar(const UnicodeString& value) {
  if (value.length() == 1) {
    const char16_t c = value.charAt(0);
    if (c >= 0x20 && c < 0x7F && c != u'<' && c != u'&' && c != u']') return c;
    return ZQXmlParserImpl::END_OF_INPUT;
  }
  if (value == u"&#38;") return u'&';
  if (value == u"&#60;") return u'<';
  return ZQXmlParserImpl::END_OF_INPUT;
}

}  // namespace

UChar32 ZQXmlParserImpl::expandEntity() {
  UnicodeString value = lookupEntity(m_entityName, false);
  if (value.isBogus()) {
    throwError(515, m_entityName.toString(), UnicodeString());
    value = UnicodeString();
  }
  if (m_entities.externalGeneralEntities.count(m_entityName) == 0) {
    // takePlainReference follows these steps for the values it takes.
    if (value.isEmpty() || !guardExpansion(m_entityName, value.length())) return END_OF_INPUT;
    // A plain character inside an element goes straight into the text: read as input it
    // would add just that, and leave the position and the guard's marks as they are now.
    if (getDepth() > 0) {
      const UChar32 c = plainValueChar(value);
      if (c != END_OF_INPUT) return c;
    }
    // Scanned as if it stood in the input, so markup inside entities works.
    unreadText(value);
    return END_OF_INPUT;
  }
  if (m_features[FEATURE_FORBID_EXTERNAL_ENTITIES]) {
    UnicodeString text(u"<!ENTITY ");
    text.append(m_entityName.toString()).append(u" ... \"").append(value).append(u"\"");
    throwError(516, text, UnicodeString());
    return END_OF_INPUT;
  }
  if (guardExpansion(m_entityName, -1)) pushStream(value, ZQName(), UnicodeString());
  return END_OF_INPUT;
}

bool ZQXmlParserImpl::takePlainReference(const unsigned char* begin, const unsigned char* end) {
  // "&", an ASCII name and ";", all in the window: the one form whose reading can neither
  // fail nor differ between syntaxes.
  const unsigned char* name = begin + 1;
  if (name >= end || !(xmlscan::kByteClasses.bits[*name] & xmlscan::BYTE_NAME_START)) return false;
  const size_t length = xmlscan::byteRun(name, end, xmlscan::BYTE_NAME);
  if (name + length >= end || name[length] != ';') return false;
  const ZQName entity = internBytes(name, length);
  if (entity.isEmpty()) return false;
  const auto found = m_entities.generalEntities.find(entity);
  if (found == m_entities.generalEntities.end() ||
      m_entities.externalGeneralEntities.count(entity) != 0)
    return false;
  const UChar32 c = found->second.isEmpty() ? END_OF_INPUT : plainValueChar(found->second);
  if (c == END_OF_INPUT) return false;
  // Taken first, so that the guard marks the position after the reference as it would.
  takeBulk(begin, length + 2);
  if (guardExpansion(entity, found->second.length())) m_textBuffer.append(c);
  return true;
}

int ZQXmlParserImpl::peekToken() {
  if (m_pendingToken == TOKEN_STOP ||
      (m_pendingToken >= TOKEN_START_TAG && m_pendingToken <= TOKEN_END_OF_INPUT))
    return m_pendingToken;
  int result;
  // "<" and a plain character after it, straight from the stream buffer: the two reads and
  // the one put back below, in one step.
  const unsigned char* begin;
  const unsigned char* end;
  if (bulkBytes(begin, end) && m_parserType != ZQN_text &&
      (xmlscan::kByteClasses.bits[*begin] & xmlscan::BYTE_TEXT)) {
    // A plain text byte is left where it is for parseText to take with its run, where
    // reading it here would put it back as a character of its own.
    m_pendingToken = TOKEN_TEXT;
    return m_pendingToken;
  }
  if (bulkBytes(begin, end) && end - begin >= 2 && *begin == '<' && m_parserType != ZQN_text) {
    const unsigned char d = begin[1];
    if (d == '/' || d == '!' || d == '?') {
      takeBulk(begin, 2);
      m_pendingToken = d == '/' ? TOKEN_END_TAG : d == '!' ? TOKEN_DECLARATION : TOKEN_PI;
      return m_pendingToken;
    }
    if (xmlscan::kByteClasses.bits[d] & xmlscan::BYTE_NAME_START) {
      takeBulk(begin, 2);
      m_pushedChar = d;
      m_pendingToken = TOKEN_START_TAG;
      return m_pendingToken;
    }
  }
  UChar32 c = readChar();
  if (m_parserType == ZQN_text && c == kEnd && !m_inputStack.empty()) {
    // An included text that is empty gives way to the outer input at once.
    popStream();
    return peekToken();
  }
  if (m_parserType == ZQN_text && c != kEnd) {
    unreadChar(c);
    result = TOKEN_TEXT;
  } else if (c == '&') {
    result = TOKEN_REFERENCE;
  } else if (c == '<') {
    UChar32 d = readChar();
    if (d == '!') {
      result = TOKEN_DECLARATION;
    } else if (d == '/') {
      result = TOKEN_END_TAG;
    } else if (d == '?') {
      result = TOKEN_PI;
    } else {
      if (d != kEnd) unreadChar(d);
      // In HTML a "<" that starts no name is text.
      if (!ZQChar::isNCNameStartChar(d) && isHTMLSyntax()) {
        unreadChar('<');
        result = TOKEN_TEXT;
      } else {
        result = TOKEN_START_TAG;
      }
    }
  } else if (c == kEnd) {
    // A stream still good gave a real U+FFFF.
    if (m_stream && !(m_stream->rdstate() & (std::ios::failbit | std::ios::badbit)))
      throwError(180, UnicodeString(), UnicodeString());
    result = TOKEN_END_OF_INPUT;
  } else {
    unreadChar(c);
    result = TOKEN_TEXT;
  }
  m_pendingToken = result;
  return result;
}

// ---- Tags ----

bool ZQXmlParserImpl::skipSpaces() {
  bool any = false;
  const unsigned char* begin;
  const unsigned char* end;
  if (bulkBytes(begin, end)) {
    size_t run = xmlscan::byteRun(begin, end, xmlscan::BYTE_SPACE);
    if (run > 0) {
      takeBulk(begin, run);
      any = true;
    }
  }
  UChar32 c;
  while (isSpace(c = readChar())) any = true;
  if (c != kEnd) unreadChar(c);
  return any;
}

void ZQXmlParserImpl::parseStartTag() {
  m_eventType = START_TAG;
  m_pendingToken = TOKEN_NONE;
  if (getDepth() == m_baseDepth && m_topLevelSeen)
    throwError(130, UnicodeString(), UnicodeString());
  if (isSpace(peekChar())) throwError(141, u"<", UnicodeString());
  ZQName prefix, local;
  if (!readPlainQName(prefix, local) && !readQName(prefix, local))
    throwError(132, UnicodeString(), UnicodeString());
  if (!m_rootSeen) m_rootName = local;
  m_topLevelSeen = true;

  m_namespaces->pushContext();
  // Only buffers of the heap are worth keeping: a short value lives inside its string.
  static const int32_t inlineCapacity = UnicodeString().getCapacity();
  for (ZQXmlAttribute& old : m_attributes)
    if (old.value.getCapacity() > inlineCapacity) m_spareValues.push_back(std::move(old.value));
  m_attributes.clear();
  const size_t depth = static_cast<size_t>(getDepth());
  if (m_defaultNamespaces.size() < depth) m_defaultNamespaces.resize(depth);
  m_defaultNamespaces[depth - 1].valid = false;

  BulkWindow window;
  for (;;) {
    // Built in place; a value too long for the string itself takes the buffer of an earlier
    // tag's value.
    ZQXmlAttribute& attribute = m_attributes.emplace_back();
    if (!readPlainAttribute(attribute, window)) {
      // The common end of a tag: what skipSpaces and peekChar would find, seen in the window.
      if (window.atTagEnd) {
        m_attributes.pop_back();
        break;
      }
      bool spaced = skipSpaces();
      UChar32 c = peekChar();
      // Without whitespace the loop ends, so that a missing separator is reported below.
      if (c == '>' || c == '/' || c == kEnd || (!spaced && !isHTMLSyntax())) {
        m_attributes.pop_back();
        break;
      }
      if (!m_spareValues.empty()) {
        attribute.value = std::move(m_spareValues.back());
        m_spareValues.pop_back();
        attribute.value.remove();
      }
      readAttributeSlowly(attribute);
    }
    if (attribute.prefix == ZQN_xmlns) {
      if (!attribute.localName.isEmpty())
        m_namespaces->declare(attribute.localName, ZQName(attribute.value));
      attribute.namespaceUri = ZQN_NS_XMLNS;
    } else if (attribute.prefix.isEmpty() && attribute.localName == ZQN_xmlns) {
      // Interned, so that an empty value makes the default namespace 0.
      m_namespaces->declare(ZQName(), ZQName(attribute.value));
      attribute.namespaceUri = ZQN_NS_XMLNS;
    }
  }

  UChar32 c = readChar();
  if (c == '/') {
    parseEmptyTagTail();
  } else if (c != '>') {
    if (ZQChar::isNCNameStartChar(c))
      throwError(139, UnicodeString(), UnicodeString());
    else
      throwError(140, charText(c), UnicodeString());
  }

  if (depth == 1 && (local == ZQN_svg || local == ZQN_chart)) {
    if (prefix.isEmpty() && m_namespaces->lookup(ZQName()).isEmpty())
      m_namespaces->declare(ZQName(), local == ZQN_svg ? ZQN_NS_SVG : ZQN_NS_ZQ_CHARTML);
    if (m_namespaces->lookup(ZQN_xlink).isEmpty()) m_namespaces->declare(ZQN_xlink, ZQN_NS_XLINK);
  }
  if (!m_rootSeen) {
    m_rootNamespace = m_namespaces->lookup(prefix);
    if (isHTMLSyntax()) {
      addHtmlEntities();
      if (m_rootNamespace.isEmpty()) m_namespaces->declare(ZQName(), ZQN_NS_XHTML);
    } else if (isXHTMLSyntax()) {
      addXhtmlEntities();
    }
  }
  ZQName ns = lookupAtStartTag(prefix, depth);
  if (ns.isEmpty() && !prefix.isEmpty() && !isHTMLSyntax())
    throwError(135, prefix.toString(), UnicodeString());

  ZQNamespaceManager::Entry& top = m_namespaces->top();
  top.namespaceUri = ns;
  top.prefix = prefix;
  top.localName = local;
  // What lookup of the empty prefix now gives inside this element, for its children.
  DefaultNamespace& inside = m_defaultNamespaces[depth - 1];
  inside.ns = prefix.isEmpty() ? ns : lookupAtStartTag(ZQName(), depth);
  inside.valid = true;

  if (m_rootSeen) {
    if (depth >= 2 && local == ZQN_math && ns == ZQN_NS_MATHML) enterMathScope();
  } else {
    m_rootSeen = true;
    applyRootEntityRules();
    if (isHTMLSyntax()) applyHtmlDefaultCharset();
  }

  // After all declarations of the tag, so that two prefixes of one namespace collide.
  for (size_t i = 0; i < m_attributes.size(); ++i) {
    ZQXmlAttribute& attribute = m_attributes[i];
    if (!attribute.prefix.isEmpty() && attribute.namespaceUri.isEmpty()) {
      attribute.namespaceUri = m_namespaces->lookup(attribute.prefix);
      if (attribute.namespaceUri.isEmpty()) {
        if (m_features[FEATURE_ALLOW_UNDECLARED_PREFIX] || isHTMLSyntax())
          attribute.namespaceUri = attribute.prefix;
        else
          throwError(135, attribute.prefix.toString(), UnicodeString());
      }
    }
    for (size_t j = 0; j < i; ++j) {
      const ZQXmlAttribute& earlier = m_attributes[j];
      if (earlier.localName == attribute.localName &&
          earlier.namespaceUri == attribute.namespaceUri) {
        throwError(136, qualifiedName(attribute.prefix, attribute.localName), UnicodeString());
        break;
      }
    }
  }
}

// One attribute character by character, errors and HTML forms included; the whitespace
// before it is read.
void ZQXmlParserImpl::readAttributeSlowly(ZQXmlAttribute& attribute) {
  UChar32 c;
  ZQName name;
  // An ASCII name reads as readName and the ":" test would read it.
  if (readPlainQName(attribute.prefix, attribute.localName)) {
  } else if ((name = readName()).isEmpty()) {
    UnicodeString bad = readLiteral(4);
    throwError(189, bad, UnicodeString());
  } else {
    c = readChar();
    if (c == ':') {
      attribute.prefix = name;
      attribute.localName = readName();
      if (attribute.localName.isEmpty())
        throwError(137, UnicodeString(name.toString()).append(u':'), UnicodeString());
    } else {
      if (c != kEnd) unreadChar(c);
      attribute.localName = name;
    }
  }
  skipSpaces();
  c = readChar();
  if (c == '=') {
    skipSpaces();
    readLiteral(1, attribute.value);
  } else {
    if (c != kEnd) unreadChar(c);
    // HTML takes an attribute without "=" as empty.
    if (!isHTMLSyntax()) {
      throwError(138, UnicodeString(), UnicodeString());
      skipSpaces();
      readLiteral(1, attribute.value);
    }
  }
}

ZQName ZQXmlParserImpl::lookupAtStartTag(ZQName prefix, size_t depth) {
  // Only the context of this tag can have changed since the parent's start tag; the parent's
  // answer stands for everything above it.
  if (!prefix.isEmpty() || depth < 2 || depth > m_defaultNamespaces.size() ||
      !m_defaultNamespaces[depth - 2].valid)
    return m_namespaces->lookup(prefix);
  const ZQNamespaceManager::Entry& top = m_namespaces->top();
  if (top.prefix.isEmpty() && !top.namespaceUri.isEmpty()) return top.namespaceUri;
  ZQName ns;
  if (top.map && top.map->find(ZQName(), ns)) return ns;
  return m_defaultNamespaces[depth - 2].ns;
}

// After "/" of an empty-element tag: on to ">", reporting only the first stray character
// of each kind.
void ZQXmlParserImpl::parseEmptyTagTail() {
  bool spaceSeen = false;
  bool otherSeen = false;
  for (;;) {
    UChar32 c = readChar();
    if (c == '>') break;
    if (c == kEnd) {
      throwError(146, UnicodeString(), UnicodeString());
      break;
    }
    if (isSpace(c)) {
      if (spaceSeen) continue;
      spaceSeen = true;
      throwError(isHTMLSyntax() || isXHTMLSyntax() ? 898 : 770, u"/", UnicodeString());
    } else {
      if (otherSeen) continue;
      otherSeen = true;
      throwError(isHTMLSyntax() || isXHTMLSyntax() ? 897 : 140, charText(c), UnicodeString());
    }
  }
  m_pendingToken = TOKEN_EMPTY_ELEMENT;
}

void ZQXmlParserImpl::parseEndTag() {
  m_eventType = END_TAG;
  m_pendingToken = TOKEN_NONE;
  // A plain name's first byte is seen where it lies; anything else is read to be looked at,
  // so that what is reported about it stands where it always did.
  const unsigned char* begin;
  const unsigned char* end;
  if (!(bulkBytes(begin, end) && (xmlscan::kByteClasses.bits[*begin] & xmlscan::BYTE_NAME_START)) &&
      isSpace(peekChar()))
    throwError(141, u"</", UnicodeString());
  if (readPlainEndTag()) {
    const ZQNamespaceManager::Entry& closing = m_namespaces->top();
    if (getDepth() >= 2 && closing.localName == ZQN_math && closing.namespaceUri == ZQN_NS_MATHML)
      leaveMathScope();
    return;
  }
  ZQName prefix, local;
  if (!readQName(prefix, local)) throwError(133, UnicodeString(), UnicodeString());
  const ZQNamespaceManager::Entry& top = m_namespaces->top();
  if (prefix != top.prefix || local != top.localName) {
    // Compared by names, not namespaces. Closes the open element all the same.
    throwError(isHTMLSyntax() ? 513 : 134, qualifiedName(prefix, local),
               qualifiedName(top.prefix, top.localName));
  }
  const ZQNamespaceManager::Entry& closing = m_namespaces->top();
  if (getDepth() >= 2 && closing.localName == ZQN_math && closing.namespaceUri == ZQN_NS_MATHML)
    leaveMathScope();
  skipSpaces();
  UChar32 c = readChar();
  if (c != '>') throwError(140, charText(c), UnicodeString());
}

// ---- Character data ----

void ZQXmlParserImpl::parseText() {
  m_eventType = TEXT;
  m_pendingToken = TOKEN_NONE;
  RunAppender text(m_textBuffer);
  if (m_parserType == ZQN_text) {
    // An input read as text: no markup at all.
    for (UChar32 c = readChar(); c != kEnd; c = readChar()) text.append(c);
    text.flush();
    popStream();
    return;
  }
  bool reported = false;
  // The depth stays put while text is read; asked once, not per character.
  const int depth = getDepth();
  const bool topLevel = depth == 0;
  for (;;) {
    // Inside an element plain ASCII text needs no look: it goes in by runs straight from
    // the stream buffer.
    const unsigned char* begin;
    const unsigned char* end;
    if (!topLevel && bulkBytes(begin, end)) {
      text.flush();
      xmlscan::RunLines lines;
      const size_t run = xmlscan::appendTextRun(m_textBuffer, begin, end, lines);
      if (run > 0) {
        positionAfter(begin, run, lines);
        bumpBulk(run);
        if (begin + run == end) continue;
      }
      // A reference, or a tag after some text, ends the text where it stands: left in the
      // stream buffer, it is read there by the next look at the input.
      const unsigned char stop = begin[run];
      if (stop == '&' && m_mergingText && depth != m_baseDepth &&
          takePlainReference(begin + run, end))
        continue;
      if (stop == '&' || (stop == '<' && m_textBuffer.length() > m_textStart)) break;
    }
    UChar32 c = readChar();
    if (c == kEnd) break;
    if (c == '&') {
      unreadChar(c);
      break;
    }
    if (c == '<') {
      if (m_textBuffer.length() + text.pending() > m_textStart) {
        unreadChar(c);
        break;
      }
      // First of the token: peekToken found it starts no tag.
      text.append(c);
      continue;
    }
    if (c == ']') {
      UChar32 d = readChar();
      if (d != ']') {
        if (d != kEnd) unreadChar(d);
        text.append(c);
        continue;
      }
      UChar32 e = readChar();
      if (e == '>') throwError(144, UnicodeString(), UnicodeString());
      if (e != kEnd) unreadChar(e);
      unreadChar(d);
      text.append(c);
      continue;
    }
    if (topLevel && !isSpace(c) && !(isHTMLSyntax() && !m_rootSeen)) {
      throwError(142, codePointText(c), UnicodeString());
      reported = true;
    }
    text.append(c);
  }
  text.flush();
  if (depth == m_baseDepth) {
    if (isAllSpace(m_textBuffer, m_textStart)) {
      m_eventType = IGNORABLE_WHITESPACE;
    } else if (!reported) {
      int i = m_textStart;
      while (i < m_textBuffer.length() && isSpace(m_textBuffer.charAt(i))) ++i;
      throwError(142, codePointText(m_textBuffer.char32At(i)), UnicodeString());
    }
  }
}

void ZQXmlParserImpl::parseCdata() {
  m_eventType = CDSECT;
  RunAppender text(m_textBuffer);
  int brackets = 0;  // of this section only: the buffer may end in text merged before it
  for (;;) {
    UChar32 c = readChar();
    if (c == kEnd) {
      throwError(145, UnicodeString(), UnicodeString());
      return;
    }
    if (c == '>' && brackets >= 2) {
      text.flush();
      m_textBuffer.truncate(m_textBuffer.length() - 2);
      return;
    }
    brackets = c == ']' ? brackets + 1 : 0;
    text.append(c);
  }
}

void ZQXmlParserImpl::parseComment() {
  m_eventType = COMMENT;
  UChar32 c = readChar();
  if (c == '>') throwError(897, charText(c), UnicodeString());
  for (;;) {
    if (c != '-') {
      if (c == kEnd) {
        throwError(146, UnicodeString(), UnicodeString());
        return;
      }
      m_textBuffer.append(c);
      c = readChar();
      continue;
    }
    UChar32 d = readChar();
    if (d == kEnd) {
      throwError(146, UnicodeString(), UnicodeString());
      return;
    }
    if (d != '-') {
      unreadChar(d);
      m_textBuffer.append(c);
      c = readChar();
      continue;
    }
    for (;;) {  // "--" seen
      UChar32 e = readChar();
      if (e == '>') return;
      if (e == kEnd) {
        throwError(146, UnicodeString(), UnicodeString());
        return;
      }
      bool htmlish = isXHTMLSyntax() || isHTMLSyntax();
      if (e == '-' && htmlish) {
        // Extra dashes before "-->" pass in HTML and XHTML.
        m_textBuffer.append(e);
        continue;
      }
      throwError(htmlish ? 899 : 771, UnicodeString(), UnicodeString());
      m_textBuffer.append(u"--").append(e);
      break;
    }
    c = readChar();
  }
}

void ZQXmlParserImpl::parsePI() {
  m_pendingToken = TOKEN_NONE;
  ZQName name = readName();
  if (name == ZQN_xml) {
    parseXmlDecl();
    syntaxInputsChanged();
    m_markupDropped = true;  // no event of its own
    return;
  }
  m_eventType = PROCESSING_INSTRUCTION;
  const UnicodeString& nameText = name.toString();
  if (nameText.caseCompare(u"xml", U_FOLD_CASE_DEFAULT) == 0) throwError(171, nameText, {});
  m_target = name;
  UChar32 c = readChar();
  if (!isSpace(c)) {
    if (c == '?') {
      UChar32 d = readChar();
      if (d == '>') {
        m_cachedText = UnicodeString();
        return;
      }
      if (d != kEnd) unreadChar(d);
    }
    if (c != kEnd) unreadChar(c);
    throwError(172, nameText, UnicodeString());
  }
  UnicodeString content;
  for (;;) {
    c = readChar();
    if (c == kEnd) {
      throwError(173, UnicodeString(), UnicodeString());
      break;
    }
    if (c == '>' && content.endsWith(u"?")) {
      content.truncate(content.length() - 1);
      break;
    }
    content.append(c);
  }
  m_cachedText = content.trim();
}

void ZQXmlParserImpl::parseMarkupDecl() {
  m_pendingToken = TOKEN_NONE;
  UChar32 c = readChar();
  if (c == '[') {
    if (readName() == ZQN_CDATA) {
      UChar32 d = readChar();
      if (d == '[') {
        parseCdata();
        return;
      }
      if (d != kEnd) unreadChar(d);
      throwError(168, UnicodeString(), UnicodeString());
    }
    // Any other section in content is dropped, up to "]>".
    UChar32 last = 0;
    for (;;) {
      c = readChar();
      if (c == kEnd) {
        throwError(145, UnicodeString(), UnicodeString());
        break;
      }
      if (c == '>' && last == ']') break;
      last = c;
    }
    m_markupDropped = true;
    return;
  }
  if (c == '-') {
    UChar32 d = readChar();
    if (d != '-') {
      if (d != kEnd) unreadChar(d);
      throwError(169, UnicodeString(), UnicodeString());
    }
    parseComment();
    return;
  }
  if (c != kEnd) unreadChar(c);
  ZQName name = readName();
  if (name == ZQN_DOCTYPE) {
    // A DOCTYPE may declare namespaces in the open context.
    m_defaultNamespaces.clear();
    parseDocDecl();
    syntaxInputsChanged();
    return;
  }
  UnicodeString upper(name.toString());
  upper.toUpper(icu::Locale::getRoot());
  if (upper == u"DOCTYPE") {
    // "<!doctype html>" in any case is taken under every syntax.
    UnicodeString ahead;
    UChar32 s;
    while (isSpace(s = readChar())) ahead.append(s);
    if (s != kEnd) unreadChar(s);
    if (!ahead.isEmpty()) {
      ZQName root = readName();
      ahead.append(root.toString());
      UnicodeString lower(root.toString());
      lower.toLower(icu::Locale::getRoot());
      if (lower == u"html") {
        unreadText(ahead);
        m_defaultNamespaces.clear();
        parseDocDecl();
        syntaxInputsChanged();
        return;
      }
    }
    unreadText(ahead);
  }
  throwError(170, name.toString(), UnicodeString());
  m_markupDropped = true;
}

// ---- Rewind ----

void ZQXmlParserImpl::rewind() {
  while (!m_inputStack.empty()) popStream();
  std::istream* base = m_baseStream;
  if (!base) return;
  bool owns = m_ownsStream;
  UnicodeString encodingName = m_encodingName;
  int encodingKind = m_encodingKind;
  UnicodeString baseUri = m_baseUri;
  UnicodeString inputUri = m_inputUri;
  // Closed without deleting the stream that setInput gave; a converter over it goes.
  if (m_stream != m_baseStream) delete m_stream;
  m_stream = m_baseStream = nullptr;
  m_ownsStream = false;
  base->clear();
  base->seekg(0);
  resetParser();
  m_stream = m_baseStream = base;
  m_ownsStream = owns;
  m_baseUri = baseUri;
  m_inputUri = inputUri;
  m_encodingName = encodingName;
  m_encodingKind = encodingKind;
  checkStream();
  setEncoding(encodingName);
}

}  // namespace ZQCommonNS
