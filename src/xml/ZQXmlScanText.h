// Small character helpers shared by the parser's reading routines.
#pragma once

#include <unicode/unistr.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <streambuf>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

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
    bits[static_cast<unsigned char>('\t')] |= BYTE_TEXT | BYTE_SPACE;
    bits[static_cast<unsigned char>('\n')] |= BYTE_TEXT | BYTE_SPACE;
    bits[static_cast<unsigned char>(' ')] |= BYTE_SPACE;
  }
};
inline constexpr ByteClassTable kByteClasses;

/// Length of the run at the start of [p, end) whose bytes all have `cls`.
inline size_t byteRun(const unsigned char* p, const unsigned char* end, uint8_t cls) {
  const unsigned char* q = p;
  while (q < end && (kByteClasses.bits[*q] & cls)) ++q;
  return static_cast<size_t>(q - p);
}

#ifdef __SSE2__
/// Bytes from space to tilde, 0xFF in each such lane: signed compares, so bytes from 0x80
/// up are negative and fail.
inline __m128i printableAscii(__m128i v) {
  return _mm_and_si128(_mm_cmpgt_epi8(v, _mm_set1_epi8(0x1F)),
                       _mm_cmplt_epi8(v, _mm_set1_epi8(0x7F)));
}
#endif

/// Length of the run of BYTE_LITERAL bytes at the start of [p, end), sixteen at a time.
inline size_t literalRun(const unsigned char* p, const unsigned char* end) {
  const unsigned char* q = p;
#ifdef __SSE2__
  const __m128i lt = _mm_set1_epi8('<');
  const __m128i amp = _mm_set1_epi8('&');
  const __m128i quote = _mm_set1_epi8('"');
  const __m128i apostrophe = _mm_set1_epi8('\'');
  while (end - q >= 16) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(q));
    __m128i printable = printableAscii(v);
    __m128i stop =
        _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi8(v, lt), _mm_cmpeq_epi8(v, amp)),
                     _mm_or_si128(_mm_cmpeq_epi8(v, quote), _mm_cmpeq_epi8(v, apostrophe)));
    unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(_mm_andnot_si128(stop, printable)));
    if (mask != 0xFFFF) return static_cast<size_t>(q - p) + __builtin_ctz(~mask);
    q += 16;
  }
#endif
  while (q < end && (kByteClasses.bits[*q] & BYTE_LITERAL)) ++q;
  return static_cast<size_t>(q - p);
}

/// Number of bits set in each byte value. __builtin_popcount, without the POPCNT instruction
/// that the baseline processor lacks, is a library call.
struct BitCountTable {
  uint8_t counts[256] = {};
  constexpr BitCountTable() {
    for (int b = 1; b < 256; ++b) counts[b] = static_cast<uint8_t>((b & 1) + counts[b >> 1]);
  }
};
inline constexpr BitCountTable kBitCounts;

inline unsigned bitCount16(unsigned mask) {
  return kBitCounts.counts[mask & 0xFF] + kBitCounts.counts[(mask >> 8) & 0xFF];
}

/// Number of line feeds in [p, end).
inline size_t countLineFeeds(const unsigned char* p, const unsigned char* end) {
  size_t n = 0;
#ifdef __SSE2__
  const __m128i lf = _mm_set1_epi8('\n');
  for (; end - p >= 16; p += 16) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p));
    n += bitCount16(static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi8(v, lf))));
  }
#endif
  for (; p < end; ++p) n += *p == '\n';
  return n;
}

/// The line feeds of a run: how many, and where the last one is (null when there is none).
struct RunLines {
  size_t count = 0;
  const unsigned char* last = nullptr;
};

#if defined(__x86_64__) && defined(__GNUC__)
/// Whether appendTextRun takes wideTextBlocks: set when the processor has AVX2. Exported for
/// the tests, which turn it off to reach the baseline loop.
ZQCOMMON_API extern bool wideTextOn;
/// The inner loop of appendTextRun with AVX2, thirty-two bytes at a time: widens whole blocks
/// of [p, p + count) into `out`, notes their line feeds, and returns how many bytes belong to
/// the run; `stopped` is set when a byte out of the run ended it. Only when the processor has
/// AVX2.
ZQCOMMON_API size_t wideTextBlocks(const unsigned char* p, size_t count, char16_t* out,
                                   RunLines& lines, bool& stopped);
#endif

/// Appends the run of BYTE_TEXT bytes at the start of [p, end) to `target`, widened straight
/// into its buffer, and notes the run's line feeds: one pass over the bytes, sixteen at a
/// time. Returns the run's length.
inline size_t appendTextRun(UnicodeString& target, const unsigned char* p, const unsigned char* end,
                            RunLines& lines) {
  // The buffer is taken a block at a time, so that a short run does not reserve room for
  // the whole rest of the input.
  constexpr size_t kBlock = 2048;
  const unsigned char* const start = p;
  while (p < end) {
    const size_t chunk = std::min(static_cast<size_t>(end - p), kBlock);
    const int32_t length = target.length();
    if (length > 0x3FFFFFFF - static_cast<int32_t>(kBlock)) break;  // left to readChar
    const int32_t needed = length + static_cast<int32_t>(chunk);
    int32_t capacity = needed;
    if (needed > target.getCapacity()) capacity = needed + needed / 2 + 32;
    // Kept contents: a buffer that must grow or is shared is copied with them.
    char16_t* out = target.getBuffer(capacity);
    if (!out) break;
    out += length;
    size_t i = 0;
    bool stopped = false;
#if defined(__x86_64__) && defined(__GNUC__)
    if (wideTextOn) i = wideTextBlocks(p, chunk, out, lines, stopped);
#endif
#ifdef __SSE2__
    const __m128i zero = _mm_setzero_si128();
    const __m128i lt = _mm_set1_epi8('<');
    const __m128i amp = _mm_set1_epi8('&');
    const __m128i bracket = _mm_set1_epi8(']');
    const __m128i tab = _mm_set1_epi8('\t');
    const __m128i lf = _mm_set1_epi8('\n');
    for (; !stopped && i + 16 <= chunk; i += 16) {
      const __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(p + i));
      const __m128i printable = printableAscii(v);
      const __m128i markup = _mm_or_si128(
          _mm_or_si128(_mm_cmpeq_epi8(v, lt), _mm_cmpeq_epi8(v, amp)), _mm_cmpeq_epi8(v, bracket));
      const __m128i feeds = _mm_cmpeq_epi8(v, lf);
      const __m128i good = _mm_or_si128(_mm_andnot_si128(markup, printable),
                                        _mm_or_si128(_mm_cmpeq_epi8(v, tab), feeds));
      // Stored whole: bytes past the run's end land in room the buffer has, and the length
      // set below leaves them out.
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_unpacklo_epi8(v, zero));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i + 8), _mm_unpackhi_epi8(v, zero));
      const unsigned mask = static_cast<unsigned>(_mm_movemask_epi8(good));
      unsigned feedMask = static_cast<unsigned>(_mm_movemask_epi8(feeds));
      unsigned taken = 16;
      if (mask != 0xFFFF) {
        taken = static_cast<unsigned>(__builtin_ctz(~mask));
        feedMask &= (1u << taken) - 1;
        stopped = true;
      }
      if (feedMask) {
        lines.count += bitCount16(feedMask);
        lines.last = p + i + (31 - __builtin_clz(feedMask));
      }
      if (stopped) {
        i += taken;
        break;
      }
    }
#endif
    if (!stopped) {
      for (; i < chunk; ++i) {
        const unsigned char c = p[i];
        if (!(kByteClasses.bits[c] & BYTE_TEXT)) {
          stopped = true;
          break;
        }
        out[i] = c;
        if (c == '\n') {
          ++lines.count;
          lines.last = p + i;
        }
      }
    }
    target.releaseBuffer(length + static_cast<int32_t>(i));
    p += i;
    if (stopped) break;
  }
  return static_cast<size_t>(p - start);
}

/// Widens ASCII bytes to UTF-16.
inline void widenBytes(char16_t* out, const unsigned char* bytes, size_t count) {
  size_t i = 0;
#ifdef __SSE2__
  const __m128i zero = _mm_setzero_si128();
  for (; i + 16 <= count; i += 16) {
    __m128i v = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes + i));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), _mm_unpacklo_epi8(v, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i + 8), _mm_unpackhi_epi8(v, zero));
  }
#endif
  for (; i < count; ++i) out[i] = bytes[i];
}

/// Appends ASCII bytes to a string, widened straight into its buffer, which grows by half
/// again when it must.
inline void appendBytes(UnicodeString& target, const unsigned char* bytes, size_t count) {
  if (count == 0) return;
  const int32_t length = target.length();
  if (count >= static_cast<size_t>(0x3FFFFFFF - length)) {
    for (size_t i = 0; i < count; ++i) target.append(static_cast<char16_t>(bytes[i]));
    return;
  }
  const int32_t needed = length + static_cast<int32_t>(count);
  int32_t capacity = needed;
  if (needed > target.getCapacity()) capacity = needed + needed / 2 + 32;
  // Kept contents: a buffer that must grow or is shared is copied with them.
  char16_t* out = target.getBuffer(capacity);
  if (!out) {
    for (size_t i = 0; i < count; ++i) target.append(static_cast<char16_t>(bytes[i]));
    return;
  }
  widenBytes(out + length, bytes, count);
  target.releaseBuffer(needed);
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
  widenBytes(out, bytes, count);
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
  countBulk(bytes, count);
  bumpBulk(count);
}

inline void ZQXmlParserImpl::bumpBulk(size_t count) {
  std::streambuf* buf = m_stream->rdbuf();
  // gbump takes an int: a run longer than that goes in steps.
  while (count > 0) {
    int step = count > 0x40000000 ? 0x40000000 : static_cast<int>(count);
    xmlscan::StreamBufAccess::bump(buf, step);
    count -= static_cast<size_t>(step);
  }
}

inline void ZQXmlParserImpl::countBulk(const unsigned char* bytes, size_t count) {
  // Bulk bytes are ASCII other than CR: only the line feed moves the line.
  xmlscan::RunLines lines;
  if (count <= 16) {
    // Short runs (names, values, a separator) are looked at in place.
    for (size_t i = count; i-- > 0;) {
      if (bytes[i] == '\n') {
        lines.last = bytes + i;
        break;
      }
    }
  } else {
    lines.last = static_cast<const unsigned char*>(memrchr(bytes, '\n', count));
  }
  if (lines.last) lines.count = xmlscan::countLineFeeds(bytes, lines.last + 1);
  positionAfter(bytes, count, lines);
}

inline void ZQXmlParserImpl::positionAfter(const unsigned char* bytes, size_t count,
                                           const xmlscan::RunLines& lines) {
  if (!lines.last) {
    m_columnNumber += static_cast<int>(count);
  } else {
    m_lineNumber += static_cast<int>(lines.count);
    m_columnNumber = static_cast<int>(bytes + count - (lines.last + 1));
  }
}

}  // namespace ZQCommonNS
