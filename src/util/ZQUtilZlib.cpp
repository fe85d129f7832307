// zlib wrappers: inflate of zlib and raw deflate streams, and deflate at the default level.
#include <zlib.h>

#include <ostream>

#include "common/ZQUtil.h"

namespace ZQCommonNS {

namespace {

constexpr unsigned kOutBuffer = 4096;

// Window bits: 15 reads a zlib header, -15 a raw deflate stream.
bool inflateInto(std::ostream& out, const void* data, unsigned size, int windowBits) {
  z_stream zs{};
  if (inflateInit2(&zs, windowBits) != Z_OK) return false;
  zs.next_in = static_cast<Bytef*>(const_cast<void*>(data));
  zs.avail_in = data ? size : 0;
  unsigned char buf[kOutBuffer];
  int ret = Z_OK;
  try {
    for (;;) {
      zs.next_out = buf;
      zs.avail_out = kOutBuffer;
      ret = ::inflate(&zs, Z_NO_FLUSH);
      unsigned produced = kOutBuffer - zs.avail_out;
      if (produced) out.write(reinterpret_cast<const char*>(buf), produced);
      if (ret == Z_STREAM_END) break;
      if (ret != Z_OK) break;                   // bad data, or truncated (Z_BUF_ERROR)
      if (produced == 0 && zs.avail_in == 0) {  // no input left and nothing more comes out
        ret = Z_BUF_ERROR;
        break;
      }
    }
  } catch (const std::ios_base::failure&) {
    ret = Z_ERRNO;
  }
  inflateEnd(&zs);
  return ret == Z_STREAM_END;
}

}  // namespace

bool ZQUtil::inflate(std::ostream& out, const void* data, unsigned size) {
  return inflateInto(out, data, size, MAX_WBITS);
}

bool ZQUtil::inflate2(std::ostream& out, const void* data, unsigned size) {
  return inflateInto(out, data, size, -MAX_WBITS);
}

bool ZQUtil::deflate(std::ostream& out, const void* data, unsigned size) {
  z_stream zs{};
  if (deflateInit(&zs, Z_DEFAULT_COMPRESSION) != Z_OK) return false;
  zs.next_in = static_cast<Bytef*>(const_cast<void*>(data));
  zs.avail_in = data ? size : 0;
  unsigned char buf[kOutBuffer];
  int ret = Z_OK;
  try {
    do {
      zs.next_out = buf;
      zs.avail_out = kOutBuffer;
      ret = ::deflate(&zs, Z_FINISH);
      unsigned produced = kOutBuffer - zs.avail_out;
      if (produced) out.write(reinterpret_cast<const char*>(buf), produced);
    } while (ret == Z_OK);
  } catch (const std::ios_base::failure&) {
    ret = Z_ERRNO;
  }
  deflateEnd(&zs);
  return ret == Z_STREAM_END;
}

}  // namespace ZQCommonNS
