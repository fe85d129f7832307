// Language tags: ICU's Locale that also takes the bibliographic ISO 639-2 codes found in real
// documents ("fre", "ger", "chi"), with the questions formatting asks of a language.
#pragma once

#include "common/ZQExport.h"
#include "common/ZQName.h"
#include "common/ZQScript.h"

#include <unicode/locid.h>

#include <cstdint>

namespace ZQCommonNS {

/// A language tag. It is an icu::Locale and adds no fields; tags are normalised from
/// bibliographic to terminological ISO 639-2 codes first, and the rest of the parsing is ICU's.
class ZQCOMMON_API ZQLang : public icu::Locale {
 public:
  /// The Windows LCID number, as Locale::getLCID gives it.
  using LanguageID = uint32_t;

  /// An empty locale (not ICU's default one).
  ZQLang();
  ZQLang(const ZQLang& other);
  ZQLang& operator=(const ZQLang& other);
  ~ZQLang() override;
  /// The locale itself.
  explicit ZQLang(const icu::Locale& locale);
  /// A normalised tag read by Locale: "fre-CA" is fr-CA.
  ZQLang(const UnicodeString& tag);
  /// As for a UnicodeString tag.
  ZQLang(const char* tag);
  /// A normalised tag with a country; a country of "none" is ignored.
  ZQLang(const UnicodeString& tag, const UnicodeString& country);
  /// The name "none" gives an empty locale; any other name is read as a tag.
  ZQLang(ZQName name);
  /// As for ZQName.
  ZQLang(ZQNameEnum name);
  /// A representative language of the script ("ru" for Cyrillic); empty for scripts without
  /// one, Han, Hangul and kana included.
  explicit ZQLang(ZQScript script);

  /// A tag with its leading bibliographic code ("ger", "fre-CA") replaced by the terminological
  /// one ("deu", "fra-CA"); "none" becomes empty; other tags come back as they are.
  static UnicodeString normalizeLangTag(const UnicodeString& tag);

  /// The underlying locale.
  const icu::Locale& getLocale() const { return *this; }
  /// The language field ("fr").
  UnicodeString getLanguage() const;
  /// The country field ("CA").
  UnicodeString getCountry() const;
  /// The script field ("Latn").
  UnicodeString getLangScript() const;
  /// The ISO 639 three-letter language ("fra"), cached by the locale's hash; a few ISO 639-3
  /// codes that ICU lacks come back as they are; empty when unknown.
  UnicodeString getISO3Language() const;
  /// The ISO 3166 three-letter country ("CAN"), empty when unknown.
  UnicodeString getISO3Country() const;
  /// getISO3Language as a name.
  ZQName getLanguageName() const;
  /// The Windows LCID number.
  LanguageID getLCID() const;
  /// Language, then "-" and the country if there is one.
  UnicodeString toString() const;
  /// Three-letter language, then "-" and the country if there is one.
  UnicodeString toISO3String() const;
  /// Language, then "-" and the script and "-" and the country for those there are.
  UnicodeString toFullString() const;
  /// The script of toISO3String.
  ZQScript toScript() const;
  /// Whether the language is one usually written in the script.
  bool isTypicalScript(ZQScript script) const;
  /// The language field is empty.
  bool isNullLang() const;

  /// As for Locale.
  bool operator==(const ZQLang& other) const { return icu::Locale::operator==(other); }
  /// As for Locale.
  bool operator!=(const ZQLang& other) const { return icu::Locale::operator!=(other); }
  /// Byte order of the language fields, then of the country fields; scripts and variants do
  /// not count, so maps keyed by ZQLang match on language and country only.
  bool operator<(const ZQLang& other) const;

  /// ICU's default locale.
  static ZQLang getDefaultLocale();
  /// The default locale's three-letter language is Japanese's.
  static bool isDefaultLocaleJapanese();
  /// Nothing to do: the tables live as long as the library.
  static void cleanup();
};

}  // namespace ZQCommonNS
