// Raw deflate data in memory, read as an input stream.
#pragma once

#include <cstddef>
#include <istream>
#include <streambuf>

#include "common/ZQExport.h"

struct z_stream_s;

namespace ZQCommonNS {

/// Stream buffer that inflates raw deflate data (no zlib or gzip header) from memory.
class ZQCOMMON_API ZQInflaterStreamBuf : public std::streambuf {
 public:
  /// Bytes kept in front of each refill for put-back.
  static constexpr size_t PUTBACK_SIZE = 10;
  /// Size of the output buffer, put-back included.
  static constexpr size_t BUFFER_SIZE = 4096;

  /// Inflates `size` bytes at `data`. With `copy` a private copy is read; otherwise the
  /// memory must outlive the buffer.
  ZQInflaterStreamBuf(const char* data, size_t size, bool copy);
  ~ZQInflaterStreamBuf() override;
  ZQInflaterStreamBuf(const ZQInflaterStreamBuf&) = delete;
  ZQInflaterStreamBuf& operator=(const ZQInflaterStreamBuf&) = delete;

  /// Starts over from the first byte of the data with a fresh inflate state.
  void reset();

 protected:
  int_type underflow() override;
  /// Large reads inflate straight into the caller's memory.
  std::streamsize xsgetn(char* s, std::streamsize count) override;

 private:
  void startInflate();
  size_t keepForPutBack();
  int_type finishFill(size_t keep, size_t made);

  const char* m_data = nullptr;
  size_t m_size = 0;
  char* m_copy = nullptr;  // owned copy of the data, if asked for
  char* m_buffer = nullptr;
  z_stream_s* m_zstream = nullptr;
};

/// Input stream over a ZQInflaterStreamBuf.
class ZQCOMMON_API ZQInflaterStream : public std::istream {
 public:
  /// Inflates raw deflate data from memory; with `copy` from a private copy of it.
  ZQInflaterStream(const char* data, size_t size, bool copy);
  ~ZQInflaterStream() override;
  ZQInflaterStream(const ZQInflaterStream&) = delete;
  ZQInflaterStream& operator=(const ZQInflaterStream&) = delete;

  /// Clears a fail or bad state and starts over from the first byte of the data.
  void reset();

 private:
  ZQInflaterStreamBuf m_buf;
};

}  // namespace ZQCommonNS
