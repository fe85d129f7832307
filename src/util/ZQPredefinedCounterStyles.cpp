// The named counter styles a document can ask for, each built on first demand and kept until
// ZQUtil::cleanup.
#include <unicode/locid.h>

#include <climits>
#include <cstdio>
#include <initializer_list>
#include <map>
#include <utility>
#include <vector>

#include "common/ZQLock.h"
#include "common/ZQUtil.h"
#include "util/ZQPredefinedCounterStyles.h"
#include "util/ZQUtilInternal.h"

namespace ZQCommonNS {

using CounterStyle = ZQUtil::CounterStyle;
using Symbol = CounterStyle::Symbol;

namespace {

constexpr long long kInfinite = LLONG_MAX;

// ---- Building blocks ----

Symbol text(const char16_t* s) { return Symbol(UnicodeString(s)); }

// One symbol per code point of `s`.
void letters(CounterStyle& style, const char16_t* s) { style.addSymbols(text(s)); }

// `count` consecutive code points from `first`.
void run(CounterStyle& style, UChar32 first, int count) {
  for (int i = 0; i < count; ++i) style.addSymbol(first + i);
}

// Each code point of the list is one symbol.
void codePoints(CounterStyle& style, std::initializer_list<UChar32> list) {
  for (UChar32 c : list) style.addSymbol(c);
}

// The upper case of a list of letters, one symbol per code point.
void upperLetters(CounterStyle& style, const char16_t* s) {
  UnicodeString upper(s);
  upper.toUpper(icu::Locale::getRoot());
  style.addSymbols(Symbol(upper));
}

void additive(CounterStyle& style, std::initializer_list<std::pair<int, const char16_t*>> list) {
  for (const auto& [weight, symbol] : list) style.addAdditiveSymbol(weight, text(symbol));
}

// Nine symbols per power of ten, from `thousands` (weights 9000..1000) down to the ones;
// `digits[p][d - 1]` is the text of d * 10^p.
void additivePlaces(CounterStyle& style, const std::vector<std::vector<UnicodeString>>& digits) {
  int power = 1;
  for (size_t p = 1; p < digits.size(); ++p) power *= 10;
  for (size_t p = digits.size(); p-- > 0; power /= 10)
    for (int d = 9; d >= 1; --d) style.addAdditiveSymbol(d * power, Symbol(digits[p][d - 1]));
}

UnicodeString cp(UChar32 c) { return UnicodeString(c); }

// Nine consecutive letters from `first`.
std::vector<UnicodeString> nine(UChar32 first) {
  std::vector<UnicodeString> v;
  for (int i = 0; i < 9; ++i) v.push_back(cp(first + i));
  return v;
}

// Each of the nine texts with `tail` behind it (the digit with its unit).
std::vector<UnicodeString> withUnit(const std::vector<UnicodeString>& digits,
                                    const UnicodeString& unit, bool writeOne) {
  std::vector<UnicodeString> v;
  for (size_t i = 0; i < digits.size(); ++i) {
    UnicodeString s = (i == 0 && !writeOne) ? UnicodeString() : digits[i];
    v.push_back(s.append(unit));
  }
  return v;
}

void cjkSuffix(CounterStyle& style) { style.setSuffix(0x3001); }

// ---- Shared definitions ----

void decimalDigits(CounterStyle& style, UChar32 zero) { run(style, zero, 10); }

void lowerLatin(CounterStyle& style) { run(style, 'a', 26); }
void upperLatin(CounterStyle& style) { run(style, 'A', 26); }

void fullwidthLowerLatin(CounterStyle& style) {
  run(style, 0xFF41, 26);
  style.setSuffix(0xFF0E);
}
void fullwidthUpperLatin(CounterStyle& style) {
  run(style, 0xFF21, 26);
  style.setSuffix(0xFF0E);
}

void roman(CounterStyle& style, long long high, bool upper) {
  style.addRange(1, high);
  if (upper) {
    additive(style, {{1000, u"M"},
                     {900, u"CM"},
                     {500, u"D"},
                     {400, u"CD"},
                     {100, u"C"},
                     {90, u"XC"},
                     {50, u"L"},
                     {40, u"XL"},
                     {10, u"X"},
                     {9, u"IX"},
                     {5, u"V"},
                     {4, u"IV"},
                     {1, u"I"}});
  } else {
    additive(style, {{1000, u"m"},
                     {900, u"cm"},
                     {500, u"d"},
                     {400, u"cd"},
                     {100, u"c"},
                     {90, u"xc"},
                     {50, u"l"},
                     {40, u"xl"},
                     {10, u"x"},
                     {9, u"ix"},
                     {5, u"v"},
                     {4, u"iv"},
                     {1, u"i"}});
  }
}

// Armenian: four blocks of nine consecutive letters for ones, tens, hundreds and thousands.
void armenian(CounterStyle& style, bool upper) {
  style.addRange(1, 9999);
  const UChar32 base = upper ? 0x0531 : 0x0561;
  additivePlaces(style, {nine(base), nine(base + 9), nine(base + 18), nine(base + 27)});
}

// Greek alphabetic numerals: the letters of ones, tens and hundreds, and the same with the
// lower numeral sign U+0375 in front for thousands, ten thousands and hundred thousands. The
// modern forms write six as sigma tau; the ancient ones with stigma.
void greekNumerals(CounterStyle& style, bool upper, bool modern) {
  style.addRange(1, 999999);
  std::vector<UnicodeString> ones, tens, hundreds;
  const char16_t* o = upper ? u"\u0391\u0392\u0393\u0394\u0395\u03DA\u0396\u0397\u0398"
                            : u"\u03B1\u03B2\u03B3\u03B4\u03B5\u03DB\u03B6\u03B7\u03B8";
  const char16_t* t = upper ? u"\u0399\u039A\u039B\u039C\u039D\u039E\u039F\u03A0\u03DE"
                            : u"\u03B9\u03BA\u03BB\u03BC\u03BD\u03BE\u03BF\u03C0\u03DF";
  const char16_t* h = upper ? u"\u03A1\u03A3\u03A4\u03A5\u03A6\u03A7\u03A8\u03A9\u03E0"
                            : u"\u03C1\u03C3\u03C4\u03C5\u03C6\u03C7\u03C8\u03C9\u03E1";
  for (int i = 0; i < 9; ++i) {
    ones.push_back(cp(o[i]));
    tens.push_back(cp(t[i]));
    hundreds.push_back(cp(h[i]));
  }
  if (modern) ones[5] = upper ? u"\u03A3\u03A4" : u"\u03C3\u03C4";
  auto thousand = [](const std::vector<UnicodeString>& v) {
    std::vector<UnicodeString> r;
    for (const auto& s : v) r.push_back(UnicodeString(u"\u0375") + s);
    return r;
  };
  additivePlaces(style, {ones, tens, hundreds, thousand(ones), thousand(tens), thousand(hundreds)});
  style.setSuffix(0x0374);
}

// East Asian long forms written additively, -9999 to 9999: `digits` are one to nine,
// `units` ten, hundred and thousand; `writeOne` keeps the "one" before a unit.
void eastAsianAdditive(CounterStyle& style, const char16_t* digits, const char16_t* units,
                       bool writeOne, UChar32 zero) {
  style.addRange(-9999, 9999);
  std::vector<UnicodeString> d;
  for (int i = 0; i < 9; ++i) d.push_back(cp(digits[i]));
  additivePlaces(style, {d, withUnit(d, cp(units[0]), writeOne),
                         withUnit(d, cp(units[1]), writeOne), withUnit(d, cp(units[2]), writeOne)});
  style.addAdditiveSymbol(0, zero);
  style.setFallback(ZQN_cjk_decimal);
}

void koreanSuffixAndSign(CounterStyle& style) {
  style.setSuffix(text(u", "));
  style.setNegative(text(u"\uB9C8\uC774\uB108\uC2A4 "), Symbol());
}

// The four Chinese long forms: digits 0-9, then ten, hundred, thousand.
void chinese(CounterStyle& style, const char16_t* symbols, UChar32 minus) {
  style.addRange(-9999, 9999);
  letters(style, symbols);
  style.setFallback(ZQN_cjk_decimal);
  cjkSuffix(style);
  style.setNegative(Symbol(minus), Symbol());
}

const char16_t* const kSimpInformal =
    u"\u96F6\u4E00\u4E8C\u4E09\u56DB\u4E94\u516D\u4E03\u516B\u4E5D\u5341\u767E\u5343";
const char16_t* const kSimpFormal =
    u"\u96F6\u58F9\u8D30\u53C1\u8086\u4F0D\u9646\u67D2\u634C\u7396\u62FE\u4F70\u4EDF";
const char16_t* const kTradInformal =
    u"\u96F6\u4E00\u4E8C\u4E09\u56DB\u4E94\u516D\u4E03\u516B\u4E5D\u5341\u767E\u5343";
const char16_t* const kTradFormal =
    u"\u96F6\u58F9\u8CB3\u53C3\u8086\u4F0D\u9678\u67D2\u634C\u7396\u62FE\u4F70\u4EDF";

void tradChineseInformal(CounterStyle& style) { chinese(style, kTradInformal, 0x8CA0); }
void greekLowerModern(CounterStyle& style) { greekNumerals(style, false, true); }

// First-order Ethiopic syllables, in the traditional order of the consonants.
enum Ethiopic : UChar32 {
  HA = 0x1200,
  LA = 0x1208,
  HHA = 0x1210,
  MA = 0x1218,
  SZA = 0x1220,
  RA = 0x1228,
  SA = 0x1230,
  SHA = 0x1238,
  QA = 0x1240,
  QHA = 0x1250,
  BA = 0x1260,
  VA = 0x1268,
  TA = 0x1270,
  CA = 0x1278,
  XA = 0x1280,
  NA = 0x1290,
  NYA = 0x1298,
  GLOTTAL_A = 0x12A0,
  KA = 0x12A8,
  KXA = 0x12B8,
  WA = 0x12C8,
  PHARYNGEAL_A = 0x12D0,
  ZA = 0x12D8,
  ZHA = 0x12E0,
  YA = 0x12E8,
  DA = 0x12F0,
  DDA = 0x12F8,
  JA = 0x1300,
  GA = 0x1308,
  GGA = 0x1318,
  THA = 0x1320,
  CHA = 0x1328,
  PHA = 0x1330,
  TSA = 0x1338,
  TZA = 0x1340,
  FA = 0x1348,
  PA = 0x1350
};

// An Ethiopic alphabet: the suffix is the preface colon and a space.
void ethiopicLetters(CounterStyle& style, std::initializer_list<UChar32> list) {
  codePoints(style, list);
  style.setSuffix(text(u"\u1366 "));
}

// "ari" and "blin" keep the suffix U+3166.
void ethiopicLettersOldSuffix(CounterStyle& style, std::initializer_list<UChar32> list) {
  codePoints(style, list);
  style.setSuffix(0x3166);
}

// The Cyrillic alphabets. The short forms leave out the letters that lists skip (such as
// the Russian short form without yo, short i, hard sign, yery and soft sign); the "-full"
// forms are the whole alphabet of the language in its order.
const char16_t* const kRussian = u"абвгдежзиклмнопрстуфхцчшщэюя";
const char16_t* const kRussianFull = u"абвгдеёжзийклмнопрстуфхцчшщъыьэюя";
const char16_t* const kUkrainian = u"абвгдеєжзиіклмнопрстуфхцчшюя";
const char16_t* const kUkrainianFull = u"абвгґдеєжзиіїйклмнопрстуфхцчшщьюя";
const char16_t* const kBelorussian = u"абвгдеёжзійклмнопрстуўфхцчшыьэюя";
const char16_t* const kBulgarian = u"абвгдежзиклмнопрстуфхцчшщюя";
const char16_t* const kMacedonian = u"абвгдѓежзѕијклљмнњопрстќуфхцчџш";
const char16_t* const kSerboCroatian = u"абвгдђежзијклљмнњопрстћуфхцчџш";

// Oromo in its Latin orthography (qubee): the single letters it writes natively, without the
// loan letters p, v and z. Its digraphs (ch, dh, ny, ph, sh) are left out, since with them
// two numbers could read alike.
const char16_t* const kOromoQubee = u"abcdefghijklmnoqrstuwxy";

struct StyleDefinition {
  const char16_t* name;
  ZQNameEnum system;
  void (*build)(CounterStyle&);
};

// Each style is built as ranges, symbols, fallback, suffix, negative; what is not set keeps
// the defaults (suffix ". ", negative "-", fallback "decimal").
//
// Where a list of letters was never published for a name (the "-full" Cyrillic forms, the
// Oromo qubee forms, and the Ethiopic alphabets of Ari, Blin, Dizi, Gedeo, Gumuz, Hadiyya,
// Harari, Kafa, Kebena, Kembata, Konso, Kunama, Me'en, Oromo, Saho, Sidama, Silt'e, Tigre,
// Wolaytta and Yemsa), the list is ours: for the Ethiopic ones, the first-order syllable of
// each consonant the language writes, in the traditional order of the syllabary.
const StyleDefinition kStyles[] = {
    // ---- numeric ----
    {u"arabic-indic", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0660); }},
    {u"bengali", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x09E6); }},
    {u"binary", ZQN_numeric, [](CounterStyle& s) { letters(s, u"01"); }},
    {u"cambodian", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x17E0); }},
    {u"cjk-decimal", ZQN_numeric,
     [](CounterStyle& s) {
       s.addRange(0, kInfinite);
       letters(s, u"\u3007\u4E00\u4E8C\u4E09\u56DB\u4E94\u516D\u4E03\u516B\u4E5D");
       cjkSuffix(s);
     }},
    {u"decimal", ZQN_numeric,
     [](CounterStyle& s) {
       letters(s, u"0123456789");
       s.setFallback(ZQName());
     }},
    {u"devanagari", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0966); }},
    {u"fullwidth-decimal", ZQN_numeric,
     [](CounterStyle& s) {
       decimalDigits(s, 0xFF10);
       s.setSuffix(0xFF0E);
     }},
    {u"gujarati", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0AE6); }},
    {u"gurmukhi", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0A66); }},
    {u"kannada", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0CE6); }},
    {u"khmer", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x17E0); }},
    {u"lao", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0ED0); }},
    {u"lepcha", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x1C40); }},
    {u"lower-hexadecimal", ZQN_numeric, [](CounterStyle& s) { letters(s, u"0123456789abcdef"); }},
    {u"malayalam", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0D66); }},
    {u"mongolian", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x1810); }},
    {u"myanmar", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x1040); }},
    {u"new-base-60", ZQN_numeric,
     [](CounterStyle& s) {
       letters(s, u"0123456789ABCDEFGHJKLMNPQRSTUVWXYZ_abcdefghijkmnopqrstuvwxyz");
     }},
    {u"octal", ZQN_numeric, [](CounterStyle& s) { letters(s, u"01234567"); }},
    {u"oriya", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0B66); }},
    {u"persian", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x06F0); }},
    {u"shan", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x1090); }},
    {u"super-decimal", ZQN_numeric,
     [](CounterStyle& s) {
       letters(s, u"\u2070\u00B9\u00B2\u00B3\u2074\u2075\u2076\u2077\u2078\u2079");
     }},
    {u"tamil", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0BE6); }},
    {u"telugu", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0C66); }},
    {u"thai", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0E50); }},
    {u"tibetan", ZQN_numeric, [](CounterStyle& s) { decimalDigits(s, 0x0F20); }},
    {u"upper-hexadecimal", ZQN_numeric, [](CounterStyle& s) { letters(s, u"0123456789ABCDEF"); }},

    // ---- alphabetic ----
    {u"ari", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLettersOldSuffix(
           s, {HA, LA, MA,  RA, SA, SHA, QA, BA, VA,  TA,  CA,  NA,  NYA, GLOTTAL_A, KA,
               WA, ZA, ZHA, YA, DA, DDA, JA, GA, THA, CHA, PHA, TSA, FA,  PA});
     }},
    {u"blin", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLettersOldSuffix(s,
                                {HA, LA, HHA, MA,  RA,        SA,  SHA, QA,  QHA,          BA, VA,
                                 TA, CA, NA,  NYA, GLOTTAL_A, KA,  KXA, WA,  PHARYNGEAL_A, ZA, ZHA,
                                 YA, DA, JA,  GA,  GGA,       THA, CHA, PHA, TSA,          FA, PA});
     }},
    {u"cjk-earthly-branch", ZQN_alphabetic,
     [](CounterStyle& s) {
       // The eleventh branch is U+620C, as published.
       letters(s, u"\u5B50\u4E11\u5BC5\u536F\u8FB0\u5DF3\u5348\u672A\u7533\u9149\u620C\u4EA5");
       s.setFallback(ZQN_cjk_decimal);
       cjkSuffix(s);
     }},
    {u"cjk-heavenly-stem", ZQN_alphabetic,
     [](CounterStyle& s) {
       letters(s, u"\u7532\u4E59\u4E19\u4E01\u620A\u5DF1\u5E9A\u8F9B\u58EC\u7678");
       s.setFallback(ZQN_cjk_decimal);
       cjkSuffix(s);
     }},
    {u"dizi", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, MA,  RA, SA, SHA, QA, BA,  TA,  CA,  NA,  NYA, GLOTTAL_A, KA,
                           WA, ZA, ZHA, YA, DA, JA,  GA, THA, CHA, PHA, TSA, FA,  PA});
     }},
    {u"fullwidth-lower-alpha", ZQN_alphabetic, fullwidthLowerLatin},
    {u"fullwidth-lower-latin", ZQN_alphabetic, fullwidthLowerLatin},
    {u"fullwidth-upper-alpha", ZQN_alphabetic, fullwidthUpperLatin},
    {u"fullwidth-upper-latin", ZQN_alphabetic, fullwidthUpperLatin},
    {u"gedeo", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, MA, RA, SA, SHA, QA, BA, TA,  CA,  NA,  NYA, GLOTTAL_A,
                           KA, WA, ZA, YA, DA, DDA, JA, GA, THA, CHA, PHA, TSA, FA});
     }},
    {u"gumuz", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s,
                       {HA, LA, MA,  RA, SA, SHA, QA, BA,  TA,  CA,  NA,  NYA, GLOTTAL_A, KA, KXA,
                        WA, ZA, ZHA, YA, DA, JA,  GA, GGA, THA, CHA, PHA, TSA, FA,        PA});
     }},
    {u"hadiyya", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, MA, RA, SA, SHA, QA, BA,  TA,  CA,  NA,  NYA, GLOTTAL_A,
                           KA, WA, ZA, YA, DA, JA,  GA, THA, CHA, PHA, TSA, FA,  PA});
     }},
    {u"harari", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, HHA, MA,        RA,  SA,  SHA, QA,           BA, TA,  CA,
                           XA, NA, NYA, GLOTTAL_A, KA,  KXA, WA,  PHARYNGEAL_A, ZA, ZHA, YA,
                           DA, JA, GA,  THA,       CHA, PHA, TSA, FA,           PA});
     }},
    {u"hindi", ZQN_alphabetic,
     [](CounterStyle& s) {
       letters(s,
               u"\u0915\u0916\u0917\u0918\u0919\u091A\u091B\u091C\u091D\u091E\u091F"
               u"\u0920\u0921\u0922\u0923\u0924\u0925\u0926\u0927\u0928\u092A\u092B"
               u"\u092C\u092D\u092E\u092F\u0930\u0932\u0935\u0936\u0937\u0938\u0939");
     }},
    {u"hiragana", ZQN_alphabetic,
     [](CounterStyle& s) {
       letters(s,
               u"あいうえおかきくけこさしすせそたちつてとなにぬねのはひふへほまみむめもやゆよ"
               u"らりるれろわゐゑをん");
       cjkSuffix(s);
     }},
    {u"hiragana-iroha", ZQN_alphabetic,
     [](CounterStyle& s) {
       letters(s,
               u"いろはにほへとちりぬるをわかよたれそつねならむうゐのおくやまけふこえてあさきゆ"
               u"めみしゑひもせす");
       cjkSuffix(s);
     }},
    {u"kaffa", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s,
                       {HA, LA, MA,  RA, SA, SHA, QA, BA,  TA,  CA,  NA,  NYA, GLOTTAL_A, KA, KXA,
                        WA, ZA, ZHA, YA, DA, JA,  GA, THA, CHA, PHA, TSA, TZA, FA,        PA});
     }},
    {u"katakana", ZQN_alphabetic,
     [](CounterStyle& s) {
       letters(s,
               u"アイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホマミムメモヤユヨ"
               u"ラリルレロワヰヱヲン");
       cjkSuffix(s);
     }},
    {u"katakana-iroha", ZQN_alphabetic,
     [](CounterStyle& s) {
       letters(s,
               u"イロハニホヘトチリヌルヲワカヨタレソツネナラムウヰノオクヤマケフコエテアサキユ"
               u"メミシヱヒモセス");
       cjkSuffix(s);
     }},
    {u"kebena", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, MA,  RA, SA, SHA, QA, BA, TA,  CA,  NA,  NYA, GLOTTAL_A, KA,
                           WA, ZA, ZHA, YA, DA, DDA, JA, GA, THA, CHA, PHA, TSA, FA,        PA});
     }},
    {u"kembata", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, MA, RA,  SA, SHA, QA, BA, VA,  TA,  CA,  NA,  NYA, GLOTTAL_A,
                           KA, WA, ZA, ZHA, YA, DA,  JA, GA, THA, CHA, PHA, TSA, FA,  PA});
     }},
    {u"khmer-consonant", ZQN_alphabetic,
     [](CounterStyle& s) {
       run(s, 0x1780, 29);
       run(s, 0x179F, 4);
     }},
    {u"konso", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA,  LA, MA, RA, SA, SHA, QA, BA, TA,  CA,  NA,  NYA, GLOTTAL_A, KA,
                           KXA, WA, ZA, YA, DA, DDA, JA, GA, GGA, THA, CHA, PHA, FA,        PA});
     }},
    {u"korean-consonant", ZQN_alphabetic,
     [](CounterStyle& s) {
       codePoints(s, {0x3131, 0x3134, 0x3137, 0x3139, 0x3141, 0x3142, 0x3145, 0x3147, 0x3148,
                      0x314A, 0x314B, 0x314C, 0x314D, 0x314E});
     }},
    {u"korean-syllable", ZQN_alphabetic,
     [](CounterStyle& s) {
       codePoints(s, {0xAC00, 0xB098, 0xB2E4, 0xB77C, 0xB9C8, 0xBC14, 0xC0AC, 0xC544, 0xC790,
                      0xCC28, 0xCE74, 0xD0C0, 0xD30C, 0xD558});
     }},
    {u"kunama", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, MA, RA, SA, SHA, BA, TA,  CA,  NA, NYA, GLOTTAL_A,
                           KA, WA, ZA, YA, DA, JA,  GA, GGA, CHA, FA, PA});
     }},
    {u"lower-alpha", ZQN_alphabetic, lowerLatin},
    {u"lower-belorussian", ZQN_alphabetic, [](CounterStyle& s) { letters(s, kBelorussian); }},
    {u"lower-bulgarian", ZQN_alphabetic, [](CounterStyle& s) { letters(s, kBulgarian); }},
    {u"lower-greek", ZQN_alphabetic,
     [](CounterStyle& s) {
       run(s, 0x03B1, 17);  // alpha to rho
       run(s, 0x03C3, 7);   // sigma to omega, without the final sigma
     }},
    {u"lower-latin", ZQN_alphabetic, lowerLatin},
    {u"lower-macedonian", ZQN_alphabetic, [](CounterStyle& s) { letters(s, kMacedonian); }},
    {u"lower-oromo-qubee", ZQN_alphabetic, [](CounterStyle& s) { letters(s, kOromoQubee); }},
    {u"lower-russian", ZQN_alphabetic, [](CounterStyle& s) { letters(s, kRussian); }},
    {u"lower-russian-full", ZQN_alphabetic, [](CounterStyle& s) { letters(s, kRussianFull); }},
    {u"lower-serbo-croatian", ZQN_alphabetic, [](CounterStyle& s) { letters(s, kSerboCroatian); }},
    {u"lower-ukrainian", ZQN_alphabetic, [](CounterStyle& s) { letters(s, kUkrainian); }},
    {u"lower-ukrainian-full", ZQN_alphabetic, [](CounterStyle& s) { letters(s, kUkrainianFull); }},
    {u"meen", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA,  LA,        MA,  RA,  SA,  SHA,          QA,  BA,  TA, CA, NA,
                           NYA, GLOTTAL_A, KA,  KXA, WA,  PHARYNGEAL_A, ZA,  ZHA, YA, DA, DDA,
                           JA,  GA,        GGA, THA, CHA, PHA,          TSA, FA,  PA});
     }},
    {u"oromo", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, MA, RA, SA,  SHA, QA, BA,  TA,  CA,  NA,  NYA, GLOTTAL_A, KA,
                           WA, ZA, YA, DA, DDA, JA,  GA, THA, CHA, PHA, TSA, FA,  PA});
     }},
    {u"saho", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(
           s, {HA,  LA, HHA,          MA, RA, SA, SHA, QA, BA, TA,  CA,  NA,  NYA, GLOTTAL_A, KA,
               KXA, WA, PHARYNGEAL_A, ZA, YA, DA, DDA, JA, GA, THA, CHA, PHA, TSA, FA,        PA});
     }},
    {u"sidama", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, MA, RA, SA,  SHA, QA, BA,  TA,  CA,  NA,  NYA, GLOTTAL_A, KA,
                           WA, ZA, YA, DA, DDA, JA,  GA, THA, CHA, PHA, TSA, FA,  PA,        ZHA});
     }},
    {u"silti", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, HHA, MA,  RA,        SA,  SHA, QA,  BA,           VA, TA,
                           CA, XA, NA,  NYA, GLOTTAL_A, KA,  KXA, WA,  PHARYNGEAL_A, ZA, ZHA,
                           YA, DA, JA,  GA,  THA,       CHA, PHA, TSA, TZA,          FA, PA});
     }},
    {u"thai-alphabetic", ZQN_alphabetic,
     [](CounterStyle& s) {
       codePoints(s, {0x0E01, 0x0E02, 0x0E04, 0x0E07, 0x0E08, 0x0E09, 0x0E0A, 0x0E0B, 0x0E0C,
                      0x0E0D, 0x0E0E, 0x0E0F, 0x0E10, 0x0E11, 0x0E12, 0x0E13, 0x0E14, 0x0E15,
                      0x0E16, 0x0E17, 0x0E18, 0x0E19, 0x0E1A, 0x0E1B, 0x0E1C, 0x0E1D, 0x0E1E,
                      0x0E1F, 0x0E20, 0x0E21, 0x0E22, 0x0E23, 0x0E25, 0x0E27, 0x0E28, 0x0E29,
                      0x0E2A, 0x0E2B, 0x0E2C, 0x0E2D, 0x0E2E});
     }},
    {u"tigre", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(
           s, {HA, LA,           HHA, MA, RA, SA, SHA, QA,  BA,  TA,  CA,  NA, GLOTTAL_A, KA,
               WA, PHARYNGEAL_A, ZA,  YA, DA, JA, GA,  THA, CHA, PHA, TSA, FA, PA});
     }},
    {u"upper-alpha", ZQN_alphabetic, upperLatin},
    {u"upper-belorussian", ZQN_alphabetic, [](CounterStyle& s) { upperLetters(s, kBelorussian); }},
    {u"upper-bulgarian", ZQN_alphabetic, [](CounterStyle& s) { upperLetters(s, kBulgarian); }},
    {u"upper-greek", ZQN_alphabetic,
     [](CounterStyle& s) {
       run(s, 0x0391, 17);  // Alpha to Rho
       run(s, 0x03A3, 7);   // Sigma to Omega
     }},
    {u"upper-latin", ZQN_alphabetic, upperLatin},
    {u"upper-macedonian", ZQN_alphabetic, [](CounterStyle& s) { upperLetters(s, kMacedonian); }},
    {u"upper-oromo-qubee", ZQN_alphabetic, [](CounterStyle& s) { upperLetters(s, kOromoQubee); }},
    {u"upper-russian", ZQN_alphabetic, [](CounterStyle& s) { upperLetters(s, kRussian); }},
    {u"upper-russian-full", ZQN_alphabetic, [](CounterStyle& s) { upperLetters(s, kRussianFull); }},
    {u"upper-serbo-croatian", ZQN_alphabetic,
     [](CounterStyle& s) { upperLetters(s, kSerboCroatian); }},
    {u"upper-ukrainian", ZQN_alphabetic, [](CounterStyle& s) { upperLetters(s, kUkrainian); }},
    {u"upper-ukrainian-full", ZQN_alphabetic,
     [](CounterStyle& s) { upperLetters(s, kUkrainianFull); }},
    {u"wolaita", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s, {HA, LA, MA,  RA, SA, SHA, QA, BA, VA,  TA,  CA,  NA,  NYA, GLOTTAL_A, KA,
                           WA, ZA, ZHA, YA, DA, DDA, JA, GA, THA, CHA, PHA, TSA, FA,  PA});
     }},
    {u"yemsa", ZQN_alphabetic,
     [](CounterStyle& s) {
       ethiopicLetters(s,
                       {HA, LA, MA,  RA, SA, SHA, QA, BA,  TA,  CA,  NA,  NYA, GLOTTAL_A, KA, KXA,
                        WA, ZA, ZHA, YA, DA, JA,  GA, GGA, THA, CHA, PHA, TSA, FA,        PA});
     }},

    // ---- additive ----
    {u"ancient-tamil", ZQN_additive,
     [](CounterStyle& s) {
       s.addRange(1, 9999);
       std::vector<UnicodeString> d = nine(0x0BE7);
       additivePlaces(s, {d, withUnit(d, cp(0x0BF0), false), withUnit(d, cp(0x0BF1), false),
                          withUnit(d, cp(0x0BF2), false)});
     }},
    {u"armenian", ZQN_additive, [](CounterStyle& s) { armenian(s, true); }},
    {u"georgian", ZQN_additive,
     [](CounterStyle& s) {
       s.addRange(1, 19999);
       s.addAdditiveSymbol(10000, 0x10F5);
       auto letters9 = [](std::initializer_list<UChar32> list) {
         std::vector<UnicodeString> v;
         for (UChar32 c : list) v.push_back(cp(c));
         return v;
       };
       additivePlaces(
           s, {letters9({0x10D0, 0x10D1, 0x10D2, 0x10D3, 0x10D4, 0x10D5, 0x10D6, 0x10F1, 0x10D7}),
               letters9({0x10D8, 0x10D9, 0x10DA, 0x10DB, 0x10DC, 0x10F2, 0x10DD, 0x10DE, 0x10DF}),
               letters9({0x10E0, 0x10E1, 0x10E2, 0x10F3, 0x10E4, 0x10E5, 0x10E6, 0x10E7, 0x10E8}),
               letters9({0x10E9, 0x10EA, 0x10EB, 0x10EC, 0x10ED, 0x10EE, 0x10F4, 0x10EF, 0x10F0})});
     }},
    {u"greek-lower-ancient", ZQN_additive, [](CounterStyle& s) { greekNumerals(s, false, false); }},
    {u"greek-upper-ancient", ZQN_additive, [](CounterStyle& s) { greekNumerals(s, true, false); }},
    {u"greek-upper-modern", ZQN_additive, [](CounterStyle& s) { greekNumerals(s, true, true); }},
    {u"hebrew", ZQN_additive,
     [](CounterStyle& s) {
       s.addRange(1, 10999);
       additive(s, {{10000, u"\u05D9\u05F3"},
                    {9000, u"\u05D8\u05F3"},
                    {8000, u"\u05D7\u05F3"},
                    {7000, u"\u05D6\u05F3"},
                    {6000, u"\u05D5\u05F3"},
                    {5000, u"\u05D4\u05F3"},
                    {4000, u"\u05D3\u05F3"},
                    {3000, u"\u05D2\u05F3"},
                    {2000, u"\u05D1\u05F3"},
                    {1000, u"\u05D0\u05F3"},
                    {400, u"\u05EA"},
                    {300, u"\u05E9"},
                    {200, u"\u05E8"},
                    {100, u"\u05E7"},
                    {90, u"\u05E6"},
                    {80, u"\u05E4"},
                    {70, u"\u05E2"},
                    {60, u"\u05E1"},
                    {50, u"\u05E0"},
                    {40, u"\u05DE"},
                    {30, u"\u05DC"},
                    {20, u"\u05DB"},
                    {19, u"\u05D9\u05D8"},
                    {18, u"\u05D9\u05D7"},
                    {17, u"\u05D9\u05D6"},
                    {16, u"\u05D8\u05D6"},
                    {15, u"\u05D8\u05D5"},
                    {10, u"\u05D9"},
                    {9, u"\u05D8"},
                    {8, u"\u05D7"},
                    {7, u"\u05D6"},
                    {6, u"\u05D5"},
                    {5, u"\u05D4"},
                    {4, u"\u05D3"},
                    {3, u"\u05D2"},
                    {2, u"\u05D1"},
                    {1, u"\u05D0"}});
     }},
    {u"japanese-informal", ZQN_additive,
     [](CounterStyle& s) {
       eastAsianAdditive(s, u"\u4E00\u4E8C\u4E09\u56DB\u4E94\u516D\u4E03\u516B\u4E5D",
                         u"\u5341\u767E\u5343", false, 0x3007);
       cjkSuffix(s);
       s.setNegative(text(u"\u30DE\u30A4\u30CA\u30B9"), Symbol());
     }},
    {u"korean-hangul-formal", ZQN_additive,
     [](CounterStyle& s) {
       eastAsianAdditive(s, u"\uC77C\uC774\uC0BC\uC0AC\uC624\uC721\uCE60\uD314\uAD6C",
                         u"\uC2ED\uBC31\uCC9C", true, 0xC601);
       koreanSuffixAndSign(s);
     }},
    {u"korean-hanja-formal", ZQN_additive,
     [](CounterStyle& s) {
       eastAsianAdditive(s, u"\u58F9\u8CB3\u53C3\u56DB\u4E94\u516D\u4E03\u516B\u4E5D",
                         u"\u62FE\u767E\u4EDF", true, 0x96F6);
       koreanSuffixAndSign(s);
     }},
    {u"korean-hanja-informal", ZQN_additive,
     [](CounterStyle& s) {
       eastAsianAdditive(s, u"\u4E00\u4E8C\u4E09\u56DB\u4E94\u516D\u4E03\u516B\u4E5D",
                         u"\u5341\u767E\u5343", false, 0x96F6);
       koreanSuffixAndSign(s);
     }},
    {u"lower-armenian", ZQN_additive, [](CounterStyle& s) { armenian(s, false); }},
    {u"lower-roman", ZQN_additive, [](CounterStyle& s) { roman(s, 3999, false); }},
    {u"simple-lower-roman", ZQN_additive, [](CounterStyle& s) { roman(s, 4999, false); }},
    {u"simple-upper-roman", ZQN_additive, [](CounterStyle& s) { roman(s, 4999, true); }},
    {u"upper-armenian", ZQN_additive, [](CounterStyle& s) { armenian(s, true); }},
    {u"upper-roman", ZQN_additive, [](CounterStyle& s) { roman(s, 3999, true); }},

    // ---- fixed ----
    {u"arabic-abjad", ZQN_fixed,
     [](CounterStyle& s) {
       codePoints(s,
                  {0x0627, 0x0628, 0x062C, 0x062F, 0x0647, 0x0648, 0x0632, 0x062D, 0x0637, 0x064A,
                   0x0643, 0x0644, 0x0645, 0x0646, 0x0633, 0x0639, 0x0641, 0x0635, 0x0642, 0x0631,
                   0x0634, 0x062A, 0x062B, 0x062E, 0x0630, 0x0636, 0x0638, 0x063A});
     }},
    {u"circled-decimal", ZQN_fixed,
     [](CounterStyle& s) {
       s.setFirst(0);
       s.addSymbol(0x24EA);
       run(s, 0x2460, 20);
       run(s, 0x3251, 15);
       run(s, 0x32B1, 15);
       s.setSuffix(' ');
     }},
    {u"circled-ideograph", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x3280, 10);
       s.setSuffix(' ');
     }},
    {u"circled-katakana", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x32D0, 47);
       s.setSuffix(' ');
     }},
    {u"circled-korean-consonant", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x3260, 14);
       s.setSuffix(' ');
     }},
    {u"circled-korean-syllable", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x326E, 14);
       s.setSuffix(' ');
     }},
    {u"circled-lower-latin", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x24D0, 26);
       s.setSuffix(' ');
     }},
    {u"circled-upper-latin", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x24B6, 26);
       s.setSuffix(' ');
     }},
    {u"decimal-leading-zero", ZQN_fixed,
     [](CounterStyle& s) {
       s.setFirst(-9);
       for (int i = -9; i <= 99; ++i) {
         char buf[8];
         snprintf(buf, sizeof buf, i < 0 ? "-%02d" : "%02d", i < 0 ? -i : i);
         s.addSymbol(Symbol(UnicodeString(buf, -1, US_INV)));
       }
     }},
    {u"dotted-decimal", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x2488, 20);
       s.setSuffix(' ');
     }},
    {u"double-circled-decimal", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x24F5, 10);
       s.setSuffix(' ');
     }},
    {u"filled-circled-decimal", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x2776, 10);
       run(s, 0x24EB, 10);
       s.setSuffix(' ');
     }},
    {u"fullwidth-lower-roman", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x2170, 12);
       s.setSuffix(0xFF0E);
     }},
    {u"fullwidth-upper-roman", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x2160, 12);
       s.setSuffix(0xFF0E);
     }},
    {u"maghrebi-abjad", ZQN_fixed,
     [](CounterStyle& s) {
       codePoints(s,
                  {0x0627, 0x0628, 0x062C, 0x062F, 0x0647, 0x0648, 0x0632, 0x062D, 0x0637, 0x064A,
                   0x0643, 0x0644, 0x0645, 0x0646, 0x0635, 0x0639, 0x0641, 0x0636, 0x0642, 0x0631,
                   0x0633, 0x062A, 0x062B, 0x062E, 0x0630, 0x0638, 0x063A, 0x0634});
     }},
    {u"parenthesized-decimal", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x2474, 20);
       s.setSuffix(' ');
     }},
    {u"parenthesized-hangul-consonant", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x3200, 14);
       s.setSuffix(' ');
     }},
    {u"parenthesized-hangul-syllable", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x320E, 14);
       s.setSuffix(' ');
     }},
    {u"parenthesized-ideograph", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x3220, 10);
       s.setSuffix(' ');
     }},
    {u"parenthesized-lower-latin", ZQN_fixed,
     [](CounterStyle& s) {
       run(s, 0x249C, 26);
       s.setSuffix(' ');
     }},
    {u"persian-abjad", ZQN_fixed,
     [](CounterStyle& s) {
       codePoints(s,
                  {0x0627, 0x0628, 0x062C, 0x062F, 0x0647, 0x0648, 0x0632, 0x062D, 0x0637, 0x06CC,
                   0x06A9, 0x0644, 0x0645, 0x0646, 0x0633, 0x0639, 0x0641, 0x0635, 0x0642, 0x0631,
                   0x0634, 0x062A, 0x062B, 0x062E, 0x0630, 0x0636, 0x0638, 0x063A});
     }},
    {u"persian-alphabetic", ZQN_fixed,
     [](CounterStyle& s) {
       codePoints(s, {0x0627, 0x0628, 0x067E, 0x062A, 0x062B, 0x062C, 0x0686, 0x062D,
                      0x062E, 0x062F, 0x0630, 0x0631, 0x0632, 0x0698, 0x0633, 0x0634,
                      0x0635, 0x0636, 0x0637, 0x0638, 0x0639, 0x063A, 0x0641, 0x0642,
                      0x06A9, 0x06AF, 0x0644, 0x0645, 0x0646, 0x0648, 0x0647, 0x06CC});
     }},

    // ---- cyclic ----
    {u"box", ZQN_cyclic,
     [](CounterStyle& s) {
       s.addSymbol(0x2610);
       s.setSuffix(' ');
     }},
    {u"check", ZQN_cyclic,
     [](CounterStyle& s) {
       s.addSymbol(0x2713);
       s.setSuffix(' ');
     }},
    {u"diamond", ZQN_cyclic,
     [](CounterStyle& s) {
       s.addSymbol(0x25C6);
       s.setSuffix(' ');
     }},
    {u"disc", ZQN_cyclic,
     [](CounterStyle& s) {
       s.addSymbol(0x2022);
       s.setSuffix(' ');
     }},

    // ---- symbolic ----
    {u"lower-alpha-symbolic", ZQN_symbolic, lowerLatin},
    {u"upper-alpha-symbolic", ZQN_symbolic, upperLatin},

    // ---- the library's own systems ----
    {u"ethiopic-numeric", ZQN_ethiopic_numeric, [](CounterStyle& s) { s.addRange(1, kInfinite); }},
    {u"simp-chinese-formal", ZQN_simp_chinese_formal,
     [](CounterStyle& s) { chinese(s, kSimpFormal, 0x8D1F); }},
    {u"simp-chinese-informal", ZQN_simp_chinese_informal,
     [](CounterStyle& s) { chinese(s, kSimpInformal, 0x8D1F); }},
    {u"trad-chinese-formal", ZQN_trad_chinese_formal,
     [](CounterStyle& s) { chinese(s, kTradFormal, 0x8CA0); }},

    // ---- one definition under two names ----
    {u"cjk-ideographic", ZQN_trad_chinese_informal, tradChineseInformal},
    {u"trad-chinese-informal", ZQN_trad_chinese_informal, tradChineseInformal},
    {u"greek", ZQN_additive, greekLowerModern},
    {u"greek-lower-modern", ZQN_additive, greekLowerModern},
};

const StyleDefinition* findDefinition(const UnicodeString& name) {
  for (const StyleDefinition& d : kStyles)
    if (name == UnicodeString(d.name)) return &d;
  return nullptr;
}

// ---- The shared map, under the library lock ----

struct Entry {
  UnicodeString name;  // the key's text when it was stored
  const CounterStyle* style;
};

std::map<ZQNameEnum, Entry>* s_styles = nullptr;
// Styles whose run-time name number came to mean another name (the name table was rebuilt);
// callers may still hold them, so they live until cleanup.
std::vector<const CounterStyle*>* s_retired = nullptr;

void releasePredefinedCounterStyles() {
  ZQMutex guard;
  if (s_styles) {
    for (auto& [key, entry] : *s_styles) delete entry.style;
    delete s_styles;
    s_styles = nullptr;
  }
  if (s_retired) {
    for (const CounterStyle* style : *s_retired) delete style;
    delete s_retired;
    s_retired = nullptr;
  }
}

}  // namespace

namespace util {

int predefinedCounterStyleCount() { return static_cast<int>(std::size(kStyles)); }

const char16_t* predefinedCounterStyleName(int index) {
  return index >= 0 && index < predefinedCounterStyleCount() ? kStyles[index].name : nullptr;
}

}  // namespace util

const CounterStyle* ZQUtil::getPredefinedCounterStyle(ZQName name) {
  const UnicodeString& given = name.toString();
  UnicodeString lower(given);
  lower.toLower(icu::Locale::getRoot());
  const ZQNameEnum key =
      lower == given ? static_cast<ZQNameEnum>(name) : ZQNameTable::getSharedNameEnum(lower);

  ZQMutex guard;
  if (s_styles == nullptr) {
    s_styles = new std::map<ZQNameEnum, Entry>();
    util::addCleanup(&releasePredefinedCounterStyles);
  }
  auto found = s_styles->find(key);
  if (found != s_styles->end()) {
    if (found->second.name == lower) return found->second.style;
    if (found->second.style) {
      if (s_retired == nullptr) s_retired = new std::vector<const CounterStyle*>();
      s_retired->push_back(found->second.style);
    }
    s_styles->erase(found);
  }
  CounterStyle* style = nullptr;
  if (const StyleDefinition* d = findDefinition(lower)) {
    style = new CounterStyle(ZQName(d->system));
    d->build(*style);
    style->m_predefined = true;
  }
  s_styles->emplace(key, Entry{lower, style});
  return style;
}

}  // namespace ZQCommonNS
