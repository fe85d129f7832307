// Additive numeral systems of number formatting: Roman, Hebrew, Armenian, Georgian, Tamil and
// Syriac. Each appends to a string the caller owns; the callers check the ranges.
#include "util/ZQFormatNumberInternal.h"

namespace ZQCommonNS::util {

namespace {

inline void appendUnits(UnicodeString& out, const char16_t* s) { out.append(s, -1); }

// Collects units locally and appends them to the string in few steps: appending unit by unit
// costs more than the numeral itself.
class UnitSink {
 public:
  explicit UnitSink(UnicodeString& out) : m_out(out) {}
  ~UnitSink() { flush(); }
  UnitSink& operator<<(char16_t c) {
    if (m_len == kSize) flush();
    m_buf[m_len++] = c;
    return *this;
  }
  void flush() {
    m_out.append(m_buf, m_len);
    m_len = 0;
  }

 private:
  static constexpr int32_t kSize = 64;
  UnicodeString& m_out;
  char16_t m_buf[kSize];
  int32_t m_len = 0;
};

}  // namespace

void appendRoman(UnicodeString& out, long long n, const char16_t* letters, int count,
                 char16_t singleFirst) {
  if (n <= 0) return;
  // The rest at the start of each place and the place's digit, all by constant divisors.
  const unsigned long long v = static_cast<unsigned long long>(n);
  const unsigned long long rests[5] = {v, v % 10000, v % 1000, v % 100, v % 10};
  const unsigned long long digits[5] = {v / 10000, v % 10000 / 1000, v % 1000 / 100, v % 100 / 10,
                                        v % 10};
  UnitSink sink(out);
  unsigned long long carried = 0;  // thousands of places without a letter of their own
  for (int i = 0; i < 5 && (rests[i] > 0 || carried > 0); ++i) {
    if (singleFirst != 0 && carried == 0 && rests[i] < 13) {
      sink << static_cast<char16_t>(singleFirst + rests[i] - 1);
      return;
    }
    const int one = 8 - 2 * i;
    // A place without its own letter leaves its value to the place below (M repeats).
    if (one >= count) {
      carried = carried * 10 + digits[i] * 10;
      continue;
    }
    unsigned long long d = digits[i] + carried;
    carried = 0;
    if (d == 0) continue;
    const bool hasFive = one + 1 < count;
    const bool hasTen = one + 2 < count;
    if (hasFive && d == 4) {
      sink << letters[one] << letters[one + 1];
    } else if (hasTen && d == 9) {
      sink << letters[one] << letters[one + 2];
    } else {
      if (hasFive && d >= 5) {
        sink << letters[one + 1];
        d -= 5;
      }
      for (; d > 0; --d) sink << letters[one];
    }
  }
}

void appendHebrew(UnicodeString& out, long long n, int level) {
  if (n <= 0) {
    appendUnits(out, u"\u05D0\u05E4\u05E1");  // zero
    return;
  }
  if (n % 1000000 == 2000) {
    if (n >= 1000000) {
      appendHebrew(out, n / 1000000, 2);
      out.append(u' ');
    }
    appendUnits(out, u"\u05D0\u05DC\u05E4\u05D9\u05D9\u05DD");  // two thousand
    return;
  }
  int k = 0;
  long long t = n;
  while (t % 1000 == 0) {
    t /= 1000;
    ++k;
  }
  if (t >= 1000) {
    appendHebrew(out, t / 1000, level + 1 + k);
    out.append(u' ');
  }
  bool thousandDone = false;
  if (k > 0) {
    k += level;
    if (t % 1000 == 1) {
      appendUnits(out, u"\u05D0\u05DC\u05E3");  // thousand
      --k;
      thousandDone = true;
    }
  }
  const int r = static_cast<int>(t % 1000);
  if (!thousandDone && r != 0) {
    static constexpr const char16_t* kHundreds[] = {u"",
                                                    u"\u05E7",
                                                    u"\u05E8",
                                                    u"\u05E9",
                                                    u"\u05EA",
                                                    u"\u05EA\u05E7",
                                                    u"\u05EA\u05E8",
                                                    u"\u05EA\u05E9",
                                                    u"\u05EA\u05EA",
                                                    u"\u05EA\u05EA\u05E7"};
    static constexpr char16_t kTens[] = {0x05D9, 0x05DB, 0x05DC, 0x05DE, 0x05E0,
                                         0x05E1, 0x05E2, 0x05E4, 0x05E6};
    appendUnits(out, kHundreds[r / 100]);
    const int v = r % 100;
    if (v == 15 || v == 16) {
      // Written as nine and six or seven: the plain forms spell a name of God.
      out.append(char16_t{0x05D8}).append(static_cast<char16_t>(v == 15 ? 0x05D5 : 0x05D6));
    } else {
      if (v / 10 != 0) out.append(kTens[v / 10 - 1]);
      if (v % 10 != 0) out.append(static_cast<char16_t>(0x05D0 + v % 10 - 1));
    }
  }
  for (int i = 0; i < k; ++i) appendUnits(out, u" \u05D0\u05DC\u05E4\u05D9");  // " thousands"
  if (k > 0) out.append(char16_t{0x05DD});
}

namespace {

void appendArmenianPart(UnitSink& out, int v, bool upper, bool high) {
  const char16_t base = upper ? 0x0531 : 0x0561;
  // Starts of the nine letters of thousands, hundreds, tens and units.
  const char16_t starts[4] = {static_cast<char16_t>(base + 27), static_cast<char16_t>(base + 18),
                              static_cast<char16_t>(base + 9), base};
  const int digits[4] = {v / 1000 % 10, v / 100 % 10, v / 10 % 10, v % 10};
  for (int i = 0; i < 4; ++i) {
    if (digits[i] == 0) continue;
    const char16_t letter = static_cast<char16_t>(starts[i] + digits[i] - 1);
    if (!high && (letter == 0x0552 || letter == 0x0582))
      out << static_cast<char16_t>(upper ? 0x0548 : 0x0578);
    out << letter;
    if (high) out << char16_t{0x0302};
  }
}

}  // namespace

void appendArmenian(UnicodeString& out, long long n, bool upper) {
  UnitSink sink(out);
  if (n >= 10000) appendArmenianPart(sink, static_cast<int>(n / 10000 % 10000), upper, true);
  appendArmenianPart(sink, static_cast<int>(n % 10000), upper, false);
}

void appendGeorgian(UnicodeString& out, long long n) {
  static constexpr char16_t kTables[4][9] = {
      {0x10E9, 0x10EA, 0x10EB, 0x10EC, 0x10ED, 0x10EE, 0x10F4, 0x10EF, 0x10F0},   // thousands
      {0x10E0, 0x10E1, 0x10E2, 0x10F3, 0x10E4, 0x10E5, 0x10E6, 0x10E7, 0x10E8},   // hundreds
      {0x10D8, 0x10D9, 0x10DA, 0x10DB, 0x10DC, 0x10F2, 0x10DD, 0x10DE, 0x10DF},   // tens
      {0x10D0, 0x10D1, 0x10D2, 0x10D3, 0x10D4, 0x10D5, 0x10D6, 0x10F1, 0x10D7}};  // ones
  long long v = n % 100000;
  if (v < 0) v = -v;
  // Ten thousands have a letter for 1 only.
  if (v / 10000 == 1) out.append(char16_t{0x10F5});
  const int digits[4] = {static_cast<int>(v / 1000 % 10), static_cast<int>(v / 100 % 10),
                         static_cast<int>(v / 10 % 10), static_cast<int>(v % 10)};
  for (int i = 0; i < 4; ++i)
    if (digits[i] != 0) out.append(kTables[i][digits[i] - 1]);
}

void appendTamil(UnicodeString& out, long long n) {
  auto digit = [](long long d) { return static_cast<char16_t>(0x0BE7 + d - 1); };
  const long long thousands = n / 1000 % 10, hundreds = n / 100 % 10, tens = n / 10 % 10,
                  ones = n % 10;
  if (thousands != 0) out.append(digit(thousands)).append(char16_t{0x0BF2});
  if (hundreds != 0) out.append(digit(hundreds));
  if (n >= 100) out.append(char16_t{0x0BF1});
  if (tens != 0) out.append(digit(tens));
  if (n >= 10) out.append(char16_t{0x0BF0});
  if (ones != 0) out.append(digit(ones));
}

namespace {

void appendSyriacPart(UnitSink& out, int v, char16_t mark) {
  static constexpr const char16_t* kHundreds[] = {
      u"\u0729",       u"\u072A",       u"\u072B",
      u"\u072C",       u"\u072C\u0729", u"\u072C\u072A",
      u"\u072C\u072B", u"\u072C\u072C", u"\u072C\u072C\u0729"};
  static constexpr char16_t kTens[] = {0x071D, 0x071F, 0x0720, 0x0721, 0x0722,
                                       0x0723, 0x0726, 0x0727, 0x0728};
  static constexpr char16_t kOnes[] = {0x0710, 0x0712, 0x0713, 0x0715, 0x0717,
                                       0x0718, 0x0719, 0x071A, 0x071B};
  auto put = [&](char16_t letter) {
    out << letter;
    if (mark != 0) out << mark;
  };
  if (v / 100 % 10 != 0)
    for (const char16_t* p = kHundreds[v / 100 % 10 - 1]; *p; ++p) put(*p);
  if (v / 10 % 10 != 0) put(kTens[v / 10 % 10 - 1]);
  if (v % 10 != 0) put(kOnes[v % 10 - 1]);
}

}  // namespace

void appendSyriac(UnicodeString& out, long long n) {
  UnitSink sink(out);
  appendSyriacPart(sink, static_cast<int>(n / 10000000 % 1000), 0x032D);
  appendSyriacPart(sink, static_cast<int>(n % 10000000 / 10000), 0x0331);
  appendSyriacPart(sink, static_cast<int>(n % 10000 / 1000), 0x0301);
  appendSyriacPart(sink, static_cast<int>(n % 1000), 0);
}

}  // namespace ZQCommonNS::util
