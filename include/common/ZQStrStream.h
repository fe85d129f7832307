// An input stream over a block of memory.
#pragma once

#include <cstddef>
#include <istream>
#include <streambuf>

#include "common/ZQExport.h"

namespace ZQCommonNS {

/// Input stream that reads a memory block, in place or from a private copy.
class ZQCOMMON_API ZQStrStream : public std::istream {
 public:
  /// Stream buffer whose get area covers all the data at once; it can't seek.
  class ZQCOMMON_API StrStreamBuf : public std::streambuf {
   public:
    /// Reads `size` bytes at `data`, or a private copy of them with `copy`.
    StrStreamBuf(const char* data, size_t size, bool copy);
    ~StrStreamBuf() override;
    StrStreamBuf(const StrStreamBuf&) = delete;
    StrStreamBuf& operator=(const StrStreamBuf&) = delete;

    /// Moves the read position back to the first byte.
    void rewind() { setg(eback(), eback(), egptr()); }

   private:
    char* m_copy = nullptr;
  };

  /// Reads `size` bytes at `data`; with `copy` a private copy, otherwise the memory must
  /// outlive the stream.
  ZQStrStream(const char* data, size_t size, bool copy);
  /// Reads the UTF-16 code units of `text` as bytes, in the machine's order, in place: the
  /// string must outlive the stream and stay unchanged.
  explicit ZQStrStream(const UnicodeString& text);
  ~ZQStrStream() override;
  ZQStrStream(const ZQStrStream&) = delete;
  ZQStrStream& operator=(const ZQStrStream&) = delete;

  /// The stream's buffer.
  StrStreamBuf* getStreamBuf() { return &m_buf; }

 private:
  StrStreamBuf m_buf;
};

}  // namespace ZQCommonNS
