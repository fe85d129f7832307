// Input of the pull parser: bytes to code points, the pushback, the stack of inputs and the
// encoding decision.
#include <cstdio>
#include <string>

#include "common/ZQChar.h"
#include "common/ZQICUIStream.h"
#include "common/ZQString.h"
#include "common/ZQUri.h"
#include "common/ZQUtil.h"
#include "core/ZQCommonError.h"
#include "xml/ZQXmlInputTables.h"
#include "xml/ZQXmlParserImpl.h"
#include "xml/ZQXmlScanText.h"

namespace ZQCommonNS {

namespace {

using xmlscan::isSpace;

constexpr int kEof = std::char_traits<char>::eof();

struct KindName {
  const char16_t* name;
  int kind;
};

// Canonical, upper-cased names of the encodings decoded without a converter.
constexpr KindName kKindNames[] = {
    {u"UTF-8", 1},           {u"UCS-2", 2},          {u"ISO-10646-UCS-2", 2},  {u"UNICODE", 2},
    {u"UTF-16", 2},          {u"UTF-16LE", 3},       {u"UTF-16BE", 4},         {u"UCS-4", 5},
    {u"ISO-10646-UCS-4", 5}, {u"UTF-32", 5},         {u"UTF-32LE", 6},         {u"UTF-32BE", 7},
    {u"ANSI_X3.4", 8},       {u"ANSI_X3.4-1968", 8}, {u"ANSI_X3.4-1986", 8},   {u"ASCII", 8},
    {u"ISO646-US", 8},       {u"ISO_646.IRV", 8},    {u"ISO_646.IRV:1991", 8}, {u"US-ASCII", 8},
    {u"ISO-8859-1", 9},      {u"ISO_8859-1", 9},     {u"ISO_8859-1:1987", 9},  {u"LATIN1", 9},
    {u"ISO-8859-2", 10},     {u"ISO-8859-3", 11},    {u"ISO-8859-4", 12},      {u"ISO-8859-5", 13},
    {u"ISO-8859-6", 14},     {u"ISO-8859-7", 15},    {u"ISO-8859-8", 16},      {u"ISO-8859-9", 17},
    {u"ISO-8859-10", 18},    {u"ISO-8859-11", 19},   {u"ISO-8859-13", 20},     {u"ISO-8859-14", 21},
    {u"ISO-8859-15", 22},    {u"ISO-8859-16", 23},
};

UnicodeString charText(UChar32 c) { return UnicodeString().append(c); }

// One byte as std::istream::get gives it, with the same end-of-file and failure bits, but
// straight from the stream buffer while the stream is good: the sentry of get() costs more
// than the byte.
int getByte(std::istream& in) {
  if (in.rdstate() != std::ios::goodbit || in.tie()) return in.get();
  int b;
  try {
    b = in.rdbuf()->sbumpc();
  } catch (...) {
    if (in.exceptions() & std::ios::badbit) throw;
    in.setstate(std::ios::badbit);
    return kEof;
  }
  if (b == kEof) in.setstate(std::ios::eofbit | std::ios::failbit);
  return b;
}

}  // namespace

int ZQXmlParserImpl::encodingKindOf(const UnicodeString& name) {
  UnicodeString key(ZQUtil::getCanonicalEncoding(name));
  key.trim().toUpper();
  for (const KindName& entry : kKindNames)
    if (key == entry.name) return entry.kind;
  return -1;
}

// ---- Reading characters ----

UChar32 ZQXmlParserImpl::readCharSlow() {
  if (m_pushedChar != END_OF_INPUT) {
    UChar32 c = m_pushedChar;
    m_pushedChar = END_OF_INPUT;
    return c;
  }
  if (!m_pushedText.isEmpty()) {
    UChar32 c = m_pushedText.char32At(m_pushedTextPos);
    m_pushedTextPos += U16_LENGTH(c);
    if (m_pushedTextPos >= m_pushedText.length()) {
      m_pushedText.remove();
      m_pushedTextPos = 0;
    }
    return c;
  }
  if (!m_stream) return END_OF_INPUT;
  if ((m_stream->rdstate() & (std::ios::failbit | std::ios::badbit)) &&
      (m_stringInput || m_inputStack.empty()))
    return END_OF_INPUT;
  UChar32 c = decodeChar();
  // A character that the outer input gave after an inner one ended has been counted and
  // checked by the nested readChar already.
  if (m_readByOuterInput) {
    m_readByOuterInput = false;
    return c;
  }
  if (c == END_OF_INPUT) return c;
  if (c == 13) {
    // CR LF and CR NEL are one line end under both versions.
    UChar32 next = decodeChar();
    if (m_readByOuterInput) {
      // The line end of an inner input does not join the outer input's first character.
      m_readByOuterInput = false;
      unreadChar(next);
    } else if (next != 10 && next != 133) {
      m_pendingDecoded = next;
    }
    ++m_lineNumber;
    m_columnNumber = 0;
    return 10;
  }
  if (c == 133 || c == 8232) {
    if (m_xml11) {
      ++m_lineNumber;
      m_columnNumber = 0;
      return 10;
    }
  } else if (!m_features[FEATURE_NO_CHARACTER_CHECK]) {
    bool valid = m_xml11 ? ZQChar::isValidChar11(c) : ZQChar::isValidChar(c);
    // HTML pages use form feeds freely once their entity set is in.
    if (!valid && !(c == 12 && !m_htmlEntitiesAdded.isEmpty())) {
      char hex[16];
      snprintf(hex, sizeof hex, "U+%04X", static_cast<unsigned>(c));
      throwError(179, UnicodeString(hex, -1, US_INV), UnicodeString());
    }
  }
  if (c == 10) {
    ++m_lineNumber;
    m_columnNumber = 0;
  } else {
    ++m_columnNumber;
  }
  return c;
}

// Text put back again and again inside long expansions goes where the part already read
// was, so the unread tail is neither moved nor kept growing.
void ZQXmlParserImpl::insertPushedText(const UnicodeString& piece) {
  int length = piece.length();
  if (m_pushedTextPos >= length) {
    m_pushedTextPos -= length;
    m_pushedText.replace(m_pushedTextPos, length, piece);
  } else {
    m_pushedText.replace(0, m_pushedTextPos, piece);
    m_pushedTextPos = 0;
  }
}

void ZQXmlParserImpl::unreadSecondChar(UChar32 c) {
  // A second character back: it and the one waiting in the slot go ahead of pushedText.
  UnicodeString piece = charText(c).append(m_pushedChar);
  m_pushedChar = END_OF_INPUT;
  if (m_pushedText.isEmpty()) {
    m_pushedText = piece;
    m_pushedTextPos = 0;
  } else {
    insertPushedText(piece);
  }
}

void ZQXmlParserImpl::unreadText(const UnicodeString& s) {
  UnicodeString piece(s);
  if (m_pushedChar != END_OF_INPUT) {
    piece.append(m_pushedChar);
    m_pushedChar = END_OF_INPUT;
  }
  if (piece.isEmpty()) return;
  if (m_pushedText.isEmpty()) {
    m_pushedText = piece;
    m_pushedTextPos = 0;
  } else {
    insertPushedText(piece);
  }
}

UChar32 ZQXmlParserImpl::decodeChar() {
  if (m_pendingDecoded != END_OF_INPUT) {
    UChar32 c = m_pendingDecoded;
    m_pendingDecoded = END_OF_INPUT;
    return c;
  }
  std::istream& in = *m_stream;
  int b0 = getByte(in);
  // A stream that fails without reaching its end ends this input all the same.
  if (b0 != kEof && !in.eof()) {
    switch (m_encodingKind) {
      case ENCODING_UTF8: {
        if (b0 < 0x80) return b0;
        auto continuation = [&in](int& b) {
          b = getByte(in);
          return b != kEof && (b & 0xC0) == 0x80;
        };
        int b1, b2, b3;
        if (!continuation(b1)) return 0xFFFD;
        if ((b0 & 0xE0) == 0xC0) return ((b0 & 0x1F) << 6) | (b1 & 0x3F);
        if (!continuation(b2)) return 0xFFFD;
        if ((b0 & 0xF0) == 0xE0) return ((b0 & 0x0F) << 12) | ((b1 & 0x3F) << 6) | (b2 & 0x3F);
        if (!continuation(b3)) return 0xFFFD;
        if ((b0 & 0xF8) != 0xF0) return 0xFFFD;
        return ((b0 & 0x07) << 18) | ((b1 & 0x3F) << 12) | ((b2 & 0x3F) << 6) | (b3 & 0x3F);
      }
      case ENCODING_UTF16LE:
      case ENCODING_UTF16BE: {
        bool little = m_encodingKind == ENCODING_UTF16LE;
        auto unit = [&in, little](int first, UChar32& out) {
          int second = getByte(in);
          if (in.fail()) return false;
          out = little ? (second << 8) | first : (first << 8) | second;
          return true;
        };
        UChar32 high;
        if (!unit(b0, high)) return 0xFFFD;
        if (!U16_IS_LEAD(high)) return high;
        int first = getByte(in);
        UChar32 low;
        if (in.fail() || !unit(first, low) || !U16_IS_TRAIL(low)) return 0xFFFD;
        return U16_GET_SUPPLEMENTARY(high, low);
      }
      case ENCODING_UTF32LE:
      case ENCODING_UTF32BE: {
        int b1 = getByte(in);
        int b2 = getByte(in);
        int b3 = getByte(in);
        if (in.fail()) return 0xFFFD;
        // No range check: a value past U+10FFFF fails the character test of readChar.
        uint32_t value = m_encodingKind == ENCODING_UTF32LE
                             ? (uint32_t(b3) << 24) | (b2 << 16) | (b1 << 8) | b0
                             : (uint32_t(b0) << 24) | (b1 << 16) | (b2 << 8) | b3;
        return static_cast<UChar32>(value & 0x7FFFFFFF);
      }
      default:
        if (m_encodingKind >= ENCODING_ISO8859_2 && m_encodingKind <= ENCODING_ISO8859_16 &&
            b0 >= 160) {
          auto table = xmlinput::isoTable(m_encodingKind);
          size_t index = static_cast<size_t>(b0 - 160);
          if (index < table.size()) return table[index];
        }
        return b0;
    }
  }
  // End of this input: inner inputs give way to the outer one.
  if (m_stringInput || m_parserType == ZQN_text) return END_OF_INPUT;
  if (m_inputStack.empty()) return END_OF_INPUT;
  popStream();
  UChar32 c = readChar();
  m_readByOuterInput = true;
  return c;
}

// ---- Encodings ----

void ZQXmlParserImpl::setEncoding(const UnicodeString& name) {
  UnicodeString oldName = m_encodingName;
  m_encodingName = ZQUtil::getCanonicalEncoding(name);
  // Once a converter reads the bytes, the encoding is settled.
  if (name.isEmpty() || m_stream != m_baseStream) return;
  int kind = encodingKindOf(name);
  if (kind >= 0) {
    // A generic UTF-16 or UTF-32 name leaves a detected byte order alone, and the name that
    // detection reported with it ("UTF-16" under a mark) stays too.
    if ((kind == ENCODING_UTF16 &&
         (m_encodingKind == ENCODING_UTF16LE || m_encodingKind == ENCODING_UTF16BE)) ||
        (kind == ENCODING_UTF32 &&
         (m_encodingKind == ENCODING_UTF32LE || m_encodingKind == ENCODING_UTF32BE))) {
      m_encodingName = oldName;
      return;
    }
    m_encodingKind = kind;
    return;
  }
  if (m_features[FEATURE_BUILTIN_ENCODINGS_ONLY]) {
    throwError(181, name, UnicodeString());
    return;
  }
  m_encodingName = ZQUtil::getStandardEncoding(name);
  if (!m_stream) return;
  std::string charset;
  m_encodingName.toUTF8String(charset);
  auto* converter = new ZQICUIStream(m_stream, charset.c_str());
  m_stream = converter;
  if (!converter->is_open()) {
    if (!m_features[FEATURE_ALLOW_UNKNOWN_ENCODING]) {
      throwError(181, name, UnicodeString());
      return;
    }
    delete converter;
    m_stream = m_baseStream;
    return;
  }
  // The converter yields UTF-16 in the machine's order.
  m_encodingKind = ENCODING_UTF16LE;
}

void ZQXmlParserImpl::detectEncoding(bool isText) {
  // A byte order mark beats an encoding given beforehand: a converter installed for that
  // encoding has read nothing yet, so it is dropped when the raw bytes start like a mark.
  if (m_stream && m_stream != m_baseStream) {
    int lead = m_baseStream->peek();
    if (lead == 0xEF || lead == 0xFE || lead == 0xFF) {
      delete m_stream;
      m_stream = m_baseStream;
    }
  }
  checkStream();
  std::istream& in = *m_stream;
  auto settle = [this](int kind, const char16_t* name, bool bom) {
    m_encodingKind = kind;
    m_encodingName = name;
    m_bomSeen = bom;
  };
  auto putBack = [&in](int b) {
    if (b != kEof) in.unget();
  };
  int b0 = in.get();
  if (b0 == kEof) return;
  if (b0 == 0) {
    int b1 = in.get();
    if (b1 != 0) {
      if (b1 != kEof) unreadChar(b1);
      settle(ENCODING_UTF16BE, u"UTF-16BE", false);
      return;
    }
    int b2 = in.get();
    int b3 = in.get();
    if (b2 == 0xFE && b3 == 0xFF) {
      settle(ENCODING_UTF32BE, u"UTF-32", true);
      return;
    }
    if (b2 != kEof && b3 != kEof) unreadChar(b2 * 256 + b3);
    settle(ENCODING_UTF32BE, u"UTF-32BE", false);
    return;
  }
  if (b0 == 0xEF || b0 == 0xFE || b0 == 0xFF) {
    int b1 = in.get();
    if (b0 == 0xFF && b1 == 0xFE) {
      int b2 = in.get();
      int b3 = in.get();
      if (b2 == 0 && b3 == 0) {
        settle(ENCODING_UTF32LE, u"UTF-32", true);
        return;
      }
      if (b2 != kEof) unreadChar(b3 == kEof ? b2 : b3 * 256 + b2);
      settle(ENCODING_UTF16LE, u"UTF-16", true);
      return;
    }
    if (b0 == 0xFE && b1 == 0xFF) {
      settle(ENCODING_UTF16BE, u"UTF-16", true);
      return;
    }
    if (b0 == 0xEF && b1 == 0xBB && in.get() == 0xBF) {
      settle(ENCODING_UTF8, u"UTF-8", true);
      return;
    }
    throwError(180, UnicodeString(), UnicodeString());
    m_encodingKind = ENCODING_NONE;
    return;
  }
  if (b0 != '<' && !isText) {
    putBack(b0);
    return;
  }
  if (m_encodingKind == ENCODING_NONE || m_encodingKind == ENCODING_UTF16 ||
      m_encodingKind == ENCODING_UTF32) {
    m_bomSeen = false;
    int b1 = in.get();
    if (b1 != 0) {
      putBack(b1);
      unreadChar(b0);
      if (isText) return;
      settle(ENCODING_UTF8, u"UTF-8", false);
      return;
    }
    int b2 = in.get();
    if (b2 != 0) {
      putBack(b2);
      unreadChar(b0);
      settle(ENCODING_UTF16LE, u"UTF-16LE", false);
      return;
    }
    int b3 = in.get();
    if (b3 != 0) {
      if (b3 != kEof) unreadChar(b3 * 256);
      unreadChar(b0);
      settle(ENCODING_UTF16LE, u"UTF-16LE", false);
      return;
    }
    unreadChar('<');
    settle(ENCODING_UTF32LE, u"UTF-32LE", false);
    return;
  }
  putBack(b0);
}

void ZQXmlParserImpl::checkStream() {
  if (!m_stream) throwCommonError(11, ZQSRC_PARSER_CHECK_STREAM, UnicodeString(), UnicodeString());
  std::istream& in = *m_stream;
  // A stream already read past its end can give nothing; one that is merely empty is an
  // empty document.
  if (in.bad() || (in.fail() && !in.eof()))
    throwCommonError(70, ZQSRC_PARSER_CHECK_STREAM, m_inputUri, UnicodeString());
  if (in.fail()) throwCommonError(68, ZQSRC_PARSER_CHECK_STREAM, m_inputUri, UnicodeString());
  in.peek();
  if (in.bad()) throwCommonError(70, ZQSRC_PARSER_CHECK_STREAM, m_inputUri, UnicodeString());
}

// ---- Inputs ----

void ZQXmlParserImpl::setInput(ZQUri& uri, const UnicodeString& encoding,
                               const UnicodeString& base) {
  closeStream();
  resetParser();
  ZQUri::ContentInfo info;
  UnicodeString error;
  std::istream* stream = uri.getIStream(&info, &error);
  if (!stream) throwCommonError(67, ZQSRC_PARSER_SET_INPUT, uri.toString(), UnicodeString());
  m_stream = m_baseStream = stream;
  m_ownsStream = true;
  m_inputUri = uri.getLocalPath();
  m_baseUri = base.isEmpty() ? uri.getBaseString() : base;
  checkStream();
  if (!encoding.isEmpty()) setEncoding(encoding);
  if (m_streamMediaType.isEmpty()) m_streamMediaType = UnicodeString(info.contentType).toLower();
  m_streamExtension = uri.getExtension().toLower();
  syntaxInputsChanged();
  if (!info.contentLanguage.isEmpty()) m_language = info.contentLanguage;
}

void ZQXmlParserImpl::setInput(std::istream& stream, const UnicodeString& encoding,
                               const UnicodeString& base) {
  closeStream();
  resetParser();
  m_stream = m_baseStream = &stream;
  m_ownsStream = false;
  m_baseUri = base;
  checkStream();
  if (!encoding.isEmpty()) setEncoding(encoding);
}

void ZQXmlParserImpl::pushStream(const UnicodeString& uri, ZQName parseType,
                                 const UnicodeString& encoding) {
  ZQUri base(m_baseUri);
  ZQUri target(base, uri);
  std::istream* stream = target.getIStream();
  if (!stream) {
    // A missing local file is an error; an unreachable remote target yields nothing.
    if (target.isFile())
      throwCommonError(67, ZQSRC_PARSER_PUSH_STREAM, target.toString(), UnicodeString());
    return;
  }
  pushInputState();
  ++m_streamPushes;

  m_stream = m_baseStream = stream;
  m_stringInput = false;
  m_inputUri = target.toString();
  if (target.isAbsolute()) m_baseUri = target.getBaseString();
  m_lineNumber = 1;
  m_columnNumber = 0;
  m_encodingKind = ENCODING_NONE;
  m_encodingName.remove();

  if (parseType == ZQN_text) {
    setEncoding(encoding);
    setParserType(ZQN_text, ZQN_html);
    detectEncoding(true);
    return;
  }
  if (parseType == ZQN_xml) {
    // The included document may have a root of its own.
    m_topLevelSeen = false;
    m_baseDepth = getDepth() - 1;
  }
  detectEncoding(false);
  readTextDeclaration();
}

// The text declaration of an external input.
void ZQXmlParserImpl::readTextDeclaration() {
  // The end of a short input stops the look-ahead here instead of leading into the outer
  // input, whose state would come back too early.
  struct StopAtEnd {
    bool& flag;
    bool saved;
    explicit StopAtEnd(bool& f) : flag(f), saved(f) { flag = true; }
    ~StopAtEnd() { flag = saved; }
  } stopAtEnd(m_stringInput);
  UnicodeString head;
  for (int i = 0; i < 6; ++i) {
    UChar32 c = readChar();
    if (c == END_OF_INPUT) break;
    head.append(c);
    if (isSpace(c)) break;
  }
  UnicodeString word(head);
  if (!word.isEmpty() && isSpace(word.char32At(word.length() - 1)))
    word.truncate(word.length() - 1);
  if (word != u"<?xml") {
    unreadText(head);
    return;
  }
  auto readValue = [this](const char16_t* label) {
    skipSpaces();
    if (readChar() != '=') throwError(163, label, UnicodeString());
    skipSpaces();
    return readLiteral(0);
  };
  skipSpaces();
  ZQName name = readName();
  if (name == ZQN_version) {
    readValue(u"<?xml version");
    skipSpaces();
    name = readName();
  }
  if (name == ZQN_encoding) {
    UnicodeString value = readValue(u"encoding");
    int oldKind = m_encodingKind;
    UnicodeString oldName = m_encodingName;
    setEncoding(value);
    // A mark-less UTF-16 or UTF-32 stream can't change width by declaration.
    if (m_stream == m_baseStream && m_encodingKind != oldKind &&
        (oldKind == ENCODING_UTF16LE || oldKind == ENCODING_UTF16BE ||
         oldKind == ENCODING_UTF32LE || oldKind == ENCODING_UTF32BE)) {
      m_encodingKind = oldKind;
      m_encodingName = oldName;
    }
    skipSpaces();
    name = readName();
  }
  if (name == ZQN_standalone) {
    readValue(u"standalone");
    skipSpaces();
  }
  skipSpaces();
  UChar32 c = readChar();
  if (c == '?')
    c = readChar();
  else {
    throwError(140, charText(c), UnicodeString());
    return;
  }
  if (c != '>') throwError(140, charText(c), UnicodeString());
}

void ZQXmlParserImpl::applyHtmlDefaultCharset() {
  if (m_stream != m_baseStream || m_bomSeen || m_htmlDefaultCharset.isEmpty()) return;
  if (m_encodingKind >= ENCODING_UTF16 && m_encodingKind <= ENCODING_UTF32BE) return;
  setEncoding(m_htmlDefaultCharset);
}

}  // namespace ZQCommonNS
