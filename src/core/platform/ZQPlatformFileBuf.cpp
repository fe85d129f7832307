#include "core/platform/ZQPlatformFileBuf.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace ZQCommonNS::platform {

FileReadBuf::FileReadBuf(const std::string& nativePath) {
  if (nativePath.empty() || nativePath.find('\0') != std::string::npos) return;
  m_fd = ::open(nativePath.c_str(), O_RDONLY | O_CLOEXEC);
  if (m_fd < 0) return;
  struct stat info {};
  if (::fstat(m_fd, &info) != 0 || S_ISDIR(info.st_mode)) {
    ::close(m_fd);
    m_fd = -1;
    return;
  }
  m_buffer.reset(new char[BUFFER_SIZE]);
  setg(m_buffer.get(), m_buffer.get(), m_buffer.get());
}

FileReadBuf::~FileReadBuf() {
  if (m_fd >= 0) ::close(m_fd);
}

int64_t FileReadBuf::fileSize() const {
  struct stat info {};
  if (m_fd < 0 || ::fstat(m_fd, &info) != 0) return -1;
  return static_cast<int64_t>(info.st_size);
}

int64_t FileReadBuf::readAt(char* out, size_t n, int64_t offset) const {
  size_t done = 0;
  while (done < n) {
    ssize_t got = ::pread(m_fd, out + done, n - done, static_cast<off_t>(offset + done));
    if (got < 0) {
      if (errno == EINTR) continue;
      return done ? static_cast<int64_t>(done) : -1;
    }
    if (got == 0) break;
    done += static_cast<size_t>(got);
  }
  return static_cast<int64_t>(done);
}

FileReadBuf::int_type FileReadBuf::underflow() {
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
  if (m_fd < 0) return traits_type::eof();
  int64_t at = position();
  int64_t got = readAt(m_buffer.get(), BUFFER_SIZE, at);
  m_start = at;
  char* base = m_buffer.get();
  setg(base, base, base + (got > 0 ? got : 0));
  return got > 0 ? traits_type::to_int_type(*base) : traits_type::eof();
}

FileReadBuf::int_type FileReadBuf::pbackfail(int_type ch) {
  if (m_fd < 0 || gptr() > eback()) return traits_type::eof();
  int64_t at = position() - 1;
  if (at < 0) return traits_type::eof();
  int64_t got = readAt(m_buffer.get(), BUFFER_SIZE, at);
  if (got <= 0) return traits_type::eof();
  m_start = at;
  char* base = m_buffer.get();
  setg(base, base, base + got);
  // The file can't be written: a different character can't be put back.
  if (!traits_type::eq_int_type(ch, traits_type::eof()) &&
      !traits_type::eq_int_type(ch, traits_type::to_int_type(*base))) {
    gbump(1);
    return traits_type::eof();
  }
  return traits_type::to_int_type(*base);
}

std::streamsize FileReadBuf::xsgetn(char* s, std::streamsize n) {
  if (n <= 0) return 0;
  std::streamsize done = 0;
  std::streamsize buffered = egptr() - gptr();
  if (buffered > 0) {
    done = buffered < n ? buffered : n;
    std::memcpy(s, gptr(), static_cast<size_t>(done));
    gbump(static_cast<int>(done));
  }
  if (done == n || m_fd < 0) return done;
  std::streamsize rest = n - done;
  if (static_cast<size_t>(rest) < BUFFER_SIZE) {
    // A small remainder goes through the buffer, which then holds what follows it.
    while (done < n && underflow() != traits_type::eof()) {
      std::streamsize k = egptr() - gptr();
      if (k > n - done) k = n - done;
      std::memcpy(s + done, gptr(), static_cast<size_t>(k));
      gbump(static_cast<int>(k));
      done += k;
    }
    return done;
  }
  int64_t at = position();
  int64_t got = readAt(s + done, static_cast<size_t>(rest), at);
  if (got > 0) done += got;
  // The buffer is now empty at the new position.
  m_start = at + (got > 0 ? got : 0);
  setg(m_buffer.get(), m_buffer.get(), m_buffer.get());
  return done;
}

std::streamsize FileReadBuf::showmanyc() {
  int64_t size = fileSize();
  int64_t left = size - position();
  return left > 0 ? static_cast<std::streamsize>(left) : -1;
}

FileReadBuf::pos_type FileReadBuf::seekoff(off_type off, std::ios_base::seekdir way,
                                           std::ios_base::openmode which) {
  if (m_fd < 0 || !(which & std::ios_base::in)) return pos_type(off_type(-1));
  int64_t base;
  if (way == std::ios_base::beg) {
    base = 0;
  } else if (way == std::ios_base::cur) {
    base = position();
  } else if (way == std::ios_base::end) {
    base = fileSize();
    if (base < 0) return pos_type(off_type(-1));
  } else {
    return pos_type(off_type(-1));
  }
  return seekpos(pos_type(off_type(base + off)), which);
}

FileReadBuf::pos_type FileReadBuf::seekpos(pos_type pos, std::ios_base::openmode which) {
  off_type target = pos;
  if (m_fd < 0 || !(which & std::ios_base::in) || target < 0) return pos_type(off_type(-1));
  int64_t end = m_start + (egptr() - eback());
  if (target >= m_start && target <= end) {
    // Inside what is buffered: only the pointer moves.
    setg(eback(), eback() + (target - m_start), egptr());
  } else {
    m_start = target;
    setg(m_buffer.get(), m_buffer.get(), m_buffer.get());
  }
  return pos;
}

FileReadStream::FileReadStream(const std::string& nativePath)
    : std::istream(nullptr), m_buf(nativePath) {
  rdbuf(&m_buf);
  if (!m_buf.is_open()) setstate(std::ios_base::failbit);
}

FileReadStream::~FileReadStream() = default;

}  // namespace ZQCommonNS::platform
