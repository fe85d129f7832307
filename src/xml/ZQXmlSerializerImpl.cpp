#include "xml/ZQXmlSerializerImpl.h"

#include <unicode/locid.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <string>
#include <string_view>

#include "common/ZQNameEnum.h"
#include "common/ZQString.h"
#include "common/ZQXmlUtil.h"
#include "core/ZQCommonError.h"
#include "core/platform/ZQPlatformFile.h"

namespace ZQCommonNS {

// ---- the interface ----

ZQXmlSerializer::~ZQXmlSerializer() = default;

void ZQXmlSerializer::setOutput(std::ostream* stream, const UnicodeString& encoding,
                                const UnicodeString& standalone) {
  if (!stream) {
    throwCommonError(69, ZQSRC_SERIALIZER_CHECK_STREAM, ZQEmptyString::EMPTY_VALUE,
                     ZQEmptyString::EMPTY_VALUE);
  }
  setOutput(*stream, encoding, standalone);
}

void ZQXmlSerializer::setGenerator(const UnicodeString&) {}

ZQPtr<ZQXmlSerializer> ZQXmlSerializer::createXmlSerializer() {
  return ZQPtr<ZQXmlSerializer>(new ZQXmlSerializerImpl());
}

ZQPtr<ZQXmlSerializer> ZQXmlUtil::createXmlSerializer() {
  return ZQXmlSerializer::createXmlSerializer();
}

// ---- the implementation ----

namespace {

const UnicodeString& emptyText() { return ZQEmptyString::EMPTY_VALUE; }

bool isXmlSpace(char16_t c) { return c == 0x20 || c == 0x09 || c == 0x0A || c == 0x0D; }

// Gathers the bytes of one write and hands them to the stream's buffer in blocks, without a
// sentry or a call per byte. The bytes gather in a small buffer of the sink's own or, for an
// output file of the serializer's own, straight in the serializer's block, which goes to the
// file whenever it fills. The first refused block marks the stream bad, and nothing more of
// the call is written, as with put.
class ByteSink {
 public:
  explicit ByteSink(std::ostream& out)
      : m_out(&out), m_buf(out.rdbuf()), m_start(m_bytes), m_cur(m_bytes), m_end(m_bytes + kSize) {}
  /// Writes on in `block`, of which `used` bytes are taken; drain leaves the bytes there and
  /// records in `used` how many there are.
  ByteSink(std::ostream& out, char* block, size_t size, size_t& used)
      : m_out(&out),
        m_buf(out.rdbuf()),
        m_start(block),
        m_cur(block + used),
        m_end(block + size),
        m_kept(&used) {}
  /// Gathers into `text` instead of a stream.
  explicit ByteSink(std::string& text)
      : m_out(nullptr),
        m_buf(nullptr),
        m_text(&text),
        m_start(m_bytes),
        m_cur(m_bytes),
        m_end(m_bytes + kSize) {}
  ByteSink(const ByteSink&) = delete;
  ByteSink& operator=(const ByteSink&) = delete;

  void put(char c) {
    if (m_cur == m_end) spill();
    *m_cur++ = c;
  }
  void write(const char* text, size_t n) {
    if (n > static_cast<size_t>(m_end - m_cur)) {
      spill();
      if (n > static_cast<size_t>(m_end - m_start)) {
        send(text, n);
        return;
      }
    }
    std::memcpy(m_cur, text, n);
    m_cur += n;
  }
  void write(std::string_view text) { write(text.data(), text.size()); }
  /// Code units known to be below 128, one byte each.
  void writeNarrow(const char16_t* chars, size_t n) {
    while (n > 0) {
      if (m_cur == m_end) spill();
      size_t k = std::min(n, static_cast<size_t>(m_end - m_cur));
      char* to = m_cur;
      for (size_t i = 0; i < k; ++i) to[i] = static_cast<char>(chars[i]);
      m_cur += k;
      chars += k;
      n -= k;
    }
  }
  /// Ends the write: a block keeps its bytes for later, any other buffer hands them over.
  /// To be called before the sink goes.
  void drain() {
    if (m_kept) {
      *m_kept = static_cast<size_t>(m_cur - m_start);
      return;
    }
    spill();
  }

 private:
  static constexpr size_t kSize = 2048;
  static constexpr size_t kShort = 48;

  void spill() {
    if (m_cur != m_start) send(m_start, static_cast<size_t>(m_cur - m_start));
    m_cur = m_start;
  }
  void send(const char* bytes, size_t n) {
    if (m_text) {
      m_text->append(bytes, n);
      return;
    }
    if (m_failed) return;
    if (!m_buf) return fail();
    if (n <= kShort) {
      // A few bytes go in through the inline put: a block call costs more than it saves.
      for (size_t i = 0; i < n; ++i) {
        if (std::ostream::traits_type::eq_int_type(m_buf->sputc(bytes[i]),
                                                   std::ostream::traits_type::eof()))
          return fail();
      }
      return;
    }
    const auto count = static_cast<std::streamsize>(n);
    if (m_buf->sputn(bytes, count) != count) fail();
  }
  void fail() {
    m_failed = true;
    if (m_out) m_out->setstate(std::ios::badbit);
  }

  std::ostream* m_out;
  std::streambuf* m_buf;
  std::string* m_text = nullptr;
  char* m_start;
  char* m_cur;
  char* m_end;
  size_t* m_kept = nullptr;
  bool m_failed = false;
  char m_bytes[kSize];
};

// For each flags word, which characters below 128 go out as they are, one byte each: the
// common case, copied in runs. The others take the careful road.
struct PlainTable {
  bool plain[32][128];
};

constexpr PlainTable makePlainTable() {
  PlainTable table{};
  for (int flags = 0; flags < 32; ++flags) {
    for (int c = 0; c < 128; ++c) {
      bool plain = c >= 32 || c == 9 || c == 10 || c == 13;
      if (flags != 0 && (c == '&' || c == '<' || c == '>')) plain = false;
      if ((flags & 2) && c == '"') plain = false;
      if ((flags & 4) && c == '\'') plain = false;
      if ((flags & 8) && (c < 32 || c == 127)) plain = false;
      if ((flags & 16) && (c == 9 || c == 10 || c == 13)) plain = false;
      table.plain[flags][c] = plain;
    }
  }
  return table;
}

constexpr PlainTable kPlain = makePlainTable();

void putReference(ByteSink& out, UChar32 c) {
  char buffer[16];
  int n = 0;
  buffer[n++] = '&';
  buffer[n++] = '#';
  char digits[12];
  int count = 0;
  auto value = static_cast<uint32_t>(c);
  do {
    digits[count++] = static_cast<char>('0' + value % 10);
    value /= 10;
  } while (value != 0);
  while (count > 0) buffer[n++] = digits[--count];
  buffer[n++] = ';';
  out.write(buffer, static_cast<size_t>(n));
}

// Escapes and encodes `length` code units into `out`, as told by `flags`.
void appendChars(ByteSink& out, const char16_t* chars, int length, int flags, bool asciiOnly) {
  if (!chars || length <= 0) return;
  const bool* plain = kPlain.plain[flags & 31];
  for (int i = 0; i < length; ++i) {
    // A run that needs no escaping and no encoding is copied in one go.
    int end = i;
    while (end < length && chars[end] < 128 && plain[chars[end]]) ++end;
    if (end > i) {
      out.writeNarrow(chars + i, static_cast<size_t>(end - i));
      i = end;
      if (i == length) break;
    }
    const char16_t c = chars[i];
    if (flags != 0) {
      if (c == u'&') {
        out.write("&amp;", 5);
        continue;
      }
      if (c == u'<') {
        out.write("&lt;", 4);
        continue;
      }
      if (c == u'>') {
        out.write("&gt;", 4);
        continue;
      }
      if ((flags & ZQXmlSerializerImpl::ESCAPE_QUOTE) && c == u'"') {
        out.write("&quot;", 6);
        continue;
      }
      if (((flags & ZQXmlSerializerImpl::ESCAPE_APOSTROPHE) && c == u'\'') ||
          ((flags & ZQXmlSerializerImpl::ESCAPE_CONTROLS) && (c < 32 || c == 127)) ||
          ((flags & ZQXmlSerializerImpl::ESCAPE_LINE_BREAKS) && (c == 9 || c == 10 || c == 13))) {
        putReference(out, c);
        continue;
      }
    }
    if (c < 128) {
      // Other controls can't be written in XML 1.0 at all; they are dropped.
      if (c < 32 && c != 9 && c != 10 && c != 13) continue;
      out.put(static_cast<char>(c));
      continue;
    }
    UChar32 cp = c;
    if (U16_IS_LEAD(c) && i + 1 < length && U16_IS_TRAIL(chars[i + 1])) {
      cp = U16_GET_SUPPLEMENTARY(c, chars[i + 1]);
      ++i;
    }
    if (asciiOnly) {
      putReference(out, cp);
    } else if (cp < 0x800) {
      out.put(static_cast<char>(0xC0 | (cp >> 6)));
      out.put(static_cast<char>(0x80 | (cp & 0x3F)));
    } else if (cp < 0x10000) {
      // A lone surrogate takes this road too, as three bytes of its own.
      out.put(static_cast<char>(0xE0 | (cp >> 12)));
      out.put(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.put(static_cast<char>(0x80 | (cp & 0x3F)));
    } else {
      out.put(static_cast<char>(0xF0 | (cp >> 18)));
      out.put(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
      out.put(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
      out.put(static_cast<char>(0x80 | (cp & 0x3F)));
    }
  }
}

// A sink for the serializer's output: its block, when it has one for a file it opened, else a
// buffer of the sink's own in front of the caller's stream.
ByteSink outputSink(std::ostream& stream, char* block, size_t size, size_t& used) {
  if (block) return ByteSink(stream, block, size, used);
  return ByteSink(stream);
}

void appendText(ByteSink& out, const UnicodeString& text, int flags, bool asciiOnly) {
  appendChars(out, text.getBuffer(), text.length(), flags, asciiOnly);
}

// A qualified name as written in markup: "prefix:local", or the local name alone.
void appendQName(ByteSink& out, const std::string* prefix, const std::string& localName) {
  if (prefix) {
    out.write(prefix->data(), prefix->size());
    out.put(':');
  }
  out.write(localName.data(), localName.size());
}

}  // namespace

void ZQXmlSerializerImpl::flushPending() noexcept {
  if (m_blockUsed == 0) return;
  try {
    if (m_output && m_output->good()) {
      ByteSink out(*m_output);
      out.write(m_block.get(), m_blockUsed);
      out.drain();
    }
  } catch (...) {
    // A stream that throws on failure keeps its state; the next write reports it.
  }
  m_blockUsed = 0;
}

ZQXmlSerializerImpl::ZQXmlSerializerImpl()
    : m_state(STATE_RESET),
      m_output(nullptr),
      m_ownsOutput(false),
      m_omitDeclaration(false),
      m_sortAttributes(false),
      m_outputEncoding(OUTPUT_UTF8),
      m_stateBeforePrefixes(STATE_RESET) {
  reset();
}

ZQXmlSerializerImpl::~ZQXmlSerializerImpl() { endOutput(); }

void ZQXmlSerializerImpl::setFeature(int feature, bool value) {
  if (feature == FEATURE_OMIT_XML_DECLARATION) {
    m_omitDeclaration = value;
  } else if (feature == FEATURE_SORT_ATTRIBUTES) {
    m_sortAttributes = value;
  }
}

bool ZQXmlSerializerImpl::getFeature(int feature) {
  if (feature == FEATURE_OMIT_XML_DECLARATION) return m_omitDeclaration;
  if (feature == FEATURE_SORT_ATTRIBUTES) return m_sortAttributes;
  return false;
}

ZQXmlSerializerImpl::OutputEncoding ZQXmlSerializerImpl::classifyEncoding(
    const UnicodeString& encoding, UnicodeString& declared, bool& supported) {
  static const char16_t* const kAscii[] = {
      u"ANSI_X3.4", u"ANSI_X3.4-1968", u"ANSI_X3.4-1986",   u"ASCII",
      u"ISO646-US", u"ISO_646.IRV",    u"ISO_646.IRV:1991", u"US-ASCII",
  };
  static const char16_t* const kShiftJis[] = {u"SHIFT-JIS", u"SHIFT_JIS", u"WINDOWS31J"};
  declared.remove();
  supported = true;
  UnicodeString name(encoding);
  name.trim();
  // The root locale keeps the upper-casing of "i" free of any user locale.
  name.toUpper(icu::Locale::getRoot());
  for (const char16_t* ascii : kAscii) {
    if (name == ascii) return OUTPUT_ASCII;
  }
  for (const char16_t* sjis : kShiftJis) {
    if (name == sjis) {
      declared = u"SHIFT_JIS";
      return OUTPUT_SHIFT_JIS;
    }
  }
  if (name == u"UTF-8") {
    declared = u"UTF-8";
    return OUTPUT_UTF8;
  }
  supported = false;
  return OUTPUT_UTF8;
}

void ZQXmlSerializerImpl::reset() {
  if (!m_namespaces) {
    m_namespaces = new ZQNamespaceManager();
  } else {
    m_namespaces->popToBase();
  }
  m_pendingAttributes.clear();
  m_nameBytes.clear();
  m_blockUsed = 0;
  m_output = nullptr;
  m_state = STATE_RESET;
}

void ZQXmlSerializerImpl::endOutput() {
  flushPending();
  if (m_output) {
    m_output->flush();
    if (m_ownsOutput) {
      auto* file = static_cast<std::ofstream*>(m_output);
      file->close();
      if (file->fail()) file->setstate(std::ios::badbit);
      delete file;
      m_ownsOutput = false;
    }
  }
  m_output = nullptr;
  m_state = STATE_OUTPUT_CLOSED;
}

void ZQXmlSerializerImpl::setOutput(const UnicodeString& fileName, const UnicodeString& encoding,
                                    const UnicodeString& standalone) {
  endOutput();
  reset();
  std::string told;
  fileName.toUTF8String(told);
  auto* file = new std::ofstream();
  if (!told.empty() && told.find('\0') == std::string::npos) {
    file->open(platform::nativePath(told), std::ios::out | std::ios::binary | std::ios::trunc);
  }
  if (!file->is_open()) {
    delete file;
    throwCommonError(67, ZQSRC_SERIALIZER_SET_OUTPUT, fileName, emptyText());
  }
  m_output = file;
  m_ownsOutput = true;
  if (!m_block) m_block.reset(new char[kBlockSize]);
  checkStream();
  m_encoding = encoding;
  m_standalone = standalone;
  UnicodeString declared;
  bool supported;
  m_outputEncoding = classifyEncoding(m_encoding, declared, supported);
  m_state = STATE_OUTPUT_SET;
}

void ZQXmlSerializerImpl::setOutput(std::ostream& stream, const UnicodeString& encoding,
                                    const UnicodeString& standalone) {
  endOutput();
  reset();
  m_output = &stream;
  m_ownsOutput = false;
  checkStream();
  m_encoding = encoding;
  m_standalone = standalone;
  UnicodeString declared;
  bool supported;
  m_outputEncoding = classifyEncoding(m_encoding, declared, supported);
  m_state = STATE_OUTPUT_SET;
}

void ZQXmlSerializerImpl::streamFailed() {
  throwCommonError(m_output ? 71 : 69, ZQSRC_SERIALIZER_CHECK_STREAM, emptyText(), emptyText());
}

void ZQXmlSerializerImpl::startDocument(const UnicodeString& encoding,
                                        const UnicodeString& standalone) {
  if (m_state != STATE_OUTPUT_SET) {
    throwCommonError(12, ZQSRC_SERIALIZER_START_DOCUMENT, emptyText(), emptyText());
  }
  if (!encoding.isEmpty()) m_encoding = encoding;
  if (!standalone.isEmpty()) m_standalone = standalone;
  UnicodeString declared;
  bool supported;
  m_outputEncoding = classifyEncoding(m_encoding, declared, supported);
  // What isn't supported is written as UTF-8 and not named in the declaration.
  if (!supported) m_encoding.remove();
  if (!m_omitDeclaration) {
    writeAscii("<?xml version=\"1.0\"");
    if (!declared.isEmpty()) {
      writeAscii(" encoding=\"");
      writeText(declared, 0);
      writeAscii("\"");
    }
    if (!m_standalone.isEmpty()) {
      writeAscii(" standalone=\"");
      writeText(m_standalone, 0);
      writeAscii("\"");
    }
    writeAscii("?>");
  }
  if (!m_generator.isEmpty()) {
    writeAscii("<!-- ");
    writeText(m_generator, 0);
    writeAscii(" -->");
  }
  m_state = STATE_PROLOG;
}

void ZQXmlSerializerImpl::endDocument() {
  dropPendingPrefixes();
  while (getDepth() > 0) endTag(getNamespace(), getName());
  flush();
  endOutput();
  m_state = STATE_DOCUMENT_ENDED;
}

void ZQXmlSerializerImpl::dropPendingPrefixes() {
  if (m_state != STATE_PREFIXES_PENDING) return;
  m_namespaces->popContext();
  m_state = m_stateBeforePrefixes;
}

const ZQNamespaceManager::Entry& ZQXmlSerializerImpl::openEntry() const {
  int depth = m_namespaces->getDepth();
  if (m_state == STATE_PREFIXES_PENDING && depth > 0) --depth;
  return m_namespaces->getEntry(depth);
}

void ZQXmlSerializerImpl::setPrefix(ZQName prefix, ZQName ns) {
  finishStartTag(false);
  if (m_state != STATE_PREFIXES_PENDING) {
    m_stateBeforePrefixes = m_state;
    m_namespaces->pushContext();
  }
  m_namespaces->declare(prefix, ns);
  m_state = STATE_PREFIXES_PENDING;
}

ZQName ZQXmlSerializerImpl::getPrefix(ZQName ns, bool generate) {
  if (ns.isEmpty()) return ZQName();
  ZQName prefix = m_namespaces->lookupPrefix(ns);
  if (!prefix.isEmpty()) return prefix;
  // An element in the default namespace in force needs no prefix.
  if (ns == m_namespaces->lookupDefault()) return ZQName();
  if (!generate) return ZQName();
  prefix = ZQName::generateID(emptyText());
  m_namespaces->declare(prefix, ns);
  return prefix;
}

int ZQXmlSerializerImpl::getDepth() {
  int depth = m_namespaces->getDepth();
  // A context that waits for its element holds no open element.
  if (m_state == STATE_PREFIXES_PENDING && depth > 0) --depth;
  return depth;
}

ZQName ZQXmlSerializerImpl::getNamespace() { return openEntry().namespaceUri; }

ZQName ZQXmlSerializerImpl::getDefaultNamespace() { return m_namespaces->lookupDefault(); }

ZQName ZQXmlSerializerImpl::getName() { return openEntry().localName; }

ZQXmlSerializer* ZQXmlSerializerImpl::startTag(ZQName ns, ZQName prefix, ZQName localName) {
  return startTagSub(ns, prefix, localName, false);
}

ZQXmlSerializer* ZQXmlSerializerImpl::startTag(ZQName ns, ZQName localName) {
  return startTagSub(ns, ZQName(), localName, true);
}

ZQXmlSerializer* ZQXmlSerializerImpl::startTagSub(ZQName ns, ZQName prefix, ZQName localName,
                                                  bool generate) {
  finishStartTag(false);
  if (m_state != STATE_PREFIXES_PENDING) m_namespaces->pushContext();
  if (!ns.isEmpty()) {
    if (generate) {
      prefix = getPrefix(ns, true);
    } else {
      m_namespaces->declare(prefix, ns);
    }
  } else if (!m_namespaces->lookupDefault().isEmpty()) {
    // An element without namespace below a default namespace undeclares it.
    m_namespaces->declare(ZQName(), ZQName());
  }
  ZQNamespaceManager::Entry& entry = m_namespaces->top();
  entry.namespaceUri = ns;
  entry.prefix = prefix;
  entry.localName = localName;
  // The context belongs to its element now, whatever the write below does.
  m_state = STATE_START_TAG_OPEN;
  writeMarkupName("<", prefix, localName, "");
  return this;
}

ZQXmlSerializer* ZQXmlSerializerImpl::attribute(ZQName ns, ZQName prefix, ZQName localName,
                                                const UnicodeString& value) {
  return attributeSub(ns, prefix, localName, value, false);
}

ZQXmlSerializer* ZQXmlSerializerImpl::attribute(ZQName ns, ZQName localName,
                                                const UnicodeString& value) {
  return attributeSub(ns, ZQName(), localName, value, true);
}

ZQXmlSerializer* ZQXmlSerializerImpl::attributeSub(ZQName ns, ZQName prefix, ZQName localName,
                                                   const UnicodeString& value, bool generate) {
  if (m_state != STATE_START_TAG_OPEN && m_state != STATE_ATTRIBUTES_WRITTEN) {
    throwCommonError(13, ZQSRC_SERIALIZER_ATTRIBUTE, emptyText(), emptyText());
  }
  // Namespace declarations given as attributes become declarations of the element.
  if (ns == ZQN_NS_XMLNS) {
    if (localName != ZQN_xmlns) {
      m_namespaces->declare(localName, ZQName(value));
    } else {
      m_namespaces->declare(ZQName(), ZQName(value));
    }
    return this;
  }
  if (localName == ZQN_xmlns) {
    m_namespaces->declare(ZQName(), ZQName(value));
    return this;
  }
  if (prefix == ZQN_xmlns) {
    // Declared, and then written as an attribute of its own.
    m_namespaces->declare(localName, ZQName(value));
  }
  if (generate) {
    prefix = getPrefix(ns, true);
  } else if (!prefix.isEmpty() && !ns.isEmpty()) {
    m_namespaces->declare(prefix, ns);
  }
  if (!m_sortAttributes) {
    writeAttribute(prefix, localName, value);
  } else {
    m_pendingAttributes[AttributeKey(prefix, localName)] = value;
  }
  m_state = STATE_ATTRIBUTES_WRITTEN;
  return this;
}

bool ZQXmlSerializerImpl::AttributeKeyLess::operator()(const AttributeKey& a,
                                                       const AttributeKey& b) const {
  auto isDeclaration = [](const AttributeKey& key) {
    return key.first == ZQN_xmlns || (key.first.isEmpty() && key.second == ZQN_xmlns);
  };
  bool declA = isDeclaration(a);
  bool declB = isDeclaration(b);
  if (declA != declB) return declA;
  if (a.first != b.first) {
    int8_t order = a.first.toString().compare(b.first.toString());
    if (order != 0) return order < 0;
  }
  if (a.second == b.second) return false;
  return a.second.toString().compare(b.second.toString()) < 0;
}

void ZQXmlSerializerImpl::finishStartTag(bool empty) {
  if (m_state != STATE_START_TAG_OPEN && m_state != STATE_ATTRIBUTES_WRITTEN) return;
  if (const ZQNamespaceMap* map = m_namespaces->topMap()) {
    for (const ZQNamespaceMap::Binding& binding : *map) {
      if (!m_sortAttributes) {
        writeAscii(" xmlns");
        if (!binding.first.isEmpty()) {
          writeAscii(":");
          writeText(binding.first.toString(), 0);
        }
        writeAscii("=\"");
        writeText(binding.second.toString(), NAMESPACE_FLAGS);
        writeAscii("\"");
      } else if (binding.first.isEmpty()) {
        m_pendingAttributes[AttributeKey(ZQName(), ZQN_xmlns)] = binding.second.toString();
      } else {
        m_pendingAttributes[AttributeKey(ZQN_xmlns, binding.first)] = binding.second.toString();
      }
    }
  }
  // Entries left by a sorted tag whose feature was switched off since are written too.
  if (m_sortAttributes || !m_pendingAttributes.empty()) {
    // Emptied first: a write that throws must not leave the entries to the next element.
    auto pending = std::move(m_pendingAttributes);
    m_pendingAttributes.clear();
    for (const auto& entry : pending)
      writeAttribute(entry.first.first, entry.first.second, entry.second);
  }
  if (!empty) {
    writeAscii(">");
    m_state = STATE_START_TAG_CLOSED;
  } else {
    writeAscii("/>");
    m_state = STATE_EMPTY_ELEMENT_CLOSED;
  }
}

ZQXmlSerializer* ZQXmlSerializerImpl::endTag(ZQName ns, ZQName localName) {
  dropPendingPrefixes();
  if (getDepth() < 1) {
    throwCommonError(14, ZQSRC_SERIALIZER_END_TAG, emptyText(), emptyText());
  }
  const ZQNamespaceManager::Entry& open = m_namespaces->top();
  if (localName != open.localName || ns != open.namespaceUri) {
    UnicodeString asked;
    // Compares a namespace with a name, as it always has; a match is rare.
    if (ns == open.localName) {
      asked = ZQXmlUtil::makeQNameStr(open.prefix.toString(), localName.toString());
    } else {
      asked = ZQXmlUtil::makeNSQNameStr(ns.toString(), localName.toString());
    }
    throwCommonError(15, ZQSRC_SERIALIZER_END_TAG, asked,
                     ZQXmlUtil::makeQNameStr(open.prefix.toString(), open.localName.toString()));
  }
  if (m_state == STATE_START_TAG_OPEN || m_state == STATE_ATTRIBUTES_WRITTEN) {
    finishStartTag(true);
  } else {
    writeMarkupName("</", open.prefix, open.localName, ">");
    m_state = STATE_END_TAG_WRITTEN;
  }
  m_namespaces->popContext();
  return this;
}

ZQXmlSerializer* ZQXmlSerializerImpl::text(const char16_t* chars, int start, int length) {
  dropPendingPrefixes();
  finishStartTag(false);
  // A negative start would read before the caller's array.
  if (chars && start >= 0 && length > 0) {
    writeChars(chars + start, length, TEXT_FLAGS);
  } else {
    checkStream();
  }
  m_state = STATE_TEXT_WRITTEN;
  return this;
}

ZQXmlSerializer* ZQXmlSerializerImpl::text(const UnicodeString& text) {
  dropPendingPrefixes();
  finishStartTag(false);
  writeText(text, TEXT_FLAGS);
  m_state = STATE_TEXT_WRITTEN;
  return this;
}

void ZQXmlSerializerImpl::cdsect(const UnicodeString& text) {
  dropPendingPrefixes();
  finishStartTag(false);
  writeAscii("<![CDATA[");
  writeText(text, 0);
  writeAscii("]]>");
}

void ZQXmlSerializerImpl::entityRef(const UnicodeString& name) {
  dropPendingPrefixes();
  finishStartTag(false);
  writeAscii("&");
  writeText(name, 0);
  writeAscii(";");
}

void ZQXmlSerializerImpl::processingInstruction(ZQName target, const UnicodeString& data) {
  dropPendingPrefixes();
  finishStartTag(false);
  writeAscii("<?");
  writeText(target.toString(), 0);
  UnicodeString trimmed(data);
  trimmed.trim();
  if (!trimmed.isEmpty()) {
    writeAscii(" ");
    writeText(trimmed, 0);
  }
  writeAscii("?>");
}

void ZQXmlSerializerImpl::comment(const UnicodeString& text) {
  dropPendingPrefixes();
  finishStartTag(false);
  writeAscii("<!--");
  writeText(text, 0);
  writeAscii("-->");
}

void ZQXmlSerializerImpl::docdecl(const UnicodeString& text) {
  // Only the prolog takes it: prefixes waiting for an element have left the prolog already.
  if (m_state != STATE_PROLOG) {
    throwCommonError(16, ZQSRC_SERIALIZER_DOCDECL, emptyText(), emptyText());
  }
  writeAscii("<!DOCTYPE");
  if (text.isEmpty() || !isXmlSpace(text.charAt(0))) writeAscii(" ");
  writeText(text, 0);
  writeAscii(">");
}

void ZQXmlSerializerImpl::ignorableWhitespace(const UnicodeString& text) {
  dropPendingPrefixes();
  finishStartTag(false);
  writeText(text, 0);
}

void ZQXmlSerializerImpl::flush() {
  checkStream();
  flushPending();
  m_output->flush();
  // A flush that fails is as much a failure of the output as a failed write.
  checkStream();
}

void ZQXmlSerializerImpl::setGenerator(const UnicodeString& text) { m_generator = text; }

// ---- writing ----

void ZQXmlSerializerImpl::writeAscii(const char* text) {
  checkStream();
  ByteSink out =
      outputSink(*m_output, m_ownsOutput ? m_block.get() : nullptr, kBlockSize, m_blockUsed);
  out.write(text, std::strlen(text));
  out.drain();
}

const std::string& ZQXmlSerializerImpl::nameBytes(ZQName name, int spare) {
  const auto index = static_cast<size_t>(static_cast<ZQNameEnum>(name));
  std::string* bytes = &m_nameSpare[spare & 1];
  if (index < m_nameBytes.size()) {
    bytes = &m_nameBytes[index];
    if (!bytes->empty()) return *bytes;
  }
  bytes->clear();
  ByteSink out(*bytes);
  appendText(out, name.toString(), 0, m_nameBytesAscii);
  out.drain();
  return *bytes;
}

void ZQXmlSerializerImpl::qnameBytes(ZQName prefix, ZQName localName,
                                     const std::string*& prefixBytes,
                                     const std::string*& localBytes) {
  // Names repeat all through a document: each is encoded once per output, which also spares
  // the name table's lock on every look-up of a run-time name. The table grows before either
  // name is looked up, so that the first one's bytes stay in place.
  const bool asciiOnly = m_outputEncoding != OUTPUT_UTF8;
  if (asciiOnly != m_nameBytesAscii) {
    m_nameBytes.clear();
    m_nameBytesAscii = asciiOnly;
  }
  const auto largest =
      static_cast<size_t>(std::max(static_cast<unsigned>(static_cast<ZQNameEnum>(prefix)),
                                   static_cast<unsigned>(static_cast<ZQNameEnum>(localName))));
  if (largest >= m_nameBytes.size() && largest < kNameCacheLimit) m_nameBytes.resize(largest + 1);
  prefixBytes = prefix.isEmpty() ? nullptr : &nameBytes(prefix, 0);
  localBytes = &nameBytes(localName, 1);
}

void ZQXmlSerializerImpl::writeMarkupName(std::string_view before, ZQName prefix, ZQName localName,
                                          std::string_view after) {
  checkStream();
  const std::string* prefixBytes;
  const std::string* localBytes;
  qnameBytes(prefix, localName, prefixBytes, localBytes);
  ByteSink out =
      outputSink(*m_output, m_ownsOutput ? m_block.get() : nullptr, kBlockSize, m_blockUsed);
  out.write(before);
  appendQName(out, prefixBytes, *localBytes);
  out.write(after);
  out.drain();
}

void ZQXmlSerializerImpl::writeAttribute(ZQName prefix, ZQName localName,
                                         const UnicodeString& value) {
  // One gathering for the whole attribute: its pieces are small.
  checkStream();
  const std::string* prefixBytes;
  const std::string* localBytes;
  qnameBytes(prefix, localName, prefixBytes, localBytes);
  ByteSink out =
      outputSink(*m_output, m_ownsOutput ? m_block.get() : nullptr, kBlockSize, m_blockUsed);
  const bool asciiOnly = m_outputEncoding != OUTPUT_UTF8;
  out.put(' ');
  appendQName(out, prefixBytes, *localBytes);
  out.write("=\"", 2);
  appendText(out, value, ATTRIBUTE_FLAGS, asciiOnly);
  out.put('"');
  out.drain();
}

void ZQXmlSerializerImpl::writeText(const UnicodeString& text, int flags) {
  // The string's own buffer is read in place; a bogus string has none and writes nothing.
  writeChars(text.getBuffer(), text.length(), flags);
}

void ZQXmlSerializerImpl::writeChars(const char16_t* chars, int length, int flags) {
  checkStream();
  if (!chars || length <= 0) return;
  ByteSink out =
      outputSink(*m_output, m_ownsOutput ? m_block.get() : nullptr, kBlockSize, m_blockUsed);
  appendChars(out, chars, length, flags, m_outputEncoding != OUTPUT_UTF8);
  out.drain();
}

}  // namespace ZQCommonNS
