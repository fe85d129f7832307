// The library's constant strings and the strings that keep a narrow copy of their text.
#pragma once

#include <string>

#include "common/ZQExport.h"

namespace ZQCommonNS {

/// The empty string; EMPTY_VALUE also serves as the library's null string argument.
class ZQCOMMON_API ZQEmptyString : public UnicodeString {
 public:
  ZQEmptyString() = default;
  ZQEmptyString(const ZQEmptyString&) = default;
  ZQEmptyString(ZQEmptyString&&) = default;
  ZQEmptyString& operator=(const ZQEmptyString&) = default;
  ZQEmptyString& operator=(ZQEmptyString&&) = default;

  static const ZQEmptyString EMPTY_VALUE;
  /// EMPTY_VALUE as a string reference.
  static const UnicodeString& getEmptyString();
};

/// A string in ICU's bogus state: absent where an empty string is a valid value.
class ZQCOMMON_API ZQBogusString : public UnicodeString {
 public:
  ZQBogusString() { setToBogus(); }
  ZQBogusString(const ZQBogusString&) = default;
  ZQBogusString(ZQBogusString&&) = default;
  ZQBogusString& operator=(const ZQBogusString&) = default;
  ZQBogusString& operator=(ZQBogusString&&) = default;

  static const ZQBogusString BOGUS_VALUE;
  /// BOGUS_VALUE as a string reference (the name is kept as callers know it).
  static const UnicodeString& getBugusString();
};

/// A UnicodeString with a cached 8-bit rendering in a named or the default encoding.
class ZQCOMMON_API ZQCStr : public UnicodeString {
 public:
  ZQCStr() = default;
  ZQCStr(const UnicodeString& text);
  /// Converts `text` from `encoding` (null: the default converter) and keeps the bytes as given.
  ZQCStr(const char* text, const char* encoding = nullptr);
  /// UTF-16 content with its length, as a COM string wrapper hands it over.
  ZQCStr(const char16_t* text, int length);
  ZQCStr(const ZQCStr& other);
  ZQCStr& operator=(const ZQCStr& other);
  ~ZQCStr();

  /// Narrow text in the default encoding; converts anew unless it is current and unnamed.
  const char* toNarrow();
  /// Narrow text in `encoding`; reuses the stored bytes when the text and encoding match.
  const char* toNarrow(const char* encoding);
  operator const char*() { return toNarrow(); }
  /// Bytes in the narrow text last produced (it may hold embedded NULs).
  size_t getNarrowLength() const { return m_narrow.size(); }
  /// Encoding of the narrow text last produced, or null for the default converter.
  const char* getNarrowEncoding() const { return m_encoding; }

 protected:
  const char* convert(const char* encoding);

 private:
  std::string m_narrow;
  char* m_encoding = nullptr;
  UnicodeString m_snapshot;
};

/// A ZQCStr whose narrow text is UTF-8.
class ZQCOMMON_API ZQUtfStr : public ZQCStr {
 public:
  ZQUtfStr() = default;
  ZQUtfStr(const UnicodeString& text) : ZQCStr(text) {}
  /// Takes UTF-8 bytes.
  ZQUtfStr(const char* text) : ZQCStr(text, "UTF-8") {}
  ZQUtfStr(const char16_t* text, int length) : ZQCStr(text, length) {}

  using ZQCStr::toNarrow;
  const char* toNarrow() { return ZQCStr::toNarrow("UTF-8"); }
  operator const char*() { return toNarrow(); }
};

}  // namespace ZQCommonNS
