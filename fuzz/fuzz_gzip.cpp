// Arbitrary bytes through the gzip reader (stream form) and the raw inflater, read to the end
// in large and in small pieces: never a crash or a hang, and both ways read the same bytes.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>

#include "common/ZQGzipStream.h"
#include "common/ZQInflaterStream.h"

using namespace ZQCommonNS;

namespace {

constexpr size_t kCompareLimit = 1u << 18;

std::string readLarge(std::istream& in, size_t chunk) {
  std::string out;
  std::string buf(chunk, '\0');
  while (in.read(buf.data(), static_cast<std::streamsize>(chunk)) || in.gcount() > 0) {
    out.append(buf.data(), static_cast<size_t>(in.gcount()));
  }
  // Once at the end, a stream stays there.
  in.clear();
  if (in.read(buf.data(), static_cast<std::streamsize>(chunk)) || in.gcount() != 0) {
    __builtin_trap();
  }
  return out;
}

std::string readSmall(std::istream& in, size_t limit) {
  std::string out;
  for (int c = in.get(); c != EOF && out.size() <= limit; c = in.get()) {
    out += static_cast<char>(c);
    // Now and then step back over what the put-back area promises.
    if (out.size() % 5000 == 0) {
      for (int i = 0; i < 10; ++i) {
        if (!in.unget()) __builtin_trap();
      }
      in.ignore(10);
    }
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const char* bytes = reinterpret_cast<const char*>(data);
  std::string input(bytes, size);
  size_t chunk = size ? 4096u * (1u + data[0] % 20u) + data[size - 1] % 3u : 4096u;

  std::istringstream gzSource(input);
  ZQGzipIStream gz(gzSource);
  std::string large = readLarge(gz, chunk);
  if (large.size() <= kCompareLimit) {
    std::istringstream again(input);
    ZQGzipIStream gzSmall(again);
    if (readSmall(gzSmall, kCompareLimit) != large) __builtin_trap();
  }

  ZQInflaterStream inflater(bytes, size, false);
  large = readLarge(inflater, chunk);
  inflater.reset();
  if (readLarge(inflater, chunk) != large) __builtin_trap();
  if (large.size() <= kCompareLimit) {
    ZQInflaterStream small(bytes, size, true);
    if (readSmall(small, kCompareLimit) != large) __builtin_trap();
  }
  return 0;
}
