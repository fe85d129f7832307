// Decoding a byte stream to UTF-16 through an ICU converter.
#pragma once

#include <cstddef>
#include <istream>
#include <streambuf>

#include "common/ZQExport.h"

struct UConverter;

namespace ZQCommonNS {

/// Stream buffer that decodes its source with an ICU converter. Its bytes are the UTF-16
/// code units of the text, in the machine's byte order, not characters of the source.
class ZQCOMMON_API ZQICUIStreamBuf : public std::streambuf {
 public:
  /// Bytes kept in front of each refill for put-back.
  static constexpr size_t PUTBACK_SIZE = 8;
  /// Source bytes read at a time.
  static constexpr size_t INPUT_SIZE = 4096;
  /// Bytes of UTF-16 the output area holds.
  static constexpr size_t OUTPUT_SIZE = 8192;

  /// Decodes `source` (not owned) from the charset `charset`, an ICU converter name. A null
  /// or empty name, or one ICU doesn't know, leaves the converter closed.
  ZQICUIStreamBuf(std::istream* source, const char* charset);
  ~ZQICUIStreamBuf() override;
  ZQICUIStreamBuf(const ZQICUIStreamBuf&) = delete;
  ZQICUIStreamBuf& operator=(const ZQICUIStreamBuf&) = delete;

  /// The converter is open: it opened and the source hasn't ended yet.
  bool is_open() const { return m_converter != nullptr; }

 protected:
  int_type underflow() override;

 private:
  void closeConverter();
  size_t convert(bool flush);

  std::istream* m_source;
  UConverter* m_converter = nullptr;
  char* m_input = nullptr;  // INPUT_SIZE bytes
  size_t m_inputPos = 0;    // source bytes in m_input not yet taken by the converter
  size_t m_inputEnd = 0;
  char* m_buffer = nullptr;  // PUTBACK_SIZE + OUTPUT_SIZE bytes
};

/// Input stream whose bytes are the UTF-16 code units of a decoded source.
class ZQCOMMON_API ZQICUIStream : public std::istream {
 public:
  /// Decodes `source` (not owned) from `charset`.
  ZQICUIStream(std::istream* source, const char* charset);
  ~ZQICUIStream() override;
  ZQICUIStream(const ZQICUIStream&) = delete;
  ZQICUIStream& operator=(const ZQICUIStream&) = delete;

  /// The converter opened (and the source hasn't been read to its end).
  bool is_open() const { return m_buf.is_open(); }

 private:
  ZQICUIStreamBuf m_buf;
};

}  // namespace ZQCommonNS
