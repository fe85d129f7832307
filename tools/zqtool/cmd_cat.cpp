// zqtool cat [-k] [-i] <uri>...: the bytes of each URI (a path, file:, data:, jar:, http: or
// https:) to stdout, as ZQUri::getIStream reads them.
#include <cstdio>
#include <iostream>
#include <memory>
#include <vector>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

int runCat(const zqtool::Args& args) {
  bool insecure = false;
  bool showInfo = false;
  std::vector<std::string> uris;
  for (const std::string& arg : args) {
    if (arg == "-k" || arg == "--insecure") {
      insecure = true;
    } else if (arg == "-i" || arg == "--info") {
      showInfo = true;
    } else {
      uris.push_back(arg);
    }
  }
  if (uris.empty()) {
    std::cerr << "usage: zqtool cat [-k] [-i] <uri>...\n";
    return 2;
  }
  int status = 0;
  std::vector<char> buf(1 << 16);
  for (const std::string& text : uris) {
    ZQUri uri(zqtool::fromUtf8(text));
    ZQUri::ContentInfo info;
    if (insecure) info.flags |= ZQUri::ContentInfo::FLAG_IGNORE_CERT_ERRORS;
    UnicodeString error;
    std::unique_ptr<std::istream> in(uri.getIStream(&info, &error));
    if (!in) {
      std::cerr << "zqtool cat: " << (error.isEmpty() ? "cannot open " + text : zqtool::utf8(error))
                << "\n";
      status = 1;
      continue;
    }
    if (showInfo) {
      std::cerr << "content-type: " << zqtool::utf8(info.contentType) << "\n"
                << "charset: " << zqtool::utf8(info.charset) << "\n"
                << "content-language: " << zqtool::utf8(info.contentLanguage) << "\n"
                << "content-length: " << info.contentLength << "\n";
    }
    while (in->read(buf.data(), static_cast<std::streamsize>(buf.size())) || in->gcount() > 0) {
      const size_t n = static_cast<size_t>(in->gcount());
      if (std::fwrite(buf.data(), 1, n, stdout) != n) {
        std::cerr << "zqtool cat: cannot write to the output\n";
        return 1;
      }
    }
    if (in->bad()) {
      std::cerr << "zqtool cat: read error in " << text << "\n";
      status = 1;
    }
  }
  std::fflush(stdout);
  return status;
}

zqtool::Register reg("cat", "cat [-k] [-i] <uri>...",
                     "write the bytes of files, data:, jar: and http(s) URIs to stdout "
                     "(-k: accept any certificate, -i: response fields to stderr)",
                     runCat);

}  // namespace
