// Inflating arbitrary bytes as a zlib and as a raw deflate stream, output size bounded.
#include <cstddef>
#include <cstdint>
#include <ostream>
#include <sstream>
#include <streambuf>

#include "common/ZQUtil.h"

using namespace ZQCommonNS;

namespace {
// Counts what is written and keeps nothing, so a small input that expands hugely stays cheap.
class CountingBuf : public std::streambuf {
 public:
  size_t count = 0;

 protected:
  std::streamsize xsputn(const char*, std::streamsize n) override {
    count += static_cast<size_t>(n);
    return n;
  }
  int_type overflow(int_type c) override {
    ++count;
    return traits_type::not_eof(c);
  }
};
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  CountingBuf a, b;
  std::ostream outA(&a), outB(&b);
  ZQUtil::inflate(outA, data, static_cast<unsigned>(size));
  ZQUtil::inflate2(outB, data, static_cast<unsigned>(size));

  // Small inputs also go through a deflate and back.
  if (size <= 1024) {
    std::ostringstream packed;
    if (!ZQUtil::deflate(packed, data, static_cast<unsigned>(size))) __builtin_trap();
    std::string p = packed.str();
    std::ostringstream back;
    if (!ZQUtil::inflate(back, p.data(), static_cast<unsigned>(p.size()))) __builtin_trap();
    if (back.str() != std::string(reinterpret_cast<const char*>(data), size)) __builtin_trap();
  }
  return 0;
}
