// gzip streams: reading a gzip file or stream (plain data passes through), and writing one.
#pragma once

#include <cstddef>
#include <istream>
#include <ostream>
#include <streambuf>

#include "common/ZQExport.h"

struct z_stream_s;
struct gzFile_s;

namespace ZQCommonNS {

/// Stream buffer that inflates a gzip file (through zlib's file layer) or a gzip stream; a
/// stream that isn't gzip is read as it stands.
class ZQCOMMON_API ZQGzipIStreamBuf : public std::streambuf {
 public:
  /// Bytes kept in front of each refill for put-back.
  static constexpr size_t PUTBACK_SIZE = 10;
  /// Bytes inflated (or read) per refill.
  static constexpr size_t BUFFER_SIZE = 4096;
  /// Compressed bytes read from a source stream at a time.
  static constexpr size_t INPUT_SIZE = 4096;

  /// Opens a gzip file; the path is turned into the native form.
  explicit ZQGzipIStreamBuf(const UnicodeString& path);
  explicit ZQGzipIStreamBuf(const wchar_t* path);
  explicit ZQGzipIStreamBuf(const char* path);
  /// Reads gzip data from `source` from its first byte, or its plain bytes if it isn't gzip.
  /// The source isn't owned.
  explicit ZQGzipIStreamBuf(std::istream& source);
  ~ZQGzipIStreamBuf() override;
  ZQGzipIStreamBuf(const ZQGzipIStreamBuf&) = delete;
  ZQGzipIStreamBuf& operator=(const ZQGzipIStreamBuf&) = delete;

  /// A read buffer exists.
  bool is_open() const { return m_buffer != nullptr; }

  /// Reads a gzip member header (RFC 1952) from `stream`. True when one was read and skipped;
  /// otherwise the stream is back where it was and the result is false.
  static bool checkHeader(std::istream& stream);

 protected:
  int_type underflow() override;
  /// Large reads are filled straight into the caller's memory.
  std::streamsize xsgetn(char* s, std::streamsize count) override;

 private:
  void openDescriptor(int fd);
  void openPath(const char* nativePath);
  size_t keepForPutBack();
  size_t inflateFill(char* out, size_t made);
  size_t readFill(char* out);
  int_type setFill(size_t keep, size_t count);

  char* m_buffer = nullptr;          // PUTBACK_SIZE + BUFFER_SIZE bytes
  char* m_input = nullptr;           // INPUT_SIZE bytes, gzip stream form only
  gzFile_s* m_file = nullptr;        // file form
  std::istream* m_source = nullptr;  // stream forms
  z_stream_s* m_zstream = nullptr;   // gzip stream form, while inflating
};

/// Input stream over a ZQGzipIStreamBuf.
class ZQCOMMON_API ZQGzipIStream : public std::istream {
 public:
  /// Opens a gzip file.
  explicit ZQGzipIStream(const UnicodeString& path);
  explicit ZQGzipIStream(const wchar_t* path);
  explicit ZQGzipIStream(const char* path);
  /// Reads gzip data from `source`, or passes it through if it isn't gzip. Not owned.
  explicit ZQGzipIStream(std::istream& source);
  ~ZQGzipIStream() override;
  ZQGzipIStream(const ZQGzipIStream&) = delete;
  ZQGzipIStream& operator=(const ZQGzipIStream&) = delete;

  /// A read buffer exists: the file opened, or a source stream was given.
  bool is_open() const { return m_buf.is_open(); }

 private:
  ZQGzipIStreamBuf m_buf;
};

/// Stream buffer that compresses what is written into one gzip member (level 9). The first
/// sync ends the member: later writes are lost.
class ZQCOMMON_API ZQGzipOStreamBuf : public std::streambuf {
 public:
  /// Uncompressed bytes collected before each deflate step.
  static constexpr size_t INPUT_SIZE = 4096;
  /// Compressed bytes handed to the target at a time.
  static constexpr size_t OUTPUT_SIZE = 4096;

  /// Compresses into a new binary file at `path`, which this buffer owns.
  explicit ZQGzipOStreamBuf(const UnicodeString& path);
  /// Compresses into `target`, which isn't owned.
  explicit ZQGzipOStreamBuf(std::ostream& target);
  /// Ends the member if that hasn't been done, and closes an owned file.
  ~ZQGzipOStreamBuf() override;
  ZQGzipOStreamBuf(const ZQGzipOStreamBuf&) = delete;
  ZQGzipOStreamBuf& operator=(const ZQGzipOStreamBuf&) = delete;

  /// The target stream is usable.
  bool is_open() const;

 protected:
  int_type overflow(int_type ch) override;
  int sync() override;

 private:
  void initZStream();
  int encodeBuffer(int flush);

  char* m_input = nullptr;   // the put area
  char* m_output = nullptr;  // OUTPUT_SIZE bytes
  std::ostream* m_target = nullptr;
  bool m_ownsTarget = false;
  z_stream_s* m_zstream = nullptr;
};

/// Output stream over a ZQGzipOStreamBuf. `flush` ends the gzip member; it isn't a checkpoint.
class ZQCOMMON_API ZQGzipOStream : public std::ostream {
 public:
  /// Compresses to a new binary file, which the stream owns.
  explicit ZQGzipOStream(const UnicodeString& path);
  /// Compresses to `target`, not owned.
  explicit ZQGzipOStream(std::ostream& target);
  ~ZQGzipOStream() override;
  ZQGzipOStream(const ZQGzipOStream&) = delete;
  ZQGzipOStream& operator=(const ZQGzipOStream&) = delete;

 private:
  ZQGzipOStreamBuf m_buf;
};

}  // namespace ZQCommonNS
