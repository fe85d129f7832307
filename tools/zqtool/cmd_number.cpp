// zqtool number <n> <format> [lang]: the number under an XSLT-like format, in a language.
#include <cerrno>
#include <cstdlib>
#include <iostream>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

int runNumber(const zqtool::Args& args) {
  if (args.size() < 2 || args.size() > 3) {
    std::cerr << "usage: zqtool number <n> <format> [lang]\n";
    return 2;
  }
  errno = 0;
  char* end = nullptr;
  const long long n = std::strtoll(args[0].c_str(), &end, 10);
  if (args[0].empty() || *end != '\0' || errno == ERANGE) {
    std::cerr << "zqtool number: not a 64-bit integer: " << args[0] << "\n";
    return 2;
  }
  const ZQLang lang = args.size() == 3 ? ZQLang(args[2].c_str()) : ZQLang();
  std::cout << zqtool::utf8(ZQUtil::formatNumber(n, zqtool::fromUtf8(args[1]), lang)) << "\n";
  return 0;
}

const zqtool::Register reg("number", "number <n> <format> [lang]",
                           "print a number under a format (1, 01, a, i, I, ...) in a language",
                           runNumber);

}  // namespace
