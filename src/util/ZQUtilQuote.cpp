// Quoting and unquoting of strings in the forms that property values use.
#include <cstdio>

#include "common/ZQString.h"
#include "common/ZQUtil.h"

namespace ZQCommonNS {

namespace {

// The white space that CSS and the expression syntax skip around strings.
inline bool isQuoteSpace(char16_t c) {
  return c == 0x09 || c == 0x0A || c == 0x0C || c == 0x0D || c == 0x20;
}

// The white space that normalizeSpaces and omitSpace know (no form feed).
inline bool isPlainSpace(char16_t c) { return c == 0x09 || c == 0x0A || c == 0x0D || c == 0x20; }

inline bool isHexDigit(char16_t c) {
  return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

inline int hexValue(char16_t c) {
  if (c <= u'9') return c - u'0';
  if (c >= u'a') return c - u'a' + 10;
  return c - u'A' + 10;
}

void appendUnicodeEscape(UnicodeString& out, char16_t c) {
  char buf[8];
  std::snprintf(buf, sizeof buf, "\\u%04X", static_cast<unsigned>(c));
  out.append(UnicodeString(buf, -1, US_INV));
}

// A code point from an escape; what cannot be one becomes U+FFFD.
void appendCodePoint(UnicodeString& out, unsigned long cp) {
  if (cp > 0x10FFFF) cp = 0xFFFD;
  out.append(static_cast<UChar32>(cp));
}

}  // namespace

UnicodeString ZQUtil::quoteString(const UnicodeString& text, QuoteMode mode) {
  const int m = static_cast<int>(mode);
  const int32_t len = text.length();
  const char16_t* s = text.getBuffer();
  if (!s) return text;  // bogus text stays bogus

  char16_t quote = 0;
  if ((m & 3) == 3) {
    quote = u'"';
    if (text.indexOf(u'"') >= 0 && text.indexOf(u'\'') < 0) quote = u'\'';
  } else if (m & 1) {
    quote = u'"';
  } else if (m & 2) {
    quote = u'\'';
  }

  UnicodeString out;
  if (m & QUOTE_UNICODE) {
    out.getBuffer(len + 8);
    out.releaseBuffer(0);
    for (int32_t i = 0; i < len; ++i) {
      char16_t c = s[i];
      if (c < 0x20 || c > 0x7E || c == u'"' || c == u'\'' || c == u'\\' || c == u'`')
        appendUnicodeEscape(out, c);
      else
        out.append(c);
    }
  } else if (m & QUOTE_CSS) {
    for (int32_t i = 0; i < len; ++i) {
      char16_t c = s[i];
      const char16_t* esc = nullptr;
      if (quote && c == quote)
        esc = quote == u'"' ? u"\\22" : u"\\27";
      else if (c == 0x0A)
        esc = u"\\A";
      else if (c == 0x0C)
        esc = u"\\C";
      else if (c == 0x0D)
        esc = u"\\D";
      else if (c == u'\\')
        esc = u"\\5C";
      if (!esc) {
        out.append(c);
        continue;
      }
      out.append(esc, -1);
      // A following space or hex digit would be read as part of the escape.
      if (i + 1 < len && (isQuoteSpace(s[i + 1]) || isHexDigit(s[i + 1]))) out.append(u' ');
    }
  } else if (m & QUOTE_DOUBLED) {
    if (!quote) return text;
    for (int32_t i = 0; i < len; ++i) {
      out.append(s[i]);
      if (s[i] == quote) out.append(quote);
    }
  } else {
    out = text;
  }

  if (quote) {
    UnicodeString quoted;
    quoted.getBuffer(out.length() + 2);
    quoted.releaseBuffer(0);
    quoted.append(quote).append(out).append(quote);
    return quoted;
  }
  return out;
}

UnicodeString ZQUtil::parseString(const char16_t* p, const char16_t** end, QuoteMode mode) {
  if (end) *end = p;
  if (!p) return ZQBogusString::BOGUS_VALUE;
  const int m = static_cast<int>(mode);

  const char16_t* q = p;
  while (isQuoteSpace(*q)) ++q;

  char16_t quote = 0;
  if (m & 3) {
    if ((*q == u'"' && (m & 1)) || (*q == u'\'' && (m & 2)))
      quote = *q++;
    else
      return ZQBogusString::BOGUS_VALUE;
  } else {
    q = p;  // an unquoted string starts before any white space
  }

  UnicodeString out;
  for (;;) {
    char16_t c = *q;
    if (c == 0) {
      if (quote) return ZQBogusString::BOGUS_VALUE;
      break;
    }
    if (quote && c == quote) {
      if ((m & QUOTE_DOUBLED) && q[1] == quote) {
        out.append(quote);
        q += 2;
        continue;
      }
      ++q;
      break;
    }
    if (c == u'\\') {
      // As in quoteString, the highest escape bit decides: with \uXXXX escapes every other
      // backslash stays, even when CSS escapes are asked for too.
      if (m & QUOTE_UNICODE) {
        if (q[1] == u'u') {
          const char16_t* after = q + 2;
          unsigned cp = parseHexNum(after, &after, 4);
          if (after != q + 2) {  // without a digit the backslash is an ordinary character
            appendCodePoint(out, cp);
            q = after;
            continue;
          }
        }
      } else if (m & QUOTE_CSS) {
        char16_t n = q[1];
        if (n == 0) {  // a lone backslash at the end of the text is dropped
          ++q;
          continue;
        }
        if (n == 0x0A || n == 0x0C) {
          q += 2;
          continue;
        }
        if (n == 0x0D) {
          q += (q[2] == 0x0A) ? 3 : 2;
          continue;
        }
        if (isHexDigit(n)) {
          unsigned long cp = 0;
          const char16_t* h = q + 1;
          for (int k = 0; k < 6 && isHexDigit(*h); ++k, ++h) cp = cp * 16 + hexValue(*h);
          if (isQuoteSpace(*h)) ++h;
          appendCodePoint(out, cp);
          q = h;
          continue;
        }
        out.append(n);
        q += 2;
        continue;
      }
    }
    out.append(c);
    ++q;
  }
  if (end) *end = q;
  return out;
}

UnicodeString ZQUtil::unquoteString(const UnicodeString& text, QuoteMode mode) {
  if (text.isBogus()) return ZQBogusString::BOGUS_VALUE;
  UnicodeString trimmed(text);
  trimmed.trim();
  const char16_t* start = trimmed.getTerminatedBuffer();
  if (!start) return ZQBogusString::BOGUS_VALUE;
  const char16_t* end = start;
  UnicodeString result = parseString(start, &end, mode);
  const int32_t len = trimmed.length();
  if (result.isBogus() || end >= start + len) return result;
  // Text is left behind the closing quote: without doubling or CSS escapes a quote inside
  // may have ended the string early, so the outer pair of equal characters decides.
  const int m = static_cast<int>(mode);
  if ((m & (QUOTE_DOUBLED | QUOTE_CSS)) == 0 && len >= 2 &&
      trimmed.charAt(0) == trimmed.charAt(len - 1))
    return UnicodeString(trimmed, 1, len - 2);
  return ZQBogusString::BOGUS_VALUE;
}

UnicodeString ZQUtil::quoteUri(const UnicodeString& uri) {
  UnicodeString out(u"url(\"");
  const int32_t len = uri.length();
  for (int32_t i = 0; i < len; ++i) {
    char16_t c = uri.charAt(i);
    if (c == u'"')
      out.append(u"%22", 3);
    else
      out.append(c);
  }
  out.append(u"\")", 2);
  return out;
}

UnicodeString ZQUtil::normalizeSpaces(const UnicodeString& text) {
  if (text.isBogus()) return text;
  UnicodeString out;
  const int32_t len = text.length();
  bool pendingSpace = false;
  for (int32_t i = 0; i < len; ++i) {
    char16_t c = text.charAt(i);
    if (isPlainSpace(c)) {
      pendingSpace = !out.isEmpty();
      continue;
    }
    if (pendingSpace) out.append(u' ');
    pendingSpace = false;
    out.append(c);
  }
  return out;
}

UnicodeString ZQUtil::omitSpace(const UnicodeString& text) {
  if (text.isBogus()) return text;
  UnicodeString out;
  const int32_t len = text.length();
  for (int32_t i = 0; i < len; ++i) {
    char16_t c = text.charAt(i);
    if (!isPlainSpace(c)) out.append(c);
  }
  return out;
}

}  // namespace ZQCommonNS
