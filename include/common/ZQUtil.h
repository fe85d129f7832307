// Static helpers: quoting, locale-free numbers, encoding names, base64, zlib, dates and bits.
#pragma once

#include <atomic>
#include <iosfwd>
#include <memory>
#include <utility>
#include <vector>

#include "common/ZQExport.h"
#include "common/ZQLang.h"
#include "common/ZQName.h"

namespace ZQCommonNS {

/// A class of static helpers shared by the tokenizer, the values, the parsers and the streams.
class ZQCOMMON_API ZQUtil {
 public:
  /// Bit set that says how a string is quoted and escaped.
  enum QuoteMode : int {
    QUOTE_NONE = 0,
    QUOTE_DOUBLE = 1,       ///< U+0022 may quote
    QUOTE_SINGLE = 2,       ///< U+0027 may quote
    QUOTE_DOUBLED = 4,      ///< a quote inside is written twice
    QUOTE_CSS = 8,          ///< CSS backslash escapes
    QUOTE_UNICODE = 16,     ///< \uXXXX escapes
    QUOTE_ANY = 3,          ///< either quote
    QUOTE_ANY_DOUBLED = 7,  ///< either quote, doubled inside (the expression form)
    QUOTE_CSS_STRING = 43,  ///< the form CSS values use
  };

  // ---- Counter styles and number formatting (CounterStyle and its helpers) belong here. ----

  // ---- Number formatting by format tokens ----

  /// `n` under an XSLT-like `format` ("1", "01", "a", "i", U+05D0, ...): the token's first
  /// value picks the numbering, the text around it is kept; what cannot apply is decimal.
  /// `letterValue` takes no part in the result.
  static UnicodeString formatNumber(long long n, const UnicodeString& format,
                                    const UnicodeString& groupSeparator, int groupSize, ZQLang lang,
                                    ZQNameEnum letterValue);
  /// The long form without grouping and with "auto" for the letter value.
  static UnicodeString formatNumber(long long n, const UnicodeString& format, ZQLang lang);
  /// Japanese numerals for every run of ASCII digits in `text`: `mode` "grouping", "readable"
  /// or else simple; `digits` "kanji", "latin" (full-width) or the name's own code points;
  /// `units` replaces ten, hundred, thousand and then the powers of ten thousand.
  static UnicodeString convertKansuji(const UnicodeString& text, const ZQName& mode,
                                      const ZQName& digits, const UnicodeString& units,
                                      const UnicodeString& reserved);
  /// The decimal text of `n`, converted as above.
  static UnicodeString convertKansuji(long long n, const ZQName& mode, const ZQName& digits,
                                      const UnicodeString& units, const UnicodeString& reserved);

  /// A counter style: turns an integer into text by a system, symbols, a range, a fallback,
  /// padding, a sign and a prefix and suffix.
  class ZQCOMMON_API CounterStyle {
   public:
    /// One symbol: text, or the URL of an image when the flag is set.
    class ZQCOMMON_API Symbol : public UnicodeString {
     public:
      Symbol() = default;
      /// The one code point `codePoint`.
      explicit Symbol(int codePoint);
      /// The string `text`; `url` says it names an image.
      Symbol(const UnicodeString& text, bool url = false) : UnicodeString(text), m_url(url) {}
      Symbol(const Symbol&) = default;
      Symbol(Symbol&&) noexcept = default;
      Symbol& operator=(const Symbol&) = default;
      Symbol& operator=(Symbol&&) noexcept = default;

      bool isUrl() const { return m_url; }
      /// The string first, the flag only when the strings are equal.
      bool operator==(const Symbol& other) const;
      bool operator!=(const Symbol& other) const { return !(*this == other); }
      bool operator<(const Symbol& other) const;

     private:
      bool m_url = false;
    };

    /// A weight (or a length) with its symbol.
    class ZQCOMMON_API IntSymbol {
     public:
      IntSymbol() = default;
      IntSymbol(int value, const Symbol& symbol) : value(value), symbol(symbol) {}
      IntSymbol(const IntSymbol&) = default;
      IntSymbol(IntSymbol&&) noexcept = default;
      IntSymbol& operator=(const IntSymbol&) = default;
      IntSymbol& operator=(IntSymbol&&) noexcept = default;

      /// The value first, then the symbol.
      bool operator==(const IntSymbol& other) const;
      bool operator!=(const IntSymbol& other) const { return !(*this == other); }
      bool operator<(const IntSymbol& other) const;

      int value = 0;
      Symbol symbol;
    };

    using SymbolList = std::vector<Symbol>;
    using IntSymbolList = std::vector<IntSymbol>;
    using Range = std::pair<long long, long long>;
    using RangeList = std::vector<Range>;
    /// Finds a style by name for the fallback; null when there is none.
    using Lookup = const CounterStyle* (*)(ZQName name, void* data);

    /// A style of the "symbolic" system.
    CounterStyle();
    /// A style of `system`, which may also be one of the library's own systems.
    explicit CounterStyle(ZQName system);
    /// Deep copies: the sequences are copied, the in-fallback state is not.
    CounterStyle(const CounterStyle& other);
    CounterStyle& operator=(const CounterStyle& other);
    ~CounterStyle();

    ZQName getSystem() const { return m_system; }
    int getFirst() const { return m_first; }
    ZQName getFallback() const { return m_fallback; }
    const Symbol& getPrefix() const { return m_prefix; }
    const Symbol& getSuffix() const { return m_suffix; }
    const IntSymbol& getPad() const { return m_pad; }
    /// The "before" sign symbol; the "after" one follows it.
    const Symbol* getNegative() const { return m_negative; }
    /// The sequences, null when there is none.
    const SymbolList* getSymbols() const { return m_symbols.get(); }
    const IntSymbolList* getAdditiveSymbols() const { return m_additiveSymbols.get(); }
    const RangeList* getRange() const { return m_range.get(); }
    /// True for the shared styles of getPredefinedCounterStyle.
    bool isPredefined() const { return m_predefined; }

    /// Takes one of the six CSS systems; any other name leaves the system as it is.
    void setSystem(ZQName system);
    void setFirst(int first) { m_first = first; }
    void setFallback(ZQName fallback) { m_fallback = fallback; }

    void setNegative(const Symbol& before, const Symbol& after);
    void setNegative(const char* before, const char* after);

    void setPrefix(int codePoint);
    void setPrefix(const Symbol& prefix);
    void setPrefix(const char* prefix);
    void setSuffix(int codePoint);
    void setSuffix(const Symbol& suffix);
    void setSuffix(const char* suffix);

    void setPad(const IntSymbol& pad);
    void setPad(int length, const Symbol& symbol);
    void setPad(int length, const char* symbol);

    /// Deletes the symbol sequence.
    void clrSymbols();
    /// Appends one symbol.
    void addSymbol(int codePoint);
    void addSymbol(const Symbol& symbol);
    /// Appends one symbol per code point of `symbols`.
    void addSymbols(const Symbol& symbols);
    /// Appends one symbol per code point of a list ended by 0.
    void addSymbols(int codePoint, ...);
    /// Appends one symbol per string of a list ended by a null pointer or an empty string.
    void addSymbols(const char* symbol, ...);

    /// Deletes the additive symbols.
    void clrAdditiveSymbols();
    /// Appends one additive symbol; they are used in the order given.
    void addAdditiveSymbol(const IntSymbol& symbol);
    void addAdditiveSymbol(int weight, int codePoint);
    void addAdditiveSymbol(int weight, const Symbol& symbol);
    void addAdditiveSymbol(int weight, const char* symbol);

    /// Deletes the ranges: the system's own default applies.
    void clrRange();
    /// Appends the range `low` to `high`, both inclusive.
    void addRange(long long low, long long high);

    /// A total order for sets of styles.
    bool operator<(const CounterStyle& other) const;

    /// Pads `text`, adds the sign when `negative`, then the prefix and suffix unless `bare`.
    UnicodeString finishString(const UnicodeString& text, bool negative, bool bare) const;
    /// `n` in this style; what it can't represent goes to the fallback, found through
    /// `lookup` (with `data`) or else "decimal". `bare` leaves out the prefix and suffix.
    UnicodeString formatNumber(long long n, Lookup lookup = nullptr, void* data = nullptr,
                               bool bare = false) const;

   private:
    friend class ZQUtil;
    bool checkRange(long long n) const;
    UnicodeString formatFallback(long long n, Lookup lookup, void* data, bool bare) const;

    ZQName m_system;
    int m_first = 1;
    std::unique_ptr<SymbolList> m_symbols;
    std::unique_ptr<IntSymbolList> m_additiveSymbols;
    Symbol m_negative[2];
    Symbol m_prefix;
    Symbol m_suffix;
    std::unique_ptr<RangeList> m_range;
    IntSymbol m_pad;
    int m_reserved = 0;
    ZQName m_fallback;
    bool m_predefined = false;
    // Non-zero while this style hands a number to its fallback: the cycle guard. A count, so
    // that two threads falling back through one shared style never clear each other's mark.
    mutable std::atomic<int> m_inFallback{0};
  };

  /// The predefined style of that name, in any case; null for an unknown name. Built on first
  /// demand and kept until cleanup().
  static const CounterStyle* getPredefinedCounterStyle(ZQName name);

  // ---- Quoting ----

  /// Quotes `text` by `mode`: the quote character, then the escape of the highest escape bit.
  static UnicodeString quoteString(const UnicodeString& text, QuoteMode mode);
  /// Reads a (quoted) string at `p`; `*end` goes behind it. Bogus for a missing or open quote.
  /// As in quoteString the highest escape bit decides: with both, only "\uXXXX" escapes.
  static UnicodeString parseString(const char16_t* p, const char16_t** end, QuoteMode mode);
  /// Trims `text` and reads it as one quoted string; bogus when it is not one.
  static UnicodeString unquoteString(const UnicodeString& text, QuoteMode mode);
  /// "url(\"...\")" with every U+0022 inside written as "%22".
  static UnicodeString quoteUri(const UnicodeString& uri);
  /// The URI text of a CSS "url(...)" form, as the URI class normalises it.
  static UnicodeString unquoteUri(const UnicodeString& text);
  /// Drops outer runs of tab, LF, CR and space, and turns each inner run into one space.
  static UnicodeString normalizeSpaces(const UnicodeString& text);
  /// Removes every space, tab, LF and CR.
  static UnicodeString omitSpace(const UnicodeString& text);

  // ---- Numbers, independent of the locale ----

  /// Sign, digits, "." and digits (no exponent); 0.0 with `*end` = `p` when there is no digit.
  static double parseNumber(const char16_t* p, const char16_t** end, bool* hasPoint);
  /// Decimal digits at `p`, no sign; `*end` goes behind them.
  static int parseDigits(const char16_t* p, const char16_t** end);
  /// Decimal digits of `text` from `start`, at most `count` of them (-1: to the end).
  static int parseDigits(const UnicodeString& text, int start, int count);
  /// Hexadecimal digits after white space, at most `maxDigits` of them (-1: no limit);
  /// a value beyond 32 bits gives 0xFFFFFFFF.
  static unsigned parseHexNum(const char16_t* p, const char16_t** end, int maxDigits);

  /// Decimal text of an integer.
  static UnicodeString toString(int value);
  static UnicodeString toString(long long value);
  /// The C "%g" form, printed in the "C" numeric locale.
  static UnicodeString toString(double value);
  /// Upper-case hexadecimal, padded with "0" on the left to `width`.
  static UnicodeString toHexString(int value, int width);
  static UnicodeString toHexString(long long value, int width);

  /// Rounds halves away from zero; NaN gives 0 and values beyond int are clamped.
  static int roundToInteger(double value);
  static int roundToInteger(float value);

  /// A quiet NaN.
  static double getNaN();
  static float getNaNf();
  static bool isNaN(double value);
  static bool isNaN(float value);

  /// Sets the process's numeric locale to "C" unless it is already; under a lock of its own.
  static void setLocaleC();

  // ---- Encoding names ----

  /// The library's one spelling of an encoding name, or `name` itself when unknown.
  static UnicodeString getCanonicalEncoding(const UnicodeString& name);
  /// The IANA name ICU gives for `name` ("UTF-8" for empty, "" when unknown).
  static UnicodeString getStandardEncoding(const UnicodeString& name);

  // ---- Base64 and compression ----

  /// Standard base64 with padding and no line breaks of everything left in `in`;
  /// `size` is a hint for the space to reserve.
  static UnicodeString encodeBase64(std::istream& in, int size);
  /// A "data:" URI: the media type, ";charset=" and `charset` when one is given, ";base64,".
  static UnicodeString encodeBase64(std::istream& in, int size, const UnicodeString& mediaType,
                                    const UnicodeString& charset);
  /// Decodes base64, skipping characters outside the alphabet and stopping at the first "=";
  /// a negative `length` reads up to a NUL.
  static void decodeBase64(const char16_t* text, int length, std::ostream& out);

  /// Inflates a zlib stream into `out`; true when the stream ended properly.
  static bool inflate(std::ostream& out, const void* data, unsigned size);
  /// Inflates a raw deflate stream into `out`; true when the stream ended properly.
  static bool inflate2(std::ostream& out, const void* data, unsigned size);
  /// Compresses into a zlib stream at the default level; true on success.
  static bool deflate(std::ostream& out, const void* data, unsigned size);

  // ---- Dates ----

  /// Modified Julian day (1858-11-17 is 0): Gregorian from 1582-10-15 on, Julian before.
  static int modifiedJulianDay(int year, int month, int day);
  /// The date of a modified Julian day, in the calendar modifiedJulianDay uses.
  static void mjd2Date(int mjd, int& year, int& month, int& day);
  /// Day of the week of a modified Julian day: 0 is Sunday, 6 Saturday.
  static int mjd2WeekDay(int mjd);

  // ---- Bits, counted from the most significant bit of each byte ----

  /// The sample of the given width at `index`; samples above 8 bits are big-endian.
  static unsigned fetchBit1(const unsigned char* data, int index);
  static unsigned fetchBit2(const unsigned char* data, int index);
  static unsigned fetchBit4(const unsigned char* data, int index);
  static unsigned fetchBit8(const unsigned char* data, int index);
  /// Two 12-bit samples share three bytes.
  static unsigned fetchBit12(const unsigned char* data, int index);
  static unsigned fetchBit16(const unsigned char* data, int index);
  static unsigned fetchBit24(const unsigned char* data, int index);
  static unsigned fetchBit32(const unsigned char* data, int index);
  /// Sets every bit of the sample at `index`.
  static void patchBit1(unsigned char* data, int index);
  static void patchBit2(unsigned char* data, int index);
  static void patchBit4(unsigned char* data, int index);

  /// Reads and writes single bits and bit fields of a buffer of `bits` bits. Reading past the
  /// end gives 0 bits, writing past the end (or through a read-only iterator) does nothing.
  class ZQCOMMON_API BitIterator {
   public:
    BitIterator(unsigned char* data, int bits);
    /// A read-only iterator: the patch operations do nothing.
    BitIterator(const unsigned char* data, int bits);

    /// The bit at the fetch position; the position moves on by one.
    bool fetch();
    /// The next `count` bits (at most 32), first bit highest; the position moves on.
    unsigned fetch(int count);
    int getFetchPos() const { return m_fetch; }
    /// Moves the fetch position to `pos`, kept within 0 and size().
    void seekFetch(int pos);
    void advanceFetch() { advanceFetch(1); }
    /// Moves the fetch position by `count` (which may be negative), kept within the buffer.
    void advanceFetch(int count);
    /// No bit left to fetch.
    bool endFetch() const { return m_fetch >= m_bits; }
    /// Fewer than `count` bits left to fetch.
    bool endFetch(int count) const { return count > m_bits - m_fetch; }

    /// Writes one bit at the patch position; the position moves on by one.
    void patch(bool value);
    /// Writes the low `count` bits of `value` (at most 32), highest first.
    void patch(unsigned value, int count);
    /// Writes `count` copies of `value`.
    void patchFill(bool value, int count);
    int getPatchPos() const { return m_patch; }
    void seekPatch(int pos);
    void advancePatch() { advancePatch(1); }
    void advancePatch(int count);
    bool endPatch() const { return m_patch >= m_bits; }
    bool endPatch(int count) const { return count > m_bits - m_patch; }

    /// Length of the run of `value` from the fetch position, at most `limit`; does not move.
    int countRun(bool value, int limit) const;
    /// Size of the buffer in bits.
    int size() const { return m_bits; }

   private:
    const unsigned char* m_data;
    unsigned char* m_write;  // null for a read-only buffer
    int m_bits;
    int m_fetch = 0;
    int m_patch = 0;
  };

  /// Releases what the helpers built (counter styles, alphabets, the encoding table).
  /// No other thread may use the library meanwhile.
  static void cleanup();
};

/// Combines quote-mode bits.
constexpr ZQUtil::QuoteMode operator|(ZQUtil::QuoteMode a, ZQUtil::QuoteMode b) {
  return static_cast<ZQUtil::QuoteMode>(static_cast<int>(a) | static_cast<int>(b));
}
constexpr ZQUtil::QuoteMode operator&(ZQUtil::QuoteMode a, ZQUtil::QuoteMode b) {
  return static_cast<ZQUtil::QuoteMode>(static_cast<int>(a) & static_cast<int>(b));
}

}  // namespace ZQCommonNS
