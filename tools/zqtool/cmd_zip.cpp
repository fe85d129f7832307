// zqtool zip <file>...: the entries of each zip archive, in archive order, with method and sizes.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <string>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

std::string methodName(unsigned int method) {
  switch (method) {
    case ZQZipFileEntry::STORED:
      return "stored";
    case ZQZipFileEntry::DEFLATED:
      return "deflated";
    default:
      return "method " + std::to_string(method);
  }
}

std::string column(unsigned long long value, int width) {
  char text[32];
  std::snprintf(text, sizeof text, "%*llu", width, value);
  return text;
}

int listZip(const std::string& name) {
  std::error_code ec;
  if (std::filesystem::is_directory(name, ec)) {
    std::cerr << "zqtool zip: cannot read '" << name << "': is a directory\n";
    return 1;
  }
  if (!std::ifstream(name, std::ios::binary).is_open()) {
    std::cerr << "zqtool zip: cannot read '" << name << "': " << std::strerror(errno ? errno : EIO)
              << "\n";
    return 1;
  }
  ZQZipFile zip;
  zip.open(zqtool::fromUtf8(name));
  unsigned int count = zip.getFileEntryCount();
  if (count == 0 && !ZQZipFile::isZipFile(zqtool::fromUtf8(name))) {
    std::cerr << "zqtool zip: '" << name << "' is not a zip archive\n";
    return 1;
  }
  std::cout << name << ":\n";
  std::cout << "  method       compressed  uncompressed  name\n";
  unsigned long long packed = 0, unpacked = 0;
  for (unsigned int i = 0; i < count; ++i) {
    ZQPtr<ZQZipFileEntry> entry = zip.getFileEntry(i);
    std::string method = methodName(entry->getCompressionMethod());
    method.resize(std::max<size_t>(method.size(), 10), ' ');
    std::cout << "  " << method << column(entry->getCompressedSize(), 11)
              << column(entry->getUncompressedSize(), 14) << "  "
              << zqtool::utf8(entry->getFileName()) << "\n";
    packed += entry->getCompressedSize();
    unpacked += entry->getUncompressedSize();
  }
  std::cout << "  " << std::string(10, ' ') << column(packed, 11) << column(unpacked, 14) << "  "
            << count << (count == 1 ? " entry" : " entries") << "\n";
  return 0;
}

int runZip(const zqtool::Args& args) {
  if (args.empty()) {
    std::cerr << "usage: zqtool zip <file>...\n";
    return 2;
  }
  int status = 0;
  for (size_t i = 0; i < args.size(); ++i) {
    if (i > 0) std::cout << "\n";
    if (listZip(args[i]) != 0) status = 1;
  }
  return status;
}

zqtool::Register reg("zip", "zip <file>...",
                     "list the entries of each zip archive: method, compressed and plain sizes, "
                     "name",
                     runZip);

}  // namespace
