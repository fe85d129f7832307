// Writing gzip: zlib writes the header and trailer itself (window bits 31).
#include <zlib.h>

#include <fstream>
#include <string>

#include "common/ZQGzipStream.h"
#include "core/platform/ZQPlatformFile.h"
#include "io/ZQZlibVersion.h"

namespace ZQCommonNS {

namespace {

constexpr int kLevel = 9;
constexpr int kWindowBitsGzip = 31;
constexpr int kMemLevel = 9;

}  // namespace

ZQGzipOStreamBuf::ZQGzipOStreamBuf(const UnicodeString& path) {
  std::string told;
  path.toUTF8String(told);
  m_target = new std::ofstream(platform::nativePath(told),
                               std::ios::out | std::ios::binary | std::ios::trunc);
  m_ownsTarget = true;
  initZStream();
}

ZQGzipOStreamBuf::ZQGzipOStreamBuf(std::ostream& target) : m_target(&target) { initZStream(); }

void ZQGzipOStreamBuf::initZStream() {
  m_input = new char[INPUT_SIZE];
  m_output = new char[OUTPUT_SIZE];
  setp(m_input, m_input + INPUT_SIZE);
  m_zstream = new z_stream{};
  int ret = deflateInit2_(m_zstream, kLevel, Z_DEFLATED, kWindowBitsGzip, kMemLevel,
                          Z_DEFAULT_STRATEGY, kZlibInitVersion, sizeof(z_stream));
  m_zstream->next_out = reinterpret_cast<Bytef*>(m_output);
  m_zstream->avail_out = static_cast<uInt>(OUTPUT_SIZE);
  if (ret != Z_OK) {
    // A stream zlib refused behaves as one that has ended: writes are lost.
    delete m_zstream;
    m_zstream = nullptr;
  }
}

ZQGzipOStreamBuf::~ZQGzipOStreamBuf() {
  encodeBuffer(Z_FINISH);
  if (m_ownsTarget) delete m_target;
  delete m_zstream;
  delete[] m_output;
  delete[] m_input;
}

bool ZQGzipOStreamBuf::is_open() const { return m_target && !m_target->fail(); }

int ZQGzipOStreamBuf::encodeBuffer(int flush) {
  if (!m_zstream) return -1;  // ended, or never started
  z_stream& zs = *m_zstream;
  zs.next_in = reinterpret_cast<Bytef*>(pbase());
  zs.avail_in = static_cast<uInt>(pptr() - pbase());
  int ret = ::deflate(&zs, flush);
  while (ret != Z_STREAM_END) {
    if (ret != Z_OK) {
      deflateEnd(&zs);
      delete m_zstream;
      m_zstream = nullptr;
      return -1;
    }
    if (zs.avail_out == 0) {
      m_target->write(m_output, static_cast<std::streamsize>(OUTPUT_SIZE));
      zs.next_out = reinterpret_cast<Bytef*>(m_output);
      zs.avail_out = static_cast<uInt>(OUTPUT_SIZE);
    }
    if (flush == Z_NO_FLUSH && zs.avail_in == 0) return 0;
    ret = ::deflate(&zs, flush);
  }
  // Only this member ends here: the target isn't flushed, so a target that is itself a gzip
  // stream goes on.
  m_target->write(m_output, static_cast<std::streamsize>(OUTPUT_SIZE - zs.avail_out));
  deflateEnd(&zs);
  delete m_zstream;
  m_zstream = nullptr;
  return 0;
}

ZQGzipOStreamBuf::int_type ZQGzipOStreamBuf::overflow(int_type ch) {
  encodeBuffer(Z_NO_FLUSH);
  setp(m_input, m_input + INPUT_SIZE);
  if (!traits_type::eq_int_type(ch, traits_type::eof())) {
    *pptr() = traits_type::to_char_type(ch);
    pbump(1);
  }
  return traits_type::not_eof(ch);
}

int ZQGzipOStreamBuf::sync() {
  encodeBuffer(Z_FINISH);
  return 0;
}

ZQGzipOStream::ZQGzipOStream(const UnicodeString& path) : std::ostream(nullptr), m_buf(path) {
  rdbuf(&m_buf);
}

ZQGzipOStream::ZQGzipOStream(std::ostream& target) : std::ostream(nullptr), m_buf(target) {
  rdbuf(&m_buf);
}

ZQGzipOStream::~ZQGzipOStream() = default;

}  // namespace ZQCommonNS
