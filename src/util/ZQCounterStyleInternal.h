// Numeral conversions shared by the counter styles and the number formatting.
#pragma once

#include <array>

#include "common/ZQExport.h"

namespace ZQCommonNS::util {

/// Ethiopic numerals of n; empty for n <= 0.
ZQCOMMON_API UnicodeString formatEthiopic(long long n);

/// How runs of digits become kansuji: digit by digit, digits with the myriad powers after each
/// group of four, or the spoken form with ten, hundred and thousand.
enum class KansujiMode { Simple, Grouping, Readable };

/// The 27-entry table of kansuji code points; index 0 unused, 1..27 as tabled.
/// 1..10 digits 0..9; 11..13 ten, hundred, thousand; 14..25 the powers 10^4 to 10^48;
/// 26 the decimal point; 27 the thousands comma.
using KansujiTable = std::array<UChar32, 28>;

/// The defaults of the table.
ZQCOMMON_API const KansujiTable& defaultKansujiTable();

/// The kansuji conversion of every maximal run of ASCII digits in `text` (what lies between
/// runs is copied), by `mode`. In Grouping mode, "," and "." inside the counted span are
/// written with index 27 and 26, and other ASCII U+0021..U+007E non-digits inside it in their
/// full-width form (+0xFEE0): that is the text path that convertKansuji uses.
ZQCOMMON_API UnicodeString convertKansujiText(const UnicodeString& text, KansujiMode mode,
                                              const KansujiTable& table);

}  // namespace ZQCommonNS::util
