// Single values of property and attribute texts, and pseudo-attribute lists.
#include "common/ZQParser.h"

#include "parse/ZQTokenizerScan.h"

namespace ZQCommonNS {

using namespace tokscan;

ZQValue ZQParser::parse(const UnicodeString& text, ZQTokenizer::TokenizerType type) {
  return parse(text, 0, type);
}

ZQValue ZQParser::parse(const UnicodeString& text, int flags, ZQTokenizer::TokenizerType type) {
  ZQTokenizer tokenizer(text, type);
  ZQValue value = tokenizer.nextTokenValueSigned();
  if (!value.isNull()) {
    bool accepted;
    switch (tokenizer.getTokenType()) {
      case ZQTokenizer::TOKEN_COLOR:
      case ZQTokenizer::TOKEN_COLOR_ALPHA:
        accepted = (flags & PARSE_NO_COLOR) == 0;
        break;
      case ZQTokenizer::TOKEN_NUMBER:
        accepted = (flags & PARSE_NO_NUMBER) == 0;
        break;
      case ZQTokenizer::TOKEN_STRING:
      case ZQTokenizer::TOKEN_NAME:
        accepted = true;
        break;
      default:
        accepted = false;
        break;
    }
    if (accepted && tokenizer.nextToken() == ZQTokenizer::TOKEN_END) return value;
  }
  // Anything else is the text itself, for whoever knows more about it.
  return ZQValue(text, ZQUNIT_NONE);
}

ZQValue ZQParser::parseNonNumeric(const UnicodeString& text, ZQTokenizer::TokenizerType type) {
  return parse(text, PARSE_NO_NUMBER | PARSE_NO_COLOR, type);
}

namespace {

// Attribute syntax on the caller's own buffer: every index is checked against the length,
// since this text need not end in a NUL.
struct AttributeReader {
  const char16_t* s;
  int32_t n;
  int32_t i = 0;

  char16_t at(int32_t k) const { return k < n ? s[k] : 0; }
  bool atEnd() const { return i >= n; }
  void skipSpace() {
    while (i < n && isSpace(s[i])) ++i;
  }
  int32_t codePoint(int32_t k, int32_t& units) const {
    const char16_t c = at(k);
    if (U16_IS_LEAD(c) && k + 1 < n && U16_IS_TRAIL(s[k + 1])) {
      units = 2;
      return U16_GET_SUPPLEMENTARY(c, s[k + 1]);
    }
    units = k < n ? 1 : 0;
    return k < n ? c : 0;
  }
  // An NCName at the position, or the empty string when none starts here.
  bool readName(UnicodeString& name) {
    int32_t units;
    if (atEnd() || !ZQChar::isNCNameStartChar(codePoint(i, units))) return false;
    const int32_t begin = i;
    i += units;
    while (i < n) {
      const int32_t c = codePoint(i, units);
      if (!ZQChar::isNCNameChar(c)) break;
      i += units;
    }
    name.setTo(s + begin, i - begin);
    return true;
  }
};

}  // namespace

bool ZQParser::parseAttributes(const UnicodeString& text, AttributeMap& attributes,
                               unsigned int flags) {
  attributes.clear();
  const bool tolerant = (flags & ATTRIBUTES_TOLERANT) != 0;
  AttributeReader r{text.getBuffer(), text.isBogus() ? 0 : text.length()};
  UnicodeString nameText;
  for (;;) {
    r.skipSpace();
    if (r.atEnd()) return true;

    bool ok = false;
    if (r.readName(nameText)) {
      r.skipSpace();
      if (r.at(r.i) == u'=') {
        ++r.i;
        r.skipSpace();
        const char16_t quote = r.at(r.i);
        if (quote == u'"' || quote == u'\'') {
          const int32_t begin = r.i + 1;
          int32_t end = begin;
          while (end < r.n && r.s[end] != quote) ++end;
          if (end < r.n || tolerant) {
            // In tolerant mode an open value runs to the end of the text.
            UnicodeString value(r.s + begin, end - begin);
            const bool inserted = attributes.emplace(ZQName(nameText), std::move(value)).second;
            r.i = end < r.n ? end + 1 : end;
            if (!inserted && (flags & ATTRIBUTES_DUPLICATES_OK) == 0) return true;
            ok = true;
          }
        }
      }
    }
    if (ok) continue;
    if (!tolerant) {
      attributes.clear();
      return false;
    }
    if (!r.atEnd()) ++r.i;  // tolerant: go on one character further
  }
}

}  // namespace ZQCommonNS
