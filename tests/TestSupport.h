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

}  // namespace zqtest
