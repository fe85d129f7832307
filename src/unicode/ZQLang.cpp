// Language tags over ICU's Locale.
#include "common/ZQLang.h"

#include <array>
#include <cstring>
#include <string>
#include <string_view>
#include <unordered_map>

#include "common/ZQLock.h"
#include "core/ZQUnload.h"
#include "core/platform/ZQPlatformLocale.h"
#include "unicode/ZQLangInternal.h"

namespace ZQCommonNS {

namespace {

struct TagPair {
  std::string_view bibliographic;
  std::string_view terminological;
};

// Bibliographic ISO 639-2 codes, which ICU does not know, with their terminological twins,
// which it does. "none" is the tag of no language.
constexpr std::array<TagPair, 24> kLangTagTable = {{
    {"none", ""},   {"alb", "sqi"}, {"arm", "hye"}, {"baq", "eus"}, {"bur", "mya"}, {"chi", "zho"},
    {"scr", "hrv"}, {"cze", "ces"}, {"fre", "fra"}, {"geo", "kat"}, {"ger", "deu"}, {"gre", "ell"},
    {"ice", "isl"}, {"jav", "jaw"}, {"mac", "mkd"}, {"dut", "nld"}, {"may", "msa"}, {"mao", "mri"},
    {"per", "fas"}, {"rum", "ron"}, {"scc", "srp"}, {"slo", "slk"}, {"tib", "bod"}, {"wel", "cym"},
}};

// Whether the code units [start, start + length) of `s` spell `key` exactly (case matters).
bool spells(const UnicodeString& s, int32_t start, int32_t length, std::string_view key) {
  if (static_cast<size_t>(length) != key.size()) return false;
  for (int32_t i = 0; i < length; ++i) {
    if (s.charAt(start + i) != static_cast<char16_t>(static_cast<unsigned char>(key[i]))) {
      return false;
    }
  }
  return true;
}

const TagPair* findTag(const UnicodeString& s, int32_t length) {
  for (const TagPair& pair : kLangTagTable) {
    if (spells(s, 0, length, pair.bibliographic)) return &pair;
  }
  return nullptr;
}

constexpr bool isAsciiLetter(char16_t c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// ISO 639-3 languages that ICU has no three-letter entry for; isTypicalScript names them, so
// they answer for themselves.
constexpr std::array<std::string_view, 5> kIso639_3Only = {"kht", "ksw", "mnw", "aii", "cld"};

// The three-letter language of each locale hash. The hash is the key, so a locale whose hash
// another locale already holds shares that entry; the entry remembers whose it is, so such a
// locale is answered afresh rather than with the other one's language.
struct Iso3Entry {
  std::string localeName;
  std::string iso3;
};

struct Iso3Cache {
  ZQLock lock;
  std::unordered_map<int32_t, Iso3Entry> map;
};

Iso3Cache* s_iso3Cache = nullptr;

void releaseIso3Cache() {
  delete s_iso3Cache;
  s_iso3Cache = nullptr;
}

// Made on first need and freed when the library is unloaded, after every other static object,
// so that no static destructor finds it gone.
Iso3Cache& iso3Cache() {
  static Iso3Cache* cache = [] {
    s_iso3Cache = new Iso3Cache;
    registerUnloadCleanup(&releaseIso3Cache);
    return s_iso3Cache;
  }();
  return *cache;
}

std::string narrow(const UnicodeString& s) {
  std::string out;
  s.toUTF8String(out);
  return out;
}

UnicodeString wide(const char* s) { return UnicodeString::fromUTF8(s ? s : ""); }

icu::Locale localeOf(const UnicodeString& tag) {
  return icu::Locale(narrow(ZQLang::normalizeLangTag(tag)).c_str());
}

// The three-letter language as a narrow string, through the cache.
std::string iso3Of(const icu::Locale& locale) {
  const int32_t hash = locale.hashCode();
  const char* name = locale.getName();
  Iso3Cache& cache = iso3Cache();
  {
    ZQMutex guard(cache.lock);
    auto it = cache.map.find(hash);
    if (it != cache.map.end() && it->second.localeName == name) return it->second.iso3;
  }
  std::string iso3 = locale.getISO3Language();
  if (iso3.empty()) {
    std::string_view language = locale.getLanguage();
    for (std::string_view only : kIso639_3Only) {
      if (language == only) return std::string(language);
    }
  }
  ZQMutex guard(cache.lock);
  cache.map.try_emplace(hash, Iso3Entry{name, iso3});
  return iso3;
}

const char* tagForScript(int32_t code) {
  switch (code) {
    case USCRIPT_ARABIC:
      return "ar";
    case USCRIPT_ARMENIAN:
      return "hy";
    case USCRIPT_BENGALI:
      return "bn";
    case USCRIPT_CYRILLIC:
      return "ru";
    case USCRIPT_DEVANAGARI:
      return "hi";
    case USCRIPT_ETHIOPIC:
      return "am";
    case USCRIPT_GEORGIAN:
      return "ka";
    case USCRIPT_GREEK:
      return "el";
    case USCRIPT_GUJARATI:
      return "gu";
    case USCRIPT_GURMUKHI:
      return "pa";
    case USCRIPT_HEBREW:
      return "he";
    case USCRIPT_KANNADA:
      return "kn";
    case USCRIPT_KHMER:
      return "km";
    case USCRIPT_LAO:
      return "lo";
    case USCRIPT_LATIN:
      return "en";
    case USCRIPT_MALAYALAM:
      return "ml";
    case USCRIPT_MONGOLIAN:
      return "mn";
    case USCRIPT_MYANMAR:
      return "my";
    case USCRIPT_ORIYA:
      return "or";
    case USCRIPT_SINHALA:
      return "si";
    case USCRIPT_SYRIAC:
      return "syr";
    case USCRIPT_TAMIL:
      return "ta";
    case USCRIPT_TELUGU:
      return "te";
    case USCRIPT_THAI:
      return "th";
    case USCRIPT_TIBETAN:
      return "bo";
    default:
      return "";  // Han, Hangul and kana are shared by several languages
  }
}

struct ScriptLanguages {
  int32_t code;
  std::string_view iso3List;  // three-letter codes, one space apart
};

// The languages usually written in each script.
constexpr ScriptLanguages kTypicalLanguages[] = {
    {USCRIPT_ARABIC, "ara fas urd"},
    {USCRIPT_ARMENIAN, "hye"},
    {USCRIPT_BENGALI, "ben"},
    {USCRIPT_CYRILLIC, "bul hrv kaz rus srp ukr"},
    {USCRIPT_DEVANAGARI, "hin"},
    {USCRIPT_ETHIOPIC, "amh"},
    {USCRIPT_GEORGIAN, "kat"},
    {USCRIPT_GREEK, "ell"},
    {USCRIPT_GUJARATI, "guj"},
    {USCRIPT_GURMUKHI, "pan"},
    {USCRIPT_HAN, "jpn zho"},
    {USCRIPT_HANGUL, "kor"},
    {USCRIPT_HEBREW, "heb"},
    {USCRIPT_HIRAGANA, "jpn"},
    {USCRIPT_KATAKANA, "jpn"},
    {USCRIPT_JAPANESE, "jpn"},
    {USCRIPT_KANNADA, "kan"},
    {USCRIPT_KHMER, "khm"},
    {USCRIPT_LAO, "lao"},
    {USCRIPT_LATIN,
     "afr aze cat ces cym dan deu eng epo est eus fin fra gle hrv hun ind isl ita kaz "
     "lat lav lit mlt msa nld nno nob nor pol por ron slk slv spa srp swa swe tur vie"},
    {USCRIPT_MALAYALAM, "mal"},
    {USCRIPT_MONGOLIAN, "mon"},
    {USCRIPT_MYANMAR, "kar kht ksw mnw mya"},
    {USCRIPT_ORIYA, "ori"},
    {USCRIPT_SINHALA, "sin"},
    {USCRIPT_SYRIAC, "aii cld syr"},
    {USCRIPT_TAMIL, "tam"},
    {USCRIPT_TELUGU, "tel"},
    {USCRIPT_THAI, "tha"},
    {USCRIPT_TIBETAN, "bod"},
    {USCRIPT_SIMPLIFIED_HAN, "zho"},
    {USCRIPT_TRADITIONAL_HAN, "zho"},
};

// The list of the script, empty for a script not listed.
std::string_view typicalLanguages(int32_t code) {
  for (const ScriptLanguages& row : kTypicalLanguages) {
    if (row.code == code) return row.iso3List;
  }
  return {};
}

bool listHas(std::string_view list, std::string_view iso3) {
  if (iso3.size() != 3) return false;
  for (size_t pos = 0; pos + 3 <= list.size(); pos += 4) {
    if (list.substr(pos, 3) == iso3) return true;
  }
  return false;
}

}  // namespace

size_t iso3LanguageCacheSize() {
  Iso3Cache& cache = iso3Cache();
  ZQMutex guard(cache.lock);
  return cache.map.size();
}

bool iso3LanguageCacheLookup(int32_t hash, std::string& iso3) {
  Iso3Cache& cache = iso3Cache();
  ZQMutex guard(cache.lock);
  auto it = cache.map.find(hash);
  if (it == cache.map.end()) return false;
  iso3 = it->second.iso3;
  return true;
}

ZQLang::ZQLang() : icu::Locale("") {}
ZQLang::ZQLang(const ZQLang& other) = default;
ZQLang& ZQLang::operator=(const ZQLang& other) {
  icu::Locale::operator=(other);
  return *this;
}
ZQLang::~ZQLang() = default;

ZQLang::ZQLang(const icu::Locale& locale) : icu::Locale(locale) {}

ZQLang::ZQLang(const UnicodeString& tag) : icu::Locale(localeOf(tag)) {}

ZQLang::ZQLang(const char* tag) : ZQLang(wide(tag)) {}

ZQLang::ZQLang(const UnicodeString& tag, const UnicodeString& country)
    : icu::Locale(narrow(normalizeLangTag(tag)).c_str(),
                  country == UNICODE_STRING_SIMPLE("none") ? "" : narrow(country).c_str()) {}

ZQLang::ZQLang(ZQName name) : ZQLang() {
  if (name != ZQN_none) *this = ZQLang(name.toString());
}

ZQLang::ZQLang(ZQNameEnum name) : ZQLang(ZQName(name)) {}

ZQLang::ZQLang(ZQScript script) : ZQLang(tagForScript(script.code)) {}

UnicodeString ZQLang::normalizeLangTag(const UnicodeString& tag) {
  const int32_t length = tag.length();
  if (length >= 4 && !isAsciiLetter(tag.charAt(3))) {
    const TagPair* pair = findTag(tag, 3);
    if (!pair) return tag;
    UnicodeString result(pair->terminological.data(),
                         static_cast<int32_t>(pair->terminological.size()), US_INV);
    result.append(tag, 3, length - 3);
    return result;
  }
  const TagPair* pair = findTag(tag, length);
  if (!pair) return tag;
  return UnicodeString(pair->terminological.data(),
                       static_cast<int32_t>(pair->terminological.size()), US_INV);
}

UnicodeString ZQLang::getLanguage() const { return wide(icu::Locale::getLanguage()); }
UnicodeString ZQLang::getCountry() const { return wide(icu::Locale::getCountry()); }
UnicodeString ZQLang::getLangScript() const { return wide(icu::Locale::getScript()); }

UnicodeString ZQLang::getISO3Language() const { return wide(iso3Of(*this).c_str()); }

UnicodeString ZQLang::getISO3Country() const { return wide(icu::Locale::getISO3Country()); }

ZQName ZQLang::getLanguageName() const { return ZQName(getISO3Language()); }

ZQLang::LanguageID ZQLang::getLCID() const { return icu::Locale::getLCID(); }

namespace {

UnicodeString joined(UnicodeString head, const char* a, const char* b = nullptr) {
  for (const char* part : {a, b}) {
    if (part && *part) head.append(u'-').append(wide(part));
  }
  return head;
}

}  // namespace

UnicodeString ZQLang::toString() const { return joined(getLanguage(), icu::Locale::getCountry()); }

UnicodeString ZQLang::toISO3String() const {
  return joined(getISO3Language(), icu::Locale::getCountry());
}

UnicodeString ZQLang::toFullString() const {
  return joined(getLanguage(), icu::Locale::getScript(), icu::Locale::getCountry());
}

ZQScript ZQLang::toScript() const { return ZQScript(toISO3String()); }

bool ZQLang::isTypicalScript(ZQScript script) const {
  std::string_view languages = typicalLanguages(script.code);
  if (languages.empty()) return false;
  return listHas(languages, iso3Of(*this));
}

bool ZQLang::isNullLang() const { return *icu::Locale::getLanguage() == '\0'; }

bool ZQLang::operator<(const ZQLang& other) const {
  int order = std::strcmp(icu::Locale::getLanguage(), other.icu::Locale::getLanguage());
  if (order != 0) return order < 0;
  return std::strcmp(icu::Locale::getCountry(), other.icu::Locale::getCountry()) < 0;
}

ZQLang ZQLang::getDefaultLocale() { return ZQLang(platform::defaultLocale()); }

bool ZQLang::isDefaultLocaleJapanese() {
  return iso3Of(platform::defaultLocale()) == iso3Of(icu::Locale::getJapanese());
}

void ZQLang::cleanup() {}

}  // namespace ZQCommonNS
