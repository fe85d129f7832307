// Number parsing and printing that does not depend on the locale.
#include <charconv>
#include <climits>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>

#include "common/ZQLock.h"
#include "common/ZQUtil.h"
#include "core/platform/ZQPlatformLocale.h"

namespace ZQCommonNS {

namespace {

// The numbers' own white space (no form feed).
inline bool isNumberSpace(char16_t c) { return c == 0x09 || c == 0x0A || c == 0x0D || c == 0x20; }

inline bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

inline bool isHexDigit(char16_t c) {
  return isDigit(c) || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

// Longest text of a number that is kept for conversion.
constexpr int kMaxNumberChars = 98;

UnicodeString fromAscii(const char* s, size_t n) {
  UnicodeString out;
  char16_t* buf = out.getBuffer(static_cast<int32_t>(n));
  for (size_t i = 0; i < n; ++i) buf[i] = static_cast<unsigned char>(s[i]);
  out.releaseBuffer(static_cast<int32_t>(n));
  return out;
}

UnicodeString hexText(unsigned long long v, int width) {
  char digits[32];
  auto r = std::to_chars(digits, digits + sizeof digits, v, 16);
  size_t n = static_cast<size_t>(r.ptr - digits);
  int pad = width > static_cast<int>(n) ? width - static_cast<int>(n) : 0;
  UnicodeString out;
  char16_t* buf = out.getBuffer(pad + static_cast<int32_t>(n));
  if (!buf) return out;  // a width beyond memory
  for (int i = 0; i < pad; ++i) buf[i] = u'0';
  for (size_t i = 0; i < n; ++i) {
    char c = digits[i];
    buf[pad + i] = static_cast<char16_t>(c >= 'a' ? c - 'a' + 'A' : c);
  }
  out.releaseBuffer(pad + static_cast<int32_t>(n));
  return out;
}

ZQLock& localeLock() {
  static ZQLock lock;
  return lock;
}

}  // namespace

double ZQUtil::parseNumber(const char16_t* p, const char16_t** end, bool* hasPoint) {
  if (end) *end = p;
  if (hasPoint) *hasPoint = false;
  if (!p) return 0.0;

  const char16_t* q = p;
  while (isNumberSpace(*q)) ++q;

  char buf[kMaxNumberChars + 1];
  int n = 0;
  bool tooLong = false;
  // The sign is one of the kept characters, whichever it is.
  if (*q == u'+' || *q == u'-') buf[n++] = static_cast<char>(*q++);
  int digits = 0;
  while (isDigit(*q)) {
    if (n < kMaxNumberChars) buf[n++] = static_cast<char>(*q);
    ++q;
    ++digits;
  }
  // An integer part that fills the whole buffer is no number the library uses.
  if (n >= kMaxNumberChars) tooLong = true;
  bool point = false;
  if (*q == u'.') {
    const char16_t* afterPoint = q + 1;
    if (digits > 0 || isDigit(*afterPoint)) {
      point = true;
      q = afterPoint;
      if (n < kMaxNumberChars) buf[n++] = '.';
      while (isDigit(*q)) {
        if (n < kMaxNumberChars) buf[n++] = static_cast<char>(*q);  // further digits are dropped
        ++q;
        ++digits;
      }
    }
  }
  if (digits == 0) return 0.0;

  if (end) *end = q;
  if (hasPoint) *hasPoint = point;
  if (tooLong) return 0.0;

  // No exponent and at most 98 characters: always within the range of a double.
  // from_chars reads no '+', which changes nothing for the value.
  const char* first = buf[0] == '+' ? buf + 1 : buf;
  double value = 0.0;
  if (std::from_chars(first, buf + n, value).ec != std::errc()) value = 0.0;
  return value;
}

int ZQUtil::parseDigits(const char16_t* p, const char16_t** end) {
  if (end) *end = p;
  if (!p) return 0;
  long long value = 0;
  bool overflow = false;
  const char16_t* q = p;
  while (isDigit(*q)) {
    if (!overflow) {
      value = value * 10 + (*q - u'0');
      if (value > INT_MAX) overflow = true;
    }
    ++q;
  }
  if (end) *end = q;
  return overflow ? 0 : static_cast<int>(value);
}

int ZQUtil::parseDigits(const UnicodeString& text, int start, int count) {
  const int32_t len = text.length();
  if (start < 0) start = 0;
  if (start >= len) return 0;
  int32_t stop = (count < 0 || count > len - start) ? len : start + count;
  long long value = 0;
  for (int32_t i = start; i < stop; ++i) {
    char16_t c = text.charAt(i);
    if (!isDigit(c)) break;
    value = value * 10 + (c - u'0');
    if (value > INT_MAX) return 0;
  }
  return static_cast<int>(value);
}

unsigned ZQUtil::parseHexNum(const char16_t* p, const char16_t** end, int maxDigits) {
  if (end) *end = p;
  if (!p) return 0;
  const char16_t* q = p;
  while (isNumberSpace(*q)) ++q;
  char buf[kMaxNumberChars + 1];
  int n = 0;
  int count = 0;
  while (isHexDigit(*q) && (maxDigits < 0 || count < maxDigits)) {
    if (n < kMaxNumberChars) buf[n++] = static_cast<char>(*q);
    ++q;
    ++count;
  }
  if (n == 0) return 0;
  buf[n] = 0;
  if (end) *end = q;
  // strtoul saturates at the largest value of its type; so does this result, whose type is
  // narrower than a 64-bit unsigned long.
  const unsigned long value = std::strtoul(buf, nullptr, 16);
  return value > UINT_MAX ? UINT_MAX : static_cast<unsigned>(value);
}

UnicodeString ZQUtil::toString(int value) {
  char buf[16];
  auto r = std::to_chars(buf, buf + sizeof buf, value);
  return fromAscii(buf, static_cast<size_t>(r.ptr - buf));
}

UnicodeString ZQUtil::toString(long long value) {
  char buf[24];
  auto r = std::to_chars(buf, buf + sizeof buf, value);
  return fromAscii(buf, static_cast<size_t>(r.ptr - buf));
}

UnicodeString ZQUtil::toString(double value) {
  setLocaleC();
  char buf[64];
  int n = std::snprintf(buf, sizeof buf, "%g", value);
  if (n < 0) n = 0;
  if (n >= static_cast<int>(sizeof buf)) n = sizeof buf - 1;
  return fromAscii(buf, static_cast<size_t>(n));
}

UnicodeString ZQUtil::toHexString(int value, int width) {
  return hexText(static_cast<unsigned int>(value), width);
}

UnicodeString ZQUtil::toHexString(long long value, int width) {
  return hexText(static_cast<unsigned long long>(value), width);
}

int ZQUtil::roundToInteger(double value) {
  if (std::isnan(value)) return 0;
  double r = value + (value < 0 ? -0.5 : 0.5);
  if (r >= 2147483648.0) return INT_MAX;
  if (r <= -2147483649.0) return INT_MIN;
  return static_cast<int>(r);
}

int ZQUtil::roundToInteger(float value) {
  if (std::isnan(value)) return 0;
  float r = value + (value < 0 ? -0.5f : 0.5f);
  if (r >= 2147483648.0f) return INT_MAX;
  if (r < -2147483648.0f) return INT_MIN;
  return static_cast<int>(r);
}

double ZQUtil::getNaN() { return std::numeric_limits<double>::quiet_NaN(); }

float ZQUtil::getNaNf() { return std::numeric_limits<float>::quiet_NaN(); }

bool ZQUtil::isNaN(double value) { return std::isnan(value); }

bool ZQUtil::isNaN(float value) { return std::isnan(value); }

void ZQUtil::setLocaleC() {
  ZQMutex guard(localeLock());
  if (!platform::numericLocaleIsC()) platform::setNumericLocaleC();
}

}  // namespace ZQCommonNS
