// Names, literals and references of the scanner.
#include <sstream>
#include <string>

#include "common/ZQChar.h"
#include "common/ZQString.h"
#include "xml/ZQXmlParserImpl.h"
#include "xml/ZQXmlScanText.h"

namespace ZQCommonNS {

namespace {

using xmlscan::charText;
using xmlscan::isSpace;

constexpr UChar32 kEnd = ZQXmlParserImpl::END_OF_INPUT;

int digitValue(UChar32 c, bool hex) {
  if (c >= '0' && c <= '9') return c - '0';
  if (!hex) return -1;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::string utf16leBytes(const UnicodeString& text) {
  const int length = text.length();
  const char16_t* units = text.getBuffer();
  std::string bytes(static_cast<size_t>(length) * 2, '\0');
  for (int i = 0; i < length; ++i) {
    bytes[2 * static_cast<size_t>(i)] = static_cast<char>(units[i] & 0xFF);
    bytes[2 * static_cast<size_t>(i) + 1] = static_cast<char>(units[i] >> 8);
  }
  return bytes;
}

}  // namespace

ZQName ZQXmlParserImpl::readName() {
  UChar32 c = readChar();
  if (!ZQChar::isNCNameStartChar(c)) {
    if (c != kEnd) unreadChar(c);
    return ZQName();
  }
  char16_t buffer[kNameCacheKeyMax];
  int length = 0;
  UnicodeString longText;  // only for names too long for the cache
  do {
    // The rest of an ASCII name is taken by a run from the stream buffer; the character
    // that ends it is read below, as one at a time would.
    const unsigned char* begin;
    const unsigned char* end;
    if (length >= 0 && bulkBytes(begin, end)) {
      size_t run = xmlscan::byteRun(begin, end, xmlscan::BYTE_NAME);
      if (run > 0 && c <= 0xFFFF && static_cast<size_t>(length) + 1 + run + 2 <= kNameCacheKeyMax) {
        buffer[length++] = static_cast<char16_t>(c);
        for (size_t i = 0; i < run; ++i) buffer[length++] = begin[i];
        takeBulk(begin, run);
        c = readChar();
        continue;
      }
    }
    if (length >= 0 && length + 2 <= kNameCacheKeyMax) {
      if (c <= 0xFFFF) {
        buffer[length++] = static_cast<char16_t>(c);
      } else {
        buffer[length++] = U16_LEAD(c);
        buffer[length++] = U16_TRAIL(c);
      }
    } else {
      if (length >= 0) {
        longText.setTo(buffer, length);
        length = -1;
      }
      longText.append(c);
    }
    c = readChar();
  } while (ZQChar::isNCNameChar(c));
  if (c != kEnd) unreadChar(c);
  if (length < 0) return ZQName(ZQNameTable::getSharedNameEnum(longText));
  return internName(buffer, length);
}

namespace {

// The cache's key of a name: its length and the characters at both ends, which tell apart the
// names a document uses (a run of names such as "item1", "item2" differs in its last ones)
// without a hash over every character. A collision costs only a look-up in the shared table.
template <class Char>
uint32_t nameCacheKey(const Char* text, size_t length) {
  uint32_t key = static_cast<uint32_t>(length) * 0x9E3779B1u;
  if (length > 0) {
    key ^= static_cast<uint32_t>(text[0]) * 0x85EBCA6Bu;
    key ^= static_cast<uint32_t>(text[length - 1]) * 0xC2B2AE35u;
  }
  if (length > 2) {
    key ^= static_cast<uint32_t>(text[1]) * 0x27D4EB2Fu;
    key ^= static_cast<uint32_t>(text[length - 2]) * 0x165667B1u;
  }
  return key ^ (key >> 15) ^ (key >> 23);
}

}  // namespace

ZQName ZQXmlParserImpl::internName(const char16_t* text, int length) {
  if (!m_nameCache) m_nameCache.reset(new NameCacheSlot[kNameCacheSlots]);
  NameCacheSlot& slot =
      m_nameCache[nameCacheKey(text, static_cast<size_t>(length)) & (kNameCacheSlots - 1)];
  if (slot.length == length &&
      std::char_traits<char16_t>::compare(slot.text, text, static_cast<size_t>(length)) == 0)
    return slot.name;
  ZQName name(ZQNameTable::getSharedNameEnum(UnicodeString(text, length)));
  if (length <= kNameCacheKeyMax) {
    std::char_traits<char16_t>::copy(slot.text, text, static_cast<size_t>(length));
    slot.length = length;
    slot.name = name;
  }
  return name;
}

ZQName ZQXmlParserImpl::internBytes(const unsigned char* bytes, size_t length) {
  if (length > static_cast<size_t>(kNameCacheKeyMax)) return ZQName();
  if (m_nameCache) {
    // Compared with the cached text as they are, without widening them first.
    const NameCacheSlot& slot = m_nameCache[nameCacheKey(bytes, length) & (kNameCacheSlots - 1)];
    if (slot.length == static_cast<int>(length)) {
      size_t i = 0;
      while (i < length && slot.text[i] == bytes[i]) ++i;
      if (i == length) return slot.name;
    }
  }
  char16_t text[kNameCacheKeyMax];
  for (size_t i = 0; i < length; ++i) text[i] = bytes[i];
  return internName(text, static_cast<int>(length));
}

bool ZQXmlParserImpl::scanPlainQName(const unsigned char*& p, const unsigned char* end,
                                     ZQName& prefix, ZQName& local) {
  using xmlscan::BYTE_NAME;
  using xmlscan::BYTE_NAME_START;
  using xmlscan::byteRun;
  using xmlscan::kByteClasses;
  char16_t text[kNameCacheKeyMax];
  size_t length = 0;
  const UChar32 first = m_pushedChar;
  if (first != END_OF_INPUT) {
    if (first >= 0x80 || !(kByteClasses.bits[first] & BYTE_NAME_START)) return false;
    text[length++] = static_cast<char16_t>(first);
  } else if (p == end || !(kByteClasses.bits[*p] & BYTE_NAME_START)) {
    return false;
  }
  size_t run = byteRun(p, end, BYTE_NAME);
  if (length + run > static_cast<size_t>(kNameCacheKeyMax)) return false;
  xmlscan::widenBytes(text + length, p, run);
  length += run;
  p += run;
  // A name going on in non-ASCII characters is left to readName.
  if (p == end || *p >= 0x80) return false;
  ZQName name = internName(text, static_cast<int>(length));
  if (*p != ':') {
    prefix = ZQName();
    local = name;
    return true;
  }
  const unsigned char* second = ++p;
  if (p == end || !(kByteClasses.bits[*p] & BYTE_NAME_START)) return false;
  p += byteRun(p, end, BYTE_NAME);
  if (p == end || *p >= 0x80) return false;
  local = internBytes(second, static_cast<size_t>(p - second));
  if (local.isEmpty()) return false;
  prefix = name;
  return true;
}

bool ZQXmlParserImpl::readPlainQName(ZQName& prefix, ZQName& local) {
  const unsigned char* begin;
  const unsigned char* end;
  if (!bulkWindow(begin, end)) return false;
  const unsigned char* p = begin;
  ZQName first, second;
  if (!scanPlainQName(p, end, first, second)) return false;
  // The character after the name is taken into the slot as readChar would give it: only a
  // plain one, not CR or a character the test would report.
  const unsigned char next = *p;
  if (!(xmlscan::kByteClasses.bits[next] & (xmlscan::BYTE_TEXT | xmlscan::BYTE_LITERAL)) &&
      next != ']' && next != '<' && next != '&')
    return false;
  ++p;
  prefix = first;
  local = second;
  // A name holds no line feed: only the character after it may be one.
  const size_t taken = static_cast<size_t>(p - begin);
  if (next == '\n') {
    takeBulk(begin, taken);
  } else {
    m_columnNumber += static_cast<int>(taken);
    bumpBulk(taken);
  }
  m_pushedChar = next;
  return true;
}

bool ZQXmlParserImpl::readPlainEndTag() {
  const unsigned char* begin;
  const unsigned char* end;
  if (!bulkWindow(begin, end)) return false;
  const unsigned char* p = begin;
  ZQName prefix, local;
  if (!scanPlainQName(p, end, prefix, local)) return false;
  p += xmlscan::byteRun(p, end, xmlscan::BYTE_SPACE);
  if (p == end || *p != '>') return false;
  const ZQNamespaceManager::Entry& top = m_namespaces->top();
  if (prefix != top.prefix || local != top.localName) return false;
  ++p;
  takeBulk(begin, static_cast<size_t>(p - begin));
  m_pushedChar = END_OF_INPUT;
  return true;
}

bool ZQXmlParserImpl::readPlainAttribute(ZQXmlAttribute& attribute, BulkWindow& window) {
  using xmlscan::byteRun;
  // Whatever the outcome, the general path may read next: the caller looks again after it.
  BulkWindow current = window;
  window.buf = nullptr;
  window.atTagEnd = false;
  UChar32 pushed = m_pushedChar;
  // A space that a name left in the slot counts as the separator; it has been counted.
  if (pushed != END_OF_INPUT && pushed != ' ' && pushed != '\n' && pushed != '\t') return false;
  if (!current.buf) {
    if (!bulkWindow(current.next, current.end)) return false;
    current.buf = m_stream->rdbuf();
  }
  const unsigned char* const begin = current.next;
  const unsigned char* const end = current.end;
  std::streambuf* const buf = current.buf;
  const unsigned char* p = begin;
  // Only the whitespace runs may hold line feeds: names and plain values hold none.
  bool feeds = false;
  auto spaces = [&p, end, &feeds]() {
    const unsigned char* from = p;
    p += byteRun(p, end, xmlscan::BYTE_SPACE);
    for (const unsigned char* q = from; q < p; ++q) feeds |= *q == '\n';
  };
  spaces();
  if (pushed == END_OF_INPUT && p == begin) {
    window.atTagEnd = p != end && (*p == '/' || *p == '>');
    return false;
  }
  auto name = [&p, end](const unsigned char*& start, size_t& length) {
    if (p == end || !(xmlscan::kByteClasses.bits[*p] & xmlscan::BYTE_NAME_START)) return false;
    start = p;
    p += byteRun(p, end, xmlscan::BYTE_NAME);
    length = static_cast<size_t>(p - start);
    // A name going on in non-ASCII characters is left to readName.
    return p < end && *p < 0x80;
  };
  const unsigned char* first;
  size_t firstLength;
  if (!name(first, firstLength)) return false;
  const unsigned char* second = nullptr;
  size_t secondLength = 0;
  if (*p == ':') {
    ++p;
    if (!name(second, secondLength)) return false;
  }
  spaces();
  if (p == end || *p != '=') return false;
  ++p;
  spaces();
  if (p == end || (*p != '"' && *p != '\'')) return false;
  const unsigned char quote = *p++;
  const unsigned char* value = p;
  p += xmlscan::literalRun(p, end);
  if (p == end || *p != quote) return false;
  const size_t valueLength = static_cast<size_t>(p - value);
  ++p;
  ZQName firstName = internBytes(first, firstLength);
  if (firstName.isEmpty()) return false;
  if (second) {
    ZQName local = internBytes(second, secondLength);
    if (local.isEmpty()) return false;
    attribute.prefix = firstName;
    attribute.localName = local;
  } else {
    attribute.localName = firstName;
  }
  if (valueLength > static_cast<size_t>(attribute.value.getCapacity()) && !m_spareValues.empty()) {
    attribute.value = std::move(m_spareValues.back());
    m_spareValues.pop_back();
  }
  xmlscan::assignBytes(attribute.value, value, valueLength);
  m_pushedChar = END_OF_INPUT;
  const size_t taken = static_cast<size_t>(p - begin);
  if (feeds)
    countBulk(begin, taken);
  else
    m_columnNumber += static_cast<int>(taken);
  // A run inside the get area: well below what gbump takes.
  xmlscan::StreamBufAccess::bump(buf, static_cast<int>(taken));
  window.buf = buf;
  window.next = p;
  window.end = end;
  return true;
}

bool ZQXmlParserImpl::readQName(ZQName& prefix, ZQName& local) {
  ZQName name = readName();
  if (name.isEmpty()) {
    prefix = local = ZQName();
    return false;
  }
  UChar32 c = readChar();
  if (c == ':') {
    prefix = name;
    local = readName();
    return !local.isEmpty();
  }
  if (c != kEnd) unreadChar(c);
  prefix = ZQName();
  local = name;
  return true;
}

UnicodeString ZQXmlParserImpl::readLiteral(int mode) {
  UnicodeString value;
  readLiteral(mode, value);
  return value;
}

void ZQXmlParserImpl::readLiteral(int mode, UnicodeString& value) {
  value.remove();
  UChar32 quote = readChar();
  bool quoted = quote == '"' || quote == '\'';
  if (!quoted) {
    if (quote != kEnd) unreadChar(quote);
    if (mode == 0 || mode == 2 || (mode == 1 && !isHTMLSyntax()))
      throwError(174, UnicodeString(), UnicodeString());
    quote = 32;
  }
  int line = m_lineNumber;
  int column = m_columnNumber;

  // Read straight into the value; only a literal that needs the second pass is copied.
  UnicodeString raw;
  char16_t run[128];
  int runLength = 0;
  auto flush = [&]() {
    if (runLength > 0) value.append(run, 0, runLength);
    runLength = 0;
  };
  bool endedByEnd = false;
  bool plain = true;  // nothing that the normalisation pass would change or report
  for (;;) {
    // Quoted content that the normalisation pass would leave as it is goes in by runs.
    const unsigned char* begin;
    const unsigned char* end;
    if (quoted && bulkBytes(begin, end)) {
      size_t bytes = xmlscan::literalRun(begin, end);
      if (bytes > 0) {
        flush();
        xmlscan::appendBytes(value, begin, bytes);
        takeBulk(begin, bytes);
        if (begin + bytes == end) continue;
      }
    }
    UChar32 c = readChar();
    if (c == kEnd) {
      endedByEnd = true;
      if (mode != 3 && mode != 4) throwError(175, charText(quote), UnicodeString());
      break;
    }
    if (quoted) {
      if (c == quote) break;
    } else {
      if (isSpace(c) || c == '>' || (mode == 3 && (c == '"' || c == '\'' || c == '/'))) {
        unreadChar(c);
        break;
      }
      if (c == '/') {
        UChar32 d = readChar();
        if (d == '>') {
          unreadChar(d);
          unreadChar(c);
          break;
        }
        if (d != kEnd) unreadChar(d);
      }
    }
    if (c == '&' || c == '<' || c == 9 || c == 10 || c == 13) plain = false;
    if (runLength > 126) flush();
    if (c <= 0xFFFF) {
      run[runLength++] = static_cast<char16_t>(c);
    } else if (c <= 0x10FFFF) {
      run[runLength++] = U16_LEAD(c);
      run[runLength++] = U16_TRAIL(c);
    }
  }
  flush();

  if (!plain) {
    // Printable ASCII ahead of the first character that needs the second pass reads the
    // same in it, without errors: it stays in the value, and the pass starts after it at
    // the column it would have reached.
    int kept = 0;
    while (kept < value.length() && value.charAt(kept) >= 0x20 && value.charAt(kept) < 0x7F &&
           value.charAt(kept) != '&' && value.charAt(kept) != '<')
      ++kept;
    // The pass then starts on an ASCII character, as a pass over the whole text may.
    if (kept < value.length() && value.charAt(kept) >= 0x80) kept = 0;
    raw.setTo(value, kept);
    value.truncate(kept);
    column += kept;
    // The literal is read again as an input of its own from where it started, so that its
    // errors carry the position inside it, and its references expand in place.
    UChar32 pendingDecoded = m_pendingDecoded;
    m_pendingDecoded = END_OF_INPUT;
    pushInputState();
    // ASCII text goes in as single bytes, which readChar takes on its fast path; it decodes
    // to the same characters.
    std::string bytes;
    bool ascii = true;
    for (int i = 0; i < raw.length() && ascii; ++i) ascii = raw.charAt(i) < 0x80;
    if (ascii) {
      bytes.resize(static_cast<size_t>(raw.length()));
      for (int i = 0; i < raw.length(); ++i)
        bytes[static_cast<size_t>(i)] = static_cast<char>(raw.charAt(i));
    } else {
      bytes = utf16leBytes(raw);
    }
    if (m_literalStreamBusy) {
      m_stream = m_baseStream = new std::istringstream(std::move(bytes), std::ios::binary);
    } else {
      if (!m_literalStream)
        m_literalStream = std::make_unique<std::istringstream>(std::string(), std::ios::binary);
      m_literalStream->clear();
      m_literalStream->str(std::move(bytes));
      m_literalStreamBusy = true;
      m_stream = m_baseStream = m_literalStream.get();
    }
    m_stringInput = true;
    m_encodingKind = ascii ? ENCODING_UTF8 : ENCODING_UTF16LE;
    m_lineNumber = line;
    m_columnNumber = column;
    size_t level = m_inputStack.size();
    try {
      for (UChar32 c = readChar(); c != kEnd; c = readChar()) {
        if (c == '<' && mode == 1 && !(isHTMLSyntax() && quoted))
          throwError(176, UnicodeString(), UnicodeString());
        if (c == '&' && (mode == 1 || mode == 2)) {
          UnicodeString text;
          ZQName name;
          readReference(text, name, true);
          if (name.isEmpty()) {
            value.append(text);
            continue;
          }
          if (text.isBogus()) {
            throwError(515, name.toString(), UnicodeString());
            text = UnicodeString();
          }
          if (mode == 2) {
            // General references in entity values expand where the entity is used.
            value.append(u'&').append(name.toString()).append(u';');
          } else if (!text.isEmpty() && guardExpansion(name, text.length())) {
            unreadText(text);
          }
          continue;
        }
        if (c == 9 || c == 10 || c == 13) c = 32;
        value.append(c);
      }
    } catch (...) {
      while (m_inputStack.size() >= level) popStream();
      m_pendingDecoded = pendingDecoded;
      throw;
    }
    while (m_inputStack.size() >= level) popStream();
    m_pendingDecoded = pendingDecoded;
  }
  if (mode == 4 && quoted) {
    value.insert(0, quote);
    if (!endedByEnd) value.append(quote);
  }
}

void ZQXmlParserImpl::pushInputState() {
  InputState state;
  state.stream = m_stream;
  state.baseStream = m_baseStream;
  state.stringInput = m_stringInput;
  state.bomSeen = m_bomSeen;
  state.topLevelSeen = m_topLevelSeen;
  state.encodingKind = m_encodingKind;
  state.encodingName = m_encodingName;
  state.parserType = m_parserType;
  state.settledType = m_settledType;
  state.inputUri = m_inputUri;
  state.baseUri = m_baseUri;
  state.baseDepth = m_baseDepth;
  state.lineNumber = m_lineNumber;
  state.columnNumber = m_columnNumber;
  state.pushedChar = m_pushedChar;
  state.pushedText = std::move(m_pushedText);  // emptied below in any case
  state.pushedTextPos = m_pushedTextPos;
  m_inputStack.push_back(std::move(state));
  m_pushedChar = END_OF_INPUT;
  m_pushedText.remove();
  m_pushedTextPos = 0;
}

void ZQXmlParserImpl::readReference(UnicodeString& out, ZQName& name, bool expand) {
  out.remove();
  name = ZQName();
  UChar32 c = readChar();
  if (c != '#') {
    if (c != kEnd) unreadChar(c);
    name = readName();
    if (name.isEmpty()) {
      if (isHTMLSyntax())
        out = u"&";
      else
        throwError(155, UnicodeString(), UnicodeString());
      return;
    }
    UChar32 d = readChar();
    // Asked once, and only where the answer changes something: a well-formed reference to
    // an entity with a value reads the same under every syntax.
    int html = -1;
    auto htmlSyntax = [this, &html]() {
      if (html < 0) html = isHTMLSyntax() ? 1 : 0;
      return html == 1;
    };
    if (d != ';') {
      if (htmlSyntax()) {
        if (d != kEnd) unreadChar(d);
      } else {
        UnicodeString text(u"&");
        text.append(name.toString()).append(charText(d));
        throwError(156, text, UnicodeString());
      }
    }
    UnicodeString value = lookupEntity(name, false);
    if ((value.isBogus() || value.isEmpty()) && htmlSyntax()) {
      // Unknown entities of HTML stay as text.
      out = u"&";
      out.append(name.toString());
      if (d == ';') out.append(u';');
      name = ZQName();
      return;
    }
    if (expand)
      out = value;
    else
      out.setToBogus();  // looked up again only if getText asks
    return;
  }

  UnicodeString raw;
  UChar32 d = readChar();
  bool hex = d == 'x' || (d == 'X' && isHTMLSyntax());
  if (hex) {
    raw.append(d);
    d = readChar();
  }
  uint32_t value = 0;  // no overflow check: the character test refuses what wrapped
  int digits = 0;
  for (int v; (v = digitValue(d, hex)) >= 0; d = readChar()) {
    value = value * (hex ? 16 : 10) + static_cast<uint32_t>(v);
    raw.append(d);
    ++digits;
  }
  if (d != kEnd) raw.append(d);
  if (digits == 0 || d != ';') {
    if (isHTMLSyntax()) {
      if (d != kEnd) {
        unreadChar(d);
        raw.truncate(raw.length() - 1);
      }
      if (digits == 0) {
        out = u"&#";
        out.append(raw);
        return;
      }
    } else {
      throwError(isSpace(d) ? 177 : 178, raw, UnicodeString());
      return;
    }
  }
  UChar32 ch = static_cast<UChar32>(value);
  if (!m_features[FEATURE_NO_CHARACTER_CHECK]) {
    bool valid = m_xml11 ? ZQChar::isValidChar11(ch) : ZQChar::isValidChar(ch);
    bool htmlSpaceEnd =
        m_htmlEntitiesAdded == ZQN_html && (d == 9 || d == 10 || d == 12 || d == 13 || d == 32);
    if (!valid && !htmlSpaceEnd) {
      // In XML the raw text still holds its ";", so the message ends in two.
      UnicodeString text(u"&#");
      text.append(raw).append(u';');
      throwError(179, text, UnicodeString());
    }
  }
  out.append(ch);
}

}  // namespace ZQCommonNS
