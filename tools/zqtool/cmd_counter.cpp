// zqtool counter <style> <n>...: each number in a predefined counter style, with its prefix
// and suffix, one per line.
#include <cerrno>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>

#include "ZQToolCommand.h"

using namespace ZQCommonNS;

namespace {

// The fallbacks are the predefined styles too.
const ZQUtil::CounterStyle* lookup(ZQName name, void*) {
  return ZQUtil::getPredefinedCounterStyle(name);
}

std::optional<long long> parseInteger(const std::string& text) {
  if (text.empty()) return std::nullopt;
  errno = 0;
  char* end = nullptr;
  const long long value = std::strtoll(text.c_str(), &end, 10);
  if (errno != 0 || end == text.c_str() || *end != '\0') return std::nullopt;
  return value;
}

int runCounter(const zqtool::Args& args) {
  if (args.size() < 2) {
    std::cerr << "usage: zqtool counter <style> <n>...\n";
    return 2;
  }
  const ZQUtil::CounterStyle* style =
      ZQUtil::getPredefinedCounterStyle(ZQName(zqtool::fromUtf8(args[0])));
  if (style == nullptr) {
    std::cerr << "zqtool counter: unknown counter style: " << args[0] << "\n";
    return 1;
  }
  int status = 0;
  for (size_t i = 1; i < args.size(); ++i) {
    const std::optional<long long> n = parseInteger(args[i]);
    if (!n) {
      std::cerr << "zqtool counter: not an integer: " << args[i] << "\n";
      status = 1;
      continue;
    }
    std::cout << zqtool::utf8(style->formatNumber(*n, lookup, nullptr, false)) << "\n";
  }
  return status;
}

zqtool::Register reg("counter", "counter <style> <n>...",
                     "print each number in a predefined counter style, with prefix and suffix",
                     runCounter);

}  // namespace
