// Scripts: construction from strings and names, names back, the script of characters and texts,
// the groupings, full-width choice and representative characters.
#include <gtest/gtest.h>

#include <unicode/uchar.h>
#include <unicode/uscript.h>

#include <functional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "TestSupport.h"
#include "common/ZQChar.h"
#include "common/ZQLang.h"
#include "common/ZQName.h"
#include "common/ZQScript.h"

using namespace ZQCommonNS;
using zqtest::u;
using zqtest::utf8;

namespace {

// Every value a script may hold: the three extra values and ICU's codes.
std::vector<int32_t> allCodes() {
  std::vector<int32_t> codes = {-3, -2, -1};
  for (int32_t c = 0; c < USCRIPT_CODE_LIMIT; ++c) codes.push_back(c);
  return codes;
}

// Checks that `predicate` holds exactly for the codes of `members` over every value.
void expectExactly(const char* what, const std::function<bool(const ZQScript&)>& predicate,
                   const std::set<int32_t>& members) {
  for (int32_t code : allCodes()) {
    ZQScript script(static_cast<UScriptCode>(code));
    EXPECT_EQ(predicate(script), members.count(code) == 1) << what << " of " << code;
  }
}

UScriptCode icuScript(int ch) {
  UErrorCode error = U_ZERO_ERROR;
  return uscript_getScript(ch, &error);
}

UnicodeString text(const char16_t* s) { return UnicodeString(s); }

// Built-in names and the scripts they stand for, as one table.
const std::vector<std::pair<ZQNameEnum, int32_t>> kNameTable = {
    {ZQN_Zyyy, USCRIPT_COMMON},
    {ZQN_Qaai, USCRIPT_INHERITED},
    {ZQN_Arab, USCRIPT_ARABIC},
    {ZQN_Armn, USCRIPT_ARMENIAN},
    {ZQN_Beng, USCRIPT_BENGALI},
    {ZQN_Cyrl, USCRIPT_CYRILLIC},
    {ZQN_Deva, USCRIPT_DEVANAGARI},
    {ZQN_Ethi, USCRIPT_ETHIOPIC},
    {ZQN_Geor, USCRIPT_GEORGIAN},
    {ZQN_Grek, USCRIPT_GREEK},
    {ZQN_Gujr, USCRIPT_GUJARATI},
    {ZQN_Guru, USCRIPT_GURMUKHI},
    {ZQN_Hani, USCRIPT_HAN},
    {ZQN_Hang, USCRIPT_HANGUL},
    {ZQN_ko, USCRIPT_KOREAN},
    {ZQN_kor, USCRIPT_KOREAN},
    {ZQN_Hans, USCRIPT_SIMPLIFIED_HAN},
    {ZQN_zh, USCRIPT_SIMPLIFIED_HAN},
    {ZQN_zh_CHN, USCRIPT_SIMPLIFIED_HAN},
    {ZQN_zh_CN, USCRIPT_SIMPLIFIED_HAN},
    {ZQN_zh_SG, USCRIPT_SIMPLIFIED_HAN},
    {ZQN_zho, USCRIPT_SIMPLIFIED_HAN},
    {ZQN_zho_CHN, USCRIPT_SIMPLIFIED_HAN},
    {ZQN_zho_CN, USCRIPT_SIMPLIFIED_HAN},
    {ZQN_Hant, USCRIPT_TRADITIONAL_HAN},
    {ZQN_zh_HK, USCRIPT_TRADITIONAL_HAN},
    {ZQN_zh_TW, USCRIPT_TRADITIONAL_HAN},
    {ZQN_zh_TWN, USCRIPT_TRADITIONAL_HAN},
    {ZQN_zho_TW, USCRIPT_TRADITIONAL_HAN},
    {ZQN_zho_TWN, USCRIPT_TRADITIONAL_HAN},
    {ZQN_Hebr, USCRIPT_HEBREW},
    {ZQN_Hira, USCRIPT_HIRAGANA},
    {ZQN_Jpan, USCRIPT_JAPANESE},
    {ZQN_ja, USCRIPT_JAPANESE},
    {ZQN_jpn, USCRIPT_JAPANESE},
    {ZQN_Kana, USCRIPT_KATAKANA},
    {ZQN_Khmr, USCRIPT_KHMER},
    {ZQN_Knda, USCRIPT_KANNADA},
    {ZQN_Laoo, USCRIPT_LAO},
    {ZQN_Latf, USCRIPT_LATIN},
    {ZQN_Latg, USCRIPT_LATIN},
    {ZQN_Latn, USCRIPT_LATIN},
    {ZQN_Mlym, USCRIPT_MALAYALAM},
    {ZQN_Mong, USCRIPT_MONGOLIAN},
    {ZQN_Mymr, USCRIPT_MYANMAR},
    {ZQN_Orya, USCRIPT_ORIYA},
    {ZQN_Sinh, USCRIPT_SINHALA},
    {ZQN_Syrc, USCRIPT_SYRIAC},
    {ZQN_Taml, USCRIPT_TAMIL},
    {ZQN_Telu, USCRIPT_TELUGU},
    {ZQN_Thai, USCRIPT_THAI},
    {ZQN_Tibt, USCRIPT_TIBETAN},
    {ZQN_Zmth, USCRIPT_MATHEMATICAL_NOTATION},
    {ZQN_auto, ZQScript::SCRIPT_AUTO},
    {ZQN_Zxxx, ZQScript::SCRIPT_AUTO},
    {ZQN_none, ZQScript::SCRIPT_NONE},
    {ZQN_Zzzz, ZQScript::SCRIPT_NONE},
};

}  // namespace

// ---- Values

TEST(ScriptValue, DefaultAndExtraValues) {
  EXPECT_EQ(ZQScript().code, -1);
  EXPECT_EQ(ZQScript(ZQScript::SCRIPT_INVALID).code, -1);
  EXPECT_EQ(ZQScript(ZQScript::SCRIPT_AUTO).code, -2);
  EXPECT_EQ(ZQScript(ZQScript::SCRIPT_NONE).code, -3);
  EXPECT_EQ(ZQScript(USCRIPT_INVALID_CODE).code, -1);
  EXPECT_EQ(ZQScript(USCRIPT_THAI).getUScriptCode(), USCRIPT_THAI);
  EXPECT_EQ(ZQScript(ZQScript::SCRIPT_AUTO).getUScriptCode(), static_cast<UScriptCode>(-2));
  EXPECT_TRUE(ZQScript(USCRIPT_LATIN) == USCRIPT_LATIN);
  EXPECT_TRUE(ZQScript(USCRIPT_LATIN) != ZQScript(USCRIPT_GREEK));
}

// ---- From a string

TEST(ScriptFromString, EmptyStringIsAutoEmptyNameIsInvalid) {
  EXPECT_EQ(ZQScript(UnicodeString()).code, -2);
  EXPECT_TRUE(ZQScript(UnicodeString()).isAuto());
  EXPECT_EQ(ZQScript(ZQName()).code, -1);
  EXPECT_EQ(ZQScript(ZQN_EMPTY).code, -1);
  UnicodeString bogus;
  bogus.setToBogus();
  EXPECT_EQ(ZQScript(bogus).code, -2);
}

TEST(ScriptFromString, PredefinedNames) {
  EXPECT_EQ(ZQScript(u("auto")).code, -2);
  EXPECT_EQ(ZQScript(u("none")).code, -3);
  EXPECT_EQ(ZQScript(u("Kana")), USCRIPT_KATAKANA);
  EXPECT_EQ(ZQScript(u("Hira")), USCRIPT_HIRAGANA);
  EXPECT_EQ(ZQScript(u("Hans")), USCRIPT_SIMPLIFIED_HAN);
  EXPECT_EQ(ZQScript(u("Hant")), USCRIPT_TRADITIONAL_HAN);
  EXPECT_EQ(ZQScript(u("Jpan")), USCRIPT_JAPANESE);
  EXPECT_EQ(ZQScript(u("Zmth")), USCRIPT_MATHEMATICAL_NOTATION);
}

TEST(ScriptFromString, ChineseByCountry) {
  EXPECT_EQ(ZQScript(u("zh-TW")), USCRIPT_TRADITIONAL_HAN);
  EXPECT_EQ(ZQScript(u("zh")), USCRIPT_SIMPLIFIED_HAN);
  EXPECT_EQ(ZQScript(u("zh-HK")), USCRIPT_TRADITIONAL_HAN);
  EXPECT_EQ(ZQScript(u("zh_TW")), USCRIPT_TRADITIONAL_HAN);
  EXPECT_EQ(ZQScript(u("zho-TWN")), USCRIPT_TRADITIONAL_HAN);
  EXPECT_EQ(ZQScript(u("chi-HK")), USCRIPT_TRADITIONAL_HAN);
  EXPECT_EQ(ZQScript(u("zh-CN")), USCRIPT_SIMPLIFIED_HAN);
  EXPECT_EQ(ZQScript(u("zh-SG")), USCRIPT_SIMPLIFIED_HAN);
  // Only Taiwan and Hong Kong count as traditional; the script subtag does not.
  EXPECT_EQ(ZQScript(u("zh-MO")), USCRIPT_SIMPLIFIED_HAN);
  EXPECT_EQ(ZQScript(u("zh-Hant")), USCRIPT_SIMPLIFIED_HAN);
  EXPECT_EQ(ZQScript(u("zh-Hant-TW")), USCRIPT_TRADITIONAL_HAN);
}

TEST(ScriptFromString, JapaneseAndKoreanByLanguage) {
  EXPECT_EQ(ZQScript(u("ja")), USCRIPT_JAPANESE);
  EXPECT_EQ(ZQScript(u("ja-JP")), USCRIPT_JAPANESE);
  EXPECT_EQ(ZQScript(u("jpn")), USCRIPT_JAPANESE);
  EXPECT_EQ(ZQScript(u("ko")), USCRIPT_KOREAN);
  EXPECT_EQ(ZQScript(u("kor-KR")), USCRIPT_KOREAN);
  // ICU alone would answer these with several scripts, which the one-code question refuses.
  UErrorCode error = U_ZERO_ERROR;
  UScriptCode codes[1];
  EXPECT_GT(uscript_getCode("ja", codes, 1, &error), 1);
}

TEST(ScriptFromString, ICUCodesNamesAndLocales) {
  EXPECT_EQ(ZQScript(u("Latn")), USCRIPT_LATIN);
  EXPECT_EQ(ZQScript(u("Latin")), USCRIPT_LATIN);
  EXPECT_EQ(ZQScript(u("Cyrl")), USCRIPT_CYRILLIC);
  EXPECT_EQ(ZQScript(u("Hrkt")), USCRIPT_KATAKANA_OR_HIRAGANA);
  EXPECT_EQ(ZQScript(u("Zyyy")), USCRIPT_COMMON);
  EXPECT_EQ(ZQScript(u("Runr")), USCRIPT_RUNIC);
  EXPECT_EQ(ZQScript(u("ru")), USCRIPT_CYRILLIC);
  EXPECT_EQ(ZQScript(u("el-GR")), USCRIPT_GREEK);
  EXPECT_EQ(ZQScript(u("fr-CA")), USCRIPT_LATIN);
  // Unlike the name form, the strings Zxxx and Zzzz are ICU's own scripts.
  EXPECT_EQ(ZQScript(u("Zxxx")), USCRIPT_UNWRITTEN_LANGUAGES);
  EXPECT_EQ(ZQScript(u("Zzzz")), USCRIPT_UNKNOWN);
}

TEST(ScriptFromString, UnknownStringsLeaveInvalid) {
  for (const char* s : {"xx", "qqqq", "Xyz1", "!", "not a script"}) {
    EXPECT_EQ(ZQScript(u(s)).code, -1) << s;
  }
  // Tags without a language are ICU's to read (through its likely subtags); they only have to
  // give some value.
  for (const char* s : {"-", "@@", "_", "-x-", "@a=b", "\xC3\xA9-\xFF"}) {
    EXPECT_GE(ZQScript(UnicodeString::fromUTF8(s)).code, -1) << s;
  }
  UnicodeString huge;
  for (int i = 0; i < 3000; ++i) huge.append(u"q_");
  EXPECT_EQ(ZQScript(huge).code, -1);
  EXPECT_EQ(ZQScript(text(u"\u65E5\u672C")).code, -1);
}

TEST(ScriptFromString, ICUReadsTheStringAsGiven) {
  // Only the language question sees the normalised tag; ICU is asked with the string itself, and
  // it cannot read the bibliographic code.
  UErrorCode error = U_ZERO_ERROR;
  UScriptCode codes[1];
  ASSERT_EQ(uscript_getCode("fre", codes, 1, &error), 0);
  EXPECT_EQ(ZQScript(u("fre")).code, -1);
  EXPECT_EQ(ZQScript(u("fra")), USCRIPT_LATIN);
  // A language goes through its three-letter form, which ICU reads.
  EXPECT_EQ(ZQLang(u("fre")).toScript(), USCRIPT_LATIN);
}

// ---- From a name

TEST(ScriptFromName, EveryRowOfTheTable) {
  for (const auto& [name, script] : kNameTable) {
    EXPECT_EQ(ZQScript(ZQName(name)).code, script) << utf8(ZQName(name).toString());
    EXPECT_EQ(ZQScript(name).code, script) << utf8(ZQName(name).toString());
  }
}

TEST(ScriptFromName, OtherNamesGoByTheirString) {
  EXPECT_EQ(ZQScript(ZQN_Hrkt), USCRIPT_KATAKANA_OR_HIRAGANA);
  EXPECT_EQ(ZQScript(ZQName(u("Runr"))), USCRIPT_RUNIC);
  EXPECT_EQ(ZQScript(ZQName(u("zh-MO"))), USCRIPT_SIMPLIFIED_HAN);
  EXPECT_EQ(ZQScript(ZQName(u("ja-JP"))), USCRIPT_JAPANESE);
  EXPECT_EQ(ZQScript(ZQName(u("qqqq"))).code, -1);
}

// ---- Names back

TEST(ScriptCode, ReverseOfTheTable) {
  const std::vector<std::pair<int32_t, const char*>> rows = {
      {USCRIPT_COMMON, "Zyyy"},
      {USCRIPT_INHERITED, "Qaai"},
      {USCRIPT_ARABIC, "Arab"},
      {USCRIPT_ARMENIAN, "Armn"},
      {USCRIPT_BENGALI, "Beng"},
      {USCRIPT_CYRILLIC, "Cyrl"},
      {USCRIPT_DEVANAGARI, "Deva"},
      {USCRIPT_ETHIOPIC, "Ethi"},
      {USCRIPT_GEORGIAN, "Geor"},
      {USCRIPT_GREEK, "Grek"},
      {USCRIPT_GUJARATI, "Gujr"},
      {USCRIPT_GURMUKHI, "Guru"},
      {USCRIPT_HAN, "Hani"},
      {USCRIPT_HANGUL, "Hang"},
      {USCRIPT_KOREAN, "Hang"},
      {USCRIPT_SIMPLIFIED_HAN, "Hans"},
      {USCRIPT_TRADITIONAL_HAN, "Hant"},
      {USCRIPT_HEBREW, "Hebr"},
      {USCRIPT_HIRAGANA, "Hira"},
      {USCRIPT_JAPANESE, "Jpan"},
      {USCRIPT_KATAKANA, "Kana"},
      {USCRIPT_KATAKANA_OR_HIRAGANA, "Hrkt"},
      {USCRIPT_KHMER, "Khmr"},
      {USCRIPT_KANNADA, "Knda"},
      {USCRIPT_LAO, "Laoo"},
      {USCRIPT_LATIN, "Latn"},
      {USCRIPT_MALAYALAM, "Mlym"},
      {USCRIPT_MONGOLIAN, "Mong"},
      {USCRIPT_MYANMAR, "Mymr"},
      {USCRIPT_ORIYA, "Orya"},
      {USCRIPT_SINHALA, "Sinh"},
      {USCRIPT_SYRIAC, "Syrc"},
      {USCRIPT_TAMIL, "Taml"},
      {USCRIPT_TELUGU, "Telu"},
      {USCRIPT_THAI, "Thai"},
      {USCRIPT_TIBETAN, "Tibt"},
      {USCRIPT_MATHEMATICAL_NOTATION, "Zmth"},
  };
  for (const auto& [code, name] : rows) {
    ZQScript script(static_cast<UScriptCode>(code));
    EXPECT_EQ(utf8(script.getScriptCode().toString()), name) << code;
    EXPECT_EQ(utf8(script.toString()), name) << code;
    // These names are all built in.
    EXPECT_TRUE(script.getScriptCode().isBuiltin()) << code;
  }
}

TEST(ScriptCode, OtherCodesByICUsShortName) {
  EXPECT_EQ(utf8(ZQScript(USCRIPT_BOPOMOFO).toString()), "Bopo");
  EXPECT_EQ(utf8(ZQScript(USCRIPT_RUNIC).toString()), "Runr");
  EXPECT_EQ(utf8(ZQScript(USCRIPT_LATIN_FRAKTUR).toString()), "Latf");
  EXPECT_EQ(utf8(ZQScript(USCRIPT_UNKNOWN).toString()), "Zzzz");
  for (int32_t code = 0; code < USCRIPT_CODE_LIMIT; ++code) {
    EXPECT_FALSE(ZQScript(static_cast<UScriptCode>(code)).getScriptCode().isEmpty()) << code;
  }
}

TEST(ScriptCode, ToStringIsTheNameTablesOwnString) {
  EXPECT_EQ(&ZQScript(USCRIPT_LATIN).toString(), &ZQName(ZQN_Latn).toString());
  EXPECT_EQ(&ZQScript(USCRIPT_KOREAN).toString(), &ZQName(ZQN_Hang).toString());
  const UnicodeString& runic = ZQScript(USCRIPT_RUNIC).toString();
  EXPECT_EQ(&runic, &ZQName(u("Runr")).toString());
}

TEST(ScriptCode, NegativeAndOutOfRangeGiveTheEmptyName) {
  for (int32_t code : {-1, -2, -3, -100}) {
    ZQScript script(static_cast<UScriptCode>(code));
    EXPECT_TRUE(script.getScriptCode().isEmpty()) << code;
    EXPECT_TRUE(script.toString().isEmpty()) << code;
    EXPECT_TRUE(script.getScriptName().isEmpty()) << code;
  }
  ZQScript beyond(static_cast<UScriptCode>(USCRIPT_CODE_LIMIT + 50));
  EXPECT_TRUE(beyond.getScriptCode().isEmpty());
  EXPECT_TRUE(beyond.getScriptName().isEmpty());
}

TEST(ScriptCode, AutoIsNotReproduced) {
  ZQScript script(ZQN_auto);
  EXPECT_TRUE(script.isAuto());
  EXPECT_NE(script.getScriptCode(), ZQName(ZQN_auto));
  EXPECT_TRUE(script.getScriptCode().isEmpty());
}

TEST(ScriptCode, NamesGoBackToTheirScripts) {
  for (const auto& [name, code] : kNameTable) {
    if (code < 0) continue;
    ZQScript script(static_cast<UScriptCode>(code));
    const int32_t back = ZQScript(script.getScriptCode()).code;
    // Korean's name is Hangul's.
    EXPECT_EQ(back, code == USCRIPT_KOREAN ? USCRIPT_HANGUL : code) << code;
  }
}

TEST(ScriptName, ICUsLongName) {
  EXPECT_EQ(utf8(ZQScript(USCRIPT_LATIN).getScriptName()), "Latin");
  EXPECT_EQ(utf8(ZQScript(USCRIPT_HAN).getScriptName()), "Han");
  EXPECT_EQ(utf8(ZQScript(USCRIPT_KATAKANA_OR_HIRAGANA).getScriptName()), "Katakana_Or_Hiragana");
  EXPECT_EQ(utf8(ZQScript(USCRIPT_COMMON).getScriptName()), "Common");
}

// ---- The script of one code point

TEST(ScriptOfChar, HebrewBlock) {
  EXPECT_EQ(ZQScript::getScript(0x0590), USCRIPT_HEBREW);  // unassigned, yet Hebrew here
  EXPECT_EQ(ZQScript::getScript(0x05D0), USCRIPT_HEBREW);
  EXPECT_EQ(ZQScript::getScript(0x05FF), USCRIPT_HEBREW);
  EXPECT_EQ(ZQScript::getScript(0x058F), icuScript(0x058F));
  EXPECT_NE(ZQScript::getScript(0x058F), USCRIPT_HEBREW);
}

TEST(ScriptOfChar, ArabicWithoutItsDigits) {
  for (int c : {0x0600, 0x0627, 0x065F, 0x066A, 0x06EF, 0x06FA, 0x06FF}) {
    EXPECT_EQ(ZQScript::getScript(c), USCRIPT_ARABIC) << std::hex << c;
  }
  for (int c : {0x0660, 0x0669, 0x06F0, 0x06F9}) {
    EXPECT_EQ(ZQScript::getScript(c), icuScript(c)) << std::hex << c;
  }
}

TEST(ScriptOfChar, ArabicIndicZeroIsDecidedByICU) {
  EXPECT_EQ(ZQScript::getScript(0x0660), icuScript(0x0660));
  // ICU's answer is a script of its own data, so a text of these digits follows it too.
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"\u0660\u0661"), false), icuScript(0x0660));
}

TEST(ScriptOfChar, DevanagariBlock) {
  EXPECT_EQ(ZQScript::getScript(0x0900), USCRIPT_DEVANAGARI);
  EXPECT_EQ(ZQScript::getScript(0x0964), USCRIPT_DEVANAGARI);  // danda, common to ICU
  EXPECT_EQ(icuScript(0x0964), USCRIPT_COMMON);
  EXPECT_EQ(ZQScript::getScript(0x097F), USCRIPT_DEVANAGARI);
  EXPECT_EQ(ZQScript::getScript(0x0980), USCRIPT_BENGALI);
}

TEST(ScriptOfChar, LatinOneSignsGoWithLatin) {
  const std::set<int> latin = {0xA2, 0xA3, 0xA4, 0xA5, 0xA7, 0xA8, 0xA9,
                               0xAA, 0xAE, 0xAF, 0xB4, 0xB5, 0xB8, 0xBA};
  for (int c = 0xA0; c <= 0xBF; ++c) {
    if (latin.count(c)) {
      EXPECT_EQ(ZQScript::getScript(c), USCRIPT_LATIN) << std::hex << c;
    } else {
      EXPECT_EQ(ZQScript::getScript(c), icuScript(c)) << std::hex << c;
      EXPECT_NE(ZQScript::getScript(c), USCRIPT_LATIN) << std::hex << c;
    }
  }
  EXPECT_EQ(icuScript(0xA9), USCRIPT_COMMON);
}

TEST(ScriptOfChar, CopyrightSignIsLatin) { EXPECT_EQ(ZQScript::getScript(0xA9), USCRIPT_LATIN); }

TEST(ScriptOfChar, SharedKanaMarks) {
  for (int c : {0x3099, 0x309A, 0x309B, 0x309C, 0x30FC}) {
    EXPECT_EQ(ZQScript::getScript(c), USCRIPT_KATAKANA_OR_HIRAGANA) << std::hex << c;
  }
  EXPECT_EQ(ZQScript::getScript(0x309D), USCRIPT_HIRAGANA);
  EXPECT_EQ(ZQScript::getScript(0x30FD), USCRIPT_KATAKANA);
  EXPECT_EQ(ZQScript::getScript(0x30FB), icuScript(0x30FB));
}

TEST(ScriptOfChar, NewestEraSquareReadsAsTheOneBefore) {
  EXPECT_EQ(ZQScript::getScript(0x32FF), icuScript(0x337B));
  EXPECT_EQ(ZQScript::getScript(0x32FF), USCRIPT_COMMON);
}

TEST(ScriptOfChar, MathematicalOperators) {
  for (int c : {0x2200, 0x2211, 0x22FF, 0x27C0, 0x27FF, 0x2980, 0x2AFF, 0x1D400, 0x1D7FF}) {
    EXPECT_EQ(ZQScript::getScript(c), USCRIPT_MATHEMATICAL_NOTATION) << std::hex << c;
  }
  for (int c : {0x21FF, 0x2300, 0x27BF, 0x2800, 0x297F, 0x2B00, 0x1D3FF, 0x1D800}) {
    EXPECT_EQ(ZQScript::getScript(c), icuScript(c)) << std::hex << c;
  }
}

TEST(ScriptOfChar, OtherwiseICU) {
  EXPECT_EQ(ZQScript::getScript('A'), USCRIPT_LATIN);
  EXPECT_EQ(ZQScript::getScript(0x03B1), USCRIPT_GREEK);
  EXPECT_EQ(ZQScript::getScript(0x3042), USCRIPT_HIRAGANA);
  EXPECT_EQ(ZQScript::getScript(0x30A2), USCRIPT_KATAKANA);
  EXPECT_EQ(ZQScript::getScript(0x4E00), USCRIPT_HAN);
  EXPECT_EQ(ZQScript::getScript(0x20000), USCRIPT_HAN);
  EXPECT_EQ(ZQScript::getScript('5'), USCRIPT_COMMON);
  EXPECT_EQ(ZQScript::getScript(0x0301), USCRIPT_INHERITED);
  EXPECT_EQ(ZQScript::getScript(0xAC00), USCRIPT_HANGUL);
}

TEST(ScriptOfChar, OutOfRangeIsInvalid) {
  EXPECT_EQ(ZQScript::getScript(-1), USCRIPT_INVALID_CODE);
  EXPECT_EQ(ZQScript::getScript(0x110000), USCRIPT_INVALID_CODE);
  EXPECT_EQ(ZQScript::getScript(INT32_MIN), USCRIPT_INVALID_CODE);
}

// ---- The script of a text

TEST(ScriptOfText, LatinThenHiragana) {
  const UnicodeString s = text(u"abc\u3042");
  EXPECT_EQ(ZQScript::getScriptFromText(s, false), USCRIPT_HIRAGANA);
  EXPECT_EQ(ZQScript::getScriptFromText(s, true), USCRIPT_LATIN);
}

TEST(ScriptOfText, DigitsAreCommon) {
  EXPECT_EQ(ZQScript::getScriptFromText(u("123"), false), USCRIPT_COMMON);
  EXPECT_EQ(ZQScript::getScriptFromText(u("123"), true), USCRIPT_COMMON);
  EXPECT_EQ(ZQScript::getScriptFromText(UnicodeString(), false), USCRIPT_COMMON);
}

TEST(ScriptOfText, LatinAlone) {
  EXPECT_EQ(ZQScript::getScriptFromText(u("123 abc !"), false), USCRIPT_LATIN);
  EXPECT_EQ(ZQScript::getScriptFromText(u("123 abc !"), true), USCRIPT_LATIN);
  // A Latin sign counts as Latin.
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"1 \u00A9"), false), USCRIPT_LATIN);
}

TEST(ScriptOfText, AnyOtherScriptOverridesLatinUnlessLatinWins) {
  const UnicodeString mixed = text(u"abc \u03B1\u03B2\u03B3");
  EXPECT_EQ(ZQScript::getScriptFromText(mixed, false), USCRIPT_GREEK);
  EXPECT_EQ(ZQScript::getScriptFromText(mixed, true), USCRIPT_LATIN);
  const UnicodeString greekFirst = text(u"\u03B1 abc");
  EXPECT_EQ(ZQScript::getScriptFromText(greekFirst, false), USCRIPT_GREEK);
  EXPECT_EQ(ZQScript::getScriptFromText(greekFirst, true), USCRIPT_GREEK);
  const UnicodeString hangul = text(u"Seoul \uC11C\uC6B8");
  EXPECT_EQ(ZQScript::getScriptFromText(hangul, false), USCRIPT_HANGUL);
  EXPECT_EQ(ZQScript::getScriptFromText(hangul, true), USCRIPT_LATIN);
}

TEST(ScriptOfText, OurRangesEndTheSearch) {
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"abc \u05D0"), false), USCRIPT_HEBREW);
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"abc \u0627"), false), USCRIPT_ARABIC);
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"abc \u0905"), false), USCRIPT_DEVANAGARI);
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"abc \u30FC"), false), USCRIPT_KATAKANA_OR_HIRAGANA);
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"abc \u2211"), false), USCRIPT_MATHEMATICAL_NOTATION);
  // The first decisive code point wins, also over a later script.
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"1 \u2211 \u05D0"), true),
            USCRIPT_MATHEMATICAL_NOTATION);
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"\u05D0 abc"), true), USCRIPT_HEBREW);
  // Arabic-Indic digits are ICU's to decide.
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"1 \u0660 \u05D0"), false), icuScript(0x0660));
}

TEST(ScriptOfText, CommonAndInheritedAreSkipped) {
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"12 \u0301\u3001 \u30A2"), false), USCRIPT_KATAKANA);
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"\u32FF\u3042"), false), USCRIPT_HIRAGANA);
}

TEST(ScriptOfText, SupplementaryCodePoints) {
  // U+1D400 is a mathematical letter; U+20000 a Han ideograph; both as surrogate pairs.
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"a\U0001D400"), false),
            USCRIPT_MATHEMATICAL_NOTATION);
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"a\U00020000"), false), USCRIPT_HAN);
  EXPECT_EQ(ZQScript::getScriptFromText(text(u"a\U00020000"), true), USCRIPT_LATIN);
}

TEST(ScriptOfText, LoneSurrogatesDoNotCrash) {
  UnicodeString s(u"1 ");
  s.append(static_cast<char16_t>(0xD800));
  s.append(u"x");
  s.append(static_cast<char16_t>(0xDC00));
  // A lone surrogate is no character of any script: ICU calls it unknown, which decides.
  EXPECT_EQ(ZQScript::getScriptFromText(s, false), icuScript(0xD800));
  EXPECT_EQ(ZQScript::getScriptFromText(s, true), icuScript(0xD800));
}

// ---- Groupings, each over every value

TEST(ScriptGroups, KanaScripts) {
  const std::set<int32_t> kana = {USCRIPT_HIRAGANA, USCRIPT_KATAKANA, USCRIPT_KATAKANA_OR_HIRAGANA};
  expectExactly(
      "isKanaScript()", [](const ZQScript& s) { return s.isKanaScript(); }, kana);
  expectExactly(
      "isKanaScript(code)",
      [](const ZQScript& s) { return ZQScript::isKanaScript(s.getUScriptCode()); }, kana);
}

TEST(ScriptGroups, Japanese) {
  expectExactly(
      "isJA", [](const ZQScript& s) { return s.isJA(); },
      {USCRIPT_HIRAGANA, USCRIPT_KATAKANA, USCRIPT_KATAKANA_OR_HIRAGANA, USCRIPT_JAPANESE});
}

TEST(ScriptGroups, SimplifiedAndTraditional) {
  expectExactly("isSC", [](const ZQScript& s) { return s.isSC(); }, {USCRIPT_SIMPLIFIED_HAN});
  expectExactly("isTC", [](const ZQScript& s) { return s.isTC(); }, {USCRIPT_TRADITIONAL_HAN});
}

TEST(ScriptGroups, Auto) {
  expectExactly("isAuto", [](const ZQScript& s) { return s.isAuto(); }, {-2});
}

const std::set<int32_t> kCJK = {USCRIPT_BOPOMOFO,       USCRIPT_HAN,
                                USCRIPT_HANGUL,         USCRIPT_HIRAGANA,
                                USCRIPT_KATAKANA,       USCRIPT_KATAKANA_OR_HIRAGANA,
                                USCRIPT_SIMPLIFIED_HAN, USCRIPT_TRADITIONAL_HAN,
                                USCRIPT_JAPANESE,       USCRIPT_KOREAN};

TEST(ScriptGroups, CJK) {
  expectExactly(
      "isCJK", [](const ZQScript& s) { return s.isCJK(); }, kCJK);
  std::set<int32_t> withAuto = kCJK;
  withAuto.insert(-2);
  expectExactly(
      "isCJKorAuto", [](const ZQScript& s) { return s.isCJKorAuto(); }, withAuto);
}

TEST(ScriptGroups, KoreanIsCJKButDoesNotJustifyAsCJK) {
  EXPECT_FALSE(ZQScript(USCRIPT_KOREAN).isCJKJustify());
  EXPECT_TRUE(ZQScript(USCRIPT_KOREAN).isCJK());
  std::set<int32_t> justify = kCJK;
  justify.erase(USCRIPT_HANGUL);
  justify.erase(USCRIPT_KOREAN);
  expectExactly(
      "isCJKJustify", [](const ZQScript& s) { return s.isCJKJustify(); }, justify);
}

TEST(ScriptGroups, LatinGroup) {
  expectExactly("isLatinGroup", [](const ZQScript& s) { return s.isLatinGroup(); },
                {USCRIPT_COMMON, USCRIPT_ARMENIAN, USCRIPT_CYRILLIC, USCRIPT_ETHIOPIC,
                 USCRIPT_GEORGIAN, USCRIPT_GREEK, USCRIPT_LATIN});
}

TEST(ScriptGroups, HangingBaseline) {
  expectExactly(
      "isHangingBaseline", [](const ZQScript& s) { return s.isHangingBaseline(); },
      {USCRIPT_BENGALI, USCRIPT_DEVANAGARI, USCRIPT_GUJARATI, USCRIPT_GURMUKHI, USCRIPT_TIBETAN});
}

TEST(ScriptGroups, ThroughStringsAndNames) {
  EXPECT_TRUE(ZQScript(u("ja")).isJA());
  EXPECT_TRUE(ZQScript(u("zh-TW")).isTC());
  EXPECT_TRUE(ZQScript(ZQN_zh_CN).isSC());
  EXPECT_TRUE(ZQScript(u("auto")).isCJKorAuto());
  EXPECT_FALSE(ZQScript(u("none")).isCJKorAuto());
  EXPECT_TRUE(ZQScript(ZQN_Deva).isHangingBaseline());
}

// ---- Full width

TEST(ScriptZenkaku, WideAndFullWidthAlways) {
  for (int32_t code :
       {static_cast<int32_t>(USCRIPT_LATIN), static_cast<int32_t>(USCRIPT_HAN), -1, -2}) {
    ZQScript script(static_cast<UScriptCode>(code));
    EXPECT_TRUE(script.isZenkakuScript(0x3042)) << code;
    EXPECT_TRUE(script.isZenkakuScript(0xFF21)) << code;
    EXPECT_TRUE(script.isZenkakuScript(0x32FF)) << code;
    EXPECT_TRUE(script.isZenkakuScript(0x4E00)) << code;
  }
}

TEST(ScriptZenkaku, NarrowNeutralAndHalfWidthNever) {
  ZQScript japanese(USCRIPT_JAPANESE);
  for (int c : {0x41, 0xA9, 0xFF61, 0x20A9, 0x0E01}) {
    ASSERT_NE(ZQChar::getEastAsianWidth(c), U_EA_AMBIGUOUS) << std::hex << c;
    EXPECT_FALSE(japanese.isZenkakuScript(c)) << std::hex << c;
  }
}

TEST(ScriptZenkaku, AmbiguousOnlyInCJK) {
  for (int c : {0xA7, 0x03B1, 0x0410, 0xA1, 0x2460}) {
    ASSERT_EQ(ZQChar::getEastAsianWidth(c), U_EA_AMBIGUOUS) << std::hex << c;
    for (int32_t code : allCodes()) {
      ZQScript script(static_cast<UScriptCode>(code));
      EXPECT_EQ(script.isZenkakuScript(c), kCJK.count(code) == 1) << std::hex << c << " " << code;
    }
  }
}

TEST(ScriptZenkaku, AmbiguousLatinOnlyWhenAJISSymbol) {
  ZQScript han(USCRIPT_HAN);
  // Ambiguous signs that go with Latin: only the JIS symbol among them is full width.
  ASSERT_EQ(ZQChar::getEastAsianWidth(0xB4), U_EA_AMBIGUOUS);
  ASSERT_TRUE(ZQChar::isSymbolJIS(0xB4));
  ASSERT_EQ(ZQScript::getScript(0xB4), USCRIPT_LATIN);
  EXPECT_TRUE(han.isZenkakuScript(0xB4));
  for (int c : {0xAA, 0xAE, 0xE0, 0xBA}) {
    ASSERT_EQ(ZQChar::getEastAsianWidth(c), U_EA_AMBIGUOUS) << std::hex << c;
    ASSERT_FALSE(ZQChar::isSymbolJIS(c)) << std::hex << c;
    EXPECT_FALSE(han.isZenkakuScript(c)) << std::hex << c;
  }
  // Ambiguous and not Latin: Greek, Cyrillic, a common sign.
  for (int c : {0x03B1, 0x0410, 0xA1}) {
    ASSERT_FALSE(ZQChar::isSymbolJIS(c)) << std::hex << c;
    EXPECT_TRUE(han.isZenkakuScript(c)) << std::hex << c;
  }
}

TEST(ScriptZenkaku, OutOfRangeIsNotFullWidth) {
  ZQScript japanese(USCRIPT_JAPANESE);
  EXPECT_FALSE(japanese.isZenkakuScript(-1));
  EXPECT_FALSE(japanese.isZenkakuScript(0x110000));
}

// ---- Representative characters

TEST(ScriptA, EveryRowAndTheRest) {
  const std::vector<std::pair<int32_t, UChar32>> rows = {
      {USCRIPT_ARABIC, 0x0627},
      {USCRIPT_ARMENIAN, 0x0531},
      {USCRIPT_CYRILLIC, 0x0410},
      {USCRIPT_DEVANAGARI, 0x0905},
      {USCRIPT_GEORGIAN, 0x10A0},
      {USCRIPT_GREEK, 0x0391},
      {USCRIPT_HAN, 0x4E9C},
      {USCRIPT_SIMPLIFIED_HAN, 0x4E9C},
      {USCRIPT_TRADITIONAL_HAN, 0x4E9C},
      {USCRIPT_HANGUL, 0xAC00},
      {USCRIPT_KOREAN, 0xAC00},
      {USCRIPT_HEBREW, 0x05D0},
      {USCRIPT_HIRAGANA, 0x3042},
      {USCRIPT_KATAKANA_OR_HIRAGANA, 0x3042},
      {USCRIPT_JAPANESE, 0x3042},
      {USCRIPT_KATAKANA, 0x30A2},
      {USCRIPT_THAI, 0x0E01},
      {USCRIPT_TIBETAN, 0x0F68},
  };
  std::set<int32_t> listed;
  for (const auto& [code, ch] : rows) {
    EXPECT_EQ(ZQScript(static_cast<UScriptCode>(code)).getA(), ch) << code;
    listed.insert(code);
  }
  for (int32_t code : allCodes()) {
    if (!listed.count(code)) {
      EXPECT_EQ(ZQScript(static_cast<UScriptCode>(code)).getA(), U'A') << code;
    }
  }
}

TEST(ScriptA, CharactersBelongToTheirScripts) {
  for (UScriptCode code :
       {USCRIPT_ARABIC, USCRIPT_ARMENIAN, USCRIPT_CYRILLIC, USCRIPT_DEVANAGARI, USCRIPT_GEORGIAN,
        USCRIPT_GREEK, USCRIPT_HAN, USCRIPT_HANGUL, USCRIPT_HEBREW, USCRIPT_HIRAGANA,
        USCRIPT_KATAKANA, USCRIPT_THAI, USCRIPT_TIBETAN}) {
    EXPECT_EQ(ZQScript::getScript(ZQScript(code).getA()), code) << code;
  }
}
