// The value readers of the tokenizer: numbers with units, signs, exponents and whole
// parenthesised forms.
#include <algorithm>
#include <array>
#include <cmath>
#include <string_view>

#include <unicode/locid.h>

#include "common/ZQColor.h"
#include "common/ZQParser.h"
#include "common/ZQTokenizer.h"
#include "parse/ZQTokenizerScan.h"

namespace ZQCommonNS {

using namespace tokscan;

namespace {

// A unit name in lower case, and its unit.
struct UnitName {
  char16_t text[8];
  int length;
  ZQUnitType unit;
};

// Every unit that has a text, in lower case, and "vm" as a second spelling of "vmin". Built
// once from the value's own unit texts, so the two lists cannot drift apart.
struct UnitNames {
  std::array<UnitName, 64> names{};
  int count = 0;

  UnitNames() {
    for (int u = ZQUNIT_PERCENT + 1; u < 64; ++u) {
      UnicodeString text = ZQValue::getUnitString(static_cast<ZQUnitType>(u));
      if (text.isEmpty()) continue;
      add(text.toLower(), static_cast<ZQUnitType>(u));
    }
    add(UnicodeString(u"vm"), ZQUNIT_VMIN);
  }
  void add(const UnicodeString& text, ZQUnitType unit) {
    if (count >= static_cast<int>(names.size()) || text.length() >= 8) return;
    UnitName& n = names[static_cast<size_t>(count++)];
    text.extract(0, text.length(), n.text);
    n.length = text.length();
    n.unit = unit;
  }
  ZQUnitType find(const UnicodeString& lower) const {
    const std::u16string_view key(lower.getBuffer(), static_cast<size_t>(lower.length()));
    for (int i = 0; i < count; ++i) {
      const UnitName& n = names[static_cast<size_t>(i)];
      if (std::u16string_view(n.text, static_cast<size_t>(n.length)) == key) return n.unit;
    }
    return ZQUNIT_NONE;
  }
};

const UnitNames& unitNames() {
  static const UnitNames names;
  return names;
}

// Lower case in place: by hand for ASCII, which needs no allocation, through ICU otherwise.
void toLowerInPlace(UnicodeString& text) {
  const int32_t n = text.length();
  bool ascii = true;
  for (int32_t i = 0; i < n && ascii; ++i) ascii = text.charAt(i) < 0x80;
  if (!ascii) {
    text.toLower(icu::Locale::getRoot());
    return;
  }
  for (int32_t i = 0; i < n; ++i) {
    const char16_t c = text.charAt(i);
    if (c >= u'A' && c <= u'Z') text.setCharAt(i, static_cast<char16_t>(c + 0x20));
  }
}

ZQValue characterValue(int code) {
  ZQValue v(code);
  v.setUnitType(ZQUNIT_CHAR);
  return v;
}

// Deeper forms than this are read flat, so a text of many "(" cannot exhaust the stack.
constexpr int kMaxFuncDepth = 200;

}  // namespace

ZQValue ZQTokenizer::nextTokenValue(bool negate) {
  const int token = nextToken();
  switch (token) {
    case TOKEN_END:
      return ZQValue();
    case TOKEN_COLOR_ALPHA: {
      const auto rgba = static_cast<unsigned>(m_number);
      ZQColor color(rgba >> 8);
      color.setAlpha(static_cast<int>(rgba & 0xFFu));
      return ZQValue(color);
    }
    case TOKEN_COLOR:
      return ZQValue(ZQColor(static_cast<unsigned>(m_number)));
    case TOKEN_STRING:
      return ZQValue(m_tokenText, ZQUNIT_LITERAL);
    case TOKEN_NAME:
      return ZQValue(ZQName(m_tokenText));
    case TOKEN_NUMBER:
      break;
    default:
      return characterValue(token);
  }

  if (negate) m_number = -m_number;
  if (!m_tokenText.isEmpty()) {
    if (m_tokenText.charAt(0) == u'%') {
      return ZQValue(static_cast<float>(m_number), ZQUNIT_PERCENT);
    }
    const int32_t written = m_tokenText.length();
    toLowerInPlace(m_tokenText);
    const ZQUnitType unit = unitNames().find(m_tokenText);
    if (unit != ZQUNIT_NONE) return ZQValue(static_cast<float>(m_number), unit);
    // Not a unit: the letters are read again as a name of their own ("12foo"). The clamp
    // only matters for a pushed-back number whose position a caller has moved meanwhile.
    m_ptr -= std::min<ptrdiff_t>(written, m_ptr - m_start);
    m_tokenText.remove();
  }
  if (!m_hasDecimalPoint && m_number >= -2147483648.0 && m_number <= 2147483647.0 &&
      m_number == std::floor(m_number)) {
    return ZQValue(static_cast<int>(m_number));
  }
  return ZQValue(static_cast<float>(m_number), ZQUNIT_NUMBER);
}

ZQValue ZQTokenizer::nextTokenValueSigned(bool exp) {
  ZQValue value;
  bool done = false;
  if (m_pushedBack) {
    value = nextTokenValue(false);
    if (!value.isCharacter()) {
      done = true;
    } else if (m_ptr > m_start) {
      // A pushed-back character is read again, so that a "-" still works as a sign.
      --m_ptr;
    }
  }
  if (!done) {
    m_ptr = skipSpace(m_ptr);
    const char16_t c = *m_ptr;
    if ((c == u'+' || c == u'-') &&
        (isDigit(m_ptr[1]) || (m_ptr[1] == u'.' && isDigit(m_ptr[2])))) {
      const char16_t* sign = m_ptr;
      ++m_ptr;
      value = nextTokenValue(c == u'-');
      if (m_tokenType != TOKEN_NUMBER) {
        // Not a number in this tokenizer type (a MIME token, a word): read from the sign.
        m_ptr = sign;
        value = nextTokenValue(false);
      }
    } else {
      value = nextTokenValue(false);
    }
  }
  if (exp) eNotation(value);
  return value;
}

ZQValue ZQTokenizer::nextTokenValueSigned() {
  return nextTokenValueSigned(m_type == TOKENIZER_CSS || m_type == TOKENIZER_CSS_UNIT);
}

ZQValue ZQTokenizer::nextTokenValueExp() { return nextTokenValueSigned(true); }

std::pair<double, double> ZQTokenizer::eNotation(ZQValue& value) {
  const double mantissa = m_number;
  double exponent = 0.0;
  if (value.isNumber() && (*m_ptr == u'e' || *m_ptr == u'E')) {
    const char16_t* letter = m_ptr;
    ++m_ptr;
    ZQValue e = nextTokenValueSigned(false);
    // Only a number token is an exponent: a character is an integer too ("1e)"), and a colour
    // ("1e#abc") has a number, but neither is a power of ten.
    if (m_tokenType == TOKEN_NUMBER && e.isNumericalValue()) {
      exponent = m_number;
      value = ZQValue(static_cast<float>(mantissa * std::pow(10.0, exponent)), e.getUnitType());
    } else {
      // Only the position goes back; the token read stays the last one.
      m_ptr = letter;
    }
  }
  return {mantissa, exponent};
}

double ZQTokenizer::nextTokenDoubleExp() {
  ZQValue value = nextTokenValueSigned(false);
  const auto [mantissa, exponent] = eNotation(value);
  return exponent == 0.0 ? mantissa : mantissa * std::pow(10.0, exponent);
}

ZQValue ZQTokenizer::nextTokenValueFunc(bool asString) { return nextTokenValueFunc(asString, 0); }

ZQValue ZQTokenizer::nextTokenValueFunc(bool asString, int depth) {
  if (m_pushedBack && m_tokenType > 32) {
    if (m_ptr > m_start) --m_ptr;
    m_pushedBack = false;
  }
  m_ptr = skipSpace(m_ptr);
  const char16_t* begin = m_ptr;
  ZQValue value = nextTokenValueExp();

  const char16_t* open = nullptr;
  ZQName name;
  if (value.isCharacter() && value.getCharacterValue() == u'(') {
    open = m_ptr - 1;
  } else if (value.isName() && *m_ptr == u'(') {
    name = value.getNameValue();
    open = m_ptr++;
  } else {
    return value;
  }

  // The arguments, up to ")" or the end of the text; commas are arguments like any other.
  int count = 0;
  ZQValue first;
  bool closed = false;
  if (depth < kMaxFuncDepth) {
    for (;;) {
      ZQValue arg = nextTokenValueFunc(false, depth + 1);
      if (arg.isNull()) break;
      if (arg.isCharacter() && arg.getCharacterValue() == u')') {
        closed = true;
        break;
      }
      if (count++ == 0) first = std::move(arg);
    }
  } else {
    // Too deep to recurse: the form is only delimited, counting its parentheses.
    count = 2;
    for (int level = 0;;) {
      ZQValue arg = nextTokenValueExp();
      if (arg.isNull()) break;
      if (!arg.isCharacter()) continue;
      if (arg.getCharacterValue() == u'(') {
        ++level;
      } else if (arg.getCharacterValue() == u')' && level-- == 0) {
        closed = true;
        break;
      }
    }
  }

  auto text = [](const char16_t* from, const char16_t* to) {
    return UnicodeString(from, static_cast<int32_t>(to - from));
  };
  if (asString || name.isEmpty() ||
      (name != ZQN_format && name != ZQN_local && name != ZQN_rgb && name != ZQN_url)) {
    // A bare parenthesis, or a function that whoever knows it takes apart later.
    return ZQValue(UnicodeString(name.toString()).append(text(open, m_ptr)), ZQUNIT_NONE);
  }
  if (name == ZQN_rgb) return ZQParser::parseColor(text(begin, m_ptr), false);
  if (name == ZQN_url) return ZQValue(ZQUtil::unquoteUri(text(begin, m_ptr)), ZQUNIT_URI);

  const ZQUnitType unit = name == ZQN_format ? ZQUNIT_FORMAT : ZQUNIT_LOCAL;
  if (count == 1) return ZQValue(first.toString(), unit);
  return ZQValue(text(open + 1, closed ? m_ptr - 1 : m_ptr).trim(), unit);
}

}  // namespace ZQCommonNS
