// Questions about one code point, and a few about strings, that the tokenizer, the XML scanner
// and the line-breaking code ask in their inner loops.
#pragma once

#include "common/ZQExport.h"

#include <unicode/uchar.h>

#include <cstdint>
#include <unordered_map>
#include <utility>

namespace ZQCommonNS {

/// Static predicates and conversions on code points. Any int is accepted: a value outside every
/// range is simply false (or 0, or FFFD), and nothing here throws.
class ZQCOMMON_API ZQChar {
 public:
  ZQChar() = delete;

  /// Vertical orientation of a character (UTR #50); the values are bit-like.
  enum TR50Property : int {
    TR50_UPRIGHT = 1,
    TR50_ROTATED = 2,
    TR50_SPECIAL = 8,               // one character only (U+2008)
    TR50_TRANSFORMED_UPRIGHT = 16,  // transformed glyph, upright if there is none
    TR50_TRANSFORMED_ROTATED = 32,  // transformed glyph, rotated if there is none
    TR50_CALLER = 64                // reserved for callers' own overrides
  };
  /// SVO byte, then MVO byte; 0 in either lets the built-in table decide.
  using TR50VO = std::pair<uint8_t, uint8_t>;
  /// Per-character overrides of the built-in orientation table.
  using TR50Overrides = std::unordered_map<int, TR50VO>;

  /// How `isInseparableCharEx` treats runs of dashes and leaders; any other value answers false.
  enum INSEPARABLECHAR_METHOD : int {
    INSEPARABLE_ALWAYS = 0,      // every equal pair holds together
    INSEPARABLE_SHORT_RUNS = 1,  // runs of more than three may break inside
    INSEPARABLE_EXACT_PAIR = 2   // only an exact pair holds together
  };

  // ---- ICU wrappers. Those marked (era) read U+32FF as U+337B, which has the same properties.

  /// East Asian width (era).
  static UEastAsianWidth getEastAsianWidth(int c);
  /// General category (era).
  static UCharCategory getCategory(int c);
  /// Line-break class, straight from ICU.
  static ULineBreak getLineBreak(int c);
  /// Any integer property by u_getIntPropertyValue (era).
  static int32_t getIntPropertyValue(int c, UProperty which);
  /// Unicode Alphabetic property.
  static bool isAlphabetic(int c);
  /// General category L*.
  static bool isLetter(int c);
  /// General category N*.
  static bool isNumber(int c);
  /// General category L* or N*.
  static bool isLetterNumber(int c);
  /// General category P*, or the full-width tilde FF5E.
  static bool isPunct(int c);
  /// The category is P*; FF5E cannot be told from its category.
  static bool isPunct(UCharCategory category);
  /// General category S*.
  static bool isSymbol(int c);
  /// The character can start a grapheme cluster: not Mn, Me, Mc, Cc, Cf (era).
  static bool isGraphemeCluster(int c);
  /// Not defined in ICU's data, unless it is a currency sign newer than that data (era).
  static bool isUndefined(int c);
  /// Invisible control or format character that takes no width (era).
  static bool isZeroWidthControlCode(int c);

  // ---- Width.

  /// Full-width or Wide.
  static constexpr bool isZenkaku(UEastAsianWidth w) {
    return w == U_EA_FULLWIDTH || w == U_EA_WIDE;
  }
  /// Full-width or Wide (era).
  static bool isZenkaku(int c);
  /// Ambiguous, Full-width or Wide.
  static constexpr bool isZenkakuAmbiguous(UEastAsianWidth w) {
    return w == U_EA_AMBIGUOUS || w == U_EA_FULLWIDTH || w == U_EA_WIDE;
  }
  /// Ambiguous, Full-width or Wide (era).
  static bool isZenkakuAmbiguous(int c);
  /// Half-width.
  static constexpr bool isHankaku(UEastAsianWidth w) { return w == U_EA_HALFWIDTH; }
  /// Half-width (era).
  static bool isHankaku(int c);
  /// ASCII (any value below 80, negatives included) or half-width katakana FF61-FF9F.
  static constexpr bool isHankakuChar(int c) { return c < 0x80 || (c >= 0xFF61 && c <= 0xFF9F); }
  /// Half-width katakana FF61-FF9F.
  static constexpr bool isHankakuKana(int c) { return c >= 0xFF61 && c <= 0xFF9F; }
  /// What a Western single-byte text may hold: below 100, plus the extra letters and marks of
  /// the Windows Western code page.
  static constexpr bool isHalf(int c) {
    if (c < 0x100) return true;
    switch (c) {
      // clang-format off
      case 0x0152: case 0x0153: case 0x0160: case 0x0161: case 0x0178: case 0x017D: case 0x017E:
      case 0x0192: case 0x02C6: case 0x02DC: case 0x2010: case 0x2013: case 0x2014: case 0x2018:
      case 0x2019: case 0x201A: case 0x201C: case 0x201D: case 0x201E: case 0x2020: case 0x2021:
      case 0x2022: case 0x2026: case 0x2030: case 0x2039: case 0x203A: case 0x20AC: case 0x2122:
        // clang-format on
        return true;
      default:
        return false;
    }
  }

  // ---- Names and validity.

  /// XML 1.0 Char.
  static constexpr bool isValidChar(int c) {
    if (c < 0x20) return c == 0x9 || c == 0xA || c == 0xD;
    if (c <= 0xD7FF) return true;
    if (c < 0xE000) return false;
    if (c <= 0xFFFD) return true;
    return c >= 0x10000 && c <= 0x10FFFF;
  }
  /// XML 1.1 Char less the restricted controls (7F-84, 86-9F count as invalid).
  static constexpr bool isValidChar11(int c) {
    if (c < 0x20) return c == 0x9 || c == 0xA || c == 0xD;
    if (c <= 0x7E) return true;
    if (c < 0xA0) return c == 0x85;
    if (c <= 0xD7FF) return true;
    if (c < 0xE000) return false;
    if (c <= 0xFFFD) return true;
    return c >= 0x10000 && c <= 0x10FFFF;
  }
  /// NameStartChar of XML 1.0 (fifth edition) without the colon.
  static constexpr bool isNCNameStartChar(int c) {
    if (c < 0x80) return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_';
    if (c < 0x300) return c >= 0xC0 && c != 0xD7 && c != 0xF7;
    if (c < 0x2000) return (c >= 0x370 && c <= 0x1FFF && c != 0x37E);
    if (c < 0x3001) {
      return c == 0x200C || c == 0x200D || (c >= 0x2070 && c <= 0x218F) ||
             (c >= 0x2C00 && c <= 0x2FEF);
    }
    if (c <= 0xD7FF) return true;
    if (c < 0xF900) return false;
    if (c <= 0xFFFD) return c <= 0xFDCF || c >= 0xFDF0;
    return c >= 0x10000 && c <= 0xEFFFF;
  }
  /// NameStartChar of XML 1.0 (fifth edition), the colon included.
  static constexpr bool isNameStartChar(int c) { return c == ':' || isNCNameStartChar(c); }
  /// NameChar of XML 1.0 (fifth edition) without the colon.
  static constexpr bool isNCNameChar(int c) {
    if (c < 0x80) {
      return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
             c == '_' || c == '-' || c == '.';
    }
    return c == 0xB7 || (c >= 0x300 && c <= 0x36F) || c == 0x203F || c == 0x2040 ||
           isNCNameStartChar(c);
  }
  /// NameChar of XML 1.0 (fifth edition), the colon included.
  static constexpr bool isNameChar(int c) { return c == ':' || isNCNameChar(c); }
  /// NCName character less '-', which is an operator inside a CSS expression.
  static constexpr bool isNCNameCharForCSSExp(int c) { return c != '-' && isNCNameChar(c); }
  /// Non-empty, and its code points form an XML Name.
  static bool isNameStr(const UnicodeString& s);
  /// Non-empty, and its code points form an NCName.
  static bool isNCNameStr(const UnicodeString& s);
  /// A character of a MIME token: 21-7E less the separators "(),/:;<=>?@[\] and '"'.
  static constexpr bool isMIMETokenChar(int c) {
    if (c < 0x21 || c > 0x7E) return false;
    switch (c) {
      // clang-format off
      case '"': case '(': case ')': case ',': case '/': case ':': case ';': case '<': case '=':
      case '>': case '?': case '@': case '[': case '\\': case ']':
        // clang-format on
        return false;
      default:
        return true;
    }
  }

  // ---- Spaces and breaks.

  /// TAB, LF, CR, space.
  static constexpr bool isWhitespace(int c) {
    return c == 0x20 || c == 0x9 || c == 0xA || c == 0xD;
  }
  /// Non-empty and only TAB, LF, CR, space.
  static bool isWhitespace(const UnicodeString& s);
  /// Empty, or only TAB, LF, CR, space.
  static bool isEmptyOrWhitespace(const UnicodeString& s);
  /// CSS whitespace: TAB, LF, FF, CR, space.
  static constexpr bool isCssWhitespace(int c) {
    return c == 0x20 || c == 0x9 || c == 0xA || c == 0xC || c == 0xD;
  }
  /// TAB, space.
  static constexpr bool isCssWhitespaceWoNewline(int c) { return c == 0x20 || c == 0x9; }
  /// CSS newline: LF, FF, CR.
  static constexpr bool isCssNewline(int c) { return c == 0xA || c == 0xC || c == 0xD; }
  /// Space, no-break space.
  static constexpr bool isSpaceChar(int c) { return c == 0x20 || c == 0xA0; }
  /// XML whitespace or no-break space.
  static constexpr bool isSpaceChar2(int c) { return isWhitespace(c) || c == 0xA0; }
  /// LF, FF, line and paragraph separators.
  static constexpr bool isHardBreak(int c) {
    return c == 0xA || c == 0xC || c == 0x2028 || c == 0x2029;
  }
  /// A hard break, or FFFF, which string helpers give past the end.
  static constexpr bool isHardBreakOrInvalid(int c) { return isHardBreak(c) || c == 0xFFFF; }
  /// The fixed-width spaces 2000-200A and 205F.
  static constexpr bool isFixedWidthSpaceChar(int c) {
    return (c >= 0x2000 && c <= 0x200A) || c == 0x205F;
  }
  /// Zero width space and zero width no-break space.
  static constexpr bool isZeroWidthSpaceChar(int c) { return c == 0x200B || c == 0xFEFF; }

  // ---- Punctuation for Japanese spacing.

  /// Punctuation of line-break class OP, or the opening quotes 2018 and 201C.
  static bool isOpenParenEtc(int c);
  /// Punctuation of line-break class CL or CP, or the closing quotes 2019 and 201D.
  static bool isCloseParenEtc(int c);
  /// Full-width middle dot, colon and semicolon.
  static constexpr bool isZenkakuMidDotEtc(int c) {
    return c == 0x30FB || c == 0xFF1A || c == 0xFF1B;
  }
  /// Marks a Japanese composer may set at half width: opening, closing and middle marks.
  static bool isHalfPunct(int c);
  /// Ideographic and full-width full stops.
  static constexpr bool isFullStopChar(int c) { return c == 0x3002 || c == 0xFF0E; }
  /// Hyphen-minus, soft hyphen, hyphen, non-breaking hyphen.
  static constexpr bool isHyphen(int c) {
    return c == '-' || c == 0xAD || c == 0x2010 || c == 0x2011;
  }

  // ---- Sets of our own.

  /// Characters that may not start a line under the JIS rules (small kana, marks).
  static bool isNonStarterJIS(int c);
  /// Symbols of the JIS character set that take a full-width glyph in Japanese text.
  static bool isSymbolJIS(int c);
  /// Han and full-width ranges whose width depends on the context.
  static constexpr bool isAmbiguousHan(int c) {
    return (c >= 0x2E80 && c <= 0x2FDF) || (c >= 0x3400 && c <= 0x4DB5) ||
           (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0xF900 && c <= 0xFAFF) ||
           (c >= 0xFF00 && c <= 0xFF60) || (c >= 0x20000 && c <= 0x2FFFF);
  }
  /// Kana, kanji and other CJK ranges.
  static constexpr bool isKanaKanjiCJK(int c) {
    return (c >= 0x2E80 && c <= 0x2FDF) || (c >= 0x3000 && c <= 0x4DBF) ||
           (c >= 0x4E00 && c <= 0x9FFF) || (c >= 0xF900 && c <= 0xFAFF) ||
           (c >= 0xFF00 && c <= 0xFF60) || (c >= 0xFFE0 && c <= 0xFFE7) ||
           (c >= 0x20000 && c <= 0x2FFFF);
  }
  /// Characters that never get an upright form in vertical text.
  static bool isNoVerticalChar(int c);
  /// CJK radicals supplement 2E80-2EF3 and Kangxi radicals 2F00-2FD5.
  static constexpr bool isRadical(int c) {
    return (c >= 0x2E80 && c <= 0x2EF3) || (c >= 0x2F00 && c <= 0x2FD5);
  }
  /// Mathematical operator and alphanumeric blocks.
  static constexpr bool isMathOperator(int c) {
    return (c >= 0x2200 && c <= 0x22FF) || (c >= 0x27C0 && c <= 0x27FF) ||
           (c >= 0x2980 && c <= 0x2AFF) || (c >= 0x1D400 && c <= 0x1D7FF);
  }
  /// Currency signs, including the whole currency block 20A0-20BD.
  static constexpr bool isCurrencySymbol(int c) {
    if (c >= 0x20A0 && c <= 0x20BD) return true;
    if (c >= 0xA2 && c <= 0xA5) return true;
    switch (c) {
      // clang-format off
      case '$': case 0x058F: case 0x060B: case 0x09F2: case 0x09F3: case 0x09FB: case 0x0AF1:
      case 0x0BF9: case 0x0E3F: case 0x17DB: case 0xA838: case 0xFDFC: case 0xFE69: case 0xFF04:
      case 0xFFE0: case 0xFFE1: case 0xFFE5: case 0xFFE6:
        // clang-format on
        return true;
      default:
        return false;
    }
  }
  /// Bullets and similar list marks.
  static constexpr bool isBullet(int c) {
    switch (c) {
      // clang-format off
      case 0x2022: case 0x2023: case 0x2043: case 0x204C: case 0x204D: case 0x2219: case 0x25D8:
      case 0x25E6: case 0x2619: case 0x2765: case 0x2767: case 0x29BE: case 0x29BF:
        // clang-format on
        return true;
      default:
        return false;
    }
  }
  /// Variation selectors FE00-FE0F.
  static constexpr bool isVariationSelectorCharacter(int c) { return c >= 0xFE00 && c <= 0xFE0F; }
  /// Ideographic variation selectors E0100-E01EF.
  static constexpr bool isIdeographicVariationSelectorCharacter(int c) {
    return c >= 0xE0100 && c <= 0xE01EF;
  }
  /// The BMP private use area E000-F8FF.
  static constexpr bool isPUA(int c) { return c >= 0xE000 && c <= 0xF8FF; }
  /// The Arabic block 0600-06FF.
  static constexpr bool isArabic(int c) { return c >= 0x600 && c <= 0x6FF; }
  /// The Arabic block without its two runs of digits (0660-0669, 06F0-06F9).
  static constexpr bool isArabicScript(int c) {
    return (c >= 0x600 && c <= 0x65F) || (c >= 0x66A && c <= 0x6EF) || (c >= 0x6FA && c <= 0x6FF);
  }
  /// The Hebrew block 0590-05FF.
  static constexpr bool isHebrewScript(int c) { return c >= 0x590 && c <= 0x5FF; }
  /// The Devanagari block 0900-097F.
  static constexpr bool isDevanagariScript(int c) { return c >= 0x900 && c <= 0x97F; }
  /// '0' to '9'.
  static constexpr bool isAsciiDigit(int c) { return c >= '0' && c <= '9'; }
  /// '1' to '9'.
  static constexpr bool isAsciiDigitNonzero(int c) { return c >= '1' && c <= '9'; }
  /// 'A' to 'Z', 'a' to 'z'.
  static constexpr bool isAsciiLetter(int c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
  }
  /// '0'-'9', 'A'-'F', 'a'-'f'.
  static constexpr bool isHexDigit(int c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
  }

  // ---- Other helpers.

  /// Value of a hex digit; letters go by ((c - 1) & 15) + 10 without any check.
  static constexpr int hex2dig(int c) { return c <= '9' ? c - '0' : ((c - 1) & 15) + 10; }
  /// Last code unit, or FFFF for an empty string.
  static char16_t last(const UnicodeString& s);
  /// Last code point, or FFFF for an empty string.
  static UChar32 last32(const UnicodeString& s);
  /// Decodes one UTF-8 sequence by its lead byte; a bad lead or continuation byte gives FFFD.
  /// Overlong forms are not rejected.
  static constexpr UChar32 UTF8toUChar32(uint8_t b0, uint8_t b1 = 0, uint8_t b2 = 0,
                                         uint8_t b3 = 0) {
    if (b0 < 0x80) return b0;
    auto cont = [](uint8_t b) { return (b & 0xC0) == 0x80; };
    if ((b0 & 0xE0) == 0xC0) return cont(b1) ? ((b0 & 0x1F) << 6) | (b1 & 0x3F) : 0xFFFD;
    if ((b0 & 0xF0) == 0xE0) {
      return cont(b1) && cont(b2) ? ((b0 & 0x0F) << 12) | ((b1 & 0x3F) << 6) | (b2 & 0x3F) : 0xFFFD;
    }
    if ((b0 & 0xF8) == 0xF0) {
      return cont(b1) && cont(b2) && cont(b3)
                 ? ((b0 & 0x07) << 18) | ((b1 & 0x3F) << 12) | ((b2 & 0x3F) << 6) | (b3 & 0x3F)
                 : 0xFFFD;
    }
    return 0xFFFD;
  }
  /// `u0` unless it is a high surrogate; then the pair's code point, or FFFD if `u1` is no low
  /// surrogate.
  static constexpr UChar32 UTF16toUChar32(char16_t u0, char16_t u1) {
    if (u0 < 0xD800 || u0 > 0xDBFF) return u0;
    if (u1 < 0xDC00 || u1 > 0xDFFF) return 0xFFFD;
    return 0x10000 + ((u0 - 0xD800) << 10) + (u1 - 0xDC00);
  }
  /// Each code point replaced by its mirror image, in the same order (not reversed).
  static UnicodeString getMirrorString(const UnicodeString& s);

  /// Pairs a line may not split: equal dashes and leaders, and the two halves of the vertical
  /// kana repeat mark (3033 or 3034 before 3035).
  static constexpr bool isInseparableChar(int c, int next) {
    switch (c) {
      case 0x2014:
      case 0x2015:
      case 0x2024:
      case 0x2025:
      case 0x2026:
        return next == c;
      case 0x3033:
      case 0x3034:
        return next == 0x3035;
      default:
        return false;
    }
  }
  /// Whether the line may not break between the code point at `pos` and the next one; the
  /// method decides how runs of more than two equal dashes are treated.
  static bool isInseparableCharEx(const UnicodeString& text, int32_t pos,
                                  INSEPARABLECHAR_METHOD method);

  /// Sideways vertical orientation: 1, 2 or 64 after the fallbacks are resolved.
  static TR50Property getTR50SVO(int c, const TR50Overrides* overrides = nullptr,
                                 bool rotateFallback = false);
  /// Mixed vertical orientation: 1, 2 or 64 after the fallbacks are resolved.
  static TR50Property getTR50MVO(int c, const TR50Overrides* overrides = nullptr,
                                 bool rotateFallback = false);

  /// ASCII 21-7E to its full-width form; other values stay.
  static constexpr char16_t toZenkaku(char16_t c) {
    return c >= 0x21 && c <= 0x7E ? static_cast<char16_t>(c + 0xFEE0) : c;
  }
  /// `toZenkaku` on each code unit, in place; returns a copy.
  static UnicodeString toZenkaku(UnicodeString& s);
  /// Half-width katakana FF61-FF9F to full-width katakana. Only that range is meant; other
  /// values come back unchanged.
  static char16_t toZenkakuKana(char16_t c);
  /// `toZenkakuKana` on each code unit, in place; returns a copy.
  static UnicodeString toZenkakuKana(UnicodeString& s);
  /// Small kana to full-size kana; other values stay.
  static char16_t toFullsizeKana(char16_t c);
  /// `toFullsizeKana` on each code unit, in place; returns a copy.
  static UnicodeString toFullsizeKana(UnicodeString& s);

  /// The ideograph of a radical: Kangxi radicals by their compatibility mapping; CJK radicals
  /// supplement by resemblance, or, when `strict`, only the two with a real mapping. 0 for none.
  static UChar32 convertRadical(int c, bool strict = true);
};

}  // namespace ZQCommonNS
