// Helpers shared by the URI tests: string conversion, a scratch directory and access to the
// protected construction steps.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "common/ZQUri.h"

namespace uritest {

using icu::UnicodeString;
using ZQCommonNS::ZQUri;

/// The text of a string or URI as std::u16string, so failures print readably.
inline std::u16string str(const UnicodeString& s) {
  return std::u16string(s.getBuffer() ? s.getBuffer() : u"", static_cast<size_t>(s.length()));
}
inline std::u16string str(const ZQUri& u) { return str(u.toString()); }

inline UnicodeString S(const std::string& utf8) { return UnicodeString::fromUTF8(utf8); }

/// A native path in the told form, with backslashes.
inline std::string told(std::string path) {
  for (char& c : path) {
    if (c == '/') c = '\\';
  }
  return path;
}

/// The protected steps of construction, reachable for tests.
struct UriProbe : ZQUri {
  static int prepare(UnicodeString& s, URISTRTYPE type) { return prepareUriString(s, type); }
  static UnicodeString normalize(const UnicodeString& s, int kind) {
    return normalizeUriString(s, kind);
  }
  static UnicodeString resolve(const UnicodeString& base, const UnicodeString& ref, int kind) {
    return resolveUriString(base, ref, kind);
  }
};

/// A fresh directory removed with everything in it at the end of the test.
struct TempDir {
  std::string path;
  TempDir() {
    const char* root = getenv("ZQ_TEST_TMP");
    std::string base = root && *root ? root : "/tmp";
    std::filesystem::create_directories(base);
    std::string pattern = base + "/zquri-XXXXXX";
    char* made = mkdtemp(pattern.data());
    path = made ? std::string(made) : base;
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path, ec);
  }
  /// Creates an empty file (and its directories) below the directory; returns its path.
  std::string touch(const std::string& name) {
    std::string full = path + "/" + name;
    std::filesystem::create_directories(std::filesystem::path(full).parent_path());
    std::ofstream(full).put('x');
    return full;
  }
};

}  // namespace uritest
