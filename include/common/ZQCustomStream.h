// A stream whose two ends are a caller's callbacks.
#pragma once

#include <cstddef>
#include <istream>
#include <streambuf>

#include "common/ZQExport.h"

namespace ZQCommonNS {

/// What a caller implements to be read from and written to through a ZQCustomStream.
class ZQCOMMON_API ZQCustomStreamController {
 public:
  virtual ~ZQCustomStreamController();
  /// Prepares the controller's resource; not called by the library.
  virtual bool open() = 0;
  /// Releases the controller's resource; not called by the library.
  virtual void close() = 0;
  /// Reads up to `size` bytes into `buffer`: the count read, or a negative value at the end of
  /// the data. 0 isn't the end.
  virtual int read(char* buffer, int size) = 0;
  /// Writes `size` bytes from `buffer`; the count written.
  virtual int write(const char* buffer, int size) = 0;
};

/// Stream buffer over a controller. One area serves both directions, so a stream must not
/// switch between reading and writing without flushing first.
class ZQCOMMON_API ZQCustomStreamBuf : public std::streambuf {
 public:
  /// Size of the one area both directions share.
  static constexpr size_t BUFFER_SIZE = 8202;
  /// Bytes kept in front of each refill for put-back.
  static constexpr size_t PUTBACK_SIZE = 10;
  /// Bytes asked of the controller per read.
  static constexpr size_t READ_SIZE = 8192;

  /// Reads and writes through `controller`, which isn't owned.
  explicit ZQCustomStreamBuf(ZQCustomStreamController* controller);
  /// Flushes what is pending.
  ~ZQCustomStreamBuf() override;
  ZQCustomStreamBuf(const ZQCustomStreamBuf&) = delete;
  ZQCustomStreamBuf& operator=(const ZQCustomStreamBuf&) = delete;

  /// Hands the pending bytes to the controller: their count, 0 with nothing pending, or -1 when
  /// the controller took a different count (the bytes then stay pending).
  int flushBuffer();
  /// The shared area exists.
  bool is_open() const { return m_buffer != nullptr; }

 protected:
  int_type underflow() override;
  int_type overflow(int_type ch) override;
  /// A tell, not a seek: ignores its arguments and reports the bytes written plus those
  /// pending.
  pos_type seekoff(off_type off, std::ios_base::seekdir dir,
                   std::ios_base::openmode which) override;

 private:
  ZQCustomStreamController* m_controller;
  char* m_buffer = nullptr;
  long long m_written = 0;
};

/// Bidirectional stream over a ZQCustomStreamBuf. `tellp` counts the bytes written; no seek
/// moves anything.
class ZQCOMMON_API ZQCustomStream : public std::iostream {
 public:
  /// Reads and writes through `controller`, which isn't owned.
  explicit ZQCustomStream(ZQCustomStreamController* controller);
  ~ZQCustomStream() override;
  ZQCustomStream(const ZQCustomStream&) = delete;
  ZQCustomStream& operator=(const ZQCustomStream&) = delete;

  /// The buffer exists.
  bool is_open() const { return m_buf.is_open(); }

 private:
  ZQCustomStreamBuf m_buf;
};

}  // namespace ZQCommonNS
