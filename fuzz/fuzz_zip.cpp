// The zip reader on arbitrary bytes: open from a stream, list, and read every entry through
// its cached and its independent streams, which must agree.
#include <cstddef>
#include <cstdint>
#include <istream>
#include <memory>
#include <sstream>
#include <string>

#include "common/ZQZipFile.h"

using namespace ZQCommonNS;

namespace {

// Reads at most `limit` bytes: a small deflate stream may expand a thousandfold.
std::string readSome(std::istream* in, size_t limit = size_t{1} << 20) {
  std::string out;
  if (!in) return out;
  char buf[4096];
  while (out.size() < limit && in->read(buf, sizeof buf), in->gcount() > 0) {
    out.append(buf, static_cast<size_t>(in->gcount()));
  }
  return out;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string bytes(reinterpret_cast<const char*>(data), size);
  std::istringstream probe(bytes);
  ZQZipFile::isZipFile(&probe);
  if (probe.tellg() != 0 && probe.good()) __builtin_trap();

  auto* in = new std::istringstream(bytes);
  ZQZipFile zip;
  zip.open(in, true);
  unsigned int count = zip.getFileEntryCount();
  for (unsigned int i = 0; i < count; ++i) {
    ZQPtr<ZQZipFileEntry> entry = zip.getFileEntry(i);
    if (!entry) __builtin_trap();
    if (!zip.getFileEntry(entry->getFileName())) __builtin_trap();
    size_t stored = 0;
    entry->getCompressedData(stored);
    if (stored > size) __builtin_trap();

    std::unique_ptr<std::istream> raw(entry->getCompressedStream(true));
    std::string rawBytes = readSome(raw.get());
    if (rawBytes != readSome(entry->getCompressedStream(false))) __builtin_trap();

    std::unique_ptr<std::istream> plain(entry->getUncompressedStream(true));
    std::string plainBytes = readSome(plain.get());
    std::string cached = readSome(entry->getUncompressedStream(false));
    // The cached stream starts over on every call.
    std::string again = readSome(entry->getUncompressedStream(false));
    if (plainBytes != cached || cached != again) __builtin_trap();
  }
  if (zip.getFileEntry(count)) __builtin_trap();
  return 0;
}
