// The lexer: tokens, separators and separated items, on raw pointers into the own copy of the
// text. Every loop stops at the terminating NUL, so no length is ever tested.
#include "common/ZQTokenizer.h"

#include <utility>

#include "parse/ZQTokenizerScan.h"

namespace ZQCommonNS {

using namespace tokscan;

namespace {

// Stands in for a buffer ICU could not give (only when out of memory).
constexpr char16_t kEmptyText[1] = {0};

const char16_t* terminatedBuffer(UnicodeString& text) {
  const char16_t* p = text.getTerminatedBuffer();
  return p ? p : kEmptyText;
}

}  // namespace

ZQTokenizer::ZQTokenizer(const UnicodeString& text, TokenizerType type)
    : m_text(text.isBogus() ? UnicodeString() : text), m_type(type) {
  m_start = terminatedBuffer(m_text);
  m_ptr = m_start;
}

// A copy keeps the source's pointers on purpose: a caller may save a tokenizer and hand its
// getPtr() back to the original.
ZQTokenizer::ZQTokenizer(const ZQTokenizer& other) = default;
ZQTokenizer& ZQTokenizer::operator=(const ZQTokenizer& other) = default;

// A move takes the text over. A long text's buffer changes hands and keeps its address, so
// the pointers stay as they are. A short text lives inside the string object and is copied,
// and the pointers follow it: left on the source, they would dangle once it goes, which for a
// moved-from object is the usual next step.
ZQTokenizer::ZQTokenizer(ZQTokenizer&& other) noexcept { *this = std::move(other); }

ZQTokenizer& ZQTokenizer::operator=(ZQTokenizer&& other) noexcept {
  if (this == &other) return *this;
  const char16_t* ownBuffer = other.m_text.getBuffer();
  const bool own = ownBuffer != nullptr && other.m_start == ownBuffer;
  const ptrdiff_t offset = other.m_ptr - other.m_start;
  m_text = std::move(other.m_text);
  if (own) {
    // A handed-over buffer still ends in its NUL; a copied short text needs one written.
    const char16_t* moved = std::as_const(m_text).getBuffer();
    m_start = moved == ownBuffer ? moved : terminatedBuffer(m_text);
    m_ptr = m_start + offset;
  } else {
    m_start = other.m_start;
    m_ptr = other.m_ptr;
  }
  m_type = other.m_type;
  m_tokenType = other.m_tokenType;
  m_number = other.m_number;
  m_tokenText = std::move(other.m_tokenText);
  m_pushedBack = other.m_pushedBack;
  m_hasQuote = other.m_hasQuote;
  m_hasDecimalPoint = other.m_hasDecimalPoint;

  // The source is left as a tokenizer over the empty text.
  other.m_text.remove();
  other.m_start = terminatedBuffer(other.m_text);
  other.m_ptr = other.m_start;
  other.m_tokenType = TOKEN_NONE;
  other.m_number = 0.0;
  other.m_pushedBack = false;
  return *this;
}

ZQTokenizer::~ZQTokenizer() = default;

bool ZQTokenizer::checkCSSName() const {
  if (m_type != TOKENIZER_CSS && m_type != TOKENIZER_CSS_UNIT) return false;
  const char16_t* p = m_ptr;
  return p[0] == u'-' && (p[1] == u'z' || p[1] == u'Z') && (p[2] == u'q' || p[2] == u'Q') &&
         p[3] == u'-';
}

int ZQTokenizer::nextToken() {
  if (m_pushedBack) {
    m_pushedBack = false;
    return m_tokenType;
  }
  const char16_t* p = skipSpace(m_ptr);
  const char16_t c = *p;

  if (c == 0) {
    m_ptr = p;
    m_tokenText.remove();
    m_number = 0.0;
    return m_tokenType = TOKEN_END;
  }

  if (c == u'"' || c == u'\'') {
    const char16_t* end = p;
    UnicodeString s = ZQUtil::parseString(p, &end, quoteModeOf(m_type));
    m_number = 0.0;
    if (s.isBogus()) {
      // Not closed: the quote alone is a character.
      m_ptr = p + 1;
      m_tokenText.remove();
      return m_tokenType = c;
    }
    m_ptr = end;
    m_tokenText = std::move(s);
    m_hasQuote = true;
    return m_tokenType = TOKEN_STRING;
  }

  m_ptr = p;
  switch (m_type) {
    case TOKENIZER_CSS:
    case TOKENIZER_CSS_UNIT:
      if (c == u'\\' || startsNCName(p) || checkCSSName()) {
        readCSSName();
        return m_tokenType = TOKEN_NAME;
      }
      break;
    case TOKENIZER_MIME: {
      const char16_t* q = p;
      while (ZQChar::isMIMETokenChar(*q)) ++q;
      if (q != p) return setName(p, q);
      break;
    }
    case TOKENIZER_WORDS:
      if (c != 0x20 && c != 0xA0) {
        const char16_t* q = p;
        while (*q != 0 && *q != 0x20 && *q != 0xA0) ++q;
        return setName(p, q);
      }
      break;
    default:
      if (startsNCName(p)) return setName(p, skipNCNameChars(p, false));
      break;
  }

  if (isDigit(c) || (c == u'.' && isDigit(p[1]))) return readNumber();

  if (c == u'#' && isHexDigit(p[1])) {
    const char16_t* end = p + 1;
    const unsigned v = ZQUtil::parseHexNum(p + 1, &end, -1);
    auto doubled = [v](int shift) { return ((v >> shift) & 0xFu) * 0x11u; };
    int type = 0;
    switch (end - p) {  // the length with the "#"
      case 4:
        m_number = (doubled(8) << 16) | (doubled(4) << 8) | doubled(0);
        type = TOKEN_COLOR;
        break;
      case 5:
        m_number = (doubled(12) << 24) | (doubled(8) << 16) | (doubled(4) << 8) | doubled(0);
        type = TOKEN_COLOR_ALPHA;
        break;
      case 7:
        m_number = v;
        type = TOKEN_COLOR;
        break;
      case 9:
        m_number = v;
        type = TOKEN_COLOR_ALPHA;
        break;
      default:
        break;  // any other length: the "#" stands alone
    }
    if (type != 0) {
      m_ptr = end;
      m_tokenText.remove();
      return m_tokenType = type;
    }
  }

  m_ptr = p + 1;
  m_tokenText.remove();
  m_number = 0.0;
  return m_tokenType = c;
}

int ZQTokenizer::setName(const char16_t* begin, const char16_t* end) {
  m_tokenText.setTo(begin, static_cast<int32_t>(end - begin));
  m_ptr = end;
  m_number = 0.0;
  return m_tokenType = TOKEN_NAME;
}

void ZQTokenizer::readCSSName() {
  m_tokenText.remove();
  m_number = 0.0;
  const char16_t* p = m_ptr;
  // A leading "-zq-" is taken as it stands; its hyphens are name characters anyway.
  for (;;) {
    const char16_t* run = skipNCNameChars(p, false);
    if (run != p) {
      m_tokenText.append(p, static_cast<int32_t>(run - p));
      p = run;
    }
    if (*p != u'\\') break;
    const char16_t e = p[1];
    if (e == 0) {
      ++p;  // a backslash at the end ends the name
      break;
    }
    if (e == 0xA || e == 0xC) {
      p += 2;
    } else if (e == 0xD) {
      p += p[2] == 0xA ? 3 : 2;
    } else if (isHexDigit(e)) {
      const char16_t* end = p + 1;
      const unsigned cp = ZQUtil::parseHexNum(p + 1, &end, 6);
      p = end;
      if (*p == 0x9 || *p == 0xA || *p == 0xC || *p == 0xD || *p == 0x20) ++p;
      m_tokenText.append(static_cast<UChar32>(cp));  // ICU drops what is no code point
    } else {
      int units;
      codePointAt(p + 1, units);
      m_tokenText.append(p + 1, units);
      p += 1 + units;
    }
  }
  m_ptr = p;
}

int ZQTokenizer::readNumber() {
  const char16_t* end = m_ptr;
  bool point = false;
  m_number = ZQUtil::parseNumber(m_ptr, &end, &point);
  m_hasDecimalPoint = point;
  const char16_t* p = end;
  if (*p == u'%') {
    m_tokenText.setTo(u'%');
    ++p;
  } else if (startsNCName(p)) {
    const char16_t* q = skipNCNameChars(p, m_type == TOKENIZER_CSS_UNIT);
    m_tokenText.setTo(p, static_cast<int32_t>(q - p));
    p = q;
  } else {
    m_tokenText.remove();
  }
  m_ptr = p;
  return m_tokenType = TOKEN_NUMBER;
}

bool ZQTokenizer::skipSeparator(char16_t sep) {
  if (m_pushedBack) return false;
  m_ptr = skipSpace(m_ptr);
  if (sep == 0 || *m_ptr != sep) return false;
  m_ptr = skipSpace(m_ptr + 1);
  return true;
}

bool ZQTokenizer::scanSeparator(char16_t sep) const {
  if (m_pushedBack) return false;
  return sep != 0 && *skipSpace(m_ptr) == sep;
}

UnicodeString ZQTokenizer::nextSeparatedValue(char16_t sep, bool keepQuotes) {
  if (m_pushedBack) {
    m_pushedBack = false;
    return m_tokenText;
  }
  const char16_t* p = skipSpace(m_ptr);
  m_tokenText.remove();
  if (*p == 0) {
    m_ptr = p;
    m_tokenType = TOKEN_END;
    return m_tokenText;
  }

  int quoted = 0;
  int unquoted = 0;
  bool unterminated = false;
  bool atSeparator = false;
  for (;;) {
    const char16_t c = *p;
    if (c == u'"' || c == u'\'') {
      const char16_t* end = p;
      UnicodeString s = ZQUtil::parseString(p, &end, quoteModeOf(m_type));
      if (s.isBogus()) {
        const char16_t* q = p;
        while (*q != 0) ++q;
        m_tokenText.append(p, static_cast<int32_t>(q - p));
        p = q;
        unterminated = true;
      } else {
        m_tokenText.append(c).append(s).append(c);
        p = end;
      }
      m_hasQuote = true;
      ++quoted;
    } else {
      const char16_t* q = p;
      while (*q != 0 && *q != sep && *q != u'"' && *q != u'\'') ++q;
      m_tokenText.append(p, static_cast<int32_t>(q - p));
      p = q;
      m_hasQuote = false;
      ++unquoted;
    }

    const char16_t* afterSpace = skipSpace(p);
    const bool skipped = afterSpace != p;
    p = afterSpace;
    if (*p == 0 || sep == 0 || isSpace(sep)) break;
    if (*p == sep) {
      atSeparator = true;
      break;
    }
    if (skipped) m_tokenText.append(u' ');
  }
  if (atSeparator) p = skipSpace(p + 1);
  m_ptr = p;
  m_tokenType = TOKEN_STRING;

  if (quoted == 1 && unquoted == 0 && !keepQuotes) {
    m_tokenText.remove(0, 1);
    if (!unterminated) m_tokenText.truncate(m_tokenText.length() - 1);
  }
  return m_tokenText;
}

}  // namespace ZQCommonNS
