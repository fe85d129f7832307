// Internal pieces of number formatting: the numeral systems and the format reader, apart from
// the per-language alphabets, so each piece can be tested on its own.
#pragma once

#include <cstdint>

#include "common/ZQExport.h"

namespace ZQCommonNS::util {

/// `text` with `separator` between every `size` units counted from the right; `text` as it
/// stands when the separator is empty or the size is not above 0.
ZQCOMMON_API UnicodeString groupDigits(const UnicodeString& text, const UnicodeString& separator,
                                       int size);

/// Roman numerals from the letters for 1, 5, 10, 50, 100, 500, 1000, 5000, 10000; `count` is 7
/// or 9. With `singleFirst` not 0, a rest below 13 at the start of a place is written as the
/// one code point `singleFirst + rest - 1`.
ZQCOMMON_API void appendRoman(UnicodeString& out, long long n, const char16_t* letters, int count,
                              char16_t singleFirst);

/// Hebrew numerals of `n` (0 and above) at `level` (0 for a whole number).
ZQCOMMON_API void appendHebrew(UnicodeString& out, long long n, int level);
/// Armenian numerals, for 1 to 99999999.
ZQCOMMON_API void appendArmenian(UnicodeString& out, long long n, bool upper);
/// Georgian numerals of `n` modulo 100000; 0 there writes nothing.
ZQCOMMON_API void appendGeorgian(UnicodeString& out, long long n);
/// Tamil numerals, for 1 to 9999.
ZQCOMMON_API void appendTamil(UnicodeString& out, long long n);
/// Syriac numerals, for 1 to 10^10 - 1.
ZQCOMMON_API void appendSyriac(UnicodeString& out, long long n);

/// The per-language alphabet for a token's first unit ("A", "a", U+0391, U+03B1, U+0410,
/// U+0430), or null to use the token's default. `context` is the caller's.
using AlphabetChooser = const UnicodeString* (*)(char16_t first, const void* context);

/// The whole format reader; the language is reached through `choose` (which may be null).
ZQCOMMON_API UnicodeString formatNumberWith(long long n, const UnicodeString& format,
                                            const UnicodeString& separator, int size,
                                            AlphabetChooser choose, const void* context);

}  // namespace ZQCommonNS::util
