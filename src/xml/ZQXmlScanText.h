// Small character helpers shared by the parser's reading routines.
#pragma once

#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <streambuf>

#include "xml/ZQXmlParserImpl.h"

namespace ZQCommonNS::xmlscan {

/// Whitespace of markup: tab, line feed, carriage return and space.
inline bool isSpace(UChar32 c) { return c == 9 || c == 10 || c == 13 || c == 32; }

/// A character as a message argument; the end of input shows as nothing.
inline UnicodeString charText(UChar32 c) {
  UnicodeString text;
  if (c != ZQXmlParserImpl::END_OF_INPUT) text.append(c);
  return text;
}

/// Classes of input bytes for the bulk scans: a byte in a class is taken as it stands, any
/// other byte stops the run and goes through readChar.
enum ByteClass : uint8_t {
  BYTE_TEXT = 1,         ///< character data that needs no look: not "<", "&", "]" or CR
  BYTE_NAME = 2,         ///< an ASCII NCName character
  BYTE_SPACE = 4,        ///< tab, line feed, space (CR is folded by readChar)
  BYTE_LITERAL = 8,      ///< literal content the normalisation pass leaves alone (no quote)
  BYTE_NAME_START = 16,  ///< an ASCII NCName start character
};

struct ByteClassTable {
  uint8_t bits[256] = {};
  constexpr ByteClassTable() {
    for (int b = 0x20; b < 0x7F; ++b) {
      if (b != '<' && b != '&' && b != ']') bits[b] |= BYTE_TEXT;
      if (b != '<' && b != '&' && b != '"' && b != '\'') bits[b] |= BYTE_LITERAL;
      if ((b >= 'a' && b <= 'z') || (b >= 'A' && b <= 'Z') || (b >= '0' && b <= '9') || b == '_' ||
          b == '-' || b == '.')
        bits[b] |= BYTE_NAME;
      if ((b >= 'a' && b <= 'z') || (b >= 'A' && b <= 'Z') || b == '_') bits[b] |= BYTE_NAME_START;
    }
    bits['\t'] |= BYTE_TEXT | BYTE_SPACE;
    bits['\n'] |= BYTE_TEXT | BYTE_SPACE;
    bits[' '] |= BYTE_SPACE;
  }
};
inline constexpr ByteClassTable kByteClasses;

/// Length of the run at the start of [p, end) whose bytes all have `cls`.
inline size_t byteRun(const unsigned char* p, const unsigned char* end, uint8_t cls) {
  const unsigned char* q = p;
  while (q < end && (kByteClasses.bits[*q] & cls)) ++q;
  return static_cast<size_t>(q - p);
}

/// Appends ASCII bytes to a string, widened in chunks.
inline void appendBytes(UnicodeString& target, const unsigned char* bytes, size_t count) {
  char16_t chunk[512];
  while (count > 0) {
    size_t n = count < 512 ? count : 512;
    for (size_t i = 0; i < n; ++i) chunk[i] = bytes[i];
    target.append(chunk, 0, static_cast<int32_t>(n));
    bytes += n;
    count -= n;
  }
}

/// Sets a string to ASCII bytes, widened in place in its own buffer.
inline void assignBytes(UnicodeString& target, const unsigned char* bytes, size_t count) {
  char16_t* out =
      count > 0 && count < 0x40000000 ? target.getBuffer(static_cast<int32_t>(count)) : nullptr;
  if (!out) {
    target.remove();
    appendBytes(target, bytes, count);
    return;
  }
  for (size_t i = 0; i < count; ++i) out[i] = bytes[i];
  target.releaseBuffer(static_cast<int32_t>(count));
}

/// The get area of a stream buffer, which std::streambuf shows only to derived classes;
/// member pointers taken here may be applied to any stream buffer.
struct StreamBufAccess : std::streambuf {
  static char* next(std::streambuf* buf) { return (buf->*&StreamBufAccess::gptr)(); }
  static char* end(std::streambuf* buf) { return (buf->*&StreamBufAccess::egptr)(); }
  static void bump(std::streambuf* buf, int count) { (buf->*&StreamBufAccess::gbump)(count); }
};

}  // namespace ZQCommonNS::xmlscan

namespace ZQCommonNS {

inline bool ZQXmlParserImpl::bulkBytes(const unsigned char*& begin, const unsigned char*& end) {
  return m_pushedChar == END_OF_INPUT && bulkWindow(begin, end);
}

inline bool ZQXmlParserImpl::bulkWindow(const unsigned char*& begin, const unsigned char*& end) {
  if (m_pendingDecoded != END_OF_INPUT || !m_pushedText.isEmpty() || !m_stream ||
      !(m_encodingKind <= ENCODING_UTF8 || m_encodingKind >= ENCODING_ASCII) ||
      m_stream->rdstate() != std::ios::goodbit)
    return false;
  std::streambuf* buf = m_stream->rdbuf();
  begin = reinterpret_cast<const unsigned char*>(xmlscan::StreamBufAccess::next(buf));
  end = reinterpret_cast<const unsigned char*>(xmlscan::StreamBufAccess::end(buf));
  return begin < end;
}

inline void ZQXmlParserImpl::takeBulk(const unsigned char* bytes, size_t count) {
  // Bulk bytes are ASCII other than CR: only the line feed moves the line.
  const void* last = memrchr(bytes, '\n', count);
  if (!last) {
    m_columnNumber += static_cast<int>(count);
  } else {
    const unsigned char* lineEnd = static_cast<const unsigned char*>(last);
    m_lineNumber += static_cast<int>(std::count(bytes, lineEnd + 1, '\n'));
    m_columnNumber = static_cast<int>(bytes + count - (lineEnd + 1));
  }
  std::streambuf* buf = m_stream->rdbuf();
  // gbump takes an int: a run longer than that goes in steps.
  while (count > 0) {
    int step = count > 0x40000000 ? 0x40000000 : static_cast<int>(count);
    xmlscan::StreamBufAccess::bump(buf, step);
    count -= static_cast<size_t>(step);
  }
}

}  // namespace ZQCommonNS
