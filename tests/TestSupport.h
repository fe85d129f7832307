// Small helpers shared by the test files.
#pragma once

#include <unicode/unistr.h>

#include <string>

namespace zqtest {

/// UTF-8 of a string, so that failures print readably; a bogus string reads "<bogus>".
inline std::string utf8(const icu::UnicodeString& s) {
  if (s.isBogus()) return "<bogus>";
  std::string out;
  s.toUTF8String(out);
  return out;
}

/// A string of ASCII text.
inline icu::UnicodeString u(const char* s) { return icu::UnicodeString(s, -1, US_INV); }

/// UTF-8 of a string, bogus or not, as ICU writes it.
inline std::string s8(const icu::UnicodeString& s) {
  std::string out;
  return s.toUTF8String(out);
}

}  // namespace zqtest
