// Writing systems: ICU's script codes with three extra values and the groupings that layout asks
// about (CJK justification, hanging baselines, full-width glyphs).
#pragma once

#include "common/ZQExport.h"
#include "common/ZQName.h"

#include <unicode/uscript.h>

#include <cstdint>

namespace ZQCommonNS {

/// A writing system: a UScriptCode, or one of the extra values SCRIPT_INVALID, SCRIPT_AUTO and
/// SCRIPT_NONE. Unknown strings and names give SCRIPT_INVALID; nothing here throws.
class ZQCOMMON_API ZQScript {
 public:
  /// The values beside the UScriptCode range.
  enum ExtraCode : int32_t {
    SCRIPT_INVALID = -1,  ///< USCRIPT_INVALID_CODE: no script known.
    SCRIPT_AUTO = -2,     ///< The script is to be chosen automatically.
    SCRIPT_NONE = -3      ///< No script at all.
  };

  /// No script (-1).
  constexpr ZQScript() noexcept : code(USCRIPT_INVALID_CODE) {}
  /// The given code; any value is kept as it is.
  constexpr ZQScript(UScriptCode scriptCode) noexcept : code(scriptCode) {}
  /// One of the extra values.
  constexpr ZQScript(ExtraCode extra) noexcept : code(extra) {}
  /// A script from a name, a language tag or a script code: "" and "auto" are SCRIPT_AUTO,
  /// "none" is SCRIPT_NONE, "ja" Japanese, "ko" Korean, "zh-TW" Traditional Han, "Latn" Latin.
  ZQScript(const UnicodeString& s);
  /// A script from a name; the empty name is SCRIPT_INVALID (unlike the empty string).
  ZQScript(ZQName name);
  /// As for ZQName.
  ZQScript(ZQNameEnum name) : ZQScript(ZQName(name)) {}

  constexpr bool operator==(const ZQScript& other) const { return code == other.code; }
  constexpr bool operator!=(const ZQScript& other) const { return code != other.code; }
  constexpr bool operator==(UScriptCode other) const { return code == other; }
  constexpr bool operator!=(UScriptCode other) const { return code != other; }

  /// The code, which may be one of the extra values.
  constexpr UScriptCode getUScriptCode() const { return static_cast<UScriptCode>(code); }
  /// The four-letter name of the script ("Latn", "Hang", "Hans"); the empty name when negative.
  ZQName getScriptCode() const;
  /// ICU's long name ("Latin"); for a negative code the (empty) string of getScriptCode.
  UnicodeString getScriptName() const;
  /// The name table's string for getScriptCode.
  const UnicodeString& toString() const;

  /// The script of one code point, with the layout rules in front of ICU's answer.
  static UScriptCode getScript(int ch);
  /// The dominant script of a text, decided by its first telling code point; with `latinWins`
  /// false any other script anywhere overrides Latin. Common when nothing tells.
  static UScriptCode getScriptFromText(const UnicodeString& text, bool latinWins);

  /// Hiragana, Katakana, or Katakana-or-Hiragana.
  bool isKanaScript() const { return isKanaScript(getUScriptCode()); }
  /// Hiragana, Katakana, or Katakana-or-Hiragana.
  static bool isKanaScript(UScriptCode scriptCode);
  /// A kana script, or Japanese.
  bool isJA() const;
  /// Simplified Han.
  bool isSC() const { return code == USCRIPT_SIMPLIFIED_HAN; }
  /// Traditional Han.
  bool isTC() const { return code == USCRIPT_TRADITIONAL_HAN; }
  /// The script is to be chosen automatically.
  bool isAuto() const { return code == SCRIPT_AUTO; }
  /// Bopomofo, Han, Hangul, the kana scripts, Simplified and Traditional Han, Japanese, Korean.
  bool isCJK() const;
  /// isAuto or isCJK.
  bool isCJKorAuto() const { return isAuto() || isCJK(); }
  /// isCJK less Hangul and Korean, which justify at spaces.
  bool isCJKJustify() const;
  /// Common and the scripts set like Latin: Armenian, Cyrillic, Ethiopic, Georgian, Greek.
  bool isLatinGroup() const;
  /// Scripts that hang from their baseline: Bengali, Devanagari, Gujarati, Gurmukhi, Tibetan.
  bool isHangingBaseline() const;
  /// Whether the code point takes a full-width glyph in text of this script.
  bool isZenkakuScript(int ch) const;
  /// A representative character of the script, 'A' when there is none of its own.
  UChar32 getA() const;

  /// A UScriptCode, or one of the extra values.
  int32_t code;
};

}  // namespace ZQCommonNS
