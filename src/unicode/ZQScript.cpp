// Scripts: names to codes and back, the script of a character or a text, and the groupings.
#include "common/ZQScript.h"

#include <unicode/utf16.h>

#include <cstring>
#include <string>

#include "common/ZQChar.h"
#include "common/ZQLang.h"

namespace ZQCommonNS {

namespace {

// Latin-1 signs that ICU calls common but that belong with the Latin text around them.
constexpr bool isLatinSign(int c) {
  return (c >= 0xA2 && c <= 0xA5) || (c >= 0xA7 && c <= 0xAA) || c == 0xAE || c == 0xAF ||
         c == 0xB4 || c == 0xB5 || c == 0xB8 || c == 0xBA;
}

// Sound marks and the prolonged sound mark, used by both kana scripts.
constexpr bool isSharedKanaMark(int c) { return (c >= 0x3099 && c <= 0x309C) || c == 0x30FC; }

// How the script of a code point was found.
enum class Verdict {
  RULE,   // one of our ranges, which settles a text at once
  LATIN,  // Latin, by our signs or by ICU
  ICU     // any other answer of ICU
};

UScriptCode classify(int ch, Verdict& verdict) {
  verdict = Verdict::RULE;
  if (ZQChar::isHebrewScript(ch)) return USCRIPT_HEBREW;
  if (ZQChar::isArabicScript(ch)) return USCRIPT_ARABIC;  // the Arabic-Indic digits don't count
  if (ZQChar::isDevanagariScript(ch)) return USCRIPT_DEVANAGARI;
  if (isLatinSign(ch)) {
    verdict = Verdict::LATIN;
    return USCRIPT_LATIN;
  }
  if (isSharedKanaMark(ch)) return USCRIPT_KATAKANA_OR_HIRAGANA;
  if (ch == 0x32FF) ch = 0x337B;  // the newest era square, as the one before it
  if (ZQChar::isMathOperator(ch)) return USCRIPT_MATHEMATICAL_NOTATION;
  UErrorCode error = U_ZERO_ERROR;
  UScriptCode script = uscript_getScript(ch, &error);
  if (U_FAILURE(error)) script = USCRIPT_INVALID_CODE;
  verdict = script == USCRIPT_LATIN ? Verdict::LATIN : Verdict::ICU;
  return script;
}

}  // namespace

ZQScript::ZQScript(const UnicodeString& s) : code(USCRIPT_INVALID_CODE) {
  if (s.isEmpty()) {  // the empty name
    code = SCRIPT_AUTO;
    return;
  }
  switch (ZQNameTable::getBuiltinNameEnum(s)) {
    case ZQN_auto:
      code = SCRIPT_AUTO;
      return;
    case ZQN_none:
      code = SCRIPT_NONE;
      return;
    case ZQN_Kana:
      code = USCRIPT_KATAKANA;
      return;
    case ZQN_Hira:
      code = USCRIPT_HIRAGANA;
      return;
    case ZQN_Hans:
      code = USCRIPT_SIMPLIFIED_HAN;
      return;
    case ZQN_Hant:
      code = USCRIPT_TRADITIONAL_HAN;
      return;
    case ZQN_Jpan:
      code = USCRIPT_JAPANESE;
      return;
    case ZQN_Zmth:
      code = USCRIPT_MATHEMATICAL_NOTATION;
      return;
    default:
      break;
  }
  const ZQLang lang(s);
  const char* language = lang.getLocale().getLanguage();
  if (std::strcmp(language, "ja") == 0) {
    code = USCRIPT_JAPANESE;
    return;
  }
  if (std::strcmp(language, "ko") == 0) {
    code = USCRIPT_KOREAN;
    return;
  }
  if (std::strcmp(language, "zh") == 0) {
    const char* country = lang.getLocale().getCountry();
    code = std::strcmp(country, "TW") == 0 || std::strcmp(country, "HK") == 0
               ? USCRIPT_TRADITIONAL_HAN
               : USCRIPT_SIMPLIFIED_HAN;
    return;
  }
  std::string narrow;
  s.toUTF8String(narrow);
  UScriptCode found = USCRIPT_INVALID_CODE;
  UErrorCode error = U_ZERO_ERROR;
  // Room for one code only: a locale with several scripts ("ja") yields none.
  int32_t count = uscript_getCode(narrow.c_str(), &found, 1, &error);
  if (U_SUCCESS(error) && count >= 1) code = found;
}

ZQScript::ZQScript(ZQName name) : code(USCRIPT_INVALID_CODE) {
  switch (static_cast<ZQNameEnum>(name)) {
    case ZQN_EMPTY:
      code = USCRIPT_INVALID_CODE;
      break;
    case ZQN_Zyyy:
      code = USCRIPT_COMMON;
      break;
    case ZQN_Qaai:
      code = USCRIPT_INHERITED;
      break;
    case ZQN_Arab:
      code = USCRIPT_ARABIC;
      break;
    case ZQN_Armn:
      code = USCRIPT_ARMENIAN;
      break;
    case ZQN_Beng:
      code = USCRIPT_BENGALI;
      break;
    case ZQN_Cyrl:
      code = USCRIPT_CYRILLIC;
      break;
    case ZQN_Deva:
      code = USCRIPT_DEVANAGARI;
      break;
    case ZQN_Ethi:
      code = USCRIPT_ETHIOPIC;
      break;
    case ZQN_Geor:
      code = USCRIPT_GEORGIAN;
      break;
    case ZQN_Grek:
      code = USCRIPT_GREEK;
      break;
    case ZQN_Gujr:
      code = USCRIPT_GUJARATI;
      break;
    case ZQN_Guru:
      code = USCRIPT_GURMUKHI;
      break;
    case ZQN_Hani:
      code = USCRIPT_HAN;
      break;
    case ZQN_Hang:
      code = USCRIPT_HANGUL;
      break;
    case ZQN_ko:
    case ZQN_kor:
      code = USCRIPT_KOREAN;
      break;
    case ZQN_Hans:
    case ZQN_zh:
    case ZQN_zh_CHN:
    case ZQN_zh_CN:
    case ZQN_zh_SG:
    case ZQN_zho:
    case ZQN_zho_CHN:
    case ZQN_zho_CN:
      code = USCRIPT_SIMPLIFIED_HAN;
      break;
    case ZQN_Hant:
    case ZQN_zh_HK:
    case ZQN_zh_TW:
    case ZQN_zh_TWN:
    case ZQN_zho_TW:
    case ZQN_zho_TWN:
      code = USCRIPT_TRADITIONAL_HAN;
      break;
    case ZQN_Hebr:
      code = USCRIPT_HEBREW;
      break;
    case ZQN_Hira:
      code = USCRIPT_HIRAGANA;
      break;
    case ZQN_Jpan:
    case ZQN_ja:
    case ZQN_jpn:
      code = USCRIPT_JAPANESE;
      break;
    case ZQN_Kana:
      code = USCRIPT_KATAKANA;
      break;
    case ZQN_Khmr:
      code = USCRIPT_KHMER;
      break;
    case ZQN_Knda:
      code = USCRIPT_KANNADA;
      break;
    case ZQN_Laoo:
      code = USCRIPT_LAO;
      break;
    case ZQN_Latf:
    case ZQN_Latg:
    case ZQN_Latn:
      code = USCRIPT_LATIN;
      break;
    case ZQN_Mlym:
      code = USCRIPT_MALAYALAM;
      break;
    case ZQN_Mong:
      code = USCRIPT_MONGOLIAN;
      break;
    case ZQN_Mymr:
      code = USCRIPT_MYANMAR;
      break;
    case ZQN_Orya:
      code = USCRIPT_ORIYA;
      break;
    case ZQN_Sinh:
      code = USCRIPT_SINHALA;
      break;
    case ZQN_Syrc:
      code = USCRIPT_SYRIAC;
      break;
    case ZQN_Taml:
      code = USCRIPT_TAMIL;
      break;
    case ZQN_Telu:
      code = USCRIPT_TELUGU;
      break;
    case ZQN_Thai:
      code = USCRIPT_THAI;
      break;
    case ZQN_Tibt:
      code = USCRIPT_TIBETAN;
      break;
    case ZQN_Zmth:
      code = USCRIPT_MATHEMATICAL_NOTATION;
      break;
    case ZQN_auto:
    case ZQN_Zxxx:
      code = SCRIPT_AUTO;
      break;
    case ZQN_none:
    case ZQN_Zzzz:
      code = SCRIPT_NONE;
      break;
    default:
      code = ZQScript(name.toString()).code;
      break;
  }
}

ZQName ZQScript::getScriptCode() const {
  switch (code) {
    case USCRIPT_COMMON:
      return ZQN_Zyyy;
    case USCRIPT_INHERITED:
      return ZQN_Qaai;
    case USCRIPT_ARABIC:
      return ZQN_Arab;
    case USCRIPT_ARMENIAN:
      return ZQN_Armn;
    case USCRIPT_BENGALI:
      return ZQN_Beng;
    case USCRIPT_CYRILLIC:
      return ZQN_Cyrl;
    case USCRIPT_DEVANAGARI:
      return ZQN_Deva;
    case USCRIPT_ETHIOPIC:
      return ZQN_Ethi;
    case USCRIPT_GEORGIAN:
      return ZQN_Geor;
    case USCRIPT_GREEK:
      return ZQN_Grek;
    case USCRIPT_GUJARATI:
      return ZQN_Gujr;
    case USCRIPT_GURMUKHI:
      return ZQN_Guru;
    case USCRIPT_HAN:
      return ZQN_Hani;
    case USCRIPT_HANGUL:
    case USCRIPT_KOREAN:
      return ZQN_Hang;
    case USCRIPT_SIMPLIFIED_HAN:
      return ZQN_Hans;
    case USCRIPT_TRADITIONAL_HAN:
      return ZQN_Hant;
    case USCRIPT_HEBREW:
      return ZQN_Hebr;
    case USCRIPT_HIRAGANA:
      return ZQN_Hira;
    case USCRIPT_JAPANESE:
      return ZQN_Jpan;
    case USCRIPT_KATAKANA:
      return ZQN_Kana;
    case USCRIPT_KATAKANA_OR_HIRAGANA:
      return ZQN_Hrkt;
    case USCRIPT_KHMER:
      return ZQN_Khmr;
    case USCRIPT_KANNADA:
      return ZQN_Knda;
    case USCRIPT_LAO:
      return ZQN_Laoo;
    case USCRIPT_LATIN:
      return ZQN_Latn;
    case USCRIPT_MALAYALAM:
      return ZQN_Mlym;
    case USCRIPT_MONGOLIAN:
      return ZQN_Mong;
    case USCRIPT_MYANMAR:
      return ZQN_Mymr;
    case USCRIPT_ORIYA:
      return ZQN_Orya;
    case USCRIPT_SINHALA:
      return ZQN_Sinh;
    case USCRIPT_SYRIAC:
      return ZQN_Syrc;
    case USCRIPT_TAMIL:
      return ZQN_Taml;
    case USCRIPT_TELUGU:
      return ZQN_Telu;
    case USCRIPT_THAI:
      return ZQN_Thai;
    case USCRIPT_TIBETAN:
      return ZQN_Tibt;
    case USCRIPT_MATHEMATICAL_NOTATION:
      return ZQN_Zmth;
    default:
      break;
  }
  if (code < 0) return ZQName();
  const char* shortName = uscript_getShortName(static_cast<UScriptCode>(code));
  if (!shortName || !*shortName) return ZQName();
  return ZQName(UnicodeString(shortName, -1, US_INV));
}

UnicodeString ZQScript::getScriptName() const {
  if (code < 0) return getScriptCode().toString();
  const char* name = uscript_getName(static_cast<UScriptCode>(code));
  return name ? UnicodeString(name, -1, US_INV) : UnicodeString();
}

const UnicodeString& ZQScript::toString() const { return getScriptCode().toString(); }

UScriptCode ZQScript::getScript(int ch) {
  Verdict verdict;
  return classify(ch, verdict);
}

UScriptCode ZQScript::getScriptFromText(const UnicodeString& text, bool latinWins) {
  bool latinSeen = false;
  const int32_t length = text.length();
  for (int32_t i = 0; i < length;) {
    const UChar32 ch = text.char32At(i);
    i += U16_LENGTH(ch);
    Verdict verdict;
    const UScriptCode script = classify(ch, verdict);
    switch (verdict) {
      case Verdict::RULE:
        return script;
      case Verdict::LATIN:
        if (latinWins) return USCRIPT_LATIN;
        latinSeen = true;
        break;
      case Verdict::ICU:
        if (script == USCRIPT_COMMON || script == USCRIPT_INHERITED ||
            script == USCRIPT_INVALID_CODE) {
          break;
        }
        return script;
    }
  }
  return latinSeen ? USCRIPT_LATIN : USCRIPT_COMMON;
}

bool ZQScript::isKanaScript(UScriptCode scriptCode) {
  return scriptCode == USCRIPT_HIRAGANA || scriptCode == USCRIPT_KATAKANA ||
         scriptCode == USCRIPT_KATAKANA_OR_HIRAGANA;
}

bool ZQScript::isJA() const { return isKanaScript() || code == USCRIPT_JAPANESE; }

bool ZQScript::isCJK() const {
  switch (code) {
    case USCRIPT_BOPOMOFO:
    case USCRIPT_HAN:
    case USCRIPT_HANGUL:
    case USCRIPT_HIRAGANA:
    case USCRIPT_KATAKANA:
    case USCRIPT_KATAKANA_OR_HIRAGANA:
    case USCRIPT_SIMPLIFIED_HAN:
    case USCRIPT_TRADITIONAL_HAN:
    case USCRIPT_JAPANESE:
    case USCRIPT_KOREAN:
      return true;
    default:
      return false;
  }
}

bool ZQScript::isCJKJustify() const {
  return isCJK() && code != USCRIPT_HANGUL && code != USCRIPT_KOREAN;
}

bool ZQScript::isLatinGroup() const {
  switch (code) {
    case USCRIPT_COMMON:
    case USCRIPT_ARMENIAN:
    case USCRIPT_CYRILLIC:
    case USCRIPT_ETHIOPIC:
    case USCRIPT_GEORGIAN:
    case USCRIPT_GREEK:
    case USCRIPT_LATIN:
      return true;
    default:
      return false;
  }
}

bool ZQScript::isHangingBaseline() const {
  switch (code) {
    case USCRIPT_BENGALI:
    case USCRIPT_DEVANAGARI:
    case USCRIPT_GUJARATI:
    case USCRIPT_GURMUKHI:
    case USCRIPT_TIBETAN:
      return true;
    default:
      return false;
  }
}

bool ZQScript::isZenkakuScript(int ch) const {
  const UEastAsianWidth width = ZQChar::getEastAsianWidth(ch);  // reads U+32FF as U+337B
  if (ZQChar::isZenkaku(width)) return true;
  if (width != U_EA_AMBIGUOUS || !isCJK()) return false;
  if (ZQChar::isSymbolJIS(ch)) return true;
  return getScript(ch) != USCRIPT_LATIN;
}

UChar32 ZQScript::getA() const {
  switch (code) {
    case USCRIPT_ARABIC:
      return 0x0627;
    case USCRIPT_ARMENIAN:
      return 0x0531;
    case USCRIPT_CYRILLIC:
      return 0x0410;
    case USCRIPT_DEVANAGARI:
      return 0x0905;
    case USCRIPT_GEORGIAN:
      return 0x10A0;
    case USCRIPT_GREEK:
      return 0x0391;
    case USCRIPT_HAN:
    case USCRIPT_SIMPLIFIED_HAN:
    case USCRIPT_TRADITIONAL_HAN:
      return 0x4E9C;
    case USCRIPT_HANGUL:
    case USCRIPT_KOREAN:
      return 0xAC00;
    case USCRIPT_HEBREW:
      return 0x05D0;
    case USCRIPT_HIRAGANA:
    case USCRIPT_KATAKANA_OR_HIRAGANA:
    case USCRIPT_JAPANESE:
      return 0x3042;
    case USCRIPT_KATAKANA:
      return 0x30A2;
    case USCRIPT_THAI:
      return 0x0E01;
    case USCRIPT_TIBETAN:
      return 0x0F68;
    default:
      return 'A';
  }
}

}  // namespace ZQCommonNS
