// The library's one exception, its codes and levels, and the message formatter.
#pragma once

#include <exception>
#include <new>

#include "common/ZQExport.h"

namespace ZQCommonNS {

/// Upper six bits of a code.
typedef unsigned short ZQErrorCategory;
/// Severity from bits 0x200, 0x100 and 0x80 of a code; 0 is fatal.
typedef unsigned short ZQErrorLevel;

/// Levels that getErrorLevel gives.
enum : ZQErrorLevel {
  ZQERRLEVEL_FATAL = 0,
  ZQERRLEVEL_ERROR = 0x200,
  ZQERRLEVEL_WARNING = 0x300,
  ZQERRLEVEL_WARNING_LOW = 0x380,
};

/// Codes of the common failures.
enum ZQErrorCode : unsigned short {
  ZQERR_OUT_OF_MEMORY = 1,
  ZQERR_CPP_EXCEPTION = 2,
  ZQERR_NULL_ARGUMENT = 3,
  ZQERR_OUT_OF_RANGE = 4,
  ZQERR_WRONG_DOCUMENT = 6,
  ZQERR_NOT_ATTR = 7,
  ZQERR_ATTR_IN_USE = 8,
  ZQERR_NOT_CHILD = 9,
  ZQERR_INVALID_STATE = 11,
  ZQERR_START_DOCUMENT_ORDER = 12,
  ZQERR_ATTRIBUTE_ORDER = 13,
  ZQERR_UNEXPECTED_END_TAG = 14,
  ZQERR_END_TAG_MISMATCH = 15,
  ZQERR_UNEXPECTED_DOCDECL = 16,
  ZQERR_UNSUPPORTED_NODE_TYPE = 18,
  ZQERR_CANNOT_OPEN_FILE = 67,
  ZQERR_UNEXPECTED_EOF = 68,
  ZQERR_NO_OUTPUT_STREAM = 69,
  ZQERR_INPUT_STREAM = 70,
  ZQERR_OUTPUT_STREAM = 71,
  ZQERR_CANNOT_REMOVE_TEMP = 77,
  ZQERR_CANNOT_CREATE_TEMP = 78,
  ZQERR_CANNOT_OPEN_FILE_WARNING = 517,
  ZQERR_NOT_CATALOG = 518,
};

/// Level of a code: 0 (fatal), 512, 768 or 896.
ZQCOMMON_API ZQErrorLevel getErrorLevel(unsigned short code);

/// The exception of the library: code, message, failing function and, where known, a position.
class ZQCOMMON_API ZQError {
 public:
  ZQError();
  ZQError(unsigned short code, const UnicodeString& message, const UnicodeString& source, int line,
          int column, const UnicodeString& uri);
  /// Code 1, "SYSTEM ERROR: Out of memory."
  ZQError(const std::bad_alloc& e, const UnicodeString& source);
  /// Code 2, "SYSTEM ERROR: C++ exception: " and the exception's text.
  ZQError(const std::exception& e, const UnicodeString& source);
  ZQError(const ZQError&) = default;
  ZQError& operator=(const ZQError&) = default;
  virtual ~ZQError();

  unsigned short getErrorCode() const { return m_code; }
  void setErrorCode(unsigned short code) { m_code = code; }
  ZQErrorCategory getErrorCategory() const { return static_cast<ZQErrorCategory>(m_code & 0xFC00); }
  const UnicodeString& getRawMessage() const { return m_message; }
  void setRawMessage(const UnicodeString& message) { m_message = message; }
  const UnicodeString& getSource() const { return m_source; }
  void setSource(const UnicodeString& source) { m_source = source; }
  int getLineNumber() const { return m_line; }
  void setLineNumber(int line) { m_line = line; }
  int getColumnNumber() const { return m_column; }
  void setColumnNumber(int column) { m_column = column; }
  const UnicodeString& getUri() const { return m_uri; }
  void setUri(const UnicodeString& uri) { m_uri = uri; }

  /// The raw message, and on a new line the position description if there is one.
  UnicodeString getMessage() const;
  /// Sets the raw message, cutting a trailing line feed and position that getMessage added.
  void setMessage(const UnicodeString& text);
  /// Appends a non-empty text, on a new line when the message is not empty.
  void appendMessage(const UnicodeString& text);
  /// "Line n, ", "Col n, " (each only when above 0), then the URI.
  UnicodeString getPositionDescription() const;
  /// Throws a copy when the code is not 0 and its level is fatal.
  void throwFatalError() const;

  /// The system's text for a platform error code, trimmed, or empty when there is none.
  /// Codes 12000..12175 with a null module are those of the HTTP client (code - 12000).
  static UnicodeString getLastErrorMessage(unsigned long code, void* module);

 private:
  unsigned short m_code;
  UnicodeString m_message;
  UnicodeString m_source;
  int m_line;
  int m_column;
  UnicodeString m_uri;
};

/// A string formatted by ICU's MessageFormat from a pattern and five arguments {0}..{4}.
class ZQCOMMON_API ZQMessage : public UnicodeString {
 public:
  ZQMessage(const UnicodeString& pattern, const UnicodeString& a0 = UnicodeString(),
            const UnicodeString& a1 = UnicodeString(), const UnicodeString& a2 = UnicodeString(),
            const UnicodeString& a3 = UnicodeString(), const UnicodeString& a4 = UnicodeString());
  ZQMessage(const char* pattern, const UnicodeString& a0 = UnicodeString(),
            const UnicodeString& a1 = UnicodeString(), const UnicodeString& a2 = UnicodeString(),
            const UnicodeString& a3 = UnicodeString(), const UnicodeString& a4 = UnicodeString());
  ZQMessage(const ZQMessage&) = default;
  ZQMessage(ZQMessage&&) = default;
  ZQMessage& operator=(const ZQMessage&) = default;
  ZQMessage& operator=(ZQMessage&&) = default;

  const UnicodeString& toString() const { return *this; }

 private:
  void format(const UnicodeString& pattern, const UnicodeString* args);
};

}  // namespace ZQCommonNS
