// A stream over a caller's controller: one 8202-byte area for reading and writing.
#include <cstring>

#include "common/ZQCustomStream.h"

namespace ZQCommonNS {

namespace {

// The put area leaves the area's last byte free, so the character that overflows still fits
// and a full area goes out in one write.
constexpr size_t kPutSize = ZQCustomStreamBuf::BUFFER_SIZE - 1;

}  // namespace

ZQCustomStreamController::~ZQCustomStreamController() = default;

ZQCustomStreamBuf::ZQCustomStreamBuf(ZQCustomStreamController* controller)
    : m_controller(controller) {
  m_buffer = new char[BUFFER_SIZE]();
  setg(m_buffer, m_buffer, m_buffer);
  setp(m_buffer, m_buffer + kPutSize);
}

ZQCustomStreamBuf::~ZQCustomStreamBuf() {
  flushBuffer();
  delete[] m_buffer;
}

int ZQCustomStreamBuf::flushBuffer() {
  int pending = static_cast<int>(pptr() - pbase());
  if (pending == 0) return 0;
  int written = m_controller ? m_controller->write(pbase(), pending) : -1;
  if (written != pending) {
    // The bytes stay pending; the put area ends where they do, so nothing more is stored
    // beyond the area.
    if (pptr() > epptr()) {
      setp(m_buffer, m_buffer + BUFFER_SIZE);
      pbump(pending);
    }
    return -1;
  }
  setp(m_buffer, m_buffer + kPutSize);
  m_written += pending;
  return pending;
}

ZQCustomStreamBuf::int_type ZQCustomStreamBuf::overflow(int_type ch) {
  if (!traits_type::eq_int_type(ch, traits_type::eof())) {
    if (pptr() >= m_buffer + BUFFER_SIZE) {
      // A write failed earlier and the area is full: nothing can be stored.
      flushBuffer();
      if (pptr() >= m_buffer + BUFFER_SIZE) return traits_type::eof();
    }
    *pptr() = traits_type::to_char_type(ch);
    pbump(1);
  }
  if (flushBuffer() < 0) return traits_type::eof();
  return ch;
}

ZQCustomStreamBuf::int_type ZQCustomStreamBuf::underflow() {
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());

  size_t keep = static_cast<size_t>(gptr() - eback());
  if (keep > PUTBACK_SIZE) keep = PUTBACK_SIZE;
  char* data = m_buffer + PUTBACK_SIZE;
  std::memmove(data - keep, gptr() - keep, keep);

  int count = m_controller ? m_controller->read(data, static_cast<int>(READ_SIZE)) : -1;
  if (count < 0) {
    setg(data - keep, data, data);
    return traits_type::eof();
  }
  if (count > static_cast<int>(READ_SIZE)) count = static_cast<int>(READ_SIZE);
  // A count of 0 isn't the end: the byte that stands at the cursor is served, so a
  // controller says the end with a negative count.
  setg(data - keep, data, data + (count ? count : 1));
  return traits_type::to_int_type(*gptr());
}

ZQCustomStreamBuf::pos_type ZQCustomStreamBuf::seekoff(off_type, std::ios_base::seekdir,
                                                       std::ios_base::openmode) {
  return pos_type(off_type(m_written + (pptr() - pbase())));
}

ZQCustomStream::ZQCustomStream(ZQCustomStreamController* controller)
    : std::iostream(nullptr), m_buf(controller) {
  rdbuf(&m_buf);
}

ZQCustomStream::~ZQCustomStream() = default;

}  // namespace ZQCommonNS
