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
// zlib's own buffers behind gzread (it keeps twice this for output): larger than its default,
// so that it inflates in long runs while we take 4096 bytes at a time.
constexpr unsigned kFileBufferSize = 32768;

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
  if (m_file) gzbuffer(m_file, kFileBufferSize);
  if (!m_file) {
    platform::closeDescriptor(fd);
    return;
  }
  m_buffer = new char[PUTBACK_SIZE + BUFFER_SIZE];
  setg(m_buffer + PUTBACK_SIZE, m_buffer + PUTBACK_SIZE, m_buffer + PUTBACK_SIZE);
}

void ZQGzipIStreamBuf::openPath(const char* nativePath) {
  m_file = gzopen(nativePath, "rb");
  if (m_file) gzbuffer(m_file, kFileBufferSize);
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

size_t ZQGzipIStreamBuf::keepForPutBack() {
  size_t keep = static_cast<size_t>(gptr() - eback());
  if (keep > PUTBACK_SIZE) keep = PUTBACK_SIZE;
  char* data = m_buffer + PUTBACK_SIZE;
  std::memmove(data - keep, gptr() - keep, keep);
  return keep;
}

size_t ZQGzipIStreamBuf::inflateFill(char* out, size_t made) {
  z_stream& zs = *m_zstream;
  zs.next_out = reinterpret_cast<Bytef*>(out + made);
  zs.avail_out = static_cast<uInt>(BUFFER_SIZE - made);
  for (;;) {
    if (zs.avail_in == 0 && !m_source->eof()) {
      m_source->read(m_input, static_cast<std::streamsize>(INPUT_SIZE));
      zs.next_in = reinterpret_cast<Bytef*>(m_input);
      zs.avail_in = static_cast<uInt>(m_source->gcount());
    }
    int ret = ::inflate(&zs, zs.avail_in != 0 ? Z_NO_FLUSH : Z_FINISH);
    if (zs.avail_out == 0) return BUFFER_SIZE;
    if (ret == Z_STREAM_END) break;
    // Damaged or cut data: an early end, and this fill's output goes with it.
    if (ret != Z_OK) return 0;
  }
  return BUFFER_SIZE - zs.avail_out;
}

size_t ZQGzipIStreamBuf::readFill(char* out) {
  if (m_file) {
    int got = gzread(m_file, out, static_cast<unsigned>(BUFFER_SIZE));
    return got > 0 ? static_cast<size_t>(got) : 0;
  }
  if (m_zstream) return inflateFill(out, 0);
  if (m_source && !m_source->eof()) {
    m_source->read(out, static_cast<std::streamsize>(BUFFER_SIZE));
    return static_cast<size_t>(m_source->gcount());
  }
  return 0;
}

ZQGzipIStreamBuf::int_type ZQGzipIStreamBuf::setFill(size_t keep, size_t count) {
  char* data = m_buffer + PUTBACK_SIZE;
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

ZQGzipIStreamBuf::int_type ZQGzipIStreamBuf::underflow() {
  if (!m_buffer) return traits_type::eof();
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
  // The last bytes read stay in front of the new ones, for put-back.
  size_t keep = keepForPutBack();
  return setFill(keep, readFill(m_buffer + PUTBACK_SIZE));
}

std::streamsize ZQGzipIStreamBuf::xsgetn(char* s, std::streamsize count) {
  // A large read fills the caller's memory directly, in the same 4096-byte fills the buffer
  // would take, so what is read and where an early end falls are the same; only the copy
  // through the buffer is saved.
  const size_t wanted = count > 0 ? static_cast<size_t>(count) : 0;
  size_t done = 0;
  char* data = m_buffer + PUTBACK_SIZE;
  while (done < wanted) {
    size_t avail = static_cast<size_t>(egptr() - gptr());
    if (avail) {
      size_t take = avail < wanted - done ? avail : wanted - done;
      std::memcpy(s + done, gptr(), take);
      gbump(static_cast<int>(take));
      done += take;
      continue;
    }
    if (!m_buffer) break;
    size_t keep = keepForPutBack();
    size_t room = wanted - done;
    if (room > (size_t{1} << 30)) room = size_t{1} << 30;
    // Small reads, and the fill where zlib is told to finish, go through the buffer.
    bool finishing = m_zstream && m_zstream->avail_in == 0 && !m_source->good();
    if (room < BUFFER_SIZE || finishing) {
      if (traits_type::eq_int_type(setFill(keep, readFill(data)), traits_type::eof())) break;
      continue;
    }
    char* out = s + done;
    // Leaves the last bytes delivered in front of the next fill, as a fill would.
    auto keepTail = [&](size_t delivered) {
      size_t k;
      if (delivered >= PUTBACK_SIZE) {
        k = PUTBACK_SIZE;
        std::memcpy(data - k, out + delivered - k, k);
      } else {
        size_t old = keep < PUTBACK_SIZE - delivered ? keep : PUTBACK_SIZE - delivered;
        k = old + delivered;
        std::memmove(data - k, data - old, old);
        std::memcpy(data - delivered, out, delivered);
      }
      setg(data - k, data, data);
      return k;
    };
    if (!m_zstream) {
      size_t got = readFill(out);
      if (got == 0) {
        setFill(keep, 0);
        break;
      }
      done += got;
      keepTail(got);
      continue;
    }
    z_stream& zs = *m_zstream;
    size_t span = room / BUFFER_SIZE * BUFFER_SIZE;
    zs.next_out = reinterpret_cast<Bytef*>(out);
    zs.avail_out = static_cast<uInt>(span);
    int ret = Z_OK;
    // Only while input remains: the last fill, where zlib is told to finish, is finished
    // through the buffer as usual.
    while (zs.avail_out != 0) {
      if (zs.avail_in == 0 && !m_source->eof()) {
        m_source->read(m_input, static_cast<std::streamsize>(INPUT_SIZE));
        zs.next_in = reinterpret_cast<Bytef*>(m_input);
        zs.avail_in = static_cast<uInt>(m_source->gcount());
      }
      if (zs.avail_in == 0) break;
      ret = ::inflate(&zs, Z_NO_FLUSH);
      if (ret != Z_OK) break;
    }
    size_t made = span - zs.avail_out;
    size_t whole = ret == Z_STREAM_END ? made : made / BUFFER_SIZE * BUFFER_SIZE;
    if (ret != Z_OK || made == whole) {
      done += whole;
      keepTail(whole);
      if (ret != Z_OK) break;  // the end, or damaged data whose fill is dropped
      continue;
    }
    // The input ran out inside a fill: it is finished in the buffer.
    size_t partial = made - whole;
    size_t k = keepTail(whole);
    std::memcpy(data, out + whole, partial);
    done += whole;
    if (traits_type::eq_int_type(setFill(k, inflateFill(data, partial)), traits_type::eof())) {
      break;
    }
  }
  return static_cast<std::streamsize>(done);
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
