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

size_t ZQInflaterStreamBuf::keepForPutBack() {
  size_t keep = static_cast<size_t>(gptr() - eback());
  if (keep > PUTBACK_SIZE) keep = PUTBACK_SIZE;
  std::memmove(m_buffer, gptr() - keep, keep);
  return keep;
}

ZQInflaterStreamBuf::int_type ZQInflaterStreamBuf::finishFill(size_t keep, size_t made) {
  z_stream& zs = *m_zstream;
  zs.next_out = reinterpret_cast<Bytef*>(m_buffer + keep + made);
  zs.avail_out = static_cast<uInt>(BUFFER_SIZE - keep - made);
  while (zs.avail_out != 0) {
    int ret = ::inflate(&zs, zs.avail_in != 0 ? Z_NO_FLUSH : Z_FINISH);
    if (ret == Z_STREAM_END) {
      char* end = reinterpret_cast<char*>(zs.next_out);
      setg(m_buffer, m_buffer + keep, end);
      if (end == m_buffer + keep) return traits_type::eof();
      return traits_type::to_int_type(*gptr());
    }
    if (ret != Z_OK) {
      // Damaged or cut data reads as an early end, without what this fill made.
      setg(m_buffer, m_buffer + keep, m_buffer + keep);
      return traits_type::eof();
    }
  }
  setg(m_buffer, m_buffer + keep, m_buffer + BUFFER_SIZE);
  return traits_type::to_int_type(*gptr());
}

ZQInflaterStreamBuf::int_type ZQInflaterStreamBuf::underflow() {
  if (gptr() < egptr()) return traits_type::to_int_type(*gptr());
  if (!m_zstream) return traits_type::eof();
  return finishFill(keepForPutBack(), 0);
}

std::streamsize ZQInflaterStreamBuf::xsgetn(char* s, std::streamsize count) {
  // A large read inflates straight into the caller's memory, in the same fills the buffer
  // would take (4096 bytes less those kept, then 4086 each), so what is read and where an
  // early end falls are the same; only the copy through the buffer is saved.
  constexpr size_t kFill = BUFFER_SIZE - PUTBACK_SIZE;
  size_t done = 0;
  const size_t wanted = count > 0 ? static_cast<size_t>(count) : 0;
  while (done < wanted) {
    size_t avail = static_cast<size_t>(egptr() - gptr());
    if (avail) {
      size_t take = avail < wanted - done ? avail : wanted - done;
      std::memcpy(s + done, gptr(), take);
      gbump(static_cast<int>(take));
      done += take;
      continue;
    }
    if (!m_zstream) break;
    z_stream& zs = *m_zstream;
    size_t keep = keepForPutBack();
    size_t first = BUFFER_SIZE - keep;
    size_t room = wanted - done;
    if (room < first || zs.avail_in == 0) {
      if (traits_type::eq_int_type(finishFill(keep, 0), traits_type::eof())) break;
      continue;
    }
    if (room > (size_t{1} << 30)) room = size_t{1} << 30;
    // The caller's memory takes whole fills and the start of the next one, which is finished
    // in the buffer; its bytes count only once that fill is complete.
    size_t span = room;
    char* out = s + done;
    zs.next_out = reinterpret_cast<Bytef*>(out);
    zs.avail_out = static_cast<uInt>(span);
    int ret = Z_OK;
    // Only while input remains: the last fills, where zlib is told to finish, go through the
    // buffer as usual.
    while (zs.avail_out != 0 && zs.avail_in != 0) {
      ret = ::inflate(&zs, Z_NO_FLUSH);
      if (ret != Z_OK) break;
    }
    size_t made = span - zs.avail_out;
    size_t whole = made < first ? 0 : first + (made - first) / kFill * kFill;
    if (ret == Z_STREAM_END) whole = made;
    // The bytes in front of the next fill are the last ones delivered.
    auto keepTail = [&](size_t delivered) {
      size_t k = delivered < PUTBACK_SIZE ? delivered : PUTBACK_SIZE;
      if (delivered < PUTBACK_SIZE) {
        size_t old = keep < PUTBACK_SIZE - delivered ? keep : PUTBACK_SIZE - delivered;
        std::memmove(m_buffer, m_buffer + keep - old, old);
        k += old;
        std::memcpy(m_buffer + old, out, delivered);
      } else {
        std::memcpy(m_buffer, out + delivered - PUTBACK_SIZE, PUTBACK_SIZE);
      }
      setg(m_buffer, m_buffer + k, m_buffer + k);
      return k;
    };
    if (ret == Z_OK && made == whole) {
      // Whole fills only.
      done += whole;
      keepTail(whole);
      continue;
    }
    if (ret != Z_OK && ret != Z_STREAM_END) {
      // Damaged data: the fill it fell in is dropped.
      done += whole;
      keepTail(whole);
      break;
    }
    if (ret == Z_STREAM_END) {
      done += whole;
      keepTail(whole);
      break;
    }
    // The input ran out inside a fill: that fill goes on in the buffer, where it is finished.
    size_t partial = made - whole;
    size_t k = keepTail(whole);
    std::memcpy(m_buffer + k, out + whole, partial);
    done += whole;
    if (traits_type::eq_int_type(finishFill(k, partial), traits_type::eof())) break;
  }
  return static_cast<std::streamsize>(done);
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
