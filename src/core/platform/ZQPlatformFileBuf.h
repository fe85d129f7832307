// A read-only file as a seekable stream buffer for readers that hop about a file, as the zip
// reader does from header to header: a seek that lands inside the bytes already buffered costs
// no system call, the position is known without asking the system, and large reads go
// straight into the caller's memory.
#pragma once

#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <streambuf>
#include <string>

#include "common/ZQExport.h"

namespace ZQCommonNS::platform {

/// Exported for the tests only; it is no part of the public interface.
class ZQCOMMON_API FileReadBuf : public std::streambuf {
 public:
  static constexpr size_t BUFFER_SIZE = 8192;

  /// Opens the native path read-only; is_open() tells whether that worked.
  explicit FileReadBuf(const std::string& nativePath);
  ~FileReadBuf() override;
  FileReadBuf(const FileReadBuf&) = delete;
  FileReadBuf& operator=(const FileReadBuf&) = delete;

  bool is_open() const { return m_fd >= 0; }

 protected:
  int_type underflow() override;
  /// Stepping back over the start of the buffer reads again from one byte earlier.
  int_type pbackfail(int_type ch) override;
  std::streamsize xsgetn(char* s, std::streamsize n) override;
  std::streamsize showmanyc() override;
  pos_type seekoff(off_type off, std::ios_base::seekdir way,
                   std::ios_base::openmode which = std::ios_base::in) override;
  pos_type seekpos(pos_type pos, std::ios_base::openmode which = std::ios_base::in) override;

 private:
  /// File offset of the get pointer.
  int64_t position() const { return m_start + (gptr() - eback()); }
  /// The file's current size, or -1.
  int64_t fileSize() const;
  /// Reads up to `n` bytes at `offset`, retrying interrupted and short reads; -1 on failure.
  int64_t readAt(char* out, size_t n, int64_t offset) const;

  int m_fd = -1;
  std::unique_ptr<char[]> m_buffer;
  int64_t m_start = 0;  // file offset of eback()
};

/// An input stream over a FileReadBuf; a file that didn't open leaves it failed.
class ZQCOMMON_API FileReadStream : public std::istream {
 public:
  explicit FileReadStream(const std::string& nativePath);
  ~FileReadStream() override;

 private:
  FileReadBuf m_buf;
};

}  // namespace ZQCommonNS::platform
