// Reading gzip: zlib's file layer for files, our own header check and raw inflate for streams.
#include <zlib.h>

#include <cstring>
#include <string>

#include "common/ZQGzipStream.h"
#include "core/platform/ZQPlatformFile.h"
#include "core/platform/ZQPlatformTemp.h"
#include "io/ZQZlibVersion.h"

namespace ZQCommonNS {

namespace {

// Gzip member header (RFC 1952): magic, method and flag bits.
constexpr int kMagic1 = 31;
constexpr int kMagic2 = 139;
constexpr int kMethodDeflate = 8;
constexpr int kFlagHeaderCrc = 0x02;
constexpr int kFlagExtra = 0x04;
constexpr int kFlagName = 0x08;
constexpr int kFlagComment = 0x10;
constexpr int kFlagReserved = 0xE0;
constexpr int kEof = std::char_traits<char>::eof();

/// Steps back over the `count` bytes just read, so the stream reads them again.
void moveBack(std::istream& in, std::streamoff count) {
  in.clear(in.rdstate() & ~(std::ios::eofbit | std::ios::failbit));
  if (count > 0) in.seekg(-count, std::ios::cur);
}

/// Skips bytes through a zero byte or the end.
void skipZeroTerminated(std::istream& in) {
  for (;;) {
    int c = in.get();
    if (c == 0 || c == kEof) return;
  }
}

std::string utf8(const UnicodeString& s) {
  std::string out;
  s.toUTF8String(out);
  return out;
}

std::string utf8(const wchar_t* s) {
  if (!s) return {};
  UnicodeString text;
  if constexpr (sizeof(wchar_t) == 4) {
    text = UnicodeString::fromUTF32(reinterpret_cast<const UChar32*>(s), -1);
  } else {
    text = UnicodeString(reinterpret_cast<const char16_t*>(s));
  }
  return utf8(text);
}

}  // namespace

bool ZQGzipIStreamBuf::checkHeader(std::istream& in) {
  if (in.eof()) return false;
  int b1 = in.get();
  int b2 = in.get();
  if (b1 != kMagic1 || b2 != kMagic2) {
    moveBack(in, static_cast<std::streamoff>(b1 != kEof) + (b2 != kEof));
    return false;
  }
  int method = in.get();
  int flags = in.get();
  if (method != kMethodDeflate || flags == kEof || (flags & kFlagReserved) != 0) {
    moveBack(in, 2 + static_cast<std::streamoff>(method != kEof) + (flags != kEof));
    return false;
  }
  in.ignore(6);  // time, extra flags, operating system
  if (flags & kFlagExtra) {
    int lo = in.get();
    int hi = in.get();
    if (lo != kEof && hi != kEof) in.ignore(lo | (hi << 8));
  }
  if (flags & kFlagName) skipZeroTerminated(in);
  if (flags & kFlagComment) skipZeroTerminated(in);
  if (flags & kFlagHeaderCrc) in.ignore(2);
  return true;
}

ZQGzipIStreamBuf::ZQGzipIStreamBuf(const UnicodeString& path) {
  openDescriptor(platform::openForReading(utf8(path)));
}

ZQGzipIStreamBuf::ZQGzipIStreamBuf(const wchar_t* path) {
  if (path) openDescriptor(platform::openForReading(utf8(path)));
}

ZQGzipIStreamBuf::ZQGzipIStreamBuf(const char* path) {
  if (path && *path) openPath(platform::nativePath(path).c_str());
}

ZQGzipIStreamBuf::ZQGzipIStreamBuf(std::istream& source) : m_source(&source) {
  source.seekg(0);
  // A source that can't seek is read from where it stands.
  if (source.fail() && !source.bad()) source.clear();
  m_buffer = new char[PUTBACK_SIZE + BUFFER_SIZE];
  setg(m_buffer + PUTBACK_SIZE, m_buffer + PUTBACK_SIZE, m_buffer + PUTBACK_SIZE);
  if (checkHeader(source)) {
    m_input = new char[INPUT_SIZE];
    m_zstream = new z_stream{};
    if (inflateInit2_(m_zstream, -MAX_WBITS, kZlibInitVersion, sizeof(z_stream)) != Z_OK) {
      delete m_zstream;
      m_zstream = nullptr;
    }
  }
}

void ZQGzipIStreamBuf::openDescriptor(int fd) {
  if (fd < 0) return;
  m_file = gzdopen(fd, "rb");
  if (!m_file) {
    platform::closeDescriptor(fd);
    return;
  }
  m_buffer = new char[PUTBACK_SIZE + BUFFER_SIZE];
  setg(m_buffer + PUTBACK_SIZE, m_buffer + PUTBACK_SIZE, m_buffer + PUTBACK_SIZE);
}

void ZQGzipIStreamBuf::openPath(const char* nativePath) {
  m_file = gzopen(nativePath, "rb");
  if (!m_file) return;
  m_buffer = new char[PUTBACK_SIZE + BUFFER_SIZE];
  setg(m_buffer + PUTBACK_SIZE, m_buffer + PUTBACK_SIZE, m_buffer + PUTBACK_SIZE);
}

ZQGzipIStreamBuf::~ZQGzipIStreamBuf() {
  if (m_file) gzclose(m_file);
  if (m_zstream) {
    inflateEnd(m_zstream);
    delete m_zstream;
  }
  delete[] m_input;
  delete[] m_buffer;
}

size_t ZQGzipIStreamBuf::inflateSome(char* out) {
  z_stream& zs = *m_zstream;
  zs.next_out = reinterpret_cast<Bytef*>(out);
  zs.avail_out = static_cast<uInt>(BUFFER_SIZE);
  for (;;) {
    if (zs.avail_in == 0 && !m_source->eof()) {
      m_source->read(m_input, static_cast<std::streamsize>(INPUT_SIZE));
      zs.next_in = reinterpret_cast<Bytef*>(m_input);
      zs.avail_in = static_cast<uInt>(m_source->gcount());
    }
    int ret = ::inflate(&zs, zs.avail_in != 0 ? Z_NO_FLUSH : Z_FINISH);
    if (zs.avail_out == 0) return BUFFER_SIZE;
    if (ret == Z_STREAM_END) break;
    // Damaged or cut data: an early end, and this pass's output goes with it.
    if (ret != Z_OK) return 0;
  }
  return BUFFER_SIZE - zs.avail_out;
}

ZQGzipIStreamBuf::int_type ZQGzipIStreamBuf::underflow() {
  if (!m_buffer) return traits_type::eof();
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());

  // Keep the last bytes read in front of the new ones, for put-back.
  size_t keep = static_cast<size_t>(gptr() - eback());
  if (keep > PUTBACK_SIZE) keep = PUTBACK_SIZE;
  char* data = m_buffer + PUTBACK_SIZE;
  std::memmove(data - keep, gptr() - keep, keep);

  size_t count = 0;
  if (m_file) {
    int got = gzread(m_file, data, static_cast<unsigned>(BUFFER_SIZE));
    count = got > 0 ? static_cast<size_t>(got) : 0;
  } else if (m_zstream) {
    count = inflateSome(data);
  } else if (m_source && !m_source->eof()) {
    m_source->read(data, static_cast<std::streamsize>(BUFFER_SIZE));
    count = static_cast<size_t>(m_source->gcount());
  }
  if (count == 0) {
    if (m_file) {
      gzclose(m_file);
      m_file = nullptr;
    }
    setg(data - keep, data, data);
    return traits_type::eof();
  }
  setg(data - keep, data, data + count);
  return traits_type::to_int_type(*gptr());
}

ZQGzipIStream::ZQGzipIStream(const UnicodeString& path) : std::istream(nullptr), m_buf(path) {
  rdbuf(&m_buf);
}

ZQGzipIStream::ZQGzipIStream(const wchar_t* path) : std::istream(nullptr), m_buf(path) {
  rdbuf(&m_buf);
}

ZQGzipIStream::ZQGzipIStream(const char* path) : std::istream(nullptr), m_buf(path) {
  rdbuf(&m_buf);
}

ZQGzipIStream::ZQGzipIStream(std::istream& source) : std::istream(nullptr), m_buf(source) {
  rdbuf(&m_buf);
}

ZQGzipIStream::~ZQGzipIStream() = default;

}  // namespace ZQCommonNS
