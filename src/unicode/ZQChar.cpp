// Character classification: the ICU wrappers, the sets of our own and the string helpers.
#include "common/ZQChar.h"

#include <unicode/utf16.h>

#include "unicode/ZQCharTables.h"

namespace ZQCommonNS {

using namespace chartables;

namespace {

// ICU 60 did not know U+32FF (the square era name); U+337B has the same properties, so the
// wrappers that promise it ask about that one instead.
constexpr int eraFix(int c) { return c == 0x32FF ? 0x337B : c; }

inline uint32_t gcMask(int c) { return U_GET_GC_MASK(c); }

// Table values 8 and 16 have an upright fallback, 32 depends on the caller, 64 is passed through.
ZQChar::TR50Property reduceTR50(int raw, bool rotateFallback) {
  switch (raw) {
    case ZQChar::TR50_ROTATED:
      return ZQChar::TR50_ROTATED;
    case ZQChar::TR50_TRANSFORMED_ROTATED:
      return rotateFallback ? ZQChar::TR50_ROTATED : ZQChar::TR50_UPRIGHT;
    case ZQChar::TR50_CALLER:
      return ZQChar::TR50_CALLER;
    default:
      return ZQChar::TR50_UPRIGHT;
  }
}

ZQChar::TR50Property lookupTR50(int c, const ZQChar::TR50Overrides* overrides, bool rotateFallback,
                                bool mixed) {
  int raw = 0;
  if (overrides != nullptr) {
    auto it = overrides->find(c);
    if (it != overrides->end()) raw = mixed ? it->second.second : it->second.first;
  }
  if (raw == 0) {
    const TR50Range* range = findRange(tr50Table, c);
    if (range == nullptr) return ZQChar::TR50_UPRIGHT;
    raw = mixed ? range->mvo : range->svo;
  }
  return reduceTR50(raw, rotateFallback);
}

// Applies a code-unit mapping in place, writing only the units that change.
template <typename Map>
UnicodeString mapUnits(UnicodeString& s, Map map) {
  const int32_t length = s.length();
  for (int32_t i = 0; i < length; ++i) {
    const char16_t unit = s.charAt(i);
    const char16_t mapped = map(unit);
    if (mapped != unit) s.setCharAt(i, mapped);
  }
  return s;
}

// Walks a string by code points: the first must satisfy `start`, the others `rest`.
template <typename Start, typename Rest>
bool isNameLike(const UnicodeString& s, Start start, Rest rest) {
  const int32_t length = s.length();
  if (length == 0) return false;
  for (int32_t i = 0; i < length;) {
    const UChar32 c = s.char32At(i);
    if (!(i == 0 ? start(c) : rest(c))) return false;
    i += U16_LENGTH(c);
  }
  return true;
}

// Code point at a code-unit index; FFFF outside the string, as the string helpers give.
UChar32 codePointAt(const UnicodeString& s, int32_t index) {
  if (index < 0 || index >= s.length()) return 0xFFFF;
  return s.char32At(index);
}

}  // namespace

// ---- ICU wrappers.

UEastAsianWidth ZQChar::getEastAsianWidth(int c) {
  return static_cast<UEastAsianWidth>(u_getIntPropertyValue(eraFix(c), UCHAR_EAST_ASIAN_WIDTH));
}

UCharCategory ZQChar::getCategory(int c) {
  return static_cast<UCharCategory>(u_getIntPropertyValue(eraFix(c), UCHAR_GENERAL_CATEGORY));
}

ULineBreak ZQChar::getLineBreak(int c) {
  return static_cast<ULineBreak>(u_getIntPropertyValue(c, UCHAR_LINE_BREAK));
}

int32_t ZQChar::getIntPropertyValue(int c, UProperty which) {
  return u_getIntPropertyValue(eraFix(c), which);
}

bool ZQChar::isAlphabetic(int c) { return u_isUAlphabetic(c); }

bool ZQChar::isLetter(int c) { return (gcMask(c) & U_GC_L_MASK) != 0; }

bool ZQChar::isNumber(int c) { return (gcMask(c) & U_GC_N_MASK) != 0; }

bool ZQChar::isLetterNumber(int c) { return (gcMask(c) & (U_GC_L_MASK | U_GC_N_MASK)) != 0; }

bool ZQChar::isPunct(int c) { return c == 0xFF5E || (gcMask(c) & U_GC_P_MASK) != 0; }

bool ZQChar::isPunct(UCharCategory category) {
  if (category < 0 || category >= U_CHAR_CATEGORY_COUNT) return false;
  return (U_MASK(category) & U_GC_P_MASK) != 0;
}

bool ZQChar::isSymbol(int c) { return (gcMask(c) & U_GC_S_MASK) != 0; }

bool ZQChar::isGraphemeCluster(int c) {
  constexpr uint32_t notStarting =
      U_GC_MN_MASK | U_GC_ME_MASK | U_GC_MC_MASK | U_GC_CC_MASK | U_GC_CF_MASK;
  return (gcMask(eraFix(c)) & notStarting) == 0;
}

bool ZQChar::isUndefined(int c) {
  c = eraFix(c);
  return !u_isdefined(c) && !isCurrencySymbol(c);
}

bool ZQChar::isZeroWidthControlCode(int c) {
  if (c == 0xAD) return false;  // the soft hyphen has width when it is shown
  c = eraFix(c);
  if (isVariationSelectorCharacter(c) || isIdeographicVariationSelectorCharacter(c)) return true;
  if (c >= 0x10000 || (c >= 0x20A0 && c <= 0x20CF)) return false;
  if (u_iscntrl(c)) return true;
  if (u_isgraph(c)) return false;
  return !u_isblank(c);
}

// ---- Width.

bool ZQChar::isZenkaku(int c) { return isZenkaku(getEastAsianWidth(c)); }

bool ZQChar::isZenkakuAmbiguous(int c) { return isZenkakuAmbiguous(getEastAsianWidth(c)); }

bool ZQChar::isHankaku(int c) { return isHankaku(getEastAsianWidth(c)); }

// ---- Names and spaces over strings.

bool ZQChar::isNameStr(const UnicodeString& s) {
  return isNameLike(
      s, [](UChar32 c) { return isNameStartChar(c); }, [](UChar32 c) { return isNameChar(c); });
}

bool ZQChar::isNCNameStr(const UnicodeString& s) {
  return isNameLike(
      s, [](UChar32 c) { return isNCNameStartChar(c); }, [](UChar32 c) { return isNCNameChar(c); });
}

bool ZQChar::isWhitespace(const UnicodeString& s) { return !s.isEmpty() && isEmptyOrWhitespace(s); }

bool ZQChar::isEmptyOrWhitespace(const UnicodeString& s) {
  const int32_t length = s.length();
  for (int32_t i = 0; i < length; ++i) {
    if (!isWhitespace(s.charAt(i))) return false;
  }
  return true;
}

// ---- Punctuation for Japanese spacing.

bool ZQChar::isOpenParenEtc(int c) {
  if (!isPunct(c)) return false;
  return c == 0x2018 || c == 0x201C || getLineBreak(c) == U_LB_OPEN_PUNCTUATION;
}

bool ZQChar::isCloseParenEtc(int c) {
  if (!isPunct(c)) return false;
  if (c == 0x2019 || c == 0x201D) return true;
  const ULineBreak lb = getLineBreak(c);
  return lb == U_LB_CLOSE_PUNCTUATION || lb == U_LB_CLOSE_PARENTHESIS;
}

bool ZQChar::isHalfPunct(int c) {
  return isZenkakuMidDotEtc(c) || isOpenParenEtc(c) || isCloseParenEtc(c);
}

// ---- Sets of our own.

bool ZQChar::isNonStarterJIS(int c) {
  if (c < 0x3005) return false;
  if ((c >= 0x31F0 && c <= 0x31FF) || (c >= 0xFF67 && c <= 0xFF70)) return true;
  switch (c) {
    // clang-format off
    case 0x3005: case 0x303B: case 0x3041: case 0x3043: case 0x3045: case 0x3047: case 0x3049:
    case 0x3063: case 0x3083: case 0x3085: case 0x3087: case 0x308E: case 0x3095: case 0x3096:
    case 0x309D: case 0x309E: case 0x30A1: case 0x30A3: case 0x30A5: case 0x30A7: case 0x30A9:
    case 0x30C3: case 0x30E3: case 0x30E5: case 0x30E7: case 0x30EE: case 0x30F5: case 0x30F6:
    case 0x30FC: case 0x30FD: case 0x30FE:
      // clang-format on
      return true;
    default:
      return false;
  }
}

bool ZQChar::isSymbolJIS(int c) {
  if (c < 0xA7 || c > 0x266F) return false;
  if ((c >= 0x2160 && c <= 0x2169) || (c >= 0x2190 && c <= 0x2193) ||
      (c >= 0x221D && c <= 0x2220) || (c >= 0x2227 && c <= 0x222C) ||
      (c >= 0x2460 && c <= 0x2473)) {
    return true;
  }
  switch (c) {
    // clang-format off
    case 0x00A7: case 0x00A8: case 0x00B0: case 0x00B1: case 0x00B4: case 0x00B6: case 0x00D7:
    case 0x00F7: case 0x2010: case 0x2015: case 0x2018: case 0x2019: case 0x201C: case 0x201D:
    case 0x2020: case 0x2021: case 0x2025: case 0x2026: case 0x2030: case 0x2032: case 0x2033:
    case 0x203B: case 0x2103: case 0x2116: case 0x2121: case 0x212B: case 0x21D2: case 0x21D4:
    case 0x2200: case 0x2202: case 0x2203: case 0x2207: case 0x2208: case 0x220B: case 0x2211:
    case 0x221A: case 0x2225: case 0x222E: case 0x2234: case 0x2235: case 0x223D: case 0x2252:
    case 0x2260: case 0x2261: case 0x2266: case 0x2267: case 0x226A: case 0x226B: case 0x2282:
    case 0x2283: case 0x2286: case 0x2287: case 0x22A5: case 0x22BF: case 0x2312: case 0x25A0:
    case 0x25A1: case 0x25B2: case 0x25B3: case 0x25BC: case 0x25BD: case 0x25C6: case 0x25C7:
    case 0x25CB: case 0x25CE: case 0x25CF: case 0x25EF: case 0x2605: case 0x2606: case 0x2640:
    case 0x2642: case 0x266A: case 0x266D: case 0x266F:
      // clang-format on
      return true;
    default:
      return false;
  }
}

bool ZQChar::isNoVerticalChar(int c) { return findRange(noVerticalTable, c) != nullptr; }

// ---- Other helpers.

char16_t ZQChar::last(const UnicodeString& s) {
  return s.isEmpty() ? char16_t(0xFFFF) : s.charAt(s.length() - 1);
}

UChar32 ZQChar::last32(const UnicodeString& s) {
  return s.isEmpty() ? 0xFFFF : s.char32At(s.length() - 1);
}

UnicodeString ZQChar::getMirrorString(const UnicodeString& s) {
  if (s.isBogus()) return s;
  UnicodeString result;
  const int32_t length = s.length();
  for (int32_t i = 0; i < length;) {
    const UChar32 c = s.char32At(i);
    result.append(u_charMirror(c));
    i += U16_LENGTH(c);
  }
  return result;
}

bool ZQChar::isInseparableCharEx(const UnicodeString& text, int32_t pos,
                                 INSEPARABLECHAR_METHOD method) {
  const UChar32 c = codePointAt(text, pos);
  if (c == 0xFFFF) return false;
  const int32_t nextPos = pos + U16_LENGTH(c);
  const UChar32 next = codePointAt(text, nextPos);
  if (!isInseparableChar(c, next)) return false;
  // The halves of the kana repeat mark always hold together; runs count only for the dashes.
  if (c == 0x3033 || c == 0x3034 || method == INSEPARABLE_ALWAYS) return true;
  // char32At at the unit before `pos` gives the whole code point even after a surrogate pair.
  const UChar32 before = pos > 0 ? codePointAt(text, pos - 1) : 0xFFFF;
  const UChar32 after = codePointAt(text, nextPos + U16_LENGTH(next));
  switch (method) {
    case INSEPARABLE_SHORT_RUNS:
      return !(before == c && after == c);
    case INSEPARABLE_EXACT_PAIR:
      return before != c && after != c;
    default:
      return false;
  }
}

ZQChar::TR50Property ZQChar::getTR50SVO(int c, const TR50Overrides* overrides,
                                        bool rotateFallback) {
  return lookupTR50(c, overrides, rotateFallback, false);
}

ZQChar::TR50Property ZQChar::getTR50MVO(int c, const TR50Overrides* overrides,
                                        bool rotateFallback) {
  return lookupTR50(c, overrides, rotateFallback, true);
}

UnicodeString ZQChar::toZenkaku(UnicodeString& s) {
  return mapUnits(s, [](char16_t u) { return toZenkaku(u); });
}

char16_t ZQChar::toZenkakuKana(char16_t c) {
  // Callers give only FF61-FF9F; anything else is left as it is rather than read off the table.
  if (c < 0xFF61 || c > 0xFF9F) return c;
  return halfKanaTable[c - 0xFF61];
}

UnicodeString ZQChar::toZenkakuKana(UnicodeString& s) {
  return mapUnits(s, [](char16_t u) { return toZenkakuKana(u); });
}

char16_t ZQChar::toFullsizeKana(char16_t c) {
  if (c >= 0x31F0 && c <= 0x31FF) {
    // Katakana phonetic extensions: small ku, si, su, to, nu, ha, hi, hu, he, ho, mu, ra-ro.
    static constexpr char16_t ext[16] = {0x30AF, 0x30B7, 0x30B9, 0x30C8, 0x30CC, 0x30CF,
                                         0x30D2, 0x30D5, 0x30D8, 0x30DB, 0x30E0, 0x30E9,
                                         0x30EA, 0x30EB, 0x30EC, 0x30ED};
    return ext[c - 0x31F0];
  }
  switch (c) {
    // Small kana whose full-size form is the next code point.
    // clang-format off
    case 0x3041: case 0x3043: case 0x3045: case 0x3047: case 0x3049: case 0x3063: case 0x3083:
    case 0x3085: case 0x3087: case 0x308E: case 0x30A1: case 0x30A3: case 0x30A5: case 0x30A7:
    case 0x30A9: case 0x30C3: case 0x30E3: case 0x30E5: case 0x30E7: case 0x30EE:
      // clang-format on
      return static_cast<char16_t>(c + 1);
    case 0x3095:
      return 0x304B;
    case 0x3096:
      return 0x3051;
    case 0x30F5:
      return 0x30AB;
    case 0x30F6:
      return 0x30B1;
    default:
      return c;
  }
}

UnicodeString ZQChar::toFullsizeKana(UnicodeString& s) {
  return mapUnits(s, [](char16_t u) { return toFullsizeKana(u); });
}

UChar32 ZQChar::convertRadical(int c, bool strict) {
  if (c >= 0x2F00 && c <= 0x2FD5) return kangxiRadicalTable[c - 0x2F00];
  if (c >= 0x2E80 && c <= 0x2EF3) {
    // Only these two have a real (compatibility) mapping; the others merely look alike.
    if (strict && c != 0x2E9F && c != 0x2EF3) return 0;
    return cjkRadicalTable[c - 0x2E80];
  }
  return 0;
}

}  // namespace ZQCommonNS
