// zqtool char <U+XXXX>...: the classification of each code point, one line each.
#include <cstdio>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

struct Predicate {
  const char* name;
  bool (*test)(int);
};

// Every one-argument predicate of ZQChar, in the order of its header.
const std::vector<Predicate>& predicates() {
  static const std::vector<Predicate> list = {
      {"isAlphabetic", ZQChar::isAlphabetic},
      {"isLetter", ZQChar::isLetter},
      {"isNumber", ZQChar::isNumber},
      {"isLetterNumber", ZQChar::isLetterNumber},
      {"isPunct", [](int c) { return ZQChar::isPunct(c); }},
      {"isSymbol", ZQChar::isSymbol},
      {"isGraphemeCluster", ZQChar::isGraphemeCluster},
      {"isUndefined", ZQChar::isUndefined},
      {"isZeroWidthControlCode", ZQChar::isZeroWidthControlCode},
      {"isZenkaku", [](int c) { return ZQChar::isZenkaku(c); }},
      {"isZenkakuAmbiguous", [](int c) { return ZQChar::isZenkakuAmbiguous(c); }},
      {"isHankaku", [](int c) { return ZQChar::isHankaku(c); }},
      {"isHankakuChar", ZQChar::isHankakuChar},
      {"isHankakuKana", ZQChar::isHankakuKana},
      {"isHalf", ZQChar::isHalf},
      {"isValidChar", ZQChar::isValidChar},
      {"isValidChar11", ZQChar::isValidChar11},
      {"isNCNameStartChar", ZQChar::isNCNameStartChar},
      {"isNameStartChar", ZQChar::isNameStartChar},
      {"isNCNameChar", ZQChar::isNCNameChar},
      {"isNameChar", ZQChar::isNameChar},
      {"isNCNameCharForCSSExp", ZQChar::isNCNameCharForCSSExp},
      {"isMIMETokenChar", ZQChar::isMIMETokenChar},
      {"isWhitespace", [](int c) { return ZQChar::isWhitespace(c); }},
      {"isCssWhitespace", ZQChar::isCssWhitespace},
      {"isCssWhitespaceWoNewline", ZQChar::isCssWhitespaceWoNewline},
      {"isCssNewline", ZQChar::isCssNewline},
      {"isSpaceChar", ZQChar::isSpaceChar},
      {"isSpaceChar2", ZQChar::isSpaceChar2},
      {"isHardBreak", ZQChar::isHardBreak},
      {"isHardBreakOrInvalid", ZQChar::isHardBreakOrInvalid},
      {"isFixedWidthSpaceChar", ZQChar::isFixedWidthSpaceChar},
      {"isZeroWidthSpaceChar", ZQChar::isZeroWidthSpaceChar},
      {"isOpenParenEtc", ZQChar::isOpenParenEtc},
      {"isCloseParenEtc", ZQChar::isCloseParenEtc},
      {"isZenkakuMidDotEtc", ZQChar::isZenkakuMidDotEtc},
      {"isHalfPunct", ZQChar::isHalfPunct},
      {"isFullStopChar", ZQChar::isFullStopChar},
      {"isHyphen", ZQChar::isHyphen},
      {"isNonStarterJIS", ZQChar::isNonStarterJIS},
      {"isSymbolJIS", ZQChar::isSymbolJIS},
      {"isAmbiguousHan", ZQChar::isAmbiguousHan},
      {"isKanaKanjiCJK", ZQChar::isKanaKanjiCJK},
      {"isNoVerticalChar", ZQChar::isNoVerticalChar},
      {"isRadical", ZQChar::isRadical},
      {"isMathOperator", ZQChar::isMathOperator},
      {"isCurrencySymbol", ZQChar::isCurrencySymbol},
      {"isBullet", ZQChar::isBullet},
      {"isVariationSelectorCharacter", ZQChar::isVariationSelectorCharacter},
      {"isIdeographicVariationSelectorCharacter", ZQChar::isIdeographicVariationSelectorCharacter},
      {"isPUA", ZQChar::isPUA},
      {"isArabic", ZQChar::isArabic},
      {"isArabicScript", ZQChar::isArabicScript},
      {"isHebrewScript", ZQChar::isHebrewScript},
      {"isDevanagariScript", ZQChar::isDevanagariScript},
      {"isAsciiDigit", ZQChar::isAsciiDigit},
      {"isAsciiDigitNonzero", ZQChar::isAsciiDigitNonzero},
      {"isAsciiLetter", ZQChar::isAsciiLetter},
      {"isHexDigit", ZQChar::isHexDigit},
  };
  return list;
}

std::string hex(int c) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "U+%04X", static_cast<unsigned>(c));
  return buf;
}

// Hex digits after a prefix; at most 8 and no more than a positive int holds.
std::optional<int> parseHex(const std::string& digits) {
  if (digits.empty() || digits.size() > 8) return std::nullopt;
  unsigned long value = 0;
  for (char ch : digits) {
    int d;
    if (ch >= '0' && ch <= '9') {
      d = ch - '0';
    } else if (ch >= 'a' && ch <= 'f') {
      d = ch - 'a' + 10;
    } else if (ch >= 'A' && ch <= 'F') {
      d = ch - 'A' + 10;
    } else {
      return std::nullopt;
    }
    value = value * 16 + d;
  }
  if (value > 0x7FFFFFFFul) return std::nullopt;
  return static_cast<int>(value);
}

// "U+XXXX", "0xXXXX", or one literal character.
std::optional<int> parseCodePoint(const std::string& arg) {
  if (arg.size() > 2 && (arg[0] == 'U' || arg[0] == 'u') && arg[1] == '+') {
    return parseHex(arg.substr(2));
  }
  if (arg.size() > 2 && arg[0] == '0' && (arg[1] == 'x' || arg[1] == 'X')) {
    return parseHex(arg.substr(2));
  }
  const UnicodeString text = zqtool::fromUtf8(arg);
  if (text.isEmpty() || text.countChar32() != 1) return std::nullopt;
  return text.char32At(0);
}

std::string valueName(UProperty property, int32_t value) {
  const char* name = u_getPropertyValueName(property, value, U_SHORT_PROPERTY_NAME);
  return name != nullptr ? name : std::to_string(value);
}

void printLine(int c) {
  std::cout << hex(c);
  if (c >= 0 && c <= 0x10FFFF && !U_IS_SURROGATE(c) && u_isgraph(c)) {
    UnicodeString s;
    s.append(static_cast<UChar32>(c));
    std::cout << " '" << zqtool::utf8(s) << "'";
  }
  std::cout << " gc=" << valueName(UCHAR_GENERAL_CATEGORY, ZQChar::getCategory(c))
            << " ea=" << valueName(UCHAR_EAST_ASIAN_WIDTH, ZQChar::getEastAsianWidth(c))
            << " lb=" << valueName(UCHAR_LINE_BREAK, ZQChar::getLineBreak(c))
            << " sc=" << valueName(UCHAR_SCRIPT, ZQChar::getIntPropertyValue(c, UCHAR_SCRIPT))
            << " svo=" << ZQChar::getTR50SVO(c) << " mvo=" << ZQChar::getTR50MVO(c);
  if (ZQChar::getTR50SVO(c, nullptr, true) != ZQChar::getTR50SVO(c)) {
    std::cout << " svo-rotated=" << ZQChar::getTR50SVO(c, nullptr, true);
  }
  if (ZQChar::getTR50MVO(c, nullptr, true) != ZQChar::getTR50MVO(c)) {
    std::cout << " mvo-rotated=" << ZQChar::getTR50MVO(c, nullptr, true);
  }
  if (UChar32 r = ZQChar::convertRadical(c, false); r != 0) {
    std::cout << " radical=" << hex(r);
    if (ZQChar::convertRadical(c, true) == 0) std::cout << "(loose)";
  }
  if (c >= 0 && c <= 0xFFFF) {
    const auto unit = static_cast<char16_t>(c);
    if (ZQChar::toZenkaku(unit) != unit) std::cout << " zenkaku=" << hex(ZQChar::toZenkaku(unit));
    if (ZQChar::toZenkakuKana(unit) != unit) {
      std::cout << " zenkaku-kana=" << hex(ZQChar::toZenkakuKana(unit));
    }
    if (ZQChar::toFullsizeKana(unit) != unit) {
      std::cout << " fullsize=" << hex(ZQChar::toFullsizeKana(unit));
    }
  }
  if (c >= 0 && c <= 0x10FFFF && u_charMirror(c) != c)
    std::cout << " mirror=" << hex(u_charMirror(c));
  std::cout << " :";
  for (const Predicate& p : predicates()) {
    if (p.test(c)) std::cout << ' ' << p.name;
  }
  std::cout << "\n";
}

int runChar(const zqtool::Args& args) {
  if (args.empty()) {
    std::cerr << "usage: zqtool char <U+XXXX | 0xXXXX | character>...\n";
    return 2;
  }
  int status = 0;
  for (const auto& arg : args) {
    std::optional<int> c = parseCodePoint(arg);
    if (!c) {
      std::cerr << "zqtool char: not a code point: " << arg << "\n";
      status = 1;
      continue;
    }
    printLine(*c);
  }
  return status;
}

zqtool::Register reg("char", "char <U+XXXX>...",
                     "print the classification of each code point (U+XXXX, 0xXXXX or a character)",
                     runChar);

}  // namespace
