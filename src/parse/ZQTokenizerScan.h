// Character tests and small scanners shared by the tokenizer's sources and the parser.
#pragma once

#include <unicode/utf16.h>

#include "common/ZQChar.h"
#include "common/ZQTokenizer.h"
#include "common/ZQUtil.h"

namespace ZQCommonNS::tokscan {

/// The tokenizer's white space: tab, LF, CR and space; form feed is not one of them.
constexpr bool isSpace(char16_t c) { return c == 0x20 || c == 0x9 || c == 0xA || c == 0xD; }

constexpr bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

constexpr bool isHexDigit(char16_t c) {
  return isDigit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

inline const char16_t* skipSpace(const char16_t* p) {
  while (isSpace(*p)) ++p;
  return p;
}

/// The code point at `p` and its length in units. The buffer ends in a NUL, so the unit after
/// a lead surrogate can always be read.
inline int32_t codePointAt(const char16_t* p, int& units) {
  const char16_t c = p[0];
  if (U16_IS_LEAD(c) && U16_IS_TRAIL(p[1])) {
    units = 2;
    return U16_GET_SUPPLEMENTARY(c, p[1]);
  }
  units = 1;
  return c;
}

/// Behind a run of NCName characters starting at `p` (which may be `p` itself).
inline const char16_t* skipNCNameChars(const char16_t* p, bool stopAtHyphen) {
  for (;;) {
    int units;
    const int32_t c = codePointAt(p, units);
    if (c == 0 || !ZQChar::isNCNameChar(c) || (stopAtHyphen && c == u'-')) return p;
    p += units;
  }
}

inline bool startsNCName(const char16_t* p) {
  int units;
  return ZQChar::isNCNameStartChar(codePointAt(p, units));
}

/// The quote mode of `parseString` for a tokenizer type.
constexpr ZQUtil::QuoteMode quoteModeOf(ZQTokenizer::TokenizerType type) {
  switch (type) {
    case ZQTokenizer::TOKENIZER_CSS:
    case ZQTokenizer::TOKENIZER_CSS_UNIT:
      return ZQUtil::QUOTE_CSS_STRING;
    case ZQTokenizer::TOKENIZER_EXPRESSION2:
      return ZQUtil::QUOTE_ANY;
    default:
      return ZQUtil::QUOTE_ANY_DOUBLED;
  }
}

}  // namespace ZQCommonNS::tokscan
