// Ethiopic numerals and the kansuji conversion, shared by the counter styles and by the
// number formatting so that both write the same numerals.
#include "util/ZQCounterStyleInternal.h"

namespace ZQCommonNS::util {

namespace {

constexpr UChar32 kEthiopicTen = 0x137B;     // hundred
constexpr UChar32 kEthiopicMyriad = 0x137C;  // ten thousand
constexpr UChar32 kEthiopicOnes = 0x1369;    // one; ..0x1371 nine
constexpr UChar32 kEthiopicTens = 0x1372;    // ten; ..0x137A ninety

// Table indexes.
constexpr int kDigit0 = 1;
constexpr int kTen = 11;
constexpr int kHundred = 12;
constexpr int kThousand = 13;
constexpr int kMyriad = 14;  // 10^4; kMyriad + g - 1 is 10^(4g), up to g = 12
constexpr int kPowerCount = 12;
constexpr int kHighestPower = 25;
constexpr int kPoint = 26;
constexpr int kComma = 27;

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

void appendDigit(UnicodeString& out, char16_t c, const KansujiTable& table) {
  out.append(table[kDigit0 + (c - u'0')]);
}

// Digit by digit.
void convertSimple(const UnicodeString& text, int start, int end, const KansujiTable& table,
                   UnicodeString& out) {
  for (int i = start; i < end; ++i) appendDigit(out, text[i], table);
}

// Digits with the power symbol after each group of four, counted from the right. The span may
// hold non-digits (the text path); they are not counted. Once a power symbol is written and no
// digit but 0 is left, the rest of the span is dropped: 10000 reads one, ten thousand.
void convertGrouping(const UnicodeString& text, int start, int end, const KansujiTable& table,
                     UnicodeString& out) {
  int remaining = 0;
  int lastNonZero = -1;
  for (int i = start; i < end; ++i) {
    if (isDigit(text[i])) {
      ++remaining;
      if (text[i] != u'0') lastNonZero = i;
    }
  }
  for (int i = start; i < end; ++i) {
    const char16_t c = text[i];
    if (!isDigit(c)) {
      if (c == u',')
        out.append(table[kComma]);
      else if (c == u'.')
        out.append(table[kPoint]);
      else
        out.append(static_cast<UChar32>(c + 0xFEE0));
      continue;
    }
    appendDigit(out, c, table);
    --remaining;
    if (remaining > 0 && remaining % 4 == 0) {
      const int group = remaining / 4;
      if (group <= kPowerCount) {
        out.append(table[kMyriad + group - 1]);
        if (lastNonZero <= i) return;
      }
    }
  }
}

// The spoken form: thousand, hundred and ten within each group of four, and every group but the
// lowest followed by its power symbol, even a group of zeros (100000000 gives one, hundred
// million, ten thousand).
void convertReadable(const UnicodeString& text, int start, int end, const KansujiTable& table,
                     UnicodeString& out) {
  while (start < end && text[start] == u'0') ++start;
  if (start == end) {
    out.append(table[kDigit0]);
    return;
  }
  // Beyond the highest power the leading digits are its multiplier, written digit by digit.
  constexpr int kGroupedDigits = 4 * (kPowerCount + 1);
  if (end - start > kGroupedDigits) {
    const int lead = end - start - 4 * kPowerCount;
    convertSimple(text, start, start + lead, table, out);
    out.append(table[kHighestPower]);
    start += lead;
  }
  const int length = end - start;
  int group = (length - 1) / 4;
  int pos = start - (4 - (length - group * 4));  // may stand before the run: missing digits
  for (; group >= 0; --group, pos += 4) {
    for (int place = 0; place < 4; ++place) {
      const int at = pos + place;
      const int d = at >= start ? text[at] - u'0' : 0;
      if (d == 0) continue;
      if (place < 3) {
        if (d != 1) out.append(table[kDigit0 + d]);
        out.append(table[place == 0 ? kThousand : place == 1 ? kHundred : kTen]);
      } else {
        out.append(table[kDigit0 + d]);
      }
    }
    if (group > 0) out.append(table[kMyriad + group - 1]);
  }
}

}  // namespace

UnicodeString formatEthiopic(long long n) {
  UnicodeString result;
  if (n <= 0) return result;
  int pairs[10];
  int count = 0;
  for (unsigned long long rest = static_cast<unsigned long long>(n); rest > 0; rest /= 100)
    pairs[count++] = static_cast<int>(rest % 100);
  for (int i = 0; i < count; ++i) {
    const int v = pairs[i];
    const bool even = i % 2 == 0;
    UnicodeString group;
    if (v == 1 && even && i > 0 && i == count - 1) {
      group.append(kEthiopicMyriad);
    } else {
      // A lone 1 before the hundred mark is not written: 100 is the mark alone.
      if (v > 1 || (v == 1 && even)) {
        if (v / 10 != 0) group.append(static_cast<UChar32>(kEthiopicTens + v / 10 - 1));
        if (v % 10 != 0) group.append(static_cast<UChar32>(kEthiopicOnes + v % 10 - 1));
      }
      if (i > 0) {
        if (even)
          group.append(kEthiopicMyriad);
        else if (v != 0)
          group.append(kEthiopicTen);
      }
    }
    result.insert(0, group);
  }
  return result;
}

const KansujiTable& defaultKansujiTable() {
  static constexpr KansujiTable table = {0,
                                         // digits 0-9
                                         0x3007, 0x4E00, 0x4E8C, 0x4E09, 0x56DB, 0x4E94, 0x516D,
                                         0x4E03, 0x516B, 0x4E5D,
                                         // ten, hundred, thousand
                                         0x5341, 0x767E, 0x5343,
                                         // 10^4, 10^8 ... 10^48
                                         0x4E07, 0x5104, 0x5146, 0x4EAC, 0x5793, 0x25771, 0x7A63,
                                         0x6E9D, 0x6F97, 0x6B63, 0x8F09, 0x6975,
                                         // decimal point, thousands comma
                                         0x30FB, 0x3001};
  return table;
}

// Which characters a run covers. In Simple and Readable mode a run is a maximal run of ASCII
// digits. In Grouping mode the counted span starts at an ASCII digit and takes in the printable
// ASCII (U+0021..U+007E) after it, up to and including the last digit before the first
// character outside that range (or the end): so "1,234.5" and "03-1234" are one span each, and
// "1, 2" or "12." are not ("12." ends at "2", the "." is copied). Only the digits of a span are
// counted into the groups of four, from its right end; the non-digits inside it are written with
// the comma and point symbols, or full-width.
UnicodeString convertKansujiText(const UnicodeString& text, KansujiMode mode,
                                 const KansujiTable& table) {
  UnicodeString out;
  const int length = text.length();
  int i = 0;
  while (i < length) {
    if (!isDigit(text[i])) {
      out.append(text[i]);
      ++i;
      continue;
    }
    int end = i;
    if (mode == KansujiMode::Grouping) {
      for (int j = i; j < length && text[j] >= 0x21 && text[j] <= 0x7E; ++j)
        if (isDigit(text[j])) end = j + 1;
    } else {
      while (end < length && isDigit(text[end])) ++end;
    }
    switch (mode) {
      case KansujiMode::Simple:
        convertSimple(text, i, end, table, out);
        break;
      case KansujiMode::Grouping:
        convertGrouping(text, i, end, table, out);
        break;
      case KansujiMode::Readable:
        convertReadable(text, i, end, table, out);
        break;
    }
    i = end;
  }
  return out;
}

}  // namespace ZQCommonNS::util
