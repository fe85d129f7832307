// The header of a "data:" URI, read with the MIME tokenizer so that its lexical rules are the
// same as for any other header parameter list.
#include <climits>
#include <cmath>

#include <unicode/locid.h>

#include "common/ZQDataUri.h"
#include "common/ZQTokenizer.h"
#include "common/ZQUtil.h"
#include "io/ZQUriText.h"

namespace ZQCommonNS {

namespace {

int truncateToInt(double value) {
  if (std::isnan(value)) return 0;
  if (value >= static_cast<double>(INT_MAX)) return INT_MAX;
  if (value <= static_cast<double>(INT_MIN)) return INT_MIN;
  return static_cast<int>(value);
}

ZQNameEnum nameOf(const UnicodeString& text) {
  return text.isEmpty() ? ZQN_EMPTY : ZQNameTable::getSharedNameEnum(text);
}

bool isCharacter(const ZQValue& value, char16_t c) { return value.getCharacterValue() == c; }

}  // namespace

ZQDataUri::ZQDataUri(const UnicodeString& str, URISTRTYPE type, const ZQXmlCatalogs* catalogs)
    : ZQUri(str, type, catalogs) {
  init();
}

ZQDataUri::ZQDataUri(const UnicodeString& str, const ZQXmlCatalogs* catalogs)
    : ZQUri(str, URISTR_AUTO, catalogs) {
  init();
}

ZQDataUri::ZQDataUri(const ZQUri& base, const UnicodeString& str, URISTRTYPE type,
                     const ZQXmlCatalogs* catalogs)
    : ZQUri(base, str, type, catalogs) {
  init();
}

ZQDataUri::ZQDataUri(const ZQUri& base, const UnicodeString& str, const ZQXmlCatalogs* catalogs)
    : ZQUri(base, str, URISTR_AUTO, catalogs) {
  init();
}

ZQDataUri::~ZQDataUri() = default;

void ZQDataUri::init() {
  m_dataPos = -1;
  m_base64 = false;
  m_params = std::make_shared<ParamMap>();

  const int colon = uritext::findSchemeEnd(uritext::view(uri));
  if (colon != 4 || uri.compare(0, 4, UnicodeString(u"data")) != 0) return;

  ZQTokenizer tokenizer(uri.tempSubString(colon + 1), ZQTokenizer::TOKENIZER_MIME);
  int token = tokenizer.nextToken();
  if (token == ZQTokenizer::TOKEN_NAME) {
    UnicodeString type = tokenizer.getTokenText();
    if (tokenizer.nextToken() != u'/') return;
    if (tokenizer.nextToken() != ZQTokenizer::TOKEN_NAME) return;
    type += u'/';
    type += tokenizer.getTokenText();
    m_mediaType = ZQUri::unescape(type);
    token = tokenizer.nextToken();
  }

  for (;;) {
    if (token == u',') break;
    if (token != u';') return;
    // A parameter: a name, then "=" and a value, or the base64 marker, which must stand last.
    const ZQNameEnum name = nameOf(ZQUri::unescape(tokenizer.nextTokenValue().getStringValue()));
    if (name == ZQN_base64) {
      m_base64 = true;
      if (tokenizer.nextToken() != u',') return;
      break;
    }
    if (tokenizer.nextToken() != u'=') return;
    UnicodeString value = ZQUri::unescape(tokenizer.nextTokenValue().getStringValue());
    for (;;) {
      const ZQValue part = tokenizer.nextTokenValue();
      if (tokenizer.getTokenType() == ZQTokenizer::TOKEN_END || isCharacter(part, u',') ||
          isCharacter(part, u';')) {
        tokenizer.pushBack();
        break;
      }
      value += ZQUri::unescape(part.toString());
    }
    m_params->emplace(name, value);  // an earlier parameter of the same name stays
    token = tokenizer.nextToken();
  }

  m_dataPos = tokenizer.getOffset() + colon + 1;
  // The data is kept decoded, base64 text included.
  UnicodeString data = ZQUri::unescape(uri.tempSubString(m_dataPos));
  uri.truncate(m_dataPos);
  uri += data;
}

const UnicodeString* ZQDataUri::findParam(ZQNameEnum name) const {
  if (!m_params) return nullptr;
  auto it = m_params->find(name);
  return it == m_params->end() ? nullptr : &it->second;
}

UnicodeString ZQDataUri::getStringParam(ZQNameEnum name) const {
  const UnicodeString* value = findParam(name);
  return value ? *value : UnicodeString();
}

UnicodeString ZQDataUri::getStringParam(const UnicodeString& name) const {
  return getStringParam(nameOf(name));
}

int ZQDataUri::getIntegerParam(ZQNameEnum name, int fallback) const {
  const UnicodeString* value = findParam(name);
  if (!value) return fallback;
  UnicodeString text(*value);
  const char16_t* begin = text.getTerminatedBuffer();
  const char16_t* end = begin;
  bool hasPoint = false;
  const double number = ZQUtil::parseNumber(begin, &end, &hasPoint);
  // No digit at all is the parse's error; anything behind the number makes it no number.
  if (end == begin || end != begin + text.length()) return fallback;
  return truncateToInt(number);
}

int ZQDataUri::getIntegerParam(const UnicodeString& name, int fallback) const {
  return getIntegerParam(nameOf(name), fallback);
}

float ZQDataUri::getRealParam(ZQNameEnum name, float fallback) const {
  const UnicodeString* value = findParam(name);
  if (!value) return fallback;
  UnicodeString text(*value);
  const char16_t* begin = text.getTerminatedBuffer();
  const char16_t* end = begin;
  bool hasPoint = false;
  const double number = ZQUtil::parseNumber(begin, &end, &hasPoint);
  if (end != begin + text.length()) return fallback;
  return static_cast<float>(number);
}

float ZQDataUri::getRealParam(const UnicodeString& name, float fallback) const {
  return getRealParam(nameOf(name), fallback);
}

ZQName ZQDataUri::getLowerNameParam(ZQNameEnum name) const {
  UnicodeString value = getStringParam(name);
  value.toLower(icu::Locale::getRoot());
  return ZQName(value);
}

ZQName ZQDataUri::getLowerNameParam(const UnicodeString& name) const {
  return getLowerNameParam(nameOf(name));
}

std::pair<int, int> ZQDataUri::getPageNumber() const {
  const UnicodeString* value = findParam(ZQN_page);
  if (!value) return {0, 0};
  // Two NULs behind the text: the step over the character after a single number may take
  // the first, and the test for a remaining character then reads the second.
  UnicodeString text(*value);
  text.append(char16_t(0));
  text.append(char16_t(0));
  const char16_t* cursor = text.getTerminatedBuffer();
  const char16_t* end = cursor;
  bool hasPoint = false;
  const double number = ZQUtil::parseNumber(cursor, &end, &hasPoint);
  if (end == cursor) return {0, 0};
  int first = truncateToInt(number);
  int last = first;
  cursor = end;
  if (first > 0) {
    const char16_t separator = *cursor++;
    if (separator == u'-') {
      const double second = ZQUtil::parseNumber(cursor, &end, &hasPoint);
      if (end != cursor) {
        const int page = truncateToInt(second);
        last = page < 1 || page >= first ? page : first;
        cursor = end;
      }
    }
  }
  if (*cursor) return {0, 0};
  return {first < 0 ? 0 : first, last < 0 ? 0 : last};
}

}  // namespace ZQCommonNS
