// The format reader of number formatting: a token of the format shows the numbering by its
// first value ("1", "a", "i", "01", U+05D0, ...), the text around it is kept.
#include <unicode/uchar.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <vector>

#include "util/ZQCounterStyleInternal.h"
#include "util/ZQFormatNumberInternal.h"

namespace ZQCommonNS::util {

namespace {

// ---- Tables ----

constexpr char16_t kDigitOnes[] = {0x0031, 0x0661, 0x06F1, 0x0967, 0x09E7, 0x0A67, 0x0AE7,
                                   0x0B67, 0x0C67, 0x0CE7, 0x0D67, 0x0E51, 0x0ED1, 0x0F21,
                                   0x1041, 0x17E1, 0x1811, 0x2081, 0xFF11};

// Digit rows whose digits are not consecutive code points.
constexpr char16_t kDigitRows[3][10] = {
    {0x3007, 0x4E00, 0x4E8C, 0x4E09, 0x56DB, 0x4E94, 0x516D, 0x4E03, 0x516B, 0x4E5D},
    {0xC601, 0xC77C, 0xC774, 0xC0BC, 0xC0AC, 0xC624, 0xC721, 0xCE60, 0xD314, 0xAD6C},
    {0x2070, 0x00B9, 0x00B2, 0x00B3, 0x2074, 0x2075, 0x2076, 0x2077, 0x2078, 0x2079}};

constexpr char16_t kRomanUpper[] = {u'I', u'V', u'X', u'L', u'C', u'D', u'M', 0x2181, 0x2182};
constexpr char16_t kRomanLower[] = {u'i', u'v', u'x', u'l', u'c', u'd', u'm'};
constexpr char16_t kRomanFullUpper[] = {0xFF29, 0xFF36, 0xFF38, 0xFF2C, 0xFF23,
                                        0xFF24, 0xFF2D, 0x2181, 0x2182};
constexpr char16_t kRomanFullLower[] = {0xFF49, 0xFF56, 0xFF58, 0xFF4C, 0xFF43, 0xFF44, 0xFF4D};
constexpr char16_t kRomanNumeralUpper[] = {0x2160, 0x2164, 0x2169, 0x216C, 0x216D,
                                           0x216E, 0x216F, 0x2181, 0x2182};
constexpr char16_t kRomanNumeralLower[] = {0x2170, 0x2174, 0x2179, 0x217C, 0x217D, 0x217E, 0x217F};

constexpr char16_t kGreekUpper[] = u"ΑΒΓΔΕΖΗΘΙΚΛΜΝΞΟΠΡΣΤΥΦΧΨΩ";
constexpr char16_t kGreekLower[] = u"αβγδεζηθικλμνξοπρστυφχψω";
constexpr char16_t kRussianUpper[] = u"АБВГДЕЖЗИКЛМНОПРСТУФХЦЧШЩЫЭЮЯ";
constexpr char16_t kRussianLower[] = u"абвгдежзиклмнопрстуфхцчшщыэюя";
constexpr char16_t kDanishUpper[] = u"ABCDEFGHIJKLMNOPQRSTUVWXYZÆØÅ";
constexpr char16_t kDanishLower[] = u"abcdefghijklmnopqrstuvwxyzæøå";

constexpr char16_t kArabic[] = {0x0623, 0x0628, 0x062A, 0x062B, 0x062C, 0x062D, 0x062E, 0x062F,
                                0x0630, 0x0631, 0x0632, 0x0633, 0x0634, 0x0635, 0x0636, 0x0637,
                                0x0638, 0x0639, 0x063A, 0x0641, 0x0642, 0x0643, 0x0644, 0x0645,
                                0x0646, 0x0647, 0x0648, 0x064A, 0};

constexpr char16_t kHiragana[] =
    u"あいうえおかきくけこさしすせそたちつてとなにぬねのはひふへほまみむめもやゆよらりるれろわをん";
constexpr char16_t kHiraganaIroha[] =
    u"いろはにほへとちりぬるをわかよたれそつねならむうゐのおくやまけふこえてあさきゆめみしゑひもせ"
    u"す";
constexpr char16_t kKatakana[] =
    u"アイウエオカキクケコサシスセソタチツテトナニヌネノハヒフヘホマミムメモヤユヨラリルレロワヲン";
constexpr char16_t kKatakanaIroha[] =
    u"イロハニホヘトチリヌルヲワカヨタレソツネナラムウヰノオクヤマケフコエテアサキユメミシヱヒモセ"
    u"ス";
constexpr char16_t kHalfKatakana[] = u"ｱｲｳｴｵｶｷｸｹｺｻｼｽｾｿﾀﾁﾂﾃﾄﾅﾆﾇﾈﾉﾊﾋﾌﾍﾎﾏﾐﾑﾒﾓﾔﾕﾖﾗﾘﾙﾚﾛﾜｦﾝ";
// The half-width forms have no letters for the two obsolete kana of the iroha.
constexpr char16_t kHalfKatakanaIroha[] = u"ｲﾛﾊﾆﾎﾍﾄﾁﾘﾇﾙｦﾜｶﾖﾀﾚｿﾂﾈﾅﾗﾑｳﾉｵｸﾔﾏｹﾌｺｴﾃｱｻｷﾕﾒﾐｼﾋﾓｾｽ";

constexpr char16_t kJamo[] = {0x3131, 0x3134, 0x3137, 0x3139, 0x3141, 0x3142, 0x3145, 0x3147,
                              0x3148, 0x314A, 0x314B, 0x314C, 0x314D, 0x314E, 0};
constexpr char16_t kHangul[] = {0xAC00, 0xB098, 0xB2E4, 0xB77C, 0xB9C8, 0xBC14, 0xC0AC, 0xC544,
                                0xC790, 0xCC28, 0xCE74, 0xD0C0, 0xD30C, 0xD558, 0};
constexpr char16_t kHangulZero = 0xC601;

constexpr char16_t kBranches[] = {0x5B50, 0x4E11, 0x5BC5, 0x536F, 0x8FB0, 0x5DF3, 0x5348,
                                  0x672A, 0x7533, 0x9149, 0x620D, 0x4EA5, 0};
constexpr char16_t kStems[] = {0x7532, 0x4E59, 0x4E19, 0x4E01, 0x620A, 0x5DF1,
                               0x5E9A, 0x8F9B, 0x58EC, 0x7678, 0};

struct Enclosed {
  char16_t first;
  char16_t base;  // the result is base + n
  int low, high;
};
constexpr Enclosed kEnclosed[] = {{0x2460, 0x245F, 0, 20},  {0x2474, 0x2473, 1, 20},
                                  {0x2488, 0x2487, 1, 20},  {0x249C, 0x249B, 1, 26},
                                  {0x24B6, 0x24B5, 1, 26},  {0x24D0, 0x24CF, 1, 26},
                                  {0x24EB, 0x24E0, 11, 20}, {0x24F5, 0x24F4, 1, 10}};

// The width of the zero-padded print is kept within the print buffer.
constexpr int kPrintBuffer = 1000;

// ---- Pieces ----

bool isTokenChar(UChar32 c) {
  return u_isalnum(c) || (c >= 0x2160 && c <= 0x2183) || c == 0x00B2 || c == 0x00B3 ||
         c == 0x00B9 || c == 0x2070 || (c >= 0x2074 && c <= 0x2079) ||
         (c >= 0x2080 && c <= 0x2089) || (c >= 0x1369 && c <= 0x137C);
}

bool isFallbackSpace(UChar32 c) { return u_isUWhiteSpace(c) || u_isblank(c); }

// The alphabet of the bijective numeration: BMP letters are read by index, others by walking.
struct Letters {
  const char16_t* units;
  int32_t length;  // in units
  int32_t count;   // in code points
  bool bmp;

  UChar32 at(int32_t index) const {
    if (bmp) return units[index];
    int32_t i = 0;
    U16_FWD_N(units, i, length, index);
    UChar32 c;
    U16_NEXT(units, i, length, c);
    return c;
  }
};

Letters lettersOf(const char16_t* units, int32_t length) {
  Letters l{units, length, 0, true};
  for (int32_t i = 0; i < length; ++i)
    if (U16_IS_SURROGATE(units[i])) l.bmp = false;
  l.count = l.bmp ? length : u_countChar32(units, length);
  return l;
}

Letters lettersOf(const char16_t* zeroEnded) {
  int32_t n = 0;
  while (zeroEnded[n] != 0) ++n;
  return lettersOf(zeroEnded, n);
}

Letters lettersOf(const UnicodeString& s) { return lettersOf(s.getBuffer(), s.length()); }

// The bijective numeration of `n` (at least 1) in a local buffer: 64 letters of two units
// each hold every 64-bit number in an alphabet of two or more letters.
struct AlphabeticText {
  char16_t buf[130];
  int32_t start = 130;

  AlphabeticText(unsigned long long n, const Letters& letters) {
    const unsigned long long k = static_cast<unsigned long long>(letters.count);
    while (n > 0 && start >= 2) {
      --n;
      const UChar32 c = letters.at(static_cast<int32_t>(n % k));
      n /= k;
      if (U_IS_BMP(c)) {
        buf[--start] = static_cast<char16_t>(c);
      } else {
        buf[--start] = U16_TRAIL(c);
        buf[--start] = U16_LEAD(c);
      }
    }
  }
  const char16_t* data() const { return buf + start; }
  int32_t length() const { return 130 - start; }
};

// Appends `text` with `separator` between every `size` units counted from the right.
void appendGrouped(UnicodeString& out, const char16_t* text, int32_t len,
                   const UnicodeString& separator, int size) {
  if (separator.isEmpty() || size <= 0 || len <= size) {
    out.append(text, len);
    return;
  }
  int32_t head = len % size;
  if (head == 0) head = size;
  out.append(text, head);
  for (int32_t i = head; i < len; i += size) out.append(separator).append(text + i, size);
}

int32_t groupedLength(int32_t len, const UnicodeString& separator, int size) {
  if (separator.isEmpty() || size <= 0 || len <= size) return len;
  return len + (len - 1) / size * separator.length();
}

// Decimal digits of `n` with its sign; returns the length.
int32_t decimalDigits(long long n, char16_t (&buf)[24]) {
  char digits[24];
  const auto r = std::to_chars(digits, digits + sizeof digits, n);
  const int32_t len = static_cast<int32_t>(r.ptr - digits);
  for (int32_t i = 0; i < len; ++i) buf[i] = static_cast<char16_t>(digits[i]);
  return len;
}

// The prefix ends where the token starts; the suffix starts where it ends.
struct Cut {
  int32_t start = 0, end = 0;
  int32_t length() const { return end - start; }
};

// Prefix up to the first token character, the run of token characters, the rest.
Cut cutAtToken(const UnicodeString& format) {
  const int32_t len = format.length();
  Cut cut;
  while (cut.start < len && !isTokenChar(format.char32At(cut.start)))
    cut.start = format.moveIndex32(cut.start, 1);
  cut.end = cut.start;
  while (cut.end < len && isTokenChar(format.char32At(cut.end)))
    cut.end = format.moveIndex32(cut.end, 1);
  return cut;
}

// Leading white space, the following run of other characters, the rest.
Cut cutAtSpace(const UnicodeString& format) {
  const int32_t len = format.length();
  Cut cut;
  while (cut.start < len && isFallbackSpace(format.char32At(cut.start)))
    cut.start = format.moveIndex32(cut.start, 1);
  cut.end = cut.start;
  while (cut.end < len && !isFallbackSpace(format.char32At(cut.end)))
    cut.end = format.moveIndex32(cut.end, 1);
  return cut;
}

class Formatter {
 public:
  Formatter(long long n, const UnicodeString& format, const UnicodeString& separator, int size,
            AlphabetChooser choose, const void* context)
      : m_n(n),
        m_format(format),
        m_separator(separator),
        m_size(size),
        m_choose(choose),
        m_context(context) {}

  UnicodeString format() {
    const UnicodeString& format = m_format;
    if (format.isEmpty() || (format.length() == 1 && format.charAt(0) == u'1')) {
      m_cut = Cut{0, format.length()};  // no prefix, no suffix
      return decimal();
    }
    m_cut = cutAtToken(format);
    const int32_t length = m_cut.length();
    if (length > 0) {
      const char16_t first = format.charAt(m_cut.start);
      const char16_t last = format.charAt(m_cut.end - 1);
      if (std::find(std::begin(kDigitOnes), std::end(kDigitOnes), last) != std::end(kDigitOnes) &&
          (length == 1 || first == last - 1)) {
        return padded(length,
                      [last](char c) { return static_cast<char16_t>(last + (c - '0') - 1); });
      }
      if (length == 2 && first == 0x7532 && last == 0x5B50) return sexagenary();
      if (length == 1) {
        bool handled = false;
        UnicodeString result = single(first, handled);
        if (handled) return result;
      }
      for (const auto& row : kDigitRows) {
        if (last == row[1] && (length == 1 || first == row[0])) {
          return padded(length, [&row](char c) {
            // The sign has no place in the row: kept.
            return c >= '0' && c <= '9' ? row[c - '0'] : static_cast<char16_t>(c);
          });
        }
      }
    }
    if (m_n >= 0) return fallback();
    return decimal();
  }

 private:
  int32_t prefixLength() const { return m_cut.start; }
  int32_t suffixLength() const { return m_format.length() - m_cut.end; }

  // A string that holds prefix, `bodyLength` units and suffix, with the prefix in it.
  UnicodeString begin(int32_t bodyLength) const {
    UnicodeString out(prefixLength() + bodyLength + suffixLength(), UChar32{0}, 0);
    out.append(m_format, 0, m_cut.start);
    return out;
  }
  UnicodeString& finish(UnicodeString& out) const {
    return out.append(m_format, m_cut.end, suffixLength());
  }

  UnicodeString grouped(const char16_t* text, int32_t len) const {
    UnicodeString out = begin(groupedLength(len, m_separator, m_size));
    appendGrouped(out, text, len, m_separator, m_size);
    return finish(out);
  }

  UnicodeString decimal() const {
    char16_t buf[24];
    return grouped(buf, decimalDigits(m_n, buf));
  }

  // "%0*lld" at `width` (cut to the print buffer), each printed character replaced by `map`.
  template <class Map>
  UnicodeString padded(int32_t width, Map map) const {
    char buf[kPrintBuffer];
    const int w = std::min<int32_t>(width, kPrintBuffer - 1);
    const int len =
        std::clamp(std::snprintf(buf, sizeof buf, "%0*lld", w, m_n), 0, kPrintBuffer - 1);
    char16_t units[kPrintBuffer];
    for (int i = 0; i < len; ++i) units[i] = map(buf[i]);
    return grouped(units, len);
  }

  UnicodeString wrap(const char16_t* body, int32_t length) const {
    UnicodeString out = begin(length);
    out.append(body, length);
    return finish(out);
  }
  UnicodeString wrap(const UnicodeString& body) const {
    return wrap(body.getBuffer(), body.length());
  }
  UnicodeString wrapChar(UChar32 c) const {
    char16_t buf[2];
    int32_t len = 0;
    U16_APPEND_UNSAFE(buf, len, c);
    return wrap(buf, len);
  }

  UnicodeString alphabetic(unsigned long long n, const Letters& letters) const {
    if (letters.count < 2 || n < 1) return decimal();
    const AlphabeticText text(n, letters);
    return wrap(text.data(), text.length());
  }

  // A numeral system's text between prefix and suffix; `room` is a guess of its length.
  template <class Append>
  UnicodeString appended(Append append, int32_t room = 24) const {
    UnicodeString out = begin(room);
    append(out);
    return finish(out);
  }

  UnicodeString sexagenary() const {
    if (m_n < 1 || m_n > 60) return decimal();
    const char16_t body[2] = {kStems[(m_n - 1) % 10], kBranches[(m_n - 1) % 12]};
    return wrap(body, 2);
  }

  // A letter alphabet chosen by the language, else `fallbackLetters`.
  UnicodeString languageAlphabet(char16_t first, const Letters& fallbackLetters) const {
    if (m_n < 1) return decimal();
    if (m_choose != nullptr) {
      if (const UnicodeString* chosen = m_choose(first, m_context))
        return alphabetic(static_cast<unsigned long long>(m_n), lettersOf(*chosen));
    }
    return alphabetic(static_cast<unsigned long long>(m_n), fallbackLetters);
  }

  // A-Z from `first`, with the number in its low 16 bits.
  UnicodeString latinLetters(char16_t first) const {
    if (m_n < 1) return decimal();
    // The full-width letters know no language.
    if (m_choose != nullptr && (first == u'A' || first == u'a')) {
      if (const UnicodeString* chosen = m_choose(first, m_context))
        return alphabetic(static_cast<unsigned long long>(m_n), lettersOf(*chosen));
    }
    const unsigned n16 = static_cast<unsigned>(m_n) & 0xFFFFu;
    if (n16 == 0) return decimal();
    char16_t letters[26];
    for (int i = 0; i < 26; ++i) letters[i] = static_cast<char16_t>(first + i);
    return alphabetic(n16, Letters{letters, 26, 26, true});
  }

  UnicodeString roman(const char16_t* letters, int count, long long high,
                      char16_t singleFirst) const {
    if (m_n < 1 || m_n > high) return decimal();
    return appended(
        [&](UnicodeString& body) { appendRoman(body, m_n, letters, count, singleFirst); });
  }

  // The rows of the one-character token; `handled` is false when `first` has no row.
  UnicodeString single(char16_t first, bool& handled) const {
    handled = true;
    const long long n = m_n;
    const auto positive = [n] { return static_cast<unsigned long long>(n); };
    switch (first) {
      case u'A':
      case u'a':
      case 0xFF21:
      case 0xFF41:
        return latinLetters(first);
      case u'I':
        return roman(kRomanUpper, 9, 39999, 0);
      case u'i':
        return roman(kRomanLower, 7, 3999, 0);
      case 0xFF29:
        return roman(kRomanFullUpper, 9, 39999, 0);
      case 0xFF49:
        return roman(kRomanFullLower, 7, 3999, 0);
      case 0x2160:
        return roman(kRomanNumeralUpper, 9, 39999, first);
      case 0x2170:
        return roman(kRomanNumeralLower, 7, 3999, first);
      case 0x00C5:
        return n >= 1 ? alphabetic(positive(), lettersOf(kDanishUpper)) : decimal();
      case 0x00E5:
        return n >= 1 ? alphabetic(positive(), lettersOf(kDanishLower)) : decimal();
      case 0x0391:
        return languageAlphabet(first, lettersOf(kGreekUpper));
      case 0x03B1:
        return languageAlphabet(first, lettersOf(kGreekLower));
      case 0x0410:
        return languageAlphabet(first, lettersOf(kRussianUpper));
      case 0x0430:
        return languageAlphabet(first, lettersOf(kRussianLower));
      case 0x0531:
      case 0x0561:
        return n >= 1 && n <= 99999999 ? appended([&](UnicodeString& body) {
          appendArmenian(body, n, first == 0x0531);
        })
                                       : decimal();
      case 0x05D0:
        return n >= 0 ? appended([&](UnicodeString& body) { appendHebrew(body, n, 0); })
                      : decimal();
      case 0x0623:
        if (n == 0) return wrapChar(0x0660);
        return n >= 1 ? alphabetic(positive(), lettersOf(kArabic)) : decimal();
      case 0x0710:
        return n >= 1 && n < 10000000000LL
                   ? appended([&](UnicodeString& body) { appendSyriac(body, n); })
                   : decimal();
      case 0x0BE7:
        return n >= 1 && n <= 9999 ? appended([&](UnicodeString& body) { appendTamil(body, n); })
                                   : decimal();
      case 0x10D0:
        return n >= 1 && n <= 19999
                   ? appended([&](UnicodeString& body) { appendGeorgian(body, n); })
                   : decimal();
      case 0x1369: {
        UnicodeString text = n >= 1 ? formatEthiopic(n) : UnicodeString();
        return text.isEmpty() ? decimal() : wrap(text);
      }
      case 0x3042:
        return n >= 1 ? alphabetic(positive(), lettersOf(kHiragana)) : decimal();
      case 0x3044:
        return n >= 1 ? alphabetic(positive(), lettersOf(kHiraganaIroha)) : decimal();
      case 0x30A2:
        return n >= 1 ? alphabetic(positive(), lettersOf(kKatakana)) : decimal();
      case 0x30A4:
        return n >= 1 ? alphabetic(positive(), lettersOf(kKatakanaIroha)) : decimal();
      case 0xFF71:
        return n >= 1 ? alphabetic(positive(), lettersOf(kHalfKatakana)) : decimal();
      case 0xFF72:
        return n >= 1 ? alphabetic(positive(), lettersOf(kHalfKatakanaIroha)) : decimal();
      case 0x3131:
        return n >= 1 ? alphabetic(positive(), lettersOf(kJamo)) : wrapChar(kHangulZero);
      case 0xAC00:
        return n >= 1 ? alphabetic(positive(), lettersOf(kHangul)) : wrapChar(kHangulZero);
      case 0x5B50:
        return n >= 1 ? alphabetic(positive(), lettersOf(kBranches)) : decimal();
      case 0x7532:
        return n >= 1 ? alphabetic(positive(), lettersOf(kStems)) : decimal();
      default:
        handled = false;
        return UnicodeString();
    }
  }

  // The second reading, at white space: enclosed forms, repeated characters, spelled
  // alphabets and symbol lists. Its prefix and suffix replace those of the first cut.
  UnicodeString fallback() {
    m_cut = cutAtSpace(m_format);
    // A read-only alias of the token within the format.
    const UnicodeString token(false, m_format.getBuffer() + m_cut.start, m_cut.length());
    const int32_t units = token.length();
    if (units == 0) return decimal();
    const int32_t length = token.countChar32();
    const long long n = m_n;
    if (length == 1) {
      const UChar32 first = token.char32At(0);
      for (const auto& e : kEnclosed) {
        if (e.first == first) {
          if (n == 0 && e.first == 0x2460) return wrapChar(0x24EA);
          if (n >= e.low && n <= e.high) return wrapChar(static_cast<UChar32>(e.base + n));
          break;
        }
      }
      return decimal();
    }
    if (n < 1) return decimal();
    switch (repetition(token)) {
      case Repetition::AllEqual: {
        if (n >= 1000) return decimal();
        const UChar32 c = token.char32At(0);
        const int32_t step = U16_LENGTH(c);
        UnicodeString out = begin(step * static_cast<int32_t>(n));
        for (long long i = 0; i < n; ++i) out.append(c);
        return finish(out);
      }
      case Repetition::SomeTwice:
        return decimal();
      case Repetition::AllDifferent:
        break;
    }
    bool allToken = true;
    for (int32_t i = 0; i < units; i = token.moveIndex32(i, 1))
      if (!isTokenChar(token.char32At(i))) allToken = false;
    if (allToken) return alphabetic(static_cast<unsigned long long>(n), lettersOf(token));
    if (n >= 1000) return decimal();
    const UChar32 symbol =
        token.char32At(token.moveIndex32(0, static_cast<int32_t>((n - 1) % length)));
    const long long times = (n - 1) / length + 1;
    UnicodeString out = begin(U16_LENGTH(symbol) * static_cast<int32_t>(times));
    for (long long i = 0; i < times; ++i) out.append(symbol);
    return finish(out);
  }

  enum class Repetition { AllEqual, SomeTwice, AllDifferent };

  static Repetition repetition(const UnicodeString& token) {
    const int32_t units = token.length();
    const UChar32 first = token.char32At(0);
    bool allEqual = true;
    for (int32_t i = 0; i < units; i = token.moveIndex32(i, 1))
      if (token.char32At(i) != first) allEqual = false;
    if (allEqual) return Repetition::AllEqual;
    // Short tokens are checked in place, long ones through a sorted copy.
    if (units <= 64) {
      for (int32_t i = 0; i < units; i = token.moveIndex32(i, 1))
        for (int32_t j = token.moveIndex32(i, 1); j < units; j = token.moveIndex32(j, 1))
          if (token.char32At(i) == token.char32At(j)) return Repetition::SomeTwice;
      return Repetition::AllDifferent;
    }
    std::vector<UChar32> cps;
    cps.reserve(static_cast<size_t>(units));
    for (int32_t i = 0; i < units; i = token.moveIndex32(i, 1)) cps.push_back(token.char32At(i));
    std::sort(cps.begin(), cps.end());
    return std::adjacent_find(cps.begin(), cps.end()) != cps.end() ? Repetition::SomeTwice
                                                                   : Repetition::AllDifferent;
  }

  long long m_n;
  const UnicodeString& m_format;
  const UnicodeString& m_separator;
  int m_size;
  AlphabetChooser m_choose;
  const void* m_context;
  Cut m_cut;
};

}  // namespace

UnicodeString groupDigits(const UnicodeString& text, const UnicodeString& separator, int size) {
  UnicodeString out(groupedLength(text.length(), separator, size), UChar32{0}, 0);
  appendGrouped(out, text.getBuffer(), text.length(), separator, size);
  return out;
}

UnicodeString formatNumberWith(long long n, const UnicodeString& format,
                               const UnicodeString& separator, int size, AlphabetChooser choose,
                               const void* context) {
  return Formatter(n, format, separator, size, choose, context).format();
}

}  // namespace ZQCommonNS::util
