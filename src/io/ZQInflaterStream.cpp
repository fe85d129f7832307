// Raw inflate of memory into a 4096-byte buffer that keeps 10 bytes for put-back.
#include <zlib.h>

#include <cstring>

#include "common/ZQInflaterStream.h"
#include "io/ZQZlibVersion.h"

namespace ZQCommonNS {

ZQInflaterStreamBuf::ZQInflaterStreamBuf(const char* data, size_t size, bool copy)
    : m_data(data), m_size(data ? size : 0) {
  if (copy && m_size) {
    m_copy = new char[m_size];
    std::memcpy(m_copy, data, m_size);
    m_data = m_copy;
  }
  m_buffer = new char[BUFFER_SIZE];
  startInflate();
}

ZQInflaterStreamBuf::~ZQInflaterStreamBuf() {
  if (m_zstream) {
    inflateEnd(m_zstream);
    delete m_zstream;
  }
  delete[] m_buffer;
  delete[] m_copy;
}

void ZQInflaterStreamBuf::startInflate() {
  m_zstream = new z_stream{};
  // Deflate data larger than zlib's counter is read up to what the counter can say.
  m_zstream->next_in = reinterpret_cast<Bytef*>(const_cast<char*>(m_data));
  m_zstream->avail_in = m_size > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<uInt>(m_size);
  if (inflateInit2_(m_zstream, -MAX_WBITS, kZlibInitVersion, sizeof(z_stream)) != Z_OK) {
    delete m_zstream;
    m_zstream = nullptr;
  }
  setg(m_buffer, m_buffer, m_buffer);
}

void ZQInflaterStreamBuf::reset() {
  if (m_zstream) {
    inflateEnd(m_zstream);
    delete m_zstream;
    m_zstream = nullptr;
  }
  startInflate();
}

ZQInflaterStreamBuf::int_type ZQInflaterStreamBuf::underflow() {
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
  if (!m_zstream) return traits_type::eof();

  size_t keep = static_cast<size_t>(gptr() - eback());
  if (keep > PUTBACK_SIZE) keep = PUTBACK_SIZE;
  std::memmove(m_buffer, gptr() - keep, keep);

  z_stream& zs = *m_zstream;
  zs.next_out = reinterpret_cast<Bytef*>(m_buffer + keep);
  zs.avail_out = static_cast<uInt>(BUFFER_SIZE - keep);
  while (zs.avail_out != 0) {
    int ret = ::inflate(&zs, zs.avail_in != 0 ? Z_NO_FLUSH : Z_FINISH);
    if (ret == Z_STREAM_END) {
      char* end = reinterpret_cast<char*>(zs.next_out);
      setg(m_buffer, m_buffer + keep, end);
      if (end == m_buffer + keep) return traits_type::eof();
      return traits_type::to_int_type(*gptr());
    }
    if (ret != Z_OK) {
      // Damaged or cut data reads as an early end.
      setg(m_buffer, m_buffer + keep, m_buffer + keep);
      return traits_type::eof();
    }
  }
  setg(m_buffer, m_buffer + keep, m_buffer + BUFFER_SIZE);
  return traits_type::to_int_type(*gptr());
}

ZQInflaterStream::ZQInflaterStream(const char* data, size_t size, bool copy)
    : std::istream(nullptr), m_buf(data, size, copy) {
  rdbuf(&m_buf);
}

ZQInflaterStream::~ZQInflaterStream() = default;

void ZQInflaterStream::reset() {
  clear();
  m_buf.reset();
}

}  // namespace ZQCommonNS
